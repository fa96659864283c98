// The few ways the core reaches the outside world: the message box, the event loop, the clock,
// sleeping and the shell. The windows install real implementations; headless programs and tests
// install their own (scripted answers, a clock that advances only when told, sleeps that return at
// once). Nothing in the core talks to the user or to real time except through these.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "DateTime.h"

namespace zl3 {

// Message-box style values, as the system message box numbers them (buttons + icon).
enum MsgStyle : int {
    kMbOk = 0,
    kMbOkCancel = 1,
    kMbAbortRetryIgnore = 2,
    kMbYesNoCancel = 3,
    kMbYesNo = 4,
    kMbRetryCancel = 5,
    kMbCritical = 16,
    kMbQuestion = 32,
    kMbExclamation = 48,
    kMbInformation = 64,
};

// Buttons, numbered as the system message box answers.
enum MsgAnswer : int {
    kIdOk = 1,
    kIdCancel = 2,
    kIdAbort = 3,
    kIdRetry = 4,
    kIdIgnore = 5,
    kIdYes = 6,
    kIdNo = 7,
};

// The buttons a style shows, left to right.
std::vector<int> ButtonsOfStyle(int style);
// French caption of a button ("Oui", "Annuler", …).
std::string ButtonCaption(int answer);
// The answer of a box closed with its window's close button: the first button that exists among
// "Annuler", "Abandonner", "Non", "Ok", in that order of preference.
int CloseButtonAnswer(int style);

struct MessageRequest {
    std::string text;
    std::string title;
    int style = 0;
};

// Shows messages and questions. Implementations: the message window of the GUI, the console of
// the command-line programs, the scripted box of the tests.
class MessageBoxUi {
  public:
    virtual ~MessageBoxUi() = default;
    // Shows the box modally and returns the button pressed (MsgAnswer). A box dismissed without a
    // button (closed, or no user at all) answers CloseButtonAnswer(style).
    virtual int Show(const MessageRequest& request) = 0;
};

// Local wall-clock time, the system tick counter, a stopwatch and sleeping.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual DateTime Now() = 0;
    // Milliseconds since the computer started (GetTickCount).
    virtual int64_t TickCount() = 0;
    // Monotonic milliseconds, for elapsed-time measures.
    virtual int64_t Stopwatch() = 0;
    virtual void Sleep(int64_t ms) = 0;
};

// The window system's side: letting pending events run, the busy cursor.
class EventLoop {
  public:
    virtual ~EventLoop() = default;
    virtual void DoEvents() {}
    virtual void SetBusy(bool /*busy*/) {}
};

// The shell "Open" action on a file or address.
class Shell {
  public:
    virtual ~Shell() = default;
    virtual bool Open(const std::string& pathOrUrl) = 0;
};

// The services in use. Defaults: the system clock, a console message box that answers as if
// closed, an event loop that does nothing, a shell that opens with xdg-open (or the Windows shell).
struct Services {
    MessageBoxUi* messages = nullptr;
    Clock* clock = nullptr;
    EventLoop* events = nullptr;
    Shell* shell = nullptr;
};

Services& Svc();

// Installs some services for the life of the object, restoring the previous ones afterwards.
class ScopedServices {
  public:
    explicit ScopedServices(const Services& replacement);
    ~ScopedServices();
    ScopedServices(const ScopedServices&) = delete;
    ScopedServices& operator=(const ScopedServices&) = delete;

  private:
    Services previous_;
};

// ---- Ready-made implementations -------------------------------------------------------------

class SystemClock : public Clock {
  public:
    DateTime Now() override;
    int64_t TickCount() override;
    int64_t Stopwatch() override;
    void Sleep(int64_t ms) override;
};

// A clock that only moves when told; Sleep advances it instead of waiting.
class ManualClock : public Clock {
  public:
    explicit ManualClock(DateTime start = DateTime{2026, 11, 2, 9, 0, 0, 0},
                         int64_t tick = 3600000);
    DateTime Now() override;
    int64_t TickCount() override { return tick_; }
    int64_t Stopwatch() override { return elapsed_; }
    void Sleep(int64_t ms) override;
    void Advance(int64_t ms);
    void SetNow(const DateTime& now);
    void SetTickCount(int64_t tick) { tick_ = tick; }
    int64_t TotalSlept() const { return slept_; }
    int SleepCalls() const { return sleepCalls_; }

  private:
    int64_t baseMs_;  // wall time as milliseconds since 1970 (local, naive)
    int64_t tick_;
    int64_t elapsed_ = 0;
    int64_t slept_ = 0;
    int sleepCalls_ = 0;
};

// Prints messages on standard error and answers as a box closed without a choice would.
class ConsoleMessageBox : public MessageBoxUi {
  public:
    int Show(const MessageRequest& request) override;
};

// Records every box shown and answers from a script (first in, first out); when the script is
// empty, answers as if the box were closed.
class ScriptedMessageBox : public MessageBoxUi {
  public:
    struct Shown {
        MessageRequest request;
        int answer;
    };
    int Show(const MessageRequest& request) override;
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
    std::vector<std::string> opened;
    bool result = true;
};

class SystemShell : public Shell {
  public:
    bool Open(const std::string& pathOrUrl) override;
};

}  // namespace zl3
