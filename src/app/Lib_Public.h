// Lib_Public: the trace log, error reporting and the small text helpers shared by every module.
//
// Trace lines are collected in memory (the debug screen shows them as they come) and flushed in
// one go to the daily log file "yyyyMMdd.Log" of the log folder. Errors inside the trace never
// reach the caller: a log folder that cannot be written just loses its lines.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zl3 {

inline constexpr const char* kTitreApplication = "Zelvar: Tools Stats";
inline constexpr const char* kVersionApplication = "3.4.0";
inline constexpr const char* kNomProduit = "Zelvar Tools Stats";

// ---- Trace state ----------------------------------------------------------------------------

struct TraceState {
    std::vector<std::string> lines;  // in-memory trace list, flushed by TraceLogForce
    bool writeToFile = true;         // a forced trace call flushes at once
    bool procEntryTracing = false;   // every procedure traces its identity on entry
    bool reboot45Written = false;    // one-shot latches of the reboot advice
    bool reboot48Written = false;
    std::optional<int64_t> lastLineStopwatch;  // stopwatch of the last stamped line
    std::string lastHeaderDate;                // "yyyyMMdd" of the last header block written
    std::string lastPurgeDate;                 // "yyyyMMdd" of the last purge
    std::vector<std::string> logFolders = std::vector<std::string>(20);  // native, trailing sep
    // Called with each new line (the debug screen's list).
    std::function<void(const std::string&)> onLine;
    int lastAnswer = 0;  // button of the last error message shown
};

TraceState& Trace();
// Back to a fresh state (tests; a new run).
void ResetTrace();
// Number of configured log-folder slots; an index outside 0..19 is a programming error and
// throws std::out_of_range.
inline constexpr int kNbDossiersLog = 20;
void SetDossierLog(int index, const std::string& folder);
const std::string& DossierLog(int index);

// ---- Trace routines -------------------------------------------------------------------------

// One trace line. site, base and station -1 give the usual blank columns; site and base both -2
// mark a debug line. With `force` and write-to-file on, the list is flushed at once.
void TraceLog(int site, int base, int station, const std::string& text, bool force = false);
inline void TraceLog(const std::string& text, bool force = false) {
    TraceLog(-1, -1, -1, text, force);
}
// Framed line: "----- " & text & " -----".
void TraceLogEncadre(const std::string& text, bool force = false);
// Procedure-entry trace: when the switch is on, the procedure's identity ("Module:Procedure").
void TraceProc(const std::string& identity);
// Error exit of a procedure: "Err: " & number & " " & description & " |" & identity.
void TraceErreur(const std::string& identity, long number, const std::string& description);

// Flushes the trace list to the log file of log folder `logIndex`. `fileName` empty: the daily
// name "yyyyMMdd" (of yesterday when `yesterday` is set) & ".Log". The header block is written
// on the first flush of a day or when `header` is asked; the purge runs once a day.
void TraceLogForce(const std::string& fileName = "", bool yesterday = false, bool header = false,
                   int logIndex = 0);
// Full path of today's log file of log folder `logIndex`.
std::string FichierLogDuJour(int logIndex = 0);
// Opens today's log with the shell (menu "Log" of the main window).
void LectureLog();
// The uptime text of the header block ("3 D 4 H 5 Min 6 Sec").
std::string TexteDureeDepuisDemarrage(int64_t tickMs);

// ---- Error reporting ------------------------------------------------------------------------

// Catalogue text of an error code; `value` is the caller's extra value (a file or folder name).
std::string TexteErreur(long code, const std::string& value = "");
// Turns an error code into its French message, traces it and, unless `quiet`, shows it. The
// answer is kept in Trace().lastAnswer and returned.
int GestErr_Fra(long code, const std::string& source, bool quiet, const std::string& procName,
                const std::string& value = "");

// Error codes of the catalogue used by this tool.
enum CodeErreur : long {
    kErrInfosSysteme = 1,
    kErrApplicationChargee = 2,
    kErrP16R16 = 4,
    kErrInformation = 5,
    kErrPciDask = 8,
    kErrStationHorsLimite = 9,
    kErrMotDePasse = 1002,
    kErrDossierConfigInitialise = 1010,
    kErrProblemeDossier = 1011,
    kErrFichierIniIllisible = 1012,
};

// ---- Text helpers ---------------------------------------------------------------------------

// `text` padded on the right with `pad` (a blank when empty) and cut to exactly `width` bytes.
// Fixed-width record fields and keys are single-byte texts, so the width counts bytes.
std::string Calibre(const std::string& text, int width, const std::string& pad = "");
// The same for display texts in UTF-8: the width counts characters.
std::string CalibreTexte(const std::string& text, int width, const std::string& pad = "");
// An error text made fit for one line of a message or a log: line breaks, tabs and other control
// characters become blanks, runs of blanks shrink to one, ends trimmed.
std::string NettoieLibErr(const std::string& text);
// Duration in seconds as minutes and seconds, "m:ss" ("3:07", "12:45", "0:00").
std::string Tps2MinSec(long seconds);
// Spot number of an advertising message: the number written in its spot-number field (leading
// digits after the blanks; 0 when there are none).
long PubNoSpot(const std::string& texte);
// Text without leading and trailing blanks.
std::string Trim(const std::string& text);
// Makes sure a folder exists (created with its parents); false when it cannot be.
bool CheckRep(const std::string& folder);
// Busy cursor on / off through the event loop service.
void SablierOn();
void SablierOff();

}  // namespace zl3
