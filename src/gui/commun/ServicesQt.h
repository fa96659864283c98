// The core's event-loop service on the window thread: DoEvents lets Qt handle what is pending
// (paint, clicks, sockets, timers), after bringing the grids on screen up to date; the busy
// cursor is Qt's wait cursor. The longest gap between two turns is measured for the benchmark.
#pragma once

#include <QElapsedTimer>

#include <cstdint>
#include <functional>

#include "Services.h"

namespace zl3::gui {

class EventLoopQt : public EventLoop {
  public:
    EventLoopQt();
    void DoEvents() override;
    void SetBusy(bool busy) override;

    // Run before each turn (the main window brings its grid views up to date).
    std::function<void()> avantEvenements;

    // Longest time between two turns since the last Remettre(), in milliseconds.
    int64_t PlusLongEcartMs() const { return ecartMax_; }
    int64_t Tours() const { return tours_; }
    // The turn that ended the longest gap (1 = the first turn after Remettre()).
    int64_t TourDuPlusLongEcart() const { return tourMax_; }
    void Remettre();

  private:
    QElapsedTimer chrono_;
    int64_t ecartMax_ = 0;
    int64_t tours_ = 0;
    int64_t tourMax_ = 0;
    bool occupe_ = false;
};

}  // namespace zl3::gui
