// The catalogue as the call layer reads it: record lengths, key lengths, file names and creation
// layouts by catalogue index. The catalogue is filled on first use, before any file is opened.
#pragma once

#include <array>
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
// Length of key `noCle` of file `index`; 0 when there is no such key. The call layer asks it
// after every read: the catalogue never changes once filled, so the lengths are worked out once.
inline int LongueurCle(int index, int noCle) {
    using Longueurs = std::array<std::array<int, kNbSegmentsCatalogue>, kNbFichiersCatalogue>;
    static const Longueurs longueurs = [] {
        Longueurs l{};
        for (int f = 0; f < kNbFichiersCatalogue; ++f) {
            Entree(f);
            for (int k = 0; k < kNbSegmentsCatalogue; ++k)
                l[static_cast<size_t>(f)][static_cast<size_t>(k)] =
                    DefinitionCleCatalogue(f, k).Longueur;
        }
        return l;
    }();
    // A file has at most one key per segment.
    if (index < 0 || index >= kNbFichiersCatalogue || noCle < 0 || noCle >= kNbSegmentsCatalogue)
        return 0;
    return longueurs[static_cast<size_t>(index)][static_cast<size_t>(noCle)];
}
inline std::string NomFichier(int index, int station0) {
    Entree(index);
    return NomFichierBTrieve(index, station0);
}
inline std::vector<uint8_t> LayoutCreation(int index) {
    return StructureCreation(Entree(index));
}

}  // namespace zl3::cat
