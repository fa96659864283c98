#include "NavigateurFTP.h"

#include "FrmSetupFTPUpload.h"

namespace zl3::gui {

bool OuvrirNavigateurFTP(QWidget* parent, ServeurFTP& entree) {
    FrmSetupFTPUpload f(parent);
    f.Charger(entree.serveur, entree.user, entree.pw, entree.cnx, entree.dossier, entree.ftps, 0);
    bool rendu = false;
    ServeurFTP choisi = entree;
    f.onTransferer = [&](const EntreeFTPChoisie& e) {
        choisi.serveur = e.serveur;
        choisi.user = e.utilisateur;
        choisi.pw = e.motDePasse;
        choisi.cnx = e.mode;
        choisi.dossier = e.dossier;
        choisi.ftps = f.Ftps();
        rendu = true;
    };
    f.exec();
    if (rendu) entree = choisi;
    return rendu;
}

}  // namespace zl3::gui
