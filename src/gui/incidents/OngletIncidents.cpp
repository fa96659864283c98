#include "OngletIncidents.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include "Etat.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "ModeleGrille.h"
#include "Services.h"

namespace zl3::gui {

OngletIncidents::OngletIncidents(QWidget* parent) : QWidget(parent) {
    setObjectName("OngletIncidents");
    InitTableurIncidents(grille_);
    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(0, 4, 0, 0);
    auto* barre = new QHBoxLayout;
    resume_ = new QLabel(QStringLiteral("Liste non chargée"));
    resume_->setObjectName("LabelIncidents");
    verifier_ = new QPushButton(QStringLiteral("Vérifier"));
    verifier_->setObjectName("CommandVerifier");
    verifier_->setToolTip(QStringLiteral("Vérifie les données de la station sur la période"));
    purger_ = new QPushButton(QStringLiteral("Purger"));
    purger_->setObjectName("CommandPurger");
    purger_->setToolTip(QStringLiteral("Efface la liste des incidents"));
    barre->addWidget(resume_, 1);
    barre->addWidget(verifier_);
    barre->addWidget(purger_);
    page->addLayout(barre);

    modele_ = new ModeleGrille(grille_, this);
    vue_ = new QTableView;
    vue_->setObjectName("fpSpreadIncidents");
    vue_->setModel(modele_);
    vue_->setAlternatingRowColors(true);
    vue_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    vue_->setSelectionBehavior(QAbstractItemView::SelectRows);
    vue_->setWordWrap(false);
    vue_->verticalHeader()->setDefaultSectionSize(vue_->fontMetrics().height() + 6);
    vue_->horizontalHeader()->setStretchLastSection(false);
    page->addWidget(vue_, 1);
    const int car = vue_->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    for (int c = 1; c <= grille_.MaxCols(); ++c)
        if (grille_.ColWidth(c) > 0) vue_->setColumnWidth(c - 1, grille_.ColWidth(c) * car + 12);

    timerFlash_ = new QTimer(this);
    timerFlash_->setObjectName("TimerFlash");
    timerFlash_->setInterval(500);
    connect(timerFlash_, &QTimer::timeout, this, [this] { TimerFlash_Timer(); });
    connect(verifier_, &QPushButton::clicked, this, [this] {
        ParametresVerification p;
        if (parametres && parametres(p)) Verifier(std::move(p));
    });
    connect(purger_, &QPushButton::clicked, this, [this] { Purger(); });
}

OngletIncidents::~OngletIncidents() {
    // The view reads the grid: it goes first.
    delete vue_;
}

void OngletIncidents::Charger() {
    if (charge_) return;
    charge_ = true;
    liste_.Charger(FichierIncidents());
    TraceLog("FrmMain: Incidents: " + std::to_string(liste_.Liste().size()) + " loaded from " +
             liste_.Fichier());
    if (liste_.LignesIllisibles() > 0)
        TraceLog("FrmMain: Incidents: " + std::to_string(liste_.LignesIllisibles()) +
                 " unreadable line(s) skipped");
    Rafraichir();
}

std::size_t OngletIncidents::Verifier(ParametresVerification p) {
    if (enCours_ || Etat().enSortie) return 0;
    Charger();
    enCours_ = true;
    // The check yields like a search: the exit is refused meanwhile.
    const bool rechercheAvant = Etat().rechercheEnCours;
    Etat().rechercheEnCours = true;
    verifier_->setEnabled(false);
    purger_->setEnabled(false);
    resume_->setText(QStringLiteral("Vérification en cours..."));
    const auto arretDemande = p.arret;
    p.arret = [arretDemande] { return Etat().enSortie || (arretDemande && arretDemande()); };
    std::size_t nouveaux = 0;
    try {
        const BilanVerification b = VerifierDonnees(p);
        nouveaux = liste_.Ajouter(b.incidents);
        TraceLog("FrmMain: Incidents: check of station " + std::to_string(p.station) + ", " +
                 FormatDDMMYYYY(p.debut) + " - " + FormatDDMMYYYY(p.fin) + ": " +
                 std::to_string(b.incidents.size()) + " found, " + std::to_string(nouveaux) +
                 " new" + (b.arretee ? " (stopped)" : ""));
        if (nouveaux > 0 && !liste_.Enregistrer())
            AffMsg("Impossible d'enregistrer la liste des incidents:\n" + liste_.Fichier(),
                   kTitreApplication, kMbOk | kMbExclamation);
    } catch (const std::exception& e) {
        TraceErreur("OngletIncidents:Verifier", 0, e.what());
    }
    Etat().rechercheEnCours = rechercheAvant;
    enCours_ = false;
    verifier_->setEnabled(true);
    purger_->setEnabled(true);
    if (OngletVisible())
        liste_.MarquerVus();
    else if (liste_.NonVus() > 0 && !Etat().enSortie)
        timerFlash_->start();
    Rafraichir();
    return nouveaux;
}

void OngletIncidents::Purger() {
    Charger();
    if (liste_.Purger()) TraceLog("FrmMain: Incidents: list purged");
    Rafraichir();
}

void OngletIncidents::Montre() {
    Charger();
    liste_.MarquerVus();
    timerFlash_->stop();
    Allumer(false);
    Rafraichir();
}

bool OngletIncidents::OngletVisible() const {
    return onglets_ && onglets_->currentWidget() == this && onglets_->isVisible();
}

void OngletIncidents::TimerFlash_Timer() {
    if (Etat().enSortie) {
        timerFlash_->stop();
        return;
    }
    if (OngletVisible() || liste_.NonVus() == 0) {
        Montre();
        return;
    }
    Allumer(!allume_);
}

void OngletIncidents::Allumer(bool allume) {
    allume_ = allume;
    if (!onglets_) return;
    const int index = onglets_->indexOf(this);
    if (index < 0) return;
    onglets_->tabBar()->setTabTextColor(index, allume ? QColor(Qt::red) : QColor());
}

void OngletIncidents::Rafraichir() {
    RemplirTableurIncidents(grille_, liste_.Liste());
    modele_->Suivre();
    const std::size_t n = liste_.Liste().size();
    QString texte = n == 0 ? QStringLiteral("Aucun incident enregistré.")
                           : QStringLiteral("%1 incident(s)").arg(n);
    if (liste_.NonVus() > 0) texte += QStringLiteral(", dont %1 nouveau(x)").arg(liste_.NonVus());
    resume_->setText(texte);
}

}  // namespace zl3::gui
