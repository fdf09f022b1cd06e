#include "core/replyline.h"

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

namespace {
const QString kLineEnd = QStringLiteral("\r\n");
const QChar kStrayLeadByte(0xC2);  // "Â"
}  // namespace

std::optional<QString> cutLine(QString& received) {
    const qsizetype end = received.indexOf(kLineEnd);
    if (end < 0) return std::nullopt;
    const qsizetype length = end + kLineEnd.size();
    QString line = received.left(length);
    received.remove(0, length);
    if (line.startsWith(kStrayLeadByte)) line.remove(0, 1);
    return line;
}

QString withoutLineEnd(const QString& line) {
    return line.left(line.indexOf(kLineEnd));
}

LineHandling handlingOf(const QString& line, bool viaSocket) {
    if (!viaSocket) {
        const bool acknowledges = !line.contains(u'q') && !line.contains(u'Q');
        return {true, acknowledges, acknowledges};
    }
    static const QString kStatusLineStarts = QStringLiteral("qQ&@");
    if (!line.isEmpty() && kStatusLineStarts.contains(line.at(0))) return {true, true, false};
    if (line.compare(QStringLiteral(" ")) > 0) return {true, true, true};
    return {};
}

}  // namespace quendrix
