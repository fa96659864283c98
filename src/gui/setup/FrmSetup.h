// FrmSetup: the options window. It loads every settings part into one Options value
// (ChargeSetup, each step shown on its status line), shows it in its controls, and on "OK"
// writes every key (SauveOptions); "Annuler" writes nothing. Its geometry is kept in "FrmPos".
//
// Controls (objectName):
//   export:     CheckColonne_1 … _11, CheckLigne_1 … _9, CouleurLigne_1 … _9,
//               TexteDossierExport + CommandDossierExport, CheckXMLActif,
//               TexteDossierXML + CommandDossierXML, ComboFormat, ComboApresExport
//   FTP:        per server n (0 … 4): TexteServeur_n, TexteUser_n, TextePW_n, ComboCnx_n,
//               TexteDossierFTP_n, TexteRetry_n, CheckFTPS_n, CommandFTP_n ("…", the FTP browser)
//   behaviour:  CheckReboot, TexteRebootTempo, TexteComportement, CheckStatutDemarrage,
//               CheckChargeIncidents, TextePortUDP
//   look:       ComboPolice, TexteTaillePolice, CheckTVLook (bold lists), ComboPoliceConducteur,
//               ComboLookStyleOnglet, CheckAffTitre, CheckAffArtiste, CheckOngletHeure,
//               CheckHauteurDouble
//   colours:    one box per grid colour, named by its key (TV_Fond …), TexteCouleur_nn for the
//               product categories, CommandRAZCouleurs
//   CommandOK, CommandAnnuler, LabelStatut
// A colour box opens FrmColorPicker (through choisirCouleur); a folder button the folder picker
// (through choisirDossier): tests replace both.
#pragma once

#include <QDialog>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Lib_Settings.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTabWidget;
class QToolButton;

namespace zl3::gui {

class FrmSetup : public QDialog {
    Q_OBJECT
  public:
    explicit FrmSetup(QWidget* parent = nullptr);
    ~FrmSetup() override;

    // Caption, the settings read into the controls, the geometry restored.
    void Form_Load();

    // The FTP browser, opened by the "…" button beside a server with that server's entry (which
    // it may change); true when it changed it. Set by the window that provides the browser; the
    // buttons stay disabled while it is empty.
    static std::function<bool(QWidget*, ServeurFTP&)> navigateurFTP;

    // Seams for the dialogs (tests replace them).
    std::function<std::optional<int32_t>(QWidget*, int32_t)> choisirCouleur;
    std::function<std::optional<std::string>(QWidget*, const std::string&)> choisirDossier;
    // Called when the user changes the look (font size, tab style, a colour, a font), with the
    // look as edited, so that the main window shows it at once. Not called while loading.
    std::function<void(const SettingsLook&)> apercuLook;

    // The options as the controls hold them now.
    Options OptionsEditees() const;
    const Options& OptionsChargees() const { return charge_.options; }
    // Status lines shown while loading, in order.
    const std::vector<std::string>& Statuts() const { return statuts_; }

    // "OK": writes every key; false (the window stays open) when a part could not be written.
    bool CommandOK_Click();
    void CommandAnnuler_Click();
    void CommandRAZCouleurs_Click();

  protected:
    void reject() override;

  private:
    void Construire();
    QWidget* PageExport();
    QWidget* PageFTP();
    QWidget* PageComportement();
    QWidget* PageApparence();
    QWidget* PageCouleurs();
    void Remplir(const Options& o);
    void Statut(const std::string& texte);
    void ChoisirCouleur(QToolButton* b, int32_t& couleur);
    void PeindreCouleur(QToolButton* b, int32_t couleur);
    void PeindreCouleurs();
    void LookModifie();
    void ChoisirDossier(QLineEdit* texte);
    void SauverGeometrie();

    bool chargement_ = true;
    ChargementSetup charge_;
    std::vector<std::string> statuts_;
    // Colours being edited (the boxes show them).
    std::array<int32_t, kNbLignesExport> couleursLignes_{};
    std::array<int32_t, kNbCouleursGrille> couleurs_{};
    std::array<int32_t, kNbCouleursPalette> couleursProduits_{};
    std::array<ServeurFTP, kNbServeursFTP> ftpCaches_{};  // what the boxes do not show

    QTabWidget* onglets_ = nullptr;
    QLabel* statut_ = nullptr;
    std::array<QCheckBox*, kNbColonnesExport> colonnes_{};
    std::array<QCheckBox*, kNbLignesExport> lignes_{};
    std::array<QToolButton*, kNbLignesExport> boutonsLignes_{};
    QLineEdit* dossierExport_ = nullptr;
    QLineEdit* dossierXML_ = nullptr;
    QCheckBox* xmlActif_ = nullptr;
    QComboBox* format_ = nullptr;
    QComboBox* apresExport_ = nullptr;
    struct ControlesFTP {
        QLineEdit* serveur = nullptr;
        QLineEdit* user = nullptr;
        QLineEdit* pw = nullptr;
        QComboBox* cnx = nullptr;
        QLineEdit* dossier = nullptr;
        QSpinBox* retry = nullptr;
        QCheckBox* ftps = nullptr;
        QPushButton* parcourir = nullptr;
    };
    std::array<ControlesFTP, kNbServeursFTP> ftp_{};
    QCheckBox* reboot_ = nullptr;
    QSpinBox* rebootTempo_ = nullptr;
    QSpinBox* comportement_ = nullptr;
    QCheckBox* statutDemarrage_ = nullptr;
    QCheckBox* chargeIncidents_ = nullptr;
    QSpinBox* portUDP_ = nullptr;
    QComboBox* police_ = nullptr;
    QSpinBox* taillePolice_ = nullptr;
    QCheckBox* tvLook_ = nullptr;
    QComboBox* policeConducteur_ = nullptr;
    QComboBox* styleOnglet_ = nullptr;
    QCheckBox* affTitre_ = nullptr;
    QCheckBox* affArtiste_ = nullptr;
    QCheckBox* ongletHeure_ = nullptr;
    QCheckBox* hauteurDouble_ = nullptr;
    std::array<QToolButton*, kNbCouleursGrille> boutonsCouleurs_{};
    std::array<QToolButton*, kNbCouleursPalette> boutonsProduits_{};  // category indices only
};

}  // namespace zl3::gui
