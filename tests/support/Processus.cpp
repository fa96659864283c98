#include "Processus.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;
#endif

namespace zl3::test {
namespace fs = std::filesystem;

namespace {

std::string LireFichier(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

[[maybe_unused]] fs::path Chemin(const std::string& utf8) {
    return fs::path(std::u8string(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

#ifdef _WIN32
std::wstring Large(const std::string& utf8) {
    return Chemin(utf8).wstring();
}

// One command line from an argument list, quoted as the C runtime's parser reads it back.
std::wstring LigneDeCommande(const std::vector<std::string>& args) {
    std::wstring ligne;
    for (const std::string& a : args) {
        const std::wstring w = Large(a);
        if (!ligne.empty()) ligne += L' ';
        if (!w.empty() && w.find_first_of(L" \t\"") == std::wstring::npos) {
            ligne += w;
            continue;
        }
        ligne += L'"';
        size_t barres = 0;
        for (const wchar_t c : w) {
            if (c == L'\\') {
                ++barres;
                continue;
            }
            if (c == L'"') ligne.append(barres * 2 + 1, L'\\');
            else ligne.append(barres, L'\\');
            barres = 0;
            ligne += c;
        }
        ligne.append(barres * 2, L'\\');
        ligne += L'"';
    }
    return ligne;
}

// Starts the command with the given standard output and error (inheritable handles).
HANDLE Demarrer(const std::vector<std::string>& args, HANDLE sortie, HANDLE erreurs, long& id) {
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    si.hStdOutput = sortie;
    si.hStdError = erreurs;
    PROCESS_INFORMATION pi{};
    std::wstring ligne = LigneDeCommande(args);
    const std::wstring programme = Large(args.at(0));
    if (!CreateProcessW(programme.c_str(), ligne.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        nullptr, &si, &pi))
        return nullptr;
    CloseHandle(pi.hThread);
    id = static_cast<long>(pi.dwProcessId);
    return pi.hProcess;
}
#endif

}  // namespace

#ifdef _WIN32

Processus::Processus(const std::vector<std::string>& args) {
    SECURITY_ATTRIBUTES sa{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE lecture = nullptr;
    HANDLE ecriture = nullptr;
    if (!CreatePipe(&lecture, &ecriture, &sa, 0)) throw std::runtime_error("pipe failed");
    SetHandleInformation(lecture, HANDLE_FLAG_INHERIT, 0);
    processus_ = Demarrer(args, ecriture, GetStdHandle(STD_ERROR_HANDLE), id_);
    CloseHandle(ecriture);
    sortie_ = lecture;
    if (!processus_) {
        CloseHandle(lecture);
        sortie_ = nullptr;
        throw std::runtime_error("cannot start " + args.at(0));
    }
}

Processus::~Processus() {
    if (!attendu_) {
        Terminer();
        Attendre();
    }
    if (sortie_) CloseHandle(static_cast<HANDLE>(sortie_));
    if (processus_) CloseHandle(static_cast<HANDLE>(processus_));
}

bool Processus::LireLigne(std::string& line, int timeoutMs) {
    const auto fin = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const size_t nl = enAttente_.find('\n');
        if (nl != std::string::npos) {
            line = enAttente_.substr(0, nl);
            if (!line.empty() && line.back() == '\r') line.pop_back();
            enAttente_.erase(0, nl + 1);
            return true;
        }
        DWORD disponible = 0;
        if (!PeekNamedPipe(static_cast<HANDLE>(sortie_), nullptr, 0, nullptr, &disponible,
                           nullptr))
            return false;  // the writer has gone
        if (disponible == 0) {
            if (std::chrono::steady_clock::now() >= fin) return false;
            Sleep(2);
            continue;
        }
        char buf[4096];
        DWORD lus = 0;
        if (!ReadFile(static_cast<HANDLE>(sortie_), buf, sizeof buf < disponible ? sizeof buf
                                                                                  : disponible,
                      &lus, nullptr) ||
            lus == 0)
            return false;
        enAttente_.append(buf, lus);
    }
}

int Processus::Attendre() {
    if (!attendu_) {
        WaitForSingleObject(static_cast<HANDLE>(processus_), INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(static_cast<HANDLE>(processus_), &code);
        code_ = static_cast<int>(code);
        attendu_ = true;
    }
    return code_;
}

void Processus::Terminer() {
    if (!attendu_) TerminateProcess(static_cast<HANDLE>(processus_), kCodeTermine);
}

ResultatCommande LancerCommande(const std::vector<std::string>& args) {
    const fs::path dossier = Chemin(NouveauDossierTemporaire("zl3-cmd-"));
    const fs::path sortie = dossier / "out";
    const fs::path erreurs = dossier / "err";
    SECURITY_ATTRIBUTES sa{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    auto creer = [&](const fs::path& p) {
        return CreateFileW(p.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    };
    HANDLE hs = creer(sortie);
    HANDLE he = creer(erreurs);
    ResultatCommande r;
    long id = -1;
    HANDLE p = Demarrer(args, hs, he, id);
    CloseHandle(hs);
    CloseHandle(he);
    if (p) {
        WaitForSingleObject(p, INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(p, &code);
        r.code = static_cast<int>(code);
        CloseHandle(p);
    }
    r.sortie = LireFichier(sortie);
    r.erreurs = LireFichier(erreurs);
    std::error_code ec;
    fs::remove_all(dossier, ec);
    return r;
}

#else

Processus::Processus(const std::vector<std::string>& args) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    std::vector<char*> argv;
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid = -1;
    const int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(fds[1]);
    sortie_ = fds[0];
    if (rc != 0) {
        ::close(sortie_);
        sortie_ = -1;
        throw std::runtime_error("cannot start " + args.at(0));
    }
    id_ = pid;
}

Processus::~Processus() {
    if (!attendu_) {
        Terminer();
        Attendre();
    }
    if (sortie_ >= 0) ::close(sortie_);
}

bool Processus::LireLigne(std::string& line, int timeoutMs) {
    const auto fin = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const size_t nl = enAttente_.find('\n');
        if (nl != std::string::npos) {
            line = enAttente_.substr(0, nl);
            enAttente_.erase(0, nl + 1);
            return true;
        }
        const auto reste = std::chrono::duration_cast<std::chrono::milliseconds>(
                               fin - std::chrono::steady_clock::now())
                               .count();
        if (reste <= 0) return false;
        pollfd p{sortie_, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(reste)) <= 0) return false;
        char buf[4096];
        const ssize_t n = ::read(sortie_, buf, sizeof buf);
        if (n <= 0) return false;
        enAttente_.append(buf, static_cast<size_t>(n));
    }
}

int Processus::Attendre() {
    if (!attendu_) {
        int status = 0;
        while (::waitpid(static_cast<pid_t>(id_), &status, 0) < 0 && errno == EINTR) {
        }
        code_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        attendu_ = true;
    }
    return code_;
}

void Processus::Terminer() {
    // Only the child this object started and has not yet waited for: its pid cannot have been
    // reused by another process meanwhile.
    if (!attendu_) ::kill(static_cast<pid_t>(id_), SIGKILL);
}

ResultatCommande LancerCommande(const std::vector<std::string>& args) {
    const fs::path dossier = NouveauDossierTemporaire("zl3-cmd-");
    const std::string sortie = (dossier / "out").string();
    const std::string erreurs = (dossier / "err").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, sortie.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_addopen(&actions, 2, erreurs.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    std::vector<char*> argv;
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid = -1;
    ResultatCommande r;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
        int status = 0;
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        r.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    posix_spawn_file_actions_destroy(&actions);
    r.sortie = LireFichier(sortie);
    r.erreurs = LireFichier(erreurs);
    std::error_code ec;
    fs::remove_all(dossier, ec);
    return r;
}

#endif

std::string NouveauDossierTemporaire(const std::string& prefixe) {
    std::random_device rd;
    std::mt19937_64 alea((uint64_t{rd()} << 32) ^ rd());
    const fs::path base = fs::temp_directory_path();
    for (int essai = 0; essai < 1000; ++essai) {
        const fs::path p = base / (prefixe + std::to_string(alea() % 1000000000ULL));
        std::error_code ec;
        if (fs::create_directory(p, ec)) {
            const std::u8string u = p.u8string();
            return std::string(reinterpret_cast<const char*>(u.data()), u.size());
        }
    }
    throw std::runtime_error("cannot create a temporary folder");
}

}  // namespace zl3::test
