#include "FrmMsgBox.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "Lib_Public.h"

namespace zl3::gui {

FrmMsgBoxDialog::FrmMsgBoxDialog(const MessageRequest& request, QWidget* parent)
    : QDialog(parent), style_(request.style), reponse_(CloseButtonAnswer(request.style)) {
    setObjectName("FrmMsgBox");
    setWindowTitle(QString::fromStdString(request.title.empty() ? kTitreApplication
                                                                : request.title));
    setModal(true);
    QFont arial("Arial");
    arial.setPointSize(10);

    auto* texte = new QLabel;
    QString t = QString::fromStdString(request.text);
    t.replace("\r\n", "\n");
    texte->setText(t);
    texte->setFont(arial);
    texte->setTextFormat(Qt::PlainText);
    texte->setWordWrap(false);
    texte->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* haut = new QHBoxLayout;
    QStyle::StandardPixmap icone = QStyle::SP_CustomBase;
    switch (request.style & 0x70) {
        case kMbCritical:
            icone = QStyle::SP_MessageBoxCritical;
            break;
        case kMbQuestion:
            icone = QStyle::SP_MessageBoxQuestion;
            break;
        case kMbExclamation:
            icone = QStyle::SP_MessageBoxWarning;
            break;
        case kMbInformation:
            icone = QStyle::SP_MessageBoxInformation;
            break;
        default:
            break;
    }
    if (icone != QStyle::SP_CustomBase) {
        auto* image = new QLabel;
        image->setPixmap(style()->standardIcon(icone).pixmap(32, 32));
        image->setAlignment(Qt::AlignTop);
        haut->addWidget(image);
    }
    haut->addWidget(texte, 1);

    auto* boutons = new QHBoxLayout;
    boutons->addStretch(1);
    bool premier = true;
    for (int reponse : ButtonsOfStyle(request.style)) {
        auto* b = new QPushButton(QString::fromStdString(ButtonCaption(reponse)));
        b->setFont(arial);
        b->setMinimumWidth(90);
        if (premier) b->setDefault(true);
        premier = false;
        connect(b, &QPushButton::clicked, this, [this, reponse] {
            reponse_ = reponse;
            done(reponse);
        });
        boutons->addWidget(b);
    }
    boutons->addStretch(1);

    auto* page = new QVBoxLayout(this);
    page->addLayout(haut);
    page->addSpacing(8);
    page->addLayout(boutons);
    page->setSizeConstraint(QLayout::SetFixedSize);
}

void FrmMsgBoxDialog::reject() {
    reponse_ = CloseButtonAnswer(style_);
    done(reponse_);
}

int FrmMsgBox::Show(const MessageRequest& request) {
    try {
        FrmMsgBoxDialog boite(request, QApplication::activeWindow());
        boite.exec();
        return boite.Reponse();
    } catch (const std::exception& e) {
        TraceErreur("FrmMsgBox:Show", 0, e.what());
        return CloseButtonAnswer(request.style);
    }
}

}  // namespace zl3::gui
