#pragma once

#include <QString>
#include <optional>

// A stack from FROM to TO motor steps on axis 0 in PLANES intervals (PLANES + 1 pictures).
struct StackRequest {
    qint32 from = 0;
    qint32 to = 0;
    qint32 planes = 0;

    // Reads "FROM:TO:PLANES"; empty, with *error naming what is wrong, when it cannot be run.
    static std::optional<StackRequest> parse(const QString& text, QString* error);
};
