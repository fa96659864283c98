// XML export of a grid: a root element holding one collection element per grid row, each cell a
// child element named after its column, "Col1", "Col2", … in column order:
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <Root>
//     <Collection>
//       <Col1>Titre</Col1>
//       <Col2/>
//     </Collection>
//   </Root>
//
// Every cell is written, empty ones as empty elements, so that each collection element has the
// same children. Texts are escaped (& < > " ') and a carriage return is written as "&#13;" so
// that it survives the parser's line-end normalisation. Characters that XML 1.0 does not allow
// (control characters other than tab, line feed and carriage return, U+FFFE, U+FFFF) and bytes
// that are not UTF-8 are replaced by U+FFFD "�", so that the reader sees that something was
// there. Lines end with CR LF, as the station's Windows tools expect.
#pragma once

#include <string>

#include "EcritureFichier.h"
#include "Grid.h"

namespace zl3 {

// Element names accepted for the root and collection elements: an ASCII letter or "_", then
// ASCII letters, digits, "_", "-" or "."; names starting with "xml" (any case) are reserved by
// XML and refused, as is ":" (no namespaces here).
bool EstNomElementXml(const std::string& nom);

// Name of the element of grid column `colonne` (1-based): "Col" & colonne.
std::string NomElementColonne(int colonne);

// `texte` escaped for element content, as described above.
std::string TexteXml(const std::string& texte);

// Writes the data area of `grille` (columns 1..MaxCols(), rows 1..MaxRows()) to `chemin`, one
// `collection` element per row inside the `racine` element. Refuses invalid element names.
ResultatEcriture EcritFichierXml(const std::string& chemin, const Grid& grille,
                                 const std::string& racine, const std::string& collection);

}  // namespace zl3
