// The per-track reports: "Top Diffusion" and "SACEM".
#include "BaseTest.h"
#include "Lib_Stats.h"
#include "Lib_Tableur.h"
#include "Recherche.h"

namespace zl3 {
namespace {

using test::At;

class ParMorceauTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({1, 3, 5, 18, 20, 21, 22, 26, 32, 47});
        InitGeneralTableurMusique(musique);
        InitGeneralTableurPublicite(pub);
        Versions() = VersionsSons{};
        Artiste("A0001", "Zaz");
        Artiste("A0002", "Simon && Garfunkel");
        Attribut("CATEG", "010", "Chanson française");
        Attribut("CATEG", "020", "Pop internationale");
        Attribut("CAT_2", "010", "Paramètres 010", "XXOYXX");
        Attribut("CAT_2", "020", "Paramètres 020", "XXONXX");
        Attribut("LABEL", "L0001", "Éditions Tôt ou Tard");
        // Three tracks of "010", one of "020".
        Morceau("01000001", "O", "Je veux", "A0001", "", "0225");
        Morceau("01000002", "O", "Les passants", "A0001", "A0002", "0187");
        Morceau("01000003", "N", "Été indien", "A0009", "", "0300");
        Morceau("02000001", "N", "Mrs Robinson", "A0002", "", "0240");
        SetLabel("01000001", "L0001");
        Historique("01000001", {At(2026, 3, 10, 9), At(2026, 3, 11, 9)});
        Historique("01000002", {At(2026, 3, 10, 9), At(2026, 3, 10, 10), At(2026, 3, 11, 9),
                                At(2026, 4, 1, 9)});
        Historique("01000003", {At(2026, 2, 1, 9)});  // outside the period: no row
        Historique("02000001", {At(2026, 3, 10, 9), At(2026, 3, 10, 10), At(2026, 3, 10, 11)});
    }
    void SetLabel(const std::string& cle, const std::string& label) {
        // Rewrite the track with its label code: read it, change it, update it.
        std::string k = cle;
        ASSERT_EQ(BTRieve(test::kSlotEcriture, kBtrGetEqual, k, 0, 22, 1, "test"), 0);
        rec::SetBytes(TamponEnreg(22), rec::Morceau::CodeLabel, label);
        rec::SetBytes(TamponEnreg(22), rec::Morceau::Clip, "O");
        ASSERT_EQ(BTRieve(test::kSlotEcriture, kBtrUpdate, k, 0, 22, 1, "test"), 0);
    }
    Grid& Lancer(int sousOnglet, bool versions = false) {
        OuvrirFichiersRecherche(0, 1, 1);
        ParametresRecherche p;
        p.rapport = sousOnglet == 1 ? Rapport::TopDiffusion : Rapport::Sacem;
        p.debut = At(2026, 3, 1);
        p.fin = At(2026, 3, 31);
        p.regrouperVersions = versions;
        recherche.CommandLancer_Click(p);
        return sousOnglet == 1 ? musique.top : musique.sacem;
    }
    TableursMusique musique;
    Grid pub;
    RechercheStats recherche{musique, pub};
};

TEST_F(ParMorceauTest, TopDiffusionListsTheOYCategoriesMostBroadcastFirst) {
    Grid& g = Lancer(1);
    ASSERT_EQ(g.MaxRows(), 2);  // "020" is not marked "OY"; 01000003 was not aired in March
    EXPECT_EQ(g.Text(kTopTitre, 1), "Les passants");
    EXPECT_EQ(g.Text(kTopArtiste, 1), "Zaz");
    EXPECT_EQ(g.Text(kTopArtiste2, 1), "Simon & Garfunkel");
    EXPECT_EQ(g.Text(kTopCategorie, 1), "Chanson française");
    EXPECT_EQ(g.Text(kTopDuree, 1), "3:07");
    EXPECT_EQ(g.Text(kTopId, 1), "01000002");
    EXPECT_EQ(g.Text(kTopNombre, 1), "3");
    EXPECT_EQ(g.Text(kTopClip, 1), "");
    EXPECT_EQ(g.Text(kTopTitre, 2), "Je veux");
    EXPECT_EQ(g.Text(kTopNombre, 2), "2");
    EXPECT_EQ(g.Text(kTopClip, 2), "Oui");
    EXPECT_EQ(g.Text(kTopArtiste2, 2), "");
    EXPECT_EQ(g.RowHeader(0, 2), "2");
}

TEST_F(ParMorceauTest, SacemListsEveryMusicTrackWithItsLabel) {
    Grid& g = Lancer(2);
    ASSERT_EQ(g.MaxRows(), 3);
    EXPECT_EQ(g.Text(kSacemTitre, 1), "Les passants");  // 3, then by title
    EXPECT_EQ(g.Text(kSacemArtiste, 1), "Zaz + Simon & Garfunkel");
    EXPECT_EQ(g.Text(kSacemTitre, 2), "Mrs Robinson");
    EXPECT_EQ(g.Text(kSacemNombre, 2), "3");
    EXPECT_EQ(g.Text(kSacemTitre, 3), "Je veux");
    EXPECT_EQ(g.Text(kSacemLabel, 3), "Éditions Tôt ou Tard");
    EXPECT_EQ(g.Text(kSacemDuree, 3), "3:45");
    EXPECT_EQ(g.Text(kSacemLabel, 1), "");
}

TEST_F(ParMorceauTest, VersionsOfOneSongAreFoldedOnRequest) {
    // 01000002 lists 01000001 as one of its versions.
    auto r = Nouveau(32);
    rec::SetBytes(r, rec::MorceauInfos::CleMorceau, "01000002");
    rec::SetBytes(r, rec::MorceauInfos::TypeInfo, "05");
    rec::SetBytes(r, rec::MorceauInfos::Version(0), "01000001");
    Inserer(32);
    Grid& g = Lancer(2, true);
    ASSERT_EQ(g.MaxRows(), 2);
    EXPECT_EQ(g.Text(kSacemTitre, 1), "Les passants");
    EXPECT_EQ(g.Text(kSacemNombre, 1), "5");
    Grid& sans = Lancer(2, false);
    EXPECT_EQ(sans.MaxRows(), 3);
}

}  // namespace
}  // namespace zl3
