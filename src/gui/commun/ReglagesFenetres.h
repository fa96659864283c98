// What the windows read from the tool's settings files, in one place (the settings store will
// take these over): window geometry in the positions file, the UDP port, the start-up options.
//
// Geometry: section "FrmPos" of NomFichierSettings("_Positions", ".Ini"), keys window name &
// "_Left", "_Top", "_Width", "_Height" (twips, 15 to a pixel) and "_WindowState" (0 normal,
// 1 minimised, 2 maximised).
#pragma once

#include <string>

class QWidget;

namespace zl3::gui {

inline constexpr int kTwipsParPixel = 15;
inline constexpr int kPortUdpDefaut = 23400;

std::string FichierPositions();

// PositionFeuille: left and top (PositionFeuilleSauvegarde writes them).
void PositionFeuille(QWidget& fenetre, const std::string& fichier);
void PositionFeuilleSauvegarde(const QWidget& fenetre, const std::string& fichier);
// Width, height and state, read and applied in that order; a missing or zero value leaves the
// designed size.
void TailleFeuille(QWidget& fenetre, const std::string& fichier);
// Width and height when the window is in its normal state (a maximised window keeps its normal
// size in the file), the state always.
void TailleFeuilleSauvegarde(const QWidget& fenetre, const std::string& fichier);

// Section "UDP", key "Port" of the tool's settings file (NomFichierSettings("", ".Ini")),
// default 23400; 0 lets the system choose.
int PortUDP();
// Section "Comportement": "StatutDemarrage" ("1", default: the start-up status lines are shown
// and traced) and "Incidents" ("0", default: the incidents view is not loaded at start).
bool OptionStatutDemarrage();
bool OptionIncidents();

}  // namespace zl3::gui
