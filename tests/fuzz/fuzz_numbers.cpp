// The number semantics on any text, pattern and locale: Val, the conversions and the format
// patterns fail only with a run-time error, and a number the component writes reads back.
// The judgement of typed numbers never fails, and what it suggests typing is read as typed.
#include "fuzzinput.h"
#include "settings/numbers.h"
#include "settings/textformat.h"
#include "settings/typednumber.h"

#include <QLocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace quendrix;

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_numbers: %s\n", what);
        std::abort();
    }
}

// Whether `back`, read from the text written of `value`, is `value` to the significant digits
// the text holds (15 for a Double, 7 for a Single).
bool closeEnough(double value, double back, double digits) {
    return std::fabs(back - value) <= std::pow(10.0, 1 - digits) * std::fabs(value) + 1e-300;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QLocale locales[] = {QLocale::c(), QLocale(QLocale::German, QLocale::Germany),
                                      QLocale(QLocale::English, QLocale::UnitedStates),
                                      QLocale(QLocale::French, QLocale::France)};
    FuzzInput input(data, size);
    const std::uint8_t first = input.byte();
    const QLocale& locale = locales[first % std::size(locales)];
    // The rest of the first byte chooses how a box would read the text.
    const unsigned bits = first / std::size(locales);
    NumberBoxRule rule;
    rule.readInLocale = bits & 2;
    rule.readByVal = (bits & 1) || !rule.readInLocale;
    rule.wholeNumber = bits & 4;
    if (bits & 8) {
        rule.lowest = 0;
        rule.highest = 100000;
    }
    const QString pattern = QString::fromUtf8(input.piece());
    const QString text = QString::fromUtf8(input.rest());

    try {
        const double value = Val(text);
        check(std::isfinite(value), "Val gave no finite number");
        const QString written = doubleToText(value, locale);
        check(closeEnough(value, textToDouble(written, locale), 15), "a Double does not read back");
        formatNumber(value, pattern, locale);
        const float single = toSingle(value);
        check(closeEnough(single, textToSingle(singleToText(single, locale), locale), 7),
              "a Single does not read back");
    } catch (const RuntimeError&) {
    }
    const TypedNumber verdict = judgeTypedNumber(text, rule, locale);
    check(verdict.asTyped == verdict.note.isEmpty(), "a mark without a note, or a note unmarked");
    const qsizetype open = verdict.note.indexOf(u'„'), close = verdict.note.indexOf(u'“');
    if (open >= 0 && close > open)
        check(judgeTypedNumber(verdict.note.mid(open + 1, close - open - 1), rule, locale).asTyped,
              "a suggested text is not read as typed");

    try {
        textToLong(text, locale);
    } catch (const RuntimeError&) {
    }
    try {
        textToInteger(text, locale);
    } catch (const RuntimeError&) {
    }
    return 0;
}
