// The half-year's music-rights statement: plays counted from the station's events, the authors,
// composers, ISRC and publisher read from the tracks' WMA files, the tracks whose tags are
// missing listed as incidents, and the statement as an .xlsx that openpyxl reads back.
#include <filesystem>

#include "BaseTest.h"
#include "FichiersWma.h"
#include "LecteursExternes.h"
#include "Lib_Export.h"
#include "ReleveDroits.h"

namespace zl3 {
namespace {

using test::At;

class ReleveTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({20, 21, 22, 28, 47});
        sons_ = Root() + "sons/";
        std::filesystem::create_directories(sons_);
    }
    void MorceauLabel(const std::string& cle, const std::string& titre, const std::string& label,
                      const std::string& duree) {
        namespace m = rec::Morceau;
        auto r = Nouveau(22);
        rec::SetBytes(r, m::CleMorceau, cle);
        rec::SetBytes(r, m::QuotaFlag, "O");
        rec::SetText(r, m::Titre, titre);
        rec::SetBytes(r, m::CodeArtiste1, "A0001");
        rec::SetBytes(r, m::CodeLabel, label);
        rec::SetBytes(r, m::Duree, duree);
        rec::SetBytes(r, m::CodeNumerique, "00");
        Inserer(22);
    }
    void Evenement(const std::string& cle, const DateTime& t) {
        namespace ev = rec::EvenementMusical;
        auto r = Nouveau(28);
        rec::SetBytes(r, ev::Date, FormatYYYYMMDD(t));
        rec::SetBytes(r, ev::Heure, PadNumber(t.hour, 2));
        rec::SetBytes(r, ev::Minute, PadNumber(t.minute, 2));
        rec::SetBytes(r, ev::Seconde, PadNumber(t.second, 2));
        rec::SetBytes(r, ev::CleMorceau, cle);
        Inserer(28);
    }
    void Fichier(const std::string& cle, const demo::TagsWma& tags) {
        test::WriteFile(sons_ + cle + ".wma", demo::FichierAsf(tags));
    }
    std::string sons_;
};

TEST_F(ReleveTest, TagsComeFromTheFilesAndMissingOnesAreIncidents) {
    Artiste("A0001", "Léa Ferrand");
    Attribut("LABEL", "L01", "Disques du Nord");
    MorceauLabel("01000001", "Le vent d'Ouessant", "L01", "0215");
    MorceauLabel("01000002", "Sans ISRC", "L01", "0190");
    MorceauLabel("01000003", "Sans fichier", "", "0200");
    MorceauLabel("01000004", "Hors semestre", "", "0200");
    Evenement("01000004", At(2025, 12, 31, 23, 0));  // before the half-year: not counted
    for (int j = 1; j <= 3; ++j)
        Evenement("01000001", At(2026, 2, j, 10));
    Evenement("01000002", At(2026, 3, 4, 10));
    Evenement("01000003", At(2026, 6, 30, 23, 59, 59));
    Evenement("01000003", At(2026, 1, 1, 0, 0, 0));
    Evenement("01000004", At(2026, 7, 1, 0, 0, 0));  // the next half-year
    Fichier("01000001", {"Le vent d'Ouessant", "Léa Ferrand",
                         {{"WM/Composer", "Hervé Le Gall"},
                          {"WM/Writer", "Anne Kervella/Yann Morvan"},
                          {"WM/ISRC", "FRZ032600123"},
                          {"WM/Publisher", "Éditions du Large"}},
                         215});
    Fichier("01000002", {"Sans ISRC", "Léa Ferrand",
                         {{"WM/Composer", "Hervé Le Gall"}, {"WM/Writer", "Anne Kervella"}},
                         190});

    ParametresReleve p;
    p.annee = 2026;
    p.semestre = 1;
    p.dossiersSons = {Root() + "vide/", sons_};
    const ReleveDroits r = EtablirReleveDroits(p);
    ASSERT_TRUE(r.effectue);
    EXPECT_FALSE(r.incomplete);
    EXPECT_EQ(r.source, SourceComptage::Evenements);
    ASSERT_EQ(r.lignes.size(), 3u);
    EXPECT_EQ(r.lignes[0].cle, "01000001");
    EXPECT_EQ(r.lignes[0].passages, 3);
    EXPECT_EQ(r.lignes[0].compositeurs, "Hervé Le Gall");
    EXPECT_EQ(r.lignes[0].auteurs, "Anne Kervella/Yann Morvan");
    EXPECT_EQ(r.lignes[0].isrc, "FRZ032600123");
    EXPECT_EQ(r.lignes[0].editeur, "Éditions du Large");
    EXPECT_EQ(r.lignes[0].label, "Disques du Nord");
    EXPECT_EQ(r.lignes[0].artistes, "Léa Ferrand");
    EXPECT_EQ(r.lignes[1].cle, "01000003");  // both ends of the half-year
    EXPECT_EQ(r.lignes[1].passages, 2);
    EXPECT_EQ(r.lignes[2].isrc, "");

    ASSERT_EQ(r.incidents.size(), 2u);
    for (const Incident& i : r.incidents)
        EXPECT_STREQ(LibelleGenre(i.genre), "Tags manquants");
    EXPECT_EQ(r.incidents[0].cle, "01000002");
    EXPECT_NE(r.incidents[0].texte.find("WM/ISRC"), std::string::npos);
    EXPECT_EQ(r.incidents[0].texte.find("WM/Composer"), std::string::npos);
    EXPECT_EQ(r.incidents[1].cle, "01000003");
    EXPECT_NE(r.incidents[1].texte.find("introuvable"), std::string::npos);

    // The statement as a workbook, read back by openpyxl.
    Grid g;
    RemplirGrilleReleve(r, g);
    DemandeExport d;
    d.format = FormatExport::Xlsx;
    d.dossier = Root();
    d.nomParDefaut = NomFichierReleve(1, 2026, 1) + ".xlsx";
    d.nomFeuille = "Releve droits";
    d.apresExport = 2;
    const std::string chemin = Root() + d.nomParDefaut;
    const ResultatExport e = ExporteGrille(
        g, d, [&](const std::string&, const std::string&, const std::string&) { return chemin; });
    ASSERT_TRUE(e.Ok()) << e.erreur;
    const auto feuilles = test::LitXlsx(chemin);
    ASSERT_EQ(feuilles.size(), 1u);
    const test::FeuilleXlsxLue& f = feuilles[0];
    EXPECT_EQ(f.nom, "Releve droits");
    EXPECT_EQ(f.Cellule(0, 6).texte, "ISRC");
    EXPECT_EQ(f.Cellule(1, 0).texte, "01000001");
    EXPECT_EQ(f.Cellule(1, 6).texte, "FRZ032600123");
    EXPECT_EQ(f.Cellule(1, 5).texte, "Hervé Le Gall");
    EXPECT_TRUE(f.Cellule(1, 9).nombre);
    EXPECT_EQ(f.Cellule(1, 9).valeur, 3);
}

}  // namespace
}  // namespace zl3
