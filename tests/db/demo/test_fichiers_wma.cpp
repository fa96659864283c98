// The demo's tag-only WMA files, read by an independent ASF reader (python3-mutagen) and by the
// tool's own reader: both find the same tags in every file.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>

#include "Cls_WMATag.h"
#include "FichiersWma.h"
#include "TestSite.h"

namespace zl3::demo {
namespace {

// One line per file: the name, then name=value pairs separated by tabs, as mutagen reads them.
const char* kLireMutagen = R"(
import sys, os, mutagen.asf
d = sys.argv[1]
for f in sorted(os.listdir(d)):
    a = mutagen.asf.ASF(os.path.join(d, f))
    champs = [f]
    for k in ("Title", "Author", "WM/Composer", "WM/Writer", "WM/ISRC", "WM/Publisher"):
        v = a.tags.get(k)
        if v: champs.append(k + "=" + str(v[0]))
    champs.append("duree=%d" % round(a.info.length))
    print("\t".join(champs))
)";

TEST(FichiersWmaDemo, AnIndependentReaderFindsTheTagsOurReaderFinds) {
#ifdef _WIN32
    GTEST_SKIP() << "the independent reader is python3-mutagen, a Linux program: the Linux run of "
                    "this test checks the files of the same writer";
#endif
    const std::string dossier = test::NewTempDir("wma-demo");
    const BibliothequeDemo b = GenererBibliotheque(300, 7);
    const BilanWma bilan = EcrireFichiersWmaDemo(b, dossier, 11);
    ASSERT_GT(bilan.fichiers, 100);
    EXPECT_GT(bilan.incomplets, 0);
    EXPECT_LT(bilan.incomplets, bilan.fichiers / 4);

    const std::string script = dossier + "lire.py";
    test::WriteFile(script, kLireMutagen);
    const std::string sons = dossier + "sons/";
    std::filesystem::create_directories(sons);
    for (const auto& e : std::filesystem::directory_iterator(dossier))
        if (e.path().extension() == ".wma")
            std::filesystem::rename(e.path(), sons + e.path().filename().string());
    FILE* p = popen(("/usr/bin/python3 " + script + " " + sons + " 2>&1").c_str(), "r");
    ASSERT_TRUE(p);
    std::string sortie;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0)
        sortie.append(buf, n);
    ASSERT_EQ(pclose(p), 0) << sortie;

    std::map<std::string, int> durees;
    for (const MorceauDemo& m : b.morceaux)
        durees[m.cle + ".wma"] = m.duree;
    int fichiers = 0, sansIsrc = 0;
    size_t debut = 0;
    while (debut < sortie.size()) {
        const size_t fin = sortie.find('\n', debut);
        const std::string ligne = sortie.substr(debut, fin - debut);
        debut = fin == std::string::npos ? sortie.size() : fin + 1;
        std::vector<std::string> champs;
        for (size_t d = 0;;) {
            const size_t t = ligne.find('\t', d);
            champs.push_back(ligne.substr(d, t == std::string::npos ? std::string::npos : t - d));
            if (t == std::string::npos) break;
            d = t + 1;
        }
        ASSERT_GE(champs.size(), 3u) << ligne;
        ++fichiers;
        Cls_WMATag lu;
        lu.SetFilename(sons + champs[0]);
        ASSERT_TRUE(lu.ReadWMATags()) << champs[0];
        std::map<std::string, std::string> mutagen;
        for (size_t i = 1; i + 1 < champs.size(); ++i) {
            const size_t egal = champs[i].find('=');
            mutagen[champs[i].substr(0, egal)] = champs[i].substr(egal + 1);
        }
        EXPECT_EQ(mutagen["Title"], lu.TagByDescriptor("WM/Title")) << champs[0];
        EXPECT_EQ(mutagen["Author"], lu.TagByDescriptor("WM/Artist")) << champs[0];
        for (const char* k : {"WM/Composer", "WM/Writer", "WM/ISRC", "WM/Publisher"})
            EXPECT_EQ(mutagen[k], lu.TagByDescriptor(k)) << champs[0] << " " << k;
        EXPECT_FALSE(mutagen["WM/Publisher"].empty());
        if (mutagen["WM/ISRC"].empty()) ++sansIsrc;
        else EXPECT_EQ(mutagen["WM/ISRC"].size(), 12u) << mutagen["WM/ISRC"];
        EXPECT_EQ(champs.back(), "duree=" + std::to_string(durees[champs[0]])) << champs[0];
    }
    EXPECT_EQ(fichiers, bilan.fichiers);
    EXPECT_GT(sansIsrc, 0);
    std::filesystem::remove_all(dossier);
}

}  // namespace
}  // namespace zl3::demo
