// One database file on disk: its SQLite connection for this process, its prepared statements,
// the detection of changes made by other processes, and its transaction state.
//
// Layout of a file:
//   PRAGMA application_id = kApplicationId (bytes 68..71 of the header: the marker that tells
//   Open "one of ours"), PRAGMA user_version = kSchemaVersion, journal_mode = WAL;
//   zl3_file(layout BLOB, seq INTEGER): one row, the creation layout and the sequence counter that
//   numbers records and duplicate entries (it only grows, so numbers are never reused);
//   zl3_records(id INTEGER PRIMARY KEY, ver INTEGER, k0 BLOB, s0 INTEGER, ..., data BLOB): one
//   row per record: its number, its version (incremented by each update, checked by Update and
//   Delete), for each key N the key's index form kN and its duplicate order sN (0 for a unique
//   key; NULL for both when the key is null), and the record's bytes in their stored form
//   (the trailing run of one repeated byte cut, see RecordForm.h);
//   index zl3_keyN on (kN, sN) for every key, UNIQUE for keys without duplicates.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FichierPlateforme.h"
#include "KeyLayout.h"

struct sqlite3;
struct sqlite3_stmt;

namespace zl3::btr {

inline constexpr uint32_t kApplicationId = 0x5A4C3342;  // "ZL3B"
inline constexpr int kSchemaVersion = 1;
inline constexpr uint8_t kFileVersion = 0x60;  // file version byte reported by Stat

// The PRAGMA statements every connection of the engine runs when it opens a file: the memory
// map, the page cache, the sync and journal settings (benchmarks read with the same).
std::string ConnectionPragmas();

// Maps an SQLite result code to an engine status (busy → 85, full → 18, read-only → 46,
// constraint → 5, corruption and I/O → 2).
int16_t StatusFromSqlite(int rc);

// What the first 100 bytes of a file say about it.
enum class FileKind { kOurs, kForeignSqlite, kNotSqlite };
FileKind ClassifyHeader(const uint8_t* header, size_t length);

// Creates an empty file with the definition `def`. The file is built under a temporary name
// next to `path` and moved into place, so that no reader ever sees half a file. With
// `overwrite` false an existing file gives 59. The caller has checked that this process does
// not hold the file open; another process holding it gives 85.
int16_t CreateDatabase(const std::string& path, const FileDef& def, bool overwrite);

// SQLite page size used for a definition: the smallest of 4096..65536 that keeps a whole row
// on one page.
int PageSizeFor(const FileDef& def);

struct Row {
    int64_t id = 0;
    int64_t ver = 0;
    int64_t seq = 0;
};

enum class Query : uint8_t {
    kEqual,           // kN = value, first duplicate
    kGreater,         // kN > value
    kGreaterOrEqual,  // kN >= value
    kLess,            // kN < value, descending
    kLessOrEqual,     // kN <= value, descending
    kFirst,
    kLast,    // descending
    kAfter,   // (kN, sN) > (value, seq)
    kBefore,  // (kN, sN) < (value, seq), descending
};
inline constexpr int kQueryCount = 9;
inline bool Descending(Query q) {
    return q == Query::kLess || q == Query::kLessOrEqual || q == Query::kLast ||
           q == Query::kBefore;
}

// The statement of query `q` on key `key` (columns: id, version, record, and the duplicate
// order when the key allows duplicates).
std::string QuerySql(int key, Query q, bool duplicates);

// Change detection through the WAL-index header (default) or, when off or unavailable, through
// PRAGMA data_version on every call. Applies to files opened afterwards; tests use it to cover
// both paths.
void UseWalIndexHeader(bool enabled);

enum class TxnState : uint8_t { kNone, kReadSnapshot, kWrite };

class DbFile {
  public:
    // Opens `path` (already known to exist): 30 when the file is not one of ours, 85 when
    // another process holds it exclusively (or `exclusive` and it is in use), 2 when it is ours
    // but damaged, 18 when the disk is full and the log holds data. A process that may not
    // write the file never creates its side files: without a writer's log in place it reads
    // the file as it stands (changes made later by others are not seen until it reopens).
    static int16_t Open(const std::string& path, bool exclusive, std::unique_ptr<DbFile>& out);
    ~DbFile();
    DbFile(const DbFile&) = delete;
    DbFile& operator=(const DbFile&) = delete;

    const FileDef& Def() const { return def_; }
    const std::string& Path() const { return path_; }
    plat::FileId Id() const { return id_; }
    bool Exclusive() const { return exclusive_; }
    bool Writable() const { return writable_; }

    // ---- Change detection ----
    // Called at the start of every operation: notices commits of other processes (and of this
    // connection) and bumps Generation(); a read snapshot older than the latest commit is ended.
    void Refresh();
    // Changes whenever the file's content may have changed; read-ahead batches are valid while
    // it stays the same.
    uint64_t Generation() const { return gen_; }
    void NoteLocalChange() { ++gen_; }
    bool SharedMemoryDetection() const { return shmHeader_ != nullptr; }

    // ---- Reads ----
    // Runs query `q` on key `key` and stores up to `limit` rows. Ascending queries fill
    // rows[0..n) and records from arena[0]; descending ones fill from the back, so that the
    // stored rows are always in ascending key order: [begin, end). Without `versions` (a reader
    // that never updates) the rows' versions are left at 0.
    int16_t Fetch(int key, Query q, const uint8_t* value, int64_t seq, int limit, uint8_t* arena,
                  Row* rows, int& begin, int& end, bool versions = true);
    int16_t CountRecords(int64_t& count);
    int16_t CountDistinct(int key, int64_t& count);

    // ---- Writes ----
    // Takes the write lock (BEGIN IMMEDIATE) unless already held: 85 when another process
    // holds it.
    int16_t BeginWrite();
    // Ends the write of one operation: commits it (or rolls it back when `status` is not 0),
    // unless the file belongs to a transaction of the process, which End commits.
    int16_t FinishWrite(int16_t status, bool inTransaction);
    int16_t NextSequence(int64_t& seq);
    // The stored state of record `id`: found false when it no longer exists.
    int16_t ReadRecord(int64_t id, bool& found, int64_t& ver, std::vector<int64_t>& seqs,
                       std::vector<uint8_t>& data);
    // keys: per key, the index form (keyLength bytes) or nullptr for a null key; seqs: per key.
    int16_t InsertRecord(int64_t id, const uint8_t* data, const std::vector<const uint8_t*>& keys,
                         const std::vector<int64_t>& seqs);
    int16_t UpdateRecord(int64_t id, int64_t ver, const uint8_t* data,
                         const std::vector<const uint8_t*>& keys, const std::vector<int64_t>& seqs);
    int16_t DeleteRecord(int64_t id);
    TxnState Transaction() const { return txn_; }
    int16_t Commit();
    void Rollback();

    // ---- Read snapshots ----
    // True when a read snapshot is held and was not used since the last call (then cleared).
    bool IdleSnapshot();
    void EndReadSnapshot();

    // Bookkeeping of the engine.
    int openBlocks = 0;
    bool inTransaction = false;  // joined the process's transaction

  private:
    DbFile() = default;
    // Opens the SQLite connection: normally, or (`immutable`) reading the file as it stands,
    // without locks or side files.
    int16_t Connect(bool immutable);
    void Disconnect();
    int16_t Configure();
    int16_t LoadDefinition();
    void MapSharedMemory();
    void HoldReadSnapshot();
    struct KeyStatement;
    KeyStatement& Statement(int key, Query q);
    sqlite3_stmt* Prepare(const std::string& sql);
    int Exec(sqlite3_stmt* st);
    int16_t Fail(int rc);
    int16_t WriteStatus(int rc);
    static int BusyWait(void* self, int attempts);

    std::string path_;
    plat::FileId id_;
    // Declared before the connection's members: destroyed after it (see ~DbFile).
    plat::FichierVerrouille lock_;
    bool exclusive_ = false;
    bool writable_ = true;
    bool immutable_ = false;
    bool diskFull_ = false;
    sqlite3* db_ = nullptr;
    FileDef def_;

    TxnState txn_ = TxnState::kNone;
    bool snapshotUsed_ = false;
    bool waitWhenBusy_ = true;  // false while taking the write lock: that conflict is status 85
    std::chrono::steady_clock::time_point busySince_{};
    uint64_t gen_ = 1;
    // The first copy of the WAL index header (48 bytes) as 64-bit words. A commit, and a restart
    // of the log, always change word 1 (the change counter iChange, with the page size) and
    // word 5 (the header's checksum); word 2 holds the last frame and the page count.
    const volatile uint64_t* shmHeader_ = nullptr;
    std::array<uint64_t, 3> shmSeen_{};  // words 1, 2 and 5
    int64_t dataVersionSeen_ = -1;

    // Each query's statement with the limit bound to it (-1 before the first, kSansLimite for
    // a statement without one), side by side: both are read on every fetch.
    static constexpr int kSansLimite = -2;
    struct KeyStatement {
        sqlite3_stmt* st = nullptr;
        int boundLimit = -1;
    };
    std::vector<std::array<KeyStatement, kQueryCount>> keyStatements_;
    sqlite3_stmt* begin_ = nullptr;
    sqlite3_stmt* beginImmediate_ = nullptr;
    sqlite3_stmt* commit_ = nullptr;
    sqlite3_stmt* rollback_ = nullptr;
    sqlite3_stmt* dataVersion_ = nullptr;
    sqlite3_stmt* nextSeq_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
    sqlite3_stmt* update_ = nullptr;
    sqlite3_stmt* delete_ = nullptr;
    sqlite3_stmt* read_ = nullptr;
    sqlite3_stmt* count_ = nullptr;
};

}  // namespace zl3::btr
