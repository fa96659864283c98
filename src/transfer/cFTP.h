// cFTP: the tool's FTP client. One session to one server, with its current remote folder, its
// transfer type (ASCII unless told otherwise) and its connection mode (active or passive, taken
// at the next OpenConnection), chunked transfers with progress, listings into a cDirList and the
// suite's WinInet error numbers and texts.
//
// Contract:
// - No method throws or shows anything. A failure returns false (0 for a size, "" for a folder),
//   leaves "<call> Err: <number> Message: <text>" in GetLastErrorMessage (for 12003, the server's
//   own last reply line instead), writes the framed trace of its operation and sets the
//   application-wide FTP error flag (Etat().erreurFTP; only ever set here, the caller clears it).
// - Error numbers are WinInet's: libcurl's results are mapped by CodeWinInet (README "FTP").
// - Remote names are taken relative to the current remote folder unless they begin with "/".
// - The user name and password never appear in a trace or an error message.
// - Transfers let pending events run after each chunk (EventLoop service) and upload pauses
//   100 ms after each chunk (Clock service). A call made meanwhile (re-entrance from the window)
//   fails with 12110 and leaves the running transfer alone; CloseConnection then waits for the
//   transfer to end.
// - Every network wait ends after the delay (SetDelaiReseau, 30 s by default) with 12002.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "DateTime.h"
#include "ListeFTP.h"
#include "SessionCurl.h"

namespace zl3 {

// One entry of a remote folder.
struct cDirItem {
    std::string FileName;
    DateTime CreationTime;
    DateTime LastAccessTime;
    DateTime LastWriteTime;
    int64_t FileSize = 0;
    int32_t FileAttributes = 0;  // Windows attribute bits; 16 = folder
    bool EstDossier() const { return (FileAttributes & ftp::kAttrDossier) != 0; }
};

// The entries of a listing in the server's order, looked up by file name.
class cDirList {
  public:
    // False (and nothing added) when the name is already there.
    bool Add(const cDirItem& item);
    void Clear() { items_.clear(); }
    // The entry of that name, or nullptr.
    const cDirItem* Item(const std::string& fileName) const;
    int Count() const { return static_cast<int>(items_.size()); }
    // NewEnum: insertion order.
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

  private:
    std::vector<cDirItem> items_;
};

// WinInet error numbers used by the FTP code.
enum ErreurWinInet : long {
    kErrHandleInvalide = 6,
    kErrMemoire = 8,
    kErrFichierIntrouvable = 2,
    kErrPasDeFichier = 18,
    kErrEcriture = 29,
    kErrLecture = 30,
    kErrNomIncorrect = 123,
    kErrTimeout = 12002,
    kErrExtended = 12003,
    kErrInterne = 12004,
    kErrUrlInvalide = 12005,
    kErrProtocole = 12006,
    kErrNomNonResolu = 12007,
    kErrMotDePasseIncorrect = 12014,
    kErrCannotConnect = 12029,
    kErrConnexionInterrompue = 12030,
    kErrConnexionReinitialisee = 12031,
    kErrCertificat = 12045,
    kErrTransfertEnCours = 12110,
    kErrPassifIndisponible = 12112,
    kErrReponseInvalide = 12152,
    kErrCanalSecurise = 12157,
};

// WinInet number of a libcurl result (CURLcode value).
long CodeWinInet(int codeCurl);
// The system text of a WinInet (or Windows) error number, as the message formatter gives it.
std::string TexteErreurWinInet(long code);

class cFTP {
  public:
    static constexpr int32_t kTransferAscii = 1;
    static constexpr int32_t kTransferBinary = 2;
    static constexpr int32_t kFlagPassive = 0x08000000;

    cFTP();
    ~cFTP();
    cFTP(const cFTP&) = delete;
    cFTP& operator=(const cFTP&) = delete;

    bool IsOpenConnection() const;
    const cDirList& Directory() const { return directory_; }
    std::string GetLastErrorMessage() const { return lastError_; }
    // `server`: "host", "host:port", "ftp://host:port" or "ftps://host:port" (explicit TLS).
    bool OpenConnection(const std::string& server, const std::string& user,
                        const std::string& password);
    void CloseConnection();
    bool SimpleFTPPutFile(const std::string& localFile, const std::string& remoteFile);
    bool RenameFTPFile(const std::string& oldName, const std::string& newName);
    bool CreateFTPDirectory(const std::string& name);
    bool RemoveFTPDirectory(const std::string& name);
    bool DeleteFTPFile(const std::string& name);
    // Chunks of 256 bytes up to 24576 bytes, of 24576 above; `fileSize` gets the local length.
    bool FTPUploadFile(const std::string& localFile, const std::string& remoteFile,
                       int64_t& fileSize);
    // Chunks of 256 bytes; false without opening anything when the remote size is 0.
    bool FTPDownloadFile(const std::string& remoteFile, const std::string& localFile,
                         int64_t& fileSize);
    bool SimpleFTPGetFile(const std::string& remoteFile, const std::string& localFile);
    std::string GetFTPDirectory();
    bool SetFTPDirectory(const std::string& path);
    // Size of the first entry matching the name (blanks match any character); 0 when none.
    int64_t GetFTPFileSize(const std::string& remoteFile);
    bool GetDirectoryListing(const std::string& pattern);
    void SetTransferASCII() { transferType_ = kTransferAscii; }
    void SetTransferBinary() { transferType_ = kTransferBinary; }
    void SetModeActive() { connectionFlags_ = 0; }
    void SetModePassive() { connectionFlags_ = kFlagPassive; }

    // ---- Beyond the suite's class ----
    // FileTransferProgress event: (bytes transferred so far, total bytes of the file).
    std::function<void(int64_t transferes, int64_t total)> FileTransferProgress;
    // Explicit TLS (AUTH TLS) at the next OpenConnection; `verifier`: check the certificate.
    void SetFTPS(bool ftps, bool verifier = true) {
        ftps_ = ftps;
        verifierTls_ = verifier;
    }
    void SetDelaiReseau(int64_t ms) { delaiMs_ = ms; }
    int32_t TransferType() const { return transferType_; }
    int32_t ConnectionFlags() const { return connectionFlags_; }
    bool TransfertEnCours() const { return occupe_; }
    // Number of the last failure (0 after a success of OpenConnection).
    long LastErrorNumber() const { return lastErrorNumber_; }

  private:
    void ErrorOut(long errorCode, const std::string& procName);
    bool Echec(long code, const std::string& appel, const std::string& debutTrace);
    bool Pret(const std::string& appel, const std::string& debutTrace);
    std::string Absolu(const std::string& nom) const;
    // Entries of the folder part of `motif` matching its name part. False: `code` and whether
    // some of the listing had arrived (`entame`).
    bool Chercher(const std::string& motif, std::vector<ftp::EntreeListe>& trouves, long& code,
                  bool& entame);
    void FinTransfert();

    ftp::SessionCurl session_;
    bool connecte_ = false;
    int32_t transferType_ = kTransferAscii;
    int32_t connectionFlags_ = 0;
    std::string lastError_;
    long lastErrorNumber_ = 0;
    cDirList directory_;
    std::string dossierCourant_ = "/";
    std::string utilisateur_;
    std::string motDePasse_;
    bool ftps_ = false;
    bool verifierTls_ = true;
    int64_t delaiMs_ = 30000;
    bool occupe_ = false;
    bool fermetureDemandee_ = false;
};

}  // namespace zl3
