// Child processes of the tests, on every system the tests run on: started from an argument
// list, read line by line, waited for, and ended only through the id of the process this object
// started (never by name).
#pragma once

#include <string>
#include <vector>

namespace zl3::test {

// The exit code of a process ended by Terminer: 128 + SIGKILL, as a POSIX shell reports it;
// on Windows the code given to TerminateProcess.
inline constexpr int kCodeTermine = 137;

class Processus {
  public:
    // Starts args[0] (a path) with the arguments that follow; its standard output is read
    // through LireLigne, its standard error is the test's. Throws when it cannot be started.
    explicit Processus(const std::vector<std::string>& args);
    // Ends the process when it still runs, then waits for it.
    ~Processus();
    Processus(const Processus&) = delete;
    Processus& operator=(const Processus&) = delete;

    // The next line of its standard output (without the line end); false at the end of the
    // output or after `timeoutMs`.
    bool LireLigne(std::string& line, int timeoutMs = 10000);
    // Waits for the end; the exit code (kCodeTermine after Terminer, 128 + signal on POSIX).
    int Attendre();
    // Ends the process at once (SIGKILL, TerminateProcess), by its own id or handle.
    void Terminer();
    long Id() const { return id_; }

  private:
    long id_ = -1;
    std::string enAttente_;
    bool attendu_ = false;
    int code_ = 0;
#ifdef _WIN32
    void* processus_ = nullptr;
    void* sortie_ = nullptr;
#else
    int sortie_ = -1;
#endif
};

// Runs a command to its end, its standard output and error captured.
struct ResultatCommande {
    int code = -1;
    std::string sortie;
    std::string erreurs;
};
ResultatCommande LancerCommande(const std::vector<std::string>& args);

// A new folder under the system's temporary folder, for a test to remove; `prefixe` starts its
// name.
std::string NouveauDossierTemporaire(const std::string& prefixe);

}  // namespace zl3::test
