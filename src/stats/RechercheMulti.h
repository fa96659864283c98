// Track search by several criteria together (FrmListeRechercheMulti), a track's broadcasts from
// its history, and the broadcasts behind one line of the advertising grid (FrmDetailDonnees).
//
// Both walks run on the caller's thread and yield to the event loop like the search (every 20
// tracks, every 50 log records); the record buffer of the walked file is kept across each yield.
// Statuses of the database layer other than found / not found / end of file are traced through
// ErreurBTrieve and make the result incomplete (`erreurs`), never a message box.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "Grid.h"

namespace zl3 {

// Every criterion left empty matches every track; those given must all match.
struct CriteresMorceaux {
    std::string mots;         // words of the title, each found in it (ASCII letters: any case)
    std::string artiste;      // found in the first or the second artist's name (any case)
    std::string categorie;    // category code (first 3 characters of the key) or found in its label
    std::string classeQuota;  // quota flag: "O", "1", "N", "-"; "?" = none of those
    std::string cleDebut;     // key range, inclusive; the end key covers every key it begins
    std::string cleFin;
    DateTime debut;           // period of the broadcast counts
    DateTime fin;
    int station = 1;  // 1-based
    int source = 0;   // caller slot; the files needed are opened when they are not
    std::function<bool()> arret;  // asked after each yield: true stops the walk
};

struct MorceauTrouve {
    std::string cle;
    std::string titre;
    std::string artistes;  // "first + second" when there are two
    std::string categorie;  // label
    std::string classeQuota;  // the flag as stored
    std::string duree;      // "m:ss"
    long diffusions = 0;    // broadcasts over the period, counted as the reports count them
};

struct ResultatMorceaux {
    std::vector<MorceauTrouve> morceaux;  // in key order
    int morceauxLus = 0;
    bool arretee = false;
    std::vector<std::string> erreurs;  // read errors: the list is incomplete
};

ResultatMorceaux RechercheMorceaux(const CriteresMorceaux& c);

// The results grid: "Clé", "Titre", "Artistes", "Catégorie", "Quota", "Durée", "Diffusions".
enum ColonnesMorceaux {
    kMulCle = 1, kMulTitre, kMulArtistes, kMulCategorie, kMulQuota, kMulDuree, kMulDiffusions,
    kNbColonnesMulti = kMulDiffusions
};
void InitTableurRechercheMulti(Grid& g);
void RemplirTableurRechercheMulti(Grid& g, const std::vector<MorceauTrouve>& morceaux);

// The broadcasts of one track from its history record, within the period (inclusive days), the
// newest first. Entries that are not valid times are left out; `erreur` names a read error.
std::vector<DateTime> DiffusionsMorceau(int source, int station, const std::string& cle,
                                        const DateTime& debut, const DateTime& fin,
                                        std::string* erreur = nullptr);
// Grid "Date", "Heure" of those broadcasts.
void RemplirTableurDiffusions(Grid& g, const std::vector<DateTime>& diffusions);

// ---- The broadcasts behind a line of the advertising grid -------------------------------------

struct ParametresDetail {
    DateTime debut;
    DateTime fin;
    int station = 1;
    int source = 0;
    // The line's identity, as the advertising grid shows it (columns 1, 5 and 7).
    std::string client;
    std::string message;
    std::string zone;
    std::function<bool()> arret;
};

struct BilanDetail {
    int diffusions = 0;
    bool arretee = false;
    std::vector<std::string> erreurs;
};

// Fills `detail` ("Date", "Heure", "Message", "Zone", one row per broadcast in log order): the
// log records of the period that the advertising report counts in that line's column 10.
BilanDetail DetailLignePublicite(const ParametresDetail& p, Grid& detail);
void InitTableurDetail(Grid& g);

}  // namespace zl3
