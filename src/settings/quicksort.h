#pragma once

#include "settings/numbers.h"
#include "settings/variantcompare.h"

#include <quendrix/Array2D.h>

#include <QVariant>
#include <cmath>
#include <optional>

namespace quendrix {

inline int compareCells(double a, double b) {
    return a < b ? -1 : (a > b ? 1 : 0);
}
inline int compareCells(const QVariant& a, const QVariant& b) {
    return variantCompare(a, b);
}

// Sorts the records (second index) of `table` ascending by one field, in place (not stable).
// The field used is `column` plus the lower bound of the first index, and each recursion is
// handed that adjusted number again: with a lower bound of 0 the field stays the same, with
// any other lower bound it moves on at every level. That is how the system has always sorted.
// The pivot is the record half-way between start and end, the half-way index rounded half to
// even. Missing start and end mean the whole table. Bad indices are RuntimeError 9.
template <typename T>
void quickSortRows(Array2D<T>& table, int column, std::optional<qint32> start = std::nullopt,
                   std::optional<qint32> end = std::nullopt) {
    const qint32 first = start.value_or(table.lbound(2));
    const qint32 last = end.value_or(table.ubound(2));
    const int field = checkedAdd<qint32>(column, table.lbound(1));
    const qint32 middle = toLong(checkedAdd<qint32>(first, last) / 2.0);
    const T pivot = table(field, middle);

    qint32 i = first;
    qint32 j = last;
    do {
        while (compareCells(table(field, i), pivot) < 0)
            ++i;
        while (compareCells(table(field, j), pivot) > 0)
            --j;
        if (i > j) break;
        table.swapRows(i, j);
        ++i;
        --j;
    } while (i <= j);

    if (first < j) quickSortRows(table, field, first, j);
    if (i < last) quickSortRows(table, field, i, last);
}

}  // namespace quendrix
