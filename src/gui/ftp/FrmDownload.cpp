#include "FrmDownload.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

#include "Lib_Data_Pervasive.h"
#include "Lib_Public.h"
#include "ReglagesFenetres.h"

namespace zl3::gui {
namespace {

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

QLineEdit* Champ(const char* nom) {
    auto* e = new QLineEdit;
    e->setObjectName(nom);
    return e;
}

QLabel* Etiquette(const char* nom) {
    auto* l = new QLabel;
    l->setObjectName(nom);
    return l;
}

}  // namespace

FrmDownload::FrmDownload(QWidget* parent) : QDialog(parent) {
    setObjectName("FrmDownload");
    setWindowTitle(QStringLiteral("Mise à jour FTP: %1").arg(kTitreApplication));

    txtServer_ = Champ("TxtServer");
    txtUser_ = Champ("TxtUser");
    txtPassword_ = Champ("TxtPassword");
    txtPassword_->setEchoMode(QLineEdit::Password);
    textDossierFTP_ = Champ("TextDossierFTP");
    optionCnx_[0] = new QRadioButton(QStringLiteral("Actif"));
    optionCnx_[1] = new QRadioButton(QStringLiteral("Passif"));
    optionCnx_[0]->setObjectName("OptionCnx_0");
    optionCnx_[1]->setObjectName("OptionCnx_1");
    optionCnx_[0]->setChecked(true);
    labelDossierLocal_ = Etiquette("LabelDossierLocal");
    labelDossierLocal_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* serveur = new QGroupBox(QStringLiteral("Serveur"));
    auto* gs = new QGridLayout(serveur);
    gs->addWidget(new QLabel(QStringLiteral("Serveur:")), 0, 0);
    gs->addWidget(txtServer_, 0, 1, 1, 3);
    gs->addWidget(new QLabel(QStringLiteral("Utilisateur:")), 1, 0);
    gs->addWidget(txtUser_, 1, 1);
    gs->addWidget(new QLabel(QStringLiteral("Mot de passe:")), 1, 2);
    gs->addWidget(txtPassword_, 1, 3);
    auto* modes = new QHBoxLayout;
    modes->addWidget(optionCnx_[0]);
    modes->addWidget(optionCnx_[1]);
    modes->addStretch();
    gs->addWidget(new QLabel(QStringLiteral("Connexion:")), 2, 0);
    gs->addLayout(modes, 2, 1, 1, 3);
    gs->addWidget(new QLabel(QStringLiteral("Dossier FTP:")), 3, 0);
    gs->addWidget(textDossierFTP_, 3, 1, 1, 3);
    gs->addWidget(new QLabel(QStringLiteral("Dossier local:")), 4, 0);
    gs->addWidget(labelDossierLocal_, 4, 1, 1, 3);

    listeTemporaire_ = new QTreeWidget;
    listeTemporaire_->setObjectName("ListeTemporaire");
    listeTemporaire_->setRootIsDecorated(false);
    listeTemporaire_->setUniformRowHeights(true);
    listeTemporaire_->setHeaderLabels(
        {QStringLiteral("Fichier"), QStringLiteral("Date"), QStringLiteral("Taille")});
    listeTemporaire_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    listeTemporaire_->header()->setStretchLastSection(false);

    texteFichierEnCours_ = Etiquette("TexteFichierEnCours");
    labelPourcentage_ = Etiquette("LabelPourcentage");
    labelPourcentage_->setMinimumWidth(80);
    labelPourcentage_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    barre_ = new QProgressBar;
    barre_->setObjectName("BarrePourcentage");
    barre_->setRange(0, 1000);
    barre_->setValue(0);
    barre_->setTextVisible(false);
    auto* progression = new QHBoxLayout;
    progression->addWidget(texteFichierEnCours_, 1);
    progression->addWidget(barre_, 1);
    progression->addWidget(labelPourcentage_);

    trace_ = new QListWidget;
    trace_->setObjectName("ListeTrace");
    trace_->setUniformItemSizes(true);
    QFont fixe("Courier New");
    fixe.setStyleHint(QFont::Monospace);
    trace_->setFont(fixe);
    labelResume_ = Etiquette("LabelResume");
    labelResume_->setWordWrap(true);

    commandDownload_ = new QPushButton(QStringLiteral("Télécharger"));
    commandDownload_->setObjectName("CommandDownload");
    connect(commandDownload_, &QPushButton::clicked, this, [this] { CommandDownload_Click(); });
    commandFermer_ = new QPushButton(QStringLiteral("Fermer"));
    commandFermer_->setObjectName("CommandFermer");
    connect(commandFermer_, &QPushButton::clicked, this, &QDialog::reject);
    auto* bas = new QHBoxLayout;
    bas->addWidget(labelResume_, 1);
    bas->addWidget(commandDownload_);
    bas->addWidget(commandFermer_);

    auto* l = new QVBoxLayout(this);
    l->addWidget(serveur);
    l->addWidget(listeTemporaire_, 2);
    l->addLayout(progression);
    l->addWidget(trace_, 3);
    l->addLayout(bas);
    resize(720, 560);
    RestaureGeometrie(*this);  // [FrmPos] under the window's name
    listeTemporaire_->setColumnWidth(1, 150);
    listeTemporaire_->setColumnWidth(2, 100);

    logique_.onAffichage = [this] { Afficher(); };
    logique_.Form_Load();
    logique_.dossierLocal = DossierData();
    labelDossierLocal_->setText(Q(logique_.dossierLocal));
}

FrmDownload::~FrmDownload() {
    logique_.Deconnexion();
}

void FrmDownload::Charger(const std::string& serveur, const std::string& user,
                          const std::string& pw, int cnx, const std::string& dossier, bool ftps) {
    txtServer_->setText(Q(serveur));
    txtUser_->setText(Q(user));
    txtPassword_->setText(Q(pw));
    optionCnx_[cnx == 1 ? 1 : 0]->setChecked(true);
    textDossierFTP_->setText(Q(dossier));
    ftps_ = ftps;
}

void FrmDownload::DefinirDossierLocal(const std::string& dossier) {
    dossierImpose_ = true;
    logique_.dossierLocal = dossier;
    labelDossierLocal_->setText(Q(dossier));
}

void FrmDownload::Afficher() {
    texteFichierEnCours_->setText(Q(logique_.TexteFichierEnCours));
    labelPourcentage_->setText(Q(logique_.LabelPourcentage));
    const double part = QString::fromStdString(logique_.LabelPourcentage).remove('%').toDouble();
    barre_->setValue(static_cast<int>(std::min(100.0, std::max(0.0, part)) * 10.0));
}

void FrmDownload::AjouterTrace(const std::string& ligne) {
    trace_->addItem(Q(ligne));
    trace_->scrollToBottom();
    const auto p = ligne.find("Speed: ");
    if (p != std::string::npos) labelResume_->setText(Q(ligne.substr(p)));
}

bool FrmDownload::CommandDownload_Click() {
    if (enCours_) return false;
    enCours_ = true;
    commandDownload_->setEnabled(false);
    commandFermer_->setEnabled(false);
    // The run's trace lines go to this window too, and on to whoever listened before.
    auto precedent = std::exchange(Trace().onLine, nullptr);
    Trace().onLine = [this, precedent](const std::string& ligne) {
        if (precedent) precedent(ligne);
        AjouterTrace(ligne);
    };
    trace_->clear();
    listeTemporaire_->clear();
    labelResume_->clear();
    logique_.TexteFichierEnCours.clear();
    logique_.LabelPourcentage.clear();
    Afficher();

    logique_.TxtServer = Trim(txtServer_->text().toStdString());
    logique_.TxtUser = txtUser_->text().toStdString();
    logique_.TxtPassword = txtPassword_->text().toStdString();
    logique_.OptionCnx = optionCnx_[1]->isChecked() ? 1 : 0;
    logique_.TextDossierFTP = textDossierFTP_->text().toStdString();
    logique_.ftps = ftps_;
    if (!dossierImpose_) {  // the data folder of the station chosen now
        logique_.dossierLocal = DossierData();
        labelDossierLocal_->setText(Q(logique_.dossierLocal));
    }
    bool tout = false;
    if (logique_.ConnectDownload()) {
        textDossierFTP_->setText(Q(logique_.TextDossierFTP));
        if (logique_.LectureDesFichiersSurServeurFTP()) {
            for (const auto& f : logique_.ListeTemporaire) {
                auto* item = new QTreeWidgetItem(
                    {Q(f.nom), Q(FormatDDMMYYYY(f.date) + " " + FormatHHMMSS(f.date)),
                     QString::number(f.taille)});
                item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
                listeTemporaire_->addTopLevelItem(item);
            }
            tout = logique_.FTPDownload();
        }
    }
    logique_.Deconnexion();
    Trace().onLine = precedent;
    if (labelResume_->text().isEmpty())
        labelResume_->setText(QStringLiteral("Echec: voir le journal"));
    enCours_ = false;
    commandDownload_->setEnabled(true);
    commandFermer_->setEnabled(true);
    return tout;
}

void FrmDownload::done(int r) {
    if (enCours_) return;
    SauveGeometrie(*this);
    QDialog::done(r);
}

void FrmDownload::closeEvent(QCloseEvent* e) {
    if (enCours_) {
        e->ignore();
        return;
    }
    QDialog::closeEvent(e);
}

}  // namespace zl3::gui
