// Print layout of a result grid: the pages of the main window's print command (MnuPrint_Click)
// as lists of drawing primitives, so that a window only paints them (preview, printer) and the
// PDF writer only writes them.
//
// A page, from top to bottom inside the margins: the page header lines, the grid's header rows
// (every header level, with the merged band headers, repeated on every page), as many data rows
// as fit, and the page footer lines at the bottom. The row-header columns (dates, day names,
// line numbers) stand at the left of every page.
//
// Page header and footer are texts with the print codes of the suite's grid control:
//   "/l" left, "/c" centre, "/r" right: the text that follows goes to that part of the line;
//   "/n" starts a new line; "/d" the date "dd/MM/yyyy", "/dl" the long date ("lundi 2 novembre
//   2026"); "/t" the time "HH:MM", "/tl" the long time "HH:MM:SS"; "/p" the page number, "/pc"
//   the number of pages; "//" a slash. Any other "/" stays as it is. Text before any alignment
//   code goes to the left.
//
// The grid is fitted to the page width: columns get the width of their longest text in the
// grid's font (9 pt); when the table is wider than the page, the font shrinks to fit, down to
// 5 pt, and beyond that the columns are narrowed in proportion and long texts cut with "…".
// The Quotas report prints in landscape; the others in portrait when they fit its width at 9 pt,
// otherwise in landscape. Coordinates are points (1/72 inch) from the page's top-left corner,
// y downwards.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "DateTime.h"
#include "Grid.h"
#include "Rapport.h"

namespace zl3 {

enum class Alignement { Gauche, Centre, Droite };

struct Police {
    std::string famille = "Arial";  // metrics of Helvetica, which Arial shares
    double taille = 9;              // points
    bool gras = false;
};

struct Cadre {
    double x = 0;
    double y = 0;
    double largeur = 0;
    double hauteur = 0;
};

// A text on one line in `cadre`, vertically centred, aligned horizontally by `alignement` with
// the padding already taken out of the frame; it fits the frame's width.
struct TexteDessine {
    Cadre cadre;
    std::string texte;  // UTF-8
    Alignement alignement = Alignement::Gauche;
    Police police;
};

struct TraitDessine {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    double epaisseur = 0.5;
    uint32_t couleur = 0x000000;  // 0xRRGGBB
};

struct FondDessine {
    Cadre cadre;
    uint32_t couleur = 0xFFFFFF;  // 0xRRGGBB
};

// Painted in order: fills first, then lines and texts as listed.
using Primitive = std::variant<FondDessine, TraitDessine, TexteDessine>;

struct PageImprimee {
    double largeur = 0;
    double hauteur = 0;
    std::vector<Primitive> primitives;
};

// A4, in points.
inline constexpr double kLargeurA4 = 595.276;
inline constexpr double kHauteurA4 = 841.89;

enum class Orientation { Automatique, Portrait, Paysage };

struct OptionsImpression {
    std::string entete;  // print codes, see above
    std::string pied;
    Orientation orientation = Orientation::Automatique;
    double marge = 28.35;        // 1 cm on every side
    double taillePolice = 9;     // grid font
    double taillePoliceMin = 5;  // smallest the grid font goes to fit the width
    DateTime maintenant;         // the date and time the codes print
};

struct Impression {
    std::string nomTravail;  // print job name
    std::string texteEnCours = "Impression en cours";
    bool paysage = false;
    double taillePolice = 9;  // grid font size used
    std::vector<PageImprimee> pages;
};

// ---- Texts ----------------------------------------------------------------------------------

inline constexpr const char* kPiedImpression = "/l/dl /tl/rPage /p";
inline constexpr const char* kTexteImpressionEnCours = "Impression en cours";

// "lundi 2 novembre 2026" (the long date of the French system settings), "09:05:03".
std::string DateLongue(const DateTime& d);
std::string HeureLongue(const DateTime& d);
// The period of a report: long start date, " - ", long end date.
std::string TextePeriode(const DateTime& debut, const DateTime& fin);
// Page header of a report: "/cQuotas: " period "/n", "/cTop Diffusion: " …, "/cRelevé SACEM: " …,
// "/cDiffusions: " … .
std::string EnteteImpression(Rapport rapport, const DateTime& debut, const DateTime& fin);
// The print job's name: the station's two identification texts joined by " ", then " Date: "
// and the date and time as the traces render them ("dd/MM/yyyy HH:MM:SS").
std::string NomTravailImpression(const std::string& identification1,
                                 const std::string& identification2, const DateTime& maintenant);

// One line of a header or footer once the codes are interpreted.
struct LigneImprimee {
    std::string gauche;
    std::string centre;
    std::string droite;
    bool operator==(const LigneImprimee&) const = default;
};
std::vector<LigneImprimee> InterpreteCodes(const std::string& codes, const DateTime& maintenant,
                                           int page, int nombrePages);

// Width in points of `texte` (UTF-8) in `police`.
double LargeurTexte(const std::string& texte, const Police& police);

// ---- Layout ---------------------------------------------------------------------------------

// The pages of `grille` as described at the top of this file. The grid is only read.
Impression MetEnPage(const Grid& grille, const OptionsImpression& options);

// The main window's print of a report: its page header, the footer kPiedImpression, the
// report's orientation, the job name from the two identification texts. Without a report (a
// music sub-tab other than 0, 1, 2: RapportDeOnglet gives none) there is no page header and the
// rest proceeds.
Impression MetEnPageRapport(const Grid& grille, std::optional<Rapport> rapport,
                            const DateTime& debut, const DateTime& fin,
                            const std::string& identification1, const std::string& identification2,
                            const DateTime& maintenant);

}  // namespace zl3
