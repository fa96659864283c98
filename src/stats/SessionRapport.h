// A report session: what a window or a command needs around a search — the base whose database is
// read, the station range whose files are open under the caller's slot, whether the files a
// report cannot do without are open — and the correspondence between reports and the main
// window's tabs. zl3-stats and the main window both use it.
//
//   SessionRapport session(source);
//   if (!session.Ouvrir(base, station, station)) …   // data folder of the base, files opened
//   if (!session.Pret(rapport)) …                     // the report's indispensable files
//   … RechercheStats::CommandLancer_Click(parameters with session.Source()) …
//   // files closed by Fermer() or when the session goes, whatever happened in between
#pragma once

#include <string>
#include <vector>

#include "Rapport.h"

namespace zl3 {

// The main window's tabs of a report: main tab "Musique" with its sub-tab 0 Quotas, 1 "Top
// Diffusion", 2 "SACEM"; main tab "Publicite" (sub-tab 0). RapportDeOnglet (Rapport.h) is the
// way back.
struct OngletsRapport {
    std::string ongletMain;
    int sousOngletMusique = 0;
};
OngletsRapport OngletsDuRapport(Rapport rapport);

// The catalogue files a report cannot do without (the others only add names to its rows).
std::vector<int> FichiersIndispensables(Rapport rapport);

class SessionRapport {
  public:
    explicit SessionRapport(int source) : source_(source) {}
    ~SessionRapport();
    SessionRapport(const SessionRapport&) = delete;
    SessionRapport& operator=(const SessionRapport&) = delete;

    // Reads base `base` (1-based) of the resolved configuration: its data folder becomes the
    // database layer's, and the files a search may read are opened for stations `premiere` to
    // `derniere` (1-based) under the session's slot, after closing what the session had open.
    // False when the base is not configured or the station range is not the base's; each file
    // that could not be opened has been reported by the database layer.
    bool Ouvrir(int base, int premiere, int derniere);
    // Closes every file the session opened; nothing when none.
    void Fermer();

    bool Ouverte() const { return ouverte_; }
    int Source() const { return source_; }
    int Base() const { return base_; }
    int PremiereStation() const { return premiere_; }
    int DerniereStation() const { return derniere_; }
    const std::string& DossierData() const { return dossierData_; }

    // True when the files `rapport` cannot do without are open for `station`.
    bool Pret(Rapport rapport, int station) const;
    // Their names (FRADB22.bt6, …) when they are not, for a message.
    std::vector<std::string> FichiersManquants(Rapport rapport, int station) const;

  private:
    int source_;
    bool ouverte_ = false;
    int base_ = 0;
    int premiere_ = 0;
    int derniere_ = 0;
    std::string dossierData_;
};

}  // namespace zl3
