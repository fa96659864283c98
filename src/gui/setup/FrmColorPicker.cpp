#include "FrmColorPicker.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

#include "Lib_Look.h"

namespace zl3::gui {

QColor VersQColor(int32_t c) {
    return QColor(Rouge(c), Vert(c), Bleu(c));
}

int32_t DeQColor(const QColor& c) {
    return RGBCouleur(c.red(), c.green(), c.blue());
}

namespace {

QString StyleCase(int32_t c) {
    return QStringLiteral("background-color: %1; border: 1px solid #606060;")
        .arg(VersQColor(c).name());
}

}  // namespace

FrmColorPicker::FrmColorPicker(int32_t initiale, QWidget* parent) : QDialog(parent) {
    setObjectName("FrmColorPicker");
    setWindowTitle(QStringLiteral("Couleurs"));
    auto* page = new QVBoxLayout(this);
    auto* palette = new QGridLayout;
    palette->setSpacing(3);
    for (int i = 0; i < kNbCouleursPalette; ++i) {
        auto* b = new QToolButton;
        b->setObjectName(QStringLiteral("Palette_%1").arg(i));
        b->setFixedSize(26, 22);
        b->setStyleSheet(StyleCase(DefaultColor(i)));
        b->setToolTip(QStringLiteral("%1, %2, %3")
                          .arg(Rouge(DefaultColor(i)))
                          .arg(Vert(DefaultColor(i)))
                          .arg(Bleu(DefaultColor(i))));
        connect(b, &QToolButton::clicked, this, [this, i] {
            DefinirCouleur(DefaultColor(i));
            accept();
        });
        palette->addWidget(b, i / 10, i % 10);
    }
    page->addLayout(palette);

    auto* perso = new QHBoxLayout;
    perso->addWidget(new QLabel(QStringLiteral("Couleur personnalisée :")));
    auto boite = [&](const char* nom, const QString& libelle) {
        auto* s = new QSpinBox;
        s->setObjectName(nom);
        s->setRange(0, 255);
        perso->addWidget(new QLabel(libelle));
        perso->addWidget(s);
        connect(s, &QSpinBox::valueChanged, this, [this] { MajApercu(); });
        return s;
    };
    rouge_ = boite("TexteRouge", QStringLiteral("R"));
    vert_ = boite("TexteVert", QStringLiteral("V"));
    bleu_ = boite("TexteBleu", QStringLiteral("B"));
    apercu_ = new QFrame;
    apercu_->setObjectName("Apercu");
    apercu_->setFixedSize(40, 22);
    perso->addWidget(apercu_);
    perso->addStretch(1);
    page->addLayout(perso);

    auto* boutons = new QDialogButtonBox;
    QPushButton* ok = boutons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName("CommandOK");
    QPushButton* annuler =
        boutons->addButton(QStringLiteral("Annuler"), QDialogButtonBox::RejectRole);
    annuler->setObjectName("CommandAnnuler");
    connect(boutons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(boutons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    page->addWidget(boutons);
    DefinirCouleur(initiale);
}

int32_t FrmColorPicker::Couleur() const {
    return RGBCouleur(rouge_->value(), vert_->value(), bleu_->value());
}

void FrmColorPicker::DefinirCouleur(int32_t c) {
    rouge_->setValue(Rouge(c));
    vert_->setValue(Vert(c));
    bleu_->setValue(Bleu(c));
    MajApercu();
}

void FrmColorPicker::MajApercu() {
    apercu_->setStyleSheet(StyleCase(Couleur()));
}

std::optional<int32_t> FrmColorPicker::Choisir(QWidget* parent, int32_t initiale) {
    FrmColorPicker f(initiale, parent);
    if (f.exec() != QDialog::Accepted) return std::nullopt;
    return f.Couleur();
}

}  // namespace zl3::gui
