#include "records/Layouts.h"

namespace zl3::rec {
namespace {

constexpr bool AllWellFormed() {
    for (const Layout* l : kAllLayouts)
        if (!IsWellFormed(*l)) return false;
    for (std::size_t i = 0; i < kAllLayouts.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (kAllLayouts[i]->catalogueIndex == kAllLayouts[j]->catalogueIndex) return false;
    return true;
}
static_assert(AllWellFormed(), "a record layout has overlapping or misplaced fields");

}  // namespace

const Layout* FindLayout(int catalogueIndex) {
    for (const Layout* l : kAllLayouts)
        if (l->catalogueIndex == catalogueIndex) return l;
    return nullptr;
}

const Field* FindField(const Layout& layout, std::string_view name) {
    for (const Field& f : layout.fields)
        if (f.name == name) return &f;
    return nullptr;
}

}  // namespace zl3::rec
