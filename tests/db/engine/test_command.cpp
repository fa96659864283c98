// The zl3-btr maintenance command: save and load give the same bytes back, the save format,
// exit codes and messages a maintenance script relies on.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Lib_Data_Pervasive_2_Catalogue.h"

namespace zl3::btr::test {
namespace {

// The artists file of the catalogue: 300 bytes, 4 keys.
constexpr int kArtists = 20;
constexpr size_t kLen = 300;

CommandResult Btr(std::initializer_list<std::string> args) {
    std::vector<std::string> v{ZL3_BTR_COMMAND};
    v.insert(v.end(), args);
    return RunCommand(v);
}

// Parses a save file: the records in file order; fails the test on a format error.
std::vector<std::string> ParseSave(const std::string& bytes) {
    std::vector<std::string> records;
    size_t at = 0;
    while (at < bytes.size() && bytes[at] != '\x1A') {
        const size_t comma = bytes.find(',', at);
        EXPECT_NE(comma, std::string::npos);
        if (comma == std::string::npos) break;
        const size_t length = std::stoul(bytes.substr(at, comma - at));
        records.push_back(bytes.substr(comma + 1, length));
        EXPECT_EQ(bytes.substr(comma + 1 + length, 2), "\r\n");
        at = comma + 1 + length + 2;
    }
    EXPECT_EQ(at + 1, bytes.size()) << "the file must end with one Ctrl-Z";
    return records;
}

class BtrCommand : public ::testing::Test {
  protected:
    void SetUp() override { InitCatalogueFichiers(); }
    void TearDown() override { Reset(); }

    // Artist records whose bytes include every character the save format must survive.
    std::vector<std::string> Artists(int count) {
        std::vector<std::string> out;
        for (int n = 0; n < count; ++n) {
            std::string r(kLen, ' ');
            char code[8];
            std::snprintf(code, sizeof code, "%05d", (n * 37) % 1000);
            r.replace(0, 5, code);
            r.replace(5, 10, n % 2 ? "Groupe    " : "Chanteur  ");
            std::string name = std::string("Name ") + static_cast<char>('A' + n % 26) + "\r\n,\x1A";
            name.resize(20, ' ');
            r.replace(15, 20, name);
            r[45] = n % 3 ? 'O' : 'N';
            for (size_t i = 100; i < kLen; ++i)
                r[i] = static_cast<char>((n * 7 + i) & 0xFF);
            out.push_back(r);
        }
        return out;
    }

    TempDir dir;
};

TEST_F(BtrCommand, SaveThenLoadGivesTheSameBytes) {
    const std::string source = dir.File("FRADA20.bt6");
    ASSERT_EQ(Btr({"create", source, "20"}).exitCode, 0);
    Handle h;
    ASSERT_EQ(h.Open(source), kOk);
    for (const std::string& r : Artists(120))
        ASSERT_EQ(h.Insert(r), kOk);
    ASSERT_EQ(h.Close(), kOk);

    const std::string saved = dir.File("artists.sav");
    const CommandResult save = Btr({"save", source, saved});
    ASSERT_EQ(save.exitCode, 0) << save.err;
    const std::vector<std::string> records = ParseSave(ReadFileBytes(saved));
    ASSERT_EQ(records.size(), 120u);
    for (size_t i = 1; i < records.size(); ++i)
        EXPECT_LT(records[i - 1].substr(0, 5), records[i].substr(0, 5));

    const std::string copy = dir.File("FRADB20.bt6");
    ASSERT_EQ(Btr({"create", copy, "20"}).exitCode, 0);
    const CommandResult load = Btr({"load", saved, copy});
    ASSERT_EQ(load.exitCode, 0) << load.err;
    EXPECT_NE(load.out.find("120 records"), std::string::npos);
    const std::string again = dir.File("again.sav");
    ASSERT_EQ(Btr({"save", copy, again}).exitCode, 0);
    EXPECT_EQ(ReadFileBytes(again), ReadFileBytes(saved));

    // Another key gives another order of the same records.
    const std::string byName = dir.File("by-name.sav");
    ASSERT_EQ(Btr({"save", copy, byName, "--key", "3"}).exitCode, 0);
    std::vector<std::string> named = ParseSave(ReadFileBytes(byName));
    ASSERT_EQ(named.size(), 120u);
    for (size_t i = 1; i < named.size(); ++i)
        EXPECT_LE(named[i - 1].substr(45, 1) + named[i - 1].substr(15, 20),
                  named[i].substr(45, 1) + named[i].substr(15, 20));
    std::sort(named.begin(), named.end());
    std::vector<std::string> sorted = records;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(named, sorted);
    EXPECT_EQ(Btr({"check", copy}).exitCode, 0);
}

TEST_F(BtrCommand, LoadStopsAtTheFirstFailingRecord) {
    const std::string file = dir.File("FRADA20.bt6");
    ASSERT_EQ(Btr({"create", file, "20"}).exitCode, 0);
    const std::vector<std::string> a = Artists(3);
    std::string save;
    for (const std::string& r : {a[0], a[1], a[0], a[2]})
        save += std::to_string(r.size()) + "," + r + "\r\n";
    save += '\x1A';
    WriteFileBytes(dir.File("dup.sav"), save);
    const CommandResult load = Btr({"load", dir.File("dup.sav"), file});
    EXPECT_EQ(load.exitCode, 1);
    EXPECT_NE(load.err.find("record 3: status 5: duplicate key value"), std::string::npos)
        << load.err;
    Handle h;
    ASSERT_EQ(h.Open(file), kOk);
    EXPECT_EQ(Walk(h, 0).size(), 2u);  // the records before the failing one are kept
    ASSERT_EQ(h.Close(), kOk);

    WriteFileBytes(dir.File("short.sav"), "3,abc\r\n\x1A");
    const CommandResult wrong = Btr({"load", dir.File("short.sav"), file});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_NE(wrong.err.find("record 1: status 22"), std::string::npos) << wrong.err;
    WriteFileBytes(dir.File("bad.sav"), "300;" + a[0] + "\r\n\x1A");
    const CommandResult bad = Btr({"load", dir.File("bad.sav"), file});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.err.find("not in save format"), std::string::npos) << bad.err;
}

TEST_F(BtrCommand, ExitCodesAndMessages) {
    const CommandResult help = Btr({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("Exit codes"), std::string::npos);
    EXPECT_EQ(Btr({}).exitCode, 2);
    EXPECT_EQ(Btr({"frobnicate"}).exitCode, 2);
    EXPECT_EQ(Btr({"create", dir.File("X.bt6")}).exitCode, 2);
    EXPECT_EQ(Btr({"create", dir.File("X.bt6"), "51"}).exitCode, 2);
    EXPECT_EQ(Btr({"create", dir.File("X.bt6"), "abc"}).exitCode, 2);
    const CommandResult empty = Btr({"create", dir.File("X.bt6"), "8"});
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_NE(empty.err.find("has no file"), std::string::npos);
    EXPECT_EQ(Btr({"save", dir.File("X.bt6"), dir.File("o"), "--key", "x"}).exitCode, 2);

    const std::string file = dir.File("FRAD022.bt6");
    EXPECT_EQ(Btr({"create", file, "22"}).exitCode, 0);
    const CommandResult exists = Btr({"create", file, "22"});
    EXPECT_EQ(exists.exitCode, 1);
    EXPECT_NE(exists.err.find("status 59: file already exists"), std::string::npos);
    EXPECT_EQ(Btr({"create", file, "22", "--overwrite"}).exitCode, 0);

    const CommandResult missing = Btr({"stat", dir.File("NONE.bt6")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("status 12: file not found"), std::string::npos);
    WriteFileBytes(dir.File("text.bt6"), std::string(300, 't'));
    const CommandResult foreign = Btr({"check", dir.File("text.bt6")});
    EXPECT_EQ(foreign.exitCode, 1);
    EXPECT_NE(foreign.err.find("status 30"), std::string::npos);
    const CommandResult badKey = Btr({"save", file, dir.File("o"), "--key", "6"});
    EXPECT_EQ(badKey.exitCode, 1);
    EXPECT_NE(badKey.err.find("status 6"), std::string::npos);
}

TEST_F(BtrCommand, StatAndCheckDescribeTheFile) {
    const std::string file = dir.File("FRADA20.bt6");
    ASSERT_EQ(Btr({"create", file, "20"}).exitCode, 0);
    Handle h;
    ASSERT_EQ(h.Open(file), kOk);
    for (const std::string& r : Artists(10))
        ASSERT_EQ(h.Insert(r), kOk);
    ASSERT_EQ(h.Close(), kOk);
    const CommandResult stat = Btr({"stat", file});
    ASSERT_EQ(stat.exitCode, 0);
    for (const char* line :
         {"Record length: 300", "Page size: 1024", "Records: 10", "Keys: 4",
          "Key 3: 2 segments, length 21", "segment 1: position 46, length 1, flags 19",
          "segment 2: position 16, length 20, flags 3"})
        EXPECT_NE(stat.out.find(line), std::string::npos) << line << "\n" << stat.out;
    const CommandResult check = Btr({"check", file});
    EXPECT_EQ(check.exitCode, 0);
    EXPECT_NE(check.out.find("ok (10 records)"), std::string::npos) << check.out;

    // Files the engine refuses to open are never "ok": a key's index dropped, a foreign mark.
    for (const auto& [sql, problem] : std::vector<std::pair<std::string, std::string>>{
             {"DROP INDEX zl3_key2", "key 2: index missing"},
             {"PRAGMA user_version=7", "version mark 7 instead of 1"}}) {
        const std::string copy = dir.File("DAMAGED.bt6");
        WriteFileBytes(copy, ReadFileBytes(file));
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(copy.c_str(), &db), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(db);
        Handle refused;
        EXPECT_EQ(refused.Open(copy), kIoError) << sql;
        const CommandResult damaged = Btr({"check", copy});
        EXPECT_NE(damaged.exitCode, 0) << sql;
        EXPECT_NE((damaged.out + damaged.err).find(problem), std::string::npos)
            << damaged.out << damaged.err;
    }
}

}  // namespace
}  // namespace zl3::btr::test
