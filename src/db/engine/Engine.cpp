// The operations of BtrCall: position blocks, cursors with their read-ahead, writes and the
// process's transaction.
//
// Position block (128 bytes, written by Open): "ZL3BTRV\1", the cursor's slot (u32) at 8, its
// generation (u64) at 16, zeros after. Everything else lives in this process: a block whose
// magic, slot or generation does not match a live cursor gives 3. Generations never repeat
// within a process and start from a random value, so a block copied from another process or
// left over from a closed file does not match by accident.
//
// Cursor position: the key path (key number), the index form of the key and the duplicate
// sequence of the record it stands on, plus that record's number and version (the "current
// record" that Update and Delete act on). Get Next/Previous continue from the key and sequence,
// so the position survives the deletion of its record and changes made by others.
//
// Read-ahead: a positioning Get fetches a batch of rows in key order (16, doubling with each
// refill up to 256 rows or 256 KiB); Get Next/Previous are then served from memory while the
// file's generation (see DbFile::Refresh) has not moved — any commit by anyone, or a write
// through this process, makes the next call fetch again from the position.
//
// What was measured on the track file (bench_btrieve: 50,000 records of 900 bytes, 6 keys, on a
// shared 2-core machine, per second of CPU time):
//  - one query per Get Next (LIMIT 1), snapshot held: ~660,000 Get Next/s; batches of up to 64
//    rows: ~1.57 M/s; up to 256 rows: ~1.65 M/s (the raw SQLite scan: ~2.0 M rows/s);
//  - changes detected with PRAGMA data_version on every call instead of the WAL-index header:
//    Get Next ~610,000/s, Get Equal ~240,000/s (against ~1.6 M/s and ~475,000/s);
//  - a read transaction per statement instead of a snapshot held between calls: ~+0.8 µs per
//    Get Equal (two lock system calls);
//  - memory-mapped reads: Get Equal ~460,000/s against ~310,000/s through SQLite's page cache;
//  - PRAGMA cell_size_check=ON: Get Equal -45 % (every page re-checked when mapped), left off.
// perf on the walk: ~40 % in memcpy (the record copied from the mapping into the batch, then
// into the caller's buffer), ~30 % in SQLite's index stepping and row lookups.
// Records are stored in the order they were inserted. When that is not key order (tracks
// inserted in random order), a key-0 walk looks rows up all over the file and SQLite itself
// reads ~0.9 M rows/s; the engine stays at ~90 % of that. A table clustered on key 0 (WITHOUT
// ROWID) was tried: ~2.4 M rows/s on key 0 whatever the insertion order, but walks on the other
// keys twice as slow, a file 20 % larger and the 4 KB records spilling into overflow pages; not
// kept. A save and load with zl3-btr rewrites a file in key-0 order.
//
// Idle read snapshots: a snapshot held by a process that then stops calling would keep the
// other processes' write-ahead log from being checkpointed and reset. A background thread
// (started on demand, stopping when nothing is held) ends every snapshot not used for one
// 100 ms period.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Btrieve.h"
#include "FichierPlateforme.h"
#include "Store.h"

namespace zl3::btr {
namespace {

constexpr uint8_t kBlockMagic[8] = {'Z', 'L', '3', 'B', 'T', 'R', 'V', 1};
constexpr int kFirstBatch = 16;
constexpr int kMaxBatchRows = 256;
constexpr size_t kMaxBatchBytes = 256 * 1024;
constexpr auto kIdlePeriod = std::chrono::milliseconds(100);

struct Cursor {
    uint32_t slot = 0;
    uint64_t gen = 0;
    DbFile* file = nullptr;
    bool readOnly = false;

    int keyNo = -1;  // key path of the position; -1: no position
    std::vector<uint8_t> posKey;
    // The position is row posRow of the batch and posKey is not worked out yet: a walk needs it
    // only to read the next batch (PositionKey).
    bool posKeyPending = false;
    int64_t posSeq = 0;
    bool hasCurrent = false;
    int64_t curId = 0;
    int64_t curVer = 0;  // 0 on a read-only cursor, which never updates nor deletes

    // Read-ahead batch: rows [begin, end) in ascending key order, posRow the position's row.
    int capacity = 0;
    std::vector<uint8_t> arena;
    std::vector<Row> rows;
    int begin = 0;
    int end = 0;
    int posRow = -1;
    bool atEof = false;  // nothing after rows[end-1]
    bool atBof = false;  // nothing before rows[begin]
    uint64_t batchGen = 0;
    int nextBatch = kFirstBatch;
};

// The engine's lock, taken by every call and by the idle-snapshot thread. That thread wakes ten
// times a second, so the lock is almost never contended: taking it is one atomic exchange and
// releasing it a plain store (a std::mutex pays a second atomic operation on release, on each of
// the hundreds of thousands of calls of a report).
class EngineLock {
  public:
    void lock() noexcept {
        while (taken_.exchange(true, std::memory_order_acquire))
            while (taken_.load(std::memory_order_relaxed))
                std::this_thread::yield();
    }
    void unlock() noexcept { taken_.store(false, std::memory_order_release); }

  private:
    std::atomic<bool> taken_{false};
};

struct Engine {
    EngineLock mu;
    std::vector<std::unique_ptr<Cursor>> slots;
    std::vector<uint32_t> freeSlots;
    std::vector<std::unique_ptr<DbFile>> files;
    bool inTransaction = false;
    std::vector<DbFile*> joined;  // files written inside the transaction, in that order
    uint64_t nextGen = 0;
    bool janitor = false;
    std::condition_variable_any wake;

    // Scratch space reused by every call.
    std::vector<uint8_t> keys;
    std::vector<uint8_t> oldKeys;
    std::vector<const uint8_t*> keyPtrs;
    std::vector<const uint8_t*> oldPtrs;
    std::vector<int64_t> seqs;
    std::vector<int64_t> oldSeqs;
    std::vector<uint8_t> oldData;
    uint8_t value[kMaxKeyLength];

    // State inherited through fork(): the parent's connections must never be used or closed
    // by the child.
    std::vector<std::unique_ptr<Cursor>> orphanCursors;
    std::vector<std::unique_ptr<DbFile>> orphanFiles;
};

void PrepareFork();
void ParentAfterFork();
void ChildAfterFork();

Engine& E() {
    // Never destroyed: the idle thread may still be waiting when the process exits.
    static Engine* engine = [] {
        auto* e = new Engine;
        std::random_device rd;
        e->nextGen = (uint64_t{rd()} << 32 | rd()) & 0x0000FFFFFFFFFFFFull;
        plat::AtFork(PrepareFork, ParentAfterFork, ChildAfterFork);
        return e;
    }();
    return *engine;
}

void PrepareFork() {
    E().mu.lock();
}
void ParentAfterFork() {
    E().mu.unlock();
}
void ChildAfterFork() {
    Engine& e = E();
    for (auto& c : e.slots)
        e.orphanCursors.push_back(std::move(c));
    for (auto& f : e.files)
        e.orphanFiles.push_back(std::move(f));
    e.slots.clear();
    e.freeSlots.clear();
    e.files.clear();
    e.joined.clear();
    e.inTransaction = false;
    e.janitor = false;
    e.mu.unlock();
}

// ---- Call arguments ---------------------------------------------------------------------------

struct Call {
    uint8_t* block;
    uint8_t* data;
    uint32_t* dataLength;
    uint32_t capacity;
    uint8_t* key;
    uint8_t keyLength;
    int8_t keyNumber;
};

bool PathFromKey(const Call& c, std::string& path) {
    if (!c.key) return false;
    size_t n = 0;
    while (n < c.keyLength && c.key[n] != 0)
        ++n;
    while (n > 0 && c.key[n - 1] == ' ')
        --n;
    path.assign(reinterpret_cast<const char*>(c.key), n);
    return !path.empty();
}

// ---- Position blocks and cursors --------------------------------------------------------------

Cursor* Lookup(Engine& e, const uint8_t* block) {
    if (!block || std::memcmp(block, kBlockMagic, sizeof kBlockMagic) != 0) return nullptr;
    uint32_t slot;
    uint64_t gen;
    std::memcpy(&slot, block + 8, sizeof slot);
    std::memcpy(&gen, block + 16, sizeof gen);
    if (slot >= e.slots.size()) return nullptr;
    Cursor* c = e.slots[slot].get();
    return c && c->gen == gen ? c : nullptr;
}

Cursor* NewCursor(Engine& e, DbFile* file, bool readOnly, uint8_t* block) {
    auto cursor = std::make_unique<Cursor>();
    if (e.freeSlots.empty()) {
        cursor->slot = static_cast<uint32_t>(e.slots.size());
        e.slots.emplace_back();
    } else {
        cursor->slot = e.freeSlots.back();
        e.freeSlots.pop_back();
    }
    cursor->gen = ++e.nextGen;
    cursor->file = file;
    cursor->readOnly = readOnly;
    const size_t recLen = file->Def().recordLength;
    cursor->capacity =
        static_cast<int>(std::clamp<size_t>(kMaxBatchBytes / recLen, 1, kMaxBatchRows));
    Cursor* raw = cursor.get();
    e.slots[cursor->slot] = std::move(cursor);
    ++file->openBlocks;

    std::memset(block, 0, kPositionBlockSize);
    std::memcpy(block, kBlockMagic, sizeof kBlockMagic);
    std::memcpy(block + 8, &raw->slot, sizeof raw->slot);
    std::memcpy(block + 16, &raw->gen, sizeof raw->gen);
    return raw;
}

void CloseFileIfUnused(Engine& e, DbFile* file) {
    if (file->openBlocks > 0 || file->inTransaction) return;
    auto it = std::find_if(e.files.begin(), e.files.end(),
                           [file](const std::unique_ptr<DbFile>& f) { return f.get() == file; });
    if (it != e.files.end()) e.files.erase(it);
}

void FreeCursor(Engine& e, Cursor* cursor) {
    DbFile* file = cursor->file;
    const uint32_t slot = cursor->slot;
    e.slots[slot].reset();
    e.freeSlots.push_back(slot);
    --file->openBlocks;
    CloseFileIfUnused(e, file);
}

DbFile* FindOpenFile(Engine& e, const plat::FileId& id) {
    for (auto& f : e.files)
        if (f->Id() == id) return f.get();
    return nullptr;
}

void JoinTransaction(Engine& e, DbFile& f) {
    if (e.inTransaction && !f.inTransaction) {
        f.inTransaction = true;
        e.joined.push_back(&f);
    }
}

// ---- Idle read snapshots ----------------------------------------------------------------------

void IdleLoop() {
    Engine& e = E();
    std::unique_lock<EngineLock> lock(e.mu);
    while (e.janitor) {
        e.wake.wait_for(lock, kIdlePeriod);
        bool held = false;
        for (auto& f : e.files) {
            if (f->IdleSnapshot()) f->EndReadSnapshot();
            held = held || f->Transaction() == TxnState::kReadSnapshot;
        }
        if (!held) e.janitor = false;
    }
}

void WatchSnapshot(Engine& e, DbFile& f) {
    if (e.janitor || f.Transaction() != TxnState::kReadSnapshot) return;
    try {
        std::thread(IdleLoop).detach();
        e.janitor = true;
    } catch (const std::system_error&) {
        f.EndReadSnapshot();  // no thread to end it later: do not keep it
    }
}

// ---- Reads ------------------------------------------------------------------------------------

// Works out the position's index key from its row of the batch, if not done yet.
void PositionKey(Cursor& c) {
    if (!c.posKeyPending) return;
    c.posKeyPending = false;
    const FileDef& def = c.file->Def();
    const KeyDef& kd = def.keys[static_cast<size_t>(c.keyNo)];
    c.posKey.resize(kd.length);
    IndexKey(kd, c.arena.data() + static_cast<size_t>(c.posRow) * def.recordLength,
             c.posKey.data());
}

// Forgets the batch; the position's key is kept, worked out first while its row is there.
void DropBatch(Cursor& c) {
    PositionKey(c);
    c.posRow = -1;
    c.begin = c.end = 0;
}

bool BatchValid(const Cursor& c) {
    return c.posRow >= 0 && c.batchGen == c.file->Generation();
}

int16_t Fetch(Engine& e, Cursor& c, int keyNo, Query q, const uint8_t* value, int64_t seq,
              int limit) {
    DbFile& f = *c.file;
    const size_t recLen = f.Def().recordLength;
    if (c.arena.empty()) {
        c.arena.resize(static_cast<size_t>(c.capacity) * recLen);
        c.rows.resize(static_cast<size_t>(c.capacity));
    }
    DropBatch(c);
    const int16_t status = f.Fetch(keyNo, q, value, seq, limit, c.arena.data(), c.rows.data(),
                                   c.begin, c.end, !c.readOnly);
    WatchSnapshot(e, f);
    if (status != kOk) {
        c.begin = c.end = 0;
        return status;
    }
    c.batchGen = f.Generation();
    const bool full = c.end - c.begin == limit;
    if (Descending(q)) {
        c.atBof = !full;
        c.atEof = q == Query::kLast;
    } else {
        c.atEof = !full;
        c.atBof = q == Query::kFirst;
    }
    return kOk;
}

// Makes row `row` of the batch the position and returns it to the caller.
void Serve(Cursor& c, int keyNo, int row, const Call& call) {
    const FileDef& def = c.file->Def();
    const KeyDef& kd = def.keys[static_cast<size_t>(keyNo)];
    const uint8_t* record = c.arena.data() + static_cast<size_t>(row) * def.recordLength;
    std::memcpy(call.data, record, def.recordLength);
    *call.dataLength = def.recordLength;
    RawKey(kd, record, call.key);
    const Row& r = c.rows[static_cast<size_t>(row)];
    c.posSeq = r.seq;
    c.curId = r.id;
    c.curVer = r.ver;
    c.hasCurrent = true;
    c.keyNo = keyNo;
    c.posRow = row;
    c.posKeyPending = true;
}

// Checks common to every Get; finds the cursor and brings its file up to date.
int16_t GetPrologue(Engine& e, const Call& call, Cursor*& c) {
    c = Lookup(e, call.block);
    if (!c) return kFileNotOpen;
    c->file->Refresh();
    const FileDef& def = c->file->Def();
    if (call.keyNumber < 0 || static_cast<size_t>(call.keyNumber) >= def.keys.size())
        return kInvalidKeyNumber;
    if (call.keyLength < def.keys[static_cast<size_t>(call.keyNumber)].length)
        return kKeyBufferTooShort;
    if (call.capacity < def.recordLength) return kDataBufferLength;
    return kOk;
}

int16_t DoPositioningGet(Engine& e, const Call& call, Query q) {
    Cursor* c;
    int16_t status = GetPrologue(e, call, c);
    if (status != kOk) return status;
    const int keyNo = call.keyNumber;
    const KeyDef& kd = c->file->Def().keys[static_cast<size_t>(keyNo)];
    if (q != Query::kFirst && q != Query::kLast) IndexKeyFromValue(kd, call.key, e.value);
    if (q == Query::kEqual) {
        // One row, read straight into the caller's buffer (a found record only: the buffer is
        // untouched otherwise); the next Get Next/Previous reads on from the position.
        DbFile& f = *c->file;
        Row row;
        int b = 0, n = 0;
        DropBatch(*c);
        status = f.Fetch(keyNo, q, e.value, 0, 1, call.data, &row, b, n, !c->readOnly);
        WatchSnapshot(e, f);
        if (status != kOk) return status;
        if (n == b) return kKeyNotFound;
        c->nextBatch = std::min(kFirstBatch * 2, c->capacity);
        *call.dataLength = f.Def().recordLength;
        RawKey(kd, call.data, call.key);
        // The row found has exactly the index form searched for.
        c->posKey.assign(e.value, e.value + kd.length);
        c->posSeq = row.seq;
        c->curId = row.id;
        c->curVer = row.ver;
        c->hasCurrent = true;
        c->keyNo = keyNo;
        return kOk;
    }
    // The position only moves when a record is found.
    status = Fetch(e, *c, keyNo, q, e.value, 0,
                   q == Query::kEqual ? 1 : std::min(kFirstBatch, c->capacity));
    if (status != kOk) return status;
    if (c->begin == c->end) return q == Query::kEqual ? kKeyNotFound : kEndOfFile;
    c->nextBatch = std::min(kFirstBatch * 2, c->capacity);
    Serve(*c, keyNo, Descending(q) ? c->end - 1 : c->begin, call);
    return kOk;
}

int16_t DoStep(Engine& e, const Call& call, bool forward) {
    Cursor* c;
    int16_t status = GetPrologue(e, call, c);
    if (status != kOk) return status;
    if (c->keyNo < 0) return kInvalidPositioning;
    if (call.keyNumber != c->keyNo) return kDifferentKeyNumber;
    if (BatchValid(*c)) {
        const int next = c->posRow + (forward ? 1 : -1);
        if (next >= c->begin && next < c->end) {
            Serve(*c, c->keyNo, next, call);
            return kOk;
        }
        if (forward ? c->atEof : c->atBof) return kEndOfFile;
    }
    const int limit = c->nextBatch;
    c->nextBatch = std::min(limit * 2, c->capacity);
    // The rows after (before) the position in (key, duplicate order). A key without duplicates
    // has order 0 on every row, so that is a plain range on the key, which SQLite walks without
    // testing each row.
    const bool duplicates = c->file->Def().keys[static_cast<size_t>(c->keyNo)].duplicates;
    const Query q = forward ? (duplicates ? Query::kAfter : Query::kGreater)
                            : (duplicates ? Query::kBefore : Query::kLess);
    PositionKey(*c);
    status = Fetch(e, *c, c->keyNo, q, c->posKey.data(), c->posSeq, limit);
    if (status != kOk) return status;
    if (c->begin == c->end) return kEndOfFile;
    Serve(*c, c->keyNo, forward ? c->begin : c->end - 1, call);
    return kOk;
}

// ---- Writes -----------------------------------------------------------------------------------

// Index forms of every key of `record` into `out` (key after key); pointers null for null keys.
void BuildKeys(const FileDef& def, const uint8_t* record, std::vector<uint8_t>& out,
               std::vector<const uint8_t*>& ptrs) {
    size_t total = 0;
    for (const KeyDef& k : def.keys)
        total += k.length;
    out.resize(total);
    ptrs.resize(def.keys.size());
    size_t at = 0;
    for (size_t k = 0; k < def.keys.size(); ++k) {
        uint8_t* p = out.data() + at;
        ptrs[k] = IndexKey(def.keys[k], record, p) ? p : nullptr;
        at += def.keys[k].length;
    }
}

void PositionOnWritten(Cursor& c, int keyNo, const uint8_t* record, int64_t id, int64_t ver,
                       const std::vector<const uint8_t*>& keys, const std::vector<int64_t>& seqs,
                       const Call& call) {
    const KeyDef& kd = c.file->Def().keys[static_cast<size_t>(keyNo)];
    DropBatch(c);
    c.hasCurrent = true;
    c.curId = id;
    c.curVer = ver;
    RawKey(kd, record, call.key);
    if (keys[static_cast<size_t>(keyNo)]) {
        c.keyNo = keyNo;
        c.posKey.assign(keys[static_cast<size_t>(keyNo)],
                        keys[static_cast<size_t>(keyNo)] + kd.length);
        c.posSeq = seqs[static_cast<size_t>(keyNo)];
    } else {
        c.keyNo = -1;  // a null key has no place in its index
    }
}

// Checks common to Insert and Update.
int16_t WritePrologue(Engine& e, const Call& call, Cursor*& c) {
    c = Lookup(e, call.block);
    if (!c) return kFileNotOpen;
    c->file->Refresh();
    if (c->readOnly) return kAccessDenied;
    const FileDef& def = c->file->Def();
    if (call.keyNumber < 0 || static_cast<size_t>(call.keyNumber) >= def.keys.size())
        return kInvalidKeyNumber;
    if (call.keyLength < def.keys[static_cast<size_t>(call.keyNumber)].length)
        return kKeyBufferTooShort;
    if (!call.data || *call.dataLength != def.recordLength) return kDataBufferLength;
    return kOk;
}

int16_t DoInsert(Engine& e, const Call& call) {
    Cursor* c;
    int16_t status = WritePrologue(e, call, c);
    if (status != kOk) return status;
    DbFile& f = *c->file;
    const FileDef& def = f.Def();
    status = f.BeginWrite();
    if (status != kOk) return status;
    JoinTransaction(e, f);
    int64_t seq = 0;
    status = f.NextSequence(seq);
    if (status == kOk) {
        BuildKeys(def, call.data, e.keys, e.keyPtrs);
        e.seqs.assign(def.keys.size(), 0);
        for (size_t k = 0; k < def.keys.size(); ++k)
            if (def.keys[k].duplicates) e.seqs[k] = seq;
        status = f.InsertRecord(seq, call.data, e.keyPtrs, e.seqs);
    }
    status = f.FinishWrite(status, e.inTransaction);
    if (status == kOk)
        PositionOnWritten(*c, call.keyNumber, call.data, seq, 1, e.keyPtrs, e.seqs, call);
    return status;
}

// The record the cursor stands on, as stored now: 80 when someone changed or deleted it since
// this position read it.
int16_t CheckCurrent(Engine& e, Cursor& c, int64_t& ver) {
    bool found = false;
    const int16_t status = c.file->ReadRecord(c.curId, found, ver, e.oldSeqs, e.oldData);
    if (status != kOk) return status;
    return found && ver == c.curVer ? kOk : kConflict;
}

int16_t DoUpdate(Engine& e, const Call& call) {
    Cursor* c;
    int16_t status = WritePrologue(e, call, c);
    if (status != kOk) return status;
    if (!c->hasCurrent) return kInvalidPositioning;
    DbFile& f = *c->file;
    const FileDef& def = f.Def();
    status = f.BeginWrite();
    if (status != kOk) return status;
    JoinTransaction(e, f);
    int64_t ver = 0;
    status = CheckCurrent(e, *c, ver);
    if (status == kOk) {
        for (const KeyDef& k : def.keys)
            for (const SegmentDef& s : k.segments)
                if (!k.modifiable &&
                    std::memcmp(e.oldData.data() + s.offset, call.data + s.offset, s.length) != 0)
                    status = kModifiableKeyChanged;
    }
    if (status == kOk) {
        BuildKeys(def, call.data, e.keys, e.keyPtrs);
        BuildKeys(def, e.oldData.data(), e.oldKeys, e.oldPtrs);
        const std::vector<const uint8_t*>& oldPtrs = e.oldPtrs;
        // A duplicate key whose value changes goes to the end of its new duplicates; an
        // unchanged one keeps its place.
        int64_t seq = 0;
        e.seqs.assign(def.keys.size(), 0);
        for (size_t k = 0; k < def.keys.size() && status == kOk; ++k) {
            if (!def.keys[k].duplicates) continue;
            const bool same =
                (e.keyPtrs[k] == nullptr) == (oldPtrs[k] == nullptr) &&
                (!e.keyPtrs[k] || std::memcmp(e.keyPtrs[k], oldPtrs[k], def.keys[k].length) == 0);
            if (same) {
                e.seqs[k] = e.oldSeqs[k];
            } else {
                if (seq == 0) status = f.NextSequence(seq);
                e.seqs[k] = seq;
            }
        }
        if (status == kOk) status = f.UpdateRecord(c->curId, ver + 1, call.data, e.keyPtrs, e.seqs);
    }
    status = f.FinishWrite(status, e.inTransaction);
    if (status == kOk)
        PositionOnWritten(*c, call.keyNumber, call.data, c->curId, ver + 1, e.keyPtrs, e.seqs,
                          call);
    return status;
}

int16_t DoDelete(Engine& e, const Call& call) {
    Cursor* c = Lookup(e, call.block);
    if (!c) return kFileNotOpen;
    DbFile& f = *c->file;
    f.Refresh();
    if (c->readOnly) return kAccessDenied;
    if (!c->hasCurrent) return kInvalidPositioning;
    int16_t status = f.BeginWrite();
    if (status != kOk) return status;
    JoinTransaction(e, f);
    int64_t ver = 0;
    status = CheckCurrent(e, *c, ver);
    if (status == kOk) status = f.DeleteRecord(c->curId);
    status = f.FinishWrite(status, e.inTransaction);
    if (status == kOk) {
        // The position stays where the record was: Get Next gives the one that followed.
        DropBatch(*c);
        c->hasCurrent = false;
    }
    return status;
}

// ---- Files ------------------------------------------------------------------------------------

int16_t DoOpen(Engine& e, const Call& call) {
    if (!call.block) return kFileNotOpen;
    std::string path;
    if (!PathFromKey(call, path)) return kInvalidFileName;
    const int mode = call.keyNumber;
    if (mode > kModeNormal || mode < kModeExclusive) return kInvalidOperation;
    plat::PathKind kind;
    plat::FileId id;
    const int16_t examined = plat::Examine(path, kind, id);
    if (examined != kOk) return examined;
    if (kind == plat::PathKind::kDirectory) return kFileNotFound;
    if (kind != plat::PathKind::kRegular) return kNotABtrieveFile;
    DbFile* file = FindOpenFile(e, id);
    if (file) {
        if (file->Exclusive() || mode == kModeExclusive) return kFileLocked;
    } else {
        std::unique_ptr<DbFile> opened;
        const int16_t status = DbFile::Open(path, mode == kModeExclusive, opened);
        if (status != kOk) return status;
        file = opened.get();
        e.files.push_back(std::move(opened));
    }
    NewCursor(e, file, mode == kModeReadOnly || !file->Writable(), call.block);
    return kOk;
}

int16_t DoClose(Engine& e, const Call& call) {
    Cursor* c = Lookup(e, call.block);
    if (!c) return kFileNotOpen;
    FreeCursor(e, c);
    std::memset(call.block, 0, sizeof kBlockMagic);
    return kOk;
}

int16_t DoCreate(Engine& e, const Call& call) {
    std::string path;
    if (!PathFromKey(call, path)) return kInvalidFileName;
    if (call.keyNumber != 0 && call.keyNumber != -1) return kInvalidOperation;
    FileDef def;
    const int16_t status = ParseLayout(call.data, call.data ? call.capacity : 0, def);
    if (status != kOk) return status;
    const bool overwrite = call.keyNumber == 0;
    plat::PathKind kind;
    plat::FileId id;
    if (overwrite && plat::Examine(path, kind, id) == kOk && FindOpenFile(e, id)) return kFileLocked;
    return CreateDatabase(path, def, overwrite);
}

void PutLittleEndian32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(v >> (8 * i));
}

int16_t DoStat(Engine& e, const Call& call) {
    Cursor* c = Lookup(e, call.block);
    if (!c) return kFileNotOpen;
    DbFile& f = *c->file;
    f.Refresh();
    const FileDef& def = f.Def();
    const size_t size = def.layout.size();
    if (!call.data || call.capacity < size) return kDataBufferLength;
    int64_t records = 0;
    int16_t status = f.CountRecords(records);
    std::vector<int64_t> distinct(def.keys.size(), 0);
    for (size_t k = 0; k < def.keys.size() && status == kOk; ++k)
        status = f.CountDistinct(static_cast<int>(k), distinct[k]);
    WatchSnapshot(e, f);
    if (status != kOk) return status;
    std::memcpy(call.data, def.layout.data(), size);
    call.data[5] = kFileVersion;
    const uint32_t count = static_cast<uint32_t>(std::min<int64_t>(records, UINT32_MAX));
    PutLittleEndian32(call.data + 6, count);
    size_t at = kFilePartSize;
    for (size_t k = 0; k < def.keys.size(); ++k) {
        const uint32_t unique = static_cast<uint32_t>(std::min<int64_t>(distinct[k], UINT32_MAX));
        for (size_t s = 0; s < def.keys[k].segments.size(); ++s, at += kSegmentPartSize)
            PutLittleEndian32(call.data + at + 6, unique);
    }
    *call.dataLength = static_cast<uint32_t>(size);
    return kOk;
}

// ---- Transactions -----------------------------------------------------------------------------

// Ends the transaction on every file that joined it (the files written inside it).
//
// What End guarantees across several files: each file commits on its own, one after the other
// in the order the files were first written; SQLite cannot commit several WAL files as one.
// Each file's part is atomic and survives a crash of the process as soon as that file has
// committed (synchronous=NORMAL: a power cut may lose the last commits, never half of one).
// The set is not atomic: a crash between the commits of files A and B leaves A with the
// transaction's changes and B without them, both files consistent and passing the integrity
// check. A commit that fails (disk full, I/O error) makes End return its status; the files
// committed before it keep their changes, that file and the following ones are rolled back.
// Abort, and a crash before End, leave no trace in any file. Other processes see each file's
// part as soon as that file commits.
int16_t EndTransaction(Engine& e, bool commit) {
    int16_t result = kOk;
    std::vector<DbFile*> files;
    files.swap(e.joined);
    for (DbFile* f : files) {
        if (commit && result == kOk && f->Transaction() == TxnState::kWrite) {
            result = f->Commit();
        } else {
            f->Rollback();
        }
    }
    e.inTransaction = false;
    if (!commit || result != kOk) {
        // Records written inside the transaction may be gone: no cursor on these files keeps a
        // current record (Update/Delete give 8 until the next Get); positions stay.
        for (auto& c : e.slots)
            if (c && std::find(files.begin(), files.end(), c->file) != files.end()) {
                c->hasCurrent = false;
                DropBatch(*c);
            }
    }
    for (DbFile* f : files) {
        f->inTransaction = false;
        CloseFileIfUnused(e, f);
    }
    return result;
}

int16_t DoReset(Engine& e) {
    if (e.inTransaction) EndTransaction(e, false);
    for (auto& c : e.slots)
        c.reset();
    e.slots.clear();
    e.freeSlots.clear();
    e.files.clear();
    return kOk;
}

}  // namespace

int16_t BtrCall(uint16_t operation, void* positionBlock, void* dataBuffer, uint32_t* dataLength,
                void* keyBuffer, uint8_t keyLength, int8_t keyNumber) {
    Engine& e = E();
    std::lock_guard<EngineLock> lock(e.mu);
    uint32_t noLength = 0;
    Call call{static_cast<uint8_t*>(positionBlock),
              static_cast<uint8_t*>(dataBuffer),
              dataLength ? dataLength : &noLength,
              0,
              static_cast<uint8_t*>(keyBuffer),
              keyBuffer ? keyLength : uint8_t{0},
              keyNumber};
    call.capacity = call.data ? *call.dataLength : 0;

    switch (operation) {
        case kOpen:
            return DoOpen(e, call);
        case kClose:
        case kRelease:
            return DoClose(e, call);
        case kInsert:
            return DoInsert(e, call);
        case kUpdate:
            return DoUpdate(e, call);
        case kDelete:
            return DoDelete(e, call);
        case kGetEqual:
            return DoPositioningGet(e, call, Query::kEqual);
        case kGetNext:
            return DoStep(e, call, true);
        case kGetPrevious:
            return DoStep(e, call, false);
        case kGetGreater:
            return DoPositioningGet(e, call, Query::kGreater);
        case kGetGreaterOrEqual:
            return DoPositioningGet(e, call, Query::kGreaterOrEqual);
        case kGetLess:
            return DoPositioningGet(e, call, Query::kLess);
        case kGetLessOrEqual:
            return DoPositioningGet(e, call, Query::kLessOrEqual);
        case kGetFirst:
            return DoPositioningGet(e, call, Query::kFirst);
        case kGetLast:
            return DoPositioningGet(e, call, Query::kLast);
        case kCreate:
            return DoCreate(e, call);
        case kStat:
            return DoStat(e, call);
        case kBeginTransaction:
        case kBeginConcurrentTransaction:
            if (e.inTransaction) return kTransactionActive;
            e.inTransaction = true;
            return kOk;
        case kEndTransaction:
        case kAbortTransaction:
            if (!e.inTransaction) return kNoTransaction;
            return EndTransaction(e, operation == kEndTransaction);
        case kReset:
            return DoReset(e);
        default:
            return kInvalidOperation;
    }
}

EngineCounts Counts() {
    Engine& e = E();
    std::lock_guard<EngineLock> lock(e.mu);
    EngineCounts counts;
    counts.files = static_cast<int>(e.files.size());
    for (auto& c : e.slots)
        counts.positionBlocks += c ? 1 : 0;
    counts.transaction = e.inTransaction;
    return counts;
}

const char* StatusMeaning(int16_t status) {
    switch (status) {
        case kOk:
            return "success";
        case kInvalidOperation:
            return "invalid operation or parameter";
        case kIoError:
            return "I/O error (file damaged or unreadable)";
        case kFileNotOpen:
            return "file not open";
        case kKeyNotFound:
            return "key value not found";
        case kDuplicateKey:
            return "duplicate key value";
        case kInvalidKeyNumber:
            return "invalid key number";
        case kDifferentKeyNumber:
            return "key number changed";
        case kInvalidPositioning:
            return "no current position";
        case kEndOfFile:
            return "end of file";
        case kModifiableKeyChanged:
            return "non-modifiable key value changed";
        case kInvalidFileName:
            return "invalid file name";
        case kFileNotFound:
            return "file not found";
        case kDiskFull:
            return "disk full";
        case kKeyBufferTooShort:
            return "key buffer too short";
        case kDataBufferLength:
            return "data buffer length or record length wrong";
        case kPageSizeError:
            return "invalid page size";
        case kNumberOfKeysInvalid:
            return "invalid number of keys";
        case kKeyPositionInvalid:
            return "invalid key position";
        case kRecordLengthInvalid:
            return "invalid record length";
        case kKeyLengthInvalid:
            return "invalid key length";
        case kNotABtrieveFile:
            return "not a database file of this engine";
        case kTransactionActive:
            return "transaction already active";
        case kNoTransaction:
            return "no transaction active";
        case kInvalidKeyFlags:
            return "invalid or unsupported key flags";
        case kAccessDenied:
            return "access denied (read-only)";
        case kFileExists:
            return "file already exists";
        case kConflict:
            return "record changed by another since it was read";
        case kRecordLocked:
            return "record or page locked";
        case kFileLocked:
            return "file locked by another process";
        case kIncompatibleMode:
            return "incompatible open mode";
        default:
            return "unknown status";
    }
}

}  // namespace zl3::btr
