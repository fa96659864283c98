// The trace log: line format, elapsed column, daily file, header block, purge, reboot advice.
#include <filesystem>

#include "Lib_Public.h"
#include "TestSite.h"

namespace fs = std::filesystem;

namespace zl3 {
namespace {

class TraceTest : public test::SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        logDir_ = P("C:\\AudioLog\\");
        SetDossierLog(0, logDir_);
    }
    const std::vector<std::string>& Lines() { return Trace().lines; }
    std::string logDir_;
};

TEST_F(TraceTest, UsualLineHasBlankColumnsAndDayMonthPrefix) {
    TraceLog("Bonjour");
    ASSERT_EQ(Lines().size(), 1u);
    EXPECT_EQ(Lines()[0], "03/11 10:15:00 : : : :    :Bonjour");
}

TEST_F(TraceTest, SiteBaseStationColumnsAndStationLetters) {
    TraceLog(1, 2, 3, "a");
    TraceLog(0, 1, 12, "b");
    TraceLog(-2, -2, 5, "c");
    TraceLog(4, -1, 10, "d");
    EXPECT_EQ(Lines()[0], "03/11 10:15:00 :1:2:3:    :a");
    EXPECT_EQ(Lines()[1], "03/11 10:15:00 :0:1:C:    :b");
    EXPECT_EQ(Lines()[2], "03/11 10:15:00 :Debug:    :c");
    EXPECT_EQ(Lines()[3], "03/11 10:15:00 :4: :A:    :d");
}

TEST_F(TraceTest, BlankTextWritesNothing) {
    TraceLog("   ");
    TraceLog("");
    EXPECT_TRUE(Lines().empty());
}

TEST_F(TraceTest, ElapsedColumnStampsOnlyStepsThatCostTime) {
    TraceLog("first");
    clock.Advance(5);
    TraceLog("second");
    clock.Advance(25);  // 30 ms after the first line
    TraceLog("third");
    clock.Advance(12000);
    TraceLog("fourth");
    clock.Advance(20);
    TraceLog("fifth");
    clock.Advance(1);
    TraceLog("sixth");  // 21 ms after the stamped "fourth"
    ASSERT_EQ(Lines().size(), 6u);
    EXPECT_NE(Lines()[0].find(":    :first"), std::string::npos);
    EXPECT_NE(Lines()[1].find(":    :second"), std::string::npos);
    EXPECT_NE(Lines()[2].find(":  30:third"), std::string::npos) << Lines()[2];
    EXPECT_NE(Lines()[3].find(":xxxx:fourth"), std::string::npos) << Lines()[3];
    EXPECT_NE(Lines()[4].find(":    :fifth"), std::string::npos) << Lines()[4];
    EXPECT_NE(Lines()[5].find(":  21:sixth"), std::string::npos) << Lines()[5];
}

TEST_F(TraceTest, FramedLineAndErrorExit) {
    TraceLogEncadre("Init: Duration: 12 ms");
    TraceErreur("Cls_WMATag:ReadWMATags", 62, "Input past end\r\nof file");
    EXPECT_NE(Lines()[0].find(":----- Init: Duration: 12 ms -----"), std::string::npos);
    EXPECT_NE(Lines()[1].find(":Err: 62 Input past end of file |Cls_WMATag:ReadWMATags"),
              std::string::npos)
        << Lines()[1];
}

TEST_F(TraceTest, ForcedLineIsFlushedOnlyWhenWriteToFileIsOn) {
    Trace().writeToFile = false;
    TraceLog("kept in memory", true);
    EXPECT_FALSE(fs::exists(logDir_ + "20261103.Log"));
    Trace().writeToFile = true;
    TraceLog("flushed", true);
    const std::string log = test::ReadFile(logDir_ + "20261103.Log");
    EXPECT_NE(log.find("kept in memory\r\n"), std::string::npos);
    EXPECT_NE(log.find("flushed\r\n"), std::string::npos);
    EXPECT_TRUE(Lines().empty());
}

TEST_F(TraceTest, HeaderBlockOncePerDayAndYesterdayFile) {
    clock.SetTickCount((2LL * 86400 + 3 * 3600 + 4 * 60 + 5) * 1000);
    TraceLog("one");
    TraceLogForce();
    TraceLog("two");
    TraceLogForce();
    std::string log = test::ReadFile(logDir_ + "20261103.Log");
    size_t count = 0;
    for (size_t p = log.find("App.Version: "); p != std::string::npos;
         p = log.find("App.Version: ", p + 1))
        ++count;
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(log.rfind("==:==:==:====:=:=:=:===========================================\r\n", 0),
              0u);
    EXPECT_NE(log.find("==:==:==:====:=:=:=:System started since 2 D 3 H 4 Min 5 Sec\r\n"),
              std::string::npos);
    EXPECT_NE(log.find("==:==:==:====:=:=:=:App.ExeName: ZL3_Tools_Stats.exe"), std::string::npos);
    EXPECT_NE(log.find("==:==:==:====:=:=:=:ActiveTheme: WinXP"), std::string::npos);
    EXPECT_LT(log.find("one"), log.find("two"));

    // A header asked for explicitly is written again; the next day starts its own file.
    TraceLog("three");
    TraceLogForce("", false, true);
    log = test::ReadFile(logDir_ + "20261103.Log");
    EXPECT_NE(log.find("App.Version: ", log.find("two")), std::string::npos);

    clock.Advance(86400000);
    TraceLog("after midnight, for yesterday");
    TraceLogForce("", true);
    EXPECT_NE(test::ReadFile(logDir_ + "20261103.Log").find("for yesterday"), std::string::npos);
    TraceLog("new day");
    TraceLogForce();
    EXPECT_NE(test::ReadFile(logDir_ + "20261104.Log").find("App.Version: "), std::string::npos);
}

TEST_F(TraceTest, ClassicThemeIsReported) {
    test::WriteFile(sys::FichierTheme(), "[ThemeManager]\r\nThemeActive=0\r\n");
    TraceLog("x");
    TraceLogForce();
    EXPECT_NE(test::ReadFile(logDir_ + "20261103.Log").find("ActiveTheme: WinClassic"),
              std::string::npos);
}

TEST_F(TraceTest, UptimeText) {
    EXPECT_EQ(TexteDureeDepuisDemarrage(59000), "0 Min 59 Sec");
    EXPECT_EQ(TexteDureeDepuisDemarrage(3600000), "1 H 0 Min 0 Sec");
    EXPECT_EQ(TexteDureeDepuisDemarrage(86400000LL + 61000), "1 D 0 H 1 Min 1 Sec");
}

TEST_F(TraceTest, PurgeRemovesLogsOlderThan45DaysOnceADay) {
    // Today is 2026-11-03: 45 days ago is 2026-09-19.
    for (const char* name : {"20260918.Log", "20260919.Log", "20260920.Log", "ExportExcel.Log",
                             "20260101.txt", ".20260101.Log", "20250101.LOG"})
        test::WriteFile(logDir_ + name, "x");
    TraceLog("flush");
    TraceLogForce();
    EXPECT_FALSE(fs::exists(logDir_ + "20260918.Log"));  // 46 days
    EXPECT_TRUE(fs::exists(logDir_ + "20260919.Log"));   // 45 days: not before the cut-off
    EXPECT_TRUE(fs::exists(logDir_ + "20260920.Log"));   // 44 days
    EXPECT_TRUE(fs::exists(logDir_ + "ExportExcel.Log"));
    EXPECT_TRUE(fs::exists(logDir_ + "20260101.txt"));
    EXPECT_FALSE(fs::exists(logDir_ + ".20260101.Log"));  // hidden files are purged too
    EXPECT_FALSE(fs::exists(logDir_ + "20250101.LOG"));
    bool reported = false;
    for (const auto& l : Lines())
        if (l.find("Lib_Public:TraceLogForce: Delete: 20260918.Log") != std::string::npos)
            reported = true;
    EXPECT_TRUE(reported);

    // Same day: no second purge.
    test::WriteFile(logDir_ + "20260901.Log", "x");
    TraceLogForce();
    EXPECT_TRUE(fs::exists(logDir_ + "20260901.Log"));
    clock.Advance(86400000);
    TraceLogForce();
    EXPECT_FALSE(fs::exists(logDir_ + "20260901.Log"));
}

TEST_F(TraceTest, RebootAdviceLatchesWithTheirThresholds) {
    const int64_t day = 86400000LL;
    clock.SetTickCount(45 * day);  // not more than 45 days
    TraceLog("a");
    TraceLogForce();
    clock.SetTickCount(45 * day + 1000);
    TraceLogForce();
    TraceLogForce();
    clock.SetTickCount(49 * day - 1000);
    TraceLogForce();
    clock.SetTickCount(49 * day);
    TraceLogForce();
    TraceLogForce();
    const std::string log = test::ReadFile(logDir_ + "20261103.Log");
    auto count = [&](const std::string& s) {
        size_t n = 0;
        for (size_t p = log.find(s); p != std::string::npos; p = log.find(s, p + 1))
            ++n;
        return n;
    };
    EXPECT_EQ(count("Reboot needed because computer started since more 45 days"), 1u);
    EXPECT_EQ(count("Reboot needed because computer started since more 48 days"), 1u);
    EXPECT_LT(log.find("more 45 days"), log.find("more 48 days"));
}

TEST_F(TraceTest, UnwritableLogFolderLosesLinesWithoutStopping) {
    test::WriteFile(Root() + "plainfile", "x");
    SetDossierLog(0, Root() + "plainfile/sub");
    TraceLog("lost");
    EXPECT_NO_THROW(TraceLogForce());
    EXPECT_TRUE(Lines().empty() || Lines().back().find("lost") == std::string::npos);
    EXPECT_THROW(DossierLog(20), std::out_of_range);
    EXPECT_THROW(TraceLogForce("", false, false, 20), std::out_of_range);
}

TEST_F(TraceTest, ProcedureEntryTracingFollowsItsSwitch) {
    TraceProc("Lib_Public:DetermineDossierConfig");
    EXPECT_TRUE(Lines().empty());
    Trace().procEntryTracing = true;
    TraceProc("Lib_Public:DetermineDossierConfig");
    ASSERT_EQ(Lines().size(), 1u);
    EXPECT_NE(Lines()[0].find(":Lib_Public:DetermineDossierConfig"), std::string::npos);
}

TEST(TextHelpers, CalibrePadsAndCuts) {
    EXPECT_EQ(Calibre("AB", 5, ""), "AB   ");
    EXPECT_EQ(Calibre("ABCDEFG", 3, "*"), "ABC");
    EXPECT_EQ(Calibre("7", 3, "0"), "700");
    EXPECT_EQ(Calibre("", 2, "xy"), "xx");
    EXPECT_EQ(CalibreTexte("Éte", 5, "."), "Éte..");
    EXPECT_EQ(CalibreTexte("Créé là", 4, ""), "Créé");
}

TEST(TextHelpers, NettoieLibErrAndDurations) {
    EXPECT_EQ(NettoieLibErr("  Err:\r\n  12003\tMessage: \x01 x  "), "Err: 12003 Message: x");
    EXPECT_EQ(Tps2MinSec(0), "0:00");
    EXPECT_EQ(Tps2MinSec(187), "3:07");
    EXPECT_EQ(Tps2MinSec(765), "12:45");
    EXPECT_EQ(Tps2MinSec(-5), "0:00");
}

}  // namespace
}  // namespace zl3
