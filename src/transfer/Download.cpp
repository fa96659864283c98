#include "Download.h"

#include <curl/curl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Lib_Web.h"
#include "ListeFTP.h"
#include "Services.h"

namespace zl3 {
namespace {

constexpr int64_t kLecture = 1024;
constexpr size_t kMaxListe = 8u << 20;

std::string Vitesse(int64_t octets, int64_t ms) {
    char t[32];
    std::snprintf(t, sizeof t, "%.2f Ko/s",
                  static_cast<double>(octets) / 1024.0 * 1000.0 /
                      static_cast<double>(std::max<int64_t>(ms, 1)));
    return t;
}

std::string Duree(int64_t ms) {
    char t[32];
    std::snprintf(t, sizeof t, "%.2f s", static_cast<double>(ms) / 1000.0);
    return t;
}

}  // namespace

LogiqueDownload::LogiqueDownload() = default;

void LogiqueDownload::Form_Load() {
    TraceProc("FrmDownload:Form_Load");
    ftp_.SetModeActive();
}

bool LogiqueDownload::ConnectDownload() {
    TraceProc("FrmDownload:ConnectDownload");
    ftp_.CloseConnection();
    return Connexion();
}

std::string LogiqueDownload::Description(long code) const {
    if (code == kErrExtended) {
        std::string r = Trim(NettoieLibErr(session_.DerniereReponse()));
        for (const std::string& secret :
             {TxtPassword, TxtUser.size() >= 3 ? TxtUser : std::string()}) {
            if (secret.empty()) continue;
            for (auto p = r.find(secret); p != std::string::npos; p = r.find(secret, p + 4))
                r.replace(p, secret.size(), "****");
        }
        if (!r.empty()) return r;
    }
    return GetWinInetErrDesc(code);
}

std::string LogiqueDownload::FindInternetError(long code) const {
    return "Internet error: " + std::to_string(code) + " (" + Description(code) + ")";
}

bool LogiqueDownload::Connexion() {
    TraceProc("FrmDownload:Connexion");
    Deconnexion();
    const auto serveur = ftp::AnalyseServeur(TxtServer);
    TraceLog("FTP: Connection to the server: " +
             (serveur ? serveur->Affichage() : NomVisible(Trim(TxtServer))));
    auto erreur = [&](long code, const char* appel) {
        TraceLog("Err: " + std::to_string(code) + " " + Description(code) + " (Line: 0)(" + appel +
                 ")");
        return false;
    };
    if (!serveur) return erreur(kErrNomNonResolu, "InternetConnect");
    ftp::ParametresSession p;
    p.serveur = *serveur;
    p.utilisateur = TxtUser;
    p.motDePasse = TxtPassword;
    p.passif = OptionCnx == 1;
    p.ftps = ftps;
    p.delaiMs = delaiMs;
    const auto r = session_.Ouvrir(p);
    if (!r.Ok()) {
        if (r.code == CURLE_FAILED_INIT) return erreur(kErrInterne, "InternetOpen");
        return erreur(CodeWinInet(r.code), "InternetConnect");
    }
    connecte_ = true;
    TextDossierFTP = NormaliseDossierFTP(TextDossierFTP);
    return true;
}

void LogiqueDownload::Deconnexion() {
    session_.Fermer();
    connecte_ = false;
}

bool LogiqueDownload::TestValiditeDuDossierFTP() {
    TraceProc("FrmDownload:TestValiditeDuDossierFTP");
    long code = kErrHandleInvalide;
    if (connecte_ && ftp::CheminTransmissible(TextDossierFTP)) {
        const auto r = session_.Commandes({"CWD " + TextDossierFTP});
        if (r.Ok()) return true;
        code = CodeWinInet(r.code);
    } else if (connecte_) {
        code = kErrNomIncorrect;
    }
    TraceLog("Err: " + std::to_string(code) + ": " + Description(code));
    return false;
}

bool LogiqueDownload::LectureDesFichiersSurServeurFTP() {
    TraceProc("FrmDownload:LectureDesFichiersSurServeurFTP");
    ListeTemporaire.clear();
    if (!TestValiditeDuDossierFTP()) return false;
    std::string texte;
    bool tropLong = false;
    const bool mlsd = session_.OffreMlsd();
    const auto r = session_.Liste(TextDossierFTP, mlsd, texte, kMaxListe, tropLong);
    if (!r.Ok()) {
        const long code = tropLong ? kErrMemoire : CodeWinInet(r.code);
        TraceLog("Err: " + std::to_string(code) +
                 (texte.empty() ? ": FtpFindFirstFile" : ": InternetFindNextFile"));
        return false;
    }
    const auto entrees =
        mlsd ? ftp::AnalyseMlsd(texte) : ftp::AnalyseList(texte, Svc().clock->Now());
    for (const auto& e : entrees) {
        if (e.attributs == ftp::kAttrDossier) continue;  // a plain folder; other bits: kept
        ListeTemporaire.push_back(
            {e.nom.substr(0, e.nom.find('\0')), e.derniereEcriture, e.taille});
    }
    return true;
}

std::string LogiqueDownload::Pourcentage(double v) {
    if (!std::isfinite(v) || v <= 0) return "0";
    const int chiffresEntiers = v >= 1 ? static_cast<int>(std::floor(std::log10(v))) + 1 : 0;
    int decimales = 5 - chiffresEntiers;
    if (v < 1) decimales = 4 - static_cast<int>(std::floor(std::log10(v)));
    decimales = std::clamp(decimales, 0, 12);
    char t[64];
    std::snprintf(t, sizeof t, "%.*f", decimales, v);
    std::string s = t;
    if (s.find('.') != std::string::npos) {
        while (s.back() == '0')
            s.pop_back();
        if (s.back() == '.') s.pop_back();
    }
    return s;
}

bool LogiqueDownload::TelechargerUn(const LigneListe& ligne, int64_t debutMs) {
    const std::string distant = TextDossierFTP + ligne.nom;
    std::string serveur, chemin;
    if (!NomLocalSur(ligne.nom) || !StartUpdate(TxtServer + CheckFolderInternet(TextDossierFTP) +
                                                    CheckFolderInternet(ligne.nom),
                                                serveur, chemin)) {
        TraceNomRefuse(ligne.nom);
        return false;
    }
    TraceLog("FTP: Download file: " + ligne.nom + " Date: " + FormatDDMMYYYY(ligne.date) + " " +
             FormatHHMMSS(ligne.date) + " Size: " + std::to_string(ligne.taille / 1024) + " Ko");
    const std::string local = sys::WithTrailingSep(dossierLocal) + ligne.nom;
    std::ofstream out;
    bool ouvert = false;
    bool erreurLocale = false;
    bool tropLong = false;
    int64_t recu = 0;
    std::string enCours;
    auto ouvrir = [&]() {
        if (ouvert) return true;
        ouvert = true;
        TraceLog("FTP: Download:'" + distant + "'");
        out.open(local, std::ios::binary | std::ios::trunc);
        return static_cast<bool>(out);
    };
    auto lecture = [&](const char* d, int64_t n) {
        out.write(d, n);
        recu += n;
        octetsRecus += n;
        const double part =
            ligne.taille > 0 ? 100.0 * static_cast<double>(recu) / static_cast<double>(ligne.taille)
                             : 100.0;
        LabelPourcentage = Pourcentage(part) + "%";
        TexteFichierEnCours =
            ligne.nom + " (" + Vitesse(octetsRecus, Svc().clock->Stopwatch() - debutMs) + ")";
        if (onLecture) onLecture(n);
        if (onAffichage) onAffichage();
        Svc().events->DoEvents();
    };
    const auto r = session_.Recevoir(ftp::CheminTransmissible(distant) ? distant : "", true,
                                     [&](const char* d, size_t n) {
                                         if (!ouvrir()) {
                                             erreurLocale = true;
                                             return false;
                                         }
                                         enCours.append(d, n);
                                         while (static_cast<int64_t>(enCours.size()) >= kLecture) {
                                             lecture(enCours.data(), kLecture);
                                             enCours.erase(0, kLecture);
                                         }
                                         // More than listed: a stale listing or an endless
                                         // stream; what came is kept and the transfer stopped.
                                         if (recu > ligne.taille) tropLong = true;
                                         return out && !tropLong;
                                     });
    if (r.Ok()) {
        if (!ouvrir())
            erreurLocale = true;
        else
            lecture(enCours.data(), static_cast<int64_t>(enCours.size()));  // the short last read
    }
    if (out.is_open()) out.close();
    if (erreurLocale) {
        TraceLogEncadre("Err: FTP: Unable to write: '" + local + "'");
        return false;
    }
    if (tropLong) {
        TraceLog("Err: FTP: Unable to download: '" + distant + "' (more than " +
                 std::to_string(ligne.taille) + " octets)");
        return false;
    }
    if (!r.Ok()) {
        const long code = CodeWinInet(r.code);
        TraceLog("Err: FTP: Unable to download: '" + distant + "' (Err:" + std::to_string(code) +
                 ") (" + FindInternetError(code) + ")");
        return false;
    }
    return recu == ligne.taille;
}

bool LogiqueDownload::FTPDownload() {
    TraceProc("FrmDownload:FTPDownload");
    TraceLog("FTP: Start download");
    fichiersRecus = 0;
    tailleListee = 0;
    octetsRecus = 0;
    const int64_t debut = Svc().clock->Stopwatch();
    bool tout = connecte_;
    const bool dossierPresent = !Trim(dossierLocal).empty() && sys::FolderExists(dossierLocal);
    if (!dossierPresent) {
        TraceLogEncadre("Err: FTP: Local folder not found: '" + dossierLocal + "'");
        tout = false;
    }
    for (const auto& ligne : ListeTemporaire) {
        if (!dossierPresent) break;
        tailleListee += ligne.taille;
        if (connecte_ && TelechargerUn(ligne, debut))
            ++fichiersRecus;
        else
            tout = false;
    }
    const int64_t duree = Svc().clock->Stopwatch() - debut;
    TraceLog("Speed: " + Vitesse(octetsRecus, duree) + " Size: " + std::to_string(tailleListee) +
             " octets Receipt: " + std::to_string(octetsRecus) +
             " octets Duration: " + Duree(duree));
    TraceLog("FTP: Download done");
    return tout;
}

}  // namespace zl3
