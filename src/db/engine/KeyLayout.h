// File and key definitions: the creation layout (the bytes a Create call passes and Stat gives
// back) parsed into record length and keys, and the key values built from a record.
//
// A key's value is the concatenation of its segments' bytes. Its *index form*, the bytes kept in
// the key's ordered index and compared with memcmp, is that value with case-insensitive segments
// folded a-z → A-Z and descending segments complemented (255 - byte).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zl3::btr {

// Key flags of the creation layout.
inline constexpr uint16_t kKeyDuplicates = 1;
inline constexpr uint16_t kKeyModifiable = 2;
inline constexpr uint16_t kKeyBinary = 4;
inline constexpr uint16_t kKeyNullAll = 8;
inline constexpr uint16_t kKeySegmented = 16;
inline constexpr uint16_t kKeyAltCollating = 32;
inline constexpr uint16_t kKeyDescending = 64;
inline constexpr uint16_t kKeySupplemental = 128;
inline constexpr uint16_t kKeyExtendedType = 256;
inline constexpr uint16_t kKeyNullAny = 512;
inline constexpr uint16_t kKeyNoCase = 1024;

inline constexpr size_t kFilePartSize = 16;
inline constexpr size_t kSegmentPartSize = 16;

struct SegmentDef {
    uint16_t offset = 0;  // 0-based offset in the record
    uint16_t length = 0;
    uint16_t flags = 0;
    uint16_t keyOffset = 0;  // offset of this segment inside the key value
    uint8_t nullValue = 0;
    bool fold = false;  // case-insensitive: a-z compared as A-Z
    bool descending = false;
};

enum class NullRule : uint8_t { kNone, kAllSegments, kAnySegment };

struct KeyDef {
    std::vector<SegmentDef> segments;
    uint16_t length = 0;  // total bytes of the key value
    bool duplicates = false;
    bool modifiable = false;
    NullRule nulls = NullRule::kNone;
};

struct FileDef {
    uint16_t recordLength = 0;
    uint16_t pageSize = 0;
    std::vector<KeyDef> keys;
    int segmentCount = 0;
    // The layout as created: file part and segment parts, with the fields that Stat fills in
    // (file version, record count, unique values) zeroed.
    std::vector<uint8_t> layout;
};

// Parses and checks a creation layout of `length` bytes. Returns 0 or the Create status:
// 22 buffer too short, 24 page size, 26 number of keys, 27 key position, 28 record length,
// 29 key length, 45 key flags this engine does not support (alternate collating sequences,
// binary and extended key types other than string) or inconsistent between segments of a key.
int16_t ParseLayout(const uint8_t* data, size_t length, FileDef& out);

// The key value as stored in the record (what reads return in the key buffer).
void RawKey(const KeyDef& key, const uint8_t* record, uint8_t* out);

// The index form of the key of `record`. Returns false when the key is null under its null rule:
// the record then has no entry in that key's index.
bool IndexKey(const KeyDef& key, const uint8_t* record, uint8_t* out);

// The index form of a key value given by the caller (key buffer, key.length bytes).
void IndexKeyFromValue(const KeyDef& key, const uint8_t* value, uint8_t* out);

}  // namespace zl3::btr
