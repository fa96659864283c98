// FrmDebugEcran: the trace list, live. Every trace line is added as it is written (the daily log
// gets the same lines when the list is flushed); the list keeps the last 5,000 lines.
#pragma once

#include <QWidget>

class QListWidget;

namespace zl3::gui {

class FrmDebugEcran : public QWidget {
    Q_OBJECT
  public:
    explicit FrmDebugEcran(QWidget* parent = nullptr);
    ~FrmDebugEcran() override;
    QStringList Lignes() const;
    static constexpr int kLignesMax = 5000;

  private:
    void Ajouter(const std::string& ligne);
    QListWidget* liste_;
};

}  // namespace zl3::gui
