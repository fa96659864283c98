#include "Publicite.h"

#include <algorithm>
#include <set>

#include "Hasard.h"
#include "Vocabulaire.h"

namespace zl3::demo {
namespace {

constexpr int kNbClients = 60;
// Commercial breaks: these minutes of every hour from 06:00 to 21:59.
constexpr int kMinutesEcrans[] = {13, 28, 43, 56};
constexpr int kPremiereHeureEcrans = 6;
constexpr int kDerniereHeureEcrans = 21;
constexpr int kDureesSpots[] = {10, 15, 20, 20, 25, 30, 30, 30, 40};
constexpr double kPartNonDiffuses = 0.02;  // planned spots that never made it to air
constexpr double kPartSansClient = 0.005;  // log lines written without their client
constexpr int kCampagnesActives = 16;      // campaigns running at one time, on average
constexpr int kDureeCampagneMin = 14;
constexpr int kDureeCampagneMax = 56;

}  // namespace

RegieDemo GenererRegie(uint64_t graine) {
    Hasard h(graine);
    RegieDemo r;
    int n = 0;
    for (const char* nom : voc::Commerciaux())
        r.commerciaux.push_back({"COM" + PadNumber(++n, 2), nom});
    for (const voc::Secteur& s : voc::Secteurs())
        r.secteurs.push_back({s.code, s.libelle});

    std::set<std::string> noms;
    int produit = 0;
    for (int i = 0; i < kNbClients; ++i) {
        ClientDemo c;
        c.code = "CLI" + PadNumber(i + 1, 5);
        for (int essai = 0;; ++essai) {
            const voc::Enseigne& e = Un(h, voc::Enseignes());
            c.nom = std::string(e.debut) + " " + Un(h, voc::NomsEnseigne());
            c.secteur = e.secteur;
            if (essai >= 50) c.nom += " " + std::to_string(i + 1);
            if (noms.insert(c.nom).second) break;
        }
        c.commercial = static_cast<int>(h.Sous(r.commerciaux.size()));
        const int nbProduits = h.Entre(1, 3);
        for (int p = 0; p < nbProduits; ++p)
            c.produits.push_back("PRD" + PadNumber(++produit, 5));
        r.clients.push_back(std::move(c));
    }
    return r;
}

PubliciteStation GenererPublicite(const RegieDemo& regie, int base, int station,
                                  const DateTime& premierJour, int nbJours, uint64_t graine) {
    Hasard h(graine);
    PubliciteStation p;
    const int64_t jour0 = DaysFromCivil(premierJour.year, premierJour.month, premierJour.day);
    const int64_t jourFin = jour0 + nbJours - 1;

    // Zones of the station: its town, the two next ones of its area, and national campaigns.
    const voc::Liste villes = voc::VillesReference();
    const std::size_t ville = static_cast<std::size_t>(station + 2 * (base - 1)) % villes.size();
    const std::string zones[] = {
        std::string("HDF|") + villes[ville],
        std::string("HDF|") + villes[(ville + 1) % villes.size()],
        std::string("HDF|") + villes[(ville + 2) % villes.size()],
        "NAT|FRANCE",
    };
    constexpr double kPoidsZones[] = {0.5, 0.15, 0.15, 0.2};

    // Contracts: campaigns of two to eight weeks starting all along the period (and some
    // before it, so that the first days have their breaks filled too).
    const double parJour = 2.0 * kCampagnesActives / (kDureeCampagneMin + kDureeCampagneMax);
    const int numeroBase = 200000 + station * 20000;
    for (int64_t jour = jour0 - kDureeCampagneMax; jour <= jourFin; ++jour) {
        int nouveaux = static_cast<int>(parJour);
        if (h.Chance(parJour - nouveaux)) ++nouveaux;
        for (int k = 0; k < nouveaux; ++k) {
            ContratDemo c;
            c.numero = PadNumber(numeroBase + static_cast<int>(p.contrats.size()) + 1, 6);
            c.client = static_cast<int>(h.Sous(regie.clients.size()));
            const ClientDemo& client = regie.clients[c.client];
            c.commercial = h.Chance(0.9) ? client.commercial
                                         : static_cast<int>(h.Sous(regie.commerciaux.size()));
            c.produit = client.produits[h.Sous(client.produits.size())];
            const DateTime debut = CivilFromDays(jour);
            const char* campagne =
                h.Chance(0.6) ? voc::CampagneDeSaison(debut.month) : Un(h, voc::Campagnes());
            c.libelle =
                std::string(campagne) + " " + std::to_string(debut.year) + " – " + client.nom;
            c.premierJour = jour;
            c.dernierJour = jour + h.Entre(kDureeCampagneMin, kDureeCampagneMax) - 1;
            c.zone = zones[h.Pondere(kPoidsZones)];
            c.intensite = h.Entre(1, 3);
            const int contrat = static_cast<int>(p.contrats.size());
            const int nbSpots = h.Entre(1, 3);
            for (int s = 0; s < nbSpots; ++s) {
                SpotDemo spot;
                spot.cle = "SP" + PadNumber(static_cast<int64_t>(p.spots.size()) + 1, 6);
                spot.numero = PadNumber(1000 + static_cast<int64_t>(p.spots.size()) * 7 % 9000, 6);
                spot.contrat = contrat;
                spot.duree = Un(h, std::span<const int>(kDureesSpots));
                const int idSpot = static_cast<int>(p.spots.size());
                const int nbMessages = h.Entre(1, 2);
                for (int m = 0; m < nbMessages; ++m) {
                    MessageDemo msg;
                    msg.cle = "MS" + PadNumber(static_cast<int64_t>(p.messages.size()) + 1, 6);
                    msg.spot = idSpot;
                    msg.texte = Un(h, voc::Accroches());
                    if (m > 0) msg.texte += " (v" + std::to_string(m + 1) + ")";
                    msg.creation = (jour - h.Entre(2, 10)) * 86400 + h.Entre(9 * 3600, 18 * 3600);
                    spot.messages.push_back(static_cast<int>(p.messages.size()));
                    p.messages.push_back(std::move(msg));
                }
                p.spots.push_back(std::move(spot));
            }
            p.contrats.push_back(std::move(c));
        }
    }

    // Running order and log, day by day.
    std::vector<int> actifs;
    std::vector<double> poids;
    std::vector<int> diffusionsSpot(p.spots.size(), 0);
    std::vector<int> dansLEcran;
    std::vector<std::vector<int>> spotsDuContrat(p.contrats.size());
    for (int s = 0; s < static_cast<int>(p.spots.size()); ++s)
        spotsDuContrat[p.spots[s].contrat].push_back(s);
    std::size_t premierEncore = 0;  // contracts are sorted by first day
    for (int64_t jour = jour0; jour <= jourFin; ++jour) {
        actifs.clear();
        poids.clear();
        while (premierEncore < p.contrats.size() &&
               p.contrats[premierEncore].dernierJour < jour - kDureeCampagneMax)
            ++premierEncore;
        for (std::size_t c = premierEncore; c < p.contrats.size(); ++c) {
            const ContratDemo& contrat = p.contrats[c];
            if (contrat.premierJour > jour) break;
            if (contrat.dernierJour < jour) continue;
            actifs.push_back(static_cast<int>(c));
            poids.push_back(contrat.intensite);
        }
        const int jourSemaine = DayOfWeek(CivilFromDays(jour));
        int ecran = 0;
        for (int hh = kPremiereHeureEcrans; hh <= kDerniereHeureEcrans; ++hh) {
            for (const int minute : kMinutesEcrans) {
                ++ecran;
                if (actifs.empty()) continue;
                const int voulus = jourSemaine >= 6 ? h.Entre(2, 4) : h.Entre(2, 5);
                // Distinct clients in one break.
                dansLEcran.clear();
                std::vector<int> clients;
                for (int essai = 0; essai < 20 && static_cast<int>(dansLEcran.size()) < voulus;
                     ++essai) {
                    const ContratDemo& c = p.contrats[actifs[h.Pondere(poids)]];
                    if (std::find(clients.begin(), clients.end(), c.client) != clients.end())
                        continue;
                    clients.push_back(c.client);
                    const std::vector<int>& spots =
                        spotsDuContrat[static_cast<std::size_t>(&c - p.contrats.data())];
                    dansLEcran.push_back(spots[h.Sous(spots.size())]);
                }
                // Spots back to back from the break's minute: each starts in its own second.
                int64_t t = jour * 86400 + hh * 3600 + minute * 60;
                const int64_t retard = h.Entre(0, 45);  // the break aired a little late
                const int nb = static_cast<int>(dansLEcran.size());
                for (int rang = 0; rang < nb; ++rang) {
                    const SpotDemo& spot = p.spots[dansLEcran[rang]];
                    SpotPrevu prevu;
                    prevu.instant = t;
                    prevu.spot = dansLEcran[rang];
                    prevu.message =
                        spot.messages[diffusionsSpot[prevu.spot]++ % spot.messages.size()];
                    prevu.ecran = ecran;
                    prevu.rang = rang + 1;
                    prevu.nbSpots = nb;
                    p.prevus.push_back(prevu);
                    if (!h.Chance(kPartNonDiffuses)) {
                        SpotDiffuse d;
                        d.instant = t + retard;
                        d.prevu = static_cast<int>(p.prevus.size()) - 1;
                        d.duree = h.Chance(0.03) ? spot.duree - 1 : spot.duree;
                        d.sansClient = h.Chance(kPartSansClient);
                        p.diffuses.push_back(d);
                    }
                    t += spot.duree;
                }
            }
        }
    }
    return p;
}

}  // namespace zl3::demo
