#include "DateTime.h"

#include <cstdio>

namespace zl3 {

int64_t DaysFromCivil(int year, int month, int day) {
    // Howard Hinnant's days_from_civil.
    const int64_t y = static_cast<int64_t>(year) - (month <= 2 ? 1 : 0);
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t mp = (month + 9) % 12;
    const int64_t doy = (153 * mp + 2) / 5 + day - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

DateTime CivilFromDays(int64_t z) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    DateTime d;
    d.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    d.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    d.year = static_cast<int>(yoe + era * 400 + (d.month <= 2 ? 1 : 0));
    return d;
}

int DaysInMonth(int year, int month) {
    static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    if (month == 2 && ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0)) return 29;
    return kDays[month - 1];
}

bool IsValidDate(int year, int month, int day) {
    return year >= 1 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
           day <= DaysInMonth(year, month);
}

int DayOfWeek(const DateTime& d) {
    const int64_t days = DaysFromCivil(d.year, d.month, d.day);  // 1970-01-01 was a Thursday (4)
    int64_t w = (days + 3) % 7;
    if (w < 0) w += 7;
    return static_cast<int>(w) + 1;
}

DateTime AddDays(const DateTime& d, int64_t days) {
    DateTime r = CivilFromDays(DaysFromCivil(d.year, d.month, d.day) + days);
    r.hour = d.hour;
    r.minute = d.minute;
    r.second = d.second;
    r.millisecond = d.millisecond;
    return r;
}

int64_t DayDiff(const DateTime& a, const DateTime& b) {
    return DaysFromCivil(b.year, b.month, b.day) - DaysFromCivil(a.year, a.month, a.day);
}

std::string FormatYYYYMMDD(const DateTime& d) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04d%02d%02d", d.year, d.month, d.day);
    return buf;
}

std::string FormatDDMMYYYY(const DateTime& d, char sep) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02d%c%02d%c%04d", d.day, sep, d.month, sep, d.year);
    return buf;
}

std::string FormatHHMMSS(const DateTime& d) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", d.hour, d.minute, d.second);
    return buf;
}

std::string FormatDDMM(const DateTime& d) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%02d/%02d", d.day, d.month);
    return buf;
}

std::string ShortDayName(const DateTime& d) {
    static const char* kNames[7] = {"lun.", "mar.", "mer.", "jeu.", "ven.", "sam.", "dim."};
    return kNames[DayOfWeek(d) - 1];
}

std::string PadNumber(int64_t value, int width, char pad) {
    std::string s = std::to_string(value < 0 ? -value : value);
    if (static_cast<int>(s.size()) < width) s.insert(0, width - s.size(), pad);
    if (value < 0) s.insert(0, 1, '-');
    return s;
}

static bool AllDigits(const std::string& s) {
    for (char c : s)
        if (c < '0' || c > '9') return false;
    return !s.empty();
}

std::optional<DateTime> ParseIsoDate(const std::string& text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    return ParseYYYYMMDD(text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2));
}

std::optional<DateTime> ParseYYYYMMDD(const std::string& text) {
    if (text.size() != 8 || !AllDigits(text)) return std::nullopt;
    DateTime d;
    d.year = std::stoi(text.substr(0, 4));
    d.month = std::stoi(text.substr(4, 2));
    d.day = std::stoi(text.substr(6, 2));
    if (!IsValidDate(d.year, d.month, d.day)) return std::nullopt;
    return d;
}

}  // namespace zl3
