// Lib_Tableur: the result grids of the main window's reports, built once at start-up with their
// columns, header rows and widths. Rows are created by the search that fills a grid.
#pragma once

#include "Grid.h"
#include "Rapport.h"

namespace zl3 {

// Quotas grid columns: the whole-day block (1–9) and the regulated band block (10–18), the band
// block being the whole-day block shifted by 9 columns.
enum ColonneQuotas : int {
    kColFr = 1,
    kColNT = 2,
    kColFrNT = 3,
    kColEtr = 4,
    kColInstru = 5,
    kColPctFr = 6,
    kColPctNT = 7,
    kColPctFrNT = 8,
    kColPctEtr = 9,
    kDecalageBande = 9,
    kNbColonnesQuotas = 18,
};

// "Top Diffusion" grid columns.
enum ColonneTop : int {
    kTopTitre = 1,
    kTopArtiste = 2,
    kTopArtiste2 = 3,
    kTopCategorie = 4,
    kTopDuree = 5,
    kTopId = 6,
    kTopNombre = 7,
    kTopClip = 8,
    kNbColonnesTop = 8,
};

// "SACEM" grid columns.
enum ColonneSacem : int {
    kSacemArtiste = 1,
    kSacemTitre = 2,
    kSacemDuree = 3,
    kSacemLabel = 4,
    kSacemNombre = 5,
    kNbColonnesSacem = 5,
};

// Advertising grid columns.
enum ColonnePub : int {
    kPubClient = 1,
    kPubNomClient = 2,
    kPubCommercial = 3,
    kPubNomCommercial = 4,
    kPubMessage = 5,
    kPubTexteMessage = 6,
    kPubZone = 7,
    kPubTotalClient = 8,
    kPubTotalMessage = 9,
    kPubTotalLigne = 10,
    kNbColonnesPub = 10,
};

// Play-count grid columns (FrmStatsPassages).
enum ColonnePassages : int {
    kPassMorceau = 1,
    kPassTitre = 2,
    kPassArtiste = 3,
    kPassCategorie = 4,
    kPassNb = 5,
    kNbColonnesPassages = 5,
};
// Font of the play-count window's grid.
inline constexpr const char* kPoliceStatsPassages = "Arial";

// Settings common to every grid: no data rows, one header row and column unless told.
void InitTableur(Grid& grid, int colonnes, int niveauxEntete, int colonnesEntete);

// The three music grids (Quotas, "Top Diffusion", "SACEM") and the advertising grid.
struct TableursMusique {
    Grid quotas;
    Grid top;
    Grid sacem;
};
void InitGeneralTableurMusique(TableursMusique& grilles);
void InitGeneralTableurPublicite(Grid& publicite);
// FrmStatsPassages.InitGeneral: "Morceau", "Titre", "Artiste", "Catégorie", "Nb", no row.
void InitGeneralStatsPassages(Grid& passages);

// The grid of a report among those built above.
Grid& GrilleDuRapport(TableursMusique& musique, Grid& publicite, Rapport rapport);

}  // namespace zl3
