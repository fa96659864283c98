// Every record layout of the suite's files that this tool knows, and lookups over them.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "records/Field.h"
#include "records/LayoutsMusique.h"
#include "records/LayoutsPublicite.h"

namespace zl3::rec {

inline constexpr std::array<const Layout*, 16> kAllLayouts{
    &Morceau::kLayout,    &HistoriqueDiffusion::kLayout, &EvenementMusical::kLayout,
    &Artiste::kLayout,    &Categorie::kLayout,           &MorceauCles::kLayout,
    &Pointeurs::kLayout,  &MorceauInfos::kLayout,        &ConducteurPub::kLayout,
    &LogPub::kLayout,     &MessagePub::kLayout,          &EnteteContrat::kLayout,
    &Commercial::kLayout, &SecteurActivite::kLayout,     &Client::kLayout,
    &EnteteSpot::kLayout,
};

constexpr std::span<const Layout* const> AllLayouts() {
    return kAllLayouts;
}

// The layout of catalogue file `catalogueIndex`; nullptr for a file without a known layout.
const Layout* FindLayout(int catalogueIndex);
// The field called `name` of `layout`; nullptr when there is none.
const Field* FindField(const Layout& layout, std::string_view name);

}  // namespace zl3::rec
