// FrmSysTray: the tool's icon in the notification area, tooltip "Zelvar: Stats", with its menu
// (restore the window, about, quit). Where the desktop has no notification area the main window
// is minimised instead, and the trace says so.
#pragma once

#include <QObject>

#include <functional>

class QSystemTrayIcon;
class QMenu;

namespace zl3::gui {

class FrmSysTray : public QObject {
    Q_OBJECT
  public:
    explicit FrmSysTray(QObject* parent = nullptr);
    ~FrmSysTray() override;

    // Shows the icon; false when there is no notification area.
    bool Afficher();
    void Masquer();
    bool Visible() const;
    QString Infobulle() const;

    std::function<void()> onRestaurer;
    std::function<void()> onAPropos;
    std::function<void()> onQuitter;

  private:
    QSystemTrayIcon* icone_ = nullptr;
    QMenu* menu_ = nullptr;
};

// The tool's icon (drawn: no image files to ship).
class QIcon IconeApplication();

}  // namespace zl3::gui
