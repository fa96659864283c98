// The compliance chart as print primitives: the threshold where its percentage says, the daily
// curve broken on a day without plays, every line inside the frame.
#include <gtest/gtest.h>

#include "GraphiqueConformite.h"

namespace zl3 {
namespace {

std::vector<TraitDessine> Traits(const std::vector<Primitive>& p, uint32_t couleur) {
    std::vector<TraitDessine> t;
    for (const Primitive& x : p)
        if (const auto* trait = std::get_if<TraitDessine>(&x); trait && trait->couleur == couleur)
            t.push_back(*trait);
    return t;
}

TEST(GraphiqueConformite, ThresholdDailyAndRunningSharesInsideTheFrame) {
    SerieConformite s;
    s.titre = "Octobre";
    s.jours = {"01", "02", "03", "04", "05"};
    s.parts = {50.0, 70.0, std::nullopt, 20.0, std::nullopt};
    s.cumul = {50.0, 60.0, 60.0, 50.0, 50.0};
    s.seuil = 40;
    const Cadre cadre{10, 20, 500, 300};
    const auto p = DessineGraphiqueConformite(s, cadre);

    // The threshold: one horizontal line; 0 % and 100 % are the grid's lowest and highest lines.
    const auto seuil = Traits(p, kCouleurSeuil);
    ASSERT_EQ(seuil.size(), 2u);  // the legend's sample, then the line
    const auto grille = Traits(p, 0xC8C8C8);
    double haut = 1e9, bas = -1e9;
    for (const TraitDessine& t : Traits(p, 0x000000))
        if (t.y1 == t.y2) bas = std::max(bas, t.y1);
    for (const TraitDessine& t : grille)
        haut = std::min(haut, t.y1);
    const TraitDessine& ligne = seuil[1];
    EXPECT_DOUBLE_EQ(ligne.y1, ligne.y2);
    EXPECT_NEAR(ligne.y1, bas - 0.4 * (bas - haut), 1e-9);

    // Daily shares: the segment 1-2, then day 4 alone as a tick; nothing towards days 3 and 5.
    const auto jours = Traits(p, kCouleurPartJour);
    ASSERT_EQ(jours.size(), 3u);  // legend, segment, tick
    EXPECT_LT(jours[1].y2, jours[1].y1);  // 50 % to 70 % goes up
    EXPECT_DOUBLE_EQ(jours[2].y1, jours[2].y2);
    // Running share: four segments.
    EXPECT_EQ(Traits(p, kCouleurCumul).size(), 5u);
    for (const Primitive& x : p)
        if (const auto* t = std::get_if<TraitDessine>(&x)) {
            EXPECT_GE(std::min(t->x1, t->x2), cadre.x);
            EXPECT_LE(std::max(t->x1, t->x2), cadre.x + cadre.largeur);
            EXPECT_GE(std::min(t->y1, t->y2), cadre.y);
            EXPECT_LE(std::max(t->y1, t->y2), cadre.y + cadre.hauteur);
        }
}

}  // namespace
}  // namespace zl3
