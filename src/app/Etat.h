// Application-wide state shared by the shell's modules (start-up, command line, configuration).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zl3 {

struct EtatApplication {
    std::string ligneCommande;               // the whole command line, kept for later tests
    int instance = 0;                        // 0: shared settings; 1..10: per-instance settings
    int32_t dureeAttente = 0;                // "/Wait=" milliseconds
    std::string adresseCible;                // "/IP=" dotted address
    bool demandeVeille = false;              // "/Veille=True": start in the notification area
    bool enSortie = false;                   // exit confirmed: timers do nothing any more
    bool rechercheEnCours = false;           // a statistics run or a track search is running
    std::optional<int64_t> chronoDemarrage;  // stopwatch at the start of Form_Load
    int dernierSocketActif = -1;             // SocketUDP element that last received a datagram
    bool erreurFTP = false;                  // any FTP failure sets it; FTP windows clear it
};

EtatApplication& Etat();
void ResetEtat();

}  // namespace zl3
