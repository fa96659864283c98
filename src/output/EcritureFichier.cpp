#include "EcritureFichier.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <random>

namespace zl3 {

namespace fs = std::filesystem;

namespace {

// Paths are UTF-8 inside the program; std::filesystem needs to be told so (Windows).
fs::path CheminNatif(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string TexteChemin(const fs::path& p) {
    const std::u8string u = p.u8string();
    return std::string(u.begin(), u.end());
}

// A name of the target folder that no other export is using: "~" & file name & "." & 16 hex
// digits & ".tmp". The leading "~" keeps it out of the way in a listing sorted by name.
fs::path NomTemporaire(const fs::path& cible) {
    static std::atomic<uint64_t> compteur{0};
    static const uint64_t graine = [] {
        std::random_device rd;
        return (static_cast<uint64_t>(rd()) << 32) ^ rd();
    }();
    const uint64_t temps =
        static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    uint64_t v = graine ^ (temps * 0x9E3779B97F4A7C15ULL) ^ (++compteur * 0xBF58476D1CE4E5B9ULL);
    static const char kHex[] = "0123456789abcdef";
    std::string suffixe(16, '0');
    for (int i = 15; i >= 0; --i, v >>= 4)
        suffixe[static_cast<size_t>(i)] = kHex[v & 0xF];
    fs::path nom = cible.filename();
    nom = fs::path(u8"~") += nom;
    nom += u8".";
    nom += suffixe;
    nom += u8".tmp";
    return cible.parent_path() / nom;
}

// Buffered sink over the temporary file; remembers the first failure.
class SortieTamponnee : public SortieFichier {
  public:
    explicit SortieTamponnee(std::ofstream& f) : f_(f) { tampon_.reserve(kTaille); }
    void Ecrit(std::string_view octets) override {
        if (tampon_.size() + octets.size() > kTaille) Vide();
        if (octets.size() >= kTaille)
            f_.write(octets.data(), static_cast<std::streamsize>(octets.size()));
        else
            tampon_.append(octets);
    }
    void Vide() {
        if (!tampon_.empty())
            f_.write(tampon_.data(), static_cast<std::streamsize>(tampon_.size()));
        tampon_.clear();
    }

  private:
    static constexpr size_t kTaille = 1 << 20;
    std::ofstream& f_;
    std::string tampon_;
};

}  // namespace

ResultatEcriture EcritFichierAtomique(const std::string& chemin,
                                      const ProducteurFichier& producteur) {
    if (chemin.empty()) return ResultatEcriture::Echec("Nom de fichier vide");
    const fs::path cible = CheminNatif(chemin);
    std::error_code ec;
    if (fs::is_directory(cible, ec))
        return ResultatEcriture::Echec("'" + chemin + "' est un dossier");
    if (cible.filename().empty())
        return ResultatEcriture::Echec("Nom de fichier absent dans '" + chemin + "'");

    const fs::path temporaire = NomTemporaire(cible);
    auto abandonne = [&](const std::string& texte) {
        std::error_code ignore;
        fs::remove(temporaire, ignore);
        return ResultatEcriture::Echec(texte);
    };

    std::ofstream f;
    f.open(temporaire, std::ios::binary | std::ios::trunc);
    if (!f) {
        const int err = errno;
        const fs::path dossier = cible.parent_path().empty() ? fs::path(".") : cible.parent_path();
        return ResultatEcriture::Echec("Impossible de créer un fichier dans le dossier '" +
                                       TexteChemin(dossier) + "' (" + std::strerror(err) + ")");
    }
    try {
        SortieTamponnee sortie(f);
        std::string erreur;
        if (!producteur(sortie, erreur)) {
            f.close();
            return abandonne(erreur.empty() ? "Ecriture abandonnée" : erreur);
        }
        sortie.Vide();
        f.flush();
        if (!f) {
            const int err = errno;
            f.close();
            return abandonne("Erreur d'écriture du fichier '" + chemin + "' (" +
                             std::strerror(err) + ")");
        }
        f.close();
        if (!f) return abandonne("Erreur à la fermeture du fichier '" + chemin + "'");
    } catch (const std::bad_alloc&) {
        f.close();
        return abandonne("Mémoire insuffisante pour écrire le fichier '" + chemin + "'");
    } catch (const std::exception& e) {
        f.close();
        return abandonne("Erreur d'écriture du fichier '" + chemin + "' (" + e.what() + ")");
    }

    fs::rename(temporaire, cible, ec);
    if (ec)
        return abandonne("Impossible de nommer le fichier '" + chemin + "' (" + ec.message() + ")");
    return ResultatEcriture::Succes();
}

std::optional<long long> NombreEntier(const std::string& texte) {
    size_t i = 0;
    const bool negatif = !texte.empty() && texte[0] == '-';
    if (negatif) i = 1;
    const size_t chiffres = texte.size() - i;
    if (chiffres < 1 || chiffres > 15) return std::nullopt;
    if (texte[i] == '0' && (chiffres > 1 || negatif)) return std::nullopt;  // "007", "-0"
    long long v = 0;
    for (; i < texte.size(); ++i) {
        const char c = texte[i];
        if (c < '0' || c > '9') return std::nullopt;
        v = v * 10 + (c - '0');
    }
    return negatif ? -v : v;
}

std::optional<Pourcentage> PourcentageDeTexte(const std::string& texte) {
    size_t fin = texte.size();
    if (fin == 0 || texte[fin - 1] != '%') return std::nullopt;
    --fin;
    while (fin > 0 && texte[fin - 1] == ' ')
        --fin;
    const std::string nombre = texte.substr(0, fin);
    size_t i = 0;
    const bool negatif = !nombre.empty() && nombre[0] == '-';
    if (negatif) i = 1;
    double entier = 0;
    int chiffresEntiers = 0;
    for (; i < nombre.size() && nombre[i] >= '0' && nombre[i] <= '9'; ++i, ++chiffresEntiers)
        entier = entier * 10 + (nombre[i] - '0');
    if (chiffresEntiers == 0 || chiffresEntiers > 12) return std::nullopt;
    Pourcentage p;
    double decimales = 0;
    if (i < nombre.size()) {
        if (nombre[i] != '.') return std::nullopt;
        ++i;
        double echelle = 1;
        for (; i < nombre.size() && nombre[i] >= '0' && nombre[i] <= '9'; ++i, ++p.decimales) {
            echelle /= 10;
            decimales += (nombre[i] - '0') * echelle;
        }
        if (i != nombre.size() || p.decimales == 0 || p.decimales > 6) return std::nullopt;
    }
    const double valeur = entier + decimales;
    p.fraction = (negatif ? -valeur : valeur) / 100.0;
    return p;
}

}  // namespace zl3
