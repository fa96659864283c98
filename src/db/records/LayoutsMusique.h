// Record layouts of the music files: tracks, their broadcast history, the music events actually
// broadcast, artists, attributes (categories, voices, labels, …), the tracks' complementary keys,
// pointers and information records.
//
// Fields named "Champ" followed by their offset are kept as they are read: the statistics do not
// use them, and writing a record back must not change them.
#pragma once

#include "records/Field.h"

namespace zl3::rec {

// ---- FRAD022: tracks ----------------------------------------------------------------------------
// Keys: 0 = CleMorceau; 1 = first artist code; 2 = Champ018; 3 = Champ063; 4 = CodeLabel;
// 5 = first 20 characters of Titre, case-insensitive.
namespace Morceau {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CleMorceau", 8, 0),      // track key; its first 3 characters are the category
    decl::Block("CodesArtistes", 10, 8), // two artist codes of 5 characters (keys of FRAD020)
    decl::Text("Champ018", 5, 18),
    decl::Text("Titre", 40, 23),
    decl::Text("Champ063", 5, 63),
    decl::Text("CodeLabel", 5, 68),      // record label: attribute type "LABEL" of FRAD021
    decl::Text("Champ073", 5, 73), decl::Text("Champ078", 5, 78), decl::Text("Champ083", 5, 83),
    decl::Text("Champ088", 3, 88),
    decl::Text("Champ091", 1, 91),
    decl::Block("Champ092", 3, 92),
    decl::Text("Champ095", 1, 95), decl::Text("Champ096", 1, 96),
    decl::Block("Champ097", 3, 97),
    decl::Text("Champ100", 3, 100),
    decl::Text("Duree", 4, 103),         // length of the track in seconds, digits
    decl::Text("QuotaFlag", 1, 107),     // "O" French, "1" new talent, "N" foreign, "-" instrumental
    decl::Text("Champ108", 5, 108),
    decl::Block("Champ113", 75, 113),
    // From offset 188 the fields follow one another by their widths: 80 fields, which with the
    // 20 above make the record's 100. The widths land exactly on the places that the call layer
    // and the statistics rely on (218, 432, 465, 856), put the int16 at the even offset 854 and
    // fill the record to 900 bytes, so the track record has no gap. Those four places are given
    // as offsets: a width too many would overlap one of them and not compile, a width too few
    // would leave a gap, which the check after the table refuses.
    decl::Text("Champ188", 4), decl::Text("Champ192", 3), decl::Text("Champ195", 5),
    decl::Text("Champ200", 5), decl::Text("Champ205", 1), decl::Text("Champ206", 1),
    decl::Text("Champ207", 1), decl::Text("Champ208", 10),
    // Attribute code (type "CATEG" of FRAD021) of a secondary category; the main category is the
    // first 3 characters of the track key.
    decl::Text("CodeCategorieSecondaire", 5, 218),
    decl::Text("Champ223", 5), decl::Text("Champ228", 1), decl::Text("Champ229", 1),
    decl::Text("Champ230", 2), decl::Text("Champ232", 2), decl::Text("Champ234", 2),
    decl::Text("Champ236", 1), decl::Text("Champ237", 4), decl::Text("Champ241", 1),
    decl::Text("Champ242", 1), decl::Text("Champ243", 10), decl::Text("Champ253", 36),
    decl::Text("Champ289", 69), decl::Block("Champ358", 53), decl::Text("Champ411", 1),
    decl::Text("Champ412", 4), decl::Block("Champ416", 16),
    decl::Text("Clip", 1, 432),          // video clip flag
    decl::Text("Champ433", 1), decl::Text("Champ434", 1), decl::Text("Champ435", 1),
    decl::Text("Champ436", 1), decl::Text("Champ437", 8), decl::Text("Champ445", 8),
    decl::Text("Champ453", 5), decl::Text("Champ458", 1), decl::Text("Champ459", 6),
    // Two-digit number that the call layer rewrites as "00" after a read when its value is 0.
    decl::Text("CodeNumerique", 2, 465),
    decl::Text("Champ467", 1), decl::Text("Champ468", 1), decl::Text("Champ469", 1),
    decl::Text("Champ470", 8), decl::Block("Champ478", 50), decl::Text("Champ528", 8),
    decl::Text("Champ536", 1), decl::Text("Champ537", 1), decl::Text("Champ538", 1),
    decl::Text("Champ539", 8), decl::Text("Champ547", 1), decl::Text("Champ548", 8),
    decl::Text("Champ556", 8), decl::Text("Champ564", 8), decl::Text("Champ572", 1),
    decl::Text("Champ573", 17), decl::Text("Champ590", 15), decl::Text("Champ605", 15),
    decl::Text("Champ620", 15), decl::Text("Champ635", 9), decl::Text("Champ644", 1),
    decl::Block("Champ645", 40), decl::Text("Champ685", 1), decl::Text("Champ686", 2),
    decl::Text("Champ688", 2), decl::Text("Champ690", 2), decl::Text("Champ692", 1),
    decl::Block("Champ693", 50), decl::Block("Champ743", 50), decl::Text("Champ793", 2),
    decl::Text("Champ795", 10), decl::Text("Champ805", 20), decl::Text("Champ825", 1),
    decl::Text("Champ826", 10), decl::Text("Champ836", 10), decl::Text("Champ846", 8),
    decl::Int16("Champ854"),
    // Legacy migration mark: "O" makes the call layer set QuotaFlag to "1", then it is blanked.
    decl::Text("Migration", 1, 856),
    decl::Text("Champ857", 1), decl::Text("Champ858", 3), decl::Block("Champ861", 30),
    decl::Text("Champ891", 8), decl::Text("Champ899", 1),
});
// clang-format on

inline constexpr Layout kLayout{"Morceau", 22, 900, 900, kFields};
static_assert(kFields.size() == 100 && CoveredLength(kLayout) == kLayout.length,
              "the track record's fields must fill its 900 bytes");

inline constexpr Field CleMorceau = decl::Named(kFields, "CleMorceau");
inline constexpr Field CodesArtistes = decl::Named(kFields, "CodesArtistes");
inline constexpr Field Titre = decl::Named(kFields, "Titre");
inline constexpr Field CodeLabel = decl::Named(kFields, "CodeLabel");
inline constexpr Field Duree = decl::Named(kFields, "Duree");
inline constexpr Field QuotaFlag = decl::Named(kFields, "QuotaFlag");
inline constexpr Field CodeCategorieSecondaire = decl::Named(kFields, "CodeCategorieSecondaire");
inline constexpr Field Clip = decl::Named(kFields, "Clip");
inline constexpr Field CodeNumerique = decl::Named(kFields, "CodeNumerique");
inline constexpr Field Migration = decl::Named(kFields, "Migration");

// Category code: the first 3 characters of the track key ("000"–"999" music, "JIN", "LIN"
// station imaging).
inline constexpr Field CodeCategorie = SubField(CleMorceau, 0, 3, "CodeCategorie");
// The two artist codes of CodesArtistes; key 1 of the file holds only the first.
inline constexpr Field CodeArtiste1 = SubField(CodesArtistes, 0, 5, "CodeArtiste1");
inline constexpr Field CodeArtiste2 = SubField(CodesArtistes, 5, 5, "CodeArtiste2");

inline constexpr std::size_t kLongueurCleTitre = 20;  // key 5 holds the title's first 20

}  // namespace Morceau

// ---- FRAD047: broadcast history, one record per track ----------------------------------------
// Key 0 = bytes 0..10: the track key, the suffix "M", blanks. The structure is 4085 bytes long;
// the file's records are 4082, so the last 3 bytes of Champ4048 are never stored.
namespace HistoriqueDiffusion {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("DebutCle", 1, 0),        // first character of the key
    decl::Text("SuiteCle", 10, 1),       // rest of the key: track key and suffix, blank-padded
    decl::Text("Champ011", 1, 11),
    decl::Text("Champ012", 1, 12),
    // byte 13: alignment gap before the integer
    decl::Int16("NbPassages", 14),       // number of broadcast entries written in Passages
    decl::Text("Passages", 4032, 16),    // 672 broadcast times of 6 characters
    decl::Text("Champ4048", 37, 4048),
});
// clang-format on

inline constexpr Layout kLayout{"HistoriqueDiffusion", 47, 4085, 4082, kFields};

inline constexpr Field DebutCle = decl::Named(kFields, "DebutCle");
inline constexpr Field SuiteCle = decl::Named(kFields, "SuiteCle");
inline constexpr Field NbPassages = decl::Named(kFields, "NbPassages");
inline constexpr Field Passages = decl::Named(kFields, "Passages");
inline constexpr Field Cle = Join(DebutCle, SuiteCle, "Cle");

inline constexpr char kSuffixeMorceau = 'M';  // follows the 8-character track key in Cle
inline constexpr std::size_t kLongueurPassage = 6;
inline constexpr int kNbMaxPassages = 672;  // entries that Passages can hold

}  // namespace HistoriqueDiffusion

// ---- FRAD028: music events actually broadcast (one file per station) -------------------------
// Keys: 0 = Date to Champ014; 1 = CleMorceau; 2 = Date2 to Seconde2.
namespace EvenementMusical {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("Date", 8, 0),            // "yyyyMMdd"
    decl::Text("Heure", 2, 8), decl::Text("Minute", 2, 10), decl::Text("Seconde", 2, 12),
    decl::Text("Champ014", 2, 14),       // a fourth two-digit time group
    decl::Text("Champ016", 80, 16),
    decl::Text("CleMorceau", 8, 96),
    decl::Text("Champ104", 1, 104), decl::Text("Champ105", 1, 105),
    decl::Text("Champ106", 2, 106),
    decl::Text("Date2", 8, 108),         // a second date and time of the event
    decl::Text("Heure2", 2, 116), decl::Text("Minute2", 2, 118), decl::Text("Seconde2", 2, 120),
    decl::Text("Champ122", 4, 122),
    decl::Text("Champ126", 15, 126),
    decl::Text("Champ141", 9, 141),
});
// clang-format on

inline constexpr Layout kLayout{"EvenementMusical", 28, 150, 150, kFields};

inline constexpr Field Date = decl::Named(kFields, "Date");
inline constexpr Field Heure = decl::Named(kFields, "Heure");
inline constexpr Field Minute = decl::Named(kFields, "Minute");
inline constexpr Field Seconde = decl::Named(kFields, "Seconde");
inline constexpr Field CleMorceau = decl::Named(kFields, "CleMorceau");
inline constexpr Field Date2 = decl::Named(kFields, "Date2");

}  // namespace EvenementMusical

// ---- FRAD020: artists (one file per station) --------------------------------------------------
// Keys: 0 = CodeArtiste; 1 = Champ005; 2 = first 20 characters of NomArtiste, case-insensitive;
// 3 = Champ045 followed by the first 20 characters of NomArtiste.
namespace Artiste {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CodeArtiste", 5, 0),
    decl::Text("Champ005", 10, 5),
    decl::Text("NomArtiste", 30, 15),    // names keep "&&" where a single "&" is meant
    decl::Text("Champ045", 1, 45),
    decl::Text("Champ046", 4), decl::Text("Champ050", 8), decl::Text("Champ058", 1),
    decl::Text("Champ059", 2), decl::Text("Champ061", 2), decl::Text("Champ063", 2),
    decl::Text("Champ065", 80),
    // Legacy migration value: "1" or "2" are moved into FlagMigration by the call layer.
    decl::Text("Migration", 1, 145),
    decl::Text("Champ146", 30), decl::Text("Champ176", 2), decl::Text("Champ178", 12),
    decl::Text("Champ190", 1),
    // byte 191: alignment gap before the integer
    decl::Int16("Champ192", 192),
    decl::Text("Champ194", 32), decl::Text("Champ226", 1), decl::Text("Champ227", 5),
    decl::Text("Champ232", 1), decl::Text("Champ233", 2), decl::Text("Champ235", 2),
    decl::Text("Champ237", 2),
    decl::Block("Champ239", 25, 239),
    decl::Text("FlagMigration", 1, 264), // "1" or "O", set from Migration
    decl::Block("Champ265", 35),         // to the end of the record
});
// clang-format on

inline constexpr Layout kLayout{"Artiste", 20, 300, 300, kFields};

inline constexpr Field CodeArtiste = decl::Named(kFields, "CodeArtiste");
inline constexpr Field NomArtiste = decl::Named(kFields, "NomArtiste");
inline constexpr Field Migration = decl::Named(kFields, "Migration");
inline constexpr Field FlagMigration = decl::Named(kFields, "FlagMigration");

}  // namespace Artiste

// ---- FRAD021: attributes — voices, groups, sounds, categories, labels, parameters ------------
// Keys: 0 = TypeAttribut + CodeAttribut; 1 = TypeAttribut followed by the first 10 characters of
// Libelle. Attribute types seen by the statistics: "CATEG" (category labels), "LABEL" (record
// labels), "CAT_2" (category parameters whose text holds flags such as "OY").
namespace Categorie {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("TypeAttribut", 5, 0),
    decl::Text("CodeAttribut", 5, 5),
    decl::Text("Libelle", 30, 10),
    decl::Text("Parametres", 940, 40),   // parameter text of the attribute
});
// clang-format on

inline constexpr Layout kLayout{"Categorie", 21, 980, 980, kFields};

inline constexpr Field TypeAttribut = decl::Named(kFields, "TypeAttribut");
inline constexpr Field CodeAttribut = decl::Named(kFields, "CodeAttribut");
inline constexpr Field Libelle = decl::Named(kFields, "Libelle");
inline constexpr Field Parametres = decl::Named(kFields, "Parametres");
inline constexpr Field Cle = Join(TypeAttribut, CodeAttribut, "Cle");

}  // namespace Categorie

// ---- FRAD029: complementary keys of tracks ----------------------------------------------------
// Keys: 0 = bytes 0..17; 1 = bytes 0..9 followed by the first 20 characters of Champ018,
// case-insensitive; 2 = CleMorceau.
namespace MorceauCles {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("Champ000", 5, 0),
    decl::Text("Champ005", 5, 5),
    decl::Text("CleMorceau", 8, 10),
    decl::Text("Champ018", 40, 18),
    decl::Text("Champ058", 42, 58),
});
// clang-format on

inline constexpr Layout kLayout{"MorceauCles", 29, 100, 100, kFields};

inline constexpr Field CleMorceau = decl::Named(kFields, "CleMorceau");

}  // namespace MorceauCles

// ---- FRAD031: start, stop and loop pointers of tracks -----------------------------------------
// Key 0 = bytes 0..10.
namespace Pointeurs {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CleMorceau", 8, 0),
    decl::Text("Champ008", 1, 8),
    decl::Text("Champ009", 2, 9),
    decl::Text("Champ011", 10, 11),
    decl::Text("Champ021", 10, 21),
    decl::Text("Champ031", 2, 31),
    decl::Text("Champ033", 1, 33),
    decl::Text("Champ034", 10, 34),
    decl::Text("Champ044", 6, 44),
});
// clang-format on

inline constexpr Layout kLayout{"Pointeurs", 31, 50, 50, kFields};

inline constexpr Field CleMorceau = decl::Named(kFields, "CleMorceau");

}  // namespace Pointeurs

// ---- FRAD032: complementary information on tracks (one file per station) ----------------------
// Key 0 = CleMorceau + TypeInfo.
namespace MorceauInfos {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CleMorceau", 8, 0),
    decl::Text("TypeInfo", 2, 8),        // kTypeVersions: Zone lists versions of the same song
    decl::Text("Zone", 240, 10),
});
// clang-format on

inline constexpr Layout kLayout{"MorceauInfos", 32, 250, 250, kFields};

inline constexpr Field CleMorceau = decl::Named(kFields, "CleMorceau");
inline constexpr Field TypeInfo = decl::Named(kFields, "TypeInfo");
inline constexpr Field Zone = decl::Named(kFields, "Zone");
inline constexpr Field Cle = Join(CleMorceau, TypeInfo, "Cle");

inline constexpr std::string_view kTypeVersions = "05";
inline constexpr int kNbVersions = 9;  // track keys listed in a versions record
inline constexpr std::size_t kLongueurVersion = 8;

// Entry `index` (0 to kNbVersions − 1) of a versions record: the track key at character
// 1 + 8·index of Zone. Throws std::out_of_range for another index.
constexpr Field Version(int index) {
    if (index < 0 || index >= kNbVersions) throw std::out_of_range("version index");
    return SubField(Zone, static_cast<std::size_t>(index) * kLongueurVersion, kLongueurVersion,
                    "Version");
}

}  // namespace MorceauInfos

}  // namespace zl3::rec
