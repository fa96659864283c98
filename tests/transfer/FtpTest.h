// Fixture of the transfer tests: the test's own root with a pyftpdlib server over a folder of
// it, and helpers on the trace lines.
#pragma once

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "ServeurTest.h"
#include "TestSite.h"
#include "cFTP.h"

namespace zl3::test {

inline constexpr const char* kUtilisateur = "radio";
inline constexpr const char* kMotDePasse = "Zv-s3cret!";

class FtpTest : public SiteTest {
  protected:
    void SetUp() override {
        SiteTest::SetUp();
        racine_ = Root() + "serveur/";
        local_ = Root() + "local/";
        std::filesystem::create_directories(racine_);
        std::filesystem::create_directories(local_);
    }
    void TearDown() override {
        serveur_.reset();
        SiteTest::TearDown();
    }
    static bool ProftpdPresent() { return access("/usr/sbin/proftpd", X_OK) == 0; }
    static bool ProftpdTlsPresent() {
        return ProftpdPresent() && access("/usr/lib/proftpd/mod_tls.so", R_OK) == 0;
    }

    // proftpd in the foreground, from a configuration in the test's folder: a virtual user of
    // this process's uid whose home (and root) is the server's folder.
    // With `tls`: explicit TLS required, a self-signed certificate made for the test.
    void DemarrerProftpd(bool tls = false) {
        const std::string d = Root() + "proftpd/";
        std::filesystem::create_directories(d);
        const passwd* pw = getpwuid(getuid());
        const group* gr = getgrgid(getgid());
        ASSERT_TRUE(pw && gr);
        // SHA-512 crypt of kMotDePasse, salt "zl3tests" (openssl passwd -6 -salt zl3tests).
        const std::string hache =
            "$6$zl3tests$XVD42Jzt7PBxCqh9RqYUVUidkLd2BL70plP9kGbUU8Wmt7vpWuvcZ89XNJBcwpnhbY/"
            "dJhohIbnb4e2bg29HL.";
        WriteFile(d + "passwd", std::string(kUtilisateur) + ":" + hache + ":" +
                                    std::to_string(getuid()) + ":" + std::to_string(getgid()) +
                                    "::" + racine_ + ":/bin/false\n");
        std::filesystem::permissions(
            d + "passwd", std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        std::string extra;
        if (tls) {
            ASSERT_EQ(std::system(("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "
                                   "/CN=127.0.0.1 -keyout " +
                                   d + "key.pem -out " + d + "cert.pem >/dev/null 2>&1")
                                      .c_str()),
                      0);
            extra =
                "ModulePath /usr/lib/proftpd\nLoadModule mod_tls.c\nTLSEngine on\nTLSRequired on\n"
                "TLSRSACertificateFile " +
                d + "cert.pem\nTLSRSACertificateKeyFile " + d +
                "key.pem\n"
                "TLSOptions NoSessionReuseRequired\nTLSLog " +
                d + "tls.log\n";
        }
        for (int essai = 0; essai < 5 && !(serveur_ && serveur_->Port()); ++essai) {
            const int port = PortLibre();
            WriteFile(d + "proftpd.conf",
                      "ServerType standalone\nPort " + std::to_string(port) +
                          "\nSocketBindTight on\nDefaultAddress 127.0.0.1\nUseIPv6 off\n"
                          "User " +
                          pw->pw_name + "\nGroup " + gr->gr_name + "\nPidFile " + d +
                          "pid\n"
                          "ScoreboardFile " +
                          d +
                          "scoreboard\nDelayTable none\nWtmpLog off\n"
                          "TransferLog none\nSystemLog " +
                          d +
                          "system.log\nAuthOrder mod_auth_file.c\n"
                          "AuthUserFile " +
                          d +
                          "passwd\nRequireValidShell off\nRootLogin on\n"
                          "DefaultRoot ~\nAllowOverwrite on\nUseReverseDNS off\n"
                          "<Limit ALL>\n  AllowAll\n</Limit>\n" +
                          extra);
            serveur_ = std::make_unique<ServeurLocal>(
                "/usr/sbin/proftpd", std::vector<std::string>{"-n", "-q", "-c", d + "proftpd.conf"},
                port);
        }
        ASSERT_GT(serveur_->Port(), 0) << "proftpd did not start";
    }

    // Starts pyftpdlib (or the scripted server with `scenario`, or "proftpd").
    void Demarrer(const std::string& scenario = "") {
        if (scenario == "proftpd") {
            DemarrerProftpd();
            return;
        }
        if (scenario.empty())
            serveur_ = std::make_unique<ServeurLocal>(std::vector<std::string>{
                ScriptTest("serveur_pyftpdlib.py"), racine_, kUtilisateur, kMotDePasse});
        else
            serveur_ = std::make_unique<ServeurLocal>(
                std::vector<std::string>{ScriptTest("serveur_hostile.py"), scenario});
        ASSERT_GT(serveur_->Port(), 0) << "the test server did not start";
    }
    bool Connecter(cFTP& ftp, bool passif) {
        if (passif) ftp.SetModePassive();
        ftp.SetDelaiReseau(60000);
        return ftp.OpenConnection(serveur_->Adresse(), kUtilisateur, kMotDePasse);
    }
    // A file of `n` bytes of varied content.
    static std::string Octets(size_t n) {
        std::string s(n, '\0');
        for (size_t i = 0; i < n; ++i)
            s[i] = static_cast<char>((i * 7 + i / 251) & 0xFF);
        return s;
    }
    static bool TraceContient(const std::string& texte) {
        for (const auto& l : Trace().lines)
            if (l.find(texte) != std::string::npos) return true;
        return false;
    }
    static int LignesErreur() {
        int n = 0;
        for (const auto& l : Trace().lines)
            if (l.find("Err: ") != std::string::npos) ++n;
        return n;
    }
    static bool SecretDansTrace() { return TraceContient(kMotDePasse); }

    std::string racine_;  // the server's folder
    std::string local_;   // local folder of downloads
    std::unique_ptr<ServeurLocal> serveur_;
};

}  // namespace zl3::test
