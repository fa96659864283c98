// A small demo station database read back through the engine: complete, internally consistent
// and reproducible.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "BaseDemo.h"
#include "Ecriture.h"
#include "LectureBtrieve.h"
#include "TestSite.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3::demo {
namespace {

using test::LireFichier;

// A record as the layout's buffer (the engine returns the stored length, which can be shorter
// than the structure).
std::vector<uint8_t> Tampon(const rec::Layout& layout, const std::string& octets) {
    std::vector<uint8_t> b(layout.BufferLength(), ' ');
    std::copy(octets.begin(), octets.end(), b.begin());
    return b;
}

std::string Champ(const rec::Layout& layout, const std::string& octets, const rec::Field& f) {
    return rec::GetBytes(Tampon(layout, octets), f);
}

std::string SansBlancs(std::string s) {
    while (!s.empty() && s.back() == ' ')
        s.pop_back();
    return s;
}

// Events of one station: per track key, the broadcast times in key-0 order of FRAD028.
std::map<std::string, std::vector<DateTime>> EvenementsParMorceau(
    const std::vector<std::string>& evenements) {
    using namespace rec::EvenementMusical;
    std::map<std::string, std::vector<DateTime>> parMorceau;
    for (const std::string& e : evenements) {
        const auto b = Tampon(kLayout, e);
        const auto jour = ParseYYYYMMDD(rec::GetBytes(b, Date));
        EXPECT_TRUE(jour.has_value());
        if (!jour) continue;
        DateTime t = *jour;
        t.hour = std::stoi(rec::GetBytes(b, Heure));
        t.minute = std::stoi(rec::GetBytes(b, Minute));
        t.second = std::stoi(rec::GetBytes(b, Seconde));
        parMorceau[rec::GetBytes(b, CleMorceau)].push_back(t);
    }
    return parMorceau;
}

class BaseDemoTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        dossier_ = new std::string(zl3::test::NewTempDir("base-demo"));
        OptionsBaseDemo o;
        o.stations = 2;
        o.morceaux = 300;
        o.jours = 130;
        o.fin = DateTime{2025, 3, 31};
        o.graine = 7;
        options_ = new OptionsBaseDemo(o);
        try {
            bilan_ = new BilanBase(RemplirBaseDemo(o, *dossier_));
        } catch (const ErreurDemo& e) {
            erreur_ = new std::string(e.what());
        }
    }
    void SetUp() override {
        if (erreur_ != nullptr) GTEST_FAIL() << "generation failed: " << *erreur_;
    }
    static void TearDownTestSuite() {
        std::error_code ec;
        std::filesystem::remove_all(*dossier_, ec);
        delete dossier_;
        delete options_;
        delete bilan_;
        delete erreur_;
    }

    static std::string Chemin(int index, int station) {
        return *dossier_ + NomFichierBTrieve(index, station);
    }
    static std::vector<std::string> Lire(const rec::Layout& layout, int station, int cle = 0) {
        return LireFichier(Chemin(layout.catalogueIndex, station), layout.catalogueIndex, cle);
    }
    static std::set<std::string> Cles(const rec::Layout& layout, const rec::Field& f, int station) {
        std::set<std::string> cles;
        for (const std::string& e : Lire(layout, station))
            cles.insert(Champ(layout, e, f));
        return cles;
    }

    static std::string* dossier_;
    static OptionsBaseDemo* options_;
    static BilanBase* bilan_;
    static std::string* erreur_;
};

std::string* BaseDemoTest::dossier_ = nullptr;
OptionsBaseDemo* BaseDemoTest::options_ = nullptr;
BilanBase* BaseDemoTest::bilan_ = nullptr;
std::string* BaseDemoTest::erreur_ = nullptr;

TEST_F(BaseDemoTest, EveryCatalogueFileExistsForEachStationAndHoldsWhatWasCounted) {
    InitCatalogueFichiers();
    int fichiers = 0;
    for (int index = 0; index < kNbFichiersCatalogue; ++index) {
        const FichierCatalogue& entree = CatalogueFichier(index);
        if (entree.Vide()) continue;
        const int nb = entree.ParStation == 'O' ? options_->stations : 1;
        for (int s = 0; s < nb; ++s) {
            const std::string nom = NomFichierBTrieve(index, s);
            ASSERT_TRUE(std::filesystem::exists(Chemin(index, s))) << nom;
            const auto lus = LireFichier(Chemin(index, s), index);
            EXPECT_EQ(static_cast<int64_t>(lus.size()), bilan_->enregistrements.at(nom)) << nom;
            for (const std::string& e : lus)
                EXPECT_EQ(e.size(), static_cast<std::size_t>(entree.LongueurEnreg)) << nom;
            ++fichiers;
        }
        if (entree.ParStation == 'O') {
            EXPECT_FALSE(std::filesystem::exists(Chemin(index, options_->stations)));
        }
    }
    EXPECT_EQ(fichiers, static_cast<int>(bilan_->enregistrements.size()));
    // The files the statistics read are not empty.
    for (const char* nom : {"FRAD001.bt6", "FRAD003.bt6", "FRADA22.bt6", "FRADB47.bt6",
                            "FRADA28.bt6", "FRADB18.bt6", "FRADA26.bt6", "FRADB05.bt6"})
        EXPECT_GT(bilan_->enregistrements.at(nom), 0) << nom;
}

TEST_F(BaseDemoTest, HistoriesHoldExactlyTheLatestEventsOfTheirTrack) {
    for (int station = 0; station < options_->stations; ++station) {
        SCOPED_TRACE(station);
        const std::set<std::string> morceaux =
            Cles(rec::Morceau::kLayout, rec::Morceau::CleMorceau, station);
        const auto evenements = EvenementsParMorceau(Lire(rec::EvenementMusical::kLayout, station));
        for (const auto& [cle, _] : evenements)
            EXPECT_TRUE(morceaux.count(cle)) << cle;

        using namespace rec::HistoriqueDiffusion;
        const auto historiques = Lire(kLayout, station);
        EXPECT_EQ(historiques.size(), evenements.size());  // one per aired track, no other
        int plafondHabillage = 0, plafondMusique = 0;
        for (const std::string& h : historiques) {
            const auto b = Tampon(kLayout, h);
            const std::string cle = rec::GetBytes(b, Cle).substr(0, 8);
            ASSERT_EQ(rec::GetBytes(b, Cle), rec::HistoryKey(cle));
            ASSERT_TRUE(morceaux.count(cle)) << cle;
            ASSERT_TRUE(evenements.count(cle)) << cle;
            const std::vector<DateTime>& diffusions = evenements.at(cle);
            const bool habillage = cle.rfind("JIN", 0) == 0 || cle.rfind("LIN", 0) == 0;
            const int plafond = habillage ? 200 : 672;
            const int attendu = std::min<int>(plafond, static_cast<int>(diffusions.size()));
            const int nb = rec::GetInt16(b, NbPassages);
            ASSERT_EQ(nb, attendu) << cle;
            if (static_cast<int>(diffusions.size()) > plafond)
                ++(habillage ? plafondHabillage : plafondMusique);
            for (int i = 0; i < nb; ++i) {
                const auto t = rec::PassageAt(b, i);
                ASSERT_TRUE(t.has_value()) << cle << " entry " << i;
                ASSERT_EQ(*t, diffusions[diffusions.size() - 1 - i]) << cle << " entry " << i;
            }
            // Beyond the entries written, the area is blank.
            EXPECT_EQ(rec::GetBytes(b, Passages).find_first_not_of(' ', 6 * nb), std::string::npos)
                << cle;
        }
        // The period is long enough for both caps to be reached.
        EXPECT_GT(plafondHabillage, 0);
        EXPECT_GT(plafondMusique, 0);
    }
}

TEST_F(BaseDemoTest, MusicEventsHaveUniqueTimesInsideThePeriodAndRepeatTheirTime) {
    using namespace rec::EvenementMusical;
    constexpr rec::Field sequence = rec::decl::Named(kFields, "Champ014");
    constexpr rec::Field heure2 = rec::decl::Named(kFields, "Heure2");
    constexpr rec::Field seconde2 = rec::decl::Named(kFields, "Seconde2");
    const std::string premier = FormatYYYYMMDD(PremierJourDemo(*options_));
    const std::string dernier = FormatYYYYMMDD(options_->fin);
    for (int station = 0; station < options_->stations; ++station) {
        const auto evenements = Lire(kLayout, station);
        ASSERT_FALSE(evenements.empty());
        std::map<std::string, int> parHeure;  // date + hour → music items
        int sequences = 0;
        std::string precedente;
        for (const std::string& e : evenements) {
            const auto b = Tampon(kLayout, e);
            const std::string date = rec::GetBytes(b, Date);
            EXPECT_GE(date, premier);
            EXPECT_LE(date, dernier);
            const std::string instant = rec::GetBytes(b, rec::Join(Date, Seconde, "t"));
            const std::string seq = rec::GetBytes(b, sequence);
            if (seq != "00") {
                ++sequences;
                EXPECT_EQ(instant, precedente);  // only a second event of the same second
            }
            precedente = instant;
            EXPECT_EQ(rec::GetBytes(b, Date2), date);
            EXPECT_EQ(rec::GetBytes(b, rec::Join(heure2, seconde2, "t2")), instant.substr(8, 6));
            const std::string cle = rec::GetBytes(b, CleMorceau);
            if (cle.rfind("JIN", 0) != 0 && cle.rfind("LIN", 0) != 0)
                ++parHeure[date + rec::GetBytes(b, Heure)];
        }
        EXPECT_GT(sequences, 0);
        for (const auto& [heure, nb] : parHeure) {
            const int h = std::stoi(heure.substr(8));
            if (h < 5) {
                EXPECT_GE(nb, 6) << heure;
                EXPECT_LE(nb, 10) << heure;
            } else if (h >= 6 && h < 20) {
                EXPECT_GE(nb, 11) << heure;  // a long hour may lose its last song
                EXPECT_LE(nb, 16) << heure;
            }
        }
    }
}

TEST_F(BaseDemoTest, LibraryRecordsPointToExistingArtistsLabelsAndCategories) {
    const int station = 1;
    const std::set<std::string> artistes =
        Cles(rec::Artiste::kLayout, rec::Artiste::CodeArtiste, station);
    std::map<std::string, std::set<std::string>> attributs;  // type → codes
    int top = 0;
    for (const std::string& e : Lire(rec::Categorie::kLayout, station)) {
        using namespace rec::Categorie;
        const std::string type = Champ(kLayout, e, TypeAttribut);
        attributs[type].insert(SansBlancs(Champ(kLayout, e, CodeAttribut)));
        if (type == "CAT_2" && Champ(kLayout, e, Parametres).find("OY") != std::string::npos) ++top;
    }
    EXPECT_GT(top, 0);
    EXPECT_LT(top, static_cast<int>(attributs["CAT_2"].size()));
    EXPECT_EQ(attributs["CAT_2"], attributs["CATEG"]);

    int duos = 0, titresCoupes = 0;
    std::set<std::string> categories;
    for (const std::string& e : Lire(rec::Morceau::kLayout, station)) {
        using namespace rec::Morceau;
        const std::string cle = Champ(kLayout, e, CleMorceau);
        categories.insert(cle.substr(0, 3));
        EXPECT_TRUE(attributs["CATEG"].count(cle.substr(0, 3))) << cle;
        const std::string a1 = Champ(kLayout, e, CodeArtiste1);
        const std::string a2 = Champ(kLayout, e, CodeArtiste2);
        const bool habillage = cle.rfind("JIN", 0) == 0 || cle.rfind("LIN", 0) == 0;
        if (habillage) {
            EXPECT_EQ(Champ(kLayout, e, QuotaFlag), " ") << cle;
        } else {
            EXPECT_TRUE(artistes.count(a1)) << cle;
            EXPECT_EQ(Champ(kLayout, e, CodeNumerique), "00");
        }
        if (a2 != "     ") {
            EXPECT_TRUE(artistes.count(a2)) << cle;
            ++duos;
        }
        const std::string label = SansBlancs(Champ(kLayout, e, CodeLabel));
        if (!label.empty()) {
            EXPECT_TRUE(attributs["LABEL"].count(label)) << cle;
        }
        if (Champ(kLayout, e, Titre).back() != ' ') ++titresCoupes;
        const int duree = std::stoi(Champ(kLayout, e, Duree));
        EXPECT_GT(duree, 0);
    }
    EXPECT_GT(duos, 0);
    EXPECT_GT(titresCoupes, 0);
    EXPECT_GE(categories.size(), 15u);
    EXPECT_TRUE(categories.count("JIN") && categories.count("LIN"));
}

TEST_F(BaseDemoTest, VersionListsNameExistingTracksWithSomeBlankAndSomeSelfListed) {
    const int station = 0;
    const std::set<std::string> morceaux =
        Cles(rec::Morceau::kLayout, rec::Morceau::CleMorceau, station);
    int vides = 0, avecSoi = 0, listes = 0;
    using namespace rec::MorceauInfos;
    for (const std::string& e : Lire(kLayout, station)) {
        const auto b = Tampon(kLayout, e);
        const std::string cle = rec::GetBytes(b, CleMorceau);
        EXPECT_TRUE(morceaux.count(cle)) << cle;
        EXPECT_EQ(rec::GetBytes(b, TypeInfo), kTypeVersions);
        if (SansBlancs(rec::GetBytes(b, Zone)).empty()) {
            ++vides;
            continue;
        }
        ++listes;
        for (int i = 0; i < kNbVersions; ++i) {
            const std::string v = rec::GetBytes(b, Version(i));
            if (v == "        ") continue;
            EXPECT_TRUE(morceaux.count(v)) << cle << " lists " << v;
            if (v == cle) ++avecSoi;
        }
    }
    EXPECT_GT(vides, 0);
    EXPECT_GT(listes, 0);
    EXPECT_GT(avecSoi, 0);
}

TEST_F(BaseDemoTest, AdvertisingLogReferencesKnownClientsContractsAndMessages) {
    const std::set<std::string> clients = Cles(rec::Client::kLayout, rec::Client::CodeClient, 0);
    const std::set<std::string> commerciaux =
        Cles(rec::Commercial::kLayout, rec::Commercial::CodeCommercial, 0);
    for (int station = 0; station < options_->stations; ++station) {
        SCOPED_TRACE(station);
        const std::set<std::string> messages =
            Cles(rec::MessagePub::kLayout, rec::MessagePub::CleMessage, station);
        std::set<std::string> contrats;
        for (const std::string& e : Lire(rec::EnteteContrat::kLayout, station)) {
            using namespace rec::EnteteContrat;
            contrats.insert(Champ(kLayout, e, NoContrat));
            EXPECT_TRUE(clients.count(Champ(kLayout, e, CodeClient)));
            EXPECT_TRUE(commerciaux.count(Champ(kLayout, e, CodeCommercial)));
        }
        using namespace rec::LogPub;
        const auto log = Lire(kLayout, station);
        ASSERT_FALSE(log.empty());
        int sansClient = 0;
        for (const std::string& e : log) {
            const auto b = Tampon(kLayout, e);
            const std::string client = rec::GetBytes(b, CodeClient);
            if (client == "        ")
                ++sansClient;
            else
                EXPECT_TRUE(clients.count(client)) << client;
            EXPECT_TRUE(contrats.count(rec::GetBytes(b, NoContrat)));
            EXPECT_TRUE(messages.count(rec::GetBytes(b, CleMessage)));
            const std::string reference = SansBlancs(rec::GetBytes(b, Reference));
            EXPECT_EQ(std::count(reference.begin(), reference.end(), '|'), 1) << reference;
            EXPECT_LE(rec::GetInt16(b, RangEcran), rec::GetInt16(b, NbSpotsEcran));
        }
        EXPECT_GT(sansClient, 0);
        EXPECT_LT(sansClient, static_cast<int>(log.size()) / 50);
    }
}

TEST_F(BaseDemoTest, SomePlannedSpotsNeverReachTheLog) {
    for (int station = 0; station < options_->stations; ++station) {
        SCOPED_TRACE(station);
        // Per planned day and spot: planned minus logged.
        std::map<std::string, int> ecart;
        const auto prevus = Lire(rec::ConducteurPub::kLayout, station);
        for (const std::string& e : prevus) {
            using namespace rec::ConducteurPub;
            const std::string heure = Champ(kLayout, e, Heure);
            EXPECT_GE(heure, "06");
            EXPECT_LE(heure, "21");
            ++ecart[Champ(kLayout, e, Date) + Champ(kLayout, e, CleSpot)];
        }
        const auto log = Lire(rec::LogPub::kLayout, station);
        for (const std::string& e : log) {
            using namespace rec::LogPub;
            --ecart[Champ(kLayout, e, DatePrevue) + Champ(kLayout, e, CleSpot)];
        }
        int manquants = 0;
        for (const auto& [cle, n] : ecart) {
            EXPECT_GE(n, 0) << cle << " logged more often than planned";
            manquants += n;
        }
        EXPECT_EQ(manquants, static_cast<int>(prevus.size() - log.size()));
        EXPECT_GT(manquants, static_cast<int>(prevus.size()) / 200);
        EXPECT_LT(manquants, static_cast<int>(prevus.size()) / 20);
    }
}

TEST_F(BaseDemoTest, StationsShareTheLibraryButNotTheirHistory) {
    EXPECT_EQ(Lire(rec::Morceau::kLayout, 0), Lire(rec::Morceau::kLayout, 1));
    EXPECT_EQ(Lire(rec::Artiste::kLayout, 0), Lire(rec::Artiste::kLayout, 1));
    EXPECT_NE(Lire(rec::EvenementMusical::kLayout, 0), Lire(rec::EvenementMusical::kLayout, 1));
    EXPECT_NE(Lire(rec::LogPub::kLayout, 0), Lire(rec::LogPub::kLayout, 1));
}

// ---- Reproducibility ---------------------------------------------------------------------------

// Every record of every file, by file name, in key-0 order.
std::map<std::string, std::vector<std::string>> Contenu(const std::string& dossier,
                                                        const BilanBase& bilan) {
    std::map<std::string, std::vector<std::string>> contenu;
    InitCatalogueFichiers();
    for (int index = 0; index < kNbFichiersCatalogue; ++index)
        for (int s = 0; s < 10; ++s) {
            const std::string nom = NomFichierBTrieve(index, s);
            if (nom.empty() || !bilan.enregistrements.count(nom) || contenu.count(nom)) continue;
            contenu[nom] = LireFichier(dossier + nom, index);
        }
    return contenu;
}

class ReproductionTest : public ::testing::Test {
  protected:
    void TearDown() override {
        std::error_code ec;
        for (const std::string& d : dossiers_)
            std::filesystem::remove_all(d, ec);
    }
    std::map<std::string, std::vector<std::string>> Generer(uint64_t graine) {
        dossiers_.push_back(zl3::test::NewTempDir("demo-graine"));
        OptionsBaseDemo o;
        o.stations = 2;
        o.morceaux = 200;
        o.jours = 3;
        o.fin = DateTime{2024, 2, 29};
        o.graine = graine;
        return Contenu(dossiers_.back(), RemplirBaseDemo(o, dossiers_.back()));
    }
    std::vector<std::string> dossiers_;
};

TEST_F(ReproductionTest, SameSeedGivesTheSameRecordsAnotherSeedOthers) {
    const auto a = Generer(42);
    const auto b = Generer(42);
    const auto c = Generer(43);
    ASSERT_EQ(a.size(), 75u);
    EXPECT_EQ(a, b);
    for (const char* nom :
         {"FRADA22.bt6", "FRADB28.bt6", "FRADA47.bt6", "FRAD003.bt6", "FRADB18.bt6", "FRADA27.bt6"})
        EXPECT_NE(a.at(nom), c.at(nom)) << nom;
}

TEST_F(ReproductionTest, RegeneratingIntoTheSameFolderReplacesTheFiles) {
    const std::string dossier = zl3::test::NewTempDir("demo-refaire");
    dossiers_.push_back(dossier);
    OptionsBaseDemo o;
    o.stations = 1;
    o.morceaux = 200;
    o.jours = 2;
    o.fin = DateTime{2024, 12, 31};
    const BilanBase premier = RemplirBaseDemo(o, dossier);
    const auto avant = Contenu(dossier, premier);
    const BilanBase second = RemplirBaseDemo(o, dossier);
    EXPECT_EQ(premier.enregistrements, second.enregistrements);
    EXPECT_EQ(Contenu(dossier, second), avant);
}

}  // namespace
}  // namespace zl3::demo
