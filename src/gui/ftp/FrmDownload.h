// FrmDownload: the update download. Fetches every file of one remote folder into the data folder
// through its own FTP session (LogiqueDownload): connect, list, download one by one, disconnect.
// Shows the files found, the file in progress with its speed, the percentage, the trace lines of
// the run and the summary line. Controls carry the logic's field names as objectName.
//
// While the download runs its button is disabled and the window refuses to close; nothing is
// shown in a message box (every failure is in the trace lines).
#pragma once

#include <QDialog>

#include "Download.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTreeWidget;

namespace zl3::gui {

class FrmDownload : public QDialog {
    Q_OBJECT
  public:
    explicit FrmDownload(QWidget* parent = nullptr);
    ~FrmDownload() override;

    void Charger(const std::string& serveur, const std::string& user, const std::string& pw,
                 int cnx, const std::string& dossier, bool ftps);
    // Folder the files are written into (the data folder unless told).
    void DefinirDossierLocal(const std::string& dossier);
    // Connect, list, download, disconnect. True when every listed file came down whole.
    bool CommandDownload_Click();

    LogiqueDownload& Logique() { return logique_; }
    bool EnCours() const { return enCours_; }

  protected:
    void done(int r) override;
    void closeEvent(QCloseEvent* e) override;

  private:
    void Afficher();
    void AjouterTrace(const std::string& ligne);

    LogiqueDownload logique_;
    bool enCours_ = false;
    bool dossierImpose_ = false;
    QLineEdit* txtServer_;
    QLineEdit* txtUser_;
    QLineEdit* txtPassword_;
    QRadioButton* optionCnx_[2];
    bool ftps_ = false;
    QLineEdit* textDossierFTP_;
    QLabel* labelDossierLocal_;
    QTreeWidget* listeTemporaire_;
    QLabel* texteFichierEnCours_;
    QLabel* labelPourcentage_;
    QProgressBar* barre_;
    QListWidget* trace_;
    QLabel* labelResume_;
    QPushButton* commandDownload_;
    QPushButton* commandFermer_;
};

}  // namespace zl3::gui
