// Test helpers: reading the written files back with independent readers (Debian's python3-xlrd
// and Python's xml.etree, run by the system Python), and a scratch folder per test.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Grid.h"

namespace zl3::test {

struct FeuilleLue {
    std::string nom;
    int lignes = 0;
    int colonnes = 0;
    std::vector<std::vector<std::string>> cellules;  // [row][col], "" when empty
    int autresTypes = 0;                             // cells neither text nor number
    std::vector<std::vector<int>> nombres;           // {row, col} of the cells stored as numbers
    std::vector<std::vector<int>> fusions;           // {rlo, rhi, clo, chi}, hi exclusive
    std::vector<int> largeurs;                       // per column, 1/256 character, 0: default
    std::vector<std::vector<int>> centrees;          // {row, col} of the centred cells
    // Text of a cell, "" outside what the reader returned.
    std::string Texte(int ligne, int colonne) const;
};

struct ClasseurLu {
    std::vector<FeuilleLue> feuilles;
    std::string journal;  // warnings of the reader
};

// Reads `chemin` with xlrd; fails the current test (ADD_FAILURE) and returns an empty result
// when the reader cannot open it.
ClasseurLu LitXls(const std::string& chemin);

// An .xlsx sheet as Debian's python3-openpyxl reads it.
struct CelluleXlsx {
    std::string texte;  // a text cell's text; "" for a number or an empty cell
    bool nombre = false;
    double valeur = 0;  // a number cell's value
    std::string format;  // number format ("General", "0.0 %", …)
    bool gras = false;
};
struct FeuilleXlsxLue {
    std::string nom;
    std::vector<std::vector<CelluleXlsx>> cellules;  // [row][col]
    std::vector<std::string> fusions;                 // "C1:K1", sorted
    std::string figees;                               // top-left cell of the unfrozen area
    bool paysage = false;
    int ajusteLargeur = -1;  // pages wide / high when fitted to the page
    int ajusteHauteur = -1;
    bool ajustePage = false;
    std::vector<std::pair<std::string, double>> largeurs;  // column letter, width
    // The cell at (ligne, colonne), 0-based; an empty cell outside what was read.
    const CelluleXlsx& Cellule(int ligne, int colonne) const;
};
// Reads `chemin` with openpyxl; fails the current test when it cannot be opened.
std::vector<FeuilleXlsxLue> LitXlsx(const std::string& chemin);

struct LigneXml {
    std::string balise;
    struct Cellule {
        std::string balise;
        std::string texte;
        int enfants = 0;
    };
    std::vector<Cellule> cellules;
};

struct XmlLu {
    std::string racine;
    std::vector<LigneXml> lignes;
};

// Parses `chemin` with xml.etree; fails the current test when it is not well-formed.
XmlLu LitXml(const std::string& chemin);

// The data area of a grid, [row-1][col-1].
std::vector<std::vector<std::string>> DonneesDe(const Grid& grille);

// True when the sheet holds exactly `attendu` ([row][col]), missing trailing cells counting as
// empty; the first difference goes to the test output.
bool MemesCellules(const FeuilleLue& feuille, const std::vector<std::vector<std::string>>& attendu);

std::string LitFichier(const std::filesystem::path& chemin);

// A fresh folder under the system's temporary folder, removed with its contents at the end.
class DossierTemporaire {
  public:
    DossierTemporaire();
    ~DossierTemporaire();
    DossierTemporaire(const DossierTemporaire&) = delete;
    DossierTemporaire& operator=(const DossierTemporaire&) = delete;
    const std::filesystem::path& Chemin() const { return chemin_; }
    std::string operator/(const std::string& nom) const { return (chemin_ / nom).string(); }
    // Names of the entries of the folder, sorted.
    std::vector<std::string> Contenu() const;

  private:
    std::filesystem::path chemin_;
};

}  // namespace zl3::test
