// A result grid written as text: aligned for a terminal, or as CSV for other programs.
#pragma once

#include <string>

#include "Grid.h"

namespace zl3 {

// Every header level, then the data rows, columns aligned; the row-header columns come first.
// A header merged over several columns is centred over them.
std::string GrilleEnTableau(const Grid& grid);

// The header rows, then the data rows, each cell exactly as the grid holds it, comma-separated,
// quoted when needed (RFC 4180), lines ending with CR LF; UTF-8.
std::string GrilleEnCsv(const Grid& grid);

}  // namespace zl3
