// bench_btrieve: throughput of the record-file engine on a track file like the suite's (FRAD022:
// 900-byte records, 6 keys), as the statistics run uses it: a Get Next walk over key 0 and
// random Get Equal, against a raw SQLite scan of the same rows as the floor.
//
//   bench_btrieve [--records N] [--repeat N] [--shuffled] [--data-version] [--dir DIR]
//                 [--only NAME] [--json]
//
// --shuffled inserts the tracks in random order (the key-0 walk then reads rows scattered over
// the file); --data-version makes the engine check for changes with PRAGMA data_version on
// every call instead of the WAL-index header.
//
// Prints "name: value unit" per figure (wall clock, best of --repeat runs, then the same per
// second of CPU time as name_cpu), or one JSON object with --json. Every measured
// function takes the BTRCALL-like function to go through, so that a layer above the engine
// can be measured the same way: add an entry to Measures() with its own function.
#include <sqlite3.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Btrieve.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2_Catalogue.h"
#include "RecordForm.h"
#include "Store.h"

namespace {

using namespace zl3::btr;
using Clock = std::chrono::steady_clock;

// The signature of Btrieve's entry point.
using BtrFunction = int16_t (*)(uint16_t, void*, void*, uint32_t*, void*, uint8_t, int8_t);

constexpr int kTrackIndex = 22;
constexpr uint32_t kTrackLength = 900;
constexpr uint8_t kKeyLength = 255;

struct Options {
    int records = 50000;
    int repeat = 3;
    bool shuffled = false;
    bool dataVersion = false;  // detect changes with PRAGMA data_version (the slow way)
    bool json = false;
    std::string dir;
    std::string only;  // run this measure only
};

struct Fixture {
    std::string path;
    std::vector<std::string> codes;  // key 0 of every record
};

struct Figure {
    std::string name;
    double value = 0;
    std::string unit;
};

struct Measure {
    std::string name;
    std::string unit;
    // Returns the number of operations done; the time is taken around it.
    std::function<long(const Fixture&)> run;
};

double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

// CPU time of the process: on a shared machine the wall-clock figures vary with the load of
// the others, the CPU figures much less.
double CpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

void Fail(const char* what, int status) {
    std::fprintf(stderr, "bench_btrieve: %s: status %d (%s)\n", what, status,
                 StatusMeaning(static_cast<int16_t>(status)));
    std::exit(1);
}

struct KeyBuffer {
    uint8_t bytes[256] = {};
};

KeyBuffer PathKey(const std::string& path) {
    KeyBuffer k;
    std::memcpy(k.bytes, path.data(), std::min<size_t>(path.size(), 254));
    return k;
}

// One track record: code, artist, category, title (case-insensitive key), voice and sound
// codes, then the text and numeric fields of the rest of the record.
void MakeTrack(int number, std::mt19937& rng, std::vector<uint8_t>& rec) {
    static const char* const kWords[] = {"amour", "Nuit", "SOLEIL", "la", "Route", "ciel",
                                         "Danse", "mer",  "Paris",  "du", "Temps", "coeur"};
    rec.assign(kTrackLength, ' ');
    char field[64];
    std::snprintf(field, sizeof field, "%08d", number);
    std::memcpy(&rec[0], field, 8);
    std::snprintf(field, sizeof field, "%05u", static_cast<unsigned>(rng() % 6000));
    std::memcpy(&rec[8], field, 5);  // artist
    std::snprintf(field, sizeof field, "%05u", static_cast<unsigned>(rng() % 40));
    std::memcpy(&rec[18], field, 5);  // category
    std::string title = kWords[rng() % 12];
    title += ' ';
    title += kWords[rng() % 12];
    title += ' ';
    title += kWords[rng() % 12];
    title.resize(20, ' ');
    std::memcpy(&rec[23], title.data(), 20);
    std::snprintf(field, sizeof field, "%05u%05u", static_cast<unsigned>(rng() % 12),
                  static_cast<unsigned>(rng() % 30));
    std::memcpy(&rec[63], field, 10);  // voice, sound
    std::snprintf(field, sizeof field, "%02u:%02u  %04u%02u%02u", static_cast<unsigned>(rng() % 8),
                  static_cast<unsigned>(rng() % 60), 1990u + static_cast<unsigned>(rng() % 35),
                  1u + static_cast<unsigned>(rng() % 12), 1u + static_cast<unsigned>(rng() % 28));
    std::memcpy(&rec[80], field, std::strlen(field));
    for (size_t i = 120; i < kTrackLength; ++i)
        rec[i] = static_cast<uint8_t>(i % 7 == 0 ? ' ' : 'A' + (number + i) % 26);
}

Fixture Build(const Options& o, Figure& rate) {
    Fixture f;
    f.path = o.dir + "/FRADA22.bt6";
    zl3::InitCatalogueFichiers();
    std::vector<uint8_t> layout = zl3::StructureCreation(zl3::CatalogueFichier(kTrackIndex));
    KeyBuffer key = PathKey(f.path);
    uint8_t block[kPositionBlockSize] = {};
    uint32_t length = static_cast<uint32_t>(layout.size());
    int status = BtrCall(kCreate, block, layout.data(), &length, key.bytes, kKeyLength, 0);
    if (status) Fail("create", status);
    status = BtrCall(kOpen, block, nullptr, &length, key.bytes, kKeyLength, 0);
    if (status) Fail("open", status);

    std::vector<int> numbers(static_cast<size_t>(o.records));
    for (int i = 0; i < o.records; ++i)
        numbers[static_cast<size_t>(i)] = i + 1;
    std::mt19937 rng(22);
    if (o.shuffled) std::shuffle(numbers.begin(), numbers.end(), rng);
    std::vector<uint8_t> rec;
    const auto start = Clock::now();
    BtrCall(kBeginTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
    for (int n : numbers) {
        MakeTrack(n, rng, rec);
        length = kTrackLength;
        KeyBuffer out;
        status = BtrCall(kInsert, block, rec.data(), &length, out.bytes, kKeyLength, 0);
        if (status) Fail("insert", status);
        f.codes.emplace_back(reinterpret_cast<const char*>(rec.data()), 8);
    }
    status = BtrCall(kEndTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
    if (status) Fail("end transaction", status);
    rate = {"build_insert", o.records / Seconds(start), "records/s"};
    BtrCall(kClose, block, nullptr, &length, key.bytes, kKeyLength, 0);
    return f;
}

// Get First then Get Next to the end of the file on `keyNumber`.
long Walk(BtrFunction call, const Fixture& f, int8_t keyNumber) {
    KeyBuffer key = PathKey(f.path);
    uint8_t block[kPositionBlockSize];
    std::memset(block, ' ', sizeof block);
    uint32_t length = 0;
    int status = call(kOpen, block, nullptr, &length, key.bytes, kKeyLength, kModeReadOnly);
    if (status) Fail("open", status);
    std::vector<uint8_t> rec(kTrackLength);
    long ops = 0;
    uint16_t op = kGetFirst;
    for (;;) {
        length = kTrackLength;
        status = call(op, block, rec.data(), &length, key.bytes, kKeyLength, keyNumber);
        ++ops;
        if (status == kEndOfFile) break;
        if (status) Fail("walk", status);
        op = kGetNext;
    }
    if (ops != static_cast<long>(f.codes.size()) + 1) Fail("walk: wrong record count", -1);
    call(kClose, block, nullptr, &length, key.bytes, kKeyLength, 0);
    return ops;
}

long RandomGetEqual(BtrFunction call, const Fixture& f) {
    KeyBuffer key = PathKey(f.path);
    uint8_t block[kPositionBlockSize];
    std::memset(block, ' ', sizeof block);
    uint32_t length = 0;
    int status = call(kOpen, block, nullptr, &length, key.bytes, kKeyLength, kModeReadOnly);
    if (status) Fail("open", status);
    std::vector<std::string> order = f.codes;
    std::mt19937 rng(47);
    std::shuffle(order.begin(), order.end(), rng);
    std::vector<uint8_t> rec(kTrackLength);
    for (const std::string& code : order) {
        KeyBuffer k;
        std::memcpy(k.bytes, code.data(), code.size());
        length = kTrackLength;
        status = call(kGetEqual, block, rec.data(), &length, k.bytes, kKeyLength, 0);
        if (status) Fail("get equal", status);
    }
    call(kClose, block, nullptr, &length, key.bytes, kKeyLength, 0);
    return static_cast<long>(order.size());
}

// The floor: SQLite alone reading the same rows in key-0 order, copying each record.
long RawScan(const Fixture& f) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(f.path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
        Fail("sqlite open", -1);
    sqlite3_exec(db, "PRAGMA mmap_size=1073741824", nullptr, nullptr, nullptr);
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db, "SELECT data FROM zl3_records ORDER BY k0, s0", -1, &st, nullptr);
    std::vector<uint8_t> rec(kTrackLength);
    long rows = 0;
    while (sqlite3_step(st) == SQLITE_ROW) {
        if (!DecodeRecord(static_cast<const uint8_t*>(sqlite3_column_blob(st, 0)),
                          static_cast<size_t>(sqlite3_column_bytes(st, 0)), rec.size(),
                          rec.data()))
            Fail("stored record", -1);
        ++rows;
    }
    sqlite3_finalize(st);
    sqlite3_close_v2(db);
    return rows;
}

// The same walk and look-ups through the tool's call layer (BTRieve), with its call history on,
// as the statistics run makes them.
constexpr const char* kContexte = "Frm_Main:CommandLancer_Click";

long CallLayerWalk(const Fixture& f) {
    zl3::ResetLibDataPervasive();
    if (!zl3::OuvertureFichierBTrieve(0, kTrackIndex, f.path, kTrackLength, 1, kModeReadOnly))
        Fail("call layer open", zl3::StatutBTrieve);
    std::string key = "000" + std::string(5, '\0');
    long ops = 0;
    int16_t op = zl3::kBtrGetGreaterOrEqual;
    while (zl3::BTRieve(0, op, key, 0, kTrackIndex, 1, kContexte) == 0) {
        ++ops;
        op = zl3::kBtrGetNext;
    }
    ++ops;
    if (zl3::StatutBTrieve != kEndOfFile) Fail("call layer walk", zl3::StatutBTrieve);
    if (ops != static_cast<long>(f.codes.size()) + 1) Fail("call layer walk: record count", -1);
    zl3::FermerTousLesFichiers();
    zl3::ResetLibDataPervasive();
    return ops;
}

long CallLayerGetEqual(const Fixture& f) {
    zl3::ResetLibDataPervasive();
    if (!zl3::OuvertureFichierBTrieve(0, kTrackIndex, f.path, kTrackLength, 1, kModeReadOnly))
        Fail("call layer open", zl3::StatutBTrieve);
    std::vector<std::string> order = f.codes;
    std::mt19937 rng(47);
    std::shuffle(order.begin(), order.end(), rng);
    std::string key;
    for (const std::string& code : order) {
        key = code;
        if (zl3::BTRieve(0, zl3::kBtrGetEqual, key, 0, kTrackIndex, 1, kContexte) != 0)
            Fail("call layer get equal", zl3::StatutBTrieve);
    }
    zl3::ResetLibDataPervasive();
    return static_cast<long>(order.size());
}

std::vector<Measure> Measures() {
    return {
        {"getnext_walk", "ops/s", [](const Fixture& f) { return Walk(BtrCall, f, 0); }},
        {"getequal_random", "ops/s", [](const Fixture& f) { return RandomGetEqual(BtrCall, f); }},
        {"getnext_walk_title", "ops/s", [](const Fixture& f) { return Walk(BtrCall, f, 5); }},
        {"calllayer_getnext_walk", "ops/s", CallLayerWalk},
        {"calllayer_getequal_random", "ops/s", CallLayerGetEqual},
        {"sqlite_scan", "rows/s", RawScan},
    };
}

bool ParseOptions(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--json") {
            o.json = true;
        } else if (a == "--shuffled") {
            o.shuffled = true;
        } else if (a == "--data-version") {
            o.dataVersion = true;
        } else if ((a == "--records" || a == "--repeat" || a == "--dir" || a == "--only") &&
                   i + 1 < argc) {
            const std::string v = argv[++i];
            if (a == "--dir") {
                o.dir = v;
            } else if (a == "--only") {
                o.only = v;
            } else {
                const int n = std::atoi(v.c_str());
                if (n < 1) return false;
                (a == "--records" ? o.records : o.repeat) = n;
            }
        } else {
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (!ParseOptions(argc, argv, o)) {
        std::fprintf(
            stderr,
            "usage: bench_btrieve [--records N] [--repeat N] [--shuffled] [--data-version] "
            "[--dir DIR] [--only NAME] [--json]\n");
        return 2;
    }
    bool ownDir = false;
    if (o.dir.empty()) {
        char pattern[] = "/tmp/zl3-bench-XXXXXX";
        if (!mkdtemp(pattern)) return 1;
        o.dir = pattern;
        ownDir = true;
    }
    UseWalIndexHeader(!o.dataVersion);
    std::vector<Figure> figures(1);
    const Fixture fixture = Build(o, figures[0]);
    for (const Measure& m : Measures()) {
        if (!o.only.empty() && m.name != o.only) continue;
        double best = 0;
        double bestCpu = 0;
        for (int r = 0; r < o.repeat; ++r) {
            const auto start = Clock::now();
            const double cpuStart = CpuSeconds();
            const long ops = m.run(fixture);
            best = std::max(best, ops / Seconds(start));
            bestCpu = std::max(bestCpu, ops / (CpuSeconds() - cpuStart));
        }
        figures.push_back({m.name, best, m.unit});
        figures.push_back(
            {m.name + "_cpu", bestCpu, m.unit.substr(0, m.unit.find('/')) + "/cpu-s"});
    }
    if (o.json) {
        std::printf("{\"records\": %d, \"shuffled\": %s", o.records, o.shuffled ? "true" : "false");
        for (const Figure& f : figures)
            std::printf(", \"%s\": {\"value\": %.0f, \"unit\": \"%s\"}", f.name.c_str(), f.value,
                        f.unit.c_str());
        std::printf("}\n");
    } else {
        for (const Figure& f : figures)
            std::printf("%s: %.0f %s\n", f.name.c_str(), f.value, f.unit.c_str());
    }
    if (ownDir) std::filesystem::remove_all(o.dir);
    return 0;
}
