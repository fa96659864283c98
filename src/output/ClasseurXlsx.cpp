#include "ClasseurXlsx.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>

#include <unistd.h>

namespace zl3 {

namespace fs = std::filesystem;

namespace {

constexpr int kLargeurMax = 80;
constexpr int kLargeurMin = 4;

fs::path CheminNatif(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string TexteChemin(const fs::path& p) {
    const std::u8string u = p.u8string();
    return std::string(u.begin(), u.end());
}

int NombreCaracteres(const std::string& s) {
    int n = 0;
    for (char c : s)
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
    return n;
}

// The workbook under construction; closed (and so freed) on every path.
struct Classeur {
    lxw_workbook* wb = nullptr;
    ~Classeur() {
        if (wb) workbook_close(wb);
    }
    lxw_error Ferme() {
        lxw_workbook* w = wb;
        wb = nullptr;
        return workbook_close(w);
    }
};

// The scratch file libxlsxwriter writes, in the target folder; removed at the end.
struct FichierBrouillon {
    fs::path chemin;
    ~FichierBrouillon() {
        std::error_code ec;
        if (!chemin.empty()) fs::remove(chemin, ec);
    }
};

fs::path NomBrouillon(const fs::path& cible) {
    static std::atomic<unsigned> compteur{0};
    fs::path nom = fs::path(u8"~") += cible.filename();
    nom += "." + std::to_string(::getpid()) + "-" + std::to_string(++compteur) + ".xlsx.tmp";
    return cible.parent_path() / nom;
}

std::string FormatPourcentage(int decimales) {
    std::string f = "0";
    if (decimales > 0) f += "." + std::string(static_cast<size_t>(decimales), '0');
    return f + " %";
}

}  // namespace

std::string TexteTailleExcessiveXlsx() {
    return "Le tableau dépasse la taille d'une feuille Excel (" + std::to_string(kXlsxMaxLignes) +
           " lignes, " + std::to_string(kXlsxMaxColonnes) + " colonnes)";
}

bool TientDansUneFeuilleXlsx(int colonnes, int lignes) {
    return colonnes >= 0 && lignes >= 0 && colonnes <= kXlsxMaxColonnes && lignes <= kXlsxMaxLignes;
}

ResultatEcriture EcritClasseurXlsx(const std::string& chemin, const Grid& grille,
                                   const std::string& nomFeuille,
                                   const std::vector<ZoneFusionnee>& fusions,
                                   const MiseEnFormeClasseur& forme) {
    const int colonnes = grille.MaxCols();
    const int lignes = grille.MaxRows();
    if (!TientDansUneFeuilleXlsx(colonnes, lignes))
        return ResultatEcriture::Echec(TexteTailleExcessiveXlsx());

    const fs::path cible = CheminNatif(chemin);
    FichierBrouillon brouillon{NomBrouillon(cible)};
    const std::string cheminBrouillon = TexteChemin(brouillon.chemin);
    std::string dossierTravail = TexteChemin(cible.parent_path());
    if (dossierTravail.empty()) dossierTravail = ".";

    Classeur c;
    lxw_workbook_options options{};
    options.constant_memory = LXW_FALSE;
    options.tmpdir = dossierTravail.data();
    c.wb = workbook_new_opt(cheminBrouillon.c_str(), &options);
    if (!c.wb) return ResultatEcriture::Echec("Impossible de créer le classeur " + chemin);
    lxw_worksheet* ws = workbook_add_worksheet(c.wb, NomFeuilleXls(nomFeuille).c_str());
    if (!ws) return ResultatEcriture::Echec("Nom de feuille refusé : '" + nomFeuille + "'");

    lxw_format* entete = workbook_add_format(c.wb);
    format_set_bold(entete);
    format_set_align(entete, LXW_ALIGN_CENTER);
    format_set_align(entete, LXW_ALIGN_VERTICAL_CENTER);
    format_set_bg_color(entete, 0xE8E8E8);
    format_set_border(entete, LXW_BORDER_THIN);
    lxw_format* enteteLigne = workbook_add_format(c.wb);
    format_set_bold(enteteLigne);
    std::vector<lxw_format*> pourcentages(7, nullptr);  // by number of decimals
    const auto formatPourcentage = [&](int decimales) {
        lxw_format*& f = pourcentages[static_cast<size_t>(decimales)];
        if (!f) {
            f = workbook_add_format(c.wb);
            format_set_num_format(f, FormatPourcentage(decimales).c_str());
        }
        return f;
    };

    const int lignesEntete = std::clamp(forme.lignesEntete, 0, lignes);
    const int colonnesEntete = std::clamp(forme.colonnesEntete, 0, colonnes);
    const std::vector<ZoneFusionnee> zones = ZonesValides(fusions, colonnes, lignes);
    std::vector<char> dansUneZone(static_cast<size_t>(colonnes) * static_cast<size_t>(lignes), 0);
    for (const ZoneFusionnee& z : zones)
        for (int r = z.premiereLigne; r <= z.derniereLigne; ++r)
            for (int k = z.premiereColonne; k <= z.derniereColonne; ++k)
                dansUneZone[static_cast<size_t>(r) * colonnes + k] = 1;

    std::vector<int> largeurs(static_cast<size_t>(colonnes), 0);
    for (int r = 0; r < lignes; ++r) {
        const bool ligneEntete = r < lignesEntete;
        for (int k = 0; k < colonnes; ++k) {
            const std::string& t = grille.Text(k + 1, r + 1);
            if (t.empty()) continue;
            lxw_format* f = ligneEntete ? entete : (k < colonnesEntete ? enteteLigne : nullptr);
            lxw_error e = LXW_NO_ERROR;
            if (!ligneEntete && k >= colonnesEntete) {
                if (const auto n = NombreEntier(t)) {
                    e = worksheet_write_number(ws, static_cast<lxw_row_t>(r),
                                               static_cast<lxw_col_t>(k), static_cast<double>(*n),
                                               nullptr);
                } else if (const auto p = grille.Genre(k + 1) == GenreColonne::Pourcentage
                                              ? PourcentageDeTexte(t)
                                              : std::nullopt) {
                    e = worksheet_write_number(ws, static_cast<lxw_row_t>(r),
                                               static_cast<lxw_col_t>(k), p->fraction,
                                               formatPourcentage(p->decimales));
                } else {
                    e = worksheet_write_string(ws, static_cast<lxw_row_t>(r),
                                               static_cast<lxw_col_t>(k), t.c_str(), f);
                }
            } else {
                e = worksheet_write_string(ws, static_cast<lxw_row_t>(r), static_cast<lxw_col_t>(k),
                                           t.c_str(), f);
            }
            if (e != LXW_NO_ERROR)
                return ResultatEcriture::Echec("Cellule ligne " + std::to_string(r + 1) +
                                               ", colonne " + std::to_string(k + 1) + " : " +
                                               lxw_strerror(e));
            if (!dansUneZone[static_cast<size_t>(r) * colonnes + k])
                largeurs[static_cast<size_t>(k)] =
                    std::max(largeurs[static_cast<size_t>(k)], NombreCaracteres(t));
        }
    }
    for (const ZoneFusionnee& z : zones) {
        const std::string& t = grille.Text(z.premiereColonne + 1, z.premiereLigne + 1);
        worksheet_merge_range(
            ws, static_cast<lxw_row_t>(z.premiereLigne), static_cast<lxw_col_t>(z.premiereColonne),
            static_cast<lxw_row_t>(z.derniereLigne), static_cast<lxw_col_t>(z.derniereColonne),
            t.c_str(), z.premiereLigne < lignesEntete ? entete : nullptr);
    }
    for (int k = 0; k < colonnes; ++k) {
        const int propre = grille.ColWidth(k < colonnesEntete ? 0 : k + 1);
        const int l = std::clamp(std::max(largeurs[static_cast<size_t>(k)] + 2, propre),
                                 kLargeurMin, kLargeurMax);
        worksheet_set_column(ws, static_cast<lxw_col_t>(k), static_cast<lxw_col_t>(k), l, nullptr);
    }
    if (lignesEntete > 0 || colonnesEntete > 0)
        worksheet_freeze_panes(ws, static_cast<lxw_row_t>(lignesEntete),
                               static_cast<lxw_col_t>(colonnesEntete));
    worksheet_set_paper(ws, 9);  // A4
    worksheet_set_landscape(ws);
    worksheet_fit_to_pages(ws, 1, 0);
    if (lignesEntete > 0) worksheet_repeat_rows(ws, 0, static_cast<lxw_row_t>(lignesEntete - 1));

    const lxw_error fermeture = c.Ferme();
    if (fermeture != LXW_NO_ERROR)
        return ResultatEcriture::Echec("Ecriture du classeur " + chemin + " : " +
                                       lxw_strerror(fermeture));

    // The finished workbook replaces the target in one step.
    return EcritFichierAtomique(chemin, [&](SortieFichier& sortie, std::string& erreur) {
        std::ifstream in(brouillon.chemin, std::ios::binary);
        if (!in) {
            erreur = "Relecture du classeur impossible";
            return false;
        }
        std::string tampon(1 << 16, '\0');
        while (in) {
            in.read(tampon.data(), static_cast<std::streamsize>(tampon.size()));
            const std::streamsize n = in.gcount();
            if (n > 0) sortie.Ecrit(std::string_view(tampon.data(), static_cast<size_t>(n)));
        }
        if (in.bad()) {
            erreur = "Relecture du classeur impossible";
            return false;
        }
        return true;
    });
}

}  // namespace zl3
