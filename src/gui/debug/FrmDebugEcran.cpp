#include "FrmDebugEcran.h"

#include <QListWidget>
#include <QVBoxLayout>

#include "Lib_Public.h"

namespace zl3::gui {

FrmDebugEcran::FrmDebugEcran(QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName("FrmDebugEcran");
    setWindowTitle(QStringLiteral("Debug: %1").arg(kTitreApplication));
    liste_ = new QListWidget;
    liste_->setUniformItemSizes(true);
    QFont fixe("Courier New");
    fixe.setStyleHint(QFont::Monospace);
    liste_->setFont(fixe);
    auto* l = new QVBoxLayout(this);
    l->setContentsMargins(2, 2, 2, 2);
    l->addWidget(liste_);
    resize(800, 400);
    Trace().onLine = [this](const std::string& ligne) { Ajouter(ligne); };
}

FrmDebugEcran::~FrmDebugEcran() {
    Trace().onLine = nullptr;
}

void FrmDebugEcran::Ajouter(const std::string& ligne) {
    liste_->addItem(QString::fromStdString(ligne));
    if (liste_->count() > kLignesMax) delete liste_->takeItem(0);
    if (isVisible()) liste_->scrollToBottom();
}

QStringList FrmDebugEcran::Lignes() const {
    QStringList l;
    for (int i = 0; i < liste_->count(); ++i)
        l << liste_->item(i)->text();
    return l;
}

}  // namespace zl3::gui
