// Record layouts against the byte layouts of the suite's files: every field's offset, length and
// kind, the structure and record lengths, the catalogue keys, and the names other code relies on.
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3::rec {
namespace {

constexpr FieldType T = FieldType::Text;
constexpr FieldType I = FieldType::Int16;
constexpr FieldType B = FieldType::Block;

struct ExpectedField {
    std::size_t offset;
    std::size_t length;
    FieldType type;
};

struct ExpectedLayout {
    std::string name;
    int catalogueIndex;
    std::size_t length;
    std::size_t recordLength;
    std::vector<ExpectedField> fields;
};

// The suite's record layouts written out by hand, field by field. Where a layout is known only by
// its widths, the offsets are summed by hand, an int16 moving to the next even offset.
// clang-format off
const std::vector<ExpectedLayout> kExpected = {
    {"Morceau", 22, 900, 900,
     {
        {0, 8, T}, {8, 10, B}, {18, 5, T}, {23, 40, T}, {63, 5, T}, {68, 5, T}, {73, 5, T},
        {78, 5, T}, {83, 5, T}, {88, 3, T}, {91, 1, T}, {92, 3, B}, {95, 1, T}, {96, 1, T},
        {97, 3, B}, {100, 3, T}, {103, 4, T}, {107, 1, T}, {108, 5, T}, {113, 75, B}, {188, 4, T},
        {192, 3, T}, {195, 5, T}, {200, 5, T}, {205, 1, T}, {206, 1, T}, {207, 1, T}, {208, 10, T},
        {218, 5, T}, {223, 5, T}, {228, 1, T}, {229, 1, T}, {230, 2, T}, {232, 2, T}, {234, 2, T},
        {236, 1, T}, {237, 4, T}, {241, 1, T}, {242, 1, T}, {243, 10, T}, {253, 36, T},
        {289, 69, T}, {358, 53, B}, {411, 1, T}, {412, 4, T}, {416, 16, B}, {432, 1, T},
        {433, 1, T}, {434, 1, T}, {435, 1, T}, {436, 1, T}, {437, 8, T}, {445, 8, T}, {453, 5, T},
        {458, 1, T}, {459, 6, T}, {465, 2, T}, {467, 1, T}, {468, 1, T}, {469, 1, T}, {470, 8, T},
        {478, 50, B}, {528, 8, T}, {536, 1, T}, {537, 1, T}, {538, 1, T}, {539, 8, T}, {547, 1, T},
        {548, 8, T}, {556, 8, T}, {564, 8, T}, {572, 1, T}, {573, 17, T}, {590, 15, T},
        {605, 15, T}, {620, 15, T}, {635, 9, T}, {644, 1, T}, {645, 40, B}, {685, 1, T},
        {686, 2, T}, {688, 2, T}, {690, 2, T}, {692, 1, T}, {693, 50, B}, {743, 50, B},
        {793, 2, T}, {795, 10, T}, {805, 20, T}, {825, 1, T}, {826, 10, T}, {836, 10, T},
        {846, 8, T}, {854, 2, I}, {856, 1, T}, {857, 1, T}, {858, 3, T}, {861, 30, B}, {891, 8, T},
        {899, 1, T},
     }},
    {"HistoriqueDiffusion", 47, 4085, 4082,
     {
        {0, 1, T}, {1, 10, T}, {11, 1, T}, {12, 1, T}, {14, 2, I}, {16, 4032, T}, {4048, 37, T},
     }},
    {"EvenementMusical", 28, 150, 150,
     {
        {0, 8, T}, {8, 2, T}, {10, 2, T}, {12, 2, T}, {14, 2, T}, {16, 80, T}, {96, 8, T},
        {104, 1, T}, {105, 1, T}, {106, 2, T}, {108, 8, T}, {116, 2, T}, {118, 2, T}, {120, 2, T},
        {122, 4, T}, {126, 15, T}, {141, 9, T},
     }},
    {"Artiste", 20, 300, 300,
     {
        {0, 5, T}, {5, 10, T}, {15, 30, T}, {45, 1, T}, {46, 4, T}, {50, 8, T}, {58, 1, T},
        {59, 2, T}, {61, 2, T}, {63, 2, T}, {65, 80, T}, {145, 1, T}, {146, 30, T}, {176, 2, T},
        {178, 12, T}, {190, 1, T}, {192, 2, I}, {194, 32, T}, {226, 1, T}, {227, 5, T},
        {232, 1, T}, {233, 2, T}, {235, 2, T}, {237, 2, T}, {239, 25, B}, {264, 1, T},
        {265, 35, B},
     }},
    {"Categorie", 21, 980, 980,
     {
        {0, 5, T}, {5, 5, T}, {10, 30, T}, {40, 940, T},
     }},
    {"MorceauCles", 29, 100, 100,
     {
        {0, 5, T}, {5, 5, T}, {10, 8, T}, {18, 40, T}, {58, 42, T},
     }},
    {"Pointeurs", 31, 50, 50,
     {
        {0, 8, T}, {8, 1, T}, {9, 2, T}, {11, 10, T}, {21, 10, T}, {31, 2, T}, {33, 1, T},
        {34, 10, T}, {44, 6, T},
     }},
    {"MorceauInfos", 32, 250, 250,
     {
        {0, 8, T}, {8, 2, T}, {10, 240, T},
     }},
    {"ConducteurPub", 27, 50, 50,
     {
        {0, 8, T}, {8, 2, T}, {10, 2, T}, {12, 2, T}, {14, 8, T}, {22, 6, T}, {28, 4, T},
        {32, 1, T}, {33, 8, T}, {41, 1, T}, {42, 4, T}, {46, 4, T},
     }},
    {"LogPub", 18, 248, 250,
     {
        {0, 8, T}, {8, 2, T}, {10, 2, T}, {12, 2, T}, {14, 8, T}, {22, 8, T}, {30, 8, T},
        {38, 8, T}, {46, 40, T}, {86, 6, T}, {92, 3, T}, {96, 2, I}, {100, 2, I}, {104, 2, I},
        {108, 2, I}, {112, 2, I}, {116, 8, T}, {124, 2, T}, {126, 2, T}, {128, 119, T},
     }},
    {"MessagePub", 26, 150, 150,
     {
        {0, 8, T}, {8, 8, T}, {16, 6, T}, {22, 5, T}, {27, 8, T}, {35, 6, T}, {41, 39, T},
        {80, 4, T}, {84, 66, T},
     }},
    {"EnteteContrat", 5, 150, 150,
     {
        {0, 2, T}, {2, 8, T}, {10, 6, T}, {16, 8, T}, {24, 8, T}, {32, 7, T}, {39, 40, T},
        {79, 71, T},
     }},
    {"Commercial", 1, 300, 300,
     {
        {0, 8, T}, {8, 30, T}, {38, 30, T}, {68, 30, T}, {98, 5, T}, {103, 30, T}, {133, 50, T},
        {183, 30, B}, {213, 87, T},
     }},
    {"SecteurActivite", 2, 100, 100,
     {
        {0, 10, T}, {10, 30, T}, {40, 60, T},
     }},
    {"Client", 3, 904, 900,
     {
        {0, 8, T}, {8, 30, T}, {38, 30, T}, {68, 30, T}, {98, 5, T}, {103, 30, T}, {133, 30, T},
        {163, 30, T}, {193, 30, T}, {223, 30, T}, {253, 5, T}, {258, 30, T}, {288, 30, T},
        {318, 15, T}, {333, 15, T}, {348, 30, T}, {378, 30, T}, {408, 5, T}, {413, 5, T},
        {418, 11, T}, {429, 2, T}, {431, 10, T}, {441, 8, T}, {449, 6, T}, {455, 8, T},
        {463, 1, T}, {464, 2, T}, {466, 8, T}, {474, 50, T}, {524, 2, T}, {526, 150, B},
        {676, 60, B}, {736, 1, T}, {738, 2, I}, {740, 159, T},
     }},
    {"EnteteSpot", 6, 404, 400,
     {
        {0, 6, T}, {6, 2, T}, {8, 40, T}, {48, 10, T}, {58, 30, T}, {88, 2, I}, {90, 2, I},
        {92, 1, T}, {94, 2, I}, {96, 40, B}, {136, 40, B}, {176, 40, B}, {216, 40, B},
        {256, 40, B}, {296, 2, I}, {298, 10, B}, {308, 2, I}, {310, 2, I}, {312, 2, T},
        {314, 10, T}, {324, 2, I}, {326, 1, T}, {327, 1, T}, {328, 2, I}, {330, 1, T}, {332, 2, I},
        {334, 2, I}, {336, 20, T}, {356, 1, T}, {357, 2, T}, {359, 1, T}, {360, 2, I},
        {362, 32, T},
     }},
};
// clang-format on

TEST(RecordLayouts, EveryFieldSitsAtItsOffset) {
    ASSERT_EQ(AllLayouts().size(), kExpected.size());
    for (const ExpectedLayout& e : kExpected) {
        SCOPED_TRACE(e.name);
        const Layout* layout = FindLayout(e.catalogueIndex);
        ASSERT_NE(layout, nullptr);
        EXPECT_EQ(layout->name, e.name);
        EXPECT_EQ(layout->length, e.length);
        EXPECT_EQ(layout->recordLength, e.recordLength);
        ASSERT_EQ(layout->fields.size(), e.fields.size());
        for (std::size_t i = 0; i < e.fields.size(); ++i) {
            SCOPED_TRACE(std::string(layout->fields[i].name));
            EXPECT_EQ(layout->fields[i].offset, e.fields[i].offset);
            EXPECT_EQ(layout->fields[i].length, e.fields[i].length);
            EXPECT_EQ(layout->fields[i].type, e.fields[i].type);
        }
    }
}

TEST(RecordLayouts, NamedFieldsAreTheOnesTheCallersRead) {
    struct Named {
        Field field;
        std::size_t offset;
        std::size_t length;
    };
    const Named named[] = {
        {Morceau::CleMorceau, 0, 8},
        {Morceau::CodeCategorie, 0, 3},
        {Morceau::CodesArtistes, 8, 10},
        {Morceau::CodeArtiste1, 8, 5},
        {Morceau::CodeArtiste2, 13, 5},
        {Morceau::Titre, 23, 40},
        {Morceau::CodeLabel, 68, 5},
        {Morceau::Duree, 103, 4},
        {Morceau::QuotaFlag, 107, 1},
        {Morceau::CodeCategorieSecondaire, 218, 5},
        {Morceau::Clip, 432, 1},
        {Morceau::CodeNumerique, 465, 2},
        {Morceau::Migration, 856, 1},
        {HistoriqueDiffusion::Cle, 0, 11},
        {HistoriqueDiffusion::NbPassages, 14, 2},
        {HistoriqueDiffusion::Passages, 16, 4032},
        {HistoriqueDiffusion::Passage(0), 16, 6},
        {HistoriqueDiffusion::Passage(671), 4042, 6},
        {EvenementMusical::CleMorceau, 96, 8},
        {EvenementMusical::Date2, 108, 8},
        {Artiste::CodeArtiste, 0, 5},
        {Artiste::NomArtiste, 15, 30},
        {Artiste::Migration, 145, 1},
        {Artiste::FlagMigration, 264, 1},
        {Categorie::Cle, 0, 10},
        {Categorie::Libelle, 10, 30},
        {Categorie::Parametres, 40, 940},
        {MorceauCles::CleMorceau, 10, 8},
        {MorceauInfos::TypeInfo, 8, 2},
        {MorceauInfos::Version(0), 10, 8},
        {MorceauInfos::Version(8), 74, 8},
        {ConducteurPub::CleSpot, 14, 8},
        {ConducteurPub::CleMessage, 33, 8},
        {LogPub::Cle, 0, 14},
        {LogPub::CodeClient, 14, 8},
        {LogPub::CleSpot, 22, 8},
        {LogPub::CleMessage, 30, 8},
        {LogPub::Reference, 46, 40},
        {LogPub::NoContrat, 86, 6},
        {LogPub::Duree, 96, 2},
        {LogPub::NbSpotsEcran, 112, 2},
        {LogPub::DatePrevue, 116, 8},
        {MessagePub::NoSpot, 16, 6},
        {MessagePub::TexteMessage, 41, 39},
        {EnteteContrat::NoContrat, 10, 6},
        {EnteteContrat::CodeCommercial, 16, 8},
        {Commercial::NomCommercial, 8, 30},
        {Client::NomClient, 8, 30},
        {EnteteSpot::Cle, 0, 8},
    };
    for (const Named& n : named) {
        SCOPED_TRACE(std::string(n.field.name));
        EXPECT_EQ(n.field.offset, n.offset);
        EXPECT_EQ(n.field.length, n.length);
    }
    EXPECT_THROW(HistoriqueDiffusion::Passage(672), std::out_of_range);
    EXPECT_THROW(MorceauInfos::Version(9), std::out_of_range);
}

// A field called "Champ" and digits is named after its offset; a width summed wrongly upstream
// would show as a name that disagrees with the offset.
TEST(RecordLayouts, UnnamedFieldsCarryTheirOffsetInTheirName) {
    for (const Layout* layout : AllLayouts()) {
        for (const Field& f : layout->fields) {
            if (f.name.substr(0, 5) != "Champ") continue;
            const std::string digits(f.name.substr(5));
            ASSERT_FALSE(digits.empty());
            for (const char c : digits)
                ASSERT_TRUE(std::isdigit(static_cast<unsigned char>(c)));
            EXPECT_EQ(std::stoul(digits), f.offset) << layout->name << "." << f.name;
        }
    }
}

// Keys of the catalogue (1-based position, length) start on a field and read only text bytes.
TEST(RecordLayouts, CatalogueKeysLieOnTextFields) {
    struct Key {
        int index;
        std::vector<std::pair<std::size_t, std::size_t>> segments;
    };
    const Key keys[] = {
        {22, {{1, 8}, {9, 5}, {19, 5}, {64, 5}, {69, 5}, {24, 20}}},
        {47, {{1, 11}}},
        {28, {{1, 16}, {97, 8}, {109, 14}}},
        {20, {{1, 5}, {6, 10}, {16, 20}, {46, 1}, {16, 20}}},
        {21, {{1, 10}, {1, 5}, {11, 10}}},
        {29, {{1, 18}, {1, 10}, {19, 20}, {11, 8}}},
        {31, {{1, 11}}},
        {32, {{1, 10}}},
        {27, {{1, 14}, {15, 8}}},
        {18, {{1, 14}, {15, 16}, {31, 16}}},
        {26, {{1, 8}, {9, 19}, {28, 14}, {42, 39}}},
        {5, {{1, 16}, {3, 14}, {11, 6}, {40, 40}}},
        {1, {{1, 8}, {9, 10}}},
        {2, {{1, 10}, {11, 10}}},
        {3, {{1, 8}, {9, 10}}},
        {6, {{1, 8}, {9, 10}}},
    };
    for (const Key& key : keys) {
        const Layout* layout = FindLayout(key.index);
        ASSERT_NE(layout, nullptr) << key.index;
        std::vector<int> kind(layout->BufferLength(), -1);  // -1 gap, else FieldType
        std::vector<bool> starts(layout->BufferLength(), false);
        for (const Field& f : layout->fields) {
            starts[f.offset] = true;
            for (std::size_t b = f.offset; b < f.End(); ++b)
                kind[b] = static_cast<int>(f.type);
        }
        for (const auto& [position, length] : key.segments) {
            SCOPED_TRACE(std::string(layout->name) + " key at " + std::to_string(position));
            const std::size_t offset = position - 1;
            ASSERT_LE(offset + length, layout->recordLength);
            EXPECT_TRUE(starts[offset]);
            for (std::size_t b = offset; b < offset + length; ++b)
                EXPECT_NE(kind[b], static_cast<int>(FieldType::Int16)) << b;
            for (std::size_t b = offset; b < offset + length; ++b)
                EXPECT_NE(kind[b], -1) << b;
        }
    }
}

TEST(RecordLayouts, GapsAreTheBytesNoFieldCovers) {
    EXPECT_TRUE(Gaps(Morceau::kLayout).empty());
    EXPECT_EQ(Gaps(HistoriqueDiffusion::kLayout), (std::vector<Gap>{{13, 1}}));
    EXPECT_EQ(Gaps(Artiste::kLayout), (std::vector<Gap>{{191, 1}}));
    EXPECT_EQ(
        Gaps(LogPub::kLayout),
        (std::vector<Gap>{{95, 1}, {98, 2}, {102, 2}, {106, 2}, {110, 2}, {114, 2}, {247, 3}}));
    EXPECT_EQ(Gaps(Client::kLayout), (std::vector<Gap>{{737, 1}, {899, 5}}));
    EXPECT_EQ(Gaps(EnteteSpot::kLayout), (std::vector<Gap>{{93, 1}, {331, 1}, {394, 10}}));

    EXPECT_EQ(HistoriqueDiffusion::kLayout.BufferLength(), 4085u);
    EXPECT_EQ(LogPub::kLayout.BufferLength(), 250u);
    EXPECT_EQ(Client::kLayout.BufferLength(), 904u);
}

TEST(RecordLayouts, LookupsByIndexAndName) {
    EXPECT_EQ(FindLayout(22), &Morceau::kLayout);
    EXPECT_EQ(FindLayout(47), &HistoriqueDiffusion::kLayout);
    EXPECT_EQ(FindLayout(8), nullptr);
    EXPECT_EQ(FindLayout(51), nullptr);
    const Field* titre = FindField(Morceau::kLayout, "Titre");
    ASSERT_NE(titre, nullptr);
    EXPECT_EQ(*titre, Morceau::Titre);
    EXPECT_EQ(FindField(Morceau::kLayout, "titre"), nullptr);
}

}  // namespace
}  // namespace zl3::rec
