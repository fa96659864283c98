// zl3-demo: creates a complete demonstration installation of the suite under a root folder.
#include <cstdio>
#include <string>

#include "DemoSite.h"
#include "Lib_Systeme.h"
#include "OptionsLigne.h"

namespace {

const char* kUsage =
    "Usage: zl3-demo --root DIR [--bases N] [--stations N]\n"
    "Crée sous DIR une installation complète de la suite Zelvar (dossier Windows, Win.ini,\n"
    "configuration des bases et des stations, dossiers de données, de journaux et de sons).\n"
    "  --bases N      nombre de bases (radios), 1 à 20 (défaut 1)\n"
    "  --stations N   stations par base, 1 à 10 (défaut 2)\n";

}  // namespace

int main(int argc, char** argv) {
    zl3::OptionsLigne options({"root", "bases", "stations"}, {"help"});
    long long bases = 1;
    long long stations = 2;
    if (!options.Analyse(argc, argv) || !options.Entier("bases", 1, 20, bases) ||
        !options.Entier("stations", 1, 10, stations)) {
        std::fprintf(stderr, "zl3-demo: %s\n%s", options.Erreur().c_str(), kUsage);
        return 2;
    }
    if (options.A("help")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const auto root = options.Valeur("root");
    if (!root || root->empty() || !options.Arguments().empty()) {
        std::fprintf(stderr, "zl3-demo: l'option --root est obligatoire\n%s", kUsage);
        return 2;
    }
    zl3::sys::SetZelvarRoot(*root);
    std::string erreur;
    zl3::OptionsSiteDemo site;
    site.bases = static_cast<int>(bases);
    site.stations = static_cast<int>(stations);
    if (!zl3::CreerSiteDemo(site, erreur)) {
        std::fprintf(stderr, "zl3-demo: %s\n", erreur.c_str());
        return 1;
    }
    std::printf("Site de démonstration créé sous %s (%lld base(s), %lld station(s) par base)\n",
                zl3::sys::ZelvarRoot().c_str(), bases, stations);
    return 0;
}
