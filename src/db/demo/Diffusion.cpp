#include "Diffusion.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "Hasard.h"

namespace zl3::demo {
namespace {

constexpr int64_t kSecondesParJour = 86400;
constexpr int kSecondesParHeure = 3600;
// A jingle or liner fired over the intro of the song that follows it.
constexpr double kPartHabillageSurIntro = 0.15;

// Songs per hour and imaging items per hour, by hour of the day.
struct Volume {
    int musiqueMin, musiqueMax;
    int habillageMin, habillageMax;
};
Volume VolumeDeLHeure(int heure) {
    if (heure < 5) return {6, 10, 1, 2};   // night: long programmes, few songs
    if (heure == 5) return {9, 12, 1, 3};  // early morning
    if (heure < 20) return {12, 16, 3, 6};
    return {10, 14, 2, 4};
}

// Deals the tracks of one category in shuffled rounds, so that every track in rotation is aired
// once before any is aired again. Categories of current titles renew their rotation along the
// period: each track is in rotation for a stretch of days, the older ones leaving as newer ones
// come in.
class Rotation {
  public:
    Rotation(std::vector<int> morceaux, int enRotation, int nbJours)
        : morceaux_(std::move(morceaux)) {
        const int n = static_cast<int>(morceaux_.size());
        if (enRotation > 0 && n > enRotation) {
            duree_ = std::max(7, (enRotation * nbJours + (n - enRotation) - 1) / (n - enRotation));
            entree_.resize(n);
            for (int i = 0; i < n; ++i)
                entree_[i] =
                    static_cast<int>(static_cast<int64_t>(i) * (nbJours + duree_) / n) - duree_;
        }
    }

    bool Vide() const { return morceaux_.empty(); }

    int Tirer(Hasard& h, int jour) {
        for (int tour = 0; tour < 2; ++tour) {
            while (position_ < paquet_.size()) {
                const int i = paquet_[position_++];
                if (Actif(i, jour)) return Retenir(i);
            }
            Rebattre(h, jour);
        }
        // Nothing in rotation that day: the nearest track to come in stands in.
        return Retenir(paquet_.empty() ? 0 : paquet_[0]);
    }

  private:
    bool Actif(int i, int jour) const {
        return entree_.empty() || (jour >= entree_[i] && jour < entree_[i] + duree_);
    }

    int Retenir(int i) {
        recents_[prochainRecent_++ % recents_.size()] = i;
        return morceaux_[i];
    }

    void Rebattre(Hasard& h, int jour) {
        paquet_.clear();
        for (int i = 0; i < static_cast<int>(morceaux_.size()); ++i)
            if (Actif(i, jour)) paquet_.push_back(i);
        if (paquet_.empty()) {
            // Between two waves: the track whose stretch is nearest to the day.
            int meilleur = 0;
            for (int i = 1; i < static_cast<int>(entree_.size()); ++i)
                if (std::abs(entree_[i] - jour) < std::abs(entree_[meilleur] - jour)) meilleur = i;
            paquet_.push_back(meilleur);
        }
        h.Melanger(paquet_);
        // The first tracks of the new round must not repeat the last ones of the previous.
        const std::size_t n = paquet_.size();
        for (std::size_t k = 0; k < std::min<std::size_t>(2, n); ++k) {
            if (std::find(recents_.begin(), recents_.end(), paquet_[k]) == recents_.end()) continue;
            if (n > k + recents_.size()) std::swap(paquet_[k], paquet_[k + 1 + h.Sous(n - k - 1)]);
        }
        position_ = 0;
    }

    std::vector<int> morceaux_;
    std::vector<int> entree_;  // first day in rotation, per track
    int duree_ = 0;            // days in rotation
    std::vector<int> paquet_;
    std::size_t position_ = 0;
    std::array<int, 3> recents_{-1, -1, -1};
    std::size_t prochainRecent_ = 0;
};

}  // namespace

int64_t Instant(const DateTime& t) {
    return DaysFromCivil(t.year, t.month, t.day) * kSecondesParJour + t.hour * 3600 +
           t.minute * 60 + t.second;
}

DateTime DateDeLInstant(int64_t instant) {
    int64_t jours = instant / kSecondesParJour;
    int64_t reste = instant % kSecondesParJour;
    if (reste < 0) {
        reste += kSecondesParJour;
        --jours;
    }
    DateTime d = CivilFromDays(jours);
    d.hour = static_cast<int>(reste / 3600);
    d.minute = static_cast<int>(reste / 60 % 60);
    d.second = static_cast<int>(reste % 60);
    return d;
}

std::vector<EvenementDemo> GenererDiffusion(const BibliothequeDemo& bibliotheque,
                                            const DateTime& premierJour, int nbJours,
                                            uint64_t graine) {
    Hasard h(graine);
    const int nbCategories = static_cast<int>(bibliotheque.categories.size());
    std::vector<std::vector<int>> parCategorie(nbCategories);
    for (int i = 0; i < static_cast<int>(bibliotheque.morceaux.size()); ++i)
        parCategorie[bibliotheque.morceaux[i].categorie].push_back(i);

    std::vector<Rotation> rotations;
    std::vector<int> musique;  // category indexes of music
    int jingles = -1, liners = -1;
    for (int c = 0; c < nbCategories; ++c) {
        const CategorieDemo& cat = bibliotheque.categories[c];
        rotations.emplace_back(parCategorie[c], cat.enRotation, nbJours);
        if (!cat.habillage)
            musique.push_back(c);
        else if (cat.code == "JIN")
            jingles = c;
        else
            liners = c;
    }
    // Airplay weights per part of the day; an empty category gets none.
    std::array<std::vector<double>, kNbTranches> poids;
    for (int t = 0; t < kNbTranches; ++t)
        for (const int c : musique)
            poids[t].push_back(rotations[c].Vide() ? 0.0 : bibliotheque.categories[c].antenne[t]);

    std::vector<EvenementDemo> evenements;
    evenements.reserve(static_cast<std::size_t>(nbJours) * 400);
    const int64_t jour0 = DaysFromCivil(premierJour.year, premierJour.month, premierJour.day);

    struct Element {
        int morceau;
        bool habillage;
    };
    std::vector<Element> heure;
    std::vector<double> pauses;
    for (int jour = 0; jour < nbJours; ++jour) {
        for (int hh = 0; hh < 24; ++hh) {
            const Volume v = VolumeDeLHeure(hh);
            const auto tranche = static_cast<std::size_t>(TrancheDeLHeure(hh));
            const int nbMusique = h.Entre(v.musiqueMin, v.musiqueMax);
            const int nbHabillage = h.Entre(v.habillageMin, v.habillageMax);

            heure.clear();
            for (int i = 0; i < nbMusique; ++i) {
                const int c = musique[h.Pondere(poids[tranche])];
                heure.push_back({rotations[c].Tirer(h, jour), false});
            }
            // Imaging between songs; the hour often opens with one.
            for (int i = 0; i < nbHabillage; ++i) {
                const int c = (liners < 0 || (jingles >= 0 && h.Chance(0.6))) ? jingles : liners;
                if (c < 0 || rotations[c].Vide()) continue;
                const auto place = i == 0 && h.Chance(0.5) ? 0 : h.Sous(heure.size() + 1);
                heure.insert(heure.begin() + static_cast<std::ptrdiff_t>(place),
                             {rotations[c].Tirer(h, jour), true});
            }

            // Airtime: the items back to back, the rest of the hour (news, talk, commercial
            // breaks) spread between them, more of it at the top of the hour. Songs that would
            // overrun the hour are dropped.
            const auto duree = [&](const Element& e) {
                return bibliotheque.morceaux[e.morceau].duree;
            };
            int total = 0;
            for (const Element& e : heure)
                total += duree(e);
            while (total > kSecondesParHeure - 120 && heure.size() > 1) {
                total -= duree(heure.back());
                heure.pop_back();
            }
            const int libre = std::max(0, kSecondesParHeure - 1 - total);
            pauses.assign(heure.size() + 1, 0.0);
            double somme = 0;
            for (std::size_t i = 0; i < pauses.size(); ++i) {
                pauses[i] = h.Reel() + (i == 0 ? 1.5 : 0.1);
                somme += pauses[i];
            }
            const int64_t debutHeure = (jour0 + jour) * kSecondesParJour + hh * kSecondesParHeure;
            int64_t t = debutHeure + static_cast<int64_t>(libre * (pauses[0] / somme));
            for (std::size_t i = 0; i < heure.size(); ++i) {
                const Element& e = heure[i];
                EvenementDemo ev{t, e.morceau, 0};
                if (!evenements.empty() && evenements.back().instant == t)
                    ev.sequence = evenements.back().sequence + 1;
                evenements.push_back(ev);
                const bool surIntro = e.habillage && i + 1 < heure.size() &&
                                      !heure[i + 1].habillage && h.Chance(kPartHabillageSurIntro);
                if (surIntro) continue;  // the song starts in the same second
                t += duree(e) + static_cast<int64_t>(libre * (pauses[i + 1] / somme));
                // Every item starts inside its hour.
                t = std::min(t, debutHeure + kSecondesParHeure - 1);
            }
        }
    }
    return evenements;
}

}  // namespace zl3::demo
