// Test support: FTP servers on the loopback, started by the test and ended by their pid. Each
// server script binds a free port and prints it first; the test waits for that line (a loaded
// machine may take its time), never for a fixed delay.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

namespace zl3::test {

class ServeurLocal {
  public:
    // Runs /usr/bin/python3 with `arguments`; Port() is 0 when it did not start.
    explicit ServeurLocal(const std::vector<std::string>& arguments) {
        int tube[2];
        if (pipe(tube) != 0) return;
        pid_ = fork();
        if (pid_ == 0) {
            dup2(tube[1], 1);
            close(tube[0]);
            close(tube[1]);
            std::vector<char*> argv;
            std::string python = "/usr/bin/python3";
            argv.push_back(python.data());
            std::vector<std::string> copie = arguments;
            for (auto& a : copie) argv.push_back(a.data());
            argv.push_back(nullptr);
            execv(python.c_str(), argv.data());
            _exit(127);
        }
        close(tube[1]);
        std::string ligne;
        const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (std::chrono::steady_clock::now() < limite) {
            pollfd p{tube[0], POLLIN, 0};
            if (poll(&p, 1, 1000) <= 0) continue;
            char c;
            if (read(tube[0], &c, 1) != 1) break;
            if (c == '\n') {
                port_ = std::atoi(ligne.c_str());
                break;
            }
            ligne += c;
        }
        close(tube[0]);
    }
    ~ServeurLocal() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            int statut = 0;
            waitpid(pid_, &statut, 0);
        }
    }
    ServeurLocal(const ServeurLocal&) = delete;
    ServeurLocal& operator=(const ServeurLocal&) = delete;
    int Port() const { return port_; }
    std::string Adresse() const { return "127.0.0.1:" + std::to_string(port_); }

  private:
    pid_t pid_ = -1;
    int port_ = 0;
};

inline std::string ScriptTest(const std::string& nom) {
    return std::string(ZL3_TESTS_TRANSFER) + "/" + nom;
}

}  // namespace zl3::test
