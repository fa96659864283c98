// The few ways the core reaches the outside world: the message box, the event loop, the clock,
// sleeping and the shell. The windows install real implementations; headless programs and tests
// install their own (the tests' scripted answers, a clock that advances only when told, sleeps
// that return at once: tests/support/Doubles.h). Nothing in the core talks to the user or to real
// time except through these.
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
    // Ends every process of the program image `nomImage` ("ZL3_Tools_Stats.exe"), the caller
    // included: the suite's last step at exit, so that no hidden copy lingers. False when
    // nothing was run.
    virtual bool TerminerImage(const std::string& nomImage) = 0;
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

// Prints messages on standard error and answers as a box closed without a choice would.
class ConsoleMessageBox : public MessageBoxUi {
  public:
    int Show(const MessageRequest& request) override;
};

class SystemShell : public Shell {
  public:
    bool Open(const std::string& pathOrUrl) override;
    bool TerminerImage(const std::string& nomImage) override;
};

}  // namespace zl3
