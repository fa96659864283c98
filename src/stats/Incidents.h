// The "Incidents" tab: what is wrong in a station's data, so that a report built on it cannot be
// trusted as it stands.
//
// The check (VerifierDonnees) walks the same files as the reports, over the same period:
//   1. the tracks of the music categories ("000" to "999"), as the Quotas report walks them:
//      - a track whose quota flag is none of "O", "1", "N", "-" and that was broadcast in the
//        period: those broadcasts count nowhere;
//      - its history record: more entries than the report reads (672, 200 for "JIN"/"LIN") while
//        the oldest entry still read is after the start of the period, so broadcasts of the
//        period may have been dropped; entries that are not valid times;
//   2. every history record: a key whose track does not exist;
//   3. the advertising log (FRAD018) of the period: a record without client or with a client
//      unknown to FRAD003; each day's running order (FRAD027) against the log, spot by spot: a
//      spot planned more often than aired (not broadcast), a broadcast with no planned spot;
//   4. every status of the database layer other than found / not found / end of file, on any of
//      these files: the record could not be read.
// It yields to the event loop like the search (every 20 tracks, every 50 log records) and stops
// when asked. Statuses are recorded as incidents, never shown in message boxes.
//
// The list (ListeIncidents) is kept in the incidents file (NomFichierSettings("Incidents",
// ".Ini")) so that it survives a restart; it holds the latest kMaxIncidents incidents.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "Grid.h"

namespace zl3 {

enum class GenreIncident {
    QuotaInconnu = 1,      // broadcasts of a track whose quota flag counts nowhere
    HistoriqueTronque,     // more history entries than read: older broadcasts dropped
    PassageInvalide,       // history entries that are not valid times
    HistoriqueOrphelin,    // history record without its track
    LectureImpossible,     // a record the database layer could not read
    ClientInconnu,         // advertising broadcast without a known client
    SpotNonDiffuse,        // planned in the running order, not in the log
    DiffusionHorsConducteur,  // in the log, not planned in the running order
    TagsManquants,         // music-rights statement: a track's WMA file or tags missing
};
// The kind's label in the tab and in the file ("Quota inconnu", …).
const char* LibelleGenre(GenreIncident genre);
// The kind of a label; false when the text names none.
bool GenreDeLibelle(const std::string& libelle, GenreIncident& genre);

struct Incident {
    DateTime quand;       // when it was found
    int station = 1;      // 1-based
    GenreIncident genre = GenreIncident::LectureImpossible;
    std::string texte;    // what is wrong, in the user's words (UTF-8)
    std::string cle;      // key of the record concerned (track key, log key, …)
    bool operator==(const Incident&) const = default;
};

struct ParametresVerification {
    DateTime debut;
    DateTime fin;
    int station = 1;  // 1-based
    int source = 0;   // caller slot; the files the check needs are opened when they are not
    bool musique = true;
    bool publicite = true;
    // Asked after each yield: true stops the check (what was found so far is returned).
    std::function<bool()> arret;
};

struct BilanVerification {
    std::vector<Incident> incidents;
    int morceauxLus = 0;
    int historiquesLus = 0;
    int enregistrementsPubLus = 0;
    bool arretee = false;
};

BilanVerification VerifierDonnees(const ParametresVerification& p);

inline constexpr std::size_t kMaxIncidents = 5000;

// The incidents file of this instance: NomFichierSettings("Incidents", ".Ini").
std::string FichierIncidents();

// The incidents of the tab, kept in their file.
class ListeIncidents {
  public:
    // Reads `fichier` (missing: empty list). Lines that cannot be read are skipped and counted.
    void Charger(const std::string& fichier);
    // Writes the whole list to the file given to Charger (a temporary file renamed over it).
    // False, the file unchanged, when it cannot be written.
    bool Enregistrer() const;

    // Adds incidents found by a check, dropping those already listed (same station, kind, key
    // and text) and the oldest beyond kMaxIncidents; marks the new ones as not yet seen.
    // Returns how many were new.
    std::size_t Ajouter(const std::vector<Incident>& nouveaux);
    // Empties the list after the question "Voulez-vous effacer la liste des incidents ?"; true
    // when it was emptied (and the file written).
    bool Purger();

    const std::vector<Incident>& Liste() const { return liste_; }
    std::size_t NonVus() const { return nonVus_; }
    void MarquerVus() { nonVus_ = 0; }
    int LignesIllisibles() const { return illisibles_; }
    const std::string& Fichier() const { return fichier_; }

  private:
    std::string fichier_;
    std::vector<Incident> liste_;
    std::size_t nonVus_ = 0;
    int illisibles_ = 0;
};

// The incidents grid: columns "Date", "Heure", "Station", "Type", "Description", "Clé"; one row
// per incident, the newest first.
void InitTableurIncidents(Grid& grille);
void RemplirTableurIncidents(Grid& grille, const std::vector<Incident>& incidents);

}  // namespace zl3
