#include "SessionRapport.h"

#include "Catalogue.h"
#include "Lib_Config.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Public.h"
#include "Recherche.h"

namespace zl3 {

OngletsRapport OngletsDuRapport(Rapport rapport) {
    switch (rapport) {
        case Rapport::Quotas:
            return {"Musique", 0};
        case Rapport::TopDiffusion:
            return {"Musique", 1};
        case Rapport::Sacem:
            return {"Musique", 2};
        case Rapport::Publicite:
            break;
    }
    return {"Publicite", 0};
}

std::vector<int> FichiersIndispensables(Rapport rapport) {
    if (rapport == Rapport::Publicite)
        return {std::begin(kFichiersPublicite), std::end(kFichiersPublicite)};
    return {kFichierMorceaux, kFichierHistorique, kFichierArtistes, kFichierAttributs};
}

SessionRapport::~SessionRapport() {
    try {
        Fermer();
    } catch (...) {
        // A close that throws leaves the files to the database layer's own exit.
    }
}

bool SessionRapport::Ouvrir(int base, int premiere, int derniere) {
    Fermer();
    const Configuration& config = Config();
    if (base < 1 || base > static_cast<int>(config.bases.size())) return false;
    const ConfigBase& b = config.bases[static_cast<size_t>(base - 1)];
    if (premiere < 1 || derniere < premiere || derniere > b.nbStation || derniere > kNbStations)
        return false;
    dossierData_ = b.dossiers[kRepBtr];
    DefinirDossierData(dossierData_);
    OuvrirFichiersRecherche(source_, premiere, derniere);
    ouverte_ = true;
    base_ = base;
    premiere_ = premiere;
    derniere_ = derniere;
    return true;
}

void SessionRapport::Fermer() {
    if (!ouverte_) return;
    ouverte_ = false;
    FermerFichiersRecherche(source_, premiere_, derniere_);
}

bool SessionRapport::Pret(Rapport rapport, int station) const {
    return FichiersManquants(rapport, station).empty();
}

std::vector<std::string> SessionRapport::FichiersManquants(Rapport rapport, int station) const {
    std::vector<std::string> manquants;
    for (int f : FichiersIndispensables(rapport)) {
        if (ouverte_ && station >= premiere_ && station <= derniere_ &&
            FichierOuvert(source_, station, f))
            continue;
        manquants.push_back(cat::NomFichier(f, station - 1));
    }
    return manquants;
}

}  // namespace zl3
