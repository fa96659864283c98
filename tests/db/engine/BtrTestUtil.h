// Helpers shared by the engine tests: temporary folders, creation layouts, a position block
// wrapper with string buffers, and helper processes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Btrieve.h"
#include "Processus.h"

namespace zl3::btr::test {

// A fresh folder under the system's temporary folder, removed with its content.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

struct Seg {
    uint16_t position;  // 1-based
    uint16_t length;
    uint16_t flags = 0;  // the segmented flag is added for every segment but a key's last
    uint8_t nullValue = 0;
};

// Creation layout with `keys` (each a list of segments).
std::vector<uint8_t> Layout(uint16_t recordLength, const std::vector<std::vector<Seg>>& keys,
                            uint16_t pageSize = 1024);

int16_t Create(const std::string& path, const std::vector<uint8_t>& layout, int8_t mode = 0);
int16_t Begin();
int16_t End();
int16_t Abort();
int16_t Reset();

// One position block, kept as the caller of the engine keeps it: 128 bytes in a string.
class Handle {
  public:
    std::string block = std::string(kPositionBlockSize, ' ');
    std::string key = std::string(kMaxKeyLength, '\0');  // key buffer after the last call
    std::string record;                                  // data buffer after the last read
    uint32_t length = 0;                                 // data length after the last call

    int16_t Open(const std::string& path, int8_t mode = 0);
    int16_t Close();
    // A Get: `keyValue` is copied at the start of the 255-byte key buffer.
    int16_t Get(uint16_t op, int8_t keyNumber, const std::string& keyValue = "",
                uint32_t capacity = 4096);
    int16_t Insert(const std::string& rec, int8_t keyNumber = 0);
    int16_t Update(const std::string& rec, int8_t keyNumber = 0);
    int16_t Delete();
    int16_t Stat(std::vector<uint8_t>& layout);
    std::string Key(size_t length) const { return key.substr(0, length); }
};

// Records of a walk on `keyNumber` from Get First to the end.
std::vector<std::string> Walk(Handle& h, int8_t keyNumber);

// A helper process with its standard output readable line by line (see Processus.h).
class Process {
  public:
    explicit Process(const std::vector<std::string>& args) : p_(args) {}
    // Next line of standard output; false on end of output or after `timeoutMs`.
    bool ReadLine(std::string& line, int timeoutMs = 10000) { return p_.LireLigne(line, timeoutMs); }
    // Waits for the end; the exit code (kCodeTermine after Kill).
    int Wait() { return p_.Attendre(); }
    // Ends it at once, by the id of the process started.
    void Kill() { p_.Terminer(); }

  private:
    zl3::test::Processus p_;
};

// Runs a command to its end, capturing standard output and error.
struct CommandResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};
CommandResult RunCommand(const std::vector<std::string>& args);

std::string ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::string& bytes);

}  // namespace zl3::btr::test
