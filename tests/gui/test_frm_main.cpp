// The main window on a generated site, headless: start-up in its order, the grids' headers, a
// search equal to zl3-stats', stopping it, the exit refused meanwhile, geometry, standby, one copy
// only, the component check, the UDP sockets and the table model under Qt's model tester.
#include <QAbstractItemModelTester>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QUdpSocket>

#include <cstdio>

#include "BaseDemo.h"
#include "DemoSite.h"
#include "EnteteGrille.h"
#include "Etat.h"
#include "FrmDebugEcran.h"
#include "FrmMsgBox.h"
#include "FrmSetup.h"
#include "Frm_Main.h"
#include "Instance.h"
#include "Lib_Profile.h"
#include "ModeleGrille.h"
#include "ReglagesFenetres.h"
#include "SocketUDP.h"
#include "TestSite.h"

namespace zl3::gui {
namespace {

class FenetreTest : public test::SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        std::string erreur;
        ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 2}, erreur)) << erreur;
        // Sockets on a port the system chooses: tests never meet each other or a real suite.
        WriteProfileString("UDP", "Port", "0", NomFichierSettings("", ".Ini"));
    }
    void TearDown() override {
        events.onEvents = nullptr;
        fenetre.reset();
        SiteTest::TearDown();
    }
    void RemplirBase() {
        demo::OptionsBaseDemo o;
        o.stations = 2;
        o.morceaux = 300;
        o.jours = 40;
        o.fin = DateTime{2026, 10, 31};
        demo::RemplirBaseDemo(o, sys::WithTrailingSep(sys::NativePath(DossierDataDemo(1))));
    }
    Frm_Main& Demarrer(const std::string& ligne = "") {
        fenetre = std::make_unique<Frm_Main>(ligne);
        events.onEvents = [this] {
            fenetre->SuivreGrilles();
            QCoreApplication::processEvents();
        };
        EXPECT_TRUE(fenetre->Form_Initialize());
        EXPECT_TRUE(fenetre->Form_Load());
        return *fenetre;
    }
    // Runs the report on station 1, over October unless told.
    void Lancer(Rapport r, int premierJour = 1) {
        fenetre->ChoisirRapport(r);
        fenetre->DefinirPeriode(DateTime{2026, 10, premierJour}, DateTime{2026, 10, 31});
        fenetre->ChoisirStation(1, 1);
        fenetre->CommandLancer_Click();
    }
    bool MessageMontre(const std::string& debut) const {
        for (const auto& s : box.shown)
            if (s.request.text.rfind(debut, 0) == 0) return true;
        return false;
    }
    std::unique_ptr<Frm_Main> fenetre;
};

TEST_F(FenetreTest, StartUpTracesItsStepsInOrderAndShowsEveryGridsHeaders) {
    Frm_Main& w = Demarrer("/Instance=3");
    const QStringList lignes = w.DebugEcran()->Lignes();
    const char* etapes[] = {"Frm_Main:Form_Load",
                            "Command Line: '/Instance=3'",
                            "Instance: 3",
                            "FrmMain: Init General: Start",
                            "----- Tools Stats: Init: General -----",
                            "----- Init: InitGeneralPath -----",
                            "----- Init: InitGeneralSite -----",
                            "----- Tools Stats: Init: Bases -----",
                            "FrmMain: Init General: End",
                            "----- Id Radio: ",
                            "----- Tools Stats: Init: Create Object -----",
                            "----- Tools Stats: Init: Display -----",
                            "----- Tools Stats: Init: Tableur -----",
                            "----- Tools Stats: Init: Fin -----",
                            "----- Init: Duration: "};
    int suivante = 0;
    for (const QString& l : lignes)
        if (suivante < static_cast<int>(std::size(etapes)) && l.contains(etapes[suivante]))
            ++suivante;
    ASSERT_EQ(suivante, static_cast<int>(std::size(etapes)))
        << "missing or out of order: " << etapes[suivante] << "\n"
        << lignes.join("\n").toStdString();
    EXPECT_EQ(Etat().instance, 3);
    EXPECT_EQ(w.windowTitle(), "Zelvar: Tools Stats - 3.4.0");

    // Selectors: "Toutes" first, the stations' labels; the period ends today.
    EXPECT_EQ(w.ComboBases()->itemText(0), "Toutes");
    EXPECT_EQ(w.ComboStations()->count(), 2);
    EXPECT_EQ(w.FinPeriode().day, 3);
    EXPECT_EQ(w.DebutPeriode().month, 10);
    EXPECT_EQ(w.DebutPeriode().day, 1);

    // Every grid: its headers, no data row.
    struct Attendu {
        Rapport r;
        std::vector<std::string> noms;
    };
    const std::vector<Attendu> attendus = {
        {Rapport::Quotas, {"Fr.", "N.T.", "Fr + NT", "Etr.", "Instru.", "Fr.", "N.T.", "Fr + NT",
                           "Etr.", "Fr.", "N.T.", "Fr + NT", "Etr.", "Instru.", "Fr.", "N.T.",
                           "Fr + NT", "Etr."}},
        {Rapport::TopDiffusion,
         {"Titre", "Artiste", "Artiste", "Catégorie", "Durée", "Id", "Nombre", "Clip"}},
        {Rapport::Sacem, {"Artiste", "Titre", "Durée", "Label", "Nombre"}},
        {Rapport::Publicite, {"Client", "Client", "Commercial", "Commercial", "Message", "Message",
                              "Zone", "Total", "Total", "Total"}}};
    for (const Attendu& a : attendus) {
        ModeleGrille* m = w.Modele(a.r);
        ASSERT_EQ(m->columnCount(), static_cast<int>(a.noms.size()));
        EXPECT_EQ(m->rowCount(), 0);
        for (size_t c = 0; c < a.noms.size(); ++c)
            EXPECT_EQ(m->headerData(static_cast<int>(c), Qt::Horizontal).toString().toStdString(),
                      a.noms[c]);
    }
    w.ChoisirRapport(Rapport::Publicite);
    EXPECT_EQ(w.windowTitle(), "Zelvar: Tools Stats - Publicite");
    // The Quotas bands stand over nine columns, "Pourcentage" over four.
    w.ChoisirRapport(Rapport::Quotas);
    EXPECT_EQ(w.windowTitle(), "Zelvar: Tools Stats - Musique - Quotas");
    w.resize(1400, 700);
    w.show();
    QCoreApplication::processEvents();
    QTableView* vue = w.Vue(Rapport::Quotas);
    auto* entete = static_cast<EnteteGrille*>(vue->horizontalHeader());
    const auto bande = entete->CelluleEntete(0, 3);
    EXPECT_EQ(bande.texte, "00H00 - 23H59");
    EXPECT_EQ(bande.rect.width(), entete->sectionPosition(9) - entete->sectionPosition(0));
    const auto pct = entete->CelluleEntete(1, 6);
    EXPECT_EQ(pct.texte, "Pourcentage");
    EXPECT_EQ(pct.rect.left(), entete->sectionViewportPosition(5));
    EXPECT_EQ(pct.rect.width(), entete->sectionPosition(9) - entete->sectionPosition(5));
    EXPECT_EQ(entete->height(), 3 * entete->HauteurNiveau());
}

TEST_F(FenetreTest, LancerOnQuotasGivesZl3StatsCellsAndPerTrackReportsFill) {
    RemplirBase();
    Frm_Main& w = Demarrer();
    Lancer(Rapport::Quotas);
    EXPECT_EQ(w.BoutonLancer()->text(), "Lancer");
    const Grid& g = w.GrillesMusique().quotas;
    ModeleGrille* m = w.Modele(Rapport::Quotas);
    ASSERT_EQ(g.MaxRows(), 32);
    ASSERT_EQ(m->rowCount(), 32);

    const std::string cmd = std::string(ZL3_STATS_EXE) + " --root " + Root() +
                            " --station 1 --report quotas --from 2026-10-01 --to 2026-10-31"
                            " --format csv";
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    std::string csv;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0)
        csv.append(buf, n);
    ASSERT_EQ(pclose(p), 0) << csv;
    std::vector<std::vector<std::string>> lignes;
    for (size_t debut = 0; debut < csv.size();) {
        size_t fin = csv.find("\r\n", debut);
        if (fin == std::string::npos) fin = csv.size();
        std::vector<std::string> cells;
        size_t d = debut;
        for (size_t i = debut; i <= fin; ++i)
            if (i == fin || csv[i] == ',') {
                cells.push_back(csv.substr(d, i - d));
                d = i + 1;
            }
        lignes.push_back(cells);
        debut = fin + 2;
    }
    ASSERT_EQ(lignes.size(), 3u + 32u);
    long long total = 0;
    for (int r = 1; r <= 32; ++r) {
        const auto& l = lignes[static_cast<size_t>(2 + r)];
        EXPECT_EQ(m->headerData(r - 1, Qt::Vertical).toString().section(' ', 0, 0).toStdString(),
                  l[0]);
        for (int c = 1; c <= kNbColonnesQuotas; ++c)
            EXPECT_EQ(m->data(m->index(r - 1, c - 1)).toString().toStdString(),
                      l[static_cast<size_t>(c + 1)])
                << "row " << r << " col " << c;
    }
    total = g.Number(kColFr, 32) + g.Number(kColNT, 32) + g.Number(kColEtr, 32);
    EXPECT_GT(total, 1000);
    EXPECT_EQ(m->data(m->index(0, kColFr - 1), Qt::TextAlignmentRole).value<Qt::Alignment>() &
                  Qt::AlignRight,
              Qt::AlignRight);

    Lancer(Rapport::TopDiffusion);
    EXPECT_GT(w.Modele(Rapport::TopDiffusion)->rowCount(), 10);
    Lancer(Rapport::Sacem);
    EXPECT_GT(w.Modele(Rapport::Sacem)->rowCount(), 10);
}

TEST_F(FenetreTest, StopperMidRunKeepsTotalsAndTheExitIsRefusedMeanwhile) {
    RemplirBase();
    Frm_Main& w = Demarrer();
    w.show();
    int tours = 0;
    bool controlesInactifs = false;
    events.onEvents = [&] {
        w.SuivreGrilles();
        QCoreApplication::processEvents();
        if (++tours != 3) return;
        controlesInactifs = !w.ComboStations()->isEnabled() && !w.OngletsMain()->tabBar()->isEnabled();
        EXPECT_EQ(w.BoutonLancer()->text(), "Stopper");
        w.Quitter();  // refused: the run goes on
        box.Script(kIdYes);
        w.BoutonLancer()->click();  // "Voulez-vous stopper la recherche ?" → Oui
    };
    Lancer(Rapport::Quotas);
    EXPECT_TRUE(controlesInactifs);
    EXPECT_TRUE(MessageMontre("Voulez ne pouvez pas quitter tant qu'une recherche est en cours"));
    EXPECT_TRUE(MessageMontre("Voulez-vous stopper la recherche ?"));
    EXPECT_FALSE(MessageMontre("Voulez-vous quitter le programme ?"));
    EXPECT_FALSE(Etat().enSortie);
    EXPECT_TRUE(w.isVisible());
    const BilanRecherche& b = w.Recherche().Bilan();
    EXPECT_TRUE(b.arretee);
    EXPECT_LT(b.morceauxLus, 300);
    const Grid& g = w.GrillesMusique().quotas;
    ASSERT_EQ(g.RowHeader(0, g.MaxRows()), "Total");
    long long somme = 0;
    for (int r = 1; r < g.MaxRows(); ++r)
        somme += g.Number(kColFr, r);
    EXPECT_EQ(g.Number(kColFr, g.MaxRows()), somme);
    EXPECT_TRUE(w.ComboStations()->isEnabled());
    EXPECT_EQ(w.BoutonLancer()->text(), "Lancer");

    // Afterwards the exit is asked, then done: backup marker, files closed, log flushed.
    box.Script(kIdYes);
    w.Quitter();
    EXPECT_TRUE(Etat().enSortie);
    EXPECT_EQ(ReadProfileString("Data_Backup", "Start", "", Config().bases[0].dossierConfig +
                                                                "QV_PRG.ini"),
              "0FF");
    const std::string log = test::ReadFile(FichierLogDuJour());
    const size_t unload = log.find("---------- Frm_Main: Form_Unload: Start");
    ASSERT_NE(unload, std::string::npos);
    EXPECT_NE(log.find("Pervasive files closed", unload), std::string::npos);
    EXPECT_LT(log.find("Application closed by human action (Menu action)"), unload);
    EXPECT_EQ(shell.termines, std::vector<std::string>{"ZL3_Tools_Stats.exe"});
}

TEST_F(FenetreTest, WindowClosedMaximisedKeepsItsNormalSize) {
    Frm_Main& w = Demarrer();
    w.showNormal();
    w.resize(900, 600);
    box.Script(kIdYes);
    w.Quitter();
    const std::string f = FichierPositions();
    EXPECT_EQ(ReadProfileInt("FrmPos", "Frm_Main_Width", 0, f), 900 * kTwipsParPixel);
    EXPECT_EQ(ReadProfileInt("FrmPos", "Frm_Main_WindowState", -1, f), 0);

    events.onEvents = nullptr;
    fenetre.reset();
    ReinitialiserEtatGlobal();
    Frm_Main& w2 = Demarrer();
    EXPECT_EQ(w2.width(), 900);
    w2.showMaximized();
    QCoreApplication::processEvents();
    box.Script(kIdYes);
    w2.Quitter();
    EXPECT_EQ(ReadProfileInt("FrmPos", "Frm_Main_Width", 0, f), 900 * kTwipsParPixel);
    EXPECT_EQ(ReadProfileInt("FrmPos", "Frm_Main_Height", 0, f), 600 * kTwipsParPixel);
    EXPECT_EQ(ReadProfileInt("FrmPos", "Frm_Main_WindowState", -1, f), 2);
}

TEST_F(FenetreTest, VeilleStartGoesToTheNotificationAreaOrMinimises) {
    Frm_Main& w = Demarrer("/Veille=True");
    EXPECT_TRUE(Etat().demandeVeille);
    w.show();
    QElapsedTimer t;
    t.start();
    while (Etat().demandeVeille && t.elapsed() < 5000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    EXPECT_FALSE(Etat().demandeVeille);
    // The offscreen platform has no notification area: the window is minimised and the trace
    // says so; with one, the window hides behind the icon "Zelvar: Stats".
    EXPECT_TRUE(!w.isVisible() || w.isMinimized());
    const QString trace = w.DebugEcran()->Lignes().join("\n");
    EXPECT_TRUE(trace.contains("FrmSysTray: no notification area: window minimised") ||
                trace.contains("FrmSysTray: in the notification area"));
}

TEST_F(FenetreTest, SecondCopyIsRefusedAfterItsWait) {
    sys::VerrouNomme premiereCopie(kNomVerrou);
    ASSERT_TRUE(premiereCopie.Tenu());
    Frm_Main w;
    ASSERT_TRUE(w.Form_Initialize());
    EXPECT_FALSE(w.Form_Load());
    EXPECT_EQ(clock.TotalSlept(), 5000);
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text,
              "Application encore chargée en mémoire.\nVeuillez la quitter avant de relancer une "
              "autre instance de cette application.");
    EXPECT_EQ(box.shown[0].request.style, kMbOk | kMbCritical);
}

TEST_F(FenetreTest, KillOptionAsksTheEarlierCopyToQuit) {
    Frm_Main& premiere = Demarrer();
    premiere.show();
    sys::VerrouNomme verrou(kNomVerrou);
    ASSERT_FALSE(verrou.Tenu());
    EXPECT_TRUE(TesterPrevInstance(verrou, true, 0));
    EXPECT_TRUE(Etat().enSortie);
    EXPECT_FALSE(premiere.isVisible());
}

TEST_F(FenetreTest, MissingComponentShowsBothDialogsAndNoWindow) {
    ASSERT_TRUE(sys::File_Delete(sys::DossierSysteme() + kComposantGrille));
    box.Script(kIdOk);
    box.Script(kIdYes);
    Frm_Main w;
    EXPECT_FALSE(w.Form_Initialize());
    EXPECT_FALSE(w.Form_Load());
    ASSERT_EQ(box.shown.size(), 2u);
    EXPECT_EQ(box.shown[0].request.title, "Installation des composants Zelvar");
    EXPECT_EQ(box.shown[0].request.style, kMbOk | kMbCritical);
    EXPECT_NE(box.shown[0].request.text.find(std::string("\n      ") + kAdresseComposants),
              std::string::npos);
    EXPECT_EQ(box.shown[1].request.text, "Voulez-vous télécharger le fichier et faire l'installation ?");
    ASSERT_EQ(shell.opened.size(), 1u);
    EXPECT_EQ(shell.opened[0], kAdresseComposants);
    EXPECT_FALSE(w.isVisible());
    EXPECT_EQ(w.DebugEcran()->Lignes().filter("Init: Duration").size(), 0);
}

TEST_F(FenetreTest, BlankDatagramLeavesTheLastActiveSocket) {
    Frm_Main& w = Demarrer();
    const int port = w.Sockets()->PortLocal(0);
    ASSERT_GT(port, 0);
    int lus = 0;
    QObject::connect(w.Sockets(), &SocketUDP::DatagrammeLu, [&](int) { ++lus; });
    Etat().dernierSocketActif = 7;
    QUdpSocket envoi;
    auto envoyer = [&](const QByteArray& d, int attendus) {
        envoi.writeDatagram(d, QHostAddress::LocalHost, static_cast<quint16>(port));
        QElapsedTimer t;
        t.start();
        while (lus < attendus && t.elapsed() < 10000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        ASSERT_EQ(lus, attendus);
    };
    envoyer("     ", 1);
    EXPECT_EQ(Etat().dernierSocketActif, 7);
    envoyer("START", 2);
    EXPECT_EQ(Etat().dernierSocketActif, 0);
}

TEST_F(FenetreTest, TableModelPassesQtsTesterWhileTheAdvertisingRunAppendsRows) {
    RemplirBase();
    Frm_Main& w = Demarrer();
    QAbstractItemModelTester testeur(w.Modele(Rapport::Publicite),
                                     QAbstractItemModelTester::FailureReportingMode::Fatal);
    int insertions = 0;
    QObject::connect(w.Modele(Rapport::Publicite), &QAbstractItemModel::rowsInserted,
                     [&] { ++insertions; });
    Lancer(Rapport::Publicite, 29);
    EXPECT_GT(insertions, 5);  // rows came while the run went on, not at the end only
    EXPECT_EQ(w.Modele(Rapport::Publicite)->rowCount(), w.GrillePublicite().MaxRows());
    EXPECT_GT(w.GrillePublicite().MaxRows(), 5);
    Lancer(Rapport::Publicite, 30);  // a second run empties the grid and fills it again
    EXPECT_EQ(w.Modele(Rapport::Publicite)->rowCount(), w.GrillePublicite().MaxRows());
}

TEST_F(FenetreTest, MessageWindowShowsFrenchButtonsAndTheCloseButtonAnswersNo) {
    FrmMsgBoxDialog d(MessageRequest{"Ligne 1\r\nLigne 2", "Titre", kMbYesNo | kMbQuestion});
    QStringList boutons;
    for (auto* b : d.findChildren<QPushButton*>())
        boutons << b->text();
    EXPECT_EQ(boutons.join(","), "Oui,Non");
    d.show();
    d.close();
    EXPECT_EQ(d.Reponse(), kIdNo);
}

}  // namespace
}  // namespace zl3::gui

namespace zl3::gui {
namespace {

TEST_F(FenetreTest, LookOfTheSettingsOnTheGridsFromStartAndAtOnceFromTheOptions) {
    const std::string f = NomFichierSettings("", ".Ini");
    WriteProfileString("ListeTV", "TaillePolice", "15", f);
    WriteProfileString("Couleur", "TV_Fond", std::to_string(RGBCouleur(200, 10, 20)), f);
    WriteProfileString("Couleur", "Selection_Fond", std::to_string(RGBCouleur(0, 0, 90)), f);
    WriteProfileString("General_Out", "AffArtiste", "0", f);
    Frm_Main& w = Demarrer();
    QTableView* vue = w.Vue(Rapport::Quotas);
    EXPECT_EQ(vue->font().pointSize(), 15);
    // Artist columns hidden on screen, the title shown (SACEM: Artiste, Titre, ...).
    QTableView* sacem = w.Vue(Rapport::Sacem);
    EXPECT_TRUE(sacem->isColumnHidden(0));
    EXPECT_FALSE(sacem->isColumnHidden(1));
    EXPECT_EQ(vue->palette().color(QPalette::Highlight), QColor(0, 0, 90));
    w.GrillesMusique().quotas.SetMaxRows(1);
    w.SuivreGrilles();
    ModeleGrille* m = w.Modele(Rapport::Quotas);
    EXPECT_EQ(m->data(m->index(0, 0), Qt::BackgroundRole), QVariant(QColor(200, 10, 20)));

    // Refused while a search runs.
    Etat().rechercheEnCours = true;
    w.Action("Mnu01Options")->trigger();
    EXPECT_EQ(w.findChild<FrmSetup*>(), nullptr);
    Etat().rechercheEnCours = false;
    // A size typed in the options shows at once; "Annuler" brings the saved look back.
    ASSERT_TRUE(w.Action("Mnu01Options")->isEnabled());
    w.Action("Mnu01Options")->trigger();
    FrmSetup* options = w.findChild<FrmSetup*>();
    ASSERT_NE(options, nullptr);
    options->findChild<QSpinBox*>("TexteTaillePolice")->setValue(18);
    EXPECT_EQ(vue->font().pointSize(), 18);
    options->findChild<QPushButton*>("CommandAnnuler")->click();
    EXPECT_EQ(vue->font().pointSize(), 15);
}

}  // namespace
}  // namespace zl3::gui
