// The "Incidents" tab and the windows around the main window, wired to the core: the list
// loaded by the option or on the tab's first showing, the check adding and saving, the caption
// flashing until the tab is seen, the purge; the track search, a track's broadcasts, the detail
// of an advertising line and its export, the release notes.
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QtTest/QTest>

#include <filesystem>
#include <fstream>

#include "BaseDemo.h"
#include "DemoSite.h"
#include "Etat.h"
#include "FenetresAide.h"
#include "FrmListeRechercheMulti.h"
#include "Frm_Main.h"
#include "Lib_Profile.h"
#include "Lib_Settings.h"
#include "Lib_Systeme.h"
#include "Lib_Tableur.h"
#include "OngletIncidents.h"
#include "TestSite.h"

namespace zl3::gui {
namespace {

class FenetresTest : public test::SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        std::string erreur;
        ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 2}, erreur)) << erreur;
        WriteProfileString("UDP", "Port", "0", NomFichierSettings("", ".Ini"));
    }
    void TearDown() override {
        events.onEvents = nullptr;
        fenetre.reset();
        SiteTest::TearDown();
    }
    Frm_Main& Demarrer(bool chargeIncidents) {
        SettingsZL3 s = InitSettingsZL3();
        s.incidentsDemarrage = chargeIncidents;
        EXPECT_TRUE(SaveSettingsZL3(s));
        fenetre = std::make_unique<Frm_Main>();
        events.onEvents = [this] { QCoreApplication::processEvents(); };
        EXPECT_TRUE(fenetre->Form_Initialize());
        EXPECT_TRUE(fenetre->Form_Load());
        fenetre->show();
        fenetre->DefinirPeriode(DateTime{2026, 10, 1}, DateTime{2026, 10, 31});
        fenetre->ChoisirStation(1, 1);
        return *fenetre;
    }
    std::unique_ptr<Frm_Main> fenetre;
};

TEST_F(FenetresTest, IncidentsAreLoadedCheckedFlashedUntilSeenKeptAndPurged) {
    Frm_Main& w = Demarrer(false);
    OngletIncidents* o = w.Incidents();
    EXPECT_FALSE(o->Charge());  // option off: not before the tab is shown
    w.OngletsMain()->setCurrentWidget(o);
    EXPECT_TRUE(o->Charge());
    w.OngletsMain()->setCurrentIndex(0);

    // No data files at all: the check reports the records it could not read.
    o->findChild<QPushButton*>("CommandVerifier")->click();
    const size_t n = o->Liste().Liste().size();
    ASSERT_GT(n, 0u);
    EXPECT_EQ(o->Grille().MaxRows(), static_cast<int>(n));
    EXPECT_TRUE(std::filesystem::exists(FichierIncidents()));
    EXPECT_TRUE(o->TimerFlash()->isActive());
    w.OngletsMain()->setCurrentWidget(o);
    EXPECT_FALSE(o->TimerFlash()->isActive());
    EXPECT_EQ(o->Liste().NonVus(), 0u);

    // Once quitting, the flash stops at its next tick.
    w.OngletsMain()->setCurrentIndex(0);
    o->Verifier([&] {
        ParametresVerification p;
        p.debut = DateTime{2026, 9, 1};
        p.fin = DateTime{2026, 9, 30};
        p.station = 2;
        return p;
    }());
    ASSERT_TRUE(o->TimerFlash()->isActive());
    Etat().enSortie = true;
    EXPECT_TRUE(QTest::qWaitFor([&] { return !o->TimerFlash()->isActive(); }, 5000));
    Etat().enSortie = false;

    // A restart with the option on finds the same list at once; the purge asks first.
    const size_t total = o->Liste().Liste().size();
    fenetre.reset();
    Frm_Main& w2 = Demarrer(true);
    OngletIncidents* o2 = w2.Incidents();
    EXPECT_TRUE(o2->Charge());
    EXPECT_EQ(o2->Liste().Liste().size(), total);
    box.Script(kIdNo);
    o2->findChild<QPushButton*>("CommandPurger")->click();
    EXPECT_EQ(o2->Liste().Liste().size(), total);
    box.Script(kIdYes);
    o2->findChild<QPushButton*>("CommandPurger")->click();
    EXPECT_TRUE(o2->Liste().Liste().empty());
    EXPECT_EQ(o2->Grille().MaxRows(), 0);
}

TEST_F(FenetresTest, TrackSearchBroadcastsAdvertisingDetailAndReleaseNotes) {
    demo::OptionsBaseDemo b;
    b.stations = 2;
    b.morceaux = 120;
    b.jours = 40;
    b.fin = DateTime{2026, 10, 31};
    demo::RemplirBaseDemo(b, sys::WithTrailingSep(sys::NativePath(DossierDataDemo(1))));
    Frm_Main& w = Demarrer(false);

    // The search: every track first, the exit refused while it runs.
    FrmListeRechercheMulti* f = w.RechercheMulti();
    bool refusee = false;
    events.onEvents = [&] {
        if (Etat().rechercheEnCours && !refusee) {
            w.Quitter();
            refusee = true;
        }
    };
    f->Rechercher();
    events.onEvents = nullptr;
    EXPECT_TRUE(refusee);
    EXPECT_FALSE(Etat().enSortie);
    EXPECT_FALSE(Etat().rechercheEnCours);
    const Grid& g = f->Grille();
    ASSERT_GT(g.MaxRows(), 1);
    // A word of a title finds that track, and only tracks whose titles hold it.
    const std::string titre = g.Text(kMulTitre, 1);
    const std::string mot = titre.substr(0, titre.find(' '));
    f->findChild<QLineEdit*>("TexteTitre")->setText(QString::fromStdString(mot));
    f->findChild<QPushButton*>("CommandRechercher")->click();
    ASSERT_GE(g.MaxRows(), 1);
    for (int r = 1; r <= g.MaxRows(); ++r)
        EXPECT_NE(g.Text(kMulTitre, r).find(mot), std::string::npos) << g.Text(kMulTitre, r);
    // The track's broadcasts are as many as its count.
    int row = 1;
    while (row < g.MaxRows() && g.Number(kMulDiffusions, row) == 0) ++row;
    QDialog* d = f->OuvrirDiffusions(row - 1);
    ASSERT_NE(d, nullptr);
    EXPECT_TRUE(d->findChild<QLabel*>("LabelDiffusions")
                    ->text()
                    .startsWith(QString::number(g.Number(kMulDiffusions, row)) + " "));

    // The detail of an advertising line: its column 10, exported.
    w.ChoisirRapport(Rapport::Publicite);
    w.CommandLancer_Click();
    ASSERT_GT(w.GrillePublicite().MaxRows(), 0);
    FrmDetailDonnees* detail = w.DetailPublicite(1);
    ASSERT_NE(detail, nullptr);
    EXPECT_EQ(detail->Bilan().diffusions, w.GrillePublicite().Number(kPubTotalLigne, 1));
    const std::string chemin = Root() + "/detail.xlsx";
    detail->dialogue = [&](const std::string&, const std::string&, const std::string&) {
        return chemin;
    };
    EXPECT_TRUE(detail->Exporter().Ok());
    EXPECT_TRUE(std::filesystem::exists(chemin));

    // The release notes: missing, said; present, shown.
    AfficherNouveautes(&w);
    ASSERT_FALSE(box.shown.empty());
    EXPECT_NE(box.shown.back().request.text.find("NOUVEAUTES.txt"), std::string::npos);
    sys::CheckRep(sys::DossierApplication());
    std::ofstream(sys::DossierApplication() + "NOUVEAUTES.txt") << "Version 9.9\n- essai\n";
    FrmTexte* t = AfficherNouveautes(&w);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->Texte()->toPlainText(), QStringLiteral("Version 9.9\n- essai\n"));
}

}  // namespace
}  // namespace zl3::gui
