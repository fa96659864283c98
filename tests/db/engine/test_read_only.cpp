// Reading where nothing may be written: a read-only folder (a share or a backup mounted
// read-only), a file of another user, a full disk. Each case runs in a child process, which may
// change its user or see its own mounts; the parent compares what it read.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"

namespace zl3::btr::test {
namespace {

constexpr uint16_t kLen = 64;

std::string Record(long number) {
    char head[24];
    std::snprintf(head, sizeof head, "%08ld", number);
    std::string r(kLen, static_cast<char>('a' + number % 26));
    r.replace(0, 8, head);
    return r;
}

// Runs `body` in a child process; its result is the child's exit code (-1 when it died).
int InChild(const std::function<int()>& body) {
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid == 0) ::_exit(body());
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// In a child: `dir` becomes read-only for this process only (a read-only bind mount in a mount
// namespace of its own when run as root, the folder's and file's write permission removed
// otherwise).
bool MakeReadOnly(const std::string& dir) {
    if (::geteuid() != 0) {
        for (const auto& e : std::filesystem::directory_iterator(dir))
            ::chmod(e.path().c_str(), 0444);
        return ::chmod(dir.c_str(), 0555) == 0;
    }
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount(dir.c_str(), dir.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
           ::mount(nullptr, dir.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}

bool Exists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

class BtrReadOnly : public ::testing::Test {
  protected:
    void SetUp() override {
        path = dir.File("FRADA47.bt6");
        ASSERT_EQ(Create(path, Layout(kLen, {{{1, 8, kKeyModifiable}}})), kOk);
        ASSERT_EQ(writer.Open(path), kOk);
        for (long n = 1; n <= 60; ++n)
            ASSERT_EQ(writer.Insert(Record(n)), kOk);
        expected = Walk(writer, 0);
        ASSERT_EQ(expected.size(), 60u);
    }
    void TearDown() override {
        Reset();
        ::chmod(dir.Path().c_str(), 0755);
    }
    // In a child: opens read-only and walks; 0 when it read `expected`, else 10 + the status.
    int ReadsTheSame() {
        Handle h;
        if (const int16_t s = h.Open(path, kModeReadOnly)) return 10 + s;
        const auto got = Walk(h, 0);
        if (got != expected) return got.empty() ? 9 : 8;
        return h.Close() == kOk ? 0 : 7;
    }

    TempDir dir;
    std::string path;
    Handle writer;
    std::vector<std::string> expected;
};

TEST_F(BtrReadOnly, ReadOnlyFolderGivesTheSameRecords) {
    // A writer has the file open: its log holds the records, and is read through.
    EXPECT_EQ(InChild([&] { return MakeReadOnly(dir.Path()) ? ReadsTheSame() : 99; }), 0);
    // Nobody has it open any more: the file alone holds everything.
    ASSERT_EQ(writer.Close(), kOk);
    ASSERT_FALSE(Exists(path + "-wal"));
    EXPECT_EQ(InChild([&] { return MakeReadOnly(dir.Path()) ? ReadsTheSame() : 99; }), 0);
    EXPECT_FALSE(Exists(path + "-shm"));
}

TEST_F(BtrReadOnly, ReaderOfAnotherUsersFileLeavesNothingThatLocksItsWriterOut) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs two users";
    ASSERT_EQ(writer.Close(), kOk);
    constexpr uid_t kOwner = 4101;
    constexpr uid_t kReader = 4102;
    ASSERT_EQ(::chmod(dir.Path().c_str(), 0777), 0);
    ASSERT_EQ(::chown(path.c_str(), kOwner, kOwner), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    EXPECT_EQ(InChild([&] {
                  if (::setgid(kReader) != 0 || ::setuid(kReader) != 0) return 99;
                  return ReadsTheSame();
              }),
              0);
    EXPECT_FALSE(Exists(path + "-wal"));
    EXPECT_FALSE(Exists(path + "-shm"));
    EXPECT_EQ(InChild([&] {
                  if (::setgid(kOwner) != 0 || ::setuid(kOwner) != 0) return 99;
                  Handle h;
                  if (const int16_t s = h.Open(path)) return 10 + s;
                  return static_cast<int>(h.Insert(Record(61)));
              }),
              0);
}

TEST_F(BtrReadOnly, FullDiskIsReadWithoutWriting) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs a small file system of its own";
    ASSERT_EQ(writer.Close(), kOk);
    const std::string small = dir.File("petit");
    ASSERT_TRUE(std::filesystem::create_directory(small));
    EXPECT_EQ(InChild([&] {
                  if (::unshare(CLONE_NEWNS) != 0 ||
                      ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                      ::mount("tmpfs", small.c_str(), "tmpfs", 0, "size=512k") != 0)
                      return 99;
                  std::error_code ec;
                  std::filesystem::copy_file(path, small + "/FRADA47.bt6", ec);
                  if (ec) return 98;
                  path = small + "/FRADA47.bt6";
                  // Fill what is left.
                  FILE* f = std::fopen((small + "/plein").c_str(), "wb");
                  const std::string block(4096, 'x');
                  while (f && std::fwrite(block.data(), 1, block.size(), f) == block.size() &&
                         std::fflush(f) == 0) {
                  }
                  if (f) std::fclose(f);
                  return ReadsTheSame();
              }),
              0);
}

}  // namespace
}  // namespace zl3::btr::test
