#include "MiseEnPage.h"

#include <algorithm>
#include <cmath>

#include "Cp1252.h"
#include "EcritureFichier.h"

namespace zl3 {

namespace {

#include "MetriquesHelvetica.inc"

const char* const kJours[] = {"lundi",    "mardi",  "mercredi", "jeudi",
                              "vendredi", "samedi", "dimanche"};
const char* const kMois[] = {"janvier", "février", "mars",      "avril",   "mai",      "juin",
                             "juillet", "août",    "septembre", "octobre", "novembre", "décembre"};

constexpr const char* kPointsDeSuite = "…";
constexpr uint32_t kGrisEntete = 0xE4E4E4;
constexpr uint32_t kGrisLigne = 0xF4F4F4;
constexpr uint32_t kCouleurTrait = 0x808080;

// Page header and footer fonts.
const Police kPoliceEntete{"Arial", 11, true};
const Police kPolicePied{"Arial", 8, false};

double HauteurLigneTexte(const Police& p) {
    return p.taille * 1.45;
}

// `texte` cut with "…" so that it fits in `largeur` points.
std::string Ajuste(const std::string& texte, const Police& police, double largeur) {
    largeur += 0.01;  // the widths were measured with the same sums: no cut for rounding
    if (LargeurTexte(texte, police) <= largeur) return texte;
    const double suite = LargeurTexte(kPointsDeSuite, police);
    std::string garde;
    size_t pos = 0;
    while (pos < texte.size()) {
        size_t suivant = pos;
        LitCaractereUtf8(texte, suivant);
        const std::string essai = garde + texte.substr(pos, suivant - pos);
        if (LargeurTexte(essai, police) + suite > largeur) break;
        garde = essai;
        pos = suivant;
    }
    return garde.empty() && suite > largeur ? std::string() : garde + kPointsDeSuite;
}

// A column of the printed table: row-header column `niveau` (col == 0) or data column `col`.
struct ColonneImprimee {
    int col = 0;     // data column 1..MaxCols(), 0 for a row-header column
    int niveau = 0;  // row-header column level when col == 0
    double largeur = 0;
    Alignement alignement = Alignement::Gauche;
};

}  // namespace

double LargeurTexte(const std::string& texte, const Police& police) {
    const std::string octets = Utf8ToCp1252(texte);
    const uint16_t* table = police.gras ? kLargeursHelveticaGras : kLargeursHelvetica;
    long unites = 0;
    for (char c : octets) {
        const unsigned b = static_cast<unsigned char>(c);
        unites += b >= 32 ? table[b - 32] : table[0];
    }
    return static_cast<double>(unites) * police.taille / 1000.0;
}

std::string DateLongue(const DateTime& d) {
    return std::string(kJours[(DayOfWeek(d) + 6) % 7]) + " " + std::to_string(d.day) + " " +
           kMois[std::clamp(d.month, 1, 12) - 1] + " " + std::to_string(d.year);
}

std::string HeureLongue(const DateTime& d) {
    return FormatHHMMSS(d);
}

std::string TextePeriode(const DateTime& debut, const DateTime& fin) {
    return DateLongue(debut) + " - " + DateLongue(fin);
}

std::string EnteteImpression(Rapport rapport, const DateTime& debut, const DateTime& fin) {
    const std::string periode = TextePeriode(debut, fin);
    switch (rapport) {
        case Rapport::Quotas:
            return "/cQuotas: " + periode + "/n";
        case Rapport::TopDiffusion:
            return "/cTop Diffusion: " + periode + "/n";
        case Rapport::Sacem:
            return "/cRelevé SACEM: " + periode + "/n";
        case Rapport::Publicite:
            return "/cDiffusions: " + periode + "/n";
    }
    return {};
}

std::string NomTravailImpression(const std::string& identification1,
                                 const std::string& identification2, const DateTime& maintenant) {
    return identification1 + " " + identification2 + " Date: " + FormatDDMMYYYY(maintenant) + " " +
           FormatHHMMSS(maintenant);
}

std::vector<LigneImprimee> InterpreteCodes(const std::string& codes, const DateTime& maintenant,
                                           int page, int nombrePages) {
    std::vector<LigneImprimee> lignes;
    if (codes.empty()) return lignes;
    lignes.emplace_back();
    std::string* partie = &lignes.back().gauche;
    for (size_t i = 0; i < codes.size(); ++i) {
        const char c = codes[i];
        if (c != '/' || i + 1 >= codes.size()) {
            partie->push_back(c);
            continue;
        }
        const char code = static_cast<char>(std::tolower(static_cast<unsigned char>(codes[i + 1])));
        const char apres =
            i + 2 < codes.size()
                ? static_cast<char>(std::tolower(static_cast<unsigned char>(codes[i + 2])))
                : '\0';
        ++i;  // the code letter
        switch (code) {
            case 'l':
                partie = &lignes.back().gauche;
                break;
            case 'c':
                partie = &lignes.back().centre;
                break;
            case 'r':
                partie = &lignes.back().droite;
                break;
            case 'n':
                lignes.emplace_back();
                partie = &lignes.back().gauche;
                break;
            case 'd':
                if (apres == 'l') {
                    *partie += DateLongue(maintenant);
                    ++i;
                } else {
                    *partie += FormatDDMMYYYY(maintenant);
                }
                break;
            case 't':
                if (apres == 'l') {
                    *partie += HeureLongue(maintenant);
                    ++i;
                } else {
                    *partie +=
                        PadNumber(maintenant.hour, 2) + ":" + PadNumber(maintenant.minute, 2);
                }
                break;
            case 'p':
                if (apres == 'c') {
                    *partie += std::to_string(nombrePages);
                    ++i;
                } else {
                    *partie += std::to_string(page);
                }
                break;
            case '/':
                partie->push_back('/');
                break;
            default:
                partie->push_back('/');
                partie->push_back(codes[i]);
                break;
        }
    }
    return lignes;
}

Impression MetEnPage(const Grid& g, const OptionsImpression& o) {
    Impression imp;
    const double base = o.taillePolice > 0 ? o.taillePolice : 9;
    const double minimum = std::min(base, o.taillePoliceMin > 0 ? o.taillePoliceMin : base);
    const int niveaux = g.HeaderRows();
    const int colonnesEntete = g.HeaderCols();
    const int lignes = g.MaxRows();
    const Police normale{"Arial", base, false};
    const Police grasse{"Arial", base, true};
    const double marge = base * 0.4;  // inner padding of a cell, each side

    // Columns and their natural widths at the base size.
    std::vector<ColonneImprimee> colonnes;
    for (int k = 0; k < colonnesEntete; ++k)
        colonnes.push_back({0, k, 0, Alignement::Gauche});
    for (int c = 1; c <= g.MaxCols(); ++c) {
        const GenreColonne genre = g.Genre(c);
        colonnes.push_back(
            {c, 0, 0, genre == GenreColonne::Texte ? Alignement::Gauche : Alignement::Droite});
    }
    const auto couvertParUnePlage = [&g](int niveau, int col) {
        for (const HeaderSpan& s : g.Spans())
            if (s.level == niveau && s.count > 1 && col > s.firstCol && col < s.firstCol + s.count)
                return true;
        return false;
    };
    const auto texteEntete = [&](int niveau, const ColonneImprimee& c) -> std::string {
        if (c.col == 0) return c.niveau == 0 ? g.ColHeader(niveau, 0) : std::string();
        return g.ColHeader(niveau, c.col);
    };
    const auto texteCellule = [&](int ligne, const ColonneImprimee& c) -> const std::string& {
        return c.col == 0 ? g.RowHeader(c.niveau, ligne) : g.Text(c.col, ligne);
    };
    const auto plage = [&g](int niveau, int col) -> const HeaderSpan* {
        for (const HeaderSpan& s : g.Spans())
            if (s.level == niveau && s.count > 1 && s.firstCol == col) return &s;
        return nullptr;
    };
    // Row headers and the "Total" row print in bold.
    const auto EnGras = [&g](int ligne, const ColonneImprimee& c) {
        return c.col == 0 || g.RowHeader(0, ligne) == "Total";
    };
    for (ColonneImprimee& c : colonnes) {
        double l = base * 1.5;
        for (int n = 0; n < niveaux; ++n)
            if (c.col == 0 || (!couvertParUnePlage(n, c.col) && !plage(n, c.col)))
                l = std::max(l, LargeurTexte(texteEntete(n, c), grasse) + 2 * marge);
        for (int r = 1; r <= lignes; ++r)
            l = std::max(
                l, LargeurTexte(texteCellule(r, c), EnGras(r, c) ? grasse : normale) + 2 * marge);
        c.largeur = l;
    }
    // A merged header wider than its columns widens them evenly.
    for (const HeaderSpan& s : g.Spans()) {
        if (s.count < 2 || s.level < 0 || s.level >= niveaux) continue;
        const int premier = colonnesEntete + s.firstCol - 1;
        const int dernier = std::min(premier + s.count, static_cast<int>(colonnes.size()));
        if (premier < 0 || premier >= dernier) continue;
        double somme = 0;
        for (int i = premier; i < dernier; ++i)
            somme += colonnes[static_cast<size_t>(i)].largeur;
        const double voulu = LargeurTexte(g.ColHeader(s.level, s.firstCol), grasse) + 2 * marge;
        if (voulu > somme)
            for (int i = premier; i < dernier; ++i)
                colonnes[static_cast<size_t>(i)].largeur += (voulu - somme) / (dernier - premier);
    }
    double naturelle = 0;
    for (const ColonneImprimee& c : colonnes)
        naturelle += c.largeur;

    // Orientation, then the font size that fits the width.
    switch (o.orientation) {
        case Orientation::Portrait:
            imp.paysage = false;
            break;
        case Orientation::Paysage:
            imp.paysage = true;
            break;
        case Orientation::Automatique:
            imp.paysage = naturelle > kLargeurA4 - 2 * o.marge;
            break;
    }
    const double largeurPage = imp.paysage ? kHauteurA4 : kLargeurA4;
    const double hauteurPage = imp.paysage ? kLargeurA4 : kHauteurA4;
    const double disponible = largeurPage - 2 * o.marge;
    double taille = base;
    if (naturelle > disponible) taille = std::max(minimum, base * disponible / naturelle);
    double echelle = taille / base;
    double largeurTable = naturelle * echelle;
    if (largeurTable > disponible) {
        echelle *= disponible / largeurTable;  // narrower columns; long texts are cut
        largeurTable = disponible;
    }
    for (ColonneImprimee& c : colonnes)
        c.largeur *= echelle;
    imp.taillePolice = taille;
    const Police texte{"Arial", taille, false};
    const Police texteGras{"Arial", taille, true};
    const double pad = taille * 0.4;
    const double hauteurLigne = taille * 1.45;

    // Vertical room: header lines, gap, table, gap, footer lines.
    const auto lignesEnteteType = InterpreteCodes(o.entete, o.maintenant, 1, 1);
    const auto lignesPiedType = InterpreteCodes(o.pied, o.maintenant, 1, 1);
    const double hEntete = HauteurLigneTexte(kPoliceEntete);
    const double hPied = HauteurLigneTexte(kPolicePied);
    const double ecart = 4;
    const double hautTable =
        o.marge + static_cast<double>(lignesEnteteType.size()) * hEntete + ecart;
    const double basTable =
        hauteurPage - o.marge - static_cast<double>(lignesPiedType.size()) * hPied - ecart;
    const double hauteurEntetes = niveaux * hauteurLigne;
    const int parPage = std::max(
        1, static_cast<int>(std::floor((basTable - hautTable - hauteurEntetes) / hauteurLigne)));
    const int nombrePages = std::max(1, (lignes + parPage - 1) / parPage);
    const double x0 = o.marge + (disponible - largeurTable) / 2;  // the table centred

    std::vector<double> bords{x0};  // column edges
    for (const ColonneImprimee& c : colonnes)
        bords.push_back(bords.back() + c.largeur);

    const auto ligneDeCodes = [](PageImprimee& page, const std::vector<LigneImprimee>& ls, double y,
                                 double h, double gauche, double largeur, const Police& police) {
        for (const LigneImprimee& l : ls) {
            const Cadre cadre{gauche, y, largeur, h};
            if (!l.gauche.empty())
                page.primitives.push_back(TexteDessine{cadre, Ajuste(l.gauche, police, largeur),
                                                       Alignement::Gauche, police});
            if (!l.centre.empty())
                page.primitives.push_back(TexteDessine{cadre, Ajuste(l.centre, police, largeur),
                                                       Alignement::Centre, police});
            if (!l.droite.empty())
                page.primitives.push_back(TexteDessine{cadre, Ajuste(l.droite, police, largeur),
                                                       Alignement::Droite, police});
            y += h;
        }
    };
    const auto cellule = [&](PageImprimee& page, double xa, double xb, double y,
                             const std::string& t, Alignement a, const Police& p) {
        if (t.empty()) return;
        const double l = xb - xa - 2 * pad;
        if (l <= 0) return;
        const std::string ajuste = Ajuste(t, p, l);
        if (ajuste.empty()) return;
        page.primitives.push_back(TexteDessine{{xa + pad, y, l, hauteurLigne}, ajuste, a, p});
    };

    for (int numero = 1; numero <= nombrePages; ++numero) {
        PageImprimee page;
        page.largeur = largeurPage;
        page.hauteur = hauteurPage;
        const int premiere = (numero - 1) * parPage + 1;
        const int derniere = std::min(lignes, numero * parPage);
        const int nb = std::max(0, derniere - premiere + 1);
        const double yDonnees = hautTable + hauteurEntetes;
        const double yFin = yDonnees + nb * hauteurLigne;

        // Fills: header rows, row-header columns.
        page.primitives.push_back(
            FondDessine{{x0, hautTable, largeurTable, hauteurEntetes}, kGrisEntete});
        if (colonnesEntete > 0 && nb > 0)
            page.primitives.push_back(FondDessine{
                {x0, yDonnees, bords[static_cast<size_t>(colonnesEntete)] - x0, yFin - yDonnees},
                kGrisLigne});

        // Header levels, the merged ones over their columns.
        for (int n = 0; n < niveaux; ++n) {
            const double y = hautTable + n * hauteurLigne;
            for (size_t i = 0; i < colonnes.size(); ++i) {
                const ColonneImprimee& c = colonnes[i];
                if (c.col > 0 && couvertParUnePlage(n, c.col)) continue;
                size_t fin = i + 1;
                if (c.col > 0)
                    if (const HeaderSpan* s = plage(n, c.col))
                        fin = std::min(colonnes.size(), i + static_cast<size_t>(s->count));
                cellule(page, bords[i], bords[fin], y, texteEntete(n, c), Alignement::Centre,
                        texteGras);
                // The line at the right of the cell (merged cells have none inside).
                page.primitives.push_back(
                    TraitDessine{bords[fin], y, bords[fin], y + hauteurLigne, 0.5, kCouleurTrait});
            }
            page.primitives.push_back(
                TraitDessine{x0, y, x0 + largeurTable, y, 0.5, kCouleurTrait});
        }

        // Data rows; the "Total" row in bold.
        for (int r = premiere; r <= derniere; ++r) {
            const double y = yDonnees + (r - premiere) * hauteurLigne;
            const bool total = g.RowHeader(0, r) == "Total";
            for (size_t i = 0; i < colonnes.size(); ++i) {
                const ColonneImprimee& c = colonnes[i];
                cellule(page, bords[i], bords[i + 1], y, texteCellule(r, c), c.alignement,
                        EnGras(r, c) ? texteGras : texte);
            }
            page.primitives.push_back(
                TraitDessine{x0, y, x0 + largeurTable, y, total ? 1.0 : 0.5, kCouleurTrait});
        }
        // Column lines over the data rows, the left edge, the bottom.
        if (nb > 0)
            for (size_t i = 1; i < bords.size(); ++i)
                page.primitives.push_back(
                    TraitDessine{bords[i], yDonnees, bords[i], yFin, 0.5, kCouleurTrait});
        page.primitives.push_back(TraitDessine{x0, hautTable, x0, yFin, 0.5, kCouleurTrait});
        page.primitives.push_back(
            TraitDessine{x0, yFin, x0 + largeurTable, yFin, 0.5, kCouleurTrait});

        // Page header and footer, their codes interpreted for this page.
        ligneDeCodes(page, InterpreteCodes(o.entete, o.maintenant, numero, nombrePages), o.marge,
                     hEntete, o.marge, disponible, kPoliceEntete);
        const auto pied = InterpreteCodes(o.pied, o.maintenant, numero, nombrePages);
        ligneDeCodes(page, pied, hauteurPage - o.marge - static_cast<double>(pied.size()) * hPied,
                     hPied, o.marge, disponible, kPolicePied);
        imp.pages.push_back(std::move(page));
    }
    return imp;
}

Impression MetEnPageRapport(const Grid& grille, std::optional<Rapport> rapport,
                            const DateTime& debut, const DateTime& fin,
                            const std::string& identification1, const std::string& identification2,
                            const DateTime& maintenant) {
    OptionsImpression o;
    if (rapport) o.entete = EnteteImpression(*rapport, debut, fin);
    o.pied = kPiedImpression;
    o.orientation = rapport == Rapport::Quotas ? Orientation::Paysage : Orientation::Automatique;
    o.maintenant = maintenant;
    Impression imp = MetEnPage(grille, o);
    imp.nomTravail = NomTravailImpression(identification1, identification2, maintenant);
    imp.texteEnCours = kTexteImpressionEnCours;
    return imp;
}

}  // namespace zl3
