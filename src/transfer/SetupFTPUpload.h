// The FTP browser without its window: the logic FrmSetupFTPUpload drives. The window copies its
// controls into the public fields, calls the handlers, and shows `lv` and the text fields again
// afterwards. One cFTP session, binary transfers, active or passive from OptionCnx.
//
// Contract: the only message box is "Connexion impossible" on a failed connect, and the delete
// question; every other failure is traced (cFTP's traces and the texts below) and leaves the
// list as it was. While an action runs (a transfer lets events through) EnAction() is true and a
// second action is refused at once: the window disables its buttons meanwhile.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cFTP.h"

namespace zl3 {

// One row of the list: name, size or "<Dossier>", last-write date, attribute text.
struct LigneLv {
    std::string nom;
    std::string colonne1;
    std::string colonne2;
    std::string colonne3;
    bool dossier = false;  // folder icon (".." included)
};

// What CommandTransferer hands back to FTP entry number `origine` of the settings window.
struct EntreeFTPChoisie {
    int origine = -1;
    std::string serveur;
    std::string utilisateur;
    std::string motDePasse;
    int mode = 0;  // 0 active, 1 passive
    std::string dossier;
};

class LogiqueSetupFTPUpload {
  public:
    enum Action {
        kConnecter = 0,
        kRafraichir = 1,
        kEnvoyer = 2,
        kRecevoir = 3,
        kSupprimer = 4,
        kDeconnecter = 5
    };

    std::string TxtServer;
    std::string TxtUser;
    std::string TxtPassword;
    int OptionCnx = 0;  // 0 active, 1 passive
    std::string TextDossierFTP;
    std::string TextDossierCible;
    std::string TxtFichier;
    std::string TextFichierFTP;
    std::string LabelOrigine = "-1";
    std::string LabelNocartouche = "-1";
    std::vector<LigneLv> lv;
    bool ftps = false;
    // Local folder of a download in browse mode.
    std::string dossierTelechargement;
    // Pick mode: the chosen remote file name (the caller then closes the window).
    std::function<void(const std::string&)> onFichierChoisi;

    LogiqueSetupFTPUpload();
    void Form_Load();  // InitGeneral / InitGeneralFTP
    void OptionCnx_Click(int index);
    // `ligne`: the selected row of lv, -1 when none.
    void CommandFTP_Click(int index, int ligne = -1);
    void lv_DblClick(int ligne);
    EntreeFTPChoisie CommandTransferer_Click() const;
    void Form_Unload();
    void Deconnexion();
    void RafraichirListeView();

    bool Connecte() const { return connecte_; }
    bool EnAction() const { return enAction_; }
    cFTP& Ftp() { return ftp_; }
    // Nine two-character fields A C D H N O R S T: " X" when set, " -" when not.
    static std::string TexteAttributs(int32_t attributs);

  private:
    void OuvrirDossier(const LigneLv& ligne);
    bool ModeChoix() const;

    cFTP ftp_;
    bool connecte_ = false;
    bool enAction_ = false;
};

}  // namespace zl3
