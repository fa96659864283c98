// zl3-demo: creates a complete demonstration installation of the suite under a root folder, with
// a station database in each base's data folder.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>

#include "BaseDemo.h"
#include "FichiersWma.h"
#include "DemoSite.h"
#include "Ecriture.h"
#include "Lib_Systeme.h"
#include "OptionsDemo.h"

namespace {

zl3::DateTime Aujourdhui() {
    const std::time_t maintenant = std::time(nullptr);
    std::tm local{};
    zl3::sys::HeureLocale(maintenant, local);
    zl3::DateTime d;
    d.year = local.tm_year + 1900;
    d.month = local.tm_mon + 1;
    d.day = local.tm_mday;
    return d;
}

void AfficherBilan(const zl3::demo::BilanBase& bilan, const std::string& dossier,
                   bool repartition) {
    std::printf("Base %d (%s)\n", bilan.base, dossier.c_str());
    for (std::size_t s = 0; s < bilan.stations.size(); ++s) {
        const zl3::demo::BilanStation& b = bilan.stations[s];
        std::printf(
            "  Station %zu : %lld morceaux + %lld habillages, %lld historiques, %lld événements "
            "musicaux, %lld spots diffusés sur %lld programmés\n",
            s + 1, static_cast<long long>(b.morceaux), static_cast<long long>(b.habillages),
            static_cast<long long>(b.historiques), static_cast<long long>(b.evenements),
            static_cast<long long>(b.diffuses), static_cast<long long>(b.prevus));
        if (repartition) {
            std::printf("    Historiques des morceaux programmés : %s\n",
                        zl3::demo::RepartitionEntrees(b.entrees).c_str());
            std::printf("    Historiques des archives : %s\n",
                        zl3::demo::RepartitionEntrees(b.entreesArchive).c_str());
        }
    }
    std::string ligne = "  Enregistrements :";
    for (const auto& [nom, nombre] : bilan.enregistrements)
        if (nombre > 0) ligne += " " + nom + "=" + std::to_string(nombre);
    std::printf("%s\n", ligne.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    zl3::sys::ArgumentsUtf8 utf8(argc, argv);  // file names outside ASCII, on Windows too
    argc = utf8.Argc();
    argv = utf8.Argv();
    zl3::demo::OptionsDemo options;
    std::string message;
    switch (zl3::demo::AnalyserOptionsDemo(argc, argv, Aujourdhui(), options, message)) {
        case zl3::demo::Analyse::Aide:
            std::fputs(zl3::demo::UsageDemo(), stdout);
            return 0;
        case zl3::demo::Analyse::Erreur:
            std::fprintf(stderr, "zl3-demo: %s\n%s", message.c_str(), zl3::demo::UsageDemo());
            return 2;
        case zl3::demo::Analyse::Continuer:
            break;
    }

    const auto debut = std::chrono::steady_clock::now();
    zl3::sys::SetZelvarRoot(options.racine);
    // A station's own installation is never replaced by mistake.
    if (!options.forcer && zl3::InstallationPresente()) {
        std::fprintf(stderr,
                     "zl3-demo: %s contient déjà une installation de la suite : rien n'est "
                     "modifié (--force pour la remplacer)\n",
                     options.racine.c_str());
        return 1;
    }
    std::string erreur;
    zl3::OptionsSiteDemo site;
    site.bases = options.bases;
    site.stations = options.stations;
    if (!zl3::CreerSiteDemo(site, erreur)) {
        std::fprintf(stderr, "zl3-demo: %s\n", erreur.c_str());
        return 1;
    }
    std::printf("Site de démonstration créé sous %s (%d base(s), %d station(s) par base)\n",
                zl3::sys::ZelvarRoot().c_str(), options.bases, options.stations);

    zl3::demo::OptionsBaseDemo base;
    base.stations = options.stations;
    base.morceaux = options.morceaux;
    base.jours = options.jours;
    base.annees = options.annees;
    base.fin = options.fin;
    base.graine = options.graine;
    zl3::demo::OptionsBaseDemo historique = base;
    historique.jours = std::max(base.jours, base.annees * 365);
    std::printf("Historique du %s au %s, graine %llu\n",
                zl3::FormatDDMMYYYY(zl3::demo::PremierJourDemo(historique)).c_str(),
                zl3::FormatDDMMYYYY(options.fin).c_str(),
                static_cast<unsigned long long>(options.graine));
    for (int b = 1; b <= options.bases; ++b) {
        base.base = b;
        const std::string dossier = zl3::sys::NativePath(zl3::DossierDataDemo(b));
        base.dossierSonsMusique = zl3::sys::NativePath(zl3::demo::DossierSonsMusiqueDemo(b));
        try {
            AfficherBilan(zl3::demo::RemplirBaseDemo(base, dossier), dossier, options.annees > 0);
        } catch (const zl3::demo::ErreurDemo& e) {
            std::fprintf(stderr, "zl3-demo: base %d : %s\n", b, e.what());
            return 1;
        }
    }
    const double secondes =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - debut).count();
    std::printf("Terminé en %.1f s\n", secondes);
    return 0;
}
