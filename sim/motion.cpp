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

std::optional<qint32> AxisState::lowerStop() const {
    return rail || limits ? std::optional<qint32>(0) : std::nullopt;
}

std::optional<qint32> AxisState::upperStop() const {
    if (rail && limits) return std::min(*rail, maxPosition);
    if (rail) return rail;
    if (limits) return maxPosition;
    return std::nullopt;
}

Move Move::travel(const AxisState& axis, std::optional<qint64> distance, double now) {
    Move move;
    move.kind = distance ? Kind::Travel : Kind::Run;
    move.start = now;
    move.from = axis.position;
    move.step = axis.direction == 1 ? 1 : -1;
    move.speed = axis.stepsPerSecond();
    move.goal = distance ? axis.position + move.step * *distance : qint64(move.step) * runLimit;
    move.stopAt(axis);
    return move;
}

void Move::stopAt(const AxisState& axis) {
    qint64 target = std::clamp<qint64>(goal, -runLimit, runLimit);
    limitNotice.clear();
    const std::optional<qint32> upper = axis.upperStop();
    const std::optional<qint32> lower = axis.lowerStop();
    if (step > 0 && upper && target > *upper) {
        target = std::max(axis.position, *upper);  // at or beyond the stop: no further
        limitNotice = "oben";
    } else if (step < 0 && lower && target < *lower) {
        target = std::min(axis.position, *lower);
        limitNotice = "unten";
    }
    to = qint32(target);
    end = start + std::abs(to - from) / speed;
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

Move Move::delayed(double seconds) const {
    Move later = *this;
    later.start += seconds;
    later.end += seconds;
    return later;
}

qint32 Move::positionAt(double t) const {
    if (t >= end) return to;
    const qint64 total = std::abs(to - from);
    const qint64 done = std::min<qint64>(total, qint64(std::floor((t - start) * speed + epsilon)));
    return qint32(from + step * std::max<qint64>(0, done));
}

double Move::nextEvent() const {
    return kind == Kind::TakeUp ? end : nextTickOrEnd(start, end, ticksSent);
}

void Move::shift(qint64 delta, const AxisState& axis) {
    from += delta;
    if (kind == Kind::TakeUp) {
        to = axis.position;
        return;
    }
    goal += delta;
    stopAt(axis);
}

}  // namespace quendrix::sim
