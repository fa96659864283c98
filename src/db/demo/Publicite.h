// The demo station's advertising: the sales house of the base (salespeople, business sectors,
// clients) and, per station, its contracts, spots and messages, the running order of the
// commercial breaks and the log of what was actually aired.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DateTime.h"

namespace zl3::demo {

struct CommercialDemo {
    std::string code;
    std::string nom;
};

struct SecteurDemo {
    std::string code;
    std::string libelle;
};

struct ClientDemo {
    std::string code;  // 8 characters
    std::string nom;
    int secteur = 0;
    int commercial = 0;                 // account manager
    std::vector<std::string> produits;  // product codes advertised
};

// What the base's sales house knows, shared by its stations.
struct RegieDemo {
    std::vector<CommercialDemo> commerciaux;
    std::vector<SecteurDemo> secteurs;
    std::vector<ClientDemo> clients;
};

RegieDemo GenererRegie(uint64_t graine);

struct ContratDemo {
    std::string numero;  // 6 digits
    int client = 0;
    int commercial = 0;
    std::string produit;
    std::string libelle;
    int64_t premierJour = 0;  // days since 1970-01-01
    int64_t dernierJour = 0;
    std::string zone;   // "region|town"
    int intensite = 1;  // relative weight of the campaign in the breaks
};

struct SpotDemo {
    std::string cle;     // key of the commercial
    std::string numero;  // spot number, digits
    int contrat = 0;
    int duree = 0;  // seconds
    std::vector<int> messages;
};

struct MessageDemo {
    std::string cle;
    int spot = 0;
    std::string texte;
    int64_t creation = 0;  // when it was recorded (seconds, see Instant)
};

// One spot of the running order.
struct SpotPrevu {
    int64_t instant = 0;  // planned start, to the second, unique in the running order
    int spot = 0;
    int message = 0;
    int ecran = 0;    // commercial break of the day, from 1
    int rang = 0;     // place in the break, from 1
    int nbSpots = 0;  // spots in the break
};

// One line of the broadcast log.
struct SpotDiffuse {
    int64_t instant = 0;      // aired start
    int prevu = 0;            // index of the planned spot
    int duree = 0;            // aired length, seconds
    bool sansClient = false;  // written without its client code, as happens in real logs
};

struct PubliciteStation {
    std::vector<ContratDemo> contrats;
    std::vector<SpotDemo> spots;
    std::vector<MessageDemo> messages;
    std::vector<SpotPrevu> prevus;      // in time order
    std::vector<SpotDiffuse> diffuses;  // in time order
};

// `station` is 0-based; `base` 1-based (the station's town follows the demo site's names).
PubliciteStation GenererPublicite(const RegieDemo& regie, int base, int station,
                                  const DateTime& premierJour, int nbJours, uint64_t graine);

}  // namespace zl3::demo
