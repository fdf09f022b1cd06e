#include "settings/mapping.h"

#include "settings/numbers.h"

namespace quendrix {

float mapRange(qint32 x, qint32 in_min, qint32 in_max, qint32 out_min, qint32 out_max) {
    const qint32 a = checkedMul(checkedSub(out_max, out_min), checkedSub(x, in_min));
    const qint32 b = checkedAdd(checkedSub(in_max, in_min), out_min);
    return static_cast<float>(divide(double(a), double(b)));
}

}  // namespace quendrix
