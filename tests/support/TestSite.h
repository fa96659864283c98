// Test support: a private machine root per test, fresh shell state, and scripted services (a
// manual clock, a message box that records and answers from a script, an event loop and a shell
// that record their calls). Nothing a test does reaches outside its root folder.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "Doubles.h"
#include "Etat.h"
#include "EtatGlobal.h"
#include "Lib_Config.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace zl3::test {

inline std::string NewTempDir(const std::string& tag) {
    namespace fs = std::filesystem;
    static std::mt19937_64 rng{std::random_device{}()};
    const fs::path base = fs::temp_directory_path() / "zl3-tests";
    fs::create_directories(base);
    // Parameterised tests are named "Case/3": only letters, digits, '-' and '_' reach the name.
    std::string name = tag;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_') c = '_';
    for (int attempt = 0;; ++attempt) {
        const fs::path p = base / (name + "-" + std::to_string(rng() % 100000000));
        std::error_code ec;
        if (fs::create_directory(p, ec)) return sys::TexteChemin(p) + sys::Sep();
        if (attempt > 1000) throw std::runtime_error("cannot create a test folder under " + base.string());
    }
}

// A relative path written with "/" in the native form ("\\" on Windows).
inline std::string N(std::string path) {
    for (char& c : path)
        if (c == '/') c = sys::Sep();
    return path;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

inline void WriteFile(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

// Fixture: its own root (ZELVAR_ROOT), a manual clock, scripted message box, recording shell and
// event loop, and the core's whole global state fresh (ReinitialiserEtatGlobal). The root is
// removed afterwards.
class SiteTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root_ = NewTempDir(::testing::UnitTest::GetInstance()->current_test_info()->name());
        sys::SetZelvarRoot(root_);
        ReinitialiserEtatGlobal();
        scoped_ = std::make_unique<ScopedServices>(Services{&box, &clock, &events, &shell});
    }
    void TearDown() override {
        scoped_.reset();
        ReinitialiserEtatGlobal();
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }
    // Native path of a suite path ("C:\AudioLog\") under this test's root.
    std::string P(const std::string& suitePath) const { return sys::NativePath(suitePath); }
    const std::string& Root() const { return root_; }

    ManualClock clock{DateTime{2026, 11, 3, 10, 15, 0, 0}};
    ScriptedMessageBox box;
    CountingEventLoop events;
    RecordingShell shell;

  private:
    std::string root_;
    std::unique_ptr<ScopedServices> scoped_;
};

}  // namespace zl3::test
