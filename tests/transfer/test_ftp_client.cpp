// cFTP against pyftpdlib and proftpd on the loopback, in active and in passive mode.
#include <cstdlib>
#include <filesystem>

#include "Etat.h"
#include "FtpTest.h"

namespace zl3::test {
namespace fs = std::filesystem;

struct Pair {
    const char* serveur;  // "" pyftpdlib, "proftpd"
    bool passif;
};

class ClientFtp : public FtpTest, public ::testing::WithParamInterface<Pair> {
  protected:
    void SetUp() override {
        FtpTest::SetUp();
        if (std::string(GetParam().serveur) == "proftpd" && !ProftpdPresent())
            GTEST_SKIP() << "proftpd is not installed (tools/bootstrap.sh installs it)";
    }
    void Demarrer() { FtpTest::Demarrer(GetParam().serveur); }
    bool Connecter(cFTP& ftp, bool passif) { return FtpTest::Connecter(ftp, passif); }
    bool Passif() const { return GetParam().passif; }
};

TEST_P(ClientFtp, FoldersListingAndCurrentFolder) {
    fs::create_directories(racine_ + "sub/inner");
    WriteFile(racine_ + "a.txt", "hello!");
    WriteFile(racine_ + "sub/b.txt", "b");
    Demarrer();
    cFTP ftp;
    ASSERT_TRUE(Connecter(ftp, Passif())) << ftp.GetLastErrorMessage();
    EXPECT_TRUE(ftp.IsOpenConnection());
    EXPECT_EQ(ftp.GetFTPDirectory(), "/");
    ASSERT_TRUE(ftp.GetDirectoryListing("*.*"));
    ASSERT_EQ(ftp.Directory().Count(), 2);
    const cDirItem* sub = ftp.Directory().Item("sub");
    const cDirItem* a = ftp.Directory().Item("a.txt");
    ASSERT_TRUE(sub && a);
    EXPECT_EQ(sub->FileAttributes & 16, 16);
    EXPECT_EQ(a->FileAttributes & 16, 0);
    EXPECT_EQ(a->FileSize, 6);
    ASSERT_TRUE(ftp.GetDirectoryListing("*.txt"));
    EXPECT_EQ(ftp.Directory().Count(), 1);

    EXPECT_TRUE(ftp.SetFTPDirectory("sub"));
    EXPECT_EQ(ftp.GetFTPDirectory(), "/sub");
    EXPECT_TRUE(TraceContient("FTP: FtpSetCurrentDirectory Ok: 'sub'"));
    ASSERT_TRUE(ftp.GetDirectoryListing("*.*"));
    EXPECT_TRUE(ftp.Directory().Item("b.txt") && ftp.Directory().Item("inner"));
    EXPECT_TRUE(ftp.SetFTPDirectory(".."));
    EXPECT_EQ(ftp.GetFTPDirectory(), "/");
    // Up from the root: refused quietly, folder unchanged.
    EXPECT_FALSE(ftp.SetFTPDirectory(".."));
    EXPECT_EQ(ftp.GetFTPDirectory(), "/");
    EXPECT_EQ(LignesErreur(), 0);
    EXPECT_FALSE(Etat().erreurFTP);
    EXPECT_FALSE(ftp.SetFTPDirectory("   "));

    EXPECT_FALSE(ftp.SetFTPDirectory("nowhere"));
    EXPECT_EQ(ftp.LastErrorNumber(), 12003);
    EXPECT_EQ(ftp.GetLastErrorMessage().rfind("550", 0), 0u) << ftp.GetLastErrorMessage();
    EXPECT_TRUE(TraceContient("----- Err: FTP: FtpSetCurrentDirectory 'nowhere' (" +
                              ftp.GetLastErrorMessage() + ") -----"));
    EXPECT_TRUE(Etat().erreurFTP);
    EXPECT_EQ(ftp.GetFTPDirectory(), "/");
    ftp.CloseConnection();
    EXPECT_FALSE(ftp.IsOpenConnection());
}

// Uploads in chunks of 256 bytes up to 24576 bytes and of 24576 above, a 100 ms pause after
// each chunk and progress after each whole chunk and once at the end.
TEST_P(ClientFtp, UploadChunksPausesAndProgress) {
    Demarrer();
    cFTP ftp;
    ASSERT_TRUE(Connecter(ftp, Passif()));
    ftp.SetTransferBinary();
    std::vector<std::pair<int64_t, int64_t>> progres;
    ftp.FileTransferProgress = [&](int64_t n, int64_t t) { progres.emplace_back(n, t); };
    struct Cas {
        size_t taille;
        std::vector<int64_t> attendu;  // bytes of each progress event
        int pauses;
    };
    std::vector<int64_t> parPetits;
    for (int64_t i = 1; i <= 96; ++i)
        parPetits.push_back(i * 256);
    parPetits.push_back(24576);
    const std::vector<Cas> cas = {
        {24576, parPetits, 96}, {24577, {24576, 24577}, 2}, {0, {0}, 0}, {300, {256, 300}, 2}};
    for (const auto& c : cas) {
        SCOPED_TRACE(c.taille);
        progres.clear();
        const int pausesAvant = clock.SleepCalls();
        const int64_t dormiAvant = clock.TotalSlept();
        const std::string nom = "f" + std::to_string(c.taille) + ".bin";
        WriteFile(local_ + nom, Octets(c.taille));
        int64_t taille = -1;
        ASSERT_TRUE(ftp.FTPUploadFile(local_ + nom, nom, taille)) << ftp.GetLastErrorMessage();
        EXPECT_EQ(taille, static_cast<int64_t>(c.taille));
        std::vector<int64_t> vus;
        for (const auto& [n, t] : progres) {
            vus.push_back(n);
            EXPECT_EQ(t, static_cast<int64_t>(c.taille));
        }
        EXPECT_EQ(vus, c.attendu);
        EXPECT_EQ(clock.SleepCalls() - pausesAvant, c.pauses);
        EXPECT_EQ(clock.TotalSlept() - dormiAvant, 100 * c.pauses);
        ASSERT_TRUE(fs::exists(racine_ + nom));
        EXPECT_EQ(ReadFile(racine_ + nom), Octets(c.taille));
    }
    EXPECT_GE(events.calls, 96 + 2 + 2);
    EXPECT_FALSE(ftp.FTPUploadFile("  ", "x", *std::make_unique<int64_t>()));
}

TEST_P(ClientFtp, DownloadSizesThroughPatternAndSkipsEmptyFiles) {
    WriteFile(racine_ + "my file.txt", Octets(1000));
    WriteFile(racine_ + "vide.txt", "");
    Demarrer();
    cFTP ftp;
    ASSERT_TRUE(Connecter(ftp, Passif()));
    ftp.SetTransferBinary();
    EXPECT_EQ(ftp.GetFTPFileSize("my file.txt"), 1000);
    EXPECT_EQ(ftp.GetFTPFileSize("absent.txt"), 0);
    std::vector<int64_t> progres;
    ftp.FileTransferProgress = [&](int64_t n, int64_t t) {
        progres.push_back(n);
        EXPECT_EQ(t, 1000);
    };
    int64_t taille = 0;
    ASSERT_TRUE(ftp.FTPDownloadFile("my file.txt", local_ + "copie.txt", taille))
        << ftp.GetLastErrorMessage();
    EXPECT_EQ(taille, 1000);
    EXPECT_EQ(progres, (std::vector<int64_t>{256, 512, 768, 1000}));
    EXPECT_EQ(ReadFile(local_ + "copie.txt"), Octets(1000));

    EXPECT_FALSE(ftp.FTPDownloadFile("vide.txt", local_ + "vide.txt", taille));
    EXPECT_EQ(taille, 0);
    EXPECT_FALSE(fs::exists(local_ + "vide.txt"));
    EXPECT_EQ(LignesErreur(), 0);
    EXPECT_FALSE(Etat().erreurFTP);

    EXPECT_TRUE(ftp.SimpleFTPGetFile("my file.txt", local_ + "simple.txt"));
    EXPECT_EQ(ReadFile(local_ + "simple.txt"), Octets(1000));
    EXPECT_TRUE(TraceContient("FTP: SimpleFtpGetFile Ok: 'my file.txt'"));
    EXPECT_TRUE(ftp.SimpleFTPPutFile(local_ + "simple.txt", "retour.txt"));
    EXPECT_EQ(ReadFile(racine_ + "retour.txt"), Octets(1000));
}

TEST_P(ClientFtp, FolderAndFileCommandsReportTheServersReply) {
    fs::create_directories(racine_ + "plein");
    WriteFile(racine_ + "plein/x.txt", "x");
    WriteFile(racine_ + "vieux.txt", "v");
    Demarrer();
    cFTP ftp;
    ASSERT_TRUE(Connecter(ftp, Passif()));
    EXPECT_TRUE(ftp.CreateFTPDirectory("neuf"));
    EXPECT_TRUE(fs::is_directory(racine_ + "neuf"));
    EXPECT_TRUE(ftp.RemoveFTPDirectory("neuf"));
    EXPECT_FALSE(fs::exists(racine_ + "neuf"));
    EXPECT_TRUE(ftp.RenameFTPFile("vieux.txt", "plein/neuf.txt"));
    EXPECT_TRUE(fs::exists(racine_ + "plein/neuf.txt"));
    EXPECT_TRUE(ftp.SetFTPDirectory("plein"));
    EXPECT_TRUE(ftp.DeleteFTPFile("neuf.txt"));
    EXPECT_FALSE(fs::exists(racine_ + "plein/neuf.txt"));
    EXPECT_TRUE(TraceContient("FTP: DeleteFTPFile Ok"));
    EXPECT_TRUE(ftp.SetFTPDirectory("/"));
    EXPECT_FALSE(Etat().erreurFTP);

    EXPECT_FALSE(ftp.DeleteFTPFile("absent.txt"));
    EXPECT_EQ(ftp.LastErrorNumber(), 12003);
    const std::string reponse = ftp.GetLastErrorMessage();
    EXPECT_EQ(reponse.rfind("550 ", 0), 0u) << reponse;
    EXPECT_TRUE(
        TraceContient("----- Err: FTP: DeleteFTPFile 'absent.txt' (" + reponse + ") -----"));
    EXPECT_TRUE(Etat().erreurFTP);

    EXPECT_FALSE(ftp.RemoveFTPDirectory("plein"));
    EXPECT_TRUE(fs::exists(racine_ + "plein/x.txt"));
    EXPECT_TRUE(TraceContient("----- Err: FTP: RemoveFTPDirectory (550 "));
    // A failed command drops the connection; the next one logs in again.
    ASSERT_TRUE(ftp.GetDirectoryListing("*.*"));
    EXPECT_TRUE(ftp.Directory().Item("plein"));
    EXPECT_FALSE(SecretDansTrace());
}

TEST_P(ClientFtp, ConnectionFailuresCarryWinInetNumbers) {
    Demarrer();
    cFTP ftp;
    if (Passif()) ftp.SetModePassive();
    ftp.SetDelaiReseau(60000);
    EXPECT_FALSE(ftp.OpenConnection(serveur_->Adresse(), kUtilisateur, "wrong-password"));
    EXPECT_FALSE(ftp.IsOpenConnection());
    EXPECT_EQ(ftp.GetLastErrorMessage(),
              "InternetConnect Err: 12014 Message: The password was not allowed");
    EXPECT_TRUE(
        TraceContient("----- Err: FTP: InternetConnect (InternetConnect Err: 12014 Message: "
                      "The password was not allowed) -----"));
    EXPECT_TRUE(Etat().erreurFTP);
    EXPECT_FALSE(TraceContient("wrong-password"));

    const int portFerme = serveur_->Port();
    serveur_.reset();
    EXPECT_FALSE(
        ftp.OpenConnection("127.0.0.1:" + std::to_string(portFerme), kUtilisateur, kMotDePasse));
    EXPECT_EQ(ftp.LastErrorNumber(), 12029);
    EXPECT_FALSE(ftp.OpenConnection("", kUtilisateur, kMotDePasse));
    EXPECT_EQ(ftp.LastErrorNumber(), 12007);
    // Nothing works on a closed session, and nothing throws.
    EXPECT_EQ(ftp.GetFTPDirectory(), "");
    EXPECT_EQ(ftp.GetFTPFileSize("x"), 0);
    EXPECT_FALSE(ftp.GetDirectoryListing("*.*"));
    EXPECT_FALSE(SecretDansTrace());
}

// Explicit TLS asked of a server without it: refused with the secure-channel error.
TEST_P(ClientFtp, FtpsRefusedByAPlainServer) {
    Demarrer();
    cFTP ftp;
    ftp.SetFTPS(true);
    EXPECT_FALSE(Connecter(ftp, Passif()));
    EXPECT_EQ(ftp.LastErrorNumber(), 12157);
}

class ClientFtps : public FtpTest {};

// Explicit TLS on control and data connections (passive mode), with a self-signed certificate:
// accepted only when the certificate is not checked.
TEST_F(ClientFtps, TransfersOverExplicitTls) {
    if (!ProftpdTlsPresent())
        GTEST_SKIP() << "proftpd's TLS module is not installed (tools/bootstrap.sh installs it)";
    WriteFile(racine_ + "a.bin", Octets(3000));
    DemarrerProftpd(true);
    cFTP verifie;
    verifie.SetFTPS(true);
    EXPECT_FALSE(Connecter(verifie, true));
    EXPECT_EQ(verifie.LastErrorNumber(), 12045);
    cFTP ftp;
    ftp.SetFTPS(true, false);
    ftp.SetTransferBinary();
    ASSERT_TRUE(Connecter(ftp, true)) << ftp.GetLastErrorMessage();
    ASSERT_TRUE(ftp.GetDirectoryListing("*.*")) << ftp.GetLastErrorMessage();
    EXPECT_EQ(ftp.Directory().Item("a.bin")->FileSize, 3000);
    int64_t taille = 0;
    ASSERT_TRUE(ftp.FTPDownloadFile("a.bin", local_ + "a.bin", taille))
        << ftp.GetLastErrorMessage();
    EXPECT_EQ(ReadFile(local_ + "a.bin"), Octets(3000));
    ASSERT_TRUE(ftp.FTPUploadFile(local_ + "a.bin", "b.bin", taille));
    EXPECT_EQ(ReadFile(racine_ + "b.bin"), Octets(3000));
    // This server refuses a plain session.
    cFTP clair;
    EXPECT_FALSE(Connecter(clair, true));
    EXPECT_FALSE(SecretDansTrace());
}

INSTANTIATE_TEST_SUITE_P(Serveurs, ClientFtp,
                         ::testing::Values(Pair{"", false}, Pair{"", true}, Pair{"proftpd", false},
                                           Pair{"proftpd", true}),
                         [](const auto& info) {
                             return std::string(*info.param.serveur ? "Proftpd" : "Pyftpdlib") +
                                    (info.param.passif ? "Passif" : "Actif");
                         });

}  // namespace zl3::test
