// bench_export: writes a grid of 65,000 rows × 10 columns of distinct texts (a long advertising
// or Top Diffusion export) to ".xls" and ".xml" and reports the times and file sizes.
//
//   bench_export [--json] [--lignes N] [--colonnes N] [--repetitions N] [--dossier D] [--garder]
//
// Times are the best and the median of the repetitions, in milliseconds, for the whole write
// (texts collected, file built, written to a temporary file and renamed). The files go to a
// fresh folder under the system's temporary folder (or --dossier) and are removed at the end
// unless --garder is given.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "ClasseurXls.h"
#include "FichierXml.h"
#include "Grid.h"

namespace {

namespace fs = std::filesystem;
using zl3::Grid;

struct Mesure {
    double meilleur = 0;
    double mediane = 0;
    uintmax_t taille = 0;
};

template <typename Ecriture>
bool Chronometre(Ecriture ecrire, const std::string& chemin, int repetitions, Mesure& m) {
    std::vector<double> temps;
    for (int i = 0; i < repetitions; ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        const zl3::ResultatEcriture r = ecrire(chemin);
        const auto t1 = std::chrono::steady_clock::now();
        if (!r.ok) {
            std::fprintf(stderr, "bench_export: %s: %s\n", chemin.c_str(), r.erreur.c_str());
            return false;
        }
        temps.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());
    }
    std::sort(temps.begin(), temps.end());
    m.meilleur = temps.front();
    m.mediane = temps[temps.size() / 2];
    m.taille = fs::file_size(chemin);
    return true;
}

// Texts like those of a Top Diffusion grid: titles, artists, categories, durations, counts.
Grid GrilleDeMesure(int lignes, int colonnes) {
    static const char* const kPrefixes[] = {"Titre ", "Artiste ", "Catégorie ", "Durée ",
                                            "Id ",    "Nombre ",  "Clip ",      "Label € "};
    Grid g(colonnes, lignes);
    for (int r = 1; r <= lignes; ++r)
        for (int c = 1; c <= colonnes; ++c)
            g.SetText(c, r, kPrefixes[(c - 1) % 8] + std::to_string(r) + "." + std::to_string(c));
    return g;
}

}  // namespace

int main(int argc, char** argv) {
    bool json = false;
    bool garder = false;
    int lignes = 65000;
    int colonnes = 10;
    int repetitions = 3;
    std::string dossier;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        const bool suivant = i + 1 < argc;
        if (a == "--json") {
            json = true;
        } else if (a == "--garder") {
            garder = true;
        } else if (a == "--lignes" && suivant) {
            lignes = std::atoi(argv[++i]);
        } else if (a == "--colonnes" && suivant) {
            colonnes = std::atoi(argv[++i]);
        } else if (a == "--repetitions" && suivant) {
            repetitions = std::max(1, std::atoi(argv[++i]));
        } else if (a == "--dossier" && suivant) {
            dossier = argv[++i];
        } else {
            std::fprintf(stderr,
                         "usage: bench_export [--json] [--lignes N] [--colonnes N] "
                         "[--repetitions N] [--dossier D] [--garder]\n");
            return 2;
        }
    }
    const bool dossierTemporaire = dossier.empty();
    if (dossierTemporaire)
        dossier = (fs::temp_directory_path() /
                   ("bench_export_" +
                    std::to_string(std::chrono::steady_clock::now().time_since_epoch().count())))
                      .string();
    fs::create_directories(dossier);

    const auto t0 = std::chrono::steady_clock::now();
    const Grid g = GrilleDeMesure(lignes, colonnes);
    const double construction =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();

    const std::string xls = (fs::path(dossier) / "bench_export.xls").string();
    const std::string xml = (fs::path(dossier) / "bench_export.xml").string();
    Mesure mXls, mXml;
    const bool ok =
        Chronometre(
            [&](const std::string& p) { return zl3::EcritClasseurXls(p, g, "Top Diffusion"); }, xls,
            repetitions, mXls) &&
        Chronometre(
            [&](const std::string& p) { return zl3::EcritFichierXml(p, g, "Root", "Collection"); },
            xml, repetitions, mXml);
    if (!garder) {
        std::error_code ec;
        fs::remove(xls, ec);
        fs::remove(xml, ec);
        if (dossierTemporaire) fs::remove(dossier, ec);
    }
    if (!ok) return 1;

    if (json) {
        std::printf(
            "{\"rows\": %d, \"cols\": %d, \"repetitions\": %d, \"grid_build_ms\": %.1f, "
            "\"xls_write_ms\": %.1f, \"xls_write_median_ms\": %.1f, \"xls_size_bytes\": %ju, "
            "\"xml_write_ms\": %.1f, \"xml_write_median_ms\": %.1f, \"xml_size_bytes\": %ju}\n",
            lignes, colonnes, repetitions, construction, mXls.meilleur, mXls.mediane, mXls.taille,
            mXml.meilleur, mXml.mediane, mXml.taille);
    } else {
        std::printf("rows: %d\ncols: %d\ngrid_build: %.1f ms\n", lignes, colonnes, construction);
        std::printf("xls_write: %.1f ms\nxls_write_median: %.1f ms\nxls_size: %ju bytes\n",
                    mXls.meilleur, mXls.mediane, mXls.taille);
        std::printf("xml_write: %.1f ms\nxml_write_median: %.1f ms\nxml_size: %ju bytes\n",
                    mXml.meilleur, mXml.mediane, mXml.taille);
    }
    return 0;
}
