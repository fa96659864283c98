// The demo station's library, airplay and advertising as generated, before anything is written:
// the shares and rhythms that make the demo look like a French music station.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "Bibliotheque.h"
#include "Diffusion.h"
#include "Hasard.h"
#include "Publicite.h"

namespace zl3::demo {
namespace {

bool Habillage(const std::string& cle) {
    return cle.rfind("JIN", 0) == 0 || cle.rfind("LIN", 0) == 0;
}

TEST(HasardDemo, DrawsStayInRangeAndFollowTheirWeights) {
    Hasard h(Graine(1, {2, 3}));
    std::array<int, 7> comptes{};
    for (int i = 0; i < 70000; ++i) {
        const int v = h.Entre(-3, 3);
        ASSERT_GE(v, -3);
        ASSERT_LE(v, 3);
        ++comptes[v + 3];
    }
    for (const int c : comptes)
        EXPECT_NEAR(c, 10000, 500);

    const double poids[] = {0.0, 3.0, 1.0, 0.0};
    std::array<int, 4> tires{};
    for (int i = 0; i < 40000; ++i)
        ++tires[h.Pondere(poids)];
    EXPECT_EQ(tires[0], 0);
    EXPECT_EQ(tires[3], 0);
    EXPECT_NEAR(tires[1], 30000, 600);

    // Streams named differently are unrelated; the same name gives the same stream.
    EXPECT_NE(Graine(1, {1, 2}), Graine(1, {2, 1}));
    EXPECT_NE(Graine(1, {1}), Graine(2, {1}));
    Hasard a(Graine(5, {1})), b(Graine(5, {1}));
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(a.Suivant(), b.Suivant());
}

class BibliothequeDemoTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { b_ = new BibliothequeDemo(GenererBibliotheque(3000, 11)); }
    static void TearDownTestSuite() { delete b_; }
    static const BibliothequeDemo& B() { return *b_; }
    static BibliothequeDemo* b_;
};
BibliothequeDemo* BibliothequeDemoTest::b_ = nullptr;

TEST_F(BibliothequeDemoTest, QuotaFlagsHaveAFrenchMusicStationsShares) {
    std::map<char, int> n;
    int migration = 0;
    for (const MorceauDemo& m : B().morceaux) {
        if (Habillage(m.cle)) {
            EXPECT_EQ(m.quota, ' ') << m.cle;
            continue;
        }
        ++n[m.quota];
        migration += m.migration;
    }
    ASSERT_EQ(B().nbMusique, 3000);
    const auto part = [&](char q) { return 100.0 * n[q] / B().nbMusique; };
    EXPECT_NEAR(part('O'), 40, 4);
    EXPECT_NEAR(part('1'), 12, 3);
    EXPECT_NEAR(part('N'), 42, 4);
    EXPECT_NEAR(part('-'), 3, 1.5);
    EXPECT_NEAR(part(' ') + part('X'), 3, 1.5);
    EXPECT_GT(n['X'], 0);
    EXPECT_GT(migration, 0);
    EXPECT_LT(migration, 60);
}

TEST_F(BibliothequeDemoTest, KeysAreUniqueOrderedAndCategoryPrefixed) {
    std::set<std::string> cles;
    std::string precedente;
    for (const MorceauDemo& m : B().morceaux) {
        ASSERT_EQ(m.cle.size(), 8u);
        EXPECT_EQ(m.cle.substr(0, 3), B().CategorieDe(m).code);
        EXPECT_TRUE(std::all_of(m.cle.begin() + 3, m.cle.end(), ::isdigit)) << m.cle;
        EXPECT_GT(m.cle, precedente);
        precedente = m.cle;
        cles.insert(m.cle);
    }
    int musique = 0;
    for (const CategorieDemo& c : B().categories)
        musique += !c.habillage;
    EXPECT_GE(musique, 14);
    EXPECT_LE(musique, 18);
}

TEST_F(BibliothequeDemoTest, ArtistsTitlesAndVersionsLookReal) {
    std::set<std::string> noms;
    int ampersands = 0;
    for (const ArtisteDemo& a : B().artistes) {
        EXPECT_TRUE(noms.insert(a.nom).second) << a.nom;
        EXPECT_EQ(a.code.size(), 5u);
        ampersands += a.nom.find(" && ") != std::string::npos;
    }
    EXPECT_GT(ampersands, 0);

    int longs = 0, accents = 0, duos = 0, versions = 0;
    for (const MorceauDemo& m : B().morceaux) {
        longs += m.titre.size() > 45;
        accents += std::any_of(m.titre.begin(), m.titre.end(),
                               [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        duos += m.artiste2 >= 0;
        if (m.original >= 0) {
            ++versions;
            const MorceauDemo& o = B().morceaux[m.original];
            EXPECT_EQ(o.original, -1);  // versions point at the song itself
            EXPECT_EQ(m.titre.rfind(o.titre, 0), 0u);
            EXPECT_EQ(m.artiste1, o.artiste1);
            EXPECT_EQ(m.quota, o.quota);
        }
    }
    EXPECT_GT(longs, 10);
    EXPECT_GT(accents, 300);
    EXPECT_GT(duos, 50);
    EXPECT_GT(versions, 30);
}

TEST(DiffusionDemo, CurrentHitsRotateFasterThanGoldAndLeaveTheRotation) {
    const BibliothequeDemo b = GenererBibliotheque(3000, 5);
    const DateTime debut{2024, 1, 1};
    const int jours = 120;
    const auto evenements = GenererDiffusion(b, debut, jours, 9);
    std::map<std::string, int> parCategorie;
    std::map<int, std::pair<int64_t, int64_t>> etendue;  // track → first, last
    for (const EvenementDemo& e : evenements) {
        const MorceauDemo& m = b.morceaux[e.morceau];
        ++parCategorie[b.CategorieDe(m).code];
        auto [it, nouveau] = etendue.try_emplace(e.morceau, e.instant, e.instant);
        if (!nouveau) it->second.second = e.instant;
    }
    std::map<std::string, int> tailles;
    for (const MorceauDemo& m : b.morceaux)
        ++tailles[b.CategorieDe(m).code];
    const auto parMorceau = [&](const char* code) {
        return static_cast<double>(parCategorie[code]) / tailles[code];
    };
    EXPECT_GT(parMorceau("021"), 10 * parMorceau("010"));
    EXPECT_GT(parMorceau("020"), 3 * parMorceau("010"));
    EXPECT_GT(parCategorie["JIN"], 0);
    EXPECT_GT(parCategorie["LIN"], 0);

    // A current hit is in rotation for a stretch of the period, not all of it.
    const int64_t periode = static_cast<int64_t>(jours) * 86400;
    int hits = 0;
    for (const auto& [m, e] : etendue)
        if (b.CategorieDe(b.morceaux[m]).code == "020") {
            ++hits;
            EXPECT_LT(e.second - e.first, periode * 3 / 4) << b.morceaux[m].cle;
        }
    EXPECT_GT(hits, 40);  // more than the tracks in rotation at one time
}

TEST(DiffusionDemo, EventsAreInOrderInsideTheirHourWithSequencesOnSharedSeconds) {
    const BibliothequeDemo b = GenererBibliotheque(400, 2);
    const DateTime debut{2023, 12, 30};
    const auto evenements = GenererDiffusion(b, debut, 4, 3);
    const int64_t t0 = Instant(debut);
    ASSERT_FALSE(evenements.empty());
    int partages = 0;
    for (std::size_t i = 0; i < evenements.size(); ++i) {
        const EvenementDemo& e = evenements[i];
        ASSERT_GE(e.instant, t0);
        ASSERT_LT(e.instant, t0 + 4 * 86400);
        if (i == 0) continue;
        const EvenementDemo& p = evenements[i - 1];
        ASSERT_GE(e.instant, p.instant);
        if (e.instant == p.instant) {
            ++partages;
            EXPECT_EQ(e.sequence, p.sequence + 1);
            EXPECT_TRUE(Habillage(b.morceaux[p.morceau].cle));  // a jingle over an intro
        } else {
            EXPECT_EQ(e.sequence, 0);
        }
    }
    EXPECT_GT(partages, 0);
    // Round trip of the wall-clock seconds, across a year and a leap day.
    for (const DateTime t : {DateTime{2024, 2, 29, 23, 59, 59}, DateTime{2000, 1, 1, 0, 0, 0},
                             DateTime{2031, 12, 31, 12, 30, 5}})
        EXPECT_EQ(DateDeLInstant(Instant(t)), t);
}

TEST(PubliciteDemo, BreaksHoldTwoToFiveSpotsOfDistinctClientsEachInItsOwnSecond) {
    const RegieDemo regie = GenererRegie(4);
    const DateTime debut{2025, 5, 1};
    const PubliciteStation p = GenererPublicite(regie, 1, 0, debut, 14, 8);
    ASSERT_FALSE(p.prevus.empty());
    std::map<std::pair<int64_t, int>, std::set<int>> ecrans;  // (day, break) → clients
    std::map<std::pair<int64_t, int>, int> nbSpots;
    for (std::size_t i = 0; i < p.prevus.size(); ++i) {
        const SpotPrevu& s = p.prevus[i];
        if (i > 0) {
            ASSERT_GT(s.instant, p.prevus[i - 1].instant);
        }
        const int heure = static_cast<int>(s.instant % 86400 / 3600);
        EXPECT_GE(heure, 6);
        EXPECT_LE(heure, 21);
        const auto cle = std::make_pair(s.instant / 86400, s.ecran);
        const int client = p.contrats[p.spots[s.spot].contrat].client;
        EXPECT_TRUE(ecrans[cle].insert(client).second) << "client twice in a break";
        nbSpots[cle] = s.nbSpots;
        // The spot's contract runs on that day.
        const ContratDemo& c = p.contrats[p.spots[s.spot].contrat];
        EXPECT_LE(c.premierJour, s.instant / 86400);
        EXPECT_GE(c.dernierJour, s.instant / 86400);
    }
    for (const auto& [cle, clients] : ecrans) {
        EXPECT_EQ(static_cast<int>(clients.size()), nbSpots[cle]);
        EXPECT_GE(clients.size(), 2u);
        EXPECT_LE(clients.size(), 5u);
    }
    EXPECT_EQ(ecrans.size(), 14u * 16 * 4);  // every break of every day is filled

    const double manquants = 1.0 - static_cast<double>(p.diffuses.size()) / p.prevus.size();
    EXPECT_GT(manquants, 0.005);
    EXPECT_LT(manquants, 0.05);
    for (const SpotDiffuse& d : p.diffuses) {
        EXPECT_GE(d.instant, p.prevus[d.prevu].instant);
        EXPECT_LE(d.instant - p.prevus[d.prevu].instant, 60);
    }
}

}  // namespace
}  // namespace zl3::demo
