// bench_quotas: the reports over a year of a 50,000-track station that has been on air for
// years, through the call layer, against two references measured in the same run, interleaved
// with the report:
//   - the floor: the same track and history bytes read with plain SQL from the files, in one
//     read transaction held over the walk, with the engine's connection settings (memory map,
//     page cache), the entries decoded with integer arithmetic and counted into plain arrays;
//   - the flat copy: the capped entries of every counted track written beforehand, in walk order,
//     to a plain file mapped in memory, decoded and counted the same way: what is left when no
//     database is read at all.
// Then "Top Diffusion", "SACEM" and the advertising report over the same year.
//
// Usage: bench_quotas [--root DIR] [--tracks N] [--years N] [--rounds N] [--json] [--quotas-only]
//   Without --root a demo site (50,000 tracks, 5 years of airplay in the history records, a year
//   of events and advertising, fixed seed) is generated in a temporary folder first (not timed)
//   and removed afterwards.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "BaseDemo.h"
#include "Catalogue.h"
#include "DateTime.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Stats.h"
#include "Lib_Systeme.h"
#include "Lib_Tableur.h"
#include "Recherche.h"
#include "RecordForm.h"
#include "Services.h"
#include "Store.h"
#include "records/Layouts.h"
#include "records/Passages.h"

namespace fs = std::filesystem;
using namespace zl3;

namespace {

using Horloge = std::chrono::steady_clock;

double CpuMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

// Wall-clock and CPU time of the thread, in ms. The build machine is shared: the CPU time is the
// figure that other programs running meanwhile do not inflate.
struct Duree {
    double mur = 0;
    double cpu = 0;
};
std::vector<double> Murs(const std::vector<Duree>& v) {
    std::vector<double> r;
    for (const Duree& d : v)
        r.push_back(d.mur);
    return r;
}
std::vector<double> Cpus(const std::vector<Duree>& v) {
    std::vector<double> r;
    for (const Duree& d : v)
        r.push_back(d.cpu);
    return r;
}

Duree Chrono(const std::function<void()>& f) {
    const auto a = Horloge::now();
    const double c = CpuMs();
    f();
    return {std::chrono::duration<double, std::milli>(Horloge::now() - a).count(), CpuMs() - c};
}

double Mediane(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

long PeakRssKb() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

// Current resident memory split into private (anonymous) pages and pages of mapped files, in kB.
std::pair<long, long> RssAnonFileKb() {
    long anon = 0, file = 0;
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

using Totaux = std::array<long long, 15>;  // the Total row's count columns 1..14

// Counting as the report counts, on integers: the period as day numbers, the entry's date as
// a packed number first (most entries lie outside the period and stop there), then checked to
// be a real date and time.
class Compteur {
  public:
    Compteur(const DateTime& debut, const DateTime& fin)
        : jourDebut_(DaysFromCivil(debut.year, debut.month, debut.day)),
          jourFin_(DaysFromCivil(fin.year, fin.month, fin.day)),
          packeDebut_(Packe(debut.year - 2000, debut.month, debut.day)),
          packeFin_(Packe(fin.year - 2000, fin.month, fin.day)) {}

    void Entrees(const uint8_t* e, int n, int classe) {
        for (int i = 0; i < n; ++i, e += 6) {
            const int a = e[0] - 32, mo = e[1] - 32, j = e[2] - 32;
            const int p = Packe(a, mo, j);
            if (p < packeDebut_ || p > packeFin_) continue;
            const int h = e[3] - 32, mi = e[4] - 32, s = e[5] - 32;
            if (a < 0 || mo < 1 || mo > 12 || j < 1 || j > DaysInMonth(2000 + a, mo) || h < 0 ||
                h > 23 || mi < 0 || mi > 59 || s < 0 || s > 59)
                continue;
            const int64_t jour = DaysFromCivil(2000 + a, mo, j);
            if (jour < jourDebut_ || jour > jourFin_) continue;
            ++totaux[classe];
            if (classe <= 2) ++totaux[3];
            const int semaine = static_cast<int>(((jour + 3) % 7 + 7) % 7);  // 0 Monday
            const int minutes = h * 60 + mi;
            if (minutes >= (semaine >= 5 ? 510 : 390) && minutes <= 1350) {
                ++totaux[classe + 9];
                if (classe <= 2) ++totaux[12];
            }
        }
    }
    Totaux totaux{};

  private:
    static int Packe(int a, int mo, int j) { return (a * 16 + mo) * 32 + j; }
    int64_t jourDebut_, jourFin_;
    int packeDebut_, packeFin_;
};

int Classe(std::span<const uint8_t> morceau) {
    char flag = static_cast<char>(morceau[rec::Morceau::QuotaFlag.offset]);
    if (morceau[856] == 'O') flag = '1';  // the legacy value the call layer normalises
    return flag == 'O' ? 1 : flag == '1' ? 2 : flag == 'N' ? 4 : flag == '-' ? 5 : 0;
}

// Plain SQL over the track and history files, with the engine's connection settings.
class Plancher {
  public:
    explicit Plancher(const std::string& dossier) {
        Ouvrir(dossier + cat::NomFichier(22, 0), morceaux_);
        Ouvrir(dossier + cat::NomFichier(47, 0), historique_);
        sqlite3_prepare_v2(morceaux_,
                           "SELECT data FROM zl3_records WHERE k0 >= ?1 AND k0 <= ?2 ORDER BY k0, s0",
                           -1, &scan_, nullptr);
        sqlite3_prepare_v2(historique_, "SELECT data FROM zl3_records WHERE k0 = ?1", -1, &get_,
                           nullptr);
    }
    ~Plancher() {
        sqlite3_finalize(scan_);
        sqlite3_finalize(get_);
        sqlite3_close(morceaux_);
        sqlite3_close(historique_);
    }

    // Each counted track with its capped entries, in walk order, in one read transaction per
    // file held over the walk.
    void Parcourir(const std::function<void(int classe, const uint8_t*, int)>& parMorceau) {
        sqlite3_exec(morceaux_, "BEGIN", nullptr, nullptr, nullptr);
        sqlite3_exec(historique_, "BEGIN", nullptr, nullptr, nullptr);
        const std::string basse = "000" + std::string(5, '\0');
        const std::string haute = "999" + std::string(5, '\xFF');
        sqlite3_bind_blob(scan_, 1, basse.data(), 8, SQLITE_STATIC);
        sqlite3_bind_blob(scan_, 2, haute.data(), 8, SQLITE_STATIC);
        std::string k = rec::HistoryKey("");
        while (sqlite3_step(scan_) == SQLITE_ROW) {
            const std::span<const uint8_t> t = Decoder(scan_, rec::Morceau::kLayout, morceau_);
            if (t.empty()) continue;
            const int classe = Classe(t);
            if (!classe) continue;
            std::copy_n(t.begin() + static_cast<std::ptrdiff_t>(rec::Morceau::CleMorceau.offset),
                        8, k.begin());
            sqlite3_bind_blob(get_, 1, k.data(), static_cast<int>(k.size()), SQLITE_STATIC);
            std::span<const uint8_t> h;
            if (sqlite3_step(get_) == SQLITE_ROW &&
                !(h = Decoder(get_, rec::HistoriqueDiffusion::kLayout, historiqueLu_)).empty()) {
                const int n = rec::CappedPassageCount(h, std::string_view(k).substr(0, 3));
                parMorceau(classe, h.data() + rec::HistoriqueDiffusion::Passages.offset, n);
            }
            sqlite3_reset(get_);
        }
        sqlite3_reset(scan_);
        sqlite3_exec(morceaux_, "COMMIT", nullptr, nullptr, nullptr);
        sqlite3_exec(historique_, "COMMIT", nullptr, nullptr, nullptr);
    }

  private:
    // The record of the current row rebuilt from its stored form, as the engine does; empty
    // when the stored form is not a record of the file.
    static std::span<const uint8_t> Decoder(sqlite3_stmt* st, const rec::Layout& l,
                                            std::vector<uint8_t>& tampon) {
        tampon.resize(l.BufferLength());
        if (!btr::DecodeRecord(static_cast<const uint8_t*>(sqlite3_column_blob(st, 0)),
                               static_cast<size_t>(sqlite3_column_bytes(st, 0)), l.recordLength,
                               tampon.data()))
            return {};
        return {tampon.data(), l.recordLength};
    }
    static void Ouvrir(const std::string& chemin, sqlite3*& db) {
        // The engine's open flags too: one thread per connection, no connection mutex.
        sqlite3_open_v2(chemin.c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
        sqlite3_exec(db, btr::ConnectionPragmas().c_str(), nullptr, nullptr, nullptr);
    }
    sqlite3* morceaux_ = nullptr;
    sqlite3* historique_ = nullptr;
    sqlite3_stmt* scan_ = nullptr;
    sqlite3_stmt* get_ = nullptr;
    std::vector<uint8_t> morceau_, historiqueLu_;
};

// The flat copy: per counted track, its class (1 byte), its entry count (2 bytes) and its
// entries, one after the other.
class CopiePlate {
  public:
    CopiePlate(Plancher& plancher, const std::string& chemin) : chemin_(chemin) {
        std::vector<uint8_t> octets;
        plancher.Parcourir([&](int classe, const uint8_t* e, int n) {
            octets.push_back(static_cast<uint8_t>(classe));
            octets.push_back(static_cast<uint8_t>(n & 0xFF));
            octets.push_back(static_cast<uint8_t>(n >> 8));
            octets.insert(octets.end(), e, e + 6 * n);
        });
        if (FILE* f = std::fopen(chemin.c_str(), "wb")) {
            std::fwrite(octets.data(), 1, octets.size(), f);
            std::fclose(f);
        }
        taille_ = octets.size();
        const int fd = open(chemin.c_str(), O_RDONLY);
        carte_ = static_cast<const uint8_t*>(
            mmap(nullptr, taille_, PROT_READ, MAP_SHARED, fd, 0));
        close(fd);
    }
    ~CopiePlate() {
        munmap(const_cast<uint8_t*>(carte_), taille_);
        fs::remove(chemin_);
    }
    void Compter(Compteur& c) const {
        for (size_t i = 0; i < taille_;) {
            const int classe = carte_[i];
            const int n = carte_[i + 1] | (carte_[i + 2] << 8);
            c.Entrees(carte_ + i + 3, n, classe);
            i += 3 + 6 * static_cast<size_t>(n);
        }
    }
    size_t Taille() const { return taille_; }

  private:
    std::string chemin_;
    size_t taille_ = 0;
    const uint8_t* carte_ = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
    std::string root;
    int tracks = 50000;
    int years = 5;
    int rounds = 15;
    bool json = false;
    bool quotasSeul = false;  // for profilers: the Quotas report and its references only
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--root" && i + 1 < argc)
            root = argv[++i];
        else if (a == "--tracks" && i + 1 < argc)
            tracks = std::stoi(argv[++i]);
        else if (a == "--years" && i + 1 < argc)
            years = std::stoi(argv[++i]);
        else if (a == "--rounds" && i + 1 < argc)
            rounds = std::max(1, std::stoi(argv[++i]));
        else if (a == "--json")
            json = true;
        else if (a == "--quotas-only")
            quotasSeul = true;
        else {
            std::fprintf(stderr,
                         "usage: bench_quotas [--root DIR] [--tracks N] [--years N] [--rounds N] "
                         "[--json] [--quotas-only]\n");
            return 2;
        }
    }
    const DateTime fin{2026, 10, 31};
    const DateTime debut = AddDays(fin, -364);
    std::string dossier;
    std::string temporaire;
    std::string repartition = "(site given)";
    if (root.empty()) {
        temporaire = (fs::temp_directory_path() / "zl3-bench-quotas").string();
        fs::remove_all(temporaire);
        sys::SetZelvarRoot(temporaire);
        dossier = sys::WithTrailingSep(sys::NativePath("C:\\BTRieve\\Data\\"));
        sys::CheckRep(dossier);
        // Generated by a child process, so that the peak memory measured is the report's.
        const std::string fichierRepartition = temporaire + "/repartition.txt";
        const pid_t enfant = fork();
        if (enfant == 0) {
            demo::OptionsBaseDemo o;
            o.stations = 1;
            o.morceaux = tracks;
            o.jours = 365;
            o.annees = years;
            o.fin = fin;
            const demo::BilanStation b = demo::RemplirBaseDemo(o, dossier).stations[0];
            if (FILE* f = std::fopen(fichierRepartition.c_str(), "w")) {
                std::fprintf(f, "programmed tracks: %s\n  archive: %s",
                             demo::RepartitionEntrees(b.entrees).c_str(),
                             demo::RepartitionEntrees(b.entreesArchive).c_str());
                std::fclose(f);
            }
            _exit(0);
        }
        int etat = 0;
        waitpid(enfant, &etat, 0);
        if (FILE* f = std::fopen(fichierRepartition.c_str(), "r")) {
            char ligne[1024];
            repartition.clear();
            while (std::fgets(ligne, sizeof ligne, f))
                repartition += ligne;
            std::fclose(f);
        }
    } else {
        sys::SetZelvarRoot(root);
        dossier = sys::WithTrailingSep(sys::NativePath("C:\\BTRieve\\Data\\"));
    }

    ConsoleMessageBox console;
    ScopedServices services(Services{&console, nullptr, nullptr, nullptr});
    DefinirDossierData(dossier);
    OuvrirFichiersRecherche(0, 1, 1);
    InitGeneralVersionSons(0, 1);  // done once before the first search, not timed
    TableursMusique musique;
    Grid pub;
    InitGeneralTableurMusique(musique);
    InitGeneralTableurPublicite(pub);
    RechercheStats recherche(musique, pub);
    const auto lancer = [&](Rapport r) {
        ParametresRecherche p;
        p.rapport = r;
        p.debut = debut;
        p.fin = fin;
        recherche.CommandLancer_Click(p);
    };

    // A first report, alone: the peak resident memory is the report's own.
    const double premier = Chrono([&] { lancer(Rapport::Quotas); }).mur;
    const long rssRapport = PeakRssKb();
    const auto [anon, fichiers] = RssAnonFileKb();

    Plancher plancher(dossier);
    const CopiePlate copie(plancher, dossier + "copie-plate.bin");

    std::vector<Duree> tRapport, tPlancher, tCopie;
    Totaux totauxPlancher{}, totauxCopie{};
    // The report and the floor read the same pages: whichever runs second finds them warmer in
    // the processor's caches, after the flat copy of the previous round has swept them. They
    // take turns at going first.
    for (int r = 0; r < rounds; ++r) {
        const auto rapport = [&] { tRapport.push_back(Chrono([&] { lancer(Rapport::Quotas); })); };
        if (r % 2 == 0) rapport();
        Compteur cp(debut, fin);
        tPlancher.push_back(Chrono([&] {
            plancher.Parcourir(
                [&](int classe, const uint8_t* e, int n) { cp.Entrees(e, n, classe); });
        }));
        totauxPlancher = cp.totaux;
        if (r % 2 == 1) rapport();
        Compteur cc(debut, fin);
        tCopie.push_back(Chrono([&] { copie.Compter(cc); }));
        totauxCopie = cc.totaux;
    }
    const Grid& g = musique.quotas;
    bool identiques = true;
    for (int c = 1; c <= 14; ++c)
        if (c < kColPctFr || c > kColPctEtr)
            identiques = identiques && g.Number(c, g.MaxRows()) == totauxPlancher[c] &&
                         totauxCopie[c] == totauxPlancher[c];
    const long passages = recherche.Bilan().passagesComptes;
    const int morceauxLus = recherche.Bilan().morceauxLus;

    std::vector<Duree> tTop, tSacem, tPub;
    for (int r = 0; r < (quotasSeul ? 0 : std::min(rounds, 3)); ++r) {
        tTop.push_back(Chrono([&] { lancer(Rapport::TopDiffusion); }));
        tSacem.push_back(Chrono([&] { lancer(Rapport::Sacem); }));
        tPub.push_back(Chrono([&] { lancer(Rapport::Publicite); }));
    }
    const int diffusionsPub = recherche.Bilan().diffusionsComptees;
    FermerFichiersRecherche(0, 1, 1);

    const double quotas = Mediane(Cpus(tRapport)), floor = Mediane(Cpus(tPlancher)),
                 flat = Mediane(Cpus(tCopie));
    // The ratio of each round's report to the floor walked right after it (the machine's speed
    // drifts less within a round than over the run), and its median.
    std::vector<double> ratiosTour;
    for (size_t r = 0; r < tRapport.size(); ++r)
        ratiosTour.push_back(tRapport[r].cpu / tPlancher[r].cpu);
    const double ratioTour = Mediane(ratiosTour);
    const double top = Mediane(Cpus(tTop)), sacem = Mediane(Cpus(tSacem)),
                 pubMs = Mediane(Cpus(tPub));
    if (json) {
        std::printf(
            "{\"tracks\": %d, \"broadcasts\": %ld, \"quotas_ms\": %.1f, \"floor_ms\": %.1f, "
            "\"flat_ms\": %.1f, \"ratio_floor\": %.2f, \"ratio_floor_rounds\": %.2f, "
            "\"ratio_flat\": %.1f, \"top_ms\": %.1f, "
            "\"sacem_ms\": %.1f, \"pub_ms\": %.1f, \"quotas_wall_ms\": %.1f, \"floor_wall_ms\": "
            "%.1f, \"pub_broadcasts\": %d, \"peak_rss_mb\": %.1f, \"same_counts\": %s}\n",
            morceauxLus, passages, quotas, floor, flat, quotas / floor, ratioTour, quotas / flat,
            top, sacem, pubMs, Mediane(Murs(tRapport)), Mediane(Murs(tPlancher)), diffusionsPub,
            rssRapport / 1024.0, identiques ? "true" : "false");
    } else {
        std::printf("history_entries: %s\n", repartition.c_str());
        std::printf("tracks: %d\n", morceauxLus);
        std::printf("broadcasts_counted: %ld\n", passages);
        std::printf("(CPU time of the thread, medians of %d interleaved rounds; wall clock in "
                    "brackets)\n",
                    rounds);
        std::printf("quotas_365_days: %.1f ms [%.1f ms; first run %.1f ms]\n", quotas,
                    Mediane(Murs(tRapport)), premier);
        std::printf("floor_plain_sql: %.1f ms [%.1f ms]\n", floor, Mediane(Murs(tPlancher)));
        std::printf("flat_mapped_copy: %.1f ms [%.1f ms] (%.1f MB)\n", flat,
                    Mediane(Murs(tCopie)), copie.Taille() / 1e6);
        std::printf("ratio_to_floor: %.2f x (median of the rounds' own ratios: %.2f x)\n",
                    quotas / floor, ratioTour);
        std::printf("ratio_to_flat_copy: %.1f x\n", quotas / flat);
        std::printf("top_diffusion_365_days: %.1f ms [%.1f ms] (%.2f x quotas)\n", top,
                    Mediane(Murs(tTop)), top / quotas);
        std::printf("sacem_365_days: %.1f ms [%.1f ms] (%.2f x quotas)\n", sacem,
                    Mediane(Murs(tSacem)), sacem / quotas);
        std::printf("advertising_365_days: %.1f ms [%.1f ms] (%d broadcasts)\n", pubMs,
                    Mediane(Murs(tPub)), diffusionsPub);
        std::printf("peak_rss_after_report: %.1f MB (%.1f MB private, %.1f MB mapped pages)\n",
                    rssRapport / 1024.0, anon / 1024.0, fichiers / 1024.0);
        std::printf("same_counts_report_floor_flat: %s\n", identiques ? "yes" : "NO");
    }
    if (!temporaire.empty()) fs::remove_all(temporaire);
    return identiques ? 0 : 1;
}
