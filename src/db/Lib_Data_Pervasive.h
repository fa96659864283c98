// Lib_Data_Pervasive: every call to the suite's database goes through BTRieve, which addresses a
// file by its catalogue index and a station, keeps the file's position block per caller slot,
// retries on lock and conflict statuses, normalises a few legacy values after reads, keeps a
// short per-caller history of calls for diagnostics, and reports unexpected statuses.
//
// Below it, BTRieve_Reel makes the single call to the Btrieve entry point with the record buffer
// of the addressed file. The entry point is the project's own engine; tests may replace it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace zl3 {

inline constexpr int kNbSources = 20;   // caller slots
inline constexpr int kNbStations = 10;  // stations per base
inline constexpr int kNbFichiers = 51;  // catalogue indexes 0..50
inline constexpr int kLongueurPosBloc = 128;
inline constexpr int kLongueurTamponCle = 255;

// Btrieve operation codes used by the layer.
enum OperationBtr : int16_t {
    kBtrOpen = 0,
    kBtrClose = 1,
    kBtrInsert = 2,
    kBtrUpdate = 3,
    kBtrDelete = 4,
    kBtrGetEqual = 5,
    kBtrGetNext = 6,
    kBtrGetPrevious = 7,
    kBtrGetGreater = 8,
    kBtrGetGreaterOrEqual = 9,
    kBtrGetLess = 10,
    kBtrGetLessOrEqual = 11,
    kBtrGetFirst = 12,
    kBtrGetLast = 13,
    kBtrCreate = 14,
    kBtrStat = 15,
    kBtrBeginTransaction = 19,
    kBtrEndTransaction = 20,
    kBtrAbortTransaction = 21,
    kBtrRelease = 25,
    kBtrReset = 28,
    kBtrBeginConcurrentTransaction = 1019,
};

// Catalogue indexes of the files the statistics read.
enum FichierBtr : int {
    kFichierCommerciaux = 1,     // FRAD001 salespeople
    kFichierClients = 3,         // FRAD003
    kFichierContrats = 5,        // FRAD005 contract headers
    kFichierLogPub = 18,         // FRAD018 advertising broadcast log
    kFichierArtistes = 20,       // FRAD020
    kFichierAttributs = 21,      // FRAD021 categories, labels, parameters
    kFichierMorceaux = 22,       // FRAD022 tracks
    kFichierMessages = 26,       // FRAD026 advertising messages
    kFichierInfosMorceaux = 32,  // FRAD032 versions lists
    kFichierHistorique = 47,     // FRAD047 broadcast history
};

// ---- Module-wide call variables, as the suite's callers use them ----------------------------
inline int16_t OperationBTrieve = 0;
inline std::string CleBTrieve;  // key buffer (Windows-1252 bytes)
inline int16_t NoCleBTrieve = 0;
inline int FichierBTrieve = 0;
inline int16_t StatutBTrieve = 0;  // last status: 0 found, 4 key not found, 9 end of file
inline bool TransactionEnCours = false;
inline bool AbandonConflit = false;
inline bool ErreursSilencieuses = false;
inline bool TestCleActif = false;
// Set when the status of the last BTRieve call has been reported already, so that a caller's own
// report of the same status does not show it twice.
inline bool StatutDejaSignale = false;

// The Btrieve entry point: BTRCALL(operation, positionBlock, dataBuffer, dataLength, keyBuffer,
// keyLength, keyNumber) -> status.
using FonctionBtrcall =
    std::function<int16_t(uint16_t, void*, void*, uint32_t*, void*, uint8_t, int8_t)>;
// Replaces the entry point (tests); an empty function restores the engine.
void DefinirBtrcall(FonctionBtrcall fonction);

// Returns the status (also left in StatutBTrieve). `cle` is in/out: after a read it holds the
// key found. `station` is 1-based (1..10; 0 is taken as 1).
int16_t BTRieve(int source, int16_t operation, std::string& cle, int16_t noCle, int fichier,
                int station, const std::string& sourceText);
// The single call with the file's record buffer.
int16_t BTRieve_Reel(int fichier, int16_t operation, char* positionBloc, uint32_t& longueur,
                     std::string& cle, int16_t noCle);
// Diagnostic: a key buffer shorter than the addressed key is shown.
void BTrieveTestCle(int16_t operation, const std::string& cle, int16_t noCle, int fichier,
                    const std::string& sourceText);

// The record buffer of catalogue file `fichier`: at least as long as both its layout and the
// catalogue's record length. Empty for an index outside 0..50.
std::span<uint8_t> TamponEnreg(int fichier);

// The per-caller history of the last six calls, newest first, as text built when asked: the
// lines returned are those of the calls made so far (read it again after further calls).
const std::array<std::string, 6>& HistoriqueBTrieve(int source);

// ---- Files: open and close per caller slot and station ---------------------------------------

// Data folder the files are opened in (native, trailing separator). Defaults to the base's
// Dossier_Data once the configuration is resolved; may be set explicitly.
void DefinirDossierData(const std::string& dossier);
std::string DossierData();

bool FichierOuvert(int source, int station, int fichier);
std::string CheminFichier(int source, int station, int fichier);

void FichierPervasiveOuvrir(int source, int premiereStation, int derniereStation, int fichier,
                            int modeOuverture);
void FichierPervasiveFermer(int source, int premiereStation, int derniereStation, int fichier);
bool OuvertureFichierBTrieve(int source, int fichier, const std::string& chemin, uint32_t longueur,
                             int station, int modeOuverture);
bool FermetureFichierBTrieve(int source, int fichier, char* positionBloc, uint32_t longueur,
                             int station);
// Creates `chemin` empty with the structure of its catalogue entry (the index is read from the
// file name). Returns the status.
int16_t CreerFichierVide(const std::string& chemin);
// Closes every file of every caller slot (exit).
void FermerTousLesFichiers();

// Back to the initial state: every file forgotten (not closed), variables and histories cleared.
void ResetLibDataPervasive();

}  // namespace zl3
