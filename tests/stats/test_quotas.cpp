// The music quotas report on small hand-built databases.
#include "BaseTest.h"
#include "Btrieve.h"
#include "Lib_Stats.h"
#include "Lib_Tableur.h"
#include "Recherche.h"

namespace zl3 {
namespace {

using test::At;

class QuotasTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({1, 3, 5, 18, 20, 21, 22, 26, 32, 47});
        InitGeneralTableurMusique(musique);
        InitGeneralTableurPublicite(pub);
        Versions() = VersionsSons{};
    }
    // Runs the Quotas report of station 1 from `debut` to `fin`.
    Grid& Lancer(DateTime debut, DateTime fin) {
        OuvrirFichiersRecherche(0, 1, 1);
        ParametresRecherche p;
        p.debut = debut;
        p.fin = fin;
        recherche.CommandLancer_Click(p);
        return musique.quotas;
    }
    int Row(const Grid& g, const std::string& date) {
        for (int r = 1; r <= g.MaxRows(); ++r)
            if (g.RowHeader(0, r) == date) return r;
        return 0;
    }
    TableursMusique musique;
    Grid pub;
    RechercheStats recherche{musique, pub};
};

TEST_F(QuotasTest, OneDayGivesOneRowAndAnEqualTotal) {
    Morceau("01000001", "O");
    Morceau("01000002", "N");
    Historique("01000001", {At(2026, 3, 10, 9, 0), At(2026, 3, 10, 23, 0), At(2026, 3, 11, 9)});
    Historique("01000002", {At(2026, 3, 10, 5, 59, 59)});
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    ASSERT_EQ(g.MaxRows(), 2);
    EXPECT_EQ(g.RowHeader(0, 1), "10-03-2026");
    EXPECT_EQ(g.RowHeader(1, 1), "mar.");
    EXPECT_EQ(g.RowHeader(0, 2), "Total");
    for (int c = 1; c <= 18; ++c) {
        if ((c >= kColPctFr && c <= kColPctEtr) || c >= kColPctFr + kDecalageBande)
            EXPECT_EQ(g.Text(c, 1), g.Text(c, 2)) << "column " << c;
        else
            EXPECT_EQ(g.Number(c, 1), g.Number(c, 2)) << "column " << c;
    }
    EXPECT_EQ(g.Text(kColNT, 2), "0");  // the Total row writes every sum, zeros included
    EXPECT_EQ(g.Text(kColFr, 1), "2");
    EXPECT_EQ(g.Text(kColEtr, 1), "1");
    EXPECT_EQ(g.Text(kColFr + kDecalageBande, 1), "1");  // 09:00 only; 23:00 and 05:59 are out
    EXPECT_EQ(g.Text(kColEtr + kDecalageBande, 1), "");
    EXPECT_EQ(recherche.Caption(), "Lancer");
}

TEST_F(QuotasTest, BandStartsLaterAtWeekendsAndEndsAt2230) {
    Morceau("01000001", "O");
    // Tuesday 2026-03-10 and Saturday 2026-03-14.
    Historique("01000001",
               {At(2026, 3, 10, 6, 30, 0), At(2026, 3, 10, 6, 29, 59), At(2026, 3, 14, 6, 30),
                At(2026, 3, 14, 8, 30, 59), At(2026, 3, 14, 22, 30, 59), At(2026, 3, 10, 22, 31, 0),
                At(2026, 3, 15, 8, 29), At(2026, 3, 15, 22, 30)});
    Grid& g = Lancer(At(2026, 3, 9), At(2026, 3, 15));
    const int mardi = Row(g, "10-03-2026");
    const int samedi = Row(g, "14-03-2026");
    const int dimanche = Row(g, "15-03-2026");
    EXPECT_EQ(g.RowHeader(1, samedi), "sam.");
    EXPECT_EQ(g.Text(kColFr, mardi), "3");
    EXPECT_EQ(g.Text(kColFr + kDecalageBande, mardi), "1");  // 06:30 in; 06:29:59 and 22:31 out
    EXPECT_EQ(g.Text(kColFr, samedi), "3");
    EXPECT_EQ(g.Text(kColFr + kDecalageBande, samedi), "2");    // 08:30 and 22:30 in; 06:30 out
    EXPECT_EQ(g.Text(kColFr + kDecalageBande, dimanche), "1");  // 22:30 in, 08:29 out
    EXPECT_EQ(g.Text(kColFr, g.MaxRows()), "8");
    EXPECT_EQ(g.Text(kColFr + kDecalageBande, g.MaxRows()), "4");
    EXPECT_EQ(g.ColHeader(0, 10), "06H30 - 22H30");
}

TEST_F(QuotasTest, ClassesAndTheDerivedFrPlusNT) {
    Morceau("01000001", "1");
    Morceau("01000002", "O");
    Morceau("01000003", "-");
    Morceau("01000004", "X");  // not a quota class: not counted
    Morceau("01000005", " ");
    for (const char* cle : {"01000001", "01000002", "01000003", "01000004", "01000005"})
        Historique(cle, {At(2026, 3, 10, 10)});
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    EXPECT_EQ(g.Text(kColFr, 1), "1");
    EXPECT_EQ(g.Text(kColNT, 1), "1");
    EXPECT_EQ(g.Text(kColFrNT, 1), "2");
    EXPECT_EQ(g.Text(kColEtr, 1), "");
    EXPECT_EQ(g.Text(kColInstru, 1), "1");
    EXPECT_EQ(g.Text(kColPctFr, 1), "50.0 %");
    EXPECT_EQ(g.Text(kColPctNT, 1), "50.0 %");
    EXPECT_EQ(g.Text(kColPctFrNT, 1), "100.0 %");
    EXPECT_EQ(g.Text(kColPctEtr, 1), "0.0 %");
}

TEST_F(QuotasTest, InstrumentalsOnlyLeaveThePercentagesEmpty) {
    Morceau("01000001", "-");
    Morceau("01000002", "N");
    Historique("01000001", {At(2026, 3, 10, 10), At(2026, 3, 11, 10)});
    Historique("01000002", {At(2026, 3, 11, 11)});
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 11));
    EXPECT_EQ(g.Text(kColInstru, 1), "1");
    for (int c : {kColPctFr, kColPctNT, kColPctFrNT, kColPctEtr})
        EXPECT_EQ(g.Text(c, 1), "") << c;
    EXPECT_EQ(g.Text(kColPctEtr, 2), "100.0 %");
    EXPECT_EQ(g.Text(kColPctEtr, 3), "100.0 %");  // Total row
}

TEST_F(QuotasTest, EntryCountsAreCappedByCategory) {
    // 700 entries stored in the area's 672 places plus a count of 900: only 672 are read.
    std::vector<DateTime> musique(672, At(2026, 3, 10, 10));
    Morceau("01000001", "O");
    Historique("01000001", musique, 900);
    // A jingle claiming 300 entries, all valid: 200 are read.
    std::vector<DateTime> jingle(300, At(2026, 3, 10, 11));
    Morceau("JIN00001", "-");
    Historique("JIN00001", jingle, 300);
    // Another code outside 000-999: capped at 672 like music.
    Morceau("ZZZ00001", "N");
    Historique("ZZZ00001", std::vector<DateTime>(5, At(2026, 3, 10, 12)));
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    EXPECT_EQ(g.Text(kColFr, 1), "672");
    // Tracks above "999" are outside the walk: "JIN" and "ZZZ" keys are not read.
    EXPECT_EQ(g.Text(kColInstru, 1), "");
    EXPECT_EQ(g.Text(kColEtr, 1), "");
}

TEST_F(QuotasTest, PeriodEndsAreInclusiveAndInvalidEntriesAreSkipped) {
    Morceau("01000001", "N");
    Historique("01000001", {At(2026, 3, 9, 23, 59, 59), At(2026, 3, 10, 0, 0, 0),
                            At(2026, 3, 12, 23, 59, 59), At(2026, 3, 13, 0, 0, 0)});
    // A record whose area holds blanks and an impossible date between valid entries.
    Morceau("01000002", "N");
    {
        namespace h = rec::HistoriqueDiffusion;
        auto r = Nouveau(47);
        rec::SetBytes(r, h::Cle, rec::HistoryKey("01000002"));
        ASSERT_TRUE(rec::SetPassageAt(r, 0, At(2026, 3, 11, 10)));
        rec::SetBytes(r, h::Passage(2), std::string("\x3A\x2D\x2B\x2A\x20\x20", 6));  // month 13
        ASSERT_TRUE(rec::SetPassageAt(r, 3, At(2026, 3, 11, 12)));
        rec::SetInt16(r, h::NbPassages, 4);
        Inserer(47);
    }
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 12));
    EXPECT_EQ(g.Text(kColEtr, Row(g, "10-03-2026")), "1");
    EXPECT_EQ(g.Text(kColEtr, Row(g, "11-03-2026")), "2");
    EXPECT_EQ(g.Text(kColEtr, Row(g, "12-03-2026")), "1");
    EXPECT_EQ(g.Text(kColEtr, g.MaxRows()), "4");
}

TEST_F(QuotasTest, TotalRowSumsCountsAndHasItsOwnPercentages) {
    Morceau("01000001", "O");
    Morceau("01000002", "1");
    Morceau("01000003", "N");
    Historique("01000001", {At(2026, 3, 10, 9), At(2026, 3, 11, 9), At(2026, 3, 11, 23)});
    Historique("01000002", {At(2026, 3, 11, 9)});
    Historique("01000003",
               {At(2026, 3, 10, 9), At(2026, 3, 10, 10), At(2026, 3, 11, 9), At(2026, 3, 11, 1)});
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 11));
    const int t = g.MaxRows();
    EXPECT_EQ(g.Text(kColFr, t), "3");
    EXPECT_EQ(g.Text(kColNT, t), "1");
    EXPECT_EQ(g.Text(kColFrNT, t), "4");
    EXPECT_EQ(g.Text(kColEtr, t), "4");
    EXPECT_EQ(g.Text(kColPctFr, t), "37.5 %");
    EXPECT_EQ(g.Text(kColPctNT, t), "12.5 %");
    EXPECT_EQ(g.Text(kColPctFrNT, t), "50.0 %");
    EXPECT_EQ(g.Text(kColPctEtr, t), "50.0 %");
    // Band: Fr 2, NT 1, Etr 3 (01:00 is outside).
    EXPECT_EQ(g.Text(kColFr + 9, t), "2");
    EXPECT_EQ(g.Text(kColEtr + 9, t), "3");
    EXPECT_EQ(g.Text(kColPctFr + 9, t), "33.3 %");
    EXPECT_EQ(g.Text(kColPctEtr + 9, t), "50.0 %");
}

TEST_F(QuotasTest, StopMidRunStillWritesTotals) {
    for (int i = 1; i <= 60; ++i) {
        const std::string cle = "010" + PadNumber(i, 5);
        Morceau(cle, "O");
        Historique(cle, {At(2026, 3, 10, 10)});
    }
    // The user clicks "Stopper" at the first yield and answers Yes.
    bool clicked = false;
    events.onEvents = [&] {
        if (clicked) return;
        clicked = true;
        EXPECT_EQ(recherche.Caption(), "Stopper");
        box.Script(kIdYes);
        recherche.CommandLancer_Click(ParametresRecherche{});
    };
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    ASSERT_TRUE(clicked);
    ASSERT_EQ(box.shown.size(), 1u) << box.shown[1].request.text;
    EXPECT_EQ(box.shown[0].request.text, "Voulez-vous stopper la recherche ?");
    EXPECT_EQ(box.shown[0].request.style, kMbYesNo | kMbQuestion);
    EXPECT_TRUE(recherche.Bilan().arretee);
    EXPECT_EQ(recherche.Bilan().morceauxLus, 20);
    EXPECT_EQ(g.Text(kColFr, 1), "19");  // the 20th track is read, then the stop is seen
    EXPECT_EQ(g.Text(kColFr, 2), "19");
    EXPECT_EQ(g.Text(kColPctFr, 2), "100.0 %");
    EXPECT_EQ(recherche.Caption(), "Lancer");

    // Answering No goes on to the end.
    clicked = false;
    events.onEvents = [&] {
        if (clicked) return;
        clicked = true;
        box.Script(kIdNo);
        recherche.CommandLancer_Click(ParametresRecherche{});
    };
    Lancer(At(2026, 3, 10), At(2026, 3, 10));
    EXPECT_FALSE(recherche.Bilan().arretee);
    EXPECT_EQ(g.Text(kColFr, 2), "60");
    EXPECT_EQ(events.calls, 4);  // every 20 tracks: once before the stop, three times after
}

TEST_F(QuotasTest, ReadErrorMidRunMarksTheReportIncomplete) {
    for (int i = 1; i <= 5; ++i) {
        const std::string cle = "010" + PadNumber(i, 5);
        Morceau(cle, "O");
        Historique(cle, {At(2026, 3, 10, 10)});
    }
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    EXPECT_FALSE(recherche.Bilan().incomplete);
    EXPECT_EQ(g.Warning(), "");
    EXPECT_EQ(g.Text(kColFr, 2), "5");
    // The walk of the tracks meets a damaged page after the second track.
    int suivants = 0;
    DefinirBtrcall([&](uint16_t op, void* pos, void* data, uint32_t* len, void* key, uint8_t kl,
                       int8_t kn) -> int16_t {
        if (data == TamponEnreg(kFichierMorceaux).data() && op == kBtrGetNext && ++suivants == 2)
            return 2;
        return btr::BtrCall(op, pos, data, len, key, kl, kn);
    });
    Lancer(At(2026, 3, 10), At(2026, 3, 10));
    const BilanRecherche& bilan = recherche.Bilan();
    EXPECT_TRUE(bilan.incomplete);
    ASSERT_EQ(bilan.erreurs.size(), 1u);
    EXPECT_EQ(bilan.erreurs[0], "FRADA22.bt6: Err: 2: The application encountered an I/O error");
    EXPECT_EQ(g.Warning(), TexteRapportIncomplet(bilan.erreurs));
    EXPECT_EQ(g.Warning().rfind("Rapport incomplet", 0), 0u);
    EXPECT_EQ(g.Text(kColFr, 2), "2");
    // A new complete run clears the warning.
    DefinirBtrcall(nullptr);
    Lancer(At(2026, 3, 10), At(2026, 3, 10));
    EXPECT_FALSE(recherche.Bilan().incomplete);
    EXPECT_EQ(g.Warning(), "");
}

TEST_F(QuotasTest, NewRunClearsTheGridAndYieldsEveryTwentyTracks) {
    for (int i = 1; i <= 45; ++i)
        Morceau("010" + PadNumber(i, 5), "N");
    Historique("01000007", {At(2026, 3, 10, 10)});
    Lancer(At(2026, 3, 1), At(2026, 3, 31));
    EXPECT_EQ(events.calls, 2) << recherche.Bilan().morceauxLus << " " << box.shown.size()
                               << (box.shown.empty() ? "" : box.shown[0].request.text);
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 11));
    EXPECT_EQ(g.MaxRows(), 3);
    EXPECT_EQ(g.Text(kColEtr, 1), "1");
    EXPECT_EQ(g.Text(kColEtr, 2), "");
    EXPECT_EQ(g.Text(kColEtr, 3), "1");
}

// While the search yields, another window reads a track of the same file under its own slot: the
// record buffer it overwrites is put back, so the track being walked is counted as itself.
TEST_F(QuotasTest, AReadDuringTheYieldDoesNotChangeWhatIsCounted) {
    for (int i = 1; i <= 20; ++i)
        Morceau("010" + PadNumber(i, 5), "O");
    Morceau("02000001", "N");
    Historique("01000020", {At(2026, 3, 10, 10)});
    Historique("02000001", {At(2026, 3, 10, 11)});
    FichierPervasiveOuvrir(5, 1, 1, kFichierMorceaux, -2);
    int lectures = 0;
    events.onEvents = [&] {
        std::string autre = "02000001";
        ASSERT_EQ(BTRieve(5, kBtrGetEqual, autre, 0, kFichierMorceaux, 1, "autre fenêtre"), 0);
        ++lectures;
    };
    Grid& g = Lancer(At(2026, 3, 10), At(2026, 3, 10));
    ASSERT_EQ(lectures, 1);  // the yield after the 20th track
    EXPECT_EQ(g.Text(kColFr, 2), "1");
    EXPECT_EQ(g.Text(kColEtr, 2), "1");
}

TEST_F(QuotasTest, PlayCountsAreTheQuotasCountsPerTrack) {
    Artiste("A001", "Zaz");
    Attribut("CATEG", "010", "Chanson française");
    Morceau("01000001", "O", "Je veux", "A001");
    Morceau("01000002", "N", "Happy");
    Morceau("01000003", "-", "Interlude");
    Morceau("01000004", "X", "Sans quota");  // not counted by the Quotas report
    Morceau("01000005", "1", "Jamais dans la période");
    Historique("01000001", {At(2026, 3, 10, 9), At(2026, 3, 11, 23), At(2026, 3, 12, 5),
                            At(2026, 3, 13, 9)});  // the last one after the period
    Historique("01000002", {At(2026, 3, 10, 0, 0, 0), At(2026, 3, 12, 23, 59, 59)});
    Historique("01000003", {At(2026, 3, 11, 12)});
    Historique("01000004", {At(2026, 3, 11, 12)});
    Historique("01000005", {At(2026, 3, 1, 12)});
    OuvrirFichiersRecherche(0, 1, 1);
    ParametresRecherche p;
    p.rapport = Rapport::Publicite;  // the play counts run their own Quotas search
    p.debut = At(2026, 3, 10);
    p.fin = At(2026, 3, 12);
    Grid passages;
    InitGeneralStatsPassages(passages);
    const BilanRecherche bilan = CalculeStatsPassages(p, passages);
    EXPECT_TRUE(bilan.effectuee);
    ASSERT_EQ(passages.MaxRows(), 3);
    EXPECT_EQ(passages.Text(kPassMorceau, 1), "01000001");
    EXPECT_EQ(passages.Text(kPassTitre, 1), "Je veux");
    EXPECT_EQ(passages.Text(kPassArtiste, 1), "Zaz");
    EXPECT_EQ(passages.Text(kPassCategorie, 1), "Chanson française");
    EXPECT_EQ(passages.Text(kPassNb, 1), "3");
    EXPECT_EQ(passages.Text(kPassMorceau, 2), "01000002");
    EXPECT_EQ(passages.Text(kPassMorceau, 3), "01000003");

    // The same period in the Quotas report: the counts add up to its whole-day total.
    const Grid& q = Lancer(p.debut, p.fin);
    long long quotas = 0;
    for (int c : {kColFr, kColNT, kColEtr, kColInstru})
        quotas += q.Number(c, q.MaxRows());
    long long nb = 0;
    for (int r = 1; r <= passages.MaxRows(); ++r)
        nb += passages.Number(kPassNb, r);
    EXPECT_EQ(nb, quotas);
    EXPECT_EQ(passages.Number(kPassNb, 1), q.Number(kColFr, q.MaxRows()));
}

}  // namespace
}  // namespace zl3
