// PDF writer for printed pages (MiseEnPage.h): a PDF 1.4 file, one page per printed page, drawn
// with the standard Helvetica and Helvetica-Bold fonts that every reader has, in the WinAnsi
// encoding, so that French accents, "œ" and "€" print. Characters outside that encoding print as
// "?". Content streams are left uncompressed: the files stay small for a month of rows and any
// text tool reads them.
#pragma once

#include <string>
#include <vector>

#include "EcritureFichier.h"
#include "MiseEnPage.h"

namespace zl3 {

// Writes `pages` to `chemin` (write-then-rename, as the other writers); `titre` becomes the
// document's title (the print job's name). No pages is refused.
ResultatEcriture EcritFichierPdf(const std::string& chemin, const std::vector<PageImprimee>& pages,
                                 const std::string& titre);

// `chemin` with ".pdf" appended unless it already ends with it (any case).
std::string AvecExtensionPdf(const std::string& chemin);

// A report printed to PDF without a window (scheduled monthly reports): the pages of
// MetEnPageRapport written to `chemin`. An existing file is kept, and the write refused, unless
// `ecraser`.
ResultatEcriture ImprimeRapportPdf(const Grid& grille, Rapport rapport, const DateTime& debut,
                                   const DateTime& fin, const std::string& identification1,
                                   const std::string& identification2, const DateTime& maintenant,
                                   const std::string& chemin, bool ecraser);

}  // namespace zl3
