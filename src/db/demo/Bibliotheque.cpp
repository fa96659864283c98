#include "Bibliotheque.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>

#include "DateTime.h"
#include "Hasard.h"
#include "Vocabulaire.h"

namespace zl3::demo {
namespace {

// Quota flags and their shares in a kind of category.
struct ProfilQuota {
    const char* drapeaux;  // one flag per weight
    std::array<double, 6> poids;
};
// A French music station's library as a whole ends up near 40 % French, 12 % new talents,
// 42 % foreign, 3 % instrumental and 3 % unclassified tracks.
constexpr ProfilQuota kMixte{"O1N- X", {0.40, 0.10, 0.46, 0.01, 0.02, 0.01}};
constexpr ProfilQuota kNouveautesFr{"O1N- X", {0.65, 0.35, 0, 0, 0, 0}};
constexpr ProfilQuota kChanson{"O1N- X", {0.85, 0.12, 0, 0, 0.02, 0.01}};
constexpr ProfilQuota kTalents{"O1N- X", {0.10, 0.90, 0, 0, 0, 0}};
constexpr ProfilQuota kInternational{"O1N- X", {0, 0, 0.95, 0, 0.03, 0.02}};
constexpr ProfilQuota kVarieteInt{"O1N- X", {0.15, 0, 0.85, 0, 0, 0}};
constexpr ProfilQuota kUrbain{"O1N- X", {0.70, 0.25, 0.05, 0, 0, 0}};
constexpr ProfilQuota kElectro{"O1N- X", {0.15, 0, 0.65, 0.15, 0.03, 0.02}};
constexpr ProfilQuota kBallades{"O1N- X", {0.55, 0, 0.42, 0.03, 0, 0}};
constexpr ProfilQuota kInstrumental{"O1N- X", {0, 0, 0.10, 0.80, 0.05, 0.05}};

struct ModeleCategorie {
    const char* code;
    const char* libelle;
    double part;  // share of the music tracks; 0 for the archive, which takes what is left
    int minimum;
    int maximum;  // 0: no maximum
    const ProfilQuota* profil;
    bool top;
    int enRotation;
    std::array<double, kNbTranches> antenne;  // night, day, evening
};

// The music categories of the demo station's clock.
constexpr ModeleCategorie kCategories[] = {
    {"010", "Gold années 80", 0.10, 10, 0, &kMixte, true, 0, {0.14, 0.05, 0.05}},
    {"012", "Gold années 90", 0.10, 10, 0, &kMixte, true, 0, {0.12, 0.07, 0.06}},
    {"015", "Gold années 2000", 0.09, 10, 0, &kMixte, true, 0, {0.08, 0.07, 0.07}},
    {"020", "Hits du moment", 0.04, 20, 0, &kMixte, true, 40, {0.06, 0.24, 0.20}},
    {"021", "Hits en forte rotation", 0.002, 5, 12, &kMixte, true, 0, {0.04, 0.14, 0.10}},
    {"025", "Récurrents", 0.05, 10, 0, &kMixte, true, 0, {0.05, 0.12, 0.10}},
    {"030", "Nouveautés francophones", 0.04, 8, 0, &kNouveautesFr, true, 25, {0.02, 0.08, 0.07}},
    {"035",
     "Nouveautés internationales",
     0.04,
     8,
     0,
     &kInternational,
     true,
     25,
     {0.02, 0.06, 0.07}},
    {"040", "Chanson française", 0.10, 10, 0, &kChanson, false, 0, {0.12, 0.05, 0.04}},
    {"045", "Talents émergents", 0.04, 5, 0, &kTalents, false, 0, {0.03, 0.04, 0.04}},
    {"050", "Pop-rock internationale", 0.07, 8, 0, &kInternational, false, 0, {0.05, 0.04, 0.06}},
    {"060", "Variété internationale", 0.05, 8, 0, &kVarieteInt, false, 0, {0.05, 0.03, 0.03}},
    {"070", "Urbain francophone", 0.05, 5, 0, &kUrbain, false, 0, {0.02, 0.03, 0.07}},
    {"080", "Électro et dance", 0.04, 5, 0, &kElectro, false, 0, {0.02, 0.02, 0.06}},
    {"090", "Ballades et soirée douce", 0.04, 5, 0, &kBallades, false, 0, {0.14, 0.0, 0.05}},
    {"095", "Instrumentaux", 0.03, 3, 0, &kInstrumental, false, 0, {0.06, 0.0, 0.01}},
    {"099", "Archives", 0.0, 0, 0, &kMixte, false, 0, {0.01, 0.005, 0.005}},
};

constexpr double kPartVersions = 0.03;         // tracks that are another version of a song
constexpr double kPartDuos = 0.05;             // duets
constexpr double kPartMigration = 0.005;       // tracks still carrying the legacy migration mark
constexpr double kPartTitresLongs = 0.04;      // French titles longer than the record keeps
constexpr double kPartSecondaire = 0.10;       // tracks with a secondary category
constexpr double kPartVersionsAvecSoi = 0.10;  // version lists that name their own track

// Index in [0, n) that favours the small ones: the first artists and labels get most tracks.
int Favori(Hasard& h, int n) {
    const double u = h.Reel();
    return std::min(n - 1, static_cast<int>(u * u * n));
}

// Artist names: people, stage names, groups and duos, French or foreign, all different.
std::vector<ArtisteDemo> GenererArtistes(Hasard& h, int nombre) {
    std::vector<ArtisteDemo> artistes;
    std::set<std::string> pris;
    artistes.reserve(nombre);
    for (int i = 0; i < nombre; ++i) {
        ArtisteDemo a;
        a.code = "A" + PadNumber(i + 1, 4);
        for (int essai = 0;; ++essai) {
            const double genre = h.Reel();
            if (genre < 0.46) {
                a.nom =
                    std::string(Un(h, voc::PrenomsFrancais())) + " " + Un(h, voc::NomsFrancais());
                a.francophone = true;
            } else if (genre < 0.76) {
                a.nom =
                    std::string(Un(h, voc::PrenomsEtrangers())) + " " + Un(h, voc::NomsEtrangers());
                a.francophone = false;
            } else if (genre < 0.80) {
                a.nom = Un(h, voc::NomsDeScene());
                a.francophone = true;
            } else if (genre < 0.87) {
                a.nom = Un(h, voc::GroupesFrancais());
                a.francophone = true;
            } else if (genre < 0.93) {
                a.nom = Un(h, voc::GroupesEtrangers());
                a.francophone = false;
            } else {
                // Duos are stored with a doubled ampersand, as the suite's label controls need.
                a.francophone = h.Chance(0.6);
                const voc::Liste prenoms =
                    a.francophone ? voc::PrenomsFrancais() : voc::PrenomsEtrangers();
                const voc::Liste noms = a.francophone ? voc::NomsFrancais() : voc::NomsEtrangers();
                a.nom = h.Chance(0.5) ? std::string(Un(h, prenoms)) + " && " + Un(h, prenoms)
                                      : std::string(Un(h, noms)) + " && " + Un(h, noms);
            }
            if (essai >= 50) a.nom += " " + std::to_string(i + 1);
            if (pris.insert(a.nom).second) break;
        }
        artistes.push_back(std::move(a));
    }
    return artistes;
}

char TirerQuota(Hasard& h, const ProfilQuota& profil) {
    return profil.drapeaux[h.Pondere(profil.poids)];
}

std::string TitreFrancais(Hasard& h) {
    if (h.Chance(kPartTitresLongs)) return Un(h, voc::TitresFrancaisLongs());
    return std::string(Un(h, voc::DebutsTitreFrancais())) + Un(h, voc::FinsTitreFrancais());
}

std::string TitreEtranger(Hasard& h) {
    return std::string(Un(h, voc::DebutsTitreEtranger())) + Un(h, voc::FinsTitreEtranger());
}

std::string TitreInstrumental(Hasard& h) {
    std::string t = Un(h, voc::TitresInstrumentaux());
    if (h.Chance(0.5)) t += " n° " + std::to_string(h.Entre(1, 12));
    return t;
}

// An artist that fits the track's language, drawn among the most recorded ones more often.
int TirerArtiste(Hasard& h, const std::vector<int>& francophones, const std::vector<int>& autres,
                 char quota, int nbArtistes) {
    const std::vector<int>* pool = nullptr;
    if (quota == 'O' || quota == '1')
        pool = &francophones;
    else if (quota == 'N')
        pool = &autres;
    if (pool == nullptr || pool->empty()) return Favori(h, nbArtistes);
    return (*pool)[Favori(h, static_cast<int>(pool->size()))];
}

std::vector<int> TaillesCategories(int nbMusique, int actifs) {
    const int n = static_cast<int>(std::size(kCategories));
    std::vector<int> tailles(n, 0);
    int total = 0;
    for (int c = 0; c < n - 1; ++c) {
        const ModeleCategorie& m = kCategories[c];
        int t = std::max(m.minimum, static_cast<int>(std::lround(m.part * actifs)));
        if (m.maximum > 0) t = std::min(t, m.maximum);
        tailles[c] = t;
        total += t;
    }
    tailles[n - 1] = std::max(0, nbMusique - total);  // the archive takes the rest
    return tailles;
}

}  // namespace

Tranche TrancheDeLHeure(int heure) {
    if (heure < 6) return Tranche::Nuit;
    if (heure < 20) return Tranche::Journee;
    return Tranche::Soiree;
}

BibliothequeDemo GenererBibliotheque(int nbMorceaux, uint64_t graine, int actifs) {
    Hasard h(graine);
    BibliothequeDemo b;

    for (const ModeleCategorie& m : kCategories) {
        CategorieDemo c;
        c.code = m.code;
        c.libelle = m.libelle;
        c.top = m.top;
        c.enRotation = m.enRotation;
        c.antenne = m.antenne;
        c.archive = m.part == 0.0;
        b.categories.push_back(c);
    }
    const int categorieJingles = static_cast<int>(b.categories.size());
    b.categories.push_back({"JIN", "Jingles", true, false, 0, {}, false});
    const int categorieLiners = static_cast<int>(b.categories.size());
    b.categories.push_back({"LIN", "Liners", true, false, 0, {}, false});

    for (std::size_t i = 0; i < voc::Labels().size(); ++i)
        b.labels.push_back({"L" + PadNumber(static_cast<int64_t>(i) + 1, 4), voc::Labels()[i]});

    const int nbArtistes = std::clamp(nbMorceaux / 6, 30, 9999);
    b.artistes = GenererArtistes(h, nbArtistes);
    std::vector<int> francophones, autres;
    for (int i = 0; i < nbArtistes; ++i)
        (b.artistes[i].francophone ? francophones : autres).push_back(i);
    // Most artists stay with one label.
    std::vector<int> labelArtiste(nbArtistes);
    for (int& l : labelArtiste)
        l = Favori(h, static_cast<int>(b.labels.size()));

    // Music tracks, category by category, numbered with the gaps left by deleted tracks.
    const std::vector<int> tailles =
        TaillesCategories(nbMorceaux, actifs > 0 ? std::min(actifs, nbMorceaux) : nbMorceaux);
    const int nbModeles = static_cast<int>(std::size(kCategories));
    for (int c = 0; c < nbModeles; ++c) {
        const ModeleCategorie& modele = kCategories[c];
        int numero = 0;
        for (int i = 0; i < tailles[c]; ++i) {
            numero += h.Chance(0.1) ? h.Entre(2, 5) : 1;
            MorceauDemo m;
            m.cle = b.categories[c].code + PadNumber(numero, 5);
            m.categorie = c;

            const int nbDeja = static_cast<int>(b.morceaux.size());
            if (nbDeja > 0 && h.Chance(kPartVersions)) {
                // Another version of an earlier song: same artists, title and language.
                int original = static_cast<int>(h.Sous(nbDeja));
                if (b.morceaux[original].original >= 0) original = b.morceaux[original].original;
                const MorceauDemo& o = b.morceaux[original];
                m.original = original;
                m.artiste1 = o.artiste1;
                m.artiste2 = o.artiste2;
                m.quota = o.quota;
                m.label = o.label;
                m.titre = o.titre + Un(h, voc::SuffixesVersion());
                m.duree = std::max(90, o.duree + h.Entre(-40, 90));
            } else {
                m.quota = TirerQuota(h, *modele.profil);
                m.artiste1 = TirerArtiste(h, francophones, autres, m.quota, nbArtistes);
                if (h.Chance(kPartDuos)) {
                    m.artiste2 = TirerArtiste(h, francophones, autres, m.quota, nbArtistes);
                    if (m.artiste2 == m.artiste1) m.artiste2 = (m.artiste1 + 1) % nbArtistes;
                }
                if (m.quota == '-')
                    m.titre = TitreInstrumental(h);
                else if (m.quota == 'N')
                    m.titre = TitreEtranger(h);
                else
                    m.titre = TitreFrancais(h);
                m.label = h.Chance(0.8) ? labelArtiste[m.artiste1]
                                        : Favori(h, static_cast<int>(b.labels.size()));
                if (h.Chance(0.04)) m.label = -1;
                m.duree = h.Chance(0.05) ? h.Entre(280, 420) : h.Entre(140, 279);
            }
            m.clip = h.Chance(modele.enRotation > 0 || modele.maximum > 0 ? 0.35 : 0.12);
            m.migration = m.quota == 'O' && h.Chance(kPartMigration * 2.5);
            if (h.Chance(kPartSecondaire)) {
                const int autre = static_cast<int>(h.Sous(nbModeles - 1));
                m.categorieSecondaire = autre >= c ? autre + 1 : autre;
            }
            b.morceaux.push_back(std::move(m));
        }
    }
    b.nbMusique = static_cast<int>(b.morceaux.size());

    // Station imaging: jingles and liners, without artist, label or quota flag.
    const auto habillage = [&](int categorie, int nombre, voc::Liste noms, int dureeMin,
                               int dureeMax) {
        for (int i = 0; i < nombre; ++i) {
            MorceauDemo m;
            m.cle = b.categories[categorie].code + PadNumber(i + 1, 5);
            m.categorie = categorie;
            m.titre = noms[static_cast<std::size_t>(i) % noms.size()];
            if (i >= static_cast<int>(noms.size()))
                m.titre += " " + std::to_string(i / static_cast<int>(noms.size()) + 1);
            m.duree = h.Entre(dureeMin, dureeMax);
            b.morceaux.push_back(std::move(m));
        }
    };
    habillage(categorieJingles, std::clamp(nbMorceaux / 150, 6, 30), voc::Jingles(), 3, 12);
    habillage(categorieLiners, std::clamp(nbMorceaux / 100, 8, 60), voc::Liners(), 8, 25);

    // Versions records: every member of a song's family lists the others; now and then the
    // list names the track itself, and a few records were left blank.
    std::vector<std::vector<int>> familles(b.nbMusique);
    for (int i = 0; i < b.nbMusique; ++i)
        if (b.morceaux[i].original >= 0) familles[b.morceaux[i].original].push_back(i);
    std::vector<std::vector<std::string>> listes(b.nbMusique);
    std::vector<bool> avecListe(b.nbMusique, false);
    for (int o = 0; o < b.nbMusique; ++o) {
        if (familles[o].empty()) continue;
        std::vector<int> membres{o};
        membres.insert(membres.end(), familles[o].begin(), familles[o].end());
        const bool avecSoi = h.Chance(kPartVersionsAvecSoi);
        for (const int m : membres) {
            std::vector<std::string> cles;
            for (const int autre : membres)
                if (autre != m || avecSoi) cles.push_back(b.morceaux[autre].cle);
            if (cles.size() > 9) cles.resize(9);
            listes[m] = std::move(cles);
            avecListe[m] = true;
        }
    }
    const int nbVides = std::max(2, b.nbMusique / 400);
    for (int v = 0; v < nbVides; ++v) {
        // An emptied list, area all blanks, on a track without versions.
        for (int essai = 0; essai < 20; ++essai) {
            const int m = static_cast<int>(h.Sous(b.nbMusique));
            if (avecListe[m]) continue;
            avecListe[m] = true;
            break;
        }
    }
    for (int m = 0; m < b.nbMusique; ++m)
        if (avecListe[m]) b.versions.push_back({m, listes[m]});
    return b;
}

}  // namespace zl3::demo
