#include "SetupFTPUpload.h"

#include <cstdlib>
#include <filesystem>

#include "Etat.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Lib_Web.h"
#include "Services.h"

namespace zl3 {
namespace {

constexpr const char* kDossier = "<Dossier>";

void Proc(const char* nom) {
    TraceProc(std::string("FrmSetupFTPUpload:") + nom);
}

bool Erreur() {
    return Etat().erreurFTP;
}

// The label's text as a number; nothing when it is not one.
bool Nombre(const std::string& texte, long& valeur) {
    const std::string t = Trim(texte);
    if (t.empty()) return false;
    char* fin = nullptr;
    valeur = std::strtol(t.c_str(), &fin, 10);
    return fin && *fin == '\0';
}

double Secondes(int64_t debut) {
    return static_cast<double>(Svc().clock->Stopwatch() - debut) / 1000.0;
}

}  // namespace

LogiqueSetupFTPUpload::LogiqueSetupFTPUpload() = default;

std::string LogiqueSetupFTPUpload::TexteAttributs(int32_t a) {
    static const struct {
        int32_t bit;
        char lettre;
    } champs[] = {{32, 'A'},   {2048, 'C'}, {16, 'D'}, {2, 'H'},  {128, 'N'},
                  {4096, 'O'}, {1, 'R'},    {4, 'S'},  {256, 'T'}};
    std::string t;
    for (const auto& c : champs) {
        t += ' ';
        t += (a & c.bit) ? c.lettre : '-';
    }
    return t;
}

void LogiqueSetupFTPUpload::Form_Load() {
    Proc("Form_Load");
    ftp_.SetModeActive();
    ftp_.SetTransferBinary();
}

void LogiqueSetupFTPUpload::OptionCnx_Click(int index) {
    OptionCnx = index;
    if (index == 1)
        ftp_.SetModePassive();
    else
        ftp_.SetModeActive();
}

void LogiqueSetupFTPUpload::RafraichirListeView() {
    Proc("RafraichirListeView");
    TextDossierFTP = ftp_.GetFTPDirectory();
    if (Erreur()) return;
    ftp_.GetDirectoryListing("*.*");
    if (Erreur()) return;
    lv.clear();
    lv.push_back({"..", kDossier, "", " - - D - - - - - -", true});
    for (const auto& e : ftp_.Directory()) {
        LigneLv l;
        l.nom = e.FileName;
        l.dossier = e.EstDossier();
        l.colonne3 = TexteAttributs(e.FileAttributes);
        if (l.dossier) {
            l.colonne1 = kDossier;
        } else {
            l.colonne1 = std::to_string(e.FileSize);
            l.colonne2 = FormatDDMMYYYY(e.LastWriteTime) + " " + FormatHHMMSS(e.LastWriteTime);
        }
        lv.push_back(l);
    }
}

void LogiqueSetupFTPUpload::OuvrirDossier(const LigneLv& ligne) {
    if (ligne.nom == "..") {
        ftp_.SetFTPDirectory("..");
    } else {
        const cDirItem* item = ftp_.Directory().Item(ligne.nom);
        if (!item || !item->EstDossier()) return;
        ftp_.SetFTPDirectory(ligne.nom);
    }
    RafraichirListeView();
}

bool LogiqueSetupFTPUpload::ModeChoix() const {
    long origine = -1, cartouche = -1;
    return Nombre(LabelOrigine, origine) && Nombre(LabelNocartouche, cartouche) && origine >= 0 &&
           cartouche >= 0;
}

void LogiqueSetupFTPUpload::CommandFTP_Click(int index, int ligne) {
    Proc("CommandFTP_Click");
    if (enAction_) return;  // a click during a transfer: the session is busy
    enAction_ = true;
    Etat().erreurFTP = false;
    const LigneLv* choisie =
        (ligne >= 0 && ligne < static_cast<int>(lv.size())) ? &lv[ligne] : nullptr;
    bool rafraichirApres = false;
    switch (index) {
        case kConnecter:
            Deconnexion();
            ftp_.SetFTPS(ftps);
            if (!ftp_.OpenConnection(TxtServer, TxtUser, TxtPassword)) {
                connecte_ = false;
                AffMsg("Connexion impossible", kTitreApplication, kMbCritical);
                break;
            }
            connecte_ = true;
            if (!Trim(TextDossierFTP).empty()) ftp_.SetFTPDirectory(TextDossierFTP);
            RafraichirListeView();
            break;
        case kRafraichir:
            if (connecte_) RafraichirListeView();
            break;
        case kEnvoyer: {
            if (OptionCnx == 1)
                ftp_.SetModePassive();
            else
                ftp_.SetModeActive();
            if (!Trim(TextDossierCible).empty()) {
                ftp_.SetFTPDirectory(ClearDossierFTP(TextDossierCible));
                RafraichirListeView();
                if (Erreur()) break;
            }
            const std::string fichier =
                sys::TexteChemin(sys::CheminFs(Trim(TxtFichier)).filename());
            const int64_t debut = Svc().clock->Stopwatch();
            int64_t taille = 0;
            if (!ftp_.FTPUploadFile(TxtFichier, fichier, taille)) {
                TraceLogEncadre("Err: FTP: Upload: " + NettoieLibErr(ftp_.GetLastErrorMessage()));
            } else {
                TraceLog("FTP: Upload: " + fichier +
                         ": upload in: " + FormatMilliers2(Secondes(debut)) +
                         " s. (Size: " + std::to_string(taille) + " octets)");
            }
            rafraichirApres = true;
            break;
        }
        case kRecevoir: {
            if (!choisie) break;
            if (choisie->dossier) {
                OuvrirDossier(*choisie);
                break;
            }
            if (ModeChoix()) {
                TextFichierFTP = choisie->nom;
                ftp_.CloseConnection();
                connecte_ = false;
                lv.clear();
                if (onFichierChoisi) onFichierChoisi(TextFichierFTP);
                break;
            }
            const std::string nom = choisie->nom;
            if (!NomLocalSur(nom)) {
                TraceNomRefuse(nom);
                break;
            }
            if (Trim(dossierTelechargement).empty() || !sys::FolderExists(dossierTelechargement)) {
                TraceLogEncadre("Err: FTP: Download: local folder not found: '" +
                                dossierTelechargement + "'");
                break;
            }
            const int64_t debut = Svc().clock->Stopwatch();
            int64_t taille = 0;
            if (!ftp_.FTPDownloadFile(nom, sys::WithTrailingSep(dossierTelechargement) + nom,
                                      taille)) {
                TraceLogEncadre("Err: FTP: Download: " + ftp_.GetLastErrorMessage());
            } else {
                TraceLog("FTP: Download: " + nom +
                         ": download in: " + FormatMilliers2(Secondes(debut)) + " s.");
            }
            rafraichirApres = true;
            break;
        }
        case kSupprimer: {
            if (!choisie || choisie->nom == "..") break;
            const std::string nom = choisie->nom;
            if (Question("Voulez-vous supprimer '" + nom + "' ?", kTitreApplication,
                         kMbYesNo + kMbCritical) != kIdYes)
                break;
            const bool ok =
                choisie->dossier ? ftp_.RemoveFTPDirectory(nom) : ftp_.DeleteFTPFile(nom);
            if (!ok) TraceLogEncadre("Err: FTP: Delete: " + ftp_.GetLastErrorMessage());
            rafraichirApres = true;
            break;
        }
        case kDeconnecter:
            ftp_.CloseConnection();
            connecte_ = false;
            lv.clear();
            break;
        default:
            break;
    }
    if (rafraichirApres && connecte_ && !Erreur()) RafraichirListeView();
    enAction_ = false;
}

void LogiqueSetupFTPUpload::lv_DblClick(int ligne) {
    Proc("lv_DblClick");
    if (enAction_ || ligne < 0 || ligne >= static_cast<int>(lv.size())) return;
    enAction_ = true;
    Etat().erreurFTP = false;
    const LigneLv l = lv[ligne];
    if (l.dossier)
        OuvrirDossier(l);
    else
        TextFichierFTP = l.nom;
    enAction_ = false;
}

EntreeFTPChoisie LogiqueSetupFTPUpload::CommandTransferer_Click() const {
    EntreeFTPChoisie e;
    long origine = -1;
    e.origine = Nombre(LabelOrigine, origine) ? static_cast<int>(origine) : -1;
    e.serveur = TxtServer;
    e.utilisateur = TxtUser;
    e.motDePasse = TxtPassword;
    e.mode = OptionCnx == 1 ? 1 : 0;
    e.dossier = TextDossierFTP;
    return e;
}

void LogiqueSetupFTPUpload::Form_Unload() {
    Proc("Form_Unload");
    if (ftp_.IsOpenConnection()) ftp_.CloseConnection();
    Deconnexion();
}

void LogiqueSetupFTPUpload::Deconnexion() {
    // FTPConnexionStopper / FTPStopper close the handles of the address-based transfer
    // (StartUpdate), which no action of the browser opens: there is nothing to close here. The
    // cFTP session is closed by CloseConnection, or replaced by the next OpenConnection.
}

}  // namespace zl3
