#include "Cls_WMATag.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>

#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Utf8.h"

namespace fs = std::filesystem;

namespace zl3 {

// Positioned reads over the bytes of a file, on disk or in memory. The header search and the
// walk are one piece of code over this interface, whatever the bytes come from.
class WmaSource {
  public:
    virtual ~WmaSource() = default;
    virtual std::uint64_t Size() const = 0;
    // Copies `n` bytes from position `pos` (0-based); false when the system cannot deliver them.
    virtual bool ReadAt(std::uint64_t pos, std::uint8_t* dst, std::size_t n) = 0;
};

namespace {

const std::string kGuidEnTete = "75B22630-668E-11CF-A6D9-00AA0062CE6C";
const std::string kGuidDescription = "75B22633-668E-11CF-A6D9-00AA0062CE6C";
const std::string kGuidDescriptionEtendue = "D2D0A440-E307-11D2-97F0-00A0C95EA850";

// Fixed starts, in bytes.
constexpr std::uint64_t kDebutEnTete = 30;       // GUID, size, object count, two reserved bytes
constexpr std::uint64_t kDebutObjet = 24;        // GUID and size: what every object holds
constexpr std::uint64_t kDebutDescription = 34;  // + five 16-bit text lengths
constexpr std::uint64_t kDebutDescriptionEtendue = 26;  // + 16-bit descriptor count
constexpr std::uint16_t kTypeUnicode = 0;               // descriptor value type of a string

class FileSource final : public WmaSource {
  public:
    explicit FileSource(const fs::path& path, std::uint64_t size)
        : in_(path, std::ios::binary), size_(size) {}
    bool IsOpen() const { return in_.is_open(); }
    std::uint64_t Size() const override { return size_; }
    bool ReadAt(std::uint64_t pos, std::uint8_t* dst, std::size_t n) override {
        in_.clear();
        in_.seekg(static_cast<std::streamoff>(pos));
        in_.read(reinterpret_cast<char*>(dst), static_cast<std::streamsize>(n));
        return in_.gcount() == static_cast<std::streamsize>(n);
    }

  private:
    std::ifstream in_;
    std::uint64_t size_;
};

class MemorySource final : public WmaSource {
  public:
    explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    std::uint64_t Size() const override { return bytes_.size(); }
    bool ReadAt(std::uint64_t pos, std::uint8_t* dst, std::size_t n) override {
        if (pos > bytes_.size() || n > bytes_.size() - pos) return false;
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(pos), n, dst);
        return true;
    }

  private:
    std::span<const std::uint8_t> bytes_;
};

// A damaged or hostile header met by the walk; the read traces it and keeps the tags so far.
struct ErreurLecture {
    long numero;
    std::string description;
};

std::uint64_t LittleEndian(const std::uint8_t* p, int n) {
    std::uint64_t v = 0;
    for (int i = n - 1; i >= 0; --i)
        v = (v << 8) | p[i];
    return v;
}

// The reading position within the header. Every read is checked against the limit (the end of
// the header, or of the file when that comes first); moving the position is never an error, a
// read from a position past the limit is.
class Curseur {
  public:
    Curseur(WmaSource& source, std::uint64_t limite, std::uint64_t position)
        : source_(source), limite_(limite), position_(position) {}

    std::uint64_t Position() const { return position_; }
    void Aller(std::uint64_t position) { position_ = position; }
    void Avancer(std::uint64_t n) { position_ += n; }

    // Throws when `n` bytes from the position are not all within the header.
    void Verifier(std::uint64_t n) const {
        if (position_ <= limite_ && n <= limite_ - position_) return;
        throw ErreurLecture{Cls_WMATag::kErrFinDeLecture,
                            "Lecture au-delà de la fin de l'en-tête: " + std::to_string(n) +
                                " octet(s) à la position " + std::to_string(position_ + 1)};
    }
    void Lire(std::uint8_t* dst, std::size_t n) {
        Verifier(n);
        if (n > 0 && !source_.ReadAt(position_, dst, n))
            throw ErreurLecture{Cls_WMATag::kErrEntreeSortie,
                                "Erreur de lecture à la position " + std::to_string(position_ + 1)};
        position_ += n;
    }
    std::vector<std::uint8_t> Octets(std::size_t n) {
        Verifier(n);  // before allocating: a length read from the file is not trusted
        std::vector<std::uint8_t> bytes(n);
        Lire(bytes.data(), n);
        return bytes;
    }
    std::uint64_t Entier(int n) {
        std::uint8_t b[8];
        Lire(b, static_cast<std::size_t>(n));
        return LittleEndian(b, n);
    }
    std::uint16_t Mot() { return static_cast<std::uint16_t>(Entier(2)); }

  private:
    WmaSource& source_;
    std::uint64_t limite_;
    std::uint64_t position_;
};

// Next character of a UTF-8 text. A byte that does not start a well-formed sequence stands for
// itself, outside the Unicode range, so that it only ever equals the same byte.
char32_t CaractereSuivant(const std::string& s, std::size_t& i) {
    const auto octet = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
    const unsigned char b = octet(i);
    if (b < 0x80) {
        ++i;
        return b;
    }
    const std::size_t suite = b >= 0xF0 && b <= 0xF4   ? 3
                              : b >= 0xE0 && b <= 0xEF ? 2
                              : b >= 0xC2 && b <= 0xDF ? 1
                                                       : 0;
    char32_t cp = b & (0x3F >> suite);
    bool valide = suite > 0 && i + suite < s.size();
    for (std::size_t k = 1; valide && k <= suite; ++k) {
        valide = (octet(i + k) & 0xC0) == 0x80;
        cp = (cp << 6) | (octet(i + k) & 0x3F);
    }
    if (!valide) {
        ++i;
        return 0x110000 + b;
    }
    i += suite + 1;
    return cp;
}

// Lower case of the letters of the Latin alphabets (ASCII, Latin-1, Latin Extended-A: "É",
// "Œ", "Ÿ", …); any other character is its own.
char32_t Minuscule(char32_t c) {
    if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7)) return c + 0x20;
    if (c == 0x178) return 0xFF;
    const bool pairesMajusculesPaires =
        (c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177);
    const bool pairesMajusculesImpaires = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    if (pairesMajusculesPaires && c % 2 == 0) return c + 1;
    if (pairesMajusculesImpaires && c % 2 == 1) return c + 1;
    return c;
}

bool EgauxSansCasse(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size())
        if (Minuscule(CaractereSuivant(a, i)) != Minuscule(CaractereSuivant(b, j))) return false;
    return i == a.size() && j == b.size();
}

std::string NomDuTag(const std::string& entree) {
    return entree.substr(0, entree.find('\0'));
}

}  // namespace

// ---- Reading --------------------------------------------------------------------------------

bool Cls_WMATag::ReadWMATags() {
    TraceProc(kIdentite);
    tags_.clear();
    octetsTags_ = 0;
    if (filename_.empty()) return false;
    const fs::path path = sys::CheminFs(sys::NativePath(filename_));
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (!fs::exists(status)) {
        TraceErreur(kIdentite, kErrFichierIntrouvable, "Fichier introuvable: " + filename_);
        return false;
    }
    // Only a regular file can be read at a position (not a folder, a pipe or a device).
    const std::uint64_t size = fs::is_regular_file(status) ? fs::file_size(path, ec) : 0;
    FileSource file(path, size);
    if (!fs::is_regular_file(status) || ec || !file.IsOpen()) {
        TraceErreur(kIdentite, kErrAccesFichier, "Accès au fichier impossible: " + filename_);
        return false;
    }
    return Lire(file);
}

bool Cls_WMATag::ReadWMATagsFromMemory(std::span<const std::uint8_t> bytes) {
    TraceProc(kIdentite);
    tags_.clear();
    octetsTags_ = 0;
    MemorySource memory(bytes);
    return Lire(memory);
}

bool Cls_WMATag::Lire(WmaSource& source) {
    // The 2000 candidate positions and the 30-byte header start of the last of them: one read.
    const std::uint64_t taille = source.Size();
    const std::size_t fenetre = static_cast<std::size_t>(
        std::min<std::uint64_t>(taille, kPositionsRecherche - 1 + kDebutEnTete));
    std::vector<std::uint8_t> debut(fenetre);
    if (fenetre > 0 && !source.ReadAt(0, debut.data(), fenetre)) {
        TraceErreur(kIdentite, kErrEntreeSortie, "Erreur de lecture du début du fichier");
        return false;
    }
    // A header start cut short by the end of the file does not count as found. Only positions
    // holding the GUID's first stored byte (0x30, the low byte of 75B22630) are turned into text.
    for (std::size_t o = 0; o < kPositionsRecherche && o + kDebutEnTete <= fenetre; ++o) {
        if (debut[o] != 0x30 ||
            ByteArrayToGUID(std::span<const std::uint8_t, 16>(debut.data() + o, 16)) != kGuidEnTete)
            continue;
        try {
            ParcourirEnTete(source, o);
        } catch (const ErreurLecture& e) {
            TraceErreur(kIdentite, e.numero, e.description);
        } catch (const std::bad_alloc&) {
            TraceErreur(kIdentite, kErrMemoire, "Mémoire insuffisante");
        }
        return true;
    }
    return false;
}

// Walks the objects of the header that starts at `debutEnTete` (0-based), filling the tag list.
// Throws ErreurLecture on a damaged header; the tags appended until then stay.
void Cls_WMATag::ParcourirEnTete(WmaSource& source, std::uint64_t debutEnTete) {
    const std::uint64_t taille = source.Size();
    Curseur c(source, taille, debutEnTete + 16);
    const std::uint64_t tailleEnTete = c.Entier(8);
    const std::uint32_t nbObjets = static_cast<std::uint32_t>(c.Entier(4));
    // Only the header is read, never the audio data after it: every read stops at its end (at the
    // end of the file when that comes first).
    Curseur curseur(source, debutEnTete + std::min(tailleEnTete, taille - debutEnTete),
                    debutEnTete + kDebutEnTete);

    // A UTF-16 text field of `longueur` bytes, NUL terminator included: longueur − 1 bytes are
    // read (not the terminator's last byte), then the position moves one byte on. A length of 0
    // is an empty field taking no room, so that the descriptors after it are still read in step.
    const auto texte = [&](std::uint16_t longueur) -> std::string {
        if (longueur == 0) return {};
        std::string s = UnicodeStr(curseur.Octets(longueur - 1u));
        curseur.Avancer(1);
        return s;
    };

    for (std::uint32_t n = 0; n < nbObjets; ++n) {
        const std::uint64_t debutObjet = curseur.Position();
        std::array<std::uint8_t, 16> guid{};
        curseur.Lire(guid.data(), guid.size());
        // Only the low 32 bits of the size count: no header object comes near 4 GB.
        const std::uint64_t tailleObjet = curseur.Entier(8) & 0xFFFFFFFFu;
        const std::string id = ByteArrayToGUID(guid);
        // Every object holds at least its GUID and its size. A smaller size (0 in a zeroed or
        // damaged file) would put the next object on this one or before it, and the walk would
        // turn for ever: it stops here. Sizes from 24 bytes up are real, even below the 34 bytes
        // of a Content Description start (a Stream Bitrate Properties Object for one stream takes
        // 32), and are stepped over. A Content Description or Extended Content Description too
        // small for its own fixed start cannot be read and stops the walk as well.
        const std::uint64_t minimum = id == kGuidDescription          ? kDebutDescription
                                      : id == kGuidDescriptionEtendue ? kDebutDescriptionEtendue
                                                                      : kDebutObjet;
        if (tailleObjet < minimum)
            throw ErreurLecture{
                kErrFormat, "Format de fichier incorrect: objet de " + std::to_string(tailleObjet) +
                                " octet(s) à la position " + std::to_string(debutObjet + 1)};

        if (id == kGuidDescription) {
            const std::uint16_t longueurTitre = curseur.Mot();
            const std::uint16_t longueurAuteur = curseur.Mot();
            curseur.Avancer(6);  // copyright, description and rating lengths: not read
            if (longueurTitre != 0) AppendString("WM/Title", texte(longueurTitre));
            // One byte is skipped even after an empty title, so that the author of such an object
            // is read from one byte past its true start (and comes out garbled). Deliberate: this
            // reader has always read such objects so, and keeps doing it.
            if (longueurTitre == 0) curseur.Avancer(1);
            if (longueurAuteur != 0) AppendString("WM/Artist", texte(longueurAuteur));
        } else if (id == kGuidDescriptionEtendue) {
            curseur.Aller(debutObjet + kDebutDescriptionEtendue - 2);
            const std::uint16_t nbDescripteurs = curseur.Mot();
            for (std::uint16_t d = 0; d < nbDescripteurs; ++d) {
                const std::string nom = texte(curseur.Mot());
                const std::uint16_t type = curseur.Mot();
                const std::uint16_t longueur = curseur.Mot();
                if (type == kTypeUnicode) {
                    AppendString(nom, texte(longueur));
                } else if (longueur > 0) {
                    // Byte array, Boolean, 32-, 64- and 16-bit numbers: read past, not listed.
                    curseur.Verifier(longueur - 1u);
                    curseur.Avancer(longueur);
                }
            }
        }
        curseur.Aller(debutObjet + tailleObjet);
    }
}

// ---- Tag list -------------------------------------------------------------------------------

void Cls_WMATag::AppendString(const std::string& name, const std::string& value) {
    if (tags_.size() >= static_cast<std::size_t>(kMaxTags))
        throw ErreurLecture{kErrDepassement, "Dépassement de capacité: plus de " +
                                                 std::to_string(kMaxTags) + " tags"};
    const std::size_t octets = name.size() + 1 + value.size();
    if (octets > kMaxOctetsTags - octetsTags_)
        throw ErreurLecture{kErrMemoire, "Mémoire insuffisante: textes des tags au-delà de " +
                                             std::to_string(kMaxOctetsTags / (1024 * 1024)) +
                                             " Mo"};
    std::string entree;
    entree.reserve(octets);
    entree.append(name).append(1, '\0').append(value);
    tags_.push_back(std::move(entree));
    octetsTags_ += octets;
}

std::vector<std::string> Cls_WMATag::TagDescriptors() const {
    std::vector<std::string> names;
    names.reserve(tags_.size());
    for (const std::string& entree : tags_)
        names.push_back(NomDuTag(entree));
    return names;
}

std::vector<std::string> Cls_WMATag::TagValues() const {
    std::vector<std::string> values;
    values.reserve(tags_.size());
    for (const std::string& entree : tags_)
        values.push_back(entree.substr(entree.find('\0') + 1));
    return values;
}

std::string Cls_WMATag::TagByDescriptor(const std::string& name) const {
    for (const std::string& entree : tags_) {
        const std::size_t nul = entree.find('\0');
        if (EgauxSansCasse(entree.substr(0, nul), name)) return entree.substr(nul + 1);
    }
    return {};
}

// ---- Conversions ----------------------------------------------------------------------------

std::string Cls_WMATag::ByteArrayToGUID(std::span<const std::uint8_t, 16> b) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string s;
    s.reserve(36);
    const auto octet = [&](int i) {
        s += kHex[b[static_cast<std::size_t>(i)] >> 4];
        s += kHex[b[static_cast<std::size_t>(i)] & 0x0F];
    };
    for (int i : {3, 2, 1, 0})
        octet(i);
    s += '-';
    octet(5);
    octet(4);
    s += '-';
    octet(7);
    octet(6);
    s += '-';
    octet(8);
    octet(9);
    s += '-';
    for (int i = 10; i < 16; ++i)
        octet(i);
    return s;
}

std::string Cls_WMATag::UnicodeStr(std::span<const std::uint8_t> bytes) {
    std::string out;
    const std::size_t unites = bytes.size() / 2;  // an odd last byte is the NUL's first half
    const auto unite = [&](std::size_t i) -> char32_t {
        return static_cast<char32_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
    };
    for (std::size_t i = 0; i < unites; ++i) {
        const char32_t u = unite(i);
        if (u == 0) break;
        char32_t cp = u;
        if (u >= 0xD800 && u <= 0xDFFF) {
            // A surrogate pair makes one character; a lone half is not a character.
            const char32_t bas = i + 1 < unites ? unite(i + 1) : 0;
            if (u <= 0xDBFF && bas >= 0xDC00 && bas <= 0xDFFF) {
                cp = 0x10000 + ((u - 0xD800) << 10) + (bas - 0xDC00);
                ++i;
            } else {
                cp = 0xFFFD;
            }
        }
        AppendUtf8(out, cp);
    }
    return out;
}

}  // namespace zl3
