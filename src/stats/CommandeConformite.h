// zl3-stats --report conformite: a station's month judged under its quota regime, for a
// scheduled check on the 1st of each month.
//
//   zl3-stats --root DIR [--base N] --station N --report conformite --month YYYY-MM
//             [--regime 40-20|60-10|35-25|15] [--format table|csv|xls|xlsx|xml|pdf]
//             [--out FILE] [--overwrite]
//
// Without --regime, the station's regime of the settings (RegimeStation), which the window keeps.
// The verdict is printed on the standard output (unless CSV goes there); --out receives the
// verdict's grid in the format asked (the PDF also holds the chart of the daily band shares).
// Exit codes: 0 the month passes; 3 it fails or cannot be decided; 1 unreadable site or file
// kept; 2 wrong arguments; 4 read errors (the verdict written is that of what was read).
#pragma once

#include <optional>
#include <string>

#include "OptionsLigne.h"

namespace zl3 {

// The command once the options are parsed (the program's own options, --month and --regime
// included); `usage` is the program's help, shown after an argument error.
int CommandeConformite(const OptionsLigne& options, const char* usage);

// zl3-stats --report droits --half YYYY-S1|YYYY-S2 [--format table|csv|xls|xlsx|xml]
// [--out FILE] [--overwrite]: the half-year's music-rights statement (ReleveDroits.h). The tracks
// whose tags are missing are printed on the standard error and added to the incidents list.
// Exit codes: 0 written; 3 written, with tracks whose tags are missing; 1, 2, 4 as above.
int CommandeReleveDroits(const OptionsLigne& options, const char* usage);

// Every zl3-stats report: the file named by --out (none: nothing to do), given the format's
// extension in `cible` and checked before anything is read. An exit code when the run must stop:
// 2 (after `usage`) for a name that can never be written, 1 for an existing file kept.
std::optional<int> ControlerCible(const OptionsLigne& options, const std::string& format,
                                  std::string& cible, const char* usage);

}  // namespace zl3
