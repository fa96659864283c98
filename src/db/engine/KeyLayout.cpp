#include "KeyLayout.h"

#include <cstring>

#include "Btrieve.h"

namespace zl3::btr {
namespace {

uint16_t Get16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

// Flags this engine implements; anything else is refused at Create with 45 rather than being
// silently compared the wrong way.
constexpr uint16_t kSupportedFlags = kKeyDuplicates | kKeyModifiable | kKeyNullAll | kKeySegmented |
                                     kKeyDescending | kKeySupplemental | kKeyExtendedType |
                                     kKeyNullAny | kKeyNoCase;
// Flags that every segment of one key must agree on.
constexpr uint16_t kKeyWideFlags = kKeyDuplicates | kKeyModifiable | kKeyNullAll | kKeyNullAny;

inline uint8_t Fold(uint8_t c) {
    return (c >= 'a' && c <= 'z') ? static_cast<uint8_t>(c - 32) : c;
}

void ToIndexForm(const SegmentDef& s, const uint8_t* in, uint8_t* out) {
    if (!s.fold && !s.descending) {
        std::memcpy(out, in, s.length);
        return;
    }
    for (uint16_t i = 0; i < s.length; ++i) {
        uint8_t c = s.fold ? Fold(in[i]) : in[i];
        out[i] = s.descending ? static_cast<uint8_t>(255 - c) : c;
    }
}

bool SegmentIsNull(const SegmentDef& s, const uint8_t* record) {
    const uint8_t* p = record + s.offset;
    for (uint16_t i = 0; i < s.length; ++i)
        if (p[i] != s.nullValue) return false;
    return true;
}

}  // namespace

int16_t ParseLayout(const uint8_t* data, size_t length, FileDef& out) {
    out = FileDef{};
    if (data == nullptr || length < kFilePartSize) return kDataBufferLength;
    out.recordLength = Get16(data);
    out.pageSize = Get16(data + 2);
    const int keyCount = data[4];
    if (out.recordLength < 4) return kRecordLengthInvalid;
    if (out.pageSize < 512 || out.pageSize > 16384 || out.pageSize % 512 != 0)
        return kPageSizeError;
    if (keyCount < 1 || keyCount > kMaxKeys) return kNumberOfKeysInvalid;

    size_t at = kFilePartSize;
    for (int k = 0; k < keyCount; ++k) {
        KeyDef key;
        bool more = true;
        uint16_t keyFlags = 0;
        while (more) {
            if (at + kSegmentPartSize > length) return kDataBufferLength;
            if (out.segmentCount >= kMaxSegments) return kKeyLengthInvalid;
            const uint8_t* p = data + at;
            const uint16_t position = Get16(p);
            const uint16_t len = Get16(p + 2);
            const uint16_t flags = Get16(p + 4);
            const uint8_t extendedType = p[10];
            if (len == 0) return kKeyLengthInvalid;
            if (position == 0 || position + len - 1 > out.recordLength) return kKeyPositionInvalid;
            if (flags & ~kSupportedFlags) return kInvalidKeyFlags;
            if ((flags & kKeyExtendedType) && extendedType != 0) return kInvalidKeyFlags;
            if (key.segments.empty()) {
                keyFlags = flags & kKeyWideFlags;
            } else if ((flags & kKeyWideFlags) != keyFlags) {
                return kInvalidKeyFlags;
            }
            if (key.length + len > kMaxKeyLength) return kKeyLengthInvalid;
            SegmentDef s;
            s.offset = static_cast<uint16_t>(position - 1);
            s.length = len;
            s.flags = flags;
            s.keyOffset = key.length;
            s.nullValue = p[11];
            s.fold = (flags & kKeyNoCase) != 0;
            s.descending = (flags & kKeyDescending) != 0;
            key.segments.push_back(s);
            key.length = static_cast<uint16_t>(key.length + len);
            ++out.segmentCount;
            at += kSegmentPartSize;
            more = (flags & kKeySegmented) != 0;
        }
        key.duplicates = (keyFlags & kKeyDuplicates) != 0;
        key.modifiable = (keyFlags & kKeyModifiable) != 0;
        key.nulls = (keyFlags & kKeyNullAny)   ? NullRule::kAnySegment
                    : (keyFlags & kKeyNullAll) ? NullRule::kAllSegments
                                               : NullRule::kNone;
        out.keys.push_back(std::move(key));
    }

    out.layout.assign(data, data + at);
    // Fields that Stat fills in are not part of the definition.
    out.layout[5] = 0;
    std::memset(out.layout.data() + 6, 0, 4);
    for (size_t s = kFilePartSize; s < at; s += kSegmentPartSize)
        std::memset(out.layout.data() + s + 6, 0, 4);
    return kOk;
}

void RawKey(const KeyDef& key, const uint8_t* record, uint8_t* out) {
    for (const SegmentDef& s : key.segments)
        std::memcpy(out + s.keyOffset, record + s.offset, s.length);
}

bool IndexKey(const KeyDef& key, const uint8_t* record, uint8_t* out) {
    if (key.nulls != NullRule::kNone) {
        int nullSegments = 0;
        for (const SegmentDef& s : key.segments)
            nullSegments += SegmentIsNull(s, record) ? 1 : 0;
        if (key.nulls == NullRule::kAnySegment && nullSegments > 0) return false;
        if (key.nulls == NullRule::kAllSegments &&
            nullSegments == static_cast<int>(key.segments.size()))
            return false;
    }
    for (const SegmentDef& s : key.segments)
        ToIndexForm(s, record + s.offset, out + s.keyOffset);
    return true;
}

void IndexKeyFromValue(const KeyDef& key, const uint8_t* value, uint8_t* out) {
    for (const SegmentDef& s : key.segments)
        ToIndexForm(s, value + s.keyOffset, out + s.keyOffset);
}

}  // namespace zl3::btr
