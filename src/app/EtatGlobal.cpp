#include "EtatGlobal.h"

#include <utility>
#include <vector>

namespace zl3 {
namespace {

std::vector<std::pair<const char*, void (*)()>>& Registre() {
    static std::vector<std::pair<const char*, void (*)()>> registre;
    return registre;
}

}  // namespace

void EnregistrerReinitialisation(const char* module, void (*reinitialiser)()) {
    if (reinitialiser) Registre().emplace_back(module, reinitialiser);
}

void ReinitialiserEtatGlobal() {
    for (const auto& [module, reinitialiser] : Registre())
        reinitialiser();
}

int NombreModulesAvecEtat() {
    return static_cast<int>(Registre().size());
}

}  // namespace zl3
