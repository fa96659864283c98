// FrmStatsPassages: the play counts of the tracks over a period — "Morceau", "Titre", "Artiste",
// "Catégorie", "Nb" in Arial — counted as the Quotas report counts them. The window opens the
// station's files under its own caller slot (the main window keeps its own), counts, shows the
// rows and closes the files again. Its geometry is kept in "FrmPos" under "FrmStatsPassages".
#pragma once

#include <QWidget>

#include "DateTime.h"
#include "Grid.h"
#include "Recherche.h"

class QLabel;
class QTableView;

namespace zl3::gui {

class ModeleGrille;

// The caller slot under which the play counts read the database files.
inline constexpr int kSourceStatsPassages = 4;

class FrmStatsPassages : public QWidget {
    Q_OBJECT
  public:
    explicit FrmStatsPassages(QWidget* parent = nullptr);
    ~FrmStatsPassages() override;

    // The grid with its columns and no row.
    void InitGeneral();
    // Counts the broadcasts of station `station` of base `base` (1-based) over the period and
    // shows them; the summary line says how many. False (after a message) when the station's
    // files cannot be read.
    bool Remplir(int base, int station, const DateTime& debut, const DateTime& fin);
    const Grid& Grille() const { return grille_; }
    const BilanRecherche& Bilan() const { return bilan_; }

  protected:
    void showEvent(QShowEvent* e) override;
    void closeEvent(QCloseEvent* e) override;

  private:
    Grid grille_;
    BilanRecherche bilan_;
    ModeleGrille* modele_ = nullptr;
    QTableView* vue_ = nullptr;
    QLabel* resume_ = nullptr;
    bool geometrieLue_ = false;
};

}  // namespace zl3::gui
