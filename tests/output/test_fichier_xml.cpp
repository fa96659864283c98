// The XML writer, checked by parsing its files with Python's xml.etree.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "FichierXml.h"
#include "LecteursExternes.h"

namespace zl3 {
namespace {

namespace fs = std::filesystem;
using test::DossierTemporaire;

TEST(FichierXml, TextesEchappesEtRelusParUnVraiParseur) {
    // {written, read back}
    const std::vector<std::pair<std::string, std::string>> cas = {
        {"Catégorie", "Catégorie"},
        {"a & b < c > d", "a & b < c > d"},
        {"\"guillemets\" et 'apostrophes'", "\"guillemets\" et 'apostrophes'"},
        {"</Col1><x>&amp;", "</Col1><x>&amp;"},
        {"Cœur 12 € 🎵", "Cœur 12 € 🎵"},
        {"ligne1\nligne2\ttab", "ligne1\nligne2\ttab"},
        {"retour\r\nchariot", "retour\r\nchariot"},  // the CR survives line-end normalisation
        {"nul\x01"
         "bip\x07"
         "fin\x1F",
         "nul\uFFFDbip\uFFFDfin\uFFFD"},
        {std::string("a\0b", 3), "a\uFFFDb"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF", "\uFFFD\uFFFD"},  // U+FFFE, U+FFFF
        {"octets \xFF\xFE invalides \xC3", "octets \uFFFD\uFFFD invalides \uFFFD"},
        {"\xED\xA0\x80", "\uFFFD"},  // encoded surrogate
        {"]]> fin de CDATA", "]]> fin de CDATA"},
    };
    Grid g(2, static_cast<int>(cas.size()));
    for (size_t i = 0; i < cas.size(); ++i) {
        g.SetText(1, static_cast<int>(i + 1), cas[i].first);
        g.SetText(2, static_cast<int>(i + 1), std::to_string(i));
    }
    DossierTemporaire dossier;
    const std::string chemin = dossier / "textes.xml";
    ASSERT_TRUE(EcritFichierXml(chemin, g, "Root", "Collection").ok);

    const auto lu = test::LitXml(chemin);
    EXPECT_EQ(lu.racine, "Root");
    ASSERT_EQ(lu.lignes.size(), cas.size());
    for (size_t i = 0; i < cas.size(); ++i) {
        ASSERT_EQ(lu.lignes[i].cellules.size(), 2u);
        EXPECT_EQ(lu.lignes[i].cellules[0].texte, cas[i].second) << "case " << i;
        EXPECT_EQ(lu.lignes[i].cellules[0].enfants, 0) << "markup in a text stays text";
        EXPECT_EQ(lu.lignes[i].cellules[1].texte, std::to_string(i));
    }
}

TEST(FichierXml, StructureRacineCollectionEtColonnes) {
    Grid g(3, 2);
    g.SetText(1, 1, "Titre");
    g.SetText(3, 1, "Nombre");  // column 2 left empty
    g.SetText(2, 2, "Zaz");
    DossierTemporaire dossier;
    const std::string chemin = dossier / "historique.xml";
    ASSERT_TRUE(EcritFichierXml(chemin, g, "root_element", "collection_element").ok);

    const std::string texte = test::LitFichier(chemin);
    EXPECT_EQ(texte.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n", 0), 0u);
    const auto lu = test::LitXml(chemin);
    EXPECT_EQ(lu.racine, "root_element");
    ASSERT_EQ(lu.lignes.size(), 2u);
    const std::vector<std::vector<std::string>> attendu = {{"Titre", "", "Nombre"},
                                                           {"", "Zaz", ""}};
    for (size_t r = 0; r < 2; ++r) {
        EXPECT_EQ(lu.lignes[r].balise, "collection_element");
        ASSERT_EQ(lu.lignes[r].cellules.size(), 3u) << "empty cells are written too";
        for (size_t c = 0; c < 3; ++c) {
            EXPECT_EQ(lu.lignes[r].cellules[c].balise, "Col" + std::to_string(c + 1));
            EXPECT_EQ(lu.lignes[r].cellules[c].texte, attendu[r][c]);
        }
    }

    // No rows, and rows without columns.
    ASSERT_TRUE(EcritFichierXml(dossier / "vide.xml", Grid(), "Root", "Collection").ok);
    EXPECT_EQ(test::LitXml(dossier / "vide.xml").lignes.size(), 0u);
    ASSERT_TRUE(EcritFichierXml(dossier / "sans.xml", Grid(0, 2), "Root", "Collection").ok);
    const auto sans = test::LitXml(dossier / "sans.xml");
    ASSERT_EQ(sans.lignes.size(), 2u);
    EXPECT_TRUE(sans.lignes[0].cellules.empty());
}

TEST(FichierXml, NomsDElementInvalidesRefuses) {
    for (const char* nom : {"Root", "_x", "collection_element", "a.b-c9"})
        EXPECT_TRUE(EstNomElementXml(nom)) << nom;
    for (const char* nom : {"", "1Root", "-a", ".a", "a b", "a:b", "a<b", "xmlRoot", "XML", "é"})
        EXPECT_FALSE(EstNomElementXml(nom)) << nom;

    DossierTemporaire dossier;
    const std::string chemin = dossier / "x.xml";
    const ResultatEcriture r = EcritFichierXml(chemin, Grid(1, 1), "Root", "Ma Collection");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.erreur.find("Ma Collection"), std::string::npos);
    EXPECT_FALSE(fs::exists(chemin));
}

TEST(FichierXml, EchecSansFichierPartiel) {
    DossierTemporaire dossier;
    const std::string fichier = dossier / "fichier";
    { std::ofstream(fichier) << "x"; }
    const ResultatEcriture r = EcritFichierXml(fichier + "/sortie.xml", Grid(2, 2), "Root", "C");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.erreur.find("Impossible"), std::string::npos) << r.erreur;
    EXPECT_EQ(dossier.Contenu(), std::vector<std::string>{"fichier"});
}

}  // namespace
}  // namespace zl3
