// The report session: the base's data folder, the files opened and closed under the session's
// slot, the indispensable files of each report, and the tabs of each report.
#include "BaseTest.h"
#include "Lib_Config.h"
#include "SessionRapport.h"

namespace zl3 {
namespace {

TEST(OngletsRapport, EachReportHasItsTabsAndBack) {
    for (Rapport r : {Rapport::Quotas, Rapport::TopDiffusion, Rapport::Sacem, Rapport::Publicite}) {
        const OngletsRapport o = OngletsDuRapport(r);
        EXPECT_EQ(RapportDeOnglet(o.ongletMain, o.sousOngletMusique), r);
    }
    EXPECT_EQ(OngletsDuRapport(Rapport::Sacem).sousOngletMusique, 2);
    EXPECT_FALSE(RapportDeOnglet("Musique", 3));
    EXPECT_FALSE(RapportDeOnglet("Incidents", 0));
}

class SessionTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        ConfigBase b;
        b.nbStation = 2;
        b.dossiers[kRepBtr] = data_;
        Config().bases = {b};
    }
};

TEST_F(SessionTest, OpensTheBaseFilesAndClosesThemWhenItGoes) {
    CreerFichiers({18, 20, 21, 22, 47}, 2);
    {
        SessionRapport session(3);
        EXPECT_FALSE(session.Ouvrir(1, 1, 3));  // the base has two stations
        EXPECT_FALSE(session.Ouvrir(2, 1, 1));  // and there is one base
        ASSERT_TRUE(session.Ouvrir(1, 1, 2));
        EXPECT_EQ(DossierData(), data_);
        EXPECT_TRUE(session.Pret(Rapport::Quotas, 2));
        EXPECT_TRUE(session.Pret(Rapport::Sacem, 1));
        // The advertising report needs its client, contract, salespeople and message files too.
        EXPECT_EQ(
            session.FichiersManquants(Rapport::Publicite, 2),
            (std::vector<std::string>{"FRAD001.bt6", "FRAD003.bt6", "FRADB05.bt6", "FRADB26.bt6"}));
        EXPECT_EQ(session.FichiersManquants(Rapport::Quotas, 3).size(), 4u);  // not opened
        EXPECT_TRUE(FichierOuvert(3, 2, kFichierHistorique));
    }
    for (int f : {18, 20, 21, 22, 47})
        EXPECT_FALSE(FichierOuvert(3, 1, f)) << f;
    EXPECT_TRUE(FichierOuvert(test::kSlotEcriture, 1, kFichierMorceaux));  // others keep theirs
}

}  // namespace
}  // namespace zl3
