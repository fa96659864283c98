#include "LecteursExternes.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <unistd.h>

#ifndef ZL3_PYTHON
#error "ZL3_PYTHON (the system Python that sees python3-xlrd) must be defined"
#endif

namespace zl3::test {

namespace fs = std::filesystem;

namespace {

std::string Citation(const std::string& s) {
    return "'" + s + "'";
}

// Runs one of the reader scripts on `chemin` and returns its JSON output, or an empty object
// after recording a test failure.
QJsonObject LanceLecteur(const char* script, const std::string& chemin) {
    DossierTemporaire sorties;
    const std::string json = sorties / "sortie.json";
    const std::string erreurs = sorties / "erreurs.txt";
    const std::string commande = Citation(ZL3_PYTHON) + " " + Citation(script) + " " +
                                 Citation(chemin) + " > " + Citation(json) + " 2> " +
                                 Citation(erreurs);
    const int code = std::system(commande.c_str());
    if (code != 0) {
        ADD_FAILURE() << "reader " << script << " failed on " << chemin << ":\n"
                      << LitFichier(erreurs);
        return {};
    }
    const std::string texte = LitFichier(json);
    QJsonParseError erreur{};
    const QJsonDocument doc = QJsonDocument::fromJson(
        QByteArray(texte.data(), static_cast<qsizetype>(texte.size())), &erreur);
    if (erreur.error != QJsonParseError::NoError || !doc.isObject()) {
        ADD_FAILURE() << "reader output is not JSON: " << erreur.errorString().toStdString();
        return {};
    }
    return doc.object();
}

std::string Utf8(const QJsonValue& v) {
    return v.toString().toStdString();
}

}  // namespace

std::string FeuilleLue::Texte(int ligne, int colonne) const {
    if (ligne < 0 || ligne >= static_cast<int>(cellules.size())) return {};
    const auto& l = cellules[static_cast<size_t>(ligne)];
    if (colonne < 0 || colonne >= static_cast<int>(l.size())) return {};
    return l[static_cast<size_t>(colonne)];
}

ClasseurLu LitXls(const std::string& chemin) {
    ClasseurLu lu;
    const QJsonObject o = LanceLecteur(ZL3_LIT_XLS, chemin);
    lu.journal = Utf8(o["log"]);
    for (const QJsonValue& fv : o["sheets"].toArray()) {
        const QJsonObject f = fv.toObject();
        FeuilleLue feuille;
        feuille.nom = Utf8(f["name"]);
        feuille.lignes = f["nrows"].toInt();
        feuille.colonnes = f["ncols"].toInt();
        for (const QJsonValue& lv : f["cells"].toArray()) {
            std::vector<std::string> ligne;
            for (const QJsonValue& cv : lv.toArray())
                ligne.push_back(Utf8(cv));
            feuille.cellules.push_back(std::move(ligne));
        }
        feuille.autresTypes = static_cast<int>(f["others"].toArray().size());
        for (const QJsonValue& nv : f["numbers"].toArray())
            feuille.nombres.push_back({nv.toArray()[0].toInt(), nv.toArray()[1].toInt()});
        for (const QJsonValue& mv : f["merged"].toArray()) {
            std::vector<int> zone;
            for (const QJsonValue& n : mv.toArray())
                zone.push_back(n.toInt());
            feuille.fusions.push_back(zone);
        }
        for (const QJsonValue& lv : f["widths"].toArray())
            feuille.largeurs.push_back(lv.toInt());
        for (const QJsonValue& cv : f["centered"].toArray())
            feuille.centrees.push_back({cv.toArray()[0].toInt(), cv.toArray()[1].toInt()});
        lu.feuilles.push_back(std::move(feuille));
    }
    return lu;
}

const CelluleXlsx& FeuilleXlsxLue::Cellule(int ligne, int colonne) const {
    static const CelluleXlsx vide;
    if (ligne < 0 || ligne >= static_cast<int>(cellules.size())) return vide;
    const auto& l = cellules[static_cast<size_t>(ligne)];
    if (colonne < 0 || colonne >= static_cast<int>(l.size())) return vide;
    return l[static_cast<size_t>(colonne)];
}

std::vector<FeuilleXlsxLue> LitXlsx(const std::string& chemin) {
    std::vector<FeuilleXlsxLue> feuilles;
    const QJsonObject o = LanceLecteur(ZL3_LIT_XLSX, chemin);
    for (const QJsonValue& fv : o["sheets"].toArray()) {
        const QJsonObject f = fv.toObject();
        FeuilleXlsxLue feuille;
        feuille.nom = Utf8(f["name"]);
        for (const QJsonValue& lv : f["cells"].toArray()) {
            std::vector<CelluleXlsx> ligne;
            for (const QJsonValue& cv : lv.toArray()) {
                const QJsonObject c = cv.toObject();
                CelluleXlsx cellule;
                cellule.nombre = c["number"].toBool();
                if (cellule.nombre)
                    cellule.valeur = c["value"].toDouble();
                else if (c["value"].isString())
                    cellule.texte = Utf8(c["value"]);
                cellule.format = Utf8(c["format"]);
                cellule.gras = c["bold"].toBool();
                ligne.push_back(std::move(cellule));
            }
            feuille.cellules.push_back(std::move(ligne));
        }
        for (const QJsonValue& mv : f["merged"].toArray())
            feuille.fusions.push_back(Utf8(mv));
        feuille.figees = Utf8(f["freeze"]);
        feuille.paysage = f["landscape"].toBool();
        feuille.ajusteLargeur = f["fit_width"].toInt(-1);
        feuille.ajusteHauteur = f["fit_height"].toInt(-1);
        feuille.ajustePage = f["fit_to_page"].toBool();
        const QJsonObject largeurs = f["widths"].toObject();
        for (auto it = largeurs.begin(); it != largeurs.end(); ++it)
            feuille.largeurs.push_back({it.key().toStdString(), it.value().toDouble()});
        feuilles.push_back(std::move(feuille));
    }
    return feuilles;
}

XmlLu LitXml(const std::string& chemin) {
    XmlLu lu;
    const QJsonObject o = LanceLecteur(ZL3_LIT_XML, chemin);
    lu.racine = Utf8(o["root"]);
    for (const QJsonValue& lv : o["rows"].toArray()) {
        const QJsonObject l = lv.toObject();
        LigneXml ligne;
        ligne.balise = Utf8(l["tag"]);
        for (const QJsonValue& cv : l["cells"].toArray()) {
            const QJsonArray c = cv.toArray();
            ligne.cellules.push_back({Utf8(c[0]), Utf8(c[1]), c[2].toInt()});
        }
        lu.lignes.push_back(std::move(ligne));
    }
    return lu;
}

std::vector<std::vector<std::string>> DonneesDe(const Grid& grille) {
    std::vector<std::vector<std::string>> d(static_cast<size_t>(grille.MaxRows()));
    for (int r = 1; r <= grille.MaxRows(); ++r)
        for (int c = 1; c <= grille.MaxCols(); ++c)
            d[static_cast<size_t>(r - 1)].push_back(grille.Text(c, r));
    return d;
}

bool MemesCellules(const FeuilleLue& feuille,
                   const std::vector<std::vector<std::string>>& attendu) {
    size_t lignes = std::max(attendu.size(), feuille.cellules.size());
    for (size_t r = 0; r < lignes; ++r) {
        const size_t colonnes =
            std::max(r < attendu.size() ? attendu[r].size() : 0,
                     r < feuille.cellules.size() ? feuille.cellules[r].size() : 0);
        for (size_t c = 0; c < colonnes; ++c) {
            const std::string a =
                r < attendu.size() && c < attendu[r].size() ? attendu[r][c] : std::string();
            const std::string lu = feuille.Texte(static_cast<int>(r), static_cast<int>(c));
            if (a != lu) {
                ADD_FAILURE() << "cell (" << r << ", " << c << "): expected \"" << a
                              << "\", read \"" << lu << "\"";
                return false;
            }
        }
    }
    return true;
}

std::string LitFichier(const fs::path& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

DossierTemporaire::DossierTemporaire() {
    static std::atomic<int> compteur{0};
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string nom = std::string("zl3_output_") + (info ? info->name() : "hors_test") + "_" +
                            std::to_string(::getpid()) + "_" + std::to_string(++compteur);
    std::string propre = nom;
    std::replace(propre.begin(), propre.end(), '/', '_');
    chemin_ = fs::temp_directory_path() / propre;
    fs::remove_all(chemin_);
    fs::create_directories(chemin_);
}

DossierTemporaire::~DossierTemporaire() {
    std::error_code ec;
    fs::remove_all(chemin_, ec);
}

std::vector<std::string> DossierTemporaire::Contenu() const {
    std::vector<std::string> noms;
    for (const auto& e : fs::directory_iterator(chemin_))
        noms.push_back(e.path().filename());
    std::sort(noms.begin(), noms.end());
    return noms;
}

}  // namespace zl3::test
