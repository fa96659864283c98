// Directory listings of FTP servers turned into entries with Windows file attributes: MLSD
// (machine listing), the Unix "ls -l" LIST format and the Windows (IIS) LIST format. Lines that
// fit none of them are skipped; "." and ".." are never returned.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DateTime.h"

namespace zl3::ftp {

// Windows file attribute bits.
enum Attribut : int32_t {
    kAttrLectureSeule = 1,
    kAttrCache = 2,
    kAttrSysteme = 4,
    kAttrDossier = 16,
    kAttrArchive = 32,
    kAttrNormal = 128,
    kAttrTemporaire = 256,
    kAttrCompresse = 2048,
    kAttrHorsLigne = 4096,
};

struct EntreeListe {
    std::string nom;
    DateTime creation;
    DateTime dernierAcces;
    DateTime derniereEcriture;
    int64_t taille = 0;
    int32_t attributs = kAttrNormal;
};

// MLSD lines ("fact=value;…; name"). Times are UTC there and come back as local times. A
// "win32.ea" fact (Windows servers) gives the attribute bits as they are on the server.
std::vector<EntreeListe> AnalyseMlsd(const std::string& texte);
// LIST lines, Unix or Windows, in any mix. Unix times without a year are in the last twelve
// months before `maintenant`.
std::vector<EntreeListe> AnalyseList(const std::string& texte, const DateTime& maintenant);

// Windows-style wildcard match: "*" any run, "?" one character; "*.*" matches every name.
bool CorrespondMotif(const std::string& nom, const std::string& motif);

}  // namespace zl3::ftp
