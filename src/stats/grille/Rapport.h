// The reports of the tool, as chosen by the main tab ("Musique", "Publicite") and, on the music
// tab, by the music sub-tab (0 Quotas, 1 "Top Diffusion", 2 "SACEM").
#pragma once

#include <optional>
#include <string>

namespace zl3 {

enum class Rapport { Quotas, TopDiffusion, Sacem, Publicite };

// The report of a tab choice; nullopt for a music sub-tab other than 0, 1, 2 and for the
// "Incidents" tab.
inline std::optional<Rapport> RapportDeOnglet(const std::string& ongletMain,
                                              int sousOngletMusique) {
    if (ongletMain == "Publicite") return Rapport::Publicite;
    if (ongletMain != "Musique") return std::nullopt;
    switch (sousOngletMusique) {
        case 0:
            return Rapport::Quotas;
        case 1:
            return Rapport::TopDiffusion;
        case 2:
            return Rapport::Sacem;
        default:
            return std::nullopt;
    }
}

}  // namespace zl3
