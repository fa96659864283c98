// Geometry of the tool's secondary windows in the positions settings ("FrmPos"): put back when
// a window opens, kept when it closes, under the window's name.
#pragma once

#include <string>

class QWidget;

namespace zl3::gui {

void RestaurerGeometrie(QWidget& fenetre, const std::string& nom);
void SauverGeometrie(const QWidget& fenetre, const std::string& nom);

}  // namespace zl3::gui
