// Look and colours: the 50-colour default palette, the 23 grid colours of the broadcast item
// kinds, the product-category colours, fonts and the look-style list, as data that each window
// applies to its own controls (the core has no font or window system).
//
// Colours are 24-bit RGB values held in one integer, red in the low byte:
// red + 256 × green + 65536 × blue.
//
// Settings (main settings file, NomFichierSettings("", ".Ini")):
//   [Couleur]        the 23 keys of ClesCouleursGrille(), default the palette colour of
//                    IndexCouleursGrille()
//   [CouleurProduit] "Idx_" & nn (nn = 00..49), default DefaultColor(nn)
//   [Tableur]        Apparence   default 2: index in the look-style list (0 "Classique",
//                                1 "Visual + focus", 2 "Visuel"), applied to tabs and grids
//   [General_Out]    AffTitre, AffArtiste          flags, default 1
//   [FenetrePrincipale] OngletHeure                flag, default 0
//   [ListeTV]        TaillePolice default 12, NomPolice default "Arial", FontBold flag default 0
//   [Conducteur]     NomPolice   default "Arial"
//   [Heure]          HauteurDouble flag, default 0
// A colour that is not a number reads as 0 (black); one outside 0..0xFFFFFF keeps its default.
// A font size that is not a number from 1 to 72, or a style outside the list, keeps its default.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zl3 {

// ---- Colours --------------------------------------------------------------------------------

inline constexpr int kNbCouleursPalette = 50;
inline constexpr int32_t kNoir = 0;

constexpr int32_t RGBCouleur(int r, int g, int b) {
    return (r & 0xFF) + 256 * (g & 0xFF) + 65536 * (b & 0xFF);
}
constexpr int Rouge(int32_t c) {
    return c & 0xFF;
}
constexpr int Vert(int32_t c) {
    return (c >> 8) & 0xFF;
}
constexpr int Bleu(int32_t c) {
    return (c >> 16) & 0xFF;
}

// Palette colour `index` (0..49); any other index gives black.
int32_t DefaultColor(int index);
// True for the product-category indices of the palette (0–6, 11–14, 18, 20–31, 33–35); the
// other indices are the grid defaults.
bool EstIndexCategorie(int index);

// The grid colours, in the order of their keys in section "Couleur".
enum CouleurGrille : int {
    kTV_Fond = 0,
    kTV_Texte,
    kSelection_Texte,
    kSelection_Fond,
    kPromo_Texte,
    kPromo_Fond,
    kSpotLocal_Fond,
    kSpotLocal_Texte,
    kNon_Enregistre_Texte,
    kSpotGIE_Fond,
    kRupHeu_Texte,
    kRupHeu_Fond,
    kSpotGIE_Texte,
    kJingle_Texte,
    kJingle_Fond,
    kRupEcr_Texte,
    kRupEcr_Fond,
    kMultiVille_Fond,
    kMultiVille_Texte,
    kComblage_Texte,
    kComblage_Fond,
    kEditorial_Texte,
    kEditorial_Fond,
    kNbCouleursGrille
};
// Keys of section "Couleur" ("TV_Fond", …) and the palette index each is reset to.
const std::array<const char*, kNbCouleursGrille>& ClesCouleursGrille();
const std::array<int, kNbCouleursGrille>& IndexCouleursGrille();

// ---- Look settings ----------------------------------------------------------------------------

inline constexpr int kNbStylesLook = 3;
// The look-style list of the options window: "Classique", "Visual + focus", "Visuel".
const std::vector<std::string>& ListeStylesLook();
inline constexpr const char* kPoliceDeSecours = "MS Sans Serif";

struct SettingsLook {
    std::array<int32_t, kNbCouleursGrille> couleurs{};           // [Couleur]
    std::array<int32_t, kNbCouleursPalette> couleursProduits{};  // [CouleurProduit] Idx_nn
    int apparence = 2;                                           // [Tableur] Apparence
    bool affTitre = true;                                        // [General_Out] AffTitre
    bool affArtiste = true;                                      // [General_Out] AffArtiste
    bool ongletHeure = false;                                    // [FenetrePrincipale] OngletHeure
    int taillePolice = 12;                                       // [ListeTV] TaillePolice
    std::string nomPolice = "Arial";                             // [ListeTV] NomPolice
    bool fontBold = false;                                       // [ListeTV] FontBold
    std::string nomPoliceConducteur = "Arial";                   // [Conducteur] NomPolice
    bool hauteurDouble = false;                                  // [Heure] HauteurDouble

    SettingsLook();  // every colour at its palette default
    bool operator==(const SettingsLook&) const = default;
};

// Reads the look keys (every key with its default); a read error is reported and the defaults
// stand.
SettingsLook InitSettingsLook();
// Writes every look key; false (after reporting) when the file cannot be written.
bool SaveSettingsLook(const SettingsLook& look);

// The reset button of the options window: the 23 grid colours back to their palette indices,
// then the product-category colours of the category indices back to the palette; the other
// product colours (index 32, 38, …) are left as they are. Nothing is written until the options
// are saved.
void CommandRAZCouleurs(SettingsLook& look);

// The font to use for `nomStocke`: the offered font of the same name (compared without regard
// to case, the offered spelling returned), else "MS Sans Serif".
std::string PoliceOfferte(const std::string& nomStocke, const std::vector<std::string>& offertes);

// ---- Look applied by the windows (InitGeneralLook, LookFenetre) --------------------------------

struct LookGeneral {
    int style = 2;             // index in ListeStylesLook(), for tab strips and grids
    std::string libelleStyle;  // its text
    std::string policeListes;  // font of the lists and grids, after the fallback
    int taillePolice = 12;
    bool gras = false;
    std::string policeConducteur;  // font of the running-order grids, after the fallback
    bool hauteurDouble = false;    // double-height hour rows
    bool affTitre = true;
    bool affArtiste = true;
    bool ongletHeure = false;
    std::array<int32_t, kNbCouleursGrille> couleurs{};
    std::array<int32_t, kNbCouleursPalette> couleursProduits{};
};

// The look of `look`: fonts checked against `policesOffertes` (the fonts the window system
// offers); with the classic Windows theme (ThemeActive "0") the visual styles cannot be drawn,
// so the style is "Classique".
LookGeneral CalculeLook(const SettingsLook& look, const std::vector<std::string>& policesOffertes,
                        bool themeClassique);
// Start-up (and after the options are saved): the settings read, the theme of the machine.
LookGeneral InitGeneralLook(const std::vector<std::string>& policesOffertes);

}  // namespace zl3
