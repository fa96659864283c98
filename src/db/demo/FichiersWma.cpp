#include "FichiersWma.h"

#include <filesystem>
#include <fstream>

#include "DateTime.h"
#include "Ecriture.h"
#include "Hasard.h"
#include "Lib_Systeme.h"
#include "Utf8.h"
#include "Vocabulaire.h"

namespace zl3::demo {
namespace {

// GUIDs in their file order: the first three groups little-endian, the rest byte by byte.
struct Guid {
    uint32_t a;
    uint16_t b, c;
    uint8_t d[8];
};
constexpr Guid kEntete{0x75B22630, 0x668E, 0x11CF, {0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C}};
constexpr Guid kProprietes{0x8CABDCA1, 0xA947, 0x11CF, {0x8E, 0xE4, 0x00, 0xC0, 0x0C, 0x20, 0x53, 0x65}};
constexpr Guid kDescription{0x75B22633, 0x668E, 0x11CF, {0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C}};
constexpr Guid kDescriptionEtendue{0xD2D0A440, 0xE307, 0x11D2, {0x97, 0xF0, 0x00, 0xA0, 0xC9, 0x5E, 0xA8, 0x50}};
constexpr Guid kDonnees{0x75B22636, 0x668E, 0x11CF, {0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C}};

void Le(std::string& out, uint64_t v, int octets) {
    for (int i = 0; i < octets; ++i)
        out += static_cast<char>((v >> (8 * i)) & 0xFF);
}
void Ecrit(std::string& out, const Guid& g) {
    Le(out, g.a, 4);
    Le(out, g.b, 2);
    Le(out, g.c, 2);
    for (uint8_t x : g.d)
        out += static_cast<char>(x);
}
// UTF-16LE with its terminating NUL.
std::string Utf16(const std::string& utf8) {
    std::string out;
    for (size_t pos = 0; pos < utf8.size();) {
        char32_t c = 0;
        if (!DecodeUtf8(utf8, pos, c)) c = kCaractereRemplacement;
        if (c >= 0x10000) {
            c -= 0x10000;
            Le(out, 0xD800 + (c >> 10), 2);
            Le(out, 0xDC00 + (c & 0x3FF), 2);
        } else {
            Le(out, c, 2);
        }
    }
    Le(out, 0, 2);
    return out;
}
std::string Objet(const Guid& g, const std::string& corps) {
    std::string out;
    Ecrit(out, g);
    Le(out, 24 + corps.size(), 8);
    return out + corps;
}

template <typename L>
std::string Nom(Hasard& h, L prenoms, L noms) {
    return std::string(Un(h, prenoms)) + " " + Un(h, noms);
}

}  // namespace

std::string FichierAsf(const TagsWma& tags) {
    std::string proprietes;
    for (int i = 0; i < 16; ++i)
        proprietes += static_cast<char>(0x11 * (i + 1));  // file ID
    Le(proprietes, 0, 8);                                 // file size: not known beforehand
    Le(proprietes, 0, 8);                                 // creation date
    Le(proprietes, 0, 8);                                 // data packets
    Le(proprietes, static_cast<uint64_t>(tags.duree) * 10000000ULL, 8);  // play duration
    Le(proprietes, static_cast<uint64_t>(tags.duree) * 10000000ULL, 8);  // send duration
    Le(proprietes, 0, 8);                                                // preroll
    Le(proprietes, 2, 4);  // flags: seekable
    Le(proprietes, 0, 4);
    Le(proprietes, 0, 4);
    Le(proprietes, 0, 4);

    const std::string titre = Utf16(tags.titre);
    const std::string auteur = Utf16(tags.auteur);
    std::string description;
    Le(description, titre.size(), 2);
    Le(description, auteur.size(), 2);
    Le(description, 0, 2);
    Le(description, 0, 2);
    Le(description, 0, 2);
    description += titre + auteur;

    std::string objets = Objet(kProprietes, proprietes) + Objet(kDescription, description);
    int nbObjets = 2;
    if (!tags.etendus.empty()) {
        std::string etendue;
        Le(etendue, tags.etendus.size(), 2);
        for (const auto& [nom, valeur] : tags.etendus) {
            const std::string n = Utf16(nom);
            const std::string v = Utf16(valeur);
            Le(etendue, n.size(), 2);
            etendue += n;
            Le(etendue, 0, 2);  // Unicode string
            Le(etendue, v.size(), 2);
            etendue += v;
        }
        objets += Objet(kDescriptionEtendue, etendue);
        ++nbObjets;
    }
    std::string entete;
    Ecrit(entete, kEntete);
    Le(entete, 30 + objets.size(), 8);
    Le(entete, static_cast<uint64_t>(nbObjets), 4);
    entete += '\x01';
    entete += '\x02';
    std::string donnees;
    for (int i = 0; i < 16; ++i)
        donnees += static_cast<char>(0x11 * (i + 1));
    Le(donnees, 0, 8);  // packets
    donnees += '\x01';
    donnees += '\x01';
    return entete + objets + Objet(kDonnees, donnees);
}

BilanWma EcrireFichiersWmaDemo(const BibliothequeDemo& b, const std::string& dossier,
                               uint64_t graine) {
    namespace fs = std::filesystem;
    std::error_code ec;
    fs::create_directories(dossier, ec);
    Hasard h(graine);
    BilanWma bilan;
    for (const MorceauDemo& m : b.morceaux) {
        const CategorieDemo& c = b.categories[static_cast<size_t>(m.categorie)];
        if (c.habillage || !h.Chance(0.67)) continue;
        const bool francais = m.quota == 'O' || m.quota == '1';
        TagsWma t;
        t.titre = m.titre;
        if (m.artiste1 >= 0) t.auteur = b.artistes[static_cast<size_t>(m.artiste1)].nom;
        t.duree = m.duree;
        const auto prenoms = francais ? voc::PrenomsFrancais() : voc::PrenomsEtrangers();
        const auto noms = francais ? voc::NomsFrancais() : voc::NomsEtrangers();
        const std::string compositeur = Nom(h, prenoms, noms);
        std::string auteurs = Nom(h, prenoms, noms);
        if (h.Chance(0.3)) auteurs += "/" + Nom(h, prenoms, noms);
        const std::string isrc = std::string(francais ? "FR" : "GB") + "Z" +
                                 PadNumber(static_cast<int64_t>(h.Sous(100)), 2) +
                                 PadNumber(static_cast<int64_t>(h.Entre(10, 26)), 2) +
                                 PadNumber(static_cast<int64_t>(h.Sous(100000)), 5);
        const std::string editeur =
            m.label >= 0 ? "Éditions " + b.labels[static_cast<size_t>(m.label)].nom
                         : "Éditions " + std::string(Un(h, voc::NomsFrancais()));
        // One file in eight lacks a tag: the ISRC, the composer or the writers.
        const int manque = h.Chance(0.125) ? h.Entre(1, 3) : 0;
        if (manque != 1) t.etendus.emplace_back("WM/Composer", compositeur);
        if (manque != 2) t.etendus.emplace_back("WM/Writer", auteurs);
        if (manque != 3) t.etendus.emplace_back("WM/ISRC", isrc);
        t.etendus.emplace_back("WM/Publisher", editeur);
        const fs::path chemin = sys::CheminFs(dossier) / sys::CheminFs(m.cle + ".wma");
        std::ofstream out(chemin, std::ios::binary | std::ios::trunc);
        const std::string octets = FichierAsf(t);
        out.write(octets.data(), static_cast<std::streamsize>(octets.size()));
        if (!out) throw ErreurDemo("Impossible d'écrire " + sys::TexteChemin(chemin));
        ++bilan.fichiers;
        if (manque) ++bilan.incomplets;
    }
    return bilan;
}

std::string DossierSonsMusiqueDemo(int base) {
    return base == 1 ? "C:\\Sons\\Mus\\" : "C:\\Sons\\Base" + PadNumber(base, 2) + "\\Mus\\";
}

}  // namespace zl3::demo
