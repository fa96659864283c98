#include "records/RecordAccess.h"

#include <stdexcept>

#include "Cp1252.h"

namespace zl3::rec {
namespace {

void CheckInside(std::size_t recordSize, const Field& field) {
    if (field.offset > recordSize || field.length > recordSize - field.offset)
        throw std::out_of_range("field " + std::string(field.name) + " outside the record buffer");
}

void CheckText(const Field& field) {
    if (field.type == FieldType::Int16)
        throw std::invalid_argument("field " + std::string(field.name) + " is an integer");
}

void CheckInt16(const Field& field) {
    if (field.type != FieldType::Int16 || field.length != 2)
        throw std::invalid_argument("field " + std::string(field.name) + " is not an integer");
}

// Copies `bytes` into the field, padded with blanks; returns true when it had to be cut.
bool Store(Bytes record, const Field& field, std::string_view bytes) {
    CheckInside(record.size(), field);
    const std::size_t n = bytes.size() < field.length ? bytes.size() : field.length;
    std::uint8_t* out = record.data() + field.offset;
    for (std::size_t i = 0; i < n; ++i)
        out[i] = static_cast<std::uint8_t>(bytes[i]);
    for (std::size_t i = n; i < field.length; ++i)
        out[i] = static_cast<std::uint8_t>(kBlanc);
    return bytes.size() > field.length;
}

}  // namespace

std::string GetBytes(ConstBytes record, const Field& field) {
    CheckInside(record.size(), field);
    const auto* first = reinterpret_cast<const char*>(record.data() + field.offset);
    return std::string(first, field.length);
}

void SetBytes(Bytes record, const Field& field, std::string_view bytes) {
    Store(record, field, bytes);
}

std::string GetText(ConstBytes record, const Field& field) {
    CheckText(field);
    return Cp1252ToUtf8(GetBytes(record, field));
}

TextWrite SetText(Bytes record, const Field& field, std::string_view utf8) {
    CheckText(field);
    CheckInside(record.size(), field);
    TextWrite result;
    const std::string bytes = Utf8ToCp1252(std::string(utf8), &result.replaced);
    result.truncated = Store(record, field, bytes);
    return result;
}

std::int16_t GetInt16(ConstBytes record, const Field& field) {
    CheckInt16(field);
    CheckInside(record.size(), field);
    const unsigned lo = record[field.offset];
    const unsigned hi = record[field.offset + 1];
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(lo | (hi << 8)));
}

void SetInt16(Bytes record, const Field& field, std::int16_t value) {
    CheckInt16(field);
    CheckInside(record.size(), field);
    const auto bits = static_cast<std::uint16_t>(value);
    record[field.offset] = static_cast<std::uint8_t>(bits & 0xFF);
    record[field.offset + 1] = static_cast<std::uint8_t>(bits >> 8);
}

std::vector<std::uint8_t> NewRecord(const Layout& layout) {
    std::vector<std::uint8_t> record(layout.BufferLength(), static_cast<std::uint8_t>(kBlanc));
    for (const Field& f : layout.fields)
        if (f.type == FieldType::Int16) SetInt16(record, f, 0);
    return record;
}

std::vector<Gap> Gaps(const Layout& layout) {
    std::vector<Gap> gaps;
    std::size_t cursor = 0;
    for (const Field& f : layout.fields) {
        if (f.offset > cursor) gaps.push_back({cursor, f.offset - cursor});
        if (f.End() > cursor) cursor = f.End();
    }
    if (layout.BufferLength() > cursor) gaps.push_back({cursor, layout.BufferLength() - cursor});
    return gaps;
}

}  // namespace zl3::rec
