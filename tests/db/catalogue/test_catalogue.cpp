// The catalogue of the suite's database files: entries, file names, key definitions and the
// creation layout handed to the engine.
#include <gtest/gtest.h>

#include "Lib_Data_Pervasive_2_Catalogue.h"

namespace zl3 {
namespace {

class BtrCatalogue : public ::testing::Test {
  protected:
    void SetUp() override { InitCatalogueFichiers(); }
};

TEST_F(BtrCatalogue, FileNamesCarryTheStationLetterForPerStationFiles) {
    EXPECT_EQ(NomFichierBTrieve(28, 0), "FRADA28.bt6");
    EXPECT_EQ(NomFichierBTrieve(22, 2), "FRADC22.bt6");
    EXPECT_EQ(NomFichierBTrieve(3, 5), "FRAD003.bt6");
    EXPECT_EQ(NomFichierBTrieve(22, 1), "FRADB22.bt6");
    EXPECT_EQ(NomFichierBTrieve(47, 9), "FRADJ47.bt6");
    EXPECT_EQ(NomFichierBTrieve(0, 3), "FRAD000.bt6");
    EXPECT_EQ(NomFichierBTrieve(49, 0), "FRADA49.bt6");
}

TEST_F(BtrCatalogue, IndexesWithoutAFileAreEmpty) {
    for (int index : {8, 37, 38, 39, 50, -1, 51}) {
        EXPECT_TRUE(CatalogueFichier(index).Vide()) << index;
        EXPECT_EQ(NomFichierBTrieve(index, 0), "") << index;
        EXPECT_TRUE(StructureCreation(CatalogueFichier(index)).empty()) << index;
        EXPECT_EQ(DefinitionCleCatalogue(index, 0).Longueur, 0) << index;
    }
    int files = 0;
    for (int i = 0; i < kNbFichiersCatalogue; ++i)
        files += CatalogueFichier(i).Vide() ? 0 : 1;
    EXPECT_EQ(files, 46);
}

TEST_F(BtrCatalogue, EntriesHoldTheirCreationParameters) {
    const FichierCatalogue& tracks = CatalogueFichier(22);
    EXPECT_EQ(tracks.Code, "FRAD022 ");
    EXPECT_EQ(tracks.Description, "Morceaux");
    EXPECT_EQ(tracks.ParStation, 'O');
    EXPECT_EQ(tracks.Indicateur, 'N');
    EXPECT_EQ(tracks.LongueurEnreg, 900);
    EXPECT_EQ(tracks.TaillePage, 2048);
    EXPECT_EQ(tracks.NbCles, 6);
    EXPECT_EQ(tracks.Segments[5].Position, 24);
    EXPECT_EQ(tracks.Segments[5].Longueur, 20);
    EXPECT_EQ(tracks.Segments[5].Attributs, kCleDoublons | kCleModifiable | kCleSansCasse);
    EXPECT_EQ(tracks.Segments[6].Longueur, 0);

    const FichierCatalogue& history = CatalogueFichier(47);
    EXPECT_EQ(history.Description, "V 3.4 Historique de Diffusion: Codes et Libellés");
    EXPECT_EQ(history.Indicateur, 'O');
    EXPECT_EQ(history.LongueurEnreg, 4082);
    EXPECT_EQ(history.TaillePage, 4096);

    const FichierCatalogue& settings = CatalogueFichier(0);
    EXPECT_EQ(settings.Description, "Paramétrage");
    EXPECT_EQ(settings.ParStation, 'N');
    EXPECT_EQ(settings.Segments[0].Attributs, kCleModifiable);

    EXPECT_EQ(CatalogueFichier(36).Segments[0].Attributs, kCleModifiable | kCleSansCasse);
    EXPECT_EQ(CatalogueFichier(18).Segments[0].Attributs, kCleDoublons | kCleModifiable);
    EXPECT_EQ(CatalogueFichier(11).TaillePage, 1536);
    EXPECT_EQ(NbSegmentsUtilises(CatalogueFichier(12)), 7);
    EXPECT_EQ(CatalogueFichier(12).Segments[6].Position, 137);
    EXPECT_EQ(CatalogueFichier(2).Description, "Secteurs d'activité");
}

TEST_F(BtrCatalogue, EveryEntryListsOneSegmentPerKeyPlusItsContinuations) {
    for (int i = 0; i < kNbFichiersCatalogue; ++i) {
        const FichierCatalogue& f = CatalogueFichier(i);
        if (f.Vide()) continue;
        const int segments = NbSegmentsUtilises(f);
        int continued = 0;
        for (int s = 0; s < segments; ++s) {
            continued += (f.Segments[s].Attributs & kCleSegmentee) ? 1 : 0;
            EXPECT_LE(f.Segments[s].Position + f.Segments[s].Longueur - 1, f.LongueurEnreg)
                << "index " << i << " segment " << s;
        }
        EXPECT_EQ(segments - continued, f.NbCles) << "index " << i;
        EXPECT_FALSE(f.Segments[segments - 1].Attributs & kCleSegmentee) << "index " << i;
    }
}

TEST_F(BtrCatalogue, KeyDefinitionsSpanTheirSegments) {
    // Key 3 of the artists file: byte 46, then bytes 16 to 35.
    const FichierCatalogue& artists = CatalogueFichier(20);
    EXPECT_EQ(artists.Segments[3].Position, 46);
    EXPECT_EQ(artists.Segments[3].Longueur, 1);
    EXPECT_TRUE(artists.Segments[3].Attributs & kCleSegmentee);
    EXPECT_EQ(artists.Segments[4].Position, 16);
    EXPECT_EQ(artists.Segments[4].Longueur, 20);
    const DefinitionCle k3 = DefinitionCleCatalogue(20, 3);
    EXPECT_EQ(k3.NbSegments, 2);
    EXPECT_EQ(k3.Longueur, 21);
    EXPECT_EQ(DefinitionCleCatalogue(20, 2).Longueur, 20);
    EXPECT_EQ(DefinitionCleCatalogue(20, 4).Longueur, 0);
    EXPECT_EQ(DefinitionCleCatalogue(22, 0).Longueur, 8);
    EXPECT_EQ(DefinitionCleCatalogue(22, 5).Longueur, 20);
    EXPECT_EQ(DefinitionCleCatalogue(22, 6).NbSegments, 0);
    EXPECT_EQ(DefinitionCleCatalogue(7, 2).Longueur, 23);  // 26/10 then 9/13
    EXPECT_EQ(DefinitionCleCatalogue(7, 3).Longueur, 21);
    EXPECT_EQ(DefinitionCleCatalogue(13, 2).NbSegments, 2);
    EXPECT_EQ(DefinitionCleCatalogue(13, 4).Longueur, 15);
    EXPECT_EQ(DefinitionCleCatalogue(47, 0).Longueur, 11);
    EXPECT_EQ(DefinitionCleCatalogue(22, -1).Longueur, 0);
}

TEST_F(BtrCatalogue, CreationLayoutIsBtrievesLittleEndianLayout) {
    const std::vector<uint8_t> layout = StructureCreation(CatalogueFichier(20));
    const std::vector<uint8_t> expected = {
        // record length 300, page size 1024, 4 keys, then reserved fields
        0x2C,
        0x01,
        0x00,
        0x04,
        0x04,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        // 1/5 modifiable
        0x01,
        0x00,
        0x05,
        0x00,
        0x02,
        0x00,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        // 6/10 duplicates + modifiable
        0x06,
        0x00,
        0x0A,
        0x00,
        0x03,
        0x00,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        // 16/20 duplicates + modifiable + case-insensitive (1027)
        0x10,
        0x00,
        0x14,
        0x00,
        0x03,
        0x04,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        // 46/1 duplicates + modifiable + segmented
        0x2E,
        0x00,
        0x01,
        0x00,
        0x13,
        0x00,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        // 16/20 duplicates + modifiable
        0x10,
        0x00,
        0x14,
        0x00,
        0x03,
        0x00,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
    };
    EXPECT_EQ(layout, expected);
    const std::vector<uint8_t> history = StructureCreation(CatalogueFichier(47));
    ASSERT_EQ(history.size(), 32u);
    EXPECT_EQ(history[0] | history[1] << 8, 4082);
    EXPECT_EQ(history[2] | history[3] << 8, 4096);
    EXPECT_EQ(StructureCreation(CatalogueFichier(12)).size(), 16u + 7 * 16);
}

}  // namespace
}  // namespace zl3
