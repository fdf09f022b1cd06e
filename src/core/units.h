#pragma once

#include <QString>
#include <QtGlobal>

// Millimetres and motor steps of an axis, from the spindle's lead (mm per revolution) and the
// motor's steps per revolution.
namespace quendrix {

// steps / stepsPerRevolution * lead, as a Single; no steps per revolution is a division error.
float stepsToMm(double steps, double stepsPerRevolution, double lead);
// mm / lead * stepsPerRevolution, rounded to a Long; no lead is a division error.
qint32 mmToSteps(double mm, double lead, double stepsPerRevolution);

// An axis's drive: the motor's steps per revolution and the spindle's lead (mm per
// revolution), as the axes tab's boxes Schritte and Steigung give them (their leading numbers).
struct AxisDrive {
    double stepsPerRevolution = 0;
    double lead = 0;

    float mm(double steps) const { return stepsToMm(steps, stepsPerRevolution, lead); }
    qint32 steps(double mm) const { return mmToSteps(mm, lead, stepsPerRevolution); }
};
AxisDrive axisDrive(const QString& schritte, const QString& steigung);

}  // namespace quendrix
