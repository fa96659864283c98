#include "ImpressionConformite.h"

#include "MiseEnPage.h"

namespace zl3 {

SerieConformite SerieDuVerdict(const VerdictConformite& v) {
    SerieConformite s;
    s.titre = "Part francophone dans la tranche, " + PadNumber(v.debut.month, 2) + "/" +
              std::to_string(v.debut.year) + ", régime " + CodeRegime(v.regime);
    s.seuil = v.seuils.partFrancophone;
    for (const JourConformite& j : v.jours) {
        s.jours.push_back(PadNumber(j.jour.day, 2));
        s.parts.push_back(j.base > 0 ? std::optional<double>(100.0 * static_cast<double>(j.fr + j.nt) /
                                                             static_cast<double>(j.base))
                                     : std::nullopt);
        s.cumul.push_back(j.baseCumul > 0
                              ? std::optional<double>(100.0 * static_cast<double>(j.frCumul) /
                                                      static_cast<double>(j.baseCumul))
                              : std::nullopt);
    }
    return s;
}

std::string EnteteConformite(const VerdictConformite& v) {
    return "/cConformité " + PadNumber(v.debut.month, 2) + "/" + std::to_string(v.debut.year) +
           ", régime " + CodeRegime(v.regime) + ": " + LibelleIssue(v.issue) + "/n";
}

ResultatEcriture ImprimeConformitePdf(const VerdictConformite& v, const Grid& grille,
                                      const std::string& identification1,
                                      const std::string& identification2,
                                      const DateTime& maintenant, const std::string& chemin) {
    return ImprimeGrilleEtGraphiquePdf(
        grille, SerieDuVerdict(v), EnteteConformite(v),
        NomTravailImpression(identification1, identification2, maintenant), maintenant, chemin);
}

}  // namespace zl3
