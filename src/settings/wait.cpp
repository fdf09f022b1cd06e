#include "settings/wait.h"

#include <quendrix/Platform.h>

#include <algorithm>

namespace quendrix {

Waiter::Result Waiter::waitFor(const std::function<bool()>& done, double limitSeconds,
                               Escape escape) {
    const double start = platform_->now();
    for (;;) {
        if (cancelled_) return Result::Cancelled;
        if (done()) return Result::Done;
        if (escape == Escape::Ends && platform_->isKeyDown(VirtualKey::Escape))
            return Result::Escaped;
        const double elapsed = platform_->now() - start;
        double sleep = kPollSeconds;
        if (limitSeconds >= 0) {
            if (elapsed >= limitSeconds) return Result::TimedOut;
            sleep = std::min(sleep, limitSeconds - elapsed);
        }
        platform_->idle(sleep);
    }
}

void Waiter::doEvents() {
    platform_->idle(0);
}

}  // namespace quendrix
