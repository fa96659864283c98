#include "CibleSortie.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace zl3 {

namespace fs = std::filesystem;

namespace {

fs::path CheminNatif(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

bool FinitPar(const std::string& texte, const std::string& fin) {
    if (texte.size() < fin.size()) return false;
    return std::equal(fin.begin(), fin.end(), texte.end() - static_cast<long>(fin.size()),
                      [](char a, char b) {
                          return std::tolower(static_cast<unsigned char>(a)) ==
                                 std::tolower(static_cast<unsigned char>(b));
                      });
}

bool CommeBaseSqlite(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    char entete[16] = {};
    if (!f.read(entete, sizeof entete)) return false;
    return std::memcmp(entete, "SQLite format 3", 16) == 0;
}

}  // namespace

bool EstFichierBase(const std::string& chemin) {
    for (const char* fin : {".bt6", ".bt6-wal", ".bt6-shm", ".bt6-journal"})
        if (FinitPar(chemin, fin)) return true;
    std::error_code ec;
    const fs::path p = CheminNatif(chemin);
    return fs::is_regular_file(p, ec) && CommeBaseSqlite(p);
}

ControleCible ControleCibleSortie(const std::string& chemin, bool ecraser) {
    ControleCible c;
    const fs::path p = CheminNatif(chemin);
    std::error_code ec;
    if (chemin.empty() || p.filename().empty() || chemin.back() == '/' || chemin.back() == '\\') {
        c.verdict = VerdictCible::NomInvalide;
        c.message = "nom de fichier de sortie absent: '" + chemin + "'";
    } else if (fs::is_directory(p, ec)) {
        c.verdict = VerdictCible::Dossier;
        c.message = "'" + chemin + "' est un dossier, pas un fichier";
    } else if (EstFichierBase(chemin)) {
        c.verdict = VerdictCible::Base;
        c.message = "'" + chemin + "' est un fichier de la base de données: jamais remplacé";
    } else if (fs::exists(p, ec) && !fs::is_regular_file(p, ec)) {
        // A device or a pipe would be replaced by the renamed file, not written into.
        c.verdict = VerdictCible::NomInvalide;
        c.message = "'" + chemin + "' n'est pas un fichier ordinaire";
    } else if (fs::exists(fs::symlink_status(p, ec))) {
        c.verdict = ecraser ? VerdictCible::Remplacee : VerdictCible::Gardee;
        if (!ecraser)
            c.message =
                "le fichier '" + chemin + "' existe déjà: gardé (--overwrite pour le remplacer)";
    }
    return c;
}

ResultatEcriture EcritTexteSortie(const std::string& chemin, const std::string& contenu) {
    return EcritFichierAtomique(chemin, [&](SortieFichier& sortie, std::string&) {
        sortie.Ecrit(contenu);
        return true;
    });
}

}  // namespace zl3
