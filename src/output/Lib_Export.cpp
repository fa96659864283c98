#include "Lib_Export.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>

#include "CibleSortie.h"
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

// The grid's header rows and row-header columns put into its data as leading rows and columns
// for the time of the export, and taken out again when the object goes, whatever happened in
// between. Header texts (corner cells included) are copied into the inserted cells; the header
// cells themselves keep their texts, so removing the inserted rows and columns gives back the
// grid as it was, merged spans included (they move with the columns).
class EntetesEnDonnees {
  public:
    explicit EntetesEnDonnees(Grid& grille) : grille_(grille) {}
    ~EntetesEnDonnees() {
        try {
            if (lignes_ > 0) grille_.DeleteRows(1, lignes_);
            if (colonnes_ > 0) grille_.DeleteCols(1, colonnes_);
        } catch (...) {
            TraceLog("Err: Lib_Export:EntetesEnDonnees: grid not restored");
        }
    }
    EntetesEnDonnees(const EntetesEnDonnees&) = delete;
    EntetesEnDonnees& operator=(const EntetesEnDonnees&) = delete;

    void Insere() {
        const int niveaux = grille_.HeaderRows();
        const int colonnesEntete = grille_.HeaderCols();
        const int colonnes = grille_.MaxCols();
        const int lignes = grille_.MaxRows();
        grille_.InsertCols(1, colonnesEntete);
        colonnes_ = colonnesEntete;
        grille_.InsertRows(1, niveaux);
        lignes_ = niveaux;
        for (int niveau = 0; niveau < niveaux; ++niveau) {
            grille_.SetText(1, niveau + 1, grille_.ColHeader(niveau, 0));
            for (int c = 1; c <= colonnes; ++c)
                grille_.SetText(colonnesEntete + c, niveau + 1,
                                grille_.ColHeader(niveau, colonnesEntete + c));
        }
        for (int r = 1; r <= lignes; ++r)
            for (int k = 0; k < colonnesEntete; ++k)
                grille_.SetText(k + 1, niveaux + r, grille_.RowHeader(k, niveaux + r));
    }

    // The header spans as merged zones of the exported sheet (header level = sheet row).
    std::vector<ZoneFusionnee> Fusions() const {
        std::vector<ZoneFusionnee> zones;
        for (const HeaderSpan& s : grille_.Spans()) {
            if (s.count < 2 || s.level < 0 || s.level >= lignes_) continue;
            zones.push_back({s.level, s.level, s.firstCol - 1, s.firstCol - 1 + s.count - 1});
        }
        return zones;
    }

  private:
    Grid& grille_;
    int lignes_ = 0;
    int colonnes_ = 0;
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
    return format == 2 ? FormatExport::Xml : FormatExport::Xls;
}

std::string ExtensionExport(FormatExport format) {
    return format == FormatExport::Xml ? ".xml" : ".xls";
}

std::string FiltreExport(FormatExport format) {
    return format == FormatExport::Xml ? "Fichiers xml|*.xml" : "Fichiers xls|*.xls";
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

ResultatExport ExporteGrille(Grid& grille, const DemandeExport& demande,
                             const DialogueEnregistrer& dialogue) {
    const std::string origine = demande.module + ":" + demande.procedure;
    ResultatExport resultat;
    bool ecritureTentee = false;
    int lignesEcrites = 0;
    int colonnesEcrites = 0;
    try {
        const bool xls = demande.format == FormatExport::Xls;
        const int colonnesEntete = demande.entetesEnDonnees ? grille.HeaderCols() : 0;
        const int lignesEntete = demande.entetesEnDonnees ? grille.HeaderRows() : 0;
        colonnesEcrites = grille.MaxCols() + colonnesEntete;
        lignesEcrites = grille.MaxRows() + lignesEntete;
        if (xls && !TientDansUneFeuilleXls(colonnesEcrites, lignesEcrites)) {
            resultat.issue = IssueExport::Refuse;
            resultat.erreur = TexteTailleExcessiveXls();
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
            EntetesEnDonnees entetes(grille);
            if (demande.entetesEnDonnees) entetes.Insere();
            const std::vector<ZoneFusionnee> fusions =
                demande.entetesEnDonnees ? entetes.Fusions() : std::vector<ZoneFusionnee>();
            ecritureTentee = true;
            if (demande.ecrivain)
                ecriture = demande.ecrivain(chemin, grille, fusions);
            else if (xls)
                ecriture = EcritClasseurXls(chemin, grille, demande.nomFeuille, fusions);
            else
                ecriture = EcritFichierXml(chemin, grille, demande.elementRacine,
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

ResultatExport ExporteRapport(Grid& grille, Rapport rapport, const std::string& station,
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

ResultatExport ExporteHistorique(Grid& grille, const std::string& nature,
                                 const std::string& cheminParDefaut, int apresExport,
                                 const DialogueEnregistrer& dialogue) {
    DemandeExport d;
    d.module = "FrmExport";
    d.procedure = "Mnu01Export_Click";
    const std::string n = Minuscules(Trim(nature));
    if (n == "xls") {
        d.format = FormatExport::Xls;
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
