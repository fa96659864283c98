// FrmMsgBox: the tool's own message window, behind the core's message service (AffMsg,
// Question). French buttons by style ("Oui", "Non", "Annuler", …), the text in Arial with its line
// breaks, the style's icon; the window's close button answers as the core says
// (CloseButtonAnswer). No window of the tool uses a Qt message box.
#pragma once

#include <QDialog>

#include "Services.h"

namespace zl3::gui {

class FrmMsgBoxDialog : public QDialog {
    Q_OBJECT
  public:
    FrmMsgBoxDialog(const MessageRequest& request, QWidget* parent = nullptr);
    // The button pressed (MsgAnswer); the close-button answer until one is.
    int Reponse() const { return reponse_; }

  protected:
    void reject() override;  // close button, Escape

  private:
    int style_;
    int reponse_;
};

class FrmMsgBox : public MessageBoxUi {
  public:
    int Show(const MessageRequest& request) override;
};

}  // namespace zl3::gui
