// The advertising report on small hand-built databases.
#include "BaseTest.h"
#include "Lib_Tableur.h"
#include "Recherche.h"

namespace zl3 {
namespace {

class PubliciteTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({1, 3, 5, 18, 20, 21, 22, 26, 32, 47});
        InitGeneralTableurMusique(musique);
        InitGeneralTableurPublicite(pub);
        Client("CLI00001", "Boulangerie Lefèvre");
        Client("CLI00002", "Garage du Centre");
        Commercial("COM001", "Hélène Martin");
        Contrat("000101", "CLI00001", "COM001");
        Message("MSG00001", "SPOT0001", "42", "Galette des rois");
        Message("MSG00002", "SPOT0001", "7", "Soldes d'hiver");
    }
    void Client(const std::string& code, const std::string& nom) {
        auto r = Nouveau(3);
        rec::SetBytes(r, rec::Client::CodeClient, code);
        rec::SetText(r, rec::Client::NomClient, nom);
        Inserer(3);
    }
    void Commercial(const std::string& code, const std::string& nom) {
        auto r = Nouveau(1);
        rec::SetBytes(r, rec::Commercial::CodeCommercial, code);
        rec::SetText(r, rec::Commercial::NomCommercial, nom);
        Inserer(1);
    }
    void Contrat(const std::string& no, const std::string& client, const std::string& commercial) {
        namespace e = rec::EnteteContrat;
        auto r = Nouveau(5);
        rec::SetBytes(r, e::TypeContrat, "01");
        rec::SetBytes(r, e::CodeClient, client);
        rec::SetBytes(r, e::NoContrat, no);
        rec::SetBytes(r, e::CodeCommercial, commercial);
        Inserer(5);
    }
    void Message(const std::string& cle, const std::string& spot, const std::string& no,
                 const std::string& texte) {
        namespace m = rec::MessagePub;
        auto r = Nouveau(26);
        rec::SetBytes(r, m::CleMessage, cle);
        rec::SetBytes(r, m::CleSpot, spot);
        rec::SetBytes(r, m::NoSpot, no);
        rec::SetText(r, m::TexteMessage, texte);
        Inserer(26);
    }
    void Diffusion(const DateTime& t, const std::string& client, const std::string& spot,
                   const std::string& message, const std::string& reference,
                   const std::string& contrat = "000101") {
        DiffusionPub(t, client, spot, message, reference, contrat);
    }
    Grid& Lancer(DateTime debut, DateTime fin) {
        OuvrirFichiersRecherche(0, 1, 1);
        ParametresRecherche p;
        p.rapport = Rapport::Publicite;
        p.debut = debut;
        p.fin = fin;
        recherche.CommandLancer_Click(p);
        return pub;
    }
    TableursMusique musique;
    Grid pub;
    RechercheStats recherche{musique, pub};
};

using test::At;

TEST_F(PubliciteTest, PeriodEndsAtTheLastSecondOfTheEndDate) {
    Diffusion(At(2026, 3, 9, 23, 59, 59), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    Diffusion(At(2026, 3, 10, 0, 0, 0), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    Diffusion(At(2026, 3, 11, 23, 59, 59), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    Diffusion(At(2026, 3, 12, 0, 0, 0), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 11));
    ASSERT_EQ(g.MaxRows(), 1);
    EXPECT_EQ(g.Text(kPubTotalLigne, 1), "2");
    EXPECT_EQ(recherche.Bilan().enregistrementsLus, 2);
    EXPECT_EQ(events.calls, 2);  // once per log record
}

TEST_F(PubliciteTest, OneLinePerClientMessageAndZoneWithRunningTotals) {
    Diffusion(At(2026, 3, 10, 8, 0, 0), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    Diffusion(At(2026, 3, 10, 8, 0, 0), "CLI00001", "SPOT0001", "MSG00001", " HDF | LILLE ");
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    ASSERT_EQ(g.MaxRows(), 1);
    EXPECT_EQ(g.Text(kPubClient, 1), "CLI00001");
    EXPECT_EQ(g.Text(kPubNomClient, 1), "Boulangerie Lefèvre");
    EXPECT_EQ(g.Text(kPubCommercial, 1), "COM001");
    EXPECT_EQ(g.Text(kPubNomCommercial, 1), "Hélène Martin");
    EXPECT_EQ(g.Text(kPubMessage, 1), "SPOT0001/MSG00001");
    EXPECT_EQ(g.Text(kPubTexteMessage, 1), "0042 Galette des rois");
    EXPECT_EQ(g.Text(kPubZone, 1), "HDF/LILLE");
    EXPECT_EQ(g.Text(kPubTotalClient, 1), "2");
    EXPECT_EQ(g.Text(kPubTotalMessage, 1), "2");
    EXPECT_EQ(g.Text(kPubTotalLigne, 1), "2");
}

TEST_F(PubliciteTest, NewMessageAndNewZoneOfAKnownClient) {
    Diffusion(At(2026, 3, 10, 8), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    Diffusion(At(2026, 3, 10, 9), "CLI00001", "SPOT0001", "MSG00002", "HDF|LILLE");
    Diffusion(At(2026, 3, 10, 10), "CLI00001", "SPOT0001", "MSG00001", "HDF|ARRAS");
    Diffusion(At(2026, 3, 10, 11), "CLI00002", "SPOT0009", "MSG00009", "NATIONAL", "999999");
    Diffusion(At(2026, 3, 10, 12), "CLI00001", "SPOT0001", "MSG00002", "HDF|LILLE");
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    ASSERT_EQ(g.MaxRows(), 4);
    // Client 1: four broadcasts on its first line; message 1 twice on its first line.
    EXPECT_EQ(g.Text(kPubTotalClient, 1), "4");
    EXPECT_EQ(g.Text(kPubTotalMessage, 1), "2");
    EXPECT_EQ(g.Text(kPubTotalLigne, 1), "1");
    // Second message: a new line whose client total stays empty.
    EXPECT_EQ(g.Text(kPubMessage, 2), "SPOT0001/MSG00002");
    EXPECT_EQ(g.Text(kPubTexteMessage, 2), "0007 Soldes d'hiver");
    EXPECT_EQ(g.Text(kPubTotalClient, 2), "");
    EXPECT_EQ(g.Text(kPubTotalMessage, 2), "2");
    EXPECT_EQ(g.Text(kPubTotalLigne, 2), "2");
    // Another zone of message 1: a new line, totals on the earlier lines.
    EXPECT_EQ(g.Text(kPubZone, 3), "HDF/ARRAS");
    EXPECT_EQ(g.Text(kPubTotalClient, 3), "");
    EXPECT_EQ(g.Text(kPubTotalMessage, 3), "");
    EXPECT_EQ(g.Text(kPubTotalLigne, 3), "1");
    // Unknown message and contract: readable fallbacks; a reference without "|" is kept whole.
    EXPECT_EQ(g.Text(kPubNomClient, 4), "Garage du Centre");
    EXPECT_EQ(g.Text(kPubTexteMessage, 4), "Message: MSG00009");
    EXPECT_EQ(g.Text(kPubCommercial, 4), "");
    EXPECT_EQ(g.Text(kPubNomCommercial, 4), "Commercial: ");
    EXPECT_EQ(g.Text(kPubZone, 4), "NATIONAL");
    EXPECT_EQ(g.Text(kPubTotalClient, 4), "1");
}

TEST_F(PubliciteTest, EmptyClientAddsNothingAndUnknownClientIsNamed) {
    Diffusion(At(2026, 3, 10, 8), "        ", "SPOT0001", "MSG00001", "HDF|LILLE");
    Diffusion(At(2026, 3, 10, 9), "CLI00077", "SPOT0001", "MSG00001", "HDF|LILLE");
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    ASSERT_EQ(g.MaxRows(), 1);
    EXPECT_EQ(g.Text(kPubNomClient, 1), "Client: CLI00077");
    EXPECT_EQ(recherche.Bilan().diffusionsComptees, 1);
    EXPECT_TRUE(box.shown.empty()) << box.shown[0].request.text;
}

TEST_F(PubliciteTest, StopAfterTheFirstRecord) {
    for (int i = 0; i < 5; ++i)
        Diffusion(At(2026, 3, 10, 8, i), "CLI00001", "SPOT0001", "MSG00001", "HDF|LILLE");
    events.onEvents = [&] {
        box.Script(kIdYes);
        recherche.CommandLancer_Click(ParametresRecherche{});  // the second click
    };
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    EXPECT_EQ(g.MaxRows(), 0);
    EXPECT_TRUE(recherche.Bilan().arretee);
    EXPECT_EQ(recherche.Bilan().enregistrementsLus, 1);
}

}  // namespace
}  // namespace zl3
