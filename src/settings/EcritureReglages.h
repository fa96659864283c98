// Writing one part of the settings key by key: the first failed write stops the part and is
// reported once, in the settings' own words (error 1009 with the file name).
#pragma once

#include <string>

#include "Lib_Profile.h"
#include "Lib_Public.h"

namespace zl3::reglages {

inline constexpr long kErrEcritureParametres =
    1009;  // "Impossible d'écrire le fichier de paramètres:"

class Ecriture {
  public:
    explicit Ecriture(std::string fichier) : fichier_(std::move(fichier)) {}
    // A value is one line: a line break inside it (pasted text) becomes a blank, so that no
    // value can add lines, keys or sections to the file.
    void Texte(const std::string& section, const std::string& cle, const std::string& valeur) {
        if (!ok_) return;
        std::string ligne = valeur;
        for (char& c : ligne)
            if (c == '\r' || c == '\n') c = ' ';
        ok_ = WriteProfileString(section, cle, ligne, fichier_);
    }
    void Nombre(const std::string& section, const std::string& cle, long valeur) {
        Texte(section, cle, std::to_string(valeur));
    }
    void Drapeau(const std::string& section, const std::string& cle, bool on) {
        Texte(section, cle, on ? "1" : "0");
    }
    // Reports a failure under `identite`; true when every key was written.
    bool Fin(const std::string& identite) {
        if (!ok_) GestErr_Fra(kErrEcritureParametres, "Lib_Settings", false, identite, fichier_);
        return ok_;
    }
    void Echec() { ok_ = false; }
    const std::string& Fichier() const { return fichier_; }

  private:
    std::string fichier_;
    bool ok_ = true;
};

}  // namespace zl3::reglages
