// Reading and writing the fields of a record held as bytes.
//
// A record buffer is BufferLength() bytes of its layout. Texts are exchanged in UTF-8 and stored
// in Windows-1252; raw bytes are exchanged as stored. Reading a field and writing the value read
// back leaves every byte of the record as it was.
//
// A field that does not lie inside the buffer given, or an accessor used on a field of the wrong
// kind (an integer read as text), is a programming error: it throws std::out_of_range or
// std::invalid_argument.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "records/Field.h"

namespace zl3::rec {

using ConstBytes = std::span<const std::uint8_t>;
using Bytes = std::span<std::uint8_t>;

inline constexpr char kBlanc = ' ';

// The field's bytes as stored, any kind of field.
std::string GetBytes(ConstBytes record, const Field& field);
// Stores `bytes` in the field, padded with blanks or cut to the field's length.
void SetBytes(Bytes record, const Field& field, std::string_view bytes);

// A text or block field converted to UTF-8. Trailing blanks are kept: the caller trims.
std::string GetText(ConstBytes record, const Field& field);

struct TextWrite {
    int replaced = 0;        // characters that Windows-1252 cannot hold, stored as '?'
    bool truncated = false;  // the text was longer than the field and was cut
};
// Stores a UTF-8 text in a text or block field: converted to Windows-1252, padded with blanks or
// cut to the field's length.
TextWrite SetText(Bytes record, const Field& field, std::string_view utf8);

std::int16_t GetInt16(ConstBytes record, const Field& field);
void SetInt16(Bytes record, const Field& field, std::int16_t value);

// A new record of `layout`: BufferLength() blanks, with its integers at 0.
std::vector<std::uint8_t> NewRecord(const Layout& layout);

// Bytes of a record buffer that no field of the layout covers, in increasing order.
struct Gap {
    std::size_t offset = 0;
    std::size_t length = 0;
    friend bool operator==(const Gap&, const Gap&) = default;
};
std::vector<Gap> Gaps(const Layout& layout);

}  // namespace zl3::rec
