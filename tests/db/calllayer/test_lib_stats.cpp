// Label lookups and the track-versions list, on hand-built databases.
#include "BaseTest.h"
#include "Lib_Stats.h"

namespace zl3 {
namespace {

class LookupTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({3, 20, 21, 32});
        FichierPervasiveOuvrir(0, 1, 1, 3, -2);
        FichierPervasiveOuvrir(0, 1, 1, 20, -2);
        FichierPervasiveOuvrir(0, 1, 1, 21, -2);
        FichierPervasiveOuvrir(0, 1, 1, 32, 0);
        Artiste("A0001", "Zaz");
        Artiste("A0002", "Simon && Garfunkel");
        Attribut("CATEG", "010", "Chanson française");
        auto r = Nouveau(3);
        rec::SetBytes(r, rec::Client::CodeClient, "CLI00001");
        rec::SetText(r, rec::Client::NomClient, "  Boulangerie Lefèvre");
        Inserer(3);
    }
    void VersionRecord(const std::string& cle, const std::string& type,
                       const std::vector<std::string>& versions) {
        namespace mi = rec::MorceauInfos;
        auto r = Nouveau(32);
        rec::SetBytes(r, mi::CleMorceau, cle);
        rec::SetBytes(r, mi::TypeInfo, type);
        for (size_t i = 0; i < versions.size(); ++i)
            rec::SetBytes(r, mi::Version(static_cast<int>(i)), versions[i]);
        Inserer(32);
    }
    int CountRecords(int fichier) {
        int n = 0;
        std::string k;
        for (int16_t op = kBtrGetFirst; BTRieve(0, op, k, 0, fichier, 1, "") == 0; op = kBtrGetNext)
            ++n;
        return n;
    }
};

TEST_F(LookupTest, ArtistsFoundMissingBothAndBlank) {
    EXPECT_EQ(LibArtiste(0, 1, "A0001", "", false), "Zaz");
    EXPECT_EQ(LibArtiste(0, 1, "A0001", "A0002", false), "Zaz + Simon && Garfunkel");
    EXPECT_EQ(LibArtiste(0, 1, "A0001", "A0002", true), "Zaz + Simon & Garfunkel");
    EXPECT_EQ(LibArtiste(0, 1, "A0001", "A0999", false), "Zaz + Artiste: A0999");
    EXPECT_EQ(LibArtiste(0, 1, "", "A0001", false), " + Zaz");
    EXPECT_EQ(LibArtiste(0, 1, "     ", "", true), "");
    EXPECT_EQ(LibArtiste(0, 1, "A0777", "", true), "Artiste: A0777");
    EXPECT_TRUE(box.shown.empty());
}

TEST_F(LookupTest, ClientsAndCategories) {
    EXPECT_EQ(LibClient(0, 1, "CLI00001"), "Boulangerie Lefèvre");
    // The trimmed name is written back into the record buffer.
    EXPECT_EQ(rec::GetText(TamponEnreg(3), rec::Client::NomClient).substr(0, 21),
              "Boulangerie Lefèvre ");
    EXPECT_EQ(LibClient(0, 1, "CLI00099"), "Client: CLI00099");
    EXPECT_EQ(LibClient(0, 1, "  "), "");
    EXPECT_EQ(LibCategorie(0, 1, "010"), "Chanson française");
    EXPECT_EQ(LibCategorie(0, 1, "777"), "Catégorie: 777");
    EXPECT_EQ(LibCategorie(0, 1, ""), "");
    EXPECT_EQ(LibLabel(0, 1, "L0009"), "Label: L0009");
}

TEST_F(LookupTest, LookupOnAClosedFileIsReportedAndKeepsNoText) {
    FichierPervasiveFermer(0, 1, 1, 20);
    EXPECT_EQ(LibArtiste(0, 1, "A0001", "", false), "");
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_NE(box.shown[0].request.text.find("Err: 3: The file is not open"), std::string::npos);
    EXPECT_NE(box.shown[0].request.text.find("Lib_Stats:LibArtiste"), std::string::npos);
}

TEST_F(LookupTest, VersionsListTidiesBlankAndSelfListingRecords) {
    VersionRecord("01000001", "05", {"01000002", "01000003"});
    VersionRecord("01000004", "05", {});                                    // blank: deleted
    VersionRecord("01000005", "05", {"01000005", "        ", "01000006"});  // lists itself
    VersionRecord("01000007", "03", {"01000008"});                          // another kind: kept
    VersionRecord("01000009", "05", {});                                    // blank, last
    InitGeneralVersionSons(0, 1);
    const VersionsSons& v = Versions();
    ASSERT_TRUE(v.charge);
    EXPECT_EQ(v.lignes,
              (std::vector<std::string>{"01000001,01000002,01000003,", "01000005,01000006,"}));
    EXPECT_EQ(v.texte, "01000002,01000003,01000006,");
    EXPECT_EQ(v.principal.at("01000006"), "01000005");
    EXPECT_EQ(CountRecords(32), 3);
    // The self-listing record was rewritten without its own key.
    std::string k = "0100000505";
    ASSERT_EQ(BTRieve(0, kBtrGetEqual, k, 0, 32, 1, ""), 0);
    EXPECT_EQ(rec::GetBytes(TamponEnreg(32), rec::MorceauInfos::Version(0)), "        ");
    EXPECT_EQ(rec::GetBytes(TamponEnreg(32), rec::MorceauInfos::Version(2)), "01000006");
    // The other kind of record is untouched.
    k = "0100000703";
    ASSERT_EQ(BTRieve(0, kBtrGetEqual, k, 0, 32, 1, ""), 0);
    EXPECT_EQ(rec::GetBytes(TamponEnreg(32), rec::MorceauInfos::Version(0)), "01000008");
    bool traced = false;
    for (const auto& l : Trace().lines)
        if (l.find(":Version: 01000002,01000003,01000006,") != std::string::npos) traced = true;
    EXPECT_TRUE(traced);
    EXPECT_TRUE(box.shown.empty());
}

}  // namespace
}  // namespace zl3
