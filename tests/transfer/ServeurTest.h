// Test support: FTP servers on the loopback, started by the test and ended by their pid. Each
// server script binds a free port and prints it first; the test waits for that line (a loaded
// machine may take its time), never for a fixed delay.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

namespace zl3::test {

// A loopback port free at the time of asking (for servers that take their port from a file).
inline int PortLibre() {
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t n = sizeof a;
    int port = 0;
    if (bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        getsockname(s, reinterpret_cast<sockaddr*>(&a), &n) == 0)
        port = ntohs(a.sin_port);
    close(s);
    return port;
}

inline bool PortOuvert(int port) {
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool ok = connect(s, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    close(s);
    return ok;
}

class ServeurLocal {
  public:
    // Runs /usr/bin/python3 with `arguments`; Port() is 0 when it did not start.
    explicit ServeurLocal(const std::vector<std::string>& arguments) {
        int tube[2];
        if (pipe(tube) != 0) return;
        pid_ = Lancer("/usr/bin/python3", arguments, tube[1], tube[0]);
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
    // Runs `programme` that listens on `port` (known in advance); ready when the port accepts.
    ServeurLocal(const std::string& programme, const std::vector<std::string>& arguments,
                 int port) {
        pid_ = Lancer(programme, arguments, -1, -1);
        const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (std::chrono::steady_clock::now() < limite) {
            int statut = 0;
            if (waitpid(pid_, &statut, WNOHANG) == pid_) {  // gave up (port taken, bad setup)
                pid_ = -1;
                return;
            }
            if (PortOuvert(port)) {
                port_ = port;
                return;
            }
            pollfd rien{-1, 0, 0};
            poll(&rien, 0, 50);
        }
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
    static pid_t Lancer(const std::string& programme, const std::vector<std::string>& arguments,
                        int sortie, int autre) {
        const pid_t pid = fork();
        if (pid == 0) {
            if (sortie >= 0) {
                dup2(sortie, 1);
                close(sortie);
                close(autre);
            }
            std::vector<std::string> copie = arguments;
            std::vector<char*> argv;
            std::string nom = programme;
            argv.push_back(nom.data());
            for (auto& a : copie)
                argv.push_back(a.data());
            argv.push_back(nullptr);
            execv(programme.c_str(), argv.data());
            _exit(127);
        }
        return pid;
    }

    pid_t pid_ = -1;
    int port_ = 0;
};

inline std::string ScriptTest(const std::string& nom) {
    return std::string(ZL3_TESTS_TRANSFER) + "/" + nom;
}

}  // namespace zl3::test
