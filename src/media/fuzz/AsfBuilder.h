// Builds the bytes of ASF headers, well-formed or deliberately damaged: the hand-made files of
// the tag reader's tests and the seeds of its fuzz target. Written apart from the reader: GUIDs
// are laid out from their registry text here, sizes and lengths are computed here unless a case
// forces a wrong one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zl3::asf {

using Octets = std::vector<std::uint8_t>;

inline constexpr const char* kGuidEnTete = "75B22630-668E-11CF-A6D9-00AA0062CE6C";
inline constexpr const char* kGuidDescription = "75B22633-668E-11CF-A6D9-00AA0062CE6C";
inline constexpr const char* kGuidDescriptionEtendue = "D2D0A440-E307-11D2-97F0-00A0C95EA850";
inline constexpr const char* kGuidDonnees = "75B22636-668E-11CF-A6D9-00AA0062CE6C";
inline constexpr const char* kGuidDebitsFlux = "7BF875CE-468D-11D1-8D82-006097C9A2B2";

// Descriptor value types.
enum Type : std::uint16_t {
    kUnicode = 0,
    kOctets = 1,
    kBooleen = 2,
    kDword = 3,
    kQword = 4,
    kWord = 5
};

inline void Entier(Octets& b, std::uint64_t v, int octets) {
    for (int i = 0; i < octets; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

inline Octets& operator+=(Octets& a, const Octets& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Octets operator+(Octets a, const Octets& b) {
    return a += b;
}

// "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" as stored: the first three groups little-endian.
inline Octets Guid(std::string_view texte) {
    const auto valeur = [&](std::size_t debut, std::size_t chiffres) {
        return std::stoull(std::string(texte.substr(debut, chiffres)), nullptr, 16);
    };
    Octets b;
    Entier(b, valeur(0, 8), 4);
    Entier(b, valeur(9, 4), 2);
    Entier(b, valeur(14, 4), 2);
    for (std::size_t p : {19u, 21u, 24u, 26u, 28u, 30u, 32u, 34u})
        b.push_back(static_cast<std::uint8_t>(valeur(p, 2)));
    return b;
}

// UTF-16LE text, with its NUL terminator unless told otherwise.
inline Octets Utf16(std::u16string_view texte, bool nul = true) {
    Octets b;
    for (char16_t c : texte)
        Entier(b, c, 2);
    if (nul) Entier(b, 0, 2);
    return b;
}

// An object: GUID, size (the true one unless forced), body.
inline Octets Objet(std::string_view guid, const Octets& corps,
                    std::optional<std::uint64_t> taille = {}) {
    Octets b = Guid(guid);
    Entier(b, taille.value_or(24 + corps.size()), 8);
    return b + corps;
}

// Content Description Object with a title and an author; the lengths are those of the bytes
// given unless forced. Copyright, description and rating are empty.
inline Octets Description(const Octets& titre, const Octets& auteur,
                          std::optional<std::uint16_t> longueurTitre = {},
                          std::optional<std::uint16_t> longueurAuteur = {},
                          std::optional<std::uint64_t> taille = {}) {
    Octets corps;
    Entier(corps, longueurTitre.value_or(static_cast<std::uint16_t>(titre.size())), 2);
    Entier(corps, longueurAuteur.value_or(static_cast<std::uint16_t>(auteur.size())), 2);
    Entier(corps, 0, 6);
    return Objet(kGuidDescription, corps + titre + auteur, taille);
}

// One descriptor of the Extended Content Description; the value length is that of the bytes
// given unless forced.
inline Octets Descripteur(const Octets& nom, std::uint16_t type, const Octets& valeur,
                          std::optional<std::uint16_t> longueurValeur = {}) {
    Octets b;
    Entier(b, nom.size(), 2);
    b += nom;
    Entier(b, type, 2);
    Entier(b, longueurValeur.value_or(static_cast<std::uint16_t>(valeur.size())), 2);
    return b + valeur;
}

inline Octets Texte(std::u16string_view nom, std::u16string_view valeur) {
    return Descripteur(Utf16(nom), kUnicode, Utf16(valeur));
}

inline Octets Dword(std::u16string_view nom, std::uint32_t valeur) {
    Octets v;
    Entier(v, valeur, 4);
    return Descripteur(Utf16(nom), kDword, v);
}

// Extended Content Description Object; the descriptor count is the true one unless forced.
inline Octets DescriptionEtendue(const std::vector<Octets>& descripteurs,
                                 std::optional<std::uint16_t> nombre = {}) {
    Octets corps;
    Entier(corps, nombre.value_or(static_cast<std::uint16_t>(descripteurs.size())), 2);
    for (const Octets& d : descripteurs)
        corps += d;
    return Objet(kGuidDescriptionEtendue, corps);
}

// Header Object holding `objets`, followed by the start of a Data Object and a few bytes of
// audio, as in a real file. Object count and header size are the true ones unless forced.
inline Octets Fichier(const std::vector<Octets>& objets, std::optional<std::uint32_t> nombre = {},
                      std::optional<std::uint64_t> taille = {}) {
    Octets corps;
    Entier(corps, nombre.value_or(static_cast<std::uint32_t>(objets.size())), 4);
    corps.push_back(0x01);  // the two reserved bytes of every header
    corps.push_back(0x02);
    for (const Octets& o : objets)
        corps += o;
    return Objet(kGuidEnTete, corps, taille) + Objet(kGuidDonnees, Octets(26 + 64, 0x4E));
}

}  // namespace zl3::asf
