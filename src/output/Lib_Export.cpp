#include "Lib_Export.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>

#include "CibleSortie.h"
#include "ClasseurXlsx.h"
#include "FichierXml.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace zl3 {

namespace {

std::string Minuscules(std::string s) {
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

// Busy cursor for the life of the object.
class Sablier {
  public:
    Sablier() { SablierOn(); }
    ~Sablier() { SablierOff(); }
    Sablier(const Sablier&) = delete;
    Sablier& operator=(const Sablier&) = delete;
};

// "Folder/Name.ext" → folder (with its separator) and name, as EclateRepFicE splits a path.
void EclateRepFicE(const std::string& chemin, std::string& dossier, std::string& fichier) {
    const size_t p = chemin.find_last_of("/\\");
    if (p == std::string::npos) {
        dossier.clear();
        fichier = chemin;
    } else {
        dossier = chemin.substr(0, p + 1);
        fichier = chemin.substr(p + 1);
    }
}

// One line of the export log: date-time, path, size written, result.
void EcritLogExport(FormatExport format, const std::string& chemin, int lignes, int colonnes,
                    const std::string& resultat) {
    try {
        const std::string& dossier = DossierLog(0);
        if (dossier.empty()) return;
        sys::CheckRep(dossier);
        const DateTime now = Svc().clock ? Svc().clock->Now() : DateTime{};
        const std::string ligne = FormatDDMMYYYY(now) + " " + FormatHHMMSS(now) + " | " + chemin +
                                  " | " + std::to_string(lignes) + " lignes x " +
                                  std::to_string(colonnes) + " colonnes | " + resultat + "\r\n";
        const std::string nom = dossier + NomLogExport(format);
        std::ofstream f(std::filesystem::path(std::u8string(nom.begin(), nom.end())),
                        std::ios::binary | std::ios::app);
        f << ligne;
    } catch (...) {
        // A log that cannot be written loses its line; the export itself stands.
    }
}

// Error number traced for an unexpected error, after the numbers the suite's traces use.
long NumeroErreur(const std::exception& e) {
    if (dynamic_cast<const std::bad_alloc*>(&e)) return 7;                      // out of memory
    if (dynamic_cast<const std::filesystem::filesystem_error*>(&e)) return 75;  // file access
    return 5;                                                                   // other
}

}  // namespace

FormatExport FormatDeReglage(int format) {
    switch (format) {
        case 2:
            return FormatExport::Xml;
        case 3:
            return FormatExport::Xlsx;
        default:
            return FormatExport::Xls;
    }
}

std::string ExtensionExport(FormatExport format) {
    switch (format) {
        case FormatExport::Xml:
            return ".xml";
        case FormatExport::Xlsx:
            return ".xlsx";
        default:
            return ".xls";
    }
}

std::string FiltreExport(FormatExport format) {
    switch (format) {
        case FormatExport::Xml:
            return "Fichiers xml|*.xml";
        case FormatExport::Xlsx:
            return "Fichiers xlsx|*.xlsx";
        default:
            return "Fichiers xls|*.xls";
    }
}

Grid AvecEntetesEnDonnees(const Grid& grille, std::vector<ZoneFusionnee>* fusions) {
    Grid copie = grille;
    const int niveaux = grille.HeaderRows();
    const int colonnesEntete = grille.HeaderCols();
    const int colonnes = grille.MaxCols();
    const int lignes = grille.MaxRows();
    copie.InsertCols(1, colonnesEntete);
    copie.InsertRows(1, niveaux);
    for (int niveau = 0; niveau < niveaux; ++niveau) {
        copie.SetText(1, niveau + 1, grille.ColHeader(niveau, 0));
        for (int c = 1; c <= colonnes; ++c)
            copie.SetText(colonnesEntete + c, niveau + 1, grille.ColHeader(niveau, c));
    }
    for (int r = 1; r <= lignes; ++r)
        for (int k = 0; k < colonnesEntete; ++k)
            copie.SetText(k + 1, niveaux + r, grille.RowHeader(k, r));
    if (fusions) {
        fusions->clear();
        for (const HeaderSpan& s : grille.Spans()) {
            if (s.count < 2 || s.level < 0 || s.level >= niveaux) continue;
            const int premiere = colonnesEntete + s.firstCol - 1;  // 0-based sheet column
            fusions->push_back({s.level, s.level, premiere, premiere + s.count - 1});
        }
    }
    return copie;
}

std::string NomLogExport(FormatExport format) {
    return format == FormatExport::Xml ? "ExportXML.Log" : "ExportExcel.Log";
}

std::string AvecExtension(const std::string& chemin, FormatExport format) {
    const std::string ext = ExtensionExport(format);
    if (chemin.size() >= ext.size() && Minuscules(chemin.substr(chemin.size() - ext.size())) == ext)
        return chemin;
    return chemin + ext;
}

std::string NomFichierExport(Rapport rapport, const std::string& station, const DateTime& debut,
                             const DateTime& fin, FormatExport format) {
    const std::string periode = "_Date_" + FormatYYYYMMDD(debut) + "_" + FormatYYYYMMDD(fin);
    std::string nom;
    switch (rapport) {
        case Rapport::Quotas:
            nom = "ZL3_Stats_Quotas_Station_" + station + periode;
            break;
        case Rapport::TopDiffusion:
            nom = "ZL3_Stats_Top_Diffusion_Station_" + station + periode;
            break;
        case Rapport::Sacem:
            nom = "ZL3_Quotas_Station_" + station + periode;
            break;
        case Rapport::Publicite:
            nom = "ZL3_Stats_Publicite_Diffusions" + periode;
            break;
    }
    return nom + ExtensionExport(format);
}

std::string NomFeuilleExport(Rapport rapport) {
    switch (rapport) {
        case Rapport::Quotas:
            return "Quotas";
        case Rapport::TopDiffusion:
            return "Top Diffusion";
        case Rapport::Sacem:
        case Rapport::Publicite:
            return "SACEM";
    }
    return "SACEM";
}

ResultatExport ExporteGrille(const Grid& grille, const DemandeExport& demande,
                             const DialogueEnregistrer& dialogue) {
    const std::string origine = demande.module + ":" + demande.procedure;
    ResultatExport resultat;
    bool ecritureTentee = false;
    int lignesEcrites = 0;
    int colonnesEcrites = 0;
    try {
        const bool xls = demande.format == FormatExport::Xls;
        const bool xlsx = demande.format == FormatExport::Xlsx;
        const int colonnesEntete = demande.entetesEnDonnees ? grille.HeaderCols() : 0;
        const int lignesEntete = demande.entetesEnDonnees ? grille.HeaderRows() : 0;
        colonnesEcrites = grille.MaxCols() + colonnesEntete;
        lignesEcrites = grille.MaxRows() + lignesEntete;
        const bool tient = xlsx ? TientDansUneFeuilleXlsx(colonnesEcrites, lignesEcrites)
                                : !xls || TientDansUneFeuilleXls(colonnesEcrites, lignesEcrites);
        if (!tient) {
            resultat.issue = IssueExport::Refuse;
            resultat.erreur = xlsx ? TexteTailleExcessiveXlsx() : TexteTailleExcessiveXls();
            TraceLog(origine + ": " + resultat.erreur + " (" + std::to_string(lignesEcrites) +
                     " x " + std::to_string(colonnesEcrites) + ")");
            AffMsg(resultat.erreur, kTitreApplication, kMbExclamation);
            return resultat;
        }

        const std::string dossier = sys::NativePath(demande.dossier);
        if (!dossier.empty() && !CheckRep(dossier))
            TraceLog("Err: " + origine + ": CheckRep: " + dossier);
        std::string chemin =
            dialogue ? dialogue(dossier, AvecExtension(demande.nomParDefaut, demande.format),
                                FiltreExport(demande.format))
                     : std::string();
        if (chemin.empty() || chemin == "*") {
            resultat.issue = IssueExport::Annule;
            return resultat;
        }
        chemin = AvecExtension(chemin, demande.format);
        resultat.chemin = chemin;
        // A folder, or a database file of the suite, is never replaced by an export.
        if (const ControleCible c = ControleCibleSortie(chemin, true); !c.Accepte()) {
            resultat.issue = IssueExport::Refuse;
            resultat.erreur = c.message;
            TraceLog("Err: " + origine + ": " + c.message);
            AffMsg(c.message, kTitreApplication, kMbExclamation);
            return resultat;
        }

        if (sys::FileExists(chemin)) {
            if (Question("Le fichier '" + chemin + "' existe déjà. Ecraser ?", kTitreApplication,
                         kMbYesNo) != kIdYes) {
                resultat.issue = IssueExport::NonEcrase;
                return resultat;
            }
            if (sys::File_Delete(chemin))
                TraceLog(demande.procedure + ": File_Delete: " + chemin);
            else
                TraceLog("Err: " + demande.procedure + ": File_Delete: " + chemin);
        }

        ResultatEcriture ecriture;
        {
            Sablier sablier;
            // The grid on screen is never touched: the headers go into the data of a copy.
            std::vector<ZoneFusionnee> fusions;
            std::optional<Grid> copie;
            if (demande.entetesEnDonnees) copie.emplace(AvecEntetesEnDonnees(grille, &fusions));
            const Grid& donnees = copie ? *copie : grille;
            MiseEnFormeClasseur forme;
            forme.lignesEntete = demande.entetesEnDonnees ? lignesEntete : 0;
            forme.colonnesEntete = demande.entetesEnDonnees ? colonnesEntete : 0;
            ecritureTentee = true;
            if (demande.ecrivain)
                ecriture = demande.ecrivain(chemin, donnees, fusions);
            else if (xls)
                ecriture = EcritClasseurXls(chemin, donnees, demande.nomFeuille, fusions);
            else if (xlsx)
                ecriture = EcritClasseurXlsx(chemin, donnees, demande.nomFeuille, fusions, forme);
            else
                ecriture = EcritFichierXml(chemin, donnees, demande.elementRacine,
                                           demande.elementCollection);
        }

        EcritLogExport(demande.format, chemin, lignesEcrites, colonnesEcrites,
                       ecriture.ok ? "OK" : "Erreur: " + ecriture.erreur);
        if (!ecriture.ok) {
            resultat.issue = IssueExport::Echec;
            resultat.erreur = ecriture.erreur;
            TraceLog("Err: " + origine + ": Export: " + chemin + ": " + ecriture.erreur);
            AffMsg("Erreur lors de l'export du fichier " + chemin, kTitreApplication,
                   kMbExclamation);
            return resultat;
        }

        resultat.issue = IssueExport::Exporte;
        TraceLog(origine + ": Export: " + chemin + " (" + std::to_string(lignesEcrites) + " x " +
                 std::to_string(colonnesEcrites) + ")");
        switch (demande.apresExport) {
            case 1:
                if (!Svc().shell || !Svc().shell->Open(chemin))
                    TraceLog("Err: " + origine + ": Open: " + chemin);
                break;
            case 2:
                AffMsg("Fichier " + chemin + " créé", kTitreApplication, kMbOk);
                break;
            default:
                AffMsg("Fichier " + chemin + " créé", kTitreApplication, kMbInformation);
                break;
        }
        return resultat;
    } catch (const std::exception& e) {
        TraceErreur(origine, NumeroErreur(e), e.what());
        resultat.issue = IssueExport::Echec;
        resultat.erreur = e.what();
    } catch (...) {
        TraceErreur(origine, 5, "unknown error");
        resultat.issue = IssueExport::Echec;
        resultat.erreur = "Erreur inattendue";
    }
    // Reached only through an unexpected error; the grid and the cursor are already restored.
    try {
        if (ecritureTentee) {
            EcritLogExport(demande.format, resultat.chemin, lignesEcrites, colonnesEcrites,
                           "Erreur: " + resultat.erreur);
            AffMsg("Erreur lors de l'export du fichier " + resultat.chemin, kTitreApplication,
                   kMbExclamation);
        }
    } catch (...) {
    }
    return resultat;
}

ResultatExport ExporteRapport(const Grid& grille, Rapport rapport, const std::string& station,
                              const DateTime& debut, const DateTime& fin,
                              const ReglagesExport& reglages, const DialogueEnregistrer& dialogue) {
    DemandeExport d;
    d.format = FormatDeReglage(reglages.format);
    d.dossier = reglages.dossier;
    d.nomParDefaut = NomFichierExport(rapport, station, debut, fin, d.format);
    d.nomFeuille = NomFeuilleExport(rapport);
    d.elementRacine = "Root";
    d.elementCollection = "Collection";
    d.entetesEnDonnees = true;
    d.apresExport = reglages.apresExport;
    d.module = "Frm_Main";
    d.procedure = "MnuExportExcel_Click";
    return ExporteGrille(grille, d, dialogue);
}

std::optional<std::string> CaptionExport(const std::string& nature) {
    if (nature == "XLS") return std::string("Export Excel");
    if (nature == "XML") return std::string("Export XML");
    return std::nullopt;
}

Grid TransfertDataHistorique(const Grid& source) {
    const Grid bloc = AvecEntetesEnDonnees(source);
    Grid g(bloc.MaxCols(), bloc.MaxRows());
    for (int c = 1; c <= bloc.MaxCols(); ++c) {
        g.SetGenre(c, bloc.Genre(c));
        g.SetColWidth(c, bloc.ColWidth(c));
        for (int r = 1; r <= bloc.MaxRows(); ++r)
            g.SetText(c, r, bloc.Text(c, r));
    }
    for (int k = 1; k <= source.HeaderCols(); ++k)
        g.SetColWidth(k, source.ColWidth(0));
    return g;
}

ResultatExport ExporteHistorique(const Grid& grille, const std::string& nature,
                                 const std::string& cheminParDefaut, int apresExport,
                                 const DialogueEnregistrer& dialogue) {
    DemandeExport d;
    d.module = "FrmExport";
    d.procedure = "Mnu01Export_Click";
    const std::string n = Minuscules(Trim(nature));
    if (n == "xls") {
        d.format = FormatExport::Xls;
    } else if (n == "xlsx") {
        d.format = FormatExport::Xlsx;
    } else if (n == "xml") {
        d.format = FormatExport::Xml;
    } else {
        ResultatExport r;
        r.issue = IssueExport::Refuse;
        r.erreur = "Nature d'export inconnue : '" + nature + "'";
        TraceLog("Err: " + d.module + ":" + d.procedure + ": " + r.erreur);
        return r;
    }
    EclateRepFicE(cheminParDefaut, d.dossier, d.nomParDefaut);
    d.nomFeuille = kFeuilleHistorique;
    d.elementRacine = "root_element";
    d.elementCollection = "collection_element";
    d.entetesEnDonnees = false;
    d.apresExport = apresExport;
    return ExporteGrille(grille, d, dialogue);
}

}  // namespace zl3
