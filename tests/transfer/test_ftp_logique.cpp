// The logic of the FTP browser and of the update download, and zl3-ftp, against pyftpdlib.
#include <sys/wait.h>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "Download.h"
#include "Etat.h"
#include "FtpTest.h"
#include "Lib_Web.h"
#include "SetupFTPUpload.h"

namespace zl3::test {
namespace fs = std::filesystem;

class NavigateurFtp : public FtpTest {
  protected:
    void Ouvrir(LogiqueSetupFTPUpload& n) {
        n.Form_Load();
        n.OptionCnx_Click(1);
        n.TxtServer = serveur_->Adresse();
        n.TxtUser = kUtilisateur;
        n.TxtPassword = kMotDePasse;
        n.dossierTelechargement = local_;
        n.Ftp().SetDelaiReseau(60000);
    }
    static int Ligne(const LogiqueSetupFTPUpload& n, const std::string& nom) {
        for (size_t i = 0; i < n.lv.size(); ++i)
            if (n.lv[i].nom == nom) return static_cast<int>(i);
        return -1;
    }
};

TEST_F(NavigateurFtp, RowsNavigationTransfersAndDelete) {
    fs::create_directories(racine_ + "jingles/plein");
    WriteFile(racine_ + "jingles/plein/x.txt", "x");
    WriteFile(racine_ + "a.txt", "hello!");
    Demarrer();
    LogiqueSetupFTPUpload n;
    Ouvrir(n);
    EXPECT_EQ(n.Ftp().TransferType(), cFTP::kTransferBinary);
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kConnecter);
    ASSERT_TRUE(n.Connecte());
    EXPECT_EQ(n.TextDossierFTP, "/");
    ASSERT_EQ(n.lv.size(), 3u);
    EXPECT_EQ(n.lv[0].nom, "..");
    EXPECT_EQ(n.lv[0].colonne1, "<Dossier>");
    EXPECT_EQ(n.lv[0].colonne3, " - - D - - - - - -");
    const auto& dossier = n.lv[static_cast<size_t>(Ligne(n, "jingles"))];
    EXPECT_EQ(dossier.colonne1, "<Dossier>");
    EXPECT_TRUE(dossier.dossier);
    const auto& fichier = n.lv[static_cast<size_t>(Ligne(n, "a.txt"))];
    EXPECT_EQ(fichier.colonne1, "6");
    EXPECT_EQ(fichier.colonne2.size(), 19u);
    EXPECT_EQ(fichier.colonne3, LogiqueSetupFTPUpload::TexteAttributs(128));
    EXPECT_EQ(LogiqueSetupFTPUpload::TexteAttributs(16 + 32 + 1), " A - D - - - R - -");

    n.lv_DblClick(Ligne(n, "jingles"));
    EXPECT_EQ(n.TextDossierFTP, "/jingles");
    n.lv_DblClick(0);
    EXPECT_EQ(n.TextDossierFTP, "/");
    n.lv_DblClick(0);  // ".." at the root
    EXPECT_EQ(n.TextDossierFTP, "/");
    EXPECT_EQ(n.lv.size(), 3u);
    EXPECT_EQ(LignesErreur(), 0);
    n.lv_DblClick(Ligne(n, "a.txt"));
    EXPECT_EQ(n.TextFichierFTP, "a.txt");

    // Upload into the target folder: a 300-byte file is two chunks, two pauses of 100 ms.
    WriteFile(local_ + "spot.bin", Octets(300));
    n.TxtFichier = local_ + "spot.bin";
    n.TextDossierCible = "jingles";
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kEnvoyer);
    EXPECT_EQ(ReadFile(racine_ + "jingles/spot.bin"), Octets(300));
    EXPECT_TRUE(TraceContient("FTP: Upload: spot.bin: upload in: 0.20 s. (Size: 300 octets)"));
    EXPECT_EQ(n.TextDossierFTP, "/jingles");
    EXPECT_NE(Ligne(n, "spot.bin"), -1);
    WriteFile(local_ + "vide.bin", "");
    n.TxtFichier = local_ + "vide.bin";
    n.TextDossierCible = "";
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kEnvoyer);
    EXPECT_TRUE(TraceContient("FTP: Upload: vide.bin: upload in: 0.00 s. (Size: 0 octets)"));

    // Download of the selected row into the local folder.
    fs::remove(local_ + "spot.bin");
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kRecevoir, Ligne(n, "spot.bin"));
    EXPECT_EQ(ReadFile(local_ + "spot.bin"), Octets(300));
    EXPECT_TRUE(TraceContient("FTP: Download: spot.bin: download in: 0.00 s."));

    // Delete: the question, then a folder that is not empty stays with the server's reply.
    box.Script(kIdYes);
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kSupprimer, Ligne(n, "plein"));
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text, "Voulez-vous supprimer 'plein' ?");
    EXPECT_EQ(box.shown[0].request.style, kMbYesNo + kMbCritical);
    EXPECT_TRUE(TraceContient("----- Err: FTP: Delete: 550 "));
    EXPECT_NE(Ligne(n, "plein"), -1);
    box.Script(kIdNo);
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kSupprimer, Ligne(n, "spot.bin"));
    EXPECT_TRUE(fs::exists(racine_ + "jingles/spot.bin"));
    box.Script(kIdYes);
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kSupprimer, Ligne(n, "spot.bin"));
    EXPECT_FALSE(fs::exists(racine_ + "jingles/spot.bin"));
    EXPECT_EQ(Ligne(n, "spot.bin"), -1);

    const EntreeFTPChoisie e = [&] {
        n.LabelOrigine = "3";
        return n.CommandTransferer_Click();
    }();
    EXPECT_EQ(e.origine, 3);
    EXPECT_EQ(e.serveur, serveur_->Adresse());
    EXPECT_EQ(e.mode, 1);
    EXPECT_EQ(e.dossier, "/jingles");
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kDeconnecter);
    EXPECT_FALSE(n.Connecte());
    EXPECT_TRUE(n.lv.empty());
    EXPECT_FALSE(SecretDansTrace());
}

TEST_F(NavigateurFtp, PickModeFailedConnectAndBusySession) {
    WriteFile(racine_ + "a.txt", "a");
    Demarrer();
    LogiqueSetupFTPUpload n;
    Ouvrir(n);
    n.TxtPassword = "faux";
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kConnecter);
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text, "Connexion impossible");
    EXPECT_EQ(box.shown[0].request.style, kMbCritical);
    EXPECT_FALSE(n.Connecte());

    n.TxtPassword = kMotDePasse;
    n.TextDossierFTP = "/";
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kConnecter);
    ASSERT_TRUE(n.Connecte());
    // A click while the upload lets events through is refused; the session is not disturbed.
    WriteFile(local_ + "gros.bin", Octets(1000));
    n.TxtFichier = local_ + "gros.bin";
    int refus = 0;
    events.onEvents = [&] {
        n.CommandFTP_Click(LogiqueSetupFTPUpload::kSupprimer, 1);
        int64_t t = 0;
        if (!n.Ftp().FTPDownloadFile("a.txt", local_ + "a.txt", t) &&
            n.Ftp().LastErrorNumber() == 12110)
            ++refus;
    };
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kEnvoyer);
    events.onEvents = nullptr;
    EXPECT_EQ(box.shown.size(), 1u);  // no delete question meanwhile
    EXPECT_EQ(refus, 4);
    EXPECT_EQ(ReadFile(racine_ + "gros.bin"), Octets(1000));

    std::string choisi;
    n.onFichierChoisi = [&](const std::string& nom) { choisi = nom; };
    n.LabelOrigine = "0";
    n.LabelNocartouche = "2";
    n.CommandFTP_Click(LogiqueSetupFTPUpload::kRecevoir, Ligne(n, "a.txt"));
    EXPECT_EQ(choisi, "a.txt");
    EXPECT_EQ(n.TextFichierFTP, "a.txt");
    EXPECT_FALSE(n.Connecte());
    EXPECT_TRUE(n.lv.empty());
    EXPECT_FALSE(fs::exists(local_ + "a.txt"));
}

class DownloadFtp : public FtpTest {};

TEST_F(DownloadFtp, FolderNormalisation) {
    EXPECT_EQ(NormaliseDossierFTP("/"), "/");
    EXPECT_EQ(NormaliseDossierFTP("musique"), "/musique/");
    EXPECT_EQ(NormaliseDossierFTP("/maj//base/"), "/maj/base/");
    EXPECT_EQ(NormaliseDossierFTP("//maj"), "/maj/");
}

TEST_F(DownloadFtp, ReadsBy1024IntoTheLocalFolder) {
    fs::create_directories(racine_ + "maj/sous-dossier");
    WriteFile(racine_ + "maj/FRAD022.bt6", Octets(2048));
    WriteFile(racine_ + "maj/notes.txt", Octets(1500));
    Demarrer();
    for (int mode : {0, 1}) {
        SCOPED_TRACE(mode);
        fs::remove_all(local_);
        fs::create_directories(local_);
        LogiqueDownload d;
        d.Form_Load();
        d.TxtServer = serveur_->Adresse();
        d.TxtUser = kUtilisateur;
        d.TxtPassword = kMotDePasse;
        d.OptionCnx = mode;
        d.TextDossierFTP = "maj";
        d.dossierLocal = local_;
        ASSERT_TRUE(d.ConnectDownload());
        EXPECT_EQ(d.TextDossierFTP, "/maj/");
        ASSERT_TRUE(d.LectureDesFichiersSurServeurFTP());
        ASSERT_EQ(d.ListeTemporaire.size(), 2u);  // the plain folder is left out
        std::map<std::string, std::vector<int64_t>> lectures;
        std::string enCours;
        d.onLecture = [&](int64_t n) {
            lectures[d.TexteFichierEnCours.substr(0, d.TexteFichierEnCours.find(' '))].push_back(n);
        };
        EXPECT_TRUE(d.FTPDownload());
        EXPECT_EQ(lectures["FRAD022.bt6"], (std::vector<int64_t>{1024, 1024, 0}));
        EXPECT_EQ(lectures["notes.txt"], (std::vector<int64_t>{1024, 476}));
        EXPECT_EQ(d.LabelPourcentage, "100%");
        EXPECT_EQ(ReadFile(local_ + "FRAD022.bt6"), Octets(2048));
        EXPECT_EQ(ReadFile(local_ + "notes.txt"), Octets(1500));
        EXPECT_EQ(d.fichiersRecus, 2);
        EXPECT_TRUE(TraceContient("FTP: Connection to the server: " + serveur_->Adresse()));
        EXPECT_TRUE(TraceContient("FTP: Start download"));
        EXPECT_TRUE(TraceContient("FTP: Download file: FRAD022.bt6 Date: "));
        EXPECT_TRUE(TraceContient(" Size: 2 Ko"));
        EXPECT_TRUE(TraceContient("FTP: Download:'/maj/notes.txt'"));
        EXPECT_TRUE(TraceContient(" Size: 3548 octets Receipt: 3548 octets Duration: "));
        EXPECT_TRUE(TraceContient("FTP: Download done"));
        d.Deconnexion();
    }
    EXPECT_EQ(LogiqueDownload::Pourcentage(100.0 / 3.0), "33.333");
    EXPECT_EQ(LogiqueDownload::Pourcentage(0.0012345), "0.0012345");

    LogiqueDownload d;
    d.TxtServer = serveur_->Adresse();
    d.TxtUser = kUtilisateur;
    d.TxtPassword = kMotDePasse;
    d.TextDossierFTP = "absent";
    ASSERT_TRUE(d.ConnectDownload());
    EXPECT_FALSE(d.LectureDesFichiersSurServeurFTP());
    EXPECT_TRUE(d.ListeTemporaire.empty());
    EXPECT_TRUE(TraceContient("Err: 12003: 550 "));
    EXPECT_FALSE(SecretDansTrace());
}

// zl3-ftp: exit codes 2 (usage), 1 (failure), 0, and the same work as the windows.
TEST_F(DownloadFtp, CommandLine) {
    fs::create_directories(racine_ + "maj");
    WriteFile(racine_ + "maj/a.bin", Octets(3000));
    Demarrer();
    const std::string exe = ZL3_FTP_EXE;
    const std::string base = exe + " --server " + serveur_->Adresse() +
                             " --user radio --password '" + kMotDePasse + "' --timeout 60 ";
    auto lancer = [&](const std::string& args) {
        const int r =
            std::system((args + " >" + Root() + "out.txt 2>" + Root() + "err.txt").c_str());
        return WIFEXITED(r) ? WEXITSTATUS(r) : -1;
    };
    EXPECT_EQ(lancer(exe + " --list /"), 2);
    EXPECT_EQ(lancer(base + "--list / --put x"), 2);
    EXPECT_EQ(lancer(base + "--download maj"), 2);
    EXPECT_EQ(lancer(base + "--list /"), 0);
    EXPECT_NE(ReadFile(Root() + "out.txt").find("maj\t<Dossier>"), std::string::npos);
    EXPECT_EQ(lancer(base + "--download maj --local " + local_), 0);
    EXPECT_EQ(ReadFile(local_ + "a.bin"), Octets(3000));
    WriteFile(local_ + "envoi.bin", Octets(700));
    EXPECT_EQ(lancer(base + "--passive --put " + local_ + "envoi.bin --dir maj"), 0);
    EXPECT_EQ(ReadFile(racine_ + "maj/envoi.bin"), Octets(700));
    EXPECT_EQ(lancer(base + "--list absent"), 1);
    EXPECT_NE(ReadFile(Root() + "err.txt").find("550"), std::string::npos);
    EXPECT_EQ(
        lancer(exe + " --server " + serveur_->Adresse() + " --user radio --password bad --list /"),
        1);
    EXPECT_NE(ReadFile(Root() + "err.txt").find("12014"), std::string::npos);
}

}  // namespace zl3::test
