// The stored form of a record: blank truncation.
//
// Records are fixed-length, and most of them end with a long run of one byte: the blank or NUL
// filling of the fields and entries not used yet (a history record holds 672 entries; most tracks
// have a few dozen). A record is stored without that run:
//   - a stored form of exactly the record length is the record as it is (files written before
//     truncation hold only this form and stay readable as they are);
//   - a shorter stored form is the bytes before the run followed by ONE byte of the run: the
//     record is those bytes, then that fill byte repeated up to the record length;
//   - an empty stored form, or one longer than the record, is not a record of the file: the
//     reader reports corruption, never a guess.
// The trimmed form is used only when it saves something (a run of 2 bytes or more), so every
// record has exactly one form that this encoder writes, and the decoder reads both.
// Keys are stored in their own columns and are not affected.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zl3::btr {

// Number of bytes of the stored form of `record` (`length` bytes, length ≥ 1). The stored form is
// always the first StoredLength() bytes of the record itself: the bytes before the trailing run
// of one repeated byte, plus the first byte of that run.
inline size_t StoredLength(const uint8_t* record, size_t length) {
    if (length < 2) return length;
    const uint8_t fill = record[length - 1];
    size_t start = length - 1;  // first byte of the trailing run
    while (start > 0 && record[start - 1] == fill)
        --start;
    // A run of one byte would give the record's own length: nothing saved, stored as is.
    return start + 1;
}

// Rebuilds the record (`length` bytes, into `out`) from its stored form (`stored`, `storedLength`
// bytes). False when the stored form cannot be a record of this length (empty or too long):
// `out` is then left as it was.
inline bool DecodeRecord(const uint8_t* stored, size_t storedLength, size_t length, uint8_t* out) {
    if (stored == nullptr || storedLength == 0 || storedLength > length) return false;
    std::memcpy(out, stored, storedLength);
    if (storedLength < length)
        std::memset(out + storedLength, stored[storedLength - 1], length - storedLength);
    return true;
}

}  // namespace zl3::btr
