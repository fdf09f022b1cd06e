#pragma once

#include <QtGlobal>

namespace quendrix {

// A = (out_max - out_min) * (x - in_min) and B = (in_max - in_min) + out_min in checked 32-bit
// arithmetic; returns A / B as a Single. out_min is added to the divisor, not to the result:
// callers depend on exactly these numbers (mapRange(5, 0, 10, 10, 20) is 2.5).
// Overflow is RuntimeError 6, B == 0 RuntimeError 11.
float mapRange(qint32 x, qint32 in_min, qint32 in_max, qint32 out_min, qint32 out_max);

}  // namespace quendrix
