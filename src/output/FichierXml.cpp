#include "FichierXml.h"

#include <string_view>
#include <vector>

namespace zl3 {

namespace {

bool EstLettreAscii(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool EstChiffre(char c) {
    return c >= '0' && c <= '9';
}

// Appends `texte` escaped to `sortie`.
void AjouteTexteXml(std::string& sortie, std::string_view texte) {
    size_t i = 0;
    while (i < texte.size()) {
        const unsigned char b = static_cast<unsigned char>(texte[i]);
        if (b >= 0x80) {
            const size_t debut = i;
            const char32_t c = LitCaractereUtf8(texte, i);
            if (c == kCaractereRemplacement || c == 0xFFFE || c == 0xFFFF)
                AjouteUtf8(sortie, kCaractereRemplacement);
            else
                sortie.append(texte.substr(debut, i - debut));
            continue;
        }
        ++i;
        switch (b) {
            case '&':
                sortie += "&amp;";
                break;
            case '<':
                sortie += "&lt;";
                break;
            case '>':
                sortie += "&gt;";
                break;
            case '"':
                sortie += "&quot;";
                break;
            case '\'':
                sortie += "&apos;";
                break;
            case '\r':
                sortie += "&#13;";
                break;
            case '\t':
            case '\n':
                sortie += static_cast<char>(b);
                break;
            default:
                if (b < 0x20)
                    AjouteUtf8(sortie, kCaractereRemplacement);
                else
                    sortie += static_cast<char>(b);
        }
    }
}

}  // namespace

bool EstNomElementXml(const std::string& nom) {
    if (nom.empty() || !(EstLettreAscii(nom[0]) || nom[0] == '_')) return false;
    for (char c : nom)
        if (!(EstLettreAscii(c) || EstChiffre(c) || c == '_' || c == '-' || c == '.')) return false;
    if (nom.size() >= 3) {
        std::string debut = nom.substr(0, 3);
        for (char& c : debut)
            c = static_cast<char>(c | 0x20);
        if (debut == "xml") return false;
    }
    return true;
}

std::string NomElementColonne(int colonne) {
    return "Col" + std::to_string(colonne);
}

std::string TexteXml(const std::string& texte) {
    std::string sortie;
    sortie.reserve(texte.size());
    AjouteTexteXml(sortie, texte);
    return sortie;
}

ResultatEcriture EcritFichierXml(const std::string& chemin, const Grid& grille,
                                 const std::string& racine, const std::string& collection) {
    if (!EstNomElementXml(racine))
        return ResultatEcriture::Echec("Nom d'élément XML invalide : '" + racine + "'");
    if (!EstNomElementXml(collection))
        return ResultatEcriture::Echec("Nom d'élément XML invalide : '" + collection + "'");

    return EcritFichierAtomique(chemin, [&](SortieFichier& sortie, std::string&) {
        const int colonnes = grille.MaxCols();
        const int lignes = grille.MaxRows();
        // Column tags made once: "    <ColN>", "</ColN>\r\n" and the empty "    <ColN/>\r\n".
        std::vector<std::string> ouvrants, fermants, vides;
        for (int c = 1; c <= colonnes; ++c) {
            const std::string nom = NomElementColonne(c);
            ouvrants.push_back("    <" + nom + ">");
            fermants.push_back("</" + nom + ">\r\n");
            vides.push_back("    <" + nom + "/>\r\n");
        }
        const std::string ouvreLigne = "  <" + collection + ">\r\n";
        const std::string fermeLigne = "  </" + collection + ">\r\n";
        const std::string ligneVide = "  <" + collection + "/>\r\n";

        std::string tampon = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<" + racine + ">\r\n";
        for (int r = 1; r <= lignes; ++r) {
            if (colonnes == 0) {
                tampon += ligneVide;
            } else {
                tampon += ouvreLigne;
                for (int c = 1; c <= colonnes; ++c) {
                    const std::string t = grille.Text(c, r);
                    const size_t k = static_cast<size_t>(c - 1);
                    if (t.empty()) {
                        tampon += vides[k];
                    } else {
                        tampon += ouvrants[k];
                        AjouteTexteXml(tampon, t);
                        tampon += fermants[k];
                    }
                }
                tampon += fermeLigne;
            }
            if (tampon.size() >= (1u << 20)) {
                sortie.Ecrit(tampon);
                tampon.clear();
            }
        }
        tampon += "</" + racine + ">\r\n";
        sortie.Ecrit(tampon);
        return true;
    });
}

}  // namespace zl3
