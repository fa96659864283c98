#include "DemoSite.h"

#include <algorithm>
#include <fstream>

#include "DateTime.h"

#include "Lib_Config.h"
#include "Lib_Profile.h"
#include "Lib_Systeme.h"

namespace zl3 {
namespace {

const char* kRadios[] = {"Radio Émeraude", "Fréquence Côte d'Opale", "Horizon FM", "Radio Bocage",
                         "Ondes du Léman"};
const char* kVilles[] = {"Lille",      "Arras",   "Boulogne", "Calais", "Dunkerque",
                         "Saint-Omer", "Béthune", "Lens",     "Douai",  "Valenciennes"};

std::string DossierConfigDemo(int base, int nbBases) {
    if (nbBases <= 1) return "C:\\Quorvane\\Zelvar\\Config\\";
    return "C:\\Quorvane\\Zelvar\\Config\\Base" + Deux(base) + "\\";
}

std::string DossierBaseDemo(const std::string& racine, int base) {
    return base == 1 ? racine : racine + "Base" + Deux(base) + "\\";
}

bool Ecrire(const std::string& section, const std::string& cle, const std::string& valeur,
            const std::string& fichier, std::string& erreur) {
    if (WriteProfileString(section, cle, valeur, fichier)) return true;
    erreur = "Impossible d'écrire " + fichier;
    return false;
}

bool Dossier(const std::string& cheminSuite, std::string& erreur) {
    const std::string natif = sys::NativePath(cheminSuite);
    if (sys::CheckRep(natif)) return true;
    erreur = "Impossible de créer le dossier " + natif;
    return false;
}

}  // namespace

std::string DossierDataDemo(int base) {
    return DossierBaseDemo("C:\\BTRieve\\Data\\", base);
}

bool CreerSiteDemo(const OptionsSiteDemo& options, std::string& erreur) {
    const int nbBases = std::max(1, std::min(options.bases, kNbMaxBases));
    const int nbStations = std::max(1, std::min(options.stations, kNbMaxStations));

    if (!Dossier("C:\\Windows\\System32\\", erreur)) return false;
    const std::string winIni = sys::FichierWinIni();
    if (!Ecrire("Quorvane", "UNC_Actif", "0FF", winIni, erreur) ||
        !Ecrire("Quorvane", "INI_ZELVAR", "C:\\Quorvane\\Zelvar\\Config\\", winIni, erreur) ||
        !Ecrire("Quorvane", "INI_ZELVAR_UNC", "\\\\SERVEUR\\Zelvar\\Config\\", winIni, erreur) ||
        !Ecrire("Quorvane", "Nb_Base", std::to_string(nbBases), winIni, erreur))
        return false;
    for (int b = 1; b <= nbBases && nbBases > 1; ++b)
        if (!Ecrire("Quorvane", "Ini_Base_" + Deux(b), DossierConfigDemo(b, nbBases), winIni,
                    erreur))
            return false;
    if (!Ecrire("ThemeManager", "ThemeActive", "1", sys::FichierTheme(), erreur)) return false;

    // The grid-mask component that the main window checks for at start.
    {
        const std::string ocx = sys::DossierSysteme() + "SftMask_IX86_U_70.ocx";
        std::ofstream f(ocx, std::ios::binary | std::ios::app);
        if (!f) {
            erreur = "Impossible d'écrire " + ocx;
            return false;
        }
    }
    if (!Dossier("C:\\Quorvane\\Zelvar\\Settings\\", erreur)) return false;

    // The global configuration folder holds the radio's identity in every case.
    const std::string configGlobal = sys::NativePath("C:\\Quorvane\\Zelvar\\Config\\");
    if (!sys::CheckRep(configGlobal) ||
        !Ecrire("Div_radio", "Nom_Radio", kRadios[0], configGlobal + "Qv_sys.ini", erreur))
        return false;

    for (int b = 1; b <= nbBases; ++b) {
        const std::string configSuite = DossierConfigDemo(b, nbBases);
        if (!Dossier(configSuite, erreur)) return false;
        const std::string config = sys::WithTrailingSep(sys::NativePath(configSuite));
        const std::string qv = config + "Qv_sys.ini";
        const std::string ini = config + "ZL3_Systeme.ini";
        const std::string radio = kRadios[(b - 1) % 5];
        if (!Ecrire("Div_radio", "Nom_Radio", radio, qv, erreur) ||
            !Ecrire("Div_radio", "Nom_Radio", radio, ini, erreur) ||
            !Ecrire("Stations", "Nb_Max", std::to_string(nbStations), ini, erreur))
            return false;
        for (int s = 1; s <= nbStations; ++s)
            if (!Ecrire("Div_Radio", "Station_" + Deux(s),
                        radio + " " + kVilles[(s - 1 + 2 * (b - 1)) % 10], ini, erreur))
                return false;

        const std::string suffixe = b == 1 ? "" : "Base" + Deux(b) + "\\";
        const std::string valeurs[kNbDossiersBase] = {
            "C:\\AudioLog\\" + suffixe,
            "C:\\AudioLog\\Pub\\" + suffixe,
            "C:\\Quorvane\\Zelvar\\Notes\\" + suffixe,
            "C:\\Quorvane\\Zelvar\\",
            "C:\\Quorvane\\Zelvar\\Partage\\",
            DossierDataDemo(b),
            DossierBaseDemo("C:\\BTRieve\\Backup\\", b),
        };
        for (int d = 0; d < kNbDossiersBase; ++d) {
            const char* cle = TableDossiers()[d].cle;
            if (!Ecrire("UNC_Actif", cle, "0FF", ini, erreur) ||
                !Ecrire("Repertoires", cle, valeurs[d], ini, erreur) ||
                !Ecrire("Repertoires_UNC", cle,
                        "\\\\SERVEUR\\Zelvar\\" + std::string(cle) + "\\" + suffixe, ini, erreur) ||
                !Dossier(valeurs[d], erreur))
                return false;
        }
        if (!Ecrire("UNC_Actif", "UNC_Actif" + PadNumber(b, 3), "0FF", ini, erreur)) return false;
        for (int t = 0; t < kNbTypesSons; ++t) {
            const std::string sousDossier = std::string(TableSons()[t].section).substr(14);
            const std::string v = "C:\\Sons\\" + suffixe + sousDossier + "\\";
            if (!Ecrire(TableSons()[t].section, std::string(TableSons()[t].prefixe) + "00", v, ini,
                        erreur) ||
                !Dossier(v, erreur))
                return false;
        }
        for (int s = 1; s <= nbStations; ++s) {
            const std::string v = "C:\\Quorvane\\Zelvar\\Stations\\" + suffixe + Deux(s) + "\\";
            if (!Ecrire("Repertoires", Deux(s) + "_Repertoire_Station", v, ini, erreur) ||
                !Dossier(v, erreur))
                return false;
        }
    }
    return true;
}

bool InstallationPresente() {
    return sys::FileExists(sys::FichierWinIni()) || sys::FolderExists(sys::DossierApplication()) ||
           sys::FolderExists(sys::NativePath(DossierDataDemo(1)));
}

}  // namespace zl3
