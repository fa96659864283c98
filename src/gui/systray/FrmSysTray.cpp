#include "FrmSysTray.h"

#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace zl3::gui {

QIcon IconeApplication() {
    QPixmap p(32, 32);
    p.fill(Qt::transparent);
    QPainter g(&p);
    g.setRenderHint(QPainter::Antialiasing);
    g.setBrush(QColor(0, 84, 147));
    g.setPen(Qt::NoPen);
    g.drawRoundedRect(1, 1, 30, 30, 6, 6);
    g.setPen(Qt::white);
    QFont f("Arial");
    f.setBold(true);
    f.setPixelSize(22);
    g.setFont(f);
    g.drawText(p.rect(), Qt::AlignCenter, "Z");
    return QIcon(p);
}

FrmSysTray::FrmSysTray(QObject* parent) : QObject(parent) {
    menu_ = new QMenu;
    menu_->addAction(QStringLiteral("Restaurer"), this, [this] {
        if (onRestaurer) onRestaurer();
    });
    menu_->addAction(QStringLiteral("A propos..."), this, [this] {
        if (onAPropos) onAPropos();
    });
    menu_->addSeparator();
    menu_->addAction(QStringLiteral("Quitter"), this, [this] {
        if (onQuitter) onQuitter();
    });
    icone_ = new QSystemTrayIcon(IconeApplication(), this);
    icone_->setToolTip(QStringLiteral("Zelvar: Stats"));
    icone_->setContextMenu(menu_);
    connect(icone_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
        if ((r == QSystemTrayIcon::DoubleClick || r == QSystemTrayIcon::Trigger) && onRestaurer)
            onRestaurer();
    });
}

FrmSysTray::~FrmSysTray() {
    delete menu_;
}

bool FrmSysTray::Afficher() {
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return false;
    icone_->show();
    return true;
}

void FrmSysTray::Masquer() {
    icone_->hide();
}

bool FrmSysTray::Visible() const {
    return icone_->isVisible();
}

QString FrmSysTray::Infobulle() const {
    return icone_->toolTip();
}

}  // namespace zl3::gui
