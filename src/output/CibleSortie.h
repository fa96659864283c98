// CibleSortie: the one rule for every file a program of the tool writes on a user's command.
//  - an existing file is kept unless the user asked to replace it (--overwrite, or "Yes" to the
//    export's question);
//  - a database file of the suite (".bt6" and its "-wal", "-shm", "-journal" side files, or any
//    existing file that starts as an SQLite database) is never replaced, even when asked;
//  - a folder, a device or a pipe, or an empty name, is never a target;
//  - the file is written under a temporary name of its folder, every write checked, and renamed
//    over the final name once complete (EcritFichierAtomique): a failed write leaves no partial
//    file and any older file as it was.
#pragma once

#include <string>

#include "EcritureFichier.h"

namespace zl3 {

enum class VerdictCible {
    Libre,        // no file under that name: write it
    Remplacee,    // an existing file the user asked to replace
    Gardee,       // an existing file, kept (no request to replace it)
    Base,         // a database file: never replaced
    Dossier,      // names a folder
    NomInvalide,  // empty name, no file name at all, or not a regular file
};

struct ControleCible {
    VerdictCible verdict = VerdictCible::Libre;
    std::string message;  // French text for the user when the target is refused
    bool Accepte() const {
        return verdict == VerdictCible::Libre || verdict == VerdictCible::Remplacee;
    }
};

// True for a database file of the suite or its side files, by name or by content.
bool EstFichierBase(const std::string& chemin);

// What may be done with `chemin` (UTF-8 path); `ecraser`: the user asked to replace a file.
ControleCible ControleCibleSortie(const std::string& chemin, bool ecraser);

// Writes `contenu` to `chemin` by the rule above (the target already checked).
ResultatEcriture EcritTexteSortie(const std::string& chemin, const std::string& contenu);

}  // namespace zl3
