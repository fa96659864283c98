// What the windows read from the tool's settings, as Qt widgets need it; the settings store
// (src/settings) owns the keys and their defaults.
//
// Geometry: section "FrmPos" of the positions file (Lib_Positions.h), keys window name &
// "_Left", "_Top", "_Width", "_Height" (twips) and "_WindowState", the window's objectName
// giving the name.
#pragma once

#include <string>

#include "Lib_Positions.h"
#include "Lib_Settings.h"

class QWidget;

namespace zl3::gui {

std::string FichierPositions();

// Place, then width, height and state, applied in that order; a missing or zero size leaves the
// designed size, a missing place the designed place.
void RestaureGeometrie(QWidget& fenetre);
// Left and top (the normal place when the window is maximised or minimised) always; width and
// height only in the normal state (a maximised window keeps its normal size in the file); the
// state always.
void SauveGeometrie(const QWidget& fenetre);

// The start-up options of the main window: [FenetrePrincipale] StatutDemarrage (status lines
// shown and traced, default on) and ChargeIncidents (incidents loaded at start, default off).
bool OptionStatutDemarrage();
bool OptionIncidents();

}  // namespace zl3::gui
