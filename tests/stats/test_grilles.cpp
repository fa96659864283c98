// The grid model, the report grids' definitions and their text renderings.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "Grid.h"
#include "GrilleTexte.h"
#include "Lib_Tableur.h"
#include "Recherche.h"

namespace zl3 {
namespace {

TEST(Grille, AddressingHeadersAndCounts) {
    Grid g(3, 2);
    g.SetHeaderRows(2);
    g.SetHeaderCols(2);
    g.SetText(1, 0, "Fr.");
    g.SetColHeader(0, 1, "Bande");
    g.SetText(0, 2, "11-03-2026");
    g.SetRowHeader(1, 2, "mer.");
    EXPECT_EQ(g.ColHeader(1, 1), "Fr.");
    EXPECT_EQ(g.Text(1, 0), "Fr.");
    EXPECT_EQ(g.RowHeader(0, 2), "11-03-2026");
    EXPECT_EQ(g.Text(0, 2), "11-03-2026");
    g.Increment(2, 1);
    g.Increment(2, 1, 41);
    EXPECT_EQ(g.Text(2, 1), "42");
    g.SetText(3, 1, "abc");
    EXPECT_EQ(g.Number(3, 1), 0);
    g.Increment(3, 1);
    EXPECT_EQ(g.Text(3, 1), "1");
    // Out of range: empty on read, ignored on write.
    g.SetText(9, 9, "x");
    EXPECT_EQ(g.Text(9, 9), "");
    EXPECT_EQ(g.Text(-1, 1), "");
}

TEST(Grille, InsertingAndDeletingRestoresTheGrid) {
    TableursMusique m;
    InitGeneralTableurMusique(m);
    Grid& g = m.quotas;
    g.SetMaxRows(3);
    g.SetRowHeader(0, 1, "01-03-2026");
    g.SetText(5, 2, "7");
    const Grid before = g;
    g.InsertCols(1, 2);
    g.InsertRows(1, 3);
    EXPECT_EQ(g.MaxCols(), 20);
    EXPECT_EQ(g.MaxRows(), 6);
    EXPECT_EQ(g.Text(7, 5), "7");
    EXPECT_EQ(g.ColHeader(0, 3), "00H00 - 23H59");
    EXPECT_EQ(g.Spans()[0].firstCol, 3);
    // Column kinds move with their columns; the inserted ones are text.
    EXPECT_EQ(g.Genre(1), GenreColonne::Texte);
    EXPECT_EQ(g.Genre(7), GenreColonne::Nombre);
    EXPECT_EQ(g.Genre(8), GenreColonne::Pourcentage);
    EXPECT_FALSE(g == before);
    g.DeleteRows(1, 3);
    g.DeleteCols(1, 2);
    EXPECT_TRUE(g == before);
}

// A view repaints when the revision it saw has changed: every change must change it, reads never.
TEST(Grille, EveryChangeMovesTheRevision) {
    Grid g(3, 2);
    g.SetHeaderRows(2);
    std::set<uint64_t> vues{g.Revision()};
    const std::vector<std::function<void()>> changements = {
        [&] { g.SetText(1, 1, "a"); },
        [&] { g.SetText(0, 1, "r"); },
        [&] { g.SetColHeader(0, 2, "h"); },
        [&] { g.SetRowHeader(0, 2, "x"); },
        [&] { g.Increment(2, 2); },
        [&] { g.SetColWidth(1, 9); },
        [&] { g.SetGenre(3, GenreColonne::Nombre); },
        [&] { g.AddSpan(0, 1, 2); },
        [&] { g.InsertRows(1); },
        [&] { g.DeleteRows(1); },
        [&] { g.InsertCols(2); },
        [&] { g.DeleteCols(2); },
        [&] { g.SetMaxRows(5); },
        [&] { g.ClearData(); },
        [&] { g.SetHeaderCols(2); }};
    for (size_t i = 0; i < changements.size(); ++i) {
        changements[i]();
        EXPECT_TRUE(vues.insert(g.Revision()).second) << "change " << i;
    }
    const uint64_t avant = g.Revision();
    (void)g.Text(1, 1);
    (void)g.Number(2, 2);
    EXPECT_EQ(g.Revision(), avant);
    // A grid assigned over the viewed one never shows a revision already seen.
    Grid autre(3, 2);
    autre.SetText(1, 1, "b");
    g = Grid(3, 2);
    EXPECT_TRUE(vues.insert(g.Revision()).second);
}

TEST(Grille, ReportGridsAfterStartUp) {
    TableursMusique m;
    Grid pub;
    InitGeneralTableurMusique(m);
    InitGeneralTableurPublicite(pub);
    EXPECT_EQ(m.quotas.MaxCols(), 18);
    EXPECT_EQ(m.quotas.HeaderRows(), 3);
    EXPECT_EQ(m.quotas.MaxRows(), 0);
    EXPECT_EQ(m.quotas.ColHeader(0, 1), "00H00 - 23H59");
    EXPECT_EQ(m.quotas.ColHeader(0, 10), "06H30 - 22H30");
    EXPECT_EQ(m.quotas.ColHeader(1, 6), "Pourcentage");
    EXPECT_EQ(m.quotas.ColHeader(1, 10), "Nombre");
    const char* attendu[18] = {"Fr.",  "N.T.",    "Fr + NT", "Etr.", "Instru.", "Fr.",
                               "N.T.", "Fr + NT", "Etr.",    "Fr.",  "N.T.",    "Fr + NT",
                               "Etr.", "Instru.", "Fr.",     "N.T.", "Fr + NT", "Etr."};
    for (int c = 1; c <= 18; ++c)
        EXPECT_EQ(m.quotas.Text(c, 0), attendu[c - 1]) << c;
    std::vector<std::string> top;
    for (int c = 1; c <= m.top.MaxCols(); ++c)
        top.push_back(m.top.Text(c, 0));
    EXPECT_EQ(top, (std::vector<std::string>{"Titre", "Artiste", "Artiste", "Catégorie", "Durée",
                                             "Id", "Nombre", "Clip"}));
    std::vector<std::string> sacem;
    for (int c = 1; c <= m.sacem.MaxCols(); ++c)
        sacem.push_back(m.sacem.Text(c, 0));
    EXPECT_EQ(sacem, (std::vector<std::string>{"Artiste", "Titre", "Durée", "Label", "Nombre"}));
    std::vector<std::string> p;
    for (int c = 1; c <= pub.MaxCols(); ++c)
        p.push_back(pub.Text(c, 0));
    EXPECT_EQ(p,
              (std::vector<std::string>{"Client", "Client", "Commercial", "Commercial", "Message",
                                        "Message", "Zone", "Total", "Total", "Total"}));
    EXPECT_EQ(pub.MaxRows(), 0);
    EXPECT_EQ(m.quotas.Genre(kColInstru + kDecalageBande), GenreColonne::Nombre);
    EXPECT_EQ(m.quotas.Genre(kColPctFrNT), GenreColonne::Pourcentage);
    EXPECT_EQ(m.top.Genre(kTopNombre), GenreColonne::Nombre);
    EXPECT_EQ(m.top.Genre(kTopId), GenreColonne::Texte);
    EXPECT_EQ(pub.Genre(kPubTotalClient), GenreColonne::Nombre);
    EXPECT_EQ(pub.Genre(kPubZone), GenreColonne::Texte);
}

TEST(Grille, PercentageFormat) {
    EXPECT_EQ(TextePourcentage(87, 200), "43.5 %");
    EXPECT_EQ(TextePourcentage(1, 3), "33.3 %");
    EXPECT_EQ(TextePourcentage(2, 3), "66.7 %");
    EXPECT_EQ(TextePourcentage(5, 5), "100.0 %");
    EXPECT_EQ(TextePourcentage(0, 5), "0.0 %");
    // A half is rounded away from zero.
    EXPECT_EQ(TextePourcentage(1, 16), "6.3 %");
    EXPECT_EQ(TextePourcentage(99, 176), "56.3 %");
    EXPECT_EQ(TextePourcentage(3, 16), "18.8 %");
}

TEST(Grille, CsvQuotesWhatNeedsQuoting) {
    Grid g(2, 1);
    g.SetText(1, 0, "Titre");
    g.SetText(2, 0, "Artiste");
    g.SetRowHeader(0, 1, "1");
    g.SetText(1, 1, "Hey, \"Jude\"");
    g.SetText(2, 1, "Ligne\nsuivante");
    EXPECT_EQ(GrilleEnCsv(g), ",Titre,Artiste\r\n1,\"Hey, \"\"Jude\"\"\",\"Ligne\nsuivante\"\r\n");
}

TEST(Grille, TableAlignsColumnsAndCentresMergedHeaders) {
    TableursMusique m;
    InitGeneralTableurMusique(m);
    m.quotas.SetMaxRows(1);
    m.quotas.SetRowHeader(0, 1, "Total");
    m.quotas.SetText(1, 1, "1234");
    const std::string t = GrilleEnTableau(m.quotas);
    std::vector<std::string> lines;
    for (size_t s = 0, e; (e = t.find('\n', s)) != std::string::npos; s = e + 1)
        lines.push_back(t.substr(s, e - s));
    ASSERT_EQ(lines.size(), 5u);  // three header levels, a rule, one row
    EXPECT_NE(lines[0].find("00H00 - 23H59"), std::string::npos);
    EXPECT_NE(lines[0].find("06H30 - 22H30"), std::string::npos);
    // "Fr." and "1234" end in the same column (numbers are right-aligned).
    const size_t fr = lines[2].find("Fr.");
    const size_t nombre = lines[4].find("1234");
    ASSERT_NE(fr, std::string::npos);
    ASSERT_NE(nombre, std::string::npos);
    EXPECT_EQ(lines[3].find("-+-"), lines[2].find(" | "));
    EXPECT_EQ(nombre + 4, lines[2].find(" | ", fr));
}

}  // namespace
}  // namespace zl3
