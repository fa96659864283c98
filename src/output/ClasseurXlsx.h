// Office Open XML workbook (".xlsx") writer, through libxlsxwriter: one worksheet holding the
// data area of a grid, made for computing rather than only reading.
//
// - A cell whose text is a plain integer (NombreEntier, EcritureFichier.h) is stored as a number;
// it shows the same
//   text with the General format.
// - A cell of a percentage column (GenreColonne::Pourcentage) whose text is a percentage
//   (PourcentageDeTexte, "12.5 %") is stored as the fraction 0.125 with a percent format of the
//   same decimals ("0.0 %"), which shows the grid's text again; sums and averages work on it.
// - Everything else is stored as text.
// - The header rows (the leading rows of the data area that hold the grid's headers) and the
//   row-header columns are bold; header rows are centred; merged zones are merged cells; the
//   header rows and columns are frozen, so they stay in view while scrolling.
// - Columns are made wide enough for their longest text (merged headers aside), up to 80
//   characters, and never narrower than the grid's own width.
// - Print setup: A4 landscape, fitted to one page wide (as many pages high as needed), the header
//   rows repeated on every printed page.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ClasseurXls.h"
#include "EcritureFichier.h"
#include "Grid.h"

namespace zl3 {

inline constexpr int kXlsxMaxLignes = 1048576;
inline constexpr int kXlsxMaxColonnes = 16384;

std::string TexteTailleExcessiveXlsx();
bool TientDansUneFeuilleXlsx(int colonnes, int lignes);

// What of the data area is headers.
struct MiseEnFormeClasseur {
    int lignesEntete = 0;    // leading rows that hold the column headers
    int colonnesEntete = 0;  // leading columns that hold the row headers
};

// Writes the data area of `grille` (columns 1..MaxCols(), rows 1..MaxRows()) to `chemin` as
// sheet `nomFeuille` (sanitized as NomFeuilleXls), through a temporary file of the target folder
// that replaces `chemin` only once complete. `fusions` are in sheet coordinates, as for ".xls";
// invalid or overlapping zones are left out. Refused: a table larger than a worksheet.
ResultatEcriture EcritClasseurXlsx(const std::string& chemin, const Grid& grille,
                                   const std::string& nomFeuille,
                                   const std::vector<ZoneFusionnee>& fusions = {},
                                   const MiseEnFormeClasseur& forme = {});

}  // namespace zl3
