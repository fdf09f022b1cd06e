#pragma once

#include <QLocale>
#include <QString>

// Numbers as the component writes them into captions, boxes and files.
namespace quendrix {

// A number as text, the way the system converts numbers to text: no leading blank, the
// locale's decimal separator, no group separators, up to 7 significant digits for a Single and
// 15 for a Double, and an exponent form ("1,5E+20", "1E-07") for very large or small values:
// when the decimal exponent is 7 (Single) or 15 (Double) or more, or below -4. A Single is
// rounded to its 7 digits first, so 0.1f is "0.1".
QString singleToText(float value, const QLocale& locale);
QString doubleToText(double value, const QLocale& locale);

// A number formatted with one of the system's patterns: "##,##0.00", "##,##0.000",
// "###0.000", "##0.00", "000.00", "#,##0 µ", "#0.0 µ", "#0.00 µ" (and any pattern of the same
// kind: "#" and "0" digit places, a "," anywhere in the whole part for grouping, one "." for
// the decimals, literal text after the last digit place). The locale gives the decimal and
// group separators. "#" places after the point that come after the last "0" there are
// optional (trailing zeros dropped). Rounds half away from zero on the value's 15 significant
// decimal digits (2.675 -> "2.68"); a value that rounds to zero is shown without a minus sign.
// An empty pattern gives the plain number text, one without digit places itself.
QString formatNumber(double value, const QString& pattern, const QLocale& locale);

// A text as a caption shows it: at most 1024 characters, a longer one is cut. The panel lays
// itself out around its captions, and one of a million characters would make it millions of
// pixels wide.
QString asCaption(const QString& text);

}  // namespace quendrix
