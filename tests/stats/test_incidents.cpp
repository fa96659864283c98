// The data check behind the "Incidents" tab, and the list kept in its file.
#include <filesystem>

#include "BaseTest.h"
#include "Incidents.h"

namespace zl3 {
namespace {

class IncidentsTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({3, 18, 22, 27, 47});
        Client("CLI00001", "Boulangerie Lefèvre");
        p.debut = test::At(2026, 10, 1, 0);
        p.fin = test::At(2026, 10, 31, 0);
        p.source = 2;
    }
    void Client(const std::string& code, const std::string& nom) {
        auto r = Nouveau(3);
        rec::SetBytes(r, rec::Client::CodeClient, code);
        rec::SetText(r, rec::Client::NomClient, nom);
        Inserer(3);
    }
    void Prevu(const DateTime& t, const std::string& spot) {
        namespace c = rec::ConducteurPub;
        auto r = Nouveau(27);
        rec::SetBytes(r, c::Date, FormatYYYYMMDD(t));
        rec::SetBytes(r, c::Heure, PadNumber(t.hour, 2));
        rec::SetBytes(r, c::Minute, PadNumber(t.minute, 2));
        rec::SetBytes(r, c::Seconde, PadNumber(t.second, 2));
        rec::SetBytes(r, c::CleSpot, spot);
        Inserer(27);
    }
    // A clean station: every track counted, every history within its cap, the log following the
    // running order.
    void StationPropre() {
        Morceau("00100001", "O");
        Historique("00100001", {test::At(2026, 10, 2, 9), test::At(2026, 9, 28, 9)});
        Morceau("00100002", "N");
        Historique("00100002", {test::At(2026, 10, 5, 9)});
        Prevu(test::At(2026, 10, 3, 8), "SPOT0001");
        DiffusionPub(test::At(2026, 10, 3, 8, 1), "CLI00001", "SPOT0001");
    }
    std::vector<std::pair<GenreIncident, std::string>> Trouves() {
        std::vector<std::pair<GenreIncident, std::string>> v;
        for (const Incident& i : VerifierDonnees(p).incidents) v.emplace_back(i.genre, i.cle);
        return v;
    }

    ParametresVerification p;
};

using G = GenreIncident;
using Attendus = std::vector<std::pair<GenreIncident, std::string>>;

TEST_F(IncidentsTest, ACleanStationHasNone) {
    StationPropre();
    const BilanVerification b = VerifierDonnees(p);
    EXPECT_TRUE(b.incidents.empty()) << b.incidents.front().texte;
    EXPECT_EQ(b.morceauxLus, 2);
    EXPECT_EQ(b.historiquesLus, 2);
    EXPECT_EQ(b.enregistrementsPubLus, 1);
    EXPECT_TRUE(box.shown.empty());
}

TEST_F(IncidentsTest, EachKindIsFoundWithTheKeyOfItsRecord) {
    StationPropre();
    // Broadcast in October with a flag that counts nowhere; the same flag outside the period is
    // no incident.
    Morceau("00200001", "X");
    Historique("00200001", {test::At(2026, 10, 10, 14)});
    Morceau("00200002", "X");
    Historique("00200002", {test::At(2026, 9, 10, 14)});
    // 700 broadcasts written, 672 read, the oldest read one after the 1st of October.
    std::vector<DateTime> recents(672, test::At(2026, 10, 20, 10));
    Morceau("00300001", "O");
    Historique("00300001", recents, 700);
    // The same overflow, but the entries read reach back before the period: nothing was lost.
    std::vector<DateTime> anciens(672, test::At(2026, 9, 20, 10));
    Morceau("00300002", "O");
    Historique("00300002", anciens, 700);
    // Two entries, the second of which is not a time.
    Morceau("00400001", "1");
    Historique("00400001", {test::At(2026, 10, 4, 9), test::At(2026, 10, 4, 10)});
    {
        std::string cle = rec::HistoryKey("00400001");
        ASSERT_EQ(BTRieve(test::kSlotEcriture, kBtrGetEqual, cle, 0, 47, 1, "test"), 0);
        rec::SetBytes(TamponEnreg(47), rec::HistoriqueDiffusion::Passage(1), "      ");
        ASSERT_EQ(BTRieve(test::kSlotEcriture, kBtrUpdate, cle, 0, 47, 1, "test"), 0);
    }
    // A history record whose track was deleted.
    Historique("00500009", {test::At(2026, 10, 4, 9)});
    // Advertising: a client unknown, a broadcast without client, a planned spot never aired, an
    // aired spot never planned.
    DiffusionPub(test::At(2026, 10, 6, 9), "CLI00099", "SPOT0002");
    DiffusionPub(test::At(2026, 10, 7, 9), "", "SPOT0003");
    Prevu(test::At(2026, 10, 8, 9), "SPOT0004");

    const Attendus attendus = {
        {G::QuotaInconnu, "00200001"},
        {G::HistoriqueTronque, "00300001"},
        {G::PassageInvalide, "00400001"},
        {G::HistoriqueOrphelin, "00500009M"},
        {G::ClientInconnu, "20261006090000"},
        {G::ClientInconnu, "20261007090000"},
        {G::SpotNonDiffuse, "20261008 SPOT0004"},
        {G::DiffusionHorsConducteur, "20261006 SPOT0002"},
        {G::DiffusionHorsConducteur, "20261007 SPOT0003"},
    };
    EXPECT_EQ(Trouves(), attendus);
    const auto incidents = VerifierDonnees(p).incidents;
    EXPECT_EQ(incidents[1].texte,
              "Morceau 00300001: 700 passages, 672 lus; diffusions couvertes à partir du "
              "20/10/2026");
    EXPECT_EQ(incidents[0].quand, clock.Now());
}

TEST_F(IncidentsTest, AFileThatCannotBeOpenedIsAnIncidentAndTheCheckStopsWhenAsked) {
    StationPropre();
    for (int i = 0; i < 60; ++i) Morceau("006" + PadNumber(i, 5), "X");
    FermerTousLesFichiers();
    std::filesystem::remove(data_ + cat::NomFichier(27, 0));
    p.musique = false;
    auto b = VerifierDonnees(p);
    ASSERT_FALSE(b.incidents.empty());
    EXPECT_EQ(b.incidents[0].genre, G::LectureImpossible);
    EXPECT_EQ(b.incidents[0].cle, cat::NomFichier(27, 0));
    EXPECT_EQ(b.enregistrementsPubLus, 1) << "the log is still checked";
    // Files opened by the check are closed again.
    EXPECT_FALSE(FichierOuvert(p.source, 1, 18));

    p.musique = true;
    p.publicite = false;
    int demandes = 0;
    p.arret = [&] { return ++demandes == 2; };
    b = VerifierDonnees(p);
    EXPECT_TRUE(b.arretee);
    EXPECT_EQ(b.morceauxLus, 40);
}

TEST_F(IncidentsTest, TheListSurvivesARestartAndThePurgeAsksFirst) {
    const std::string fichier = Root() + "Incidents.Ini";
    ListeIncidents liste;
    liste.Charger(fichier);
    EXPECT_TRUE(liste.Liste().empty());
    Incident a{test::At(2026, 11, 3, 10, 15, 7), 2, G::ClientInconnu, "Client « Hélène »", "CLÉ1"};
    Incident b{test::At(2026, 11, 3, 10, 16), 1, G::QuotaInconnu, "Morceau 00200001", "00200001"};
    EXPECT_EQ(liste.Ajouter({a, b, a}), 2u);
    EXPECT_EQ(liste.Ajouter({b}), 0u) << "an incident already listed is not added twice";
    ASSERT_TRUE(liste.Enregistrer());

    ListeIncidents relue;
    relue.Charger(fichier);
    EXPECT_EQ(relue.Liste(), liste.Liste());
    EXPECT_EQ(relue.NonVus(), 2u);
    EXPECT_EQ(relue.LignesIllisibles(), 0);

    // A damaged section is skipped, the others kept.
    test::WriteFile(fichier, test::ReadFile(fichier) +
                                 "[Incident_00003]\r\nDate=2026133\r\nType=Quota inconnu\r\n");
    relue.Charger(fichier);
    EXPECT_EQ(relue.Liste().size(), 2u);
    EXPECT_EQ(relue.LignesIllisibles(), 1);

    box.Script(kIdNo);
    EXPECT_FALSE(relue.Purger());
    EXPECT_EQ(relue.Liste().size(), 2u);
    box.Script(kIdYes);
    EXPECT_TRUE(relue.Purger());
    ASSERT_EQ(box.shown.size(), 2u);
    EXPECT_EQ(box.shown[0].request.text, "Voulez-vous effacer la liste des incidents ?");
    ListeIncidents vide;
    vide.Charger(fichier);
    EXPECT_TRUE(vide.Liste().empty());
}

TEST_F(IncidentsTest, TheGridShowsTheNewestFirst) {
    Grid g;
    InitTableurIncidents(g);
    RemplirTableurIncidents(
        g, {{test::At(2026, 11, 1, 8), 1, G::QuotaInconnu, "premier", "K1"},
            {test::At(2026, 11, 2, 9, 30), 3, G::SpotNonDiffuse, "second", "K2"}});
    ASSERT_EQ(g.MaxRows(), 2);
    EXPECT_EQ(g.Text(1, 1), "02/11/2026");
    EXPECT_EQ(g.Text(2, 1), "09:30:00");
    EXPECT_EQ(g.Text(3, 1), "3");
    EXPECT_EQ(g.Text(4, 1), "Spot non diffusé");
    EXPECT_EQ(g.Text(6, 2), "K1");
}

}  // namespace
}  // namespace zl3
