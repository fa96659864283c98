// Frm_Main: the tool's main window. The period, the base and the station, the button "Lancer"
// that starts a search of the report chosen by the tabs (and, while it runs, offers to stop it),
// the four result grids shown as the search fills them, the menus, the status line, the
// notification-area icon and the UDP sockets; start-up and exit in the suite's order, each step
// traced.
//
// Start:  Frm_Main w(commandLine); if (!w.Form_Initialize() || !w.Form_Load()) → not shown.
// Other windows plug in through GrilleCourante() / RapportCourant() / Periode() (export, print)
// and the menu actions (Action("MnuExportExcel") …), enabled when their window exists.
#pragma once

#include <QMainWindow>

#include <memory>
#include <optional>
#include <string>

#include "DateTime.h"
#include "Lib_Look.h"
#include "Incidents.h"
#include "Lib_Tableur.h"
#include "Rapport.h"
#include "Recherche.h"
#include "SessionRapport.h"

class QAction;
class QComboBox;
class QDateEdit;
class QLabel;
class QPushButton;
class QStackedWidget;
class QTabBar;
class QTabWidget;
class QTableView;
class QTimer;

namespace zl3::sys {
class VerrouNomme;
}

namespace zl3::gui {

class CommandesSortie;
class FrmDebugEcran;
class FrmSysTray;
class ModeleGrille;
class OngletIncidents;
class VueConformite;
class FrmListeRechercheMulti;
class FrmDetailDonnees;
class ServeurInstance;
class SocketUDP;

// The caller slot under which the main window opens its database files.
inline constexpr int kSourceFrmMain = 0;
// The grid-mask component the suite installs, and where its installer is downloaded.
inline constexpr const char* kComposantGrille = "SftMask_IX86_U_70.ocx";
inline constexpr const char* kAdresseComposants =
    "https://www.zelvar.fr/telechargement/Zelvar_Composants_3.47.030.exe";

class Frm_Main : public QMainWindow {
    Q_OBJECT
  public:
    explicit Frm_Main(std::string ligneCommande = "", QWidget* parent = nullptr);
    ~Frm_Main() override;

    // The component check; false when the component is missing (the two dialogs were shown and
    // nothing else must start).
    bool Form_Initialize();
    // The start-up; false when the window must not be shown (component missing, earlier copy).
    bool Form_Load();
    // The exit command (menu, notification area): refused while a search runs, else asks.
    void Quitter();
    // The "Lancer" / "Stopper" button.
    void CommandLancer_Click();
    void Mnu01Veille_Click();
    void Mnu01Log_Click();
    // Opens the options window (refused while a search runs); the look is applied again when it
    // closes, and shown at once while the user edits it.
    void Mnu01Options_Click();
    // The look on the grids: font, colours, tab and grid style; re-lays out the current tab.
    void AppliquerLook(const LookGeneral& look);
    const LookGeneral& Look() const { return look_; }
    // Lays out and shows the current tab's controls (a tab change then rebuilds the caption).
    void ResizeCurrentOngletMain();

    // ---- For the other windows (export, print) and the tests ----
    std::optional<Rapport> RapportCourant() const;
    const Grid* GrilleCourante() const;
    TableursMusique& GrillesMusique() { return musique_; }
    Grid& GrillePublicite() { return publicite_; }
    ModeleGrille* Modele(Rapport r) const;
    QTableView* Vue(Rapport r) const;
    DateTime DebutPeriode() const;
    DateTime FinPeriode() const;
    void DefinirPeriode(const DateTime& debut, const DateTime& fin);
    // Chooses the report's tabs.
    void ChoisirRapport(Rapport r);
    // Base (0 = "Toutes") and station entry of the selectors; the station chosen (base, station).
    void ChoisirStation(int base, int station);
    std::pair<int, int> StationChoisie() const;
    QAction* Action(const QString& nom) const;
    QPushButton* BoutonLancer() const { return commandLancer_; }
    QTabWidget* OngletsMain() const { return sftTabsMain_; }
    QComboBox* ComboBases() const { return comboBases_; }
    QComboBox* ComboStations() const { return comboStations_; }
    FrmDebugEcran* DebugEcran() const { return debugEcran_; }
    CommandesSortie* Sortie() const { return sortie_; }
    FrmSysTray* SysTray() const { return sysTray_; }
    SocketUDP* Sockets() const { return sockets_; }
    RechercheStats& Recherche() { return *recherche_; }
    OngletIncidents* Incidents() const { return incidents_; }
    // The "Conformité" sub-tab of "Musique".
    VueConformite* Conformite() const { return conformite_; }
    // The track search window (created on first use) and the broadcasts behind row `row` of the
    // advertising grid, over the period and station of the last advertising search.
    FrmListeRechercheMulti* RechercheMulti();
    FrmDetailDonnees* DetailPublicite(int row);
    // Brings every grid view up to date with its grid.
    void MasquerColonnes(int vue);
    void SuivreGrilles();
    // The same, at most every 100 ms: run before each event-loop turn, so that a search that
    // yields every 20 tracks spends its time counting rather than repainting.
    void SuivreGrillesDeTempsEnTemps();
    // The quitting flag is set once the exit is confirmed; a later copy may ask to quit.
    void DemandeDeQuitter();
    // The status line (and, framed, the trace).
    void Statut(const std::string& texte, bool encadre = true);

  protected:
    void closeEvent(QCloseEvent* e) override;

  private:
    void InitGeneral();
    void InitGeneralSysteme();
    void InitGeneralLook();
    void ConstruireControles();  // the window's designed controls
    void CreationDesObjets();    // its auxiliary objects: tray icon, sockets, instance server
    void RemplirStations();
    void ActiverControles(bool actifs);
    void Form_QueryUnload();
    void Form_Unload();
    void TimerVeille_Timer();
    void AllerEnVeille();
    void Restaurer();
    void APropos();
    void MnuWhatNews_Click();
    void MajHorloge();
    // The incidents check's period, station and caller slot (the "Vérifier" button).
    bool ParametresIncidents(ParametresVerification& p);

    std::string ligneCommande_;
    int64_t dernierSuivi_ = -1;
    bool composantManquant_ = false;
    bool charge_ = false;
    bool dechargee_ = false;
    LookGeneral look_;

    TableursMusique musique_;
    Grid publicite_;
    std::unique_ptr<RechercheStats> recherche_;
    SessionRapport session_{kSourceFrmMain};
    std::unique_ptr<sys::VerrouNomme> verrou_;

    // Controls.
    QDateEdit* debut_ = nullptr;
    QDateEdit* fin_ = nullptr;
    QComboBox* comboBases_ = nullptr;
    QComboBox* comboStations_ = nullptr;
    QPushButton* commandLancer_ = nullptr;
    QTabWidget* sftTabsMain_ = nullptr;
    QTabBar* sftTabsMusique_ = nullptr;
    QTabBar* sftTabsPublicite_ = nullptr;
    QStackedWidget* pileMusique_ = nullptr;
    QTableView* vues_[4] = {};
    ModeleGrille* modeles_[4] = {};
    QLabel* statut_ = nullptr;
    QLabel* date_ = nullptr;
    QLabel* heure_ = nullptr;
    QTimer* timerVeille_ = nullptr;
    QTimer* timerHorloge_ = nullptr;

    FrmDebugEcran* debugEcran_ = nullptr;
    CommandesSortie* sortie_ = nullptr;  // export, print, history export, play counts
    FrmSysTray* sysTray_ = nullptr;
    SocketUDP* sockets_ = nullptr;
    ServeurInstance* serveurInstance_ = nullptr;
    OngletIncidents* incidents_ = nullptr;
    VueConformite* conformite_ = nullptr;
    FrmListeRechercheMulti* rechercheMulti_ = nullptr;
    std::optional<ParametresRecherche> dernierePublicite_;
};

}  // namespace zl3::gui
