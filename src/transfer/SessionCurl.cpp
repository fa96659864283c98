#include "SessionCurl.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <mutex>

namespace zl3::ftp {
namespace {

constexpr size_t kMaxLignesReponse = 400;
constexpr size_t kMaxLongueurLigne = 4096;

CURL* H(void* h) {
    return static_cast<CURL*>(h);
}

void InitCurlUneFois() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

std::string Encode(const std::string& chemin) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : chemin) {
        if (std::isalnum(c) || c == '/' || c == '-' || c == '_' || c == '.' || c == '~') {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

struct Tampon {
    std::string* texte;
    size_t max;
    bool* tropLong;
};

size_t VersTexte(char* data, size_t size, size_t n, void* p) {
    auto* t = static_cast<Tampon*>(p);
    const size_t len = size * n;
    if (t->texte->size() + len > t->max) {
        *t->tropLong = true;
        return 0;
    }
    t->texte->append(data, len);
    return len;
}

size_t VersPuits(char* data, size_t size, size_t n, void* p) {
    auto* puits = static_cast<const std::function<bool(const char*, size_t)>*>(p);
    const size_t len = size * n;
    return (*puits)(data, len) ? len : 0;
}

size_t DepuisSource(char* data, size_t size, size_t n, void* p) {
    auto* source = static_cast<const std::function<size_t(char*, size_t)>*>(p);
    const size_t lu = (*source)(data, size * n);
    return lu == SIZE_MAX ? CURL_READFUNC_ABORT : lu;
}

size_t Ignorer(char*, size_t size, size_t n, void*) {
    return size * n;
}

}  // namespace

std::string Serveur::Affichage() const {
    return port == 21 ? hote : hote + ":" + std::to_string(port);
}

std::optional<Serveur> AnalyseServeur(const std::string& texte) {
    std::string t = texte;
    while (!t.empty() && std::isspace(static_cast<unsigned char>(t.back())))
        t.pop_back();
    size_t debut = 0;
    while (debut < t.size() && std::isspace(static_cast<unsigned char>(t[debut])))
        ++debut;
    t = t.substr(debut);
    Serveur s;
    const auto schema = t.find("://");
    if (schema != std::string::npos) {
        std::string nom = t.substr(0, schema);
        std::transform(nom.begin(), nom.end(), nom.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (nom == "ftps")
            s.ftps = true;
        else if (nom != "ftp")
            return std::nullopt;
        t = t.substr(schema + 3);
    }
    t = t.substr(0, t.find('/'));
    const auto arobase = t.rfind('@');
    if (arobase != std::string::npos) t = t.substr(arobase + 1);
    std::string port;
    if (!t.empty() && t[0] == '[') {  // [IPv6]:port
        const auto fin = t.find(']');
        if (fin == std::string::npos) return std::nullopt;
        s.hote = t.substr(1, fin - 1);
        if (fin + 1 < t.size()) {
            if (t[fin + 1] != ':') return std::nullopt;
            port = t.substr(fin + 2);
        }
    } else {
        const auto dp = t.find(':');
        s.hote = t.substr(0, dp);
        if (dp != std::string::npos) {
            if (t.find(':', dp + 1) != std::string::npos) return std::nullopt;
            port = t.substr(dp + 1);
        }
    }
    if (s.hote.empty()) return std::nullopt;
    for (unsigned char c : s.hote)
        if (!(std::isalnum(c) || c == '.' || c == '-' || c == '_' || c == ':')) return std::nullopt;
    if (!port.empty()) {
        if (port.size() > 5 ||
            !std::all_of(port.begin(), port.end(), [](unsigned char c) { return std::isdigit(c); }))
            return std::nullopt;
        s.port = std::stoi(port);
        if (s.port < 1 || s.port > 65535) return std::nullopt;
    }
    return s;
}

bool CheminTransmissible(const std::string& chemin) {
    return chemin.find_first_of(std::string("\r\n\0", 3)) == std::string::npos;
}

SessionCurl::SessionCurl() {
    InitCurlUneFois();
}

SessionCurl::~SessionCurl() {
    Fermer();
}

void SessionCurl::Fermer() {
    if (handle_) curl_easy_cleanup(H(handle_));
    handle_ = nullptr;
    if (listeCommandes_) curl_slist_free_all(static_cast<curl_slist*>(listeCommandes_));
    listeCommandes_ = nullptr;
    mlsd_ = false;
    dossierEntree_ = "/";
}

std::string SessionCurl::Url(const std::string& chemin) const {
    const auto& s = parametres_.serveur;
    const bool ipv6 = s.hote.find(':') != std::string::npos;
    std::string url =
        "ftp://" + (ipv6 ? "[" + s.hote + "]" : s.hote) + ":" + std::to_string(s.port) + "/";
    // The first "/" only separates the address from the path; the path itself is absolute.
    return url + Encode(chemin.empty() ? std::string("/") : chemin);
}

std::string SessionCurl::TexteCurl(int code) {
    return curl_easy_strerror(static_cast<CURLcode>(code));
}

size_t SessionCurl::SurEntete(char* data, size_t size, size_t n, void* p) {
    auto* self = static_cast<SessionCurl*>(p);
    const size_t len = size * n;
    std::string ligne(data, std::min(len, kMaxLongueurLigne));
    while (!ligne.empty() && (ligne.back() == '\n' || ligne.back() == '\r'))
        ligne.pop_back();
    if (self->reponses_.size() < kMaxLignesReponse) self->reponses_.push_back(ligne);
    if (ligne.size() >= 3 && std::isdigit(static_cast<unsigned char>(ligne[0])) &&
        std::isdigit(static_cast<unsigned char>(ligne[1])) &&
        std::isdigit(static_cast<unsigned char>(ligne[2])))
        self->derniereReponse_ = ligne;
    return len;
}

void SessionCurl::Preparer(const std::string& chemin) {
    CURL* h = H(handle_);
    curl_easy_reset(h);  // keeps the connection
    if (listeCommandes_) curl_slist_free_all(static_cast<curl_slist*>(listeCommandes_));
    listeCommandes_ = nullptr;
    reponses_.clear();
    const auto& p = parametres_;
    const long delaiS = static_cast<long>(std::max<int64_t>(1, (p.delaiMs + 999) / 1000));
    curl_easy_setopt(h, CURLOPT_URL, Url(chemin).c_str());
    curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "ftp");
    curl_easy_setopt(h, CURLOPT_USERNAME, p.utilisateur.c_str());
    curl_easy_setopt(h, CURLOPT_PASSWORD, p.motDePasse.c_str());
    curl_easy_setopt(h, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_NOCWD));
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(p.delaiMs));
    curl_easy_setopt(h, CURLOPT_SERVER_RESPONSE_TIMEOUT, delaiS);
    curl_easy_setopt(h, CURLOPT_ACCEPTTIMEOUT_MS, static_cast<long>(p.delaiMs));
    curl_easy_setopt(h, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(h, CURLOPT_LOW_SPEED_TIME, delaiS);
    curl_easy_setopt(h, CURLOPT_FTP_SKIP_PASV_IP, 1L);
    curl_easy_setopt(h, CURLOPT_HEADERFUNCTION, &SessionCurl::SurEntete);
    curl_easy_setopt(h, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, &Ignorer);
    if (!p.passif) curl_easy_setopt(h, CURLOPT_FTPPORT, "-");
    if (p.ftps) {
        curl_easy_setopt(h, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
        curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, p.verifierTls ? 1L : 0L);
        curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, p.verifierTls ? 2L : 0L);
    }
}

ResultatCurl SessionCurl::Executer() {
    return ResultatCurl{static_cast<int>(curl_easy_perform(H(handle_)))};
}

ResultatCurl SessionCurl::Ouvrir(const ParametresSession& parametres) {
    Fermer();
    derniereReponse_.clear();
    parametres_ = parametres;
    if (parametres.ftps) parametres_.serveur.ftps = true;
    parametres_.ftps = parametres_.serveur.ftps;
    handle_ = curl_easy_init();
    if (!handle_) return ResultatCurl{CURLE_FAILED_INIT};
    Preparer("/");
    CURL* h = H(handle_);
    curl_easy_setopt(h, CURLOPT_NOBODY, 1L);
    // FEAT tells whether MLSD is there; a server that does not know FEAT is no failure ("*").
    auto* liste = curl_slist_append(nullptr, "*FEAT");
    listeCommandes_ = liste;
    curl_easy_setopt(h, CURLOPT_QUOTE, liste);
    const ResultatCurl r = Executer();
    if (!r.Ok()) {
        const std::string reponse = derniereReponse_;
        Fermer();
        derniereReponse_ = reponse;
        return r;
    }
    char* entree = nullptr;
    if (curl_easy_getinfo(h, CURLINFO_FTP_ENTRY_PATH, &entree) == CURLE_OK && entree &&
        entree[0] == '/' && CheminTransmissible(entree))
        dossierEntree_ = entree;
    for (const auto& ligne : reponses_) {
        std::string l = ligne;
        l.erase(0, l.find_first_not_of(" \t"));
        std::transform(l.begin(), l.end(), l.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        if (l.rfind("MLST", 0) == 0) mlsd_ = true;
    }
    return r;
}

ResultatCurl SessionCurl::Commandes(const std::vector<std::string>& commandes) {
    if (!handle_) return ResultatCurl{CURLE_FAILED_INIT};
    Preparer("/");
    CURL* h = H(handle_);
    curl_easy_setopt(h, CURLOPT_NOBODY, 1L);
    curl_slist* liste = nullptr;
    for (const auto& c : commandes)
        liste = curl_slist_append(liste, c.c_str());
    listeCommandes_ = liste;
    curl_easy_setopt(h, CURLOPT_QUOTE, liste);
    return Executer();
}

ResultatCurl SessionCurl::Liste(const std::string& dossier, bool mlsd, std::string& texte,
                                size_t maxOctets, bool& tropLong) {
    texte.clear();
    tropLong = false;
    if (!handle_) return ResultatCurl{CURLE_FAILED_INIT};
    std::string d = dossier.empty() ? "/" : dossier;
    if (d.back() != '/') d += '/';
    Preparer(d);
    CURL* h = H(handle_);
    Tampon t{&texte, maxOctets, &tropLong};
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, &VersTexte);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, &t);
    if (mlsd) curl_easy_setopt(h, CURLOPT_CUSTOMREQUEST, "MLSD");
    return Executer();
}

ResultatCurl SessionCurl::Recevoir(const std::string& chemin, bool binaire,
                                   const std::function<bool(const char*, size_t)>& puits) {
    if (!handle_) return ResultatCurl{CURLE_FAILED_INIT};
    Preparer(chemin);
    CURL* h = H(handle_);
    curl_easy_setopt(h, CURLOPT_TRANSFERTEXT, binaire ? 0L : 1L);
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, &VersPuits);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, &puits);
    return Executer();
}

ResultatCurl SessionCurl::Envoyer(const std::string& chemin, bool binaire,
                                  const std::function<size_t(char*, size_t)>& source) {
    if (!handle_) return ResultatCurl{CURLE_FAILED_INIT};
    Preparer(chemin);
    CURL* h = H(handle_);
    curl_easy_setopt(h, CURLOPT_TRANSFERTEXT, binaire ? 0L : 1L);
    curl_easy_setopt(h, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(h, CURLOPT_UPLOAD_BUFFERSIZE, 65536L);  // holds the largest chunk
    curl_easy_setopt(h, CURLOPT_READFUNCTION, &DepuisSource);
    curl_easy_setopt(h, CURLOPT_READDATA, &source);
    return Executer();
}

}  // namespace zl3::ftp
