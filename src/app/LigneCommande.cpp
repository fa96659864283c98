#include "LigneCommande.h"

#include <algorithm>
#include <cstdlib>

#include "Etat.h"
#include "EtatGlobal.h"
#include "Lib_Public.h"
#include "Services.h"

namespace zl3 {

EtatApplication& Etat() {
    static EtatApplication etat;
    return etat;
}

void ResetEtat() {
    Etat() = EtatApplication{};
}

namespace {
const EnregistrementEtat kEtatApplication{"Etat", &ResetEtat};
}  // namespace

std::string ValeurSwitch(const std::string& text, const std::string& alphabet) {
    const std::string t = Trim(text);
    size_t n = 0;
    while (n < t.size() && alphabet.find(t[n]) != std::string::npos)
        ++n;
    return t.substr(0, n);
}

namespace {

const char* kDigits = "0123456789";

// Value of the leading digits; 0 when there are none. Large values saturate.
long long NombreSwitch(const std::string& after) {
    const std::string digits = ValeurSwitch(after, kDigits).substr(0, 12);
    return digits.empty() ? 0 : std::atoll(digits.c_str());
}

}  // namespace

void AnalyseChaineCommand(const std::string& ligneCommande) {
    const std::string identity = "Frm_Main:AnalyseChaineCommand";
    TraceProc(identity);
    try {
        EtatApplication& etat = Etat();
        Clock& clock = *Svc().clock;
        if (!etat.chronoDemarrage) etat.chronoDemarrage = clock.Stopwatch();
        TraceLogEncadre("Command Line: '" + ligneCommande + "'");

        etat.instance = 0;
        size_t pos = ligneCommande.find("/Instance=");
        size_t len = 10;
        if (pos == std::string::npos) {
            pos = ligneCommande.find("/I=");
            len = 3;
        }
        if (pos != std::string::npos) {
            const long long v = NombreSwitch(ligneCommande.substr(pos + len));
            etat.instance = static_cast<int>(std::clamp<long long>(v, 1, 10));
        }
        TraceLog("Instance: " + std::to_string(etat.instance));

        pos = ligneCommande.find("/Wait=");
        if (pos != std::string::npos) {
            const long long v = NombreSwitch(ligneCommande.substr(pos + 6));
            etat.dureeAttente = static_cast<int32_t>(std::min<long long>(v, INT32_MAX));
            TraceLog("WaitDuration: " + std::to_string(etat.dureeAttente));
            for (;;) {
                const int64_t elapsed = clock.Stopwatch() - *etat.chronoDemarrage;
                if (elapsed >= etat.dureeAttente) break;
                if (Svc().events) Svc().events->DoEvents();
                clock.Sleep(std::min<int64_t>(10, etat.dureeAttente - elapsed));
            }
        }

        pos = ligneCommande.find("/IP=");
        if (pos != std::string::npos) {
            etat.adresseCible = ValeurSwitch(ligneCommande.substr(pos + 4), "0123456789.");
            TraceLog("Target IP Address: " + etat.adresseCible);
        }
    } catch (const std::exception& e) {
        TraceErreur(identity, 0, e.what());
    }
}

void SocketUDP_DataArrival(int index, const std::string& datagram) {
    if (!Trim(datagram).empty()) Etat().dernierSocketActif = index;
}

void SocketUDP_Error(int index, long number, const std::string& description) {
    TraceLog("UDP: Err: Socket # " + std::to_string(index) + ": Err: " + std::to_string(number) +
             " " + description + " | SocketUDP");
}

}  // namespace zl3
