// The compliance chart as printed: the daily French-language shares of the band against the
// regime's threshold, with the month's running share, drawn with the print layout's primitives
// (lines, fills, texts) so that the PDF writer and a window's preview paint the same picture.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "EcritureFichier.h"
#include "Grid.h"
#include "MiseEnPage.h"

namespace zl3 {

struct SerieConformite {
    std::string titre;                       // above the chart
    std::vector<std::string> jours;          // labels of the days ("01" … "31")
    std::vector<std::optional<double>> parts;  // percent, none on a day without band plays
    std::vector<std::optional<double>> cumul;  // running share, percent
    double seuil = 40;                       // percent
};

// Colours of the three curves, 0xRRGGBB.
inline constexpr uint32_t kCouleurPartJour = 0x1F77B4;
inline constexpr uint32_t kCouleurCumul = 0x2CA02C;
inline constexpr uint32_t kCouleurSeuil = 0xD62728;

// The chart's primitives inside `cadre`: axes and the 0–100 % grid, the threshold as a straight
// line, the daily shares and the running share as polylines (broken where a day has none), a
// legend under the title.
std::vector<Primitive> DessineGraphiqueConformite(const SerieConformite& serie, const Cadre& cadre);

// A landscape A4 page holding the chart, to follow the pages of the verdict's grid.
PageImprimee PageGraphiqueConformite(const SerieConformite& serie);

// The verdict's grid printed (MetEnPage, landscape, page header `entete` with print codes) with
// the chart page after it, written to `chemin` (an existing file is replaced: the caller has
// checked it). `nomTravail` names the document.
ResultatEcriture ImprimeGrilleEtGraphiquePdf(const Grid& grille, const SerieConformite& serie,
                                             const std::string& entete,
                                             const std::string& nomTravail,
                                             const DateTime& maintenant,
                                             const std::string& chemin);

}  // namespace zl3
