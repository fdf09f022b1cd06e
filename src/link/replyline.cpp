#include "link/replyline.h"

#include "settings/numbers.h"

namespace quendrix {

QString acknowledgeMarker(const QString& command, int backlashAxis0, int backlashAxis1) {
    const QString first = command.left(1);
    if ((first == u"v" || first == u"z") && backlashAxis0 >= 1) return QStringLiteral("|F");
    if ((first == u"V" || first == u"Z") && backlashAxis1 >= 1) return QStringLiteral("|F");
    return first.toUpper() + QLatin1Char('|');
}

std::optional<double> numberAfter(const QString& line, const QString& marker) {
    const qsizetype at = line.indexOf(marker);
    return at < 0 ? 0 : ValInRange(line.mid(at + marker.size()));
}

std::optional<int> microStepExponent(double divisor) {
    for (int exponent = 0; exponent <= 4; ++exponent)
        if (divisor == double(1 << exponent)) return exponent;
    return std::nullopt;
}

bool isAcknowledgementLine(const QString& line, const QString& kennung) {
    return line.size() >= 2 && line.at(1) == u'|' && kennung.contains(line.at(0));
}

}  // namespace quendrix
