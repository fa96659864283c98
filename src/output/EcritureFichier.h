// Shared plumbing of the export file writers: the result they return, the write-then-rename of
// the finished file, the UTF-8 decoding the writers need to re-encode cell texts, and the cell
// texts that the spreadsheet writers store as numbers.
#pragma once

#include "Utf8.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace zl3 {

// Outcome of a file writer: on failure `erreur` holds a French text fit for a log line.
struct ResultatEcriture {
    bool ok = false;
    std::string erreur;

    static ResultatEcriture Succes() { return {true, {}}; }
    static ResultatEcriture Echec(std::string texte) { return {false, std::move(texte)}; }
};

// The writer produces its bytes in pieces: `producteur` writes them to the sink it is given and
// returns false, with its error text, to abandon the file.
class SortieFichier {
  public:
    virtual ~SortieFichier() = default;
    virtual void Ecrit(std::string_view octets) = 0;
};
using ProducteurFichier = std::function<bool(SortieFichier& sortie, std::string& erreur)>;

// Writes to `chemin` (UTF-8 path) through a temporary file of the same folder that is renamed
// over the final name once completely written and closed. On any failure, an exception of the
// producer included, the temporary file is removed and an existing file under the final name is
// left as it was.
ResultatEcriture EcritFichierAtomique(const std::string& chemin,
                                      const ProducteurFichier& producteur);

// UTF-8 decoding for re-encoding texts. Every malformed sequence (stray continuation byte, cut or
// overlong sequence, encoded surrogate, value above U+10FFFF) yields one U+FFFD, the way text
// editors show bytes they cannot read, so that a damaged text stays visible instead of vanishing.
// Decodes the character starting at `texte[pos]` and advances `pos` past it.
inline char32_t LitCaractereUtf8(std::string_view texte, size_t& pos) {
    char32_t c;
    return DecodeUtf8(texte, pos, c) ? c : kCaractereRemplacement;
}

// Appends `c` to `sortie` in UTF-8.
inline void AjouteUtf8(std::string& sortie, char32_t c) {
    AppendUtf8(sortie, c);
}

// ---- Cell texts stored as numbers --------------------------------------------------------

// The value of a text that is a plain integer: optional "-", then 1 to 15 digits without a
// leading zero (or "0" alone), so that the number shows exactly the same text.
std::optional<long long> NombreEntier(const std::string& texte);

// A percentage text: a number with an optional "." and decimals, optional spaces, then "%".
// Gives the fraction (12.5 % → 0.125) and the number of decimals of the text.
struct Pourcentage {
    double fraction = 0;
    int decimales = 0;
};
std::optional<Pourcentage> PourcentageDeTexte(const std::string& texte);

}  // namespace zl3
