// Writing the demo records into the Btrieve files of one data folder: every file of the
// catalogue created empty with its catalogue structure, then records inserted inside
// transactions of a few thousand records.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

namespace zl3::demo {

// A database call that failed; the message is French and names the file.
class ErreurDemo : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class EcrivainBtrieve {
  public:
    // `dossier`: the native data folder, with or without a trailing separator.
    explicit EcrivainBtrieve(std::string dossier, int enregistrementsParTransaction = 4000);
    ~EcrivainBtrieve();
    EcrivainBtrieve(const EcrivainBtrieve&) = delete;
    EcrivainBtrieve& operator=(const EcrivainBtrieve&) = delete;

    // Path of catalogue file `index` for `station` (0-based; ignored for files of the base).
    std::string Chemin(int index, int station) const;
    // Creates every file of the catalogue, one per station where the catalogue says so,
    // replacing any file of the same name.
    void CreerTout(int nbStations);
    // Inserts a record of `longueur` bytes (the catalogue's record length) into file `index`
    // of `station`, opening the file on first use.
    void Inserer(int index, int station, std::span<const uint8_t> enregistrement,
                 uint32_t longueur);
    // Ends the current transaction and closes every open file.
    void Terminer();

    // Records inserted per file name.
    const std::map<std::string, int64_t>& Comptes() const { return comptes_; }

  private:
    struct Ouvert {
        std::array<uint8_t, 128> position{};
        std::string nom;
    };
    Ouvert& Fichier(int index, int station);
    void Valider();
    [[noreturn]] void Echec(const std::string& quoi, const std::string& nom, int16_t statut) const;

    std::string dossier_;
    int parTransaction_;
    int dansTransaction_ = 0;
    bool transaction_ = false;
    std::map<std::pair<int, int>, Ouvert> ouverts_;
    std::map<std::string, int64_t> comptes_;
};

}  // namespace zl3::demo
