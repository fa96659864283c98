#include "Lib_Positions.h"

#include <algorithm>
#include <climits>
#include <exception>

#include "EcritureReglages.h"
#include "Lib_Public.h"
#include "Lib_Settings.h"

namespace zl3 {
namespace {

constexpr const char* kModule = "Lib_Positions:";

}  // namespace

GeometrieFenetre PositionFeuille(const std::string& nomFenetre, const std::string& fichier) {
    GeometrieFenetre g;
    try {
        constexpr long kAbsent = LONG_MIN;
        const long left = LitNombre(kSectionPositions, nomFenetre + "_Left", kAbsent, fichier);
        const long top = LitNombre(kSectionPositions, nomFenetre + "_Top", kAbsent, fichier);
        g.positionLue = left != kAbsent && top != kAbsent;
        if (g.positionLue) {
            g.left = left;
            g.top = top;
        }
    } catch (const std::exception& e) {
        TraceErreur(std::string(kModule) + "PositionFeuille", 0, e.what());
    }
    return g;
}

bool PositionFeuilleSauvegarde(const std::string& nomFenetre, const GeometrieFenetre& g,
                               const std::string& fichier) {
    const std::string identite = std::string(kModule) + "PositionFeuilleSauvegarde";
    reglages::Ecriture w(fichier);
    w.Nombre(kSectionPositions, nomFenetre + "_Left", g.left);
    w.Nombre(kSectionPositions, nomFenetre + "_Top", g.top);
    return w.Fin(identite);
}

GeometrieFenetre LitGeometrieFenetre(const std::string& nomFenetre) {
    const std::string identite = std::string(kModule) + "LitGeometrieFenetre";
    TraceProc(identite);
    const std::string f = FichierSettingsPositions();
    GeometrieFenetre g = PositionFeuille(nomFenetre, f);
    try {
        g.width = std::max(0L, LitNombre(kSectionPositions, nomFenetre + "_Width", 0, f));
        g.height = std::max(0L, LitNombre(kSectionPositions, nomFenetre + "_Height", 0, f));
        const long state = LitNombre(kSectionPositions, nomFenetre + "_WindowState", 0, f);
        g.state = state >= 0 && state <= 2 ? static_cast<int>(state) : kFenetreNormale;
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
    }
    return g;
}

bool SauveGeometrieFenetre(const std::string& nomFenetre, const GeometrieFenetre& g) {
    const std::string identite = std::string(kModule) + "SauveGeometrieFenetre";
    TraceProc(identite);
    const std::string f = FichierSettingsPositions();
    if (!PositionFeuilleSauvegarde(nomFenetre, g, f)) return false;
    reglages::Ecriture w(f);
    if (g.state == kFenetreNormale) {
        w.Nombre(kSectionPositions, nomFenetre + "_Width", g.width);
        w.Nombre(kSectionPositions, nomFenetre + "_Height", g.height);
    }
    w.Nombre(kSectionPositions, nomFenetre + "_WindowState", g.state);
    return w.Fin(identite);
}

}  // namespace zl3
