// Records stored without their trailing run of one repeated byte, and read back whole: the
// stored form itself, the engine's reads and writes through it, files written with whole records,
// and stored forms that cannot be a record.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <string>
#include <vector>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Maintenance.h"
#include "RecordForm.h"

namespace zl3::btr::test {
namespace {

constexpr uint16_t kLen = 32;

std::string Rec(const std::string& head, char fill) {
    std::string r = head;
    r.resize(kLen, fill);
    return r;
}

const uint8_t* Bytes(const std::string& s) {
    return reinterpret_cast<const uint8_t*>(s.data());
}

// Each record with the length of its stored form. The first four bytes are key 0.
struct Case {
    std::string record;
    size_t stored;
};
std::vector<Case> Cases() {
    return {
        {Rec("Abl blank tail", ' '), 15},
        {Rec("Bnl NUL tail", '\0'), 13},
        {Rec("Cem spaces ending the text   ", ' '), 27},   // the text's spaces join the run
        {Rec("", '#'), 1},                                 // all fill
        {std::string(kLen - 1, 'q') + "r", kLen},          // last byte differs: stored as is
        {Rec(std::string(kLen - 2, 'm'), 'z'), kLen - 1},  // a run of two
        {Rec("Fff\xFF", '\xFF'), 4},
    };
}

TEST(BtrRecordForm, StoredFormIsTheRecordUpToItsTrailingRunAndDecodesBack) {
    for (const Case& c : Cases()) {
        SCOPED_TRACE(c.record);
        ASSERT_EQ(c.record.size(), kLen);
        EXPECT_EQ(StoredLength(Bytes(c.record), kLen), c.stored);
        std::string out(kLen, '?');
        ASSERT_TRUE(
            DecodeRecord(Bytes(c.record), c.stored, kLen, reinterpret_cast<uint8_t*>(out.data())));
        EXPECT_EQ(out, c.record);
    }
    // Nothing stored, or more than a record: not a record of this file, the buffer untouched.
    const std::string longer(kLen + 1, 'x');
    std::string out(kLen, '?');
    auto* o = reinterpret_cast<uint8_t*>(out.data());
    EXPECT_FALSE(DecodeRecord(Bytes(longer), 0, kLen, o));
    EXPECT_FALSE(DecodeRecord(nullptr, 0, kLen, o));
    EXPECT_FALSE(DecodeRecord(Bytes(longer), kLen + 1, kLen, o));
    EXPECT_EQ(out, std::string(kLen, '?'));
}

class BtrStoredRecords : public ::testing::Test {
  protected:
    void SetUp() override {
        path = dir.File("FORMS.bt6");
        // Key 0: bytes 1-4, unique, not modifiable; key 1: the last 4 bytes, duplicates, so that
        // the index follows the bytes rebuilt from the fill.
        ASSERT_EQ(Create(path, Layout(kLen, {{{1, 4, 0}},
                                             {{kLen - 3, 4, kKeyDuplicates | kKeyModifiable}}})),
                  kOk);
        ASSERT_EQ(h.Open(path), kOk);
    }
    void TearDown() override { Reset(); }

    // Stored length of each record, in key 0 order.
    std::vector<size_t> StoredLengths() {
        sqlite3* db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
        sqlite3_stmt* st = nullptr;
        sqlite3_prepare_v2(db, "SELECT length(data) FROM zl3_records ORDER BY k0", -1, &st,
                           nullptr);
        std::vector<size_t> r;
        while (sqlite3_step(st) == SQLITE_ROW)
            r.push_back(static_cast<size_t>(sqlite3_column_int64(st, 0)));
        sqlite3_finalize(st);
        sqlite3_close(db);
        return r;
    }

    // Replaces the stored form of the record whose key 0 is `key` (the file closed).
    void Store(const std::string& key, const std::string& bytes) {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
        sqlite3_stmt* st = nullptr;
        sqlite3_prepare_v2(db, "UPDATE zl3_records SET data = ?1 WHERE k0 = ?2", -1, &st, nullptr);
        sqlite3_bind_blob(st, 1, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
        sqlite3_bind_blob(st, 2, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
        EXPECT_EQ(sqlite3_step(st), SQLITE_DONE);
        EXPECT_EQ(sqlite3_changes(db), 1);
        sqlite3_finalize(st);
        sqlite3_close(db);
    }

    TempDir dir;
    std::string path;
    Handle h;
};

TEST_F(BtrStoredRecords, RecordsRoundTripThroughInsertUpdateReadAndWalk) {
    std::vector<std::string> records;
    std::vector<size_t> stored;
    for (const Case& c : Cases()) {
        ASSERT_EQ(h.Insert(c.record), kOk);
        records.push_back(c.record);
    }
    std::sort(records.begin(), records.end());
    for (const std::string& r : records)
        for (const Case& c : Cases())
            if (c.record == r) stored.push_back(c.stored);
    EXPECT_EQ(StoredLengths(), stored);
    EXPECT_EQ(Walk(h, 0), records);
    for (const std::string& r : records) {
        ASSERT_EQ(h.Get(kGetEqual, 0, r.substr(0, 4)), kOk);
        EXPECT_EQ(h.record, r);
    }

    // Each record takes the tail of the next: blank becomes NUL, trimmed becomes whole and back.
    std::vector<std::string> updated;
    for (size_t i = 0; i < records.size(); ++i) {
        ASSERT_EQ(h.Get(kGetEqual, 0, records[i].substr(0, 4)), kOk);
        const std::string r = records[i].substr(0, 4) + records[(i + 1) % records.size()].substr(4);
        ASSERT_EQ(h.Update(r), kOk);
        updated.push_back(r);
    }
    EXPECT_EQ(Walk(h, 0), updated);
    std::vector<std::string> byTail = updated;
    std::stable_sort(byTail.begin(), byTail.end(), [](const std::string& a, const std::string& b) {
        return a.substr(kLen - 4) < b.substr(kLen - 4);
    });
    EXPECT_EQ(Walk(h, 1), byTail);
    ASSERT_EQ(h.Close(), kOk);
    const CheckReport check = CheckFile(path);
    EXPECT_EQ(check.status, kOk);
    EXPECT_TRUE(check.problems.empty());
}

TEST_F(BtrStoredRecords, WholeRecordsOfOlderFilesAreReadAndBadStoredFormsAreDamage) {
    const std::vector<Case> cases = Cases();
    for (const Case& c : cases)
        ASSERT_EQ(h.Insert(c.record), kOk);
    ASSERT_EQ(h.Close(), kOk);
    // As a file written before truncation holds them: every record whole.
    for (const Case& c : cases)
        Store(c.record.substr(0, 4), c.record);
    for (size_t n : StoredLengths())
        EXPECT_EQ(n, kLen);
    ASSERT_EQ(h.Open(path), kOk);
    for (const Case& c : cases) {
        ASSERT_EQ(h.Get(kGetEqual, 0, c.record.substr(0, 4)), kOk);
        EXPECT_EQ(h.record, c.record);
    }
    EXPECT_EQ(Walk(h, 0).size(), cases.size());
    ASSERT_EQ(h.Close(), kOk);
    EXPECT_EQ(CheckFile(path).status, kOk);

    // Nothing stored, and one byte more than the record: damage, never a record.
    Store(cases[0].record.substr(0, 4), "");
    Store(cases[1].record.substr(0, 4), cases[1].record + " ");
    ASSERT_EQ(h.Open(path), kOk);
    for (int i : {0, 1}) {
        h.record.assign(kLen, '?');
        EXPECT_EQ(h.Get(kGetEqual, 0, cases[static_cast<size_t>(i)].record.substr(0, 4)), kIoError);
    }
    EXPECT_EQ(h.Get(kGetEqual, 0, cases[2].record.substr(0, 4)), kOk);
    EXPECT_EQ(h.record, cases[2].record);
    ASSERT_EQ(h.Close(), kOk);
    const CheckReport check = CheckFile(path);
    EXPECT_EQ(check.status, kIoError);
    ASSERT_EQ(check.problems.size(), 2u);
    for (const std::string& p : check.problems)
        EXPECT_NE(p.find("stored length"), std::string::npos) << p;
}

}  // namespace
}  // namespace zl3::btr::test
