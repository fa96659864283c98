// Excel 97–2003 workbook (".xls") writer: one worksheet holding the data area of a grid, every
// cell as its text.
//
// The file is a compound document (version 3, 512-byte sectors) with a single "Workbook" stream
// of BIFF8 records. Texts go through the shared string table in UTF-16 (one byte per character
// when every character of the text is below U+0100, as BIFF8 allows), so accented French titles
// and names, "œ", "€" and characters beyond the Basic Multilingual Plane come back unchanged.
// Empty cells are not written: an absent cell is an empty cell for every reader. Columns are made
// wide enough for their longest text (up to 80 characters), and the text of a merged zone is
// centred over it, as the band headers are in the grids.
#pragma once

#include <string>
#include <vector>

#include "EcritureFichier.h"
#include "Grid.h"

namespace zl3 {

// Size of one worksheet of the format.
inline constexpr int kXlsMaxLignes = 65536;
inline constexpr int kXlsMaxColonnes = 256;
// Longest sheet name, and longest text a cell holds, in UTF-16 code units.
inline constexpr int kXlsMaxNomFeuille = 31;
inline constexpr int kXlsMaxTexteCellule = 32767;

// Cells merged into one, in sheet coordinates (0-based, both ends included).
struct ZoneFusionnee {
    int premiereLigne = 0;
    int derniereLigne = 0;
    int premiereColonne = 0;
    int derniereColonne = 0;
};

// The zones of `zones` that a workbook can hold: inside a table of `colonnes` × `lignes`, more
// than one cell, not overlapping a zone kept before.
std::vector<ZoneFusionnee> ZonesValides(const std::vector<ZoneFusionnee>& zones, int colonnes,
                                        int lignes);

// The refusal shown when a table does not fit in one worksheet.
std::string TexteTailleExcessiveXls();
// True when `colonnes` × `lignes` cells fit in one worksheet.
bool TientDansUneFeuilleXls(int colonnes, int lignes);

// The sheet name as it will be stored. Names are sanitized rather than refused, since they come
// from the program and not from the user: each of the characters [ ] : * ? / \ becomes "_",
// apostrophes at either end are dropped (Excel forbids them there), the name is cut to 31
// characters (never inside a character) and an empty result becomes "Feuil1".
std::string NomFeuilleXls(const std::string& nom);

// Writes the data area of `grille` (columns 1..MaxCols(), rows 1..MaxRows()) to `chemin`, grid
// cell (c, r) going to sheet cell (r-1, c-1). `fusions` are written as merged cells; a zone
// outside the table, of a single cell, or overlapping an earlier zone is left out (merging is
// presentation only). Refused without touching the disk: a table larger than a worksheet
// (TexteTailleExcessiveXls) and a cell text longer than 32,767 characters.
ResultatEcriture EcritClasseurXls(const std::string& chemin, const Grid& grille,
                                  const std::string& nomFeuille,
                                  const std::vector<ZoneFusionnee>& fusions = {});

}  // namespace zl3
