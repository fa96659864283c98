// Configuration folders, site, bases and stations, resolved at start from the suite's ini files
// (Win.ini, each base's Qv_sys.ini and ZL3_Systeme.ini) and copied into the tool's own
// "Settings\ZL3_Config.ini" so that every later step reads one place. Also the tool's per-user
// settings folder and file names.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace zl3 {

inline constexpr int kNbMaxBases = 20;
inline constexpr int kNbMaxStations = 10;

// The folders of a base, in the order of the folder table.
enum DossierBase : int {
    kRepLog = 0,     // REPLOG        -> Dossier_Log
    kRepLogPub,      // REPLOGPUB     -> Dossier_Log_Pub
    kRepBlocNotes,   // REPBLOCNOTES  -> Dossier_Notes
    kRepLocal,       // REPLOCAL      -> Dossier_Local
    kRepPartage,     // REPPARTAGE    -> Dossier_Shared
    kRepBtr,         // REPBTR        -> Dossier_Data
    kRepSauvegarde,  // REPSAUVEGARDE -> Dossier_Data_Backup
    kNbDossiersBase
};

struct DefinitionDossier {
    const char* cle;       // key in "Repertoires" / "Repertoires_UNC" / "UNC_Actif"
    const char* defaut;    // default value ("" = the application folder)
    const char* cleCopie;  // key written in the tool's copy
};
const std::array<DefinitionDossier, kNbDossiersBase>& TableDossiers();

// Sound types, in the order the sound folders are read.
inline constexpr int kNbTypesSons = 8;
struct DefinitionSons {
    const char* section;  // "Dossiers_Sons_Mus", …
    const char* prefixe;  // "000_", "JIN_", …
};
const std::array<DefinitionSons, kNbTypesSons>& TableSons();

struct ConfigStation {
    std::string lib;
    std::string dossier;  // the station's own folder (native), may be empty
};

struct ConfigBase {
    std::string lib;            // radio name of the base
    std::string dossierConfig;  // base configuration folder (native, trailing separator)
    int nbStation = 1;
    std::vector<ConfigStation> stations;
    std::array<std::string, kNbDossiersBase> dossiers;  // native, trailing separator
    std::array<std::array<std::string, 10>, kNbTypesSons> dossiersSons;
};

struct Configuration {
    std::string dossierApplication;  // native, trailing separator
    std::string fichierWinIni;
    std::string fichierConfig;        // <application folder>Settings/ZL3_Config.ini
    bool uncActif = false;            // Win.ini UNC_Actif is exactly "ON"
    std::string dossierConfigGlobal;  // native, trailing separator
    int nbBase = 1;
    std::string nomRadio;
    std::vector<ConfigBase> bases;  // bases[0] is base 1
    std::string dossierSettings;    // per-user settings folder (NomDossierSettings)
    bool resolue = false;
};

Configuration& Config();
void ResetConfig();

// The whole resolution; writes the tool's copy; traces each step. Returns false when a base's
// configuration could not be read at all (the defaults stand and the tool starts with them).
bool DetermineDossierConfig();
// Configuration folder of base `base` (1-based).
std::string DetermineDossierConfig_Bases_Dossier(int base);
// Number of bases (at least 1).
int DetermineDossierConfig_Bases_Nombre();
// Path of the configuration file ZL3_Systeme.ini of base `base`.
std::string DetermineDossierConfig_Fichier(int base);

// The tool's settings folder (created when missing), with its sub-folder "Histo".
std::string NomDossierSettings();
// Settings folder & "ZL3_Tools_Stats" [& "_" & instance] & suffix & extension.
std::string NomFichierSettings(const std::string& suffixe, const std::string& extension);

// Folder of base `base` (1-based), or of the base selected at start when 0.
std::string DossierDeBase(int dossier, int base = 0);
// Two-digit number ("01").
std::string Deux(int n);

}  // namespace zl3
