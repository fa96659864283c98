#include "GraphiqueConformite.h"

#include <algorithm>
#include <cstdio>

#include "FichierPdf.h"

namespace zl3 {
namespace {

void Polyligne(std::vector<Primitive>& out, const std::vector<std::optional<double>>& valeurs,
               const Cadre& zone, double pas, uint32_t couleur, double epaisseur) {
    auto y = [&](double v) {
        return zone.y + zone.hauteur - std::clamp(v, 0.0, 100.0) / 100.0 * zone.hauteur;
    };
    for (size_t i = 0; i + 1 < valeurs.size(); ++i) {
        if (!valeurs[i] || !valeurs[i + 1]) continue;
        TraitDessine t;
        t.x1 = zone.x + pas * (static_cast<double>(i) + 0.5);
        t.x2 = zone.x + pas * (static_cast<double>(i) + 1.5);
        t.y1 = y(*valeurs[i]);
        t.y2 = y(*valeurs[i + 1]);
        t.couleur = couleur;
        t.epaisseur = epaisseur;
        out.emplace_back(t);
    }
    // A point alone (no neighbour with a value) still shows, as a short tick.
    for (size_t i = 0; i < valeurs.size(); ++i) {
        const bool avant = i > 0 && valeurs[i - 1];
        const bool apres = i + 1 < valeurs.size() && valeurs[i + 1];
        if (!valeurs[i] || avant || apres) continue;
        TraitDessine t;
        t.x1 = zone.x + pas * (static_cast<double>(i) + 0.3);
        t.x2 = zone.x + pas * (static_cast<double>(i) + 0.7);
        t.y1 = t.y2 = y(*valeurs[i]);
        t.couleur = couleur;
        t.epaisseur = epaisseur;
        out.emplace_back(t);
    }
}

std::string TextePourcent(double v) {
    char b[32];
    std::snprintf(b, sizeof b, "%.0f %%", v);
    return b;
}

}  // namespace

std::vector<Primitive> DessineGraphiqueConformite(const SerieConformite& s, const Cadre& cadre) {
    std::vector<Primitive> out;
    const Police titre{"Arial", 11, true};
    const Police petite{"Arial", 7, false};
    out.emplace_back(TexteDessine{{cadre.x, cadre.y, cadre.largeur, 16}, s.titre,
                                  Alignement::Centre, titre});
    // Legend.
    const double yl = cadre.y + 20;
    const struct {
        const char* texte;
        uint32_t couleur;
    } legende[] = {{"Part francophone du jour", kCouleurPartJour},
                   {"Part cumulée du mois", kCouleurCumul},
                   {"Seuil du régime", kCouleurSeuil}};
    double xl = cadre.x + 40;
    for (const auto& l : legende) {
        out.emplace_back(TraitDessine{xl, yl + 5, xl + 18, yl + 5, 2, l.couleur});
        out.emplace_back(TexteDessine{{xl + 22, yl, 140, 10}, l.texte, Alignement::Gauche, petite});
        xl += 170;
    }
    // Plot area: room for the percent labels at the left and the days below.
    const Cadre zone{cadre.x + 34, cadre.y + 38, cadre.largeur - 44, cadre.hauteur - 56};
    out.emplace_back(FondDessine{zone, 0xFFFFFF});
    for (int p = 0; p <= 100; p += 10) {
        const double y = zone.y + zone.hauteur - p / 100.0 * zone.hauteur;
        out.emplace_back(TraitDessine{zone.x, y, zone.x + zone.largeur, y, p == 0 ? 0.8 : 0.3,
                                      p == 0 ? 0x000000u : 0xC8C8C8u});
        out.emplace_back(
            TexteDessine{{cadre.x, y - 5, 30, 10}, TextePourcent(p), Alignement::Droite, petite});
    }
    out.emplace_back(TraitDessine{zone.x, zone.y, zone.x, zone.y + zone.hauteur, 0.8, 0x000000});
    const size_t n = std::max<size_t>(1, s.jours.size());
    const double pas = zone.largeur / static_cast<double>(n);
    for (size_t i = 0; i < s.jours.size(); ++i)
        out.emplace_back(TexteDessine{{zone.x + pas * static_cast<double>(i),
                                       zone.y + zone.hauteur + 2, pas, 10},
                                      s.jours[i], Alignement::Centre, petite});
    const double ys = zone.y + zone.hauteur - std::clamp(s.seuil, 0.0, 100.0) / 100.0 * zone.hauteur;
    out.emplace_back(TraitDessine{zone.x, ys, zone.x + zone.largeur, ys, 1.2, kCouleurSeuil});
    Polyligne(out, s.parts, zone, pas, kCouleurPartJour, 1.2);
    Polyligne(out, s.cumul, zone, pas, kCouleurCumul, 1.8);
    return out;
}

PageImprimee PageGraphiqueConformite(const SerieConformite& serie) {
    PageImprimee page;
    page.largeur = kHauteurA4;
    page.hauteur = kLargeurA4;
    const double marge = 28.35;
    page.primitives = DessineGraphiqueConformite(
        serie, Cadre{marge, marge, page.largeur - 2 * marge, page.hauteur - 2 * marge});
    return page;
}

ResultatEcriture ImprimeGrilleEtGraphiquePdf(const Grid& grille, const SerieConformite& serie,
                                             const std::string& entete,
                                             const std::string& nomTravail,
                                             const DateTime& maintenant,
                                             const std::string& chemin) {
    OptionsImpression o;
    o.entete = entete;
    o.pied = kPiedImpression;
    o.orientation = Orientation::Paysage;
    o.maintenant = maintenant;
    Impression imp = MetEnPage(grille, o);
    imp.pages.push_back(PageGraphiqueConformite(serie));
    return EcritFichierPdf(chemin, imp.pages, nomTravail);
}

}  // namespace zl3
