// Command line of zl3-demo.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <string>
#include <vector>

#include "OptionsDemo.h"
#include "Processus.h"
#include "TestSite.h"

namespace zl3::demo {
namespace {

struct Resultat {
    Analyse analyse;
    OptionsDemo options;
    std::string message;
};

Resultat Analyser(std::vector<std::string> args) {
    args.insert(args.begin(), "zl3-demo");
    std::vector<char*> argv;
    for (std::string& a : args)
        argv.push_back(a.data());
    Resultat r;
    r.analyse = AnalyserOptionsDemo(static_cast<int>(argv.size()), argv.data(),
                                    DateTime{2025, 3, 1}, r.options, r.message);
    return r;
}

TEST(OptionsDemo, DefaultsEndYesterdayAndExplicitValuesAreTaken) {
    const Resultat d = Analyser({"--root", "/tmp/x"});
    ASSERT_EQ(d.analyse, Analyse::Continuer) << d.message;
    EXPECT_EQ(d.options.racine, "/tmp/x");
    EXPECT_EQ(d.options.bases, 1);
    EXPECT_EQ(d.options.stations, 2);
    EXPECT_EQ(d.options.morceaux, 3000);
    EXPECT_EQ(d.options.jours, 365);
    EXPECT_EQ(d.options.annees, 0);
    EXPECT_EQ(d.options.graine, 1u);
    EXPECT_EQ(d.options.fin, (DateTime{2025, 2, 28}));

    const Resultat r =
        Analyser({"--root=/r", "--bases", "3", "--stations", "10", "--tracks", "50000", "--days",
                  "7", "--years", "4", "--end", "2024-02-29", "--seed", "9223372036854775807"});
    ASSERT_EQ(r.analyse, Analyse::Continuer) << r.message;
    EXPECT_EQ(r.options.bases, 3);
    EXPECT_EQ(r.options.stations, 10);
    EXPECT_EQ(r.options.morceaux, 50000);
    EXPECT_EQ(r.options.jours, 7);
    EXPECT_EQ(r.options.annees, 4);
    EXPECT_EQ(r.options.fin, (DateTime{2024, 2, 29}));
    EXPECT_EQ(r.options.graine, 9223372036854775807ULL);

    EXPECT_EQ(Analyser({"--help"}).analyse, Analyse::Aide);
}

TEST(OptionsDemo, WrongValuesAreRefusedWithAFrenchMessageNamingTheOption) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cas = {
        {{"--root", "r", "--tracks", "199"}, "--tracks"},
        {{"--root", "r", "--tracks", "100001"}, "--tracks"},
        {{"--root", "r", "--days", "0"}, "--days"},
        {{"--root", "r", "--days", "douze"}, "--days"},
        {{"--root", "r", "--years", "0"}, "--years"},
        {{"--root", "r", "--years", "21"}, "--years"},
        {{"--root", "r", "--stations", "11"}, "--stations"},
        {{"--root", "r", "--seed", "-1"}, "--seed"},
        {{"--root", "r", "--end", "2025-02-30"}, "--end"},
        {{"--root", "r", "--end", "1999-12-31"}, "--end"},
        {{"--root", "r", "--end", "hier"}, "--end"},
        {{"--tracks", "300"}, "--root"},
        {{"--root", "r", "--pistes", "3"}, "--pistes"},
        {{"--root", "r", "--days"}, "--days"},
    };
    for (const auto& [args, option] : cas) {
        const Resultat r = Analyser(args);
        EXPECT_EQ(r.analyse, Analyse::Erreur) << args.back();
        EXPECT_NE(r.message.find(option), std::string::npos) << r.message;
    }
}

TEST(OptionsDemo, APeriodStartingBefore2000IsRefused) {
    const Resultat r = Analyser({"--root", "r", "--end", "2000-06-30", "--days", "200"});
    EXPECT_EQ(r.analyse, Analyse::Erreur);
    EXPECT_NE(r.message.find("01/01/2000"), std::string::npos) << r.message;
    EXPECT_EQ(Analyser({"--root", "r", "--end", "2000-06-30", "--days", "182"}).analyse,
              Analyse::Continuer);
    // Years of history go back from the last day as well.
    EXPECT_EQ(Analyser({"--root", "r", "--end", "2004-06-30", "--years", "5"}).analyse,
              Analyse::Erreur);
    EXPECT_EQ(Analyser({"--root", "r", "--end", "2004-06-30", "--years", "4"}).analyse,
              Analyse::Continuer);
}

TEST(OptionsDemo, AnInstallationAlreadyUnderTheRootIsKeptWithoutForce) {
    EXPECT_FALSE(Analyser({"--root", "r"}).options.forcer);
    EXPECT_TRUE(Analyser({"--root", "r", "--force"}).options.forcer);
    const std::string racine = test::NewTempDir("zl3demo-force");
    auto lancer = [&](const std::string& extra) {
        std::vector<std::string> args = {ZL3_DEMO_EXE, "--root", racine, "--stations", "1",
                                          "--tracks", "200", "--days", "1", "--end", "2026-10-01"};
        std::istringstream mots(extra);
        for (std::string mot; mots >> mot;)
            args.push_back(mot);
        return test::LancerCommande(args).code;
    };
    ASSERT_EQ(lancer(""), 0);
    sys::SetZelvarRoot(racine);
    const std::string historique =
        sys::WithTrailingSep(sys::NativePath("C:\\BTRieve\\Data\\")) + "FRADA47.bt6";
    const auto avant = std::filesystem::last_write_time(historique);
    EXPECT_EQ(lancer("--seed 2"), 1);
    EXPECT_EQ(std::filesystem::last_write_time(historique), avant);
    EXPECT_EQ(lancer("--seed 2 --force"), 0);
    std::filesystem::remove_all(racine);
}

}  // namespace
}  // namespace zl3::demo
