// FrmExport: the history export. It receives a copy of a result grid (TransfertDataHistorique,
// headers included as data), shows it, and writes it to a file in the format of its nature
// ("XLS", "XML" or "XLSX") with the export command's save dialog, overwrite question and
// after-export action. Its geometry is kept in "FrmPos" under "FrmExport".
#pragma once

#include <QMainWindow>

#include <string>

#include "Grid.h"
#include "Lib_Export.h"

class QTableView;

namespace zl3::gui {

class ModeleGrille;

// The save dialog of the export commands, on Qt's file dialog: the filter "Fichiers xls|*.xls"
// becomes "Fichiers xls (*.xls)"; a cancelled dialog gives "".
DialogueEnregistrer DialogueEnregistrerQt(QWidget* parent);

class FrmExport : public QMainWindow {
    Q_OBJECT
  public:
    explicit FrmExport(QWidget* parent = nullptr);
    ~FrmExport() override;

    // The nature sets the caption: "XLS" "Export Excel", "XML" "Export XML" (others keep it).
    void SetTexteNature(const std::string& nature);
    const std::string& TexteNature() const { return nature_; }
    // Copies the whole of `source`, headers as data, into the window's grid.
    void TransfertDataHistorique(const Grid& source);
    const Grid& Grille() const { return grille_; }
    // The path the save dialog proposes (folder and name) and the after-export setting.
    void DefinirCheminParDefaut(const std::string& chemin) { cheminParDefaut_ = chemin; }
    void DefinirApresExport(int apresExport) { apresExport_ = apresExport; }

    ResultatExport Mnu01Export_Click();
    void Mnu01Quitter_Click() { close(); }

    // The save dialog; Qt's by default, replaced by tests.
    DialogueEnregistrer dialogue;

  protected:
    void showEvent(QShowEvent* e) override;
    void closeEvent(QCloseEvent* e) override;

  private:
    std::string nature_;
    std::string cheminParDefaut_;
    int apresExport_ = 0;
    Grid grille_;
    ModeleGrille* modele_ = nullptr;
    QTableView* vue_ = nullptr;
    bool geometrieLue_ = false;
};

}  // namespace zl3::gui
