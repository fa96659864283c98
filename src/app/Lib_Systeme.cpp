#include "Lib_Systeme.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>

#include <ctime>
#endif

#include "Lib_Profile.h"

namespace fs = std::filesystem;

namespace zl3::sys {
namespace {

std::string& RootOverride() {
    static std::string root;
    static bool initialised = false;
    if (!initialised) {
        initialised = true;
#ifdef _WIN32
        if (const wchar_t* env = _wgetenv(L"ZELVAR_ROOT"); env && *env)
            root = TexteChemin(fs::path(env));
#else
        if (const char* env = std::getenv("ZELVAR_ROOT"); env && *env) root = env;
#endif
    }
    return root;
}

std::string ExecutableFolder() {
#ifdef _WIN32
    wchar_t buf[MAX_PATH];
    const DWORD n = GetModuleFileNameW(nullptr, buf, MAX_PATH);
    return WithTrailingSep(TexteChemin(fs::path(std::wstring(buf, n)).parent_path()));
#else
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec) return WithTrailingSep(fs::current_path().string());
    return WithTrailingSep(exe.parent_path().string());
#endif
}

#ifndef _WIN32
// Off Windows without a machine root: the suite lives under the user's home.
std::string HomeRoot() {
    const char* home = std::getenv("HOME");
    return WithTrailingSep(std::string(home && *home ? home : "/tmp") + "/.zelvar");
}
#endif

// A suite path mapped under `root` (native, with its trailing separator): drive letter and
// "UNC" folders, separators made native, doubled separators collapsed.
std::string MapUnderRoot(const std::string& suitePath, const std::string& root) {
    const char sep = Sep();
    std::string rest;
    std::string mapped;
    if (suitePath.size() >= 2 && std::isalpha(static_cast<unsigned char>(suitePath[0])) &&
        suitePath[1] == ':') {
        mapped = root + static_cast<char>(std::toupper(static_cast<unsigned char>(suitePath[0])));
        rest = suitePath.substr(2);
    } else if (suitePath.rfind("\\\\", 0) == 0) {
        mapped = root + "UNC";
        rest = suitePath.substr(1);  // keeps one leading separator before the server name
    } else {
        mapped.clear();
        rest = suitePath;
    }
    for (char& c : rest)
        if (c == '\\' || c == '/') c = sep;
    if (!mapped.empty() && !rest.empty() && rest.front() != sep) rest.insert(0, 1, sep);
    std::string out = mapped + rest;
    // Collapse doubled separators made by joining.
    std::string clean;
    for (size_t i = 0; i < out.size(); ++i) {
        if (out[i] == sep && !clean.empty() && clean.back() == sep) continue;
        clean += out[i];
    }
    return clean;
}

// The inverse of MapUnderRoot; `nativePath` unchanged when it is not under `root`.
std::string UnmapFromRoot(const std::string& nativePath, const std::string& root) {
    const char sep = Sep();
    if (nativePath.rfind(root, 0) != 0) return nativePath;
    std::string rest = nativePath.substr(root.size());
    std::string out;
    if (rest.rfind(std::string("UNC") + sep, 0) == 0) {
        out = "\\" + rest.substr(4);
    } else if (rest.size() >= 1 && std::isupper(static_cast<unsigned char>(rest[0])) &&
               (rest.size() == 1 || rest[1] == sep)) {
        out = std::string(1, rest[0]) + ":" + (rest.size() == 1 ? "\\" : rest.substr(1));
    } else {
        return nativePath;
    }
    for (char& c : out)
        if (c == '/') c = '\\';
    return out;
}

}  // namespace

fs::path CheminFs(const std::string& utf8) {
    return fs::path(std::u8string(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

std::string TexteChemin(const fs::path& path) {
    const std::u8string u = path.u8string();
    return std::string(reinterpret_cast<const char*>(u.data()), u.size());
}

ArgumentsUtf8::ArgumentsUtf8(int argc, char** argv) {
#ifdef _WIN32
    int n = 0;
    wchar_t** w = CommandLineToArgvW(GetCommandLineW(), &n);
    if (w) {
        for (int i = 0; i < n; ++i) {
            const int taille = WideCharToMultiByte(CP_UTF8, 0, w[i], -1, nullptr, 0, nullptr, nullptr);
            std::string t(taille > 0 ? static_cast<size_t>(taille - 1) : 0, '\0');
            if (taille > 1)
                WideCharToMultiByte(CP_UTF8, 0, w[i], -1, t.data(), taille, nullptr, nullptr);
            textes_.push_back(std::move(t));
        }
        LocalFree(w);
    } else {
        textes_.assign(argv, argv + argc);
    }
#else
    textes_.assign(argv, argv + argc);
#endif
    for (std::string& t : textes_)
        pointeurs_.push_back(t.data());
    pointeurs_.push_back(nullptr);
}

char Sep() {
#ifdef _WIN32
    return '\\';
#else
    return '/';
#endif
}

std::string WithTrailingSep(const std::string& folder) {
    if (folder.empty()) return folder;
    std::string f = folder;
    while (f.size() > 1 && (f.back() == '/' || f.back() == '\\'))
        f.pop_back();
    if (f == "/" || f == "\\") return std::string(1, Sep());
    return f + Sep();
}

std::string ZelvarRoot() {
    // On Windows too: the tests and the demo give every run a machine of its own.
    const std::string& r = RootOverride();
    return r.empty() ? "" : WithTrailingSep(r);
}

void SetZelvarRoot(const std::string& root) {
    RootOverride();  // read the environment first so that an explicit value wins
    RootOverride() =
        root.empty() ? root : TexteChemin(fs::absolute(CheminFs(root)).lexically_normal());
}

std::string NativePath(const std::string& suitePath) {
    if (suitePath.empty()) return suitePath;
    std::string root = ZelvarRoot();
#ifdef _WIN32
    if (root.empty()) {
        std::string out = suitePath;
        for (char& c : out)
            if (c == '/') c = '\\';
        return out;
    }
    // A drive path already under the root is native: mapped once only.
    std::string debut = suitePath.substr(0, root.size());
    for (char& c : debut)
        if (c == '/') c = '\\';
    if (debut.size() == root.size() && _stricmp(debut.c_str(), root.c_str()) == 0) {
        std::string out = suitePath;
        for (char& c : out)
            if (c == '/') c = '\\';
        return out;
    }
#else
    if (root.empty()) root = HomeRoot();
#endif
    return MapUnderRoot(suitePath, root);
}

std::string SuitePath(const std::string& nativePath) {
    std::string root = ZelvarRoot();
#ifdef _WIN32
    if (root.empty()) return nativePath;
#else
    if (root.empty()) root = HomeRoot();
#endif
    return UnmapFromRoot(nativePath, root);
}

std::string DossierWindows() {
#ifdef _WIN32
    if (!ZelvarRoot().empty()) return NativePath("C:\\Windows\\");
    char buf[MAX_PATH];
    const UINT n = GetWindowsDirectoryA(buf, MAX_PATH);
    return WithTrailingSep(std::string(buf, n));
#else
    return NativePath("C:\\Windows\\");
#endif
}

std::string FichierWinIni() {
    return DossierWindows() + "Win.ini";
}

std::string DossierSysteme() {
#ifdef _WIN32
    if (!ZelvarRoot().empty()) return NativePath("C:\\Windows\\System32\\");
    char buf[MAX_PATH];
    const UINT n = GetSystemDirectoryA(buf, MAX_PATH);
    return WithTrailingSep(std::string(buf, n));
#else
    return NativePath("C:\\Windows\\System32\\");
#endif
}

std::string DossierApplication() {
    if (!ZelvarRoot().empty()) return NativePath("C:\\Quorvane\\Zelvar\\");
    return ExecutableFolder();
}

std::string NomExecutable() {
    return "ZL3_Tools_Stats";
}

std::string FichierTheme() {
    return DossierWindows() + "ThemeManager.ini";
}

std::string ThemeActive() {
#ifdef _WIN32
    if (!ZelvarRoot().empty())
        return ReadProfileString("ThemeManager", "ThemeActive", "1", FichierTheme());
    HKEY key;
    std::string value = "1";
    if (RegOpenKeyExA(HKEY_CURRENT_USER,
                      "Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager", 0, KEY_READ,
                      &key) == ERROR_SUCCESS) {
        char buf[64];
        DWORD size = sizeof buf;
        DWORD type = 0;
        if (RegQueryValueExA(key, "ThemeActive", nullptr, &type, reinterpret_cast<BYTE*>(buf),
                             &size) == ERROR_SUCCESS &&
            type == REG_SZ)
            value.assign(buf, size > 0 && buf[size - 1] == 0 ? size - 1 : size);
        RegCloseKey(key);
    }
    return value;
#else
    return ReadProfileString("ThemeManager", "ThemeActive", "1", FichierTheme());
#endif
}

bool HeureLocale(std::time_t t, std::tm& out) {
#ifdef _WIN32
    return localtime_s(&out, &t) == 0;
#else
    return localtime_r(&t, &out) != nullptr;
#endif
}

std::string ComputerName() {
#ifdef _WIN32
    char buf[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD n = sizeof buf;
    return GetComputerNameA(buf, &n) ? std::string(buf, n) : std::string();
#else
    char buf[256] = {};
    if (gethostname(buf, sizeof buf - 1) != 0) return "";
    return buf;
#endif
}

std::string UserName() {
#ifdef _WIN32
    char buf[256];
    DWORD n = sizeof buf;
    return GetUserNameA(buf, &n) ? std::string(buf, n > 0 ? n - 1 : 0) : std::string();
#else
    const char* u = std::getenv("USER");
    return u ? u : "";
#endif
}

std::string OperatingSystemName() {
#ifdef _WIN32
    return "Windows";
#else
    struct utsname u {};
    if (uname(&u) != 0) return "Unknown";
    return std::string(u.sysname) + " " + u.release + " " + u.machine;
#endif
}

int64_t SystemTickCount() {
#ifdef _WIN32
    return static_cast<int64_t>(GetTickCount64());
#else
    timespec ts{};
    clock_gettime(CLOCK_BOOTTIME, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
#endif
}

bool FileExists(const std::string& path) {
    std::error_code ec;
    return !path.empty() && fs::is_regular_file(CheminFs(path), ec);
}

bool FolderExists(const std::string& path) {
    std::error_code ec;
    return !path.empty() && fs::is_directory(CheminFs(path), ec);
}

bool CheckRep(const std::string& folder) {
    if (folder.empty()) return false;
    std::error_code ec;
    fs::create_directories(CheminFs(folder), ec);
    return fs::is_directory(CheminFs(folder), ec);
}

bool File_Delete(const std::string& path) {
    std::error_code ec;
    return fs::remove(CheminFs(path), ec) && !ec;
}

bool FichierPrive(const std::string& path) {
    if (path.empty()) return false;
    std::error_code ec;
    if (!fs::exists(CheminFs(path), ec)) {
#ifdef _WIN32
        std::ofstream f(CheminFs(path), std::ios::binary | std::ios::app);
        return static_cast<bool>(f);
#else
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0 && errno != EEXIST) return false;
        if (fd >= 0) ::close(fd);
#endif
    }
#ifdef _WIN32
    return fs::is_regular_file(CheminFs(path), ec);
#else
    if (!fs::is_regular_file(path, ec)) return false;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::replace,
                    ec);
    return !ec;
#endif
}

bool ShellOpen(const std::string& pathOrUrl) {
#ifdef _WIN32
    return reinterpret_cast<intptr_t>(ShellExecuteA(nullptr, "open", pathOrUrl.c_str(), nullptr,
                                                    nullptr, SW_SHOWNORMAL)) > 32;
#else
    if (pathOrUrl.empty()) return false;
    std::string quoted = "'";
    for (char c : pathOrUrl) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    quoted += "'";
    const std::string cmd = "xdg-open " + quoted + " >/dev/null 2>&1 &";
    return std::system(cmd.c_str()) == 0;
#endif
}

bool TerminerImage(const std::string& nomImage) {
#ifdef _WIN32
    if (nomImage.empty()) return false;
    std::string commande = "taskkill /f /im " + nomImage;
    STARTUPINFOA si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESHOWWINDOW;
    si.wShowWindow = SW_HIDE;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, commande.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                        nullptr, nullptr, &si, &pi))
        return false;
    WaitForSingleObject(pi.hProcess, 10000);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return true;
#else
    (void)nomImage;
    return false;
#endif
}

std::string DossierTempMachine() {
#ifdef _WIN32
    if (!ZelvarRoot().empty()) return NativePath("C:\\Windows\\Temp\\");
    char buf[MAX_PATH];
    const DWORD n = GetTempPathA(MAX_PATH, buf);
    return WithTrailingSep(std::string(buf, n));
#else
    if (!ZelvarRoot().empty()) return NativePath("C:\\Windows\\Temp\\");
    std::error_code ec;
    const fs::path tmp = fs::temp_directory_path(ec);
    return WithTrailingSep(ec ? std::string("/tmp") : TexteChemin(tmp));
#endif
}

std::string FichierVerrouNomme(const std::string& name) {
    return DossierTempMachine() + name + ".lock";
}

VerrouNomme::VerrouNomme(const std::string& name) : name_(name) { Reprendre(); }

bool VerrouNomme::Reprendre() {
    if (tenu_) return true;
#ifdef _WIN32
    if (!handle_) {
        handle_ = CreateMutexA(nullptr, FALSE, ("Global\\" + name_).c_str());
        if (!handle_) return false;
        tenu_ = GetLastError() != ERROR_ALREADY_EXISTS;
        return tenu_;
    }
    // The mutex object exists while any process holds a handle: open ours again to test.
    CloseHandle(static_cast<HANDLE>(handle_));
    handle_ = nullptr;
    return Reprendre();
#else
    if (fd_ < 0) {
        CheckRep(DossierTempMachine());
        fd_ = ::open(FichierVerrouNomme(name_).c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
        if (fd_ < 0) return false;
    }
    tenu_ = ::flock(fd_, LOCK_EX | LOCK_NB) == 0;
    return tenu_;
#endif
}

VerrouNomme::~VerrouNomme() {
#ifdef _WIN32
    if (handle_) CloseHandle(static_cast<HANDLE>(handle_));
#else
    if (fd_ >= 0) ::close(fd_);  // closing the descriptor releases the lock
#endif
}

}  // namespace zl3::sys
