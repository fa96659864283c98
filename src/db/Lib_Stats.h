// Lib_Stats: codes turned into the names the result grids show (clients, artists, categories,
// labels), and the track-versions list used by the music statistics. The lookups never fail
// towards the caller: a code that is not in the database comes back as a readable label with the
// code in it.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace zl3 {

// Client name (FRAD003), or "Client: " + code. A blank code gives "" without a lookup.
std::string LibClient(int source, int station, const std::string& code);
// Artist names (FRAD020): the first, then " + " and the second when code2 is not blank (the
// separator is written even when the first part is empty). Unknown codes give
// "Artiste: " + code. With `option`, every " && " of the result becomes " & ".
std::string LibArtiste(int source, int station, const std::string& code1, const std::string& code2,
                       bool option);
// Category label (FRAD021, "CATEG" + code), or "Catégorie: " + code. A blank code gives "".
std::string LibCategorie(int source, int station, const std::string& code);
// Record label name (FRAD021, "LABEL" + code), or "Label: " + code. A blank code gives "".
std::string LibLabel(int source, int station, const std::string& code);

// The track-versions list built by InitGeneralVersionSons.
struct VersionsSons {
    // One line per versions record: the track key, ",", then each listed version and ",".
    std::vector<std::string> lignes;
    // Every listed version followed by "," (the global versions text).
    std::string texte;
    // Each listed version's track key -> the track key of the record that lists it.
    std::map<std::string, std::string> principal;
    bool charge = false;
};
VersionsSons& Versions();

// Walks the versions records (FRAD032, type "05") of a station: deletes the records whose area
// is blank, removes from a record the entry naming its own track (rewriting the record), and
// fills Versions(). The only routine of the tool that writes to the database.
void InitGeneralVersionSons(int source, int station);

}  // namespace zl3
