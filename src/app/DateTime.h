// Calendar date-times as the suite handles them: local wall-clock values, day arithmetic and the
// fixed text renderings used in traces, grids, keys and file names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zl3 {

struct DateTime {
    int year = 2000;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    friend bool operator==(const DateTime&, const DateTime&) = default;
};

// Days since 1970-01-01 of a civil date (proleptic Gregorian).
int64_t DaysFromCivil(int year, int month, int day);
// Inverse of DaysFromCivil.
DateTime CivilFromDays(int64_t days);
bool IsValidDate(int year, int month, int day);
int DaysInMonth(int year, int month);
// Day of the week, Monday = 1 … Sunday = 7.
int DayOfWeek(const DateTime& d);
// Same time of day, `days` later (negative: earlier).
DateTime AddDays(const DateTime& d, int64_t days);
// Whole days from a to b (b − a), ignoring the time of day.
int64_t DayDiff(const DateTime& a, const DateTime& b);

std::string FormatYYYYMMDD(const DateTime& d);                  // "20261121"
std::string FormatDDMMYYYY(const DateTime& d, char sep = '/');  // "21/11/2026"
std::string FormatHHMMSS(const DateTime& d);                    // "09:05:03"
std::string FormatDDMM(const DateTime& d);                      // "21/11"
// French short day name as rendered by the "ddd" date format: "lun.", "mar.", … "dim.".
std::string ShortDayName(const DateTime& d);
// Number on `width` digits with leading zeros ("05").
std::string PadNumber(int64_t value, int width, char pad = '0');

// "YYYY-MM-DD" (command lines) or "yyyyMMdd"; nullopt when not a real calendar date.
std::optional<DateTime> ParseIsoDate(const std::string& text);
std::optional<DateTime> ParseYYYYMMDD(const std::string& text);

}  // namespace zl3
