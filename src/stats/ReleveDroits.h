// The music-rights statement of a half-year: every music track the station aired, with its
// duration, artists, authors, composers, ISRC, publisher, record label and plays, ready to be
// filed with the rights society. The broadcasts are counted as the compliance verdict reads them
// (DiffusionsMusique.h: the music events when they cover the half-year, else the history), every
// broadcast of the period, whole day. Authors ("WM/Writer"), composers ("WM/Composer"), ISRC
// ("WM/ISRC") and publisher ("WM/Publisher") come from the tags of the track's WMA file, named by
// its key ("01000042.wma"), found in the base's music sound folders. A track without its file,
// or whose file lacks one of the writers, composer or ISRC tags, is an incident ("Tags
// manquants").
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "DiffusionsMusique.h"
#include "Grid.h"
#include "Incidents.h"

namespace zl3 {

struct ParametresReleve {
    int annee = 0;
    int semestre = 1;  // 1: January to June, 2: July to December
    int station = 1;   // 1-based
    int source = 0;    // caller slot; the track, history and events files are opened when not
    // Native folders searched for the tracks' files, in order (the base's music sound folders:
    // DossiersSonsMusique).
    std::vector<std::string> dossiersSons;
    std::optional<DateTime> maintenant;  // a half-year not over is counted up to it
    std::function<bool()> arret;
};

struct LigneReleve {
    std::string cle;
    std::string titre;
    std::string artistes;
    std::string duree;  // "m:ss" as the per-track reports show it
    std::string auteurs;
    std::string compositeurs;
    std::string isrc;
    std::string editeur;
    std::string label;
    long long passages = 0;
};

struct ReleveDroits {
    bool effectue = false;
    DateTime debut, fin;
    SourceComptage source = SourceComptage::Historique;
    std::string texteSource;
    std::vector<LigneReleve> lignes;  // the most played first, then by title and key
    std::vector<Incident> incidents;  // "Tags manquants", one per track
    std::vector<std::string> erreurs;
    bool incomplete = false;
};

// The non-empty music sound folders of base `base` (1-based) of the resolved configuration.
std::vector<std::string> DossiersSonsMusique(int base);

ReleveDroits EtablirReleveDroits(const ParametresReleve& p);

// Columns "Titre", "Durée", "Artiste", "Auteurs", "Compositeurs", "ISRC", "Editeur", "Label",
// "Passages"; one row per track (row header: its key).
void RemplirGrilleReleve(const ReleveDroits& r, Grid& grille);

// "ZL3_Releve_Droits_Station_" station "_" yyyy "_S" n.
std::string NomFichierReleve(int station, int annee, int semestre);

}  // namespace zl3
