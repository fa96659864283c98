// Reading demo files back through the engine, for the tests: every record of a file in the
// order of one of its keys.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Btrieve.h"
#include "Lib_Data_Pervasive_2_Catalogue.h"

namespace zl3::demo::test {

// Opens `chemin` read-only; the status of the Open call.
inline int16_t Ouvrir(const std::string& chemin, std::array<uint8_t, 128>& position) {
    std::vector<char> cle(std::max<std::size_t>(chemin.size() + 1, 256), 0);
    std::copy(chemin.begin(), chemin.end(), cle.begin());
    std::array<uint8_t, 8> donnees{};
    uint32_t n = 0;
    return btr::BtrCall(btr::kOpen, position.data(), donnees.data(), &n, cle.data(), 255,
                        btr::kModeReadOnly);
}

inline void Fermer(std::array<uint8_t, 128>& position) {
    std::array<uint8_t, 255> cle{};
    uint32_t n = 0;
    btr::BtrCall(btr::kClose, position.data(), nullptr, &n, cle.data(), 255, 0);
}

// The records of file `chemin` (catalogue entry `index`) in the order of key `noCle`, each as
// the bytes the engine returned. Fails the current test when a call fails.
inline std::vector<std::string> LireFichier(const std::string& chemin, int index, int noCle = 0) {
    std::vector<std::string> enregistrements;
    std::array<uint8_t, 128> position{};
    const int16_t ouverture = Ouvrir(chemin, position);
    EXPECT_EQ(ouverture, btr::kOk) << chemin;
    if (ouverture != btr::kOk) return enregistrements;
    InitCatalogueFichiers();
    const auto capacite = static_cast<std::size_t>(CatalogueFichier(index).LongueurEnreg) + 16;
    std::vector<uint8_t> donnees(capacite);
    std::array<uint8_t, 255> cle{};
    for (uint16_t op = btr::kGetFirst;; op = btr::kGetNext) {
        auto n = static_cast<uint32_t>(donnees.size());
        const int16_t statut = btr::BtrCall(op, position.data(), donnees.data(), &n, cle.data(),
                                            255, static_cast<int8_t>(noCle));
        if (statut == btr::kEndOfFile) break;
        EXPECT_EQ(statut, btr::kOk) << chemin;
        if (statut != btr::kOk) break;
        enregistrements.emplace_back(reinterpret_cast<const char*>(donnees.data()), n);
    }
    Fermer(position);
    return enregistrements;
}

}  // namespace zl3::demo::test
