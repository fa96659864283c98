#include "Lib_Tableur.h"

#include "Lib_Public.h"

namespace zl3 {
namespace {

void Entetes(Grid& g, const std::vector<std::string>& textes, const std::vector<int>& largeurs) {
    const int niveau = g.HeaderRows() - 1;
    for (size_t i = 0; i < textes.size(); ++i) {
        g.SetColHeader(niveau, static_cast<int>(i + 1), textes[i]);
        g.SetColWidth(static_cast<int>(i + 1), largeurs[i]);
    }
}

}  // namespace

void InitTableur(Grid& grid, int colonnes, int niveauxEntete, int colonnesEntete) {
    grid = Grid();
    grid.SetHeaderRows(niveauxEntete);
    grid.SetHeaderCols(colonnesEntete);
    grid.Resize(colonnes, 0);
}

void InitGeneralTableurMusique(TableursMusique& g) {
    TraceProc("Lib_Tableur:InitGeneralTableurMusique");

    // Quotas: day rows (date, then the short day name), three header levels.
    InitTableur(g.quotas, kNbColonnesQuotas, 3, 2);
    const char* bandes[2] = {"00H00 - 23H59", "06H30 - 22H30"};
    const char* classes[5] = {"Fr.", "N.T.", "Fr + NT", "Etr.", "Instru."};
    for (int b = 0; b < 2; ++b) {
        const int base = b * kDecalageBande;
        g.quotas.SetColHeader(0, base + 1, bandes[b]);
        g.quotas.AddSpan(0, base + 1, 9);
        g.quotas.SetColHeader(1, base + kColFr, "Nombre");
        g.quotas.AddSpan(1, base + kColFr, 5);
        g.quotas.SetColHeader(1, base + kColPctFr, "Pourcentage");
        g.quotas.AddSpan(1, base + kColPctFr, 4);
        for (int c = 0; c < 5; ++c) {
            g.quotas.SetColHeader(2, base + kColFr + c, classes[c]);
            g.quotas.SetColWidth(base + kColFr + c, 8);
            g.quotas.SetGenre(base + kColFr + c, GenreColonne::Nombre);
        }
        for (int c = 0; c < 4; ++c) {
            g.quotas.SetColHeader(2, base + kColPctFr + c, classes[c]);
            g.quotas.SetColWidth(base + kColPctFr + c, 9);
            g.quotas.SetGenre(base + kColPctFr + c, GenreColonne::Pourcentage);
        }
    }
    g.quotas.SetColHeader(2, 0, "Date");
    g.quotas.SetColWidth(0, 11);

    InitTableur(g.top, kNbColonnesTop, 1, 1);
    Entetes(g.top, {"Titre", "Artiste", "Artiste", "Catégorie", "Durée", "Id", "Nombre", "Clip"},
            {40, 30, 30, 24, 6, 9, 7, 4});
    g.top.SetColWidth(0, 5);
    g.top.SetGenre(kTopNombre, GenreColonne::Nombre);

    InitTableur(g.sacem, kNbColonnesSacem, 1, 1);
    Entetes(g.sacem, {"Artiste", "Titre", "Durée", "Label", "Nombre"}, {40, 40, 6, 24, 7});
    g.sacem.SetColWidth(0, 5);
    g.sacem.SetGenre(kSacemNombre, GenreColonne::Nombre);
}

void InitGeneralTableurPublicite(Grid& g) {
    TraceProc("Lib_Tableur:InitGeneralTableurPublicite");
    InitTableur(g, kNbColonnesPub, 1, 1);
    Entetes(g,
            {"Client", "Client", "Commercial", "Commercial", "Message", "Message", "Zone", "Total",
             "Total", "Total"},
            {9, 30, 9, 24, 18, 40, 20, 6, 6, 6});
    g.SetColWidth(0, 5);
    for (int c = kPubTotalClient; c <= kPubTotalLigne; ++c)
        g.SetGenre(c, GenreColonne::Nombre);
}

void InitGeneralStatsPassages(Grid& g) {
    TraceProc("FrmStatsPassages:InitGeneral");
    InitTableur(g, kNbColonnesPassages, 1, 1);
    Entetes(g, {"Morceau", "Titre", "Artiste", "Catégorie", "Nb"}, {10, 40, 30, 24, 6});
    g.SetColWidth(0, 5);
    g.SetGenre(kPassNb, GenreColonne::Nombre);
}

Grid& GrilleDuRapport(TableursMusique& musique, Grid& publicite, Rapport rapport) {
    switch (rapport) {
        case Rapport::Quotas:
            return musique.quotas;
        case Rapport::TopDiffusion:
            return musique.top;
        case Rapport::Sacem:
            return musique.sacem;
        case Rapport::Publicite:
            break;
    }
    return publicite;
}

}  // namespace zl3
