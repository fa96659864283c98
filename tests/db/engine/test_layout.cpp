// Creation layouts and key values: every file of the suite's catalogue can be created and gives
// its layout back through Stat; keys are built from their segments as the layout says.
#include <gtest/gtest.h>

#include "BtrTestUtil.h"
#include "Btrieve.h"
#include "KeyLayout.h"
#include "Lib_Data_Pervasive_2_Catalogue.h"

namespace zl3::btr::test {
namespace {

TEST(BtrLayout, EveryCatalogueFileIsCreatedAndStatGivesItsLayoutBack) {
    InitCatalogueFichiers();
    TempDir dir;
    int created = 0;
    for (int index = 0; index < kNbFichiersCatalogue; ++index) {
        const FichierCatalogue& entry = CatalogueFichier(index);
        if (entry.Vide()) continue;
        const std::vector<uint8_t> layout = StructureCreation(entry);
        // The catalogue's Create passes a 160-byte buffer whatever the number of segments.
        std::vector<uint8_t> buffer(160, 0);
        std::copy(layout.begin(), layout.end(), buffer.begin());
        const std::string path = dir.File(NomFichierBTrieve(index, 0));
        std::string block(kPositionBlockSize, ' ');
        std::string key = path;
        uint32_t length = 160;
        ASSERT_EQ(BtrCall(kCreate, block.data(), buffer.data(), &length, key.data(),
                          static_cast<uint8_t>(key.size()), 0),
                  kOk)
            << index;
        Handle h;
        ASSERT_EQ(h.Open(path), kOk) << index;
        std::vector<uint8_t> stat;
        ASSERT_EQ(h.Stat(stat), kOk) << index;
        ASSERT_EQ(stat.size(), layout.size()) << index;
        EXPECT_EQ(stat[4], entry.NbCles) << index;
        for (size_t i = 0; i < layout.size(); ++i) {
            const bool statField = i == 5 || (i >= 6 && i < 10) ||
                                   (i >= 16 && (i - 16) % 16 >= 6 && (i - 16) % 16 < 10);
            if (!statField) {
                EXPECT_EQ(stat[i], layout[i]) << "index " << index << " byte " << i;
            }
        }
        // A record of the file's length goes in and comes back by key 0.
        std::string rec(static_cast<size_t>(entry.LongueurEnreg), 'r');
        ASSERT_EQ(h.Insert(rec), kOk) << index;
        ASSERT_EQ(h.Get(kGetFirst, 0), kOk) << index;
        EXPECT_EQ(h.record, rec);
        ASSERT_EQ(h.Close(), kOk);
        ++created;
    }
    EXPECT_EQ(created, 46);
}

TEST(BtrLayout, SegmentedKeysFollowTheSegmentedFlag) {
    InitCatalogueFichiers();
    const std::vector<uint8_t> layout = StructureCreation(CatalogueFichier(20));
    FileDef def;
    ASSERT_EQ(ParseLayout(layout.data(), layout.size(), def), kOk);
    EXPECT_EQ(def.recordLength, 300);
    EXPECT_EQ(def.segmentCount, 5);
    ASSERT_EQ(def.keys.size(), 4u);
    const KeyDef& k3 = def.keys[3];
    ASSERT_EQ(k3.segments.size(), 2u);
    EXPECT_EQ(k3.segments[0].offset, 45);
    EXPECT_EQ(k3.segments[0].length, 1);
    EXPECT_EQ(k3.segments[1].offset, 15);
    EXPECT_EQ(k3.segments[1].length, 20);
    EXPECT_EQ(k3.segments[1].keyOffset, 1);
    EXPECT_EQ(k3.length, 21);
    EXPECT_TRUE(k3.duplicates);
    EXPECT_TRUE(k3.modifiable);
    EXPECT_FALSE(k3.segments[1].fold);
    EXPECT_TRUE(def.keys[2].segments[0].fold);
    EXPECT_FALSE(def.keys[0].duplicates);
}

TEST(BtrLayout, IndexFormFoldsComplementsAndLeavesNullKeysOut) {
    KeyDef key;
    key.segments = {{0, 3, 0, 0, ' ', true, false}, {5, 2, 0, 3, ' ', false, true}};
    key.length = 5;
    const std::string rec = "abZ..\x01\xF0";
    uint8_t raw[5], index[5];
    RawKey(key, reinterpret_cast<const uint8_t*>(rec.data()), raw);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(raw), 5), "abZ\x01\xF0");
    ASSERT_TRUE(IndexKey(key, reinterpret_cast<const uint8_t*>(rec.data()), index));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(index), 5), "ABZ\xFE\x0F");
    uint8_t fromValue[5];
    IndexKeyFromValue(key, raw, fromValue);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(fromValue), 5), "ABZ\xFE\x0F");

    const std::string oneNull = "   ..\x01\xF0";
    const std::string allNull = "   ..  ";
    key.nulls = NullRule::kAllSegments;
    EXPECT_TRUE(IndexKey(key, reinterpret_cast<const uint8_t*>(oneNull.data()), index));
    EXPECT_FALSE(IndexKey(key, reinterpret_cast<const uint8_t*>(allNull.data()), index));
    key.nulls = NullRule::kAnySegment;
    EXPECT_FALSE(IndexKey(key, reinterpret_cast<const uint8_t*>(oneNull.data()), index));
    EXPECT_TRUE(IndexKey(key, reinterpret_cast<const uint8_t*>(rec.data()), index));
}

}  // namespace
}  // namespace zl3::btr::test
