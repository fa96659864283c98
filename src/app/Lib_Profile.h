// Ini files read and written the way the Windows profile functions (GetPrivateProfileString,
// WritePrivateProfileString) do, on every platform:
// - sections and keys are found without regard to case; the first occurrence wins;
// - a missing file, section or key gives the default, never an error;
// - values are trimmed of blanks, and one pair of enclosing quotes ('…' or "…") is removed;
// - lines starting with ";" are comments; lines that are neither a section, a key nor a comment
//   are ignored on reading and kept on writing;
// - writing a key rewrites only that key's line (or adds it at the end of its section, or adds
//   the section at the end of the file); every other byte of the file is kept as it was, line
//   endings included (a new file gets CR LF); the rewritten file keeps the permissions it had;
// - the file's text is Windows-1252; callers exchange UTF-8.
#pragma once

#include <string>
#include <vector>

namespace zl3 {

std::string ReadProfileString(const std::string& section, const std::string& key,
                              const std::string& defaultValue, const std::string& file);
// Integer value (leading digits, optional sign), or the default when the key has none.
long ReadProfileInt(const std::string& section, const std::string& key, long defaultValue,
                    const std::string& file);
// Writes one key; false when the file cannot be written.
bool WriteProfileString(const std::string& section, const std::string& key,
                        const std::string& value, const std::string& file);
// Removes one key (a missing key is not an error).
bool DeleteProfileKey(const std::string& section, const std::string& key, const std::string& file);
// Section names in file order; keys of one section in file order.
std::vector<std::string> ProfileSections(const std::string& file);
std::vector<std::string> ProfileKeys(const std::string& section, const std::string& file);

}  // namespace zl3
