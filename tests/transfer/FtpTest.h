// Fixture of the transfer tests: the test's own root with a pyftpdlib server over a folder of
// it, and helpers on the trace lines.
#pragma once

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
    // Starts pyftpdlib (or the scripted server with `scenario`).
    void Demarrer(const std::string& scenario = "") {
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
        for (size_t i = 0; i < n; ++i) s[i] = static_cast<char>((i * 7 + i / 251) & 0xFF);
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
