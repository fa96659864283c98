#include "FrmListeRechercheMulti.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "Etat.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Settings.h"
#include "ModeleGrille.h"
#include "Services.h"

namespace zl3::gui {
namespace {

bool EnNombre(const QVariant& v, double& n) {
    bool ok = false;
    n = v.toString().trimmed().toDouble(&ok);
    return ok;
}

DialogueEnregistrer DialogueQt(QWidget* parent) {
    return [parent](const std::string& dossier, const std::string& nom, const std::string& filtre) {
        // "Fichiers xlsx|*.xlsx" → "Fichiers xlsx (*.xlsx)"
        QString f = QString::fromStdString(filtre);
        const int bar = f.indexOf('|');
        if (bar >= 0) f = f.left(bar) + " (" + f.mid(bar + 1) + ")";
        return QFileDialog::getSaveFileName(parent, QStringLiteral("Exporter"),
                                            QString::fromStdString(dossier + nom), f)
            .toStdString();
    };
}

}  // namespace

QVariant TriGrille::headerData(int section, Qt::Orientation o, int role) const {
    // Rows are numbered as they stand on screen, whatever the order.
    if (o == Qt::Vertical && role == Qt::DisplayRole) return section + 1;
    return QSortFilterProxyModel::headerData(section, o, role);
}

bool TriGrille::lessThan(const QModelIndex& a, const QModelIndex& b) const {
    const QVariant va = sourceModel()->data(a);
    const QVariant vb = sourceModel()->data(b);
    double na = 0, nb = 0;
    if (EnNombre(va, na) && EnNombre(vb, nb)) return na < nb;
    return QString::localeAwareCompare(va.toString(), vb.toString()) < 0;
}

void SupprimerVues(QWidget& w) {
    qDeleteAll(w.findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
}

// The broadcasts of one track.
class FrmDiffusionsMorceau : public QDialog {
  public:
    using QDialog::QDialog;
    ~FrmDiffusionsMorceau() override { SupprimerVues(*this); }
    Grid grille;
};

QTableView* VueGrille(const char* nom, QAbstractItemModel* modele, const Grid& grille) {
    auto* vue = new QTableView;
    vue->setObjectName(nom);
    vue->setModel(modele);
    vue->setAlternatingRowColors(true);
    vue->setEditTriggers(QAbstractItemView::NoEditTriggers);
    vue->setSelectionBehavior(QAbstractItemView::SelectRows);
    vue->setWordWrap(false);
    vue->verticalHeader()->setDefaultSectionSize(vue->fontMetrics().height() + 6);
    const int car = vue->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    for (int c = 1; c <= grille.MaxCols(); ++c)
        if (grille.ColWidth(c) > 0) vue->setColumnWidth(c - 1, grille.ColWidth(c) * car + 12);
    return vue;
}

// ---- FrmListeRechercheMulti --------------------------------------------------------------------

FrmListeRechercheMulti::FrmListeRechercheMulti(QWidget* parent) : QDialog(parent) {
    setObjectName("FrmListeRechercheMulti");
    setWindowTitle(QStringLiteral("Recherche de titres"));
    InitTableurRechercheMulti(grille_);
    auto* l = new QVBoxLayout(this);
    auto* criteres = new QFormLayout;
    auto champ = [](const char* nom, const QString& aide) {
        auto* e = new QLineEdit;
        e->setObjectName(nom);
        e->setPlaceholderText(aide);
        e->setClearButtonEnabled(true);
        return e;
    };
    mots_ = champ("TexteTitre", QStringLiteral("mots du titre, tous présents"));
    artiste_ = champ("TexteArtiste", QStringLiteral("nom ou partie du nom"));
    categorie_ = champ("TexteCategorie", QStringLiteral("code (3 caractères) ou libellé"));
    quota_ = new QComboBox;
    quota_->setObjectName("ComboQuota");
    quota_->addItem(QStringLiteral("Toutes"), QString());
    quota_->addItem(QStringLiteral("O - francophone"), QStringLiteral("O"));
    quota_->addItem(QStringLiteral("1 - nouveau talent"), QStringLiteral("1"));
    quota_->addItem(QStringLiteral("N - étranger"), QStringLiteral("N"));
    quota_->addItem(QStringLiteral("- - instrumental"), QStringLiteral("-"));
    quota_->addItem(QStringLiteral("? - classe inconnue"), QStringLiteral("?"));
    cleDebut_ = champ("TexteCleDebut", QStringLiteral("première clé"));
    cleFin_ = champ("TexteCleFin", QStringLiteral("dernière clé (ou son début)"));
    auto* cles = new QHBoxLayout;
    cles->addWidget(cleDebut_);
    cles->addWidget(new QLabel(QStringLiteral("à")));
    cles->addWidget(cleFin_);
    criteres->addRow(QStringLiteral("Titre"), mots_);
    criteres->addRow(QStringLiteral("Artiste"), artiste_);
    criteres->addRow(QStringLiteral("Catégorie"), categorie_);
    criteres->addRow(QStringLiteral("Quota"), quota_);
    criteres->addRow(QStringLiteral("Clés"), cles);
    l->addLayout(criteres);
    auto* barre = new QHBoxLayout;
    resume_ = new QLabel;
    resume_->setObjectName("LabelResultat");
    rechercher_ = new QPushButton(QStringLiteral("Rechercher"));
    rechercher_->setObjectName("CommandRechercher");
    rechercher_->setDefault(true);
    barre->addWidget(resume_, 1);
    barre->addWidget(rechercher_);
    l->addLayout(barre);
    modele_ = new ModeleGrille(grille_, this);
    tri_ = new TriGrille(this);
    tri_->setSourceModel(modele_);
    vue_ = VueGrille("fpSpreadRecherche", tri_, grille_);
    vue_->setSortingEnabled(true);
    vue_->horizontalHeader()->setSortIndicatorShown(true);
    vue_->sortByColumn(-1, Qt::AscendingOrder);
    l->addWidget(vue_, 1);
    connect(rechercher_, &QPushButton::clicked, this, [this] { Rechercher(); });
    connect(vue_, &QTableView::doubleClicked, this,
            [this](const QModelIndex& i) { OuvrirDiffusions(i.row()); });
    resize(960, 560);
}

FrmListeRechercheMulti::~FrmListeRechercheMulti() {
    SupprimerVues(*this);
}

void FrmListeRechercheMulti::Rechercher() {
    if (enCours_) {
        arret_ = true;
        return;
    }
    if (Etat().rechercheEnCours || Etat().enSortie) return;
    CriteresMorceaux c;
    if (!contexte || !contexte(c)) return;
    c.mots = mots_->text().toStdString();
    c.artiste = artiste_->text().toStdString();
    c.categorie = categorie_->text().toStdString();
    c.classeQuota = quota_->currentData().toString().toStdString();
    c.cleDebut = cleDebut_->text().trimmed().toStdString();
    c.cleFin = cleFin_->text().trimmed().toStdString();
    c.arret = [this] { return arret_ || Etat().enSortie; };
    derniers_ = c;
    enCours_ = true;
    arret_ = false;
    Etat().rechercheEnCours = true;
    rechercher_->setText(QStringLiteral("Stopper"));
    resume_->setText(QStringLiteral("Recherche en cours..."));
    SablierOn();
    try {
        resultat_ = RechercheMorceaux(c);
    } catch (const std::exception& e) {
        resultat_ = ResultatMorceaux{};
        resultat_.erreurs.push_back(e.what());
        TraceErreur("FrmListeRechercheMulti:Rechercher", 0, e.what());
    }
    SablierOff();
    Etat().rechercheEnCours = false;
    enCours_ = false;
    rechercher_->setText(QStringLiteral("Rechercher"));
    RemplirTableurRechercheMulti(grille_, resultat_.morceaux);
    modele_->Suivre();
    QString texte = QStringLiteral("%1 titre(s) trouvé(s) sur %2 lu(s), diffusions du %3 au %4")
                        .arg(resultat_.morceaux.size())
                        .arg(resultat_.morceauxLus)
                        .arg(QString::fromStdString(FormatDDMMYYYY(c.debut)),
                             QString::fromStdString(FormatDDMMYYYY(c.fin)));
    if (resultat_.arretee) texte += QStringLiteral(" (recherche arrêtée)");
    if (!resultat_.erreurs.empty()) texte += QStringLiteral(" - liste incomplète: erreur de lecture");
    resume_->setText(texte);
    TraceLog("FrmListeRechercheMulti: " + std::to_string(resultat_.morceaux.size()) +
             " track(s) found");
}

QDialog* FrmListeRechercheMulti::OuvrirDiffusions(int row) {
    const QModelIndex i = tri_->mapToSource(tri_->index(row, kMulCle - 1));
    if (!i.isValid()) return nullptr;
    const int ligne = i.row() + 1;
    const std::string cle = grille_.Text(kMulCle, ligne);
    std::string erreur;
    const auto diffusions = DiffusionsMorceau(derniers_.source, derniers_.station, cle,
                                              derniers_.debut, derniers_.fin, &erreur);
    auto* f = new FrmDiffusionsMorceau(this);
    f->setObjectName("FrmDiffusionsMorceau");
    f->setAttribute(Qt::WA_DeleteOnClose);
    f->setWindowTitle(QStringLiteral("Diffusions de %1 - %2")
                          .arg(QString::fromStdString(cle),
                               QString::fromStdString(grille_.Text(kMulTitre, ligne))));
    Grid* grille = &f->grille;
    RemplirTableurDiffusions(*grille, diffusions);
    auto* modele = new ModeleGrille(*grille, f);
    auto* l = new QVBoxLayout(f);
    QString texte = QStringLiteral("%1 diffusion(s) du %2 au %3")
                        .arg(diffusions.size())
                        .arg(QString::fromStdString(FormatDDMMYYYY(derniers_.debut)),
                             QString::fromStdString(FormatDDMMYYYY(derniers_.fin)));
    if (!erreur.empty()) texte += "\n" + QString::fromStdString(erreur);
    auto* resume = new QLabel(texte);
    resume->setObjectName("LabelDiffusions");
    l->addWidget(resume);
    l->addWidget(VueGrille("fpSpreadDiffusions", modele, *grille), 1);
    f->resize(340, 420);
    f->show();
    return f;
}

void FrmListeRechercheMulti::closeEvent(QCloseEvent* e) {
    if (enCours_) {
        // The search runs on this window's stack: asked to stop, it ends first.
        arret_ = true;
        e->ignore();
        return;
    }
    QDialog::closeEvent(e);
}

// ---- FrmDetailDonnees ------------------------------------------------------------------------

FrmDetailDonnees::FrmDetailDonnees(const ParametresDetail& p, const QString& titre,
                                   QWidget* parent)
    : QDialog(parent) {
    setObjectName("FrmDetailDonnees");
    setWindowTitle(QStringLiteral("Détail des diffusions - %1").arg(titre));
    dialogue = DialogueQt(this);
    SablierOn();
    try {
        bilan_ = DetailLignePublicite(p, grille_);
    } catch (const std::exception& e) {
        bilan_.erreurs.push_back(e.what());
        TraceErreur("FrmDetailDonnees:Remplir", 0, e.what());
    }
    SablierOff();
    nomParDefaut_ = "Detail_" + p.client + "_" + FormatYYYYMMDD(p.debut) + "_" +
                    FormatYYYYMMDD(p.fin) + ".xlsx";
    auto* l = new QVBoxLayout(this);
    QString texte = QStringLiteral("%1 diffusion(s) du %2 au %3 - client %4, message %5, zone %6")
                        .arg(bilan_.diffusions)
                        .arg(QString::fromStdString(FormatDDMMYYYY(p.debut)),
                             QString::fromStdString(FormatDDMMYYYY(p.fin)),
                             QString::fromStdString(p.client), QString::fromStdString(p.message),
                             QString::fromStdString(p.zone));
    if (!bilan_.erreurs.empty()) texte += QStringLiteral("\nListe incomplète: erreur de lecture");
    auto* resume = new QLabel(texte);
    resume->setObjectName("LabelDetail");
    l->addWidget(resume);
    auto* modele = new ModeleGrille(grille_, this);
    l->addWidget(VueGrille("fpSpreadDetail", modele, grille_), 1);
    auto* barre = new QHBoxLayout;
    barre->addStretch(1);
    auto* exporter = new QPushButton(QStringLiteral("Exporter..."));
    exporter->setObjectName("CommandExporter");
    auto* fermer = new QPushButton(QStringLiteral("Fermer"));
    barre->addWidget(exporter);
    barre->addWidget(fermer);
    l->addLayout(barre);
    connect(exporter, &QPushButton::clicked, this, [this] { Exporter(); });
    connect(fermer, &QPushButton::clicked, this, &QDialog::close);
    resize(640, 480);
}

FrmDetailDonnees::~FrmDetailDonnees() {
    SupprimerVues(*this);
}

ResultatExport FrmDetailDonnees::Exporter() {
    const SettingsExport s = InitSettingsExport();
    const Grid donnees = TransfertDataHistorique(grille_);
    return ExporteHistorique(donnees, "XLSX", DossierNatif(s.dossierExport) + nomParDefaut_,
                             s.apresExport, dialogue);
}

}  // namespace zl3::gui
