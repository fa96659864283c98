#include "ReglagesFenetres.h"

#include <QWidget>

namespace zl3::gui {

std::string FichierPositions() {
    return FichierSettingsPositions();
}

void RestaureGeometrie(QWidget& f) {
    const GeometrieFenetre g = LitGeometrieFenetre(f.objectName().toStdString());
    if (g.positionLue)
        f.move(static_cast<int>(TwipsEnPixels(g.left)), static_cast<int>(TwipsEnPixels(g.top)));
    if (g.width > 0) f.resize(static_cast<int>(TwipsEnPixels(g.width)), f.height());
    if (g.height > 0) f.resize(f.width(), static_cast<int>(TwipsEnPixels(g.height)));
    if (g.state == kFenetreMinimisee)
        f.setWindowState(Qt::WindowMinimized);
    else if (g.state == kFenetreMaximisee)
        f.setWindowState(Qt::WindowMaximized);
}

void SauveGeometrie(const QWidget& f) {
    GeometrieFenetre g;
    if (f.windowState() & Qt::WindowMinimized)
        g.state = kFenetreMinimisee;
    else if (f.windowState() & Qt::WindowMaximized)
        g.state = kFenetreMaximisee;
    const QRect r = g.state == kFenetreNormale ? f.geometry() : f.normalGeometry();
    const QPoint place = g.state == kFenetreNormale ? f.pos() : r.topLeft();
    g.left = PixelsEnTwips(place.x());
    g.top = PixelsEnTwips(place.y());
    g.width = PixelsEnTwips(f.width());
    g.height = PixelsEnTwips(f.height());
    g.positionLue = true;
    SauveGeometrieFenetre(f.objectName().toStdString(), g);
}

bool OptionStatutDemarrage() {
    return InitSettingsZL3().statutDemarrage;
}

bool OptionIncidents() {
    return InitSettingsZL3().incidentsDemarrage;
}

}  // namespace zl3::gui
