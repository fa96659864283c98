#include "Cp1252.h"

#include <algorithm>
#include <cstdint>

#include "Utf8.h"

namespace zl3 {
namespace {

// Unicode code points of bytes 0x80–0x9F; 0 marks the bytes Windows-1252 leaves undefined.
constexpr uint16_t kHigh[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80–87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,       // 88–8F
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90–97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,  // 98–9F
};

uint32_t CodePointOf(unsigned char b) {
    if (b >= 0x80 && b <= 0x9F) {
        const uint16_t cp = kHigh[b - 0x80];
        return cp ? cp : b;
    }
    return b;
}

}  // namespace

std::string Cp1252ToUtf8(const std::string& bytes) {
    // Most texts are plain ASCII, the same bytes in both.
    if (std::all_of(bytes.begin(), bytes.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return bytes;
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80)
            out += c;
        else
            AppendUtf8(out, static_cast<char32_t>(CodePointOf(b)));
    }
    return out;
}

std::string Utf8ToCp1252(const std::string& utf8, int* replaced) {
    if (std::all_of(utf8.begin(), utf8.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        if (replaced) *replaced = 0;
        return utf8;
    }
    std::string out;
    out.reserve(utf8.size());
    int count = 0;
    size_t i = 0;
    while (i < utf8.size()) {
        char32_t cp = 0;
        if (!DecodeUtf8(utf8, i, cp)) {
            out += kCp1252Replacement;
            ++count;
            continue;
        }
        if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) {
            out += static_cast<char>(cp);
            continue;
        }
        bool found = false;
        for (int k = 0; k < 32; ++k) {
            if (CodePointOf(static_cast<unsigned char>(0x80 + k)) == cp) {
                out += static_cast<char>(0x80 + k);
                found = true;
                break;
            }
        }
        if (!found) {
            out += kCp1252Replacement;
            ++count;
        }
    }
    if (replaced) *replaced = count;
    return out;
}

bool IsValidUtf8(const std::string& text) {
    size_t i = 0;
    char32_t cp;
    while (i < text.size())
        if (!DecodeUtf8(text, i, cp)) return false;
    return true;
}

}  // namespace zl3
