// Track search by several criteria, a track's broadcasts, and the broadcasts behind a line of the
// advertising grid.
#include <set>

#include "BaseTest.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Tableur.h"
#include "Recherche.h"
#include "RechercheMulti.h"

namespace zl3 {
namespace {

using test::At;

class RechercheMultiTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({18, 20, 21, 22, 47});
        Artiste("A0001", "Zaz");
        Artiste("A0002", "Stromae");
        Attribut("CATEG", "001", "Chanson");
        Attribut("CATEG", "002", "Pop");
        Morceau("00100001", "O", "Je veux", "A0001");
        Morceau("00100002", "N", "Papaoutai", "A0002");
        Morceau("00200001", "O", "Alors on danse", "A0002", "A0001");
        Morceau("00200002", "X", "On ira", "A0001");
        Historique("00100001", {At(2026, 10, 3, 9), At(2026, 10, 20, 18, 5), At(2026, 9, 30, 9)});
        Historique("00200001", {At(2026, 10, 1, 0)});
        c.debut = At(2026, 10, 1);
        c.fin = At(2026, 10, 31);
        c.source = 2;
    }
    std::set<std::string> Cles(CriteresMorceaux k) {
        std::set<std::string> s;
        for (const MorceauTrouve& t : RechercheMorceaux(k).morceaux) s.insert(t.cle);
        return s;
    }
    CriteresMorceaux c;
};

TEST_F(RechercheMultiTest, CriteriaCombineAndCountsFollowThePeriod) {
    using S = std::set<std::string>;
    EXPECT_EQ(Cles(c).size(), 4u);
    auto k = c;
    k.mots = "ON";  // a word of the title, any case
    EXPECT_EQ(Cles(k), (S{"00200001", "00200002"}));
    k.mots = "alors danse";  // every word
    EXPECT_EQ(Cles(k), (S{"00200001"}));
    k = c;
    k.artiste = "zaz";  // first or second artist
    EXPECT_EQ(Cles(k), (S{"00100001", "00200001", "00200002"}));
    k.categorie = "002";
    EXPECT_EQ(Cles(k), (S{"00200001", "00200002"}));
    k.classeQuota = "O";
    EXPECT_EQ(Cles(k), (S{"00200001"}));
    k = c;
    k.categorie = "chan";  // a part of the category's label
    EXPECT_EQ(Cles(k), (S{"00100001", "00100002"}));
    k = c;
    k.classeQuota = "?";
    EXPECT_EQ(Cles(k), (S{"00200002"}));
    k = c;
    k.cleDebut = "00100002";
    k.cleFin = "002";  // covers every key it begins
    EXPECT_EQ(Cles(k), (S{"00100002", "00200001", "00200002"}));

    const ResultatMorceaux r = RechercheMorceaux(c);
    ASSERT_EQ(r.morceaux.size(), 4u);
    const MorceauTrouve& t = r.morceaux[2];
    EXPECT_EQ(t.titre, "Alors on danse");
    EXPECT_EQ(t.artistes, "Stromae + Zaz");
    EXPECT_EQ(t.categorie, "Pop");
    EXPECT_EQ(t.duree, "3:20");  // "0200" seconds
    EXPECT_EQ(t.diffusions, 1);
    EXPECT_EQ(r.morceaux[0].diffusions, 2);  // the September broadcast is outside the period
    EXPECT_EQ(r.morceaux[1].diffusions, 0);  // no history
    EXPECT_TRUE(r.erreurs.empty());
    // The files opened for the search are closed again.
    EXPECT_FALSE(FichierOuvert(2, 1, kFichierMorceaux));

    const auto d = DiffusionsMorceau(2, 1, "00100001", c.debut, c.fin);
    ASSERT_EQ(d.size(), 2u);
    EXPECT_EQ(FormatDDMMYYYY(d[0]) + " " + FormatHHMMSS(d[0]), "20/10/2026 18:05:00");
    EXPECT_EQ(FormatDDMMYYYY(d[1]), "03/10/2026");
}

TEST_F(RechercheMultiTest, TheDetailOfAnAdvertisingLineIsExactlyItsLineTotal) {
    CreerFichiers({1, 3, 5, 26, 32});
    auto diffusion = [this](const DateTime& t, const std::string& client, const std::string& spot,
                            const std::string& message, const std::string& zone) {
        DiffusionPub(t, client, spot, message, zone);
    };
    diffusion(At(2026, 10, 2, 8, 0, 5), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    diffusion(At(2026, 10, 2, 9), "CLI00001", "SPOT0001", "MSG00001", " HDF | LILLE ");
    diffusion(At(2026, 10, 3, 9), "CLI00001", "SPOT0001", "MSG00001", "HDF|ARRAS");
    diffusion(At(2026, 10, 4, 9), "CLI00001", "SPOT0001", "MSG00002", "HDF|LILLE");
    diffusion(At(2026, 10, 5, 9), "CLI00002", "SPOT0009", "MSG00009", "NATIONAL");
    diffusion(At(2026, 10, 6, 9), "", "SPOT0001", "MSG00001", "HDF|LILLE");  // counted nowhere
    diffusion(At(2026, 11, 1, 9), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");  // outside

    TableursMusique musique;
    Grid pub;
    InitGeneralTableurMusique(musique);
    InitGeneralTableurPublicite(pub);
    RechercheStats recherche(musique, pub);
    OuvrirFichiersRecherche(0, 1, 1);
    ParametresRecherche p;
    p.rapport = Rapport::Publicite;
    p.debut = At(2026, 10, 1);
    p.fin = At(2026, 10, 31);
    recherche.CommandLancer_Click(p);
    ASSERT_EQ(pub.MaxRows(), 4);

    int total = 0;
    for (int row = 1; row <= pub.MaxRows(); ++row) {
        ParametresDetail d;
        d.debut = p.debut;
        d.fin = p.fin;
        d.client = pub.Text(kPubClient, row);
        d.message = pub.Text(kPubMessage, row);
        d.zone = pub.Text(kPubZone, row);
        Grid detail;
        const BilanDetail b = DetailLignePublicite(d, detail);
        EXPECT_EQ(b.diffusions, pub.Number(kPubTotalLigne, row)) << row;
        EXPECT_EQ(detail.MaxRows(), b.diffusions);
        for (int i = 1; i <= detail.MaxRows(); ++i) {
            EXPECT_EQ(detail.Text(3, i), d.message);
            EXPECT_EQ(detail.Text(4, i), d.zone);
        }
        if (row == 1) {
            ASSERT_EQ(detail.MaxRows(), 2);
            EXPECT_EQ(detail.Text(1, 1), "02/10/2026");
            EXPECT_EQ(detail.Text(2, 1), "08:00:05");
        }
        total += b.diffusions;
    }
    EXPECT_EQ(total, recherche.Bilan().diffusionsComptees);
}

}  // namespace
}  // namespace zl3
