// The compliance verdict on paper: the chart's series taken from a verdict, and the verdict's
// grid with its chart printed to PDF. Joins the statistics and the writers, so it lives in its
// own small library (zl3_conformite_sortie) that zl3-stats and the windows link.
#pragma once

#include <string>

#include "Conformite.h"
#include "EcritureFichier.h"
#include "GraphiqueConformite.h"

namespace zl3 {

// Daily band shares, the running share and the regime's French-language threshold.
SerieConformite SerieDuVerdict(const VerdictConformite& v);

// Page header of the compliance print: "/cConformité MM/yyyy, régime 40-20/n".
std::string EnteteConformite(const VerdictConformite& v);

// The grid of RemplirGrilleConformite printed in landscape, then the chart page, to `chemin`
// (replaced when it exists: the caller decides beforehand).
ResultatEcriture ImprimeConformitePdf(const VerdictConformite& v, const Grid& grille,
                                      const std::string& identification1,
                                      const std::string& identification2,
                                      const DateTime& maintenant, const std::string& chemin);

}  // namespace zl3
