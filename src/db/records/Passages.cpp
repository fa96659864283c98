#include "records/Passages.h"

#include <array>

namespace zl3::rec {
namespace {

constexpr int kDecalage = 32;  // code of the character that stands for 0

}  // namespace

std::optional<DateTime> DecodePassage(std::string_view entry) {
    if (entry.size() != HistoriqueDiffusion::kLongueurPassage) return std::nullopt;
    std::array<int, HistoriqueDiffusion::kLongueurPassage> v{};
    for (std::size_t i = 0; i < v.size(); ++i) {
        v[i] = static_cast<unsigned char>(entry[i]) - kDecalage;
        if (v[i] < 0) return std::nullopt;
    }
    DateTime when;
    when.year = kPremiereAnneePassage + v[0];
    when.month = v[1];
    when.day = v[2];
    when.hour = v[3];
    when.minute = v[4];
    when.second = v[5];
    if (!IsValidDate(when.year, when.month, when.day)) return std::nullopt;
    if (when.hour > 23 || when.minute > 59 || when.second > 59) return std::nullopt;
    return when;
}

std::optional<std::string> EncodePassage(const DateTime& when) {
    if (when.year < kPremiereAnneePassage || when.year > kDerniereAnneePassage) return std::nullopt;
    if (!IsValidDate(when.year, when.month, when.day)) return std::nullopt;
    if (when.hour < 0 || when.hour > 23 || when.minute < 0 || when.minute > 59 || when.second < 0 ||
        when.second > 59)
        return std::nullopt;
    const int values[] = {when.year - kPremiereAnneePassage,
                          when.month,
                          when.day,
                          when.hour,
                          when.minute,
                          when.second};
    std::string entry;
    for (const int v : values)
        entry += static_cast<char>(static_cast<unsigned char>(v + kDecalage));
    return entry;
}

int CapPassages(std::string_view categoryCode, int nbPassages) {
    if (nbPassages <= 0) return 0;
    const std::string_view code = categoryCode.substr(0, 3);
    const int cap = (code == "JIN" || code == "LIN") ? kNbMaxPassagesHabillage
                                                     : HistoriqueDiffusion::kNbMaxPassages;
    return nbPassages < cap ? nbPassages : cap;
}

std::optional<DateTime> PassageAt(ConstBytes history, int index) {
    return DecodePassage(GetBytes(history, HistoriqueDiffusion::Passage(index)));
}

bool SetPassageAt(Bytes history, int index, const DateTime& when) {
    const Field entry = HistoriqueDiffusion::Passage(index);
    const std::optional<std::string> bytes = EncodePassage(when);
    if (!bytes) return false;
    SetBytes(history, entry, *bytes);
    return true;
}

int CappedPassageCount(ConstBytes history, std::string_view categoryCode) {
    return CapPassages(categoryCode, GetInt16(history, HistoriqueDiffusion::NbPassages));
}

std::string HistoryKey(std::string_view cleMorceau) {
    const Field& track = Morceau::CleMorceau;
    std::string key(cleMorceau.substr(0, track.length));
    key.resize(track.length, kBlanc);
    key += HistoriqueDiffusion::kSuffixeMorceau;
    key.resize(HistoriqueDiffusion::Cle.length, kBlanc);
    return key;
}

}  // namespace zl3::rec
