// Field access on record bytes: the round trip of every layout, Windows-1252 texts, widths,
// little-endian integers and misuse.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "records/Layouts.h"
#include "records/RecordAccess.h"

namespace zl3::rec {
namespace {

std::vector<std::uint8_t> RandomRecord(std::size_t size, std::uint32_t seed) {
    std::mt19937 gen(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    std::vector<std::uint8_t> record(size);
    for (auto& b : record)
        b = static_cast<std::uint8_t>(byte(gen));
    return record;
}

// Every field read from a record of random bytes and written into another buffer, whose only
// other content is the gap bytes, rebuilds the record byte for byte: texts survive the trip
// through UTF-8, blocks and integers are copied exactly, and fields plus gaps cover the buffer.
TEST(RecordAccess, EveryLayoutRoundTripsThroughItsFields) {
    for (const Layout* l : AllLayouts()) {
        const Layout& layout = *l;
        SCOPED_TRACE(std::string(layout.name));
        for (std::uint32_t seed = 1; seed <= 8; ++seed) {
            const auto original = RandomRecord(layout.BufferLength(), seed * 7919u);
            std::vector<std::uint8_t> copy(layout.BufferLength(), 0xA5);
            for (const Gap& g : Gaps(layout))
                for (std::size_t b = g.offset; b < g.offset + g.length; ++b)
                    copy[b] = original[b];

            for (const Field& f : layout.fields) {
                switch (f.type) {
                    case FieldType::Text: {
                        const TextWrite w = SetText(copy, f, GetText(original, f));
                        EXPECT_EQ(w.replaced, 0) << f.name;
                        EXPECT_FALSE(w.truncated) << f.name;
                        break;
                    }
                    case FieldType::Int16:
                        SetInt16(copy, f, GetInt16(original, f));
                        break;
                    case FieldType::Block:
                        SetBytes(copy, f, GetBytes(original, f));
                        break;
                }
            }
            ASSERT_EQ(copy, original) << "seed " << seed;
        }
    }
}

TEST(RecordAccess, AccentedTextsTravelAsWindows1252) {
    auto record = NewRecord(Categorie::kLayout);
    const std::string phrase = "Édith Piaf – « Non, je ne regrette rien »";
    const TextWrite w = SetText(record, Categorie::Parametres, phrase);
    EXPECT_EQ(w.replaced, 0);
    EXPECT_FALSE(w.truncated);

    const std::string stored = GetBytes(record, Categorie::Parametres);
    EXPECT_EQ(stored.substr(0, 14),
              "\xC9"
              "dith Piaf \x96 \xAB");
    EXPECT_EQ(stored.substr(38, 4), "n \xBB ");  // 41 single-byte characters, then blanks
    EXPECT_EQ(stored.find_first_not_of(' ', 41), std::string::npos);

    const std::string read = GetText(record, Categorie::Parametres);
    EXPECT_EQ(read.size(), phrase.size() + (940 - 41));  // trailing blanks are kept
    EXPECT_EQ(read.substr(0, phrase.size()), phrase);

    SetBytes(record, Categorie::Libelle, "\x8C\x80");
    EXPECT_EQ(GetText(record, Categorie::Libelle), "Œ€" + std::string(28, ' '));
    EXPECT_EQ(SetText(record, Categorie::Libelle, "Œuvre 5 €").replaced, 0);
    EXPECT_EQ(GetBytes(record, Categorie::Libelle).substr(0, 9), "\x8Cuvre 5 \x80");
}

TEST(RecordAccess, CharactersOutsideTheCodePageBecomeQuestionMarks) {
    auto record = NewRecord(Morceau::kLayout);
    const TextWrite w = SetText(record, Morceau::Titre, "Dvořák 日本");
    EXPECT_EQ(w.replaced, 3);
    EXPECT_FALSE(w.truncated);
    EXPECT_EQ(GetBytes(record, Morceau::Titre).substr(0, 10), "Dvo?\xE1k ?? ");
}

TEST(RecordAccess, TextsArePaddedOrCutToTheFieldWithoutTouchingNeighbours) {
    auto record = NewRecord(Morceau::kLayout);
    const Field next = *FindField(Morceau::kLayout, "Champ063");
    SetBytes(record, Morceau::CodesArtistes, "ART01ART02");
    SetBytes(record, next, "NEXT!");
    SetBytes(record, Morceau::CleMorceau, "001");
    EXPECT_EQ(GetBytes(record, Morceau::CleMorceau), "001     ");
    EXPECT_EQ(GetBytes(record, Morceau::CodeCategorie), "001");
    EXPECT_EQ(GetBytes(record, Morceau::CodeArtiste1), "ART01");
    EXPECT_EQ(GetBytes(record, Morceau::CodeArtiste2), "ART02");

    const std::string title = "Le titre de cette chanson compte 45 signes...";
    ASSERT_EQ(title.size(), 45u);
    const TextWrite w = SetText(record, Morceau::Titre, title);
    EXPECT_TRUE(w.truncated);
    EXPECT_EQ(GetText(record, Morceau::Titre), title.substr(0, 40));
    EXPECT_EQ(GetBytes(record, next), "NEXT!");
    EXPECT_EQ(GetBytes(record, Morceau::CodesArtistes), "ART01ART02");

    SetText(record, Morceau::Titre, "Court");
    EXPECT_EQ(GetText(record, Morceau::Titre), "Court" + std::string(35, ' '));
    SetBytes(record, Morceau::CleMorceau, "0012345678");
    EXPECT_EQ(GetBytes(record, Morceau::CleMorceau), "00123456");
    EXPECT_EQ(GetBytes(record, Morceau::CodeArtiste1), "ART01");
}

TEST(RecordAccess, IntegersAreLittleEndianAtAnyOffset) {
    auto history = NewRecord(HistoriqueDiffusion::kLayout);
    EXPECT_EQ(GetInt16(history, HistoriqueDiffusion::NbPassages), 0);
    history[14] = 0x10;
    history[15] = 0x02;
    EXPECT_EQ(GetInt16(history, HistoriqueDiffusion::NbPassages), 528);

    std::vector<std::uint8_t> bytes(8, 0);
    const Field odd{"Impair", 3, 2, FieldType::Int16};
    SetInt16(bytes, odd, 0x1234);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0, 0, 0, 0x34, 0x12, 0, 0, 0}));
    SetInt16(bytes, odd, -2);
    EXPECT_EQ(bytes[3], 0xFE);
    EXPECT_EQ(bytes[4], 0xFF);
    EXPECT_EQ(GetInt16(bytes, odd), -2);
    SetInt16(bytes, odd, INT16_MIN);
    EXPECT_EQ(GetInt16(bytes, odd), INT16_MIN);
}

TEST(RecordAccess, NewRecordsAreBlankWithZeroIntegers) {
    const auto client = NewRecord(Client::kLayout);
    ASSERT_EQ(client.size(), 904u);
    EXPECT_EQ(GetInt16(client, *FindField(Client::kLayout, "Champ738")), 0);
    EXPECT_EQ(GetBytes(client, Client::NomClient), std::string(30, ' '));
    EXPECT_EQ(client[737], ' ');
}

TEST(RecordAccess, MisuseIsRefused) {
    auto history = NewRecord(HistoriqueDiffusion::kLayout);
    EXPECT_THROW(GetText(history, HistoriqueDiffusion::NbPassages), std::invalid_argument);
    EXPECT_THROW(SetText(history, HistoriqueDiffusion::NbPassages, "12"), std::invalid_argument);
    EXPECT_THROW(GetInt16(history, HistoriqueDiffusion::Passages), std::invalid_argument);

    // The file stores 4082 bytes of a 4085-byte structure: a buffer of the stored length
    // cannot hold the last field.
    const Field last = *FindField(HistoriqueDiffusion::kLayout, "Champ4048");
    std::vector<std::uint8_t> stored(HistoriqueDiffusion::kLayout.recordLength, ' ');
    EXPECT_THROW(GetBytes(stored, last), std::out_of_range);
    EXPECT_THROW(SetBytes(stored, last, "x"), std::out_of_range);
    EXPECT_NO_THROW(GetBytes(stored, HistoriqueDiffusion::Passages));
    EXPECT_THROW(
        SetInt16(std::span<std::uint8_t>(stored).first(15), HistoriqueDiffusion::NbPassages, 1),
        std::out_of_range);
}

}  // namespace
}  // namespace zl3::rec
