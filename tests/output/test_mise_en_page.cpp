// The print layout of a grid (pages of drawing primitives) and its PDF, read back by poppler's
// pdftotext.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "FichierPdf.h"
#include "LecteursExternes.h"
#include "MiseEnPage.h"

namespace zl3 {
namespace {

const DateTime kMaintenant{2026, 11, 2, 9, 5, 3};

}  // namespace

void PrintTo(const LigneImprimee& l, std::ostream* os) {
    *os << "{\"" << l.gauche << "\", \"" << l.centre << "\", \"" << l.droite << "\"}";
}

namespace {

// A Quotas-shaped grid: 18 columns under two merged band levels, date and day-name row headers,
// one row per day of October 2026 and a "Total" row.
Grid GrilleMois() {
    Grid g(18, 32);
    g.SetHeaderRows(3);
    g.SetHeaderCols(2);
    g.SetColHeader(2, 0, "Date");
    const char* noms[9] = {"Fr.", "N.T.", "Fr + NT", "Etr.", "Instru.",
                           "Fr.", "N.T.", "Fr + NT", "Etr."};
    for (int bande = 0; bande < 2; ++bande) {
        const int d = bande * 9;
        g.SetColHeader(0, d + 1, bande == 0 ? "00H00 - 23H59" : "06H30 - 22H30");
        g.AddSpan(0, d + 1, 9);
        g.SetColHeader(1, d + 1, "Nombre");
        g.AddSpan(1, d + 1, 5);
        g.SetColHeader(1, d + 6, "Pourcentage");
        g.AddSpan(1, d + 6, 4);
        for (int c = 0; c < 9; ++c) {
            g.SetColHeader(2, d + 1 + c, noms[c]);
            g.SetGenre(d + 1 + c, c < 5 ? GenreColonne::Nombre : GenreColonne::Pourcentage);
        }
    }
    for (int r = 1; r <= 31; ++r) {
        g.SetRowHeader(0, r, PadNumber(r, 2) + "-10-2026");
        g.SetRowHeader(1, r, "jeu.");
        for (int c = 1; c <= 18; ++c)
            g.SetText(c, r, (c - 1) % 9 < 5 ? std::to_string(100 + r + c) : "100.0 %");
    }
    g.SetRowHeader(0, 32, "Total");
    for (int c = 1; c <= 18; ++c)
        g.SetText(c, 32, (c - 1) % 9 < 5 ? "12345" : "45.6 %");
    return g;
}

// A long per-track list: one header row, a line-number column, accented titles.
Grid GrilleLongue(int lignes) {
    Grid g(3, lignes);
    g.SetColHeader(0, 1, "Titre");
    g.SetColHeader(0, 2, "Artiste");
    g.SetColHeader(0, 3, "Nombre");
    g.SetGenre(3, GenreColonne::Nombre);
    for (int r = 1; r <= lignes; ++r) {
        g.SetRowHeader(0, r, std::to_string(r));
        g.SetText(1, r, "Été n°" + std::to_string(r) + " – Cœur");
        g.SetText(2, r, "Artiste " + std::to_string(r));
        g.SetText(3, r, std::to_string(1000 - r));
    }
    return g;
}

std::vector<const TexteDessine*> Textes(const PageImprimee& p) {
    std::vector<const TexteDessine*> t;
    for (const Primitive& x : p.primitives)
        if (const auto* texte = std::get_if<TexteDessine>(&x)) t.push_back(texte);
    return t;
}

std::multiset<std::string> TextesDe(const PageImprimee& p) {
    std::multiset<std::string> s;
    for (const TexteDessine* t : Textes(p))
        s.insert(t->texte);
    return s;
}

TEST(MiseEnPage, CodesDImpressionInterpretes) {
    using L = LigneImprimee;
    EXPECT_EQ(InterpreteCodes(kPiedImpression, kMaintenant, 3, 7),
              (std::vector<L>{{"lundi 2 novembre 2026 09:05:03", "", "Page 3"}}));
    EXPECT_EQ(InterpreteCodes("/cQuotas: x/n", kMaintenant, 1, 1),
              (std::vector<L>{{"", "Quotas: x", ""}, {}}));
    EXPECT_EQ(InterpreteCodes("avant/rp. /p sur /pc/c/d /t/nA/x//", kMaintenant, 2, 9),
              (std::vector<L>{{"avant", "02/11/2026 09:05", "p. 2 sur 9"}, {"A/x/", "", ""}}));
    EXPECT_TRUE(InterpreteCodes("", kMaintenant, 1, 1).empty());

    const DateTime debut{2026, 10, 1};
    const DateTime fin{2026, 10, 31};
    EXPECT_EQ(TextePeriode(debut, fin), "jeudi 1 octobre 2026 - samedi 31 octobre 2026");
    EXPECT_EQ(DateLongue(DateTime{2026, 8, 16}), "dimanche 16 août 2026");
    EXPECT_EQ(EnteteImpression(Rapport::Quotas, debut, fin),
              "/cQuotas: " + TextePeriode(debut, fin) + "/n");
    EXPECT_EQ(EnteteImpression(Rapport::TopDiffusion, debut, fin),
              "/cTop Diffusion: " + TextePeriode(debut, fin) + "/n");
    EXPECT_EQ(EnteteImpression(Rapport::Sacem, debut, fin),
              "/cRelevé SACEM: " + TextePeriode(debut, fin) + "/n");
    EXPECT_EQ(EnteteImpression(Rapport::Publicite, debut, fin),
              "/cDiffusions: " + TextePeriode(debut, fin) + "/n");
    EXPECT_EQ(NomTravailImpression("Radio Émeraude", "Lille", kMaintenant),
              "Radio Émeraude Lille Date: 02/11/2026 09:05:03");
}

TEST(MiseEnPage, QuotasDUnMoisEnPaysageSurLaLargeurDeLaPage) {
    const Grid g = GrilleMois();
    const uint64_t revision = g.Revision();
    const Impression imp = MetEnPageRapport(g, Rapport::Quotas, DateTime{2026, 10, 1},
                                            DateTime{2026, 10, 31}, "Radio", "Lille", kMaintenant);
    EXPECT_EQ(g.Revision(), revision);
    EXPECT_TRUE(imp.paysage);
    EXPECT_EQ(imp.texteEnCours, "Impression en cours");
    EXPECT_EQ(imp.nomTravail, "Radio Lille Date: 02/11/2026 09:05:03");
    ASSERT_FALSE(imp.pages.empty());
    for (const PageImprimee& p : imp.pages) {
        EXPECT_GT(p.largeur, p.hauteur);
        for (const TexteDessine* t : Textes(p)) {
            // Inside the page, and whole: nothing was cut to fit the width.
            EXPECT_GE(t->cadre.x, 0);
            EXPECT_LE(t->cadre.x + t->cadre.largeur, p.largeur);
            EXPECT_LE(LargeurTexte(t->texte, t->police), t->cadre.largeur + 0.01) << t->texte;
            EXPECT_EQ(t->texte.find("…"), std::string::npos) << t->texte;
        }
    }
    const auto premiere = TextesDe(imp.pages[0]);
    EXPECT_EQ(premiere.count("Quotas: jeudi 1 octobre 2026 - samedi 31 octobre 2026"), 1u);
    EXPECT_EQ(premiere.count("00H00 - 23H59"), 1u);
    EXPECT_EQ(premiere.count("Pourcentage"), 2u);
    EXPECT_EQ(premiere.count("Fr + NT"), 4u);
    // Every row once over the pages, all 18 columns of each.
    std::map<std::string, int> vues;
    for (const PageImprimee& p : imp.pages)
        for (const TexteDessine* t : Textes(p))
            if (t->texte.size() == 10 && t->texte.substr(2, 8) == "-10-2026") ++vues[t->texte];
    EXPECT_EQ(vues.size(), 31u);
    for (const auto& [date, n] : vues)
        EXPECT_EQ(n, 1) << date;
    size_t total = 0;
    for (const PageImprimee& p : imp.pages)
        total += TextesDe(p).count("12345");
    EXPECT_EQ(total, 10u);
}

TEST(MiseEnPage, PagesSuccessivesAvecEntetesRepetesEtNumeros) {
    const Grid g = GrilleLongue(150);
    OptionsImpression o;
    o.entete = "/cTop Diffusion/n";
    o.pied = kPiedImpression;
    o.maintenant = kMaintenant;
    const Impression imp = MetEnPage(g, o);
    EXPECT_FALSE(imp.paysage) << "three columns fit a portrait page";
    ASSERT_GE(imp.pages.size(), 3u);
    int attendue = 1;
    for (size_t i = 0; i < imp.pages.size(); ++i) {
        const PageImprimee& p = imp.pages[i];
        const auto textes = TextesDe(p);
        // The page header, the column headers and the footer on every page.
        EXPECT_EQ(textes.count("Top Diffusion"), 1u) << "page " << i + 1;
        EXPECT_EQ(textes.count("Titre"), 1u);
        EXPECT_EQ(textes.count("Nombre"), 1u);
        EXPECT_EQ(textes.count("Page " + std::to_string(i + 1)), 1u);
        EXPECT_EQ(textes.count("lundi 2 novembre 2026 09:05:03"), 1u);
        // Rows carry on from the previous page, in order, and stay above the footer.
        double bas = 0;
        double yPied = p.hauteur;
        for (const TexteDessine* t : Textes(p))
            if (t->texte.rfind("Page ", 0) == 0) yPied = t->cadre.y;
        for (const TexteDessine* t : Textes(p)) {
            if (t->texte.rfind("Artiste ", 0) != 0) continue;
            EXPECT_EQ(t->texte, "Artiste " + std::to_string(attendue)) << "page " << i + 1;
            ++attendue;
            bas = std::max(bas, t->cadre.y + t->cadre.hauteur);
        }
        EXPECT_LE(bas, yPied);
        if (i + 1 < imp.pages.size()) {
            EXPECT_GT(bas, p.hauteur * 0.8) << "page " << i + 1 << " not filled";
        }
    }
    EXPECT_EQ(attendue, 151);
}

TEST(MiseEnPage, GrilleTropLargeReduiteEtCoupeeALaLargeur) {
    Grid g(12, 2);
    for (int c = 1; c <= 12; ++c) {
        g.SetColHeader(0, c, "Colonne " + std::to_string(c));
        g.SetText(c, 1, std::string(60, 'W'));
    }
    OptionsImpression o;
    o.maintenant = kMaintenant;
    const Impression imp = MetEnPage(g, o);
    EXPECT_TRUE(imp.paysage);
    EXPECT_EQ(imp.taillePolice, o.taillePoliceMin);
    ASSERT_EQ(imp.pages.size(), 1u);
    const PageImprimee& p = imp.pages[0];
    int coupes = 0;
    for (const TexteDessine* t : Textes(p)) {
        EXPECT_LE(t->cadre.x + t->cadre.largeur, p.largeur - o.marge + 0.01);
        EXPECT_LE(LargeurTexte(t->texte, t->police), t->cadre.largeur + 0.01);
        if (t->texte.find("…") != std::string::npos) ++coupes;
    }
    EXPECT_EQ(coupes, 12);
}

TEST(MiseEnPage, PdfReluParPdftotext) {
    test::DossierTemporaire dossier;
    const Grid g = GrilleLongue(90);
    const std::string chemin = dossier / "releve.pdf";
    const DateTime debut{2026, 10, 1};
    const DateTime fin{2026, 10, 31};
    const ResultatEcriture r = ImprimeRapportPdf(g, Rapport::Sacem, debut, fin, "Radio", "Lille",
                                                 kMaintenant, chemin, false);
    ASSERT_TRUE(r.ok) << r.erreur;
    const std::string texte = dossier / "releve.txt";
    ASSERT_EQ(std::system(("pdftotext -layout '" + chemin + "' '" + texte + "'").c_str()), 0);
    const std::string lu = test::LitFichier(texte);
    EXPECT_NE(lu.find("Relevé SACEM: " + TextePeriode(debut, fin)), std::string::npos) << lu;
    EXPECT_NE(lu.find("Page 1"), std::string::npos);
    EXPECT_NE(lu.find("Page 2"), std::string::npos);
    EXPECT_NE(lu.find("lundi 2 novembre 2026 09:05:03"), std::string::npos);
    for (int r = 1; r <= 90; ++r)
        EXPECT_NE(lu.find("Été n°" + std::to_string(r) + " – Cœur"), std::string::npos) << r;
    const std::string info = dossier / "info.txt";
    ASSERT_EQ(std::system(("pdfinfo '" + chemin + "' > '" + info + "'").c_str()), 0);
    EXPECT_NE(test::LitFichier(info).find("Radio Lille Date: 02/11/2026 09:05:03"),
              std::string::npos);

    // An existing file is kept unless replacing is asked for.
    EXPECT_FALSE(
        ImprimeRapportPdf(g, Rapport::Sacem, debut, fin, "R", "L", kMaintenant, chemin, false).ok);
    EXPECT_TRUE(
        ImprimeRapportPdf(g, Rapport::Sacem, debut, fin, "R", "L", kMaintenant, chemin, true).ok);
    EXPECT_EQ(AvecExtensionPdf(dossier / "x"), dossier / "x.pdf");
    EXPECT_EQ(AvecExtensionPdf("X.PDF"), "X.PDF");
}

}  // namespace
}  // namespace zl3
