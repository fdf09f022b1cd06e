#pragma once

#include <quendrix/Array2D.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

// The file a calibration table is kept in (Windows-1252 text). Line 1: the sensor width at
// the time of measuring; line 2: the highest column index; line 3: the highest row index N;
// line 4: the column titles, quoted and separated by commas; then the table row by row, one
// number per line. Reading accepts items separated by commas or line ends (CR LF or LF),
// numbers with "." as decimal point, with or without a leading zero, with an exponent and with
// blanks around them.
namespace quendrix::calibration {

struct CalibrationFile {
    float sensorWidth = 0;
    DoubleTable table;  // columns 0..4, rows 0..N
};

// The titles written on line 4.
QStringList columnTitles();

// Reads a file's bytes. A file shorter than its header promises is RuntimeError 62, a number
// item that is no number 13, a negative index 9. Columns beyond 4 are dropped, missing ones
// stay 0.
CalibrationFile parseCalibrationFile(const QByteArray& bytes);
// The bytes of a file holding `table` (CR LF line ends).
QByteArray formatCalibrationFile(float sensorWidth, const DoubleTable& table);

// The same on a file; one that cannot be read or written is RuntimeError 75.
CalibrationFile readCalibrationFile(const QString& path);
void writeCalibrationFile(const QString& path, float sensorWidth, const DoubleTable& table);

}  // namespace quendrix::calibration
