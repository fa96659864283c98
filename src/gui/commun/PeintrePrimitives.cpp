#include "PeintrePrimitives.h"

#include <QFontMetricsF>
#include <QPainter>

#include <variant>

namespace zl3::gui {

QColor CouleurRgb(uint32_t rgb) {
    return QColor((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}

void PeindrePrimitives(QPainter& p, const std::vector<Primitive>& primitives, double k,
                       QPaintDevice* mesure) {
    auto cadre = [k](const Cadre& c) {
        return QRectF(c.x * k, c.y * k, c.largeur * k, c.hauteur * k);
    };
    for (const Primitive& prim : primitives)
        if (const auto* f = std::get_if<FondDessine>(&prim))
            p.fillRect(cadre(f->cadre), CouleurRgb(f->couleur));
    for (const Primitive& prim : primitives) {
        if (const auto* t = std::get_if<TraitDessine>(&prim)) {
            p.setPen(QPen(CouleurRgb(t->couleur), t->epaisseur * k));
            p.drawLine(QLineF(t->x1 * k, t->y1 * k, t->x2 * k, t->y2 * k));
        } else if (const auto* x = std::get_if<TexteDessine>(&prim)) {
            const QString texte = QString::fromStdString(x->texte);
            const QRectF r = cadre(x->cadre);
            QFont police(QString::fromStdString(x->police.famille));
            police.setPointSizeF(x->police.taille);
            police.setBold(x->police.gras);
            // The layout measured Arial; a machine without it (or a metric twin) draws a
            // wider face: that text is made smaller until it fits its frame again.
            const double largeur = QFontMetricsF(police, mesure).horizontalAdvance(texte);
            if (largeur > r.width() && largeur > 0)
                police.setPointSizeF(x->police.taille * r.width() / largeur * 0.98);
            p.setFont(police);
            p.setPen(Qt::black);
            const Qt::Alignment h = x->alignement == Alignement::Centre   ? Qt::AlignHCenter
                                    : x->alignement == Alignement::Droite ? Qt::AlignRight
                                                                          : Qt::AlignLeft;
            p.drawText(r, h | Qt::AlignVCenter | Qt::TextSingleLine, texte);
        }
    }
}

}  // namespace zl3::gui
