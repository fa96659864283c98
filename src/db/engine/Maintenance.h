// Maintenance of database files, in the manner of Btrieve's BUTIL: integrity check, save of the
// records in key order and load of a save file. Used by the zl3-btr command.
//
// Save format: for each record, its length in decimal ASCII, a comma, the record's raw bytes and
// CR LF; the file ends with one Ctrl-Z (0x1A). Records are read back by length, so they may hold
// any byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zl3::btr {

struct CheckReport {
    int16_t status = 0;  // 0 ok, 12 missing, 30 not ours, 2 damaged (see problems)
    int64_t records = 0;
    std::vector<std::string> problems;
};

// SQLite's integrity check, then every record against its keys: each key column must hold the
// index form computed from the record's bytes, duplicate sequences and record numbers must come
// from the file's counter, unique keys must not repeat. Opens its own connection: call it when
// this process does not hold the file open through BtrCall.
CheckReport CheckFile(const std::string& path);

struct TransferResult {
    int16_t status = 0;        // status of the failing call, 0 when none failed
    std::string error;         // a problem that is not a status (unreadable save file, ...)
    int64_t records = 0;       // records written (save) or inserted (load)
    int64_t failedRecord = 0;  // load: 1-based number of the first record that failed
    bool ok() const { return status == 0 && error.empty(); }
};

// Writes the records of `file` in the order of key `key` to `out`.
TransferResult SaveFile(const std::string& file, const std::string& out, int key);

// Inserts the records of the save file `in` into `file`, committed in groups of 1000: on a
// failure, the records before the failing one stay in the file.
TransferResult LoadFile(const std::string& in, const std::string& file);

}  // namespace zl3::btr
