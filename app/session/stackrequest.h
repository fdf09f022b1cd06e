#pragma once

#include <QString>
#include <algorithm>
#include <optional>

// A stack from FROM to TO motor steps on axis 0 in PLANES intervals (PLANES + 1 pictures).
struct StackRequest {
    qint32 from = 0;
    qint32 to = 0;
    qint32 planes = 0;

    // Reads "FROM:TO:PLANES"; empty, with *error naming what is wrong, when it cannot be run.
    static std::optional<StackRequest> parse(const QString& text, QString* error);

    qint32 lower() const { return std::min(from, to); }
    qint32 upper() const { return std::max(from, to); }
    qint64 range() const { return qint64(upper()) - lower(); }
    // The steps between planes: the range shared out and rounded to the nearest step, as the
    // panel plans it, unless the last plane would then fall below the lower end; then rounded
    // down, so that every plane lies within the range.
    qint32 planeStep() const;
};
