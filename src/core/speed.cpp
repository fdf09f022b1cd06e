#include "core/speed.h"

#include "settings/numbers.h"
#include "settings/textformat.h"

#include <cmath>
#include <cstdlib>

namespace quendrix {

QChar axisLetter(char lowerCaseLetter, int axis) {
    return QChar(lowerCaseLetter - 32 * axis);
}

std::optional<QString> pauseForSpeedMode(int axis, int mode, const QString& pauseText,
                                         qint16 controltyp, qint32 motorArt0) {
    if (mode == 1) return Trim(pauseText);
    const double pause = Val(pauseText);
    const bool slowest = mode == 2;
    double n;
    if (axis == 1) {
        n = pause * (slowest ? 4 : 2);
    } else if (controltyp != 1) {
        n = pause * (slowest ? 16 : 8);
    } else if (motorArt0 == 0) {
        n = std::floor(pause * (slowest ? 2.5 : 2));
    } else if (motorArt0 == 1) {
        n = std::floor(pause / (slowest ? 8 : 4));
    } else {
        return std::nullopt;
    }
    return doubleToText(n, QLocale::c());
}

QString microStepPause(double fullStepPause, int exponent, const QLocale& locale) {
    return doubleToText(fullStepPause / std::pow(2.0, exponent), locale);
}

int speedModeForDistance(qint64 distance) {
    const qint64 steps = std::llabs(distance);
    if (steps >= 1001) return 1;
    if (steps >= 101) return 0;
    return 2;
}

QString directionGlyph(int axis, int direction) {
    if (axis == 0) return direction == 1 ? QStringLiteral("é") : QStringLiteral("ê");
    return direction == 1 ? QStringLiteral("×Ø") : QStringLiteral("Ø×");
}

QString speedGlyph(int mode) {
    switch (mode) {
        case 1:
            return QStringLiteral("/");
        case 2:
            return QStringLiteral("L");
        default:
            return QStringLiteral(".");
    }
}

}  // namespace quendrix
