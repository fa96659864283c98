// The tool's settings store: per-user ini files in the settings folder, named by
// NomFichierSettings so that an instance started with "/Instance=n" keeps its own files
// (ZL3_Tools_Stats_2_Excel.Ini for instance 2, never the shared ZL3_Tools_Stats_Excel.Ini).
//
//   FichierSettings()          ZL3_Tools_Stats.Ini           behaviour, reboot, look, colours,
//                                                            start-up options, UDP port
//   FichierSettingsExcel()     ZL3_Tools_Stats_Excel.Ini     export columns, rows, row colours,
//                                                            folders, format, after-export action
//   FichierSettingsInternet()  ZL3_Tools_Stats_Internet.Ini  FTP servers (passwords: the file is
//                                                            readable by its owner only)
//   FichierSettingsPositions() ZL3_Tools_Stats_Positions.Ini window geometry (Lib_Positions.h)
//
// Rules shared by every key:
// - every key is read with its default: a missing file, section or key is never an error;
// - numbers are decimal text, read back as the suite's numeric conversion does (leading blanks,
//   sign and digits; a value that is not a number reads as 0); where 0 cannot be used (a font
//   size, a delay, a port) the key's default stands instead;
// - the tool's own flags are "0"/"1" (any number but 0 reads as on); the suite's switches are
//   "ON"/"0FF" and only the exact text "ON" switches on;
// - saving writes every key of the part, one key at a time, keeping the rest of the file;
// - a write that fails is reported through GestErr_Fra (code 1009) and the function returns
//   false; the values already written stay.
//
// The options window loads every part into one Options value (ChargeOptions), edits it from its
// controls and saves it with SauveOptions; cancelling is simply not saving.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "Lib_Look.h"

namespace zl3 {

// ---- Files and conversions --------------------------------------------------------------------

std::string FichierSettings();
std::string FichierSettingsExcel();
std::string FichierSettingsInternet();
std::string FichierSettingsPositions();

// The suite's numeric conversion: leading blanks, an optional sign and digits; 0 otherwise.
long ValNombre(const std::string& texte);
// Reads a number; a missing key gives `defaut`.
long LitNombre(const std::string& section, const std::string& cle, long defaut,
               const std::string& fichier);
// Reads a "0"/"1" flag.
bool LitDrapeau(const std::string& section, const std::string& cle, bool defaut,
                const std::string& fichier);
// Reads one of the suite's "ON"/"0FF" switches: only the exact text "ON" is on.
bool LitOnOff(const std::string& section, const std::string& cle, bool defaut,
              const std::string& fichier);
inline const char* TexteDrapeau(bool on) {
    return on ? "1" : "0";
}
inline const char* TexteOnOff(bool on) {
    return on ? "ON" : "0FF";
}

// A folder as the settings hold it (suite or native form) made native, with its separator.
std::string DossierNatif(const std::string& dossier);

// ---- Main file: behaviour, reboot, start-up options -------------------------------------------

inline constexpr long kPortUDPParDefaut = 23400;

struct SettingsZL3 {
    bool reboot = false;               // [Windows] Reboot (flag)
    long rebootTempo = 10000;          // [Windows] RebootTempo, milliseconds
    long versionsSon = 0;              // [Comportement] VersionsSon
    bool statutDemarrage = true;       // [FenetrePrincipale] StatutDemarrage: start-up status lines
    bool incidentsDemarrage = false;   // [FenetrePrincipale] ChargeIncidents: load the incidents
    long portUDP = kPortUDPParDefaut;  // [UDP] Port: the port SocketUDP listens on
    bool operator==(const SettingsZL3&) const = default;
};

SettingsZL3 InitSettingsZL3();
bool SaveSettingsZL3(const SettingsZL3& s);
// The UDP port of the main window's socket ([UDP] Port; 0..65535, else 23400; 0 lets the
// system choose).
long PortUDP();

// ---- "_Excel" file: export ----------------------------------------------------------------------

inline constexpr int kNbColonnesExport = 11;
inline constexpr int kNbLignesExport = 9;

struct SettingsExport {
    std::array<bool, kNbColonnesExport> colonnes{};  // [Colonnes] Export, one flag per column
    std::array<bool, kNbLignesExport> lignes{};      // [Lignes] Export, one flag per row type
    std::array<int32_t, kNbLignesExport> couleursLignes{};  // [Lignes] Couleur_1 … Couleur_9
    std::string dossierExport;  // [Dossiers] Export: spreadsheet folder, as stored
    std::string dossierXML;     // [ExportXML] Dossier: XML folder, as stored
    bool xmlActif = false;      // [ExportXML] Actif
    int format = 0;             // [Export] Format: 0 and 1 spreadsheet (.xls), 2 XML, 3 .xlsx
    int apresExport = 0;        // [Export] ApresExport: 0 message, 1 open the file, 2 message
    SettingsExport();           // every column and row on, rows white, folders empty
    bool operator==(const SettingsExport&) const = default;
};

// Reads the "_Excel" file. Flags strings are padded with "1" to 11 (columns) and 9 (rows)
// characters, character i giving flag i ("1" on, anything else off): "101" gives columns 1 and
// 3 on, 2 off, 4 to 11 on. Folders default to the settings folder & "Export\Excel\" and
// "Export\XML\", get their trailing separator, and are created when missing. Format and
// after-export values outside their range read as 0.
SettingsExport InitSettingsExport();
bool SaveSettingsExport(const SettingsExport& s);

// ---- "_Internet" file: FTP servers ---------------------------------------------------------

inline constexpr int kNbServeursFTP = 5;

struct ServeurFTP {       // section "ServeurFTP_" & n, n = 0 .. kNbServeursFTP - 1
    std::string serveur;  // Serveur: host name or address
    std::string user;     // User
    std::string pw;       // PW: the password as typed (the suite's programs read it so)
    int cnx = 0;          // Cnx: 0 active, 1 passive
    std::string dossier;  // Dossier: remote folder
    int retry = 3;        // Retry: number of attempts (at least 1)
    bool ftps = false;    // FTPS: explicit TLS on the control and data connections
    bool operator==(const ServeurFTP&) const = default;
};

struct SettingsInternet {
    std::array<ServeurFTP, kNbServeursFTP> serveurs{};
    bool operator==(const SettingsInternet&) const = default;
};

std::string SectionServeurFTP(int n);  // "ServeurFTP_" & n
SettingsInternet InitSettingsInternet();
// Writes every entry; the file is made readable by its owner only before the first key.
bool SaveSettingsInternet(const SettingsInternet& s);

// ---- The options window's whole set ----------------------------------------------------------

struct Options {
    SettingsZL3 zl3;
    SettingsExport exportation;
    SettingsLook look;
    SettingsInternet internet;
    bool operator==(const Options&) const = default;
};

// Every part read (the export folders created when missing).
Options ChargeOptions();
// Every key of every part written; false when any part could not be written.
bool SauveOptions(const Options& o);

// ---- Loading the options window (FrmSetup.Form_Load) ---------------------------------------

// Caption: "Options: " & "Zelvar: Tools Stats" & " - " & version.
std::string TitreSetup();

struct InfosSetup {
    int nbBases = 1;  // bases of the site (Lib_Config)
    int nbZones = 1;  // [General_Out] NbZones of the main file, at least 1
};
// FrmSetup.InitGeneral's data; the look-style list is ListeStylesLook().
InfosSetup InitGeneralSetup();

struct ChargementSetup {
    InfosSetup general;
    Options options;
};
// The whole load, each step announced to `statut` (the window's status line) in this order:
// "Tools Stats: Setup: Init: General", "Tools Stats: Setup: Init: Settings",
// "Tools Stats: Setup: Init: Settings ZL3", "Tools Stats: Setup: Init: SettingsLook",
// "Tools Stats: Setup: Init: SettingsInternet", "Tools Stats: Setup: Init: SettingsExcel",
// "Tools Stats: Setup: Loaded".
ChargementSetup ChargeSetup(const std::function<void(const std::string&)>& statut);

}  // namespace zl3
