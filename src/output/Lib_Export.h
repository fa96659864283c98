// Export of a result grid to a spreadsheet (".xls", ".xlsx") or XML (".xml") file: the command
// of the main window's menu (MnuExportExcel_Click) and of the history-export window
// (FrmExport.Mnu01Export_Click), without their save dialogs, which come in as a callback.
//
// The flow, shared by both windows (ExporteGrille):
//   1. a grid too large for one worksheet is refused at once for ".xls" and ".xlsx" (nothing is
//      asked, nothing deleted) with TexteTailleExcessiveXls() / TexteTailleExcessiveXlsx();
//   2. the export folder is made to exist (CheckRep), the save dialog opens on it with the
//      default name and the single filter "Fichiers xls|*.xls", "Fichiers xml|*.xml" or
//      "Fichiers xlsx|*.xlsx"; a
//      cancelled dialog ("" or "*") ends the command; a name not ending with the extension
//      (compared without regard to case) gets it appended;
//   3. an existing file is confirmed with "Le fichier '<path>' existe déjà. Ecraser ?" (Yes/No):
//      No ends the command with the file untouched, Yes deletes it first;
//   4. busy cursor on; for the main window, the header rows and row-header columns are put
//      into the data of a copy of the grid as leading rows and columns (AvecEntetesEnDonnees)
//      and the copy is written (spreadsheet: with the sheet name and the merged header spans;
//      XML: with the element names). The grid itself is only read: what is on screen does not
//      change at any instant, not even its revision; busy cursor off;
//   5. one line is added to the export log, "ExportExcel.Log" or "ExportXML.Log", kept in the
//      tool's log folder (DossierLog(0)) beside the daily trace logs; no folder set, no line;
//   6. success, by the after-export setting: 0 "Fichier <path> créé" with the information icon,
//      1 the file opened with the shell's "Open", 2 "Fichier <path> créé" without icon (any
//      other value is taken as 0); failure: "Erreur lors de l'export du fichier <path>" with the
//      exclamation icon, no "créé" message, nothing opened. The reason goes to the trace and the
//      export log.
// Unexpected errors are traced with the window's origin ("Frm_Main:MnuExportExcel_Click",
// "FrmExport:Mnu01Export_Click") and end the command with the grid restored.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ClasseurXls.h"
#include "ClasseurXlsx.h"
#include "DateTime.h"
#include "EcritureFichier.h"
#include "Grid.h"
#include "Rapport.h"

namespace zl3 {

enum class FormatExport { Xls, Xml, Xlsx };

// The export settings of the settings store.
struct ReglagesExport {
    std::string dossier;  // export folder
    int format = 0;       // 0 and 1: spreadsheet (".xls"); 2: XML; 3: ".xlsx" workbook
    int apresExport = 0;  // 0, 1, 2 as described above
};

// The save dialog: opens on `dossier` with `nomParDefaut` and the one filter `filtre`, and
// returns the chosen path, "" or "*" when cancelled. Headless callers return a fixed path.
using DialogueEnregistrer = std::function<std::string(
    const std::string& dossier, const std::string& nomParDefaut, const std::string& filtre)>;

enum class IssueExport {
    Exporte,    // file written
    Annule,     // dialog cancelled
    NonEcrase,  // existing file kept (overwrite declined)
    Refuse,     // grid too large for the format, or an export request that cannot be served
    Echec,      // write failed or unexpected error
};

struct ResultatExport {
    IssueExport issue = IssueExport::Annule;
    std::string chemin;  // the file written or that could not be written; empty before the dialog
    std::string erreur;  // why not, for a log or a console
    bool Ok() const { return issue == IssueExport::Exporte; }
};

// ---- Names ----------------------------------------------------------------------------------

// Format of the "Format" value of the export settings: 2 XML, 3 ".xlsx", anything else ".xls".
FormatExport FormatDeReglage(int format);
std::string ExtensionExport(FormatExport format);  // ".xls", ".xml", ".xlsx"
// "Fichiers xls|*.xls", "Fichiers xml|*.xml", "Fichiers xlsx|*.xlsx"
std::string FiltreExport(FormatExport format);
// "ExportExcel.Log" (both spreadsheet formats), "ExportXML.Log"
std::string NomLogExport(FormatExport format);
// `chemin` with the extension of `format` appended unless it already ends with it (any case).
std::string AvecExtension(const std::string& chemin, FormatExport format);

// Default file name of a report's export, extension included; dates rendered "yyyyMMdd":
//   Quotas        "ZL3_Stats_Quotas_Station_" station "_Date_" start "_" end
//   Top Diffusion "ZL3_Stats_Top_Diffusion_Station_" station "_Date_" start "_" end
//   SACEM         "ZL3_Quotas_Station_" station "_Date_" start "_" end   (the suite's name)
//   Publicite     "ZL3_Stats_Publicite_Diffusions_Date_" start "_" end
std::string NomFichierExport(Rapport rapport, const std::string& station, const DateTime& debut,
                             const DateTime& fin, FormatExport format);
// Sheet name of a report: "Quotas", "Top Diffusion", "SACEM"; the advertising report's sheet is
// named "SACEM" too, as the suite has always written it.
std::string NomFeuilleExport(Rapport rapport);
// Sheet name of the history export.
inline constexpr const char* kFeuilleHistorique = "Feuil1";

// A copy of `grille` whose data holds, before its own rows and columns, the header rows (top
// level first, corner texts in the leading columns) and the row-header columns; `fusions`, when
// given, receives the merged header spans in sheet coordinates of that data area. The copy keeps
// the grid's header rows and column kinds (the kinds move with their columns).
Grid AvecEntetesEnDonnees(const Grid& grille, std::vector<ZoneFusionnee>* fusions = nullptr);

// ---- The command ----------------------------------------------------------------------------

// Writes the exported data area; returns the writer's result.
using EcrivainExport = std::function<ResultatEcriture(
    const std::string& chemin, const Grid& donnees, const std::vector<ZoneFusionnee>& fusions)>;

struct DemandeExport {
    FormatExport format = FormatExport::Xls;
    std::string dossier;        // folder the dialog opens on
    std::string nomParDefaut;   // file name proposed
    std::string nomFeuille;     // spreadsheet: sheet name
    std::string elementRacine;  // XML: root and collection element names
    std::string elementCollection;
    bool entetesEnDonnees = true;  // put the headers into the data before writing
    int apresExport = 0;
    std::string module;     // origin of traces: module …
    std::string procedure;  // … and procedure
    // The file writer; empty means the writer of the format (EcritClasseurXls, EcritFichierXml,
    // EcritClasseurXlsx).
    EcrivainExport ecrivain;
};

// The flow described at the top of this file.
ResultatExport ExporteGrille(const Grid& grille, const DemandeExport& demande,
                             const DialogueEnregistrer& dialogue);

// The main window's export of the current report (MnuExportExcel_Click).
ResultatExport ExporteRapport(const Grid& grille, Rapport rapport, const std::string& station,
                              const DateTime& debut, const DateTime& fin,
                              const ReglagesExport& reglages, const DialogueEnregistrer& dialogue);

// ---- The history-export window (FrmExport) ------------------------------------------------

// Caption of the window for its TexteNature: "XLS" "Export Excel", "XML" "Export XML"; any
// other nature leaves the caption as it is (nullopt).
std::optional<std::string> CaptionExport(const std::string& nature);

// TransfertDataHistorique: the whole block of `source` — its header rows and row-header
// columns included, as data — copied into a new grid for the window: header rows first (top level
// first, corner texts in the leading columns), then the rows, each with its row headers first.
// The window's grid keeps one empty header row and column of its own; column kinds follow their
// columns, so the counts stay numbers in an ".xlsx" export.
Grid TransfertDataHistorique(const Grid& source);

// The history-export window's command (Mnu01Export_Click): `nature` "XLS" or "XML" (its
// TexteNature, or "XLSX"; any other text is refused without a dialog), `cheminParDefaut` split
// into the folder and the name the dialog opens with. Its grid already holds the headers as data.
ResultatExport ExporteHistorique(const Grid& grille, const std::string& nature,
                                 const std::string& cheminParDefaut, int apresExport,
                                 const DialogueEnregistrer& dialogue);

}  // namespace zl3
