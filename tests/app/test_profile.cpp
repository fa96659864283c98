// Ini files behave as the Windows profile functions do.
#include "Cp1252.h"
#include "Lib_Profile.h"
#include "TestSite.h"

namespace zl3 {
namespace {

class ProfileTest : public ::testing::Test {
  protected:
    void SetUp() override { dir_ = test::NewTempDir("profile"); }
    void TearDown() override { std::filesystem::remove_all(dir_); }
    std::string F(const std::string& name) { return dir_ + name; }
    std::string dir_;
};

TEST_F(ProfileTest, SectionsAndKeysIgnoreCaseAndFirstOccurrenceWins) {
    test::WriteFile(F("a.ini"),
                    "; comment=1\r\n[Quorvane]\r\nUNC_Actif = ON \r\nNb_Base=2\r\n"
                    "nb_base=9\r\n[Other]\r\nNb_Base=5\r\n[QUORVANE]\r\nNb_Base=7\r\n");
    EXPECT_EQ(ReadProfileString("quorvane", "unc_actif", "0FF", F("a.ini")), "ON");
    EXPECT_EQ(ReadProfileString("Quorvane", "NB_BASE", "0", F("a.ini")), "2");
    EXPECT_EQ(ReadProfileInt("Other", "Nb_Base", 0, F("a.ini")), 5);
    EXPECT_EQ(ReadProfileString("Quorvane", "; comment", "d", F("a.ini")), "d");
}

TEST_F(ProfileTest, DefaultsForMissingFileSectionKeyAndMalformedLines) {
    EXPECT_EQ(ReadProfileString("S", "K", "dflt", F("absent.ini")), "dflt");
    EXPECT_EQ(ReadProfileInt("S", "K", 42, F("absent.ini")), 42);
    test::WriteFile(F("b.ini"),
                    "garbage line\n[S\nK=1\n[S]\n=novalue\nJunk\nK2\nN=abc\nQ=\"x y\"\n");
    EXPECT_EQ(ReadProfileString("S", "K", "d", F("b.ini")), "d");  // "[S" is no section header
    EXPECT_EQ(ReadProfileString("S", "K2", "d", F("b.ini")), "d");
    EXPECT_EQ(ReadProfileInt("S", "N", 3, F("b.ini")), 3);
    EXPECT_EQ(ReadProfileString("S", "Q", "", F("b.ini")), "x y");
    EXPECT_EQ(ReadProfileString("Absent", "K", "d", F("b.ini")), "d");
}

TEST_F(ProfileTest, WritingOneKeyKeepsEveryOtherByte) {
    const std::string before =
        "; réglages de la station\r\n[Site]\r\nLib=Radio\r\n  Actif = 0 \r\nbizarre\r\n\r\n"
        "[Base_01]\r\nLib=B1\r\n";
    test::WriteFile(F("c.ini"), before);
    ASSERT_TRUE(WriteProfileString("site", "ACTIF", "1", F("c.ini")));
    EXPECT_EQ(test::ReadFile(F("c.ini")),
              "; réglages de la station\r\n[Site]\r\nLib=Radio\r\nACTIF=1\r\nbizarre\r\n\r\n"
              "[Base_01]\r\nLib=B1\r\n");
    // A new key goes at the end of its section, before the blank line.
    ASSERT_TRUE(WriteProfileString("Site", "NbBase", "2", F("c.ini")));
    EXPECT_EQ(test::ReadFile(F("c.ini")),
              "; réglages de la station\r\n[Site]\r\nLib=Radio\r\nACTIF=1\r\nbizarre\r\n"
              "NbBase=2\r\n\r\n[Base_01]\r\nLib=B1\r\n");
    // A new section is appended; LF files stay LF; a missing last line end is completed.
    test::WriteFile(F("d.ini"), "[A]\nx=1");
    ASSERT_TRUE(WriteProfileString("B", "y", "2", F("d.ini")));
    EXPECT_EQ(test::ReadFile(F("d.ini")), "[A]\nx=1\n[B]\ny=2\n");
    ASSERT_TRUE(WriteProfileString("N", "k", "v", F("new.ini")));
    EXPECT_EQ(test::ReadFile(F("new.ini")), "[N]\r\nk=v\r\n");
}

TEST_F(ProfileTest, AccentedValuesAreWindows1252OnDisk) {
    ASSERT_TRUE(
        WriteProfileString("Div_Radio", "Station_01", "Fréquence Côte d'Opale – €", F("e.ini")));
    const std::string raw = test::ReadFile(F("e.ini"));
    EXPECT_NE(raw.find("Station_01=Fr\xE9quence C\xF4te d'Opale \x96 \x80"), std::string::npos);
    EXPECT_EQ(ReadProfileString("div_radio", "station_01", "", F("e.ini")),
              "Fréquence Côte d'Opale – €");
    // A byte that is not UTF-8 written by another program reads as its Windows-1252 character.
    test::WriteFile(F("f.ini"), "[S]\nK=Caf\xE9\n");
    EXPECT_EQ(ReadProfileString("S", "K", "", F("f.ini")), "Café");
    EXPECT_EQ(ProfileSections(F("e.ini")), std::vector<std::string>{"Div_Radio"});
    EXPECT_EQ(ProfileKeys("S", F("f.ini")), std::vector<std::string>{"K"});
}

TEST_F(ProfileTest, UnwritableFileFailsWithoutHarm) {
    test::WriteFile(F("plain"), "x");
    EXPECT_FALSE(WriteProfileString("S", "K", "V", F("plain/sub.ini")));
    EXPECT_EQ(test::ReadFile(F("plain")), "x");
}

TEST(Cp1252, ConversionsBothWays) {
    EXPECT_EQ(Cp1252ToUtf8("\xC9\x64ith \x8C\x75vre \x80 \x85"), "Édith Œuvre € …");
    int replaced = -1;
    EXPECT_EQ(Utf8ToCp1252("Œuvre à l'été ✓ 日本", &replaced), "\x8Cuvre \xE0 l'\xE9t\xE9 ? ??");
    EXPECT_EQ(replaced, 3);
    // Every byte survives the round trip, undefined ones included.
    std::string all;
    for (int b = 1; b < 256; ++b)
        all += static_cast<char>(b);
    EXPECT_EQ(Utf8ToCp1252(Cp1252ToUtf8(all)), all);
    EXPECT_EQ(Utf8ToCp1252("\xFF\xFE", &replaced), "??");  // malformed UTF-8
    EXPECT_EQ(replaced, 2);
}

}  // namespace
}  // namespace zl3
