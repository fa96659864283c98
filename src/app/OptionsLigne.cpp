#include "OptionsLigne.h"

#include <cerrno>
#include <cstdlib>

namespace zl3 {

OptionsLigne::OptionsLigne(std::set<std::string> avecValeur, std::set<std::string> drapeaux)
    : avecValeur_(std::move(avecValeur)), drapeaux_(std::move(drapeaux)) {}

bool OptionsLigne::Analyse(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a.rfind("--", 0) != 0) {
            arguments_.push_back(a);
            continue;
        }
        std::string nom = a.substr(2);
        std::optional<std::string> valeur;
        if (const size_t eq = nom.find('='); eq != std::string::npos) {
            valeur = nom.substr(eq + 1);
            nom = nom.substr(0, eq);
        }
        if (drapeaux_.count(nom)) {
            if (valeur) {
                erreur_ = "l'option --" + nom + " ne prend pas de valeur";
                return false;
            }
            presents_.insert(nom);
            continue;
        }
        if (!avecValeur_.count(nom)) {
            erreur_ = "option inconnue: " + a;
            return false;
        }
        if (!valeur) {
            if (i + 1 >= argc) {
                erreur_ = "valeur manquante pour --" + nom;
                return false;
            }
            valeur = argv[++i];
        }
        presents_.insert(nom);
        valeurs_[nom] = *valeur;
    }
    return true;
}

bool OptionsLigne::A(const std::string& nom) const {
    return presents_.count(nom) > 0;
}

std::optional<std::string> OptionsLigne::Valeur(const std::string& nom) const {
    const auto it = valeurs_.find(nom);
    if (it == valeurs_.end()) return std::nullopt;
    return it->second;
}

bool OptionsLigne::Entier(const std::string& nom, long long min, long long max, long long& valeur) {
    const auto v = Valeur(nom);
    if (!v) return true;
    errno = 0;
    char* fin = nullptr;
    const long long n = std::strtoll(v->c_str(), &fin, 10);
    if (v->empty() || *fin != '\0' || errno == ERANGE || n < min || n > max) {
        erreur_ = "valeur incorrecte pour --" + nom + ": '" + *v + "' (attendu: entier de " +
                  std::to_string(min) + " à " + std::to_string(max) + ")";
        return false;
    }
    valeur = n;
    return true;
}

}  // namespace zl3
