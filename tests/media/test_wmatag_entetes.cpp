// Tag reader over hand-made ASF headers: the shapes no encoder writes (empty title with an
// author, non-string descriptors, leading data, damaged and hostile headers). Every case is read
// twice, from memory and from a file on disk, and both readings must agree.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "AsfBuilder.h"
#include "Cls_WMATag.h"
#include "Lib_Public.h"

namespace fs = std::filesystem;
using namespace zl3;
using namespace zl3::asf;

namespace {

using Tags = std::vector<std::pair<std::string, std::string>>;

struct Lecture {
    bool trouve = false;
    Tags tags;
    std::vector<std::string> erreurs;  // traced error lines, from "Err: " on
};

Lecture Resultat(bool trouve, const Cls_WMATag& t) {
    Lecture l{trouve, {}, {}};
    const auto noms = t.TagDescriptors();
    const auto valeurs = t.TagValues();
    EXPECT_EQ(static_cast<int>(noms.size()), t.TagCount());
    for (std::size_t i = 0; i < noms.size() && i < valeurs.size(); ++i)
        l.tags.emplace_back(noms[i], valeurs[i]);
    for (const std::string& line : Trace().lines)
        if (line.find("Err: ") != std::string::npos)
            l.erreurs.push_back(line.substr(line.find("Err: ")));
    return l;
}

fs::path Temporaire(const std::string& nom) {
    return fs::temp_directory_path() / ("zl3_wmatag_" + std::to_string(getpid()) + "_" + nom);
}

Lecture Lit(const Octets& octets) {
    ResetTrace();
    Cls_WMATag memoire;
    const Lecture enMemoire = Resultat(memoire.ReadWMATagsFromMemory(octets), memoire);

    const fs::path path = Temporaire("cas.wma");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(octets.data()),
               static_cast<std::streamsize>(octets.size()));
    ResetTrace();
    Cls_WMATag fichier;
    fichier.SetFilename(path.string());
    const Lecture surDisque = Resultat(fichier.ReadWMATags(), fichier);
    fs::remove(path);

    EXPECT_EQ(enMemoire.trouve, surDisque.trouve);
    EXPECT_EQ(enMemoire.tags, surDisque.tags);
    EXPECT_EQ(enMemoire.erreurs, surDisque.erreurs);
    return surDisque;
}

// The error number of the only traced error, 0 when none was traced.
long Erreur(const Lecture& l) {
    EXPECT_LE(l.erreurs.size(), 1u);
    return l.erreurs.empty() ? 0 : std::stol(l.erreurs.front().substr(5));
}

const Octets kDescription = Description(Utf16(u"Là où je t'emmènerai"), Utf16(u"Zoé"));
const Octets kEtendue = DescriptionEtendue(
    {Texte(u"WM/AlbumTitle", u"Été \U0001F3B5"), Dword(u"WM/TrackNumber", 5),
     Descripteur(Utf16(u"WM/Picture"), kOctets, {1, 2, 3}),
     Descripteur(Utf16(u"IsVBR"), kBooleen, {1, 0, 0, 0}),
     Descripteur(Utf16(u"WM/Q"), kQword, Octets(8, 7)), Descripteur(Utf16(u"WM/W"), kWord, {3, 0}),
     Texte(u"WM/Genre", u"Chanson")});
const Tags kTagsComplets = {{"WM/Title", "Là où je t'emmènerai"},
                            {"WM/Artist", "Zoé"},
                            {"WM/AlbumTitle", "Été 🎵"},
                            {"WM/Genre", "Chanson"}};

}  // namespace

TEST(WmaTagGuid, RegistryFormFromStoredBytes) {
    const std::vector<std::pair<Octets, std::string>> cas = {
        {{0x30, 0x26, 0xB2, 0x75, 0x8E, 0x66, 0xCF, 0x11, 0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE,
          0x6C},
         "75B22630-668E-11CF-A6D9-00AA0062CE6C"},
        {{0x40, 0xA4, 0xD0, 0xD2, 0x07, 0xE3, 0xD2, 0x11, 0x97, 0xF0, 0x00, 0xA0, 0xC9, 0x5E, 0xA8,
          0x50},
         "D2D0A440-E307-11D2-97F0-00A0C95EA850"},
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16},
         "04030201-0605-0807-090A-0B0C0D0E0F10"},
        {Octets(16, 0xab), "ABABABAB-ABAB-ABAB-ABAB-ABABABABABAB"},
    };
    for (const auto& [octets, texte] : cas)
        EXPECT_EQ(Cls_WMATag::ByteArrayToGUID(std::span<const std::uint8_t, 16>(octets.data(), 16)),
                  texte);
}

TEST(WmaTagEntetes, DescriptionAndStringDescriptorsOnly) {
    const Lecture l = Lit(Fichier({kDescription, kEtendue}));
    EXPECT_TRUE(l.trouve);
    EXPECT_EQ(l.tags, kTagsComplets);  // DWORD, byte array, Boolean, QWORD and WORD not listed
    EXPECT_TRUE(l.erreurs.empty());
}

TEST(WmaTagEntetes, LookupIgnoresCaseFirstOfSameNameWins) {
    Cls_WMATag t;
    ASSERT_TRUE(t.ReadWMATagsFromMemory(
        Fichier({kDescription, kEtendue,
                 DescriptionEtendue({Texte(u"wm/genre", u"Rock"), Texte(u"Année", u"1987"),
                                     Texte(u"ŒUVRE", u"n°5")})})));
    EXPECT_EQ(t.TagByDescriptor("wm/albumtitle"), "Été 🎵");
    EXPECT_EQ(t.TagByDescriptor("WM/GENRE"), "Chanson");
    EXPECT_EQ(t.TagByDescriptor("ANNÉE"), "1987");
    EXPECT_EQ(t.TagByDescriptor("œuvre"), "n°5");
    EXPECT_EQ(t.TagByDescriptor("WM/TrackNumber"), "");
    EXPECT_EQ(t.TagByDescriptor("WM/Genr"), "");
    EXPECT_EQ(t.TagDescriptors(),
              (std::vector<std::string>{"WM/Title", "WM/Artist", "WM/AlbumTitle", "WM/Genre",
                                        "wm/genre", "Année", "ŒUVRE"}));
}

TEST(WmaTagEntetes, EmptyTitleShiftsAuthorByOneByte) {
    // Author "AB": 41 00 42 00 00 00. Read from one byte on: 00 42 | 00 00 | (00) = U+4200.
    const Lecture vide = Lit(Fichier(
        {Description({}, Utf16(u"AB")), DescriptionEtendue({Texte(u"WM/Genre", u"Jazz")})}));
    EXPECT_EQ(vide.tags, (Tags{{"WM/Artist", "\u4200"}, {"WM/Genre", "Jazz"}}));
    // A title holding only its terminator (length 2) is listed empty and the author read in step.
    const Lecture court = Lit(Fichier({Description(Utf16(u""), Utf16(u"AB"))}));
    EXPECT_EQ(court.tags, (Tags{{"WM/Title", ""}, {"WM/Artist", "AB"}}));
    EXPECT_TRUE(vide.erreurs.empty() && court.erreurs.empty());
}

TEST(WmaTagEntetes, HeaderSearchedOverFirst2000Positions) {
    const Octets fichier = Fichier({kDescription});
    const Tags attendu = {{"WM/Title", "Là où je t'emmènerai"}, {"WM/Artist", "Zoé"}};
    // Leading bytes that begin like the header GUID do not stop the search.
    Octets leurre = Guid(kGuidEnTete);
    leurre.back() ^= 1;
    EXPECT_EQ(Lit(leurre + Octets(1999 - 16, 0x30) + fichier).tags, attendu);
    const Lecture trop = Lit(Octets(2000, 0x30) + fichier);
    EXPECT_FALSE(trop.trouve);
    EXPECT_TRUE(trop.tags.empty() && trop.erreurs.empty());
    // A header start cut short by the end of the file is not a header.
    EXPECT_FALSE(Lit(Octets(fichier.begin(), fichier.begin() + 29)).trouve);
    EXPECT_FALSE(Lit({}).trouve);

    Cls_WMATag t;  // the list is emptied by every read
    ASSERT_TRUE(t.ReadWMATagsFromMemory(fichier));
    EXPECT_FALSE(t.ReadWMATagsFromMemory(Octets(100, 0)));
    EXPECT_EQ(t.TagCount(), 0);
}

TEST(WmaTagEntetes, DamagedHeadersKeepTagsReadSoFar) {
    const Octets complet = Fichier({kDescription, kEtendue});
    const Tags description(kTagsComplets.begin(), kTagsComplets.begin() + 2);
    const std::size_t debutEtendue = 30 + kDescription.size();
    struct Cas {
        const char* nom;
        Octets octets;
        Tags tags;
        long erreur;
    };
    const std::vector<Cas> cas = {
        {"size 0 first", Fichier({Objet(kGuidDebitsFlux, {}, 0), kDescription}), {}, 321},
        {"size 0 after", Fichier({kDescription, Objet(kGuidDebitsFlux, {}, 0), kEtendue}),
         description, 321},
        {"size 23", Fichier({Objet(kGuidDebitsFlux, {}, 23), kDescription}), {}, 321},
        {"32-byte object", Fichier({Objet(kGuidDebitsFlux, Octets(8, 0)), kDescription, kEtendue}),
         kTagsComplets, 0},
        {"size high bits ignored",
         Fichier({Objet(kGuidDebitsFlux, Octets(8, 0), (1ull << 32) + 32), kDescription}),
         description, 0},
        {"description of 30 bytes",
         Fichier({Description(Utf16(u"T"), Utf16(u"A"), {}, {}, 30)}),
         {},
         321},
        {"cut in title", Octets(complet.begin(), complet.begin() + 30 + 34 + 10), {}, 62},
        {"cut in descriptors", Octets(complet.begin(), complet.begin() + debutEtendue + 40),
         description, 62},
        {"title past end", Fichier({Description(Utf16(u"T"), Utf16(u"A"), 0xFFFF)}), {}, 62},
        {"value past end",
         Fichier({DescriptionEtendue(
             {Texte(u"A", u"1"), Descripteur(Utf16(u"B"), kUnicode, Utf16(u"2"), 0xFFF0)})}),
         {{"A", "1"}},
         62},
        {"DWORD past end",
         Fichier({DescriptionEtendue({Descripteur(Utf16(u"B"), kDword, {}, 4), Texte(u"A", u"1")})},
                 {}, 30 + 24 + 2 + 10),
         {},
         62},
        // The walk never leaves the header: a count larger than the objects held runs into its
        // end, not into the data object after it; so does a header size too small.
        {"count past objects", Fichier({kDescription}, 5), description, 62},
        {"header size too small", Fichier({kDescription, kEtendue}, {}, debutEtendue), description,
         62},
        {"huge descriptor count",
         Fichier({DescriptionEtendue({Texte(u"A", u"1")}, 0xFFFF)}),
         {{"A", "1"}},
         62},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.nom);
        const Lecture l = Lit(c.octets);
        EXPECT_TRUE(l.trouve);
        EXPECT_EQ(l.tags, c.tags);
        EXPECT_EQ(Erreur(l), c.erreur);
    }
    const Lecture l = Lit(Fichier({Objet(kGuidDebitsFlux, {}, 0)}));
    ASSERT_EQ(l.erreurs.size(), 1u);
    EXPECT_EQ(l.erreurs[0].rfind("Err: 321 "), 0u);
    EXPECT_TRUE(l.erreurs[0].ends_with(" |Cls_WMATag:ReadWMATags")) << l.erreurs[0];
}

TEST(WmaTagEntetes, OddZeroAndUnterminatedLengths) {
    const Lecture l = Lit(Fichier({DescriptionEtendue({
        Descripteur({'A', 0, 'B', 0, 0}, kUnicode, {'C', 0, 'D'}),  // odd: the last byte dropped
        Descripteur({}, kUnicode, {}),                              // empty fields take no room
        Descripteur(Utf16(u"Z"), kDword, {}),
        Descripteur(Utf16(u"XY", false), kUnicode, Utf16(u"V")),  // no NUL: last unit cut
        Texte(u"Demi",
              u"\xD83C"
              u"x"),                                     // lone surrogate
        Texte(u"Nul", std::u16string_view(u"A\0B", 3)),  // text ends at its first NUL
        Texte(u"Fin", u"ok"),
    })}));
    EXPECT_EQ(
        l.tags,
        (Tags{
            {"AB", "C"}, {"", ""}, {"X", "V"}, {"Demi", "\uFFFDx"}, {"Nul", "A"}, {"Fin", "ok"}}));
    EXPECT_TRUE(l.erreurs.empty());
}

TEST(WmaTagEntetes, TagCountAndTextsAreBounded) {
    // 32 768 empty string descriptors of 6 bytes each: the 16-bit count stops at 32 767.
    const Lecture compte = Lit(
        Fichier({DescriptionEtendue(std::vector<Octets>(32768, Descripteur({}, kUnicode, {})))}));
    EXPECT_EQ(compte.tags.size(), 32767u);
    EXPECT_EQ(Erreur(compte), 6);
    // Values of 32 766 CJK characters (98 298 UTF-8 bytes each): the texts stop near 16 MB.
    const Octets grand =
        Descripteur(Utf16(u"N"), kUnicode, Utf16(std::u16string(32766, u'\u4E00')));
    const Lecture textes = Lit(Fichier({DescriptionEtendue(std::vector<Octets>(200, grand))}));
    EXPECT_EQ(textes.tags.size(), Cls_WMATag::kMaxOctetsTags / (2 + 3 * 32766));
    EXPECT_EQ(Erreur(textes), 7);
}

TEST(WmaTagEntetes, MissingFileIsTracedAndFalse) {
    ResetTrace();
    Cls_WMATag t;
    EXPECT_FALSE(t.ReadWMATags());  // no file name
    EXPECT_TRUE(Trace().lines.empty());
    t.SetFilename(Temporaire("absent.wma").string());
    EXPECT_FALSE(t.ReadWMATags());
    t.SetFilename(fs::temp_directory_path().string());
    EXPECT_FALSE(t.ReadWMATags());
    ASSERT_EQ(Trace().lines.size(), 2u);
    EXPECT_NE(Trace().lines[0].find("Err: 53 Fichier introuvable: "), std::string::npos);
    EXPECT_NE(Trace().lines[1].find("Err: 75 "), std::string::npos);
}
