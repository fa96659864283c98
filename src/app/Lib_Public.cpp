#include "Lib_Public.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include "EtatGlobal.h"
#include "Lib_Messages.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace fs = std::filesystem;

namespace zl3 {
namespace {

const char* kHeaderRule = "==:==:==:====:=:=:=:===========================================";
const char* kHeaderPrefix = "==:==:==:====:=:=:=:";

Clock& Clk() {
    return *Svc().clock;
}

std::string Field(int value) {
    if (value < 0) return " :";
    return std::to_string(value) + ":";
}

std::string StationField(int station) {
    if (station < 0) return " :";
    if (station >= 10) return std::string(1, static_cast<char>(station + 55)) + ":";
    return std::to_string(station) + ":";
}

// The elapsed-time column of a new line (see TraceLog).
std::string ElapsedColumn() {
    TraceState& t = Trace();
    const int64_t now = Clk().Stopwatch();
    if (!t.lastLineStopwatch) {
        t.lastLineStopwatch = now;
        return "    :";
    }
    const int64_t elapsed = now - *t.lastLineStopwatch;
    if (elapsed > 9999) {
        t.lastLineStopwatch = now;
        return "xxxx:";
    }
    if (elapsed > 20) {
        t.lastLineStopwatch = now;
        char buf[16];
        std::snprintf(buf, sizeof buf, "%4lld:", static_cast<long long>(elapsed));
        return buf;
    }
    return "    :";  // short steps accumulate until they cost more than 20 ms
}

void AppendLine(const std::string& line) {
    TraceState& t = Trace();
    t.lines.push_back(line);
    if (t.onLine) t.onLine(line);
}

bool IsLogFile(const fs::path& p) {
    std::string ext = p.extension().string();
    for (char& c : ext)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".log";
}

void Purge(const DateTime& today, const std::string& folder) {
    const std::string cutOff = FormatYYYYMMDD(AddDays(today, -45));
    std::error_code ec;
    std::vector<fs::path> doomed;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path p = it->path();
        if (!it->is_regular_file(ec) || !IsLogFile(p)) continue;
        if (p.stem().string() < cutOff) doomed.push_back(p);
    }
    for (const fs::path& p : doomed) {
        std::error_code rec;
        if (fs::remove(p, rec))
            TraceLog("Lib_Public:TraceLogForce: Delete: " + p.filename().string());
        else
            TraceLog("Err: Lib_Public:TraceLogForce: Delete: " + p.filename().string());
    }
}

}  // namespace

TraceState& Trace() {
    static TraceState state;
    return state;
}

void ResetTrace() {
    Trace() = TraceState{};
}

namespace {
const EnregistrementEtat kEtatTrace{"Lib_Public", &ResetTrace};
}  // namespace

void SetDossierLog(int index, const std::string& folder) {
    Trace().logFolders.at(static_cast<size_t>(index)) = sys::WithTrailingSep(folder);
}

const std::string& DossierLog(int index) {
    if (index < 0 || index >= kNbDossiersLog) throw std::out_of_range("log folder index");
    return Trace().logFolders.at(static_cast<size_t>(index));
}

void TraceLog(int site, int base, int station, const std::string& text, bool force) {
    try {
        if (Trim(text).empty()) return;
        const DateTime now = Clk().Now();
        std::string prefix = FormatHHMMSS(now) + " :";
        if (site == -2 && base == -2)
            prefix += "Debug:";
        else
            prefix += Field(site) + Field(base) + StationField(station);
        prefix += ElapsedColumn();
        AppendLine(FormatDDMM(now) + " " + prefix + text);
        if (force && Trace().writeToFile) TraceLogForce();
    } catch (...) {
        // The trace never stops the tool.
    }
}

void TraceLogEncadre(const std::string& text, bool force) {
    TraceLog("----- " + text + " -----", force);
}

void TraceProc(const std::string& identity) {
    if (Trace().procEntryTracing) TraceLog(identity);
}

void TraceErreur(const std::string& identity, long number, const std::string& description) {
    TraceLog("Err: " + std::to_string(number) + " " + NettoieLibErr(description) + " |" + identity);
}

std::string TexteDureeDepuisDemarrage(int64_t tickMs) {
    int64_t seconds = tickMs / 1000;
    int64_t minutes = seconds / 60;
    seconds %= 60;
    int64_t hours = minutes / 60;
    minutes %= 60;
    const int64_t days = hours / 24;
    hours %= 24;
    std::string s;
    if (days > 0) s += std::to_string(days) + " D ";
    if (days > 0 || hours > 0) s += std::to_string(hours) + " H ";
    s += std::to_string(minutes) + " Min " + std::to_string(seconds) + " Sec";
    return s;
}

std::string FichierLogDuJour(int logIndex) {
    return DossierLog(logIndex) + FormatYYYYMMDD(Clk().Now()) + ".Log";
}

void TraceLogForce(const std::string& fileName, bool yesterday, bool header, int logIndex) {
    const std::string& folder = DossierLog(logIndex);  // a bad index is the caller's bug
    try {
        TraceState& t = Trace();
        const DateTime today = Clk().Now();
        const DateTime fileDate = yesterday ? AddDays(today, -1) : today;
        const std::string name = fileName.empty() ? FormatYYYYMMDD(fileDate) : fileName;
        if (folder.empty()) return;
        const std::string path = folder + name + ".Log";

        std::vector<std::string> out;
        const std::string dateKey = FormatYYYYMMDD(fileDate);
        const int64_t tick = Clk().TickCount();
        if (header || t.lastHeaderDate != dateKey) {
            const std::string theme = sys::ThemeActive() == "0" ? "WinClassic" : "WinXP";
            out.push_back(kHeaderRule);
            out.push_back(std::string(kHeaderPrefix) + "System started since " +
                          TexteDureeDepuisDemarrage(tick));
            out.push_back(std::string(kHeaderPrefix) + "App.Version: " + kVersionApplication);
            out.push_back(std::string(kHeaderPrefix) + "App.ExeName: " + sys::NomExecutable() +
                          ".exe");
            out.push_back(std::string(kHeaderPrefix) + "App.ProductName: " + kNomProduit);
            out.push_back(std::string(kHeaderPrefix) + "Computer.Name: " + sys::ComputerName());
            out.push_back(std::string(kHeaderPrefix) + "ActiveTheme: " + theme);
            out.push_back(std::string(kHeaderPrefix) +
                          "Operating System: " + sys::OperatingSystemName());
            out.push_back(kHeaderRule);
            t.lastHeaderDate = dateKey;
        }
        const int64_t day = 86400000LL;
        if (tick > 45 * day && !t.reboot45Written) {
            t.reboot45Written = true;
            TraceLog("Reboot needed because computer started since more 45 days");
        }
        if (tick >= 49 * day && !t.reboot48Written) {
            t.reboot48Written = true;
            TraceLog("Reboot needed because computer started since more 48 days");
        }

        sys::CheckRep(folder);
        {
            std::ofstream f(path, std::ios::binary | std::ios::app);
            if (f) {
                for (const std::string& l : out)
                    f << l << "\r\n";
                for (const std::string& l : t.lines)
                    f << l << "\r\n";
            }
            // Lines that cannot be written are lost, as a full disk would lose them.
        }
        t.lines.clear();

        const std::string todayKey = FormatYYYYMMDD(today);
        if (t.lastPurgeDate != todayKey) {
            t.lastPurgeDate = todayKey;
            Purge(today, folder);
        }
    } catch (...) {
        // The trace never stops the tool.
    }
}

void LectureLog() {
    try {
        TraceLogForce();
        Svc().shell->Open(FichierLogDuJour());
    } catch (...) {
    }
}

// ---- Errors ---------------------------------------------------------------------------------

std::string TexteErreur(long code, const std::string& value) {
    static const std::map<long, std::string> kTexts = {
        {1, "Les informations système ne sont pas disponibles actuellement"},
        {2, "Application encore chargée en mémoire"},
        {3, "Mémoire insuffisante"},
        {4, "P16R16.DLL absent"},
        {5, "Information"},
        {6, "Carte son absente ou non configurée"},
        {7, "Périphérique audio occupé"},
        {8, "Pci-Dask.dll absent"},
        {9, "N° station hors limite:"},
        {1001, "Utilisateur inconnu"},
        {1002, "Mot de passe erroné"},
        {1003, "Droits insuffisants pour cette opération"},
        {1004, "Fichier de paramètres absent:"},
        {1005, "Fichier de paramètres illisible:"},
        {1006, "Section absente du fichier de paramètres:"},
        {1007, "Clé absente du fichier de paramètres:"},
        {1008, "Valeur de paramètre incorrecte:"},
        {1009, "Impossible d'écrire le fichier de paramètres:"},
        {1010, "Dossier de config initialisé à '"},
        {1011, "Problème avec le dossier '"},
        {1012, "Fichier ini illisible:"},
        {1013, "Nombre de bases incorrect:"},
        {1014, "Nombre de stations incorrect:"},
        {1015, "Base non configurée:"},
        {2001, "Fichier introuvable:"},
        {2002, "Impossible de créer le fichier:"},
        {2003, "Impossible de supprimer le fichier:"},
        {2004, "Impossible de copier le fichier:"},
        {2005, "Impossible de renommer le fichier:"},
        {2006, "Dossier introuvable:"},
        {2007, "Impossible de créer le dossier:"},
        {2008, "Disque plein:"},
        {2009, "Fichier en cours d'utilisation:"},
        {2010, "Accès refusé:"},
        {10001, "Base de données inaccessible:"},
        {10002, "Fichier de données absent:"},
        {10003, "Fichier de données endommagé:"},
        {10004, "Enregistrement introuvable:"},
        {10005, "Enregistrement verrouillé par un autre poste:"},
        {11001, "Connexion réseau impossible:"},
        {11002, "Serveur introuvable:"},
        {11003, "Transfert interrompu:"},
        {20001, "Impression impossible"},
        {20002, "Aucune imprimante installée"},
        {30000, "Export impossible:"},
        {30001, "Fichier d'export en cours d'utilisation:"},
        {35000, "Fichier audio illisible:"},
        {35001, "Format audio non reconnu:"},
        {40000, "Erreur inattendue"},
    };
    const auto it = kTexts.find(code);
    if (it == kTexts.end()) return "Err: " + std::to_string(code) + " inconnue";
    std::string text = it->second;
    if (code == kErrDossierConfigInitialise || code == kErrProblemeDossier)
        return text + value + "'";
    if (!value.empty() && !text.empty() && text.back() == ':') text += " " + value;
    if (code == kErrStationHorsLimite && !value.empty()) text = it->second + value;
    return text;
}

int GestErr_Fra(long code, const std::string& source, bool quiet, const std::string& procName,
                const std::string& value) {
    try {
        std::string message = TexteErreur(code, value);
        std::string title = kTitreApplication;
        if (source.find("Source:") != std::string::npos) {
            message += "\n" + source;
            title = Libelle_Fra("Droits", 0);
        } else if (source.empty()) {
            title = Libelle_Fra("Droits", 0);
        }
        if (!procName.empty()) message += "\n(Sub: " + procName + ")";
        TraceLog("Err: " + std::to_string(code) + ": " + NettoieLibErr(message));
        if (quiet) return 0;
        int style;
        if (code == kErrInformation) {
            style = kMbInformation;
            title = kTitreApplication;
        } else if (code == kErrStationHorsLimite || code == 1001) {
            style = kMbCritical;
        } else {
            style = kMbExclamation;
        }
        const int answer = AffMsg(message, Trim(title), style);
        Trace().lastAnswer = answer;
        return answer;
    } catch (...) {
        return 0;
    }
}

// ---- Text helpers ---------------------------------------------------------------------------

std::string Calibre(const std::string& text, int width, const std::string& pad) {
    if (width <= 0) return {};
    const std::string p = pad.empty() ? std::string(" ") : pad.substr(0, 1);
    std::string s = text.substr(0, static_cast<size_t>(width));
    while (static_cast<int>(s.size()) < width)
        s += p;
    return s;
}

std::string CalibreTexte(const std::string& text, int width, const std::string& pad) {
    if (width <= 0) return {};
    const std::string p = pad.empty() ? std::string(" ") : pad;
    std::string out;
    int count = 0;
    size_t i = 0;
    while (i < text.size() && count < width) {
        size_t len = 1;
        const auto b = static_cast<unsigned char>(text[i]);
        if (b >= 0xF0)
            len = 4;
        else if (b >= 0xE0)
            len = 3;
        else if (b >= 0xC0)
            len = 2;
        out += text.substr(i, len);
        i += len;
        ++count;
    }
    while (count < width) {
        out += p;
        ++count;
    }
    return out;
}

std::string NettoieLibErr(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        const auto b = static_cast<unsigned char>(c);
        const char d = (b < 32 || b == 127) ? ' ' : c;
        if (d == ' ' && (out.empty() || out.back() == ' ')) continue;
        out += d;
    }
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

std::string Tps2MinSec(long seconds) {
    if (seconds < 0) seconds = 0;
    return std::to_string(seconds / 60) + ":" + PadNumber(seconds % 60, 2);
}

long PubNoSpot(const std::string& texte) {
    const std::string t = Trim(texte);
    long n = 0;
    for (char c : t) {
        if (c < '0' || c > '9' || n > 99999999) break;
        n = n * 10 + (c - '0');
    }
    return n;
}

std::string Trim(const std::string& text) {
    size_t a = 0;
    size_t b = text.size();
    while (a < b && (text[a] == ' ' || text[a] == '\t' || text[a] == '\r' || text[a] == '\n'))
        ++a;
    while (b > a && (text[b - 1] == ' ' || text[b - 1] == '\t' || text[b - 1] == '\r' ||
                     text[b - 1] == '\n'))
        --b;
    return text.substr(a, b - a);
}

bool CheckRep(const std::string& folder) {
    return sys::CheckRep(folder);
}

void SablierOn() {
    if (Svc().events) Svc().events->SetBusy(true);
}

void SablierOff() {
    if (Svc().events) Svc().events->SetBusy(false);
}

}  // namespace zl3
