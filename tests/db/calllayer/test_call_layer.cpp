// The call layer over a scripted Btrieve entry point: retries, statuses, reports, history, key
// handling, legacy normalisation, opening and closing files.
#include <cstring>
#include <deque>

#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "TestSite.h"

namespace zl3 {
namespace {

// A Btrieve entry point that records every call and answers from a script.
struct FakeBtrieve {
    struct Call {
        uint16_t op;
        std::string positionBlock;
        std::string key;  // first 255 bytes of the key buffer
        uint8_t keyLength;
        int8_t keyNumber;
        uint32_t dataLength;
    };
    std::vector<Call> calls;
    std::deque<int16_t> statuses;  // next statuses; 0 once empty
    // Bytes written to the data buffer on a successful read, and the key written back.
    std::string record;
    std::string foundKey;

    int16_t operator()(uint16_t op, void* pos, void* data, uint32_t* len, void* key, uint8_t kl,
                       int8_t kn) {
        calls.push_back({op, std::string(static_cast<char*>(pos), 128),
                         std::string(static_cast<char*>(key), kl), kl, kn, *len});
        if (op == 0) std::memcpy(pos, "OPENED-BLOCK-OF-STATION-", 24);
        if (op == 14) test::WriteFile(static_cast<char*>(key), "created");
        int16_t s = 0;
        if (!statuses.empty()) {
            s = statuses.front();
            statuses.pop_front();
        }
        if (s == 0 && op >= 5 && op <= 13) {
            if (!record.empty())
                std::memcpy(data, record.data(), std::min<size_t>(record.size(), *len));
            if (!foundKey.empty()) std::memcpy(key, foundKey.data(), foundKey.size());
        }
        return s;
    }
};

class CallLayerTest : public test::SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        ResetLibDataPervasive();
        DefinirBtrcall([this](uint16_t op, void* pos, void* data, uint32_t* len, void* key,
                              uint8_t kl,
                              int8_t kn) { return fake(op, pos, data, len, key, kl, kn); });
    }
    void TearDown() override {
        ResetLibDataPervasive();
        SiteTest::TearDown();
    }
    int16_t Call(int16_t op, std::string key, int file = 22, int station = 1, int16_t keyNo = 0,
                 const std::string& src = "Frm_Main:CommandLancer_Click") {
        lastKey = key;
        return BTRieve(0, op, lastKey, keyNo, file, station, src);
    }
    FakeBtrieve fake;
    std::string lastKey;
};

TEST_F(CallLayerTest, LockAndTransactionStatusesAreRetriedEverySecond) {
    fake.statuses = {84, 85, 81, 37, 0};
    EXPECT_EQ(Call(kBtrGetEqual, "00100001"), 0);
    EXPECT_EQ(fake.calls.size(), 5u);
    EXPECT_EQ(clock.TotalSlept(), 4000);
    EXPECT_TRUE(box.shown.empty());
}

TEST_F(CallLayerTest, LockPastTenRetriesIsReportedOnce) {
    fake.statuses = std::deque<int16_t>(11, 85);
    EXPECT_EQ(Call(kBtrGetNext, "x"), 85);
    EXPECT_EQ(fake.calls.size(), 11u);
    EXPECT_EQ(clock.TotalSlept(), 10000);
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_NE(box.shown[0].request.text.find("Err: 85\n"), std::string::npos);
    // The caller's own report of the same status is not shown a second time.
    ErreurBTrieve(0, 22, lastKey, "Frm_Main:CommandLancer_Click");
    EXPECT_EQ(box.shown.size(), 1u);
}

TEST_F(CallLayerTest, RecordConflictsAreAbandonedSilentlyAfterTenRetries) {
    fake.statuses = std::deque<int16_t>(40, 80);
    EXPECT_EQ(Call(kBtrUpdate, "00100001"), 80);
    EXPECT_TRUE(AbandonConflit);
    EXPECT_TRUE(box.shown.empty());
    EXPECT_EQ(clock.TotalSlept(), 5000);
    // Each new attempt of the update re-reads the record first.
    std::vector<uint16_t> ops;
    for (const auto& c : fake.calls)
        ops.push_back(c.op);
    std::vector<uint16_t> expected{3};
    for (int i = 0; i < 10; ++i) {
        expected.push_back(5);
        expected.push_back(3);
    }
    EXPECT_EQ(ops, expected);

    // A conflict resolved on the second try clears nothing wrongly.
    fake.calls.clear();
    fake.statuses = {80, 0};
    EXPECT_EQ(Call(kBtrGetEqual, "k"), 0);
    EXPECT_FALSE(AbandonConflit);
    EXPECT_EQ(fake.calls.size(), 2u);
}

TEST_F(CallLayerTest, ExpectedStatusesAreReturnedWithoutReport) {
    fake.statuses = {9, 4, 5, 5, 9};
    EXPECT_EQ(Call(kBtrGetNext, "k"), 9);
    EXPECT_EQ(Call(kBtrGetEqual, "k"), 4);
    EXPECT_EQ(Call(kBtrInsert, "k"), 5);
    EXPECT_EQ(Call(kBtrUpdate, "k"), 5);
    EXPECT_EQ(Call(kBtrGetGreaterOrEqual, "k"), 9);
    EXPECT_TRUE(box.shown.empty());
    // Not expected: 4 on Delete (with its explanation), 9 on Insert, 22 on a read.
    fake.statuses = {4, 9, 22};
    Call(kBtrDelete, "k");
    Call(kBtrInsert, "k");
    Call(kBtrGetEqual, "k");
    ASSERT_EQ(box.shown.size(), 3u);
    EXPECT_NE(box.shown[0].request.text.find("L'enregistrement à supprimer n'existe plus"),
              std::string::npos);
    // Silent errors: nothing shown.
    ErreursSilencieuses = true;
    fake.statuses = {22};
    Call(kBtrGetEqual, "k");
    EXPECT_EQ(box.shown.size(), 3u);
}

TEST_F(CallLayerTest, KeyNumberChangedRepositionsExceptWhereAccepted) {
    fake.statuses = {7, 0};
    EXPECT_EQ(Call(kBtrGetNext, "00100001", 22), 0);
    ASSERT_EQ(fake.calls.size(), 2u);
    EXPECT_EQ(fake.calls[1].op, kBtrGetEqual);
    EXPECT_TRUE(box.shown.empty());

    fake.calls.clear();
    fake.statuses = {7};
    EXPECT_EQ(Call(kBtrGetPrevious, "k", 34), 7);
    EXPECT_EQ(fake.calls.size(), 1u);
    fake.statuses = {7};
    EXPECT_EQ(Call(kBtrUpdate, "k", 35), 7);
    fake.statuses = {54};
    EXPECT_EQ(Call(kBtrUpdate, "k", 35), 54);
    EXPECT_TRUE(box.shown.empty());

    fake.statuses = {7, 4};  // re-positioning fails: reported
    Call(kBtrGetNext, "k", 22);
    fake.statuses = {7};  // another operation: reported
    Call(kBtrInsert, "k", 22);
    fake.statuses = {54};
    Call(kBtrUpdate, "k", 22);
    EXPECT_EQ(box.shown.size(), 3u);
}

TEST_F(CallLayerTest, StationRangeAndEndTransactionWithoutTransaction) {
    // Station 0 is station 1: the same position block is used.
    std::string path = Root() + "f.bt6";
    test::WriteFile(path, "x");
    ASSERT_TRUE(OuvertureFichierBTrieve(0, 22, path, 900, 1, -2));
    fake.calls.clear();
    Call(kBtrGetFirst, "", 22, 0);
    ASSERT_EQ(fake.calls.size(), 1u);
    EXPECT_EQ(fake.calls[0].positionBlock.substr(0, 24), "OPENED-BLOCK-OF-STATION-");
    EXPECT_EQ(fake.calls[0].key.substr(0, 100), std::string(100, ' '));  // empty key: 100 blanks

    // Station 11: no call, status 9 (4 for Get Equal) and the station error.
    fake.calls.clear();
    EXPECT_EQ(Call(kBtrGetNext, "k", 22, 11), 9);
    EXPECT_EQ(Call(kBtrGetEqual, "k", 22, 11), 4);
    EXPECT_TRUE(fake.calls.empty());
    ASSERT_EQ(box.shown.size(), 2u);
    EXPECT_EQ(box.shown[0].request.style, kMbCritical);
    EXPECT_EQ(box.shown[0].request.text.rfind("N° station hors limite:11\nBTrieve (Source:", 0),
              0u);

    // End / Abort Transaction without a transaction: no call, previous status kept.
    StatutBTrieve = 4;
    EXPECT_EQ(Call(kBtrEndTransaction, ""), 4);
    EXPECT_EQ(Call(kBtrAbortTransaction, ""), 4);
    EXPECT_TRUE(fake.calls.empty());
    fake.statuses = {0, 0};
    Call(kBtrBeginTransaction, "");
    EXPECT_TRUE(TransactionEnCours);
    Call(kBtrEndTransaction, "");
    EXPECT_FALSE(TransactionEnCours);
    EXPECT_EQ(fake.calls.size(), 2u);
}

TEST_F(CallLayerTest, BackwardSearchesTurnZIntoTheHighestCharacter) {
    Call(kBtrGetLessOrEqual, "001zzzz");
    Call(kBtrGetLess, "z");
    Call(kBtrGetGreaterOrEqual, "001zzzz");
    EXPECT_EQ(fake.calls[0].key.substr(0, 8), std::string("001\xFF\xFF\xFF\xFF "));
    EXPECT_EQ(fake.calls[1].key.substr(0, 1), "\xFF");
    EXPECT_EQ(fake.calls[2].key.substr(0, 7), "001zzzz");
    EXPECT_EQ(fake.calls[0].keyLength, 255);
}

TEST_F(CallLayerTest, ReadsReturnTheFoundKeyOfTheKeyLength) {
    fake.foundKey = "00100042";
    fake.statuses = {0};
    std::string key = "000";
    BTRieve(0, kBtrGetGreaterOrEqual, key, 0, 22, 1, "x");
    EXPECT_EQ(key, "00100042");  // key 0 of the track file: 8 characters
}

TEST_F(CallLayerTest, HistoryKeepsTheLastSixCallsWithTheirStatus) {
    fake.statuses = {9};
    Call(kBtrGetNext, std::string("AB\x01") + "C", 22, 1, 0, "Frm_Main:CommandLancer_Click");
    auto h = HistoriqueBTrieve(0);
    EXPECT_EQ(h[0].substr(0, 40), "S:00009 File:22 Station:1 OP:06 K:00 [AB");
    EXPECT_NE(h[0].find("[AB.C"), std::string::npos);
    EXPECT_NE(h[0].find("] [Frm_Main:CommandLancer_Click]"), std::string::npos);
    for (int i = 0; i < 7; ++i)
        Call(kBtrGetEqual, "k" + std::to_string(i), 20, 2, 1, "src");
    h = HistoriqueBTrieve(0);
    EXPECT_EQ(h[0].substr(0, 36), "S:00000 File:20 Station:2 OP:05 K:01");
    EXPECT_NE(h[0].find("[k6]"), std::string::npos);
    EXPECT_NE(h[5].find("[k1]"), std::string::npos);
    // Without a trace context the call is not kept.
    Call(kBtrGetEqual, "quiet", 20, 1, 0, " ");
    EXPECT_NE(HistoriqueBTrieve(0)[0].find("[k6]"), std::string::npos);
}

TEST_F(CallLayerTest, ReportShowsPathStatusTextHistoryAndExplanation) {
    fake.statuses = {30};
    Call(kBtrGetFirst, "k", 21, 1, 0, "Lib_Stats:LibCategorie");
    ASSERT_EQ(box.shown.size(), 1u);
    const std::string& t = box.shown[0].request.text;
    EXPECT_NE(t.find("Err: 30: The file specified is not a MicroKernel file\n"), std::string::npos);
    EXPECT_NE(t.find("0>S:00030 File:21 Station:1 OP:12"), std::string::npos);
    EXPECT_NE(t.find("n'est pas un fichier de la base de données"), std::string::npos);
    EXPECT_NE(t.find("Procédure: Lib_Stats:LibCategorie"), std::string::npos);
}

TEST_F(CallLayerTest, NetworkErrorsAreShownOncePerFiveMinutes) {
    fake.statuses = {3110, 3111};
    Call(kBtrGetEqual, "k");
    Call(kBtrGetEqual, "k");
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text.rfind("Err: Network Pervasive errors: ", 0), 0u);
    clock.Advance(300000);
    fake.statuses = {3000};
    Call(kBtrGetEqual, "k");
    EXPECT_EQ(box.shown.size(), 2u);
}

TEST(StatusTexts, TextsOfTheCallLayer) {
    EXPECT_EQ(ErreurBTrieveLibelle(12, "FRAD022.bt6"),
              "Err: 12: The MicroKernel cannot find the specified file (FRAD022.bt6)\n");
    EXPECT_EQ(ErreurBTrieveLibelle(11, "x"), "Err: 11: The specified filename is invalid (x)\n");
    EXPECT_EQ(ErreurBTrieveLibelle(46, ""),
              "Err: 46: Access to the requested file is denied (File locked ?)\n");
    EXPECT_EQ(ErreurBTrieveLibelle(3103, ""), "Err: 3103: Network error\n");
    EXPECT_EQ(ErreurBTrieveLibelle(3132, ""), "Err: 3132: Network error\n");
    EXPECT_EQ(ErreurBTrieveLibelle(3133, ""), "Err: 3133\n");
    EXPECT_EQ(ErreurBTrieveLibelle(2007, ""), "Err: 2007: A pointer parameter is invalid\n");
}

TEST_F(CallLayerTest, LegacyValuesAreNormalisedAfterReads) {
    auto artist = TamponEnreg(20);
    artist[145] = '2';
    artist[264] = ' ';
    fake.statuses = {0};
    Call(kBtrGetEqual, "A0001", 20);
    EXPECT_EQ(artist[264], 'O');
    EXPECT_EQ(artist[145], ' ');
    artist[145] = '0';
    artist[264] = 'x';
    Call(kBtrGetNext, "A0001", 20);
    EXPECT_EQ(artist[145], '0');
    EXPECT_EQ(artist[264], 'x');

    auto track = TamponEnreg(22);
    ASSERT_GE(track.size(), 900u);
    track[465] = ' ';
    track[466] = '0';
    track[856] = 'O';
    track[107] = 'N';
    Call(kBtrGetNext, "k", 22);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(&track[465]), 2), "00");
    EXPECT_EQ(track[107], '1');
    EXPECT_EQ(track[856], ' ');
    // Also after a read that found nothing: what the buffer holds is normalised all the same.
    artist[145] = '1';
    fake.statuses = {9};
    Call(kBtrGetNext, "A0001", 20);
    EXPECT_EQ(artist[264], '1');
    EXPECT_EQ(artist[145], ' ');
    track[465] = '1';
    track[466] = '2';
    Call(kBtrInsert, "k", 22);  // writes are not normalised
    EXPECT_EQ(std::string(reinterpret_cast<char*>(&track[465]), 2), "12");
    // Buffers hold both the layout and the catalogue record.
    EXPECT_GE(TamponEnreg(47).size(), 4085u);
    EXPECT_GE(TamponEnreg(18).size(), 250u);
}

TEST_F(CallLayerTest, ShortKeyIsShownWhenTheKeyTestIsOn) {
    TestCleActif = true;
    Call(kBtrGetEqual, "001", 22, 1, 0, "Frm_Main:Test");
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text,
              "Clé trop courte: Fichier: 22 NoCle: 0 Lng: 3 OP: 5\nKey:001\n Sub: Frm_Main:Test");
    Call(kBtrGetEqual, "00100001", 22);
    Call(kBtrBeginTransaction, "", 22);
    EXPECT_EQ(box.shown.size(), 1u);
}

TEST_F(CallLayerTest, OpeningClosingAndCreatingFiles) {
    const std::string data = P("C:\\BTRieve\\Data\\");
    sys::CheckRep(data);
    DefinirDossierData(data);
    test::WriteFile(data + "FRADA22.bt6", "x");
    test::WriteFile(data + "FRAD003.bt6", "x");
    FichierPervasiveOuvrir(3, 1, 2, 22, -2);
    EXPECT_TRUE(FichierOuvert(3, 1, 22));
    EXPECT_FALSE(FichierOuvert(3, 2, 22));
    EXPECT_EQ(CheminFichier(3, 2, 22), data + "FRADB22.bt6");
    ASSERT_EQ(box.shown.size(), 1u);  // station 2's file is missing
    EXPECT_EQ(box.shown[0].request.text,
              data + "FRADB22.bt6::Err: 12: The MicroKernel cannot find the specified file (" +
                  data + "FRADB22.bt6)\n");
    EXPECT_EQ(fake.calls.back().op, kBtrOpen);
    EXPECT_EQ(fake.calls.back().keyNumber, -2);
    EXPECT_EQ(fake.calls.back().key.substr(0, data.size() + 12), data + "FRADA22.bt6" + '\0');

    // A later file of the suite is created empty when missing.
    fake.calls.clear();
    FichierPervasiveOuvrir(3, 1, 1, 40, 0);
    ASSERT_EQ(box.shown.size(), 2u);
    EXPECT_EQ(box.shown[1].request.text,
              "File: " + data + "FRADA40.bt6 not found |Create empty structure");
    ASSERT_GE(fake.calls.size(), 1u);
    EXPECT_EQ(fake.calls[0].op, kBtrCreate);
    EXPECT_EQ(fake.calls[0].dataLength, 160u);

    // Closing uses operation 25; a failed close is shown and the file stays open.
    fake.calls.clear();
    fake.statuses = {3};
    FichierPervasiveFermer(3, 1, 2, 22);
    EXPECT_EQ(fake.calls.size(), 1u);
    EXPECT_EQ(fake.calls[0].op, kBtrRelease);
    EXPECT_TRUE(FichierOuvert(3, 1, 22));
    EXPECT_EQ(box.shown.back().request.text, "Unable to close: " + data + "FRADA22.bt6");
    FichierPervasiveFermer(3, 1, 2, 22);
    EXPECT_FALSE(FichierOuvert(3, 1, 22));
    // Another caller slot has its own state.
    EXPECT_FALSE(FichierOuvert(4, 1, 22));
}

TEST_F(CallLayerTest, OpenWaitsForALockedFileThenReportsIt) {
    const std::string data = P("C:\\BTRieve\\Data\\");
    sys::CheckRep(data);
    DefinirDossierData(data);
    test::WriteFile(data + "FRADA22.bt6", "x");
    // Another program's transaction or exclusive open: waited for, one second per try.
    fake.statuses = {85, 84, 81, 0};
    FichierPervasiveOuvrir(3, 1, 1, 22, -2);
    EXPECT_TRUE(FichierOuvert(3, 1, 22));
    EXPECT_EQ(fake.calls.size(), 4u);
    EXPECT_EQ(clock.TotalSlept(), 3000);
    EXPECT_TRUE(box.shown.empty());
    // Held past ten retries: reported with the path and the status text, the file stays closed.
    FichierPervasiveFermer(3, 1, 1, 22);
    fake.calls.clear();
    fake.statuses = std::deque<int16_t>(11, 85);
    FichierPervasiveOuvrir(3, 1, 1, 22, -2);
    EXPECT_FALSE(FichierOuvert(3, 1, 22));
    EXPECT_EQ(fake.calls.size(), 11u);
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text, data + "FRADA22.bt6::Err: 85\n");
}

TEST_F(CallLayerTest, PathLongerThanTheKeyBufferIsAnInvalidName) {
    const std::string data = Root() + "/" + std::string(250, 'd') + "/";
    DefinirDossierData(data);
    FichierPervasiveOuvrir(3, 1, 1, 22, -2);
    EXPECT_FALSE(FichierOuvert(3, 1, 22));
    EXPECT_EQ(StatutBTrieve, 11);
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_NE(box.shown[0].request.text.find("Err: 11: The specified filename is invalid ("),
              std::string::npos);
    EXPECT_TRUE(fake.calls.empty());
}

}  // namespace
}  // namespace zl3
