#include "VueConformite.h"

#if ZL3_QT_CHARTS
#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QValueAxis>
#else
#include <QPainter>
#endif
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTableWidget>
#include <QVBoxLayout>

#include "Etat.h"
#include "FichierPdf.h"
#include "ImpressionConformite.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "PeintrePrimitives.h"
#include "Services.h"

namespace zl3::gui {
namespace {

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

QString Part(long long n, long long base) {
    if (base <= 0) return QStringLiteral("-");
    return QString::number(100.0 * static_cast<double>(n) / static_cast<double>(base), 'f', 1) +
           QStringLiteral(" %");
}

QTableWidget* Tableau(const char* nom, const QStringList& entetes) {
    auto* t = new QTableWidget(0, static_cast<int>(entetes.size()));
    t->setObjectName(nom);
    t->setHorizontalHeaderLabels(entetes);
    t->verticalHeader()->setVisible(false);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionMode(QAbstractItemView::NoSelection);
    t->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int c = 1; c < t->columnCount(); ++c)
        t->horizontalHeader()->setSectionResizeMode(c, QHeaderView::ResizeToContents);
    return t;
}

void Ligne(QTableWidget* t, const QStringList& textes) {
    const int r = t->rowCount();
    t->insertRow(r);
    for (int c = 0; c < textes.size() && c < t->columnCount(); ++c) {
        auto* item = new QTableWidgetItem(textes[c]);
        if (c > 0) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        t->setItem(r, c, item);
    }
}

}  // namespace

VueConformite::VueConformite(QWidget* parent) : QWidget(parent) {
    setObjectName("VueConformite");
    // Inside a scroll area: the view never makes the main window wider or taller than the grids
    // of the other tabs do.
    auto* externe = new QVBoxLayout(this);
    externe->setContentsMargins(0, 0, 0, 0);
    auto* defilement = new QScrollArea;
    defilement->setWidgetResizable(true);
    defilement->setFrameShape(QFrame::NoFrame);
    externe->addWidget(defilement);
    auto* contenu = new QWidget;
    defilement->setWidget(contenu);
    auto* page = new QVBoxLayout(contenu);
    page->setContentsMargins(4, 4, 4, 4);

    auto* barre = new QHBoxLayout;
    mois_ = new QComboBox;
    mois_->setObjectName("ComboMoisConformite");
    regime_ = new QComboBox;
    regime_->setObjectName("ComboRegime");
    regime_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    regime_->setMinimumContentsLength(20);
    for (Regime r : kRegimes)
        regime_->addItem(Q(CodeRegime(r) + " - " + LibelleRegime(r)), Q(CodeRegime(r)));
    juger_ = new QPushButton(QStringLiteral("Juger"));
    juger_->setObjectName("CommandJuger");
    pdf_ = new QPushButton(QStringLiteral("PDF..."));
    pdf_->setObjectName("CommandPdfConformite");
    pdf_->setEnabled(false);
    barre->addWidget(new QLabel(QStringLiteral("Mois")));
    barre->addWidget(mois_);
    barre->addWidget(new QLabel(QStringLiteral("Régime")));
    barre->addWidget(regime_, 1);
    barre->addWidget(juger_);
    barre->addWidget(pdf_);
    page->addLayout(barre);

    verdictTexte_ = new QLabel(QStringLiteral("Choisissez un mois et un régime, puis « Juger »."));
    verdictTexte_->setObjectName("LabelVerdict");
    QFont gros = verdictTexte_->font();
    gros.setPointSizeF(gros.pointSizeF() * 1.6);
    gros.setBold(true);
    verdictTexte_->setFont(gros);
    resume_ = new QLabel;
    resume_->setObjectName("LabelResume");
    resume_->setWordWrap(true);
    restants_ = new QLabel;
    restants_->setObjectName("LabelRestants");
    restants_->setWordWrap(true);
    source_ = new QLabel;
    source_->setObjectName("LabelSource");
    source_->setWordWrap(true);
    page->addWidget(verdictTexte_);
    page->addWidget(resume_);
    page->addWidget(restants_);
    page->addWidget(source_);

    auto* bas = new QGridLayout;
    criteres_ = Tableau("TableCriteres", {QStringLiteral("Critère"), QStringLiteral("Nombre"),
                                          QStringLiteral("Base"), QStringLiteral("Part"),
                                          QStringLiteral("Seuil"), QStringLiteral("Écart"),
                                          QStringLiteral("Verdict")});
    dixTitres_ = Tableau("TableDixTitres",
                         {QStringLiteral("Règle des dix titres"), QStringLiteral("Passages"),
                          QStringLiteral("Retirés")});
#if ZL3_QT_CHARTS
    auto* chart = new QChart;
    chart->legend()->setAlignment(Qt::AlignBottom);
    graphique_ = new QChartView(chart);
    graphique_->setRenderHint(QPainter::Antialiasing);
#else
    graphique_ = new GraphiqueDessine;
#endif
    graphique_->setObjectName("GraphiqueConformite");
    graphique_->setMinimumHeight(220);
    bas->addWidget(criteres_, 0, 0);
    bas->addWidget(dixTitres_, 1, 0);
    bas->addWidget(graphique_, 0, 1, 2, 1);
    bas->setColumnStretch(0, 1);
    bas->setColumnStretch(1, 1);
    bas->setRowStretch(0, 1);
    bas->setRowStretch(1, 2);
    page->addLayout(bas, 1);

    connect(juger_, &QPushButton::clicked, this, [this] { Juger(); });
    connect(regime_, &QComboBox::activated, this, [this] { regimeChoisi_ = true; });
    connect(pdf_, &QPushButton::clicked, this, [this] { ImprimerPdf(); });
    const DateTime maintenant = Svc().clock ? Svc().clock->Now() : SystemClock().Now();
    RemplirMois(maintenant);
}

void VueConformite::RemplirMois(const DateTime& maintenant) {
    mois_->clear();
    int a = maintenant.year, m = maintenant.month;
    for (int i = 0; i < 25; ++i) {
        const QString code = QStringLiteral("%1-%2").arg(a).arg(m, 2, 10, QLatin1Char('0'));
        QString texte = QStringLiteral("%1/%2").arg(m, 2, 10, QLatin1Char('0')).arg(a);
        if (i == 0) texte += QStringLiteral(" (en cours)");
        mois_->addItem(texte, code);
        if (--m == 0) {
            m = 12;
            --a;
        }
    }
    mois_->setCurrentIndex(1);
}

void VueConformite::ChoisirMois(int annee, int mois) {
    const int i = mois_->findData(QStringLiteral("%1-%2").arg(annee).arg(mois, 2, 10, QLatin1Char('0')));
    if (i >= 0) mois_->setCurrentIndex(i);
}

void VueConformite::ChoisirRegime(Regime r) {
    const int i = regime_->findData(Q(CodeRegime(r)));
    if (i >= 0) regime_->setCurrentIndex(i);
}

void VueConformite::Juger() {
    TraceProc("VueConformite:Juger");
    ParametresConformite p;
    if (parametres && !parametres(p)) return;
    const QString code = mois_->currentData().toString();
    p.annee = code.left(4).toInt();
    p.mois = code.mid(5, 2).toInt();
    // The station's own regime, unless the user has just chosen one; what is judged is kept.
    if (!regimeChoisi_) ChoisirRegime(RegimeStation(p.base, p.station));
    if (const auto r = RegimeDeCode(regime_->currentData().toString().toStdString())) p.regime = *r;
    regimeChoisi_ = false;
    EnregistrerRegimeStation(p.base, p.station, p.regime);
    // The judgement yields like a search: meanwhile no other search starts and the exit is
    // refused, so that nothing else moves the positions in the files it walks.
    const bool rechercheAvant = Etat().rechercheEnCours;
    Etat().rechercheEnCours = true;
    juger_->setEnabled(false);
    if (Svc().events) Svc().events->SetBusy(true);
    VerdictConformite v = JugeConformite(p);
    if (Svc().events) Svc().events->SetBusy(false);
    juger_->setEnabled(true);
    Etat().rechercheEnCours = rechercheAvant;
    if (!v.effectue) {
        std::string texte = "Le mois ne peut être jugé.";
        for (const std::string& e : v.erreurs)
            texte += "\n" + e;
        AffMsg(texte, kTitreApplication, kMbOk | kMbExclamation);
        return;
    }
    verdict_ = std::move(v);
    Afficher();
}

void VueConformite::Afficher() {
    const VerdictConformite& v = *verdict_;
    pdf_->setEnabled(true);
    const char* couleur = v.issue == Issue::Conforme      ? "#1a7f37"
                          : v.issue == Issue::NonConforme ? "#c62828"
                                                          : "#b26a00";
    verdictTexte_->setText(QStringLiteral("%1/%2, régime %3 : %4")
                               .arg(v.debut.month, 2, 10, QLatin1Char('0'))
                               .arg(v.debut.year)
                               .arg(Q(CodeRegime(v.regime)), Q(LibelleIssue(v.issue))));
    verdictTexte_->setStyleSheet(QStringLiteral("color: %1").arg(couleur));
    if (!v.criteres.empty()) {
        const Critere& c = v.criteres.front();
        const long long minimum = (static_cast<long long>(c.seuil) * c.base + 99) / 100;
        resume_->setText(QStringLiteral("Chansons d'expression française : %1 sur %2 dans la tranche, "
                                        "soit %3 pour un seuil de %4 % : %5 %6 passage(s).")
                             .arg(c.nombre)
                             .arg(c.base)
                             .arg(Part(c.nombre, c.base))
                             .arg(c.seuil)
                             .arg(c.nombre >= minimum ? QStringLiteral("marge de")
                                                      : QStringLiteral("il manque"))
                             .arg(std::llabs(c.nombre - minimum)));
    }
    if (v.moisEnCours)
        restants_->setText(
            QStringLiteral("Mois en cours (jugé jusqu'au %1) : au rythme actuel, %2 passages dans "
                           "la tranche d'ici la fin du mois ; il faut %3 francophones, encore %4 "
                           "à diffuser.")
                .arg(Q(FormatDDMMYYYY(v.jugeJusqua) + " " + FormatHHMMSS(v.jugeJusqua)))
                .arg(v.baseProjetee)
                .arg(v.francophonesNecessaires)
                .arg(v.francophonesRestants));
    else
        restants_->setText(QStringLiteral("Mois terminé."));
    QString source = QStringLiteral("Source : ") + Q(v.texteSource);
    if (!v.morceauxTronques.empty())
        source += QStringLiteral("\nHistoriques tronqués : ") +
                  Q(std::to_string(v.morceauxTronques.size())) + QStringLiteral(" morceau(x)");
    if (v.incomplete) source += QStringLiteral("\nRapport incomplet : erreur de lecture de la base");
    source_->setText(source);

    criteres_->setRowCount(0);
    for (const Critere& c : v.criteres) {
        if (c.pourcentage) {
            const long long minimum = (static_cast<long long>(c.seuil) * c.base + 99) / 100;
            Ligne(criteres_, {Q(c.libelle), QString::number(c.nombre), QString::number(c.base),
                              Part(c.nombre, c.base), QStringLiteral("%1 %").arg(c.seuil),
                              QString::number(c.nombre - minimum), Q(LibelleIssue(c.issue))});
        } else {
            const long long ecart = c.maximum ? c.seuil - c.nombre : c.nombre - c.seuil;
            Ligne(criteres_, {Q(c.libelle), QString::number(c.nombre), QString(), QString(),
                              (c.maximum ? QStringLiteral("≤ ") : QStringLiteral("≥ ")) +
                                  QString::number(c.seuil),
                              QString::number(ecart), Q(LibelleIssue(c.issue))});
        }
        if (!c.note.empty()) criteres_->item(criteres_->rowCount() - 1, 0)->setToolTip(Q(c.note));
    }
    dixTitres_->setRowCount(0);
    for (const TitreDixTitres& t : v.dixTitres)
        Ligne(dixTitres_, {Q(t.cle + " " + t.titre), QString::number(t.passages),
                           t.retires > 0 ? QString::number(t.retires) : QString()});
    dixTitres_->setHorizontalHeaderItem(
        0, new QTableWidgetItem(QStringLiteral("Règle des dix titres : %1 retiré(s), ligne à %2")
                                    .arg(v.retires)
                                    .arg(v.ligneDixTitres)));

    // The chart: the same series as the print.
    const SerieConformite s = SerieDuVerdict(v);
#if ZL3_QT_CHARTS
    QChart* chart = graphique_->chart();
    chart->removeAllSeries();
    // The chart deletes its series, but hands a removed axis back to the caller.
    for (QAbstractAxis* a : chart->axes()) {
        chart->removeAxis(a);
        delete a;
    }
    chart->setTitle(Q(s.titre));
    auto* jours = new QLineSeries;
    jours->setName(QStringLiteral("Part francophone du jour"));
    jours->setColor(CouleurRgb(kCouleurPartJour));
    auto* cumul = new QLineSeries;
    cumul->setName(QStringLiteral("Part cumulée du mois"));
    QPen pen(CouleurRgb(kCouleurCumul));
    pen.setWidthF(2.5);
    cumul->setPen(pen);
    auto* seuil = new QLineSeries;
    seuil->setName(QStringLiteral("Seuil %1 %").arg(s.seuil));
    seuil->setColor(CouleurRgb(kCouleurSeuil));
    for (size_t i = 0; i < s.jours.size(); ++i) {
        const double x = static_cast<double>(i + 1);
        if (s.parts[i]) jours->append(x, *s.parts[i]);
        if (s.cumul[i]) cumul->append(x, *s.cumul[i]);
    }
    seuil->append(1, s.seuil);
    seuil->append(static_cast<double>(std::max<size_t>(1, s.jours.size())), s.seuil);
    chart->addSeries(jours);
    chart->addSeries(cumul);
    chart->addSeries(seuil);
    auto* ax = new QValueAxis;
    ax->setRange(1, static_cast<double>(std::max<size_t>(2, s.jours.size())));
    ax->setLabelFormat(QStringLiteral("%d"));
    ax->setTickCount(std::min<int>(16, static_cast<int>(s.jours.size() / 2 + 1)));
    ax->setTitleText(QStringLiteral("Jour"));
    auto* ay = new QValueAxis;
    ay->setRange(0, 100);
    ay->setLabelFormat(QStringLiteral("%d %"));
    chart->addAxis(ax, Qt::AlignBottom);
    chart->addAxis(ay, Qt::AlignLeft);
    for (QLineSeries* l : {jours, cumul, seuil}) {
        l->attachAxis(ax);
        l->attachAxis(ay);
    }
#else
    graphique_->Montrer(s);
#endif
}

void VueConformite::ImprimerPdf() {
    if (!verdict_) return;
    const VerdictConformite& v = *verdict_;
    const std::string nom = NomFichierConformite(1, v.debut.year, v.debut.month) + ".pdf";
    std::string chemin = dialoguePdf ? dialoguePdf(nom) : std::string();
    if (chemin.empty() || chemin == "*") return;
    chemin = AvecExtensionPdf(chemin);
    if (sys::FileExists(chemin) &&
        Question("Le fichier '" + chemin + "' existe déjà. Ecraser ?", kTitreApplication,
                 kMbYesNo | kMbQuestion) != kIdYes)
        return;
    Grid grille;
    RemplirGrilleConformite(v, grille);
    const DateTime maintenant = Svc().clock ? Svc().clock->Now() : SystemClock().Now();
    const ResultatEcriture r =
        ImprimeConformitePdf(v, grille, kTitreApplication, "", maintenant, chemin);
    if (r.ok)
        AffMsg("Fichier " + chemin + " créé", kTitreApplication, kMbOk | kMbInformation);
    else
        AffMsg("Erreur lors de l'export du fichier " + chemin, kTitreApplication,
               kMbOk | kMbExclamation);
}

#if !ZL3_QT_CHARTS
GraphiqueDessine::GraphiqueDessine(QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true);
    QPalette fond = palette();
    fond.setColor(QPalette::Window, Qt::white);
    setPalette(fond);
}

void GraphiqueDessine::Montrer(SerieConformite serie) {
    serie_ = std::move(serie);
    update();
}

void GraphiqueDessine::paintEvent(QPaintEvent*) {
    if (!serie_) return;
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    // One layout point per pixel of the widget, with a small margin.
    const Cadre cadre{6, 6, std::max(0, width() - 12) * 1.0, std::max(0, height() - 12) * 1.0};
    PeindrePrimitives(p, DessineGraphiqueConformite(*serie_, cadre), 1.0, this);
}
#endif

}  // namespace zl3::gui
