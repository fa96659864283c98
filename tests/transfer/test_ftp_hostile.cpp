// Servers that list other formats, send hostile names or never stop talking (a scripted server
// on the loopback).
#include <chrono>
#include <filesystem>

#include "Download.h"
#include "Etat.h"
#include "FtpTest.h"

namespace zl3::test {
namespace fs = std::filesystem;

class ServeurHostile : public FtpTest {};

TEST_F(ServeurHostile, TraversalNamesNeverLeaveTheLocalFolder) {
    Demarrer("liste-mlsd");
    LogiqueDownload d;
    d.TxtServer = serveur_->Adresse();
    d.TxtUser = "u";
    d.TxtPassword = "p";
    d.TextDossierFTP = "/";
    d.dossierLocal = local_;
    ASSERT_TRUE(d.ConnectDownload());
    ASSERT_TRUE(d.LectureDesFichiersSurServeurFTP());
    std::vector<std::string> noms;
    for (const auto& l : d.ListeTemporaire)
        noms.push_back(l.nom);
    // The folder with attributes 16 + 32 is listed like a file; the plain folder is not.
    EXPECT_EQ(noms,
              (std::vector<std::string>{"ok.txt", "../evil1.txt", "..\\evil2.txt", "C:evil3.txt",
                                        "sub/evil4.txt", "bad\x01name.txt", "dir48"}));
    EXPECT_FALSE(d.FTPDownload());
    EXPECT_EQ(d.fichiersRecus, 1);
    EXPECT_EQ(ReadFile(local_ + "ok.txt"), std::string(10, 'x'));
    for (const char* n :
         {"../evil1.txt", "..\\evil2.txt", "C:evil3.txt", "sub/evil4.txt", "bad?name.txt"})
        EXPECT_TRUE(TraceContient("----- Err: FTP: Unsafe file name refused: '" + std::string(n) +
                                  "' -----"))
            << n;
    EXPECT_TRUE(
        TraceContient("Err: FTP: Unable to download: '/dir48' (Err:12003) (Internet error: 12003 "
                      "(550 dir48: is a directory))"));
    // Nothing but ok.txt anywhere in the test's root besides the server's own folder.
    std::vector<std::string> ecrits;
    for (const auto& e : fs::recursive_directory_iterator(Root()))
        if (e.is_regular_file()) ecrits.push_back(fs::relative(e.path(), Root()).string());
    EXPECT_EQ(ecrits, std::vector<std::string>{"local/ok.txt"});

    // The client class lists the names as they are, for the window to show.
    cFTP ftp;
    ASSERT_TRUE(ftp.OpenConnection(serveur_->Adresse(), "u", "p"));
    ASSERT_TRUE(ftp.GetDirectoryListing("*.*"));
    EXPECT_EQ(ftp.Directory().Item("dir48")->FileAttributes, 48);
    EXPECT_EQ(ftp.Directory().Item("plaindir")->FileAttributes, 16);
    EXPECT_EQ(ftp.Directory().Count(), 8);
}

TEST_F(ServeurHostile, UnixAndWindowsListings) {
    for (const std::string scenario : {"liste-unix", "liste-windows"}) {
        SCOPED_TRACE(scenario);
        Demarrer(scenario);
        cFTP ftp;
        ftp.SetModePassive();
        ASSERT_TRUE(ftp.OpenConnection(serveur_->Adresse(), "u", "p"));
        ASSERT_TRUE(ftp.GetDirectoryListing("*.*"));
        const cDirItem* jingles = ftp.Directory().Item("jingles");
        const cDirItem* fichier = ftp.Directory().Item("my file.txt");
        ASSERT_TRUE(jingles && fichier);
        EXPECT_EQ(jingles->FileAttributes, 16);
        EXPECT_EQ(fichier->FileSize, 1234);
        EXPECT_EQ(fichier->LastWriteTime.year, 2024);
        EXPECT_EQ(fichier->LastWriteTime.month, 3);
        EXPECT_EQ(fichier->LastWriteTime.day, 5);
        EXPECT_EQ(ftp.GetFTPFileSize("my file.txt"), 1234);
        EXPECT_FALSE(ftp.Directory().Item(".") || ftp.Directory().Item(".."));
        if (scenario == "liste-unix") {
            EXPECT_EQ(ftp.Directory().Count(), 5);
            EXPECT_EQ(ftp.Directory().Item("lecture-seule.txt")->FileAttributes, 1);
            EXPECT_EQ(ftp.Directory().Item("sans-groupe.txt")->FileSize, 10);
            EXPECT_TRUE(ftp.Directory().Item("lien"));
            // "Nov  1 12:00" without a year: the last November 1st up to today.
            EXPECT_EQ(ftp.Directory().Item("lien")->LastWriteTime.year, clock.Now().year);
        } else {
            EXPECT_EQ(ftp.Directory().Count(), 3);
            const auto t = ftp.Directory().Item("quatre-chiffres.txt")->LastWriteTime;
            EXPECT_EQ(t, (DateTime{2026, 11, 1, 1, 5, 0, 0}));
        }
        serveur_.reset();
    }
}

// The mode is taken at the connection: changing it afterwards changes nothing until the next one.
TEST_F(ServeurHostile, ModeTakesEffectAtTheNextConnection) {
    Demarrer("passif-seulement");
    cFTP ftp;
    ftp.SetDelaiReseau(60000);
    ASSERT_TRUE(ftp.OpenConnection(serveur_->Adresse(), "u", "p"));
    EXPECT_FALSE(ftp.GetDirectoryListing("*.*"));
    EXPECT_EQ(ftp.GetLastErrorMessage(), "500 mode actif refuse");
    ftp.SetModePassive();
    EXPECT_FALSE(ftp.GetDirectoryListing("*.*"));
    ASSERT_TRUE(ftp.OpenConnection(serveur_->Adresse(), "u", "p"));
    EXPECT_TRUE(ftp.GetDirectoryListing("*.*")) << ftp.GetLastErrorMessage();
    EXPECT_TRUE(ftp.Directory().Item("jingles"));
}

TEST_F(ServeurHostile, EndlessRepliesAndListingsEndWithAnError) {
    // A greeting that never ends: libcurl gives up on the oversized reply, long before the
    // time-out.
    Demarrer("reponse-sans-fin");
    cFTP ftp;
    ftp.SetDelaiReseau(60000);
    auto debut = std::chrono::steady_clock::now();
    EXPECT_FALSE(ftp.OpenConnection(serveur_->Adresse(), "u", "p"));
    EXPECT_LT(std::chrono::steady_clock::now() - debut, std::chrono::seconds(60));
    EXPECT_EQ(ftp.LastErrorNumber(), 12030);
    // A server that never answers: the time-out.
    Demarrer("silence");
    ftp.SetDelaiReseau(2000);
    debut = std::chrono::steady_clock::now();
    EXPECT_FALSE(ftp.OpenConnection(serveur_->Adresse(), "u", "p"));
    EXPECT_LT(std::chrono::steady_clock::now() - debut, std::chrono::seconds(60));
    EXPECT_EQ(ftp.LastErrorNumber(), 12002);
    EXPECT_TRUE(
        TraceContient("----- Err: FTP: InternetConnect (InternetConnect Err: 12002 Message: The "
                      "operation timed out) -----"));

    Demarrer("liste-sans-fin");
    cFTP liste;
    liste.SetDelaiReseau(60000);
    ASSERT_TRUE(liste.OpenConnection(serveur_->Adresse(), "u", "p"));
    EXPECT_FALSE(liste.GetDirectoryListing("*.*"));
    EXPECT_EQ(liste.Directory().Count(), 0);
    EXPECT_TRUE(
        TraceContient("----- Err: FTP: InternetFindNextFile (InternetFindNextFile Err: 8 "));
    EXPECT_TRUE(Etat().erreurFTP);
}

TEST_F(ServeurHostile, AServerQuotingThePasswordNeverPutsItInATrace) {
    Demarrer("echo-secret");
    cFTP ftp;
    ASSERT_TRUE(ftp.OpenConnection(serveur_->Adresse(), kUtilisateur, kMotDePasse));
    EXPECT_FALSE(ftp.SetFTPDirectory("musique"));
    EXPECT_EQ(ftp.GetLastErrorMessage(), "550 dossier refuse (mot de passe ****)");
    LogiqueDownload d;
    d.TxtServer = serveur_->Adresse();
    d.TxtUser = kUtilisateur;
    d.TxtPassword = kMotDePasse;
    d.TextDossierFTP = "musique";
    ASSERT_TRUE(d.ConnectDownload());
    EXPECT_FALSE(d.LectureDesFichiersSurServeurFTP());
    EXPECT_TRUE(TraceContient("Err: 12003: 550 dossier refuse (mot de passe ****)"));
    EXPECT_FALSE(SecretDansTrace());
}

}  // namespace zl3::test
