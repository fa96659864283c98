#include "ReglagesFenetres.h"

#include <QWidget>

#include "Lib_Config.h"
#include "Lib_Profile.h"

namespace zl3::gui {
namespace {

const char* kSection = "FrmPos";

std::string Cle(const QWidget& f, const char* suffixe) {
    return f.objectName().toStdString() + suffixe;
}

long Lire(const QWidget& f, const char* suffixe, const std::string& fichier) {
    return ReadProfileInt(kSection, Cle(f, suffixe), 0, fichier);
}

void Ecrire(const QWidget& f, const char* suffixe, long valeur, const std::string& fichier) {
    WriteProfileString(kSection, Cle(f, suffixe), std::to_string(valeur), fichier);
}

}  // namespace

std::string FichierPositions() {
    return NomFichierSettings("_Positions", ".Ini");
}

void PositionFeuille(QWidget& f, const std::string& fichier) {
    const long gauche = Lire(f, "_Left", fichier);
    const long haut = Lire(f, "_Top", fichier);
    if (gauche > 0 || haut > 0) f.move(gauche / kTwipsParPixel, haut / kTwipsParPixel);
}

void PositionFeuilleSauvegarde(const QWidget& f, const std::string& fichier) {
    if (f.windowState() & (Qt::WindowMaximized | Qt::WindowMinimized)) return;
    Ecrire(f, "_Left", f.x() * kTwipsParPixel, fichier);
    Ecrire(f, "_Top", f.y() * kTwipsParPixel, fichier);
}

void TailleFeuille(QWidget& f, const std::string& fichier) {
    const long largeur = Lire(f, "_Width", fichier) / kTwipsParPixel;
    if (largeur > 0) f.resize(static_cast<int>(largeur), f.height());
    const long hauteur = Lire(f, "_Height", fichier) / kTwipsParPixel;
    if (hauteur > 0) f.resize(f.width(), static_cast<int>(hauteur));
    switch (Lire(f, "_WindowState", fichier)) {
        case 1:
            f.setWindowState(Qt::WindowMinimized);
            break;
        case 2:
            f.setWindowState(Qt::WindowMaximized);
            break;
        default:
            break;
    }
}

void TailleFeuilleSauvegarde(const QWidget& f, const std::string& fichier) {
    int etat = 0;
    if (f.windowState() & Qt::WindowMinimized)
        etat = 1;
    else if (f.windowState() & Qt::WindowMaximized)
        etat = 2;
    if (etat == 0) {
        Ecrire(f, "_Width", f.width() * kTwipsParPixel, fichier);
        Ecrire(f, "_Height", f.height() * kTwipsParPixel, fichier);
    }
    Ecrire(f, "_WindowState", etat, fichier);
}

int PortUDP() {
    const long port = ReadProfileInt("UDP", "Port", kPortUdpDefaut, NomFichierSettings("", ".Ini"));
    return port >= 0 && port <= 65535 ? static_cast<int>(port) : kPortUdpDefaut;
}

bool OptionStatutDemarrage() {
    return ReadProfileString("Comportement", "StatutDemarrage", "1",
                             NomFichierSettings("", ".Ini")) == "1";
}

bool OptionIncidents() {
    return ReadProfileString("Comportement", "Incidents", "0", NomFichierSettings("", ".Ini")) ==
           "1";
}

}  // namespace zl3::gui
