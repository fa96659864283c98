// Broadcast-time entries of the history record, the capped entry count and the history key.
#include <gtest/gtest.h>

#include <string>

#include "records/Layouts.h"
#include "records/Passages.h"

namespace zl3::rec {
namespace {

DateTime At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    DateTime t;
    t.year = y;
    t.month = mo;
    t.day = d;
    t.hour = h;
    t.minute = mi;
    t.second = s;
    return t;
}

// Entry built character by character: code − 32 of each is the value.
std::string Entry(int yearsFrom2000, int mo, int d, int h, int mi, int s) {
    std::string e;
    for (const int v : {yearsFrom2000, mo, d, h, mi, s})
        e += static_cast<char>(v + 32);
    return e;
}

TEST(RecordPassages, EncodesEachValueAsCharacterCodeMinus32) {
    EXPECT_EQ(EncodePassage(At(2025, 3, 7, 14, 5, 9)), std::optional<std::string>("9#'.%)"));
    EXPECT_EQ(DecodePassage("9#'.%)"), At(2025, 3, 7, 14, 5, 9));
    EXPECT_EQ(EncodePassage(At(2000, 1, 1)), std::optional<std::string>(" !!   "));
    EXPECT_EQ(EncodePassage(At(2223, 12, 31, 23, 59, 59))->front(), '\xFF');
}

TEST(RecordPassages, ValidTimesAtTheLimitsSurviveTheRoundTrip) {
    const DateTime limits[] = {
        At(2000, 1, 1, 0, 0, 0),      At(2000, 2, 29, 12, 0, 0),  At(2024, 2, 29, 6, 30, 0),
        At(2024, 12, 31, 23, 59, 59), At(2095, 7, 14, 22, 30, 0), At(2096, 1, 1, 0, 0, 1),
        At(2223, 12, 31, 23, 59, 59),
    };
    for (const DateTime& t : limits) {
        SCOPED_TRACE(FormatYYYYMMDD(t) + " " + FormatHHMMSS(t));
        const auto entry = EncodePassage(t);
        ASSERT_TRUE(entry.has_value());
        ASSERT_EQ(entry->size(), 6u);
        EXPECT_EQ(DecodePassage(*entry), t);
    }
    DateTime withMs = At(2024, 5, 1, 8, 0, 0);
    withMs.millisecond = 999;
    EXPECT_EQ(DecodePassage(*EncodePassage(withMs)), At(2024, 5, 1, 8, 0, 0));
}

TEST(RecordPassages, EntriesThatAreNotARealTimeAreInvalid) {
    const std::string good = Entry(24, 6, 15, 10, 20, 30);
    ASSERT_TRUE(DecodePassage(good).has_value());
    EXPECT_FALSE(DecodePassage(good.substr(0, 5)).has_value());
    EXPECT_FALSE(DecodePassage(good + " ").has_value());
    EXPECT_FALSE(DecodePassage("").has_value());
    EXPECT_FALSE(DecodePassage("      ").has_value());  // blank entry: month 0, day 0

    const std::string invalid[] = {
        Entry(24, 0, 15, 10, 20, 30),   // month 0
        Entry(24, 13, 15, 10, 20, 30),  // month 13
        Entry(24, 4, 31, 10, 20, 30),   // 31 April
        Entry(24, 6, 0, 10, 20, 30),    // day 0
        Entry(23, 2, 29, 10, 20, 30),   // 29 February of a common year
        Entry(100, 2, 29, 10, 20, 30),  // 2100 is not a leap year
        Entry(24, 6, 15, 24, 0, 0),     // hour 24
        Entry(24, 6, 15, 10, 60, 0),    // minute 60
        Entry(24, 6, 15, 10, 20, 60),   // second 60
        Entry(24, 6, 15, -1, 20, 30),   // a character below the blank
    };
    for (const std::string& e : invalid)
        EXPECT_FALSE(DecodePassage(e).has_value()) << e;
}

TEST(RecordPassages, TimesThatCannotBeWrittenAreRefused) {
    EXPECT_FALSE(EncodePassage(At(1999, 12, 31, 23, 59, 59)).has_value());
    EXPECT_FALSE(EncodePassage(At(2224, 1, 1)).has_value());
    EXPECT_FALSE(EncodePassage(At(2100, 2, 29)).has_value());
    EXPECT_FALSE(EncodePassage(At(2024, 13, 1)).has_value());
    EXPECT_FALSE(EncodePassage(At(2024, 1, 1, 24, 0, 0)).has_value());
    EXPECT_FALSE(EncodePassage(At(2024, 1, 1, 0, -1, 0)).has_value());
    EXPECT_FALSE(EncodePassage(At(2024, 1, 1, 0, 0, 60)).has_value());
}

TEST(RecordPassages, CountIsCappedByCategory) {
    EXPECT_EQ(CapPassages("000", 900), 672);
    EXPECT_EQ(CapPassages("999", 672), 672);
    EXPECT_EQ(CapPassages("123", 5), 5);
    EXPECT_EQ(CapPassages("JIN", 300), 200);
    EXPECT_EQ(CapPassages("LIN", 300), 200);
    EXPECT_EQ(CapPassages("JIN", 150), 150);
    EXPECT_EQ(CapPassages("JIN00042", 201), 200);  // a whole track key
    EXPECT_EQ(CapPassages("jin", 300), 300);       // codes compare byte by byte
    EXPECT_EQ(CapPassages("PUB", 700), 672);
    EXPECT_EQ(CapPassages("", 700), 672);
    EXPECT_EQ(CapPassages("000", 0), 0);
    EXPECT_EQ(CapPassages("000", -3), 0);
}

TEST(RecordPassages, EntriesOfAHistoryRecord) {
    auto history = NewRecord(HistoriqueDiffusion::kLayout);
    const Field tail = *FindField(HistoriqueDiffusion::kLayout, "Champ4048");
    SetBytes(history, tail, "TAIL");

    ASSERT_TRUE(SetPassageAt(history, 0, At(2024, 2, 29, 6, 30, 0)));
    ASSERT_TRUE(SetPassageAt(history, 671, At(2025, 12, 31, 23, 59, 59)));
    EXPECT_FALSE(SetPassageAt(history, 1, At(1999, 1, 1)));
    EXPECT_EQ(GetBytes(history, HistoriqueDiffusion::Passage(1)), "      ");

    EXPECT_EQ(std::string(history.begin() + 16, history.begin() + 22), Entry(24, 2, 29, 6, 30, 0));
    EXPECT_EQ(std::string(history.begin() + 4042, history.begin() + 4048),
              Entry(25, 12, 31, 23, 59, 59));
    EXPECT_EQ(GetBytes(history, tail).substr(0, 4), "TAIL");

    EXPECT_EQ(PassageAt(history, 0), At(2024, 2, 29, 6, 30, 0));
    EXPECT_EQ(PassageAt(history, 671), At(2025, 12, 31, 23, 59, 59));
    EXPECT_FALSE(PassageAt(history, 1).has_value());
    EXPECT_THROW(PassageAt(history, 672), std::out_of_range);
    EXPECT_THROW(PassageAt(history, -1), std::out_of_range);

    SetInt16(history, HistoriqueDiffusion::NbPassages, 900);
    EXPECT_EQ(CappedPassageCount(history, "001"), 672);
    EXPECT_EQ(CappedPassageCount(history, "LIN"), 200);
    SetInt16(history, HistoriqueDiffusion::NbPassages, -5);
    EXPECT_EQ(CappedPassageCount(history, "001"), 0);
}

TEST(RecordPassages, HistoryKeyIsTheTrackKeyPaddedThenM) {
    EXPECT_EQ(HistoryKey("00112345"), "00112345M  ");
    EXPECT_EQ(HistoryKey("JIN1"), "JIN1    M  ");
    EXPECT_EQ(HistoryKey("0011234567"), "00112345M  ");
}

}  // namespace
}  // namespace zl3::rec
