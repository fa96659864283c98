// Paints the print layout's primitives (fills, lines, texts in points) with a QPainter: the
// printer's pages and the windows' previews draw the same picture the PDF writer writes.
#pragma once

#include <QColor>

#include <cstdint>
#include <vector>

#include "MiseEnPage.h"

class QPainter;
class QPaintDevice;

namespace zl3::gui {

// A 0xRRGGBB colour of the layout.
QColor CouleurRgb(uint32_t rgb);

// Fills first, then lines and texts, each coordinate multiplied by `k` (device units per point).
// Texts are measured on `mesure` (the printer or the widget): a text wider than its frame in the
// face the machine has is drawn smaller until it fits.
void PeindrePrimitives(QPainter& p, const std::vector<Primitive>& primitives, double k,
                       QPaintDevice* mesure);

}  // namespace zl3::gui
