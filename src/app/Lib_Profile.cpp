#include "Lib_Profile.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Cp1252.h"
#include "Lib_Public.h"

namespace zl3 {
namespace {

struct Line {
    std::string text;  // without its line ending
    std::string eol;   // "\r\n", "\n" or "" (last line without ending)
};

bool LoadLines(const std::string& file, std::vector<Line>& lines) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return false;
    std::ostringstream ss;
    ss << in.rdbuf();
    const std::string data = ss.str();
    size_t start = 0;
    while (start < data.size()) {
        const size_t nl = data.find('\n', start);
        if (nl == std::string::npos) {
            lines.push_back({data.substr(start), ""});
            break;
        }
        size_t end = nl;
        std::string eol = "\n";
        if (end > start && data[end - 1] == '\r') {
            --end;
            eol = "\r\n";
        }
        lines.push_back({data.substr(start, end - start), eol});
        start = nl + 1;
    }
    return true;
}

bool EqualsNoCase(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i];
        char y = b[i];
        if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 32);
        if (y >= 'a' && y <= 'z') y = static_cast<char>(y - 32);
        if (x != y) return false;
    }
    return true;
}

// Section name of a "[name]" line, or false.
bool SectionOf(const std::string& line, std::string& name) {
    const std::string t = Trim(line);
    if (t.size() < 2 || t.front() != '[') return false;
    const size_t close = t.find(']');
    if (close == std::string::npos) return false;
    name = Trim(t.substr(1, close - 1));
    return true;
}

// Key and value of a "key=value" line, or false (comments and malformed lines).
bool KeyOf(const std::string& line, std::string& key, std::string& value) {
    const std::string t = Trim(line);
    if (t.empty() || t.front() == ';' || t.front() == '[') return false;
    const size_t eq = t.find('=');
    if (eq == std::string::npos) return false;
    key = Trim(t.substr(0, eq));
    if (key.empty()) return false;
    value = Trim(t.substr(eq + 1));
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    return true;
}

bool SaveLines(const std::string& file, const std::vector<Line>& lines) {
    const std::string tmp = file + ".tmp~";
    {
        // The new copy takes the permissions of the file it replaces (a settings file holding
        // passwords stays readable by its owner only): they are set while the copy is empty.
        std::error_code pec;
        const auto st = std::filesystem::status(file, pec);
        if (!pec && std::filesystem::is_regular_file(st)) {
            { std::ofstream create(tmp, std::ios::binary | std::ios::trunc); }
            std::filesystem::permissions(tmp, st.permissions(),
                                         std::filesystem::perm_options::replace, pec);
        }
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        if (!out) return false;
        for (const Line& l : lines)
            out << l.text << l.eol;
        out.flush();
        if (!out) {
            std::error_code ec;
            std::filesystem::remove(tmp, ec);
            return false;
        }
    }
    std::error_code ec;
    std::filesystem::rename(tmp, file, ec);
    if (ec) {
        std::filesystem::remove(tmp, ec);
        return false;
    }
    return true;
}

}  // namespace

std::string ReadProfileString(const std::string& section, const std::string& key,
                              const std::string& defaultValue, const std::string& file) {
    std::vector<Line> lines;
    if (!LoadLines(file, lines)) return defaultValue;
    const std::string sec = Utf8ToCp1252(section);
    const std::string k = Utf8ToCp1252(key);
    bool inSection = false;
    for (const Line& l : lines) {
        std::string name;
        if (SectionOf(l.text, name)) {
            inSection = EqualsNoCase(name, sec);
            continue;
        }
        if (!inSection) continue;
        std::string lk;
        std::string lv;
        if (KeyOf(l.text, lk, lv) && EqualsNoCase(lk, k)) {
            // The value ends at a NUL byte, as the system's ini reader returns it.
            if (const size_t nul = lv.find('\0'); nul != std::string::npos) lv.resize(nul);
            return Cp1252ToUtf8(lv);
        }
    }
    return defaultValue;
}

long ReadProfileInt(const std::string& section, const std::string& key, long defaultValue,
                    const std::string& file) {
    const std::string v = ReadProfileString(section, key, "", file);
    if (v.empty()) return defaultValue;
    char* end = nullptr;
    const long n = std::strtol(v.c_str(), &end, 10);
    return end == v.c_str() ? defaultValue : n;
}

bool WriteProfileString(const std::string& section, const std::string& key,
                        const std::string& value, const std::string& file) {
    std::vector<Line> lines;
    const bool existed = LoadLines(file, lines);
    std::string eol = "\r\n";
    for (const Line& l : lines)
        if (!l.eol.empty()) {
            eol = l.eol;
            break;
        }
    const std::string sec = Utf8ToCp1252(section);
    const std::string k = Utf8ToCp1252(key);
    const std::string newLine = k + "=" + Utf8ToCp1252(value);

    int sectionStart = -1;   // index of the section's header line
    int lastInSection = -1;  // index of the last key line of the section
    bool inSection = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string name;
        if (SectionOf(lines[i].text, name)) {
            if (inSection) break;  // the section ended: only its first occurrence counts
            inSection = EqualsNoCase(name, sec);
            if (inSection) {
                sectionStart = static_cast<int>(i);
                lastInSection = static_cast<int>(i);
            }
            continue;
        }
        if (!inSection) continue;
        std::string lk;
        std::string lv;
        if (KeyOf(lines[i].text, lk, lv)) {
            if (EqualsNoCase(lk, k)) {
                lines[i].text = newLine;
                return SaveLines(file, lines);
            }
            lastInSection = static_cast<int>(i);
        } else if (!Trim(lines[i].text).empty()) {
            lastInSection = static_cast<int>(i);
        }
    }
    if (!lines.empty() && lines.back().eol.empty()) lines.back().eol = eol;
    if (sectionStart < 0) {
        lines.push_back({"[" + sec + "]", eol});
        lines.push_back({newLine, eol});
    } else {
        lines.insert(lines.begin() + lastInSection + 1, Line{newLine, eol});
    }
    (void)existed;
    return SaveLines(file, lines);
}

bool DeleteProfileKey(const std::string& section, const std::string& key, const std::string& file) {
    std::vector<Line> lines;
    if (!LoadLines(file, lines)) return true;
    const std::string sec = Utf8ToCp1252(section);
    const std::string k = Utf8ToCp1252(key);
    bool inSection = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string name;
        if (SectionOf(lines[i].text, name)) {
            inSection = EqualsNoCase(name, sec);
            continue;
        }
        std::string lk;
        std::string lv;
        if (inSection && KeyOf(lines[i].text, lk, lv) && EqualsNoCase(lk, k)) {
            lines.erase(lines.begin() + static_cast<long>(i));
            return SaveLines(file, lines);
        }
    }
    return true;
}

std::vector<std::string> ProfileSections(const std::string& file) {
    std::vector<Line> lines;
    std::vector<std::string> out;
    if (!LoadLines(file, lines)) return out;
    for (const Line& l : lines) {
        std::string name;
        if (SectionOf(l.text, name)) out.push_back(Cp1252ToUtf8(name));
    }
    return out;
}

std::vector<std::string> ProfileKeys(const std::string& section, const std::string& file) {
    std::vector<Line> lines;
    std::vector<std::string> out;
    if (!LoadLines(file, lines)) return out;
    const std::string sec = Utf8ToCp1252(section);
    bool inSection = false;
    for (const Line& l : lines) {
        std::string name;
        if (SectionOf(l.text, name)) {
            inSection = EqualsNoCase(name, sec);
            continue;
        }
        std::string lk;
        std::string lv;
        if (inSection && KeyOf(l.text, lk, lv)) out.push_back(Cp1252ToUtf8(lk));
    }
    return out;
}

}  // namespace zl3
