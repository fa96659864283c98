#include "Cp1252.h"

#include <cstdint>

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

void AppendUtf8(std::string& out, uint32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Decodes one UTF-8 sequence at `i`; returns false (and advances by one byte) when malformed.
bool NextCodePoint(const std::string& s, size_t& i, uint32_t& cp) {
    const auto b0 = static_cast<unsigned char>(s[i]);
    if (b0 < 0x80) {
        cp = b0;
        ++i;
        return true;
    }
    int len;
    uint32_t min;
    if ((b0 & 0xE0) == 0xC0) {
        len = 2;
        cp = b0 & 0x1F;
        min = 0x80;
    } else if ((b0 & 0xF0) == 0xE0) {
        len = 3;
        cp = b0 & 0x0F;
        min = 0x800;
    } else if ((b0 & 0xF8) == 0xF0) {
        len = 4;
        cp = b0 & 0x07;
        min = 0x10000;
    } else {
        ++i;
        return false;
    }
    if (i + len > s.size()) {
        ++i;
        return false;
    }
    for (int k = 1; k < len; ++k) {
        const auto b = static_cast<unsigned char>(s[i + k]);
        if ((b & 0xC0) != 0x80) {
            ++i;
            return false;
        }
        cp = (cp << 6) | (b & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        ++i;
        return false;
    }
    i += len;
    return true;
}

}  // namespace

std::string Cp1252ToUtf8(const std::string& bytes) {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80)
            out += c;
        else
            AppendUtf8(out, CodePointOf(b));
    }
    return out;
}

std::string Utf8ToCp1252(const std::string& utf8, int* replaced) {
    std::string out;
    out.reserve(utf8.size());
    int count = 0;
    size_t i = 0;
    while (i < utf8.size()) {
        uint32_t cp = 0;
        if (!NextCodePoint(utf8, i, cp)) {
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
    uint32_t cp;
    while (i < text.size())
        if (!NextCodePoint(text, i, cp)) return false;
    return true;
}

}  // namespace zl3
