#include "sim/frontend.h"

#include "sim/alarm.h"
#include "sim/board.h"

namespace quendrix::sim {

FrontEnd::FrontEnd(Board& board, Clock clock, QObject* parent)
    : QObject(parent), board_(board), clock_(std::move(clock)) {
    timer_.setInterval(5);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] { pump(); });
    if (board_.options().wire.on()) alarm_ = std::make_unique<Alarm>([this] { pump(); });
}

FrontEnd::~FrontEnd() = default;

void FrontEnd::setAutoPump(bool on) {
    if (on) {
        timer_.start();
    } else {
        timer_.stop();
        if (alarm_) alarm_->cancel();
    }
    autoPumpChanged();
}

void FrontEnd::setLinkUp(bool up) {
    if (up == linkUp_) return;
    linkUp_ = up;
    if (up) {
        board_.linkOpened(now());
        emit linkOpened();
    } else {
        board_.linkClosed(now());
        emit linkClosed();
    }
}

void FrontEnd::exchange(const QByteArray& in) {
    const double t = now();
    if (!in.isEmpty()) board_.receive(in, t);
    const QByteArray out = board_.output(t);
    if (!out.isEmpty()) write(out);
    if (board_.disconnectRequested()) dropLink();
    if (alarm_ && autoPump()) {
        if (const std::optional<double> due = board_.nextDue()) alarm_->ringIn(*due - now());
    }
}

}  // namespace quendrix::sim
