// btr_peer: the other process of the multi-process engine tests. Each command works on a test
// file whose records are 64 bytes: key 0 = bytes 1..8 (a decimal number, unique), key 1 = bytes
// 9..12 (duplicates), and bytes 9..64 all one repeated character, so that a torn record (bytes
// of two versions) shows at once.
//
//   btr_peer walk FILE MS            walk keys 0 and 1 for MS ms; exit 3 on a torn or misordered
//                                    record; prints "walked N"
//   btr_peer write FILE MS SEED      insert, update and delete at random for MS ms, one call per
//                                    write (retrying on 85); prints "wrote N"
//   btr_peer update FILE NUMBER CHAR rewrite record NUMBER with CHAR; exit code = status
//   btr_peer hold FILE MS            in a transaction, insert record 99999999; print "ready",
//                                    sleep MS, end the transaction
//   btr_peer exclusive FILE MS       open in exclusive mode, print "ready", sleep MS
//   btr_peer open FILE MODE          exit code = status of Open in mode MODE
//   btr_peer crash FILE N            insert records 1..N one by one, then begin a transaction and
//                                    insert from 100001 on for ever; prints "committed N", then
//                                    "in transaction" after 50 records
//   btr_peer openclose FILE MS       open read-only, read the first record, close, again for MS
//                                    ms; exit 4 on any status; prints "opened N"
//   btr_peer churn FILE              insert records 1, 2, ... for ever, printing "committed K"
//                                    after each successful insert
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>

#include "Btrieve.h"

namespace {

using namespace zl3::btr;

constexpr uint32_t kLen = 64;

struct Block {
    uint8_t pb[kPositionBlockSize];
    uint8_t key[256] = {};
    uint8_t data[kLen + 16] = {};
    uint32_t length = 0;

    int16_t Open(const char* path, int8_t mode) {
        std::memset(pb, ' ', sizeof pb);
        std::memset(key, 0, sizeof key);
        std::strncpy(reinterpret_cast<char*>(key), path, 254);
        return BtrCall(kOpen, pb, nullptr, &length, key, 255, mode);
    }
    int16_t Call(uint16_t op, int8_t keyNumber) {
        length = op == kInsert || op == kUpdate ? kLen : sizeof data;
        return BtrCall(op, pb, data, &length, key, 255, keyNumber);
    }
};

std::string Record(long number, char fill) {
    char head[24];
    std::snprintf(head, sizeof head, "%08ld", number);
    std::string r(kLen, fill);
    std::memcpy(r.data(), head, 8);
    return r;
}

void Say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void Sleep(long ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

bool Elapsed(std::chrono::steady_clock::time_point start, long ms) {
    return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(ms);
}

// Every byte after the number is the same, and the walk is in key order.
bool Uniform(const uint8_t* r) {
    for (uint32_t i = 9; i < kLen; ++i)
        if (r[i] != r[8]) return false;
    return true;
}

int Walk(const char* path, long ms) {
    Block b;
    if (int16_t s = b.Open(path, kModeReadOnly)) return s;
    const auto start = std::chrono::steady_clock::now();
    long walked = 0;
    while (!Elapsed(start, ms)) {
        for (int8_t key = 0; key < 2; ++key) {
            std::string previous;
            int16_t s = b.Call(kGetFirst, key);
            while (s == kOk) {
                if (b.length != kLen || !Uniform(b.data)) {
                    Say("torn record " + std::string(reinterpret_cast<char*>(b.data), 8));
                    return 3;
                }
                const std::string k = key == 0
                                          ? std::string(reinterpret_cast<char*>(b.data), 8)
                                          : std::string(reinterpret_cast<char*>(b.data + 8), 4);
                if (!previous.empty() && k < previous) {
                    Say("out of order " + k + " after " + previous);
                    return 3;
                }
                previous = k;
                ++walked;
                s = b.Call(kGetNext, key);
            }
            if (s != kEndOfFile) {
                Say("walk status " + std::to_string(s));
                return 4;
            }
        }
    }
    Say("walked " + std::to_string(walked));
    return 0;
}

int Write(const char* path, long ms, unsigned seed) {
    Block b;
    if (int16_t s = b.Open(path, kModeNormal)) return s;
    std::mt19937 rng(seed);
    const auto start = std::chrono::steady_clock::now();
    long wrote = 0;
    while (!Elapsed(start, ms)) {
        const long number = 1 + static_cast<long>(rng() % 400);
        const char fill = static_cast<char>('a' + rng() % 26);
        const std::string key = Record(number, ' ').substr(0, 8);
        std::memcpy(b.key, key.data(), 8);
        int16_t s = b.Call(kGetEqual, 0);
        const std::string rec = Record(number, fill);
        std::memcpy(b.data, rec.data(), kLen);
        const unsigned what = rng() % 10;
        if (s == kKeyNotFound) {
            s = b.Call(kInsert, 0);
        } else if (s == kOk) {
            if (what < 2) {
                s = b.Call(kDelete, 0);
            } else {
                std::memcpy(b.data, rec.data(), kLen);
                s = b.Call(kUpdate, 0);
            }
        }
        if (s == kOk) {
            ++wrote;
        } else if (s != kFileLocked && s != kConflict) {
            Say("write status " + std::to_string(s));
            return 4;
        }
    }
    Say("wrote " + std::to_string(wrote));
    return 0;
}

int Update(const char* path, long number, char fill) {
    Block b;
    if (int16_t s = b.Open(path, kModeNormal)) return s;
    const std::string rec = Record(number, fill);
    std::memcpy(b.key, rec.data(), 8);
    if (int16_t s = b.Call(kGetEqual, 0)) return s;
    std::memcpy(b.data, rec.data(), kLen);
    return b.Call(kUpdate, 0);
}

int Hold(const char* path, long ms) {
    Block b;
    if (int16_t s = b.Open(path, kModeNormal)) return s;
    if (int16_t s = BtrCall(kBeginTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0)) return s;
    const std::string rec = Record(99999999, 'h');
    std::memcpy(b.data, rec.data(), kLen);
    if (int16_t s = b.Call(kInsert, 0)) return s;
    Say("ready");
    Sleep(ms);
    return BtrCall(kEndTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
}

int Exclusive(const char* path, long ms) {
    Block b;
    if (int16_t s = b.Open(path, kModeExclusive)) {
        Say("status " + std::to_string(s));
        return s;
    }
    Say("ready");
    Sleep(ms);
    return 0;
}

int Crash(const char* path, long committed) {
    Block b;
    if (int16_t s = b.Open(path, kModeNormal)) return s;
    for (long n = 1; n <= committed; ++n) {
        const std::string rec = Record(n, 'c');
        std::memcpy(b.data, rec.data(), kLen);
        if (int16_t s = b.Call(kInsert, 0)) return s;
    }
    Say("committed " + std::to_string(committed));
    if (int16_t s = BtrCall(kBeginTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0)) return s;
    for (long n = 100001;; ++n) {
        const std::string rec = Record(n, 't');
        std::memcpy(b.data, rec.data(), kLen);
        if (int16_t s = b.Call(kInsert, 0)) return s;
        if (n == 100050) Say("in transaction");
    }
}

int Churn(const char* path) {
    Block b;
    if (int16_t s = b.Open(path, kModeNormal)) return s;
    for (long n = 1;; ++n) {
        const std::string rec = Record(n, static_cast<char>('a' + n % 26));
        std::memcpy(b.data, rec.data(), kLen);
        if (int16_t s = b.Call(kInsert, 0)) return s;
        Say("committed " + std::to_string(n));
    }
}

}  // namespace

int OpenClose(const char* path, long ms) {
    const auto start = std::chrono::steady_clock::now();
    long opened = 0;
    while (!Elapsed(start, ms)) {
        Block b;
        int16_t s = b.Open(path, kModeReadOnly);
        if (s == kOk) s = b.Call(kGetFirst, 0);
        if (s == kOk || s == kEndOfFile) s = b.Call(kClose, 0);
        if (s != kOk) {
            Say("openclose status " + std::to_string(s));
            return 4;
        }
        ++opened;
    }
    Say("opened " + std::to_string(opened));
    return 0;
}

int main(int argc, char** argv) {
    const std::string cmd = argc > 1 ? argv[1] : "";
    if (cmd == "walk" && argc == 4) return Walk(argv[2], std::atol(argv[3]));
    if (cmd == "write" && argc == 5)
        return Write(argv[2], std::atol(argv[3]), static_cast<unsigned>(std::atol(argv[4])));
    if (cmd == "update" && argc == 5) return Update(argv[2], std::atol(argv[3]), argv[4][0]);
    if (cmd == "hold" && argc == 4) return Hold(argv[2], std::atol(argv[3]));
    if (cmd == "exclusive" && argc == 4) return Exclusive(argv[2], std::atol(argv[3]));
    if (cmd == "open" && argc == 4) {
        Block b;
        return b.Open(argv[2], static_cast<int8_t>(std::atoi(argv[3])));
    }
    if (cmd == "crash" && argc == 4) return Crash(argv[2], std::atol(argv[3]));
    if (cmd == "openclose" && argc == 4) return OpenClose(argv[2], std::atol(argv[3]));
    if (cmd == "churn" && argc == 3) return Churn(argv[2]);
    std::fprintf(stderr, "btr_peer: bad arguments\n");
    return 2;
}
