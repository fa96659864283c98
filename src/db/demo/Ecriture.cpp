#include "Ecriture.h"

#include <algorithm>
#include <vector>

#include "Btrieve.h"
#include "Lib_Data_Pervasive_2_Catalogue.h"

namespace zl3::demo {
namespace {

// Key buffer that holds a path for Create and Open: the path, a NUL, room to 255 bytes.
std::vector<char> TamponChemin(const std::string& chemin) {
    std::vector<char> tampon(std::max<std::size_t>(chemin.size() + 1, btr::kMaxKeyLength + 1), 0);
    std::copy(chemin.begin(), chemin.end(), tampon.begin());
    return tampon;
}

std::string Statut(int16_t statut) {
    return std::to_string(statut) + " (" + btr::StatusMeaning(statut) + ")";
}

}  // namespace

EcrivainBtrieve::EcrivainBtrieve(std::string dossier, int enregistrementsParTransaction)
    : dossier_(std::move(dossier)), parTransaction_(std::max(1, enregistrementsParTransaction)) {
    if (!dossier_.empty() && dossier_.back() != '/' && dossier_.back() != '\\') dossier_ += '/';
    InitCatalogueFichiers();
}

EcrivainBtrieve::~EcrivainBtrieve() {
    try {
        Terminer();
    } catch (const ErreurDemo&) {
        // Already failing: the first error is the one reported.
    }
}

std::string EcrivainBtrieve::Chemin(int index, int station) const {
    return dossier_ + NomFichierBTrieve(index, station);
}

void EcrivainBtrieve::Echec(const std::string& quoi, const std::string& nom, int16_t statut) const {
    throw ErreurDemo(quoi + " " + nom + " : erreur Btrieve " + Statut(statut));
}

void EcrivainBtrieve::CreerTout(int nbStations) {
    for (int index = 0; index < kNbFichiersCatalogue; ++index) {
        const FichierCatalogue& entree = CatalogueFichier(index);
        if (entree.Vide()) continue;
        std::vector<uint8_t> structure = StructureCreation(entree);
        const int nb = entree.ParStation == 'O' ? nbStations : 1;
        for (int station = 0; station < nb; ++station) {
            const std::string chemin = Chemin(index, station);
            std::array<uint8_t, btr::kPositionBlockSize> position{};
            std::vector<char> cle = TamponChemin(chemin);
            auto longueur = static_cast<uint32_t>(structure.size());
            // Key number 0: a file of the same name is replaced.
            const int16_t statut = btr::BtrCall(btr::kCreate, position.data(), structure.data(),
                                                &longueur, cle.data(), btr::kMaxKeyLength, 0);
            if (statut != btr::kOk) Echec("Création du fichier", chemin, statut);
            comptes_.emplace(NomFichierBTrieve(index, station), 0);
        }
    }
}

EcrivainBtrieve::Ouvert& EcrivainBtrieve::Fichier(int index, int station) {
    if (CatalogueFichier(index).ParStation != 'O') station = 0;
    const auto cle = std::make_pair(index, station);
    auto it = ouverts_.find(cle);
    if (it != ouverts_.end()) return it->second;
    Ouvert o;
    o.nom = NomFichierBTrieve(index, station);
    const std::string chemin = Chemin(index, station);
    std::vector<char> tampon = TamponChemin(chemin);
    std::vector<uint8_t> donnees(static_cast<std::size_t>(CatalogueFichier(index).LongueurEnreg));
    auto longueur = static_cast<uint32_t>(donnees.size());
    const int16_t statut = btr::BtrCall(btr::kOpen, o.position.data(), donnees.data(), &longueur,
                                        tampon.data(), btr::kMaxKeyLength, btr::kModeNormal);
    if (statut != btr::kOk) Echec("Ouverture du fichier", chemin, statut);
    return ouverts_.emplace(cle, std::move(o)).first->second;
}

void EcrivainBtrieve::Inserer(int index, int station, std::span<const uint8_t> enregistrement,
                              uint32_t longueur) {
    Ouvert& f = Fichier(index, station);
    if (!transaction_) {
        std::array<uint8_t, btr::kPositionBlockSize> bloc{};
        uint32_t zero = 0;
        const int16_t statut =
            btr::BtrCall(btr::kBeginTransaction, bloc.data(), nullptr, &zero, nullptr, 0, 0);
        if (statut != btr::kOk) Echec("Début de transaction pour", f.nom, statut);
        transaction_ = true;
    }
    std::array<uint8_t, btr::kMaxKeyLength> cle{};
    uint32_t n = longueur;
    // The engine does not write into the record on Insert; the buffer is only read.
    const int16_t statut =
        btr::BtrCall(btr::kInsert, f.position.data(), const_cast<uint8_t*>(enregistrement.data()),
                     &n, cle.data(), btr::kMaxKeyLength, 0);
    if (statut != btr::kOk) Echec("Insertion dans", f.nom, statut);
    ++comptes_[f.nom];
    if (++dansTransaction_ >= parTransaction_) Valider();
}

void EcrivainBtrieve::Valider() {
    if (!transaction_) return;
    transaction_ = false;
    dansTransaction_ = 0;
    std::array<uint8_t, btr::kPositionBlockSize> bloc{};
    uint32_t zero = 0;
    const int16_t statut =
        btr::BtrCall(btr::kEndTransaction, bloc.data(), nullptr, &zero, nullptr, 0, 0);
    if (statut != btr::kOk) Echec("Fin de transaction dans", dossier_, statut);
}

void EcrivainBtrieve::Terminer() {
    Valider();
    std::string echec;
    int16_t statutEchec = 0;
    for (auto& [cle, f] : ouverts_) {
        std::array<uint8_t, btr::kMaxKeyLength> tampon{};
        std::array<uint8_t, 8> donnees{};
        uint32_t n = 0;
        const int16_t statut = btr::BtrCall(btr::kClose, f.position.data(), donnees.data(), &n,
                                            tampon.data(), btr::kMaxKeyLength, 0);
        if (statut != btr::kOk && echec.empty()) {
            echec = f.nom;
            statutEchec = statut;
        }
    }
    ouverts_.clear();
    if (!echec.empty()) Echec("Fermeture du fichier", echec, statutEchec);
}

}  // namespace zl3::demo
