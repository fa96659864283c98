// The small windows around the main window: the about box (FrmAbout), the release notes shipped
// with the application (MnuWhatNews), the notes window (AfficherNote), the base chooser
// (FrmSelectBase) and a progress window for long operations (FrmProgression).
#pragma once

#include <QDialog>

#include <functional>
#include <string>

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QComboBox;

namespace zl3::gui {

// Version, build date, computer, and the libraries used with their licences.
class FrmAbout : public QDialog {
    Q_OBJECT
  public:
    explicit FrmAbout(QWidget* parent = nullptr);
};

// The release notes file shipped beside the program: "NOUVEAUTES.txt" in the application folder,
// else beside the executable; "" when neither exists.
std::string FichierNouveautes();

// A read-only text window (the release notes). Text is UTF-8.
class FrmTexte : public QDialog {
    Q_OBJECT
  public:
    FrmTexte(const QString& titre, const QString& texte, QWidget* parent = nullptr);
    QPlainTextEdit* Texte() const { return texte_; }

  private:
    QPlainTextEdit* texte_ = nullptr;
};

// MnuWhatNews: the release notes in a FrmTexte; a missing or unreadable file is said through the
// message service. Returns the window shown, or nullptr.
FrmTexte* AfficherNouveautes(QWidget* parent);

// The notes window: the text files (".txt") of the notes folder, listed by name; choosing one
// shows it (read as the suite writes them: Windows-1252 unless the file is valid UTF-8).
class FrmNotes : public QDialog {
    Q_OBJECT
  public:
    FrmNotes(const std::string& dossier, QWidget* parent = nullptr);
    QListWidget* Liste() const { return liste_; }
    QPlainTextEdit* Texte() const { return texte_; }
    void Afficher(const QString& nom);

  private:
    std::string dossier_;
    QListWidget* liste_ = nullptr;
    QPlainTextEdit* texte_ = nullptr;
};

// The notes of base `base` (1-based; 0 asks with FrmSelectBase when the site has several bases).
// A missing folder is said through the message service. Returns the window shown, or nullptr.
FrmNotes* AfficherNote(QWidget* parent, int base = 0);

// The base chooser: the site's bases by name. Base() is the choice (1-based) once accepted.
class FrmSelectBase : public QDialog {
    Q_OBJECT
  public:
    explicit FrmSelectBase(QWidget* parent = nullptr);
    int Base() const;
    QComboBox* Combo() const { return combo_; }

  private:
    QComboBox* combo_ = nullptr;
};
// Asks the base when the site has more than one; 1 when it has one, 0 when cancelled or none.
// `choisir` replaces the modal run in tests (it gets the open window and returns accepted).
int ChoisirBase(QWidget* parent, const std::function<bool(FrmSelectBase&)>& choisir = {});

// A progress window: a text, a bar and "Annuler". Modeless; the caller updates it between its
// yields and reads Annule().
class FrmProgression : public QDialog {
    Q_OBJECT
  public:
    explicit FrmProgression(QWidget* parent = nullptr);
    void Debut(const QString& texte, int maximum);  // maximum 0: no known end
    void Avancer(int valeur, const QString& texte = {});
    void Fin();
    bool Annule() const { return annule_; }
    QProgressBar* Barre() const { return barre_; }

  private:
    QLabel* texte_ = nullptr;
    QProgressBar* barre_ = nullptr;
    QPushButton* annuler_ = nullptr;
    bool annule_ = false;
};

}  // namespace zl3::gui
