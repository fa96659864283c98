// Broadcast times of the history record (FRAD047) and how many of them a statistics run reads.
//
// A broadcast time is 6 characters; the code of each character minus 32 gives, in order, the
// year − 2000, the month, the day, the hour, the minute and the second. Years 2000 to 2223 can
// be written this way.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "DateTime.h"
#include "records/LayoutsMusique.h"
#include "records/RecordAccess.h"

namespace zl3::rec {

inline constexpr int kPremiereAnneePassage = 2000;
inline constexpr int kDerniereAnneePassage = 2000 + 255 - 32;  // 2223
// Entries read for a station imaging item ("JIN" jingles, "LIN" liners).
inline constexpr int kNbMaxPassagesHabillage = 200;

// The date and time of a 6-character entry; nullopt when the entry is not exactly 6 characters
// or its values are not a real date and time (a blank entry, month 0 or 13, 31 April, hour 24,
// minute 60, …). Nothing is rolled over or guessed.
std::optional<DateTime> DecodePassage(std::string_view entry);
// The 6-character entry of a date and time, to the second (milliseconds are dropped); nullopt
// when it is not a real date and time or its year is outside 2000–2223.
std::optional<std::string> EncodePassage(const DateTime& when);

// Entries of a history record that a statistics run reads: at most 200 for a station imaging
// item ("JIN", "LIN"), at most 672 for a music category ("000" to "999") or any other code; a
// negative count reads none. `categoryCode` is the category or the whole track key: only its
// first 3 characters count.
int CapPassages(std::string_view categoryCode, int nbPassages);

namespace HistoriqueDiffusion {

// Entry `index` (0 to 671) of Passages, at character 1 + 6·index. Throws std::out_of_range for
// another index.
constexpr Field Passage(int index) {
    if (index < 0 || index >= kNbMaxPassages) throw std::out_of_range("broadcast entry index");
    return SubField(Passages, static_cast<std::size_t>(index) * kLongueurPassage, kLongueurPassage,
                    "Passage");
}

}  // namespace HistoriqueDiffusion

// Entry `index` of a history record, decoded; nullopt when it is not a valid time.
std::optional<DateTime> PassageAt(ConstBytes history, int index);
// Writes entry `index` of a history record; false, and the record unchanged, when the time
// cannot be written.
bool SetPassageAt(Bytes history, int index, const DateTime& when);
// NbPassages of a history record capped by CapPassages for the track's category.
int CappedPassageCount(ConstBytes history, std::string_view categoryCode);

// Key 0 of the history record of a track: the track key padded or cut to 8 characters, "M",
// blanks to the key's 11 characters.
std::string HistoryKey(std::string_view cleMorceau);

}  // namespace zl3::rec
