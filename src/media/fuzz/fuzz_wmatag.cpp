// libFuzzer target of the WMA tag reader: any bytes are read as a file's beginning. Besides the
// sanitizers' findings, it checks the list's own consistency and, every 16th input, that reading
// the same bytes from a file on disk gives the same tags.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "Cls_WMATag.h"
#include "Lib_Public.h"

namespace {

std::string& FichierTemporaire() {
    static std::string path;
    return path;
}

void Supprime() {
    std::remove(FichierTemporaire().c_str());
}

void Verifie(bool condition) {
    if (!condition) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const char* tmp = std::getenv("TMPDIR");
    std::string modele = std::string(tmp && *tmp ? tmp : "/tmp") + "/zl3_fuzz_wma_XXXXXX";
    const int fd = mkstemp(modele.data());
    if (fd < 0) std::abort();
    close(fd);
    FichierTemporaire() = modele;
    std::atexit(Supprime);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static unsigned long compteur = 0;
    zl3::Cls_WMATag memoire;
    const bool trouve = memoire.ReadWMATagsFromMemory({data, size});
    const auto noms = memoire.TagDescriptors();
    const auto valeurs = memoire.TagValues();
    Verifie(noms.size() == static_cast<std::size_t>(memoire.TagCount()));
    Verifie(valeurs.size() == noms.size());
    Verifie(trouve || noms.empty());
    Verifie(memoire.TagCount() <= zl3::Cls_WMATag::kMaxTags);
    for (const std::string& nom : noms)
        Verifie(nom.find('\0') == std::string::npos);
    // The first tag of a name is the one found by it, whatever the case asked.
    if (!noms.empty()) Verifie(memoire.TagByDescriptor(noms.front()) == valeurs.front());

    if (++compteur % 16 == 0) {
        {
            std::ofstream out(FichierTemporaire(), std::ios::binary | std::ios::trunc);
            out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        }
        zl3::Cls_WMATag fichier;
        fichier.SetFilename(FichierTemporaire());
        Verifie(fichier.ReadWMATags() == trouve);
        Verifie(fichier.TagDescriptors() == noms && fichier.TagValues() == valeurs);
    }
    zl3::Trace().lines.clear();  // the in-memory trace would otherwise grow with every input
    return 0;
}
