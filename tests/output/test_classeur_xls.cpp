// The .xls writer, checked by reading the files back with xlrd (an independent reader of the
// published format) and, for the string-table layout, by walking the BIFF records.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "ClasseurXls.h"
#include "LecteursExternes.h"

namespace zl3 {
namespace {

namespace fs = std::filesystem;
using test::DossierTemporaire;
using test::LitXls;
using Lignes = std::vector<std::vector<std::string>>;

Grid GrilleDe(const Lignes& lignes) {
    size_t colonnes = 0;
    for (const auto& l : lignes)
        colonnes = std::max(colonnes, l.size());
    Grid g(static_cast<int>(colonnes), static_cast<int>(lignes.size()));
    for (size_t r = 0; r < lignes.size(); ++r)
        for (size_t c = 0; c < lignes[r].size(); ++c)
            g.SetText(static_cast<int>(c + 1), static_cast<int>(r + 1), lignes[r][c]);
    return g;
}

std::string Repete(const std::string& motif, int fois) {
    std::string s;
    for (int i = 0; i < fois; ++i)
        s += motif;
    return s;
}

uint32_t Lit32(const std::string& b, size_t at) {
    uint32_t v = 0;
    for (int i = 3; i >= 0; --i)
        v = (v << 8) | static_cast<unsigned char>(b[at + i]);
    return v;
}
unsigned Lit16(const std::string& b, size_t at) {
    return static_cast<unsigned char>(b[at]) | (static_cast<unsigned char>(b[at + 1]) << 8);
}

struct Enregistrement {
    unsigned id;
    std::string corps;
};

// The records of the Workbook stream. This writer lays the stream out first, in consecutive
// sectors right after the 512-byte header, so the records can be walked from there.
std::vector<Enregistrement> Enregistrements(const std::string& fichier) {
    std::vector<Enregistrement> liste;
    size_t p = 512;
    while (p + 4 <= fichier.size()) {
        const unsigned id = Lit16(fichier, p);
        const unsigned n = Lit16(fichier, p + 2);
        if (id == 0 && n == 0) break;  // padding after the last EOF
        liste.push_back({id, fichier.substr(p + 4, n)});
        p += 4 + n;
    }
    return liste;
}

TEST(ClasseurXls, RelitChaqueCelluleTexteNomDeFeuilleEtCaracteresAccentues) {
    DossierTemporaire dossier;
    const Lignes donnees = {
        {"Titre", "Artiste", "Catégorie", "Durée", "Nombre"},
        {"Cœur de pirate", "Zaz", "Chanson française", "3:27", "12"},
        {"", "Réessayer", "", "€ 12,50", "0"},  // empty cells inside a row
        {"Île", "Ça ira", "Œuvre", "🎵 musique", ""},
        {"Tab\tet\nligne", "apostrophe ' et \"guillemets\"", "<b>&amp;</b>", "  espaces  ", "007"},
    };
    const std::string chemin = dossier / "Stats.xls";
    const ResultatEcriture r = EcritClasseurXls(chemin, GrilleDe(donnees), "Top Diffusion");
    ASSERT_TRUE(r.ok) << r.erreur;

    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_EQ(lu.feuilles[0].nom, "Top Diffusion");
    EXPECT_TRUE(test::MemesCellules(lu.feuilles[0], donnees));
    EXPECT_EQ(lu.feuilles[0].autresTypes, 0);
    // Plain integers are numbers a spreadsheet can add up; "007", "3:27", "€ 12,50" stay text.
    EXPECT_EQ(lu.feuilles[0].nombres, (std::vector<std::vector<int>>{{1, 4}, {2, 4}}));
    EXPECT_EQ(lu.feuilles[0].lignes, 5);
    EXPECT_EQ(lu.feuilles[0].colonnes, 5);
    EXPECT_EQ(lu.journal, "") << "the reader complained";
    // Columns widened to their longest text in characters ("Cœur de pirate", the quotes text,
    // "Chanson française", "  espaces  "), in 1/256 of a character with one character of margin;
    // narrow columns keep the default width.
    EXPECT_EQ(lu.feuilles[0].largeurs,
              (std::vector<int>{15 * 256, 29 * 256, 18 * 256, 12 * 256, 0}));
    EXPECT_TRUE(lu.feuilles[0].centrees.empty());

    const std::string fichier = test::LitFichier(chemin);
    EXPECT_EQ(fichier.substr(0, 8), std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8));
    EXPECT_EQ(fichier.size() % 512, 0u);
    // The sheet's BOF is where BOUNDSHEET says it is.
    const auto recs = Enregistrements(fichier);
    size_t offset = 0;
    uint32_t annonce = 0;
    for (const auto& e : recs) {
        if (e.id == 0x0085) annonce = Lit32(e.corps, 0);
        if (e.id == 0x0809 && offset > 0) {
            EXPECT_EQ(annonce, offset);
            EXPECT_EQ(Lit16(e.corps, 2), 0x0010u) << "worksheet BOF";
            break;
        }
        offset += 4 + e.corps.size();
    }
}

TEST(ClasseurXls, TableauxVidesEtFluxSousLaTailleMinimale) {
    DossierTemporaire dossier;
    for (const Lignes& donnees : {Lignes{}, Lignes{{"seul"}}, Lignes{{"", ""}, {"", "x"}}}) {
        const std::string chemin = dossier / "petit.xls";
        ASSERT_TRUE(EcritClasseurXls(chemin, GrilleDe(donnees), "Quotas").ok);
        // Header, a Workbook stream padded to 4096 bytes (8 sectors), directory, one FAT sector.
        EXPECT_EQ(fs::file_size(chemin), 512u + 4096u + 512u + 512u);
        const auto lu = LitXls(chemin);
        ASSERT_EQ(lu.feuilles.size(), 1u);
        EXPECT_TRUE(test::MemesCellules(lu.feuilles[0], donnees));
        EXPECT_EQ(lu.journal, "");
    }
}

TEST(ClasseurXls, NomsDeFeuilleNettoyes) {
    EXPECT_EQ(NomFeuilleXls("SACEM"), "SACEM");
    EXPECT_EQ(NomFeuilleXls("a/b\\c[d]e:f*g?h"), "a_b_c_d_e_f_g_h");
    EXPECT_EQ(NomFeuilleXls("'Quotas'"), "Quotas");
    EXPECT_EQ(NomFeuilleXls(""), "Feuil1");
    EXPECT_EQ(NomFeuilleXls("'''"), "Feuil1");
    EXPECT_EQ(NomFeuilleXls(std::string(40, 'x')), std::string(31, 'x'));
    EXPECT_EQ(NomFeuilleXls(Repete("é", 40)), Repete("é", 31)) << "cut by characters";
    EXPECT_EQ(NomFeuilleXls(std::string(30, 'a') + "🎵"), std::string(30, 'a'))
        << "a character needing two UTF-16 units does not fit in the 31st";
    EXPECT_EQ(NomFeuilleXls(std::string(30, 'a') + "'b"), std::string(30, 'a'))
        << "an apostrophe left at the end by the cut is dropped";

    DossierTemporaire dossier;
    const std::string chemin = dossier / "f.xls";
    ASSERT_TRUE(EcritClasseurXls(chemin, GrilleDe({{"x"}}), "Relevé: 01/2026 [SACEM]").ok);
    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_EQ(lu.feuilles[0].nom, "Relevé_ 01_2026 _SACEM_");
}

// Strings that run past one SST record: splits inside compressed, UTF-16 and surrogate-pair
// texts, and string starts placed exactly where a record is nearly full.
struct CasLimite {
    const char* nom;
    int remplissage;  // strings filling the first SST record
    int longueur;     // their length (ASCII)
    std::string suivante;
    // Expected start of the first CONTINUE record's body.
    std::string debutContinue;
};

void PrintTo(const CasLimite& cas, std::ostream* os) {
    *os << cas.nom;
}

class LimitesSst : public ::testing::TestWithParam<CasLimite> {};

TEST_P(LimitesSst, LesChainesCoupeesSeRelisentEntieres) {
    const CasLimite& cas = GetParam();
    Lignes donnees;
    for (int i = 0; i < cas.remplissage; ++i) {
        std::string s = std::to_string(i) + "-";
        s += std::string(static_cast<size_t>(cas.longueur) - s.size(), 'a' + i % 26);
        donnees.push_back({s});
    }
    donnees.push_back({cas.suivante});
    donnees.push_back({"après la coupure"});
    DossierTemporaire dossier;
    const std::string chemin = dossier / "sst.xls";
    ASSERT_TRUE(EcritClasseurXls(chemin, GrilleDe(donnees), "SACEM").ok);

    const auto recs = Enregistrements(test::LitFichier(chemin));
    size_t i = 0;
    while (i < recs.size() && recs[i].id != 0x00FC)
        ++i;
    ASSERT_LT(i + 1, recs.size());
    ASSERT_EQ(recs[i + 1].id, 0x003Cu) << "the string table continues";
    EXPECT_EQ(recs[i + 1].corps.substr(0, cas.debutContinue.size()), cas.debutContinue);
    for (const auto& e : recs)
        EXPECT_LE(e.corps.size(), 8224u);

    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_TRUE(test::MemesCellules(lu.feuilles[0], donnees));
    EXPECT_EQ(lu.journal, "");
}

// The first SST record holds 8 bytes of counts, then strings of 3 header bytes + characters.
INSTANTIATE_TEST_SUITE_P(
    ClasseurXls, LimitesSst,
    ::testing::Values(
        // 8 + 111 × 74 = 8222: 2 bytes left, the next string starts in the CONTINUE record,
        // which begins with its length (no flags byte of its own).
        CasLimite{"EnTeteReporte", 111, 71, "suivante", std::string("\x08\x00\x00s", 4)},
        // 8 + 43 × 191 = 8221: 3 bytes left, room for a header but not for one UTF-16 char.
        CasLimite{"EnTeteSansCaractere", 43, 188, "€uro", std::string("\x04\x00\x01\xAC\x20", 5)},
        // 8 + 3 × 2737 = 8219: 5 bytes left: header and "€", then the rest after a fresh flags
        // byte.
        CasLimite{"CoupeApresUnCaractere", 3, 2734, "€uro", std::string("\x01u\x00r\x00", 5)},
        // Same place, but the first character is a surrogate pair: it is not cut in two.
        CasLimite{"PaireNonCoupee", 3, 2734, "🎵 note", std::string("\x01\x3C\xD8\xB5\xDF", 5)},
        // A string compressed to one byte per character split: the CONTINUE restarts with 0.
        CasLimite{"CoupeCompressee", 3, 2734, "éèàù", std::string("\x00\xE0\xF9", 3)}),
    [](const auto& info) { return std::string(info.param.nom); });

TEST(ClasseurXls, ChainesLonguesSurPlusieursEnregistrements) {
    const Lignes donnees = {
        {std::string(10000, 'A'), Repete("é", 5000)},
        {Repete("€", 6000), Repete("🎵", 3000)},
        {std::string(kXlsMaxTexteCellule, 'z'), "fin"},
    };
    DossierTemporaire dossier;
    const std::string chemin = dossier / "long.xls";
    ASSERT_TRUE(EcritClasseurXls(chemin, GrilleDe(donnees), "SACEM").ok);
    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_TRUE(test::MemesCellules(lu.feuilles[0], donnees));
    EXPECT_EQ(lu.feuilles[0].largeurs, (std::vector<int>{81 * 256, 81 * 256})) << "capped";

    // One character more than a cell holds is refused, and nothing is written.
    const std::string trop = dossier / "trop.xls";
    const ResultatEcriture r =
        EcritClasseurXls(trop, GrilleDe({{"a", std::string(kXlsMaxTexteCellule + 1, 'z')}}), "X");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.erreur.find("ligne 1, colonne 2"), std::string::npos) << r.erreur;
    EXPECT_FALSE(fs::exists(trop));
}

TEST(ClasseurXls, TableauxPlusGrandsQuUneFeuilleRefuses) {
    DossierTemporaire dossier;
    const std::string chemin = dossier / "grand.xls";
    for (const Grid& g : {Grid(1, kXlsMaxLignes + 1), Grid(kXlsMaxColonnes + 1, 1)}) {
        const ResultatEcriture r = EcritClasseurXls(chemin, g, "Quotas");
        EXPECT_FALSE(r.ok);
        EXPECT_EQ(r.erreur,
                  "Le tableau dépasse la taille d'une feuille Excel (65536 lignes, 256 colonnes)");
        EXPECT_FALSE(fs::exists(chemin));
    }

    // The largest sizes are accepted, last row and last column included.
    Grid hauteur(1, kXlsMaxLignes);
    hauteur.SetText(1, 1, "premier");
    hauteur.SetText(1, kXlsMaxLignes, "dernier");
    Grid largeur(kXlsMaxColonnes, 1);
    largeur.SetText(kXlsMaxColonnes, 1, "IV");
    ASSERT_TRUE(EcritClasseurXls(dossier / "h.xls", hauteur, "H").ok);
    ASSERT_TRUE(EcritClasseurXls(dossier / "l.xls", largeur, "L").ok);
    const auto h = LitXls(dossier / "h.xls");
    const auto l = LitXls(dossier / "l.xls");
    ASSERT_EQ(h.feuilles.size(), 1u);
    ASSERT_EQ(l.feuilles.size(), 1u);
    EXPECT_EQ(h.feuilles[0].lignes, kXlsMaxLignes);
    EXPECT_EQ(h.feuilles[0].Texte(kXlsMaxLignes - 1, 0), "dernier");
    EXPECT_EQ(l.feuilles[0].colonnes, kXlsMaxColonnes);
    EXPECT_EQ(l.feuilles[0].Texte(0, kXlsMaxColonnes - 1), "IV");
}

TEST(ClasseurXls, CellulesFusionnees) {
    Grid g(6, 3);
    g.SetText(1, 1, "00H00 - 23H59");
    g.SetText(4, 1, "06H30 - 22H30");
    const std::vector<ZoneFusionnee> zones = {
        {0, 0, 0, 2}, {0, 0, 3, 5},
        {1, 1, 0, 1}, {0, 0, 1, 1},  // overlaps the first zone: left out
        {2, 2, 4, 4},                // a single cell: left out
        {2, 3, 0, 0},                // past the last row: left out
    };
    DossierTemporaire dossier;
    const std::string chemin = dossier / "fusion.xls";
    ASSERT_TRUE(EcritClasseurXls(chemin, g, "Quotas", zones).ok);
    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    const std::vector<std::vector<int>> attendu = {{0, 1, 0, 3}, {0, 1, 3, 6}, {1, 2, 0, 2}};
    EXPECT_EQ(lu.feuilles[0].fusions, attendu);
    // The texts of the zones are centred (the third zone has no text, hence no cell).
    EXPECT_EQ(lu.feuilles[0].centrees, (std::vector<std::vector<int>>{{0, 0}, {0, 3}}));
    EXPECT_EQ(lu.feuilles[0].Texte(0, 3), "06H30 - 22H30");
}

TEST(ClasseurXls, EcritureParFichierTemporaireRenomme) {
    DossierTemporaire dossier;
    // A folder that cannot exist: its parent is a regular file.
    const std::string fichier = dossier / "fichier";
    { std::ofstream(fichier) << "pas un dossier"; }
    const ResultatEcriture echec =
        EcritClasseurXls(fichier + "/sortie.xls", GrilleDe({{"a"}}), "X");
    EXPECT_FALSE(echec.ok);
    EXPECT_FALSE(echec.erreur.empty());
    EXPECT_EQ(dossier.Contenu(), std::vector<std::string>{"fichier"});

    // An existing file is replaced whole, and no temporary file stays behind.
    const std::string chemin = dossier / "rapport.xls";
    { std::ofstream(chemin) << "ancien contenu"; }
    ASSERT_TRUE(EcritClasseurXls(chemin, GrilleDe({{"nouveau"}}), "X").ok);
    EXPECT_EQ((std::vector<std::string>{"fichier", "rapport.xls"}), dossier.Contenu());
    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_EQ(lu.feuilles[0].Texte(0, 0), "nouveau");
}

// 65,000 rows × 10 columns of distinct texts: about 19 MB, more FAT sectors than the header
// lists (109 cover 7 MiB), so the container needs DIFAT sectors.
TEST(ClasseurXls, GrandTableauAvecSecteursDifat) {
    constexpr int kLignes = 65000;
    constexpr int kColonnes = 10;
    Grid g(kColonnes, kLignes);
    for (int r = 1; r <= kLignes; ++r)
        for (int c = 1; c <= kColonnes; ++c)
            g.SetText(c, r,
                      (c == 3   ? "Durée "
                       : c == 7 ? "€ "
                                : "Titre ") +
                          std::to_string(r) + "." + std::to_string(c));
    DossierTemporaire dossier;
    const std::string chemin = dossier / "grand.xls";
    const ResultatEcriture r = EcritClasseurXls(chemin, g, "Top Diffusion");
    ASSERT_TRUE(r.ok) << r.erreur;

    const std::string fichier = test::LitFichier(chemin);
    EXPECT_GT(fichier.size(), 7u * 1024 * 1024 + 512 * 1024);
    const uint32_t nbFat = Lit32(fichier, 44);
    const uint32_t premierDifat = Lit32(fichier, 68);
    const uint32_t nbDifat = Lit32(fichier, 72);
    EXPECT_GT(nbFat, 109u);
    EXPECT_EQ(nbDifat, (nbFat - 109 + 126) / 127);
    EXPECT_NE(premierDifat, 0xFFFFFFFEu);
    EXPECT_EQ(fichier.size() % 512, 0u);

    const auto lu = LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_EQ(lu.feuilles[0].lignes, kLignes);
    EXPECT_TRUE(test::MemesCellules(lu.feuilles[0], test::DonneesDe(g)));
    EXPECT_EQ(lu.journal, "");
}

}  // namespace
}  // namespace zl3
