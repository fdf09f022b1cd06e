#include "core/units.h"

#include "settings/numbers.h"

namespace quendrix {

float stepsToMm(double steps, double stepsPerRevolution, double lead) {
    return toSingle(divide(steps, stepsPerRevolution) * lead);
}

qint32 mmToSteps(double mm, double lead, double stepsPerRevolution) {
    return toLong(divide(mm, lead) * stepsPerRevolution);
}

AxisDrive axisDrive(const QString& schritte, const QString& steigung) {
    return {Val(schritte), Val(steigung)};
}

}  // namespace quendrix
