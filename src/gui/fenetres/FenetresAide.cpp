#include "FenetresAide.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QStringDecoder>
#include <QVBoxLayout>
#include <QtGlobal>

#include "Cp1252.h"
#include "Lib_Config.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace zl3::gui {
namespace {

// The text of a file as the suite writes them: UTF-8 when it is valid UTF-8, else Windows-1252.
bool LireTexte(const QString& chemin, QString& texte) {
    QFile f(chemin);
    if (!f.open(QIODevice::ReadOnly)) return false;
    const QByteArray octets = f.readAll();
    QStringDecoder utf8(QStringDecoder::Utf8);
    texte = utf8.decode(octets);
    if (utf8.hasError())
        texte = QString::fromStdString(Cp1252ToUtf8(octets.toStdString()));
    return true;
}

}  // namespace

// ---- FrmAbout --------------------------------------------------------------------------------

FrmAbout::FrmAbout(QWidget* parent) : QDialog(parent) {
    setObjectName("FrmAbout");
    setWindowTitle(QStringLiteral("A propos"));
    auto* l = new QVBoxLayout(this);
    auto* titre = new QLabel(QStringLiteral("<b>%1</b>").arg(kTitreApplication));
    titre->setObjectName("LabelTitre");
    auto* version = new QLabel(QStringLiteral("Version %1 - compilée le %2 à %3")
                                   .arg(kVersionApplication, __DATE__, __TIME__));
    version->setObjectName("LabelVersion");
    auto* objet = new QLabel(QStringLiteral(
        "Statistiques de diffusion: quotas, Top Diffusion, SACEM, publicité, incidents."));
    auto* poste =
        new QLabel(QStringLiteral("Poste: %1").arg(QString::fromStdString(sys::ComputerName())));
    auto* libs = new QLabel(
        QStringLiteral("<p>Bibliothèques utilisées:</p><table cellspacing=4>"
                       "<tr><td>Qt %1</td><td>GNU LGPL version 3</td></tr>"
                       "<tr><td>SQLite</td><td>domaine public</td></tr>"
                       "<tr><td>libcurl</td><td>licence curl (type MIT/X)</td></tr>"
                       "<tr><td>libxlsxwriter</td><td>licence BSD à 2 clauses</td></tr>"
                       "</table><p>Qt est lié dynamiquement; son code source est disponible "
                       "sur qt.io.</p>")
            .arg(QString::fromLatin1(qVersion())));
    libs->setObjectName("LabelBibliotheques");
    libs->setTextFormat(Qt::RichText);
    for (QLabel* w : {titre, version, objet, poste, libs}) l->addWidget(w);
    auto* boutons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(boutons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    l->addWidget(boutons);
}

// ---- Release notes -----------------------------------------------------------------------------

std::string FichierNouveautes() {
    const std::string executable =
        sys::WithTrailingSep(QCoreApplication::applicationDirPath().toStdString());
    for (const std::string& dossier : {sys::DossierApplication(), executable}) {
        const std::string chemin = dossier + "NOUVEAUTES.txt";
        if (sys::FileExists(chemin)) return chemin;
    }
    return {};
}

FrmTexte::FrmTexte(const QString& titre, const QString& texte, QWidget* parent) : QDialog(parent) {
    setObjectName("FrmTexte");
    setWindowTitle(titre);
    auto* l = new QVBoxLayout(this);
    texte_ = new QPlainTextEdit(texte);
    texte_->setObjectName("TexteNotes");
    texte_->setReadOnly(true);
    l->addWidget(texte_);
    auto* boutons = new QDialogButtonBox(QDialogButtonBox::Close);
    boutons->button(QDialogButtonBox::Close)->setText(QStringLiteral("Fermer"));
    connect(boutons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    l->addWidget(boutons);
    resize(620, 460);
}

FrmTexte* AfficherNouveautes(QWidget* parent) {
    const std::string fichier = FichierNouveautes();
    QString texte;
    if (fichier.empty() || !LireTexte(QString::fromStdString(fichier), texte)) {
        AffMsg("Les notes de version (NOUVEAUTES.txt) sont introuvables dans le dossier du "
               "programme:\n" + sys::DossierApplication(),
               "Nouveautés", kMbOk | kMbExclamation);
        return nullptr;
    }
    auto* f = new FrmTexte(QStringLiteral("Nouveautés"), texte, parent);
    f->setAttribute(Qt::WA_DeleteOnClose);
    f->show();
    return f;
}

// ---- Notes ---------------------------------------------------------------------------------------

FrmNotes::FrmNotes(const std::string& dossier, QWidget* parent) : QDialog(parent), dossier_(dossier) {
    setObjectName("FrmNotes");
    setWindowTitle(QStringLiteral("Notes - %1").arg(QString::fromStdString(dossier)));
    auto* l = new QVBoxLayout(this);
    auto* separation = new QSplitter;
    liste_ = new QListWidget;
    liste_->setObjectName("ListeNotes");
    texte_ = new QPlainTextEdit;
    texte_->setObjectName("TexteNote");
    texte_->setReadOnly(true);
    separation->addWidget(liste_);
    separation->addWidget(texte_);
    separation->setStretchFactor(1, 3);
    l->addWidget(separation, 1);
    auto* boutons = new QDialogButtonBox(QDialogButtonBox::Close);
    boutons->button(QDialogButtonBox::Close)->setText(QStringLiteral("Fermer"));
    connect(boutons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    l->addWidget(boutons);
    QDir d(QString::fromStdString(dossier));
    const QStringList fichiers =
        d.entryList({QStringLiteral("*.txt"), QStringLiteral("*.TXT")}, QDir::Files, QDir::Name |
                    QDir::IgnoreCase);
    liste_->addItems(fichiers);
    if (fichiers.isEmpty()) texte_->setPlainText(QStringLiteral("Aucune note dans ce dossier."));
    connect(liste_, &QListWidget::currentTextChanged, this, [this](const QString& n) { Afficher(n); });
    if (!fichiers.isEmpty()) liste_->setCurrentRow(0);
    resize(760, 480);
}

void FrmNotes::Afficher(const QString& nom) {
    if (nom.isEmpty()) return;
    QString texte;
    if (!LireTexte(QString::fromStdString(dossier_) + nom, texte))
        texte = QStringLiteral("Impossible de lire le fichier %1").arg(nom);
    texte_->setPlainText(texte);
}

FrmNotes* AfficherNote(QWidget* parent, int base) {
    const Configuration& c = Config();
    if (base == 0) base = ChoisirBase(parent);
    if (base < 1 || base > static_cast<int>(c.bases.size())) return nullptr;
    const std::string dossier = c.bases[static_cast<size_t>(base - 1)].dossiers[kRepBlocNotes];
    if (dossier.empty() || !sys::FolderExists(dossier)) {
        AffMsg("Le dossier des notes est introuvable:\n" + dossier, kTitreApplication,
               kMbOk | kMbExclamation);
        return nullptr;
    }
    auto* f = new FrmNotes(dossier, parent);
    f->setAttribute(Qt::WA_DeleteOnClose);
    f->show();
    return f;
}

// ---- FrmSelectBase ------------------------------------------------------------------------------

FrmSelectBase::FrmSelectBase(QWidget* parent) : QDialog(parent) {
    setObjectName("FrmSelectBase");
    setWindowTitle(QStringLiteral("Choix de la base"));
    auto* l = new QVBoxLayout(this);
    l->addWidget(new QLabel(QStringLiteral("Base de données:")));
    combo_ = new QComboBox;
    combo_->setObjectName("ComboBases");
    const Configuration& c = Config();
    for (size_t b = 0; b < c.bases.size(); ++b)
        combo_->addItem(QString::fromStdString(c.bases[b].lib), static_cast<int>(b + 1));
    l->addWidget(combo_);
    auto* boutons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    boutons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Annuler"));
    connect(boutons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(boutons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    l->addWidget(boutons);
    setMinimumWidth(320);
}

int FrmSelectBase::Base() const {
    return combo_->currentData().toInt();
}

int ChoisirBase(QWidget* parent, const std::function<bool(FrmSelectBase&)>& choisir) {
    const size_t n = Config().bases.size();
    if (n <= 1) return static_cast<int>(n);
    FrmSelectBase f(parent);
    const bool ok = choisir ? choisir(f) : f.exec() == QDialog::Accepted;
    return ok ? f.Base() : 0;
}

// ---- FrmProgression ------------------------------------------------------------------------------

FrmProgression::FrmProgression(QWidget* parent) : QDialog(parent) {
    setObjectName("FrmProgression");
    setWindowTitle(QString::fromUtf8(kTitreApplication));
    auto* l = new QVBoxLayout(this);
    texte_ = new QLabel;
    texte_->setObjectName("LabelProgression");
    barre_ = new QProgressBar;
    barre_->setObjectName("BarreProgression");
    annuler_ = new QPushButton(QStringLiteral("Annuler"));
    annuler_->setObjectName("CommandAnnuler");
    l->addWidget(texte_);
    l->addWidget(barre_);
    auto* b = new QHBoxLayout;
    b->addStretch(1);
    b->addWidget(annuler_);
    l->addLayout(b);
    connect(annuler_, &QPushButton::clicked, this, [this] {
        annule_ = true;
        annuler_->setEnabled(false);
    });
    setMinimumWidth(380);
}

void FrmProgression::Debut(const QString& texte, int maximum) {
    annule_ = false;
    annuler_->setEnabled(true);
    texte_->setText(texte);
    barre_->setRange(0, maximum);
    barre_->setValue(0);
    show();
}

void FrmProgression::Avancer(int valeur, const QString& texte) {
    if (barre_->maximum() > 0) barre_->setValue(std::min(valeur, barre_->maximum()));
    if (!texte.isEmpty()) texte_->setText(texte);
}

void FrmProgression::Fin() {
    hide();
}

}  // namespace zl3::gui
