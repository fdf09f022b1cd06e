#pragma once

#include <quendrix/Platform.h>
#include <quendrix/RuntimeError.h>

#include <utility>

namespace quendrix {

// Runs a handler the operator started on the panel. A failure the handler cannot handle is
// shown in a message box and ends the handler; it never reaches Qt's event loop, and the panel
// stays usable.
template <typename Handler>
void runGuarded(Platform& platform, Handler&& handler) {
    try {
        std::forward<Handler>(handler)();
    } catch (const RuntimeError& error) {
        platform.messageBox(error.text(), MsgBox::Critical, QString());
    }
}

// A slot for a panel signal that runs `handler` guarded. The control is asked for its platform
// each time, since a host may replace the platform after the panel was wired.
template <typename Control, typename Handler>
auto guardedSlot(const Control& control, Handler handler) {
    return [&control, handler](auto&&...) { runGuarded(control.platform(), handler); };
}

}  // namespace quendrix
