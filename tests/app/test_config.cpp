// Configuration folders, site, bases and stations; settings file names; the command line.
#include "DemoSite.h"
#include "Lib_Config.h"
#include "Lib_Profile.h"
#include "LigneCommande.h"
#include "TestSite.h"

namespace zl3 {
namespace {

class ConfigTest : public test::SiteTest {
  protected:
    std::string WinIni() { return sys::FichierWinIni(); }
    std::string Copie() { return P("C:\\Quorvane\\Zelvar\\Settings\\ZL3_Config.ini"); }
    void Win(const std::string& key, const std::string& value) {
        ASSERT_TRUE(WriteProfileString("Quorvane", key, value, WinIni()));
    }
    void Sys(const std::string& folder, const std::string& section, const std::string& key,
             const std::string& value) {
        ASSERT_TRUE(WriteProfileString(section, key, value, P(folder) + "ZL3_Systeme.ini"));
    }
};

TEST_F(ConfigTest, NoWinIniGivesOneBaseInTheApplicationConfigFolder) {
    DetermineDossierConfig();  // the default folder does not exist: reported, defaults stand
    const Configuration& c = Config();
    EXPECT_FALSE(c.uncActif);
    EXPECT_EQ(c.dossierApplication, P("C:\\Quorvane\\Zelvar\\"));
    EXPECT_EQ(c.dossierConfigGlobal, P("C:\\Quorvane\\Zelvar\\Config\\"));
    EXPECT_EQ(c.nbBase, 1);
    EXPECT_EQ(c.nomRadio, "Nom de la radio");
    ASSERT_EQ(c.bases.size(), 1u);
    EXPECT_EQ(c.bases[0].nbStation, 1);
    EXPECT_EQ(c.bases[0].stations[0].lib, "Station 01");
    EXPECT_EQ(c.bases[0].dossiers[kRepLog], P("C:\\AudioLog\\"));
    EXPECT_EQ(c.bases[0].dossiers[kRepBtr], P("C:\\BTRieve\\Data\\"));
    EXPECT_EQ(c.bases[0].dossiers[kRepLocal], P("C:\\Quorvane\\Zelvar\\"));
    // The copy holds what was resolved.
    EXPECT_EQ(ReadProfileString("Site", "NbBase", "", Copie()), "1");
    // Folders stay in the suite's form in the copy, for the suite's other programs.
    EXPECT_EQ(ReadProfileString("Base_01", "Dossier_Data", "", Copie()), "C:\\BTRieve\\Data\\");
    EXPECT_EQ(ReadProfileString("Base_01", "Dossier_Log", "", Copie()), "C:\\AudioLog\\");
    EXPECT_EQ(ReadProfileString("Base_01_Station_01", "Lib", "", Copie()), "Station 01");
    // The default configuration folder was traced as initialised.
    bool traced = false;
    for (const auto& l : Trace().lines)
        if (l.find("Dossier de config initialisé à '") != std::string::npos) traced = true;
    EXPECT_TRUE(traced);
}

TEST_F(ConfigTest, RelativeAndNulFolderValues) {
    std::string err;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 1}, err)) << err;
    const std::string config = "C:\\Quorvane\\Zelvar\\Config\\";
    // A relative data folder is in the application folder, wherever the tool is started from.
    Sys(config, "Repertoires", "REPBTR", "Donnees\\Base");
    // A value of NUL bytes reads as empty: the default folder.
    Sys(config, "Repertoires", "REPLOG", std::string(3, '\0'));
    ASSERT_TRUE(DetermineDossierConfig());
    const Configuration& c = Config();
    EXPECT_EQ(c.bases[0].dossiers[kRepBtr], P("C:\\Quorvane\\Zelvar\\Donnees\\Base\\"));
    EXPECT_EQ(c.bases[0].dossiers[kRepLog], P("C:\\AudioLog\\"));
}

TEST_F(ConfigTest, DemoSiteResolvesStationsFoldersAndAccents) {
    std::string err;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 3}, err)) << err;
    ASSERT_TRUE(DetermineDossierConfig());
    const Configuration& c = Config();
    EXPECT_EQ(c.nomRadio, "Radio Émeraude");
    ASSERT_EQ(c.bases[0].stations.size(), 3u);
    EXPECT_EQ(c.bases[0].stations[2].lib, "Radio Émeraude Boulogne");
    EXPECT_EQ(c.bases[0].dossiers[kRepSauvegarde], P("C:\\BTRieve\\Backup\\"));
    EXPECT_EQ(c.bases[0].dossiersSons[0][0], P("C:\\Sons\\Mus\\"));
    EXPECT_EQ(c.bases[0].dossiersSons[1][0], P("C:\\Sons\\Jin\\"));
    EXPECT_EQ(c.bases[0].stations[1].dossier, P("C:\\Quorvane\\Zelvar\\Stations\\02\\"));
    EXPECT_TRUE(box.shown.empty());
}

TEST_F(ConfigTest, SeveralBasesEachWithItsOwnFolder) {
    std::string err;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{3, 2}, err)) << err;
    ASSERT_TRUE(DetermineDossierConfig());
    const Configuration& c = Config();
    ASSERT_EQ(c.nbBase, 3);
    EXPECT_EQ(c.bases[1].dossierConfig, P("C:\\Quorvane\\Zelvar\\Config\\Base02\\"));
    EXPECT_EQ(c.bases[1].lib, "Fréquence Côte d'Opale");
    EXPECT_EQ(c.bases[2].dossiers[kRepBtr], P("C:\\BTRieve\\Data\\Base03\\"));
    EXPECT_EQ(ReadProfileString("Base_03", "Dossier_Config_Global", "", Copie()),
              "C:\\Quorvane\\Zelvar\\Config\\Base03\\");
    EXPECT_EQ(ReadProfileString("Base_02_Station_02", "Actif", "", Copie()), "1");
    EXPECT_EQ(DetermineDossierConfig_Bases_Nombre(), 3);
    EXPECT_EQ(DetermineDossierConfig_Bases_Dossier(2), P("C:\\Quorvane\\Zelvar\\Config\\Base02\\"));
    // A licence count below Nb_Base caps the bases.
    Win("Nb_Base_Controle", "2");
    ASSERT_TRUE(DetermineDossierConfig());
    EXPECT_EQ(Config().nbBase, 2);
}

TEST_F(ConfigTest, NetworkSwitchesAreExactAndPerFolder) {
    std::string err;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 1}, err)) << err;
    const std::string cfg = "C:\\Quorvane\\Zelvar\\Config\\";
    Sys(cfg, "UNC_Actif", "REPLOG", "ON");
    Sys(cfg, "UNC_Actif", "REPBTR", "on");                   // lower case is not "ON"
    Sys(cfg, "Repertoires_UNC", "REPLOG", "\\\\SRV\\Logs");  // no trailing separator
    ASSERT_TRUE(DetermineDossierConfig());
    const ConfigBase& b = Config().bases[0];
    EXPECT_EQ(b.dossiers[kRepLog], P("\\\\SRV\\Logs\\"));
    EXPECT_EQ(b.dossiers[kRepLog], Root() + test::N("UNC/SRV/Logs/"));
    EXPECT_EQ(b.dossiers[kRepBtr], P("C:\\BTRieve\\Data\\"));

    // Win.ini's own switch chooses the network configuration folder, again only on "ON".
    Win("UNC_Actif", "On");
    DetermineDossierConfig();
    EXPECT_FALSE(Config().uncActif);
    Win("UNC_Actif", "ON");
    Win("INI_ZELVAR_UNC", "\\\\SERVEUR\\Zelvar\\Config");
    DetermineDossierConfig();
    EXPECT_TRUE(Config().uncActif);
    EXPECT_EQ(Config().dossierConfigGlobal, P("\\\\SERVEUR\\Zelvar\\Config\\"));
    // That folder does not exist on this machine: reported, and the defaults stand.
    bool reported = false;
    for (const auto& shown : box.shown)
        if (shown.request.text.find("Problème avec le dossier '") == 0) reported = true;
    EXPECT_TRUE(reported);
}

TEST_F(ConfigTest, ThemeAdviceShownOnceOnClassicLook) {
    std::string err;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{}, err)) << err;
    ASSERT_TRUE(WriteProfileString("ThemeManager", "ThemeActive", "0", sys::FichierTheme()));
    DetermineDossierConfig();
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text,
              "Le poste utilise le style 'Windows standard'\nPour une avoir une interface "
              "optimisée, nous vous conseillons d'utiliser un style 'Windows XP'\nPour faire le "
              "changement,  cliquez droit sur le bureau de windows et choisissez 'Propriétés'");
    EXPECT_EQ(box.shown[0].request.style, kMbInformation);
    EXPECT_EQ(ReadProfileString("ThemeWindows", "Msg", "", Copie()), "1");
    DetermineDossierConfig();
    EXPECT_EQ(box.shown.size(), 1u);
}

TEST_F(ConfigTest, ConfigFileTracesItsOrigin) {
    std::string err;
    ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{2, 1}, err)) << err;
    EXPECT_EQ(DetermineDossierConfig_Fichier(2),
              P("C:\\Quorvane\\Zelvar\\Config\\Base02\\") + "ZL3_Systeme.ini");
    ASSERT_TRUE(DetermineDossierConfig());
    EXPECT_EQ(DetermineDossierConfig_Fichier(2),
              P("C:\\Quorvane\\Zelvar\\Config\\Base02\\") + "ZL3_Systeme.ini");
    int a = 0, b = 0;
    for (const auto& l : Trace().lines) {
        if (l.find("Dossier_Config_Global: ") != std::string::npos &&
            l.find(" /A") != std::string::npos)
            ++a;
        if (l.find("Dossier_Config_Global: ") != std::string::npos &&
            l.find(" /B") != std::string::npos)
            ++b;
    }
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 1);
}

TEST_F(ConfigTest, SettingsFileNamesWithAndWithoutInstance) {
    const std::string dir = NomDossierSettings();
    EXPECT_EQ(dir, P("C:\\Quorvane\\Zelvar\\Settings\\ZL3_Tools_Stats\\"));
    EXPECT_TRUE(sys::FolderExists(dir + "Histo"));
    EXPECT_EQ(NomFichierSettings("_Positions", ".Ini"), dir + "ZL3_Tools_Stats_Positions.Ini");
    Etat().instance = 2;
    EXPECT_EQ(NomFichierSettings("_Positions", ".Ini"), dir + "ZL3_Tools_Stats_2_Positions.Ini");
    EXPECT_EQ(NomFichierSettings("", ".Ini"), dir + "ZL3_Tools_Stats_2.Ini");
}

TEST_F(ConfigTest, OldSettingsFileMovesToTheSettingsFolder) {
    const std::string app = P("C:\\Quorvane\\Zelvar\\");
    test::WriteFile(app + "ZL3_Tools_Stats.Ini", "[Export]\r\nDossier=x\r\n");
    test::WriteFile(app + "ZL3_Tools_Stats_Positions.Ini", "old");
    test::WriteFile(
        P("C:\\Quorvane\\Zelvar\\Settings\\ZL3_Tools_Stats\\") + "ZL3_Tools_Stats_Positions.Ini",
        "new");
    const std::string dir = NomDossierSettings();
    EXPECT_EQ(test::ReadFile(dir + "ZL3_Tools_Stats.Ini"), "[Export]\r\nDossier=x\r\n");
    EXPECT_FALSE(sys::FileExists(app + "ZL3_Tools_Stats.Ini"));
    // A file already in the new place is not overwritten by the old one.
    EXPECT_EQ(test::ReadFile(dir + "ZL3_Tools_Stats_Positions.Ini"), "new");
}

using CommandLineTest = test::SiteTest;

TEST_F(CommandLineTest, InstanceSwitchesAreClamped) {
    AnalyseChaineCommand("/I=15");
    EXPECT_EQ(Etat().instance, 10);
    AnalyseChaineCommand("/Instance=0");
    EXPECT_EQ(Etat().instance, 1);
    AnalyseChaineCommand("/Instance=3 /I=7");
    EXPECT_EQ(Etat().instance, 3);
    AnalyseChaineCommand("/Instance=x");
    EXPECT_EQ(Etat().instance, 1);
    AnalyseChaineCommand("/Veille=True");
    EXPECT_EQ(Etat().instance, 0);
    bool traced = false;
    for (const auto& l : Trace().lines)
        if (l.find(":----- Command Line: '/Veille=True' -----") != std::string::npos) traced = true;
    EXPECT_TRUE(traced);
}

TEST_F(CommandLineTest, WaitRunsEventsThenAddressStopsAtBlank) {
    Etat().chronoDemarrage = clock.Stopwatch();
    AnalyseChaineCommand("/Wait=2000 /IP=192.168.1.20 /Veille=True");
    EXPECT_EQ(Etat().dureeAttente, 2000);
    EXPECT_GE(clock.Stopwatch() - *Etat().chronoDemarrage, 2000);
    EXPECT_LT(clock.Stopwatch() - *Etat().chronoDemarrage, 2020);
    EXPECT_GT(events.calls, 0);
    EXPECT_EQ(Etat().adresseCible, "192.168.1.20");
    const auto& lines = Trace().lines;
    bool wait = false, ip = false;
    for (const auto& l : lines) {
        wait |= l.find("WaitDuration: 2000") != std::string::npos;
        ip |= l.find("Target IP Address: 192.168.1.20") != std::string::npos;
    }
    EXPECT_TRUE(wait && ip);
    // A wait without digits does not wait.
    const int64_t before = clock.Stopwatch();
    Etat().chronoDemarrage = before;
    AnalyseChaineCommand("/Wait=abc");
    EXPECT_EQ(clock.Stopwatch(), before);
}

TEST_F(CommandLineTest, BlankDatagramKeepsTheLastActiveSocket) {
    SocketUDP_DataArrival(2, "PLAY");
    SocketUDP_DataArrival(3, "   ");
    EXPECT_EQ(Etat().dernierSocketActif, 2);
    SocketUDP_Error(1, 10054, "Connexion réinitialisée");
    EXPECT_NE(Trace().lines.back().find(
                  "UDP: Err: Socket # 1: Err: 10054 Connexion réinitialisée | SocketUDP"),
              std::string::npos);
}

TEST_F(CommandLineTest, PathMappingUnderTheRoot) {
    EXPECT_EQ(sys::NativePath("C:\\AudioLog\\"), Root() + test::N("C/AudioLog/"));
    EXPECT_EQ(sys::NativePath("d:\\Sons"), Root() + test::N("D/Sons"));
    EXPECT_EQ(sys::NativePath("\\\\SRV\\share\\x\\"), Root() + test::N("UNC/SRV/share/x/"));
    EXPECT_EQ(sys::NativePath(Root() + test::N("already/native/")), Root() + test::N("already/native/"));
    EXPECT_EQ(sys::WithTrailingSep(test::N("/a/b")), test::N("/a/b/"));
    EXPECT_EQ(sys::WithTrailingSep(test::N("/a/b//")), test::N("/a/b/"));
    EXPECT_EQ(sys::DossierWindows(), Root() + test::N("C/Windows/"));
    EXPECT_EQ(sys::DossierApplication(), Root() + test::N("C/Quorvane/Zelvar/"));
}

}  // namespace
}  // namespace zl3
