#pragma once

#include <QLocale>
#include <QString>

// Numbers as the component writes them into captions, boxes and files.
namespace quendrix {

// A number as text, the way the system converts numbers to text: no leading blank, the
// locale's decimal separator, no group separators, up to 7 significant digits for a Single and
// 15 for a Double, and an exponent form ("1,5E+20", "1E-07") for very large or small values.
QString singleToText(float value, const QLocale& locale);
QString doubleToText(double value, const QLocale& locale);

// A number formatted with one of the system's patterns: "##,##0.00", "##,##0.000",
// "###0.000", "##0.00", "000.00", "#,##0 µ", "#0.0 µ", "#0.00 µ" (and any pattern of the same
// kind: "#" and "0" digit places, a "," anywhere in the whole part for grouping, one "." for
// the decimals, literal text after the last digit place). The locale gives the decimal and
// group separators. Rounds half away from zero on the decimal value (2.675 -> "2.68"); a
// value that rounds to zero is shown without a minus sign.
QString formatNumber(double value, const QString& pattern, const QLocale& locale);

}  // namespace quendrix
