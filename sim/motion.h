#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <optional>

namespace quendrix::sim {

// The time of the next status line of a movement that sends one every `tick` seconds from
// `start`, or `end` when no line comes before it.
double nextTickOrEnd(double start, double end, int ticksSent);

// The settings and position of one motor axis, as the board keeps them.
struct AxisState {
    qint32 position = 0;    // in steps
    qint32 encoder = 0;     // position + the encoder offset
    int direction = 1;      // 1 forward (increasing), 0 backward
    int pause = 800;        // microseconds per step
    int startTime = 0;      // "w n#" with n <= 0, kept only
    int microExponent = 0;  // divisor 2^exponent
    int stepStage = 0;      // "g n#" with n < 0, kept only
    qint32 maxPosition = 2000000000;
    bool limits = false;         // limit switches in use ("e n#"): stops at 0 and at maxPosition
    std::optional<qint32> rail;  // the rail's length, with a switch at 0 and at its end
    qint32 lowest = 0;           // the span the carriage has covered since its position
    qint32 highest = 0;          // was last set
    int backlash = 0;            // steps taken up on a change of direction
    int inversion = 0;           // internal direction of rotation, kept only
    int optics = 0;              // "x n#", kept only
    bool moving = false;

    int divisor() const { return 1 << microExponent; }
    // Where a move is stopped: at the rail's ends, and with the limit switches in use also at
    // 0 and maxPosition, whichever comes first; empty where nothing stops it.
    std::optional<qint32> lowerStop() const;
    std::optional<qint32> upperStop() const;
    double stepsPerSecond() const { return 1e6 / pause; }
};

// One movement of an axis in simulated time. A travel ends at its target, a run goes on until
// it is stopped, a limit or the end of the counter; a take-up turns the motor through the
// backlash without changing the position.
struct Move {
    enum class Kind { Travel, Run, TakeUp };
    static constexpr qint32 runLimit = 2000000000;

    Kind kind = Kind::Travel;
    double start = 0;
    double end = 0;
    qint64 from = 0;  // wide: the counter may be set far away while moving
    qint32 to = 0;
    qint64 goal = 0;  // where the movement was meant to end, before a stop cut it short
    int step = 1;     // +1 or -1
    double speed = 1250;
    int ticksSent = 0;
    QByteArray limitNotice;  // "unten" or "oben" when a limit switch ends the move

    // A travel or run of `axis` from its position: `distance` steps (or a run's whole way,
    // when `distance` is empty) in the axis's direction, cut at the limits when they are on.
    static Move travel(const AxisState& axis, std::optional<qint64> distance, double now);
    static Move takeUp(const AxisState& axis, double now);

    // The same movement, begun `seconds` later (the firmware's delay before a motor starts).
    Move delayed(double seconds) const;
    qint32 positionAt(double t) const;
    // The time of the next status tick, or of the end when no tick comes before it.
    double nextEvent() const;
    // Moves the whole movement by `delta` steps (the position counter was set while moving) and
    // stops it anew where `axis`, now at its new position, is stopped.
    void shift(qint64 delta, const AxisState& axis);

private:
    // Ends the movement at the first stop between the axis and the goal.
    void stopAt(const AxisState& axis);
};

}  // namespace quendrix::sim
