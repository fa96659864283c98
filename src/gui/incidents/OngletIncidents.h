// The page of the main window's "Incidents" tab: the incidents grid (newest first) over the list
// kept in the incidents file, a "Vérifier" button that runs the check over the main window's
// period and station, a "Purger" button that empties the list after a question.
//
// The list is read from its file the first time it is needed (Charger: at start-up when the
// option says so, else when the tab is first shown). New incidents found while the tab is not
// on screen make its caption flash (TimerFlash, every 500 ms) until the tab is shown; once the
// quitting flag is set the timer does nothing but stop.
#pragma once

#include <QWidget>

#include <functional>

#include "Grid.h"
#include "Incidents.h"

class QLabel;
class QPushButton;
class QTabWidget;
class QTableView;
class QTimer;

namespace zl3::gui {

class ModeleGrille;

class OngletIncidents : public QWidget {
    Q_OBJECT
  public:
    explicit OngletIncidents(QWidget* parent = nullptr);
    ~OngletIncidents() override;

    // The tab widget that holds this page, whose caption flashes.
    void DefinirOnglets(QTabWidget* onglets) { onglets_ = onglets; }
    // The check's period, station and caller slot, from the main window; a false return means
    // nothing can be checked now (the main window has said why).
    std::function<bool(ParametresVerification&)> parametres;

    // Reads the incidents file once; later calls do nothing.
    void Charger();
    bool Charge() const { return charge_; }
    // Runs the check, adds what is new to the list and saves it. Returns how many were new.
    std::size_t Verifier(ParametresVerification p);
    // The "Purger" button.
    void Purger();
    // The tab is on screen: loads the list if needed, marks everything seen, stops the flash.
    void Montre();

    const ListeIncidents& Liste() const { return liste_; }
    const Grid& Grille() const { return grille_; }
    QTimer* TimerFlash() const { return timerFlash_; }
    bool EnCours() const { return enCours_; }

  private:
    void Rafraichir();
    void TimerFlash_Timer();
    void Allumer(bool allume);
    bool OngletVisible() const;

    ListeIncidents liste_;
    Grid grille_;
    bool charge_ = false;
    bool enCours_ = false;
    bool allume_ = false;
    QTabWidget* onglets_ = nullptr;
    ModeleGrille* modele_ = nullptr;
    QTableView* vue_ = nullptr;
    QLabel* resume_ = nullptr;
    QPushButton* verifier_ = nullptr;
    QPushButton* purger_ = nullptr;
    QTimer* timerFlash_ = nullptr;
};

}  // namespace zl3::gui
