#include "cFTP.h"

#include <curl/curl.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "Etat.h"
#include "Lib_Public.h"
#include "Services.h"

namespace zl3 {
namespace {

constexpr const char* kModule = "Cls_FTP:";
constexpr size_t kMaxListe = 8u << 20;  // a listing beyond 8 MB is a hostile or broken server

void Proc(const char* nom) {
    TraceProc(std::string(kModule) + nom);
}

std::string Cache(std::string texte, const std::string& secret) {
    if (secret.empty()) return texte;
    for (size_t p = texte.find(secret); p != std::string::npos; p = texte.find(secret, p + 4))
        texte.replace(p, secret.size(), "****");
    return texte;
}

// Quoted path of a "257" reply ("" stands for one quote).
std::string CheminPwd(const std::vector<std::string>& reponses) {
    for (auto it = reponses.rbegin(); it != reponses.rend(); ++it) {
        if (it->rfind("257", 0) != 0) continue;
        const auto debut = it->find('"');
        if (debut == std::string::npos) return "";
        std::string chemin;
        for (size_t i = debut + 1; i < it->size(); ++i) {
            if ((*it)[i] == '"') {
                if (i + 1 < it->size() && (*it)[i + 1] == '"') {
                    chemin += '"';
                    ++i;
                } else {
                    return chemin;
                }
            } else {
                chemin += (*it)[i];
            }
        }
        return "";
    }
    return "";
}

// "/a/b/../c/." -> "/a/c/"; never above "/".
std::string Normalise(const std::string& chemin) {
    std::vector<std::string> parts;
    size_t i = 0;
    while (i <= chemin.size()) {
        const size_t j = std::min(chemin.find('/', i), chemin.size());
        const std::string p = chemin.substr(i, j - i);
        if (p == "..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!p.empty() && p != ".") {
            parts.push_back(p);
        }
        i = j + 1;
    }
    std::string r = "/";
    for (const auto& p : parts)
        r += p + "/";
    return r;
}

}  // namespace

// ---- cDirList -------------------------------------------------------------------------------

bool cDirList::Add(const cDirItem& item) {
    if (Item(item.FileName)) return false;
    items_.push_back(item);
    return true;
}

const cDirItem* cDirList::Item(const std::string& fileName) const {
    for (const auto& i : items_)
        if (i.FileName == fileName) return &i;
    return nullptr;
}

// ---- Error numbers --------------------------------------------------------------------------

long CodeWinInet(int codeCurl) {
    switch (static_cast<CURLcode>(codeCurl)) {
        case CURLE_OK:
            return 0;
        case CURLE_UNSUPPORTED_PROTOCOL:
            return kErrProtocole;
        case CURLE_URL_MALFORMAT:
            return kErrUrlInvalide;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
            return kErrNomNonResolu;
        case CURLE_COULDNT_CONNECT:
        case CURLE_FTP_ACCEPT_FAILED:
        case CURLE_FTP_CANT_GET_HOST:
            return kErrCannotConnect;
        case CURLE_WEIRD_SERVER_REPLY:
            return kErrReponseInvalide;
        case CURLE_REMOTE_ACCESS_DENIED:
        case CURLE_FTP_COULDNT_SET_TYPE:
        case CURLE_FTP_COULDNT_RETR_FILE:
        case CURLE_QUOTE_ERROR:
        case CURLE_UPLOAD_FAILED:
        case CURLE_FTP_PORT_FAILED:
        case CURLE_FTP_COULDNT_USE_REST:
        case CURLE_REMOTE_DISK_FULL:
        case CURLE_REMOTE_FILE_EXISTS:
        case CURLE_REMOTE_FILE_NOT_FOUND:
            return kErrExtended;
        case CURLE_FTP_ACCEPT_TIMEOUT:
        case CURLE_OPERATION_TIMEDOUT:
            return kErrTimeout;
        case CURLE_FTP_WEIRD_PASV_REPLY:
        case CURLE_FTP_WEIRD_227_FORMAT:
            return kErrPassifIndisponible;
        case CURLE_PARTIAL_FILE:
        case CURLE_GOT_NOTHING:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
            return kErrConnexionInterrompue;
        case CURLE_LOGIN_DENIED:
            return kErrMotDePasseIncorrect;
        case CURLE_PEER_FAILED_VERIFICATION:
            return kErrCertificat;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_USE_SSL_FAILED:
        case CURLE_SSL_ENGINE_NOTFOUND:
        case CURLE_SSL_ENGINE_SETFAILED:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_SHUTDOWN_FAILED:
        case CURLE_SSL_CACERT_BADFILE:
            return kErrCanalSecurise;
        case CURLE_OUT_OF_MEMORY:
            return kErrMemoire;
        case CURLE_RECURSIVE_API_CALL:
            return kErrTransfertEnCours;
        default:
            return kErrInterne;
    }
}

std::string TexteErreurWinInet(long code) {
    switch (code) {
        case kErrFichierIntrouvable:
            return "The system cannot find the file specified.";
        case kErrHandleInvalide:
            return "The handle is invalid.";
        case kErrMemoire:
            return "Not enough storage is available to process this command.";
        case kErrPasDeFichier:
            return "There are no more files.";
        case kErrEcriture:
            return "The system cannot write to the specified device.";
        case kErrLecture:
            return "The system cannot read from the specified device.";
        case kErrNomIncorrect:
            return "The filename, directory name, or volume label syntax is incorrect.";
        case kErrTimeout:
            return "The operation timed out";
        case kErrExtended:
            return "An extended error was returned from the server.";
        case kErrInterne:
            return "An internal error occurred in the Microsoft Internet extensions";
        case kErrUrlInvalide:
            return "The URL is invalid";
        case kErrProtocole:
            return "The URL does not use a recognized protocol";
        case kErrNomNonResolu:
            return "The server name or address could not be resolved";
        case kErrMotDePasseIncorrect:
            return "The password was not allowed";
        case kErrCannotConnect:
            return "A connection with the server could not be established";
        case kErrConnexionInterrompue:
            return "The connection with the server was terminated abnormally";
        case kErrConnexionReinitialisee:
            return "The connection with the server was reset";
        case kErrCertificat:
            return "The certificate authority is invalid or incorrect";
        case kErrTransfertEnCours:
            return "There is already an FTP request in progress on this session";
        case kErrPassifIndisponible:
            return "Passive mode is not available on the server";
        case kErrReponseInvalide:
            return "The server returned an invalid or unrecognized response";
        case kErrCanalSecurise:
            return "An error occurred in the secure channel support";
        default:
            return "";
    }
}

// ---- cFTP -----------------------------------------------------------------------------------

cFTP::cFTP() = default;

cFTP::~cFTP() {
    session_.Fermer();
}

bool cFTP::IsOpenConnection() const {
    Proc("IsOpenConnection");
    return connecte_;
}

void cFTP::ErrorOut(long errorCode, const std::string& procName) {
    Proc("ErrorOut");
    lastErrorNumber_ = errorCode;
    std::string texte = TexteErreurWinInet(errorCode);
    texte = texte.substr(0, texte.find('\0'));
    texte = texte.substr(0, texte.find("\r\n"));
    lastError_ =
        NettoieLibErr(procName + " Err: " + std::to_string(errorCode) + " Message: " + texte);
    if (errorCode == kErrExtended) {
        std::string reponse = session_.DerniereReponse();
        reponse = reponse.substr(0, reponse.find('\0'));
        reponse = reponse.substr(0, reponse.find_first_of("\r\n"));
        reponse = Trim(NettoieLibErr(reponse));
        // A server may echo what it was sent: the credentials never reach a message or a trace.
        reponse = Cache(Cache(reponse, motDePasse_), utilisateur_.size() >= 3 ? utilisateur_ : "");
        if (!reponse.empty()) lastError_ = reponse;
    }
}

bool cFTP::Echec(long code, const std::string& appel, const std::string& debutTrace) {
    ErrorOut(code, appel);
    TraceLogEncadre(debutTrace + lastError_ + ")");
    Etat().erreurFTP = true;
    return false;
}

// Connected and idle; otherwise reports under the operation's labels.
bool cFTP::Pret(const std::string& appel, const std::string& debutTrace) {
    if (occupe_) return Echec(kErrTransfertEnCours, appel, debutTrace);
    if (!connecte_) return Echec(kErrHandleInvalide, appel, debutTrace);
    return true;
}

std::string cFTP::Absolu(const std::string& nom) const {
    if (!nom.empty() && nom[0] == '/') return nom;
    std::string d = dossierCourant_;
    if (d.empty() || d.back() != '/') d += '/';
    return d + nom;
}

bool cFTP::OpenConnection(const std::string& server, const std::string& user,
                          const std::string& password) {
    Proc("OpenConnection");
    if (occupe_)
        return Echec(kErrTransfertEnCours, "InternetConnect", "Err: FTP: InternetConnect (");
    if (connecte_) {
        session_.Fermer();
        connecte_ = false;
    }
    utilisateur_ = user;
    motDePasse_ = password;
    dossierCourant_ = "/";
    const auto serveur = ftp::AnalyseServeur(server);
    if (!serveur) return Echec(kErrNomNonResolu, "InternetConnect", "Err: FTP: InternetConnect (");
    ftp::ParametresSession p;
    p.serveur = *serveur;
    p.utilisateur = user;
    p.motDePasse = password;
    p.passif = connectionFlags_ == kFlagPassive;
    p.ftps = ftps_;
    p.verifierTls = verifierTls_;
    p.delaiMs = delaiMs_;
    const auto r = session_.Ouvrir(p);
    if (r.code == CURLE_FAILED_INIT) {
        // No transfer handle: reported as the Internet handle's failure, then the connect's.
        Echec(kErrInterne, "InternetOpen", "Err: FTP: InternetOpen (");
        return Echec(kErrHandleInvalide, "InternetConnect", "Err: FTP: InternetConnect (");
    }
    if (!r.Ok())
        return Echec(CodeWinInet(r.code), "InternetConnect", "Err: FTP: InternetConnect (");
    connecte_ = true;
    dossierCourant_ = session_.DossierEntree();
    lastErrorNumber_ = 0;
    return true;
}

void cFTP::CloseConnection() {
    Proc("CloseConnection");
    if (occupe_) {
        fermetureDemandee_ = true;
        return;
    }
    session_.Fermer();
    connecte_ = false;
}

void cFTP::FinTransfert() {
    occupe_ = false;
    if (fermetureDemandee_) {
        fermetureDemandee_ = false;
        CloseConnection();
    }
}

bool cFTP::SimpleFTPPutFile(const std::string& localFile, const std::string& remoteFile) {
    Proc("SimpleFTPPutFile");
    const std::string label = "Err: FTP: FTPPutFile (";
    if (!Pret("SimpleFtpPutFile", label)) return false;
    if (!ftp::CheminTransmissible(remoteFile))
        return Echec(kErrNomIncorrect, "SimpleFtpPutFile", label);
    std::ifstream in(localFile, std::ios::binary);
    if (!in) return Echec(kErrFichierIntrouvable, "SimpleFtpPutFile", label);
    bool erreurLocale = false;
    occupe_ = true;
    const auto r = session_.Envoyer(Absolu(remoteFile), transferType_ == kTransferBinary,
                                    [&](char* buf, size_t max) -> size_t {
                                        in.read(buf, static_cast<std::streamsize>(max));
                                        if (in.bad()) {
                                            erreurLocale = true;
                                            return SIZE_MAX;
                                        }
                                        return static_cast<size_t>(in.gcount());
                                    });
    FinTransfert();
    if (!r.Ok())
        return Echec(erreurLocale ? kErrLecture : CodeWinInet(r.code), "SimpleFtpPutFile", label);
    return true;
}

bool cFTP::RenameFTPFile(const std::string& oldName, const std::string& newName) {
    Proc("RenameFTPFile");
    const std::string label = "Err: FTP: RenameFTPFile (";
    if (!Pret("RenameFTPFile", label)) return false;
    if (!ftp::CheminTransmissible(oldName) || !ftp::CheminTransmissible(newName))
        return Echec(kErrNomIncorrect, "RenameFTPFile", label);
    const auto r = session_.Commandes({"RNFR " + Absolu(oldName), "RNTO " + Absolu(newName)});
    if (!r.Ok()) return Echec(CodeWinInet(r.code), "RenameFTPFile", label);
    return true;
}

bool cFTP::CreateFTPDirectory(const std::string& name) {
    Proc("CreateFTPDirectory");
    const std::string label = "Err: FTP: CreateFTPDirectory (";
    if (!Pret("CreateFTPDirectory", label)) return false;
    if (!ftp::CheminTransmissible(name))
        return Echec(kErrNomIncorrect, "CreateFTPDirectory", label);
    const auto r = session_.Commandes({"MKD " + Absolu(name)});
    if (!r.Ok()) return Echec(CodeWinInet(r.code), "CreateFTPDirectory", label);
    return true;
}

bool cFTP::RemoveFTPDirectory(const std::string& name) {
    Proc("RemoveFTPDirectory");
    const std::string label = "Err: FTP: RemoveFTPDirectory (";
    if (!Pret("RemoveFTPDirectory", label)) return false;
    if (!ftp::CheminTransmissible(name))
        return Echec(kErrNomIncorrect, "RemoveFTPDirectory", label);
    const auto r = session_.Commandes({"RMD " + Absolu(name)});
    if (!r.Ok()) return Echec(CodeWinInet(r.code), "RemoveFTPDirectory", label);
    return true;
}

bool cFTP::DeleteFTPFile(const std::string& name) {
    Proc("DeleteFTPFile");
    const std::string label = "Err: FTP: DeleteFTPFile '" + name + "' (";
    if (!Pret("DeleteFTPFile", label)) return false;
    if (!ftp::CheminTransmissible(name)) return Echec(kErrNomIncorrect, "DeleteFTPFile", label);
    const auto r = session_.Commandes({"DELE " + Absolu(name)});
    if (!r.Ok()) return Echec(CodeWinInet(r.code), "DeleteFTPFile", label);
    TraceLog(std::string("FTP: ") + "DeleteFTPFile Ok");
    return true;
}

bool cFTP::FTPUploadFile(const std::string& localFile, const std::string& remoteFile,
                         int64_t& fileSize) {
    Proc("FTPUploadFile");
    const std::string local = Trim(localFile);
    const std::string remote = Trim(remoteFile);
    if (local.empty() || remote.empty()) return false;
    const std::string labelOuvre = "Err: FTP: FtpOpenFile:PutFile: " + remote + "'(";
    if (!Pret("FtpOpenFile:PutFile", labelOuvre)) return false;
    if (!ftp::CheminTransmissible(remote))
        return Echec(kErrNomIncorrect, "FtpOpenFile:PutFile", labelOuvre);
    std::ifstream in(local, std::ios::binary | std::ios::ate);
    if (!in) return Echec(kErrFichierIntrouvable, "FtpOpenFile:PutFile", labelOuvre);
    const int64_t longueur = static_cast<int64_t>(in.tellg());
    in.seekg(0);
    fileSize = longueur;

    const int64_t morceau = longueur <= 24576 ? 256 : 24576;
    const int64_t entiers = longueur / morceau;
    const int64_t reste = longueur % morceau;
    int64_t donnes = 0;       // whole chunks handed to the connection
    bool resteDonne = false;  // the last piece handed
    int64_t enAttente = 0;    // bytes of the chunk handed and not yet accounted for
    bool attenteReste = false;
    int64_t envoyes = 0;
    bool erreurLocale = false;

    // After each write: events, the pause, and the progress of a whole chunk.
    auto apresEcriture = [&]() {
        if (!enAttente) return;
        Svc().events->DoEvents();
        Svc().clock->Sleep(100);
        if (!attenteReste) {
            envoyes += morceau;
            if (FileTransferProgress) FileTransferProgress(envoyes, longueur);
        }
        enAttente = 0;
    };
    std::vector<char> tampon(static_cast<size_t>(morceau));
    occupe_ = true;
    const auto r = session_.Envoyer(
        Absolu(remote), transferType_ == kTransferBinary, [&](char* buf, size_t max) -> size_t {
            apresEcriture();
            int64_t n = 0;
            if (donnes < entiers) {
                n = morceau;
                ++donnes;
            } else if (reste && !resteDonne) {
                n = reste;
                resteDonne = true;
            } else {
                return 0;
            }
            if (static_cast<size_t>(n) > max) {  // never: the upload buffer holds a chunk
                erreurLocale = true;
                return SIZE_MAX;
            }
            in.read(tampon.data(), n);
            if (in.gcount() != n) {
                erreurLocale = true;
                return SIZE_MAX;
            }
            std::copy(tampon.begin(), tampon.begin() + n, buf);
            enAttente = n;
            attenteReste = resteDonne;
            return static_cast<size_t>(n);
        });
    if (r.Ok()) apresEcriture();
    FinTransfert();
    if (!r.Ok()) {
        const long code = erreurLocale ? kErrLecture : CodeWinInet(r.code);
        if (donnes == 0 && !resteDonne) return Echec(code, "FtpOpenFile:PutFile", labelOuvre);
        if (resteDonne) return Echec(code, "InternetWriteFile2", "Err: FTP: InternetWriteFile/2 (");
        return Echec(code, "InternetWriteFile", "Err: FTP: InternetWriteFile/1 (");
    }
    envoyes = longueur;
    in.close();
    if (FileTransferProgress) FileTransferProgress(envoyes, longueur);
    return true;
}

bool cFTP::FTPDownloadFile(const std::string& remoteFile, const std::string& localFile,
                           int64_t& fileSize) {
    Proc("FTPDownloadFile");
    const std::string remote = Trim(remoteFile);
    const std::string local = Trim(localFile);
    if (local.empty() || remote.empty()) return false;
    fileSize = GetFTPFileSize(remote);
    if (fileSize <= 0) return false;
    const std::string labelOuvre = "Err: FTP: FtpOpenFile:GetFile: '" + remote + "'(";
    if (!Pret("FtpOpenFile:GetFile", labelOuvre)) return false;

    const int64_t taille = fileSize;
    const int64_t entiers = taille / 256;
    const int64_t reste = taille % 256;
    int64_t lus = 0;  // whole chunks written
    bool resteLu = false;
    int64_t compte = 0;
    std::string enCours;
    std::ofstream out;
    bool ouvert = false;
    bool erreurLocale = false;
    bool complet = false;
    occupe_ = true;
    const auto r = session_.Recevoir(Absolu(remote), transferType_ == kTransferBinary,
                                     [&](const char* data, size_t n) {
                                         if (!ouvert) {
                                             out.open(local, std::ios::binary | std::ios::trunc);
                                             ouvert = true;
                                             if (!out) {
                                                 erreurLocale = true;
                                                 return false;
                                             }
                                         }
                                         enCours.append(data, n);
                                         while (!complet) {
                                             if (lus < entiers) {
                                                 if (enCours.size() < 256) break;
                                                 out.write(enCours.data(), 256);
                                                 enCours.erase(0, 256);
                                                 ++lus;
                                                 Svc().events->DoEvents();
                                                 compte += 256;
                                                 if (FileTransferProgress)
                                                     FileTransferProgress(compte, taille);
                                             } else if (reste && !resteLu) {
                                                 if (enCours.size() < static_cast<size_t>(reste))
                                                     break;
                                                 out.write(enCours.data(), reste);
                                                 enCours.erase(0, static_cast<size_t>(reste));
                                                 resteLu = true;
                                             } else {
                                                 complet = true;
                                             }
                                             if (lus == entiers && (!reste || resteLu))
                                                 complet = true;
                                             if (!out) {
                                                 erreurLocale = true;
                                                 return false;
                                             }
                                         }
                                         // The listed size is read and the file handle closed: what
                                         // the server sends beyond it is not taken.
                                         return !complet;
                                     });
    FinTransfert();
    const bool lu = complet && (r.Ok() || r.code == CURLE_WRITE_ERROR) && !erreurLocale;
    if (!lu) {
        if (ouvert) {
            if (!enCours.empty() && out)
                out.write(enCours.data(), static_cast<std::streamsize>(enCours.size()));
            out.close();
        }
        long code = erreurLocale ? kErrEcriture : CodeWinInet(r.code);
        if (r.Ok() && !erreurLocale) code = kErrConnexionInterrompue;  // ended short of the size
        if (!ouvert && !r.Ok()) return Echec(code, "FtpOpenFile:GetFile", labelOuvre);
        if (lus < entiers) return Echec(code, "InternetReadFile", "Err: FTP: InternetReadFile (");
        return Echec(code, "InternetReadFile2", "Err: FTP: InternetReadFile2 (");
    }
    out.close();
    if (FileTransferProgress) FileTransferProgress(compte + (resteLu ? reste : 0), taille);
    return true;
}

bool cFTP::SimpleFTPGetFile(const std::string& remoteFile, const std::string& localFile) {
    Proc("SimpleFTPGetFile");
    const std::string label =
        "Err: FTP: SimpleFtpGetFile '" + remoteFile + "' / '" + localFile + "'(";
    if (!Pret("SimpleFtpGetFile", label)) return false;
    if (!ftp::CheminTransmissible(remoteFile))
        return Echec(kErrNomIncorrect, "SimpleFtpGetFile", label);
    // Written beside the target and renamed at the end: a failed transfer leaves the old file.
    const std::string partiel = localFile + ".part";
    std::ofstream out(partiel, std::ios::binary | std::ios::trunc);
    if (!out) return Echec(kErrEcriture, "SimpleFtpGetFile", label);
    bool erreurLocale = false;
    occupe_ = true;
    const auto r = session_.Recevoir(Absolu(remoteFile), transferType_ == kTransferBinary,
                                     [&](const char* d, size_t n) {
                                         out.write(d, static_cast<std::streamsize>(n));
                                         if (!out) erreurLocale = true;
                                         return !erreurLocale;
                                     });
    FinTransfert();
    out.close();
    std::error_code ec;
    if (r.Ok() && !erreurLocale) std::filesystem::rename(partiel, localFile, ec);
    if (!r.Ok() || erreurLocale || ec) {
        std::filesystem::remove(partiel, ec);
        return Echec(erreurLocale || r.Ok() ? kErrEcriture : CodeWinInet(r.code),
                     "SimpleFtpGetFile", label);
    }
    TraceLog(std::string("FTP: ") + "SimpleFtpGetFile Ok: '" + remoteFile + "'");
    return true;
}

std::string cFTP::GetFTPDirectory() {
    Proc("GetFTPDirectory");
    if (!Pret("FtpGetCurrentDirectory", "Err: FTP: FtpGetCurrentDirectory (")) return "";
    return dossierCourant_.substr(0, 1024);
}

bool cFTP::SetFTPDirectory(const std::string& path) {
    Proc("SetFTPDirectory");
    const std::string p = Trim(path);
    if (p.empty()) return false;
    const std::string label = "Err: FTP: FtpSetCurrentDirectory '" + p + "' (";
    // Moving up from the root is an expected failure: no trace, no error flag.
    auto echec = [&](long code) {
        if (p == "..") {
            ErrorOut(code, "FtpSetCurrentDirectory");
            return false;
        }
        return Echec(code, "FtpSetCurrentDirectory", label);
    };
    if (occupe_) return echec(kErrTransfertEnCours);
    if (!connecte_) return echec(kErrHandleInvalide);
    if (!ftp::CheminTransmissible(p)) return echec(kErrNomIncorrect);
    std::vector<std::string> commandes;
    if (p[0] != '/') commandes.push_back("CWD " + dossierCourant_);
    commandes.push_back("CWD " + p);
    commandes.push_back("PWD");
    const auto r = session_.Commandes(commandes);
    if (!r.Ok()) return echec(CodeWinInet(r.code));
    std::string nouveau = CheminPwd(session_.Reponses());
    if (nouveau.empty() || nouveau[0] != '/' || !ftp::CheminTransmissible(nouveau))
        nouveau = Normalise(Absolu(p));
    if (nouveau == dossierCourant_ && p == ".." && nouveau == "/") {
        // Some servers accept "CWD .." at the root and stay there: the same failure as others.
        return echec(kErrExtended);
    }
    dossierCourant_ = nouveau;
    TraceLog(std::string("FTP: ") + "FtpSetCurrentDirectory Ok: '" + p + "'");
    return true;
}

bool cFTP::Chercher(const std::string& motif, std::vector<ftp::EntreeListe>& trouves, long& code,
                    bool& entame) {
    trouves.clear();
    entame = false;
    std::string dossier = dossierCourant_;
    std::string nom = motif;
    const auto barre = motif.rfind('/');
    if (barre != std::string::npos) {
        dossier = barre == 0 ? "/" : Absolu(motif.substr(0, barre));
        nom = motif.substr(barre + 1);
    }
    if (nom.empty()) nom = "*";
    if (!ftp::CheminTransmissible(dossier)) {
        code = kErrNomIncorrect;
        return false;
    }
    std::string texte;
    bool tropLong = false;
    const bool mlsd = session_.OffreMlsd();
    const auto r = session_.Liste(dossier, mlsd, texte, kMaxListe, tropLong);
    if (!r.Ok()) {
        code = tropLong ? kErrMemoire : CodeWinInet(r.code);
        entame = !texte.empty();
        return false;
    }
    const auto entrees =
        mlsd ? ftp::AnalyseMlsd(texte) : ftp::AnalyseList(texte, Svc().clock->Now());
    for (const auto& e : entrees)
        if (ftp::CorrespondMotif(e.nom, nom)) trouves.push_back(e);
    return true;
}

int64_t cFTP::GetFTPFileSize(const std::string& remoteFile) {
    Proc("GetFTPFileSize");
    const std::string label = "Err: FTP: FtpFindFirstFile (GetFTPFileSize)(";
    if (!Pret("FtpFindFirstFile", label)) return 0;
    std::string motif = remoteFile;
    for (char& c : motif)
        if (c == ' ') c = '?';
    std::vector<ftp::EntreeListe> trouves;
    long code = 0;
    bool entame = false;
    if (!Chercher(motif, trouves, code, entame)) {
        Echec(code, "FtpFindFirstFile", label);
        return 0;
    }
    if (trouves.empty()) return 0;  // no such file (error 18): no message
    return trouves.front().taille;
}

bool cFTP::GetDirectoryListing(const std::string& pattern) {
    Proc("GetDirectoryListing");
    directory_.Clear();
    const std::string label = "Err: FTP: FtpFindFirstFile (GetDirectoryListing) (";
    if (!Pret("FtpFindFirstFile", label)) return false;
    std::vector<ftp::EntreeListe> trouves;
    long code = 0;
    bool entame = false;
    if (!Chercher(pattern, trouves, code, entame)) {
        if (entame) return Echec(code, "InternetFindNextFile", "Err: FTP: InternetFindNextFile (");
        return Echec(code, "FtpFindFirstFile", label);
    }
    for (const auto& e : trouves) {
        cDirItem item;
        item.FileName = e.nom;
        item.CreationTime = e.creation;
        item.LastAccessTime = e.dernierAcces;
        item.LastWriteTime = e.derniereEcriture;
        item.FileSize = e.taille;
        item.FileAttributes = e.attributs;
        directory_.Add(item);
    }
    return true;
}

}  // namespace zl3
