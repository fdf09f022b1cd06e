#pragma once

#include <QVariant>

namespace quendrix {

// Compares two values as the system compares variants: two numbers (booleans count as numbers,
// True = -1) numerically, two texts by their character codes; a number is less than a text; an
// empty (invalid) value counts as 0 against a number and as "" against a text, and two empty
// values are equal. Returns < 0, 0 or > 0.
int variantCompare(const QVariant& a, const QVariant& b);

// Whether a value counts as a number in such comparisons (booleans do, texts and empty do not).
bool isNumeric(const QVariant& value);

}  // namespace quendrix
