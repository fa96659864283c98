// The FTP browser and the update download windows, headless, against pyftpdlib on the loopback:
// controls wired to the logic, buttons off while a transfer lets events through, the values
// handed back to an FTP entry, a folder downloaded into the data folder.
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>

#include <filesystem>

#include "FrmDownload.h"
#include "FrmSetupFTPUpload.h"
#include "FtpTest.h"
#include "Lib_Data_Pervasive.h"
#include "NavigateurFTP.h"

namespace zl3::gui {
namespace {
namespace fs = std::filesystem;
using test::kMotDePasse;
using test::kUtilisateur;
using test::ReadFile;
using test::WriteFile;

class FenetresFtp : public test::FtpTest {
  protected:
    template <class T>
    static T* Controle(QWidget& w, const char* nom) {
        T* c = w.findChild<T*>(nom);
        EXPECT_NE(c, nullptr) << nom;
        return c;
    }
    static QPushButton* Bouton(QWidget& w, const char* nom) {
        return Controle<QPushButton>(w, nom);
    }
    static int Ligne(QTreeWidget* lv, const QString& nom) {
        for (int i = 0; i < lv->topLevelItemCount(); ++i)
            if (lv->topLevelItem(i)->text(0) == nom) return i;
        return -1;
    }
    // Runs `pas` on the modal window once it is open.
    static void SurFenetreModale(std::function<void(FrmSetupFTPUpload&)> pas) {
        QTimer::singleShot(0, [pas] {
            auto* f = qobject_cast<FrmSetupFTPUpload*>(QApplication::activeModalWidget());
            ASSERT_NE(f, nullptr);
            f->Logique().Ftp().SetDelaiReseau(60000);
            pas(*f);
        });
    }
};

TEST_F(FenetresFtp, BrowserListsWalksKeepsItsSessionDuringAnUploadAndHandsItsValuesBack) {
    fs::create_directories(racine_ + "jingles");
    WriteFile(racine_ + "a.txt", "hello!");
    Demarrer();
    {
        FrmSetupFTPUpload w;
        w.Charger(serveur_->Adresse(), kUtilisateur, kMotDePasse, 1, "", false, 0);
        w.Logique().Ftp().SetDelaiReseau(60000);
        auto* lv = Controle<QTreeWidget>(w, "lv");
        auto* dossier = Controle<QLineEdit>(w, "TextDossierFTP");
        EXPECT_FALSE(Bouton(w, "CommandFTP_4")->isEnabled());  // nothing to delete yet
        Bouton(w, "CommandFTP_0")->click();
        ASSERT_TRUE(w.Logique().Connecte());
        EXPECT_EQ(dossier->text(), "/");
        ASSERT_EQ(lv->topLevelItemCount(), 3);
        EXPECT_EQ(lv->topLevelItem(0)->text(0), "..");
        EXPECT_EQ(lv->topLevelItem(0)->text(1), "<Dossier>");
        EXPECT_EQ(lv->topLevelItem(0)->text(3), " - - D - - - - - -");
        const int fichier = Ligne(lv, "a.txt");
        ASSERT_NE(fichier, -1);
        EXPECT_EQ(lv->topLevelItem(fichier)->text(1), "6");
        EXPECT_EQ(lv->topLevelItem(fichier)->text(3), " - - - - N - - - -");

        // Into the folder and back by double-click.
        emit lv->itemDoubleClicked(lv->topLevelItem(Ligne(lv, "jingles")), 0);
        EXPECT_EQ(dossier->text(), "/jingles");
        EXPECT_EQ(lv->topLevelItemCount(), 1);
        emit lv->itemDoubleClicked(lv->topLevelItem(0), 0);
        EXPECT_EQ(dossier->text(), "/");

        // An upload of three chunks lets events through three times: the buttons are off, and a
        // delete or a new file name arriving meanwhile changes nothing.
        WriteFile(local_ + "spot.bin", Octets(700));
        Controle<QLineEdit>(w, "TxtFichier")->setText(QString::fromStdString(local_ + "spot.bin"));
        Controle<QLineEdit>(w, "TextDossierCible")->setText("jingles");
        int tours = 0, boutonsActifs = 0;
        events.onEvents = [&] {
            ++tours;
            for (int i = 0; i < 6; ++i)
                if (Bouton(w, qPrintable(QStringLiteral("CommandFTP_%1").arg(i)))->isEnabled())
                    ++boutonsActifs;
            Controle<QLineEdit>(w, "TxtFichier")->setText("autre.bin");
            lv->setCurrentItem(lv->topLevelItem(0));
            w.CommandFTP_Click(LogiqueSetupFTPUpload::kSupprimer);
            w.lv_DblClick(0);
        };
        Bouton(w, "CommandFTP_2")->click();
        events.onEvents = nullptr;
        EXPECT_EQ(tours, 3);
        EXPECT_EQ(boutonsActifs, 0);
        EXPECT_TRUE(box.shown.empty());
        EXPECT_EQ(ReadFile(racine_ + "jingles/spot.bin"), Octets(700));
        EXPECT_EQ(dossier->text(), "/jingles");
        EXPECT_NE(Ligne(lv, "spot.bin"), -1);
        EXPECT_TRUE(Bouton(w, "CommandFTP_4")->isEnabled());
    }

    // From an FTP entry: connect, walk up, hand back; closing instead leaves the entry alone.
    ServeurFTP entree{serveur_->Adresse(), kUtilisateur, kMotDePasse, 1, "jingles", 3, false};
    SurFenetreModale([](FrmSetupFTPUpload& f) {
        Bouton(f, "CommandFTP_0")->click();
        f.lv_DblClick(0);
        Controle<QLineEdit>(f, "TxtUser")->setText("autre");
        Bouton(f, "CommandTransferer")->click();
    });
    EXPECT_TRUE(OuvrirNavigateurFTP(nullptr, entree));
    EXPECT_EQ(entree.dossier, "/");
    EXPECT_EQ(entree.user, "autre");
    EXPECT_EQ(entree.pw, kMotDePasse);
    EXPECT_EQ(entree.cnx, 1);
    EXPECT_EQ(entree.retry, 3);
    const ServeurFTP avant = entree;
    SurFenetreModale([](FrmSetupFTPUpload& f) {
        Controle<QLineEdit>(f, "TextDossierFTP")->setText("/jingles");
        Bouton(f, "CommandFermer")->click();
    });
    EXPECT_FALSE(OuvrirNavigateurFTP(nullptr, entree));
    EXPECT_EQ(entree, avant);
    EXPECT_FALSE(SecretDansTrace());
}

TEST_F(FenetresFtp, BrowserPickModeHandsTheFileNameAndCloses) {
    WriteFile(racine_ + "a.txt", "a");
    Demarrer();
    FrmSetupFTPUpload w;
    w.Charger(serveur_->Adresse(), kUtilisateur, kMotDePasse, 0, "/", false);
    w.ModeChoix(0, 2);
    w.Logique().Ftp().SetDelaiReseau(60000);
    std::string choisi;
    w.onFichierChoisi = [&](const std::string& nom) { choisi = nom; };
    w.show();
    Bouton(w, "CommandFTP_0")->click();
    auto* lv = Controle<QTreeWidget>(w, "lv");
    lv->setCurrentItem(lv->topLevelItem(Ligne(lv, "a.txt")));
    Bouton(w, "CommandFTP_3")->click();
    EXPECT_EQ(choisi, "a.txt");
    EXPECT_EQ(w.result(), QDialog::Accepted);
    EXPECT_FALSE(w.isVisible());
    EXPECT_FALSE(w.Logique().Ftp().IsOpenConnection());
}

TEST_F(FenetresFtp, DownloadFetchesAFolderIntoTheDataFolderShowingItsProgress) {
    fs::create_directories(racine_ + "maj/sous-dossier");
    WriteFile(racine_ + "maj/FRAD022.bt6", Octets(2048));
    WriteFile(racine_ + "maj/notes.txt", Octets(1500));
    Demarrer();
    DefinirDossierData(local_);
    FrmDownload f;
    f.Charger(serveur_->Adresse(), kUtilisateur, kMotDePasse, 1, "maj", false);
    f.Logique().delaiMs = 60000;
    f.show();
    auto* pourcentage = Controle<QLabel>(f, "LabelPourcentage");
    auto* enCours = Controle<QLabel>(f, "TexteFichierEnCours");
    QStringList vus;
    int refus = 0;
    events.onEvents = [&] {
        vus << pourcentage->text() + " " + enCours->text();
        if (!Bouton(f, "CommandDownload")->isEnabled()) ++refus;
        f.close();  // refused while the download runs
        if (!f.isVisible()) --refus;
    };
    EXPECT_TRUE(Bouton(f, "CommandDownload")->isEnabled());
    EXPECT_TRUE(f.CommandDownload_Click());
    events.onEvents = nullptr;
    EXPECT_EQ(ReadFile(local_ + "FRAD022.bt6"), Octets(2048));
    EXPECT_EQ(ReadFile(local_ + "notes.txt"), Octets(1500));
    ASSERT_FALSE(vus.isEmpty());
    EXPECT_EQ(refus, vus.size());
    // The first read of the 2048-byte file is half of it, shown with its speed.
    int moitie = 0;
    for (const QString& v : vus)
        if (v.startsWith("50% FRAD022.bt6 (") && v.endsWith(" Ko/s)")) ++moitie;
    EXPECT_EQ(moitie, 1) << vus.join("\n").toStdString();
    EXPECT_EQ(pourcentage->text(), "100%");
    EXPECT_EQ(Controle<QLineEdit>(f, "TextDossierFTP")->text(), "/maj/");
    EXPECT_EQ(Controle<QTreeWidget>(f, "ListeTemporaire")->topLevelItemCount(), 2);
    const QString resume = Controle<QLabel>(f, "LabelResume")->text();
    EXPECT_TRUE(resume.startsWith("Speed: ")) << resume.toStdString();
    EXPECT_TRUE(resume.contains("Size: 3548 octets Receipt: 3548 octets Duration: "));
    auto* trace = Controle<QListWidget>(f, "ListeTrace");
    ASSERT_GT(trace->count(), 0);
    EXPECT_TRUE(trace->item(trace->count() - 1)->text().contains("FTP: Download done"));
    EXPECT_TRUE(Bouton(f, "CommandDownload")->isEnabled());
    f.close();
    EXPECT_FALSE(f.isVisible());
}

}  // namespace
}  // namespace zl3::gui
