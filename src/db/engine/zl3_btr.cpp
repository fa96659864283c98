// zl3-btr: maintenance command for the suite's database files (create, stat, save, load,
// check), in the manner of Btrieve's BUTIL. Exit codes are listed in kUsage.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Btrieve.h"
#include "KeyLayout.h"
#include "Lib_Data_Pervasive_2_Catalogue.h"
#include "Maintenance.h"
#include "Lib_Systeme.h"

namespace {

using namespace zl3::btr;

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

const char* const kUsage =
    "Usage: zl3-btr COMMAND ARGUMENTS\n"
    "Maintenance of the suite's database files.\n"
    "\n"
    "Commands:\n"
    "  create FILE INDEX [--overwrite]\n"
    "        create FILE empty, with the structure of catalogue entry INDEX (0..50);\n"
    "        an existing FILE is replaced only with --overwrite\n"
    "  stat FILE\n"
    "        record length, page size, record count, keys and their segments\n"
    "  save FILE OUT [--key N]\n"
    "        write the records of FILE to OUT in the order of key N (default 0)\n"
    "  load IN FILE\n"
    "        insert the records of the save file IN into FILE; the first record that\n"
    "        fails is reported with its number, the records before it are kept\n"
    "  check FILE\n"
    "        SQLite integrity check and consistency of every key with the records;\n"
    "        prints \"ok\" or the problems found\n"
    "\n"
    "Save format: for each record, its length in decimal, a comma, the record's bytes,\n"
    "CR LF; the file ends with Ctrl-Z (0x1A).\n"
    "\n"
    "Exit codes:\n"
    "  0  success\n"
    "  1  failure: a database status (its number and meaning on stderr, as\n"
    "     \"status 12: file not found\"), a save file that cannot be read or written,\n"
    "     or problems found by check\n"
    "  2  usage error: unknown command, missing or invalid argument\n";

int Usage(const std::string& problem) {
    std::fprintf(stderr, "zl3-btr: %s\n\n%s", problem.c_str(), kUsage);
    return kExitUsage;
}

int StatusFailure(const std::string& subject, int16_t status) {
    std::fprintf(stderr, "zl3-btr: %s: status %d: %s\n", subject.c_str(), status,
                 StatusMeaning(status));
    return kExitFailure;
}

bool ParseInt(const std::string& text, int low, int high, int& value) {
    if (text.empty() || text.size() > 6) return false;
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (*end != '\0' || v < low || v > high) return false;
    value = static_cast<int>(v);
    return true;
}

struct KeyBuffer {
    uint8_t bytes[kMaxKeyLength + 1] = {};
    explicit KeyBuffer(const std::string& path) {
        std::memcpy(bytes, path.data(), std::min(path.size(), kMaxKeyLength));
    }
};

int Create(const std::vector<std::string>& args) {
    if (args.size() < 2 || args.size() > 3) return Usage("create needs FILE and INDEX");
    bool overwrite = false;
    if (args.size() == 3) {
        if (args[2] != "--overwrite") return Usage("unknown option " + args[2]);
        overwrite = true;
    }
    int index = 0;
    if (!ParseInt(args[1], 0, zl3::kNbFichiersCatalogue - 1, index))
        return Usage("INDEX must be a catalogue index 0..50");
    zl3::InitCatalogueFichiers();
    const std::vector<uint8_t> layout = zl3::StructureCreation(zl3::CatalogueFichier(index));
    if (layout.empty()) return Usage("catalogue index " + args[1] + " has no file");
    if (args[0].size() > kMaxKeyLength) return StatusFailure(args[0], kInvalidFileName);
    KeyBuffer key(args[0]);
    std::vector<uint8_t> data = layout;
    uint32_t length = static_cast<uint32_t>(data.size());
    uint8_t block[kPositionBlockSize] = {};
    const int16_t status = BtrCall(kCreate, block, data.data(), &length, key.bytes,
                                   static_cast<uint8_t>(kMaxKeyLength), overwrite ? 0 : -1);
    if (status != kOk) return StatusFailure(args[0], status);
    std::printf("%s created: %s (%s)\n", args[0].c_str(), zl3::CatalogueFichier(index).Code.c_str(),
                zl3::CatalogueFichier(index).Description.c_str());
    return kExitOk;
}

std::string FlagNames(uint16_t flags) {
    static const struct {
        uint16_t flag;
        const char* name;
    } kNames[] = {{kKeyDuplicates, "duplicates"},  {kKeyModifiable, "modifiable"},
                  {kKeyBinary, "binary"},          {kKeyNullAll, "null"},
                  {kKeySegmented, "segmented"},    {kKeyAltCollating, "collating"},
                  {kKeyDescending, "descending"},  {kKeySupplemental, "supplemental"},
                  {kKeyExtendedType, "extended"},  {kKeyNullAny, "null-any"},
                  {kKeyNoCase, "case-insensitive"}};
    std::string out;
    for (const auto& n : kNames)
        if (flags & n.flag) out += (out.empty() ? "" : ", ") + std::string(n.name);
    return out.empty() ? "none" : out;
}

int Stat(const std::vector<std::string>& args) {
    if (args.size() != 1) return Usage("stat needs FILE");
    if (args[0].size() > kMaxKeyLength) return StatusFailure(args[0], kInvalidFileName);
    KeyBuffer key(args[0]);
    uint8_t block[kPositionBlockSize] = {};
    uint32_t length = 0;
    int16_t status = BtrCall(kOpen, block, nullptr, &length, key.bytes,
                             static_cast<uint8_t>(kMaxKeyLength), kModeReadOnly);
    if (status != kOk) return StatusFailure(args[0], status);
    std::vector<uint8_t> layout(kFilePartSize + kSegmentPartSize * kMaxSegments);
    length = static_cast<uint32_t>(layout.size());
    status = BtrCall(kStat, block, layout.data(), &length, key.bytes,
                     static_cast<uint8_t>(kMaxKeyLength), 0);
    uint32_t none = 0;
    BtrCall(kClose, block, nullptr, &none, key.bytes, static_cast<uint8_t>(kMaxKeyLength), 0);
    if (status != kOk) return StatusFailure(args[0], status);

    auto u16 = [&](size_t at) { return static_cast<uint16_t>(layout[at] | layout[at + 1] << 8); };
    auto u32 = [&](size_t at) {
        return static_cast<uint32_t>(layout[at] | layout[at + 1] << 8 | layout[at + 2] << 16 |
                                     static_cast<uint32_t>(layout[at + 3]) << 24);
    };
    const int keys = layout[4];
    std::printf("File: %s\n", args[0].c_str());
    std::printf("Record length: %u\n", u16(0));
    std::printf("Page size: %u\n", u16(2));
    std::printf("Records: %u\n", u32(6));
    std::printf("Keys: %d\n", keys);
    size_t at = kFilePartSize;
    for (int k = 0; k < keys && at + kSegmentPartSize <= length; ++k) {
        std::vector<size_t> segments;
        bool more = true;
        while (more && at + kSegmentPartSize <= length) {
            segments.push_back(at);
            more = (u16(at + 4) & kKeySegmented) != 0;
            at += kSegmentPartSize;
        }
        unsigned total = 0;
        for (size_t s : segments)
            total += u16(s + 2);
        const uint16_t flags = u16(segments.front() + 4);
        std::printf("  Key %d: %zu segment%s, length %u, %s, %s, %u distinct value%s\n", k,
                    segments.size(), segments.size() > 1 ? "s" : "", total,
                    flags & kKeyDuplicates ? "duplicates allowed" : "unique",
                    flags & kKeyModifiable ? "modifiable" : "not modifiable",
                    u32(segments.front() + 6), u32(segments.front() + 6) == 1 ? "" : "s");
        for (size_t i = 0; i < segments.size(); ++i)
            std::printf("    segment %zu: position %u, length %u, flags %u (%s)\n", i + 1,
                        u16(segments[i]), u16(segments[i] + 2), u16(segments[i] + 4),
                        FlagNames(u16(segments[i] + 4)).c_str());
    }
    return kExitOk;
}

int Save(const std::vector<std::string>& args) {
    if (args.size() != 2 && args.size() != 4) return Usage("save needs FILE and OUT");
    int key = 0;
    if (args.size() == 4) {
        if (args[2] != "--key") return Usage("unknown option " + args[2]);
        if (!ParseInt(args[3], 0, kMaxKeys - 1, key)) return Usage("invalid key number");
    }
    const TransferResult r = SaveFile(args[0], args[1], key);
    if (r.status != kOk) return StatusFailure(args[0], r.status);
    if (!r.error.empty()) {
        std::fprintf(stderr, "zl3-btr: %s\n", r.error.c_str());
        return kExitFailure;
    }
    std::printf("%lld records saved to %s\n", static_cast<long long>(r.records), args[1].c_str());
    return kExitOk;
}

int Load(const std::vector<std::string>& args) {
    if (args.size() != 2) return Usage("load needs IN and FILE");
    const TransferResult r = LoadFile(args[0], args[1]);
    if (r.ok()) {
        std::printf("%lld records loaded into %s\n", static_cast<long long>(r.records),
                    args[1].c_str());
        return kExitOk;
    }
    std::printf("%lld records loaded into %s\n", static_cast<long long>(r.records),
                args[1].c_str());
    if (!r.error.empty()) {
        std::fprintf(stderr, "zl3-btr: %s: %s\n", args[0].c_str(), r.error.c_str());
        return kExitFailure;
    }
    if (r.failedRecord > 0)
        return StatusFailure(args[1] + ": record " + std::to_string(r.failedRecord), r.status);
    return StatusFailure(args[1], r.status);
}

int Check(const std::vector<std::string>& args) {
    if (args.size() != 1) return Usage("check needs FILE");
    const CheckReport r = CheckFile(args[0]);
    if (r.status == kOk) {
        std::printf("%s: ok (%lld records)\n", args[0].c_str(), static_cast<long long>(r.records));
        return kExitOk;
    }
    for (const std::string& p : r.problems)
        std::printf("%s: %s\n", args[0].c_str(), p.c_str());
    return StatusFailure(args[0], r.status);
}

}  // namespace

int main(int argc, char** argv) {
    zl3::sys::ArgumentsUtf8 utf8(argc, argv);  // file names outside ASCII, on Windows too
    argc = utf8.Argc();
    argv = utf8.Argv();
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) return Usage("no command");
    const std::string command = args.front();
    args.erase(args.begin());
    if (command == "--help" || command == "-h" || command == "help") {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (command == "create") return Create(args);
    if (command == "stat") return Stat(args);
    if (command == "save") return Save(args);
    if (command == "load") return Load(args);
    if (command == "check") return Check(args);
    return Usage("unknown command " + command);
}
