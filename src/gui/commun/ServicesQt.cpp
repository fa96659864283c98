#include "ServicesQt.h"

#include <QApplication>
#include <QCursor>

namespace zl3::gui {

EventLoopQt::EventLoopQt() { chrono_.start(); }

void EventLoopQt::Remettre() {
    ecartMax_ = 0;
    tours_ = 0;
    tourMax_ = 0;
    chrono_.restart();
}

void EventLoopQt::DoEvents() {
    const int64_t ecart = chrono_.restart();
    ++tours_;
    if (ecart > ecartMax_) {
        ecartMax_ = ecart;
        tourMax_ = tours_;
    }
    if (avantEvenements) avantEvenements();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    chrono_.restart();
}

void EventLoopQt::SetBusy(bool busy) {
    if (busy == occupe_) return;
    occupe_ = busy;
    if (busy)
        QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    else
        QApplication::restoreOverrideCursor();
}

}  // namespace zl3::gui
