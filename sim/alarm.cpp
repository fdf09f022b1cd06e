#include "sim/alarm.h"

#include <sys/timerfd.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <cmath>
#include <cstdint>

namespace quendrix::sim {

Alarm::Alarm(std::function<void()> ring, QObject* parent)
    : QObject(parent),
      fd_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)),
      ring_(std::move(ring)) {
    if (fd_ < 0) return;  // without the descriptor the front end's polling still serves
    notifier_ = std::make_unique<QSocketNotifier>(fd_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        std::uint64_t expirations = 0;
        if (::read(fd_, &expirations, sizeof expirations) == sizeof expirations) ring_();
    });
}

Alarm::~Alarm() {
    notifier_.reset();
    if (fd_ >= 0) ::close(fd_);
}

void Alarm::ringIn(double seconds) {
    if (fd_ < 0) return;
    // A zero time would disarm the timer: the earliest ring is a microsecond away.
    const long long nanoseconds = std::max(1000LL, std::llround(seconds * 1e9));
    itimerspec when{};
    when.it_value.tv_sec = time_t(nanoseconds / 1000000000);
    when.it_value.tv_nsec = long(nanoseconds % 1000000000);
    timerfd_settime(fd_, 0, &when, nullptr);
}

void Alarm::cancel() {
    if (fd_ < 0) return;
    const itimerspec never{};
    timerfd_settime(fd_, 0, &never, nullptr);
}

}  // namespace quendrix::sim
