// zl3-stats: runs the tool's start-up and its reports on a site without windows, for scripts
// and scheduled monthly reports.
#include <cstdio>
#include <string>

#include "Demarrage.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "OptionsLigne.h"

namespace {

const char* kUsage =
    "Usage: zl3-stats --root DIR [--summary]\n"
    "  --root DIR   dossier racine de l'installation (le poste Windows de la station)\n"
    "  --summary    initialise l'outil (configuration, journal) et affiche ce qu'il a trouvé\n";

}  // namespace

int main(int argc, char** argv) {
    zl3::OptionsLigne options({"root"}, {"summary", "help"});
    if (!options.Analyse(argc, argv) || !options.Arguments().empty()) {
        std::fprintf(stderr, "zl3-stats: %s\n%s",
                     options.Erreur().empty() ? "argument inattendu" : options.Erreur().c_str(),
                     kUsage);
        return 2;
    }
    if (options.A("help")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const auto root = options.Valeur("root");
    if (!root || root->empty()) {
        std::fprintf(stderr, "zl3-stats: l'option --root est obligatoire\n%s", kUsage);
        return 2;
    }
    if (!zl3::sys::FolderExists(*root)) {
        std::fprintf(stderr, "zl3-stats: dossier racine introuvable: %s\n", root->c_str());
        return 1;
    }
    zl3::sys::SetZelvarRoot(*root);
    const bool ok = zl3::InitGeneral();
    std::fputs(zl3::ResumeConfiguration().c_str(), stdout);
    return ok ? 0 : 1;
}
