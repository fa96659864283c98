// bench_quotas: the Quotas report over 365 days of a 50,000-track demo station, through the call
// layer, against its floor — a plain scan of the same track and history bytes straight from the
// SQLite files, with the same decoding and counting into plain arrays.
//
// Usage: bench_quotas [--root DIR] [--tracks N] [--json]
//   Without --root a demo site (50,000 tracks, 365 days, fixed seed) is generated in a temporary
//   folder first (not timed) and removed afterwards.
#include <sqlite3.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "BaseDemo.h"
#include "Catalogue.h"
#include "DateTime.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Stats.h"
#include "Lib_Systeme.h"
#include "Lib_Tableur.h"
#include "Recherche.h"
#include "Services.h"
#include "records/Layouts.h"
#include "records/Passages.h"

namespace fs = std::filesystem;
using namespace zl3;

namespace {

double Ms(std::chrono::steady_clock::time_point a, std::chrono::steady_clock::time_point b) {
    return std::chrono::duration<double, std::milli>(b - a).count();
}

// Current resident memory split into private (anonymous) pages and pages of mapped files, from
// /proc/self/status, in kB.
std::pair<long, long> RssAnonFileKb() {
    long anon = 0;
    long file = 0;
    if (FILE* f = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, f)) {
            std::sscanf(line, "RssAnon: %ld", &anon);
            std::sscanf(line, "RssFile: %ld", &file);
        }
        std::fclose(f);
    }
    return {anon, file};
}

long PeakRssKb() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

struct Comptes {
    std::array<long long, 18> colonnes{};  // the Total row's count columns
    long long passages = 0;
};

// The floor: tracks in key order and their history records read with plain SQL from the files,
// entries decoded and counted exactly as the report counts them.
Comptes Plancher(const std::string& dossier, const DateTime& debut, const DateTime& fin) {
    Comptes c;
    sqlite3* morceaux = nullptr;
    sqlite3* historique = nullptr;
    sqlite3_open_v2((dossier + cat::NomFichier(22, 0)).c_str(), &morceaux, SQLITE_OPEN_READONLY,
                    nullptr);
    sqlite3_open_v2((dossier + cat::NomFichier(47, 0)).c_str(), &historique, SQLITE_OPEN_READONLY,
                    nullptr);
    sqlite3_stmt* scan = nullptr;
    sqlite3_stmt* get = nullptr;
    sqlite3_prepare_v2(morceaux,
                       "SELECT data FROM zl3_records WHERE k0 >= ?1 AND k0 <= ?2 ORDER BY k0, s0",
                       -1, &scan, nullptr);
    sqlite3_prepare_v2(historique, "SELECT data FROM zl3_records WHERE k0 = ?1", -1, &get, nullptr);
    const std::string basse = "000" + std::string(5, '\0');
    const std::string haute = "999" + std::string(5, '\xFF');
    sqlite3_bind_blob(scan, 1, basse.data(), 8, SQLITE_STATIC);
    sqlite3_bind_blob(scan, 2, haute.data(), 8, SQLITE_STATIC);
    const std::string d = FormatYYYYMMDD(debut);
    const std::string f = FormatYYYYMMDD(fin);
    while (sqlite3_step(scan) == SQLITE_ROW) {
        const auto* t = static_cast<const uint8_t*>(sqlite3_column_blob(scan, 0));
        std::span<const uint8_t> track(t, static_cast<size_t>(sqlite3_column_bytes(scan, 0)));
        const std::string cle = rec::GetBytes(track, rec::Morceau::CleMorceau);
        char flag = static_cast<char>(track[rec::Morceau::QuotaFlag.offset]);
        if (track[856] == 'O') flag = '1';  // the legacy value the call layer normalises
        const int classe = flag == 'O'   ? 1
                           : flag == '1' ? 2
                           : flag == 'N' ? 4
                           : flag == '-' ? 5
                                         : 0;
        if (!classe) continue;
        const std::string k = rec::HistoryKey(cle);
        sqlite3_bind_blob(get, 1, k.data(), static_cast<int>(k.size()), SQLITE_STATIC);
        if (sqlite3_step(get) == SQLITE_ROW) {
            const auto* h = static_cast<const uint8_t*>(sqlite3_column_blob(get, 0));
            std::span<const uint8_t> histo(h, static_cast<size_t>(sqlite3_column_bytes(get, 0)));
            const int n = rec::CappedPassageCount(histo, cle.substr(0, 3));
            for (int i = 0; i < n; ++i) {
                const auto q = rec::PassageAt(histo, i);
                if (!q) continue;
                const std::string jour = FormatYYYYMMDD(*q);
                if (jour < d || jour > f) continue;
                ++c.passages;
                c.colonnes[classe - 1]++;
                if (classe <= 2) c.colonnes[2]++;
                char hm[5];
                std::snprintf(hm, sizeof hm, "%02d%02d", q->hour, q->minute);
                if (std::string(hm) >= (DayOfWeek(*q) >= 6 ? "0830" : "0630") &&
                    std::string(hm) <= "2230") {
                    c.colonnes[classe - 1 + 9]++;
                    if (classe <= 2) c.colonnes[2 + 9]++;
                }
            }
        }
        sqlite3_reset(get);
    }
    sqlite3_finalize(scan);
    sqlite3_finalize(get);
    sqlite3_close(morceaux);
    sqlite3_close(historique);
    return c;
}

}  // namespace

int main(int argc, char** argv) {
    std::string root;
    int tracks = 50000;
    bool json = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--root" && i + 1 < argc)
            root = argv[++i];
        else if (a == "--tracks" && i + 1 < argc)
            tracks = std::stoi(argv[++i]);
        else if (a == "--json")
            json = true;
        else {
            std::fprintf(stderr, "usage: bench_quotas [--root DIR] [--tracks N] [--json]\n");
            return 2;
        }
    }
    const DateTime fin{2026, 10, 31};
    const DateTime debut = AddDays(fin, -364);
    std::string dossier;
    std::string temporaire;
    if (root.empty()) {
        temporaire = (fs::temp_directory_path() / "zl3-bench-quotas").string();
        fs::remove_all(temporaire);
        sys::SetZelvarRoot(temporaire);
        dossier = sys::WithTrailingSep(sys::NativePath("C:\\BTRieve\\Data\\"));
        sys::CheckRep(dossier);
        demo::OptionsBaseDemo o;
        o.stations = 1;
        o.morceaux = tracks;
        o.jours = 365;
        o.fin = fin;
        demo::RemplirBaseDemo(o, dossier);
    } else {
        sys::SetZelvarRoot(root);
        dossier = sys::WithTrailingSep(sys::NativePath("C:\\BTRieve\\Data\\"));
    }
    const long rssAvant = PeakRssKb();

    // The report through the call layer.
    ConsoleMessageBox console;
    ScopedServices services(Services{&console, nullptr, nullptr, nullptr});
    DefinirDossierData(dossier);
    OuvrirFichiersRecherche(0, 1, 1);
    InitGeneralVersionSons(0, 1);  // done once before the first search, not timed
    TableursMusique musique;
    Grid pub;
    InitGeneralTableurMusique(musique);
    RechercheStats recherche(musique, pub);
    ParametresRecherche p;
    p.debut = debut;
    p.fin = fin;
    const auto t0 = std::chrono::steady_clock::now();
    recherche.CommandLancer_Click(p);
    const auto t1 = std::chrono::steady_clock::now();
    const auto [anon, fichiers] = RssAnonFileKb();
    FermerFichiersRecherche(0, 1, 1);
    const long rssRapport = PeakRssKb();

    const auto t2 = std::chrono::steady_clock::now();
    const Comptes plancher = Plancher(dossier, debut, fin);
    const auto t3 = std::chrono::steady_clock::now();

    const Grid& g = musique.quotas;
    bool identiques = true;
    for (int c = 1; c <= 14; ++c)
        if (c < kColPctFr || c > kColPctEtr)
            identiques = identiques && g.Number(c, g.MaxRows()) == plancher.colonnes[c - 1];
    const double rapportMs = Ms(t0, t1);
    const double plancherMs = Ms(t2, t3);
    if (json) {
        std::printf(
            "{\"quotas_ms\": %.1f, \"floor_ms\": %.1f, \"ratio\": %.2f, \"peak_rss_mb\": %.1f, "
            "\"rss_private_mb\": %.1f, \"rss_mapped_mb\": %.1f, \"tracks\": %d, \"broadcasts\": "
            "%ld, "
            "\"same_counts\": %s}\n",
            rapportMs, plancherMs, rapportMs / plancherMs, rssRapport / 1024.0, anon / 1024.0,
            fichiers / 1024.0, recherche.Bilan().morceauxLus, recherche.Bilan().passagesComptes,
            identiques ? "true" : "false");
    } else {
        std::printf("tracks: %d\n", recherche.Bilan().morceauxLus);
        std::printf("broadcasts_counted: %ld\n", recherche.Bilan().passagesComptes);
        std::printf("quotas_365_days: %.1f ms\n", rapportMs);
        std::printf("floor_sqlite_scan: %.1f ms\n", plancherMs);
        std::printf("ratio: %.2f x\n", rapportMs / plancherMs);
        std::printf("peak_rss: %.1f MB (before the report: %.1f MB)\n", rssRapport / 1024.0,
                    rssAvant / 1024.0);
        std::printf("rss_after_report: %.1f MB private, %.1f MB mapped database pages\n",
                    anon / 1024.0, fichiers / 1024.0);
        std::printf("same_counts_as_floor: %s\n", identiques ? "yes" : "NO");
    }
    if (!temporaire.empty()) fs::remove_all(temporaire);
    return identiques ? 0 : 1;
}
