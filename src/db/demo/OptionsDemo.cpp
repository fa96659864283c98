#include "OptionsDemo.h"

#include <algorithm>

#include "OptionsLigne.h"

namespace zl3::demo {
namespace {

// Broadcast times are stored from the year 2000 on.
constexpr int kPremiereAnnee = 2000;
constexpr int kDerniereAnnee = 2199;

}  // namespace

const char* UsageDemo() {
    return "Usage: zl3-demo --root DIR [--bases N] [--stations N] [--tracks N] [--days N]\n"
           "                [--years N] [--end AAAA-MM-JJ] [--seed N]\n"
           "Crée sous DIR une installation complète de la suite Zelvar (dossier Windows, "
           "Win.ini,\n"
           "configuration des bases et des stations, dossiers de données, de journaux et de "
           "sons)\n"
           "et remplit le dossier de données de chaque base d'une base de données de station :\n"
           "discothèque, historique de diffusion, événements musicaux, publicité.\n"
           "  --bases N      nombre de bases (radios), 1 à 20 (défaut 1)\n"
           "  --stations N   stations par base, 1 à 10 (défaut 2)\n"
           "  --tracks N     morceaux de musique par station, 200 à 100000 (défaut 3000)\n"
           "  --days N       jours d'historique de diffusion, d'événements musicaux et de\n"
           "                 publicité, 1 à 3650 (défaut 365)\n"
           "  --years N      années de diffusion dans les historiques, 1 à 20 : une station à\n"
           "                 l'antenne depuis des années (quelques milliers de morceaux\n"
           "                 programmés, les autres en archive avec des diffusions plus\n"
           "                 anciennes) ; sans cette option, les historiques couvrent --days\n"
           "  --end DATE     dernier jour de l'historique, AAAA-MM-JJ (défaut : la veille ;\n"
           "                 donner --end pour obtenir des fichiers reproductibles)\n"
           "  --seed N       graine du tirage, 0 à 9223372036854775807 (défaut 1) : mêmes\n"
           "                 options, mêmes enregistrements\n"
           "  --force        remplace une installation déjà présente sous DIR (sans cette\n"
           "                 option, un DIR qui en contient une est refusé : sa base est gardée)\n";
}

Analyse AnalyserOptionsDemo(int argc, char** argv, const DateTime& aujourdhui, OptionsDemo& options,
                            std::string& message) {
    OptionsLigne ligne({"root", "bases", "stations", "tracks", "days", "years", "end", "seed"},
                       {"help", "force"});
    long long bases = options.bases, stations = options.stations, morceaux = options.morceaux,
              jours = options.jours, annees = options.annees,
              graine = static_cast<long long>(options.graine);
    if (!ligne.Analyse(argc, argv) || !ligne.Entier("bases", 1, 20, bases) ||
        !ligne.Entier("stations", 1, 10, stations) ||
        !ligne.Entier("tracks", 200, 100000, morceaux) || !ligne.Entier("days", 1, 3650, jours) || !ligne.Entier("years", 1, 20, annees) ||
        !ligne.Entier("seed", 0, 9223372036854775807LL, graine)) {
        message = ligne.Erreur();
        return Analyse::Erreur;
    }
    if (ligne.A("help")) return Analyse::Aide;
    if (!ligne.Arguments().empty()) {
        message = "argument inattendu: " + ligne.Arguments().front();
        return Analyse::Erreur;
    }
    const auto racine = ligne.Valeur("root");
    if (!racine || racine->empty()) {
        message = "l'option --root est obligatoire";
        return Analyse::Erreur;
    }

    DateTime fin = AddDays(aujourdhui, -1);
    if (const auto texte = ligne.Valeur("end")) {
        const auto date = ParseIsoDate(*texte);
        if (!date || date->year < kPremiereAnnee || date->year > kDerniereAnnee) {
            message = "valeur incorrecte pour --end: '" + *texte +
                      "' (attendu: date AAAA-MM-JJ entre " + std::to_string(kPremiereAnnee) +
                      "-01-01 et " + std::to_string(kDerniereAnnee) + "-12-31)";
            return Analyse::Erreur;
        }
        fin = *date;
    }
    fin.hour = fin.minute = fin.second = fin.millisecond = 0;
    const long long joursHistorique = std::max(jours, annees * 365);
    const DateTime debut = AddDays(fin, -(joursHistorique - 1));
    if (debut.year < kPremiereAnnee || fin.year > kDerniereAnnee) {
        message = "la période de " + std::to_string(joursHistorique) + " jours finissant le " +
                  FormatDDMMYYYY(fin) + " doit se situer entre le 01/01/" +
                  std::to_string(kPremiereAnnee) + " et le 31/12/" + std::to_string(kDerniereAnnee);
        return Analyse::Erreur;
    }

    options.racine = *racine;
    options.forcer = ligne.A("force");
    options.bases = static_cast<int>(bases);
    options.stations = static_cast<int>(stations);
    options.morceaux = static_cast<int>(morceaux);
    options.jours = static_cast<int>(jours);
    options.annees = static_cast<int>(annees);
    options.fin = fin;
    options.graine = static_cast<uint64_t>(graine);
    return Analyse::Continuer;
}

}  // namespace zl3::demo
