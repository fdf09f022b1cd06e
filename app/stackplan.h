#pragma once

#include <QString>

// A stack as the panel will run it, worked out beforehand for the window: which way its plane
// steps go, and how long its moves take at the speeds the panel chooses for them.
namespace stackplan {

// The number a field's text starts with, read as the panel reads it: leading blanks skipped,
// "." as the decimal point, the rest of the text ignored; 0 when it starts with no number.
double leadingNumber(const QString& text);

// The way the plane steps go. The panel approaches the start from above and steps on downward;
// a drive on the CAN bus steps in the direction its direction box shows; a DC motor takes no
// plane steps at all.
enum class Direction { Down, Up, None };
Direction runDirection(int motorArt0, int directionBox);
// Whether stepping from begin in that direction gets to end; false when it runs away from end
// (and past it, on to the rail's end).
bool reachesEnd(double begin, double end, Direction direction);

// What the rig's axis 0 is set to, as far as the duration of its moves goes.
struct Axis {
    double stepPause = 800;  // Taktpause(0): microseconds per step at normal speed
    double stepsPerMm = 400;
    int controltyp = 0;
    int motorArt0 = 0;
};

// Speed modes of axis 0: 1 normal, 0 slow, 2 slowest.
int planeSpeedMode(double steps, int motorArt0);
int distanceSpeedMode(double steps);
// Microseconds per step in a speed mode, as the panel sets the board for it.
double stepMicros(int mode, const Axis& axis);

// Where the approach to a stack starting at `begin` first drives to: one millimetre above the
// start (a hundredth on the microscope), so that every plane is reached from the same side.
double approachPoint(double begin, const Axis& axis);
// One plane step of `steps`; the panel waits at most 6 s for it, then goes on.
double planeMoveSeconds(double steps, const Axis& axis);
// From `position` to the start: first to the approach point at normal speed, then down to the
// start at the speed its distance gets.
double approachSeconds(double position, double begin, const Axis& axis);

}  // namespace stackplan
