#pragma once

#include <functional>

namespace quendrix {

class Platform;

// The one way the component waits: it lets the event loop run (so replies, timers and the
// operator's clicks are handled meanwhile) and sleeps between events; it never spins.
class Waiter {
public:
    enum class Result { Done, TimedOut, Escaped, Cancelled };
    enum class Escape { Ignored, Ends };
    static constexpr double kNoLimit = -1;

    explicit Waiter(Platform& platform) : platform_(&platform) {}

    void setPlatform(Platform& platform) { platform_ = &platform; }

    // Waits until `done` holds, `limitSeconds` have passed on the platform clock (kNoLimit:
    // never), Escape is held (when it ends the wait) or cancelAll() is called.
    Result waitFor(const std::function<bool()>& done, double limitSeconds,
                   Escape escape = Escape::Ignored);
    // Lets pending events run once, without sleeping.
    void doEvents();

    // Ends every pending wait at once, and every later one before it starts. For shutdown.
    void cancelAll() { cancelled_ = true; }
    bool cancelled() const { return cancelled_; }

    // How long one sleep may last, so that a held Escape key is noticed promptly.
    static constexpr double kPollSeconds = 0.05;

private:
    Platform* platform_;
    bool cancelled_ = false;
};

}  // namespace quendrix
