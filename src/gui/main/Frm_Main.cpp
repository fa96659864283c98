#include "Frm_Main.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdlib>

#include "CommandesSortie.h"
#include "EnteteGrille.h"
#include "Etat.h"
#include "FenetresAide.h"
#include "FrmDebugEcran.h"
#include "FrmDownload.h"
#include "FrmSetup.h"
#include "NavigateurFTP.h"
#include "FrmListeRechercheMulti.h"
#include "FrmSysTray.h"
#include "Instance.h"
#include "Lib_Config.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Stats.h"
#include "Lib_Messages.h"
#include "Lib_Profile.h"
#include "Lib_Public.h"
#include "Lib_Settings.h"
#include "Lib_Systeme.h"
#include "VueConformite.h"
#include "FrmExport.h"
#include "LigneCommande.h"
#include "ModeleGrille.h"
#include "OngletIncidents.h"
#include "ReglagesFenetres.h"
#include "Services.h"
#include "SocketUDP.h"

namespace zl3::gui {
namespace {

const char* kModule = "Frm_Main";
const char* kOngletMusique = "Musique";
const char* kOngletPublicite = "Publicite";
const char* kOngletIncidents = "Incidents";

int IndexVue(Rapport r) {
    return static_cast<int>(r);
}

QDate VersQDate(const DateTime& d) {
    return QDate(d.year, d.month, d.day);
}

DateTime DeQDate(const QDate& d) {
    return DateTime{d.year(), d.month(), d.day(), 0, 0, 0, 0};
}

std::string Identite(const char* procedure) {
    return std::string(kModule) + ":" + procedure;
}

std::vector<std::string> PolicesOffertes() {
    std::vector<std::string> v;
    for (const QString& f : QFontDatabase::families())
        v.push_back(f.toStdString());
    return v;
}

QColor VersCouleur(int32_t c) {
    return QColor(Rouge(c), Vert(c), Bleu(c));
}

}  // namespace

Frm_Main::Frm_Main(std::string ligneCommande, QWidget* parent)
    : QMainWindow(parent), ligneCommande_(std::move(ligneCommande)) {
    setObjectName(kModule);
    setWindowIcon(IconeApplication());
    // The trace list is shown live from the very first line.
    debugEcran_ = new FrmDebugEcran(this);
    recherche_ = std::make_unique<RechercheStats>(musique_, publicite_);
    // The options window's FTP entries open the FTP browser.
    FrmSetup::navigateurFTP = &OuvrirNavigateurFTP;
    ConstruireControles();
    sortie_ = new CommandesSortie(*this);
}

Frm_Main::~Frm_Main() {
    if (charge_ && !dechargee_) Form_Unload();
    // The views read the grids, which are members: the views go while the grids still exist.
    delete takeCentralWidget();
}

bool Frm_Main::Form_Initialize() {
    TraceProc(Identite("Form_Initialize"));
    const std::string composant = sys::DossierSysteme() + kComposantGrille;
    if (sys::FileExists(composant)) return true;
    composantManquant_ = true;
    const std::string titre = "Installation des composants Zelvar";
    AffMsg(std::string("Cette mise-à-jour nécessite l'installation de la version 3.47.030 des "
                       "composants Zelvar") +
               "\n" + "Veuillez faire d'abord cette installation et relancer ensuite le programme" +
               "\n" + "Fichier pour faire cette installation:" + "\n" + "      " +
               kAdresseComposants,
           titre, kMbOk | kMbCritical);
    if (Question("Voulez-vous télécharger le fichier et faire l'installation ?", titre,
                 kMbYesNo | kMbQuestion) == kIdYes)
        Svc().shell->Open(kAdresseComposants);
    return false;
}

bool Frm_Main::Form_Load() {
    const std::string id = Identite("Form_Load");
    TraceLog(id);
    if (composantManquant_) {
        close();
        return false;
    }
    // The suite's named mutex, held for the life of the process.
    verrou_ = std::make_unique<sys::VerrouNomme>(kNomVerrou);
    if (!TesterPrevInstance(*verrou_, false, 5000)) {
        verrou_.reset();
        close();
        return false;
    }
    EtatApplication& etat = Etat();
    etat.chronoDemarrage = Svc().clock->Stopwatch();
    etat.ligneCommande = ligneCommande_;
    try {
        if (!Trim(ligneCommande_).empty()) AnalyseChaineCommand(ligneCommande_);
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }
    try {
        InitGeneralLook();
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }
    try {
        InitGeneral();
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }

    const bool statut = OptionStatutDemarrage();
    if (statut) Statut("Tools Stats: Init: Create Object");
    try {
        CreationDesObjets();
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }

    Statut("Tools Stats: Init: Display");
    try {
        RestaureGeometrie(*this);
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }

    if (statut) Statut("Tools Stats: Init: Tableur");
    try {
        InitGeneralTableurMusique(musique_);
        InitGeneralTableurPublicite(publicite_);
        SuivreGrilles();
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }
    if (statut) Statut("Tools Stats: Init: Fin");

    const int64_t duree = Svc().clock->Stopwatch() - *etat.chronoDemarrage;
    TraceLogEncadre("Init: Duration: " + std::to_string(duree) + " ms");

    if (ligneCommande_.find("/Veille=True") != std::string::npos) {
        etat.demandeVeille = true;
        timerVeille_->start();
    }
    if (OptionIncidents()) incidents_->Charger();
    ResizeCurrentOngletMain();
    Statut("Tools Stats: Ready", false);
    TraceLogForce();
    charge_ = true;
    return true;
}

void Frm_Main::InitGeneralSysteme() {
    const std::string theme = sys::ThemeActive();
    TraceLog("ActiveTheme: " + std::string(theme == "0" ? "WinClassic" : "WinXP"));
    NomDossierSettings();
}

void Frm_Main::InitGeneralLook() {
    TraceProc(Identite("InitGeneralLook"));
    InitGeneralSysteme();
    QFont police("Arial");
    police.setPointSize(9);
    setFont(police);
    AppliquerLook(zl3::InitGeneralLook(PolicesOffertes()));
}

void Frm_Main::AppliquerLook(const LookGeneral& look) {
    look_ = look;
    QFont police(QString::fromStdString(look.policeListes));
    police.setPointSize(look.taillePolice);
    police.setBold(look.gras);
    const QColor fond = VersCouleur(look.couleurs[kTV_Fond]);
    const QColor texte = VersCouleur(look.couleurs[kTV_Texte]);
    // "Classique": flat tab strips over framed pages and solid grid lines; the visual styles
    // draw document-mode tabs and dotted lines, "Visual + focus" selecting whole lines.
    const bool visuel = look.style != 0;
    for (int i = 0; i < 4; ++i) {
        QTableView* vue = vues_[i];
        vue->setFont(police);
        vue->verticalHeader()->setDefaultSectionSize(QFontMetrics(police).height() + 6);
        QPalette p = vue->palette();
        p.setColor(QPalette::Base, fond);
        p.setColor(QPalette::Text, texte);
        p.setColor(QPalette::Highlight, VersCouleur(look.couleurs[kSelection_Fond]));
        p.setColor(QPalette::HighlightedText, VersCouleur(look.couleurs[kSelection_Texte]));
        vue->setPalette(p);
        vue->setAlternatingRowColors(false);
        vue->setGridStyle(visuel ? Qt::DotLine : Qt::SolidLine);
        vue->setSelectionBehavior(look.style == 1 ? QAbstractItemView::SelectRows
                                                  : QAbstractItemView::SelectItems);
        modeles_[i]->DefinirCouleurs(fond, texte);
        vue->viewport()->update();
    }
    sftTabsMain_->setDocumentMode(visuel);
    for (QTabBar* b : {sftTabsMusique_, sftTabsPublicite_}) {
        b->setDocumentMode(visuel);
        b->setDrawBase(visuel);
    }
    if (charge_) ResizeCurrentOngletMain();
}

void Frm_Main::Mnu01Options_Click() {
    TraceProc(Identite("Mnu01Options_Click"));
    if (Etat().rechercheEnCours || recherche_->EnCours()) {
        TraceLog("FrmMain: Options: refused while a search runs");
        return;
    }
    if (auto* ouverte = findChild<FrmSetup*>()) {
        ouverte->raise();
        ouverte->activateWindow();
        return;
    }
    auto* f = new FrmSetup(this);
    f->setAttribute(Qt::WA_DeleteOnClose);
    f->setWindowModality(Qt::WindowModal);
    f->apercuLook = [this](const SettingsLook& l) {
        AppliquerLook(CalculeLook(l, PolicesOffertes(), sys::ThemeActive() == "0"));
    };
    // Saved or not, the look of the settings stands again (an edit shown at once is undone by
    // "Annuler").
    connect(f, &QDialog::finished, this,
            [this] { AppliquerLook(zl3::InitGeneralLook(PolicesOffertes())); });
    f->Form_Load();
    f->show();
}

void Frm_Main::InitGeneral() {
    TraceLog("FrmMain: Init General: Start");
    setWindowTitle(QStringLiteral("%1 - %2").arg(kTitreApplication, kVersionApplication));
    Statut("Tools Stats: Init: General");
    MajHorloge();
    TraceLogEncadre("Init: InitGeneralPath");
    DetermineDossierConfig();
    TraceLogEncadre("Init: InitGeneralSite");
    const Configuration& c = Config();
    if (!c.bases.empty()) SetDossierLog(0, c.bases[0].dossiers[kRepLog]);
    TraceLog("Site: " + c.nomRadio + " | Bases: " + std::to_string(c.nbBase));

    Statut("Tools Stats: Init: Bases");
    comboBases_->blockSignals(true);
    comboBases_->clear();
    comboBases_->addItem(QStringLiteral("Toutes"), 0);
    for (size_t b = 0; b < c.bases.size(); ++b)
        comboBases_->addItem(QString::fromStdString(c.bases[b].lib), static_cast<int>(b + 1));
    comboBases_->setCurrentIndex(0);
    comboBases_->blockSignals(false);
    RemplirStations();

    const std::string incidents = NomDossierSettings() + "Incidents" + ".Ini";
    TraceLog("Incidents: " + incidents);
    std::srand(static_cast<unsigned>(Svc().clock->TickCount()));
    TraceLog("FrmMain: Init General: End");
    // The period: up to today, from the first day of the previous month.
    const DateTime aujourdhui = Svc().clock->Now();
    DateTime debut{aujourdhui.year, aujourdhui.month, 1, 0, 0, 0, 0};
    debut = AddDays(debut, -1);
    debut.day = 1;
    DefinirPeriode(debut, DateTime{aujourdhui.year, aujourdhui.month, aujourdhui.day});
    TraceLogEncadre("Id Radio: " + c.nomRadio);
}

void Frm_Main::ConstruireControles() {

    // Menus.
    auto action = [this](QMenu* menu, const char* nom, const QString& texte, auto&& slot) {
        QAction* a = menu->addAction(texte);
        a->setObjectName(nom);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu* fichier = menuBar()->addMenu(QStringLiteral("&Fichier"));
    QAction* exporter = action(fichier, "MnuExportExcel", QStringLiteral("&Exporter..."), [] {});
    QAction* imprimer = action(fichier, "MnuPrint", QStringLiteral("&Imprimer..."), [] {});
    for (QAction* a : {exporter, imprimer}) {
        a->setEnabled(false);
        a->setToolTip(QStringLiteral("Pas encore disponible dans cette version"));
    }
    fichier->addSeparator();
    action(fichier, "MnuQuitter", QStringLiteral("&Quitter"), [this] { Quitter(); });

    QMenu* outils = menuBar()->addMenu(QStringLiteral("&Outils"));
    action(outils, "Mnu01Options", QStringLiteral("&Options..."), [this] { Mnu01Options_Click(); });
    outils->setToolTipsVisible(true);
    fichier->setToolTipsVisible(true);
    action(outils, "Mnu01Log", QStringLiteral("&Journal du jour"), [this] { Mnu01Log_Click(); });
    action(outils, "Mnu01Debug", QStringLiteral("&Ecran de debug"), [this] {
        debugEcran_->show();
        debugEcran_->raise();
    });
    action(outils, "Mnu01MajFTP", QStringLiteral("&Mise à jour FTP…"), [this] {
        // The update download from the first FTP entry of the options, into the data folder.
        auto* f = findChild<FrmDownload*>();
        if (!f) {
            f = new FrmDownload(this);
            f->setModal(true);  // no search starts while the data folder is being written
        }
        if (!f->isVisible()) {
            const SettingsInternet reglages = InitSettingsInternet();
            const ServeurFTP& e = reglages.serveurs[0];
            f->Charger(e.serveur, e.user, e.pw, e.cnx, e.dossier, e.ftps);
        }
        f->show();
        f->raise();
    });
    action(outils, "MnuRechercheMulti", QStringLiteral("&Recherche de titres..."), [this] {
        FrmListeRechercheMulti* f = RechercheMulti();
        f->show();
        f->raise();
    });
    action(outils, "MnuNotes", QStringLiteral("&Notes..."), [this] {
        AfficherNote(this, StationChoisie().first);
    });
    QAction* veille =
        action(outils, "Mnu01Veille", QStringLiteral("&Veille"), [this] { Mnu01Veille_Click(); });
    veille->setCheckable(true);

    QMenu* aide = menuBar()->addMenu(QStringLiteral("&Aide"));
    action(aide, "MnuWhatNews", QStringLiteral("&Nouveautés"), [this] { MnuWhatNews_Click(); });
    action(aide, "MnuAbout", QStringLiteral("&A propos..."), [this] { APropos(); });

    // Period, base, station, button.
    auto* central = new QWidget;
    auto* page = new QVBoxLayout(central);
    page->setContentsMargins(6, 6, 6, 6);
    auto* barre = new QHBoxLayout;
    debut_ = new QDateEdit;
    fin_ = new QDateEdit;
    for (QDateEdit* d : {debut_, fin_}) {
        d->setDisplayFormat("dd/MM/yyyy");
        d->setCalendarPopup(true);
        // The whole date and the calendar button: the Windows style's estimate leaves the last
        // digit under the button.
        d->setMinimumWidth(d->fontMetrics().horizontalAdvance(QStringLiteral("00/00/00000")) + 32);
    }
    debut_->setObjectName("TexteDateDebut");
    fin_->setObjectName("TexteDateFin");
    comboBases_ = new QComboBox;
    comboBases_->setObjectName("ComboBases");
    comboBases_->setMinimumWidth(140);
    comboStations_ = new QComboBox;
    comboStations_->setObjectName("ComboStations");
    comboStations_->setMinimumWidth(180);
    commandLancer_ = new QPushButton(QStringLiteral("Lancer"));
    commandLancer_->setObjectName("CommandLancer");
    commandLancer_->setMinimumWidth(100);
    barre->addWidget(new QLabel(QStringLiteral("Du")));
    barre->addWidget(debut_);
    barre->addWidget(new QLabel(QStringLiteral("au")));
    barre->addWidget(fin_);
    barre->addSpacing(16);
    barre->addWidget(new QLabel(QStringLiteral("Base")));
    barre->addWidget(comboBases_);
    barre->addWidget(new QLabel(QStringLiteral("Station")));
    barre->addWidget(comboStations_);
    barre->addStretch(1);
    barre->addWidget(commandLancer_);
    page->addLayout(barre);
    connect(comboBases_, &QComboBox::currentIndexChanged, this, [this] { RemplirStations(); });
    connect(commandLancer_, &QPushButton::clicked, this, [this] { CommandLancer_Click(); });
    recherche_->onCaption = [this](const std::string& c) {
        commandLancer_->setText(QString::fromStdString(c));
    };

    // The grids.
    const Grid* grilles[4] = {&musique_.quotas, &musique_.top, &musique_.sacem, &publicite_};
    const char* noms[4] = {"fpSpreadMusique", "fpSpreadTop", "fpSpreadSacem", "fpSpreadPublicite"};
    for (int i = 0; i < 4; ++i) {
        modeles_[i] = new ModeleGrille(*grilles[i], this);
        auto* vue = new QTableView;
        vue->setObjectName(noms[i]);
        vue->setHorizontalHeader(new EnteteGrille(vue));
        vue->setModel(modeles_[i]);
        vue->setAlternatingRowColors(true);
        vue->setSelectionMode(QAbstractItemView::ContiguousSelection);
        vue->setEditTriggers(QAbstractItemView::NoEditTriggers);
        vue->setWordWrap(false);
        vue->verticalHeader()->setDefaultSectionSize(vue->fontMetrics().height() + 6);
        vues_[i] = vue;
    }
    // The broadcasts behind a line of the advertising grid: double-click or context menu.
    QTableView* pub = vues_[IndexVue(Rapport::Publicite)];
    connect(pub, &QTableView::doubleClicked, this,
            [this](const QModelIndex& i) { DetailPublicite(i.row() + 1); });
    pub->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(pub, &QTableView::customContextMenuRequested, this, [this, pub](const QPoint& pos) {
        const QModelIndex i = pub->indexAt(pos);
        if (!i.isValid()) return;
        QMenu menu(this);
        menu.addAction(QStringLiteral("Détail des diffusions..."), this,
                       [this, i] { DetailPublicite(i.row() + 1); });
        menu.exec(pub->viewport()->mapToGlobal(pos));
    });
    sftTabsMain_ = new QTabWidget;
    sftTabsMain_->setObjectName("SftTabsMain");
    auto* pageMusique = new QWidget;
    auto* lm = new QVBoxLayout(pageMusique);
    lm->setContentsMargins(0, 4, 0, 0);
    sftTabsMusique_ = new QTabBar;
    sftTabsMusique_->setObjectName("SftTabsMusique");
    sftTabsMusique_->setExpanding(false);
    for (const char* t : {"Quotas", "Top Diffusion", "SACEM", "Conformité"})
        sftTabsMusique_->addTab(QString::fromUtf8(t));
    pileMusique_ = new QStackedWidget;
    for (int i = 0; i < 3; ++i)
        pileMusique_->addWidget(vues_[i]);
    // The compliance view: the chosen station, under the main window's slot.
    conformite_ = new VueConformite;
    conformite_->parametres = [this](ParametresConformite& p) {
        if (Etat().rechercheEnCours || recherche_->EnCours()) return false;
        const auto [base, station] = StationChoisie();
        if (base < 1 || station < 1) {
            AffMsg("Veuillez choisir une station.", kTitreApplication, kMbOk | kMbExclamation);
            return false;
        }
        const int nbStations = Config().bases[static_cast<size_t>(base - 1)].nbStation;
        if (!session_.Ouverte() || session_.Base() != base) session_.Ouvrir(base, 1, nbStations);
        p.base = base;
        p.station = station;
        p.source = session_.Source();
        return true;
    };
    conformite_->dialoguePdf = [this](const std::string& nom) {
        const std::string dossier = DossierNatif(InitSettingsExport().dossierExport);
        return DialogueEnregistrerQt(this)(dossier, nom, "Fichiers pdf|*.pdf");
    };
    pileMusique_->addWidget(conformite_);
    lm->addWidget(sftTabsMusique_);
    lm->addWidget(pileMusique_, 1);
    auto* pagePub = new QWidget;
    auto* lp = new QVBoxLayout(pagePub);
    lp->setContentsMargins(0, 4, 0, 0);
    sftTabsPublicite_ = new QTabBar;
    sftTabsPublicite_->setObjectName("SftTabsPublicite");
    sftTabsPublicite_->setExpanding(false);
    sftTabsPublicite_->addTab(QStringLiteral("Diffusions"));
    lp->addWidget(sftTabsPublicite_);
    lp->addWidget(vues_[3], 1);
    incidents_ = new OngletIncidents;
    incidents_->parametres = [this](ParametresVerification& p) { return ParametresIncidents(p); };
    sftTabsMain_->addTab(pageMusique, kOngletMusique);
    sftTabsMain_->addTab(pagePub, kOngletPublicite);
    sftTabsMain_->addTab(incidents_, kOngletIncidents);
    incidents_->DefinirOnglets(sftTabsMain_);
    page->addWidget(sftTabsMain_, 1);
    setCentralWidget(central);
    // A tab change lays the tab out, then the caption names the selection.
    auto changement = [this] {
        ResizeCurrentOngletMain();
        if (sftTabsMain_->currentWidget() == incidents_) incidents_->Montre();
        QString selection = sftTabsMain_->tabText(sftTabsMain_->currentIndex());
        if (selection == kOngletMusique)
            selection += " - " + sftTabsMusique_->tabText(sftTabsMusique_->currentIndex());
        setWindowTitle(QStringLiteral("%1 - %2").arg(kTitreApplication, selection));
    };
    connect(sftTabsMain_, &QTabWidget::currentChanged, this, changement);
    connect(sftTabsMusique_, &QTabBar::currentChanged, this, changement);

    // Status line, clock.
    statut_ = new QLabel;
    date_ = new QLabel;
    heure_ = new QLabel;
    statusBar()->addWidget(statut_, 1);
    statusBar()->addPermanentWidget(date_);
    statusBar()->addPermanentWidget(heure_);
    timerHorloge_ = new QTimer(this);
    timerHorloge_->setInterval(1000);
    connect(timerHorloge_, &QTimer::timeout, this, [this] {
        if (!Etat().enSortie) MajHorloge();
    });
    timerHorloge_->start();
    timerVeille_ = new QTimer(this);
    timerVeille_->setObjectName("TimerVeille");
    timerVeille_->setInterval(100);
    connect(timerVeille_, &QTimer::timeout, this, [this] { TimerVeille_Timer(); });

    resize(1100, 680);
}

void Frm_Main::CreationDesObjets() {
    TraceProc(Identite("CreationDesObjets"));
    // Notification area, sockets, the later copies' requests.
    sysTray_ = new FrmSysTray(this);
    sysTray_->onRestaurer = [this] { Restaurer(); };
    sysTray_->onAPropos = [this] { APropos(); };
    sysTray_->onQuitter = [this] {
        Restaurer();
        Quitter();
    };
    sockets_ = new SocketUDP(this);
    sockets_->Ouvrir(static_cast<int>(PortUDP()));
    serveurInstance_ = new ServeurInstance(this);
    serveurInstance_->onQuitter = [this] { DemandeDeQuitter(); };
    serveurInstance_->Ecouter();
}

void Frm_Main::RemplirStations() {
    const Configuration& c = Config();
    const int base = comboBases_->currentData().toInt();
    comboStations_->clear();
    for (size_t b = 0; b < c.bases.size(); ++b) {
        if (base != 0 && base != static_cast<int>(b + 1)) continue;
        const ConfigBase& cb = c.bases[b];
        for (size_t s = 0; s < cb.stations.size(); ++s) {
            QString texte = QString::fromStdString(cb.stations[s].lib);
            if (base == 0 && c.bases.size() > 1)
                texte = QString::fromStdString(cb.lib) + " - " + texte;
            comboStations_->addItem(texte, QVariant::fromValue(QPoint(static_cast<int>(b + 1),
                                                                     static_cast<int>(s + 1))));
        }
    }
}

void Frm_Main::Statut(const std::string& texte, bool encadre) {
    if (statut_) statut_->setText(QString::fromStdString(texte));
    if (encadre) TraceLogEncadre(texte);
}

void Frm_Main::MajHorloge() {
    const DateTime now = Svc().clock->Now();
    date_->setText(QString::fromStdString(FormatDDMMYYYY(now)));
    heure_->setText(QString::fromStdString(FormatHHMMSS(now)));
}

std::optional<Rapport> Frm_Main::RapportCourant() const {
    if (!sftTabsMain_) return std::nullopt;
    return RapportDeOnglet(sftTabsMain_->tabText(sftTabsMain_->currentIndex()).toStdString(),
                           sftTabsMusique_->currentIndex());
}

const Grid* Frm_Main::GrilleCourante() const {
    const auto r = RapportCourant();
    return r ? &modeles_[IndexVue(*r)]->Grille() : nullptr;
}

ModeleGrille* Frm_Main::Modele(Rapport r) const {
    return modeles_[IndexVue(r)];
}

QTableView* Frm_Main::Vue(Rapport r) const {
    return vues_[IndexVue(r)];
}

DateTime Frm_Main::DebutPeriode() const {
    return DeQDate(debut_->date());
}

DateTime Frm_Main::FinPeriode() const {
    return DeQDate(fin_->date());
}

void Frm_Main::DefinirPeriode(const DateTime& debut, const DateTime& fin) {
    debut_->setDate(VersQDate(debut));
    fin_->setDate(VersQDate(fin));
}

void Frm_Main::ChoisirRapport(Rapport r) {
    const OngletsRapport o = OngletsDuRapport(r);
    for (int i = 0; i < sftTabsMain_->count(); ++i)
        if (sftTabsMain_->tabText(i).toStdString() == o.ongletMain) sftTabsMain_->setCurrentIndex(i);
    if (r != Rapport::Publicite) sftTabsMusique_->setCurrentIndex(o.sousOngletMusique);
}

void Frm_Main::ChoisirStation(int base, int station) {
    comboBases_->setCurrentIndex(base);
    for (int i = 0; i < comboStations_->count(); ++i) {
        const QPoint p = comboStations_->itemData(i).toPoint();
        if ((base == 0 || p.x() == base) && p.y() == station) {
            comboStations_->setCurrentIndex(i);
            return;
        }
    }
}

std::pair<int, int> Frm_Main::StationChoisie() const {
    const QPoint p = comboStations_->currentData().toPoint();
    return {p.x(), p.y()};
}

QAction* Frm_Main::Action(const QString& nom) const {
    return findChild<QAction*>(nom);
}

void Frm_Main::SuivreGrilles() {
    for (int i = 0; i < 4; ++i)
        if (modeles_[i] && modeles_[i]->Suivre()) MasquerColonnes(i);
}

// The title and artist columns follow [General_Out] AffTitre / AffArtiste: hidden on screen
// only; exports and prints keep every column of the grid.
void Frm_Main::MasquerColonnes(int i) {
    const Grid& g = modeles_[i]->Grille();
    const int niveau = std::max(0, g.HeaderRows() - 1);
    for (int c = 1; c <= g.MaxCols(); ++c) {
        const std::string& entete = g.ColHeader(niveau, c);
        const bool masque = (entete == "Titre" && !look_.affTitre) ||
                            (entete == "Artiste" && !look_.affArtiste);
        vues_[i]->setColumnHidden(c - 1, masque);
    }
}

void Frm_Main::SuivreGrillesDeTempsEnTemps() {
    const int64_t maintenant = Svc().clock->Stopwatch();
    if (dernierSuivi_ >= 0 && maintenant - dernierSuivi_ < 100) return;
    dernierSuivi_ = maintenant;
    SuivreGrilles();
}

void Frm_Main::ResizeCurrentOngletMain() {
    if (!sftTabsMain_) return;
    TraceProc("Lib_Resize:ResizeCurrentOngletMain");
    const QString onglet = sftTabsMain_->tabText(sftTabsMain_->currentIndex());
    pileMusique_->setCurrentIndex(sftTabsMusique_->currentIndex());
    for (int i = 0; i < 3; ++i)
        vues_[i]->setVisible(i == sftTabsMusique_->currentIndex());
    for (int i = 0; i < 4; ++i) MasquerColonnes(i);
    // Column widths from the grid (characters), the first time a grid is seen.
    if (const auto r = RapportCourant()) {
        QTableView* vue = vues_[IndexVue(*r)];
        const Grid& g = modeles_[IndexVue(*r)]->Grille();
        const QFontMetrics fm = vue->fontMetrics();
        const int car = fm.horizontalAdvance(QLatin1Char('0'));
        for (int c = 1; c <= g.MaxCols(); ++c) {
            const int entete = fm.horizontalAdvance(QString::fromStdString(g.Text(c, 0))) + 16;
            if (g.ColWidth(c) > 0) vue->setColumnWidth(c - 1, std::max(entete, g.ColWidth(c) * car + 12));
        }
        if (g.ColWidth(0) > 0) vue->verticalHeader()->setMinimumWidth(g.ColWidth(0) * car + 40);
    }
    commandLancer_->setEnabled(RapportCourant().has_value() || recherche_->EnCours());
}

void Frm_Main::ActiverControles(bool actifs) {
    for (QWidget* w : std::initializer_list<QWidget*>{debut_, fin_, comboBases_, comboStations_,
                                                      sftTabsMusique_, sftTabsPublicite_})
        w->setEnabled(actifs);
    sftTabsMain_->tabBar()->setEnabled(actifs);
    for (const char* nom : {"Mnu01Veille", "MnuQuitter"})
        if (QAction* a = Action(nom)) a->setEnabled(true);
    if (QAction* a = Action("Mnu01MajFTP")) a->setEnabled(actifs);  // not into files being read
    // The output commands read the grid a search is filling: off meanwhile.
    for (const char* nom : {"MnuExportExcel", "MnuPrint", "MnuExportHistorique", "MnuStatsPassages"})
        if (QAction* a = Action(nom)) a->setEnabled(actifs);
}

void Frm_Main::CommandLancer_Click() {
    const std::string id = Identite("CommandLancer_Click");
    TraceProc(id);
    try {
        if (recherche_->EnCours()) {
            recherche_->CommandLancer_Click(ParametresRecherche{});  // asks whether to stop
            return;
        }
        if (Etat().rechercheEnCours) return;  // still preparing the search just asked for
        const auto rapport = RapportCourant();
        if (!rapport) return;
        const auto [base, station] = StationChoisie();
        if (base < 1 || station < 1) {
            AffMsg("Veuillez choisir une station.", kTitreApplication, kMbOk | kMbExclamation);
            return;
        }
        const DateTime debut = DebutPeriode();
        const DateTime fin = FinPeriode();
        if (DayDiff(debut, fin) < 0) {
            AffMsg("La date de fin est avant la date de début.", kTitreApplication,
                   kMbOk | kMbExclamation);
            return;
        }
        const int nbStations = Config().bases[static_cast<size_t>(base - 1)].nbStation;
        if (!session_.Ouverte() || session_.Base() != base) session_.Ouvrir(base, 1, nbStations);
        if (!session_.Pret(*rapport, station)) {
            std::string manquants;
            for (const std::string& f : session_.FichiersManquants(*rapport, station))
                manquants += (manquants.empty() ? "" : ", ") + f;
            AffMsg("La base de données de la station est illisible:\n" + session_.DossierData() +
                       "\n" + manquants,
                   kTitreApplication, kMbOk | kMbExclamation);
            session_.Fermer();
            return;
        }
        Etat().rechercheEnCours = true;
        ActiverControles(false);
        Statut("Recherche en cours...", false);
        SablierOn();
        // Opening the files and loading the versions list take a moment of their own: the
        // window gets its turn between them and the walk.
        Svc().events->DoEvents();
        if (!Versions().charge) {
            InitGeneralVersionSons(session_.Source(), station);
            Svc().events->DoEvents();
        }
        ParametresRecherche p;
        p.rapport = *rapport;
        p.debut = debut;
        p.fin = fin;
        p.station = station;
        p.source = session_.Source();
        recherche_->CommandLancer_Click(p);
        if (*rapport == Rapport::Publicite) dernierePublicite_ = p;
        SablierOff();
        SuivreGrilles();
        // A completed search: the same period and station checked, on the files already open.
        if (!recherche_->Bilan().arretee && recherche_->Bilan().effectuee) {
            ParametresVerification v;
            v.debut = debut;
            v.fin = fin;
            v.station = station;
            v.source = session_.Source();
            v.musique = *rapport != Rapport::Publicite;
            v.publicite = *rapport == Rapport::Publicite;
            incidents_->Verifier(v);
        }
        Etat().rechercheEnCours = false;
        ActiverControles(true);
        const BilanRecherche& b = recherche_->Bilan();
        std::string bilan = *rapport == Rapport::Publicite
                                ? std::to_string(b.diffusionsComptees) + " diffusion(s) comptée(s)"
                                : std::to_string(b.passagesComptes) + " passage(s) compté(s) sur " +
                                      std::to_string(b.morceauxLus) + " titre(s)";
        Statut((b.arretee ? "Recherche arrêtée: " : "Recherche terminée: ") + bilan, false);
        TraceLog("FrmMain: search: " + bilan + (b.arretee ? " (stopped)" : ""));
    } catch (const std::exception& e) {
        SablierOff();
        Etat().rechercheEnCours = false;
        ActiverControles(true);
        TraceErreur(id, 0, e.what());
    }
}

bool Frm_Main::ParametresIncidents(ParametresVerification& p) {
    if (Etat().rechercheEnCours || recherche_->EnCours()) return false;
    const auto [base, station] = StationChoisie();
    if (base < 1 || station < 1) {
        AffMsg("Veuillez choisir une station.", kTitreApplication, kMbOk | kMbExclamation);
        return false;
    }
    if (DayDiff(DebutPeriode(), FinPeriode()) < 0) {
        AffMsg("La date de fin est avant la date de début.", kTitreApplication,
               kMbOk | kMbExclamation);
        return false;
    }
    const int nbStations = Config().bases[static_cast<size_t>(base - 1)].nbStation;
    if (!session_.Ouverte() || session_.Base() != base) session_.Ouvrir(base, 1, nbStations);
    p.debut = DebutPeriode();
    p.fin = FinPeriode();
    p.station = station;
    p.source = session_.Source();
    return true;
}

FrmListeRechercheMulti* Frm_Main::RechercheMulti() {
    if (!rechercheMulti_) {
        rechercheMulti_ = new FrmListeRechercheMulti(this);
        rechercheMulti_->contexte = [this](CriteresMorceaux& c) {
            ParametresVerification p;
            if (!ParametresIncidents(p)) return false;
            c.debut = p.debut;
            c.fin = p.fin;
            c.station = p.station;
            c.source = p.source;
            return true;
        };
    }
    return rechercheMulti_;
}

FrmDetailDonnees* Frm_Main::DetailPublicite(int row) {
    if (!dernierePublicite_ || row < 1 || row > publicite_.MaxRows()) return nullptr;
    if (Etat().rechercheEnCours || recherche_->EnCours()) return nullptr;
    const ParametresRecherche& r = *dernierePublicite_;
    ParametresDetail p;
    p.debut = r.debut;
    p.fin = r.fin;
    p.station = r.station;
    p.source = r.source;
    p.client = publicite_.Text(kPubClient, row);
    p.message = publicite_.Text(kPubMessage, row);
    p.zone = publicite_.Text(kPubZone, row);
    auto* f = new FrmDetailDonnees(
        p, QString::fromStdString(publicite_.Text(kPubNomClient, row)), this);
    f->setAttribute(Qt::WA_DeleteOnClose);
    f->show();
    return f;
}

void Frm_Main::Mnu01Veille_Click() {
    if (Etat().enSortie) return;
    QAction* a = Action("Mnu01Veille");
    TraceLog(Identite("Mnu01Veille_Click") + ": " + (a->isChecked() ? "ON" : "0FF"));
    if (a->isChecked()) AllerEnVeille();
}

void Frm_Main::TimerVeille_Timer() {
    if (Etat().enSortie) return;
    if (!isVisible() || !Etat().demandeVeille) return;
    Etat().demandeVeille = false;
    timerVeille_->stop();
    AllerEnVeille();
}

void Frm_Main::AllerEnVeille() {
    if (sysTray_->Afficher()) {
        hide();
        TraceLog("FrmSysTray: in the notification area");
    } else {
        showMinimized();
        TraceLog("FrmSysTray: no notification area: window minimised");
    }
}

void Frm_Main::Restaurer() {
    sysTray_->Masquer();
    if (QAction* a = Action("Mnu01Veille")) a->setChecked(false);
    showNormal();
    raise();
    activateWindow();
}

void Frm_Main::APropos() {
    auto* f = new FrmAbout(this);
    f->setAttribute(Qt::WA_DeleteOnClose);
    f->show();
}

void Frm_Main::MnuWhatNews_Click() {
    AfficherNouveautes(this);
}

void Frm_Main::Mnu01Log_Click() {
    TraceProc(Identite("Mnu01Log_Click"));
    TraceLogForce();
    LectureLog();
}

void Frm_Main::Quitter() {
    TraceProc(Identite("Quitter"));
    if (Etat().rechercheEnCours || recherche_->EnCours()) {
        AffMsg("Voulez ne pouvez pas quitter tant qu'une recherche est en cours", kTitreApplication,
               kMbOk | kMbInformation);
        return;
    }
    if (Question("Voulez-vous quitter le programme ?", kTitreApplication,
                 kMbYesNo | kMbQuestion) != kIdYes)
        return;
    TraceLogEncadre("Application closed by human action (Menu action)");
    Etat().enSortie = true;
    close();
}

void Frm_Main::DemandeDeQuitter() {
    if (Etat().rechercheEnCours || recherche_->EnCours()) {
        TraceLog("FrmMain: a new copy asks this one to quit: refused, a search is running");
        return;
    }
    TraceLog("FrmMain: a new copy asks this one to quit", true);
    Etat().enSortie = true;
    close();
}

void Frm_Main::closeEvent(QCloseEvent* e) {
    Form_QueryUnload();
    if (Etat().rechercheEnCours || recherche_->EnCours()) {
        // The search runs on this window's stack: it must end first.
        AffMsg("Voulez ne pouvez pas quitter tant qu'une recherche est en cours", kTitreApplication,
               kMbOk | kMbInformation);
        e->ignore();
        return;
    }
    if (charge_ && !dechargee_) Form_Unload();
    e->accept();
}

void Frm_Main::Form_QueryUnload() {
    TraceProc(Identite("Form_QueryUnload"));
}

// The development switch of the suite's programs: always off in the product.
constexpr bool kDeveloppement = false;

void Frm_Main::Form_Unload() {
    const std::string id = Identite("Form_Unload");
    dechargee_ = true;
    TraceLog(std::string("---------- ") + kModule + ": Form_Unload: Start");
    Etat().enSortie = true;
    try {
        const Configuration& c = Config();
        for (size_t b = 0; b < c.bases.size() && b < static_cast<size_t>(kNbMaxBases); ++b)
            WriteProfileString("Data_Backup", "Start", "0FF", c.bases[b].dossierConfig + "QV_PRG.ini");
        const int64_t t0 = Svc().clock->Stopwatch();
        while (Svc().clock->Stopwatch() - t0 <= 500) {
            Svc().events->DoEvents();
            Svc().clock->Sleep(10);
        }
        SauveGeometrie(*this);
        if (timerVeille_) timerVeille_->stop();
        if (timerHorloge_) timerHorloge_->stop();
        if (debugEcran_) debugEcran_->close();
        if (sysTray_) sysTray_->Masquer();
        if (sockets_) sockets_->Fermer();
        // Every file still open, this window's and any other's; the trace says it either way.
        const bool ouverte = session_.Ouverte();
        session_.Fermer();
        FermerTousLesFichiers();
        if (!ouverte) TraceLog("Pervasive files closed");
        Svc().events->DoEvents();
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }
    TraceLog(std::string(kModule) + ": Form_Unload: End");
    TraceLogForce();
    // Unload may come from the instance server's own request: let it finish first.
    if (serveurInstance_) serveurInstance_->deleteLater();
    serveurInstance_ = nullptr;
    verrou_.reset();
    // The suite's last step: every process of the tool's image ends, this one included, so that
    // no hidden copy lingers (Windows; elsewhere the shell runs nothing and the event loop ends).
    if (!kDeveloppement) Svc().shell->TerminerImage(sys::NomExecutable() + ".exe");
    QCoreApplication::quit();
}

}  // namespace zl3::gui
