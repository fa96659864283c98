// The main window's output commands on a generated site, headless: the export through a scripted
// save dialog, the print painted into a PDF read back with pdftotext, the history export and the
// play counts of the period.
#include <QAction>
#include <QApplication>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QProcess>
#include <QTableView>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "BaseDemo.h"
#include "CommandesSortie.h"
#include "DemoSite.h"
#include "FrmExport.h"
#include "FrmStatsPassages.h"
#include "Frm_Main.h"
#include "Lib_Positions.h"
#include "Lib_Profile.h"
#include "Lib_Tableur.h"
#include "TestSite.h"

namespace zl3::gui {
namespace {

std::string Lire(const std::string& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

class SortieTest : public test::SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        std::string erreur;
        ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 1}, erreur)) << erreur;
        WriteProfileString("UDP", "Port", "0", NomFichierSettings("", ".Ini"));
        demo::OptionsBaseDemo o;
        o.stations = 1;
        o.morceaux = 80;
        o.jours = 40;
        o.fin = DateTime{2026, 10, 31};
        demo::RemplirBaseDemo(o, sys::WithTrailingSep(sys::NativePath(DossierDataDemo(1))));
        fenetre = std::make_unique<Frm_Main>();
        events.onEvents = [this] { QCoreApplication::processEvents(); };
        ASSERT_TRUE(fenetre->Form_Initialize());
        ASSERT_TRUE(fenetre->Form_Load());
        fenetre->ChoisirRapport(Rapport::Quotas);
        fenetre->DefinirPeriode(DateTime{2026, 10, 1}, DateTime{2026, 10, 31});
        fenetre->ChoisirStation(1, 1);
        fenetre->CommandLancer_Click();
        sortie = fenetre->Sortie();
        ASSERT_NE(sortie, nullptr);
    }
    void TearDown() override {
        events.onEvents = nullptr;
        fenetre.reset();
        SiteTest::TearDown();
    }
    bool Montre(const std::string& debut) const {
        for (const auto& s : box.shown)
            if (s.request.text.rfind(debut, 0) == 0) return true;
        return false;
    }
    std::unique_ptr<Frm_Main> fenetre;
    CommandesSortie* sortie = nullptr;
};

TEST_F(SortieTest, ExportAppendsTheExtensionAsksBeforeOverwritingAndLeavesTheGridAlone) {
    ASSERT_TRUE(fenetre->Action("MnuExportExcel")->isEnabled());
    const std::string cible = Root() + "/choisi/rapport";
    std::filesystem::create_directories(Root() + "/choisi");
    std::string dossierVu, nomVu, filtreVu;
    sortie->dialogue = [&](const std::string& d, const std::string& n, const std::string& f) {
        dossierVu = d;
        nomVu = n;
        filtreVu = f;
        return cible;
    };
    const Grid* grille = fenetre->GrilleCourante();
    const uint64_t revision = grille->Revision();
    fenetre->Action("MnuExportExcel")->trigger();
    EXPECT_EQ(nomVu, "ZL3_Stats_Quotas_Station_1_Date_20261001_20261031.xls");
    EXPECT_EQ(filtreVu, "Fichiers xls|*.xls");
    EXPECT_TRUE(std::filesystem::is_directory(dossierVu)) << dossierVu;
    ASSERT_TRUE(std::filesystem::exists(cible + ".xls"));
    EXPECT_TRUE(Montre("Fichier " + cible + ".xls créé"));
    const std::string premier = Lire(cible + ".xls");

    // The same name again, the overwrite declined: the first file stays as it was.
    box.shown.clear();
    box.Script(kIdNo);
    EXPECT_EQ(sortie->MnuExportExcel_Click().issue, IssueExport::NonEcrase);
    EXPECT_TRUE(Montre("Le fichier '" + cible + ".xls' existe déjà. Ecraser ?"));
    EXPECT_EQ(Lire(cible + ".xls"), premier);
    EXPECT_EQ(grille->Revision(), revision);
    EXPECT_EQ(fenetre->GrilleCourante(), grille);

    // The history export of the same grid: the headers come as data, the nature from the format.
    FrmExport* historique = sortie->MnuExportHistorique_Click();
    ASSERT_NE(historique, nullptr);
    EXPECT_EQ(historique->windowTitle(), "Export Excel");
    EXPECT_EQ(historique->Grille().MaxRows(), grille->MaxRows() + grille->HeaderRows());
    historique->dialogue = [&](const std::string&, const std::string&, const std::string&) {
        return Root() + "/choisi/historique.XLS";
    };
    EXPECT_TRUE(historique->Mnu01Export_Click().Ok());
    EXPECT_TRUE(std::filesystem::exists(Root() + "/choisi/historique.XLS"));
    historique->close();
    EXPECT_GT(LitGeometrieFenetre("FrmExport").width, 0);
    EXPECT_EQ(grille->Revision(), revision);
}

TEST_F(SortieTest, PrintPaintsTheLayoutIntoAPdfWithThePeriodAndPageNumbers) {
    const std::string pdf = Root() + "/quotas.pdf";
    bool paysage = false;
    sortie->apercu = [&](QPrintPreviewDialog& d) {
        QPrinter* p = d.printer();
        paysage = p->pageLayout().orientation() == QPageLayout::Landscape;
        p->setOutputFormat(QPrinter::PdfFormat);
        p->setOutputFileName(QString::fromStdString(pdf));
        emit d.paintRequested(p);
    };
    fenetre->Action("MnuPrint")->trigger();
    EXPECT_TRUE(paysage);
    QProcess texte;
    texte.start("pdftotext", {"-layout", QString::fromStdString(pdf), "-"});
    ASSERT_TRUE(texte.waitForFinished(60000));
    const std::string lu = texte.readAllStandardOutput().toStdString();
    EXPECT_NE(lu.find("Quotas: " + TextePeriode(fenetre->DebutPeriode(), fenetre->FinPeriode())),
              std::string::npos)
        << lu;
    EXPECT_NE(lu.find("Page 1"), std::string::npos);
    EXPECT_NE(lu.find("Total"), std::string::npos);
}

TEST_F(SortieTest, PlayCountsAddUpToTheQuotasWholeDayTotal) {
    const Grid& q = *fenetre->GrilleCourante();
    long long quotas = 0;
    for (int c : {kColFr, kColNT, kColEtr, kColInstru})
        quotas += q.Number(c, q.MaxRows());
    ASSERT_GT(quotas, 0);
    FrmStatsPassages* passages = sortie->MnuStatsPassages_Click();
    ASSERT_NE(passages, nullptr);
    const Grid& g = passages->Grille();
    long long nb = 0;
    for (int r = 1; r <= g.MaxRows(); ++r)
        nb += g.Number(kPassNb, r);
    EXPECT_EQ(nb, quotas);
    auto* vue = passages->findChild<QTableView*>("GrillePassages");
    ASSERT_NE(vue, nullptr);
    EXPECT_EQ(vue->model()->rowCount(), g.MaxRows());
    EXPECT_EQ(vue->model()->headerData(4, Qt::Horizontal).toString(), "Nb");
    EXPECT_EQ(vue->font().family(), "Arial");
    // The main window's files stay open: its next search gives the same total.
    fenetre->CommandLancer_Click();
    EXPECT_EQ(fenetre->GrilleCourante()->Number(kColFr, fenetre->GrilleCourante()->MaxRows()),
              q.Number(kColFr, q.MaxRows()));
}

}  // namespace
}  // namespace zl3::gui
