#pragma once

#include <quendrix/Platform.h>
#include <quendrix/RuntimeError.h>

#include <QString>
#include <QtGlobal>
#include <exception>
#include <new>
#include <utility>

// Handlers that Qt's event loop calls (clicks, keys, timers, the transports) run through these:
// an exception must never reach the event loop, which would end the host's program.
namespace quendrix {

// The text a failure is shown with: a RuntimeError's own; running out of memory and anything
// else unforeseen as the run-time errors 7 and 51.
inline QString failureText(const std::exception& error) {
    if (const auto* runtime = dynamic_cast<const RuntimeError*>(&error)) return runtime->text();
    if (dynamic_cast<const std::bad_alloc*>(&error))
        return RuntimeError(RuntimeError::OutOfMemory).text();
    return RuntimeError(RuntimeError::InternalError, QString::fromLocal8Bit(error.what())).text();
}

// Runs a handler the operator started on the panel. A failure the handler cannot handle is
// shown in a message box and ends the handler; the panel stays usable.
template <typename Handler>
void runGuarded(Platform& platform, Handler&& handler) {
    try {
        std::forward<Handler>(handler)();
    } catch (const std::exception& error) {
        platform.messageBox(failureText(error), MsgBox::Critical, QString());
    }
}

// Runs a handler whose run-time errors only mean that there is nothing to show yet (a number
// still being typed, a display whose inputs are not set up): they are dropped. Any other
// failure is logged.
template <typename Handler>
void runQuietly(Handler&& handler) {
    try {
        std::forward<Handler>(handler)();
    } catch (const RuntimeError&) {
    } catch (const std::exception& error) {
        qWarning("Quendrix: %s", qPrintable(failureText(error)));
    }
}

// A slot for a panel signal that runs `handler` guarded. The control is asked for its platform
// each time, since a host may replace the platform after the panel was wired.
template <typename Control, typename Handler>
auto guardedSlot(const Control& control, Handler handler) {
    return [&control, handler](auto&&...) { runGuarded(control.platform(), handler); };
}

// A slot that runs `handler` quietly (see runQuietly).
template <typename Handler>
auto quietSlot(Handler handler) {
    return [handler](auto&&...) { runQuietly(handler); };
}

}  // namespace quendrix
