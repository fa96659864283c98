#include "EnteteGrille.h"

#include <QPaintEvent>
#include <QPainter>
#include <QStyleOptionHeader>

#include "ModeleGrille.h"

namespace zl3::gui {

EnteteGrille::EnteteGrille(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
    setSectionsClickable(false);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignCenter);
}

const ModeleGrille* EnteteGrille::Modele() const {
    return qobject_cast<const ModeleGrille*>(model());
}

int EnteteGrille::Niveaux() const {
    const ModeleGrille* m = Modele();
    return m ? std::max(1, m->Grille().HeaderRows()) : 1;
}

int EnteteGrille::HauteurNiveau() const {
    return fontMetrics().height() + 8;
}

QSize EnteteGrille::sizeHint() const {
    QSize s = QHeaderView::sizeHint();
    s.setHeight(HauteurNiveau() * Niveaux());
    return s;
}

EnteteGrille::Cellule EnteteGrille::CelluleEntete(int level, int section) const {
    Cellule c;
    const ModeleGrille* m = Modele();
    if (!m) return c;
    const Grid& g = m->Grille();
    const int niveaux = Niveaux();
    const int h = HauteurNiveau();
    const int col = section + 1;
    int premier = section;
    int dernier = section;
    for (const HeaderSpan& s : g.Spans())
        if (s.level == level && col >= s.firstCol && col < s.firstCol + s.count) {
            premier = s.firstCol - 1;
            dernier = std::min(count() - 1, s.firstCol + s.count - 2);
        }
    int haut = level * h;
    int bas = (level + 1) * h;
    c.texte = QString::fromStdString(g.ColHeader(level, premier + 1));
    if (level == niveaux - 1 && premier == dernier) {
        // A column name with nothing above it takes the empty levels' height too.
        int niveau = level;
        while (niveau > 0 && g.ColHeader(niveau - 1, col).empty()) {
            bool couvert = false;
            for (const HeaderSpan& s : g.Spans())
                if (s.level == niveau - 1 && col >= s.firstCol && col < s.firstCol + s.count)
                    couvert = true;
            if (couvert) break;
            --niveau;
        }
        haut = niveau * h;
    }
    const int gauche = sectionViewportPosition(premier);
    const int droite = sectionViewportPosition(dernier) + sectionSize(dernier);
    c.rect = QRect(gauche, haut, droite - gauche, bas - haut);
    return c;
}

void EnteteGrille::paintEvent(QPaintEvent* e) {
    // Merged cells reach beyond the sections being repainted: repaint the whole visible strip.
    QPaintEvent tout(viewport()->rect());
    QHeaderView::paintEvent(e->rect() == viewport()->rect() ? e : &tout);
}

void EnteteGrille::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const {
    const ModeleGrille* m = Modele();
    if (!m || !rect.isValid()) {
        QHeaderView::paintSection(painter, rect, logicalIndex);
        return;
    }
    const int niveaux = Niveaux();
    painter->save();
    painter->setClipping(false);
    for (int level = 0; level < niveaux; ++level) {
        const Cellule c = CelluleEntete(level, logicalIndex);
        if (level < niveaux - 1) {
            // An empty upper cell under no span belongs to the column name below.
            const Cellule bas = CelluleEntete(niveaux - 1, logicalIndex);
            if (bas.rect.top() <= c.rect.top()) continue;
        }
        QStyleOptionHeader opt;
        initStyleOption(&opt);
        opt.rect = c.rect;
        opt.section = logicalIndex;
        opt.text = c.texte;
        opt.textAlignment = Qt::AlignCenter;
        opt.position = QStyleOptionHeader::Middle;
        opt.state |= QStyle::State_Enabled;
        if (isEnabled()) opt.state |= QStyle::State_Enabled;
        style()->drawControl(QStyle::CE_Header, &opt, painter, this);
    }
    painter->restore();
}

}  // namespace zl3::gui
