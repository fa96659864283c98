// The options window and the colour chooser, headless: the controls load the settings, OK writes
// what was changed through them, "Annuler" writes nothing, the reset restores the grid and
// category colours. The dialogs behind the colour and folder buttons are replaced.
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>

#include <fstream>
#include <sstream>

#include "DemoSite.h"
#include "FrmColorPicker.h"
#include "FrmSetup.h"
#include "Lib_Profile.h"
#include "Lib_Systeme.h"
#include "TestSite.h"

namespace zl3::gui {
namespace {

std::string Contenu(const std::string& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

class FrmSetupTest : public test::SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        std::string erreur;
        ASSERT_TRUE(CreerSiteDemo(OptionsSiteDemo{1, 1}, erreur)) << erreur;
        fenetre = std::make_unique<FrmSetup>();
        fenetre->choisirCouleur = [this](QWidget*, int32_t) { return couleurChoisie; };
        fenetre->Form_Load();
    }
    void TearDown() override {
        fenetre.reset();
        SiteTest::TearDown();
    }
    template <class T>
    T* Controle(const char* nom) {
        T* c = fenetre->findChild<T*>(nom);
        EXPECT_NE(c, nullptr) << nom;
        return c;
    }
    void Cliquer(const char* nom) { Controle<QAbstractButton>(nom)->click(); }
    std::string Lire(const char* section, const char* cle, const std::string& fichier) {
        return ReadProfileString(section, cle, "?", fichier);
    }
    std::unique_ptr<FrmSetup> fenetre;
    std::optional<int32_t> couleurChoisie;
};

TEST_F(FrmSetupTest, ControlsChangedAndSavedWriteTheirKeys) {
    EXPECT_EQ(fenetre->windowTitle().toStdString(), TitreSetup());
    ASSERT_EQ(fenetre->Statuts().size(), 7u);
    EXPECT_EQ(fenetre->Statuts().front(), "Tools Stats: Setup: Init: General");
    EXPECT_EQ(fenetre->Statuts().back(), "Tools Stats: Setup: Loaded");
    // No FTP browser yet: its buttons are off.
    EXPECT_FALSE(Controle<QPushButton>("CommandFTP_0")->isEnabled());

    std::vector<int> taillesVues;
    fenetre->apercuLook = [&](const SettingsLook& l) { taillesVues.push_back(l.taillePolice); };
    Controle<QSpinBox>("TexteTaillePolice")->setValue(14);
    EXPECT_EQ(taillesVues, std::vector<int>{14});  // shown at once, not only after saving
    Controle<QCheckBox>("CheckColonne_2")->setChecked(false);
    Controle<QCheckBox>("CheckLigne_9")->setChecked(false);
    Controle<QLineEdit>("TexteServeur_1")->setText("ftp.radio-été.fr");
    Controle<QLineEdit>("TextePW_1")->setText("mot dé passe");
    const std::string dossier = sys::WithTrailingSep(sys::ZelvarRoot()) + "Exports";
    fenetre->choisirDossier = [&](QWidget*, const std::string&) {
        return std::optional<std::string>(dossier);
    };
    Cliquer("CommandDossierExport");
    couleurChoisie = RGBCouleur(1, 2, 3);
    Cliquer("Promo_Texte");
    Cliquer("CommandOK");

    EXPECT_EQ(fenetre->result(), QDialog::Accepted);
    const std::string main = FichierSettings();
    EXPECT_EQ(Lire("ListeTV", "TaillePolice", main), "14");
    EXPECT_EQ(Lire("Couleur", "Promo_Texte", main), std::to_string(RGBCouleur(1, 2, 3)));
    EXPECT_EQ(Lire("Colonnes", "Export", FichierSettingsExcel()), "10111111111");
    EXPECT_EQ(Lire("Lignes", "Export", FichierSettingsExcel()), "111111110");
    EXPECT_EQ(InitSettingsExport().dossierExport, sys::WithTrailingSep(dossier));
    EXPECT_TRUE(sys::FolderExists(dossier));
    EXPECT_EQ(Lire("ServeurFTP_1", "Serveur", FichierSettingsInternet()), "ftp.radio-été.fr");
    EXPECT_EQ(Lire("ServeurFTP_1", "PW", FichierSettingsInternet()), "mot dé passe");
    // Loaded again, the window shows what was saved.
    FrmSetup autre;
    autre.Form_Load();
    EXPECT_EQ(autre.findChild<QSpinBox*>("TexteTaillePolice")->value(), 14);
    EXPECT_FALSE(autre.findChild<QCheckBox*>("CheckColonne_2")->isChecked());
}

TEST_F(FrmSetupTest, CancelWritesNoSetting) {
    const std::string fichiers[] = {FichierSettings(), FichierSettingsExcel(),
                                    FichierSettingsInternet()};
    std::vector<std::string> avant;
    for (const auto& f : fichiers)
        avant.push_back(Contenu(f));
    Controle<QSpinBox>("TexteTaillePolice")->setValue(20);
    Controle<QCheckBox>("CheckReboot")->toggle();
    Controle<QLineEdit>("TexteUser_0")->setText("regie");
    couleurChoisie = RGBCouleur(9, 9, 9);
    Cliquer("TV_Fond");
    Cliquer("CommandAnnuler");
    EXPECT_EQ(fenetre->result(), QDialog::Rejected);
    for (size_t i = 0; i < std::size(fichiers); ++i)
        EXPECT_EQ(Contenu(fichiers[i]), avant[i]) << fichiers[i];
}

TEST_F(FrmSetupTest, ResetRestoresGridAndCategoryColours) {
    couleurChoisie = kNoir + 1;
    for (const char* boite : {"Non_Enregistre_Texte", "Promo_Fond", "TexteCouleur_00"})
        Cliquer(boite);
    Cliquer("CommandRAZCouleurs");
    Cliquer("CommandOK");
    const std::string main = FichierSettings();
    EXPECT_EQ(Lire("Couleur", "Non_Enregistre_Texte", main),
              std::to_string(RGBCouleur(218, 0, 12)));
    EXPECT_EQ(Lire("Couleur", "Promo_Fond", main), std::to_string(RGBCouleur(251, 230, 200)));
    EXPECT_EQ(Lire("CouleurProduit", "Idx_00", main), std::to_string(DefaultColor(0)));

    // The chooser: a palette colour is chosen with one click; the custom parts otherwise.
    FrmColorPicker choix(RGBCouleur(10, 20, 30));
    EXPECT_EQ(choix.Couleur(), RGBCouleur(10, 20, 30));
    choix.findChild<QToolButton*>("Palette_38")->click();
    EXPECT_EQ(choix.result(), QDialog::Accepted);
    EXPECT_EQ(choix.Couleur(), 11829830);
}

}  // namespace
}  // namespace zl3::gui
