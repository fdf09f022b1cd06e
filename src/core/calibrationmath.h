#pragma once

#include <quendrix/Array2D.h>

#include <optional>

// The arithmetic of a bellows calibration table (column, row), free of widgets and files.
namespace quendrix::calibration {

// The columns of a table row.
enum Column : int {
    FieldWidth = 0,     // measured field width, mm
    Extension = 1,      // rings plus bellows extension at the measurement, mm
    Magnification = 2,  // sensor width / field width
    FocalLength = 3,    // from this row and the next
    Offset = 4,         // s0, from this row and the next
};
constexpr int kHighestColumn = Offset;

// A fresh measuring series: columns 0..4 and one row of zeros.
DoubleTable freshTable();
// True for a fresh series' single row of zeros, which the first measurement fills.
bool isFresh(const DoubleTable& table);
int rowCount(const DoubleTable& table);

// The table with one more row of zeros at the end.
DoubleTable withRowAppended(const DoubleTable& table);
// The table without `row`. Removing the last row leaves its predecessor last; that row's
// focal length and offset came from the removed one and are cleared.
DoubleTable withoutRow(const DoubleTable& table, int row);

// Derives magnification, focal length and offset row by row. A row with a field width above 0
// gets the magnification sensorWidth / width; one without keeps its stored magnification.
// Each row except the last gets the focal length and offset of the pair it forms with the
// next: f = (a(j) - a(j+1)) / (m(j) - m(j+1)), s0 = (m(j) a(j+1) - m(j+1) a(j)) / (m(j+1) -
// m(j)). The last row keeps what it held. Two neighbouring rows of equal magnification are a
// division by zero (RuntimeError 11); the table is then partly evaluated.
void evaluateRows(DoubleTable& table, double sensorWidth);

// The mean of `column` over the rows where it is above 0; none when no row is.
std::optional<double> meanOfPositive(const DoubleTable& table, int column);

// The field width at `extension`, interpolated linearly between the two measurements (by
// extension) that bracket it; none outside them or with fewer than two rows.
std::optional<double> interpolateFieldWidth(const DoubleTable& table, double extension);

// The straight line a = focalLength * m - offset through the measurements, from the means of
// the derived columns; none for fewer than two rows or when either mean is missing.
struct FittedLine {
    double focalLength = 0;
    double offset = 0;  // s0
    double extensionAt(double magnification) const { return focalLength * magnification - offset; }
};
std::optional<FittedLine> fittedLine(const DoubleTable& table);

}  // namespace quendrix::calibration
