#include "Lib_Data_Pervasive_2_Catalogue.h"

#include <initializer_list>

namespace zl3 {
namespace {

constexpr int32_t D = kCleDoublons;
constexpr int32_t M = kCleModifiable;
constexpr int32_t S = kCleSegmentee;
constexpr int32_t N = kCleSansCasse;

struct Seg {
    int32_t position;
    int32_t longueur;
    int32_t attributs;
};

struct Ligne {
    int index;
    const char* description;
    char parStation;
    char indicateur;
    int32_t longueurEnreg;
    int32_t taillePage;
    int32_t nbCles;
    std::initializer_list<Seg> segments;
};

// The catalogue as the suite defines it. Segments are listed key by key; a segment carrying the
// segmented flag (S) is continued by the next one, so several entries list more segments than
// keys. Every row below is taken as written, at most 8 segments per entry (the slots of the
// entry); the rows that look odd at first sight all resolve once the segmented flag is
// followed, and none reaches the cap:
//  - 7: 4 keys over 5 segments: the third key is 26/10 followed by 9/13.
//  - 12: 7 keys, one segment each (the most segments of any entry: 7 of 8 slots).
//  - 13: 5 keys over 6 segments: the third key is 1/3 followed by 34/15; the fourth key (1/48)
//    overlaps the first (1/33), which Btrieve allows.
//  - 18: its first key allows duplicates (no unique key in that file).
//  - 20: 4 keys over 5 segments: the fourth key is 46/1 followed by 16/20, the third key's
//    bytes again, this time case-sensitive.
//  - 21: 2 keys over 3 segments: the second key is 1/5 followed by 11/10, both case-insensitive.
//  - 23, 24: 3 keys over 4 segments: the third key is 9/5 followed by 51/20, the second segment
//    only being case-insensitive.
//  - 29: 3 keys over 4 segments: the second key is 1/10 followed by 19/20.
//  - 35: 3 keys over 4 segments: the third key is 1/10 followed by 14/6.
//  - 36: its first (unique) key is case-insensitive.
//  - 47: the only entry with the second flag set.
// Indexes 8, 37, 38, 39 and 50 have no entry and stay empty.
// clang-format off
const Ligne kCatalogue[] = {
    {0, "Paramétrage", 'N', 'N', 1000, 1024, 1, {{1, 10, M}}},
    {1, "Commerciaux", 'N', 'N', 300, 1024, 2, {{1, 8, M}, {9, 10, D|M|N}}},
    {2, "Secteurs d'activité", 'N', 'N', 100, 512, 2, {{1, 10, M}, {11, 10, D|M|N}}},
    {3, "Clients", 'N', 'N', 900, 1024, 2, {{1, 8, M}, {9, 10, D|M|N}}},
    {4, "Produits", 'N', 'N', 100, 512, 2, {{1, 10, M}, {11, 10, D|M|N}}},
    {5, "Entêtes des contrats", 'O', 'N', 150, 512, 4,
        {{1, 16, M}, {3, 14, M}, {11, 6, M}, {40, 40, D|M|N}}},
    {6, "Entêtes des spots", 'O', 'N', 400, 512, 2, {{1, 8, M}, {9, 10, D|M|N}}},
    {7, "Dates de programmation des passages des spots", 'O', 'N', 100, 512, 4,
        {{1, 21, M}, {9, 13, D|M}, {26, 10, D|M|S}, {9, 13, D|M}, {36, 21, D|M}}},
    {9, "Paramétrage (Backup)", 'N', 'N', 1000, 1024, 1, {{1, 10, M}}},
    {10, "Publicité: Données programmées", 'O', 'N', 400, 512, 1, {{1, 14, M}}},
    {11, "Gestion des droits des utilisateurs", 'N', 'N', 350, 1536, 1, {{1, 83, M}}},
    {12, "Publicité: Système Tiers: Campagnes", 'N', 'N', 300, 1536, 7,
        {{1, 18, M}, {19, 50, D|M}, {69, 8, D|M}, {77, 8, D|M},
         {135, 1, D|M}, {136, 7, D|M}, {137, 6, D|M}}},
    {13, "Publicité: Système Tiers: Spots", 'N', 'N', 300, 1536, 5,
        {{1, 33, M}, {49, 12, D|M}, {1, 3, D|M|S}, {34, 15, D|M}, {1, 48, D|M}, {170, 15, D|M}}},
    {14, "Publicité: Système Tiers: Messages", 'N', 'N', 300, 1536, 3,
        {{1, 18, M}, {19, 1, D|M}, {20, 9, D|M}}},
    {15, "Publicité: Système Tiers: Produits", 'N', 'N', 100, 1536, 2, {{1, 53, M}, {54, 10, D|M}}},
    {16, "Publicité: Système Tiers: Clients", 'N', 'N', 100, 1536, 2, {{1, 53, M}, {54, 8, D|M}}},
    {17, "V 3.4 Planification", 'O', 'N', 1000, 2048, 2, {{1, 14, M}, {15, 8, D|M}}},
    {18, "V 3.4 Log Pub", 'O', 'N', 250, 512, 3, {{1, 14, D|M}, {15, 16, D|M}, {31, 16, D|M}}},
    {19, "Télé: Système Tiers: NinSight", 'N', 'N', 1000, 4096, 3,
        {{1, 8, M}, {9, 10, D|M}, {19, 50, D|M}}},
    {20, "Artistes", 'O', 'N', 300, 1024, 4,
        {{1, 5, M}, {6, 10, D|M}, {16, 20, D|M|N}, {46, 1, D|M|S}, {16, 20, D|M}}},
    {21, "Voix, Groupe, Sonorité, Catégorie, ...", 'O', 'N', 980, 1024, 2,
        {{1, 10, M}, {1, 5, D|M|S|N}, {11, 10, D|M|N}}},
    {22, "Morceaux", 'O', 'N', 900, 2048, 6,
        {{1, 8, M}, {9, 5, D|M}, {19, 5, D|M}, {64, 5, D|M}, {69, 5, D|M}, {24, 20, D|M|N}}},
    {23, "Piles de morceaux par sujet", 'O', 'N', 100, 512, 3,
        {{1, 8, D|M}, {9, 11, D|M}, {9, 5, D|M|S}, {51, 20, D|M|N}}},
    {24, "Piles de morceaux par catégorie", 'O', 'N', 100, 512, 3,
        {{1, 8, D|M}, {9, 11, D|M}, {9, 5, D|M|S}, {51, 20, D|M|N}}},
    {25, "Priorités", 'O', 'N', 250, 512, 1, {{1, 10, M}}},
    {26, "Table des morceaux pour le magnétophone", 'O', 'N', 150, 512, 4,
        {{1, 8, D|M}, {9, 19, D|M}, {28, 14, D|M}, {42, 39, D|M|N}}},
    {27, "Conducteur publicité", 'O', 'N', 50, 512, 2, {{1, 14, M}, {15, 8, D|M}}},
    {28, "Evénements musicaux réellement diffusés", 'O', 'N', 150, 512, 3,
        {{1, 16, M}, {97, 8, D|M}, {109, 14, D|M}}},
    {29, "Morceaux (Clés complémentaires)", 'O', 'N', 100, 512, 3,
        {{1, 18, D|M}, {1, 10, D|M|S|N}, {19, 20, D|M|N}, {11, 8, D|M}}},
    {30, "Squelette des horloges", 'O', 'N', 250, 512, 1, {{1, 8, M}}},
    {31, "Pointeurs de start, stop, loop, ...", 'O', 'N', 50, 512, 1, {{1, 11, M}}},
    {32, "Renseignements complémentaires sur les morceaux", 'O', 'N', 250, 1024, 1, {{1, 10, M}}},
    {33, "Historique des artistes et groupes programmés", 'O', 'N', 100, 512, 3,
        {{1, 16, M}, {17, 19, D|M}, {36, 19, D|M}}},
    {34, "Historique des morceaux programmés", 'O', 'N', 200, 1024, 6,
        {{9, 14, D|M}, {1, 22, D|M}, {23, 54, D|M|N},
         {77, 19, D|M}, {96, 19, D|M}, {115, 14, D|M}}},
    {35, "Historique des événements programmés", 'O', 'N', 400, 1024, 3,
        {{1, 19, M}, {253, 6, D|M}, {1, 10, D|M|S}, {14, 6, D|M}}},
    {36, "Base de référence pour les titres", 'N', 'N', 800, 1024, 6,
        {{1, 50, M|N}, {51, 30, D|M|N}, {81, 32, D|M|N},
         {113, 30, D|M|N}, {143, 30, D|M|N}, {173, 10, D|M|N}}},
    {40, "V 3.4 Morceaux non diffusés", 'O', 'N', 900, 1024, 2, {{1, 8, D|M}, {9, 14, D|M}}},
    {41, "V 3.4 Convert Entête", 'N', 'N', 900, 2048, 3,
        {{1, 10, M}, {11, 50, D|M|N}, {61, 14, D|M|N}}},
    {42, "V 3.4 Convert Détail", 'N', 'N', 900, 2048, 1, {{1, 20, M}}},
    {43, "V 3.4 Podcast: Emission", 'O', 'N', 4000, 4096, 2, {{1, 8, M}, {9, 60, D|M|N}}},
    {44, "V 3.4 Podcast: Articles des Emissions", 'O', 'N', 4000, 4096, 3,
        {{1, 8, M}, {9, 21, D|M}, {30, 60, D|M|N}}},
    {45, "V 3.4 Podcast: Images des Emissions ou des Articles", 'O', 'N', 4000, 4096, 1,
        {{1, 8, M}}},
    {46, "V 3.4 Equivalence entre les morceaux", 'N', 'N', 512, 1024, 1, {{1, 5, M}}},
    {47, "V 3.4 Historique de Diffusion: Codes et Libellés", 'O', 'O', 4082, 4096, 1, {{1, 11, M}}},
    {48, "V 3.4 Table des titres", 'O', 'N', 100, 512, 2, {{1, 8, M}, {9, 43, D|M}}},
    {49, "V 3.4 Historique de Diffusion: Ecarts", 'O', 'N', 450, 512, 1, {{1, 8, M}}},
};
// clang-format on

std::array<FichierCatalogue, kNbFichiersCatalogue>& Table() {
    static std::array<FichierCatalogue, kNbFichiersCatalogue> table;
    return table;
}

std::string CodeFichier(int index) {
    std::string code = "FRAD";
    code += static_cast<char>('0' + index / 100);
    code += static_cast<char>('0' + index / 10 % 10);
    code += static_cast<char>('0' + index % 10);
    code.resize(8, ' ');
    return code;
}

void Put16(std::vector<uint8_t>& out, size_t at, int32_t value) {
    out[at] = static_cast<uint8_t>(value & 0xFF);
    out[at + 1] = static_cast<uint8_t>((value >> 8) & 0xFF);
}

}  // namespace

void InitCatalogueFichiers() {
    auto& table = Table();
    table.fill(FichierCatalogue{});
    for (const Ligne& ligne : kCatalogue) {
        FichierCatalogue& f = table[ligne.index];
        f.Description = ligne.description;
        f.Code = CodeFichier(ligne.index);
        f.ParStation = ligne.parStation;
        f.Indicateur = ligne.indicateur;
        f.LongueurEnreg = ligne.longueurEnreg;
        f.TaillePage = ligne.taillePage;
        f.NbCles = ligne.nbCles;
        int i = 0;
        for (const Seg& s : ligne.segments) {
            if (i == kNbSegmentsCatalogue) break;  // the entry holds 8 segments at most
            f.Segments[i].Position = s.position;
            f.Segments[i].Longueur = s.longueur;
            f.Segments[i].Attributs = s.attributs;
            ++i;
        }
    }
}

const FichierCatalogue& CatalogueFichier(int index) {
    static const FichierCatalogue vide;
    if (index < 0 || index >= kNbFichiersCatalogue) return vide;
    return Table()[index];
}

std::string NomFichierBTrieve(int index, int station) {
    const FichierCatalogue& f = CatalogueFichier(index);
    if (f.Vide()) return {};
    std::string nom = f.Code.substr(0, f.Code.find_last_not_of(' ') + 1);
    if (f.ParStation == 'O' && nom.size() >= 5) nom[4] = static_cast<char>(65 + station);
    return nom + ".bt6";
}

int NbSegmentsUtilises(const FichierCatalogue& fichier) {
    int n = 0;
    while (n < kNbSegmentsCatalogue && fichier.Segments[n].Longueur > 0)
        ++n;
    return n;
}

DefinitionCle DefinitionCleCatalogue(const FichierCatalogue& fichier, int noCle) {
    if (noCle < 0 || noCle >= fichier.NbCles) return {};
    const int nbSegments = NbSegmentsUtilises(fichier);
    int cle = 0;
    DefinitionCle def;
    for (int i = 0; i < nbSegments; ++i) {
        const SegmentCatalogue& s = fichier.Segments[i];
        if (cle == noCle) {
            def.NbSegments++;
            def.Longueur += s.Longueur;
        }
        if (!(s.Attributs & kCleSegmentee)) {
            if (cle == noCle) return def;
            ++cle;
        }
    }
    return {};  // the key runs past the listed segments
}

DefinitionCle DefinitionCleCatalogue(int index, int noCle) {
    return DefinitionCleCatalogue(CatalogueFichier(index), noCle);
}

std::vector<uint8_t> StructureCreation(const FichierCatalogue& fichier) {
    if (fichier.Vide()) return {};
    const int nbSegments = NbSegmentsUtilises(fichier);
    std::vector<uint8_t> layout(16 + 16 * static_cast<size_t>(nbSegments), 0);
    Put16(layout, 0, fichier.LongueurEnreg);
    Put16(layout, 2, fichier.TaillePage);
    layout[4] = static_cast<uint8_t>(fichier.NbCles);
    // +5 reserved, +6 record count (Stat only), +10 file flags, +12 extra duplicate pointers,
    // +14 preallocated pages: all 0 for the suite's files.
    for (int i = 0; i < nbSegments; ++i) {
        const SegmentCatalogue& s = fichier.Segments[i];
        const size_t at = 16 + 16 * static_cast<size_t>(i);
        Put16(layout, at, s.Position);
        Put16(layout, at + 2, s.Longueur);
        Put16(layout, at + 4, s.Attributs);
        // +6 unique values (Stat only), +10 extended type 0 (string), +11 null value,
        // +14 manual key number, +15 collating sequence: all 0.
    }
    return layout;
}

}  // namespace zl3
