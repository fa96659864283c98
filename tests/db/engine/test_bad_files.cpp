// Files that are not the engine's, or are the engine's but damaged: Open and every read give a
// status (30 or 2), never a crash, and the check reports the damage.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <random>
#include <set>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Maintenance.h"
#include "Store.h"

namespace zl3::btr::test {
namespace {

constexpr uint16_t kLen = 200;

class BtrBadFiles : public ::testing::Test {
  protected:
    void TearDown() override { Reset(); }

    // An engine file of `count` records, closed (so that it is complete in itself).
    std::string Build(const std::string& name, int count) {
        const std::string path = dir.File(name);
        EXPECT_EQ(
            Create(path, Layout(kLen, {{{1, 8, kKeyModifiable}},
                                       {{9, 6, kKeyDuplicates | kKeyModifiable | kKeyNoCase}}})),
            kOk);
        Handle h;
        EXPECT_EQ(h.Open(path), kOk);
        EXPECT_EQ(Begin(), kOk);
        for (int n = 0; n < count; ++n) {
            char head[24];
            std::snprintf(head, sizeof head, "%08d", n);
            std::string rec(kLen, ' ');
            for (size_t i = 8; i < rec.size(); ++i)  // no trailing run: whole records stored
                rec[i] = static_cast<char>('a' + (static_cast<size_t>(n) + i) % 26);
            rec.replace(0, 8, head);
            EXPECT_EQ(h.Insert(rec), kOk);
        }
        EXPECT_EQ(End(), kOk);
        EXPECT_EQ(h.Close(), kOk);
        EXPECT_EQ(Counts().files, 0);
        return path;
    }

    // Opens `path` and reads everything every way; returns the statuses seen.
    std::set<int16_t> ReadEverything(const std::string& path, int count) {
        std::set<int16_t> seen;
        Handle h;
        const int16_t open = h.Open(path);
        seen.insert(open);
        if (open != kOk) return seen;
        for (int8_t key = 0; key < 2; ++key) {
            for (uint16_t first : {kGetFirst, kGetLast}) {
                int16_t s = h.Get(first, key);
                int guard = 0;
                while (s == kOk && ++guard <= count + 10)
                    s = h.Get(first == kGetFirst ? kGetNext : kGetPrevious, key);
                seen.insert(s);
            }
        }
        for (int n = 0; n < count; n += 7) {
            char head[24];
            std::snprintf(head, sizeof head, "%08d", n);
            seen.insert(h.Get(kGetEqual, 0, head));
        }
        std::vector<uint8_t> stat;
        seen.insert(h.Stat(stat));
        seen.insert(h.Insert(std::string(kLen, 'z')));
        EXPECT_EQ(h.Close(), kOk);
        return seen;
    }

    TempDir dir;
};

TEST_F(BtrBadFiles, FileLeftInAnotherJournalModeIsServedWithoutLeaking) {
    const std::string path = Build("JOURNAL.bt6", 3);
    auto toRollbackJournal = [&] {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(db, "PRAGMA journal_mode=DELETE", nullptr, nullptr, nullptr),
                  SQLITE_OK);
        sqlite3_close(db);
    };
    auto openClose = [&] {
        toRollbackJournal();
        Handle h;
        ASSERT_EQ(h.Open(path), kOk);
        ASSERT_EQ(h.Close(), kOk);
    };
    openClose();  // first use: SQLite's own caches
    const sqlite3_int64 before = sqlite3_memory_used();
    constexpr int kRounds = 50;
    for (int i = 0; i < kRounds; ++i)
        openClose();
    // Everything SQLite allocated for those files is given back once they are closed (a lost
    // mapping of the log's index costs over 200 bytes an open).
    EXPECT_LT(sqlite3_memory_used(), before + kRounds * 100);
}

TEST_F(BtrBadFiles, FilesOfOtherProgramsAreRefusedWith30) {
    Handle h;
    WriteFileBytes(dir.File("empty.bt6"), "");
    WriteFileBytes(dir.File("short.bt6"), "SQLite format 3");
    WriteFileBytes(dir.File("text.bt6"), std::string(5000, 'x'));
    std::string header(100, '\0');
    header.replace(0, 16, std::string("SQLite format 3\0", 16));
    WriteFileBytes(dir.File("header-only.bt6"), header);
    // A real SQLite database of another program.
    const std::string other = dir.File("other.db");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(other.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(
        sqlite3_exec(db, "CREATE TABLE t(x); INSERT INTO t VALUES(1);", nullptr, nullptr, nullptr),
        SQLITE_OK);
    sqlite3_close(db);
    for (const char* name : {"empty.bt6", "short.bt6", "text.bt6", "header-only.bt6", "other.db"}) {
        EXPECT_EQ(h.Open(dir.File(name)), kNotABtrieveFile) << name;
        EXPECT_EQ(CheckFile(dir.File(name)).status, kNotABtrieveFile) << name;
    }
    EXPECT_EQ(Counts().files, 0);
}

TEST_F(BtrBadFiles, OurMarkerWithoutOurTablesIsADamagedFile) {
    const std::string path = dir.File("gutted.bt6");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    const std::string sql = "PRAGMA application_id=" + std::to_string(kApplicationId) +
                            "; PRAGMA user_version=1; CREATE TABLE t(x);";
    ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    Handle h;
    EXPECT_EQ(h.Open(path), kIoError);
    EXPECT_EQ(CheckFile(path).status, kIoError);
    EXPECT_EQ(Counts().files, 0);
}

TEST_F(BtrBadFiles, TruncatedFileGivesStatus2) {
    const std::string path = Build("TRUNC.bt6", 3000);
    const std::string bytes = ReadFileBytes(path);
    ASSERT_GT(bytes.size(), 500000u);
    WriteFileBytes(path, bytes.substr(0, bytes.size() / 2));
    const std::set<int16_t> seen = ReadEverything(path, 3000);
    for (int16_t s : seen)
        EXPECT_TRUE(s == kOk || s == kIoError || s == kEndOfFile) << s;
    EXPECT_TRUE(seen.count(kIoError)) << "the missing half went unnoticed";
    EXPECT_EQ(CheckFile(path).status, kIoError);

    WriteFileBytes(path, bytes.substr(0, 1000));  // the header is still there
    Handle h;
    EXPECT_EQ(h.Open(path), kIoError);
    WriteFileBytes(path, bytes.substr(0, 60));  // not even the header
    EXPECT_EQ(h.Open(path), kNotABtrieveFile);
    EXPECT_EQ(Counts().files, 0);
}

TEST_F(BtrBadFiles, RandomBytesInTheMiddleGiveStatus2NotACrash) {
    const std::string path = Build("CORRUPT.bt6", 3000);
    std::string bytes = ReadFileBytes(path);
    std::mt19937 rng(2024);
    for (int hit = 0; hit < 3; ++hit) {
        // 6 KB of noise over page boundaries, at three places of the second half.
        const size_t at = bytes.size() / 2 + static_cast<size_t>(hit) * bytes.size() / 8;
        for (size_t i = at; i < at + 6144 && i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(rng() & 0xFF);
    }
    WriteFileBytes(path, bytes);
    const std::set<int16_t> seen = ReadEverything(path, 3000);
    for (int16_t s : seen)
        EXPECT_TRUE(s == kOk || s == kIoError || s == kEndOfFile || s == kKeyNotFound ||
                    s == kDuplicateKey)
            << s;
    EXPECT_TRUE(seen.count(kIoError)) << "the damage went unnoticed";
    const CheckReport report = CheckFile(path);
    EXPECT_EQ(report.status, kIoError);
    EXPECT_FALSE(report.problems.empty());
}

TEST_F(BtrBadFiles, DamagedFirstPageGivesStatus2) {
    const std::string path = Build("HEAD.bt6", 100);
    std::string bytes = ReadFileBytes(path);
    std::mt19937 rng(7);
    for (size_t i = 100; i < 4096; ++i)
        bytes[i] = static_cast<char>(rng() & 0xFF);
    WriteFileBytes(path, bytes);
    Handle h;
    EXPECT_EQ(h.Open(path), kIoError);
    EXPECT_EQ(CheckFile(path).status, kIoError);
}

}  // namespace
}  // namespace zl3::btr::test
