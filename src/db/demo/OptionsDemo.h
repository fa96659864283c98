// Command line of zl3-demo: the installation to create and the size of its station database.
#pragma once

#include <cstdint>
#include <string>

#include "DateTime.h"

namespace zl3::demo {

struct OptionsDemo {
    std::string racine;
    int bases = 1;
    int stations = 2;
    int morceaux = 3000;
    int jours = 365;
    int annees = 0;  // --years: years of airplay in the history records (0: the days above)
    DateTime fin;  // last day of the history; yesterday unless --end is given
    uint64_t graine = 1;
    bool forcer = false;  // --force: replace an installation already under the root
};

enum class Analyse { Continuer, Aide, Erreur };

// Reads the options; `aujourdhui` gives the default last day (the day before). On Erreur,
// `message` says in French what is wrong (the program then exits with code 2).
Analyse AnalyserOptionsDemo(int argc, char** argv, const DateTime& aujourdhui, OptionsDemo& options,
                            std::string& message);

// The help text.
const char* UsageDemo();

}  // namespace zl3::demo
