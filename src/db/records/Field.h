// Fields and record layouts of the suite's Btrieve files.
//
// A record is a fixed run of bytes: text fields are single-byte Windows-1252 characters,
// left-aligned and padded with blanks; 16-bit integers are little-endian; a block is a fixed area
// kept as one opaque unit. Every field sits at its real offset in the record. Bytes that no field
// covers (the byte before an int16 that must start at an even offset, the tail of a structure)
// are unused gaps: they are carried unchanged so that a record read and written back keeps all
// its bytes.
//
// Each layout is declared once, as a table of field declarations placed at compile time. A field
// either gives its offset or follows the previous one; an int16 that follows an odd offset moves
// to the next even offset, as the suite's structures align their integers.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <stdexcept>
#include <string_view>

namespace zl3::rec {

enum class FieldType : unsigned char {
    Text,   // single-byte characters, blank-padded
    Int16,  // signed 16-bit integer, little-endian
    Block,  // opaque area of bytes
};

struct Field {
    std::string_view name;
    std::size_t offset = 0;  // 0-based; a catalogue key position is offset + 1
    std::size_t length = 0;
    FieldType type = FieldType::Text;

    constexpr std::size_t End() const { return offset + length; }
    friend constexpr bool operator==(const Field&, const Field&) = default;
};

struct Layout {
    std::string_view name;
    int catalogueIndex = -1;       // index of the file in the database catalogue
    std::size_t length = 0;        // size of the structure: its fields and the gaps between them
    std::size_t recordLength = 0;  // record length the file is created with
    std::span<const Field> fields;

    // Size of a record buffer for this file. Some structures are longer than the record that the
    // file stores (the history record, the clients, the spot headers) and some shorter (the
    // advertising log); the buffer holds both, the bytes beyond the stored record stay unused.
    constexpr std::size_t BufferLength() const {
        return length > recordLength ? length : recordLength;
    }
};

// ---- Declaring a layout -----------------------------------------------------------------------

namespace decl {

inline constexpr std::size_t kFollows = static_cast<std::size_t>(-1);

struct FieldDecl {
    std::string_view name;
    FieldType type = FieldType::Text;
    std::size_t length = 0;
    std::size_t at = kFollows;  // explicit offset, or kFollows
};

constexpr FieldDecl Text(std::string_view name, std::size_t length, std::size_t at = kFollows) {
    return {name, FieldType::Text, length, at};
}
constexpr FieldDecl Block(std::string_view name, std::size_t length, std::size_t at = kFollows) {
    return {name, FieldType::Block, length, at};
}
constexpr FieldDecl Int16(std::string_view name, std::size_t at = kFollows) {
    return {name, FieldType::Int16, 2, at};
}

// Places the declared fields: an explicit offset is taken as is (bytes skipped before it become
// a gap), otherwise the field follows the previous one. A field placed before the end of the
// previous one does not compile.
template <std::size_t N>
consteval std::array<Field, N> Place(const FieldDecl (&decls)[N]) {
    std::array<Field, N> fields{};
    std::size_t cursor = 0;
    for (std::size_t i = 0; i < N; ++i) {
        const FieldDecl& d = decls[i];
        std::size_t at = d.at;
        if (at == kFollows) at = (d.type == FieldType::Int16) ? cursor + cursor % 2 : cursor;
        if (at < cursor) throw "field overlaps the previous field";
        if (d.length == 0) throw "field without length";
        fields[i] = Field{d.name, at, d.length, d.type};
        cursor = at + d.length;
    }
    return fields;
}

// The field of `fields` called `name`; an unknown name does not compile.
template <std::size_t N>
consteval Field Named(const std::array<Field, N>& fields, std::string_view name) {
    for (const Field& f : fields)
        if (f.name == name) return f;
    throw "no field of that name";
}

}  // namespace decl

// A part of a field seen as a field of its own (an artist code inside the artists block, one
// entry of an area). Throws std::out_of_range when the part is not inside the field.
constexpr Field SubField(const Field& whole, std::size_t offset, std::size_t length,
                         std::string_view name, FieldType type = FieldType::Text) {
    if (length == 0 || offset > whole.length || length > whole.length - offset)
        throw std::out_of_range("sub-field outside its field");
    return Field{name, whole.offset + offset, length, type};
}

// The text that runs from the start of `first` to the end of `last` (a key made of consecutive
// fields).
consteval Field Join(const Field& first, const Field& last, std::string_view name) {
    if (last.End() <= first.offset) throw "fields out of order";
    return Field{name, first.offset, last.End() - first.offset, FieldType::Text};
}

// Bytes covered by fields.
constexpr std::size_t CoveredLength(const Layout& layout) {
    std::size_t n = 0;
    for (const Field& f : layout.fields)
        n += f.length;
    return n;
}

// Fields in increasing order without overlap, all inside the structure, integers two bytes
// long, names present and distinct.
constexpr bool IsWellFormed(const Layout& layout) {
    if (layout.name.empty() || layout.length == 0 || layout.fields.empty()) return false;
    std::size_t end = 0;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const Field& f = layout.fields[i];
        if (f.name.empty() || f.length == 0 || f.offset < end) return false;
        if (f.type == FieldType::Int16 && f.length != 2) return false;
        end = f.End();
        for (std::size_t j = 0; j < i; ++j)
            if (layout.fields[j].name == f.name) return false;
    }
    return end <= layout.length;
}

}  // namespace zl3::rec
