#include "Lib_Web.h"

#include <cmath>
#include <cstdio>

#include "Lib_Public.h"
#include "cFTP.h"

namespace zl3 {

bool NomLocalSur(const std::string& nom) {
    if (nom.empty() || nom == "." || nom == "..") return false;
    for (unsigned char c : nom)
        if (c < 0x20 || c == 0x7F || c == '/' || c == '\\' || c == ':') return false;
    return true;
}

std::string NomVisible(const std::string& nom) {
    std::string v = nom.substr(0, 260);
    for (char& c : v)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    return v;
}

void TraceNomRefuse(const std::string& nom) {
    TraceLogEncadre("Err: FTP: Unsafe file name refused: '" + NomVisible(nom) + "'");
}

std::string NormaliseDossierFTP(const std::string& dossier) {
    if (dossier == "/") return dossier;
    std::string d = dossier;
    if (d.empty() || d.front() != '/') d = "/" + d;
    if (d.back() != '/') d += "/";
    for (auto p = d.find("//"); p != std::string::npos; p = d.find("//"))
        d.replace(p, 2, "/");
    return d;
}

std::string CheckFolderInternet(const std::string& chemin) {
    std::string r;
    for (char c : chemin) {
        if (c == '\\') c = '/';
        if (c == '/' && !r.empty() && r.back() == '/') continue;
        r += c;
    }
    return r;
}

std::string ClearDossierFTP(const std::string& dossier) {
    std::string d = CheckFolderInternet(Trim(dossier));
    if (d.empty()) return d;
    if (d.front() != '/') d = "/" + d;
    return d;
}

bool StartUpdate(const std::string& adresse, std::string& serveur, std::string& chemin) {
    std::string reste = adresse;
    const auto schema = reste.find("://");
    if (schema != std::string::npos) reste = reste.substr(schema + 3);
    const auto barre = reste.find('/');
    if (barre == std::string::npos) return false;
    serveur = reste.substr(0, barre);
    chemin = reste.substr(barre);
    return !serveur.empty() && chemin.size() > 1;
}

std::string LibInternetError(long code) {
    switch (code - 12002) {
        case 0:
            return "TimeOut";
        case 27:
            return "Cannot Connect";
        case 28:
            return "Connection aborted";
        case 29:
            return "Internal Network Error";
        case 30:
            return "Force Retry";
        case 31:
            return "Invalid Proxy Request";
        case 32:
            return "Need UI";
        default:
            return "";
    }
}

std::string GetWinInetErrDesc(long code) {
    return TexteErreurWinInet(code);
}

void AffichageDesErreurs(long code, const std::string& reponseServeur) {
    const std::string n = std::to_string(code);
    if (code == kErrExtended)
        TraceLogEncadre("Err: FTP: " + n + " (Desc.: " + NettoieLibErr(reponseServeur) + ") ");
    else if (code == kErrNomNonResolu)
        TraceLogEncadre("Err: FTP: Unable to open connection (Err: " + n + " (" +
                        LibInternetError(code) + "))");
    else
        TraceLogEncadre("Err: FTP: " + n + " (Desc.: " + GetWinInetErrDesc(code) + ")");
}

std::string FormatMilliers2(double valeur) {
    char tampon[64];
    std::snprintf(tampon, sizeof tampon, "%.2f", std::fabs(valeur));
    std::string s = tampon;
    const auto point = s.find('.');
    std::string entier = s.substr(0, point);
    std::string groupe;
    for (size_t i = 0; i < entier.size(); ++i) {
        if (i > 0 && (entier.size() - i) % 3 == 0) groupe += ',';
        groupe += entier[i];
    }
    const bool negatif = valeur < 0 && s != "0.00";
    return (negatif ? "-" : "") + groupe + s.substr(point);
}

}  // namespace zl3
