// Options of the command-line programs: "--name value" pairs and "--flag" switches.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zl3 {

class OptionsLigne {
  public:
    // `avecValeur`: options that take a value; `drapeaux`: options without one. Anything else
    // (or a missing value) makes Analyse() false with `erreur` set.
    OptionsLigne(std::set<std::string> avecValeur, std::set<std::string> drapeaux);
    bool Analyse(int argc, char** argv);
    const std::string& Erreur() const { return erreur_; }

    bool A(const std::string& nom) const;
    std::optional<std::string> Valeur(const std::string& nom) const;
    // Integer value within [min, max]; false with the error set when not a number or outside.
    bool Entier(const std::string& nom, long long min, long long max, long long& valeur);
    const std::vector<std::string>& Arguments() const { return arguments_; }

  private:
    std::set<std::string> avecValeur_;
    std::set<std::string> drapeaux_;
    std::map<std::string, std::string> valeurs_;
    std::set<std::string> presents_;
    std::vector<std::string> arguments_;
    std::string erreur_;
};

}  // namespace zl3
