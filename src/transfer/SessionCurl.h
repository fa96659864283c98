// One FTP session over libcurl: one easy handle kept for the life of the session, so that its
// control connection is reused from one operation to the next (libcurl logs in again by itself
// when a server dropped it). The class knows nothing of the suite's traces or error numbers; it
// returns libcurl's result and keeps the server's last reply line, for cFTP and the update
// download to report in their own words.
//
// Paths given to the operations are absolute remote paths ("/music/new/"); the session never
// relies on the server's current folder (libcurl runs with the no-CWD file method).
//
// Every network wait is bounded: connection and login, each server reply, each accepted data
// connection, and a transfer that stalls (less than 1 byte per second for the delay).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zl3::ftp {

// A server as typed in an FTP entry: "host", "host:port", "ftp://host[:port][/…]" or
// "ftps://…" (explicit TLS). Anything before an "@" (user:password@) is dropped: credentials
// are given apart and never travel in an address or a trace.
struct Serveur {
    std::string hote;
    int port = 21;
    bool ftps = false;
    // "host" or "host:port", fit for traces.
    std::string Affichage() const;
};
std::optional<Serveur> AnalyseServeur(const std::string& texte);

struct ParametresSession {
    Serveur serveur;
    std::string utilisateur;
    std::string motDePasse;
    bool passif = false;
    bool ftps = false;        // explicit TLS (AUTH TLS) on control and data connections
    bool verifierTls = true;  // check the server's certificate and name
    int64_t delaiMs = 30000;  // bound of every network wait
};

// libcurl's result of one operation. `code` is a CURLcode value.
struct ResultatCurl {
    int code = 0;
    bool Ok() const { return code == 0; }
};

class SessionCurl {
  public:
    SessionCurl();
    ~SessionCurl();
    SessionCurl(const SessionCurl&) = delete;
    SessionCurl& operator=(const SessionCurl&) = delete;

    // Connects and logs in (and asks the server's features). False: see Dernier().
    ResultatCurl Ouvrir(const ParametresSession& parametres);
    void Fermer();
    bool Ouverte() const { return handle_ != nullptr; }

    // The login folder the server reported ("/" when it said nothing usable).
    const std::string& DossierEntree() const { return dossierEntree_; }
    // The server offers MLSD (FEAT listed MLST).
    bool OffreMlsd() const { return mlsd_; }

    // Sends raw commands in order, on no transfer (MKD, DELE, RNFR/RNTO, CWD, PWD…). The
    // first failing command stops the sequence.
    ResultatCurl Commandes(const std::vector<std::string>& commandes);
    // Listing of folder `dossier` (absolute), MLSD or LIST, into `texte`; at most `maxOctets`
    // (more ends the listing with an error and `tropLong` set).
    ResultatCurl Liste(const std::string& dossier, bool mlsd, std::string& texte, size_t maxOctets,
                       bool& tropLong);
    // Retrieves file `chemin` (absolute); each block received goes to `puits`, which answers
    // false to stop the transfer (the result is then CURLE_WRITE_ERROR).
    ResultatCurl Recevoir(const std::string& chemin, bool binaire,
                          const std::function<bool(const char*, size_t)>& puits);
    // Stores file `chemin` (absolute); `source` fills up to `max` bytes and answers how many
    // (0: end of file; SIZE_MAX: abort).
    ResultatCurl Envoyer(const std::string& chemin, bool binaire,
                         const std::function<size_t(char*, size_t)>& source);

    // The server's last reply line (three digits first) and all reply lines of the last
    // operation (at most a few hundred are kept).
    const std::string& DerniereReponse() const { return derniereReponse_; }
    const std::vector<std::string>& Reponses() const { return reponses_; }
    // libcurl's own text for a result code.
    static std::string TexteCurl(int code);

    // The address of an absolute path on this server (percent-encoded).
    std::string Url(const std::string& chemin) const;

  private:
    void Preparer(const std::string& chemin);
    ResultatCurl Executer();
    static size_t SurEntete(char* data, size_t size, size_t n, void* self);

    void* handle_ = nullptr;          // CURL*
    void* listeCommandes_ = nullptr;  // curl_slist* of the running operation
    ParametresSession parametres_;
    std::string dossierEntree_ = "/";
    bool mlsd_ = false;
    std::string derniereReponse_;
    std::vector<std::string> reponses_;
    std::string ligneEnCours_;
};

// Whether a remote path or name can travel in an FTP command (no line break, no NUL).
bool CheminTransmissible(const std::string& chemin);

}  // namespace zl3::ftp
