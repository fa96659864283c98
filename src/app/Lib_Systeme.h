// System utilities: everything that differs between the stations' Windows workstations and the
// Linux machines the tool is built and tested on.
//
// On Windows the real places are used (Windows folder, system folder, registry, shell).
// Elsewhere one folder stands for the whole machine: the root named by the environment variable
// ZELVAR_ROOT (or set by SetZelvarRoot, as the command-line programs' --root option does).
//   drive path "C:\AudioLog\"        -> $ZELVAR_ROOT/C/AudioLog/
//   network path "\\srv\share\x\"    -> $ZELVAR_ROOT/UNC/srv/share/x/
//   Windows folder                   -> $ZELVAR_ROOT/C/Windows/   (Win.ini inside)
//   system folder                    -> $ZELVAR_ROOT/C/Windows/System32/
//   application folder               -> $ZELVAR_ROOT/C/Quorvane/Zelvar/ (no root: the executable's
//                                       folder)
//   registry value ThemeActive       -> $ZELVAR_ROOT/C/Windows/ThemeManager.ini,
//                                       section [ThemeManager], key ThemeActive (default "1")
// Without a root, drive and network paths map under the user's home folder, "~/.zelvar/".
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace zl3::sys {

// Paths are UTF-8 text in the whole tool. These give the system's path (wide characters on
// Windows, where narrow text would be read in the ANSI code page) and back.
std::filesystem::path CheminFs(const std::string& utf8);
std::string TexteChemin(const std::filesystem::path& path);

// A program's arguments as UTF-8 text: argv itself off Windows; on Windows the wide command line
// (GetCommandLineW), since argv there is in the ANSI code page, which cannot hold every file
// name. `Argc()`/`Argv()` replace main's own; they live as long as this object.
class ArgumentsUtf8 {
  public:
    ArgumentsUtf8(int argc, char** argv);
    int Argc() const { return static_cast<int>(textes_.size()); }
    char** Argv() { return pointeurs_.data(); }
    const std::vector<std::string>& Textes() const { return textes_; }

  private:
    std::vector<std::string> textes_;
    std::vector<char*> pointeurs_;  // into textes_, then a null pointer as argv ends
};

// The native folder separator ("\" on Windows, "/" elsewhere).
char Sep();
// Folder text ending with exactly one native separator (an empty text stays empty).
std::string WithTrailingSep(const std::string& folder);

// The machine root (native, with a trailing separator). Empty on Windows.
std::string ZelvarRoot();
void SetZelvarRoot(const std::string& root);

// Maps a path as the suite writes it (drive or network path with "\") to a native path. A path
// that is already native is returned unchanged; "\" become the native separator.
std::string NativePath(const std::string& suitePath);
// The inverse: a native path under the machine root back in the suite's form ("C:\AudioLog\"),
// for the ini files the suite's other programs read. Other paths are returned unchanged.
std::string SuitePath(const std::string& nativePath);

std::string DossierWindows();      // Windows folder, trailing separator
std::string FichierWinIni();       // Windows folder & "Win.ini"
std::string DossierSysteme();      // system folder, trailing separator
std::string DossierApplication();  // application folder, trailing separator
// Name of the tool's executable without extension: "ZL3_Tools_Stats".
std::string NomExecutable();

// The current user's ThemeActive value of the theme manager, as text ("0": classic look).
std::string ThemeActive();
// Where ThemeActive is kept when there is no registry (the ini named above).
std::string FichierTheme();

// The local time of `t` (localtime_r, localtime_s on Windows).
bool HeureLocale(std::time_t t, std::tm& out);

std::string ComputerName();
std::string UserName();
std::string OperatingSystemName();
// Milliseconds since the computer started.
int64_t SystemTickCount();

// Files and folders.
bool FileExists(const std::string& path);
bool FolderExists(const std::string& path);
// Creates the folder and its parents; true when it exists afterwards.
bool CheckRep(const std::string& folder);
bool File_Delete(const std::string& path);
// Makes `path` a file only its owner may read or write (created empty when missing, an existing
// file's permissions narrowed to the owner). On Windows the per-user settings folder already
// keeps other users out: the file is only created. False when the file cannot be made so.
bool FichierPrive(const std::string& path);

// The shell's "Open" action on a file or an address.
bool ShellOpen(const std::string& pathOrUrl);

// Windows: runs the hidden command "taskkill /f /im " & nomImage, which ends every process of
// that image name, this one included, and does not return when it succeeds. Elsewhere nothing
// is run and false is returned: a copy started later has already asked this one to quit through
// the instance socket, and this process ends by returning from its event loop.
bool TerminerImage(const std::string& nomImage);

// A named lock shared by every process and every user session of the machine, held from its
// creation to its destruction: the suite's named mutex ("Zelvar 3.4"). On Windows a global named
// mutex; elsewhere an advisory lock on the file `name` & ".lock" of the machine's temp folder
// (the root's C/Windows/Temp/, or the system's temp folder without a root), released by the
// system when the process ends, however it ends.
class VerrouNomme {
  public:
    explicit VerrouNomme(const std::string& name);
    ~VerrouNomme();
    VerrouNomme(const VerrouNomme&) = delete;
    VerrouNomme& operator=(const VerrouNomme&) = delete;

    // True when this object holds the lock: no other holder existed when it was created or when
    // Reprendre last tried.
    bool Tenu() const { return tenu_; }
    // Tries again to take the lock (an earlier holder may have gone since); returns Tenu().
    bool Reprendre();

  private:
    std::string name_;
    bool tenu_ = false;
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    int fd_ = -1;
#endif
};

// Where the named lock `name` lives off Windows, and the folder the suite's processes of this
// machine share for such meeting points (ending with the separator).
std::string DossierTempMachine();
std::string FichierVerrouNomme(const std::string& name);

}  // namespace zl3::sys
