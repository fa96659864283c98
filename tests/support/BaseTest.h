// Test support: small hand-built station databases. Files are created empty from the catalogue
// and filled record by record through the call layer, under caller slot kSlotEcriture; the code
// under test reads them under its own slot.
#pragma once

#include <string>
#include <vector>

#include "Catalogue.h"
#include "Lib_Data_Pervasive.h"
#include "TestSite.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3::test {

inline constexpr int kSlotEcriture = 19;

class BaseTest : public SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        ResetLibDataPervasive();
        data_ = P("C:\\BTRieve\\Data\\");
        sys::CheckRep(data_);
        DefinirDossierData(data_);
    }
    void TearDown() override {
        FermerTousLesFichiers();
        ResetLibDataPervasive();
        SiteTest::TearDown();
    }

    // Creates (empty) and opens for writing the files `fichiers` of stations 1..nbStations.
    void CreerFichiers(const std::vector<int>& fichiers, int nbStations = 1) {
        for (int f : fichiers)
            for (int s = 1; s <= nbStations; ++s) {
                const std::string chemin = data_ + cat::NomFichier(f, s - 1);
                ASSERT_EQ(CreerFichierVide(chemin), 0) << chemin;
            }
        for (int f : fichiers)
            FichierPervasiveOuvrir(kSlotEcriture, 1, nbStations, f, 0);
        for (int f : fichiers)
            for (int s = 1; s <= nbStations; ++s)
                ASSERT_TRUE(FichierOuvert(kSlotEcriture, s, f)) << f;
    }

    // A blank record of file `fichier` in its record buffer.
    std::span<uint8_t> Nouveau(int fichier) {
        auto t = TamponEnreg(fichier);
        const auto blank = rec::NewRecord(*rec::FindLayout(fichier));
        std::fill(t.begin(), t.end(), ' ');
        std::copy(blank.begin(), blank.end(), t.begin());
        return t;
    }
    void Inserer(int fichier, int station = 1) {
        std::string cle;
        ASSERT_EQ(BTRieve(kSlotEcriture, kBtrInsert, cle, 0, fichier, station, "test"), 0)
            << "insert into " << fichier;
    }

    void Morceau(const std::string& cle, const std::string& flag, const std::string& titre = "",
                 const std::string& artiste1 = "", const std::string& artiste2 = "",
                 const std::string& duree = "0200", int station = 1) {
        namespace m = rec::Morceau;
        auto r = Nouveau(22);
        rec::SetBytes(r, m::CleMorceau, cle);
        rec::SetBytes(r, m::QuotaFlag, flag);
        rec::SetText(r, m::Titre, titre.empty() ? "Titre " + cle : titre);
        rec::SetBytes(r, m::CodeArtiste1, artiste1);
        rec::SetBytes(r, m::CodeArtiste2, artiste2);
        rec::SetBytes(r, m::Duree, duree);
        rec::SetBytes(r, m::CodeNumerique, "00");
        Inserer(22, station);
    }

    // The track's history record: `passages` in order, and NbPassages = `nb` (or their count).
    void Historique(const std::string& cle, const std::vector<DateTime>& passages, int nb = -1,
                    int station = 1) {
        namespace h = rec::HistoriqueDiffusion;
        auto r = Nouveau(47);
        rec::SetBytes(r, h::Cle, rec::HistoryKey(cle));
        for (size_t i = 0; i < passages.size() && i < 672; ++i)
            ASSERT_TRUE(rec::SetPassageAt(r, static_cast<int>(i), passages[i]));
        rec::SetInt16(r, h::NbPassages, static_cast<int16_t>(nb < 0 ? passages.size() : nb));
        Inserer(47, station);
    }

    void Artiste(const std::string& code, const std::string& nom, int station = 1) {
        auto r = Nouveau(20);
        rec::SetBytes(r, rec::Artiste::CodeArtiste, code);
        rec::SetText(r, rec::Artiste::NomArtiste, nom);
        Inserer(20, station);
    }

    void Attribut(const std::string& type, const std::string& code, const std::string& libelle,
                  const std::string& parametres = "", int station = 1) {
        namespace c = rec::Categorie;
        auto r = Nouveau(21);
        rec::SetBytes(r, c::TypeAttribut, type);
        rec::SetBytes(r, c::CodeAttribut, code);
        rec::SetText(r, c::Libelle, libelle);
        rec::SetText(r, c::Parametres, parametres);
        Inserer(21, station);
    }

    // An advertising broadcast (FRAD018): its time, client, spot, message, zone ("region|town")
    // and contract.
    void DiffusionPub(const DateTime& t, const std::string& client, const std::string& spot,
                      const std::string& message = "", const std::string& reference = "",
                      const std::string& contrat = "", int station = 1) {
        namespace l = rec::LogPub;
        auto r = Nouveau(18);
        rec::SetBytes(r, l::Date, FormatYYYYMMDD(t));
        rec::SetBytes(r, l::Heure, PadNumber(t.hour, 2));
        rec::SetBytes(r, l::Minute, PadNumber(t.minute, 2));
        rec::SetBytes(r, l::Seconde, PadNumber(t.second, 2));
        rec::SetBytes(r, l::CodeClient, client);
        rec::SetBytes(r, l::CleSpot, spot);
        rec::SetBytes(r, l::CleMessage, message);
        rec::SetText(r, l::Reference, reference);
        rec::SetBytes(r, l::NoContrat, contrat);
        Inserer(18, station);
    }

    std::string data_;
};

inline DateTime At(int y, int mo, int d, int h = 12, int mi = 0, int s = 0) {
    return DateTime{y, mo, d, h, mi, s, 0};
}

}  // namespace zl3::test
