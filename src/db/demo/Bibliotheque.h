// The demo station's music library: categories, record labels, artists, tracks (songs and
// station imaging) and the lists of versions of the same song. The library is made once per base
// and copied to every station of the base.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zl3::demo {

// Parts of the day that the music programming treats differently.
enum class Tranche : int { Nuit = 0, Journee = 1, Soiree = 2 };
inline constexpr int kNbTranches = 3;
// 00:00–05:59 night, 06:00–19:59 day, 20:00–23:59 evening.
Tranche TrancheDeLHeure(int heure);

struct CategorieDemo {
    std::string code;        // "010" … "099", or "JIN" / "LIN" for station imaging
    std::string libelle;     // label of the category
    bool habillage = false;  // jingles or liners, not music
    bool top = false;        // reported by "Top Diffusion": its parameter text holds "OY"
    // Tracks that rotate at one time; 0: the whole category is always in rotation. Larger
    // categories of current titles renew their rotation along the period.
    int enRotation = 0;
    // Share of the music airplay in each part of the day.
    std::array<double, kNbTranches> antenne{};
    bool archive = false;  // the archive: what the other categories leave, seldom aired
};

struct ArtisteDemo {
    std::string code;  // "A" + 4 digits
    std::string nom;   // "Simon && Garfunkel" style names keep the doubled ampersand
    bool francophone = true;
};

struct LabelDemo {
    std::string code;  // attribute code of type "LABEL", also the tracks' CodeLabel
    std::string nom;
};

struct MorceauDemo {
    std::string cle;    // category + 5 digits
    int categorie = 0;  // index in BibliothequeDemo::categories
    int artiste1 = -1;  // indexes in BibliothequeDemo::artistes, -1 for none
    int artiste2 = -1;  // second artist of a duet
    std::string titre;  // full title, may be longer than the record keeps
    int duree = 0;      // seconds
    char quota = ' ';   // 'O' French, '1' new talent, 'N' foreign, '-' instrumental, ' ', 'X'
    int label = -1;     // index in BibliothequeDemo::labels, -1 for none
    bool clip = false;
    bool migration = false;  // legacy migration mark that makes the track a new talent
    int categorieSecondaire = -1;
    int original = -1;  // index of the track this one is a version of
};

// One versions record: a track and the keys listed in its area (at most 9; blank entries and
// the track's own key are possible, as the suite's older versions wrote them).
struct VersionsDemo {
    int morceau = 0;
    std::vector<std::string> cles;
};

struct BibliothequeDemo {
    std::vector<CategorieDemo> categories;
    std::vector<LabelDemo> labels;
    std::vector<ArtisteDemo> artistes;
    std::vector<MorceauDemo> morceaux;   // in key order
    std::vector<VersionsDemo> versions;  // in key order of their track
    int nbMusique = 0;                   // music tracks (the others are imaging items)

    const CategorieDemo& CategorieDe(const MorceauDemo& m) const { return categories[m.categorie]; }
};

// A library of `nbMorceaux` music tracks (plus the imaging items that go with such a library),
// the same for the same seed. The categories share out `actifs` tracks (0: all of them) and the
// archive holds the rest: a station that has been on air for years programmes a few thousand
// tracks and keeps the others in its archive.
BibliothequeDemo GenererBibliotheque(int nbMorceaux, uint64_t graine, int actifs = 0);

}  // namespace zl3::demo
