#include "core/calibrationmath.h"

#include "settings/numbers.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quendrix::calibration {

DoubleTable freshTable() {
    return DoubleTable(0, kHighestColumn, 0, 0);
}

int rowCount(const DoubleTable& table) {
    return table.isEmpty() ? 0 : table.ubound(2) - table.lbound(2) + 1;
}

bool isFresh(const DoubleTable& table) {
    if (rowCount(table) != 1) return false;
    const int row = table.lbound(2);
    for (int column = table.lbound(1); column <= table.ubound(1); ++column)
        if (table(column, row) != 0) return false;
    return true;
}

namespace {

// A copy of `table` with rows lbound..lbound+rows-1, taking source rows through `sourceRow`.
template <typename SourceRow>
DoubleTable copyRows(const DoubleTable& table, int rows, SourceRow sourceRow) {
    const int first = table.lbound(2);
    DoubleTable copy(table.lbound(1), table.ubound(1), first, first + rows - 1);
    for (int j = first; j < first + rows; ++j) {
        const int from = sourceRow(j);
        if (from > table.ubound(2)) continue;
        for (int i = table.lbound(1); i <= table.ubound(1); ++i)
            copy(i, j) = table(i, from);
    }
    return copy;
}

}  // namespace

DoubleTable withRowAppended(const DoubleTable& table) {
    if (table.isEmpty()) return freshTable();
    return copyRows(table, rowCount(table) + 1, [](int j) { return j; });
}

DoubleTable withoutRow(const DoubleTable& table, int row) {
    const int rows = rowCount(table);
    if (rows <= 1) return freshTable();
    DoubleTable copy = copyRows(table, rows - 1, [row](int j) { return j < row ? j : j + 1; });
    if (row == table.ubound(2)) {
        copy(FocalLength, copy.ubound(2)) = 0;
        copy(Offset, copy.ubound(2)) = 0;
    }
    return copy;
}

void evaluateRows(DoubleTable& table, double sensorWidth) {
    if (table.isEmpty()) return;
    for (int j = table.lbound(2); j <= table.ubound(2); ++j) {
        if (table(FieldWidth, j) > 0)
            table(Magnification, j) = divide(sensorWidth, table(FieldWidth, j));
        if (j == table.lbound(2)) continue;
        const double a0 = table(Extension, j - 1);
        const double a1 = table(Extension, j);
        const double m0 = table(Magnification, j - 1);
        const double m1 = table(Magnification, j);
        table(FocalLength, j - 1) = divide(a0 - a1, m0 - m1);
        table(Offset, j - 1) = divide(m0 * a1 - m1 * a0, m1 - m0);
    }
}

std::optional<double> meanOfPositive(const DoubleTable& table, int column) {
    if (table.isEmpty()) return std::nullopt;
    double sum = 0;
    int count = 0;
    for (int j = table.lbound(2); j <= table.ubound(2); ++j) {
        if (table(column, j) > 0) {
            sum += table(column, j);
            ++count;
        }
    }
    if (count == 0) return std::nullopt;
    return sum / count;
}

std::optional<double> interpolateFieldWidth(const DoubleTable& table, double extension) {
    if (rowCount(table) < 2) return std::nullopt;
    std::vector<std::pair<double, double>> points;  // (extension, field width)
    for (int j = table.lbound(2); j <= table.ubound(2); ++j)
        points.emplace_back(table(Extension, j), table(FieldWidth, j));
    std::stable_sort(points.begin(), points.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (size_t j = 0; j + 1 < points.size(); ++j) {
        const auto [a0, w0] = points[j];
        const auto [a1, w1] = points[j + 1];
        if (a0 < a1 && a0 <= extension && extension <= a1)
            return w0 + (extension - a0) * (w1 - w0) / (a1 - a0);
    }
    return std::nullopt;
}

std::optional<FittedLine> fittedLine(const DoubleTable& table) {
    if (rowCount(table) < 2) return std::nullopt;
    const auto focalLength = meanOfPositive(table, FocalLength);
    const auto offset = meanOfPositive(table, Offset);
    if (!focalLength || !offset) return std::nullopt;
    return FittedLine{*focalLength, *offset};
}

}  // namespace quendrix::calibration
