// The demo station's music sound files: for part of its music tracks, a WMA file named by the
// track key ("01000042.wma") in the base's music sound folder, holding only an ASF header with
// the tags a music-rights statement needs (title, artist, WM/Composer, WM/Writer, WM/ISRC,
// WM/Publisher) and no audio. Some of them lack a tag, as a real library's files do.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Bibliotheque.h"

namespace zl3::demo {

struct TagsWma {
    std::string titre;   // Content Description title, UTF-8
    std::string auteur;  // Content Description author
    std::vector<std::pair<std::string, std::string>> etendus;  // Unicode string descriptors
    int duree = 0;       // seconds, written in the File Properties Object
};

// The bytes of a tag-only ASF file: Header Object (File Properties, Content Description and,
// when there are any, Extended Content Description Objects) followed by an empty Data Object.
std::string FichierAsf(const TagsWma& tags);

// The seed stream of the sound files, apart from those of the database's parts.
inline constexpr uint64_t kFluxSonsWma = 0x57D4;

struct BilanWma {
    int fichiers = 0;    // files written
    int incomplets = 0;  // of which lacking a tag
};

// Writes the files of `bibliotheque` into the native folder `dossier` (created when missing):
// about two music tracks in three, drawn from `graine`. Throws ErreurDemo when a file cannot be
// written.
BilanWma EcrireFichiersWmaDemo(const BibliothequeDemo& bibliotheque, const std::string& dossier,
                               uint64_t graine);

// The music sound folder of base `base` (1-based) of the demo site, as its ZL3_Systeme.ini names
// it ("C:\Sons\Mus\", "C:\Sons\Base02\Mus\").
std::string DossierSonsMusiqueDemo(int base);

}  // namespace zl3::demo
