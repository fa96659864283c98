// Calendar arithmetic and the fixed renderings used in keys, rows and file names.
#include <gtest/gtest.h>

#include "DateTime.h"

namespace zl3 {
namespace {

TEST(Calendrier, DaysWeekdaysAndRenderings) {
    EXPECT_EQ(DaysFromCivil(1970, 1, 1), 0);
    for (int64_t d : {-800000LL, -1LL, 0LL, 11016LL, 20000LL, 2932896LL}) {
        const DateTime c = CivilFromDays(d);
        EXPECT_EQ(DaysFromCivil(c.year, c.month, c.day), d);
    }
    EXPECT_EQ(DayOfWeek(DateTime{2026, 11, 21}), 6);  // a Saturday
    EXPECT_EQ(DayOfWeek(DateTime{2026, 11, 23}), 1);
    EXPECT_EQ(ShortDayName(DateTime{2026, 11, 22}), "dim.");
    EXPECT_EQ(AddDays(DateTime{2024, 2, 28, 7}, 1), (DateTime{2024, 2, 29, 7}));
    EXPECT_EQ(AddDays(DateTime{2025, 12, 31}, 1), (DateTime{2026, 1, 1}));
    EXPECT_EQ(DayDiff(DateTime{2026, 1, 1}, DateTime{2026, 12, 31}), 364);
    EXPECT_EQ(FormatYYYYMMDD(DateTime{2026, 3, 7}), "20260307");
    EXPECT_EQ(FormatDDMMYYYY(DateTime{2026, 3, 7}, '-'), "07-03-2026");
    EXPECT_EQ(FormatHHMMSS(DateTime{2026, 3, 7, 6, 5, 4}), "06:05:04");
}

TEST(Calendrier, ParsingRefusesWhatIsNotADate) {
    EXPECT_TRUE(ParseIsoDate("2024-02-29"));
    EXPECT_FALSE(ParseIsoDate("2025-02-29"));
    EXPECT_FALSE(ParseIsoDate("2026-13-01"));
    EXPECT_FALSE(ParseIsoDate("2026-1-01"));
    EXPECT_FALSE(ParseIsoDate("20260101"));
    EXPECT_FALSE(ParseYYYYMMDD("2026010a"));
    EXPECT_EQ(*ParseYYYYMMDD("21000228"), (DateTime{2100, 2, 28}));
    EXPECT_FALSE(ParseYYYYMMDD("21000229"));
}

}  // namespace
}  // namespace zl3
