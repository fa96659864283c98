// Window geometry, kept per window in the positions settings file
// (NomFichierSettings("_Positions", ".Ini")), section "FrmPos", keys window name & "_Left",
// "_Top", "_Width", "_Height" (twips) and "_WindowState" (0 normal, 1 minimised, 2 maximised).
// The windows convert between their pixels and twips with the helpers below.
#pragma once

#include <string>

namespace zl3 {

inline constexpr const char* kSectionPositions = "FrmPos";
inline constexpr int kTwipsParPixel = 15;  // at 96 dots per inch
constexpr long PixelsEnTwips(long pixels) {
    return pixels * kTwipsParPixel;
}
constexpr long TwipsEnPixels(long twips) {
    return twips / kTwipsParPixel;
}

enum EtatFenetre : int { kFenetreNormale = 0, kFenetreMinimisee = 1, kFenetreMaximisee = 2 };

struct GeometrieFenetre {
    long left = 0;  // twips
    long top = 0;
    long width = 0;  // 0: keep the designed size
    long height = 0;
    int state = kFenetreNormale;
    bool positionLue = false;  // left and top were both in the file (else keep the designed place)
};

// Reads a window's geometry; a missing or non-numeric value reads as 0, a state outside 0..2
// as normal.
GeometrieFenetre LitGeometrieFenetre(const std::string& nomFenetre);
// Saves it as the main window does at exit: left and top always, width and height only when
// the window is in the normal state (a maximised window keeps its last normal size in the
// file), the state always. False (after reporting) when the file cannot be written.
bool SauveGeometrieFenetre(const std::string& nomFenetre, const GeometrieFenetre& g);

// The suite's names for the left/top part alone, with the file given.
GeometrieFenetre PositionFeuille(const std::string& nomFenetre, const std::string& fichier);
bool PositionFeuilleSauvegarde(const std::string& nomFenetre, const GeometrieFenetre& g,
                               const std::string& fichier);

}  // namespace zl3
