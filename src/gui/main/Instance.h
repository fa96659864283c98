// One copy of the tool per machine. The named lock "Zelvar 3.4" (sys::VerrouNomme) says whether
// an earlier copy runs; the earlier copy listens on a local socket beside the lock, through which
// a later copy started with the kill option asks it to quit (it closes itself: nothing is killed).
#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <string>

#include "Lib_Systeme.h"

class QLocalServer;

namespace zl3::gui {

inline constexpr const char* kNomVerrou = "Zelvar 3.4";

// The local socket's address: beside the named lock in the machine's temp folder (a name derived
// from the lock's path when that path is too long for a local socket).
std::string AdresseInstance();

// Listens for a later copy's request to quit; `onQuitter` is called for each request.
class ServeurInstance : public QObject {
    Q_OBJECT
  public:
    explicit ServeurInstance(QObject* parent = nullptr);
    ~ServeurInstance() override;
    bool Ecouter();
    std::function<void()> onQuitter;

  private:
    QLocalServer* serveur_;
};

// True when this copy may run. `verrou` is this copy's named lock; `attenteMs` is waited (through
// the clock service) before testing again. Without `tuer`, an earlier copy gets the message
// "Application encore chargée en mémoire." and false; with it, the earlier copy is asked to quit,
// up to 10 times.
bool TesterPrevInstance(sys::VerrouNomme& verrou, bool tuer, int attenteMs);

}  // namespace zl3::gui
