// The engine's file layer on Windows. Paths arrive as UTF-8 and reach the system as UTF-16
// through the wide-character calls.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>

#include "Btrieve.h"
#include "FichierPlateforme.h"

namespace zl3::btr::plat {
namespace {

// The open-mode lock is a byte-range lock far beyond any data and beyond the bytes SQLite locks
// (at 1 GiB): Windows locks are mandatory, a lock over data would stop SQLite's own reads.
constexpr DWORD kLockOffsetHigh = 0x40000000;  // 2^62

// UTF-8 to UTF-16; false for text that is not valid UTF-8.
bool Wide(const std::string& utf8, std::wstring& out) {
    out.clear();
    if (utf8.empty()) return true;
    const int n = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(),
                                      static_cast<int>(utf8.size()), nullptr, 0);
    if (n <= 0) return false;
    out.resize(static_cast<size_t>(n));
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), static_cast<int>(utf8.size()),
                        out.data(), n);
    return true;
}

FileId IdOf(HANDLE h, bool& ok) {
    BY_HANDLE_FILE_INFORMATION info{};
    ok = GetFileInformationByHandle(h, &info) != 0;
    return FileId{info.dwVolumeSerialNumber,
                  (uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow};
}

bool IsFolder(const std::wstring& path) {
    const DWORD a = GetFileAttributesW(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

int16_t StatusFromSystemError(int err) {
    switch (static_cast<DWORD>(err)) {
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_NETWORK_ACCESS_DENIED:
            return kAccessDenied;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return kFileLocked;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return kDiskFull;
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_DIRECTORY:
            return kInvalidFileName;
        default:
            return kFileNotFound;
    }
}

bool IsDiskFull(int err) {
    return err == ERROR_DISK_FULL || err == ERROR_HANDLE_DISK_FULL;
}

int16_t Examine(const std::string& path, PathKind& kind, FileId& id) {
    std::wstring w;
    if (!Wide(path, w) || w.empty()) return kInvalidFileName;
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(w.c_str(), GetFileExInfoStandard, &data)) {
        const int16_t s = StatusFromSystemError(static_cast<int>(GetLastError()));
        return s == kFileLocked ? kAccessDenied : s;
    }
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
        kind = PathKind::kDirectory;
        id = FileId{};
        return kOk;
    }
    kind = (data.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) ? PathKind::kOther : PathKind::kRegular;
    // No access asked: the file's identity is read whatever the sharing of its other handles.
    HANDLE h = CreateFileW(w.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        const int16_t s = StatusFromSystemError(static_cast<int>(GetLastError()));
        return s == kFileLocked ? kAccessDenied : s;
    }
    bool ok = false;
    id = IdOf(h, ok);
    CloseHandle(h);
    return ok ? kOk : kIoError;
}

bool Exists(const std::string& path) {
    std::wstring w;
    return Wide(path, w) && !w.empty() && GetFileAttributesW(w.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool HasData(const std::string& path) {
    std::wstring w;
    WIN32_FILE_ATTRIBUTE_DATA data{};
    return Wide(path, w) && !w.empty() &&
           GetFileAttributesExW(w.c_str(), GetFileExInfoStandard, &data) &&
           !(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) &&
           (data.nFileSizeLow != 0 || data.nFileSizeHigh != 0);
}

void Remove(const std::string& path) {
    std::wstring w;
    if (Wide(path, w) && !w.empty()) DeleteFileW(w.c_str());
}

// ---- FichierVerrouille ------------------------------------------------------------------------

FichierVerrouille::~FichierVerrouille() {
    Close();
}

void FichierVerrouille::Close() {
    if (handle_) CloseHandle(static_cast<HANDLE>(handle_));
    handle_ = nullptr;
}

int16_t FichierVerrouille::Open(const std::string& path, bool& writable) {
    Close();
    writable = true;
    std::wstring w;
    if (!Wide(path, w) || w.empty()) return kInvalidFileName;
    // Shared for reading, writing and deleting: SQLite opens the same file beside this handle,
    // and removes its side files when it closes.
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    HANDLE h = CreateFileW(w.c_str(), GENERIC_READ | GENERIC_WRITE, share, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ACCESS_DENIED) {
        if (IsFolder(w)) return kFileNotFound;
        h = CreateFileW(w.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                        FILE_ATTRIBUTE_NORMAL, nullptr);
        writable = false;
    }
    if (h == INVALID_HANDLE_VALUE) return StatusFromSystemError(static_cast<int>(GetLastError()));
    handle_ = h;
    if (GetFileType(h) != FILE_TYPE_DISK) return kNotABtrieveFile;
    bool ok = false;
    id_ = IdOf(h, ok);
    return ok ? kOk : kIoError;
}

int16_t FichierVerrouille::Lock(bool exclusive) {
    OVERLAPPED at{};
    at.Offset = 0;
    at.OffsetHigh = kLockOffsetHigh;
    const DWORD flags = (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0) | LOCKFILE_FAIL_IMMEDIATELY;
    if (LockFileEx(static_cast<HANDLE>(handle_), flags, 0, 1, 0, &at)) return kOk;
    const DWORD err = GetLastError();
    return err == ERROR_LOCK_VIOLATION || err == ERROR_IO_PENDING ? kFileLocked : kIoError;
}

long FichierVerrouille::ReadHeader(uint8_t* buffer, size_t length) {
    OVERLAPPED at{};
    DWORD got = 0;
    if (!ReadFile(static_cast<HANDLE>(handle_), buffer, static_cast<DWORD>(length), &got, &at))
        return GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    return static_cast<long>(got);
}

// ---- GardeRemplacement ------------------------------------------------------------------------

GardeRemplacement::~GardeRemplacement() {
    BeforeReplace();
}

int16_t GardeRemplacement::Take(const std::string& path) {
    std::wstring w;
    if (!Wide(path, w) || w.empty()) return kInvalidFileName;
    // Shared with nobody: fails while any program has the file open.
    HANDLE h = CreateFileW(w.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return StatusFromSystemError(static_cast<int>(GetLastError()));
    handle_ = h;
    return kOk;
}

void GardeRemplacement::BeforeReplace() {
    // Windows cannot replace a file that is still open: the check is let go just before.
    if (handle_) CloseHandle(static_cast<HANDLE>(handle_));
    handle_ = nullptr;
}

// ---- Names ------------------------------------------------------------------------------------

int16_t ReplaceWith(const std::string& from, const std::string& to) {
    std::wstring wf, wt;
    if (!Wide(from, wf) || !Wide(to, wt)) return kInvalidFileName;
    if (MoveFileExW(wf.c_str(), wt.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return kOk;
    return StatusFromSystemError(static_cast<int>(GetLastError()));
}

int16_t NameIfFree(const std::string& from, const std::string& to) {
    std::wstring wf, wt;
    if (!Wide(from, wf) || !Wide(to, wt)) return kInvalidFileName;
    if (MoveFileExW(wf.c_str(), wt.c_str(), MOVEFILE_WRITE_THROUGH)) return kOk;
    const DWORD err = GetLastError();
    if (err == ERROR_ALREADY_EXISTS || err == ERROR_FILE_EXISTS) return kFileExists;
    return StatusFromSystemError(static_cast<int>(err));
}

void SyncFolderOf(const std::string&) {}

std::string UriPath(const std::string& path) {
    std::string name;
    if (path.size() >= 2 && path[1] == ':') name = "/";
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            static const char kHex[] = "0123456789ABCDEF";
            const auto u = static_cast<unsigned char>(c);
            name += '%';
            name += kHex[u >> 4];
            name += kHex[u & 15];
        } else {
            name += c == '\\' ? '/' : c;
        }
    }
    return name;
}

std::FILE* OpenStream(const std::string& path, const char* mode) {
    std::wstring w, m;
    if (!Wide(path, w) || !Wide(mode, m) || w.empty()) return nullptr;
    return _wfopen(w.c_str(), m.c_str());
}

unsigned long ProcessId() {
    return GetCurrentProcessId();
}

void AtFork(void (*)(), void (*)(), void (*)()) {}

}  // namespace zl3::btr::plat
