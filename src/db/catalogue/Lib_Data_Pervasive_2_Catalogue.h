// Lib_Data_Pervasive_2 (catalogue): the 51 database files of the suite, known by their index 0
// to 50 and their code "FRAD" + 3 digits, with the creation parameters of each file (record
// length, page size, key definitions) and the rule that builds their file names.
//
// The catalogue is filled once at start by InitCatalogueFichiers(), before any file is opened.
// Indexes 8, 37, 38, 39 and 50 have no file: their entry is empty and they have no file name.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zl3 {

inline constexpr int kNbFichiersCatalogue = 51;
inline constexpr int kNbSegmentsCatalogue = 8;

// Btrieve key flags used by the catalogue.
inline constexpr int32_t kCleDoublons = 1;      // duplicates allowed
inline constexpr int32_t kCleModifiable = 2;    // the value may change on Update
inline constexpr int32_t kCleSegmentee = 16;    // the next segment belongs to the same key
inline constexpr int32_t kCleSansCasse = 1024;  // a-z compared as A-Z

struct SegmentCatalogue {
    int32_t Position = 0;   // 1-based byte position in the record
    int32_t Longueur = 0;   // bytes
    int32_t Attributs = 0;  // Btrieve key flags
    int32_t Reserve1 = 0;
    int32_t Reserve2 = 0;
};

struct FichierCatalogue {
    std::string Description;  // French description shown in messages (UTF-8)
    std::string Code;         // "FRAD" + 3 digits, padded with spaces to 8 characters
    char ParStation = 'N';    // 'O': one file per broadcast station, 'N': one file per base
    char Indicateur = 'N';    // 'O' on index 47 only; not used by this tool
    int32_t LongueurEnreg = 0;
    int32_t TaillePage = 0;
    int32_t NbCles = 0;
    int32_t Reserve1 = 0;
    int32_t Reserve2 = 0;
    std::array<SegmentCatalogue, kNbSegmentsCatalogue> Segments{};

    bool Vide() const { return Code.find_first_not_of(' ') == std::string::npos; }
};

// Fills the 51 entries (idempotent).
void InitCatalogueFichiers();

// Entry `index` (0..50); an index outside the catalogue or without a file gives an empty entry.
const FichierCatalogue& CatalogueFichier(int index);

// File name of entry `index` for `station` (0-based): the trimmed code followed by ".bt6"; the
// per-station files carry the station letter (char 65 + station) as 5th character:
// index 22 station 2 → "FRADC22.bt6". Empty for an index without a file.
std::string NomFichierBTrieve(int index, int station);

// Number of key segments actually used by the entry (segments with a length).
int NbSegmentsUtilises(const FichierCatalogue& fichier);

// Definition of one key: how many segments it spans and its total length in bytes.
// Both are 0 when the key number does not exist for that entry.
struct DefinitionCle {
    int NbSegments = 0;
    int Longueur = 0;
};
DefinitionCle DefinitionCleCatalogue(int index, int noCle);
DefinitionCle DefinitionCleCatalogue(const FichierCatalogue& fichier, int noCle);

// Btrieve's creation layout for the entry, as expected by the Create operation: a 16-byte file
// part (record length, page size, number of keys, ...) followed by one 16-byte part per key
// segment (position, length, flags, ...), all little-endian. Empty for an entry without a file.
std::vector<uint8_t> StructureCreation(const FichierCatalogue& fichier);

}  // namespace zl3
