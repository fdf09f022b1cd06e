#pragma once

#include <QLocale>
#include <QString>
#include <QtGlobal>
#include <optional>

// Commands and marks of axis motion, as pure functions.
namespace quendrix {

// The command letter of an axis: lower case for axis 0, upper case for axis 1 ('t' -> "T").
QChar axisLetter(char lowerCaseLetter, int axis);

// The step pause sent for a speed mode (1 normal, 0 slow, 2 slowest), from the pause text of
// the axis. Normal sends the text as typed (trimmed). The slower modes scale the pause: axis 1
// by 2 (slow) or 4 (slowest); axis 0 by 8 or 16, except on a lens-changer rig (Controltyp 1)
// where a stepper (MotorArt0 0) takes the whole part of 2 or 2.5 times and a CAN-bus drive
// (MotorArt0 1) of a quarter or an eighth, and any other drive is sent nothing.
std::optional<QString> pauseForSpeedMode(int axis, int mode, const QString& pauseText,
                                         qint16 controltyp, qint32 motorArt0);

// The pause text of an axis at micro-step division 2^exponent: the stored full-step pause
// divided by the division, so that the axis keeps the speed of a full step.
QString microStepPause(double fullStepPause, int exponent, const QLocale& locale);

// The speed mode for a move of `distance` steps: over 1000 normal, over 100 slow, else slowest.
int speedModeForDistance(qint64 distance);

// The captions of the direction and speed labels: up "é", down "ê" (axis 0), open "×Ø",
// close "Ø×" (axis 1); normal "/", slowest "L", slow ".".
QString directionGlyph(int axis, int direction);
QString speedGlyph(int mode);

}  // namespace quendrix
