#include "BtrTestUtil.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zl3::btr::test {

TempDir::TempDir() : path_(zl3::test::NouveauDossierTemporaire("zl3-btr-test-")) {}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(std::filesystem::path(std::u8string(
                                    reinterpret_cast<const char8_t*>(path_.data()), path_.size())),
                                ec);
}

std::vector<uint8_t> Layout(uint16_t recordLength, const std::vector<std::vector<Seg>>& keys,
                            uint16_t pageSize) {
    std::vector<uint8_t> out(16, 0);
    auto put16 = [&](size_t at, uint16_t v) {
        out[at] = static_cast<uint8_t>(v & 0xFF);
        out[at + 1] = static_cast<uint8_t>(v >> 8);
    };
    put16(0, recordLength);
    put16(2, pageSize);
    out[4] = static_cast<uint8_t>(keys.size());
    for (const auto& key : keys) {
        for (size_t i = 0; i < key.size(); ++i) {
            const size_t at = out.size();
            out.resize(at + 16, 0);
            put16(at, key[i].position);
            put16(at + 2, key[i].length);
            put16(at + 4, static_cast<uint16_t>(key[i].flags | (i + 1 < key.size() ? 16 : 0)));
            out[at + 11] = key[i].nullValue;
        }
    }
    return out;
}

int16_t Create(const std::string& path, const std::vector<uint8_t>& layout, int8_t mode) {
    std::vector<uint8_t> data = layout;
    uint32_t length = static_cast<uint32_t>(data.size());
    std::string block(kPositionBlockSize, ' ');
    std::string key(kMaxKeyLength, '\0');
    key.replace(0, path.size(), path);
    return BtrCall(kCreate, block.data(), data.data(), &length, key.data(),
                   static_cast<uint8_t>(kMaxKeyLength), mode);
}

int16_t Begin() {
    return BtrCall(kBeginTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
}
int16_t End() {
    return BtrCall(kEndTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
}
int16_t Abort() {
    return BtrCall(kAbortTransaction, nullptr, nullptr, nullptr, nullptr, 0, 0);
}
int16_t Reset() {
    return BtrCall(kReset, nullptr, nullptr, nullptr, nullptr, 0, 0);
}

int16_t Handle::Open(const std::string& path, int8_t mode) {
    key.assign(kMaxKeyLength, '\0');
    key.replace(0, path.size(), path);
    length = 0;
    return BtrCall(kOpen, block.data(), nullptr, &length, key.data(),
                   static_cast<uint8_t>(kMaxKeyLength), mode);
}

int16_t Handle::Close() {
    length = 0;
    return BtrCall(kClose, block.data(), nullptr, &length, key.data(),
                   static_cast<uint8_t>(kMaxKeyLength), 0);
}

int16_t Handle::Get(uint16_t op, int8_t keyNumber, const std::string& keyValue, uint32_t capacity) {
    key.assign(kMaxKeyLength, '\0');
    key.replace(0, keyValue.size(), keyValue);
    record.assign(capacity, '\xEE');
    length = capacity;
    const int16_t status = BtrCall(op, block.data(), record.data(), &length, key.data(),
                                   static_cast<uint8_t>(kMaxKeyLength), keyNumber);
    if (status == kOk) record.resize(length);
    return status;
}

int16_t Handle::Insert(const std::string& rec, int8_t keyNumber) {
    std::string data = rec;
    length = static_cast<uint32_t>(data.size());
    key.assign(kMaxKeyLength, '\0');
    return BtrCall(kInsert, block.data(), data.data(), &length, key.data(),
                   static_cast<uint8_t>(kMaxKeyLength), keyNumber);
}

int16_t Handle::Update(const std::string& rec, int8_t keyNumber) {
    std::string data = rec;
    length = static_cast<uint32_t>(data.size());
    key.assign(kMaxKeyLength, '\0');
    return BtrCall(kUpdate, block.data(), data.data(), &length, key.data(),
                   static_cast<uint8_t>(kMaxKeyLength), keyNumber);
}

int16_t Handle::Delete() {
    length = 0;
    return BtrCall(kDelete, block.data(), nullptr, &length, key.data(),
                   static_cast<uint8_t>(kMaxKeyLength), 0);
}

int16_t Handle::Stat(std::vector<uint8_t>& layout) {
    layout.assign(16 + 16 * 120, 0);
    length = static_cast<uint32_t>(layout.size());
    const int16_t status = BtrCall(kStat, block.data(), layout.data(), &length, key.data(),
                                   static_cast<uint8_t>(kMaxKeyLength), 0);
    if (status == kOk) layout.resize(length);
    return status;
}

std::vector<std::string> Walk(Handle& h, int8_t keyNumber) {
    std::vector<std::string> out;
    int16_t status = h.Get(kGetFirst, keyNumber);
    while (status == kOk) {
        out.push_back(h.record);
        status = h.Get(kGetNext, keyNumber);
    }
    if (status != kEndOfFile) out.push_back("<status " + std::to_string(status) + ">");
    return out;
}

// ---- Processes --------------------------------------------------------------------------------

CommandResult RunCommand(const std::vector<std::string>& args) {
    const zl3::test::ResultatCommande r = zl3::test::LancerCommande(args);
    return CommandResult{r.code, r.sortie, r.erreurs};
}

std::string ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace zl3::btr::test
