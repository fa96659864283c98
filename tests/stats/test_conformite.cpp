// The month judged as the regulator judges it, on small hand-built databases.
#include <map>

#include "BaseTest.h"
#include "Conformite.h"
#include "Lib_Stats.h"

namespace zl3 {
namespace {

using test::At;

class ConformiteTest : public test::BaseTest {
  public:
    using test::BaseTest::Morceau;
    void SetUp() override {
        BaseTest::SetUp();
        CreerFichiers({20, 21, 22, 28, 47});
    }

    // Broadcasts five minutes apart from Monday 2 March 2026 08:00 (inside the band every day)
    // to 22:00, then the next day from 08:00: every one lasts its track's 200 seconds.
    DateTime Creneau() {
        DateTime t = AddDays(At(2026, 3, 2, 8, 0), creneau_ / 169);
        const int minutes = 8 * 60 + (creneau_ % 169) * 5;
        t.hour = minutes / 60;
        t.minute = minutes % 60;
        ++creneau_;
        return t;
    }
    // `n` tracks "<prefixe>nnn" with flag `flag`, each broadcast `fois` times.
    void Titres(const std::string& prefixe, const std::string& flag, int n, int fois = 1) {
        for (int i = 0; i < n; ++i) {
            const std::string cle = prefixe + PadNumber(i, 8 - static_cast<int>(prefixe.size()));
            Morceau(cle, flag);
            for (int k = 0; k < fois; ++k)
                Passer(cle, Creneau());
        }
    }
    void Passer(const std::string& cle, const DateTime& t) { passages_[cle].push_back(t); }
    // Writes the history records (newest first, as the suite keeps them) and, when asked, the
    // music events of every broadcast.
    void Ecrire(bool evenements = true) {
        for (auto& [cle, liste] : passages_) {
            std::vector<DateTime> h(liste.rbegin(), liste.rend());
            const int nb = static_cast<int>(h.size());
            if (h.size() > 672) h.resize(672);
            Historique(cle, h, nb);
            if (evenements)
                for (const DateTime& t : liste)
                    Evenement(cle, t);
        }
        passages_.clear();
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
    VerdictConformite Juger(Regime regime, int annee = 2026, int mois = 3) {
        ParametresConformite p;
        p.annee = annee;
        p.mois = mois;
        p.regime = regime;
        p.regles = regles;
        return JugeConformite(p);
    }
    static const Critere& Crit(const VerdictConformite& v, const std::string& libelle) {
        for (const Critere& c : v.criteres)
            if (c.libelle == libelle) return c;
        static Critere aucun;
        ADD_FAILURE() << "no criterion " << libelle;
        return aucun;
    }

    ReglesConformite regles;
    int creneau_ = 0;
    std::map<std::string, std::vector<DateTime>> passages_;
};

TEST_F(ConformiteTest, TheGeneralRegimeTurnsOnOnePlay) {
    // 10 new talents and 10 French titles once each, 30 foreign plays: 20 of 50 (40 %) French,
    // 10 of 50 (20 %) new talents. Twenty titles: the ten-title rule leaves them all. The French
    // titles were aired in January 2025 too: they are no new productions.
    Titres("010", "1", 10);
    Titres("011", "O", 10);
    for (int i = 0; i < 10; ++i)
        Passer("011" + PadNumber(i, 5), At(2025, 1, 6, 10, i * 5));
    Titres("012", "N", 30);
    Ecrire();
    VerdictConformite v = Juger(Regime::General);
    ASSERT_TRUE(v.effectue);
    EXPECT_EQ(v.source, SourceComptage::Evenements);  // the events cover the month
    EXPECT_EQ(v.base, 50);
    EXPECT_EQ(v.retires, 0);
    EXPECT_EQ(Crit(v, "Chansons d'expression française").issue, Issue::Conforme);
    EXPECT_EQ(Crit(v, "Nouveaux talents ou nouvelles productions").issue, Issue::Conforme);
    EXPECT_EQ(v.issue, Issue::Conforme);
    EXPECT_EQ(v.jours[9].base, 0);  // 10 March: nothing aired
    EXPECT_EQ(v.jours[1].base, 50);
    EXPECT_EQ(v.jours[30].baseCumul, 50);

    // One foreign play more: 20 of 51 and 10 of 51, both short.
    Titres("013", "N", 1);
    Ecrire();
    v = Juger(Regime::General);
    EXPECT_EQ(Crit(v, "Chansons d'expression française").issue, Issue::NonConforme);
    EXPECT_EQ(Crit(v, "Nouveaux talents ou nouvelles productions").issue, Issue::NonConforme);
    EXPECT_EQ(v.issue, Issue::NonConforme);
}

TEST_F(ConformiteTest, NewTalentsRegimeTurnsOnOneNewTalent) {
    // 25 new talents, 10 French, 65 foreign: 35 % and 25 % exactly.
    Titres("010", "1", 24);
    Titres("011", "O", 10);
    Titres("012", "N", 65);
    Morceau("01300000", "1");
    Passer("01300000", Creneau());
    Ecrire();
    VerdictConformite v = Juger(Regime::NouveauxTalents);
    EXPECT_EQ(Crit(v, "Chansons d'expression française").issue, Issue::Conforme);
    EXPECT_EQ(Crit(v, "Nouveaux talents").issue, Issue::Conforme);
    EXPECT_EQ(v.issue, Issue::Conforme);
    // The same broadcasts with the 25th new talent flagged French: 24 %.
    namespace m = rec::Morceau;
    std::string cle = "01300000";
    ASSERT_EQ(BTRieve(test::kSlotEcriture, kBtrGetEqual, cle, 0, 22, 1, "test"), 0);
    rec::SetBytes(TamponEnreg(22), m::QuotaFlag, "O");
    ASSERT_EQ(BTRieve(test::kSlotEcriture, kBtrUpdate, cle, 0, 22, 1, "test"), 0);
    v = Juger(Regime::NouveauxTalents);
    EXPECT_EQ(Crit(v, "Chansons d'expression française").issue, Issue::Conforme);
    EXPECT_EQ(Crit(v, "Nouveaux talents").issue, Issue::NonConforme);
}

// 60 French titles and 40 foreign plays in March 2026; the last `anciens` French titles were
// aired in April 2025 too (more than nine months before), and `revenu` of the others at the end
// of May 2025.
void MoisPatrimoine(ConformiteTest& t, int anciens, int revenu) {
    for (int i = 0; i < 60; ++i) {
        const std::string cle = "010" + PadNumber(i, 5);
        t.Morceau(cle, "O");
        if (i >= 60 - anciens) t.Passer(cle, At(2025, 4, 1 + i % 28, 9, i % 60));
        if (i < revenu) t.Passer(cle, At(2025, 5, 30, 12, i));
        t.Passer(cle, t.Creneau());
    }
    t.Titres("011", "N", 40);
    t.Ecrire(false);
}

TEST_F(ConformiteTest, NewProductionsAreUnknownWithoutNineMonthsOfData) {
    MoisPatrimoine(*this, 0, 0);
    const VerdictConformite v = Juger(Regime::Patrimoine);
    EXPECT_EQ(v.nouvellesProductions, 0);
    EXPECT_EQ(v.nouvellesProductionsInconnues, 60);
    EXPECT_EQ(Crit(v, "Nouvelles productions").issue, Issue::Indetermine);
    EXPECT_EQ(v.issue, Issue::Indetermine);
    // The general regime has no new talent to pass on either.
    EXPECT_EQ(Juger(Regime::General).issue, Issue::Indetermine);
    // The new talents regime needs no such knowledge: it fails.
    EXPECT_EQ(Juger(Regime::NouveauxTalents).issue, Issue::NonConforme);
}

TEST_F(ConformiteTest, NewProductionsTurnOnOneTitleAiredBefore) {
    MoisPatrimoine(*this, 50, 0);  // 10 new productions of 100: 10 %
    VerdictConformite v = Juger(Regime::Patrimoine);
    EXPECT_EQ(v.nouvellesProductions, 10);
    EXPECT_EQ(v.nouvellesProductionsInconnues, 0);
    EXPECT_EQ(v.issue, Issue::Conforme);
}

TEST_F(ConformiteTest, ATitleAiredMoreThanNineMonthsBeforeIsNoLongerNew) {
    MoisPatrimoine(*this, 50, 1);  // one of the ten aired at the end of May 2025: 9 %
    const VerdictConformite v = Juger(Regime::Patrimoine);
    EXPECT_EQ(v.nouvellesProductions, 9);
    EXPECT_EQ(v.issue, Issue::NonConforme);
}

TEST_F(ConformiteTest, TenTitleRuleCutsThePlaysBeyondHalfTheFrenchPlays) {
    // Ten titles aired 5 times each and 36 titles once: 86 French plays, the line at 43. The
    // ninth title crosses it by 2, the tenth lies wholly beyond it.
    Titres("010", "O", 10, 5);
    Titres("011", "O", 36);
    Titres("012", "N", 120);
    Ecrire();
    const VerdictConformite v = Juger(Regime::General);
    EXPECT_EQ(v.francophones, 86);
    EXPECT_EQ(v.dixTitresPassages, 50);
    EXPECT_EQ(v.ligneDixTitres, 43);
    EXPECT_EQ(v.retires, 7);
    EXPECT_EQ(v.francophonesRetenus, 79);
    ASSERT_EQ(v.dixTitres.size(), 10u);
    std::vector<std::pair<std::string, long long>> coupes;
    for (const TitreDixTitres& t : v.dixTitres)
        if (t.retires > 0) coupes.emplace_back(t.cle, t.retires);
    const std::vector<std::pair<std::string, long long>> attendu = {{"01000008", 2},
                                                                    {"01000009", 5}};
    EXPECT_EQ(coupes, attendu);
    // The cut plays leave the French count, not the base: 79 of 206.
    EXPECT_EQ(v.base, 206);
    EXPECT_EQ(Crit(v, "Chansons d'expression française").nombre, 79);
    EXPECT_NE(TexteVerdict(v).find("01000009"), std::string::npos);
}

TEST_F(ConformiteTest, WeekendBandStartsAt0800AndShortPlaysAreLeftOut) {
    Morceau("01000001", "O");
    Morceau("01000002", "O", "", "", "", "0090");  // 1 min 30
    // Saturday 14 March 2026: 07:59 out; 08:00, 08:29 and 22:30 in; Sunday 22:31 out.
    // Tuesday 10 March: 06:29 out, 06:30 in.
    for (const DateTime& t : {At(2026, 3, 14, 7, 59), At(2026, 3, 14, 8, 0), At(2026, 3, 14, 8, 29),
                              At(2026, 3, 14, 22, 30), At(2026, 3, 15, 22, 31),
                              At(2026, 3, 10, 6, 29), At(2026, 3, 10, 6, 30)})
        Passer("01000001", t);
    // Wednesday 11 March: the 200-second song cut after 100 s (out), after 150 s (in, twice)
    // and played whole; the 90-second one played whole (in) and cut after 60 s (out).
    Passer("01000001", At(2026, 3, 11, 10, 0, 0));    // 100 s: out
    Passer("01000002", At(2026, 3, 11, 10, 1, 40));   // whole: in
    Passer("01000001", At(2026, 3, 11, 10, 10, 0));   // 150 s: in
    Passer("01000001", At(2026, 3, 11, 10, 12, 30));  // 150 s: in
    Passer("01000002", At(2026, 3, 11, 10, 15, 0));   // 60 s: out
    Passer("01000001", At(2026, 3, 11, 10, 16, 0));   // whole: in
    Ecrire();
    Evenement("01000001", At(2026, 2, 27, 10));  // the events cover March
    const VerdictConformite v = Juger(Regime::General);
    EXPECT_EQ(v.source, SourceComptage::Evenements);
    EXPECT_EQ(v.jours[13].fr, 3);
    EXPECT_EQ(v.jours[9].fr, 1);
    EXPECT_EQ(v.jours[10].fr, 4);
    EXPECT_EQ(v.tropCourts, 2);
    EXPECT_EQ(v.horsBande, 3);
}

TEST_F(ConformiteTest, CappedHistoryIsCountedExactlyFromTheEvents) {
    // 700 plays of one track in March: its history keeps the latest 672.
    Morceau("01000001", "O");
    for (int i = 0; i < 700; ++i)
        Passer("01000001", Creneau());
    Ecrire();
    VerdictConformite v = Juger(Regime::General);
    // The events begin on 2 March: the history is used, and the track named.
    EXPECT_EQ(v.source, SourceComptage::Historique);
    EXPECT_EQ(v.francophones, 672);
    ASSERT_EQ(v.morceauxTronques.size(), 1u);
    EXPECT_EQ(v.morceauxTronques[0].rfind("01000001", 0), 0u);
    EXPECT_NE(v.texteSource.find("02/03/2026"), std::string::npos);

    Evenement("01000001", At(2026, 2, 28, 23, 0));
    v = Juger(Regime::General);
    EXPECT_EQ(v.source, SourceComptage::Evenements);
    EXPECT_EQ(v.francophones, 700);
    EXPECT_EQ(v.morceauxTronques.size(), 1u);
}

TEST_F(ConformiteTest, DiscoveryCountsTitlesAndTheMostPlayedOne) {
    // Its numbers are settings: here at least 30 titles, none aired more than 3 times.
    regles.regimes[3].titresMin = 30;
    regles.regimes[3].passagesMax = 3;
    Titres("010", "O", 21);
    Titres("011", "N", 8);
    Titres("012", "N", 1, 3);
    Ecrire();
    VerdictConformite v = Juger(Regime::Decouverte);
    EXPECT_EQ(v.titresDistincts, 30);
    EXPECT_EQ(v.passagesTitreMax, 3);
    EXPECT_EQ(v.issue, Issue::Conforme);
    regles.regimes[3].titresMin = 31;
    EXPECT_EQ(Crit(Juger(Regime::Decouverte), "Titres différents").issue, Issue::NonConforme);
    regles.regimes[3].titresMin = 30;
    regles.regimes[3].passagesMax = 2;
    v = Juger(Regime::Decouverte);
    EXPECT_EQ(Crit(v, "Passages du titre le plus diffusé").note, "01200000 Titre 01200000");
    EXPECT_EQ(v.issue, Issue::NonConforme);
}

TEST_F(ConformiteTest, CurrentMonthSaysHowManyFrenchPlaysAreStillNeeded) {
    // November 2026 judged on the 30th after the band: the present rate is the month's.
    for (int i = 0; i < 22; ++i) {
        Morceau("010" + PadNumber(i, 5), "O");
        Passer("010" + PadNumber(i, 5), At(2026, 11, 2, 9 + i / 12, (i % 12) * 5));
    }
    for (int i = 0; i < 78; ++i) {
        Morceau("011" + PadNumber(i, 5), "N");
        Passer("011" + PadNumber(i, 5), At(2026, 11, 3, 7 + i / 12, (i % 12) * 5));
    }
    Ecrire();
    clock.SetNow(At(2026, 11, 30, 22, 45));
    VerdictConformite v = Juger(Regime::General, 2026, 11);
    EXPECT_TRUE(v.moisEnCours);
    EXPECT_EQ(v.baseProjetee, 100);
    EXPECT_EQ(v.francophonesNecessaires, 40);
    EXPECT_EQ(v.francophonesRestants, 18);
    // Earlier in the month the same plays project a larger base.
    clock.SetNow(At(2026, 11, 15, 23, 0));
    v = Juger(Regime::General, 2026, 11);
    EXPECT_GT(v.baseProjetee, 190);
    EXPECT_LT(v.baseProjetee, 210);
    EXPECT_EQ(v.francophonesRestants, v.francophonesNecessaires - 22);
    // A month to come cannot be judged.
    EXPECT_FALSE(Juger(Regime::General, 2026, 12).effectue);
}

}  // namespace
}  // namespace zl3
