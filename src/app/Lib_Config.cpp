#include "Lib_Config.h"

#include <algorithm>
#include <filesystem>

#include "Etat.h"
#include "EtatGlobal.h"
#include "Lib_Messages.h"
#include "Lib_Profile.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace fs = std::filesystem;

namespace zl3 {
namespace {

const char* kModule = "Lib_Public:";
const char* kDefautConfig = "C:\\Quorvane\\Zelvar\\Config\\";

// A folder value of the ini files, mapped for use. A relative folder is taken in the
// application folder, as the suite's programs, started from there, have always found it.
std::string Dossier(const std::string& valeur) {
    std::string natif = sys::NativePath(valeur);
    if (!natif.empty() && sys::CheminFs(natif).is_relative()) natif = sys::DossierApplication() + natif;
    return sys::WithTrailingSep(natif);
}

bool EstOn(const std::string& valeur) {
    return valeur == "ON";
}  // "on" is not "ON"

std::string Trois(int n) {
    return PadNumber(n, 3);
}

std::string FichierSysteme(const std::string& dossierConfig) {
    return dossierConfig + "ZL3_Systeme.ini";
}

}  // namespace

std::string Deux(int n) {
    return PadNumber(n, 2);
}

const std::array<DefinitionDossier, kNbDossiersBase>& TableDossiers() {
    static const std::array<DefinitionDossier, kNbDossiersBase> table = {{
        {"REPLOG", "C:\\AudioLog\\", "Dossier_Log"},
        {"REPLOGPUB", "C:\\AudioLog\\Pub\\", "Dossier_Log_Pub"},
        {"REPBLOCNOTES", "C:\\Quorvane\\Zelvar\\Notes\\", "Dossier_Notes"},
        {"REPLOCAL", "", "Dossier_Local"},
        {"REPPARTAGE", "", "Dossier_Shared"},
        {"REPBTR", "C:\\BTRieve\\Data\\", "Dossier_Data"},
        {"REPSAUVEGARDE", "C:\\BTRieve\\Data\\", "Dossier_Data_Backup"},
    }};
    return table;
}

const std::array<DefinitionSons, kNbTypesSons>& TableSons() {
    // The music prefix is "000_", not a type code: the suite has always written it so.
    static const std::array<DefinitionSons, kNbTypesSons> table = {{
        {"Dossiers_Sons_Mus", "000_"},
        {"Dossiers_Sons_Jin", "JIN_"},
        {"Dossiers_Sons_Lin", "LIN_"},
        {"Dossiers_Sons_Rub", "RUB_"},
        {"Dossiers_Sons_Inf", "INF_"},
        {"Dossiers_Sons_Pub", "PUB_"},
        {"Dossiers_Sons_Pre", "PRE_"},
        {"Dossiers_Sons_Tmp", "TMP_"},
    }};
    return table;
}

Configuration& Config() {
    static Configuration config;
    return config;
}

void ResetConfig() {
    Config() = Configuration{};
}

namespace {
const EnregistrementEtat kEtatConfig{"Lib_Config", &ResetConfig};
}  // namespace

namespace {

void PrepareChemins() {
    Configuration& c = Config();
    c.dossierApplication = sys::DossierApplication();
    c.fichierWinIni = sys::FichierWinIni();
    c.fichierConfig = c.dossierApplication + "Settings" + sys::Sep() + "ZL3_Config.ini";
}

}  // namespace

int DetermineDossierConfig_Bases_Nombre() {
    Configuration& c = Config();
    if (c.fichierConfig.empty()) PrepareChemins();
    long n = ReadProfileInt("Site", "NbBase", -1, c.fichierConfig);
    if (n < 0) n = ReadProfileInt("Quorvane", "Nb_Base", 0, c.fichierWinIni);
    // Nb_Base_Controle, when the suite sets it, is the number of bases the installation is
    // entitled to: it caps the count.
    const long controle = ReadProfileInt("Quorvane", "Nb_Base_Controle", 0, c.fichierWinIni);
    if (controle > 0) n = std::min(n, controle);
    return static_cast<int>(std::clamp<long>(n, 1, kNbMaxBases));
}

std::string DetermineDossierConfig_Bases_Dossier(int base) {
    Configuration& c = Config();
    if (c.fichierConfig.empty()) PrepareChemins();
    std::string v =
        ReadProfileString("Base_" + Deux(base), "Dossier_Config_Global", "", c.fichierConfig);
    if (v.empty()) v = ReadProfileString("Quorvane", "Ini_Base_" + Deux(base), "", c.fichierWinIni);
    if (v.empty()) v = c.dossierConfigGlobal;
    if (v.empty()) v = kDefautConfig;
    return Dossier(v);
}

std::string DetermineDossierConfig_Fichier(int base) {
    Configuration& c = Config();
    if (c.fichierConfig.empty()) PrepareChemins();
    std::string dossier =
        ReadProfileString("Base_" + Deux(base), "Dossier_Config_Global", "", c.fichierConfig);
    if (!dossier.empty()) {
        dossier = Dossier(dossier);
        TraceLog("Dossier_Config_Global: " + dossier + " /A");
    } else {
        dossier = DetermineDossierConfig_Bases_Dossier(base);
        TraceLog("Dossier_Config_Global: " + dossier + " /B");
    }
    TraceLog("INI_ZELVAR: " + c.dossierConfigGlobal);
    return FichierSysteme(dossier);
}

bool DetermineDossierConfig() {
    const std::string identity = std::string(kModule) + "DetermineDossierConfig";
    TraceProc(identity);
    Configuration& c = Config();
    bool ok = true;
    try {
        // 1. Windows folder, Win.ini, the folder of the tool's copy.
        PrepareChemins();
        sys::CheckRep(sys::TexteChemin(sys::CheminFs(c.fichierConfig).parent_path()));
        TraceLog("Win.ini: " + c.fichierWinIni);

        // 2. Local or network configuration folder.
        c.uncActif = EstOn(ReadProfileString("Quorvane", "UNC_Actif", "0FF", c.fichierWinIni));
        const char* cleConfig = c.uncActif ? "INI_ZELVAR_UNC" : "INI_ZELVAR";
        const std::string lu = ReadProfileString("Quorvane", cleConfig, "", c.fichierWinIni);
        c.dossierConfigGlobal = Dossier(lu.empty() ? c.dossierApplication + "Config\\" : lu);
        TraceLog(std::string("UNC_Actif: ") + (c.uncActif ? "ON" : "0FF") + " " + cleConfig + ": " +
                 c.dossierConfigGlobal);
        if (lu.empty())
            GestErr_Fra(kErrDossierConfigInitialise, identity, true, identity,
                        c.dossierConfigGlobal);

        // 3. Number of bases, straight from Win.ini: the copy is being rewritten.
        long nb = ReadProfileInt("Quorvane", "Nb_Base", 0, c.fichierWinIni);
        const long controle = ReadProfileInt("Quorvane", "Nb_Base_Controle", 0, c.fichierWinIni);
        if (controle > 0) nb = std::min(nb, controle);
        c.nbBase = static_cast<int>(std::clamp<long>(nb, 1, kNbMaxBases));
        TraceLog("Nb_Base: " + std::to_string(c.nbBase));

        // 4. Configuration folder of each base; the radio's name.
        c.bases.assign(static_cast<size_t>(c.nbBase), ConfigBase{});
        if (c.nbBase == 1) {
            c.bases[0].dossierConfig = c.dossierConfigGlobal;
        } else {
            for (int b = 1; b <= c.nbBase; ++b) {
                std::string v =
                    ReadProfileString("Quorvane", "Ini_Base_" + Deux(b), "", c.fichierWinIni);
                c.bases[b - 1].dossierConfig = v.empty() ? c.dossierConfigGlobal : Dossier(v);
            }
        }
        c.nomRadio = ReadProfileString("Div_radio", "Nom_Radio", "Nom de la radio",
                                       c.dossierConfigGlobal + "Qv_sys.ini");

        // 5. Site section of the copy.
        WriteProfileString("Site", "Lib", c.nomRadio, c.fichierConfig);
        WriteProfileString("Site", "Actif", "1", c.fichierConfig);
        WriteProfileString("Site", "NbBase", std::to_string(c.nbBase), c.fichierConfig);
        WriteProfileString("Site", "NoBase", "1", c.fichierConfig);

        for (int b = 1; b <= c.nbBase; ++b) {
            ConfigBase& base = c.bases[b - 1];
            const std::string section = "Base_" + Deux(b);
            const std::string ini = FichierSysteme(base.dossierConfig);
            TraceLog("Base " + Deux(b) + ": " + ini);
            if (!sys::FolderExists(base.dossierConfig)) {
                GestErr_Fra(kErrProblemeDossier, identity, false, identity, base.dossierConfig);
                ok = false;
            }

            // 6. Stations of the base.
            base.nbStation = static_cast<int>(
                std::clamp<long>(ReadProfileInt("Stations", "Nb_Max", 1, ini), 1, kNbMaxStations));
            base.lib = c.nbBase == 1
                           ? c.nomRadio
                           : ReadProfileString("Div_radio", "Nom_Radio", "Nom de la radio", ini);
            WriteProfileString(section, "Lib", base.lib, c.fichierConfig);
            WriteProfileString(section, "Actif", "1", c.fichierConfig);
            WriteProfileString(section, "NbStation", std::to_string(base.nbStation),
                               c.fichierConfig);
            WriteProfileString(section, "NoStation", "1", c.fichierConfig);
            WriteProfileString(section, "Dossier_Config_Global", sys::SuitePath(base.dossierConfig),
                               c.fichierConfig);
            base.stations.assign(static_cast<size_t>(base.nbStation), ConfigStation{});
            for (int s = 1; s <= base.nbStation; ++s) {
                base.stations[s - 1].lib =
                    ReadProfileString("Div_Radio", "Station_" + Deux(s), "Station " + Deux(s), ini);
                const std::string secStation = section + "_Station_" + Deux(s);
                WriteProfileString(secStation, "Lib", base.stations[s - 1].lib, c.fichierConfig);
                WriteProfileString(secStation, "Actif", "1", c.fichierConfig);
            }

            // 7. Folders, each following its own local/network switch.
            for (int d = 0; d < kNbDossiersBase; ++d) {
                const DefinitionDossier& def = TableDossiers()[d];
                const bool unc = EstOn(ReadProfileString("UNC_Actif", def.cle, "0FF", ini));
                const std::string defaut = *def.defaut ? def.defaut : c.dossierApplication;
                const std::string v = ReadProfileString(unc ? "Repertoires_UNC" : "Repertoires",
                                                        def.cle, defaut, ini);
                base.dossiers[d] = Dossier(v.empty() ? defaut : v);
                WriteProfileString(section, def.cleCopie, sys::SuitePath(base.dossiers[d]),
                                   c.fichierConfig);
                TraceLog(std::string(def.cleCopie) + (unc ? " (UNC): " : ": ") + base.dossiers[d]);
            }

            // 8. Sound folders. In network mode they are read from the type's section with
            //    "_UNC" appended to its name.
            const bool uncSons =
                EstOn(ReadProfileString("UNC_Actif", "UNC_Actif" + Trois(b), "0FF", ini));
            for (int t = 0; t < kNbTypesSons; ++t) {
                const std::string sec =
                    std::string(TableSons()[t].section) + (uncSons ? "_UNC" : "");
                for (int i = 0; i < 10; ++i) {
                    const std::string v =
                        ReadProfileString(sec, TableSons()[t].prefixe + Deux(i), "", ini);
                    base.dossiersSons[t][i] = v.empty() ? "" : Dossier(v);
                }
            }

            // 9. Each station's own folder, local or network after Win.ini's switch.
            for (int s = 1; s <= base.nbStation; ++s) {
                const std::string cle =
                    Deux(s) + "_" + (c.uncActif ? "Repertoire_Station_UNC" : "Repertoire_Station");
                const std::string v =
                    ReadProfileString(c.uncActif ? "Repertoires_UNC" : "Repertoires", cle, "", ini);
                base.stations[s - 1].dossier = v.empty() ? "" : Dossier(v);
            }
        }

        // 10. Theme advice, once.
        if (sys::ThemeActive() == "0" &&
            ReadProfileString("ThemeWindows", "Msg", "0", c.fichierConfig) == "0") {
            AffMsg(
                "Le poste utilise le style 'Windows standard'\nPour une avoir une interface "
                "optimisée, nous vous conseillons d'utiliser un style 'Windows XP'\nPour faire "
                "le changement,  cliquez droit sur le bureau de windows et choisissez "
                "'Propriétés'",
                kTitreApplication, kMbInformation);
            WriteProfileString("ThemeWindows", "Msg", "1", c.fichierConfig);
        }
        c.resolue = true;
    } catch (const std::exception& e) {
        TraceErreur(identity, 0, e.what());
        ok = false;
    }
    return ok;
}

std::string NomDossierSettings() {
    const std::string identity = std::string(kModule) + "NomDossierSettings";
    TraceProc(identity);
    Configuration& c = Config();
    try {
        if (c.dossierApplication.empty()) PrepareChemins();
        const std::string dossier =
            c.dossierApplication + "Settings" + sys::Sep() + "ZL3_Tools_Stats" + sys::Sep();
        sys::CheckRep(dossier + "Histo");
        c.dossierSettings = dossier;
        // Settings files of older versions lived in the application folder: move them.
        std::error_code ec;
        for (fs::directory_iterator it(c.dossierApplication, ec), end; !ec && it != end;
             it.increment(ec)) {
            const std::string nom = it->path().filename().string();
            if (!it->is_regular_file(ec) || nom.rfind("ZL3_Tools_Stats", 0) != 0) continue;
            std::string ext = it->path().extension().string();
            for (char& ch : ext)
                ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
            if (ext != ".ini") continue;
            const std::string cible = dossier + nom;
            if (sys::FileExists(cible)) continue;
            std::error_code cec;
            if (fs::copy_file(it->path(), cible, cec)) {
                sys::File_Delete(it->path().string());
                TraceLog("Settings moved: " + nom);
            }
        }
        return dossier;
    } catch (const std::exception& e) {
        TraceErreur(identity, 0, e.what());
        return c.dossierSettings;
    }
}

std::string NomFichierSettings(const std::string& suffixe, const std::string& extension) {
    Configuration& c = Config();
    if (c.dossierSettings.empty()) NomDossierSettings();
    std::string nom = c.dossierSettings + "ZL3_Tools_Stats";
    if (Etat().instance > 0) nom += "_" + std::to_string(Etat().instance);
    return nom + suffixe + extension;
}

std::string DossierDeBase(int dossier, int base) {
    const Configuration& c = Config();
    if (c.bases.empty() || dossier < 0 || dossier >= kNbDossiersBase) return {};
    const int b = std::clamp(base <= 0 ? 1 : base, 1, static_cast<int>(c.bases.size()));
    return c.bases[b - 1].dossiers[dossier];
}

}  // namespace zl3
