#include "FichierPdf.h"

#include <cctype>
#include <cstdio>

#include "Cp1252.h"
#include "Lib_Systeme.h"

namespace zl3 {

namespace {

std::string Nombre(double v) {
    char b[32];
    std::snprintf(b, sizeof b, "%.2f", v);
    std::string s = b;
    while (!s.empty() && s.back() == '0')
        s.pop_back();
    if (!s.empty() && s.back() == '.') s.pop_back();
    return s == "-0" ? "0" : s;
}

std::string Couleur(uint32_t rgb, const char* operateur) {
    return Nombre(((rgb >> 16) & 0xFF) / 255.0) + " " + Nombre(((rgb >> 8) & 0xFF) / 255.0) + " " +
           Nombre((rgb & 0xFF) / 255.0) + " " + operateur + "\n";
}

// A literal string of WinAnsi bytes; bytes outside printable ASCII as octal escapes.
std::string ChainePdf(const std::string& utf8) {
    std::string s = "(";
    for (char c : Utf8ToCp1252(utf8)) {
        const unsigned b = static_cast<unsigned char>(c);
        if (c == '(' || c == ')' || c == '\\') {
            s += '\\';
            s += c;
        } else if (b < 32 || b > 126) {
            char o[6];
            std::snprintf(o, sizeof o, "\\%03o", b);
            s += o;
        } else {
            s += c;
        }
    }
    return s + ")";
}

// A text string of the document information: UTF-16BE with its byte order mark, in hex.
std::string ChaineInfo(const std::string& utf8) {
    std::string s = "<FEFF";
    char h[8];
    size_t pos = 0;
    while (pos < utf8.size()) {
        char32_t c = LitCaractereUtf8(utf8, pos);
        const auto unite = [&](unsigned u) {
            std::snprintf(h, sizeof h, "%04X", u);
            s += h;
        };
        if (c >= 0x10000) {
            c -= 0x10000;
            unite(0xD800 + static_cast<unsigned>(c >> 10));
            unite(0xDC00 + static_cast<unsigned>(c & 0x3FF));
        } else {
            unite(static_cast<unsigned>(c));
        }
    }
    return s + ">";
}

std::string Contenu(const PageImprimee& page) {
    std::string s;
    const double h = page.hauteur;
    // Fills first, then the rest in order.
    for (const Primitive& p : page.primitives)
        if (const auto* f = std::get_if<FondDessine>(&p))
            s += Couleur(f->couleur, "rg") + Nombre(f->cadre.x) + " " +
                 Nombre(h - f->cadre.y - f->cadre.hauteur) + " " + Nombre(f->cadre.largeur) + " " +
                 Nombre(f->cadre.hauteur) + " re f\n";
    for (const Primitive& p : page.primitives) {
        if (const auto* t = std::get_if<TraitDessine>(&p)) {
            s += Nombre(t->epaisseur) + " w\n" + Couleur(t->couleur, "RG") + Nombre(t->x1) + " " +
                 Nombre(h - t->y1) + " m " + Nombre(t->x2) + " " + Nombre(h - t->y2) + " l S\n";
        } else if (const auto* x = std::get_if<TexteDessine>(&p)) {
            const double largeur = LargeurTexte(x->texte, x->police);
            double gauche = x->cadre.x;
            if (x->alignement == Alignement::Centre)
                gauche += (x->cadre.largeur - largeur) / 2;
            else if (x->alignement == Alignement::Droite)
                gauche += x->cadre.largeur - largeur;
            // Baseline: the capitals (0.72 em high) centred in the frame.
            const double base = x->cadre.y + (x->cadre.hauteur + 0.72 * x->police.taille) / 2;
            s += "BT\n" + Couleur(0x000000, "rg") + (x->police.gras ? "/F2 " : "/F1 ") +
                 Nombre(x->police.taille) + " Tf\n" + Nombre(gauche) + " " + Nombre(h - base) +
                 " Td\n" + ChainePdf(x->texte) + " Tj\nET\n";
        }
    }
    return s;
}

}  // namespace

ResultatEcriture EcritFichierPdf(const std::string& chemin, const std::vector<PageImprimee>& pages,
                                 const std::string& titre) {
    if (pages.empty()) return ResultatEcriture::Echec("Aucune page à imprimer");
    // Objects: 1 catalogue, 2 page tree, 3 and 4 fonts, 5 information, then per page its page
    // object and its content stream.
    std::string pdf = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
    std::vector<size_t> positions;
    const auto objet = [&](const std::string& corps) {
        positions.push_back(pdf.size());
        pdf += std::to_string(positions.size()) + " 0 obj\n" + corps + "\nendobj\n";
    };
    const size_t n = pages.size();
    objet("<< /Type /Catalog /Pages 2 0 R >>");
    std::string kids;
    for (size_t i = 0; i < n; ++i)
        kids += std::to_string(6 + 2 * i) + " 0 R ";
    objet("<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(n) + " >>");
    objet("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>");
    objet("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica-Bold /Encoding /WinAnsiEncoding >>");
    objet("<< /Title " + ChaineInfo(titre) + " /Producer (Zelvar Tools Stats) >>");
    for (size_t i = 0; i < n; ++i) {
        const PageImprimee& p = pages[i];
        objet("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + Nombre(p.largeur) + " " +
              Nombre(p.hauteur) + "] /Resources << /Font << /F1 3 0 R /F2 4 0 R >> >> /Contents " +
              std::to_string(7 + 2 * i) + " 0 R >>");
        const std::string contenu = Contenu(p);
        objet("<< /Length " + std::to_string(contenu.size()) + " >>\nstream\n" + contenu +
              "endstream");
    }
    const size_t xref = pdf.size();
    pdf += "xref\n0 " + std::to_string(positions.size() + 1) + "\n0000000000 65535 f \n";
    for (size_t pos : positions) {
        char ligne[24];
        std::snprintf(ligne, sizeof ligne, "%010zu 00000 n \n", pos);
        pdf += ligne;
    }
    pdf += "trailer\n<< /Size " + std::to_string(positions.size() + 1) +
           " /Root 1 0 R /Info 5 0 R >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
    return EcritFichierAtomique(chemin, [&pdf](SortieFichier& sortie, std::string&) {
        sortie.Ecrit(pdf);
        return true;
    });
}

std::string AvecExtensionPdf(const std::string& chemin) {
    if (chemin.size() >= 4) {
        std::string fin = chemin.substr(chemin.size() - 4);
        for (char& c : fin)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (fin == ".pdf") return chemin;
    }
    return chemin + ".pdf";
}

ResultatEcriture ImprimeRapportPdf(const Grid& grille, Rapport rapport, const DateTime& debut,
                                   const DateTime& fin, const std::string& identification1,
                                   const std::string& identification2, const DateTime& maintenant,
                                   const std::string& chemin, bool ecraser) {
    if (!ecraser && sys::FileExists(chemin))
        return ResultatEcriture::Echec("Le fichier '" + chemin + "' existe déjà (gardé)");
    const Impression imp =
        MetEnPageRapport(grille, rapport, debut, fin, identification1, identification2, maintenant);
    return EcritFichierPdf(chemin, imp.pages, imp.nomTravail);
}

}  // namespace zl3
