// UTF-8, the encoding of every text inside the program: one character decoded or appended.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zl3 {

inline constexpr char32_t kCaractereRemplacement = 0xFFFD;

// Appends the UTF-8 form of `c` (a Unicode scalar value) to `out`.
void AppendUtf8(std::string& out, char32_t c);

// Decodes the character at `pos` into `c` and moves `pos` past it. A malformed sequence gives
// false and `pos` moves past it: a stray or never-used byte alone, a cut sequence up to the
// byte that breaks it, a complete sequence that is overlong, a surrogate or beyond U+10FFFF as a
// whole. `pos` must be inside `s`.
bool DecodeUtf8(std::string_view s, size_t& pos, char32_t& c);

}  // namespace zl3
