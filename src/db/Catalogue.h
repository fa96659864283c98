// The catalogue as the call layer reads it: record lengths, key lengths, file names and creation
// layouts by catalogue index. The catalogue is filled on first use, before any file is opened.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Lib_Data_Pervasive_2_Catalogue.h"

namespace zl3::cat {

inline const FichierCatalogue& Entree(int index) {
    static const bool init = (InitCatalogueFichiers(), true);
    (void)init;
    return CatalogueFichier(index);
}
inline bool Existe(int index) {
    return !Entree(index).Vide();
}
inline uint32_t LongueurEnreg(int index) {
    return static_cast<uint32_t>(Entree(index).LongueurEnreg);
}
// Length of key `noCle` of file `index`; 0 when there is no such key.
inline int LongueurCle(int index, int noCle) {
    Entree(index);
    return DefinitionCleCatalogue(index, noCle).Longueur;
}
inline std::string NomFichier(int index, int station0) {
    Entree(index);
    return NomFichierBTrieve(index, station0);
}
inline std::vector<uint8_t> LayoutCreation(int index) {
    return StructureCreation(Entree(index));
}

}  // namespace zl3::cat
