#include "ListeFTP.h"

#include "Lib_Systeme.h"

#include <cctype>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <sstream>

namespace zl3::ftp {
namespace {

std::string Minuscules(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

bool Chiffres(const std::string& s) {
    if (s.empty()) return false;
    for (unsigned char c : s)
        if (!std::isdigit(c)) return false;
    return true;
}

std::vector<std::string> Lignes(const std::string& texte) {
    std::vector<std::string> lignes;
    std::string l;
    std::istringstream in(texte);
    while (std::getline(in, l)) {
        if (!l.empty() && l.back() == '\r') l.pop_back();
        if (!l.empty()) lignes.push_back(l);
    }
    return lignes;
}

bool NomAcceptable(const std::string& nom) {
    return !nom.empty() && nom != "." && nom != "..";
}

// "YYYYMMDDHHMMSS[.fff]" in UTC, as a local time.
std::optional<DateTime> TempsMlsd(const std::string& v) {
    if (v.size() < 14 || !Chiffres(v.substr(0, 14))) return std::nullopt;
    std::tm tm{};
    tm.tm_year = std::atoi(v.substr(0, 4).c_str()) - 1900;
    tm.tm_mon = std::atoi(v.substr(4, 2).c_str()) - 1;
    tm.tm_mday = std::atoi(v.substr(6, 2).c_str());
    tm.tm_hour = std::atoi(v.substr(8, 2).c_str());
    tm.tm_min = std::atoi(v.substr(10, 2).c_str());
    tm.tm_sec = std::atoi(v.substr(12, 2).c_str());
    if (!IsValidDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday) || tm.tm_hour > 23 ||
        tm.tm_min > 59 || tm.tm_sec > 60)
        return std::nullopt;
    // Seconds since 1970 of that UTC time, computed here: timegm is not in every C runtime.
    const time_t t = static_cast<time_t>(
        DaysFromCivil(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday) * 86400 + tm.tm_hour * 3600 +
        tm.tm_min * 60 + tm.tm_sec);
    std::tm local{};
    if (!sys::HeureLocale(t, local)) return std::nullopt;
    return DateTime{local.tm_year + 1900,
                    local.tm_mon + 1,
                    local.tm_mday,
                    local.tm_hour,
                    local.tm_min,
                    local.tm_sec,
                    0};
}

int Mois(const std::string& t) {
    static const char* noms[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                 "jul", "aug", "sep", "oct", "nov", "dec"};
    const std::string m = Minuscules(t);
    for (int i = 0; i < 12; ++i)
        if (m == noms[i]) return i + 1;
    return 0;
}

struct Jeton {
    std::string texte;
    size_t fin;  // index just past the token in the line
};

std::vector<Jeton> Jetons(const std::string& l) {
    std::vector<Jeton> j;
    size_t i = 0;
    while (i < l.size()) {
        while (i < l.size() && l[i] == ' ')
            ++i;
        const size_t d = i;
        while (i < l.size() && l[i] != ' ')
            ++i;
        if (i > d) j.push_back({l.substr(d, i - d), i});
    }
    return j;
}

std::optional<EntreeListe> LigneUnix(const std::string& l, const DateTime& maintenant) {
    if (l.size() < 10 || std::string("-dlbcps").find(l[0]) == std::string::npos)
        return std::nullopt;
    const auto j = Jetons(l);
    for (size_t i = 2; i + 2 < j.size(); ++i) {
        const int mois = Mois(j[i].texte);
        if (!mois || !Chiffres(j[i - 1].texte) || !Chiffres(j[i + 1].texte)) continue;
        const int jour = std::atoi(j[i + 1].texte.c_str());
        const std::string& h = j[i + 2].texte;
        DateTime d{maintenant.year, mois, jour, 0, 0, 0, 0};
        if (h.size() == 5 && h[2] == ':' && Chiffres(h.substr(0, 2)) && Chiffres(h.substr(3))) {
            d.hour = std::atoi(h.substr(0, 2).c_str());
            d.minute = std::atoi(h.substr(3).c_str());
            // No year: the date is within the last months; one ahead of today is last year's.
            if (DaysFromCivil(d.year, mois, 1) + jour - 1 >
                DaysFromCivil(maintenant.year, maintenant.month, maintenant.day) + 1)
                d.year -= 1;
        } else if (h.size() == 4 && Chiffres(h)) {
            d.year = std::atoi(h.c_str());
        } else {
            continue;
        }
        if (!IsValidDate(d.year, d.month, d.day) || d.hour > 23 || d.minute > 59) continue;
        if (j[i + 2].fin + 1 >= l.size()) return std::nullopt;
        EntreeListe e;
        e.nom = l.substr(j[i + 2].fin + 1);
        if (l[0] == 'l') {
            const auto fleche = e.nom.find(" -> ");
            if (fleche != std::string::npos) e.nom.resize(fleche);
        }
        e.taille = std::strtoll(j[i - 1].texte.c_str(), nullptr, 10);
        if (l[0] == 'd') {
            e.attributs = kAttrDossier;
        } else {
            e.attributs = (l.size() > 2 && l[2] != 'w') ? kAttrLectureSeule : kAttrNormal;
        }
        e.creation = e.dernierAcces = e.derniereEcriture = d;
        return e;
    }
    return std::nullopt;
}

// "11-23-26  09:41AM       <DIR>          name" / "11-23-2026  09:41PM  1234 name".
std::optional<EntreeListe> LigneWindows(const std::string& l) {
    const auto j = Jetons(l);
    if (j.size() < 4) return std::nullopt;
    const std::string& date = j[0].texte;
    const std::string& heure = j[1].texte;
    if ((date.size() != 8 && date.size() != 10) || date[2] != '-' || date[5] != '-')
        return std::nullopt;
    if (!Chiffres(date.substr(0, 2)) || !Chiffres(date.substr(3, 2)) || !Chiffres(date.substr(6)))
        return std::nullopt;
    if (heure.size() != 7 || heure[2] != ':' || !Chiffres(heure.substr(0, 2)) ||
        !Chiffres(heure.substr(3, 2)))
        return std::nullopt;
    const std::string ampm = Minuscules(heure.substr(5));
    if (ampm != "am" && ampm != "pm") return std::nullopt;
    DateTime d;
    d.month = std::atoi(date.substr(0, 2).c_str());
    d.day = std::atoi(date.substr(3, 2).c_str());
    d.year = std::atoi(date.substr(6).c_str());
    if (date.size() == 8) d.year += d.year < 70 ? 2000 : 1900;
    d.hour = std::atoi(heure.substr(0, 2).c_str()) % 12 + (ampm == "pm" ? 12 : 0);
    d.minute = std::atoi(heure.substr(3, 2).c_str());
    if (!IsValidDate(d.year, d.month, d.day) || d.hour > 23 || d.minute > 59) return std::nullopt;
    EntreeListe e;
    if (j[2].texte == "<DIR>") {
        e.attributs = kAttrDossier;
    } else if (Chiffres(j[2].texte)) {
        e.taille = std::strtoll(j[2].texte.c_str(), nullptr, 10);
    } else {
        return std::nullopt;
    }
    size_t debut = j[2].fin;
    while (debut < l.size() && l[debut] == ' ')
        ++debut;
    e.nom = l.substr(debut);
    e.creation = e.dernierAcces = e.derniereEcriture = d;
    return e;
}

}  // namespace

std::vector<EntreeListe> AnalyseMlsd(const std::string& texte) {
    std::vector<EntreeListe> entrees;
    for (const auto& l : Lignes(texte)) {
        const auto blanc = l.find(' ');
        if (blanc == std::string::npos) continue;
        EntreeListe e;
        e.nom = l.substr(blanc + 1);
        std::string type;
        std::optional<int32_t> ea;
        std::istringstream faits(l.substr(0, blanc));
        std::string fait;
        while (std::getline(faits, fait, ';')) {
            const auto egal = fait.find('=');
            if (egal == std::string::npos) continue;
            const std::string nom = Minuscules(fait.substr(0, egal));
            const std::string valeur = fait.substr(egal + 1);
            if (nom == "type") {
                type = Minuscules(valeur);
            } else if (nom == "size" && Chiffres(valeur)) {
                e.taille = std::strtoll(valeur.c_str(), nullptr, 10);
            } else if (nom == "modify") {
                if (auto t = TempsMlsd(valeur)) e.derniereEcriture = *t;
            } else if (nom == "create") {
                if (auto t = TempsMlsd(valeur)) e.creation = *t;
            } else if (nom == "win32.ea") {
                char* fin = nullptr;
                const long v = std::strtol(valeur.c_str(), &fin, 0);
                if (fin && *fin == '\0' && v >= 0 && v <= 0x7FFFFFFF) ea = static_cast<int32_t>(v);
            }
        }
        if (type == "cdir" || type == "pdir" || !NomAcceptable(e.nom)) continue;
        if (type.rfind("os.unix=", 0) == 0) continue;  // devices and other special files
        const bool dossier = type == "dir";
        if (ea)
            e.attributs = *ea;
        else
            e.attributs = dossier ? kAttrDossier : kAttrNormal;
        if (dossier)
            e.attributs |= kAttrDossier;
        else
            e.attributs &= ~kAttrDossier;
        if (e.creation == DateTime{}) e.creation = e.derniereEcriture;
        e.dernierAcces = e.derniereEcriture;
        entrees.push_back(e);
    }
    return entrees;
}

std::vector<EntreeListe> AnalyseList(const std::string& texte, const DateTime& maintenant) {
    std::vector<EntreeListe> entrees;
    for (const auto& l : Lignes(texte)) {
        auto e = LigneUnix(l, maintenant);
        if (!e) e = LigneWindows(l);
        if (e && NomAcceptable(e->nom)) entrees.push_back(*e);
    }
    return entrees;
}

bool CorrespondMotif(const std::string& nom, const std::string& motif) {
    if (motif == "*.*" || motif == "*") return true;
    size_t n = 0, m = 0, etoile = std::string::npos, reprise = 0;
    while (n < nom.size()) {
        if (m < motif.size() && (motif[m] == '?' || motif[m] == nom[n])) {
            ++n;
            ++m;
        } else if (m < motif.size() && motif[m] == '*') {
            etoile = m++;
            reprise = n;
        } else if (etoile != std::string::npos) {
            m = etoile + 1;
            n = ++reprise;
        } else {
            return false;
        }
    }
    while (m < motif.size() && motif[m] == '*')
        ++m;
    return m == motif.size();
}

}  // namespace zl3::ftp
