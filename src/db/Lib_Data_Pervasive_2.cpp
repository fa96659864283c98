#include "Lib_Data_Pervasive_2.h"

#include <optional>

#include "Catalogue.h"
#include "Cp1252.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace zl3 {
namespace {

std::optional<int64_t>& DernierRapportReseau() {
    static std::optional<int64_t> when;
    return when;
}

// Explanations appended to the reports of the statuses that need the user to act.
std::string Explication(int status, int16_t operation) {
    switch (status) {
        case 2:
            return "Le fichier est peut-être endommagé. Faites vérifier la base de données "
                   "(zl3-btr check) avant de continuer.";
        case 14:
        case 15:
            return "Le fichier de pré-image ne peut pas être créé ou ouvert: vérifiez les droits "
                   "d'écriture et la place libre dans le dossier des données.";
        case 19:
            return "Erreur irrécupérable: restaurez le fichier depuis la dernière sauvegarde.";
        case 30:
            return "Le fichier n'est pas un fichier de la base de données: il a peut-être été "
                   "remplacé ou copié incomplètement.";
        case 4:
            if (operation == kBtrDelete)
                return "L'enregistrement à supprimer n'existe plus: un autre poste l'a "
                       "peut-être déjà supprimé.";
            return "";
        default:
            return "";
    }
}

}  // namespace

std::string ErreurBTrieveLibelle(int status, const std::string& nomFichier) {
    std::string t;
    switch (status) {
        case 1:
            t = "Err: 1: The operation parameter is invalid";
            break;
        case 2:
            t = "Err: 2: The application encountered an I/O error";
            break;
        case 3:
            t = "Err: 3: The file is not open";
            break;
        case 4:
            t = "Err: 4: The application cannot find the key value";
            break;
        case 5:
            t = "Err: 5: The record has a key field containing a duplicate key value";
            break;
        case 6:
            t = "Err: 6: The key number parameter is invalid";
            break;
        case 7:
            t = "Err: 7: The key number has changed";
            break;
        case 8:
            t = "Err: 8: The current positioning is invalid";
            break;
        case 11:
            t = "Err: 11: The specified filename is invalid (" + nomFichier + ")";
            break;
        case 12:
            t = "Err: 12: The MicroKernel cannot find the specified file (" + nomFichier + ")";
            break;
        case 18:
            t = "Err: 18: The disk is full";
            break;
        case 19:
            t = "Err: 19: The application encountered an unrecoverable error";
            break;
        case 30:
            t = "Err: 30: The file specified is not a MicroKernel file";
            break;
        case 46:
            t = "Err: 46: Access to the requested file is denied (File locked ?)";
            break;
        case 161:
            t = "Err: 161: The maximum number of user count licenses has been reached";
            break;
        case 2007:
            t = "Err: 2007: A pointer parameter is invalid";
            break;
        default:
            if (status >= 3103 && status <= 3132)
                t = "Err: " + std::to_string(status) + ": Network error";
            else
                t = "Err: " + std::to_string(status);
    }
    return t + "\n";
}

void ResetErreursReseau() {
    DernierRapportReseau().reset();
    EffaceIncidentsBTrieve();
}

namespace {
std::vector<std::string>& Incidents() {
    static std::vector<std::string> incidents;
    return incidents;
}
}  // namespace

const std::vector<std::string>& IncidentsBTrieve() {
    return Incidents();
}

void EffaceIncidentsBTrieve() {
    Incidents().clear();
}

void NoteIncidentBTrieve(const std::string& chemin, int status) {
    const size_t slash = chemin.find_last_of("/\\");
    const std::string nom = slash == std::string::npos ? chemin : chemin.substr(slash + 1);
    std::string texte = ErreurBTrieveLibelle(status, nom);
    while (!texte.empty() && texte.back() == '\n')
        texte.pop_back();
    // Bounded: a long session of a window that keeps meeting errors keeps the first ones.
    if (Incidents().size() < 1000)
        Incidents().push_back((nom.empty() ? std::string("?") : nom) + ": " + texte);
}

void ErreurBTrieve(int source, int fichier, const std::string& cle, const std::string& moduleEtProc,
                   int station) {
    const std::string identity = "Lib_Data_Pervasive_2:ErreurBTrieve";
    TraceProc(identity);
    try {
        const int status = StatutBTrieve;
        if (status == 0 || StatutDejaSignale) return;
        StatutDejaSignale = true;
        if (station < 1) station = 1;
        const std::string chemin = CheminFichier(source, station, fichier);
        if (status != 80)
            NoteIncidentBTrieve(chemin.empty() ? cat::NomFichier(fichier, station - 1) : chemin,
                                status);
        const DateTime now = Svc().clock->Now();
        std::string msg = FormatDDMMYYYY(now) + " " + FormatHHMMSS(now) + "\n";
        msg += "Poste: " + sys::ComputerName() + " Utilisateur: " + sys::UserName() + "\n";
        msg += "Fichier: " + chemin + " (" + std::to_string(fichier) + ")\n";
        msg += "Procédure: " + moduleEtProc + "\n";
        msg += "Clé: [" + Cp1252ToUtf8(cle.substr(0, 60)) + "]\n";
        msg += ErreurBTrieveLibelle(status, chemin);
        if (status != 161 && source >= 0 && source < kNbSources) {
            const auto& h = HistoriqueBTrieve(source);
            for (int i = 0; i < 6; ++i) {
                if (Trim(h[i]).empty()) continue;
                std::string line = h[i];
                if (i == 0 && line.rfind("S:", 0) != 0)
                    line = "S:" + PadNumber(status, 5) + " " + line;
                msg += std::to_string(i) + ">" + line + "\n";
            }
        }
        const std::string expl = Explication(status, OperationBTrieve);
        if (!expl.empty()) msg += expl + "\n";

        if (status == 80) {  // record conflicts are retried or abandoned, never shown
            TraceLog("Err: BTrieve: 80 (" + moduleEtProc + ")");
            return;
        }
        if (status >= 3000 && status <= 3132) {
            const int64_t nowMs = Svc().clock->Stopwatch();
            auto& last = DernierRapportReseau();
            if (last && nowMs - *last < 300000) return;
            last = nowMs;
            msg = "Err: Network Pervasive errors: " + msg;
        }
        TraceLog(NettoieLibErr(msg));
        AffMsg(msg, kTitreApplication, kMbExclamation);
    } catch (const std::exception& e) {
        TraceErreur(identity, 0, e.what());
    }
}

}  // namespace zl3
