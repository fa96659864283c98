// Windows-1252 ("ANSI") text, the single-byte code page of the suite's records, keys and ini
// files, converted to and from the UTF-8 used everywhere inside the program.
#pragma once

#include <string>

namespace zl3 {

// Character put in place of a character that Windows-1252 cannot hold. It is visible on purpose:
// a text never loses a character silently.
inline constexpr char kCp1252Replacement = '?';

// Windows-1252 bytes to UTF-8. The five bytes that Windows-1252 leaves undefined (0x81, 0x8D,
// 0x8F, 0x90, 0x9D) map to the C1 controls of the same value, as Windows does, so every byte
// string converts and converts back unchanged.
std::string Cp1252ToUtf8(const std::string& bytes);

// UTF-8 to Windows-1252 bytes. Characters outside the code page, and malformed UTF-8 sequences,
// become kCp1252Replacement. When `replaced` is given it receives the number of replacements.
std::string Utf8ToCp1252(const std::string& utf8, int* replaced = nullptr);

// True when `text` is well-formed UTF-8.
bool IsValidUtf8(const std::string& text);

}  // namespace zl3
