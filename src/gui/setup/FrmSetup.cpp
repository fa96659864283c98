#include "FrmSetup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "FrmColorPicker.h"
#include "Lib_Look.h"
#include "Lib_Positions.h"
#include "Lib_Public.h"
#include "ReglagesFenetres.h"

namespace zl3::gui {

std::function<bool(QWidget*, ServeurFTP&)> FrmSetup::navigateurFTP;

namespace {

const char* kNom = "FrmSetup";

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

std::string S(const QString& s) {
    return s.toStdString();
}

QSpinBox* Nombre(const char* nom, int min, int max) {
    auto* s = new QSpinBox;
    s->setObjectName(nom);
    s->setRange(min, max);
    return s;
}

QCheckBox* Case(const QString& nom, const QString& texte) {
    auto* c = new QCheckBox(texte);
    c->setObjectName(nom);
    return c;
}

// The fonts offered by the window system, with `present` among them.
void RemplirPolices(QComboBox* c, const std::string& police) {
    c->clear();
    c->addItems(QFontDatabase::families());
    if (c->findText(Q(police)) < 0) c->insertItem(0, Q(police));
    c->setCurrentIndex(c->findText(Q(police)));
}

std::vector<std::string> PolicesOffertes() {
    std::vector<std::string> v;
    for (const QString& f : QFontDatabase::families())
        v.push_back(S(f));
    return v;
}

}  // namespace

FrmSetup::FrmSetup(QWidget* parent) : QDialog(parent) {
    setObjectName(kNom);
    setWindowTitle(Q(TitreSetup()));
    choisirCouleur = [](QWidget* p, int32_t c) { return FrmColorPicker::Choisir(p, c); };
    choisirDossier = [](QWidget* p, const std::string& depart) -> std::optional<std::string> {
        const QString d = QFileDialog::getExistingDirectory(p, QStringLiteral("Dossier"),
                                                            Q(DossierNatif(depart)));
        if (d.isEmpty()) return std::nullopt;
        return S(d);
    };
    Construire();
}

FrmSetup::~FrmSetup() = default;

void FrmSetup::Construire() {
    auto* page = new QVBoxLayout(this);
    onglets_ = new QTabWidget;
    onglets_->setObjectName("SftTabsSetup");
    onglets_->addTab(PageExport(), QStringLiteral("Export"));
    onglets_->addTab(PageFTP(), QStringLiteral("Internet"));
    onglets_->addTab(PageComportement(), QStringLiteral("Comportement"));
    onglets_->addTab(PageApparence(), QStringLiteral("Apparence"));
    onglets_->addTab(PageCouleurs(), QStringLiteral("Couleurs"));
    page->addWidget(onglets_, 1);
    auto* bas = new QHBoxLayout;
    statut_ = new QLabel;
    statut_->setObjectName("LabelStatut");
    bas->addWidget(statut_, 1);
    auto* ok = new QPushButton(QStringLiteral("OK"));
    ok->setObjectName("CommandOK");
    ok->setDefault(true);
    auto* annuler = new QPushButton(QStringLiteral("Annuler"));
    annuler->setObjectName("CommandAnnuler");
    connect(ok, &QPushButton::clicked, this, [this] { CommandOK_Click(); });
    connect(annuler, &QPushButton::clicked, this, [this] { CommandAnnuler_Click(); });
    bas->addWidget(ok);
    bas->addWidget(annuler);
    page->addLayout(bas);
    resize(720, 520);
}

QWidget* FrmSetup::PageExport() {
    auto* w = new QWidget;
    auto* page = new QVBoxLayout(w);
    auto* gc = new QGroupBox(QStringLiteral("Colonnes exportées"));
    auto* lc = new QGridLayout(gc);
    for (int i = 0; i < kNbColonnesExport; ++i) {
        colonnes_[i] = Case(QStringLiteral("CheckColonne_%1").arg(i + 1),
                            QStringLiteral("Colonne %1").arg(i + 1));
        lc->addWidget(colonnes_[i], i / 6, i % 6);
    }
    page->addWidget(gc);
    auto* gl = new QGroupBox(QStringLiteral("Lignes exportées et leur couleur"));
    auto* ll = new QGridLayout(gl);
    for (int i = 0; i < kNbLignesExport; ++i) {
        lignes_[i] =
            Case(QStringLiteral("CheckLigne_%1").arg(i + 1), QStringLiteral("Ligne %1").arg(i + 1));
        auto* b = new QToolButton;
        b->setObjectName(QStringLiteral("CouleurLigne_%1").arg(i + 1));
        b->setFixedSize(36, 20);
        connect(b, &QToolButton::clicked, this,
                [this, b, i] { ChoisirCouleur(b, couleursLignes_[i]); });
        boutonsLignes_[i] = b;
        auto* h = new QHBoxLayout;
        h->addWidget(lignes_[i]);
        h->addWidget(b);
        h->addStretch(1);
        ll->addLayout(h, i / 3, i % 3);
    }
    page->addWidget(gl);

    auto* gd = new QGroupBox(QStringLiteral("Dossiers et format"));
    auto* f = new QFormLayout(gd);
    auto dossier = [&](const char* nomTexte, const char* nomBouton) {
        auto* t = new QLineEdit;
        t->setObjectName(nomTexte);
        auto* b = new QPushButton(QStringLiteral("…"));
        b->setObjectName(nomBouton);
        b->setFixedWidth(32);
        connect(b, &QPushButton::clicked, this, [this, t] { ChoisirDossier(t); });
        auto* h = new QHBoxLayout;
        h->addWidget(t, 1);
        h->addWidget(b);
        return std::pair{t, h};
    };
    auto [de, he] = dossier("TexteDossierExport", "CommandDossierExport");
    dossierExport_ = de;
    f->addRow(QStringLiteral("Dossier des exports :"), he);
    xmlActif_ = Case("CheckXMLActif", QStringLiteral("Export XML actif"));
    f->addRow(QString(), xmlActif_);
    auto [dx, hx] = dossier("TexteDossierXML", "CommandDossierXML");
    dossierXML_ = dx;
    f->addRow(QStringLiteral("Dossier des exports XML :"), hx);
    format_ = new QComboBox;
    format_->setObjectName("ComboFormat");
    // 0 and 1 both give the .xls workbook (the suite kept two entries for it).
    format_->addItems({QStringLiteral("Classeur Excel (.xls)"),
                       QStringLiteral("Classeur Excel 97 (.xls)"), QStringLiteral("XML (.xml)"),
                       QStringLiteral("Classeur Excel 2007 (.xlsx)")});
    f->addRow(QStringLiteral("Format :"), format_);
    apresExport_ = new QComboBox;
    apresExport_->setObjectName("ComboApresExport");
    apresExport_->addItems({QStringLiteral("Message (avec icône)"),
                            QStringLiteral("Ouvrir le fichier"), QStringLiteral("Message")});
    f->addRow(QStringLiteral("Après l'export :"), apresExport_);
    page->addWidget(gd);
    page->addStretch(1);
    return w;
}

QWidget* FrmSetup::PageFTP() {
    auto* w = new QWidget;
    auto* g = new QGridLayout(w);
    const QStringList entetes = {QStringLiteral("Serveur"),      QStringLiteral("Utilisateur"),
                                 QStringLiteral("Mot de passe"), QStringLiteral("Connexion"),
                                 QStringLiteral("Dossier"),      QStringLiteral("Essais"),
                                 QStringLiteral("FTPS"),         QString()};
    for (int c = 0; c < entetes.size(); ++c)
        g->addWidget(new QLabel(entetes[c]), 0, c + 1);
    for (int n = 0; n < kNbServeursFTP; ++n) {
        ControlesFTP& f = ftp_[n];
        auto texte = [n](const char* nom) {
            auto* t = new QLineEdit;
            t->setObjectName(QStringLiteral("%1_%2").arg(QLatin1String(nom)).arg(n));
            return t;
        };
        f.serveur = texte("TexteServeur");
        f.user = texte("TexteUser");
        f.pw = texte("TextePW");
        f.pw->setEchoMode(QLineEdit::Password);
        f.cnx = new QComboBox;
        f.cnx->setObjectName(QStringLiteral("ComboCnx_%1").arg(n));
        f.cnx->addItems({QStringLiteral("Active"), QStringLiteral("Passive")});
        f.dossier = texte("TexteDossierFTP");
        f.retry = new QSpinBox;
        f.retry->setObjectName(QStringLiteral("TexteRetry_%1").arg(n));
        f.retry->setRange(1, 100);
        f.ftps = Case(QStringLiteral("CheckFTPS_%1").arg(n), QString());
        f.parcourir = new QPushButton(QStringLiteral("…"));
        f.parcourir->setObjectName(QStringLiteral("CommandFTP_%1").arg(n));
        f.parcourir->setFixedWidth(32);
        f.parcourir->setEnabled(static_cast<bool>(navigateurFTP));
        if (!navigateurFTP)
            f.parcourir->setToolTip(
                QStringLiteral("Le navigateur FTP n'est pas encore disponible"));
        connect(f.parcourir, &QPushButton::clicked, this, [this, n] {
            if (!navigateurFTP) return;
            Options o = OptionsEditees();
            ServeurFTP s = o.internet.serveurs[n];
            if (!navigateurFTP(this, s)) return;
            o.internet.serveurs[n] = s;
            const bool avant = chargement_;
            chargement_ = true;
            Remplir(o);
            chargement_ = avant;
        });
        g->addWidget(new QLabel(QString::number(n)), n + 1, 0);
        QWidget* ligne[] = {f.serveur, f.user,  f.pw,   f.cnx,
                            f.dossier, f.retry, f.ftps, f.parcourir};
        for (int c = 0; c < 8; ++c)
            g->addWidget(ligne[c], n + 1, c + 1);
    }
    g->setColumnStretch(1, 2);
    g->setColumnStretch(5, 2);
    g->setRowStretch(kNbServeursFTP + 1, 1);
    return w;
}

QWidget* FrmSetup::PageComportement() {
    auto* w = new QWidget;
    auto* f = new QFormLayout(w);
    reboot_ = Case("CheckReboot", QStringLiteral("Redémarrer le programme"));
    f->addRow(QString(), reboot_);
    rebootTempo_ = Nombre("TexteRebootTempo", 1, 3600000);
    rebootTempo_->setSuffix(QStringLiteral(" ms"));
    f->addRow(QStringLiteral("Délai avant redémarrage :"), rebootTempo_);
    comportement_ = Nombre("TexteComportement", -999999, 999999);
    f->addRow(QStringLiteral("Versions son :"), comportement_);
    statutDemarrage_ =
        Case("CheckStatutDemarrage", QStringLiteral("Afficher les étapes du démarrage"));
    f->addRow(QString(), statutDemarrage_);
    chargeIncidents_ =
        Case("CheckChargeIncidents", QStringLiteral("Charger les incidents au démarrage"));
    f->addRow(QString(), chargeIncidents_);
    portUDP_ = Nombre("TextePortUDP", 0, 65535);
    f->addRow(QStringLiteral("Port UDP :"), portUDP_);
    return w;
}

QWidget* FrmSetup::PageApparence() {
    auto* w = new QWidget;
    auto* f = new QFormLayout(w);
    police_ = new QComboBox;
    police_->setObjectName("ComboPolice");
    f->addRow(QStringLiteral("Police des listes :"), police_);
    taillePolice_ = Nombre("TexteTaillePolice", 1, 72);
    f->addRow(QStringLiteral("Taille :"), taillePolice_);
    tvLook_ = Case("CheckTVLook", QStringLiteral("Listes en gras"));
    f->addRow(QString(), tvLook_);
    policeConducteur_ = new QComboBox;
    policeConducteur_->setObjectName("ComboPoliceConducteur");
    f->addRow(QStringLiteral("Police des conducteurs :"), policeConducteur_);
    styleOnglet_ = new QComboBox;
    styleOnglet_->setObjectName("ComboLookStyleOnglet");
    for (const std::string& s : ListeStylesLook())
        styleOnglet_->addItem(Q(s));
    f->addRow(QStringLiteral("Style :"), styleOnglet_);
    affTitre_ = Case("CheckAffTitre", QStringLiteral("Afficher la colonne titre"));
    affArtiste_ = Case("CheckAffArtiste", QStringLiteral("Afficher la colonne artiste"));
    ongletHeure_ = Case("CheckOngletHeure", QStringLiteral("Afficher l'onglet heure"));
    hauteurDouble_ = Case("CheckHauteurDouble", QStringLiteral("Lignes d'heure en double hauteur"));
    for (QCheckBox* c : {affTitre_, affArtiste_, ongletHeure_, hauteurDouble_})
        f->addRow(QString(), c);

    connect(taillePolice_, &QSpinBox::valueChanged, this, [this] { LookModifie(); });
    connect(styleOnglet_, &QComboBox::currentIndexChanged, this, [this] { LookModifie(); });
    connect(police_, &QComboBox::currentIndexChanged, this, [this] { LookModifie(); });
    connect(tvLook_, &QCheckBox::toggled, this, [this] { LookModifie(); });
    return w;
}

QWidget* FrmSetup::PageCouleurs() {
    auto* w = new QWidget;
    auto* page = new QVBoxLayout(w);
    auto* gg = new QGroupBox(QStringLiteral("Couleurs des grilles"));
    auto* lg = new QGridLayout(gg);
    for (int i = 0; i < kNbCouleursGrille; ++i) {
        auto* b = new QToolButton;
        b->setObjectName(ClesCouleursGrille()[i]);
        b->setFixedSize(36, 20);
        connect(b, &QToolButton::clicked, this, [this, b, i] {
            ChoisirCouleur(b, couleurs_[i]);
            LookModifie();
        });
        boutonsCouleurs_[i] = b;
        auto* h = new QHBoxLayout;
        h->addWidget(b);
        h->addWidget(new QLabel(ClesCouleursGrille()[i]));
        h->addStretch(1);
        lg->addLayout(h, i % 8, i / 8);
    }
    page->addWidget(gg);
    auto* gp = new QGroupBox(QStringLiteral("Couleurs des catégories"));
    auto* lp = new QGridLayout(gp);
    int rang = 0;
    for (int i = 0; i < kNbCouleursPalette; ++i) {
        if (!EstIndexCategorie(i)) continue;
        auto* b = new QToolButton;
        b->setObjectName(QStringLiteral("TexteCouleur_%1").arg(i, 2, 10, QLatin1Char('0')));
        b->setFixedSize(36, 20);
        b->setToolTip(QStringLiteral("Catégorie %1").arg(i, 2, 10, QLatin1Char('0')));
        connect(b, &QToolButton::clicked, this,
                [this, b, i] { ChoisirCouleur(b, couleursProduits_[i]); });
        boutonsProduits_[i] = b;
        lp->addWidget(b, rang / 9, rang % 9);
        ++rang;
    }
    page->addWidget(gp);
    auto* raz = new QPushButton(QStringLiteral("Couleurs par défaut"));
    raz->setObjectName("CommandRAZCouleurs");
    connect(raz, &QPushButton::clicked, this, [this] { CommandRAZCouleurs_Click(); });
    auto* h = new QHBoxLayout;
    h->addStretch(1);
    h->addWidget(raz);
    page->addLayout(h);
    page->addStretch(1);
    return w;
}

void FrmSetup::Statut(const std::string& texte) {
    statuts_.push_back(texte);
    statut_->setText(Q(texte));
}

void FrmSetup::Form_Load() {
    chargement_ = true;
    setWindowTitle(Q(TitreSetup()));
    statuts_.clear();
    charge_ = ChargeSetup([this](const std::string& s) { Statut(s); });
    Remplir(charge_.options);
    RestaureGeometrie(*this);
    chargement_ = false;
}

void FrmSetup::Remplir(const Options& o) {
    const SettingsExport& e = o.exportation;
    for (int i = 0; i < kNbColonnesExport; ++i)
        colonnes_[i]->setChecked(e.colonnes[i]);
    for (int i = 0; i < kNbLignesExport; ++i)
        lignes_[i]->setChecked(e.lignes[i]);
    couleursLignes_ = e.couleursLignes;
    dossierExport_->setText(Q(e.dossierExport));
    dossierXML_->setText(Q(e.dossierXML));
    xmlActif_->setChecked(e.xmlActif);
    format_->setCurrentIndex(e.format);
    apresExport_->setCurrentIndex(e.apresExport);

    for (int n = 0; n < kNbServeursFTP; ++n) {
        const ServeurFTP& s = o.internet.serveurs[n];
        ControlesFTP& f = ftp_[n];
        f.serveur->setText(Q(s.serveur));
        f.user->setText(Q(s.user));
        f.pw->setText(Q(s.pw));
        f.cnx->setCurrentIndex(s.cnx == 1 ? 1 : 0);
        f.dossier->setText(Q(s.dossier));
        f.retry->setValue(s.retry);
        f.ftps->setChecked(s.ftps);
        ftpCaches_[n] = s;
    }

    reboot_->setChecked(o.zl3.reboot);
    rebootTempo_->setValue(static_cast<int>(o.zl3.rebootTempo));
    comportement_->setValue(static_cast<int>(o.zl3.versionsSon));
    statutDemarrage_->setChecked(o.zl3.statutDemarrage);
    chargeIncidents_->setChecked(o.zl3.incidentsDemarrage);
    portUDP_->setValue(static_cast<int>(o.zl3.portUDP));

    const SettingsLook& l = o.look;
    const std::vector<std::string> offertes = PolicesOffertes();
    RemplirPolices(police_, PoliceOfferte(l.nomPolice, offertes));
    RemplirPolices(policeConducteur_, PoliceOfferte(l.nomPoliceConducteur, offertes));
    taillePolice_->setValue(l.taillePolice);
    tvLook_->setChecked(l.fontBold);
    styleOnglet_->setCurrentIndex(l.apparence);
    affTitre_->setChecked(l.affTitre);
    affArtiste_->setChecked(l.affArtiste);
    ongletHeure_->setChecked(l.ongletHeure);
    hauteurDouble_->setChecked(l.hauteurDouble);
    couleurs_ = l.couleurs;
    couleursProduits_ = l.couleursProduits;
    PeindreCouleurs();
}

Options FrmSetup::OptionsEditees() const {
    Options o = charge_.options;
    SettingsExport& e = o.exportation;
    for (int i = 0; i < kNbColonnesExport; ++i)
        e.colonnes[i] = colonnes_[i]->isChecked();
    for (int i = 0; i < kNbLignesExport; ++i)
        e.lignes[i] = lignes_[i]->isChecked();
    e.couleursLignes = couleursLignes_;
    e.dossierExport = S(dossierExport_->text());
    e.dossierXML = S(dossierXML_->text());
    e.xmlActif = xmlActif_->isChecked();
    e.format = format_->currentIndex();
    e.apresExport = apresExport_->currentIndex();

    for (int n = 0; n < kNbServeursFTP; ++n) {
        const ControlesFTP& f = ftp_[n];
        ServeurFTP s = ftpCaches_[n];
        s.serveur = S(f.serveur->text());
        s.user = S(f.user->text());
        s.pw = S(f.pw->text());
        s.cnx = f.cnx->currentIndex();
        s.dossier = S(f.dossier->text());
        s.retry = f.retry->value();
        s.ftps = f.ftps->isChecked();
        o.internet.serveurs[n] = s;
    }

    o.zl3.reboot = reboot_->isChecked();
    o.zl3.rebootTempo = rebootTempo_->value();
    o.zl3.versionsSon = comportement_->value();
    o.zl3.statutDemarrage = statutDemarrage_->isChecked();
    o.zl3.incidentsDemarrage = chargeIncidents_->isChecked();
    o.zl3.portUDP = portUDP_->value();

    SettingsLook& l = o.look;
    l.nomPolice = S(police_->currentText());
    l.nomPoliceConducteur = S(policeConducteur_->currentText());
    l.taillePolice = taillePolice_->value();
    l.fontBold = tvLook_->isChecked();
    l.apparence = styleOnglet_->currentIndex();
    l.affTitre = affTitre_->isChecked();
    l.affArtiste = affArtiste_->isChecked();
    l.ongletHeure = ongletHeure_->isChecked();
    l.hauteurDouble = hauteurDouble_->isChecked();
    l.couleurs = couleurs_;
    l.couleursProduits = couleursProduits_;
    return o;
}

void FrmSetup::PeindreCouleur(QToolButton* b, int32_t c) {
    if (!b) return;
    b->setStyleSheet(QStringLiteral("background-color: %1; border: 1px solid #606060;")
                         .arg(VersQColor(c).name()));
}

void FrmSetup::PeindreCouleurs() {
    for (int i = 0; i < kNbLignesExport; ++i)
        PeindreCouleur(boutonsLignes_[i], couleursLignes_[i]);
    for (int i = 0; i < kNbCouleursGrille; ++i)
        PeindreCouleur(boutonsCouleurs_[i], couleurs_[i]);
    for (int i = 0; i < kNbCouleursPalette; ++i)
        PeindreCouleur(boutonsProduits_[i], couleursProduits_[i]);
}

void FrmSetup::ChoisirCouleur(QToolButton* b, int32_t& couleur) {
    if (!choisirCouleur) return;
    const std::optional<int32_t> c = choisirCouleur(this, couleur);
    if (!c) return;
    couleur = *c;
    PeindreCouleur(b, couleur);
}

void FrmSetup::ChoisirDossier(QLineEdit* texte) {
    if (!choisirDossier) return;
    const std::optional<std::string> d = choisirDossier(this, S(texte->text()));
    if (d) texte->setText(Q(*d));
}

void FrmSetup::LookModifie() {
    if (chargement_ || !apercuLook) return;
    apercuLook(OptionsEditees().look);
}

void FrmSetup::CommandRAZCouleurs_Click() {
    SettingsLook l = OptionsEditees().look;
    CommandRAZCouleurs(l);
    couleurs_ = l.couleurs;
    couleursProduits_ = l.couleursProduits;
    PeindreCouleurs();
    LookModifie();
}

bool FrmSetup::CommandOK_Click() {
    TraceProc("FrmSetup:CommandOK_Click");
    const Options o = OptionsEditees();
    if (!SauveOptions(o)) return false;
    charge_.options = o;
    SauverGeometrie();
    accept();
    return true;
}

void FrmSetup::CommandAnnuler_Click() {
    reject();
}

void FrmSetup::reject() {
    SauverGeometrie();
    QDialog::reject();
}

void FrmSetup::SauverGeometrie() {
    SauveGeometrie(*this);
}

}  // namespace zl3::gui
