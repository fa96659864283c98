// Writes the hand-made ASF headers used as seeds of the tag reader's fuzz target into a folder:
// well-formed headers with every kind of descriptor, and the damaged shapes the reader must
// survive (empty title, leading data, objects of size 0 or too small, truncation, lengths past
// the end, odd lengths, huge counts).
#include <filesystem>
#include <fstream>
#include <iostream>

#include "AsfBuilder.h"

using namespace zl3::asf;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "Usage: zl3_wma_seeds DOSSIER\n";
        return 2;
    }
    const std::filesystem::path dossier = argv[1];
    std::filesystem::create_directories(dossier);
    const auto ecrit = [&](const std::string& nom, const Octets& b) {
        std::ofstream(dossier / (nom + ".wma"), std::ios::binary)
            .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
    };

    const Octets description = Description(Utf16(u"Là où je t'emmènerai"), Utf16(u"Zoé"));
    Octets octets = Descripteur(Utf16(u"WM/Picture"), kOctets, Octets{1, 2, 3});
    Octets booleen = Descripteur(Utf16(u"IsVBR"), kBooleen, Octets{1, 0, 0, 0});
    Octets qword = Descripteur(Utf16(u"WM/Q"), kQword, Octets(8, 7));
    Octets word = Descripteur(Utf16(u"WM/W"), kWord, Octets{3, 0});
    const Octets etendue =
        DescriptionEtendue({Texte(u"WM/AlbumTitle", u"Été \U0001F3B5"), Dword(u"WM/TrackNumber", 5),
                            octets, booleen, qword, word, Texte(u"WM/Genre", u"Chanson")});
    const Octets complet = Fichier({description, etendue});

    ecrit("complet", complet);
    ecrit("titre_vide", Fichier({Description({}, Utf16(u"Abc")), etendue}));
    ecrit("debut_1999", Octets(1999, 0x30) + complet);
    ecrit("objet_taille_0", Fichier({Objet(kGuidDebitsFlux, Octets(8, 0), 0), description}));
    ecrit("objet_32_octets", Fichier({Objet(kGuidDebitsFlux, Octets(8, 0)), description, etendue}));
    ecrit("tronque", Octets(complet.begin(), complet.begin() + 30 + 34 + 20));
    ecrit("titre_trop_long", Fichier({Description(Utf16(u"T"), Utf16(u"A"), 0xFFFF)}));
    ecrit("valeur_trop_longue",
          Fichier({DescriptionEtendue({Descripteur(Utf16(u"N"), kUnicode, Utf16(u"V"), 0xFFF0)})}));
    ecrit("longueurs_impaires",
          Fichier({DescriptionEtendue(
              {Descripteur(Octets{'A', 0, 'B', 0, 0}, kUnicode, Octets{'C', 0, 'D'}),
               Descripteur({}, kUnicode, {}), Texte(u"X", u"Y")})}));
    ecrit("nombre_enorme", Fichier({DescriptionEtendue({Texte(u"A", u"B")}, 0xFFFF)}, 0xFFFFFFFF));
    ecrit("demi_substitut", Fichier({DescriptionEtendue({Texte(u"N",
                                                               u"\xD83C"
                                                               u"x")})}));
    return 0;
}
