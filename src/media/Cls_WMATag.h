// Cls_WMATag: the text tags of a Windows Media audio file, read straight from its ASF header.
//
// The title and author of the Content Description Object and every string-valued descriptor of
// the Extended Content Description Object are kept as a list of name/value pairs that callers
// query by descriptor name ("WM/Title", "WM/Artist", "WM/AlbumTitle", …). Only the header is ever
// read, never the audio data, and a file may be damaged or hostile: every read is checked against
// the end of the header and of the file, whatever the lengths inside the file claim.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zl3 {

class WmaSource;  // where the bytes come from: a file on disk or a buffer in memory

class Cls_WMATag {
  public:
    // Identity of the read, under which its errors are traced ("Err: " & number & …).
    static constexpr const char* kIdentite = "Cls_WMATag:ReadWMATags";

    // Numbers of the traced errors, those of the Basic run-time errors they stand for.
    enum Erreur : long {
        kErrDepassement = 6,  // more tags than the 16-bit tag count can hold
        kErrMemoire = 7,      // tag texts past their memory budget
        kErrFichierIntrouvable = 53,
        kErrEntreeSortie = 57,  // the system failed to read bytes that exist
        kErrFinDeLecture = 62,  // a read runs past the end of the header (or of the file)
        kErrAccesFichier = 75,  // the name exists but is not a file that can be read
        kErrFormat = 321,       // an object too small to hold its own fixed start
    };

    // The header is looked for at byte positions 1 to 2000 (1-based): up to 1999 bytes of
    // leading data are tolerated before it.
    static constexpr int kPositionsRecherche = 2000;
    // The tag count is a 16-bit number: a header holding more string tags stops the walk.
    static constexpr int kMaxTags = 32767;
    // Budget of the tag texts kept in memory (UTF-8 bytes, names and values together).
    static constexpr std::size_t kMaxOctetsTags = 16u * 1024u * 1024u;

    // The file to read: a native path, or a path as the suite writes it ("D:\Musique\…"),
    // mapped to the native one as everywhere in the tool.
    const std::string& Filename() const { return filename_; }
    void SetFilename(const std::string& filename) { filename_ = filename; }

    // Reads the file named by Filename and fills the tag list, emptied first.
    //
    // False when Filename is empty, when the file cannot be opened (traced) or when no ASF Header
    // Object starts within the first 2000 positions; the list is then empty. True once the header
    // is found and walked. A damaged header (a length or an object running past the end, an
    // object too small to be one, too many tags) stops the walk with an error traced under
    // kIdentite: the tags read until then stay in the list and the result is still true, because
    // the header itself was found.
    bool ReadWMATags();
    // The same reading over bytes already in memory (a whole file, or its beginning). Filename is
    // neither used nor changed.
    bool ReadWMATagsFromMemory(std::span<const std::uint8_t> bytes);

    // Number of tags in the list (never more than kMaxTags).
    int TagCount() const { return static_cast<int>(tags_.size()); }
    // Names of all tags, in list order (duplicates included).
    std::vector<std::string> TagDescriptors() const;
    // Values of all tags, in list order: TagValues()[i] belongs to TagDescriptors()[i].
    std::vector<std::string> TagValues() const;
    // Value of the first tag whose name equals `name` without regard to case; "" when none does.
    std::string TagByDescriptor(const std::string& name) const;

    // The 16 bytes of a GUID as stored in the file, in the upper-case registry form
    // "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX": the first three groups from little-endian 32-, 16-
    // and 16-bit fields, the last two groups byte by byte.
    static std::string ByteArrayToGUID(std::span<const std::uint8_t, 16> bytes);

  private:
    bool Lire(WmaSource& source);
    void ParcourirEnTete(WmaSource& source, std::uint64_t debutEnTete);

    // UTF-16LE bytes to UTF-8. The bytes read for a field end with the first half of its NUL
    // terminator; that odd byte is dropped, and the text ends at the first NUL character.
    static std::string UnicodeStr(std::span<const std::uint8_t> bytes);
    // Adds one "name" NUL "value" entry to the tag list.
    void AppendString(const std::string& name, const std::string& value);

    std::string filename_;
    std::vector<std::string> tags_;  // each entry: name, '\0', value
    std::size_t octetsTags_ = 0;
};

}  // namespace zl3
