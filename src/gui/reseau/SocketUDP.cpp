#include "SocketUDP.h"

#include <QNetworkDatagram>
#include <QUdpSocket>

#include "Lib_Public.h"
#include "LigneCommande.h"

namespace zl3::gui {

SocketUDP::SocketUDP(QObject* parent) : QObject(parent) {}

bool SocketUDP::Ouvrir(int port, int nombre) {
    Fermer();
    bool ok = true;
    for (int i = 0; i < nombre; ++i) {
        auto* s = new QUdpSocket(this);
        sockets_.push_back(s);
        connect(s, &QUdpSocket::readyRead, this, [this, i] { Lire(i); });
        connect(s, &QUdpSocket::errorOccurred, this, [s, i](QAbstractSocket::SocketError e) {
            SocketUDP_Error(i, static_cast<long>(e), s->errorString().toStdString());
        });
        const quint16 p = port == 0 ? 0 : static_cast<quint16>(port + i);
        if (!s->bind(QHostAddress::AnyIPv4, p)) {
            ok = false;
            continue;
        }
        TraceLog("UDP: Socket # " + std::to_string(i) + ": listening on port " +
                 std::to_string(s->localPort()));
    }
    return ok;
}

void SocketUDP::Fermer() {
    for (QUdpSocket* s : sockets_) {
        s->disconnect(this);
        s->close();
        s->deleteLater();
    }
    sockets_.clear();
}

int SocketUDP::PortLocal(int index) const {
    return index >= 0 && index < sockets_.size() ? sockets_[index]->localPort() : 0;
}

void SocketUDP::Lire(int index) {
    QUdpSocket* s = sockets_[index];
    while (s->hasPendingDatagrams()) {
        const QNetworkDatagram d = s->receiveDatagram();
        SocketUDP_DataArrival(index, d.data().toStdString());
        emit DatagrammeLu(index);
    }
}

}  // namespace zl3::gui
