// bench_gui: the main window's start-up ("Init: Duration") and its responsiveness during a
// one-year Quotas run: the longest time the window goes without handling events, measured between
// two turns of the event loop while the search runs on the window thread (offscreen platform,
// window shown, the grid on screen following the run).
//
// Usage: bench_gui [--root DIR] [--tracks N] [--json]
//   Without --root a site (one base, one station, N tracks, default 50,000, 365 days ending
//   yesterday) is generated in a temporary folder first (not timed) and removed afterwards.
#include <QApplication>
#include <QDate>
#include <QElapsedTimer>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "BaseDemo.h"
#include "DemoSite.h"
#include "FrmDebugEcran.h"
#include "Frm_Main.h"
#include "ServicesQt.h"
#include "Services.h"
#include "Etat.h"
#include "Lib_Systeme.h"

namespace fs = std::filesystem;
using namespace zl3;

namespace {

class Silencieux : public MessageBoxUi {
  public:
    int Show(const MessageRequest& r) override { return CloseButtonAnswer(r.style); }
};

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    std::string root;
    int tracks = 50000;
    bool json = false;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--root") && i + 1 < argc)
            root = argv[++i];
        else if (!std::strcmp(argv[i], "--tracks") && i + 1 < argc)
            tracks = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--json"))
            json = true;
        else {
            std::fprintf(stderr, "usage: bench_gui [--root DIR] [--tracks N] [--json]\n");
            return 2;
        }
    }
    const QDate hier = QDate::currentDate().addDays(-1);
    const DateTime fin{hier.year(), hier.month(), hier.day()};
    std::string temporaire;
    if (root.empty()) {
        temporaire = (fs::temp_directory_path() / "zl3-bench-gui").string();
        fs::remove_all(temporaire);
        fs::create_directories(temporaire);
        sys::SetZelvarRoot(temporaire);
        std::string erreur;
        if (!CreerSiteDemo(OptionsSiteDemo{1, 1}, erreur)) {
            std::fprintf(stderr, "bench_gui: %s\n", erreur.c_str());
            return 1;
        }
        demo::OptionsBaseDemo o;
        o.stations = 1;
        o.morceaux = tracks;
        o.jours = 365;
        o.fin = fin;
        demo::RemplirBaseDemo(o, sys::WithTrailingSep(sys::NativePath(DossierDataDemo(1))));
    } else {
        sys::SetZelvarRoot(root);
    }

    SystemClock horloge;
    SystemShell shell;
    Silencieux boites;
    gui::EventLoopQt evenements;
    int64_t initMs = -1;
    int64_t ecartMs = 0;
    int64_t tours = 0;
    int64_t tourMax = 0;
    double rechercheMs = 0;
    long passages = 0;
    {
        ScopedServices services(Services{&boites, &horloge, &evenements, &shell});
        gui::Frm_Main w;
        evenements.avantEvenements = [&w] { w.SuivreGrillesDeTempsEnTemps(); };
        if (!w.Form_Initialize() || !w.Form_Load()) return 1;
        for (const QString& l : w.DebugEcran()->Lignes()) {
            const int p = l.indexOf("Init: Duration: ");
            if (p >= 0) initMs = l.mid(p + 16).section(' ', 0, 0).toLongLong();
        }
        w.resize(1280, 720);
        w.show();
        QCoreApplication::processEvents();
        w.ChoisirRapport(Rapport::Quotas);
        w.DefinirPeriode(AddDays(fin, -364), fin);
        w.ChoisirStation(1, 1);
        // The first search also opens the station's files and loads the versions list.
        QElapsedTimer t;
        evenements.Remettre();
        t.start();
        w.CommandLancer_Click();
        rechercheMs = t.nsecsElapsed() / 1e6;
        ecartMs = evenements.PlusLongEcartMs();
        tours = evenements.Tours();
        tourMax = evenements.TourDuPlusLongEcart();
        passages = w.Recherche().Bilan().passagesComptes;
        Etat().enSortie = true;
        w.close();
    }
    if (!temporaire.empty()) fs::remove_all(temporaire);
    if (json) {
        std::printf(
            "{\"init_duration_ms\": %lld, \"quotas_run_ms\": %.1f, \"longest_event_gap_ms\": %lld, "
            "\"event_loop_turns\": %lld, \"longest_gap_turn\": %lld, \"broadcasts_counted\": %ld}\n",
            static_cast<long long>(initMs), rechercheMs, static_cast<long long>(ecartMs),
            static_cast<long long>(tours), static_cast<long long>(tourMax), passages);
    } else {
        std::printf("init duration: %lld ms\n", static_cast<long long>(initMs));
        std::printf("quotas run, 365 days: %.1f ms\n", rechercheMs);
        std::printf("longest gap between event-loop turns: %lld ms\n",
                    static_cast<long long>(ecartMs));
        std::printf("event-loop turns: %lld (longest gap before turn %lld)\n",
                    static_cast<long long>(tours), static_cast<long long>(tourMax));
        std::printf("broadcasts counted: %ld\n", passages);
    }
    return 0;
}
