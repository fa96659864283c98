// Export of a result grid to a spreadsheet (".xls") or XML (".xml") file: the command of the
// main window's menu (MnuExportExcel_Click) and of the history-export window
// (FrmExport.Mnu01Export_Click), without their save dialogs, which come in as a callback.
//
// The flow, shared by both windows (ExporteGrille):
//   1. a grid too large for one worksheet is refused at once for ".xls" (nothing is asked,
//      nothing deleted) with TexteTailleExcessiveXls();
//   2. the export folder is made to exist (CheckRep), the save dialog opens on it with the
//      default name and the single filter "Fichiers xls|*.xls" or "Fichiers xml|*.xml"; a
//      cancelled dialog ("" or "*") ends the command; a name not ending with the extension
//      (compared without regard to case) gets it appended;
//   3. an existing file is confirmed with "Le fichier '<path>' existe déjà. Ecraser ?" (Yes/No):
//      No ends the command with the file untouched, Yes deletes it first;
//   4. busy cursor on; for the main window, the header rows and row-header columns are put
//      into the grid's data as leading rows and columns, the data area is written (spreadsheet:
//      with the sheet name and the merged header spans; XML: with the element names), and the
//      inserted rows and columns are removed again — also when the write fails or throws — so
//      the grid is exactly as before; busy cursor off;
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
#include <string>
#include <vector>

#include "ClasseurXls.h"
#include "DateTime.h"
#include "EcritureFichier.h"
#include "Grid.h"
#include "Rapport.h"

namespace zl3 {

enum class FormatExport { Xls, Xml };

// The export settings of the settings store.
struct ReglagesExport {
    std::string dossier;  // export folder
    int format = 0;       // 0 and 1: spreadsheet; 2: XML
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

FormatExport FormatDeReglage(int format);
std::string ExtensionExport(FormatExport format);  // ".xls", ".xml"
std::string FiltreExport(FormatExport format);     // "Fichiers xls|*.xls", "Fichiers xml|*.xml"
std::string NomLogExport(FormatExport format);     // "ExportExcel.Log", "ExportXML.Log"
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
    // The file writer; empty means the writer of the format (EcritClasseurXls, EcritFichierXml).
    EcrivainExport ecrivain;
};

// The flow described at the top of this file.
ResultatExport ExporteGrille(Grid& grille, const DemandeExport& demande,
                             const DialogueEnregistrer& dialogue);

// The main window's export of the current report (MnuExportExcel_Click).
ResultatExport ExporteRapport(Grid& grille, Rapport rapport, const std::string& station,
                              const DateTime& debut, const DateTime& fin,
                              const ReglagesExport& reglages, const DialogueEnregistrer& dialogue);

// The history-export window's command (Mnu01Export_Click): `nature` "XLS" or "XML" (its
// TexteNature; any other text is refused without a dialog), `cheminParDefaut` split into the
// folder and the name the dialog opens with. Its grid already holds the headers as data.
ResultatExport ExporteHistorique(Grid& grille, const std::string& nature,
                                 const std::string& cheminParDefaut, int apresExport,
                                 const DialogueEnregistrer& dialogue);

}  // namespace zl3
