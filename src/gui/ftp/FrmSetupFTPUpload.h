// FrmSetupFTPUpload: the FTP browser opened beside an FTP entry of the options window. The
// controls carry the names of the browser's logic (LogiqueSetupFTPUpload, objectName = field
// name; the six actions are "CommandFTP_0" … "CommandFTP_5"): before each action the window copies
// its controls into the logic, afterwards it shows the logic's fields and `lv` again.
//
// While an action runs (a transfer lets events through) the action buttons are disabled, and a
// click or double-click that still reaches the window is ignored without touching the logic's
// fields. Messages ("Connexion impossible", the delete question) come from the logic through the
// message service.
//
// CommandTransferer hands the server, user, password, mode and folder to `onTransferer` and
// closes the window as accepted. Pick mode (LabelOrigine and LabelNocartouche both ≥ 0): action 3
// on a file hands its name to `onFichierChoisi` and closes the window as accepted.
#pragma once

#include <QDialog>

#include <functional>

#include "SetupFTPUpload.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTreeWidget;

namespace zl3::gui {

class FrmSetupFTPUpload : public QDialog {
    Q_OBJECT
  public:
    explicit FrmSetupFTPUpload(QWidget* parent = nullptr);
    ~FrmSetupFTPUpload() override;

    // The values of an entry, before the window is shown.
    void Charger(const std::string& serveur, const std::string& user, const std::string& pw,
                 int cnx, const std::string& dossier, bool ftps, int origine = -1);
    // Pick mode for item `noCartouche` (origin and item both ≥ 0).
    void ModeChoix(int origine, int noCartouche);

    void CommandFTP_Click(int index);
    void lv_DblClick(int ligne);
    void CommandTransferer_Click();

    LogiqueSetupFTPUpload& Logique() { return logique_; }
    bool Ftps() const;

    std::function<void(const EntreeFTPChoisie&)> onTransferer;
    std::function<void(const std::string&)> onFichierChoisi;
    // The local file to upload (a file dialog; tests replace it). Empty: nothing chosen.
    std::function<QString(QWidget*, const QString& depart)> choisirFichierLocal;

  protected:
    void done(int r) override;

  private:
    void VersLogique();
    void DepuisLogique();
    void ActiverBoutons(bool actifs);
    int LigneChoisie() const;

    LogiqueSetupFTPUpload logique_;
    QLineEdit* txtServer_;
    QLineEdit* txtUser_;
    QLineEdit* txtPassword_;
    QRadioButton* optionCnx_[2];
    QCheckBox* checkFtps_;
    QLineEdit* textDossierFTP_;
    QLineEdit* textDossierCible_;
    QLineEdit* txtFichier_;
    QLineEdit* textFichierFTP_;
    QLineEdit* textDossierLocal_;
    QLabel* labelOrigine_;
    QLabel* labelNocartouche_;
    QTreeWidget* lv_;
    QPushButton* commandFTP_[6];
    QPushButton* commandParcourir_;
    QPushButton* commandTransferer_;
    QPushButton* commandFermer_;
    bool ferme_ = false;
};

}  // namespace zl3::gui
