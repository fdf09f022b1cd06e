#include "sim/motion.h"

#include <algorithm>
#include <cmath>

namespace quendrix::sim {

namespace {
constexpr double epsilon = 1e-6;  // steps; absorbs rounding of tick times
}

double nextTickOrEnd(double start, double end, int ticksSent) {
    constexpr double tick = 0.1;  // seconds between status lines while moving
    const double next = start + tick * (ticksSent + 1);
    return next < end - 1e-9 ? next : end;
}

Move Move::travel(const AxisState& axis, std::optional<qint64> distance, double now) {
    Move move;
    move.kind = distance ? Kind::Travel : Kind::Run;
    move.start = now;
    move.from = axis.position;
    move.step = axis.direction == 1 ? 1 : -1;
    move.speed = axis.stepsPerSecond();
    qint64 to = distance ? axis.position + move.step * *distance : qint64(move.step) * runLimit;
    to = std::clamp<qint64>(to, -runLimit, runLimit);
    if (axis.limits && move.step > 0 && to > axis.maxPosition) {
        to = std::max<qint64>(axis.position, axis.maxPosition);
        move.limitNotice = "oben";
    } else if (axis.limits && move.step < 0 && to < 0) {
        to = std::min<qint64>(axis.position, 0);
        move.limitNotice = "unten";
    }
    move.to = qint32(to);
    move.end = now + std::abs(qint64(move.to) - move.from) / move.speed;
    return move;
}

Move Move::takeUp(const AxisState& axis, double now) {
    Move move;
    move.kind = Kind::TakeUp;
    move.start = now;
    move.from = move.to = axis.position;
    move.speed = axis.stepsPerSecond();
    move.end = now + axis.backlash / move.speed;
    return move;
}

qint32 Move::positionAt(double t) const {
    if (t >= end) return to;
    const qint64 total = std::abs(qint64(to) - from);
    const qint64 done = std::min<qint64>(total, qint64(std::floor((t - start) * speed + epsilon)));
    return qint32(from + step * std::max<qint64>(0, done));
}

double Move::nextEvent() const {
    return kind == Kind::TakeUp ? end : nextTickOrEnd(start, end, ticksSent);
}

void Move::shift(qint32 delta) {
    from += delta;
    to += delta;
}

}  // namespace quendrix::sim
