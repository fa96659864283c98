// The settings store: the four files, their defaults, instances, the colour reset, the look.
#include <sys/stat.h>

#include <algorithm>
#include <map>

#include "Lib_Look.h"
#include "Lib_Positions.h"
#include "Lib_Profile.h"
#include "Lib_Settings.h"
#include "TestSite.h"

namespace zl3 {
namespace {

class ReglagesTest : public test::SiteTest {
  protected:
    std::string Dossier() { return NomDossierSettings(); }
    std::vector<std::string> Fichiers() {
        std::vector<std::string> noms;
        for (const auto& e : std::filesystem::directory_iterator(Dossier()))
            if (e.is_regular_file()) noms.push_back(e.path().filename().string());
        std::sort(noms.begin(), noms.end());
        return noms;
    }
    // Every value different from its default, accented texts included.
    static Options Modifiees(const std::string& racine) {
        Options o;
        o.zl3 = {true, 2500, 1, false, true, 23555};
        for (int i = 0; i < kNbColonnesExport; ++i)
            o.exportation.colonnes[i] = i % 3 == 1;
        for (int i = 0; i < kNbLignesExport; ++i) {
            o.exportation.lignes[i] = i % 2 == 0;
            o.exportation.couleursLignes[i] = RGBCouleur(10 * i, 20, 30 + i);
        }
        o.exportation.dossierExport = racine + "Exports/Été/";
        o.exportation.dossierXML = racine + "Exports/Données XML/";
        o.exportation.xmlActif = true;
        o.exportation.format = 2;
        o.exportation.apresExport = 1;
        for (int i = 0; i < kNbCouleursGrille; ++i)
            o.look.couleurs[i] = RGBCouleur(i, 2 * i, 3 * i);
        o.look.couleursProduits[32] = RGBCouleur(1, 2, 3);
        o.look.couleursProduits[0] = RGBCouleur(4, 5, 6);
        o.look.apparence = 1;
        o.look.affTitre = false;
        o.look.affArtiste = false;
        o.look.ongletHeure = true;
        o.look.taillePolice = 9;
        o.look.nomPolice = "Trébuchet MS";
        o.look.fontBold = true;
        o.look.nomPoliceConducteur = "Courier New";
        o.look.hauteurDouble = true;
        for (int n = 0; n < kNbServeursFTP; ++n) {
            ServeurFTP& e = o.internet.serveurs[n];
            e.serveur = "ftp" + std::to_string(n) + ".radio-côte.fr";
            e.user = "Hélène";
            e.pw = "mot dé passe € " + std::to_string(n);
            e.cnx = 1;
            e.dossier = "/Émissions/Matinale";
            e.retry = 5 + n;
            e.ftps = n % 2 == 0;
        }
        return o;
    }
};

TEST_F(ReglagesTest, EveryFileRoundTripsWithAccentedValues) {
    const Options o = Modifiees(Root());
    ASSERT_TRUE(SauveOptions(o));
    GeometrieFenetre g{300, 450, 12000, 9000, kFenetreNormale, true};
    ASSERT_TRUE(SauveGeometrieFenetre("Frm_Main", g));

    EXPECT_EQ(ChargeOptions(), o);
    const GeometrieFenetre lue = LitGeometrieFenetre("Frm_Main");
    EXPECT_EQ(lue.left, 300);
    EXPECT_EQ(lue.top, 450);
    EXPECT_EQ(lue.width, 12000);
    EXPECT_EQ(lue.height, 9000);
    EXPECT_TRUE(lue.positionLue);
    // Four files, the suite's encoding on disk, flags as the options window's check boxes.
    EXPECT_EQ(Fichiers(), (std::vector<std::string>{
                              "ZL3_Tools_Stats.Ini", "ZL3_Tools_Stats_Excel.Ini",
                              "ZL3_Tools_Stats_Internet.Ini", "ZL3_Tools_Stats_Positions.Ini"}));
    EXPECT_NE(test::ReadFile(FichierSettingsInternet()).find("User=H\xE9l\xE8ne"),
              std::string::npos);
    EXPECT_EQ(ReadProfileString("Colonnes", "Export", "", FichierSettingsExcel()), "01001001001");
    EXPECT_EQ(ReadProfileString("Couleur", "Editorial_Fond", "", FichierSettings()),
              std::to_string(RGBCouleur(22, 44, 66)));

    // A maximised window only updates its state: the last normal size stays in the file.
    g.state = kFenetreMaximisee;
    g.width = 20000;
    ASSERT_TRUE(SauveGeometrieFenetre("Frm_Main", g));
    EXPECT_EQ(LitGeometrieFenetre("Frm_Main").width, 12000);
    EXPECT_EQ(LitGeometrieFenetre("Frm_Main").state, kFenetreMaximisee);
}

TEST_F(ReglagesTest, EmptySettingsFolderGivesDefaultsAndCreatesExportFolders) {
    const Options o = ChargeOptions();
    EXPECT_FALSE(o.zl3.reboot);
    EXPECT_EQ(o.zl3.rebootTempo, 10000);
    EXPECT_EQ(o.zl3.portUDP, 23400);
    EXPECT_EQ(PortUDP(), 23400);
    for (bool b : o.exportation.colonnes)
        EXPECT_TRUE(b);
    for (bool b : o.exportation.lignes)
        EXPECT_TRUE(b);
    EXPECT_FALSE(o.exportation.xmlActif);
    EXPECT_EQ(o.exportation.format, 0);
    const std::string excel = Dossier() + test::N("Export/Excel/");
    const std::string xml = Dossier() + test::N("Export/XML/");
    EXPECT_EQ(o.exportation.dossierExport, excel);
    EXPECT_EQ(o.exportation.dossierXML, xml);
    EXPECT_TRUE(sys::FolderExists(excel));
    EXPECT_TRUE(sys::FolderExists(xml));
    EXPECT_EQ(o.look.taillePolice, 12);
    EXPECT_EQ(o.look.nomPolice, "Arial");
    EXPECT_EQ(o.look.nomPoliceConducteur, "Arial");
    EXPECT_EQ(o.look.apparence, 2);
    EXPECT_EQ(o.look.couleurs[kTV_Fond], RGBCouleur(238, 242, 245));
    EXPECT_EQ(o.look.couleursProduits[32], 6412465);
    EXPECT_EQ(o.internet.serveurs[0].serveur, "");
    EXPECT_EQ(o.internet.serveurs[0].cnx, 0);
    EXPECT_TRUE(Fichiers().empty());  // reading writes nothing

    // "101": columns 1 and 3 on, 2 off, 4 to 11 on; the rows are padded the same way.
    WriteProfileString("Colonnes", "Export", "101", FichierSettingsExcel());
    WriteProfileString("Lignes", "Export", "0", FichierSettingsExcel());
    const SettingsExport e = InitSettingsExport();
    EXPECT_EQ(e.colonnes, (std::array<bool, 11>{true, false, true, true, true, true, true, true,
                                                true, true, true}));
    EXPECT_FALSE(e.lignes[0]);
    EXPECT_TRUE(e.lignes[8]);
}

TEST_F(ReglagesTest, OptionsWindowLoadIsAnnouncedStepByStep) {
    ASSERT_TRUE(SauveOptions(Modifiees(Root())));
    WriteProfileString("General_Out", "NbZones", "4", FichierSettings());
    std::vector<std::string> statuts;
    const ChargementSetup c = ChargeSetup([&](const std::string& s) { statuts.push_back(s); });
    EXPECT_EQ(
        statuts,
        (std::vector<std::string>{
            "Tools Stats: Setup: Init: General", "Tools Stats: Setup: Init: Settings",
            "Tools Stats: Setup: Init: Settings ZL3", "Tools Stats: Setup: Init: SettingsLook",
            "Tools Stats: Setup: Init: SettingsInternet", "Tools Stats: Setup: Init: SettingsExcel",
            "Tools Stats: Setup: Loaded"}));
    EXPECT_EQ(c.options, Modifiees(Root()));
    EXPECT_EQ(c.general.nbZones, 4);
    EXPECT_EQ(TitreSetup(), std::string("Options: Zelvar: Tools Stats - ") + kVersionApplication);
}

TEST_F(ReglagesTest, SecondInstanceTouchesOnlyItsOwnFiles) {
    ASSERT_TRUE(SauveOptions(Modifiees(Root())));
    ASSERT_TRUE(SauveGeometrieFenetre("Frm_Main", {1, 2, 3000, 4000, 0, true}));
    std::map<std::string, std::string> partages;
    for (const std::string& n : Fichiers())
        partages[n] = test::ReadFile(Dossier() + n);

    Etat().instance = 2;
    EXPECT_EQ(ChargeOptions().look.taillePolice, 12);  // not the shared file's 9
    Options o = ChargeOptions();
    o.look.taillePolice = 14;
    o.internet.serveurs[1].pw = "secret-2";
    ASSERT_TRUE(SauveOptions(o));
    ASSERT_TRUE(SauveGeometrieFenetre("Frm_Main", {5, 6, 7000, 8000, 0, true}));
    EXPECT_EQ(ChargeOptions(), o);

    for (const auto& [nom, octets] : partages)
        EXPECT_EQ(test::ReadFile(Dossier() + nom), octets) << nom;
    EXPECT_TRUE(sys::FileExists(Dossier() + "ZL3_Tools_Stats_2_Excel.Ini"));
    EXPECT_EQ(Fichiers().size(), 2 * partages.size());
}

TEST_F(ReglagesTest, ColourResetRestoresGridAndCategoryColoursOnly) {
    EXPECT_EQ(DefaultColor(38), 11829830);
    EXPECT_EQ(DefaultColor(42), 13082737);
    EXPECT_EQ(DefaultColor(50), 0);
    EXPECT_EQ(DefaultColor(-1), 0);

    SettingsLook look = Modifiees(Root()).look;
    look.couleursProduits[33] = RGBCouleur(9, 9, 9);
    CommandRAZCouleurs(look);
    EXPECT_EQ(look.couleurs[kNon_Enregistre_Texte], RGBCouleur(218, 0, 12));
    EXPECT_EQ(look.couleurs[kPromo_Fond], RGBCouleur(251, 230, 200));
    EXPECT_EQ(look.couleurs[kSpotGIE_Texte], DefaultColor(32));
    EXPECT_EQ(look.couleursProduits[32], RGBCouleur(1, 2, 3));  // belongs to SpotGIE_Texte
    EXPECT_EQ(look.couleursProduits[0], DefaultColor(0));
    EXPECT_EQ(look.couleursProduits[33], DefaultColor(33));
    EXPECT_EQ(look.nomPolice, "Trébuchet MS");  // the rest is left alone
}

TEST_F(ReglagesTest, MalformedLinesAndNonNumbersReadAsDocumented) {
    test::WriteFile(FichierSettings(),
                    "garbage without equals\r\n[ListeTV\r\n[ListeTV]\r\nTaillePolice=abc\r\n"
                    "=orphan\r\nNomPolice=\r\n[Couleur]\r\nTV_Fond=rouge\r\nTV_Texte="
                    "999999999999999999999999999\r\n"
                    "Promo_Fond=  255  \r\n[Windows]\r\nRebootTempo=x1\r\nReboot=oui\r\n"
                    "[UDP]\r\nPort=70000\r\n[Tableur]\r\nApparence=7\r\n");
    test::WriteFile(FichierSettingsExcel(),
                    "[Export]\nFormat=xlsx\nApresExport=9\n[Colonnes]\n"
                    "Export=1x0\n[Lignes]\nCouleur_1=blanc\n");
    test::WriteFile(FichierSettingsInternet(), "[ServeurFTP_0]\nCnx=passif\nRetry=-4\n");
    const Options o = ChargeOptions();
    EXPECT_EQ(o.look.taillePolice, 12);
    EXPECT_EQ(o.look.nomPolice, "");  // an empty font name: the fallback applies when drawing
    EXPECT_EQ(CalculeLook(o.look, {"Arial"}, false).policeListes, kPoliceDeSecours);
    EXPECT_EQ(o.look.couleurs[kTV_Fond], 0);
    EXPECT_EQ(o.look.couleurs[kTV_Texte], DefaultColor(8));
    EXPECT_EQ(o.look.couleurs[kPromo_Fond], 255);
    EXPECT_EQ(o.look.apparence, 2);
    EXPECT_EQ(o.zl3.rebootTempo, 10000);
    EXPECT_FALSE(o.zl3.reboot);
    EXPECT_EQ(o.zl3.portUDP, 23400);
    EXPECT_EQ(o.exportation.format, 0);
    EXPECT_EQ(o.exportation.apresExport, 0);
    EXPECT_EQ(o.exportation.colonnes[0], true);
    EXPECT_EQ(o.exportation.colonnes[1], false);
    EXPECT_EQ(o.exportation.colonnes[2], false);
    EXPECT_EQ(o.exportation.couleursLignes[0], 0);
    EXPECT_EQ(o.internet.serveurs[0].cnx, 0);
    EXPECT_EQ(o.internet.serveurs[0].retry, 3);
    EXPECT_TRUE(box.shown.empty());

    // The suite's switches: only the exact text "ON" is on.
    test::WriteFile(FichierSettingsPositions(), "[S]\nA=on\nB=ON\nC=1\n");
    EXPECT_FALSE(LitOnOff("S", "A", true, FichierSettingsPositions()));
    EXPECT_TRUE(LitOnOff("S", "B", false, FichierSettingsPositions()));
    EXPECT_FALSE(LitOnOff("S", "C", true, FichierSettingsPositions()));
    EXPECT_TRUE(LitOnOff("S", "Absent", true, FichierSettingsPositions()));
}

TEST_F(ReglagesTest, PasswordFileIsPrivateAndStaysSo) {
    // A pasted line break cannot add keys to the file.
    SettingsInternet pieges;
    pieges.serveurs[0].pw = "abc\r\n[ServeurFTP_1]\r\nServeur=intrus";
    ASSERT_TRUE(SaveSettingsInternet(pieges));
    EXPECT_EQ(InitSettingsInternet().serveurs[0].pw, "abc  [ServeurFTP_1]  Serveur=intrus");
    EXPECT_EQ(InitSettingsInternet().serveurs[1].serveur, "");
#ifdef _WIN32
    GTEST_SKIP() << "file modes are POSIX's: on Windows the per-user settings folder keeps other "
                    "users out";
#endif
    ASSERT_TRUE(SaveSettingsInternet(Modifiees(Root()).internet));
    auto mode = [](const std::string& f) {
        struct stat st {};
        EXPECT_EQ(stat(f.c_str(), &st), 0) << f;
        return st.st_mode & 0777;
    };
    EXPECT_EQ(mode(FichierSettingsInternet()), 0600u);
    // A file made readable by others (copied from an older installation) is narrowed again.
    std::filesystem::permissions(FichierSettingsInternet(), std::filesystem::perms(0644));
    ASSERT_TRUE(SaveSettingsInternet(SettingsInternet{}));
    EXPECT_EQ(mode(FichierSettingsInternet()), 0600u);
    // Rewriting any ini file keeps the mode it had.
    ASSERT_TRUE(WriteProfileString("S", "K", "1", Root() + "autre.ini"));
    std::filesystem::permissions(Root() + "autre.ini", std::filesystem::perms(0640));
    ASSERT_TRUE(WriteProfileString("S", "K", "2", Root() + "autre.ini"));
    EXPECT_EQ(mode(Root() + "autre.ini"), 0640u);
}

TEST_F(ReglagesTest, UnwritableSettingsAreReportedOnce) {
    Etat().instance = 3;
    std::filesystem::create_directories(FichierSettingsExcel());  // a folder where the file goes
    EXPECT_FALSE(SaveSettingsExport(SettingsExport{}));
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_NE(box.shown[0].request.text.find("ZL3_Tools_Stats_3_Excel.Ini"), std::string::npos);
}

TEST_F(ReglagesTest, LookFollowsOfferedFontsAndTheme) {
    SettingsLook look;
    look.nomPolice = "tahoma";
    look.nomPoliceConducteur = "Inconnue";
    look.apparence = 1;
    const LookGeneral g = CalculeLook(look, {"Arial", "Tahoma"}, false);
    EXPECT_EQ(g.policeListes, "Tahoma");
    EXPECT_EQ(g.policeConducteur, "MS Sans Serif");
    EXPECT_EQ(g.libelleStyle, "Visual + focus");
    EXPECT_EQ(CalculeLook(look, {"Arial"}, true).libelleStyle, "Classique");

    sys::CheckRep(sys::DossierWindows());
    WriteProfileString("ThemeManager", "ThemeActive", "0", sys::FichierTheme());
    WriteProfileString("Tableur", "Apparence", "2", FichierSettings());
    EXPECT_EQ(InitGeneralLook({"Arial"}).style, 0);
    WriteProfileString("ThemeManager", "ThemeActive", "1", sys::FichierTheme());
    EXPECT_EQ(InitGeneralLook({"Arial"}).style, 2);
}

}  // namespace
}  // namespace zl3
