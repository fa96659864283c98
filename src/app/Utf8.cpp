#include "Utf8.h"

namespace zl3 {

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

bool DecodeUtf8(std::string_view s, size_t& pos, char32_t& c) {
    const auto octet = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char b0 = octet(pos);
    if (b0 < 0x80) {
        ++pos;
        c = b0;
        return true;
    }
    int suite;
    char32_t minimum;
    if (b0 >= 0xC2 && b0 <= 0xDF) {
        suite = 1;
        c = b0 & 0x1F;
        minimum = 0x80;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        suite = 2;
        c = b0 & 0x0F;
        minimum = 0x800;
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        suite = 3;
        c = b0 & 0x07;
        minimum = 0x10000;
    } else {
        ++pos;  // continuation byte out of place, or a lead byte that UTF-8 never uses
        return false;
    }
    size_t i = pos + 1;
    for (int k = 0; k < suite; ++k, ++i) {
        if (i >= s.size() || (octet(i) & 0xC0) != 0x80) {
            pos = i;
            return false;
        }
        c = (c << 6) | (octet(i) & 0x3F);
    }
    pos = i;
    return c >= minimum && c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF);
}

}  // namespace zl3
