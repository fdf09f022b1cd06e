#pragma once

#include <QLocale>
#include <QString>
#include <limits>
#include <optional>

// Whether a number typed into a box is read as it was typed, and if not, what the panel
// understood. The panel's conversions stay as they are (see numbers.h); this only tells the
// user when a text means one number to a person and another to the panel.
namespace quendrix {

// How the panel reads one box, and which numbers make sense there.
struct NumberBoxRule {
    bool readByVal = true;      // Val: the leading number, "." as the decimal point
    bool readInLocale = false;  // textToDouble under the panel's locale: the whole text
    bool wholeNumber = false;   // a count or a position in steps
    double lowest = -std::numeric_limits<double>::infinity();
    double highest = std::numeric_limits<double>::infinity();
};

// What a person means by `text` when typing it under `locale`: the whole text as a number,
// the locale's group separators only in their places ("1.000" is a thousand under German);
// a lone "." or "," that cannot be a group separator is the decimal point ("23.6" is 23.6
// under German, "22,5" is 22.5 under English). Nothing when the text is no number.
std::optional<double> meantNumber(const QString& text, const QLocale& locale);

struct TypedNumber {
    bool asTyped = true;  // every reading gives the number meant, within the box's range
    QString note;         // otherwise: what was understood, and how to type what was meant
};

// Judges the text of a box read by `rule` under `locale`. Never throws.
TypedNumber judgeTypedNumber(const QString& text, const NumberBoxRule& rule, const QLocale& locale);

}  // namespace quendrix
