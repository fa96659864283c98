#include "GrilleTexte.h"

#include <algorithm>
#include <vector>

namespace zl3 {
namespace {

size_t Largeur(const std::string& utf8) {
    size_t n = 0;
    for (unsigned char c : utf8)
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}

std::string Cellule(const std::string& texte, size_t largeur, bool droite) {
    const size_t l = Largeur(texte);
    if (l >= largeur) return texte;
    const std::string blancs(largeur - l, ' ');
    return droite ? blancs + texte : texte + blancs;
}

bool Numerique(const std::string& t) {
    if (t.empty()) return false;
    for (char c : t)
        if (!((c >= '0' && c <= '9') || c == '.' || c == ' ' || c == '%' || c == '-')) return false;
    return true;
}

// Rows of the grid as texts: header levels first, then data rows; each row starts with the
// row-header columns.
std::vector<std::vector<std::string>> Lignes(const Grid& g) {
    std::vector<std::vector<std::string>> out;
    const int hc = g.HeaderCols();
    for (int level = 0; level < g.HeaderRows(); ++level) {
        std::vector<std::string> row(static_cast<size_t>(hc), "");
        row[0] = g.ColHeader(level, 0);
        for (int c = 1; c <= g.MaxCols(); ++c)
            row.push_back(g.ColHeader(level, c));
        out.push_back(std::move(row));
    }
    for (int r = 1; r <= g.MaxRows(); ++r) {
        std::vector<std::string> row;
        for (int level = 0; level < hc; ++level)
            row.push_back(g.RowHeader(level, r));
        for (int c = 1; c <= g.MaxCols(); ++c)
            row.push_back(g.Text(c, r));
        out.push_back(std::move(row));
    }
    return out;
}

}  // namespace

std::string GrilleEnTableau(const Grid& g) {
    const auto lignes = Lignes(g);
    const int hc = g.HeaderCols();
    const size_t nc = static_cast<size_t>(hc + g.MaxCols());
    std::vector<size_t> largeurs(nc, 0);
    // Merged headers are not counted in single columns' widths.
    auto estFusionne = [&](int level, int col) {
        for (const HeaderSpan& s : g.Spans())
            if (s.level == level && col >= s.firstCol && col < s.firstCol + s.count && s.count > 1)
                return true;
        return false;
    };
    for (size_t r = 0; r < lignes.size(); ++r)
        for (size_t c = 0; c < nc; ++c) {
            const int level = static_cast<int>(r);
            const int col = static_cast<int>(c) - hc + 1;
            if (level < g.HeaderRows() && col >= 1 && estFusionne(level, col)) continue;
            largeurs[c] = std::max(largeurs[c], Largeur(lignes[r][c]));
        }
    // A merged header wider than its columns widens the last of them.
    for (const HeaderSpan& s : g.Spans()) {
        const size_t first = static_cast<size_t>(hc + s.firstCol - 1);
        size_t total = 0;
        for (int k = 0; k < s.count; ++k)
            total += largeurs[first + k] + (k ? 3 : 0);
        const size_t need = Largeur(g.ColHeader(s.level, s.firstCol));
        if (need > total) largeurs[first + s.count - 1] += need - total;
    }

    std::string out;
    for (size_t r = 0; r < lignes.size(); ++r) {
        const int level = static_cast<int>(r);
        std::string ligne;
        for (size_t c = 0; c < nc;) {
            if (c) ligne += " | ";
            const int col = static_cast<int>(c) - hc + 1;
            const HeaderSpan* span = nullptr;
            if (level < g.HeaderRows())
                for (const HeaderSpan& s : g.Spans())
                    if (s.level == level && s.firstCol == col && s.count > 1) span = &s;
            if (span) {
                size_t total = 0;
                for (int k = 0; k < span->count; ++k)
                    total += largeurs[c + k] + (k ? 3 : 0);
                const std::string& t = lignes[r][c];
                const size_t gauche = (total - std::min(total, Largeur(t))) / 2;
                ligne += Cellule(std::string(gauche, ' ') + t, total, false);
                c += static_cast<size_t>(span->count);
                continue;
            }
            const bool droite = level >= g.HeaderRows() && col >= 1 && Numerique(lignes[r][c]);
            ligne += Cellule(lignes[r][c], largeurs[c], droite);
            ++c;
        }
        while (!ligne.empty() && ligne.back() == ' ')
            ligne.pop_back();
        out += ligne + "\n";
        if (level == g.HeaderRows() - 1) {
            std::string regle;
            for (size_t c = 0; c < nc; ++c)
                regle += (c ? "-+-" : "") + std::string(largeurs[c], '-');
            out += regle + "\n";
        }
    }
    return out;
}

std::string GrilleEnCsv(const Grid& g) {
    std::string out;
    for (const auto& row : Lignes(g)) {
        for (size_t c = 0; c < row.size(); ++c) {
            if (c) out += ',';
            const std::string& t = row[c];
            if (t.find_first_of(",\"\r\n") != std::string::npos) {
                out += '"';
                for (char ch : t) {
                    if (ch == '"') out += '"';
                    out += ch;
                }
                out += '"';
            } else {
                out += t;
            }
        }
        out += "\r\n";
    }
    return out;
}

}  // namespace zl3
