// FrmListeRechercheMulti: tracks found by several criteria together, with their broadcasts over
// the main window's period; the columns sort on a click of their header; a double-click on a
// track opens its broadcasts (FrmDiffusionsMorceau). While it searches the busy-search flag is
// set, so that the exit is refused; the same button then stops the search.
//
// FrmDetailDonnees: the broadcasts behind one line of the advertising grid (date, time, message,
// zone), exportable through the history export.
#pragma once

#include <QDialog>
#include <QSortFilterProxyModel>

#include <functional>
#include <string>

#include "Grid.h"
#include "Lib_Export.h"
#include "RechercheMulti.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

namespace zl3::gui {

class ModeleGrille;

// Sorts a grid's rows by a column, numbers as numbers; row headers are not sorted with them.
class TriGrille : public QSortFilterProxyModel {
    Q_OBJECT
  public:
    using QSortFilterProxyModel::QSortFilterProxyModel;
    QVariant headerData(int section, Qt::Orientation o, int role) const override;

  protected:
    bool lessThan(const QModelIndex& a, const QModelIndex& b) const override;
};

// The child widgets of `w` deleted while the grids their views read still exist (a window's grids
// are members, gone before QWidget's destructor hides and deletes the children).
void SupprimerVues(QWidget& w);

// A grid view as the tool's windows show them.
QTableView* VueGrille(const char* nom, QAbstractItemModel* modele, const Grid& grille);

class FrmListeRechercheMulti : public QDialog {
    Q_OBJECT
  public:
    explicit FrmListeRechercheMulti(QWidget* parent = nullptr);
    ~FrmListeRechercheMulti() override;

    // The period, station and caller slot of the search, from the main window; false when none
    // can be given now (the main window has said why).
    std::function<bool(CriteresMorceaux&)> contexte;

    // The "Rechercher" button (stops a running search).
    void Rechercher();
    // Opens the broadcasts of the track in (view) row `row`.
    QDialog* OuvrirDiffusions(int row);
    bool EnCours() const { return enCours_; }
    const Grid& Grille() const { return grille_; }
    const ResultatMorceaux& Resultat() const { return resultat_; }

  protected:
    void closeEvent(QCloseEvent* e) override;

  private:
    Grid grille_;
    ResultatMorceaux resultat_;
    CriteresMorceaux derniers_;
    bool enCours_ = false;
    bool arret_ = false;
    ModeleGrille* modele_ = nullptr;
    TriGrille* tri_ = nullptr;
    QTableView* vue_ = nullptr;
    QLineEdit* mots_ = nullptr;
    QLineEdit* artiste_ = nullptr;
    QLineEdit* categorie_ = nullptr;
    QComboBox* quota_ = nullptr;
    QLineEdit* cleDebut_ = nullptr;
    QLineEdit* cleFin_ = nullptr;
    QPushButton* rechercher_ = nullptr;
    QLabel* resume_ = nullptr;
};

class FrmDetailDonnees : public QDialog {
    Q_OBJECT
  public:
    // Fills the grid for the line at once; `titre` names the line in the caption.
    FrmDetailDonnees(const ParametresDetail& p, const QString& titre, QWidget* parent = nullptr);
    ~FrmDetailDonnees() override;
    const Grid& Grille() const { return grille_; }
    const BilanDetail& Bilan() const { return bilan_; }
    // The save dialog of the export (tests replace it).
    DialogueEnregistrer dialogue;
    // The "Exporter" button: the grid, headers as data, to an ".xlsx" workbook.
    ResultatExport Exporter();

  private:
    Grid grille_;
    BilanDetail bilan_;
    std::string nomParDefaut_;
};

}  // namespace zl3::gui
