// The broadcasts of a station's music tracks ("000" to "999") as the compliance verdict and the
// music-rights statement count them: from the music events actually aired (FRAD028) when the
// station's file covers the period from its first day, otherwise from the history records
// (FRAD047, at most 672 entries per track, the newest kept).
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "DateTime.h"

namespace zl3 {

inline constexpr int kFichierEvenementsMusicaux = 28;  // FRAD028

enum class SourceComptage { Evenements, Historique };

// Opens, silently, those of `fichiers` that are not open for the station under the caller's
// slot (a missing file is no error here: the caller checks Ouvert), and closes them when it goes.
class FichiersLus {
  public:
    FichiersLus(int source, int station, std::initializer_list<int> fichiers);
    ~FichiersLus();
    FichiersLus(const FichiersLus&) = delete;
    FichiersLus& operator=(const FichiersLus&) = delete;
    bool Ouvert(int fichier) const;

  private:
    int source_, station_;
    std::vector<int> ouverts_;
};

// Seconds since 1970-01-01 00:00:00 of a wall-clock time, and the day of one as "dd/MM/yyyy".
int64_t InstantDe(const DateTime& t);
std::string TexteDateInstant(int64_t instant);

struct MorceauMusique {
    std::string cle;  // trimmed
    std::string titre;
    std::string codeArtiste1, codeArtiste2, codeLabel;  // raw codes
    char quota = ' ';
    int duree = 0;  // seconds, 0 unknown
    // History: broadcasts written, read (capped), the oldest read.
    int ecrits = 0;
    int lus = 0;
    int64_t plusAncienLu = 0;
    // First broadcast found in the source used, and whether older broadcasts may be hidden (a
    // capped history has dropped its oldest ones).
    std::optional<int64_t> premiere;
    bool premiereIncertaine = false;
};

struct DiffusionMusique {
    int64_t instant = 0;
    int morceau = 0;  // index in DiffusionsMusique::morceaux
};

struct DiffusionsMusique {
    bool lisible = false;  // false: the track file could not be opened (texteSource says so)
    std::vector<MorceauMusique> morceaux;
    std::vector<DiffusionMusique> diffusions;  // of the source used, in time order
    SourceComptage source = SourceComptage::Historique;
    std::string texteSource;  // which source and why, in the user's words
    int64_t debutDonnees = 0;  // the earliest broadcast the source knows
    // Tracks whose history holds more broadcasts than it keeps and whose oldest entry kept is
    // after the period's start: "key title (N passages, K lus, depuis le dd/MM/yyyy)".
    std::vector<std::string> morceauxTronques;
    bool arretee = false;
};

// Reads the station's tracks, their histories and its events under caller slot `source`
// (opening, silently, what is not open, and closing it afterwards), for a period starting at
// `debutPeriode` (an InstantDe). Yields to the event loop every 20 tracks and 1000 events and
// stops when `arret` says so. Read errors are reported by the database layer (IncidentsBTrieve).
DiffusionsMusique LireDiffusionsMusique(int source, int station, int64_t debutPeriode,
                                        const std::function<bool()>& arret,
                                        const std::string& origine);

}  // namespace zl3
