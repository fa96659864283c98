#include "Services.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

#include "Lib_Systeme.h"

namespace zl3 {

std::vector<int> ButtonsOfStyle(int style) {
    switch (style & 0x0F) {
        case kMbOkCancel:
            return {kIdOk, kIdCancel};
        case kMbAbortRetryIgnore:
            return {kIdAbort, kIdRetry, kIdIgnore};
        case kMbYesNoCancel:
            return {kIdYes, kIdNo, kIdCancel};
        case kMbYesNo:
            return {kIdYes, kIdNo};
        case kMbRetryCancel:
            return {kIdRetry, kIdCancel};
        default:
            return {kIdOk};
    }
}

std::string ButtonCaption(int answer) {
    switch (answer) {
        case kIdOk:
            return "Ok";
        case kIdCancel:
            return "Annuler";
        case kIdAbort:
            return "Abandonner";
        case kIdRetry:
            return "Réessayer";
        case kIdIgnore:
            return "Ignorer";
        case kIdYes:
            return "Oui";
        case kIdNo:
            return "Non";
        default:
            return "";
    }
}

int CloseButtonAnswer(int style) {
    const std::vector<int> buttons = ButtonsOfStyle(style);
    for (int preferred : {kIdCancel, kIdAbort, kIdNo, kIdOk})
        for (int b : buttons)
            if (b == preferred) return b;
    return buttons.front();
}

// ---- Service registry -----------------------------------------------------------------------

namespace {

SystemClock& DefaultClock() {
    static SystemClock clock;
    return clock;
}
ConsoleMessageBox& DefaultMessages() {
    static ConsoleMessageBox box;
    return box;
}
EventLoop& DefaultEvents() {
    static EventLoop loop;
    return loop;
}
SystemShell& DefaultShell() {
    static SystemShell shell;
    return shell;
}

Services& Current() {
    static Services services{&DefaultMessages(), &DefaultClock(), &DefaultEvents(),
                             &DefaultShell()};
    return services;
}

}  // namespace

Services& Svc() {
    return Current();
}

ScopedServices::ScopedServices(const Services& replacement) : previous_(Current()) {
    Services& s = Current();
    if (replacement.messages) s.messages = replacement.messages;
    if (replacement.clock) s.clock = replacement.clock;
    if (replacement.events) s.events = replacement.events;
    if (replacement.shell) s.shell = replacement.shell;
}

ScopedServices::~ScopedServices() {
    Current() = previous_;
}

// ---- Clocks ---------------------------------------------------------------------------------

DateTime SystemClock::Now() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t t = std::chrono::system_clock::to_time_t(now);
    std::tm tm{};
    sys::HeureLocale(t, tm);
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        1000;
    return DateTime{tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,          tm.tm_hour,
                    tm.tm_min,         tm.tm_sec,     static_cast<int>(ms)};
}

int64_t SystemClock::TickCount() {
    return sys::SystemTickCount();
}

int64_t SystemClock::Stopwatch() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void SystemClock::Sleep(int64_t ms) {
    if (ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

// ---- Message boxes --------------------------------------------------------------------------

int ConsoleMessageBox::Show(const MessageRequest& request) {
    const int answer = CloseButtonAnswer(request.style);
    std::fprintf(stderr, "%s%s%s\n", request.title.empty() ? "" : request.title.c_str(),
                 request.title.empty() ? "" : ": ", request.text.c_str());
    return answer;
}

bool SystemShell::Open(const std::string& pathOrUrl) {
    return sys::ShellOpen(pathOrUrl);
}

bool SystemShell::TerminerImage(const std::string& nomImage) {
    return sys::TerminerImage(nomImage);
}

}  // namespace zl3
