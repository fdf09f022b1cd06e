#include "core/readout.h"

#include "settings/textformat.h"

namespace quendrix {

bool readoutInMillimetres(const QString& label9Caption) {
    return label9Caption.contains(u"mm");
}

QString millimetresText(double mm, const QLocale& locale) {
    return formatNumber(mm, QStringLiteral("##,##0.00"), locale);
}

std::optional<QString> positionReadout(qint32 steps, std::optional<float> mm, bool inMillimetres,
                                       const QLocale& locale) {
    if (!inMillimetres) return QString::number(steps);
    if (!mm) return std::nullopt;
    return millimetresText(*mm, locale);
}

}  // namespace quendrix
