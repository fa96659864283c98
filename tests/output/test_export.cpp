// The export command of the main window and of the history-export window, run headless with a
// scripted message box, a recording shell and busy cursor, and a dialog that returns a path.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "LecteursExternes.h"
#include "Lib_Export.h"
#include "Lib_Public.h"
#include "Doubles.h"
#include "Services.h"

namespace zl3 {
namespace {

namespace fs = std::filesystem;
using test::DossierTemporaire;
using Lignes = std::vector<std::vector<std::string>>;

class SablierEnregistre : public EventLoop {
  public:
    void SetBusy(bool busy) override { etats.push_back(busy); }
    std::vector<bool> etats;
};

// A Quotas-like grid: two header levels (the band over two columns), two row-header columns
// (date and day name), two data rows.
Grid GrilleQuotas() {
    Grid g(3, 2);
    g.SetHeaderRows(2);
    g.SetHeaderCols(2);
    g.SetColHeader(0, 0, "Période");
    g.SetColHeader(0, 1, "00H00 - 23H59");
    g.AddSpan(0, 1, 2);
    g.SetColHeader(0, 3, "06H30 - 22H30");
    g.SetColHeader(1, 0, "Date");
    g.SetColHeader(1, 1, "Fr.");
    g.SetColHeader(1, 2, "N.T.");
    g.SetColHeader(1, 3, "Etr.");
    g.SetRowHeader(0, 1, "02-11-2026");
    g.SetRowHeader(1, 1, "lun.");
    g.SetRowHeader(0, 2, "Total");
    for (int r = 1; r <= 2; ++r)
        for (int c = 1; c <= 3; ++c)
            g.SetText(c, r, std::to_string(10 * r + c));
    return g;
}

const Lignes kQuotasExporte = {
    {"Période", "", "00H00 - 23H59", "", "06H30 - 22H30"},
    {"Date", "", "Fr.", "N.T.", "Etr."},
    {"02-11-2026", "lun.", "11", "12", "13"},
    {"Total", "", "21", "22", "23"},
};

class Export : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetTrace();
        SetDossierLog(0, (dossier.Chemin() / "logs").string());
    }
    void TearDown() override { ResetTrace(); }

    struct AppelDialogue {
        std::string dossier, nom, filtre;
    };
    // A save dialog that records how it was opened and answers `reponse`.
    DialogueEnregistrer Dialogue(const std::string& reponse) {
        return [this, reponse](const std::string& d, const std::string& n, const std::string& f) {
            appels.push_back({d, n, f});
            return reponse;
        };
    }
    ReglagesExport Reglages(int format, int apres = 0) {
        return {dossier / "exports", format, apres};
    }
    ResultatExport ExporteQuotas(const Grid& g, const std::string& chemin, int format = 0,
                                 int apres = 0) {
        return ExporteRapport(g, Rapport::Quotas, "3", DateTime{2026, 11, 2}, DateTime{2026, 11, 8},
                              Reglages(format, apres), Dialogue(chemin));
    }
    bool TraceContient(const std::string& texte) const {
        for (const std::string& l : Trace().lines)
            if (l.find(texte) != std::string::npos) return true;
        return false;
    }
    std::vector<std::string> Messages() const {
        std::vector<std::string> m;
        for (const auto& s : boite.shown)
            m.push_back(s.request.text);
        return m;
    }

    DossierTemporaire dossier;
    ScriptedMessageBox boite;
    RecordingShell shell;
    SablierEnregistre sablier;
    ManualClock horloge;
    ScopedServices services{Services{&boite, &horloge, &sablier, &shell}};
    std::vector<AppelDialogue> appels;
};

TEST(ExportNoms, NomsParDefautEtFeuillesDesQuatreRapports) {
    const DateTime debut{2026, 1, 5};
    const DateTime fin{2026, 2, 28};
    EXPECT_EQ(NomFichierExport(Rapport::Quotas, "3", debut, fin, FormatExport::Xls),
              "ZL3_Stats_Quotas_Station_3_Date_20260105_20260228.xls");
    EXPECT_EQ(NomFichierExport(Rapport::TopDiffusion, "10", debut, fin, FormatExport::Xml),
              "ZL3_Stats_Top_Diffusion_Station_10_Date_20260105_20260228.xml");
    EXPECT_EQ(NomFichierExport(Rapport::Sacem, "3", debut, fin, FormatExport::Xls),
              "ZL3_Quotas_Station_3_Date_20260105_20260228.xls");
    EXPECT_EQ(NomFichierExport(Rapport::Publicite, "3", debut, fin, FormatExport::Xls),
              "ZL3_Stats_Publicite_Diffusions_Date_20260105_20260228.xls");

    EXPECT_EQ(NomFeuilleExport(Rapport::Quotas), "Quotas");
    EXPECT_EQ(NomFeuilleExport(Rapport::TopDiffusion), "Top Diffusion");
    EXPECT_EQ(NomFeuilleExport(Rapport::Sacem), "SACEM");
    EXPECT_EQ(NomFeuilleExport(Rapport::Publicite), "SACEM");

    EXPECT_EQ(FormatDeReglage(0), FormatExport::Xls);
    EXPECT_EQ(FormatDeReglage(1), FormatExport::Xls);
    EXPECT_EQ(FormatDeReglage(2), FormatExport::Xml);
    EXPECT_EQ(FormatDeReglage(3), FormatExport::Xlsx);
    EXPECT_EQ(FormatDeReglage(4), FormatExport::Xls);
    EXPECT_EQ(AvecExtension("rapport", FormatExport::Xls), "rapport.xls");
    EXPECT_EQ(AvecExtension("X.XLS", FormatExport::Xls), "X.XLS");
    EXPECT_EQ(AvecExtension("a.xls", FormatExport::Xml), "a.xls.xml");
    EXPECT_EQ(AvecExtension("Y.Xml", FormatExport::Xml), "Y.Xml");
}

TEST_F(Export, EntetesExporteesCommeDonneesGrilleJamaisTouchee) {
    Grid g = GrilleQuotas();
    const Grid avant = g;
    const uint64_t revision = g.Revision();
    const std::string chemin = dossier / "exports/quotas.xls";
    const ResultatExport r = ExporteQuotas(g, chemin);
    ASSERT_TRUE(r.Ok()) << r.erreur;
    EXPECT_EQ(r.chemin, chemin);
    EXPECT_TRUE(g == avant) << "grid changed by the export";
    EXPECT_EQ(g.Revision(), revision) << "the grid on screen was modified, even if restored";

    ASSERT_EQ(appels.size(), 1u);
    EXPECT_EQ(appels[0].dossier, dossier / "exports");
    EXPECT_TRUE(fs::is_directory(dossier.Chemin() / "exports")) << "export folder created";
    EXPECT_EQ(appels[0].nom, "ZL3_Stats_Quotas_Station_3_Date_20261102_20261108.xls");
    EXPECT_EQ(appels[0].filtre, "Fichiers xls|*.xls");

    const auto lu = test::LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_EQ(lu.feuilles[0].nom, "Quotas");
    EXPECT_TRUE(test::MemesCellules(lu.feuilles[0], kQuotasExporte));
    EXPECT_EQ(lu.feuilles[0].fusions, (std::vector<std::vector<int>>{{0, 1, 2, 4}}));

    ASSERT_EQ(boite.shown.size(), 1u);
    EXPECT_EQ(boite.shown[0].request.text, "Fichier " + chemin + " créé");
    EXPECT_EQ(boite.shown[0].request.title, "Zelvar: Tools Stats");
    EXPECT_EQ(boite.shown[0].request.style, kMbInformation);
    EXPECT_EQ(sablier.etats, (std::vector<bool>{true, false}));

    const std::string log = test::LitFichier(dossier.Chemin() / "logs" / "ExportExcel.Log");
    EXPECT_EQ(log, "02/11/2026 09:00:00 | " + chemin + " | 4 lignes x 5 colonnes | OK\r\n");
}

TEST_F(Export, XlsxAvecNombresPourcentagesEntetesFigeesEtMiseEnPage) {
    Grid g = GrilleQuotas();
    g.SetMaxCols(4);
    g.SetColHeader(1, 4, "% Fr.");
    g.SetGenre(4, GenreColonne::Pourcentage);
    g.SetText(4, 1, "39.3 %");
    g.SetText(4, 2, "100.0 %");
    g.SetText(3, 1, "007");  // not a plain integer: stays text
    const uint64_t revision = g.Revision();
    const ResultatExport r = ExporteQuotas(g, dossier / "exports/quotas", 3);
    ASSERT_TRUE(r.Ok()) << r.erreur;
    EXPECT_EQ(r.chemin, dossier / "exports/quotas.xlsx");
    EXPECT_EQ(g.Revision(), revision);
    ASSERT_EQ(appels.size(), 1u);
    EXPECT_EQ(appels[0].nom, "ZL3_Stats_Quotas_Station_3_Date_20261102_20261108.xlsx");
    EXPECT_EQ(appels[0].filtre, "Fichiers xlsx|*.xlsx");

    const auto feuilles = test::LitXlsx(r.chemin);
    ASSERT_EQ(feuilles.size(), 1u);
    const test::FeuilleXlsxLue& f = feuilles[0];
    EXPECT_EQ(f.nom, "Quotas");
    // Header rows: bold texts, the band merged over its columns.
    EXPECT_EQ(f.Cellule(0, 2).texte, "00H00 - 23H59");
    EXPECT_TRUE(f.Cellule(0, 2).gras);
    EXPECT_EQ(f.Cellule(1, 5).texte, "% Fr.");
    EXPECT_EQ(f.fusions, std::vector<std::string>{"C1:D1"});
    EXPECT_EQ(f.Cellule(2, 0).texte, "02-11-2026");
    EXPECT_TRUE(f.Cellule(2, 0).gras);
    // Counts are numbers, percentages fractions shown with a percent format.
    EXPECT_TRUE(f.Cellule(2, 2).nombre);
    EXPECT_EQ(f.Cellule(2, 2).valeur, 11);
    EXPECT_EQ(f.Cellule(3, 4).valeur, 23);
    EXPECT_FALSE(f.Cellule(2, 4).nombre);
    EXPECT_EQ(f.Cellule(2, 4).texte, "007");
    EXPECT_TRUE(f.Cellule(2, 5).nombre);
    EXPECT_NEAR(f.Cellule(2, 5).valeur, 0.393, 1e-12);
    EXPECT_EQ(f.Cellule(2, 5).format, "0.0 %");
    EXPECT_NEAR(f.Cellule(3, 5).valeur, 1.0, 1e-12);
    // Headers frozen; landscape, one page wide.
    EXPECT_EQ(f.figees, "C3");
    EXPECT_TRUE(f.paysage);
    EXPECT_TRUE(f.ajustePage);
    EXPECT_EQ(f.ajusteLargeur, 1);
    EXPECT_EQ(f.ajusteHauteur, 0);
    EXPECT_FALSE(f.largeurs.empty());
}

TEST_F(Export, FeuilleSacemAussiPourLaPublicite) {
    const std::vector<std::pair<Rapport, std::string>> cas = {
        {Rapport::Quotas, "Quotas"},
        {Rapport::TopDiffusion, "Top Diffusion"},
        {Rapport::Sacem, "SACEM"},
        {Rapport::Publicite, "SACEM"},
    };
    for (const auto& [rapport, feuille] : cas) {
        Grid g(2, 1);
        g.SetText(0, 0, "Client");
        g.SetText(1, 1, "Garage du Centre");
        const std::string chemin = dossier / ("r" + std::to_string(static_cast<int>(rapport)));
        const ResultatExport r =
            ExporteRapport(g, rapport, "1", DateTime{2026, 3, 1}, DateTime{2026, 3, 31},
                           Reglages(1), Dialogue(chemin));
        ASSERT_TRUE(r.Ok()) << r.erreur;
        const auto lu = test::LitXls(r.chemin);
        ASSERT_EQ(lu.feuilles.size(), 1u);
        EXPECT_EQ(lu.feuilles[0].nom, feuille);
        EXPECT_EQ(lu.feuilles[0].Texte(1, 1), "Garage du Centre");
    }
}

TEST_F(Export, ExtensionAjouteeOuGardee) {
    Grid g = GrilleQuotas();
    EXPECT_EQ(ExporteQuotas(g, dossier / "rapport").chemin, dossier / "rapport.xls");
    EXPECT_EQ(ExporteQuotas(g, dossier / "X.XLS").chemin, dossier / "X.XLS");
    EXPECT_EQ(ExporteQuotas(g, dossier / "sortie", 2).chemin, dossier / "sortie.xml");
    EXPECT_EQ(ExporteQuotas(g, dossier / "Y.Xml", 2).chemin, dossier / "Y.Xml");
    for (const char* nom : {"rapport.xls", "X.XLS", "sortie.xml", "Y.Xml"})
        EXPECT_TRUE(fs::exists(dossier.Chemin() / nom)) << nom;
    EXPECT_FALSE(fs::exists(dossier.Chemin() / "X.XLS.xls"));
    EXPECT_EQ(appels[2].filtre, "Fichiers xml|*.xml");
    EXPECT_EQ(appels[2].nom, "ZL3_Stats_Quotas_Station_3_Date_20261102_20261108.xml");
}

TEST_F(Export, DialogueAnnuleNeFaitRien) {
    Grid g = GrilleQuotas();
    const Grid avant = g;
    for (const char* reponse : {"", "*"}) {
        const ResultatExport r = ExporteQuotas(g, reponse);
        EXPECT_EQ(r.issue, IssueExport::Annule);
    }
    EXPECT_TRUE(g == avant);
    EXPECT_TRUE(boite.shown.empty());
    EXPECT_TRUE(sablier.etats.empty());
    EXPECT_EQ(dossier.Contenu(), (std::vector<std::string>{"exports"}));
}

TEST_F(Export, EcrasementRefuseLaisseLePremierFichierIntact) {
    Grid g = GrilleQuotas();
    const std::string chemin = dossier / "quotas.xls";
    ASSERT_TRUE(ExporteQuotas(g, chemin).Ok());
    const std::string premier = test::LitFichier(chemin);

    g.SetText(1, 1, "999");
    boite.Script(kIdNo);
    const ResultatExport r = ExporteQuotas(g, chemin);
    EXPECT_EQ(r.issue, IssueExport::NonEcrase);
    EXPECT_EQ(test::LitFichier(chemin), premier);
    ASSERT_EQ(boite.shown.size(), 2u);
    EXPECT_EQ(boite.shown[1].request.text, "Le fichier '" + chemin + "' existe déjà. Ecraser ?");
    EXPECT_EQ(boite.shown[1].request.style, kMbYesNo);
    EXPECT_EQ(sablier.etats.size(), 2u) << "no busy cursor for the declined export";
}

TEST_F(Export, EcrasementAccepteRemplaceLeFichier) {
    Grid g = GrilleQuotas();
    const std::string chemin = dossier / "quotas.xls";
    ASSERT_TRUE(ExporteQuotas(g, chemin).Ok());
    g.SetText(1, 1, "999");
    boite.Script(kIdYes);
    ASSERT_TRUE(ExporteQuotas(g, chemin).Ok());
    EXPECT_TRUE(TraceContient("MnuExportExcel_Click: File_Delete: " + chemin));
    const auto lu = test::LitXls(chemin);
    ASSERT_EQ(lu.feuilles.size(), 1u);
    EXPECT_EQ(lu.feuilles[0].Texte(2, 2), "999");
    EXPECT_EQ(Messages().back(), "Fichier " + chemin + " créé");
}

TEST_F(Export, EchecDEcritureSignaleEtGrilleIntacte) {
    Grid g = GrilleQuotas();
    const Grid avant = g;
    const std::string fichier = dossier / "fichier";
    { std::ofstream(fichier) << "un fichier, pas un dossier"; }
    const std::string chemin = fichier + "/quotas.xls";
    const ResultatExport r = ExporteQuotas(g, chemin, 0, 1);
    EXPECT_EQ(r.issue, IssueExport::Echec);
    EXPECT_FALSE(r.erreur.empty());
    EXPECT_TRUE(g == avant);
    ASSERT_EQ(boite.shown.size(), 1u);
    EXPECT_EQ(boite.shown[0].request.text, "Erreur lors de l'export du fichier " + chemin);
    EXPECT_EQ(boite.shown[0].request.style, kMbExclamation);
    EXPECT_TRUE(shell.opened.empty());
    EXPECT_EQ(sablier.etats, (std::vector<bool>{true, false}));
    const std::string log = test::LitFichier(dossier.Chemin() / "logs" / "ExportExcel.Log");
    EXPECT_NE(log.find(" | " + chemin + " | 4 lignes x 5 colonnes | Erreur: "), std::string::npos)
        << log;
}

TEST_F(Export, ErreurInattendueTraceeEtGrilleRestauree) {
    Grid g = GrilleQuotas();
    const Grid avant = g;
    DemandeExport d;
    d.dossier = dossier / "exports";
    d.nomParDefaut = "quotas";
    d.module = "Frm_Main";
    d.procedure = "MnuExportExcel_Click";
    std::string vuParLEcrivain;
    d.ecrivain = [&](const std::string&, const Grid& donnees,
                     const std::vector<ZoneFusionnee>&) -> ResultatEcriture {
        vuParLEcrivain = donnees.Text(1, 1) + "/" + donnees.Text(3, 2) + "/" + donnees.Text(1, 3);
        throw std::runtime_error("disque plein");
    };
    const std::string chemin = dossier / "quotas.xls";
    const ResultatExport r = ExporteGrille(g, d, Dialogue(chemin));
    EXPECT_EQ(vuParLEcrivain, "Période/Fr./02-11-2026") << "headers were in the data when written";
    EXPECT_EQ(r.issue, IssueExport::Echec);
    EXPECT_TRUE(g == avant);
    EXPECT_TRUE(TraceContient("Err: 5 disque plein |Frm_Main:MnuExportExcel_Click"));
    EXPECT_EQ(sablier.etats, (std::vector<bool>{true, false}));
    EXPECT_EQ(Messages(), std::vector<std::string>{"Erreur lors de l'export du fichier " + chemin});
}

TEST_F(Export, TableauTropGrandRefuseAvantLeDialogue) {
    // 65,536 data rows + the header row, then 256 data columns + the row-header column.
    for (Grid g : {Grid(1, 65536), Grid(256, 1)}) {
        const Grid avant = g;
        const ResultatExport r = ExporteQuotas(g, dossier / "grand.xls");
        EXPECT_EQ(r.issue, IssueExport::Refuse);
        EXPECT_TRUE(g == avant);
    }
    EXPECT_TRUE(appels.empty());
    ASSERT_EQ(boite.shown.size(), 2u);
    EXPECT_EQ(boite.shown[0].request.text,
              "Le tableau dépasse la taille d'une feuille Excel (65536 lignes, 256 colonnes)");
    EXPECT_EQ(boite.shown[0].request.style, kMbExclamation);
    EXPECT_FALSE(fs::exists(dossier.Chemin() / "grand.xls"));

    // The XML format has no such limit.
    Grid large(256, 1);
    EXPECT_TRUE(ExporteQuotas(large, dossier / "large.xml", 2).Ok());
}

TEST_F(Export, TroisComportementsApresExport) {
    Grid g = GrilleQuotas();
    const std::string a = dossier / "a.xls";
    const std::string b = dossier / "b.xls";
    const std::string c = dossier / "c.xls";
    ASSERT_TRUE(ExporteQuotas(g, a, 0, 0).Ok());
    ASSERT_TRUE(ExporteQuotas(g, b, 0, 1).Ok());
    ASSERT_TRUE(ExporteQuotas(g, c, 0, 2).Ok());
    ASSERT_EQ(boite.shown.size(), 2u);
    EXPECT_EQ(boite.shown[0].request.text, "Fichier " + a + " créé");
    EXPECT_EQ(boite.shown[0].request.style, kMbInformation);
    EXPECT_EQ(boite.shown[1].request.text, "Fichier " + c + " créé");
    EXPECT_EQ(boite.shown[1].request.style, kMbOk);
    EXPECT_EQ(shell.opened, std::vector<std::string>{b});
}

TEST_F(Export, ExportXmlAvecEntetes) {
    Grid g = GrilleQuotas();
    const Grid avant = g;
    const std::string chemin = dossier / "quotas.xml";
    ASSERT_TRUE(ExporteQuotas(g, chemin, 2).Ok());
    EXPECT_TRUE(g == avant);
    const auto lu = test::LitXml(chemin);
    EXPECT_EQ(lu.racine, "Root");
    ASSERT_EQ(lu.lignes.size(), kQuotasExporte.size());
    for (size_t r = 0; r < lu.lignes.size(); ++r) {
        EXPECT_EQ(lu.lignes[r].balise, "Collection");
        ASSERT_EQ(lu.lignes[r].cellules.size(), 5u);
        for (size_t c = 0; c < 5; ++c)
            EXPECT_EQ(lu.lignes[r].cellules[c].texte, kQuotasExporte[r][c]) << r << "," << c;
    }
    EXPECT_TRUE(fs::exists(dossier.Chemin() / "logs" / "ExportXML.Log"));
    EXPECT_FALSE(fs::exists(dossier.Chemin() / "logs" / "ExportExcel.Log"));
}

TEST_F(Export, FenetreHistoriqueCopieLaGrilleSourceEntetesComprises) {
    EXPECT_EQ(CaptionExport("XLS"), "Export Excel");
    EXPECT_EQ(CaptionExport("XML"), "Export XML");
    EXPECT_EQ(CaptionExport("CSV"), std::nullopt);

    // The window's grid: the source block, headers as data; its own headers are not exported.
    Grid g = TransfertDataHistorique(GrilleQuotas());
    EXPECT_EQ(test::DonneesDe(g), kQuotasExporte);
    g.SetText(1, 0, "ignoré");
    const Grid avant = g;
    const std::string parDefaut = dossier / "hist/Historique";

    ASSERT_TRUE(ExporteHistorique(g, "XML", parDefaut, 0, Dialogue(dossier / "h")).Ok());
    ASSERT_EQ(appels.size(), 1u);
    EXPECT_EQ(appels[0].dossier, dossier / "hist/");
    EXPECT_EQ(appels[0].nom, "Historique.xml");
    EXPECT_EQ(appels[0].filtre, "Fichiers xml|*.xml");
    const auto xml = test::LitXml(dossier / "h.xml");
    EXPECT_EQ(xml.racine, "root_element");
    EXPECT_EQ(xml.lignes[0].balise, "collection_element");
    ASSERT_EQ(xml.lignes.size(), kQuotasExporte.size());
    EXPECT_EQ(xml.lignes[2].cellules[0].texte, "02-11-2026");

    ASSERT_TRUE(ExporteHistorique(g, "XLS", parDefaut, 0, Dialogue(dossier / "h")).Ok());
    const auto xls = test::LitXls(dossier / "h.xls");
    ASSERT_EQ(xls.feuilles.size(), 1u);
    EXPECT_TRUE(test::MemesCellules(xls.feuilles[0], test::DonneesDe(avant)));
    EXPECT_TRUE(g == avant);

    boite.Script(kIdYes);
    ASSERT_TRUE(ExporteHistorique(g, "XLS", parDefaut, 0, Dialogue(dossier / "h")).Ok());
    EXPECT_TRUE(TraceContient("Mnu01Export_Click: File_Delete: " + dossier / "h.xls"));

    const size_t appelsAvant = appels.size();
    EXPECT_EQ(ExporteHistorique(g, "CSV", parDefaut, 0, Dialogue(dossier / "h")).issue,
              IssueExport::Refuse);
    EXPECT_EQ(appels.size(), appelsAvant);
}

}  // namespace
}  // namespace zl3
