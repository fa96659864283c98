// Several processes on one file: concurrent walks and writes, stale updates, lock conflicts, the
// exclusive open mode, writers killed in the middle of their work, idle read snapshots. The
// other processes are instances of btr_peer.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <set>
#include <thread>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Maintenance.h"

namespace zl3::btr::test {
namespace {

constexpr uint16_t kLen = 64;

std::string Record(long number, char fill) {
    char head[24];
    std::snprintf(head, sizeof head, "%08ld", number);
    std::string r(kLen, fill);
    r.replace(0, 8, head);
    return r;
}

std::string Number(long number) {
    return Record(number, ' ').substr(0, 8);
}

class BtrProcesses : public ::testing::Test {
  protected:
    void SetUp() override {
        path = dir.File("SHARED.bt6");
        ASSERT_EQ(Create(path, Layout(kLen, {{{1, 8, kKeyModifiable}},
                                             {{9, 4, kKeyDuplicates | kKeyModifiable}}})),
                  kOk);
    }
    void TearDown() override { Reset(); }

    void Fill(long count, char fill = 'a') {
        Handle h;
        ASSERT_EQ(h.Open(path), kOk);
        ASSERT_EQ(Begin(), kOk);
        for (long n = 1; n <= count; ++n)
            ASSERT_EQ(h.Insert(Record(n, fill)), kOk);
        ASSERT_EQ(End(), kOk);
        ASSERT_EQ(h.Close(), kOk);
    }
    std::vector<std::string> Peer(std::initializer_list<std::string> args) {
        std::vector<std::string> v{BTR_PEER};
        v.insert(v.end(), args);
        return v;
    }
    // Waits for the line `expected` from `p`.
    void Expect(Process& p, const std::string& expected) {
        std::string line;
        ASSERT_TRUE(p.ReadLine(line)) << "no \"" << expected << "\" from the other process";
        ASSERT_EQ(line, expected);
    }

    TempDir dir;
    std::string path;
};

TEST_F(BtrProcesses, WalkersNeverSeeATornRecordWhileAnotherProcessWrites) {
    Fill(300);
    Process writer(Peer({"write", path, "1500", "7"}));
    Process walker1(Peer({"walk", path, "1300"}));
    Process walker2(Peer({"walk", path, "1300"}));
    // This process walks too, checking the same way.
    Handle h;
    ASSERT_EQ(h.Open(path, kModeReadOnly), kOk);
    const auto start = std::chrono::steady_clock::now();
    long walked = 0;
    while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(1200)) {
        std::string previous;
        int16_t s = h.Get(kGetFirst, 1);
        while (s == kOk) {
            ASSERT_EQ(h.record.size(), kLen);
            ASSERT_EQ(h.record.find_first_not_of(h.record[8], 8), std::string::npos)
                << "torn record " << h.record;
            ASSERT_GE(h.record.substr(8, 4), previous);
            previous = h.record.substr(8, 4);
            ++walked;
            s = h.Get(kGetNext, 1);
        }
        ASSERT_EQ(s, kEndOfFile);
    }
    std::string line;
    ASSERT_TRUE(walker1.ReadLine(line));
    EXPECT_EQ(walker1.Wait(), 0) << line;
    ASSERT_TRUE(walker2.ReadLine(line));
    EXPECT_EQ(walker2.Wait(), 0) << line;
    ASSERT_TRUE(writer.ReadLine(line));
    EXPECT_EQ(writer.Wait(), 0) << line;
    ASSERT_EQ(line.rfind("wrote ", 0), 0u);
    EXPECT_GT(std::stol(line.substr(6)), 100) << "the writer hardly wrote";
    EXPECT_GT(walked, 1000);
    ASSERT_EQ(h.Close(), kOk);
    EXPECT_EQ(CheckFile(path).status, kOk);
}

TEST_F(BtrProcesses, ReadAheadSeesAnotherProcessCommit) {
    Fill(100);
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);  // records 3.. are now read ahead
    Process p(Peer({"update", path, "3", "z"}));
    ASSERT_EQ(p.Wait(), kOk);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.record, Record(3, 'z'));
}

TEST_F(BtrProcesses, UpdateOfARecordChangedByAnotherProcessGives80) {
    Fill(5);
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    ASSERT_EQ(h.Get(kGetEqual, 0, Number(2)), kOk);
    Process p(Peer({"update", path, "2", "q"}));
    ASSERT_EQ(p.Wait(), kOk);
    EXPECT_EQ(h.Update(Record(2, 'm')), kConflict);
    EXPECT_EQ(h.Delete(), kConflict);
    ASSERT_EQ(h.Get(kGetEqual, 0, Number(2)), kOk);
    EXPECT_EQ(h.record, Record(2, 'q'));
    EXPECT_EQ(h.Update(Record(2, 'm')), kOk);
}

TEST_F(BtrProcesses, WriteMeetingAnotherProcessTransactionGives85AtOnce) {
    Fill(5);
    Process holder(Peer({"hold", path, "1000"}));
    Expect(holder, "ready");
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(h.Insert(Record(6, 'x')), kFileLocked);
    ASSERT_EQ(h.Get(kGetEqual, 0, Number(1)), kOk);  // reads go on, without the uncommitted insert
    EXPECT_EQ(h.Update(Record(1, 'x')), kFileLocked);
    EXPECT_EQ(h.Delete(), kFileLocked);
    EXPECT_EQ(h.Get(kGetEqual, 0, Number(99999999)), kKeyNotFound);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500))
        << "the engine waited for the lock";
    // In a transaction of this process too; the transaction goes on after the refusal.
    ASSERT_EQ(Begin(), kOk);
    EXPECT_EQ(h.Insert(Record(6, 'x')), kFileLocked);
    ASSERT_EQ(holder.Wait(), kOk);
    EXPECT_EQ(h.Insert(Record(6, 'x')), kOk);
    ASSERT_EQ(End(), kOk);
    EXPECT_EQ(h.Get(kGetEqual, 0, Number(99999999)), kOk);
    EXPECT_EQ(Walk(h, 0).size(), 7u);
}

TEST_F(BtrProcesses, ExclusiveOpenKeepsOtherProcessesOut) {
    Process holder(Peer({"exclusive", path, "1500"}));
    Expect(holder, "ready");
    Handle h;
    EXPECT_EQ(h.Open(path), kFileLocked);
    EXPECT_EQ(h.Open(path, kModeReadOnly), kFileLocked);
    EXPECT_EQ(Create(path, Layout(kLen, {{{1, 8, 0}}}), 0), kFileLocked);
    holder.Kill();  // the lock goes with the process
    holder.Wait();
    ASSERT_EQ(h.Open(path), kOk);
    Process late(Peer({"exclusive", path, "0"}));
    std::string line;
    ASSERT_TRUE(late.ReadLine(line));
    EXPECT_EQ(line, "status 85");
    late.Wait();
}

TEST_F(BtrProcesses, ReadersOpeningAndClosingTogetherNeverSeeALock) {
    // Each open and each last close takes SQLite's short locks (recovery of the log, the
    // checkpoint of the last connection); readers must wait them out, never answer 85.
    Fill(20);
    Process a(Peer({"openclose", path, "1500"}));
    Process b(Peer({"openclose", path, "1500"}));
    Process c(Peer({"openclose", path, "1500"}));
    std::string line;
    for (Process* p : {&a, &b, &c}) {
        ASSERT_TRUE(p->ReadLine(line));
        EXPECT_EQ(line.rfind("opened ", 0), 0u) << line;
        EXPECT_EQ(p->Wait(), 0);
    }
}

TEST_F(BtrProcesses, WriterKilledInsideATransactionLosesOnlyThatTransaction) {
    Process writer(Peer({"crash", path, "200"}));
    Expect(writer, "committed 200");
    Expect(writer, "in transaction");
    writer.Kill();
    EXPECT_EQ(writer.Wait(), zl3::test::kCodeTermine);
    const CheckReport report = CheckFile(path);
    EXPECT_EQ(report.status, kOk) << (report.problems.empty() ? "" : report.problems[0]);
    EXPECT_EQ(report.records, 200);
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    const std::vector<std::string> records = Walk(h, 0);
    ASSERT_EQ(records.size(), 200u);
    for (long n = 1; n <= 200; ++n)
        EXPECT_EQ(records[static_cast<size_t>(n - 1)], Record(n, 'c'));
    // The file takes writes again.
    EXPECT_EQ(h.Insert(Record(100001, 'n')), kOk);
}

TEST_F(BtrProcesses, WriterKilledBetweenCommitsKeepsEveryCommittedRecord) {
    Process writer(Peer({"churn", path}));
    std::string line;
    long last = 0;
    while (last < 150 && writer.ReadLine(line))
        last = std::stol(line.substr(10));
    writer.Kill();
    writer.Wait();
    while (writer.ReadLine(line, 100))
        last = std::stol(line.substr(10));  // lines still in the pipe
    ASSERT_GE(last, 150);
    const CheckReport report = CheckFile(path);
    EXPECT_EQ(report.status, kOk);
    // Every insert reported as done is there; at most the one in progress may be too.
    EXPECT_GE(report.records, last);
    EXPECT_LE(report.records, last + 1);
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    for (long n = 1; n <= last; ++n) {
        ASSERT_EQ(h.Get(kGetEqual, 0, Number(n)), kOk) << n;
        EXPECT_EQ(h.record, Record(n, static_cast<char>('a' + n % 26)));
    }
}

TEST_F(BtrProcesses, IdleReaderDoesNotHoldTheLogBack) {
    Fill(50);
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    ASSERT_EQ(h.Insert(Record(51, 'w')), kOk);  // the log now holds frames
    ASSERT_EQ(h.Get(kGetEqual, 0, Number(10)), kOk);
    // A full checkpoint needs every reader gone. Right after the read, this process still holds
    // its read snapshot...
    auto checkpoint = [&] {
        sqlite3* db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        // A connection only knows the file is in WAL mode once it has read it.
        EXPECT_EQ(sqlite3_exec(db, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr),
                  SQLITE_OK);
        int logFrames = -1, done = -1;
        const int rc =
            sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_TRUNCATE, &logFrames, &done);
        sqlite3_close_v2(db);
        return rc;
    };
    EXPECT_EQ(checkpoint(), SQLITE_BUSY);
    // ... and lets it go once idle (two periods of the idle thread, 200 ms, on a quiet machine).
    int rc = SQLITE_BUSY;
    for (int i = 0; i < 40 && rc == SQLITE_BUSY; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        rc = checkpoint();
    }
    EXPECT_EQ(rc, SQLITE_OK);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.record, Record(11, 'a'));
}

}  // namespace
}  // namespace zl3::btr::test
