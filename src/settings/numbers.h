#pragma once

#include <quendrix/RuntimeError.h>

#include <QLocale>
#include <QString>
#include <QtGlobal>
#include <limits>
#include <optional>

// The number and text semantics used everywhere in the component.
namespace quendrix {

// The numeric value of a text as the panel reads numbers: leading blanks and TABs skipped,
// then the longest leading part that forms a number (sign, digits, "." as decimal point,
// exponent with E or D) is read and the rest ignored; no leading number gives 0.
// Independent of the locale: Val("22,5") is 22. Beyond the Double range is an overflow.
double Val(const QString& text);
// Val, or nothing for a number beyond the Double range (where Val raises an overflow).
std::optional<double> ValInRange(const QString& text);
// Val rounded half to even, or nothing when that is beyond [lowest, highest].
std::optional<qint32> wholeValIn(const QString& text, qint32 lowest, qint32 highest);

// Blanks (only the character 32) removed at both ends, at the start, at the end.
QString Trim(const QString& text);
QString LTrim(const QString& text);
QString RTrim(const QString& text);
// At most `length` characters of `text`, without splitting a character made of two UTF-16
// code units.
QString leftWhole(const QString& text, qsizetype length);

// Text to number as the system's conversions do it, under `locale`: blanks around, an optional
// sign, digits in which the locale's group separator may stand (and is ignored) up to the
// locale's decimal separator, an optional exponent (E with an optional sign and digits).
// Anything else, and the empty text, is a type mismatch (RuntimeError 13). So "22,5" is 22.5
// under German and 225 under English.
double textToDouble(const QString& text, const QLocale& locale);
float textToSingle(const QString& text, const QLocale& locale);    // overflow: error 6
qint16 textToInteger(const QString& text, const QLocale& locale);  // rounds half to even
qint32 textToLong(const QString& text, const QLocale& locale);     // rounds half to even

// Number to a whole number, rounding half to even (2.5 -> 2, 3.5 -> 4); out of range is an
// overflow (RuntimeError 6).
qint16 toInteger(double value);
qint32 toLong(double value);
// Double to Single; beyond the Single range is an overflow.
float toSingle(double value);
// A value the panel only shows or counts with (a slider's range, a number of planes) as an
// int: the whole part, held within the int range; NaN is 0. Never an error.
int clampedInt(double value);

// a / b; b == 0 is a division error (RuntimeError 11), a finite a over a tiny b that leaves
// the Double range an overflow (6).
double divide(double a, double b);

// Whole-number arithmetic of the given width; leaving the range is an overflow.
template <typename T>
T checkedAdd(T a, T b) {
    T r;
    if (__builtin_add_overflow(a, b, &r)) throw RuntimeError(RuntimeError::Overflow);
    return r;
}
template <typename T>
T checkedSub(T a, T b) {
    T r;
    if (__builtin_sub_overflow(a, b, &r)) throw RuntimeError(RuntimeError::Overflow);
    return r;
}
template <typename T>
T checkedMul(T a, T b) {
    T r;
    if (__builtin_mul_overflow(a, b, &r)) throw RuntimeError(RuntimeError::Overflow);
    return r;
}

}  // namespace quendrix
