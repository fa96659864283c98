// The update download without its window: the logic FrmDownload drives (and zl3-ftp runs from a
// script). Its own FTP session, binary, read in 1024-byte blocks; the files of one remote folder
// are written into a local folder (the data folder in the window).
//
// Contract: nothing is shown in a message box; every step and failure is traced with the texts
// below. A name from the server that could write outside the local folder is refused with a
// trace (Lib_Web NomLocalSur). A failed open of a remote file skips that file only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "SessionCurl.h"
#include "cFTP.h"

namespace zl3 {

class LogiqueDownload {
  public:
    // The window's fields.
    std::string TxtServer;
    std::string TxtUser;
    std::string TxtPassword;
    int OptionCnx = 0;  // 0 active, 1 passive
    std::string TextDossierFTP;
    bool ftps = false;         // explicit TLS (the FTP entry's option)
    int64_t delaiMs = 30000;   // bound of every network wait
    std::string dossierLocal;  // where the files go (trailing separator or not)

    struct LigneListe {
        std::string nom;
        DateTime date;  // last write
        int64_t taille = 0;
    };
    std::vector<LigneListe> ListeTemporaire;
    std::string TexteFichierEnCours;  // file name and running speed
    std::string LabelPourcentage;     // "45.678%"

    // The labels changed (the window repaints them; events are let through as well).
    std::function<void()> onAffichage;
    // Each 1024-byte read, with the bytes it returned.
    std::function<void(int64_t lus)> onLecture;

    // Results of the last FTPDownload.
    int fichiersRecus = 0;
    int64_t tailleListee = 0;
    int64_t octetsRecus = 0;

    LogiqueDownload();
    void Form_Load();
    // CloseConnection on the form's cFTP, then Connexion.
    bool ConnectDownload();
    bool Connexion();
    bool LectureDesFichiersSurServeurFTP();
    bool TestValiditeDuDossierFTP();
    // True when every listed file came down whole.
    bool FTPDownload();
    void Deconnexion();
    // "Internet error: " + code + " (" + description + ")".
    std::string FindInternetError(long code) const;
    // Up to 5 significant figures, no exponent ("33.333", "100", "0.0012").
    static std::string Pourcentage(double valeur);

  private:
    std::string Description(long code) const;
    bool TelechargerUn(const LigneListe& ligne, int64_t debutMs);

    cFTP ftp_;
    ftp::SessionCurl session_;
    bool connecte_ = false;
};

}  // namespace zl3
