// The table model through which a view shows one of the core's result grids. It reads the grid
// itself — never a copy — and keeps only the size it last announced to its views, so that rows a
// search appends are announced as insertions and the views never read past what they were told.
//
// The search writes the grid and yields to the event loop; before each turn the window calls
// Suivre(), which compares the grid's revision with the one last seen and tells the views what
// changed (nothing at all when the revision is the same).
#pragma once

#include <QAbstractTableModel>
#include <QColor>

#include <cstdint>

#include "Grid.h"

namespace zl3::gui {

class ModeleGrille : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit ModeleGrille(const Grid& grille, QObject* parent = nullptr);

    const Grid& Grille() const { return grille_; }
    // Brings the views up to date with the grid; true when something had changed.
    bool Suivre();
    // The cells' background and text colours (the look of the settings); invalid colours leave
    // the view's own.
    void DefinirCouleurs(const QColor& fond, const QColor& texte);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Horizontal: the header level nearest the data (the header view draws the others); vertical:
    // the row-header columns joined ("01-10-2026  jeu.").
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

  private:
    const Grid& grille_;
    int lignes_ = 0;
    int colonnes_ = 0;
    uint64_t revision_ = 0;
    QColor fond_;
    QColor texte_;
};

}  // namespace zl3::gui
