// SocketUDP: the main window's array of UDP sockets on which the suite sends short datagrams.
// Element i listens on the port read from the settings (PortUDP) plus i, on every IPv4 address.
// A datagram that is not blank makes its element the last active socket; socket errors are
// traced (SocketUDP_DataArrival / SocketUDP_Error of the core).
#pragma once

#include <QObject>
#include <QVector>

class QUdpSocket;

namespace zl3::gui {

class SocketUDP : public QObject {
    Q_OBJECT
  public:
    explicit SocketUDP(QObject* parent = nullptr);
    // Opens `nombre` elements from `port` on; false (and traced) for an element that cannot bind.
    bool Ouvrir(int port, int nombre = 1);
    void Fermer();
    int Nombre() const { return static_cast<int>(sockets_.size()); }
    // Local port of element `index` (the one the system chose when the settings say 0).
    int PortLocal(int index) const;

  signals:
    // After each datagram has been handled.
    void DatagrammeLu(int index);

  private:
    void Lire(int index);
    QVector<QUdpSocket*> sockets_;
};

}  // namespace zl3::gui
