#pragma once

#include <QtGlobal>

// Millimetres and motor steps of an axis, from the spindle's lead (mm per revolution) and the
// motor's steps per revolution.
namespace quendrix {

// steps / stepsPerRevolution * lead, as a Single; no steps per revolution is a division error.
float stepsToMm(double steps, double stepsPerRevolution, double lead);
// mm / lead * stepsPerRevolution, rounded to a Long; no lead is a division error.
qint32 mmToSteps(double mm, double lead, double stepsPerRevolution);

}  // namespace quendrix
