#include "Store.h"

#include <sqlite3.h>

#include <cstring>
#include <thread>

#include "Btrieve.h"
#include "RecordForm.h"

namespace zl3::btr {
namespace {

constexpr const char kSqliteMagic[16] = {'S', 'Q', 'L', 'i', 't', 'e', ' ', 'f',
                                         'o', 'r', 'm', 'a', 't', ' ', '3', '\0'};
// Virtual address space mapped per file: reads then come straight from the page cache of the
// system instead of being copied into SQLite's cache (about +40 % on random Get Equal). Mapped
// pages count in the process's resident memory, so the window is capped. With whole records
// stored, a year's Quotas report over 50,000 tracks peaked at 425 MB resident with 1 GiB (the
// 300 MB history file mapped whole) and 142 MB with 64 MiB; with the trailing blanks cut
// (RecordForm.h) that history file is 10 MB and every file of the report fits the 64 MiB window.
constexpr int64_t kMmapSize = 64LL << 20;
// Size of one region of the WAL index (the -shm file) as SQLite maps it.
constexpr int kWalIndexRegion = 32768;

bool gWalIndexHeader = true;

std::string Col(const char* name, int key) {
    return name + std::to_string(key);
}

std::string SchemaSql(const FileDef& def) {
    std::string sql =
        "CREATE TABLE zl3_file(layout BLOB NOT NULL, seq INTEGER NOT NULL);"
        "CREATE TABLE zl3_records(id INTEGER PRIMARY KEY, ver INTEGER NOT NULL";
    for (size_t k = 0; k < def.keys.size(); ++k)
        sql += ", " + Col("k", static_cast<int>(k)) + " BLOB, " + Col("s", static_cast<int>(k)) +
               " INTEGER";
    sql += ", data BLOB NOT NULL);";
    for (size_t k = 0; k < def.keys.size(); ++k) {
        const int n = static_cast<int>(k);
        sql += def.keys[k].duplicates ? "CREATE INDEX " : "CREATE UNIQUE INDEX ";
        sql += Col("zl3_key", n) + " ON zl3_records(" + Col("k", n) + ", " + Col("s", n) + ");";
    }
    return sql;
}

bool SideFileExists(const std::string& path) {
    return plat::Exists(path);
}

// True when the log beside `path` may hold committed changes not yet in the file itself.
bool LogHoldsData(const std::string& path) {
    return plat::HasData(path + "-wal");
}

void RemoveQuietly(const std::string& path) {
    plat::Remove(path);
}

void RemoveDatabaseFiles(const std::string& path) {
    RemoveQuietly(path);
    RemoveQuietly(path + "-wal");
    RemoveQuietly(path + "-shm");
    RemoveQuietly(path + "-journal");
}

// Builds the empty database at `path` (a fresh name). Returns 0 or a status.
int16_t BuildEmpty(const std::string& path, const FileDef& def) {
    sqlite3* db = nullptr;
    int rc =
        sqlite3_open_v2(path.c_str(), &db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        const int err = db ? sqlite3_system_errno(db) : 0;
        sqlite3_close_v2(db);
        return err ? plat::StatusFromSystemError(err) : StatusFromSqlite(rc);
    }
    sqlite3_extended_result_codes(db, 1);
    const std::string pragmas =
        "PRAGMA page_size=" + std::to_string(PageSizeFor(def)) +
        ";PRAGMA journal_mode=WAL;PRAGMA application_id=" + std::to_string(kApplicationId) +
        ";PRAGMA user_version=" + std::to_string(kSchemaVersion) + ";";
    rc = sqlite3_exec(db, pragmas.c_str(), nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(db, ("BEGIN;" + SchemaSql(def)).c_str(), nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK) {
        sqlite3_stmt* st = nullptr;
        rc = sqlite3_prepare_v2(db, "INSERT INTO zl3_file(layout, seq) VALUES(?1, 0)", -1, &st,
                                nullptr);
        if (rc == SQLITE_OK) {
            sqlite3_bind_blob(st, 1, def.layout.data(), static_cast<int>(def.layout.size()),
                              SQLITE_STATIC);
            rc = sqlite3_step(st);
            if (rc == SQLITE_DONE) rc = SQLITE_OK;
        }
        sqlite3_finalize(st);
    }
    if (rc == SQLITE_OK) rc = sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    const int err = sqlite3_system_errno(db);
    // The last connection to close checkpoints the log into the file and removes it: the new
    // file is complete in itself.
    const int closeRc = sqlite3_close_v2(db);
    if (rc == SQLITE_OK) rc = closeRc;
    if (rc != SQLITE_OK)
        return (rc & 0xFF) == SQLITE_CANTOPEN && err ? plat::StatusFromSystemError(err)
                                                   : StatusFromSqlite(rc);
    return kOk;
}

}  // namespace

std::string QuerySql(int key, Query q, bool duplicates) {
    const std::string k = Col("k", key);
    const std::string s = Col("s", key);
    const std::string up = " ORDER BY " + k + ", " + s + " LIMIT ?3";
    const std::string down = " ORDER BY " + k + " DESC, " + s + " DESC LIMIT ?3";
    // A key without duplicates has order 0 on every row: the order is not read, and one value
    // is one row.
    std::string sql = "SELECT id, ver, data" + (duplicates ? ", " + s : std::string()) +
                      " FROM zl3_records WHERE ";
    switch (q) {
        case Query::kEqual:
            // Without duplicates one value is at most one row: no order, no limit to count.
            return sql + k + " = ?1" +
                   (duplicates ? " ORDER BY " + s + " LIMIT ?3" : std::string());
        case Query::kGreater:
            return sql + k + " > ?1" + up;
        case Query::kGreaterOrEqual:
            return sql + k + " >= ?1" + up;
        case Query::kLess:
            return sql + k + " < ?1" + down;
        case Query::kLessOrEqual:
            return sql + k + " <= ?1" + down;
        case Query::kFirst:
            return sql + k + " IS NOT NULL" + up;
        case Query::kLast:
            return sql + k + " IS NOT NULL" + down;
        case Query::kAfter:
            return sql + "(" + k + ", " + s + ") > (?1, ?2)" + up;
        case Query::kBefore:
            return sql + "(" + k + ", " + s + ") < (?1, ?2)" + down;
    }
    return sql;
}

void UseWalIndexHeader(bool enabled) {
    gWalIndexHeader = enabled;
}

int16_t StatusFromSqlite(int rc) {
    switch (rc & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return kOk;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return kFileLocked;
        case SQLITE_CONSTRAINT:
            return kDuplicateKey;
        case SQLITE_FULL:
            return kDiskFull;
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return kAccessDenied;
        default:
            return kIoError;
    }
}

FileKind ClassifyHeader(const uint8_t* header, size_t length) {
    if (length < 100 || std::memcmp(header, kSqliteMagic, sizeof kSqliteMagic) != 0)
        return FileKind::kNotSqlite;
    const uint32_t id = (uint32_t{header[68]} << 24) | (uint32_t{header[69]} << 16) |
                        (uint32_t{header[70]} << 8) | uint32_t{header[71]};
    return id == kApplicationId ? FileKind::kOurs : FileKind::kForeignSqlite;
}

int PageSizeFor(const FileDef& def) {
    // Payload of one row: the record, each key's index form and its sequence, the record
    // header and the version number, with some slack.
    size_t payload = def.recordLength + 32;
    for (const KeyDef& k : def.keys)
        payload += k.length + 12;
    for (int page = 4096; page < 65536; page *= 2)
        if (payload <= static_cast<size_t>(page) - 35) return page;
    return 65536;
}

int16_t CreateDatabase(const std::string& path, const FileDef& def, bool overwrite) {
    plat::PathKind kind;
    plat::FileId id;
    plat::GardeRemplacement guard;
    const int16_t examined = plat::Examine(path, kind, id);
    if (examined == kOk) {
        if (kind != plat::PathKind::kRegular) return kInvalidFileName;
        if (!overwrite) return kFileExists;
        // Nobody may have the old file open while it is replaced.
        const int16_t taken = guard.Take(path);
        if (taken != kOk) return taken;
    } else if (examined != kFileNotFound) {
        return examined;
    }

    const std::string temp = path + ".zl3new." + std::to_string(plat::ProcessId());
    RemoveDatabaseFiles(temp);
    int16_t status = BuildEmpty(temp, def);
    if (status == kOk) {
        // A log left behind by an earlier file of the same name must never be replayed into
        // the new one.
        RemoveQuietly(path + "-wal");
        RemoveQuietly(path + "-shm");
        if (overwrite) {
            guard.BeforeReplace();
            status = plat::ReplaceWith(temp, path);
        } else {
            status = plat::NameIfFree(temp, path);
        }
    }
    RemoveDatabaseFiles(temp);
    if (status == kOk) plat::SyncFolderOf(path);
    return status;
}

// ---- DbFile -----------------------------------------------------------------------------------

int16_t DbFile::Open(const std::string& path, bool exclusive, std::unique_ptr<DbFile>& out) {
    std::unique_ptr<DbFile> f(new DbFile);
    f->path_ = path;
    f->exclusive_ = exclusive;
    int16_t opened = f->lock_.Open(path, f->writable_);
    if (opened != kOk) return opened;
    f->id_ = f->lock_.Id();
    // The exclusive open mode is a lock on the file itself: shared by every normal open,
    // exclusive for mode -4. Neither waits. The system drops it when the process dies.
    opened = f->lock_.Lock(exclusive);
    if (opened != kOk) return opened;

    uint8_t header[100];
    const long got = f->lock_.ReadHeader(header, sizeof header);
    if (got < 0) return kIoError;
    if (ClassifyHeader(header, static_cast<size_t>(got)) != FileKind::kOurs)
        return kNotABtrieveFile;

    // A process that may not write the file (a read-only share or mount, another user's
    // files) reads it through the log and its index when a writer has them in place; otherwise
    // it reads the file as it stands, creating nothing beside it: side files made by such a
    // reader would belong to it and lock the writers of the file out, and on a read-only folder
    // they cannot be made at all. A full disk is met the same way: the file is read without the
    // side files that cannot be written.
    // A log holding data without its index (a writer died) can only be recovered by a process
    // that may write: for others the file stays out of reach (46), it is not damaged.
    int16_t status = kAccessDenied;
    if (f->writable_ || (SideFileExists(path + "-wal") && SideFileExists(path + "-shm")))
        status = f->Connect(false);
    if (status != kOk && !f->writable_ && !LogHoldsData(path)) {
        f->Disconnect();
        status = f->Connect(true);
    } else if (status != kOk && f->writable_ && f->diskFull_ && !LogHoldsData(path)) {
        f->Disconnect();
        f->writable_ = false;
        status = f->Connect(true);
        if (status != kOk) status = kDiskFull;
    }
    if (status != kOk) return status;
    if (!f->immutable_) f->MapSharedMemory();
    out = std::move(f);
    return kOk;
}

int16_t DbFile::Connect(bool immutable) {
    immutable_ = immutable;
    diskFull_ = false;
    int flags = (writable_ && !immutable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) |
                SQLITE_OPEN_NOMUTEX;
    std::string name = path_;
    if (immutable) {
        flags |= SQLITE_OPEN_URI;
        name = "file:" + plat::UriPath(path_) + "?immutable=1";
    }
    const int rc = sqlite3_open_v2(name.c_str(), &db_, flags, nullptr);
    if (rc != SQLITE_OK) return kIoError;
    int16_t status = Configure();
    if (status == kOk) status = LoadDefinition();
    if (status != kOk && plat::IsDiskFull(sqlite3_system_errno(db_))) {
        diskFull_ = true;
        status = kDiskFull;
    }
    return status;
}

void DbFile::Disconnect() {
    for (auto& statements : keyStatements_)
        for (KeyStatement& k : statements) {
            sqlite3_finalize(k.st);
            k = KeyStatement{};
        }
    keyStatements_.clear();
    for (sqlite3_stmt** st : {&begin_, &beginImmediate_, &commit_, &rollback_, &dataVersion_,
                              &nextSeq_, &insert_, &update_, &delete_, &read_, &count_}) {
        sqlite3_finalize(*st);
        *st = nullptr;
    }
    if (db_) sqlite3_close_v2(db_);
    db_ = nullptr;
}

DbFile::~DbFile() {
    shmHeader_ = nullptr;
    Disconnect();
    // Closing a descriptor drops every POSIX lock this process holds on the file, SQLite's
    // included: the lock's file is closed only once the connection is gone.
    lock_.Close();
}

// SQLite's own short locks — another connection opening, recovering the log or closing (the
// last one checkpoints and removes the log) — are not what a caller can act on: readers and
// openers wait for them, up to kBusyWaitMs, so that concurrent readers never see status 85.
// Taking the write lock is the one place where a conflict is reported at once (85), as
// Btrieve's no-wait locks do; the call layer decides whether to retry.
constexpr int kBusyWaitMs = 2000;

int DbFile::BusyWait(void* self, int attempts) {
    auto* f = static_cast<DbFile*>(self);
    if (!f->waitWhenBusy_) return 0;
    const auto now = std::chrono::steady_clock::now();
    if (attempts == 0) f->busySince_ = now;
    if (now - f->busySince_ >= std::chrono::milliseconds(kBusyWaitMs)) return 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(attempts < 10 ? 1 : 5));
    return 1;
}

std::string ConnectionPragmas() {
    return "PRAGMA mmap_size=" + std::to_string(kMmapSize) +
           ";PRAGMA cache_size=-8192;PRAGMA synchronous=NORMAL;"
           "PRAGMA journal_size_limit=8388608;";
}

int16_t DbFile::Configure() {
    sqlite3_extended_result_codes(db_, 1);
    sqlite3_busy_handler(db_, &DbFile::BusyWait, this);
    sqlite3_db_config(db_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    // cell_size_check stays off: it re-verifies every page each time it is taken from the
    // memory mapping and halves Get Equal; corrupt pages are still detected and reported
    // (SQLITE_CORRUPT → status 2), and "zl3-btr check" runs the full integrity check.
    const int rc = sqlite3_exec(db_, ConnectionPragmas().c_str(), nullptr, nullptr, nullptr);
    return rc == SQLITE_OK ? kOk : Fail(rc);
}

int16_t DbFile::Fail(int rc) {
    const int16_t status = StatusFromSqlite(rc);
    // Anything but a lock conflict on a file whose header is ours means the file is damaged.
    return status == kFileLocked || status == kDiskFull || status == kAccessDenied ? status
                                                                                   : kIoError;
}

int16_t DbFile::LoadDefinition() {
    sqlite3_stmt* st = nullptr;
    int rc = sqlite3_prepare_v2(db_, "PRAGMA user_version", -1, &st, nullptr);
    int64_t version = -1;
    if (rc == SQLITE_OK && (rc = sqlite3_step(st)) == SQLITE_ROW)
        version = sqlite3_column_int64(st, 0);
    sqlite3_finalize(st);
    if (rc != SQLITE_ROW) return Fail(rc);
    if (version != kSchemaVersion) return kIoError;

    rc = sqlite3_prepare_v2(db_, "SELECT layout FROM zl3_file", -1, &st, nullptr);
    int16_t status = kIoError;
    if (rc == SQLITE_OK && (rc = sqlite3_step(st)) == SQLITE_ROW) {
        const auto* p = static_cast<const uint8_t*>(sqlite3_column_blob(st, 0));
        const int n = sqlite3_column_bytes(st, 0);
        status = p && ParseLayout(p, static_cast<size_t>(n), def_) == kOk ? kOk : kIoError;
    } else if (rc != SQLITE_DONE) {
        status = Fail(rc);
    }
    sqlite3_finalize(st);
    if (status != kOk) return status;

    // Every key must have its index; statements are checked by preparing them.
    keyStatements_.assign(def_.keys.size(), {});
    rc = sqlite3_prepare_v2(db_,
                            "SELECT count(*) FROM sqlite_schema WHERE type = 'index' AND "
                            "tbl_name = 'zl3_records' AND name LIKE 'zl3_key%'",
                            -1, &st, nullptr);
    int64_t indexes = -1;
    if (rc == SQLITE_OK && (rc = sqlite3_step(st)) == SQLITE_ROW)
        indexes = sqlite3_column_int64(st, 0);
    sqlite3_finalize(st);
    if (rc != SQLITE_ROW) return Fail(rc);
    if (indexes != static_cast<int64_t>(def_.keys.size())) return kIoError;

    const int keys = static_cast<int>(def_.keys.size());
    std::string insertSql = "INSERT INTO zl3_records(id, ver";
    std::string valuesSql = ") VALUES(?1, ?2";
    std::string updateSql = "UPDATE zl3_records SET ver = ?2";
    std::string readSql = "SELECT ver, data";
    for (int k = 0; k < keys; ++k) {
        const std::string kp = "?" + std::to_string(3 + 2 * k);
        const std::string sp = "?" + std::to_string(4 + 2 * k);
        insertSql += ", " + Col("k", k) + ", " + Col("s", k);
        valuesSql += ", " + kp + ", " + sp;
        updateSql += ", " + Col("k", k) + " = " + kp + ", " + Col("s", k) + " = " + sp;
        readSql += ", " + Col("s", k);
    }
    const std::string dp = "?" + std::to_string(3 + 2 * keys);
    insertSql += ", data" + valuesSql + ", " + dp + ")";
    updateSql += ", data = " + dp + " WHERE id = ?1";
    readSql += " FROM zl3_records WHERE id = ?1";

    begin_ = Prepare("BEGIN");
    beginImmediate_ = Prepare("BEGIN IMMEDIATE");
    commit_ = Prepare("COMMIT");
    rollback_ = Prepare("ROLLBACK");
    dataVersion_ = Prepare("PRAGMA data_version");
    nextSeq_ = Prepare("UPDATE zl3_file SET seq = seq + 1 RETURNING seq");
    insert_ = Prepare(insertSql);
    update_ = Prepare(updateSql);
    delete_ = Prepare("DELETE FROM zl3_records WHERE id = ?1");
    read_ = Prepare(readSql);
    count_ = Prepare("SELECT count(*) FROM zl3_records");
    for (sqlite3_stmt* s : {begin_, beginImmediate_, commit_, rollback_, dataVersion_, nextSeq_,
                            insert_, update_, delete_, read_, count_})
        if (!s) return kIoError;

    // Files are created in WAL mode; one whose journal mode was changed behind our back is put
    // back when possible, otherwise it is still served (changes then detected the slow way).
    sqlite3_exec(db_, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    return kOk;
}

sqlite3_stmt* DbFile::Prepare(const std::string& sql) {
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()),
                           SQLITE_PREPARE_PERSISTENT, &st, nullptr) != SQLITE_OK) {
        sqlite3_finalize(st);
        return nullptr;
    }
    return st;
}

int DbFile::Exec(sqlite3_stmt* st) {
    int rc = sqlite3_step(st);
    while (rc == SQLITE_ROW)
        rc = sqlite3_step(st);
    sqlite3_reset(st);
    return rc;
}

void DbFile::MapSharedMemory() {
    // In WAL mode every commit rewrites the header at the start of the WAL index, shared by all
    // processes through the -shm mapping (iChange, mxFrame, salts and checksums: 48 bytes that
    // never repeat a value). Comparing it costs a few nanoseconds where PRAGMA data_version
    // costs a statement and two lock system calls (~0.75 µs), so it is what tells a read-ahead
    // batch or a read snapshot that it is out of date. The mapping is SQLite's own, taken
    // through the VFS, and lives as long as the connection.
    if (!gWalIndexHeader) return;
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(db_, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || !file ||
        !file->pMethods || file->pMethods->iVersion < 2 || !file->pMethods->xShmMap)
        return;
    sqlite3_stmt* st = Prepare("PRAGMA journal_mode");
    bool wal = false;
    if (st && sqlite3_step(st) == SQLITE_ROW) {
        const auto* mode = reinterpret_cast<const char*>(sqlite3_column_text(st, 0));
        wal = mode && std::strcmp(mode, "wal") == 0;
    }
    sqlite3_finalize(st);
    if (!wal) return;
    // SQLite must have its own mapping before this one shares it: a file switched to WAL by
    // this very connection has no log open yet, and a mapping made first would be SQLite's to
    // free but never known to it. A read of the file opens the log and the index.
    if (sqlite3_exec(db_, "SELECT count(*) FROM zl3_file", nullptr, nullptr, nullptr) != SQLITE_OK)
        return;
    volatile void* region = nullptr;
    if (file->pMethods->xShmMap(file, 0, kWalIndexRegion, 0, &region) != SQLITE_OK || !region)
        return;
    shmHeader_ = static_cast<const volatile uint64_t*>(region);
    shmSeen_ = {shmHeader_[1], shmHeader_[2], shmHeader_[5]};
}

void DbFile::Refresh() {
    if (shmHeader_) {
        const std::array<uint64_t, 3> now{shmHeader_[1], shmHeader_[2], shmHeader_[5]};
        if (((now[0] ^ shmSeen_[0]) | (now[1] ^ shmSeen_[1]) | (now[2] ^ shmSeen_[2])) != 0) {
            shmSeen_ = now;
            ++gen_;
            if (txn_ == TxnState::kReadSnapshot) EndReadSnapshot();
        }
        return;
    }
    if (txn_ == TxnState::kWrite) return;  // nobody else can commit while we hold the lock
    int64_t version = dataVersionSeen_;
    if (sqlite3_step(dataVersion_) == SQLITE_ROW) version = sqlite3_column_int64(dataVersion_, 0);
    sqlite3_reset(dataVersion_);
    if (version != dataVersionSeen_) {
        dataVersionSeen_ = version;
        ++gen_;
    }
}

void DbFile::HoldReadSnapshot() {
    snapshotUsed_ = true;
    // A read transaction kept open between calls saves the two lock system calls that every
    // statement would otherwise pay to start and end its own. It is ended as soon as another
    // commit is seen (Refresh), before any write, and when left idle (IdleSnapshot).
    if (shmHeader_ && txn_ == TxnState::kNone && Exec(begin_) == SQLITE_DONE)
        txn_ = TxnState::kReadSnapshot;
}

bool DbFile::IdleSnapshot() {
    if (txn_ != TxnState::kReadSnapshot) return false;
    if (snapshotUsed_) {
        snapshotUsed_ = false;
        return false;
    }
    return true;
}

void DbFile::EndReadSnapshot() {
    if (txn_ != TxnState::kReadSnapshot) return;
    if (Exec(commit_) != SQLITE_DONE) Exec(rollback_);
    txn_ = TxnState::kNone;
}

DbFile::KeyStatement& DbFile::Statement(int key, Query q) {
    KeyStatement& k = keyStatements_[static_cast<size_t>(key)][static_cast<size_t>(q)];
    if (!k.st) {
        k.st = Prepare(QuerySql(key, q, def_.keys[static_cast<size_t>(key)].duplicates));
        k.boundLimit = k.st && sqlite3_bind_parameter_count(k.st) < 3 ? kSansLimite : -1;
    }
    return k;
}

int16_t DbFile::Fetch(int key, Query q, const uint8_t* value, int64_t seq, int limit,
                      uint8_t* arena, Row* rows, int& begin, int& end, bool versions) {
    begin = end = 0;
    HoldReadSnapshot();
    KeyStatement& statement = Statement(key, q);
    sqlite3_stmt* st = statement.st;
    if (!st) return kIoError;
    const KeyDef& kd = def_.keys[static_cast<size_t>(key)];
    if (q != Query::kFirst && q != Query::kLast)
        sqlite3_bind_blob(st, 1, value, kd.length, SQLITE_STATIC);
    if (q == Query::kAfter || q == Query::kBefore) sqlite3_bind_int64(st, 2, seq);
    // Bindings outlive sqlite3_reset: the limit is bound again only when it changes.
    if (statement.boundLimit != limit && statement.boundLimit != kSansLimite) {
        sqlite3_bind_int(st, 3, limit);
        statement.boundLimit = limit;
    }
    const bool duplicates = kd.duplicates;
    const bool down = Descending(q);
    const size_t recLen = def_.recordLength;
    int n = 0;
    int rc;
    while (n < limit && (rc = sqlite3_step(st)) == SQLITE_ROW) {
        const auto* data = static_cast<const uint8_t*>(sqlite3_column_blob(st, 2));
        const auto stored = static_cast<size_t>(sqlite3_column_bytes(st, 2));
        const int at = down ? limit - 1 - n : n;
        if (!DecodeRecord(data, stored, recLen, arena + static_cast<size_t>(at) * recLen)) {
            rc = SQLITE_CORRUPT;
            break;
        }
        rows[at] = Row{sqlite3_column_int64(st, 0), versions ? sqlite3_column_int64(st, 1) : 0,
                       duplicates ? sqlite3_column_int64(st, 3) : 0};
        ++n;
    }
    if (n == limit) rc = SQLITE_DONE;
    sqlite3_reset(st);
    if (rc != SQLITE_DONE) return Fail(rc);
    begin = down ? limit - n : 0;
    end = down ? limit : n;
    return kOk;
}

int16_t DbFile::CountRecords(int64_t& count) {
    HoldReadSnapshot();
    int rc = sqlite3_step(count_);
    if (rc == SQLITE_ROW) count = sqlite3_column_int64(count_, 0);
    sqlite3_reset(count_);
    return rc == SQLITE_ROW ? kOk : Fail(rc);
}

int16_t DbFile::CountDistinct(int key, int64_t& count) {
    HoldReadSnapshot();
    sqlite3_stmt* st = Prepare("SELECT count(DISTINCT " + Col("k", key) + ") FROM zl3_records");
    if (!st) return kIoError;
    int rc = sqlite3_step(st);
    if (rc == SQLITE_ROW) count = sqlite3_column_int64(st, 0);
    sqlite3_finalize(st);
    return rc == SQLITE_ROW ? kOk : Fail(rc);
}

int16_t DbFile::BeginWrite() {
    if (txn_ == TxnState::kWrite) return kOk;
    if (!writable_) return kAccessDenied;
    EndReadSnapshot();
    waitWhenBusy_ = false;
    const int rc = Exec(beginImmediate_);
    waitWhenBusy_ = true;
    if (rc != SQLITE_DONE) return Fail(rc);
    txn_ = TxnState::kWrite;
    return kOk;
}

int16_t DbFile::FinishWrite(int16_t status, bool inTransaction) {
    ++gen_;
    if (inTransaction) return status;
    if (status != kOk) {
        Rollback();
        return status;
    }
    return Commit();
}

int16_t DbFile::Commit() {
    ++gen_;
    const int rc = Exec(commit_);
    if (rc != SQLITE_DONE) {
        Exec(rollback_);
        txn_ = TxnState::kNone;
        return Fail(rc);
    }
    txn_ = TxnState::kNone;
    return kOk;
}

void DbFile::Rollback() {
    ++gen_;
    if (txn_ != TxnState::kNone) Exec(rollback_);
    txn_ = TxnState::kNone;
}

int16_t DbFile::NextSequence(int64_t& seq) {
    int rc = sqlite3_step(nextSeq_);
    if (rc == SQLITE_ROW) {
        seq = sqlite3_column_int64(nextSeq_, 0);
        rc = sqlite3_step(nextSeq_);
    }
    sqlite3_reset(nextSeq_);
    return rc == SQLITE_DONE ? kOk : Fail(rc);
}

int16_t DbFile::ReadRecord(int64_t id, bool& found, int64_t& ver, std::vector<int64_t>& seqs,
                           std::vector<uint8_t>& data) {
    found = false;
    sqlite3_bind_int64(read_, 1, id);
    int rc = sqlite3_step(read_);
    if (rc == SQLITE_ROW) {
        const auto* p = static_cast<const uint8_t*>(sqlite3_column_blob(read_, 1));
        const auto stored = static_cast<size_t>(sqlite3_column_bytes(read_, 1));
        data.resize(def_.recordLength);
        if (!DecodeRecord(p, stored, def_.recordLength, data.data())) {
            rc = SQLITE_CORRUPT;
        } else {
            found = true;
            ver = sqlite3_column_int64(read_, 0);
            seqs.resize(def_.keys.size());
            for (size_t k = 0; k < def_.keys.size(); ++k)
                seqs[k] = sqlite3_column_int64(read_, static_cast<int>(2 + k));
            rc = SQLITE_DONE;
        }
    }
    sqlite3_reset(read_);
    return rc == SQLITE_DONE ? kOk : Fail(rc);
}

namespace {

void BindRecord(sqlite3_stmt* st, const FileDef& def, int64_t id, int64_t ver, const uint8_t* data,
                const std::vector<const uint8_t*>& keys, const std::vector<int64_t>& seqs) {
    sqlite3_bind_int64(st, 1, id);
    sqlite3_bind_int64(st, 2, ver);
    const int n = static_cast<int>(def.keys.size());
    for (int k = 0; k < n; ++k) {
        if (keys[static_cast<size_t>(k)]) {
            sqlite3_bind_blob(st, 3 + 2 * k, keys[static_cast<size_t>(k)],
                              def.keys[static_cast<size_t>(k)].length, SQLITE_STATIC);
            sqlite3_bind_int64(st, 4 + 2 * k, seqs[static_cast<size_t>(k)]);
        } else {
            sqlite3_bind_null(st, 3 + 2 * k);
            sqlite3_bind_null(st, 4 + 2 * k);
        }
    }
    // The stored form is a prefix of the record (see RecordForm.h).
    sqlite3_bind_blob(st, 3 + 2 * n, data, static_cast<int>(StoredLength(data, def.recordLength)),
                      SQLITE_STATIC);
}

}  // namespace

int16_t DbFile::WriteStatus(int rc) {
    if (rc == SQLITE_DONE) return kOk;
    // The only constraints of the schema are the unique key indexes.
    if ((rc & 0xFF) == SQLITE_CONSTRAINT) return kDuplicateKey;
    return Fail(rc);
}

int16_t DbFile::InsertRecord(int64_t id, const uint8_t* data,
                             const std::vector<const uint8_t*>& keys,
                             const std::vector<int64_t>& seqs) {
    BindRecord(insert_, def_, id, 1, data, keys, seqs);
    const int rc = Exec(insert_);
    sqlite3_clear_bindings(insert_);
    return WriteStatus(rc);
}

int16_t DbFile::UpdateRecord(int64_t id, int64_t ver, const uint8_t* data,
                             const std::vector<const uint8_t*>& keys,
                             const std::vector<int64_t>& seqs) {
    BindRecord(update_, def_, id, ver, data, keys, seqs);
    const int rc = Exec(update_);
    sqlite3_clear_bindings(update_);
    return WriteStatus(rc);
}

int16_t DbFile::DeleteRecord(int64_t id) {
    sqlite3_bind_int64(delete_, 1, id);
    const int rc = Exec(delete_);
    return rc == SQLITE_DONE ? kOk : Fail(rc);
}

}  // namespace zl3::btr
