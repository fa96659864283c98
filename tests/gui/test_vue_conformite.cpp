// The "Conformité" sub-tab on a demo station: the month judged on one screen, its chart, the
// print with the chart, its overwrite question answered by the scripted message box.
#include <QApplication>
#include <QChartView>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>
#include <QTableWidget>

#include <cstdio>
#include <filesystem>

#include "BaseDemo.h"
#include "DemoSite.h"
#include "Etat.h"
#include "Frm_Main.h"
#include "Lib_Profile.h"
#include "Lib_Settings.h"
#include "Lib_Systeme.h"
#include "TestSite.h"
#include "VueConformite.h"

namespace zl3::gui {
namespace {

class VueConformiteTest : public test::SiteTest {
  protected:
    void TearDown() override {
        events.onEvents = nullptr;
        fenetre.reset();
        SiteTest::TearDown();
    }
    std::unique_ptr<Frm_Main> fenetre;
};

TEST_F(VueConformiteTest, TheMonthOnOneScreenAndPrintedWithItsChart) {
    std::string erreur;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 1}, erreur)) << erreur;
    WriteProfileString("UDP", "Port", "0", NomFichierSettings("", ".Ini"));
    demo::OptionsBaseDemo b;
    b.stations = 1;
    b.morceaux = 200;
    b.jours = 45;
    b.fin = DateTime{2026, 10, 31};
    demo::RemplirBaseDemo(b, sys::WithTrailingSep(sys::NativePath(DossierDataDemo(1))));
    fenetre = std::make_unique<Frm_Main>();
    events.onEvents = [] { QCoreApplication::processEvents(); };
    ASSERT_TRUE(fenetre->Form_Initialize());
    ASSERT_TRUE(fenetre->Form_Load());
    fenetre->show();
    fenetre->ChoisirStation(1, 1);
    fenetre->findChild<QTabBar*>("SftTabsMusique")->setCurrentIndex(3);
    VueConformite* v = fenetre->findChild<VueConformite*>("VueConformite");
    ASSERT_TRUE(v);
    EXPECT_TRUE(v->isVisible());
    EXPECT_EQ(fenetre->GrilleCourante(), nullptr);  // no grid to export or print here

    // Last month (October, the clock being in November) is offered first.
    auto* mois = v->findChild<QComboBox*>("ComboMoisConformite");
    EXPECT_EQ(mois->currentData().toString(), QStringLiteral("2026-10"));
    bool bloque = false;  // while it yields, no other search may start
    events.onEvents = [&] {
        bloque = bloque || Etat().rechercheEnCours;
        QCoreApplication::processEvents();
    };
    v->findChild<QPushButton*>("CommandJuger")->click();
    EXPECT_TRUE(bloque);
    EXPECT_FALSE(Etat().rechercheEnCours);
    ASSERT_TRUE(v->Verdict());
    const VerdictConformite& verdict = *v->Verdict();
    EXPECT_TRUE(v->findChild<QLabel*>("LabelVerdict")
                    ->text()
                    .endsWith(QString::fromUtf8(LibelleIssue(verdict.issue))));
    EXPECT_EQ(v->findChild<QTableWidget*>("TableCriteres")->rowCount(),
              static_cast<int>(verdict.criteres.size()));
    EXPECT_EQ(v->findChild<QTableWidget*>("TableDixTitres")->rowCount(), 10);
    EXPECT_EQ(v->Graphique()->chart()->series().size(), 3);

    // Printed: announced, then an existing file is kept unless the user agrees.
    const std::string pdf = Root() + "conformite.pdf";
    v->dialoguePdf = [&](const std::string&) { return pdf; };
    v->findChild<QPushButton*>("CommandPdfConformite")->click();
    ASSERT_TRUE(std::filesystem::exists(pdf));
    ASSERT_FALSE(box.shown.empty());
    EXPECT_EQ(box.shown.back().request.text, "Fichier " + pdf + " créé");
    std::filesystem::resize_file(pdf, 10);
    box.Script(kIdNo);
    v->findChild<QPushButton*>("CommandPdfConformite")->click();
    EXPECT_EQ(std::filesystem::file_size(pdf), 10u);

    // The regime the user picks becomes the station's, for the window and for zl3-stats.
    auto* regime = v->findChild<QComboBox*>("ComboRegime");
    const int i = regime->findData(QStringLiteral("60-10"));
    regime->setCurrentIndex(i);
    emit regime->activated(i);
    v->findChild<QPushButton*>("CommandJuger")->click();
    EXPECT_EQ(v->Verdict()->regime, Regime::Patrimoine);
    regime->setCurrentIndex(0);  // not the user's choice: the station's regime is taken again
    v->findChild<QPushButton*>("CommandJuger")->click();
    EXPECT_EQ(v->Verdict()->regime, Regime::Patrimoine);
    FILE* f = popen((std::string(ZL3_STATS_EXE) + " --root " + Root() +
                     " --station 1 --report conformite --month 2026-10 2>&1")
                        .c_str(),
                    "r");
    ASSERT_TRUE(f);
    std::string sortie;
    char buf[512];
    while (fgets(buf, sizeof buf, f))
        sortie += buf;
    pclose(f);
    EXPECT_NE(sortie.find("régime 60-10"), std::string::npos) << sortie;
}

}  // namespace
}  // namespace zl3::gui
