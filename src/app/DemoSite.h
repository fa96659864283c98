// A complete suite installation for demonstrations and tests, created under a root folder that
// stands for the station's Windows machine (see Lib_Systeme.h).
#pragma once

#include <string>

namespace zl3 {

struct OptionsSiteDemo {
    int bases = 1;     // number of bases (radios)
    int stations = 2;  // stations per base (1..10)
};

// Creates, under the machine root already set (sys::SetZelvarRoot): the Windows folder with
// Win.ini and the theme value, the grid-mask component file of the system folder, each base's
// configuration folder with Qv_sys.ini and ZL3_Systeme.ini naming its stations, and the data,
// log, notes, backup and sound folders. Existing files are rewritten key by key. Returns false
// with `erreur` set when something cannot be written.
bool CreerSiteDemo(const OptionsSiteDemo& options, std::string& erreur);

// True when the machine root already holds an installation of the suite (Win.ini, the
// application folder or the data folder of a base), which a new demo site would overwrite.
bool InstallationPresente();

// Data folder of base `base` (1-based) of the demo site, as the suite writes it ("C:\...").
std::string DossierDataDemo(int base);

}  // namespace zl3
