#include "Instance.h"

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>

#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Services.h"

namespace zl3::gui {

std::string AdresseInstance() {
#ifdef _WIN32
    return kNomVerrou;
#else
    const std::string chemin = sys::DossierTempMachine() + kNomVerrou + ".sock";
    // A local socket's path is limited (108 bytes): a deep root gets a name of its own in the
    // system's temp folder instead.
    if (chemin.size() < 100) return chemin;
    return "Zelvar-3.4-" +
           std::to_string(qHash(QByteArray::fromStdString(sys::FichierVerrouNomme(kNomVerrou))));
#endif
}

ServeurInstance::ServeurInstance(QObject* parent)
    : QObject(parent), serveur_(new QLocalServer(this)) {
    connect(serveur_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* c = serveur_->nextPendingConnection()) {
            connect(c, &QLocalSocket::disconnected, c, &QObject::deleteLater);
            connect(c, &QLocalSocket::readyRead, this, [this, c] {
                const QByteArray demande = c->readAll();
                if (!demande.startsWith("Quitter")) return;
                c->write(QByteArray::number(QCoreApplication::applicationPid()) + "\n");
                c->flush();
                if (onQuitter) onQuitter();
            });
        }
    });
}

ServeurInstance::~ServeurInstance() {
    serveur_->close();
}

bool ServeurInstance::Ecouter() {
    // Called while holding the named lock: a socket file left there belongs to a copy that ended.
    const QString adresse = QString::fromStdString(AdresseInstance());
    QLocalServer::removeServer(adresse);
    if (serveur_->listen(adresse)) return true;
    TraceLog("Err: Instance: cannot listen on '" + AdresseInstance() + "': " +
             serveur_->errorString().toStdString());
    return false;
}

bool TesterPrevInstance(sys::VerrouNomme& verrou, bool tuer, int attenteMs) {
    TraceProc("Lib_Public:TesterPrevInstance");
    if (verrou.Reprendre()) return true;
    if (attenteMs > 0) {
        Svc().clock->Sleep(attenteMs);
        if (verrou.Reprendre()) return true;
    }
    if (!tuer) {
        AffMsg(std::string("Application encore chargée en mémoire.") + "\n" +
                   "Veuillez la quitter avant de relancer une autre instance de cette application.",
               kTitreApplication, kMbOk | kMbCritical);
        return false;
    }
    for (int essai = 0; essai < 10; ++essai) {
        Svc().events->DoEvents();
        if (verrou.Reprendre()) return true;
        QLocalSocket s;
        s.connectToServer(QString::fromStdString(AdresseInstance()));
        if (!s.waitForConnected(500)) {
            // No earlier copy listens any more: it is on its way out.
            Svc().clock->Sleep(200);
            continue;
        }
        s.write("Quitter\n");
        s.flush();
        std::string pid = "?";
        for (int i = 0; i < 10 && s.bytesAvailable() == 0; ++i) {
            s.waitForReadyRead(50);
            Svc().events->DoEvents();
        }
        if (s.bytesAvailable() > 0) pid = s.readLine().trimmed().toStdString();
        TraceLog("Err: PrevInstance found in Windows memory. Prev-Instance try to kill |Hwnd:" +
                     pid,
                 true);
        TraceLogForce();
        s.disconnectFromServer();
        Svc().clock->Sleep(200);
    }
    return verrou.Reprendre();
}

}  // namespace zl3::gui
