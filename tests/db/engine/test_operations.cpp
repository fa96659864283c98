// One test per status and per ordering rule of the engine's operations.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Store.h"

namespace zl3::btr::test {
namespace {

constexpr uint16_t kLen = 40;
constexpr uint16_t D = kKeyDuplicates, M = kKeyModifiable, N = kKeyNoCase;

// Test file: key 0 code (1/6, unique, not modifiable); key 1 name (7/10, duplicates,
// case-insensitive); key 2 group then the first 3 name bytes (17/2 + 7/3, duplicates,
// case-sensitive); key 3 number (19/4, unique, modifiable).
std::vector<uint8_t> PeopleLayout() {
    return Layout(
        kLen, {{{1, 6, 0}}, {{7, 10, D | M | N}}, {{17, 2, D | M}, {7, 3, D | M}}, {{19, 4, M}}});
}

// A value of key 1: the name padded to its 10 bytes.
std::string Name(const std::string& name) {
    std::string n = name;
    n.resize(10, ' ');
    return n;
}

std::string Rec(const std::string& code, const std::string& name, const std::string& group,
                const std::string& number, char fill = '.') {
    std::string r(kLen, fill);
    auto put = [&](size_t at, const std::string& v, size_t width) {
        std::string f = v;
        f.resize(width, ' ');
        r.replace(at, width, f);
    };
    put(0, code, 6);
    put(6, name, 10);
    put(16, group, 2);
    put(18, number, 4);
    return r;
}

class BtrOps : public ::testing::Test {
  protected:
    void SetUp() override {
        path = dir.File("PEOPLE.bt6");
        ASSERT_EQ(Create(path, PeopleLayout()), kOk);
        ASSERT_EQ(h.Open(path), kOk);
    }
    void TearDown() override { Reset(); }

    void Fill(const std::vector<std::string>& records) {
        for (const std::string& r : records)
            ASSERT_EQ(h.Insert(r), kOk) << r;
    }
    std::vector<std::string> Codes(int8_t keyNumber) {
        std::vector<std::string> codes;
        for (const std::string& r : Walk(h, keyNumber))
            codes.push_back(r.substr(0, 6));
        return codes;
    }

    TempDir dir;
    std::string path;
    Handle h;
};

using CodeList = std::vector<std::string>;

// ---- Open, close and position blocks -----------------------------------------------------------

TEST_F(BtrOps, OpenReportsMissingBadAndForeignFiles) {
    Handle o;
    EXPECT_EQ(o.Open(dir.File("MISSING.bt6")), kFileNotFound);
    EXPECT_EQ(o.Open(dir.File("NODIR/X.bt6")), kFileNotFound);
    EXPECT_EQ(o.Open(""), kInvalidFileName);
    EXPECT_EQ(o.Open(dir.Path()), kFileNotFound);
    WriteFileBytes(dir.File("notes.txt"),
                   "a plain text file, long enough to be more than one "
                   "hundred bytes so that only its content can tell.\n");
    EXPECT_EQ(o.Open(dir.File("notes.txt")), kNotABtrieveFile);
    EXPECT_EQ(o.Open(path, 1), kInvalidOperation);
    EXPECT_EQ(o.Open(path, -5), kInvalidOperation);
    EXPECT_EQ(Counts().positionBlocks, 1);
}

TEST_F(BtrOps, PathEndsAtNulOrTrailingSpacesWithinKeyLength) {
    Handle o;
    std::string key = path + std::string(20, ' ') + "garbage";
    key[path.size() + 20] = '\0';
    uint32_t length = 0;
    ASSERT_EQ(BtrCall(kOpen, o.block.data(), nullptr, &length, key.data(),
                      static_cast<uint8_t>(key.size()), 0),
              kOk);
    EXPECT_EQ(o.Close(), kOk);
    // Without a NUL the path is the key length's bytes, as the catalogue's Create passes it.
    std::string exact = path;
    ASSERT_EQ(BtrCall(kOpen, o.block.data(), nullptr, &length, exact.data(),
                      static_cast<uint8_t>(exact.size()), 0),
              kOk);
    EXPECT_EQ(BtrCall(kOpen, o.block.data(), nullptr, &length, exact.data(),
                      static_cast<uint8_t>(exact.size() - 2), 0),
              kFileNotFound);
}

TEST_F(BtrOps, BlocksThatWereNeverOpenedGiveStatus3ForEveryOperation) {
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    std::string garbage(kPositionBlockSize, '\0');
    for (size_t i = 0; i < garbage.size(); ++i)
        garbage[i] = static_cast<char>(i * 37 + 11);
    std::string forged = h.block;  // the right magic with another generation
    forged[16] ^= 0x5A;
    for (const std::string& bytes : {std::string(kPositionBlockSize, ' '),
                                     std::string(kPositionBlockSize, '\0'), garbage, forged}) {
        for (uint16_t op : {kClose, kUpdate, kDelete, kGetEqual, kGetNext, kGetPrevious,
                            kGetGreater, kGetGreaterOrEqual, kGetLess, kGetLessOrEqual, kGetFirst,
                            kGetLast, kStat, kRelease, kInsert}) {
            std::string block = bytes;
            std::string data = Rec("Z99999", "zz", "G9", "9999");
            std::string key(kMaxKeyLength, 'A');
            uint32_t length = kLen;
            EXPECT_EQ(BtrCall(op, block.data(), data.data(), &length, key.data(), 255, 0),
                      kFileNotOpen)
                << "operation " << op;
        }
    }
    uint32_t length = 0;
    EXPECT_EQ(BtrCall(kGetFirst, nullptr, nullptr, &length, nullptr, 0, 0), kFileNotOpen);
    EXPECT_EQ(Walk(h, 0).size(), 1u);  // the real block still works
}

TEST_F(BtrOps, ClosedBlockAndReleaseGiveStatus3Afterwards) {
    Handle second;
    ASSERT_EQ(second.Open(path), kOk);
    const std::string copy = second.block;
    uint32_t length = 0;
    ASSERT_EQ(BtrCall(kRelease, second.block.data(), nullptr, &length, second.key.data(), 255, 0),
              kOk);
    EXPECT_EQ(second.Get(kGetFirst, 0), kFileNotOpen);
    second.block = copy;  // the bytes kept by a caller that did not notice the release
    EXPECT_EQ(second.Get(kGetFirst, 0), kFileNotOpen);
    EXPECT_EQ(second.Close(), kFileNotOpen);
    EXPECT_EQ(h.Close(), kOk);
    EXPECT_EQ(Counts().files, 0);
}

TEST_F(BtrOps, UnknownOperationGivesStatus1) {
    uint32_t length = 0;
    for (uint16_t op : {16, 22, 23, 105, 999, 65535})
        EXPECT_EQ(BtrCall(op, h.block.data(), nullptr, &length, h.key.data(), 255, 0),
                  kInvalidOperation);
}

TEST_F(BtrOps, TwoBlocksOnOneFileWalkIndependently) {
    Fill({Rec("A00001", "delta", "G1", "0004"), Rec("A00002", "alpha", "G1", "0003"),
          Rec("A00003", "charlie", "G2", "0002"), Rec("A00004", "bravo", "G2", "0001")});
    Handle other;
    ASSERT_EQ(other.Open(path), kOk);
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    ASSERT_EQ(other.Get(kGetFirst, 1), kOk);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00002");
    ASSERT_EQ(other.Get(kGetNext, 1), kOk);
    EXPECT_EQ(other.record.substr(6, 5), "bravo");
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00003");
    ASSERT_EQ(other.Get(kGetNext, 1), kOk);
    EXPECT_EQ(other.record.substr(6, 7), "charlie");
    EXPECT_EQ(Counts().files, 1);
    EXPECT_EQ(Counts().positionBlocks, 2);
}

TEST_F(BtrOps, ExclusiveOpenKeepsOtherOpensOut) {
    ASSERT_EQ(h.Close(), kOk);
    Handle excl, other;
    ASSERT_EQ(excl.Open(path, kModeExclusive), kOk);
    EXPECT_EQ(other.Open(path), kFileLocked);
    EXPECT_EQ(other.Open(path, kModeReadOnly), kFileLocked);
    ASSERT_EQ(excl.Close(), kOk);
    ASSERT_EQ(other.Open(path), kOk);
    EXPECT_EQ(excl.Open(path, kModeExclusive), kFileLocked);
}

TEST_F(BtrOps, AFileIsKnownByItselfWhateverItsPathAndName) {
    // A UTF-8 name is one file for the engine's own calls and for SQLite alike.
    const std::string donne = dir.File("Donn\xC3\xA9.bt6");
    ASSERT_EQ(Create(donne, PeopleLayout()), kOk);
    Handle a, b, c;
    ASSERT_EQ(a.Open(donne), kOk);
    ASSERT_EQ(a.Insert(Rec("A00001", "alpha", "G1", "0001")), kOk);
    namespace fs = std::filesystem;
    std::vector<std::string> names;  // as the system lists them, in UTF-8
    for (const auto& e : fs::directory_iterator(fs::path(std::u8string(
             reinterpret_cast<const char8_t*>(dir.Path().data()), dir.Path().size())))) {
        const std::u8string n = e.path().filename().u8string();
        if (e.path().extension() == ".bt6") names.emplace_back(n.begin(), n.end());
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"Donn\xC3\xA9.bt6", "PEOPLE.bt6"}));
    // Another spelling of the same path reaches the same open file...
    EXPECT_EQ(b.Open(dir.Path() + "/./Donn\xC3\xA9.bt6", kModeExclusive), kFileLocked);
    ASSERT_EQ(b.Open(dir.Path() + "/./Donn\xC3\xA9.bt6"), kOk);
    EXPECT_EQ(Walk(b, 0).size(), 1u);
    // ...and two files open at once stay two files.
    ASSERT_EQ(c.Open(path), kOk);
    EXPECT_TRUE(Walk(c, 0).empty());
}

// ---- Create and Stat ---------------------------------------------------------------------------

TEST_F(BtrOps, CreateChecksTheLayout) {
    const std::string f = dir.File("NEW.bt6");
    auto layout = [](uint16_t rec, uint16_t page, std::vector<std::vector<Seg>> keys) {
        return Layout(rec, keys, page);
    };
    EXPECT_EQ(Create(f, layout(100, 1000, {{{1, 4, 0}}})), kPageSizeError);
    EXPECT_EQ(Create(f, layout(100, 256, {{{1, 4, 0}}})), kPageSizeError);
    EXPECT_EQ(Create(f, layout(100, 1024, {})), kNumberOfKeysInvalid);
    EXPECT_EQ(Create(f, layout(100, 1024, {{{0, 4, 0}}})), kKeyPositionInvalid);
    EXPECT_EQ(Create(f, layout(100, 1024, {{{98, 4, 0}}})), kKeyPositionInvalid);
    EXPECT_EQ(Create(f, layout(100, 1024, {{{1, 0, 0}}})), kKeyLengthInvalid);
    EXPECT_EQ(Create(f, layout(3, 1024, {{{1, 2, 0}}})), kRecordLengthInvalid);
    EXPECT_EQ(Create(f, layout(600, 1024, {{{1, 200, 0}, {201, 100, 0}}})), kKeyLengthInvalid);
    EXPECT_EQ(Create(f, layout(100, 1024, {{{1, 4, 32}}})), kInvalidKeyFlags);  // collating
    EXPECT_EQ(Create(f, layout(100, 1024, {{{1, 4, 4}}})), kInvalidKeyFlags);   // binary
    EXPECT_EQ(Create(f, layout(100, 1024, {{{1, 4, D}, {5, 2, 0}}})), kInvalidKeyFlags);
    // The layout must hold every segment its keys announce.
    std::vector<uint8_t> cut = layout(100, 1024, {{{1, 4, 0}}, {{5, 4, 0}}});
    cut.resize(cut.size() - 1);
    EXPECT_EQ(Create(f, cut), kDataBufferLength);
    EXPECT_EQ(Create(f, std::vector<uint8_t>(10, 0)), kDataBufferLength);
    EXPECT_FALSE(std::ifstream(f).good());
    EXPECT_EQ(Create(f, layout(100, 1536, {{{1, 4, 0}}})), kOk);
}

TEST_F(BtrOps, CreateKeepsOrReplacesAnExistingFile) {
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    ASSERT_EQ(h.Close(), kOk);
    EXPECT_EQ(Create(path, PeopleLayout(), -1), kFileExists);
    ASSERT_EQ(h.Open(path), kOk);
    EXPECT_EQ(Walk(h, 0).size(), 1u);
    // Replacing a file that is open (here, by this process) is refused.
    EXPECT_EQ(Create(path, PeopleLayout(), 0), kFileLocked);
    ASSERT_EQ(h.Close(), kOk);
    EXPECT_EQ(Create(path, PeopleLayout(), 0), kOk);
    ASSERT_EQ(h.Open(path), kOk);
    EXPECT_TRUE(Walk(h, 0).empty());
    EXPECT_EQ(Create(dir.File("NODIR/X.bt6"), PeopleLayout()), kFileNotFound);
    EXPECT_EQ(Create(path, PeopleLayout(), 3), kInvalidOperation);
}

TEST_F(BtrOps, StatReturnsTheLayoutWithCounts) {
    Fill({Rec("A00001", "alpha", "G1", "0001"), Rec("A00002", "ALPHA", "G1", "0002"),
          Rec("A00003", "beta", "G2", "0003")});
    std::vector<uint8_t> stat;
    ASSERT_EQ(h.Stat(stat), kOk);
    std::vector<uint8_t> expected = PeopleLayout();
    ASSERT_EQ(stat.size(), expected.size());
    EXPECT_EQ(h.length, expected.size());
    auto u32 = [&](size_t at) {
        return uint32_t{stat[at]} | uint32_t{stat[at + 1]} << 8 | uint32_t{stat[at + 2]} << 16 |
               uint32_t{stat[at + 3]} << 24;
    };
    EXPECT_EQ(u32(6), 3u);  // records
    EXPECT_EQ(stat[5], kFileVersion);
    EXPECT_EQ(u32(16 + 6), 3u);  // key 0: three codes
    EXPECT_EQ(u32(32 + 6), 2u);  // key 1: alpha and ALPHA are one value
    EXPECT_EQ(u32(48 + 6), 3u);  // key 2 (case-sensitive), first segment
    EXPECT_EQ(u32(64 + 6), 3u);  // key 2, second segment
    for (size_t i = 0; i < stat.size(); ++i) {
        const bool statField =
            i == 5 || (i >= 6 && i < 10) || (i >= 16 && (i - 16) % 16 >= 6 && (i - 16) % 16 < 10);
        if (!statField) {
            EXPECT_EQ(stat[i], expected[i]) << "byte " << i;
        }
    }
    uint32_t length = static_cast<uint32_t>(expected.size() - 1);
    std::vector<uint8_t> small(length, 0x77);
    EXPECT_EQ(BtrCall(kStat, h.block.data(), small.data(), &length, h.key.data(), 255, 0),
              kDataBufferLength);
    EXPECT_EQ(small, std::vector<uint8_t>(small.size(), 0x77));
}

// ---- Reads
// ---------------------------------------------------------------------------------------

TEST_F(BtrOps, ReadsReturnRecordKeyAndLength) {
    Fill({Rec("A00002", "beta", "G1", "0002"), Rec("A00001", "alpha", "G2", "0001")});
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    EXPECT_EQ(h.record, Rec("A00001", "alpha", "G2", "0001"));
    EXPECT_EQ(h.length, kLen);
    EXPECT_EQ(h.Key(6), "A00001");
    EXPECT_EQ(h.key[6], '\0');  // only the key's bytes are written
    ASSERT_EQ(h.Get(kGetFirst, 2), kOk);
    EXPECT_EQ(h.Key(5), "G1bet");  // segments in key order: group then name
}

TEST_F(BtrOps, WalksFollowKeyOrderAndEndWithStatus9BothWays) {
    Fill({Rec("C00003", "gamma", "G1", "0003"), Rec("A00001", "alpha", "G1", "0001"),
          Rec("B00002", "beta", "G1", "0002")});
    EXPECT_EQ(Codes(0), (CodeList{"A00001", "B00002", "C00003"}));
    ASSERT_EQ(h.Get(kGetLast, 0), kOk);
    EXPECT_EQ(h.Key(6), "C00003");
    EXPECT_EQ(h.Get(kGetNext, 0), kEndOfFile);
    EXPECT_EQ(h.Get(kGetNext, 0), kEndOfFile);
    ASSERT_EQ(h.Get(kGetPrevious, 0), kOk);  // the position stayed on the last record
    EXPECT_EQ(h.Key(6), "B00002");
    ASSERT_EQ(h.Get(kGetPrevious, 0), kOk);
    EXPECT_EQ(h.Get(kGetPrevious, 0), kEndOfFile);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.Key(6), "B00002");
}

TEST_F(BtrOps, EmptyFileGivesStatus9And4) {
    EXPECT_EQ(h.Get(kGetFirst, 0), kEndOfFile);
    EXPECT_EQ(h.Get(kGetLast, 1), kEndOfFile);
    EXPECT_EQ(h.Get(kGetEqual, 0, "A00001"), kKeyNotFound);
    EXPECT_EQ(h.Get(kGetGreaterOrEqual, 0, "A00001"), kEndOfFile);
    EXPECT_EQ(h.Get(kGetLessOrEqual, 0, "A00001"), kEndOfFile);
}

TEST_F(BtrOps, GreaterAndLessFindNeighboursOrStatus9) {
    Fill({Rec("A00010", "a", "G1", "0001"), Rec("A00020", "b", "G1", "0002"),
          Rec("A00030", "c", "G1", "0003")});
    auto code = [&](uint16_t op, const std::string& k) {
        const int16_t s = h.Get(op, 0, k);
        return s == kOk ? h.Key(6) : "status " + std::to_string(s);
    };
    EXPECT_EQ(code(kGetEqual, "A00020"), "A00020");
    EXPECT_EQ(code(kGetEqual, "A00025"), "status 4");
    EXPECT_EQ(code(kGetGreater, "A00020"), "A00030");
    EXPECT_EQ(code(kGetGreater, "A00030"), "status 9");
    EXPECT_EQ(code(kGetGreaterOrEqual, "A00020"), "A00020");
    EXPECT_EQ(code(kGetGreaterOrEqual, "A00021"), "A00030");
    EXPECT_EQ(code(kGetGreaterOrEqual, "A00031"), "status 9");
    EXPECT_EQ(code(kGetLess, "A00020"), "A00010");
    EXPECT_EQ(code(kGetLess, "A00010"), "status 9");
    EXPECT_EQ(code(kGetLessOrEqual, "A00020"), "A00020");
    EXPECT_EQ(code(kGetLessOrEqual, "A00019"), "A00010");
    EXPECT_EQ(code(kGetLessOrEqual, "A00009"), "status 9");
    // A high filler (character 255) finds the last key of a range.
    EXPECT_EQ(code(kGetLessOrEqual, "A\xFF\xFF\xFF\xFF\xFF"), "A00030");
}

TEST_F(BtrOps, FailedGetLeavesThePositionWhereItWas) {
    Fill({Rec("A00010", "a", "G1", "0001"), Rec("A00020", "b", "G1", "0002"),
          Rec("A00030", "c", "G1", "0003")});
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00010"), kOk);
    EXPECT_EQ(h.Get(kGetEqual, 0, "A00015"), kKeyNotFound);
    EXPECT_EQ(h.Get(kGetGreater, 0, "A00030"), kEndOfFile);
    EXPECT_EQ(h.Get(kGetEqual, 1, Name("zzz")), kKeyNotFound);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.Key(6), "A00020");
}

TEST_F(BtrOps, DuplicatesComeInInsertionOrder) {
    Fill({Rec("A00003", "same", "G1", "0003"), Rec("A00001", "same", "G1", "0001"),
          Rec("A00002", "same", "G1", "0002"), Rec("A00004", "other", "G1", "0004"),
          Rec("A00000", "aaa", "G1", "0000")});
    ASSERT_EQ(h.Get(kGetEqual, 1, Name("same")), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00003");  // first inserted
    ASSERT_EQ(h.Get(kGetNext, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00001");
    ASSERT_EQ(h.Get(kGetNext, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00002");
    ASSERT_EQ(h.Get(kGetGreaterOrEqual, 1, Name("same")), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00003");
    ASSERT_EQ(h.Get(kGetLessOrEqual, 1, Name("same")), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00002");  // last inserted
    ASSERT_EQ(h.Get(kGetLess, 1, Name("same")), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00004");  // "other", before every "same"
    ASSERT_EQ(h.Get(kGetGreater, 1, Name("other")), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00003");
    ASSERT_EQ(h.Get(kGetLast, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00002");
    ASSERT_EQ(h.Get(kGetPrevious, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00001");
}

TEST_F(BtrOps, UpdatedDuplicateGoesToTheEndOfItsNewValue) {
    Fill({Rec("A00001", "same", "G1", "0001"), Rec("A00002", "same", "G1", "0002"),
          Rec("A00003", "other", "G1", "0003"), Rec("A00004", "same", "G1", "0004")});
    // Changing another field keeps the place among duplicates.
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(h.Update(Rec("A00001", "same", "G1", "0001", '#')), kOk);
    EXPECT_EQ(Codes(1), (CodeList{"A00003", "A00001", "A00002", "A00004"}));
    // Leaving the value and coming back puts the record last.
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(h.Update(Rec("A00001", "moved", "G1", "0001")), kOk);
    ASSERT_EQ(h.Update(Rec("A00001", "same", "G1", "0001")), kOk);
    EXPECT_EQ(Codes(1), (CodeList{"A00003", "A00002", "A00004", "A00001"}));
    // A change of case only is no change of value for a case-insensitive key.
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00002"), kOk);
    ASSERT_EQ(h.Update(Rec("A00002", "SAME", "G1", "0002")), kOk);
    EXPECT_EQ(Codes(1), (CodeList{"A00003", "A00002", "A00004", "A00001"}));
}

TEST_F(BtrOps, CaseInsensitiveKeyFoldsLettersOnly) {
    Fill({Rec("A00001", "Zeta", "G1", "0001"), Rec("A00002", "alpha", "G1", "0002"),
          Rec("A00003", "Beta", "G1", "0003"), Rec("A00004", "[x]", "G1", "0004"),
          Rec("A00005", "\xE9t\xE9", "G1", "0005")});
    // a-z compare as A-Z: "[" (0x5B) comes after every letter, "é" (0xE9) is not folded.
    EXPECT_EQ(Codes(1), (CodeList{"A00002", "A00003", "A00001", "A00004", "A00005"}));
    ASSERT_EQ(h.Get(kGetEqual, 1, Name("ALPHA")), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00002");
    EXPECT_EQ(h.Key(10), "alpha     ");  // the stored value, not the folded one
    EXPECT_EQ(h.Get(kGetEqual, 1, Name("\xC9T\xC9")), kKeyNotFound);
    // The segmented key 2 is case-sensitive: "Zet" < "alp".
    EXPECT_EQ(Codes(2), (CodeList{"A00003", "A00001", "A00004", "A00002", "A00005"}));
}

TEST_F(BtrOps, SegmentedKeyConcatenatesItsSegmentsInOrder) {
    Fill({Rec("A00001", "abc", "G2", "0001"), Rec("A00002", "xyz", "G1", "0002"),
          Rec("A00003", "abd", "G1", "0003")});
    EXPECT_EQ(Codes(2), (CodeList{"A00003", "A00002", "A00001"}));
    ASSERT_EQ(h.Get(kGetEqual, 2, "G1xyz"), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00002");
    ASSERT_EQ(h.Get(kGetGreater, 2, "G1abd"), kOk);
    EXPECT_EQ(h.Key(5), "G1xyz");
}

TEST(BtrKeys, BytesCompareUnsignedAndDescendingAndNullKeysWork) {
    TempDir dir;
    const std::string path = dir.File("BYTES.bt6");
    // key 0: 1/2 unique; key 1: 3/1 descending, duplicates; key 2: 4/2 null key (all spaces).
    ASSERT_EQ(Create(path, Layout(8, {{{1, 2, 0}},
                                      {{3, 1, D | kKeyDescending}},
                                      {{4, 2, D | M | kKeyNullAll, ' '}}})),
              kOk);
    Handle h;
    ASSERT_EQ(h.Open(path), kOk);
    for (const std::string& r : {std::string("\x80"
                                             "a"
                                             "B"
                                             "xy...",
                                             8),
                                 std::string("\x7F"
                                             "b"
                                             "A"
                                             "  ...",
                                             8),
                                 std::string("\x00"
                                             "c"
                                             "C"
                                             " z...",
                                             8)})
        ASSERT_EQ(h.Insert(r), kOk);
    std::vector<std::string> order;
    for (const std::string& r : Walk(h, 0))
        order.push_back(r.substr(0, 2));
    EXPECT_EQ(order, (std::vector<std::string>{std::string("\x00"
                                                           "c",
                                                           2),
                                               "\x7F"
                                               "b",
                                               "\x80"
                                               "a"}));
    order.clear();
    for (const std::string& r : Walk(h, 1))
        order.push_back(r.substr(2, 1));
    EXPECT_EQ(order, (std::vector<std::string>{"C", "B", "A"}));
    ASSERT_EQ(h.Get(kGetGreater, 1, "C"), kOk);  // descending: "greater" is further down
    EXPECT_EQ(h.Key(1), "B");
    // The record whose key 2 is all spaces has no entry in that key.
    order.clear();
    for (const std::string& r : Walk(h, 2))
        order.push_back(r.substr(3, 2));
    EXPECT_EQ(order, (std::vector<std::string>{" z", "xy"}));
    EXPECT_EQ(h.Get(kGetEqual, 2, "  "), kKeyNotFound);
    // Inserting on that key leaves a current record but no position in the key.
    ASSERT_EQ(h.Insert(std::string("\x01"
                                   "d"
                                   "D"
                                   "  ...",
                                   8),
                       2),
              kOk);
    EXPECT_EQ(h.Get(kGetNext, 2), kInvalidPositioning);
    EXPECT_EQ(h.Update(std::string("\x01"
                                   "d"
                                   "D"
                                   "qq...",
                                   8),
                       2),
              kOk);
    ASSERT_EQ(h.Get(kGetNext, 2), kOk);
    EXPECT_EQ(h.record.substr(3, 2), "xy");
    Reset();
}

TEST_F(BtrOps, StepNeedsAPositionOnTheSameKey) {
    Fill({Rec("A00001", "a", "G1", "0001"), Rec("A00002", "b", "G1", "0002")});
    Handle fresh;
    ASSERT_EQ(fresh.Open(path), kOk);
    EXPECT_EQ(fresh.Get(kGetNext, 0), kInvalidPositioning);
    EXPECT_EQ(fresh.Get(kGetPrevious, 1), kInvalidPositioning);
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    EXPECT_EQ(h.Get(kGetNext, 1), kDifferentKeyNumber);
    EXPECT_EQ(h.Get(kGetPrevious, 3), kDifferentKeyNumber);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);  // the position is untouched
    EXPECT_EQ(h.Key(6), "A00002");
    ASSERT_EQ(h.Close(), kOk);
    ASSERT_EQ(h.Open(path), kOk);
    EXPECT_EQ(h.Get(kGetNext, 0), kInvalidPositioning);
}

TEST_F(BtrOps, BadKeyNumberKeyLengthAndBufferLength) {
    Fill({Rec("A00001", "a", "G1", "0001")});
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    for (int8_t bad : {int8_t{-1}, int8_t{4}, int8_t{100}}) {
        EXPECT_EQ(h.Get(kGetFirst, bad), kInvalidKeyNumber);
        EXPECT_EQ(h.Get(kGetEqual, bad, "A00001"), kInvalidKeyNumber);
        EXPECT_EQ(h.Insert(Rec("A00002", "b", "G1", "0002"), bad), kInvalidKeyNumber);
    }
    // Key buffer shorter than the key (key 1 is 10 bytes long).
    std::string record(kLen, '\0');
    std::string key = "a";
    uint32_t length = kLen;
    EXPECT_EQ(BtrCall(kGetEqual, h.block.data(), record.data(), &length, key.data(), 9, 1),
              kKeyBufferTooShort);
    EXPECT_EQ(BtrCall(kGetFirst, h.block.data(), record.data(), &length, key.data(), 9, 1),
              kKeyBufferTooShort);
    EXPECT_EQ(BtrCall(kGetFirst, h.block.data(), record.data(), &length, nullptr, 255, 0),
              kKeyBufferTooShort);
    // Data buffer shorter than the record: nothing copied, position kept.
    EXPECT_EQ(h.Get(kGetEqual, 0, "A00001", kLen - 1), kDataBufferLength);
    EXPECT_EQ(h.record, std::string(kLen - 1, '\xEE'));
    EXPECT_EQ(h.Get(kGetNext, 0, "", 0), kDataBufferLength);
    length = kLen;
    EXPECT_EQ(BtrCall(kGetFirst, h.block.data(), nullptr, &length, key.data(), 255, 0),
              kDataBufferLength);
    EXPECT_EQ(h.Get(kGetNext, 0), kEndOfFile);
}

// ---- Writes
// --------------------------------------------------------------------------------------

TEST_F(BtrOps, InsertReturnsTheKeyAndPositionsOnTheNewRecord) {
    Fill({Rec("A00001", "alpha", "G1", "0001"), Rec("A00003", "gamma", "G1", "0003")});
    ASSERT_EQ(h.Insert(Rec("A00002", "beta", "G1", "0002"), 1), kOk);
    EXPECT_EQ(h.Key(10), "beta      ");
    ASSERT_EQ(h.Get(kGetNext, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00003");
    ASSERT_EQ(h.Insert(Rec("A00000", "zulu", "G1", "0000"), 0), kOk);
    EXPECT_EQ(h.Get(kGetPrevious, 0), kEndOfFile);
}

TEST_F(BtrOps, InsertAndUpdateRefuseDuplicatesOnUniqueKeys) {
    Fill({Rec("A00001", "alpha", "G1", "0001"), Rec("A00002", "beta", "G1", "0002")});
    EXPECT_EQ(h.Insert(Rec("A00001", "other", "G1", "0009")), kDuplicateKey);  // key 0
    EXPECT_EQ(h.Insert(Rec("A00009", "other", "G1", "0002")), kDuplicateKey);  // key 3
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00002"), kOk);
    EXPECT_EQ(h.Update(Rec("A00002", "beta", "G1", "0001")), kDuplicateKey);
    EXPECT_EQ(Codes(0), (CodeList{"A00001", "A00002"}));
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00002"), kOk);
    EXPECT_EQ(h.record, Rec("A00002", "beta", "G1", "0002"));
}

TEST_F(BtrOps, RecordLengthIsFixed) {
    EXPECT_EQ(h.Insert(std::string(kLen - 1, 'x')), kDataBufferLength);
    EXPECT_EQ(h.Insert(std::string(kLen + 1, 'x')), kDataBufferLength);
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    EXPECT_EQ(h.Update(Rec("A00001", "alpha", "G1", "0001") + "x"), kDataBufferLength);
    EXPECT_EQ(Walk(h, 0).size(), 1u);
}

TEST_F(BtrOps, UpdateKeepsNonModifiableKeys) {
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    EXPECT_EQ(h.Update(Rec("A00009", "alpha", "G1", "0001")), kModifiableKeyChanged);
    EXPECT_EQ(h.Update(Rec("a00001", "alpha", "G1", "0001")), kModifiableKeyChanged);
    ASSERT_EQ(h.Update(Rec("A00001", "renamed", "G1", "0007")), kOk);
    EXPECT_EQ(h.Key(6), "A00001");
    ASSERT_EQ(h.Get(kGetEqual, 3, "0007"), kOk);
    EXPECT_EQ(h.record.substr(6, 7), "renamed");
}

TEST_F(BtrOps, UpdateAndDeleteNeedACurrentRecord) {
    Fill({Rec("A00001", "alpha", "G1", "0001"), Rec("A00002", "beta", "G1", "0002"),
          Rec("A00003", "gamma", "G1", "0003")});
    Handle fresh;
    ASSERT_EQ(fresh.Open(path), kOk);
    EXPECT_EQ(fresh.Update(Rec("A00001", "x", "G1", "0001")), kInvalidPositioning);
    EXPECT_EQ(fresh.Delete(), kInvalidPositioning);
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00002"), kOk);
    ASSERT_EQ(h.Delete(), kOk);
    EXPECT_EQ(h.Delete(), kInvalidPositioning);
    EXPECT_EQ(h.Update(Rec("A00002", "x", "G1", "0002")), kInvalidPositioning);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);  // the record that followed the deleted one
    EXPECT_EQ(h.Key(6), "A00003");
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(h.Delete(), kOk);
    EXPECT_EQ(h.Get(kGetPrevious, 0), kEndOfFile);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);
    EXPECT_EQ(h.Key(6), "A00003");
}

TEST_F(BtrOps, DeleteKeepsThePlaceAmongDuplicates) {
    Fill({Rec("A00001", "same", "G1", "0001"), Rec("A00002", "same", "G1", "0002"),
          Rec("A00003", "same", "G1", "0003")});
    ASSERT_EQ(h.Get(kGetEqual, 1, Name("same")), kOk);
    ASSERT_EQ(h.Get(kGetNext, 1), kOk);
    ASSERT_EQ(h.Delete(), kOk);
    ASSERT_EQ(h.Get(kGetPrevious, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00001");
    ASSERT_EQ(h.Get(kGetNext, 1), kOk);
    EXPECT_EQ(h.record.substr(0, 6), "A00003");
}

TEST_F(BtrOps, ReadOnlyOpenRefusesWrites) {
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    Handle ro;
    ASSERT_EQ(ro.Open(path, kModeReadOnly), kOk);
    EXPECT_EQ(ro.Insert(Rec("A00002", "beta", "G1", "0002")), kAccessDenied);
    ASSERT_EQ(ro.Get(kGetFirst, 0), kOk);
    EXPECT_EQ(ro.Update(Rec("A00001", "other", "G1", "0001")), kAccessDenied);
    EXPECT_EQ(ro.Delete(), kAccessDenied);
    EXPECT_EQ(Walk(h, 0), (std::vector<std::string>{Rec("A00001", "alpha", "G1", "0001")}));
}

TEST_F(BtrOps, ChangeThroughAnotherBlockGivesStatus80) {
    Fill({Rec("A00001", "alpha", "G1", "0001"), Rec("A00002", "beta", "G1", "0002")});
    Handle other;
    ASSERT_EQ(other.Open(path), kOk);
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(other.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(other.Update(Rec("A00001", "first", "G1", "0001")), kOk);
    EXPECT_EQ(h.Update(Rec("A00001", "second", "G1", "0001")), kConflict);
    EXPECT_EQ(h.Delete(), kConflict);
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);  // read again, then it goes through
    EXPECT_EQ(h.record.substr(6, 5), "first");
    ASSERT_EQ(h.Update(Rec("A00001", "second", "G1", "0001")), kOk);
    // A record deleted by the other block.
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00002"), kOk);
    ASSERT_EQ(other.Get(kGetEqual, 0, "A00002"), kOk);
    ASSERT_EQ(other.Delete(), kOk);
    EXPECT_EQ(h.Update(Rec("A00002", "gone", "G1", "0002")), kConflict);
    EXPECT_EQ(Codes(0), (CodeList{"A00001"}));
}

TEST_F(BtrOps, ReadAheadSeesWritesMadeThroughAnotherBlock) {
    for (int i = 0; i < 100; ++i) {
        char code[8];
        std::snprintf(code, sizeof code, "A%05d", i * 2);
        char number[8];
        std::snprintf(number, sizeof number, "%04d", i);
        Fill({Rec(code, "n", "G1", number)});
    }
    Handle writer;
    ASSERT_EQ(writer.Open(path), kOk);
    ASSERT_EQ(h.Get(kGetFirst, 0), kOk);
    ASSERT_EQ(h.Get(kGetNext, 0), kOk);  // a batch of the following records is now read
    ASSERT_EQ(writer.Insert(Rec("A00003", "new", "G1", "5000")), kOk);
    ASSERT_EQ(writer.Get(kGetEqual, 0, "A00004"), kOk);
    ASSERT_EQ(writer.Update(Rec("A00004", "changed", "G1", "0002")), kOk);
    ASSERT_EQ(writer.Get(kGetEqual, 0, "A00006"), kOk);
    ASSERT_EQ(writer.Delete(), kOk);
    std::vector<std::string> seen;
    for (int i = 0; i < 4 && h.Get(kGetNext, 0) == kOk; ++i)
        seen.push_back(h.record.substr(0, 13));
    EXPECT_EQ(seen, (std::vector<std::string>{"A00003new    ", "A00004changed", "A00008n      ",
                                              "A00010n      "}));
}

// ---- Transactions
// --------------------------------------------------------------------------------

TEST_F(BtrOps, TransactionStatuses) {
    EXPECT_EQ(End(), kNoTransaction);
    EXPECT_EQ(Abort(), kNoTransaction);
    ASSERT_EQ(Begin(), kOk);
    EXPECT_EQ(Begin(), kTransactionActive);
    EXPECT_EQ(BtrCall(kBeginConcurrentTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0),
              kTransactionActive);
    EXPECT_TRUE(Counts().transaction);
    ASSERT_EQ(End(), kOk);
    EXPECT_EQ(End(), kNoTransaction);
    ASSERT_EQ(BtrCall(kBeginConcurrentTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0), kOk);
    EXPECT_EQ(Abort(), kOk);
    EXPECT_FALSE(Counts().transaction);
}

TEST_F(BtrOps, AbortLeavesNoTraceAndEndKeepsEverything) {
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    ASSERT_EQ(Begin(), kOk);
    ASSERT_EQ(h.Insert(Rec("A00002", "beta", "G1", "0002")), kOk);
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(h.Update(Rec("A00001", "changed", "G1", "0001")), kOk);
    EXPECT_EQ(Codes(0), (CodeList{"A00001", "A00002"}));  // own writes are seen
    ASSERT_EQ(Abort(), kOk);
    EXPECT_EQ(Walk(h, 0), (std::vector<std::string>{Rec("A00001", "alpha", "G1", "0001")}));

    ASSERT_EQ(Begin(), kOk);
    ASSERT_EQ(h.Insert(Rec("A00002", "beta", "G1", "0002")), kOk);
    ASSERT_EQ(h.Get(kGetEqual, 0, "A00001"), kOk);
    ASSERT_EQ(h.Delete(), kOk);
    ASSERT_EQ(End(), kOk);
    EXPECT_EQ(Walk(h, 0), (std::vector<std::string>{Rec("A00002", "beta", "G1", "0002")}));
}

TEST_F(BtrOps, AbortDropsTheCurrentRecordOfWrittenFiles) {
    Fill({Rec("A00001", "alpha", "G1", "0001")});
    ASSERT_EQ(Begin(), kOk);
    ASSERT_EQ(h.Insert(Rec("A00002", "beta", "G1", "0002")), kOk);
    ASSERT_EQ(Abort(), kOk);
    // The record inserted in the transaction is gone: no update can reach another one.
    EXPECT_EQ(h.Update(Rec("A00002", "beta", "G1", "0002")), kInvalidPositioning);
    ASSERT_EQ(h.Insert(Rec("A00003", "gamma", "G1", "0003")), kOk);
    EXPECT_EQ(Codes(0), (CodeList{"A00001", "A00003"}));
}

TEST_F(BtrOps, TransactionSpansFilesAndSurvivesClose) {
    const std::string second = dir.File("SECOND.bt6");
    ASSERT_EQ(Create(second, PeopleLayout()), kOk);
    Handle h2;
    ASSERT_EQ(h2.Open(second), kOk);
    ASSERT_EQ(Begin(), kOk);
    ASSERT_EQ(h.Insert(Rec("A00001", "alpha", "G1", "0001")), kOk);
    ASSERT_EQ(h2.Insert(Rec("B00001", "beta", "G1", "0001")), kOk);
    ASSERT_EQ(h2.Close(), kOk);  // closing does not end the transaction
    EXPECT_EQ(Counts().files, 2);
    ASSERT_EQ(End(), kOk);
    EXPECT_EQ(Counts().files, 1);
    ASSERT_EQ(h2.Open(second), kOk);
    EXPECT_EQ(Walk(h2, 0).size(), 1u);
    EXPECT_EQ(Walk(h, 0).size(), 1u);

    ASSERT_EQ(Begin(), kOk);
    ASSERT_EQ(h.Insert(Rec("A00002", "alpha", "G1", "0002")), kOk);
    ASSERT_EQ(h2.Insert(Rec("B00002", "beta", "G1", "0002")), kOk);
    ASSERT_EQ(Abort(), kOk);
    EXPECT_EQ(Walk(h2, 0).size(), 1u);
    EXPECT_EQ(Walk(h, 0).size(), 1u);
}

TEST_F(BtrOps, ResetAbortsAndReleasesEverything) {
    Handle other;
    ASSERT_EQ(other.Open(path, kModeReadOnly), kOk);
    ASSERT_EQ(Begin(), kOk);
    ASSERT_EQ(h.Insert(Rec("A00001", "alpha", "G1", "0001")), kOk);
    ASSERT_EQ(Reset(), kOk);
    const EngineCounts c = Counts();
    EXPECT_EQ(c.files, 0);
    EXPECT_EQ(c.positionBlocks, 0);
    EXPECT_FALSE(c.transaction);
    EXPECT_EQ(h.Get(kGetFirst, 0), kFileNotOpen);
    EXPECT_EQ(other.Get(kGetFirst, 0), kFileNotOpen);
    ASSERT_EQ(h.Open(path), kOk);
    EXPECT_TRUE(Walk(h, 0).empty());
}

// ---- Statements
// ----------------------------------------------------------------------------------

TEST(BtrQueries, EveryQueryWalksItsKeyIndexWithoutSorting) {
    TempDir dir;
    const std::string path = dir.File("Q.bt6");
    ASSERT_EQ(Create(path, PeopleLayout()), kOk);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    for (int key = 0; key < 4; ++key) {
        for (int q = 0; q < 2 * kQueryCount; ++q) {
            const std::string sql =
                "EXPLAIN QUERY PLAN " + QuerySql(key, static_cast<Query>(q / 2), q % 2 == 1);
            sqlite3_stmt* st = nullptr;
            ASSERT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr), SQLITE_OK) << sql;
            std::string plan;
            while (sqlite3_step(st) == SQLITE_ROW)
                plan +=
                    reinterpret_cast<const char*>(sqlite3_column_text(st, 3)) + std::string(";");
            sqlite3_finalize(st);
            EXPECT_NE(plan.find("USING INDEX zl3_key" + std::to_string(key)), std::string::npos)
                << sql << " → " << plan;
            EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << sql << " → " << plan;
        }
    }
    sqlite3_close_v2(db);
}

}  // namespace
}  // namespace zl3::btr::test
