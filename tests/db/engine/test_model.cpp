// Randomised operation sequences run both on the engine and on a small in-memory model of
// Btrieve's rules (sorted vectors recomputed at each step); every status, record, returned key
// and data length must agree. Three position blocks (one read-only) share the file, so that
// read-ahead batches, stale positions (80) and positions on deleted records are exercised; the
// file has a case-insensitive key, a segmented key mixing both cases and a descending key.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <sstream>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Store.h"

namespace zl3::btr::test {
namespace {

constexpr int kRecLen = 24;
constexpr int kCursors = 3;  // the last one is read-only

struct MSeg {
    int offset;
    int length;
    bool fold;
    bool descending;
};

struct MKey {
    std::vector<MSeg> segs;
    bool dup;
    bool mod;
    int length() const {
        int n = 0;
        for (const MSeg& s : segs)
            n += s.length;
        return n;
    }
};

// key 0: 1/3 unique, not modifiable; key 1: 4/2 duplicates, case-insensitive; key 2: 6/1 then
// 1/2 case-insensitive (segmented, duplicates); key 3: 8/2 unique, case-insensitive; key 4:
// 10/1 duplicates, descending.
const std::vector<MKey> kKeys = {
    {{{0, 3, false, false}}, false, false},
    {{{3, 2, true, false}}, true, true},
    {{{5, 1, false, false}, {0, 2, true, false}}, true, true},
    {{{7, 2, true, false}}, false, true},
    {{{9, 1, false, true}}, true, true},
};

std::vector<uint8_t> ModelLayout() {
    std::vector<std::vector<Seg>> keys;
    for (const MKey& k : kKeys) {
        std::vector<Seg> segs;
        for (const MSeg& s : k.segs) {
            uint16_t flags = (k.dup ? kKeyDuplicates : 0) | (k.mod ? kKeyModifiable : 0) |
                             (s.fold ? kKeyNoCase : 0) | (s.descending ? kKeyDescending : 0);
            segs.push_back(
                {static_cast<uint16_t>(s.offset + 1), static_cast<uint16_t>(s.length), flags});
        }
        keys.push_back(segs);
    }
    return Layout(kRecLen, keys);
}

struct MRecord {
    std::string data;
    int64_t ver = 1;
    std::vector<int64_t> seq;
};

struct MCursor {
    bool open = false;
    bool readOnly = false;
    int keyNo = -1;
    std::string posKey;
    int64_t posSeq = 0;
    bool hasCurrent = false;
    int64_t curId = 0;
    int64_t curVer = 0;
};

struct Result {
    Result(int16_t s = kOk, std::string r = {}, std::string k = {})
        : status(s), record(std::move(r)), key(std::move(k)) {}
    int16_t status;
    std::string record;
    std::string key;
};

class Model {
  public:
    std::map<int64_t, MRecord> records;
    int64_t counter = 0;
    MCursor cursors[kCursors];

    static std::string Fold(const MSeg& s, std::string v) {
        for (char& c : v) {
            if (s.fold && c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
            if (s.descending) c = static_cast<char>(255 - static_cast<unsigned char>(c));
        }
        return v;
    }
    static std::string Raw(int k, const std::string& data) {
        std::string out;
        for (const MSeg& s : kKeys[k].segs)
            out += data.substr(s.offset, s.length);
        return out;
    }
    static std::string Index(int k, const std::string& raw) {
        std::string out;
        size_t at = 0;
        for (const MSeg& s : kKeys[k].segs) {
            out += Fold(s, raw.substr(at, s.length));
            at += s.length;
        }
        return out;
    }

    struct Entry {
        std::string ikey;
        int64_t seq;
        int64_t id;
    };
    std::vector<Entry> Ordered(int k) const {
        std::vector<Entry> out;
        for (const auto& [id, r] : records)
            out.push_back({Index(k, Raw(k, r.data)), r.seq[k], id});
        std::sort(out.begin(), out.end(), [](const Entry& a, const Entry& b) {
            return a.ikey != b.ikey ? a.ikey < b.ikey : a.seq < b.seq;
        });
        return out;
    }

    Result Get(int c, uint16_t op, int k, const std::string& value, uint32_t capacity,
               int keyLength) {
        MCursor& cur = cursors[c];
        if (!cur.open) return {kFileNotOpen};
        if (k < 0 || k >= static_cast<int>(kKeys.size())) return {kInvalidKeyNumber};
        if (keyLength < kKeys[k].length()) return {kKeyBufferTooShort};
        if (capacity < kRecLen) return {kDataBufferLength};
        const std::vector<Entry> ord = Ordered(k);
        const int n = static_cast<int>(ord.size());
        int found = -1;
        std::string padded = value;  // the key buffer holds zeros after the value
        padded.resize(static_cast<size_t>(kKeys[k].length()), '\0');
        const std::string target = Index(k, padded);
        auto firstWhere = [&](auto pred) {
            for (int i = 0; i < n; ++i)
                if (pred(ord[i])) return i;
            return -1;
        };
        auto lastWhere = [&](auto pred) {
            for (int i = n - 1; i >= 0; --i)
                if (pred(ord[i])) return i;
            return -1;
        };
        switch (op) {
            case kGetEqual:
                found = firstWhere([&](const Entry& e) { return e.ikey == target; });
                if (found < 0) return {kKeyNotFound};
                break;
            case kGetGreater:
                found = firstWhere([&](const Entry& e) { return e.ikey > target; });
                break;
            case kGetGreaterOrEqual:
                found = firstWhere([&](const Entry& e) { return e.ikey >= target; });
                break;
            case kGetLess:
                found = lastWhere([&](const Entry& e) { return e.ikey < target; });
                break;
            case kGetLessOrEqual:
                found = lastWhere([&](const Entry& e) { return e.ikey <= target; });
                break;
            case kGetFirst:
                found = n > 0 ? 0 : -1;
                break;
            case kGetLast:
                found = n - 1;
                break;
            case kGetNext:
            case kGetPrevious: {
                if (cur.keyNo < 0) return {kInvalidPositioning};
                if (k != cur.keyNo) return {kDifferentKeyNumber};
                auto after = [&](const Entry& e) {
                    return e.ikey != cur.posKey ? e.ikey > cur.posKey : e.seq > cur.posSeq;
                };
                auto before = [&](const Entry& e) {
                    return e.ikey != cur.posKey ? e.ikey < cur.posKey : e.seq < cur.posSeq;
                };
                found = op == kGetNext ? firstWhere(after) : lastWhere(before);
                break;
            }
        }
        if (found < 0) return {kEndOfFile};
        const Entry& e = ord[found];
        const MRecord& r = records.at(e.id);
        cur.keyNo = k;
        cur.posKey = e.ikey;
        cur.posSeq = e.seq;
        cur.hasCurrent = true;
        cur.curId = e.id;
        cur.curVer = r.ver;
        return {kOk, r.data, Raw(k, r.data)};
    }

    bool UniqueConflict(const std::string& data, int64_t self) const {
        for (int k = 0; k < static_cast<int>(kKeys.size()); ++k) {
            if (kKeys[k].dup) continue;
            const std::string ik = Index(k, Raw(k, data));
            for (const auto& [id, r] : records)
                if (id != self && Index(k, Raw(k, r.data)) == ik) return true;
        }
        return false;
    }

    void PositionOn(MCursor& cur, int k, int64_t id) {
        const MRecord& r = records.at(id);
        cur.keyNo = k;
        cur.posKey = Index(k, Raw(k, r.data));
        cur.posSeq = r.seq[k];
        cur.hasCurrent = true;
        cur.curId = id;
        cur.curVer = r.ver;
    }

    Result Insert(int c, const std::string& data, int k, int keyLength) {
        MCursor& cur = cursors[c];
        if (!cur.open) return {kFileNotOpen};
        if (cur.readOnly) return {kAccessDenied};
        if (k < 0 || k >= static_cast<int>(kKeys.size())) return {kInvalidKeyNumber};
        if (keyLength < kKeys[k].length()) return {kKeyBufferTooShort};
        if (data.size() != kRecLen) return {kDataBufferLength};
        joined = joined || inTransaction;
        if (UniqueConflict(data, -1)) return {kDuplicateKey};
        const int64_t id = ++counter;
        MRecord r{data, 1, {}};
        for (const MKey& key : kKeys)
            r.seq.push_back(key.dup ? id : 0);
        records[id] = r;
        PositionOn(cur, k, id);
        return {kOk, "", Raw(k, data)};
    }

    Result Update(int c, const std::string& data, int k, int keyLength) {
        MCursor& cur = cursors[c];
        if (!cur.open) return {kFileNotOpen};
        if (cur.readOnly) return {kAccessDenied};
        if (k < 0 || k >= static_cast<int>(kKeys.size())) return {kInvalidKeyNumber};
        if (keyLength < kKeys[k].length()) return {kKeyBufferTooShort};
        if (data.size() != kRecLen) return {kDataBufferLength};
        if (!cur.hasCurrent) return {kInvalidPositioning};
        joined = joined || inTransaction;
        auto it = records.find(cur.curId);
        if (it == records.end() || it->second.ver != cur.curVer) return {kConflict};
        MRecord& old = it->second;
        for (int key = 0; key < static_cast<int>(kKeys.size()); ++key)
            if (!kKeys[key].mod && Raw(key, old.data) != Raw(key, data))
                return {kModifiableKeyChanged};
        if (UniqueConflict(data, cur.curId)) return {kDuplicateKey};
        bool moved = false;
        for (int key = 0; key < static_cast<int>(kKeys.size()); ++key)
            if (kKeys[key].dup && Index(key, Raw(key, old.data)) != Index(key, Raw(key, data)))
                moved = true;
        const int64_t seq = moved ? ++counter : 0;
        for (int key = 0; key < static_cast<int>(kKeys.size()); ++key)
            if (kKeys[key].dup && Index(key, Raw(key, old.data)) != Index(key, Raw(key, data)))
                old.seq[key] = seq;
        old.data = data;
        ++old.ver;
        PositionOn(cur, k, cur.curId);
        return {kOk, "", Raw(k, data)};
    }

    int16_t Delete(int c) {
        MCursor& cur = cursors[c];
        if (!cur.open) return kFileNotOpen;
        if (cur.readOnly) return kAccessDenied;
        if (!cur.hasCurrent) return kInvalidPositioning;
        joined = joined || inTransaction;
        auto it = records.find(cur.curId);
        if (it == records.end() || it->second.ver != cur.curVer) return kConflict;
        records.erase(it);
        cur.hasCurrent = false;
        return kOk;
    }

    int16_t Begin() {
        if (inTransaction) return kTransactionActive;
        inTransaction = true;
        joined = false;
        saved = records;
        savedCounter = counter;
        return kOk;
    }
    int16_t End(bool commit) {
        if (!inTransaction) return kNoTransaction;
        inTransaction = false;
        if (!commit) {
            records = saved;
            counter = savedCounter;
            if (joined)
                for (MCursor& c : cursors)
                    c.hasCurrent = false;
        }
        return kOk;
    }

  private:
    bool inTransaction = false;
    bool joined = false;
    std::map<int64_t, MRecord> saved;
    int64_t savedCounter = 0;
};

// Byte alphabets per region of the record, small enough to make equal and case-equal keys
// frequent.
char SwapCase(char c) {
    if (c >= 'a' && c <= 'z') return static_cast<char>(c - 32);
    if (c >= 'A' && c <= 'Z') return static_cast<char>(c + 32);
    return c;
}

char Pick(std::mt19937& rng, const char* alphabet) {
    return alphabet[rng() % std::char_traits<char>::length(alphabet)];
}

std::string RandomRecord(std::mt19937& rng) {
    std::string r(kRecLen, ' ');
    for (int i = 0; i < 3; ++i)
        r[i] = Pick(rng, "abABc");
    for (int i = 3; i < 5; ++i)
        r[i] = Pick(rng, "aAbBz");
    r[5] = Pick(rng, "xyz");
    r[6] = Pick(rng, "-+");
    for (int i = 7; i < 9; ++i)
        r[i] = Pick(rng, "pPqQrRsSt");
    r[9] = Pick(rng, "0123\x80\xFF");
    for (int i = 10; i < kRecLen; ++i)
        r[i] = static_cast<char>('A' + rng() % 26);
    // Often a tail of unused bytes, as real records end: blanks, NULs or the last letter
    // repeated, from any point of the part without keys. Chosen from the letters drawn, so that
    // the sequence of operations stays the one each seed was tuned with.
    const int tail = 10 + (r[10] - 'A') % (kRecLen - 9);
    const char fills[] = {' ', '\0', r[static_cast<size_t>(tail - 1)]};
    const int kind = (r[11] - 'A') % 4;
    if (kind < 3) std::fill(r.begin() + tail, r.end(), fills[kind]);
    return r;
}

std::string Mutate(std::mt19937& rng, std::string r) {
    const std::string fresh = RandomRecord(rng);
    switch (rng() % 6) {
        case 0:
            r.replace(0, 3, fresh.substr(0, 3));
            break;  // key 0: not modifiable
        case 1:
            r.replace(3, 2, fresh.substr(3, 2));
            break;  // key 1
        case 2:
            r[5] = fresh[5];
            break;  // key 2
        case 3:
            r.replace(7, 2, fresh.substr(7, 2));
            break;  // key 3: unique
        case 4:
            r[9] = fresh[9];
            break;  // key 4
        default:
            r.replace(10, 14, fresh.substr(10, 14));
            break;  // no key
    }
    if (rng() % 4 == 0) {  // same letters, other case
        for (int i = 3; i < 5; ++i)
            r[i] = SwapCase(r[i]);
    }
    return r;
}

std::string KeyValueFor(std::mt19937& rng, const Model& m, int k) {
    std::string source;
    if (!m.records.empty() && rng() % 3 != 0) {
        auto it = m.records.begin();
        std::advance(it, rng() % m.records.size());
        source = it->second.data;
        if (rng() % 3 == 0)
            for (char& ch : source)
                ch = SwapCase(ch);
    } else {
        source = RandomRecord(rng);
        if (rng() % 8 == 0) source.assign(kRecLen, rng() % 2 ? '\0' : '\xFF');
    }
    return Model::Raw(k, source);
}

std::string Show(const std::string& bytes) {
    std::ostringstream out;
    for (unsigned char c : bytes) {
        if (c >= 32 && c < 127) {
            out << c;
        } else {
            out << "\\x" << std::hex << static_cast<int>(c) << std::dec;
        }
    }
    return out.str();
}

struct ModelParam {
    unsigned seed;
    bool walIndexHeader;
};

class BtrModel : public ::testing::TestWithParam<ModelParam> {
  protected:
    void SetUp() override { UseWalIndexHeader(GetParam().walIndexHeader); }
    void TearDown() override {
        Reset();
        UseWalIndexHeader(true);
    }
};

TEST_P(BtrModel, EngineAgreesWithTheModel) {
    TempDir dir;
    const std::string path = dir.File("MODEL.bt6");
    ASSERT_EQ(Create(path, ModelLayout()), kOk);
    Model m;
    Handle h[kCursors];
    for (int c = 0; c < kCursors; ++c) {
        const bool ro = c == kCursors - 1;
        ASSERT_EQ(h[c].Open(path, ro ? kModeReadOnly : kModeNormal), kOk);
        m.cursors[c].open = true;
        m.cursors[c].readOnly = ro;
    }
    std::mt19937 rng(GetParam().seed);
    const int nkeys = static_cast<int>(kKeys.size());
    int counts[6] = {};  // successful reads, writes, 80s, 5s, 10s, 9s: the run must reach them

    for (int step = 0; step < 4000; ++step) {
        const int c = static_cast<int>(rng() % kCursors);
        int k = static_cast<int>(rng() % nkeys);
        if (rng() % 50 == 0) k = rng() % 2 ? -1 : nkeys;
        int keyLength = 255;
        if (rng() % 60 == 0) keyLength = kKeys[std::clamp(k, 0, nkeys - 1)].length() - 1;
        uint32_t capacity = 64;
        if (rng() % 60 == 0) capacity = kRecLen - 1;
        const unsigned dice = rng() % 100;
        std::ostringstream what;
        what << "step " << step << " block " << c << " key " << k << " ";

        Result expected, actual;
        bool read = false;
        if (dice < 18) {  // Insert
            const std::string rec = RandomRecord(rng);
            what << "insert " << Show(rec);
            expected = m.Insert(c, rec, k, keyLength);
            std::string data = rec, key(255, '\0');
            uint32_t len = kRecLen;
            actual.status = BtrCall(kInsert, h[c].block.data(), data.data(), &len, key.data(),
                                    static_cast<uint8_t>(keyLength), static_cast<int8_t>(k));
            actual.key = key;
        } else if (dice < 32) {  // Update
            const MCursor& mc = m.cursors[c];
            std::string base = mc.hasCurrent && m.records.count(mc.curId)
                                   ? m.records.at(mc.curId).data
                                   : RandomRecord(rng);
            const std::string rec = Mutate(rng, base);
            what << "update " << Show(rec);
            expected = m.Update(c, rec, k, keyLength);
            std::string data = rec, key(255, '\0');
            uint32_t len = kRecLen;
            actual.status = BtrCall(kUpdate, h[c].block.data(), data.data(), &len, key.data(),
                                    static_cast<uint8_t>(keyLength), static_cast<int8_t>(k));
            actual.key = key;
        } else if (dice < 40) {  // Delete
            what << "delete";
            expected.status = m.Delete(c);
            actual.status = h[c].Delete();
        } else if (dice < 96) {  // reads
            static const uint16_t kPositioning[] = {kGetEqual,          kGetEqual, kGetGreater,
                                                    kGetGreaterOrEqual, kGetLess,  kGetLessOrEqual,
                                                    kGetFirst,          kGetLast};
            uint16_t op;
            std::string value;
            if (dice < 66) {
                op = (dice % 2) ? kGetNext : kGetPrevious;
                if (m.cursors[c].keyNo >= 0 && rng() % 10 != 0) k = m.cursors[c].keyNo;
                what << (op == kGetNext ? "next" : "previous");
            } else {
                op = kPositioning[rng() % 8];
                value = KeyValueFor(rng, m, std::clamp(k, 0, nkeys - 1));
                what << "get " << op << " [" << Show(value) << "]";
            }
            expected = m.Get(c, op, k, value, capacity, keyLength);
            std::string data(capacity, '\xEE'), key(255, '\0');
            key.replace(0, value.size(), value);
            uint32_t len = capacity;
            actual.status = BtrCall(op, h[c].block.data(), data.data(), &len, key.data(),
                                    static_cast<uint8_t>(keyLength), static_cast<int8_t>(k));
            if (actual.status == kOk) {
                EXPECT_EQ(len, static_cast<uint32_t>(kRecLen)) << what.str();
                actual.record = data.substr(0, len);
            } else {
                EXPECT_EQ(data, std::string(capacity, '\xEE')) << what.str() << ": bytes copied";
            }
            actual.key = key;
            read = true;
        } else if (dice < 98) {
            const unsigned t = rng() % 3;
            what << (t == 0 ? "begin" : t == 1 ? "end" : "abort");
            expected.status = t == 0 ? m.Begin() : m.End(t == 1);
            actual.status = t == 0 ? Begin() : t == 1 ? End() : Abort();
        } else {
            what << "close and open";
            expected.status = kOk;
            actual.status = h[c].Close();
            if (actual.status == kOk)
                actual.status =
                    h[c].Open(path, m.cursors[c].readOnly ? kModeReadOnly : kModeNormal);
            const bool ro = m.cursors[c].readOnly;
            m.cursors[c] = MCursor{};
            m.cursors[c].open = true;
            m.cursors[c].readOnly = ro;
        }

        ASSERT_EQ(actual.status, expected.status) << what.str();
        if (expected.status == kOk && !expected.key.empty()) {
            ASSERT_EQ(Show(actual.key.substr(0, expected.key.size())), Show(expected.key))
                << what.str();
            if (read) {
                ASSERT_EQ(Show(actual.record), Show(expected.record)) << what.str();
            }
        }
        if (expected.status == kOk) counts[read ? 0 : 1]++;
        if (expected.status == kConflict) counts[2]++;
        if (expected.status == kDuplicateKey) counts[3]++;
        if (expected.status == kModifiableKeyChanged) counts[4]++;
        if (expected.status == kEndOfFile) counts[5]++;
    }
    if (Counts().transaction) End();
    for (int n : counts)
        EXPECT_GT(n, 5);
    // Every key walks the same records in the same order.
    for (int k = 0; k < nkeys; ++k) {
        std::vector<std::string> modelWalk;
        for (const auto& e : m.Ordered(k))
            modelWalk.push_back(Show(m.records.at(e.id).data));
        std::vector<std::string> engineWalk;
        for (const std::string& r : Walk(h[0], static_cast<int8_t>(k)))
            engineWalk.push_back(Show(r));
        EXPECT_EQ(engineWalk, modelWalk) << "key " << k;
    }
}

INSTANTIATE_TEST_SUITE_P(BtrSeeds, BtrModel,
                         ::testing::Values(ModelParam{1, true}, ModelParam{2, true},
                                           ModelParam{3, true}, ModelParam{4, false},
                                           ModelParam{5, false}),
                         [](const ::testing::TestParamInfo<ModelParam>& info) {
                             return "Seed" + std::to_string(info.param.seed) +
                                    (info.param.walIndexHeader ? "WalIndex" : "DataVersion");
                         });

}  // namespace
}  // namespace zl3::btr::test
