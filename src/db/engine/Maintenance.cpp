#include "Maintenance.h"

#include <sqlite3.h>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Btrieve.h"
#include "FichierPlateforme.h"
#include "KeyLayout.h"
#include "RecordForm.h"
#include "Store.h"

namespace zl3::btr {
namespace {

constexpr size_t kMaxProblems = 20;
constexpr int kLoadGroup = 1000;
constexpr uint32_t kMaxRecordLength = 65535;

struct Db {
    sqlite3* db = nullptr;
    ~Db() { sqlite3_close_v2(db); }
};

struct Stmt {
    sqlite3_stmt* st = nullptr;
    ~Stmt() { sqlite3_finalize(st); }
};

struct File {
    std::FILE* f = nullptr;
    ~File() {
        if (f) std::fclose(f);
    }
};

void Problem(CheckReport& r, const std::string& text) {
    r.status = kIoError;
    if (r.problems.size() < kMaxProblems) r.problems.push_back(text);
}

std::string SqliteProblem(sqlite3* db, const char* what) {
    return std::string(what) + ": " + sqlite3_errmsg(db);
}

// Reads the first bytes through SQLite's own file handle: opening and closing a descriptor of our
// own would drop the locks this process holds on the file.
bool ReadHeader(sqlite3* db, uint8_t* header, size_t length) {
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(db, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || !file ||
        !file->pMethods)
        return false;
    std::memset(header, 0, length);
    const int rc = file->pMethods->xRead(file, header, static_cast<int>(length), 0);
    return rc == SQLITE_OK;
}

void CheckRecords(sqlite3* db, const FileDef& def, int64_t counter, CheckReport& r) {
    std::string sql = "SELECT id, ver, data";
    for (size_t k = 0; k < def.keys.size(); ++k)
        sql += ", k" + std::to_string(k) + ", s" + std::to_string(k);
    sql += " FROM zl3_records";
    Stmt st;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &st.st, nullptr) != SQLITE_OK) {
        Problem(r, SqliteProblem(db, "records table"));
        return;
    }
    std::vector<uint8_t> key(kMaxKeyLength);
    std::vector<uint8_t> record(def.recordLength);
    int rc;
    while ((rc = sqlite3_step(st.st)) == SQLITE_ROW) {
        ++r.records;
        const int64_t id = sqlite3_column_int64(st.st, 0);
        const std::string where = "record " + std::to_string(id) + ": ";
        if (id < 1 || id > counter) Problem(r, where + "number outside the file's counter");
        if (sqlite3_column_int64(st.st, 1) < 1) Problem(r, where + "invalid version");
        const auto* stored = static_cast<const uint8_t*>(sqlite3_column_blob(st.st, 2));
        const int storedLength = sqlite3_column_bytes(st.st, 2);
        if (!DecodeRecord(stored, static_cast<size_t>(storedLength), def.recordLength,
                          record.data())) {
            Problem(r, where + "stored length " + std::to_string(storedLength) +
                           " for a record of " + std::to_string(def.recordLength) + " bytes");
            continue;
        }
        const uint8_t* data = record.data();
        for (size_t k = 0; k < def.keys.size(); ++k) {
            const KeyDef& kd = def.keys[k];
            const int kc = static_cast<int>(3 + 2 * k);
            const bool indexed = IndexKey(kd, data, key.data());
            const bool stored = sqlite3_column_type(st.st, kc) != SQLITE_NULL;
            const std::string which = where + "key " + std::to_string(k) + ": ";
            if (indexed != stored) {
                Problem(r, which + (indexed ? "missing from its index" : "null key indexed"));
                continue;
            }
            if (!indexed) continue;
            if (static_cast<size_t>(sqlite3_column_bytes(st.st, kc)) != kd.length ||
                std::memcmp(sqlite3_column_blob(st.st, kc), key.data(), kd.length) != 0)
                Problem(r, which + "index value does not match the record");
            const int64_t seq = sqlite3_column_int64(st.st, kc + 1);
            if (kd.duplicates ? (seq < 1 || seq > counter) : seq != 0)
                Problem(r, which + "invalid duplicate sequence");
        }
    }
    if (rc != SQLITE_DONE) Problem(r, SqliteProblem(db, "reading records"));
}

// What the engine's open requires besides the records: the version mark of the layout and
// one index per key, unique for the keys without duplicates.
void CheckStructure(sqlite3* db, const FileDef& def, CheckReport& r) {
    {
        Stmt v;
        if (sqlite3_prepare_v2(db, "PRAGMA user_version", -1, &v.st, nullptr) != SQLITE_OK ||
            sqlite3_step(v.st) != SQLITE_ROW) {
            Problem(r, SqliteProblem(db, "version mark"));
            return;
        }
        const int64_t version = sqlite3_column_int64(v.st, 0);
        if (version != kSchemaVersion)
            Problem(r, "version mark " + std::to_string(version) + " instead of " +
                           std::to_string(kSchemaVersion));
    }
    Stmt ix;
    if (sqlite3_prepare_v2(db,
                           "SELECT name, sql FROM sqlite_schema WHERE type = 'index' AND "
                           "tbl_name = 'zl3_records' AND name LIKE 'zl3_key%'",
                           -1, &ix.st, nullptr) != SQLITE_OK) {
        Problem(r, SqliteProblem(db, "key indexes"));
        return;
    }
    std::vector<int> found(def.keys.size(), 0);
    int others = 0;
    while (sqlite3_step(ix.st) == SQLITE_ROW) {
        const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(ix.st, 0));
        const auto* sql = reinterpret_cast<const char*>(sqlite3_column_text(ix.st, 1));
        bool known = false;
        for (size_t k = 0; k < def.keys.size(); ++k) {
            if (!name || std::string(name) != "zl3_key" + std::to_string(k)) continue;
            known = true;
            ++found[k];
            const bool unique = sql && std::strncmp(sql, "CREATE UNIQUE", 13) == 0;
            if (unique == def.keys[k].duplicates)
                Problem(r, "key " + std::to_string(k) + ": index " +
                               (unique ? "refuses duplicates" : "allows duplicates"));
        }
        if (!known) ++others;
    }
    for (size_t k = 0; k < def.keys.size(); ++k)
        if (found[k] == 0) Problem(r, "key " + std::to_string(k) + ": index missing");
    if (others > 0) Problem(r, std::to_string(others) + " index(es) of no key of the file");
}

}  // namespace

CheckReport CheckFile(const std::string& path) {
    CheckReport r;
    plat::PathKind kind;
    plat::FileId id;
    if (plat::Examine(path, kind, id) != kOk) {
        r.status = kFileNotFound;
        return r;
    }
    if (kind != plat::PathKind::kRegular) {
        r.status = kNotABtrieveFile;
        return r;
    }
    Db db;
    if (sqlite3_open_v2(path.c_str(), &db.db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        Problem(r, SqliteProblem(db.db, "open"));
        return r;
    }
    uint8_t header[100];
    if (!ReadHeader(db.db, header, sizeof header) ||
        ClassifyHeader(header, sizeof header) != FileKind::kOurs) {
        r.status = kNotABtrieveFile;
        return r;
    }
    sqlite3_exec(db.db, "PRAGMA query_only=ON", nullptr, nullptr, nullptr);

    {
        Stmt ic;
        if (sqlite3_prepare_v2(db.db, "PRAGMA integrity_check(20)", -1, &ic.st, nullptr) !=
            SQLITE_OK) {
            Problem(r, SqliteProblem(db.db, "integrity check"));
            return r;
        }
        int rc;
        while ((rc = sqlite3_step(ic.st)) == SQLITE_ROW) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(ic.st, 0));
            if (text && std::strcmp(text, "ok") != 0) Problem(r, std::string("sqlite: ") + text);
        }
        if (rc != SQLITE_DONE) Problem(r, SqliteProblem(db.db, "integrity check"));
    }

    FileDef def;
    int64_t counter = 0;
    {
        Stmt meta;
        if (sqlite3_prepare_v2(db.db, "SELECT layout, seq FROM zl3_file", -1, &meta.st, nullptr) !=
                SQLITE_OK ||
            sqlite3_step(meta.st) != SQLITE_ROW) {
            Problem(r, SqliteProblem(db.db, "file definition"));
            return r;
        }
        const auto* p = static_cast<const uint8_t*>(sqlite3_column_blob(meta.st, 0));
        counter = sqlite3_column_int64(meta.st, 1);
        if (!p ||
            ParseLayout(p, static_cast<size_t>(sqlite3_column_bytes(meta.st, 0)), def) != kOk) {
            Problem(r, "file definition: invalid creation layout");
            return r;
        }
    }
    CheckStructure(db.db, def, r);
    if (r.problems.empty()) CheckRecords(db.db, def, counter, r);
    if (r.problems.empty()) {
        // Last, the engine's own open, so that "ok" never names a file it would refuse.
        uint8_t block[kPositionBlockSize];
        std::memset(block, ' ', sizeof block);
        std::vector<uint8_t> name(kMaxKeyLength + 1, 0);
        if (path.size() > kMaxKeyLength) {
            Problem(r, "path longer than " + std::to_string(kMaxKeyLength) + " bytes");
            return r;
        }
        std::memcpy(name.data(), path.data(), path.size());
        uint32_t length = 0;
        const int16_t status =
            BtrCall(kOpen, block, nullptr, &length, name.data(), kMaxKeyLength, kModeReadOnly);
        if (status == kOk)
            BtrCall(kClose, block, nullptr, &length, name.data(), kMaxKeyLength, 0);
        else
            Problem(r, "engine open: status " + std::to_string(status) + " (" +
                           StatusMeaning(status) + ")");
    }
    return r;
}

// Opens `file` for a save or a load: its path goes in `keyBuffer` (kMaxKeyLength + 1 bytes).
static int16_t OpenForTransfer(const std::string& file, int8_t mode, uint8_t* block,
                               std::vector<uint8_t>& keyBuffer) {
    if (file.size() > kMaxKeyLength) return kInvalidFileName;
    std::memcpy(keyBuffer.data(), file.data(), file.size());
    uint32_t length = 0;
    return BtrCall(kOpen, block, nullptr, &length, keyBuffer.data(), kMaxKeyLength, mode);
}

TransferResult SaveFile(const std::string& file, const std::string& out, int key) {
    TransferResult result;
    uint8_t block[kPositionBlockSize] = {};
    std::vector<uint8_t> keyBuffer(kMaxKeyLength + 1, 0);
    uint32_t length = 0;
    result.status = OpenForTransfer(file, kModeReadOnly, block, keyBuffer);
    if (result.status != kOk) return result;

    File f;
    f.f = plat::OpenStream(out, "wb");
    if (!f.f) {
        result.error = "cannot write " + out + ": " + std::strerror(errno);
    } else {
        std::vector<uint8_t> record(kMaxRecordLength);
        uint16_t op = kGetFirst;
        for (;;) {
            length = kMaxRecordLength;
            const int16_t status = BtrCall(op, block, record.data(), &length, keyBuffer.data(),
                                           kMaxKeyLength, static_cast<int8_t>(key));
            if (status == kEndOfFile) break;
            if (status != kOk) {
                result.status = status;
                break;
            }
            std::fprintf(f.f, "%u,", length);
            std::fwrite(record.data(), 1, length, f.f);
            std::fputs("\r\n", f.f);
            ++result.records;
            op = kGetNext;
        }
        std::fputc(0x1A, f.f);
        if (std::fflush(f.f) != 0 || std::ferror(f.f))
            result.error = "cannot write " + out + ": " + std::strerror(errno);
    }
    BtrCall(kClose, block, nullptr, &length, keyBuffer.data(), kMaxKeyLength, 0);
    return result;
}

namespace {

// Reads the next record of a save file. Returns 1 for a record, 0 at the end, -1 when the file
// is not in save format.
int ReadSaved(std::FILE* f, std::vector<uint8_t>& record) {
    int c = std::fgetc(f);
    if (c == EOF || c == 0x1A) return 0;
    uint32_t length = 0;
    int digits = 0;
    while (c >= '0' && c <= '9') {
        length = length * 10 + static_cast<uint32_t>(c - '0');
        if (++digits > 5 || length > kMaxRecordLength) return -1;
        c = std::fgetc(f);
    }
    if (digits == 0 || c != ',') return -1;
    record.resize(length);
    if (length > 0 && std::fread(record.data(), 1, length, f) != length) return -1;
    if (std::fgetc(f) != '\r' || std::fgetc(f) != '\n') return -1;
    return 1;
}

}  // namespace

TransferResult LoadFile(const std::string& in, const std::string& file) {
    TransferResult result;
    File f;
    f.f = plat::OpenStream(in, "rb");
    if (!f.f) {
        result.error = "cannot read " + in + ": " + std::strerror(errno);
        return result;
    }
    uint8_t block[kPositionBlockSize] = {};
    std::vector<uint8_t> keyBuffer(kMaxKeyLength + 1, 0);
    uint32_t length = 0;
    result.status = OpenForTransfer(file, kModeNormal, block, keyBuffer);
    if (result.status != kOk) return result;

    std::vector<uint8_t> record;
    int64_t number = 0;
    bool inTransaction = false;
    for (;;) {
        const int got = ReadSaved(f.f, record);
        if (got == 0) break;
        ++number;
        if (got < 0) {
            result.error = "record " + std::to_string(number) + ": not in save format";
            result.failedRecord = number;
            break;
        }
        if (!inTransaction) {
            result.status = BtrCall(kBeginTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
            if (result.status != kOk) break;
            inTransaction = true;
        }
        length = static_cast<uint32_t>(record.size());
        const int16_t status =
            BtrCall(kInsert, block, record.data(), &length, keyBuffer.data(), kMaxKeyLength, 0);
        if (status != kOk) {
            result.status = status;
            result.failedRecord = number;
            break;
        }
        ++result.records;
        if (result.records % kLoadGroup == 0) {
            inTransaction = false;
            result.status = BtrCall(kEndTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
            if (result.status != kOk) break;
        }
    }
    if (inTransaction) {
        // The records before the failing one are kept.
        const int16_t status = BtrCall(kEndTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
        if (result.status == kOk) result.status = status;
    }
    BtrCall(kClose, block, nullptr, &length, keyBuffer.data(), kMaxKeyLength, 0);
    return result;
}

}  // namespace zl3::btr
