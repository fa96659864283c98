// The engine's file layer: everything the engine asks of the operating system about its files,
// apart from what SQLite does itself. One implementation per system, chosen by CMake
// (FichierPlateforme_posix.cpp, FichierPlateforme_win32.cpp).
//
// Paths are UTF-8 text everywhere in the engine. On Windows they reach the system as UTF-16
// (the wide-character calls), so that "Donné" names the same file here as in SQLite, which takes
// UTF-8 paths itself; the ANSI code page is never involved.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace zl3::btr::plat {

// What identifies a file whatever the path used to reach it (links, "..", case on Windows):
// device and inode on POSIX; volume serial number and file index on Windows (the C runtime's
// st_ino is 0 there). Opaque: only compared.
struct FileId {
    uint64_t volume = 0;
    uint64_t index = 0;
    bool operator==(const FileId&) const = default;
};

enum class PathKind { kRegular, kDirectory, kOther };

// The kind and identity of `path`. Returns 0, or the status for a path that cannot be examined:
// 12 missing, 46 access denied, 11 name too long or malformed.
int16_t Examine(const std::string& path, PathKind& kind, FileId& id);

// True when `path` exists (whatever it is).
bool Exists(const std::string& path);
// True when `path` is a file holding at least one byte.
bool HasData(const std::string& path);
// Removes a file; a missing file is not an error.
void Remove(const std::string& path);

// One file held open by the engine for as long as SQLite works on it: the holder of the
// Btrieve open modes (shared by every normal open, exclusive for mode -4, never waiting), and the
// reader of the file's header before SQLite sees it.
class FichierVerrouille {
  public:
    FichierVerrouille() = default;
    ~FichierVerrouille();
    FichierVerrouille(const FichierVerrouille&) = delete;
    FichierVerrouille& operator=(const FichierVerrouille&) = delete;

    // Opens an existing regular file for reading and writing, or for reading only when writing
    // is refused (`writable` says which). Returns 0, 12 for a missing file or a folder, 30 for
    // something that is not a regular file, 46, 85.
    int16_t Open(const std::string& path, bool& writable);
    // Takes the open-mode lock: exclusive or shared, without waiting. 0 or 85.
    int16_t Lock(bool exclusive);
    // Reads up to `length` bytes from offset 0; the number read, or -1.
    long ReadHeader(uint8_t* buffer, size_t length);
    FileId Id() const { return id_; }
    void Close();

  private:
    FileId id_;
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    int fd_ = -1;
#endif
};

// Keeps every other user, in this process or another, from having `path` open while it is
// replaced: Take gives 85 when the file is open elsewhere (the engine's open modes and, on
// Windows, any program), 46 or 12 when it cannot be opened. Release lets go before the
// replacement on systems where an open file cannot be replaced (Windows); on POSIX the lock is
// held until the guard is destroyed, across the replacement.
class GardeRemplacement {
  public:
    GardeRemplacement() = default;
    ~GardeRemplacement();
    GardeRemplacement(const GardeRemplacement&) = delete;
    GardeRemplacement& operator=(const GardeRemplacement&) = delete;
    int16_t Take(const std::string& path);
    void BeforeReplace();

  private:
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    int fd_ = -1;
#endif
};

// Moves `from` to `to`, replacing a file already named `to`. 0 or a status.
int16_t ReplaceWith(const std::string& from, const std::string& to);
// Gives `from`'s file the name `to` only when no file has that name (59 otherwise); `from` may be
// left in place or gone: the caller removes it.
int16_t NameIfFree(const std::string& from, const std::string& to);
// Makes the names just given in the folder of `path` durable (POSIX; nothing on Windows, where
// the file system journals its names).
void SyncFolderOf(const std::string& path);

// The engine status for an error number of the system (errno, or GetLastError on Windows) that
// SQLite reports through sqlite3_system_errno: 46, 18, 11, else 12.
int16_t StatusFromSystemError(int err);
bool IsDiskFull(int err);

// The name SQLite is given to open `path` as a URI (forward slashes, "/" before a drive letter,
// "%", "?" and "#" escaped), without the query part.
std::string UriPath(const std::string& path);

// std::fopen for a UTF-8 path.
std::FILE* OpenStream(const std::string& path, const char* mode);

// The process's id, for temporary names that other processes never share.
unsigned long ProcessId();

// Runs `prepare`, `parent` and `child` around fork() on systems that have it.
void AtFork(void (*prepare)(), void (*parent)(), void (*child)());

}  // namespace zl3::btr::plat
