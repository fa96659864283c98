// The demo station database of one base: the music library copied to each station, each
// station's broadcast history and advertising, the base's clients, salespeople and business
// sectors, and every other file of the catalogue created empty.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "DateTime.h"

namespace zl3::demo {

struct OptionsBaseDemo {
    int base = 1;         // 1-based; each base gets its own library and clients
    int stations = 2;     // 1..10
    int morceaux = 3000;  // music tracks
    int jours = 365;      // days of music events and advertising, ending on `fin`
    // Years of airplay kept in the history records, ending on `fin`; 0: the history holds the
    // `jours` days of the events. With years, the library is a station's after years on air: a
    // few thousand programmed tracks, the rest in the archive with older broadcasts.
    int annees = 0;
    DateTime fin;         // last day of the history
    uint64_t graine = 1;  // same seed and options: the same records, byte for byte
    // Native music sound folder that receives the tag-only WMA files of part of the tracks
    // (FichiersWma.h); empty: none.
    std::string dossierSonsMusique;
};

struct BilanStation {
    int64_t morceaux = 0;     // music tracks
    int64_t habillages = 0;   // jingles and liners
    int64_t historiques = 0;  // tracks with a broadcast history record
    int64_t evenements = 0;   // music events aired
    int64_t prevus = 0;       // spots in the running order
    int64_t diffuses = 0;     // spots in the broadcast log
    // Entries kept per history record: tracks of the programmed categories and imaging items,
    // tracks of the archive.
    std::vector<int> entrees;
    std::vector<int> entreesArchive;
};

// Entries per history record, in a line: records, smallest, deciles, largest, records at the
// 672-entry cap.
std::string RepartitionEntrees(const std::vector<int>& entrees);

struct BilanBase {
    int base = 1;
    std::vector<BilanStation> stations;
    std::map<std::string, int64_t> enregistrements;  // records per file name
    int64_t fichiersWma = 0;  // sound files written, of which some lack a tag
};

// First day of the history: `fin` minus `jours` − 1 days.
DateTime PremierJourDemo(const OptionsBaseDemo& options);

// Creates the files in the native folder `dossierData` (existing files of the same names are
// replaced) and fills them. Throws ErreurDemo (Ecriture.h) when a database call fails.
BilanBase RemplirBaseDemo(const OptionsBaseDemo& options, const std::string& dossierData);

}  // namespace zl3::demo
