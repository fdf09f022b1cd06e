#include "session/stackrequest.h"

#include <QStringList>
#include <cstdlib>

namespace {

std::optional<qint32> wholeSteps(const QString& text) {
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    return ok ? std::optional<qint32>(value) : std::nullopt;
}

}  // namespace

std::optional<StackRequest> StackRequest::parse(const QString& text, QString* error) {
    const QStringList parts = text.split(QLatin1Char(':'));
    const auto usage = [&](const QString& why) {
        *error = QStringLiteral("--stack %1: %2 (FROM:TO:PLANES, e.g. 2000:6000:8)").arg(text, why);
        return std::nullopt;
    };
    if (parts.size() != 3) return usage(QStringLiteral("three numbers separated by colons"));
    const auto from = wholeSteps(parts[0]);
    const auto to = wholeSteps(parts[1]);
    const auto planes = wholeSteps(parts[2]);
    if (!from || !to) return usage(QStringLiteral("FROM and TO are whole motor steps"));
    if (*from < 0 || *to < 0) return usage(QStringLiteral("positions below 0 are off the axis"));
    if (!planes || *planes < 1 || *planes > 9999)
        return usage(QStringLiteral("PLANES is a whole number of intervals from 1 to 9999"));
    if (qint64(std::abs(qint64(*to) - *from)) < *planes)
        return usage(
            QStringLiteral("%1 intervals need at least %1 steps between FROM and TO").arg(*planes));
    return StackRequest{*from, *to, *planes};
}

qint32 StackRequest::planeStep() const {
    const qint64 nearest = (range() + planes / 2) / planes;
    return qint32(nearest * planes <= range() ? nearest : range() / planes);
}
