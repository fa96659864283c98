#include "FrmStatsPassages.h"

#include <algorithm>

#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

#include "Etat.h"
#include "GeometrieFenetres.h"
#include "Lib_Config.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Tableur.h"
#include "ModeleGrille.h"
#include "Services.h"
#include "SessionRapport.h"

namespace zl3::gui {

FrmStatsPassages::FrmStatsPassages(QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName("FrmStatsPassages");
    setWindowTitle(QStringLiteral("Nombre de passages"));
    InitGeneral();
    modele_ = new ModeleGrille(grille_, this);
    vue_ = new QTableView;
    vue_->setObjectName("GrillePassages");
    vue_->setFont(QFont(QString::fromLatin1(kPoliceStatsPassages), 9));
    vue_->setModel(modele_);
    vue_->verticalHeader()->setDefaultSectionSize(vue_->fontMetrics().height() + 4);
    resume_ = new QLabel;
    resume_->setObjectName("ResumePassages");
    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(4, 4, 4, 4);
    page->addWidget(vue_);
    page->addWidget(resume_);
    resize(900, 560);
}

FrmStatsPassages::~FrmStatsPassages() {
    // The view reads the grid until it goes: it goes first, the grid is a member.
    delete vue_;
}

void FrmStatsPassages::InitGeneral() {
    InitGeneralStatsPassages(grille_);
    if (modele_) modele_->Suivre();
}

bool FrmStatsPassages::Remplir(int base, int station, const DateTime& debut, const DateTime& fin) {
    const std::string id = "FrmStatsPassages:Remplir";
    TraceProc(id);
    InitGeneral();
    bilan_ = BilanRecherche{};
    if (Etat().rechercheEnCours) return false;  // one search at a time
    try {
        SessionRapport session(kSourceStatsPassages);
        if (!session.Ouvrir(base, station, station) || !session.Pret(Rapport::Quotas, station)) {
            std::string manquants;
            for (const std::string& f : session.FichiersManquants(Rapport::Quotas, station))
                manquants += (manquants.empty() ? "" : ", ") + f;
            AffMsg("La base de données de la station est illisible:\n" + session.DossierData() +
                       "\n" + manquants,
                   kTitreApplication, kMbOk | kMbExclamation);
            return false;
        }
        ParametresRecherche p;
        p.rapport = Rapport::Quotas;
        p.debut = debut;
        p.fin = fin;
        p.station = station;
        p.source = session.Source();
        // Counted like a search of the main window: its "Lancer" and its exit wait meanwhile.
        Etat().rechercheEnCours = true;
        SablierOn();
        bilan_ = CalculeStatsPassages(p, grille_);
        SablierOff();
        Etat().rechercheEnCours = false;
    } catch (const std::exception& e) {
        SablierOff();
        Etat().rechercheEnCours = false;
        TraceErreur(id, 0, e.what());
    }
    modele_->Suivre();
    vue_->resizeColumnsToContents();
    // Long titles and artist pairs do not push the count out of sight.
    for (int c = 0; c < modele_->columnCount(); ++c)
        vue_->setColumnWidth(c, std::min(vue_->columnWidth(c), 260));
    std::string resume = std::to_string(grille_.MaxRows()) + " titre(s), " +
                         std::to_string(bilan_.passagesComptes) + " passage(s) du " +
                         FormatDDMMYYYY(debut) + " au " + FormatDDMMYYYY(fin);
    if (bilan_.incomplete) resume += " — " + TexteRapportIncomplet(bilan_.erreurs);
    resume_->setText(QString::fromStdString(resume));
    return true;
}

void FrmStatsPassages::showEvent(QShowEvent* e) {
    if (!geometrieLue_) {
        geometrieLue_ = true;
        RestaurerGeometrie(*this, "FrmStatsPassages");
    }
    QWidget::showEvent(e);
}

void FrmStatsPassages::closeEvent(QCloseEvent* e) {
    SauverGeometrie(*this, "FrmStatsPassages");
    QWidget::closeEvent(e);
}

}  // namespace zl3::gui
