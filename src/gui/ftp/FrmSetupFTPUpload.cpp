#include "FrmSetupFTPUpload.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "Lib_Config.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "ReglagesFenetres.h"

namespace zl3::gui {
namespace {

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}
std::string S(const QLineEdit* e) {
    return e->text().toStdString();
}

QLineEdit* Champ(const char* nom) {
    auto* e = new QLineEdit;
    e->setObjectName(nom);
    return e;
}

}  // namespace

FrmSetupFTPUpload::FrmSetupFTPUpload(QWidget* parent) : QDialog(parent) {
    setObjectName("FrmSetupFTPUpload");
    setWindowTitle(QStringLiteral("FTP: %1").arg(kTitreApplication));

    // Server, credentials, mode.
    txtServer_ = Champ("TxtServer");
    txtUser_ = Champ("TxtUser");
    txtPassword_ = Champ("TxtPassword");
    txtPassword_->setEchoMode(QLineEdit::Password);
    optionCnx_[0] = new QRadioButton(QStringLiteral("Actif"));
    optionCnx_[1] = new QRadioButton(QStringLiteral("Passif"));
    optionCnx_[0]->setObjectName("OptionCnx_0");
    optionCnx_[1]->setObjectName("OptionCnx_1");
    optionCnx_[0]->setChecked(true);
    checkFtps_ = new QCheckBox(QStringLiteral("FTPS (TLS explicite)"));
    checkFtps_->setObjectName("CheckFTPS");
    labelOrigine_ = new QLabel(QStringLiteral("-1"), this);
    labelOrigine_->setObjectName("LabelOrigine");
    labelOrigine_->hide();
    labelNocartouche_ = new QLabel(QStringLiteral("-1"), this);
    labelNocartouche_->setObjectName("LabelNocartouche");
    labelNocartouche_->hide();

    auto* serveur = new QGroupBox(QStringLiteral("Serveur"));
    auto* gs = new QGridLayout(serveur);
    gs->addWidget(new QLabel(QStringLiteral("Serveur:")), 0, 0);
    gs->addWidget(txtServer_, 0, 1, 1, 3);
    gs->addWidget(new QLabel(QStringLiteral("Utilisateur:")), 1, 0);
    gs->addWidget(txtUser_, 1, 1);
    gs->addWidget(new QLabel(QStringLiteral("Mot de passe:")), 1, 2);
    gs->addWidget(txtPassword_, 1, 3);
    auto* modes = new QHBoxLayout;
    modes->addWidget(new QLabel(QStringLiteral("Connexion:")));
    modes->addWidget(optionCnx_[0]);
    modes->addWidget(optionCnx_[1]);
    modes->addSpacing(20);
    modes->addWidget(checkFtps_);
    modes->addStretch();
    gs->addLayout(modes, 2, 0, 1, 4);

    // Action buttons.
    static const char* const legendes[6] = {"Connecter", "Rafraîchir", "Envoyer",
                                            "Recevoir",  "Supprimer",  "Déconnecter"};
    auto* boutons = new QHBoxLayout;
    for (int i = 0; i < 6; ++i) {
        commandFTP_[i] = new QPushButton(QString::fromUtf8(legendes[i]));
        commandFTP_[i]->setObjectName(QStringLiteral("CommandFTP_%1").arg(i));
        connect(commandFTP_[i], &QPushButton::clicked, this, [this, i] { CommandFTP_Click(i); });
        boutons->addWidget(commandFTP_[i]);
    }

    // The remote folder and its list.
    textDossierFTP_ = Champ("TextDossierFTP");
    lv_ = new QTreeWidget;
    lv_->setObjectName("lv");
    lv_->setRootIsDecorated(false);
    lv_->setUniformRowHeights(true);
    lv_->setHeaderLabels({QStringLiteral("Nom"), QStringLiteral("Taille"), QStringLiteral("Date"),
                          QStringLiteral("Attributs")});
    lv_->header()->setStretchLastSection(false);
    lv_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    connect(lv_, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* item, int) { lv_DblClick(lv_->indexOfTopLevelItem(item)); });

    // Transfers.
    textDossierCible_ = Champ("TextDossierCible");
    txtFichier_ = Champ("TxtFichier");
    textFichierFTP_ = Champ("TextFichierFTP");
    textDossierLocal_ = Champ("TextDossierLocal");
    textDossierLocal_->setText(Q(sys::WithTrailingSep(NomDossierSettings()) + "Telechargement"));
    commandParcourir_ = new QPushButton(QStringLiteral("..."));
    commandParcourir_->setObjectName("CommandParcourir");
    commandParcourir_->setFixedWidth(32);
    choisirFichierLocal = [](QWidget* parent, const QString& depart) {
        return QFileDialog::getOpenFileName(parent, QStringLiteral("Fichier à envoyer"), depart);
    };
    connect(commandParcourir_, &QPushButton::clicked, this, [this] {
        if (!choisirFichierLocal) return;
        const QString f = choisirFichierLocal(this, txtFichier_->text());
        if (!f.isEmpty()) txtFichier_->setText(f);
    });
    auto* transferts = new QGroupBox(QStringLiteral("Transferts"));
    auto* gt = new QGridLayout(transferts);
    gt->addWidget(new QLabel(QStringLiteral("Fichier à envoyer:")), 0, 0);
    gt->addWidget(txtFichier_, 0, 1);
    gt->addWidget(commandParcourir_, 0, 2);
    gt->addWidget(new QLabel(QStringLiteral("Dossier cible:")), 1, 0);
    gt->addWidget(textDossierCible_, 1, 1, 1, 2);
    gt->addWidget(new QLabel(QStringLiteral("Fichier FTP:")), 2, 0);
    gt->addWidget(textFichierFTP_, 2, 1, 1, 2);
    gt->addWidget(new QLabel(QStringLiteral("Dossier local:")), 3, 0);
    gt->addWidget(textDossierLocal_, 3, 1, 1, 2);

    commandTransferer_ = new QPushButton(QStringLiteral("Transférer dans les options"));
    commandTransferer_->setObjectName("CommandTransferer");
    connect(commandTransferer_, &QPushButton::clicked, this, [this] { CommandTransferer_Click(); });
    commandFermer_ = new QPushButton(QStringLiteral("Fermer"));
    commandFermer_->setObjectName("CommandFermer");
    connect(commandFermer_, &QPushButton::clicked, this, &QDialog::reject);
    auto* bas = new QHBoxLayout;
    bas->addStretch();
    bas->addWidget(commandTransferer_);
    bas->addWidget(commandFermer_);

    auto* dossier = new QHBoxLayout;
    dossier->addWidget(new QLabel(QStringLiteral("Dossier FTP:")));
    dossier->addWidget(textDossierFTP_);

    auto* l = new QVBoxLayout(this);
    l->addWidget(serveur);
    l->addLayout(boutons);
    l->addLayout(dossier);
    l->addWidget(lv_, 1);
    l->addWidget(transferts);
    l->addLayout(bas);
    resize(640, 560);
    RestaureGeometrie(*this);  // [FrmPos] under the window's name
    lv_->setColumnWidth(1, 90);
    lv_->setColumnWidth(2, 140);
    lv_->setColumnWidth(3, 160);

    connect(optionCnx_[0], &QRadioButton::toggled, this, [this](bool on) {
        if (on && !logique_.EnAction()) logique_.OptionCnx_Click(0);
    });
    connect(optionCnx_[1], &QRadioButton::toggled, this, [this](bool on) {
        if (on && !logique_.EnAction()) logique_.OptionCnx_Click(1);
    });

    logique_.onFichierChoisi = [this](const std::string& nom) {
        textFichierFTP_->setText(Q(nom));
        if (onFichierChoisi) onFichierChoisi(nom);
        ferme_ = true;  // closed once the action has ended
    };
    logique_.Form_Load();
    ActiverBoutons(true);
}

FrmSetupFTPUpload::~FrmSetupFTPUpload() {
    logique_.Form_Unload();
}

void FrmSetupFTPUpload::Charger(const std::string& serveur, const std::string& user,
                                const std::string& pw, int cnx, const std::string& dossier,
                                bool ftps, int origine) {
    txtServer_->setText(Q(serveur));
    txtUser_->setText(Q(user));
    txtPassword_->setText(Q(pw));
    optionCnx_[cnx == 1 ? 1 : 0]->setChecked(true);
    logique_.OptionCnx_Click(cnx == 1 ? 1 : 0);
    textDossierFTP_->setText(Q(dossier));
    checkFtps_->setChecked(ftps);
    labelOrigine_->setText(QString::number(origine));
}

void FrmSetupFTPUpload::ModeChoix(int origine, int noCartouche) {
    labelOrigine_->setText(QString::number(origine));
    labelNocartouche_->setText(QString::number(noCartouche));
    commandFTP_[LogiqueSetupFTPUpload::kRecevoir]->setText(QStringLiteral("Choisir"));
}

bool FrmSetupFTPUpload::Ftps() const {
    return checkFtps_->isChecked();
}

void FrmSetupFTPUpload::VersLogique() {
    logique_.TxtServer = Trim(S(txtServer_));
    logique_.TxtUser = S(txtUser_);
    logique_.TxtPassword = S(txtPassword_);
    logique_.OptionCnx = optionCnx_[1]->isChecked() ? 1 : 0;
    logique_.ftps = checkFtps_->isChecked();
    logique_.TextDossierFTP = S(textDossierFTP_);
    logique_.TextDossierCible = S(textDossierCible_);
    logique_.TxtFichier = S(txtFichier_);
    logique_.TextFichierFTP = S(textFichierFTP_);
    logique_.LabelOrigine = labelOrigine_->text().toStdString();
    logique_.LabelNocartouche = labelNocartouche_->text().toStdString();
    logique_.dossierTelechargement = Trim(S(textDossierLocal_));
}

void FrmSetupFTPUpload::DepuisLogique() {
    textDossierFTP_->setText(Q(logique_.TextDossierFTP));
    textFichierFTP_->setText(Q(logique_.TextFichierFTP));
    const int ancienne = LigneChoisie();
    lv_->clear();
    const QIcon dossier = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon fichier = style()->standardIcon(QStyle::SP_FileIcon);
    QFont fixe("Courier New");
    fixe.setStyleHint(QFont::Monospace);
    for (const LigneLv& l : logique_.lv) {
        auto* item = new QTreeWidgetItem({Q(l.nom), Q(l.colonne1), Q(l.colonne2), Q(l.colonne3)});
        item->setIcon(0, l.dossier ? dossier : fichier);
        item->setFont(3, fixe);
        if (!l.dossier) item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        lv_->addTopLevelItem(item);
    }
    if (ancienne >= 0 && ancienne < lv_->topLevelItemCount())
        lv_->setCurrentItem(lv_->topLevelItem(ancienne));
    ActiverBoutons(true);
}

void FrmSetupFTPUpload::ActiverBoutons(bool actifs) {
    const bool connecte = logique_.Connecte();
    for (int i = 0; i < 6; ++i)
        commandFTP_[i]->setEnabled(actifs);
    if (actifs) {
        // Actions on the remote folder need the session; connecting and uploading do not wait.
        for (int i : {LogiqueSetupFTPUpload::kRafraichir, LogiqueSetupFTPUpload::kRecevoir,
                      LogiqueSetupFTPUpload::kSupprimer, LogiqueSetupFTPUpload::kDeconnecter})
            commandFTP_[i]->setEnabled(connecte);
    }
    commandTransferer_->setEnabled(actifs);
    commandFermer_->setEnabled(actifs);
    commandParcourir_->setEnabled(actifs);
}

int FrmSetupFTPUpload::LigneChoisie() const {
    QTreeWidgetItem* item = lv_->currentItem();
    return item ? lv_->indexOfTopLevelItem(item) : -1;
}

void FrmSetupFTPUpload::CommandFTP_Click(int index) {
    if (logique_.EnAction()) return;  // the running transfer keeps its fields
    VersLogique();
    const int ligne = LigneChoisie();
    if (index == LogiqueSetupFTPUpload::kRecevoir && !logique_.dossierTelechargement.empty())
        CheckRep(logique_.dossierTelechargement);
    ActiverBoutons(false);
    logique_.CommandFTP_Click(index, ligne);
    DepuisLogique();
    if (ferme_) accept();
}

void FrmSetupFTPUpload::lv_DblClick(int ligne) {
    if (logique_.EnAction()) return;
    VersLogique();
    ActiverBoutons(false);
    logique_.lv_DblClick(ligne);
    DepuisLogique();
}

void FrmSetupFTPUpload::CommandTransferer_Click() {
    if (logique_.EnAction()) return;
    VersLogique();
    const EntreeFTPChoisie e = logique_.CommandTransferer_Click();
    if (onTransferer) onTransferer(e);
    accept();
}

void FrmSetupFTPUpload::done(int r) {
    if (logique_.EnAction()) return;  // not while a transfer runs
    logique_.Form_Unload();
    SauveGeometrie(*this);
    QDialog::done(r);
}

}  // namespace zl3::gui
