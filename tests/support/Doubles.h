// Test doubles of the core's services: a clock that moves only when told, a message box that
// records every box and answers from a script, an event loop and a shell that record their calls.
// Tests install them (SiteTest does) instead of the real ones, so that nothing waits for real time
// or for a user.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "Services.h"

namespace zl3 {

// A clock that only moves when told; Sleep advances it instead of waiting.
class ManualClock : public Clock {
  public:
    explicit ManualClock(DateTime start = DateTime{2026, 11, 2, 9, 0, 0, 0}, int64_t tick = 3600000)
        : tick_(tick) {
        SetNow(start);
    }
    DateTime Now() override {
        const int64_t days =
            baseMs_ >= 0 ? baseMs_ / 86400000LL : (baseMs_ - 86399999LL) / 86400000LL;
        int64_t rest = baseMs_ - days * 86400000LL;
        DateTime d = CivilFromDays(days);
        d.hour = static_cast<int>(rest / 3600000LL);
        rest %= 3600000LL;
        d.minute = static_cast<int>(rest / 60000LL);
        rest %= 60000LL;
        d.second = static_cast<int>(rest / 1000LL);
        d.millisecond = static_cast<int>(rest % 1000LL);
        return d;
    }
    int64_t TickCount() override { return tick_; }
    int64_t Stopwatch() override { return elapsed_; }
    void Sleep(int64_t ms) override {
        ++sleepCalls_;
        if (ms <= 0) return;
        slept_ += ms;
        Advance(ms);
    }
    void Advance(int64_t ms) {
        baseMs_ += ms;
        tick_ += ms;
        elapsed_ += ms;
    }
    void SetNow(const DateTime& now) {
        baseMs_ = DaysFromCivil(now.year, now.month, now.day) * 86400000LL +
                  (now.hour * 3600LL + now.minute * 60LL + now.second) * 1000LL + now.millisecond;
    }
    void SetTickCount(int64_t tick) { tick_ = tick; }
    int64_t TotalSlept() const { return slept_; }
    int SleepCalls() const { return sleepCalls_; }

  private:
    int64_t baseMs_ = 0;  // wall time as milliseconds since 1970 (local, naive)
    int64_t tick_;
    int64_t elapsed_ = 0;
    int64_t slept_ = 0;
    int sleepCalls_ = 0;
};

// Records every box shown and answers from a script (first in, first out); when the script is
// empty, answers as if the box were closed.
class ScriptedMessageBox : public MessageBoxUi {
  public:
    struct Shown {
        MessageRequest request;
        int answer;
    };
    int Show(const MessageRequest& request) override {
        if (onShow) onShow(request);
        int answer = CloseButtonAnswer(request.style);
        if (next_ < script_.size()) answer = script_[next_++];
        shown.push_back({request, answer});
        return answer;
    }
    void Script(int answer) { script_.push_back(answer); }
    // A callback run for each box, before the answer is taken (lets a test act "meanwhile").
    std::function<void(const MessageRequest&)> onShow;
    std::vector<Shown> shown;

  private:
    std::vector<int> script_;
    size_t next_ = 0;
};

class CountingEventLoop : public EventLoop {
  public:
    void DoEvents() override {
        ++calls;
        if (onEvents) onEvents();
    }
    void SetBusy(bool busy) override { busyNow = busy; }
    int calls = 0;
    bool busyNow = false;
    std::function<void()> onEvents;
};

class RecordingShell : public Shell {
  public:
    bool Open(const std::string& pathOrUrl) override {
        opened.push_back(pathOrUrl);
        return result;
    }
    bool TerminerImage(const std::string& nomImage) override {
        termines.push_back(nomImage);
        return false;
    }
    std::vector<std::string> opened;
    std::vector<std::string> termines;  // images asked to end, never ended for real
    bool result = true;
};

}  // namespace zl3
