#include "ClasseurXls.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>

namespace zl3 {

namespace {

// ---- BIFF8 record identifiers ---------------------------------------------------------------

enum IdEnregistrement : uint16_t {
    kBof = 0x0809,
    kEof = 0x000A,
    kInterfaceHdr = 0x00E1,
    kMms = 0x00C1,
    kInterfaceEnd = 0x00E2,
    kWriteAccess = 0x005C,
    kCodePage = 0x0042,
    kDsf = 0x0161,
    kTabId = 0x013D,
    kFnGroupCount = 0x009C,
    kWindowProtect = 0x0019,
    kProtect = 0x0012,
    kPassword = 0x0013,
    kProt4Rev = 0x01AF,
    kProt4RevPass = 0x01BC,
    kWindow1 = 0x003D,
    kBackup = 0x0040,
    kHideObj = 0x008D,
    kDate1904 = 0x0022,
    kCalcPrecision = 0x000E,
    kRefreshAll = 0x01B7,
    kBookBool = 0x00DA,
    kFont = 0x0031,
    kFormat = 0x041E,
    kXf = 0x00E0,
    kStyle = 0x0293,
    kUsesElfs = 0x0160,
    kBoundSheet = 0x0085,
    kCountry = 0x008C,
    kSst = 0x00FC,
    kContinue = 0x003C,
    kExtSst = 0x00FF,
    kIndex = 0x020B,
    kCalcMode = 0x000D,
    kCalcCount = 0x000C,
    kCalcRefMode = 0x000F,
    kCalcIter = 0x0011,
    kCalcDelta = 0x0010,
    kCalcSaveRecalc = 0x005F,
    kPrintRowCol = 0x002A,
    kPrintGrid = 0x002B,
    kGridSet = 0x0082,
    kGuts = 0x0080,
    kDefaultRowHeight = 0x0225,
    kWsBool = 0x0081,
    kHeader = 0x0014,
    kFooter = 0x0015,
    kHCenter = 0x0083,
    kVCenter = 0x0084,
    kSetup = 0x00A1,
    kDefColWidth = 0x0055,
    kColInfo = 0x007D,
    kDimensions = 0x0200,
    kRow = 0x0208,
    kLabelSst = 0x00FD,
    kNumber = 0x0203,
    kDbCell = 0x00D7,
    kWindow2 = 0x023E,
    kMergeCells = 0x00E5,
};

// Longest record body; longer data goes on in CONTINUE records.
constexpr size_t kMaxCorps = 8224;
// Rows per row block (ROW records, their cells, one DBCELL).
constexpr int kLignesParBloc = 32;
// Cell formats: the default cell XF that follows the fifteen style XFs, and the same centred,
// for the first cell of a merged zone (a band header over its columns).
constexpr uint16_t kXfCellule = 15;
constexpr uint16_t kXfCentre = 16;
// Column widths, in characters: the default, and the widest a column is made for its texts.
constexpr int kLargeurDefaut = 8;
constexpr int kLargeurMax = 80;
constexpr size_t kMaxColInfo = 255;
// Merged zones per MERGEDCELLS record (2 + 8 × 1026 bytes fit in one record).
constexpr size_t kZonesParEnreg = 1026;
constexpr uint32_t kSansTexte = std::numeric_limits<uint32_t>::max();
// A cell whose text is a plain integer, written as a NUMBER record rather than a shared string.
constexpr uint32_t kNombre = kSansTexte - 1;

// ---- The Workbook stream under construction -------------------------------------------------

class Flux {
  public:
    std::string octets;

    size_t Pos() const { return octets.size(); }
    void U8(unsigned v) { octets.push_back(static_cast<char>(v & 0xFF)); }
    void U16(unsigned v) {
        const char b[2] = {static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)};
        octets.append(b, 2);
    }
    void U32(uint32_t v) {
        char b[4];
        for (int i = 0; i < 4; ++i)
            b[i] = static_cast<char>((v >> (8 * i)) & 0xFF);
        octets.append(b, 4);
    }
    void F64(double v) {
        uint64_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        for (int i = 0; i < 8; ++i)
            U8(static_cast<unsigned>((bits >> (8 * i)) & 0xFF));
    }
    void Zeros(size_t n) { octets.append(n, '\0'); }
    void Octets(std::string_view b) { octets.append(b); }
    void PoseU16(size_t at, unsigned v) {
        octets[at] = static_cast<char>(v & 0xFF);
        octets[at + 1] = static_cast<char>((v >> 8) & 0xFF);
    }
    void PoseU32(size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i)
            octets[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
    }

    // Record header with its length filled in by Fin().
    size_t Debut(uint16_t id) {
        const size_t p = Pos();
        U16(id);
        U16(0);
        return p;
    }
    void Fin(size_t debut) { PoseU16(debut + 2, static_cast<unsigned>(Pos() - debut - 4)); }
    // A record made of 16-bit values only.
    void Mots(uint16_t id, std::initializer_list<unsigned> mots) {
        U16(id);
        U16(static_cast<unsigned>(2 * mots.size()));
        for (unsigned m : mots)
            U16(m);
    }
};

// ---- Texts ----------------------------------------------------------------------------------

bool EstAscii(std::string_view s) {
    for (char c : s)
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    return true;
}

void VersUtf16(std::string_view s, std::u16string& sortie) {
    sortie.clear();
    size_t i = 0;
    while (i < s.size()) {
        char32_t c = LitCaractereUtf8(s, i);
        if (c >= 0x10000) {
            c -= 0x10000;
            sortie.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            sortie.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            sortie.push_back(static_cast<char16_t>(c));
        }
    }
}

bool TientSurUnOctet(const std::u16string& u) {
    return std::all_of(u.begin(), u.end(), [](char16_t c) { return c < 0x100; });
}

bool EstDebutDePaire(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}

// Characters of a UTF-16 text, one byte each when `compresse`, else little-endian pairs.
void EcritCaracteres(Flux& f, const std::u16string& u, size_t debut, size_t n, bool compresse) {
    if (compresse) {
        for (size_t i = debut; i < debut + n; ++i)
            f.U8(u[i]);
    } else {
        for (size_t i = debut; i < debut + n; ++i)
            f.U16(u[i]);
    }
}

// ShortXLUnicodeString (sheet and font names): 1-byte length, flags, characters.
void EcritTexteCourt(Flux& f, std::string_view texte) {
    std::u16string u;
    VersUtf16(texte, u);
    const bool compresse = TientSurUnOctet(u);
    f.U8(static_cast<unsigned>(u.size()));
    f.U8(compresse ? 0 : 1);
    EcritCaracteres(f, u, 0, u.size(), compresse);
}

// XLUnicodeString (format codes, user name): 2-byte length, flags, characters.
void EcritTexteLong(Flux& f, std::string_view texte) {
    std::u16string u;
    VersUtf16(texte, u);
    const bool compresse = TientSurUnOctet(u);
    f.U16(static_cast<unsigned>(u.size()));
    f.U8(compresse ? 0 : 1);
    EcritCaracteres(f, u, 0, u.size(), compresse);
}

// ---- Shared string table --------------------------------------------------------------------

// The distinct texts of the sheet, in order of first use, kept end to end in one buffer and
// found again through an open-addressing hash table (a sheet can hold a million texts; one
// allocation per text would cost more than writing the file).
class Dictionnaire {
  public:
    size_t Taille() const { return reperes_.size(); }
    std::string_view Texte(size_t i) const {
        return std::string_view(tampon_).substr(reperes_[i].debut, reperes_[i].longueur);
    }
    // Index of `texte`, added at the end when not yet known.
    uint32_t Indice(std::string_view texte) {
        if (2 * (reperes_.size() + 1) > cases_.size()) Agrandit();
        const size_t h = std::hash<std::string_view>{}(texte);
        for (size_t i = h & masque_;; i = (i + 1) & masque_) {
            const uint32_t c = cases_[i];
            if (c == 0) {
                reperes_.push_back({tampon_.size(), texte.size(), h});
                tampon_.append(texte);
                cases_[i] = static_cast<uint32_t>(reperes_.size());
                return static_cast<uint32_t>(reperes_.size() - 1);
            }
            if (reperes_[c - 1].hachage == h && Texte(c - 1) == texte) return c - 1;
        }
    }

  private:
    struct Repere {
        size_t debut;
        size_t longueur;
        size_t hachage;
    };
    void Agrandit() {
        const size_t n = std::max<size_t>(1024, 2 * cases_.size());
        cases_.assign(n, 0);
        masque_ = n - 1;
        for (size_t k = 0; k < reperes_.size(); ++k) {
            size_t i = reperes_[k].hachage & masque_;
            while (cases_[i] != 0)
                i = (i + 1) & masque_;
            cases_[i] = static_cast<uint32_t>(k + 1);
        }
    }

    std::string tampon_;
    std::vector<Repere> reperes_;
    std::vector<uint32_t> cases_;  // index + 1 of a text, 0 for a free slot
    size_t masque_ = 0;
};

// The texts of the sheet and the text index of every cell.
struct TableTextes {
    Dictionnaire uniques;
    std::vector<uint32_t> indexCellules;  // row-major, kSansTexte for an empty cell
    std::vector<int> largeurs;            // longest text of each column, in characters
    uint32_t references = 0;
};

// Where each EXTSST bucket's first string starts.
struct RepereSst {
    uint32_t positionFlux;
    uint16_t decalageEnreg;  // from the start of its SST or CONTINUE record, header included
};

// Writes the SST record and its CONTINUE records. A string header (length and flags) never
// straddles two records; characters that do not fit go on in a CONTINUE record that starts with
// a fresh flags byte, and a surrogate pair is never cut in two.
class EcrivainSst {
  public:
    EcrivainSst(Flux& f, uint32_t references, uint32_t uniques) : f_(f) {
        debut_ = f_.Debut(kSst);
        f_.U32(references);
        f_.U32(uniques);
    }

    RepereSst Ajoute(std::string_view texte) {
        bool compresse = true;
        if (EstAscii(texte)) {
            u16_.assign(texte.begin(), texte.end());
        } else {
            VersUtf16(texte, u16_);
            compresse = TientSurUnOctet(u16_);
        }
        const size_t tailleCar = compresse ? 1 : 2;
        const size_t n = u16_.size();
        if (Libre() < 3 + (n > 0 ? tailleCar : 0)) Continue();
        const RepereSst repere{static_cast<uint32_t>(f_.Pos()),
                               static_cast<uint16_t>(f_.Pos() - debut_)};
        f_.U16(static_cast<unsigned>(n));
        f_.U8(compresse ? 0 : 1);
        size_t i = 0;
        while (i < n) {
            size_t k = std::min(Libre() / tailleCar, n - i);
            if (!compresse && k > 0 && i + k < n && EstDebutDePaire(u16_[i + k - 1])) --k;
            if (k == 0) {
                Continue();
                f_.U8(compresse ? 0 : 1);
                continue;
            }
            EcritCaracteres(f_, u16_, i, k, compresse);
            i += k;
        }
        return repere;
    }

    void Termine() { f_.Fin(debut_); }

  private:
    size_t Libre() const { return kMaxCorps - (f_.Pos() - debut_ - 4); }
    void Continue() {
        f_.Fin(debut_);
        debut_ = f_.Debut(kContinue);
    }

    Flux& f_;
    size_t debut_;
    std::u16string u16_;
};

// Strings per EXTSST bucket: at least 8, and few enough buckets (at most 128) for one record.
uint16_t TexteParSeau(size_t uniques) {
    return static_cast<uint16_t>(std::max<size_t>(8, (uniques + 127) / 128));
}

// ---- Workbook globals -----------------------------------------------------------------------

void EcritBof(Flux& f, unsigned type) {
    const size_t d = f.Debut(kBof);
    f.U16(0x0600);  // BIFF8
    f.U16(type);    // 0x0005 workbook globals, 0x0010 worksheet
    f.U16(0x0DBB);  // build and year of the application version this layout follows (Excel 97)
    f.U16(0x07CC);
    f.U32(0);     // file history flags
    f.U32(0x06);  // lowest BIFF version able to read the file: BIFF8
    f.Fin(d);
}

void EcritPolice(Flux& f, bool gras, bool italique) {
    const size_t d = f.Debut(kFont);
    f.U16(200);                    // 10 points, in twentieths
    f.U16(italique ? 0x0002 : 0);  // attributes
    f.U16(0x7FFF);                 // automatic colour
    f.U16(gras ? 700 : 400);       // weight
    f.U16(0);                      // no super/subscript
    f.U8(0);                       // no underline
    f.U8(2);                       // family: Swiss
    f.U8(0);                       // character set: ANSI
    f.U8(0);
    EcritTexteCourt(f, "Arial");
    f.Fin(d);
}

void EcritFormat(Flux& f, unsigned id, std::string_view code) {
    const size_t d = f.Debut(kFormat);
    f.U16(id);
    EcritTexteLong(f, code);
    f.Fin(d);
}

// XF record. Style XFs leave the attribute groups they do not set to the Normal style; the
// centred cell XF says that its alignment is its own.
void EcritXf(Flux& f, bool style, unsigned attributsIgnores, bool centre = false) {
    const size_t d = f.Debut(kXf);
    f.U16(0);                        // font 0
    f.U16(0);                        // number format "General"
    f.U16(style ? 0xFFF5 : 0x0001);  // locked; style XF with no parent / parent 0
    f.U8(centre ? 0x22 : 0x20);      // horizontal general or centred, bottom
    f.U8(0);                         // no rotation
    f.U8(0);                         // no indent
    f.U8(((centre ? 0x04 : attributsIgnores) & 0x3F) << 2);  // attribute groups
    f.U32(0);                                                // no borders
    f.U32(0);
    f.U16(0x20C0);  // pattern colours: system foreground/background
    f.Fin(d);
}

struct ResultatGlobaux {
    size_t positionPositionFeuille;  // the BOUNDSHEET field filled once the sheet is placed
};

ResultatGlobaux EcritGlobaux(Flux& f, const std::string& nomFeuille, const TableTextes& textes) {
    EcritBof(f, 0x0005);
    f.Mots(kInterfaceHdr, {1200});
    f.Mots(kMms, {0});
    f.Mots(kInterfaceEnd, {});
    {
        const size_t d = f.Debut(kWriteAccess);
        EcritTexteLong(f, "Zelvar Tools Stats");
        f.Octets(std::string(112 - (f.Pos() - d - 4), ' '));
        f.Fin(d);
    }
    f.Mots(kCodePage, {1200});  // texts in UTF-16
    f.Mots(kDsf, {0});
    f.Mots(kTabId, {1});
    f.Mots(kFnGroupCount, {14});
    f.Mots(kWindowProtect, {0});
    f.Mots(kProtect, {0});
    f.Mots(kPassword, {0});
    f.Mots(kProt4Rev, {0});
    f.Mots(kProt4RevPass, {0});
    // Window at 360/270 twips, 14940 × 9150, scroll bars and sheet tabs shown, first tab active.
    f.Mots(kWindow1, {360, 270, 14940, 9150, 0x0038, 0, 0, 1, 600});
    f.Mots(kBackup, {0});
    f.Mots(kHideObj, {0});
    f.Mots(kDate1904, {0});
    f.Mots(kCalcPrecision, {1});
    f.Mots(kRefreshAll, {0});
    f.Mots(kBookBool, {0});
    // The four fonts every workbook has: regular, bold, italic, bold italic.
    EcritPolice(f, false, false);
    EcritPolice(f, true, false);
    EcritPolice(f, false, true);
    EcritPolice(f, true, true);
    // The eight built-in currency formats a workbook stores, in the French euro style.
    EcritFormat(f, 5, "#,##0\\ \"€\";\\-#,##0\\ \"€\"");
    EcritFormat(f, 6, "#,##0\\ \"€\";[Red]\\-#,##0\\ \"€\"");
    EcritFormat(f, 7, "#,##0.00\\ \"€\";\\-#,##0.00\\ \"€\"");
    EcritFormat(f, 8, "#,##0.00\\ \"€\";[Red]\\-#,##0.00\\ \"€\"");
    EcritFormat(f, 42, "_-* #,##0\\ \"€\"_-;\\-* #,##0\\ \"€\"_-;_-* \"-\"\\ \"€\"_-;_-@_-");
    EcritFormat(f, 41, "_-* #,##0\\ _€_-;\\-* #,##0\\ _€_-;_-* \"-\"\\ _€_-;_-@_-");
    EcritFormat(f, 44,
                "_-* #,##0.00\\ \"€\"_-;\\-* #,##0.00\\ \"€\"_-;_-* \"-\"??\\ \"€\"_-;_-@_-");
    EcritFormat(f, 43, "_-* #,##0.00\\ _€_-;\\-* #,##0.00\\ _€_-;_-* \"-\"??\\ _€_-;_-@_-");
    // Style XFs: Normal, then the fourteen outline-level styles (font only); then the cell XF.
    EcritXf(f, true, 0);
    for (int i = 1; i < 15; ++i)
        EcritXf(f, true, 0x3D);
    EcritXf(f, false, 0);
    EcritXf(f, false, 0, true);
    {
        const size_t d = f.Debut(kStyle);
        f.U16(0x8000);  // built-in style on XF 0
        f.U8(0);        // "Normal"
        f.U8(0xFF);     // no outline level
        f.Fin(d);
    }
    f.Mots(kUsesElfs, {0});

    ResultatGlobaux r{};
    {
        const size_t d = f.Debut(kBoundSheet);
        r.positionPositionFeuille = f.Pos();
        f.U32(0);  // stream position of the sheet's BOF, known once the globals are complete
        f.U8(0);   // visible
        f.U8(0);   // worksheet
        EcritTexteCourt(f, nomFeuille);
        f.Fin(d);
    }
    f.Mots(kCountry, {1, 33});  // user interface in English, regional settings of France

    const size_t uniques = textes.uniques.Taille();
    const uint16_t parSeau = TexteParSeau(uniques);
    std::vector<RepereSst> reperes;
    reperes.reserve((uniques + parSeau - 1) / parSeau);
    EcrivainSst sst(f, textes.references, static_cast<uint32_t>(uniques));
    for (size_t i = 0; i < uniques; ++i) {
        const RepereSst rep = sst.Ajoute(textes.uniques.Texte(i));
        if (i % parSeau == 0) reperes.push_back(rep);
    }
    sst.Termine();
    {
        const size_t d = f.Debut(kExtSst);
        f.U16(parSeau);
        for (const RepereSst& rep : reperes) {
            f.U32(rep.positionFlux);
            f.U16(rep.decalageEnreg);
            f.U16(0);
        }
        f.Fin(d);
    }
    f.Mots(kEof, {});
    return r;
}

// ---- Worksheet ------------------------------------------------------------------------------

// COLINFO records for the columns whose texts are wider than the default width, one record per
// run of neighbouring columns of the same width (at most 255 records: any columns left over
// share the last record, at the widest of their widths).
void EcritLargeurs(Flux& f, const std::vector<int>& largeurs) {
    struct Serie {
        size_t premiere, derniere;
        int largeur;
    };
    std::vector<Serie> series;
    for (size_t c = 0; c < largeurs.size(); ++c) {
        if (largeurs[c] <= kLargeurDefaut) continue;
        const int l = std::min(largeurs[c], kLargeurMax) + 1;
        if (!series.empty() && series.back().derniere + 1 == c && series.back().largeur == l)
            series.back().derniere = c;
        else
            series.push_back({c, c, l});
    }
    if (series.size() > kMaxColInfo) {
        Serie& derniere = series[kMaxColInfo - 1];
        for (size_t k = kMaxColInfo; k < series.size(); ++k)
            derniere.largeur = std::max(derniere.largeur, series[k].largeur);
        derniere.derniere = series.back().derniere;
        series.resize(kMaxColInfo);
    }
    for (const Serie& s : series) {
        const size_t d = f.Debut(kColInfo);
        f.U16(static_cast<unsigned>(s.premiere));
        f.U16(static_cast<unsigned>(s.derniere));
        f.U16(static_cast<unsigned>(s.largeur * 256));  // in 1/256 of a character
        f.U16(kXfCellule);
        f.U16(0x0002);  // width set on purpose
        f.U16(0);
        f.Fin(d);
    }
}

// Number of characters of a UTF-8 text (its bytes that do not continue a character).
int NombreCaracteres(std::string_view s) {
    int n = 0;
    for (char c : s)
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
    return n;
}

struct Plage {
    int premiere = 0;  // first used row / column
    int fin = 0;       // last used + 1; 0 when nothing is used
};

void EcritFeuille(Flux& f, const TableTextes& textes, const Grid& grille, int colonnes,
                  int lignes, const std::vector<ZoneFusionnee>& fusions) {
    // Used rows, and the used column range of each.
    std::vector<Plage> colonnesDeLigne(static_cast<size_t>(lignes));
    Plage lignesUtilisees;
    Plage colonnesUtilisees{colonnes, 0};
    for (int r = 0; r < lignes; ++r) {
        Plage& p = colonnesDeLigne[static_cast<size_t>(r)];
        const uint32_t* ligne = textes.indexCellules.data() + static_cast<size_t>(r) * colonnes;
        for (int c = 0; c < colonnes; ++c) {
            if (ligne[c] == kSansTexte) continue;
            if (p.fin == 0) p.premiere = c;
            p.fin = c + 1;
        }
        if (p.fin == 0) continue;
        if (lignesUtilisees.fin == 0) lignesUtilisees.premiere = r;
        lignesUtilisees.fin = r + 1;
        colonnesUtilisees.premiere = std::min(colonnesUtilisees.premiere, p.premiere);
        colonnesUtilisees.fin = std::max(colonnesUtilisees.fin, p.fin);
    }
    if (colonnesUtilisees.fin == 0) colonnesUtilisees.premiere = 0;

    // Row blocks that hold at least one used row: one DBCELL each, listed by INDEX.
    std::vector<int> blocs;
    for (int r = lignesUtilisees.premiere; r < lignesUtilisees.fin; ++r) {
        if (colonnesDeLigne[static_cast<size_t>(r)].fin == 0) continue;
        const int b = r / kLignesParBloc;
        if (blocs.empty() || blocs.back() != b) blocs.push_back(b);
    }

    // First cells of the merged zones, shown centred over their zone.
    std::vector<char> centres;
    if (!fusions.empty()) {
        centres.assign(textes.indexCellules.size(), 0);
        for (const ZoneFusionnee& z : fusions)
            centres[static_cast<size_t>(z.premiereLigne) * colonnes + z.premiereColonne] = 1;
    }

    EcritBof(f, 0x0010);
    const size_t index = f.Debut(kIndex);
    f.U32(0);
    f.U32(static_cast<uint32_t>(lignesUtilisees.premiere));
    f.U32(static_cast<uint32_t>(lignesUtilisees.fin));
    const size_t positionIbXf = f.Pos();
    f.U32(0);
    const size_t positionDbCells = f.Pos();
    f.Zeros(4 * blocs.size());
    f.Fin(index);

    f.Mots(kCalcMode, {1});  // automatic
    f.Mots(kCalcCount, {100});
    f.Mots(kCalcRefMode, {1});  // A1 references
    f.Mots(kCalcIter, {0});
    {
        const size_t d = f.Debut(kCalcDelta);
        f.F64(0.001);
        f.Fin(d);
    }
    f.Mots(kCalcSaveRecalc, {1});
    f.Mots(kPrintRowCol, {0});
    f.Mots(kPrintGrid, {0});
    f.Mots(kGridSet, {1});
    f.Mots(kGuts, {0, 0, 0, 0});
    f.Mots(kDefaultRowHeight, {0, 255});
    f.Mots(kWsBool, {0x04C1});
    f.Mots(kHeader, {});  // no page header or footer
    f.Mots(kFooter, {});
    f.Mots(kHCenter, {0});
    f.Mots(kVCenter, {0});
    {
        const size_t d = f.Debut(kSetup);
        f.U16(9);       // A4
        f.U16(100);     // scale
        f.U16(1);       // first page number
        f.U16(1);       // fit to one page wide
        f.U16(1);       // and one page high
        f.U16(0x0002);  // portrait
        f.U16(600);     // print resolution
        f.U16(600);
        f.F64(0.5);  // header and footer margins, inches
        f.F64(0.5);
        f.U16(1);  // copies
        f.Fin(d);
    }
    f.PoseU32(positionIbXf, static_cast<uint32_t>(f.Pos()));
    f.Mots(kDefColWidth, {kLargeurDefaut});
    EcritLargeurs(f, textes.largeurs);
    {
        const size_t d = f.Debut(kDimensions);
        f.U32(static_cast<uint32_t>(lignesUtilisees.premiere));
        f.U32(static_cast<uint32_t>(lignesUtilisees.fin));
        f.U16(static_cast<unsigned>(colonnesUtilisees.premiere));
        f.U16(static_cast<unsigned>(colonnesUtilisees.fin));
        f.U16(0);
        f.Fin(d);
    }

    // Cell table, block by block: the ROW records, the cells of those rows, then a DBCELL that
    // points back at the first ROW record and at each row's first cell.
    for (size_t ib = 0; ib < blocs.size(); ++ib) {
        const int premiere = std::max(blocs[ib] * kLignesParBloc, lignesUtilisees.premiere);
        const int fin = std::min((blocs[ib] + 1) * kLignesParBloc, lignesUtilisees.fin);
        const size_t debutLignes = f.Pos();
        for (int r = premiere; r < fin; ++r) {
            const Plage& p = colonnesDeLigne[static_cast<size_t>(r)];
            if (p.fin == 0) continue;
            const size_t d = f.Debut(kRow);
            f.U16(static_cast<unsigned>(r));
            f.U16(static_cast<unsigned>(p.premiere));
            f.U16(static_cast<unsigned>(p.fin));
            f.U16(255);  // default height
            f.U16(0);
            f.U16(0);
            f.U32(0x00000100u | (uint32_t{kXfCellule} << 16));  // no outline, default format
            f.Fin(d);
        }
        const size_t finPremiereLigne = debutLignes + 20;
        std::vector<uint16_t> decalages;
        size_t precedente = finPremiereLigne;
        for (int r = premiere; r < fin; ++r) {
            if (colonnesDeLigne[static_cast<size_t>(r)].fin == 0) continue;
            decalages.push_back(static_cast<uint16_t>(f.Pos() - precedente));
            precedente = f.Pos();
            const uint32_t* ligne = textes.indexCellules.data() + static_cast<size_t>(r) * colonnes;
            for (int c = 0; c < colonnes; ++c) {
                if (ligne[c] == kSansTexte) continue;
                const bool centre =
                    !centres.empty() && centres[static_cast<size_t>(r) * colonnes + c];
                const unsigned xf = centre ? kXfCentre : kXfCellule;
                if (ligne[c] == kNombre) {
                    // The General format shows the integer as the grid's text.
                    const size_t d = f.Debut(kNumber);
                    f.U16(static_cast<unsigned>(r));
                    f.U16(static_cast<unsigned>(c));
                    f.U16(xf);
                    f.F64(static_cast<double>(*NombreEntier(grille.Text(c + 1, r + 1))));
                    f.Fin(d);
                    continue;
                }
                char b[14];
                const auto pose16 = [&b](int at, unsigned v) {
                    b[at] = static_cast<char>(v & 0xFF);
                    b[at + 1] = static_cast<char>((v >> 8) & 0xFF);
                };
                pose16(0, kLabelSst);
                pose16(2, 10);
                pose16(4, static_cast<unsigned>(r));
                pose16(6, static_cast<unsigned>(c));
                pose16(8, xf);
                pose16(10, ligne[c] & 0xFFFF);
                pose16(12, ligne[c] >> 16);
                f.octets.append(b, sizeof b);
            }
        }
        const size_t dbcell = f.Debut(kDbCell);
        f.U32(static_cast<uint32_t>(dbcell - debutLignes));
        for (uint16_t dec : decalages)
            f.U16(dec);
        f.Fin(dbcell);
        f.PoseU32(positionDbCells + 4 * ib, static_cast<uint32_t>(dbcell));
    }

    // Sheet window: grid lines, headings, zeros and outline symbols shown; selected, active.
    f.Mots(kWindow2, {0x06B6, 0, 0, 64, 0, 0, 0, 0, 0});

    for (size_t i = 0; i < fusions.size(); i += kZonesParEnreg) {
        const size_t n = std::min(kZonesParEnreg, fusions.size() - i);
        const size_t d = f.Debut(kMergeCells);
        f.U16(static_cast<unsigned>(n));
        for (size_t k = i; k < i + n; ++k) {
            f.U16(static_cast<unsigned>(fusions[k].premiereLigne));
            f.U16(static_cast<unsigned>(fusions[k].derniereLigne));
            f.U16(static_cast<unsigned>(fusions[k].premiereColonne));
            f.U16(static_cast<unsigned>(fusions[k].derniereColonne));
        }
        f.Fin(d);
    }
    f.Mots(kEof, {});
}

// ---- Compound file container ----------------------------------------------------------------

constexpr uint32_t kSecteur = 512;
constexpr uint32_t kEntreesParSecteur = kSecteur / 4;
constexpr uint32_t kFatDansEntete = 109;
constexpr uint32_t kLibre = 0xFFFFFFFF;         // FREESECT, also NOSTREAM for directory links
constexpr uint32_t kFinDeChaine = 0xFFFFFFFE;   // ENDOFCHAIN
constexpr uint32_t kSecteurFat = 0xFFFFFFFD;    // FATSECT
constexpr uint32_t kSecteurDifat = 0xFFFFFFFC;  // DIFSECT
// Streams below this size would be looked for in the mini stream.
constexpr uint32_t kTailleMiniFlux = 4096;

void Pose32(std::string& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}
void Pose16(std::string& b, size_t at, unsigned v) {
    b[at] = static_cast<char>(v & 0xFF);
    b[at + 1] = static_cast<char>((v >> 8) & 0xFF);
}

// Directory entry of 128 bytes.
void EntreeRepertoire(std::string& b, size_t at, std::u16string_view nom, uint8_t type,
                      uint32_t enfant, const uint8_t* clsid, uint32_t premierSecteur,
                      uint32_t taille) {
    for (size_t i = 0; i < nom.size(); ++i)
        Pose16(b, at + 2 * i, nom[i]);
    Pose16(b, at + 64, static_cast<unsigned>(2 * (nom.size() + 1)));  // with the final null
    b[at + 66] = static_cast<char>(type);
    b[at + 67] = 1;  // black: the tree has a single node per level
    Pose32(b, at + 68, kLibre);
    Pose32(b, at + 72, kLibre);
    Pose32(b, at + 76, enfant);
    if (clsid) std::memcpy(&b[at + 80], clsid, 16);
    Pose32(b, at + 116, premierSecteur);
    Pose32(b, at + 120, taille);
}

// Writes the container: header, the Workbook stream's sectors, one directory sector, the FAT
// sectors, then the DIFAT sectors that list the FAT sectors the header has no room for.
void EcritConteneur(SortieFichier& sortie, std::string& flux) {
    if (flux.size() < kTailleMiniFlux) flux.resize(kTailleMiniFlux, '\0');
    const uint32_t tailleFlux = static_cast<uint32_t>(flux.size());
    const uint32_t secteursFlux = (tailleFlux + kSecteur - 1) / kSecteur;

    uint32_t nbFat = 0;
    uint32_t nbDifat = 0;
    for (;;) {
        const uint32_t total = secteursFlux + 1 + nbFat + nbDifat;
        const uint32_t fat = (total + kEntreesParSecteur - 1) / kEntreesParSecteur;
        const uint32_t difat =
            fat > kFatDansEntete
                ? (fat - kFatDansEntete + kEntreesParSecteur - 2) / (kEntreesParSecteur - 1)
                : 0;
        if (fat == nbFat && difat == nbDifat) break;
        nbFat = fat;
        nbDifat = difat;
    }
    const uint32_t secteurRepertoire = secteursFlux;
    const uint32_t premierFat = secteursFlux + 1;
    const uint32_t premierDifat = premierFat + nbFat;

    std::string fat(static_cast<size_t>(nbFat) * kSecteur, '\xFF');
    for (uint32_t s = 0; s < secteursFlux; ++s)
        Pose32(fat, 4 * s, s + 1 < secteursFlux ? s + 1 : kFinDeChaine);
    Pose32(fat, 4 * secteurRepertoire, kFinDeChaine);
    for (uint32_t i = 0; i < nbFat; ++i)
        Pose32(fat, 4 * (premierFat + i), kSecteurFat);
    for (uint32_t i = 0; i < nbDifat; ++i)
        Pose32(fat, 4 * (premierDifat + i), kSecteurDifat);

    std::string entete(kSecteur, '\0');
    static const char kSignature[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    std::memcpy(&entete[0], kSignature, 8);
    Pose16(entete, 24, 0x003E);  // minor version
    Pose16(entete, 26, 0x0003);  // major version 3: 512-byte sectors
    Pose16(entete, 28, 0xFFFE);  // little-endian
    Pose16(entete, 30, 9);       // sector size 2^9
    Pose16(entete, 32, 6);       // mini sector size 2^6
    Pose32(entete, 44, nbFat);
    Pose32(entete, 48, secteurRepertoire);
    Pose32(entete, 56, kTailleMiniFlux);
    Pose32(entete, 60, kFinDeChaine);  // no mini FAT
    Pose32(entete, 64, 0);
    Pose32(entete, 68, nbDifat > 0 ? premierDifat : kFinDeChaine);
    Pose32(entete, 72, nbDifat);
    for (uint32_t i = 0; i < kFatDansEntete; ++i)
        Pose32(entete, 76 + 4 * i, i < nbFat ? premierFat + i : kLibre);

    std::string difat(static_cast<size_t>(nbDifat) * kSecteur, '\xFF');
    for (uint32_t i = kFatDansEntete; i < nbFat; ++i) {
        const uint32_t k = i - kFatDansEntete;
        const uint32_t secteur = k / (kEntreesParSecteur - 1);
        const uint32_t rang = k % (kEntreesParSecteur - 1);
        Pose32(difat, secteur * kSecteur + 4 * rang, premierFat + i);
    }
    for (uint32_t s = 0; s < nbDifat; ++s)
        Pose32(difat, s * kSecteur + kSecteur - 4,
               s + 1 < nbDifat ? premierDifat + s + 1 : kFinDeChaine);

    // Directory: the root storage (class of an Excel 97 workbook) and its one stream.
    static const uint8_t kClasseExcel[16] = {0x20, 0x08, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                             0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
    std::string repertoire(kSecteur, '\0');
    EntreeRepertoire(repertoire, 0, u"Root Entry", 5, 1, kClasseExcel, kFinDeChaine, 0);
    EntreeRepertoire(repertoire, 128, u"Workbook", 2, kLibre, nullptr, 0, tailleFlux);
    for (size_t e = 2; e < 4; ++e) {
        Pose32(repertoire, 128 * e + 68, kLibre);
        Pose32(repertoire, 128 * e + 72, kLibre);
        Pose32(repertoire, 128 * e + 76, kLibre);
    }

    sortie.Ecrit(entete);
    sortie.Ecrit(flux);
    const size_t bourrage = static_cast<size_t>(secteursFlux) * kSecteur - flux.size();
    if (bourrage > 0) sortie.Ecrit(std::string(bourrage, '\0'));
    sortie.Ecrit(repertoire);
    sortie.Ecrit(fat);
    sortie.Ecrit(difat);
}

// Number of UTF-16 code units of a UTF-8 text.
size_t LongueurUtf16(std::string_view s) {
    size_t n = 0;
    size_t i = 0;
    while (i < s.size())
        n += LitCaractereUtf8(s, i) >= 0x10000 ? 2 : 1;
    return n;
}

}  // namespace

std::vector<ZoneFusionnee> ZonesValides(const std::vector<ZoneFusionnee>& zones, int colonnes,
                                        int lignes) {
    std::vector<ZoneFusionnee> gardees;
    for (const ZoneFusionnee& z : zones) {
        if (z.premiereLigne < 0 || z.premiereColonne < 0 || z.derniereLigne >= lignes ||
            z.derniereColonne >= colonnes || z.derniereLigne < z.premiereLigne ||
            z.derniereColonne < z.premiereColonne)
            continue;
        if (z.derniereLigne == z.premiereLigne && z.derniereColonne == z.premiereColonne) continue;
        const bool chevauche = std::any_of(gardees.begin(), gardees.end(), [&](const auto& g) {
            return z.premiereLigne <= g.derniereLigne && g.premiereLigne <= z.derniereLigne &&
                   z.premiereColonne <= g.derniereColonne && g.premiereColonne <= z.derniereColonne;
        });
        if (!chevauche) gardees.push_back(z);
    }
    return gardees;
}

std::string TexteTailleExcessiveXls() {
    return "Le tableau dépasse la taille d'une feuille Excel (" + std::to_string(kXlsMaxLignes) +
           " lignes, " + std::to_string(kXlsMaxColonnes) + " colonnes)";
}

bool TientDansUneFeuilleXls(int colonnes, int lignes) {
    return colonnes >= 0 && lignes >= 0 && colonnes <= kXlsMaxColonnes && lignes <= kXlsMaxLignes;
}

std::string NomFeuilleXls(const std::string& nom) {
    std::u32string car;
    size_t i = 0;
    while (i < nom.size()) {
        char32_t c = LitCaractereUtf8(nom, i);
        if (c < 0x20 || c == U'[' || c == U']' || c == U':' || c == U'*' || c == U'?' ||
            c == U'/' || c == U'\\')
            c = U'_';
        car.push_back(c);
    }
    size_t debut = 0;
    while (debut < car.size() && car[debut] == U'\'')
        ++debut;
    std::string sortie;
    size_t unites = 0;
    size_t dernierNonApostrophe = 0;  // length of `sortie` up to the last other character
    for (size_t k = debut; k < car.size(); ++k) {
        const size_t u = car[k] >= 0x10000 ? 2 : 1;
        if (unites + u > static_cast<size_t>(kXlsMaxNomFeuille)) break;
        unites += u;
        AjouteUtf8(sortie, car[k]);
        if (car[k] != U'\'') dernierNonApostrophe = sortie.size();
    }
    sortie.resize(dernierNonApostrophe);
    return sortie.empty() ? "Feuil1" : sortie;
}

ResultatEcriture EcritClasseurXls(const std::string& chemin, const Grid& grille,
                                  const std::string& nomFeuille,
                                  const std::vector<ZoneFusionnee>& fusions) {
    const int colonnes = grille.MaxCols();
    const int lignes = grille.MaxRows();
    if (!TientDansUneFeuilleXls(colonnes, lignes))
        return ResultatEcriture::Echec(TexteTailleExcessiveXls());

    TableTextes textes;
    textes.indexCellules.assign(static_cast<size_t>(colonnes) * static_cast<size_t>(lignes),
                                kSansTexte);
    textes.largeurs.assign(static_cast<size_t>(colonnes), 0);
    for (int r = 1; r <= lignes; ++r) {
        for (int c = 1; c <= colonnes; ++c) {
            const std::string t = grille.Text(c, r);
            if (t.empty()) continue;
            if (t.size() > static_cast<size_t>(kXlsMaxTexteCellule) &&
                LongueurUtf16(t) > static_cast<size_t>(kXlsMaxTexteCellule))
                return ResultatEcriture::Echec("Le texte de la cellule ligne " + std::to_string(r) +
                                               ", colonne " + std::to_string(c) + " dépasse " +
                                               std::to_string(kXlsMaxTexteCellule) + " caractères");
            uint32_t& cellule =
                textes.indexCellules[static_cast<size_t>(r - 1) * colonnes + (c - 1)];
            if (NombreEntier(t)) {
                cellule = kNombre;
            } else {
                cellule = textes.uniques.Indice(t);
                ++textes.references;
            }
            int& largeur = textes.largeurs[static_cast<size_t>(c - 1)];
            if (t.size() > static_cast<size_t>(largeur))  // never fewer bytes than characters
                largeur = std::max(largeur, NombreCaracteres(t));
        }
    }

    Flux f;
    f.octets.reserve(4096 + textes.references * 14 + textes.uniques.Taille() * 16 +
                     static_cast<size_t>(lignes) * 22);
    const ResultatGlobaux globaux = EcritGlobaux(f, NomFeuilleXls(nomFeuille), textes);
    f.PoseU32(globaux.positionPositionFeuille, static_cast<uint32_t>(f.Pos()));
    EcritFeuille(f, textes, grille, colonnes, lignes, ZonesValides(fusions, colonnes, lignes));
    if (f.octets.size() > 0x7FFFFFFFu) return ResultatEcriture::Echec("Le classeur dépasse 2 Go");

    return EcritFichierAtomique(chemin, [&f](SortieFichier& sortie, std::string&) {
        EcritConteneur(sortie, f.octets);
        return true;
    });
}

}  // namespace zl3
