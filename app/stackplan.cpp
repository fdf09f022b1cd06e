#include "stackplan.h"

#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace stackplan {

namespace {
constexpr double kPlaneWaitSeconds = 6;  // the panel's wait for a plane step to end
}

double leadingNumber(const QString& text) {
    static const QRegularExpression number(
        QStringLiteral(R"(^\s*[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?)"));
    const QRegularExpressionMatch match = number.match(text);
    if (!match.hasMatch()) return 0;
    const double value = match.captured(0).trimmed().toDouble();
    return std::isfinite(value) ? value : 0;
}

Direction runDirection(int motorArt0, int directionBox) {
    switch (motorArt0) {
        case 0:
            return Direction::Down;
        case 1:
            return directionBox == 1 ? Direction::Up : Direction::Down;
        default:
            return Direction::None;
    }
}

bool reachesEnd(double begin, double end, Direction direction) {
    switch (direction) {
        case Direction::Down:
            return begin >= end;
        case Direction::Up:
            return begin <= end;
        case Direction::None:
            return true;
    }
    return true;
}

int planeSpeedMode(double steps, int motorArt0) {
    if (motorArt0 == 1) return 2;
    return steps > 1000 ? 1 : (steps > 100 ? 0 : 2);
}

int distanceSpeedMode(double steps) {
    steps = std::fabs(steps);
    return steps >= 1001 ? 1 : (steps >= 101 ? 0 : 2);
}

double stepMicros(int mode, const Axis& axis) {
    const double pause = axis.stepPause;
    if (mode == 1) return pause;
    const bool slowest = mode == 2;
    if (axis.controltyp != 1) return pause * (slowest ? 16 : 8);
    // The lens changer's drive: a stepper is slowed less, a drive on the CAN bus takes the
    // pause as a speed; for a DC motor the board keeps the pause it has.
    if (axis.motorArt0 == 0) return std::floor(pause * (slowest ? 2.5 : 2));
    if (axis.motorArt0 == 1) return std::floor(pause / (slowest ? 8 : 4));
    return pause;
}

double planeMoveSeconds(double steps, const Axis& axis) {
    if (axis.motorArt0 != 0 && axis.motorArt0 != 1) return 0;
    const double seconds =
        std::fabs(steps) * stepMicros(planeSpeedMode(steps, axis.motorArt0), axis) / 1e6;
    return std::min(seconds, kPlaneWaitSeconds);
}

double approachPoint(double begin, const Axis& axis) {
    return std::round(begin + (axis.controltyp == 2 ? axis.stepsPerMm / 100 : axis.stepsPerMm));
}

double approachSeconds(double position, double begin, const Axis& axis) {
    const double point = approachPoint(begin, axis);
    const double first = std::fabs(point - position);
    const double second = std::fabs(point - std::round(begin));
    const bool canBus = axis.motorArt0 == 1;
    const double firstMicros = stepMicros(canBus ? 2 : 1, axis);
    const double secondMicros = stepMicros(canBus ? 2 : distanceSpeedMode(second), axis);
    return (first * firstMicros + second * secondMicros) / 1e6;
}

}  // namespace stackplan
