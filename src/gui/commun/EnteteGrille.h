// The column headers of a result grid, every level of them: the Quotas grid's band headers
// ("00H00 - 23H59") and "Nombre" / "Pourcentage" stand over their whole group of columns, the
// column names under them. A column whose upper levels are empty shows its name over the whole
// height. Reads the grid of its ModeleGrille directly.
#pragma once

#include <QHeaderView>

namespace zl3::gui {

class ModeleGrille;

class EnteteGrille : public QHeaderView {
    Q_OBJECT
  public:
    explicit EnteteGrille(QWidget* parent = nullptr);

    // The rectangle (in viewport coordinates) and the text of the header cell at `level` over
    // column `section` (0-based): merged cells give the rectangle of the whole span.
    struct Cellule {
        QRect rect;
        QString texte;
    };
    Cellule CelluleEntete(int level, int section) const;
    int HauteurNiveau() const;

  protected:
    QSize sizeHint() const override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    void paintEvent(QPaintEvent* e) override;

  private:
    const ModeleGrille* Modele() const;
    int Niveaux() const;
};

}  // namespace zl3::gui
