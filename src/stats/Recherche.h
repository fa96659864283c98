// The search behind the main window's "Lancer" button: the music reports (Quotas, "Top
// Diffusion", "SACEM") walk the tracks and their broadcast history over a period; the advertising
// report walks the advertising broadcast log. The same button stops a running search.
//
// The search runs on the caller's thread and yields to the event loop every 20 tracks (and once
// per advertising record), so that the window stays responsive and a second click on the button
// can ask to stop. The counts found so far are written into the report's grid before a yield, at
// most ten times a second, and all of them at the end.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "DateTime.h"
#include "Grid.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Tableur.h"
#include "Rapport.h"

namespace zl3 {

struct ParametresRecherche {
    // The report, as the main window's tabs choose it (RapportDeOnglet; the "Incidents" tab and
    // unknown music sub-tabs start no search).
    Rapport rapport = Rapport::Quotas;
    DateTime debut;
    DateTime fin;
    int station = 1;  // 1-based
    int source = 0;   // caller slot of the database layer
    // Versions of one song (FRAD032 versions lists) are folded into the song's row of the
    // per-track reports.
    bool regrouperVersions = false;
};

struct BilanRecherche {
    int morceauxLus = 0;         // tracks read (music)
    long passagesComptes = 0;    // broadcasts counted (music)
    int enregistrementsLus = 0;  // log records read (advertising)
    int diffusionsComptees = 0;  // broadcasts counted (advertising)
    bool arretee = false;        // stopped by the user
    bool effectuee = false;      // a search ran
    // Read errors met on the way: the counts are those of the part read before them. One line
    // per error, file name and status text.
    bool incomplete = false;
    std::vector<std::string> erreurs;
};

// A row of the play counts (FrmStatsPassages): a track and its broadcasts over the period.
struct PassagesMorceau {
    std::string morceau;  // the track's key
    std::string titre;
    std::string artiste;  // both artists when there are two
    std::string categorie;
    long nb = 0;
};

// What makes a line of the advertising grid: the client's code (column 1), the commercial and
// message keys "spot/message" (column 5) and the zone "region/town" (column 7), from a log
// record. An empty client: the record is counted nowhere.
struct IdentiteLignePub {
    std::string client;
    std::string message;
    std::string zone;
};
IdentiteLignePub IdentiteDiffusionPub(std::span<const uint8_t> log);

// The warning of an incomplete report, as the grid's status and the command line show it.
std::string TexteRapportIncomplet(const std::vector<std::string>& erreurs);

class RechercheStats {
  public:
    RechercheStats(TableursMusique& musique, Grid& publicite);

    // Starts a search, or, while one runs, asks "Voulez-vous stopper la recherche ?".
    void CommandLancer_Click(const ParametresRecherche& parametres);

    bool EnCours() const { return enCours_; }
    bool ArretDemande() const { return arret_; }
    // Caption of the button: "Lancer", or "Stopper" while a search runs.
    const std::string& Caption() const { return caption_; }
    std::function<void(const std::string&)> onCaption;
    const BilanRecherche& Bilan() const { return bilan_; }
    // While set, a Quotas search also collects each counted track's broadcasts into this map
    // (by track key): the play counts, counted exactly as the Quotas report counts them.
    void CollecterPassages(std::map<std::string, PassagesMorceau>* passages) {
        passages_ = passages;
    }

  private:
    void DefinirCaption(const std::string& caption);
    // Yields to the event loop. Whatever runs meanwhile (another window, a timer) may read the
    // file being walked and so overwrite its record buffer, shared by every reader of that file:
    // the buffer of `fichier` is saved before and put back after.
    void Attendre(int fichier);
    void RechercheMusique(const ParametresRecherche& p, Rapport rapport);
    void RecherchePublicite(const ParametresRecherche& p);
    std::string ListeCategoriesTop(const ParametresRecherche& p);

    TableursMusique& musique_;
    Grid& publicite_;
    bool enCours_ = false;
    bool arret_ = false;
    std::string caption_ = "Lancer";
    BilanRecherche bilan_;
    std::map<std::string, PassagesMorceau>* passages_ = nullptr;
    // Run before a yield: writes what the walk has counted so far into the grid; at most once
    // every kIntervalleAffichageMs (stopwatch of the clock service), and at the first yield.
    static constexpr int64_t kIntervalleAffichageMs = 100;
    std::function<void()> avantAttente_;
    bool affichageFait_ = false;
    int64_t dernierAffichage_ = 0;
    std::vector<uint8_t> sauvegarde_;  // the record buffer kept over a yield
};

// The play counts of FrmStatsPassages over `p`'s period and station (the report of `p` is not
// used): a Quotas search of its own grids, whose per-track counts fill `passages` (built by
// InitGeneralStatsPassages), one row per broadcast track, the most broadcast first, then by
// title and key. The main window's grids are not touched. Returns the search's summary.
BilanRecherche CalculeStatsPassages(const ParametresRecherche& p, Grid& passages);

// Percentage text of a quota cell: count / base × 100 as "####0.0" followed by " %".
std::string TextePourcentage(long long count, long long base);
// Fills the "Total" row (sums of the count columns) and the percentages of every row.
void TotauxEtPourcentages(Grid& quotas);

// Catalogue files the music reports and the advertising report read.
inline constexpr int kFichiersMusique[] = {kFichierArtistes, kFichierAttributs, kFichierMorceaux,
                                           kFichierInfosMorceaux, kFichierHistorique};
inline constexpr int kFichiersPublicite[] = {kFichierCommerciaux, kFichierClients, kFichierContrats,
                                             kFichierLogPub, kFichierMessages};
// Every file a search may read.
inline constexpr int kFichiersRecherche[] = {
    kFichierCommerciaux,   kFichierClients,   kFichierContrats, kFichierLogPub,
    kFichierArtistes,      kFichierAttributs, kFichierMorceaux, kFichierMessages,
    kFichierInfosMorceaux, kFichierHistorique};
// Opens them for stations `premiere`..`derniere` under caller slot `source` (the versions file
// for writing, the others read-only); closes them.
void OuvrirFichiersRecherche(int source, int premiere, int derniere);
void FermerFichiersRecherche(int source, int premiere, int derniere);

}  // namespace zl3
