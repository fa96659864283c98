#include "Lib_Settings.h"

#include <cctype>
#include <climits>
#include <exception>

#include "EcritureReglages.h"
#include "Lib_Config.h"
#include "Lib_Profile.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"

namespace zl3 {
namespace {

constexpr const char* kModule = "Lib_Settings:";
// A default no ini value can hold (values are trimmed): tells a missing key from an empty one.
constexpr const char* kAbsent = "\n";

std::string Identite(const char* procedure) {
    return std::string(kModule) + procedure;
}

// The folder's own separator at its end: "\" for a folder in the suite's form, else the native.
std::string AvecSeparateurFinal(const std::string& dossier) {
    if (dossier.empty()) return dossier;
    const char fin = dossier.back();
    if (fin == '\\' || fin == '/') return dossier;
    return dossier + (dossier.find('\\') != std::string::npos ? '\\' : sys::Sep());
}

std::string DossierSettings() {
    const Configuration& c = Config();
    return c.dossierSettings.empty() ? NomDossierSettings() : c.dossierSettings;
}

std::string LitDossier(const std::string& section, const std::string& cle,
                       const std::string& defaut, const std::string& fichier) {
    std::string v = ReadProfileString(section, cle, "", fichier);
    if (v.empty()) v = defaut;
    v = AvecSeparateurFinal(v);
    const std::string natif = DossierNatif(v);
    if (!sys::CheckRep(natif))
        GestErr_Fra(2007, "Lib_Settings", true, Identite("InitSettingsExport"), natif);
    return v;
}

}  // namespace

// ---- Files and conversions --------------------------------------------------------------------

std::string FichierSettings() {
    return NomFichierSettings("", ".Ini");
}
std::string FichierSettingsExcel() {
    return NomFichierSettings("_Excel", ".Ini");
}
std::string FichierSettingsInternet() {
    return NomFichierSettings("_Internet", ".Ini");
}
std::string FichierSettingsPositions() {
    return NomFichierSettings("_Positions", ".Ini");
}

long ValNombre(const std::string& texte) {
    size_t i = 0;
    while (i < texte.size() && (texte[i] == ' ' || texte[i] == '\t'))
        ++i;
    bool negatif = false;
    if (i < texte.size() && (texte[i] == '-' || texte[i] == '+')) negatif = texte[i++] == '-';
    long n = 0;  // a number too long for a long stops at LONG_MAX
    for (; i < texte.size() && std::isdigit(static_cast<unsigned char>(texte[i])); ++i) {
        const int d = texte[i] - '0';
        n = n > (LONG_MAX - d) / 10 ? LONG_MAX : n * 10 + d;
    }
    return negatif ? -n : n;
}

long LitNombre(const std::string& section, const std::string& cle, long defaut,
               const std::string& fichier) {
    const std::string v = ReadProfileString(section, cle, kAbsent, fichier);
    return v == kAbsent ? defaut : ValNombre(v);
}

bool LitDrapeau(const std::string& section, const std::string& cle, bool defaut,
                const std::string& fichier) {
    return LitNombre(section, cle, defaut ? 1 : 0, fichier) != 0;
}

bool LitOnOff(const std::string& section, const std::string& cle, bool defaut,
              const std::string& fichier) {
    return ReadProfileString(section, cle, TexteOnOff(defaut), fichier) == "ON";
}

std::string DossierNatif(const std::string& dossier) {
    if (dossier.empty()) return dossier;
    return sys::WithTrailingSep(sys::NativePath(dossier));
}

// ---- Main file ----------------------------------------------------------------------------------

SettingsZL3 InitSettingsZL3() {
    const std::string identite = Identite("InitSettingsZL3");
    TraceProc(identite);
    SettingsZL3 s;
    try {
        const std::string f = FichierSettings();
        s.reboot = LitDrapeau("Windows", "Reboot", s.reboot, f);
        const long tempo = LitNombre("Windows", "RebootTempo", s.rebootTempo, f);
        if (tempo > 0) s.rebootTempo = tempo;
        s.versionsSon = LitNombre("Comportement", "VersionsSon", s.versionsSon, f);
        s.statutDemarrage =
            LitDrapeau("FenetrePrincipale", "StatutDemarrage", s.statutDemarrage, f);
        s.incidentsDemarrage =
            LitDrapeau("FenetrePrincipale", "ChargeIncidents", s.incidentsDemarrage, f);
        s.portUDP = PortUDP();
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
    }
    return s;
}

bool SaveSettingsZL3(const SettingsZL3& s) {
    const std::string identite = Identite("SaveSettingsZL3");
    TraceProc(identite);
    reglages::Ecriture w(FichierSettings());
    try {
        w.Drapeau("Windows", "Reboot", s.reboot);
        w.Nombre("Windows", "RebootTempo", s.rebootTempo);
        w.Nombre("Comportement", "VersionsSon", s.versionsSon);
        w.Drapeau("FenetrePrincipale", "StatutDemarrage", s.statutDemarrage);
        w.Drapeau("FenetrePrincipale", "ChargeIncidents", s.incidentsDemarrage);
        w.Nombre("UDP", "Port", s.portUDP);
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
        w.Echec();
    }
    return w.Fin(identite);
}

long PortUDP() {
    try {
        const long p = LitNombre("UDP", "Port", kPortUDPParDefaut, FichierSettings());
        return p >= 0 && p <= 65535 ? p : kPortUDPParDefaut;
    } catch (const std::exception& e) {
        TraceErreur(Identite("PortUDP"), 0, e.what());
        return kPortUDPParDefaut;
    }
}

// ---- "_Excel" file ------------------------------------------------------------------------------

SettingsExport::SettingsExport() {
    colonnes.fill(true);
    lignes.fill(true);
    couleursLignes.fill(RGBCouleur(255, 255, 255));
}

SettingsExport InitSettingsExport() {
    const std::string identite = Identite("InitSettingsExport");
    TraceProc(identite);
    SettingsExport s;
    try {
        const std::string f = FichierSettingsExcel();
        const std::string col = Calibre(ReadProfileString("Colonnes", "Export", "11111111111", f),
                                        kNbColonnesExport, "1");
        for (int i = 0; i < kNbColonnesExport; ++i)
            s.colonnes[i] = col[i] == '1';
        const std::string lig =
            Calibre(ReadProfileString("Lignes", "Export", "111111111", f), kNbLignesExport, "1");
        for (int i = 0; i < kNbLignesExport; ++i)
            s.lignes[i] = lig[i] == '1';
        for (int i = 0; i < kNbLignesExport; ++i) {
            const long c =
                LitNombre("Lignes", "Couleur_" + std::to_string(i + 1), s.couleursLignes[i], f);
            if (c >= 0 && c <= 0xFFFFFF) s.couleursLignes[i] = static_cast<int32_t>(c);
        }
        const std::string base = DossierSettings() + "Export" + sys::Sep();
        s.dossierExport = LitDossier("Dossiers", "Export", base + "Excel" + sys::Sep(), f);
        s.dossierXML = LitDossier("ExportXML", "Dossier", base + "XML" + sys::Sep(), f);
        s.xmlActif = LitDrapeau("ExportXML", "Actif", false, f);
        const long format = LitNombre("Export", "Format", 0, f);
        s.format = format >= 0 && format <= 3 ? static_cast<int>(format) : 0;
        const long apres = LitNombre("Export", "ApresExport", 0, f);
        s.apresExport = apres >= 0 && apres <= 2 ? static_cast<int>(apres) : 0;
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
    }
    return s;
}

bool SaveSettingsExport(const SettingsExport& s) {
    const std::string identite = Identite("SaveSettingsExport");
    TraceProc(identite);
    reglages::Ecriture w(FichierSettingsExcel());
    try {
        std::string col;
        for (bool b : s.colonnes)
            col += TexteDrapeau(b);
        std::string lig;
        for (bool b : s.lignes)
            lig += TexteDrapeau(b);
        w.Texte("Colonnes", "Export", col);
        w.Texte("Lignes", "Export", lig);
        for (int i = 0; i < kNbLignesExport; ++i)
            w.Nombre("Lignes", "Couleur_" + std::to_string(i + 1), s.couleursLignes[i]);
        w.Texte("Dossiers", "Export", s.dossierExport);
        w.Texte("ExportXML", "Dossier", s.dossierXML);
        w.Drapeau("ExportXML", "Actif", s.xmlActif);
        w.Nombre("Export", "Format", s.format);
        w.Nombre("Export", "ApresExport", s.apresExport);
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
        w.Echec();
    }
    return w.Fin(identite);
}

// ---- "_Internet" file ---------------------------------------------------------------------------

std::string SectionServeurFTP(int n) {
    return "ServeurFTP_" + std::to_string(n);
}

SettingsInternet InitSettingsInternet() {
    const std::string identite = Identite("InitSettingsInternet");
    TraceProc(identite);
    SettingsInternet s;
    try {
        const std::string f = FichierSettingsInternet();
        for (int n = 0; n < kNbServeursFTP; ++n) {
            ServeurFTP& e = s.serveurs[n];
            const std::string sec = SectionServeurFTP(n);
            e.serveur = ReadProfileString(sec, "Serveur", "", f);
            e.user = ReadProfileString(sec, "User", "", f);
            e.pw = ReadProfileString(sec, "PW", "", f);
            e.cnx = LitNombre(sec, "Cnx", 0, f) == 1 ? 1 : 0;
            e.dossier = ReadProfileString(sec, "Dossier", "", f);
            const long retry = LitNombre(sec, "Retry", e.retry, f);
            if (retry >= 1 && retry <= 100) e.retry = static_cast<int>(retry);
            e.ftps = LitDrapeau(sec, "FTPS", false, f);
        }
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
    }
    return s;
}

bool SaveSettingsInternet(const SettingsInternet& s) {
    const std::string identite = Identite("SaveSettingsInternet");
    TraceProc(identite);
    reglages::Ecriture w(FichierSettingsInternet());
    try {
        // The passwords are kept as typed: the file is private before the first key is written.
        if (!sys::FichierPrive(w.Fichier())) w.Echec();
        for (int n = 0; n < kNbServeursFTP; ++n) {
            const ServeurFTP& e = s.serveurs[n];
            const std::string sec = SectionServeurFTP(n);
            w.Texte(sec, "Serveur", e.serveur);
            w.Texte(sec, "User", e.user);
            w.Texte(sec, "PW", e.pw);
            w.Nombre(sec, "Cnx", e.cnx);
            w.Texte(sec, "Dossier", e.dossier);
            w.Nombre(sec, "Retry", e.retry);
            w.Drapeau(sec, "FTPS", e.ftps);
        }
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
        w.Echec();
    }
    return w.Fin(identite);
}

// ---- The whole set ------------------------------------------------------------------------------

Options ChargeOptions() {
    Options o;
    o.zl3 = InitSettingsZL3();
    o.look = InitSettingsLook();
    o.internet = InitSettingsInternet();
    o.exportation = InitSettingsExport();
    return o;
}

bool SauveOptions(const Options& o) {
    bool ok = SaveSettingsZL3(o.zl3);
    ok = SaveSettingsLook(o.look) && ok;
    ok = SaveSettingsInternet(o.internet) && ok;
    ok = SaveSettingsExport(o.exportation) && ok;
    return ok;
}

// ---- Loading the options window ------------------------------------------------------------

std::string TitreSetup() {
    return std::string("Options: ") + kTitreApplication + " - " + kVersionApplication;
}

InfosSetup InitGeneralSetup() {
    const std::string identite = Identite("InitGeneralSetup");
    TraceProc(identite);
    InfosSetup i;
    try {
        i.nbBases = DetermineDossierConfig_Bases_Nombre();
        const long zones = LitNombre("General_Out", "NbZones", 1, FichierSettings());
        if (zones >= 1) i.nbZones = static_cast<int>(zones);
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
    }
    return i;
}

ChargementSetup ChargeSetup(const std::function<void(const std::string&)>& statut) {
    auto annonce = [&statut](const char* etape) {
        if (statut) statut(std::string("Tools Stats: Setup: ") + etape);
    };
    ChargementSetup c;
    annonce("Init: General");
    c.general = InitGeneralSetup();
    annonce("Init: Settings");
    annonce("Init: Settings ZL3");
    c.options.zl3 = InitSettingsZL3();
    annonce("Init: SettingsLook");
    c.options.look = InitSettingsLook();
    annonce("Init: SettingsInternet");
    c.options.internet = InitSettingsInternet();
    annonce("Init: SettingsExcel");
    c.options.exportation = InitSettingsExport();
    annonce("Loaded");
    return c;
}

}  // namespace zl3
