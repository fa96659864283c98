#include "GeometrieFenetres.h"

#include <QWidget>

#include "Lib_Positions.h"

namespace zl3::gui {

void RestaurerGeometrie(QWidget& fenetre, const std::string& nom) {
    const GeometrieFenetre g = LitGeometrieFenetre(nom);
    if (g.width > 0 && g.height > 0)
        fenetre.resize(static_cast<int>(TwipsEnPixels(g.width)),
                       static_cast<int>(TwipsEnPixels(g.height)));
    if (g.positionLue)
        fenetre.move(static_cast<int>(TwipsEnPixels(g.left)),
                     static_cast<int>(TwipsEnPixels(g.top)));
    if (g.state == kFenetreMaximisee) fenetre.setWindowState(Qt::WindowMaximized);
}

void SauverGeometrie(const QWidget& fenetre, const std::string& nom) {
    GeometrieFenetre g;
    const QRect r = fenetre.isMaximized() || fenetre.isMinimized() ? fenetre.normalGeometry()
                                                                   : fenetre.geometry();
    g.left = PixelsEnTwips(fenetre.x());
    g.top = PixelsEnTwips(fenetre.y());
    g.width = PixelsEnTwips(r.width());
    g.height = PixelsEnTwips(r.height());
    g.state = fenetre.isMaximized()   ? kFenetreMaximisee
              : fenetre.isMinimized() ? kFenetreMinimisee
                                      : kFenetreNormale;
    SauveGeometrieFenetre(nom, g);
}

}  // namespace zl3::gui
