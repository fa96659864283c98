// Tag reader over real WMA files written by Debian's ffmpeg (and python3-mutagen for the
// non-string descriptors), and the zl3-wmatags command. Both tools are required: when one is
// missing the tests fail and say which package to install.
//
// The Windows build cannot start these Linux programs under Wine: its files are prepared on the
// Linux side. With ZL3_WMA_PREPARES naming a folder, the Linux tests copy every file they made
// there (named by the file and its metadata), and the Windows tests take them from there instead
// of running ffmpeg and python3-mutagen (tools/windows_tests.sh does both).
#include <gtest/gtest.h>
#ifndef _WIN32
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "AsfBuilder.h"
#include "Cls_WMATag.h"
#include "Processus.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"

#ifndef _WIN32
extern char** environ;
#endif

namespace fs = std::filesystem;
using namespace zl3;

namespace {

using Metadonnees = std::vector<std::pair<std::string, std::string>>;  // ffmpeg key, value

struct Execution {
    int code = -1;  // exit code; -1 when the program could not be started
    std::string sortie;
    std::string erreurs;
};

std::string Contenu(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void Ecrit(const fs::path& path, const std::string& octets) {
    std::ofstream(path, std::ios::binary) << octets;
}

class WmaTagFichiers : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        const std::string d = test::NouveauDossierTemporaire("zl3_wmatag_fichiers_");
        dossier_ = fs::path(std::u8string(reinterpret_cast<const char8_t*>(d.data()), d.size()));
    }
    static void TearDownTestSuite() { fs::remove_all(dossier_); }
    void SetUp() override { ResetTrace(); }

    static fs::path Chemin(const std::string& nom) { return dossier_ / nom; }

    // Runs a program found in PATH, standard input empty, both outputs kept.
    static Execution Execute(const std::vector<std::string>& args) {
#ifdef _WIN32
        const test::ResultatCommande r = test::LancerCommande(args);
        Execution w;
        // Windows programs end their text lines with CR LF.
        auto lf = [](std::string t) {
            for (size_t at; (at = t.find("\r\n")) != std::string::npos;)
                t.erase(at, 1);
            return t;
        };
        w.code = r.code;
        w.sortie = lf(r.sortie);
        w.erreurs = lf(r.erreurs);
        return w;
#else
        const fs::path sortie = Chemin("sortie.txt");
        const fs::path erreurs = Chemin("erreurs.txt");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, sortie.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0644);
        posix_spawn_file_actions_addopen(&actions, 2, erreurs.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0644);
        std::vector<char*> argv;
        for (const std::string& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        pid_t pid = 0;
        const int rc = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        Execution e;
        if (rc != 0) return e;
        int status = 0;
        waitpid(pid, &status, 0);
        e.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        e.sortie = Contenu(sortie);
        e.erreurs = Contenu(erreurs);
        return e;
#endif
    }

    // The folder of files prepared on the Linux side (empty when not set).
    static fs::path Prepares() {
        const char* d = std::getenv("ZL3_WMA_PREPARES");
        return d && *d ? fs::path(d) : fs::path();
    }
    // The prepared copy of `nom` made with `meta` (FNV-1a of the metadata in its name).
    static fs::path Prepare(const std::string& nom, const Metadonnees& meta) {
        uint64_t h = 14695981039346656037ull;
        for (const auto& [cle, valeur] : meta)
            for (const char c : cle + "=" + valeur + "\n") {
                h ^= static_cast<unsigned char>(c);
                h *= 1099511628211ull;
            }
        return Prepares() / (std::to_string(h) + "-" + nom);
    }
    // Keeps a copy of a file just made for the Windows tests, when asked.
    static void Garde(const std::string& nom, const Metadonnees& meta) {
        if (Prepares().empty()) return;
        std::error_code ec;
        fs::create_directories(Prepares(), ec);
        fs::copy_file(Chemin(nom), Prepare(nom, meta), fs::copy_options::overwrite_existing, ec);
    }

    // One second of sine encoded as WMA by ffmpeg with these metadata (on Windows: the copy
    // prepared on the Linux side).
    static bool Ffmpeg(const std::string& nom, const Metadonnees& meta) {
#ifdef _WIN32
        std::error_code ec;
        if (Prepares().empty())
            ADD_FAILURE() << "ZL3_WMA_PREPARES: the files written by ffmpeg on the Linux side";
        else if (!fs::copy_file(Prepare(nom, meta), Chemin(nom),
                                fs::copy_options::overwrite_existing, ec))
            ADD_FAILURE() << "not prepared: " << Prepare(nom, meta).string();
        return !Prepares().empty() && !ec;
#else
        std::vector<std::string> args = {"ffmpeg",  "-v",        "error",    "-y",       "-f",
                                         "lavfi",   "-i",        "sine=d=1", "-c:a",     "wmav2",
                                         "-fflags", "+bitexact", "-flags:a", "+bitexact"};
        for (const auto& [cle, valeur] : meta) {
            args.push_back("-metadata");
            args.push_back(cle + "=" + valeur);
        }
        args.push_back(Chemin(nom).string());
        const Execution e = Execute(args);
        if (e.code == -1)
            ADD_FAILURE() << "ffmpeg introuvable: le paquet Debian ffmpeg est nécessaire";
        else if (e.code != 0)
            ADD_FAILURE() << "ffmpeg a échoué (" << e.code << "): " << e.erreurs;
        if (e.code == 0) Garde(nom, meta);
        return e.code == 0;
#endif
    }

    // Reads a file's tags; the test fails on a missing header.
    static Cls_WMATag Lit(const std::string& nom) {
        Cls_WMATag t;
        t.SetFilename(Chemin(nom).string());
        EXPECT_TRUE(t.ReadWMATags()) << nom;
        return t;
    }

    static std::vector<std::string> Erreurs() {
        std::vector<std::string> e;
        for (const std::string& line : Trace().lines)
            if (line.find("Err: ") != std::string::npos)
                e.push_back(line.substr(line.find("Err: ")));
        return e;
    }

    static inline fs::path dossier_;
};

// The ffmpeg key each listed tag comes from: the Content Description gives WM/Title and
// WM/Artist, the extended descriptors repeat them as "title" and "Author".
const std::map<std::string, std::string> kOrigine = {
    {"WM/Title", "title"},       {"title", "title"},          {"WM/Artist", "artist"},
    {"Author", "artist"},        {"WM/AlbumTitle", "album"},  {"WM/Genre", "genre"},
    {"WM/Composer", "composer"}, {"WM/TrackNumber", "track"}, {"WM/AlbumArtist", "album_artist"},
};

}  // namespace

TEST_F(WmaTagFichiers, EveryStringTagIsWhatFfmpegWrote) {
    const std::vector<Metadonnees> cas = {
        {{"title", "Titre simple"}, {"artist", "Artiste"}, {"album", "Album"}},
        {{"title", "Là où je t'emmènerai"},
         {"artist", "Zoé Chérie"},
         {"album", "Œuvre n°5 — été"},
         {"genre", "Chanson française"},
         {"composer", "Éric Noël"},
         {"track", "7"},
         {"album_artist", "Ÿvonne & Çà"}},
        {{"title", "Œuvre n°5 — été 🎵"}, {"artist", "Ñ"}, {"album", "日本語"}},
    };
    for (const Metadonnees& meta : cas) {
        SCOPED_TRACE(meta.front().second);
        ResetTrace();
        ASSERT_TRUE(Ffmpeg("reel.wma", meta));
        const Cls_WMATag t = Lit("reel.wma");
        const std::map<std::string, std::string> ecrit(meta.begin(), meta.end());
        const auto noms = t.TagDescriptors();
        const auto valeurs = t.TagValues();
        ASSERT_GE(noms.size(), 2u);
        EXPECT_EQ(noms[0], "WM/Title");
        EXPECT_EQ(noms[1], "WM/Artist");
        std::set<std::string> retrouves;
        for (std::size_t i = 0; i < noms.size(); ++i) {
            const auto origine = kOrigine.find(noms[i]);
            if (origine == kOrigine.end()) {
                ADD_FAILURE() << "tag inattendu: " << noms[i] << "=" << valeurs[i];
                continue;
            }
            EXPECT_EQ(valeurs[i], ecrit.at(origine->second)) << noms[i];
            retrouves.insert(origine->second);
        }
        EXPECT_EQ(retrouves.size(), ecrit.size());
        EXPECT_EQ(t.TagByDescriptor("wm/albumtitle"), ecrit.at("album"));
        EXPECT_TRUE(Erreurs().empty());
    }
}

TEST_F(WmaTagFichiers, AuthorOnlyFileReadsAuthorOneByteLate) {
    ASSERT_TRUE(Ffmpeg("auteur.wma", {{"artist", "Abc"}}));
    const Cls_WMATag t = Lit("auteur.wma");
    const auto noms = t.TagDescriptors();
    EXPECT_EQ(std::count(noms.begin(), noms.end(), "WM/Title"), 0);
    // 41 00 62 00 63 00 00 00 read from its second byte: 00 62 | 00 63 | 00 00 | (00).
    EXPECT_EQ(t.TagByDescriptor("WM/Artist"), "\u6200\u6300");
    EXPECT_EQ(t.TagByDescriptor("author"), "Abc");
}

TEST_F(WmaTagFichiers, NonStringDescriptorsFromMutagenAreNotListed) {
    const Metadonnees meta = {{"title", "Titre"}, {"artist", "Artiste"}};
    ASSERT_TRUE(Ffmpeg("mutagen.wma", meta));
#ifndef _WIN32  // the prepared copy already holds what python3-mutagen adds
    const char* script =
        "import sys\n"
        "from mutagen.asf import (ASF, ASFBoolAttribute, ASFByteArrayAttribute, "
        "ASFDWordAttribute,\n"
        "    ASFQWordAttribute, ASFUnicodeAttribute, ASFWordAttribute)\n"
        "a = ASF(sys.argv[1])\n"
        "a['WM/TrackNumber'] = [ASFDWordAttribute(5)]\n"
        "a['WM/IsVBR'] = [ASFBoolAttribute(True)]\n"
        "a['WM/EncodingTime'] = [ASFQWordAttribute(7)]\n"
        "a['WM/Rating'] = [ASFWordAttribute(3)]\n"
        "a['WM/MCDI'] = [ASFByteArrayAttribute(b'\\x01\\x02\\x03')]\n"
        "a['WM/Mood'] = [ASFUnicodeAttribute('Calme')]\n"
        "a.save()\n";
    const Execution e = Execute({"/usr/bin/python3", "-c", script, Chemin("mutagen.wma").string()});
    ASSERT_EQ(e.code, 0) << "python3-mutagen est nécessaire (Debian, /usr/bin/python3): "
                         << e.erreurs;
    Garde("mutagen.wma", meta);
#endif
    const Cls_WMATag t = Lit("mutagen.wma");
    const auto noms = t.TagDescriptors();
    for (const char* n : {"WM/TrackNumber", "WM/IsVBR", "WM/EncodingTime", "WM/Rating", "WM/MCDI"})
        EXPECT_EQ(std::count(noms.begin(), noms.end(), n), 0) << n;
    EXPECT_EQ(t.TagByDescriptor("WM/Mood"), "Calme");
    EXPECT_EQ(t.TagByDescriptor("WM/Title"), "Titre");
    EXPECT_EQ(t.TagByDescriptor("WM/Artist"), "Artiste");
    EXPECT_TRUE(Erreurs().empty());
}

TEST_F(WmaTagFichiers, FileCutInsideDescriptorsKeepsTitleAndAuthor) {
    ASSERT_TRUE(Ffmpeg("entier.wma", {{"title", "Titre"}, {"artist", "Artiste"}, {"album", "Al"}}));
    const std::string octets = Contenu(Chemin("entier.wma"));
    const asf::Octets guid = asf::Guid(asf::kGuidDescriptionEtendue);
    const std::size_t etendue = octets.find(std::string(guid.begin(), guid.end()));
    ASSERT_NE(etendue, std::string::npos);
    Ecrit(Chemin("coupe.wma"), octets.substr(0, etendue + 26 + 10));
    const Cls_WMATag t = Lit("coupe.wma");
    EXPECT_EQ(t.TagDescriptors(), (std::vector<std::string>{"WM/Title", "WM/Artist"}));
    EXPECT_EQ(t.TagValues(), (std::vector<std::string>{"Titre", "Artiste"}));
    ASSERT_EQ(Erreurs().size(), 1u);
    EXPECT_EQ(Erreurs()[0].rfind("Err: 62 ", 0), 0u);
}

TEST_F(WmaTagFichiers, CommandOutputAndExitCodes) {
    ASSERT_TRUE(
        Ffmpeg("simple.wma", {{"title", "Titre simple"}, {"artist", "Zoé"}, {"album", "Al"}}));
    const std::string simple = Chemin("simple.wma").string();
    const std::string texte = Chemin("texte.txt").string();
    const std::string absent = Chemin("absent.wma").string();
    // A name outside ASCII reaches the program whole (on Windows through the wide command line).
    const std::string lignes = sys::TexteChemin(Chemin("")) + "lignes \xC3\xA9t\xC3\xA9.wma";
    const std::string tronque = Chemin("tronque.wma").string();
    Ecrit(texte, "pas un fichier ASF\n");
    const asf::Octets paroles =
        asf::Fichier({asf::DescriptionEtendue({asf::Texte(u"WM/Lyrics", u"Ligne 1\r\nLigne 2")})});
    Ecrit(sys::CheminFs(lignes), std::string(paroles.begin(), paroles.end()));
    Ecrit(tronque, std::string(paroles.begin(), paroles.begin() + 70));
    const std::string exe = ZL3_WMATAGS_EXE;

    Execution e = Execute({exe, simple});
    EXPECT_EQ(e.code, 0) << e.erreurs;
    const std::size_t nbTags = static_cast<std::size_t>(Lit("simple.wma").TagCount());
    EXPECT_EQ(e.sortie.rfind(simple + "\nWM/Title=Titre simple\nWM/Artist=Zoé\n", 0), 0u)
        << e.sortie;
    EXPECT_NE(e.sortie.find("\nWM/AlbumTitle=Al\n"), std::string::npos);
    EXPECT_EQ(static_cast<std::size_t>(std::count(e.sortie.begin(), e.sortie.end(), '\n')),
              1 + nbTags);

    e = Execute({exe, simple, texte, absent});
    EXPECT_EQ(e.code, 1);
    EXPECT_EQ(e.sortie.rfind(simple + "\n", 0), 0u);
    EXPECT_EQ(e.sortie.find(texte), std::string::npos);
    EXPECT_NE(e.erreurs.find("En-tête ASF absent: " + texte + "\n"), std::string::npos);
    EXPECT_NE(e.erreurs.find("Fichier introuvable: " + absent + "\n"), std::string::npos);

    // Line breaks inside a value stay on the tag's line; a cut header is read and reported.
    e = Execute({exe, lignes, tronque});
    EXPECT_EQ(e.code, 0);
    EXPECT_EQ(e.sortie, lignes + "\nWM/Lyrics=Ligne 1  Ligne 2\n" + tronque + "\n");
    EXPECT_NE(e.erreurs.find("Tags incomplets: " + tronque + ": 62 "), std::string::npos)
        << e.erreurs;

    for (const auto& [args, code] : std::vector<std::pair<std::vector<std::string>, int>>{
             {{exe}, 2}, {{exe, "--help"}, 0}, {{exe, "-x", simple}, 2}}) {
        e = Execute(args);
        EXPECT_EQ(e.code, code) << args.back();
        EXPECT_NE((e.sortie + e.erreurs).find("Usage: zl3-wmatags"), std::string::npos);
        EXPECT_EQ(e.sortie.empty(), code != 0);
    }
}
