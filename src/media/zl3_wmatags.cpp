// zl3-wmatags: prints the text tags of WMA/ASF files.
//
//   zl3-wmatags FICHIER...
//
// For each file whose ASF header is found: a line with the file name as given, then one
// "name=value" line per tag in the file's order (UTF-8). Files that cannot be read or hold no
// ASF header are reported on the error output. Exit code: 0 when every file's header was found,
// 1 when some file was missing, unreadable or without header, 2 on a usage error.
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "Cls_WMATag.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kUsage =
    "Usage: zl3-wmatags FICHIER...\n"
    "Affiche les tags texte de fichiers WMA/ASF: pour chaque fichier, une ligne avec son nom,\n"
    "puis une ligne \"nom=valeur\" par tag.\n"
    "Code de sortie: 0 si l'en-tête ASF de chaque fichier est trouvé, 1 si un fichier est\n"
    "introuvable, illisible ou sans en-tête ASF, 2 pour une erreur d'utilisation.\n";

// One tag per line: control characters (line breaks of lyrics, tabs) are shown as blanks.
std::string SurUneLigne(std::string text) {
    for (char& c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x20 || u == 0x7F) c = ' ';
    }
    return text;
}

// Why a file gave no header: it is missing, it is not a readable file, or it is not ASF.
std::string RaisonEchec(const std::string& fichier) {
    std::error_code ec;
    const fs::path path = zl3::sys::CheminFs(zl3::sys::NativePath(fichier));
    if (!fs::exists(path, ec)) return "Fichier introuvable: ";
    if (!fs::is_regular_file(path, ec)) return "Fichier illisible: ";
    return "En-tête ASF absent: ";
}

// Read errors traced while walking a header that was found: the tags shown are incomplete.
void SignaleErreursDeLecture(const std::string& fichier) {
    for (const std::string& line : zl3::Trace().lines) {
        const std::size_t err = line.find("Err: ");
        if (err == std::string::npos) continue;
        std::string texte = line.substr(err + 5);
        const std::size_t identite = texte.rfind(" |");
        if (identite != std::string::npos) texte.erase(identite);
        std::cerr << "Tags incomplets: " << fichier << ": " << texte << "\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    zl3::sys::ArgumentsUtf8 utf8(argc, argv);  // file names outside ASCII, on Windows too
    argc = utf8.Argc();
    argv = utf8.Argv();
    std::vector<std::string> fichiers;
    bool options = true;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (options && arg == "--") {
            options = false;
        } else if (options && (arg == "--help" || arg == "-h")) {
            std::cout << kUsage;
            return 0;
        } else if (options && arg.size() > 1 && arg[0] == '-') {
            std::cerr << "Option inconnue: " << arg << "\n" << kUsage;
            return 2;
        } else {
            fichiers.push_back(arg);
        }
    }
    if (fichiers.empty()) {
        std::cerr << kUsage;
        return 2;
    }

    int code = 0;
    for (const std::string& fichier : fichiers) {
        zl3::Trace().lines.clear();
        zl3::Cls_WMATag tags;
        tags.SetFilename(fichier);
        if (!tags.ReadWMATags()) {
            std::cerr << RaisonEchec(fichier) << fichier << "\n";
            code = 1;
            continue;
        }
        std::cout << fichier << "\n";
        const std::vector<std::string> noms = tags.TagDescriptors();
        const std::vector<std::string> valeurs = tags.TagValues();
        for (std::size_t i = 0; i < noms.size(); ++i)
            std::cout << SurUneLigne(noms[i]) << "=" << SurUneLigne(valeurs[i]) << "\n";
        std::cout.flush();
        SignaleErreursDeLecture(fichier);
    }
    return code;
}
