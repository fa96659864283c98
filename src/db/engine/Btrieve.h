// The suite's record-file engine: Btrieve's operations, operation codes and statuses over files
// that are SQLite databases underneath.
//
// One call does one operation: BtrCall(operation, positionBlock, dataBuffer, &dataLength,
// keyBuffer, keyLength, keyNumber) → status (0 = success). The caller keeps a 128-byte position
// block per open file; the engine writes an opaque reference into it at Open and finds its own
// per-process state (connection, cursor, read-ahead) from it on every later call. A block that
// does not reference a file opened by this process (128 spaces, zeros, garbage, a closed file)
// gives status 3.
//
// Files: each file is one SQLite database (WAL journal) whose records table keeps every record's
// exact bytes and one ordered index per key of the file's key definition. Keys are compared
// byte by byte, unsigned, over the concatenation of their segments; case-insensitive segments
// compare a-z as A-Z; duplicates keep the order in which their key value was written (insert, or
// the update that gave the record that value).
//
// Concurrency: each process has its own connections; a write that meets another process's write
// lock returns 85 at once (the engine never waits); a record changed by someone else since this
// position read it gives 80 on Update/Delete. Transactions (19/1019, 20, 21) belong to the
// process and span every file written inside them.
//
// Calls, in short:
//  - Open (0): key buffer = the file's path, ended by a NUL within keyLength (or filling exactly
//    keyLength bytes; trailing spaces are ignored); keyNumber = open mode; the data buffer (owner
//    name) is ignored. The position block is then overwritten with the engine's reference.
//  - Close (1) or Release (25): the block no longer refers to anything (status 3 afterwards).
//    The file's connection closes with its last block, or at the end of the transaction when
//    the file was written inside one.
//  - Gets: dataLength ≥ record length (else 22, nothing copied); keyLength ≥ the key's length
//    (else 21); on success the record, its length and the key value (exactly the key's bytes at
//    the start of the key buffer) come back.
//  - A call that fails leaves the position, the buffers and dataLength as they were.
//  - Create (14): key buffer = path, data buffer = creation layout (dataLength ≥ its size),
//    keyNumber 0 replaces an existing file, -1 refuses it (59). The file is not opened.
//  - Reset (28) aborts the transaction and closes every file of the process.
//
// Thread safety: calls are serialised by one lock per process. A background thread ends the read
// snapshots of files left idle (see Engine.cpp), so an idle process never holds other processes'
// write-ahead logs back. A child created by fork() starts with nothing open: the parent's
// position blocks give 3 there.
#pragma once

#include <cstdint>
#include <string>

namespace zl3::btr {

inline constexpr size_t kPositionBlockSize = 128;
inline constexpr size_t kMaxKeyLength = 255;
inline constexpr int kMaxKeys = 119;
inline constexpr int kMaxSegments = 119;

// Operation codes.
enum Op : uint16_t {
    kOpen = 0,
    kClose = 1,
    kInsert = 2,
    kUpdate = 3,
    kDelete = 4,
    kGetEqual = 5,
    kGetNext = 6,
    kGetPrevious = 7,
    kGetGreater = 8,
    kGetGreaterOrEqual = 9,
    kGetLess = 10,
    kGetLessOrEqual = 11,
    kGetFirst = 12,
    kGetLast = 13,
    kCreate = 14,
    kStat = 15,
    kBeginTransaction = 19,
    kEndTransaction = 20,
    kAbortTransaction = 21,
    kRelease = 25,  // closes the file of the given position block
    kReset = 28,
    kBeginConcurrentTransaction = 1019,
};

// Open modes, passed as the key number of Open.
enum OpenMode : int8_t {
    kModeNormal = 0,
    kModeAccelerated = -1,
    kModeReadOnly = -2,
    kModeVerify = -3,
    kModeExclusive = -4,
};

// Statuses returned by this engine.
inline constexpr int16_t kOk = 0;
inline constexpr int16_t kInvalidOperation = 1;
inline constexpr int16_t kIoError = 2;
inline constexpr int16_t kFileNotOpen = 3;
inline constexpr int16_t kKeyNotFound = 4;
inline constexpr int16_t kDuplicateKey = 5;
inline constexpr int16_t kInvalidKeyNumber = 6;
inline constexpr int16_t kDifferentKeyNumber = 7;
inline constexpr int16_t kInvalidPositioning = 8;
inline constexpr int16_t kEndOfFile = 9;
inline constexpr int16_t kModifiableKeyChanged = 10;
inline constexpr int16_t kInvalidFileName = 11;
inline constexpr int16_t kFileNotFound = 12;
inline constexpr int16_t kDiskFull = 18;
inline constexpr int16_t kKeyBufferTooShort = 21;
inline constexpr int16_t kDataBufferLength = 22;
inline constexpr int16_t kPageSizeError = 24;
inline constexpr int16_t kNumberOfKeysInvalid = 26;
inline constexpr int16_t kKeyPositionInvalid = 27;
inline constexpr int16_t kRecordLengthInvalid = 28;
inline constexpr int16_t kKeyLengthInvalid = 29;
inline constexpr int16_t kNotABtrieveFile = 30;
inline constexpr int16_t kTransactionActive = 37;
inline constexpr int16_t kNoTransaction = 39;
inline constexpr int16_t kInvalidKeyFlags = 45;
inline constexpr int16_t kAccessDenied = 46;
inline constexpr int16_t kFileExists = 59;
inline constexpr int16_t kConflict = 80;
// Another process holds the file's write lock (a transaction, or a write in progress) or has
// opened it exclusively; returned at once, the engine never waits.
inline constexpr int16_t kFileLocked = 85;
// Btrieve statuses this engine never returns (its locks are per file, see 85), listed for the
// callers that handle them.
inline constexpr int16_t kRecordLocked = 84;
inline constexpr int16_t kIncompatibleMode = 88;

// One Btrieve call. dataLength: capacity of dataBuffer on input, bytes returned on output
// (the record length on reads). keyLength: capacity of keyBuffer (the call layer passes 255).
int16_t BtrCall(uint16_t operation, void* positionBlock, void* dataBuffer, uint32_t* dataLength,
                void* keyBuffer, uint8_t keyLength, int8_t keyNumber);

// Short English meaning of a status, for maintenance tools ("duplicate key value").
const char* StatusMeaning(int16_t status);

// Number of files and position blocks this process holds open (tests, diagnostics).
struct EngineCounts {
    int files = 0;
    int positionBlocks = 0;
    bool transaction = false;
};
EngineCounts Counts();

}  // namespace zl3::btr
