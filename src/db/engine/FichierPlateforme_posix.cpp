// The engine's file layer on POSIX systems (Linux).
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Btrieve.h"
#include "FichierPlateforme.h"

namespace zl3::btr::plat {

int16_t StatusFromSystemError(int err) {
    switch (err) {
        case EACCES:
        case EPERM:
        case EROFS:
            return kAccessDenied;
        case ENOSPC:
        case EDQUOT:
            return kDiskFull;
        case ENAMETOOLONG:
            return kInvalidFileName;
        default:
            return kFileNotFound;
    }
}

bool IsDiskFull(int err) {
    return err == ENOSPC;
}

int16_t Examine(const std::string& path, PathKind& kind, FileId& id) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        switch (errno) {
            case EACCES:
            case EPERM:
                return kAccessDenied;
            case ENAMETOOLONG:
                return kInvalidFileName;
            default:
                return kFileNotFound;
        }
    }
    kind = S_ISREG(st.st_mode)   ? PathKind::kRegular
           : S_ISDIR(st.st_mode) ? PathKind::kDirectory
                                 : PathKind::kOther;
    id = FileId{static_cast<uint64_t>(st.st_dev), static_cast<uint64_t>(st.st_ino)};
    return kOk;
}

bool Exists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

bool HasData(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && st.st_size > 0;
}

void Remove(const std::string& path) {
    ::unlink(path.c_str());
}

// ---- FichierVerrouille ------------------------------------------------------------------------

FichierVerrouille::~FichierVerrouille() {
    Close();
}

void FichierVerrouille::Close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

int16_t FichierVerrouille::Open(const std::string& path, bool& writable) {
    Close();
    writable = true;
    int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0 && (errno == EACCES || errno == EROFS || errno == EPERM)) {
        fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        writable = false;
    }
    if (fd < 0) return errno == EISDIR ? kFileNotFound : StatusFromSystemError(errno);
    fd_ = fd;
    struct stat st {};
    if (::fstat(fd, &st) != 0) return kIoError;
    if (!S_ISREG(st.st_mode)) return kNotABtrieveFile;
    id_ = FileId{static_cast<uint64_t>(st.st_dev), static_cast<uint64_t>(st.st_ino)};
    return kOk;
}

int16_t FichierVerrouille::Lock(bool exclusive) {
    // An advisory lock on the file itself; the kernel drops it when the process dies.
    if (::flock(fd_, (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? kFileLocked : kIoError;
    return kOk;
}

long FichierVerrouille::ReadHeader(uint8_t* buffer, size_t length) {
    return static_cast<long>(::pread(fd_, buffer, length, 0));
}

// ---- GardeRemplacement ------------------------------------------------------------------------

GardeRemplacement::~GardeRemplacement() {
    if (fd_ >= 0) ::close(fd_);
}

int16_t GardeRemplacement::Take(const std::string& path) {
    fd_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd_ < 0) return StatusFromSystemError(errno);
    if (::flock(fd_, LOCK_EX | LOCK_NB) != 0) return kFileLocked;
    return kOk;
}

void GardeRemplacement::BeforeReplace() {
    // rename() replaces a file that others still have open: they keep the old one. The lock
    // stays held across the replacement so that no engine opens the old file meanwhile.
}

// ---- Names ------------------------------------------------------------------------------------

int16_t ReplaceWith(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) == 0 ? kOk : StatusFromSystemError(errno);
}

int16_t NameIfFree(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) == 0) return kOk;
    return errno == EEXIST ? kFileExists : StatusFromSystemError(errno);
}

void SyncFolderOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    const std::string dir = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

std::string UriPath(const std::string& path) {
    std::string name;
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            static const char kHex[] = "0123456789ABCDEF";
            const auto u = static_cast<unsigned char>(c);
            name += '%';
            name += kHex[u >> 4];
            name += kHex[u & 15];
        } else {
            name += c;
        }
    }
    return name;
}

std::FILE* OpenStream(const std::string& path, const char* mode) {
    return std::fopen(path.c_str(), mode);
}

unsigned long ProcessId() {
    return static_cast<unsigned long>(::getpid());
}

void AtFork(void (*prepare)(), void (*parent)(), void (*child)()) {
    pthread_atfork(prepare, parent, child);
}

}  // namespace zl3::btr::plat
