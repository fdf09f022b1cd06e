#include "settings/textformat.h"
#include "settings/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace quendrix {

namespace {

// A positive number as its significant decimal digits d1 d2 ... and the decimal exponent of
// d1: value = d1.d2... * 10^exponent.
struct DecimalDigits {
    std::string digits;
    int exponent = 0;
};

// Rounds to `significant` digits from the exact binary value, without the process locale.
template <typename Float>
DecimalDigits toDecimalDigits(Float magnitude, int significant) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, magnitude,
                                      std::chars_format::scientific, significant - 1);
    const std::string text(buffer, result.ptr);  // "d.ddde+XX", or "de+XX" for one digit
    const size_t e = text.find('e');
    DecimalDigits decimal;
    for (size_t i = 0; i < e; ++i)
        if (text[i] != '.') decimal.digits += text[i];
    decimal.exponent = std::stoi(text.substr(e + 1));
    return decimal;
}

QString latin(const std::string& s) {
    return QString::fromLatin1(s.data(), qsizetype(s.size()));
}

// The general number form: up to `significant` digits, trailing zeros dropped, "0" before the
// separator of values below 1, and the exponent form "1.5E+20" / "1E-07" when the exponent
// is `significant` or more (the digits would no longer show the value exactly) or below -4
// (more than four zeros after the separator).
template <typename Float>
QString generalText(Float value, int significant, const QLocale& locale) {
    if (!std::isfinite(value)) return locale.toString(double(value));
    if (value == 0) return QStringLiteral("0");  // also for -0

    DecimalDigits decimal = toDecimalDigits(std::fabs(value), significant);
    std::string& digits = decimal.digits;
    while (digits.size() > 1 && digits.back() == '0')
        digits.pop_back();
    const int exponent = decimal.exponent;
    const QString point = locale.decimalPoint();

    QString text = value < 0 ? QStringLiteral("-") : QString();
    if (exponent >= significant || exponent < -4) {
        text += QLatin1Char(digits[0]);
        if (digits.size() > 1) text += point + latin(digits.substr(1));
        text += exponent < 0 ? QStringLiteral("E-") : QStringLiteral("E+");
        text += QStringLiteral("%1").arg(std::abs(exponent), 2, 10, QChar(u'0'));
    } else if (exponent >= 0) {
        const size_t whole = size_t(exponent) + 1;
        if (digits.size() <= whole) {
            text += latin(digits) + QString(qsizetype(whole - digits.size()), u'0');
        } else {
            text += latin(digits.substr(0, whole)) + point + latin(digits.substr(whole));
        }
    } else {
        text += QStringLiteral("0") + point + QString(-exponent - 1, u'0') + latin(digits);
    }
    return text;
}

// The parts of a pattern such as "#,##0.00 µ".
struct Pattern {
    QString prefix;
    QString suffix;
    int minWholeDigits = 0;  // the "0" places before the point
    bool grouping = false;   // a "," among the whole places
    int decimals = 0;        // all places after the point
    int minDecimals = 0;     // places up to the last "0" after the point; "#" after it is optional
};

bool isPlace(QChar c) {
    return c == u'#' || c == u'0';
}

Pattern parsePattern(const QString& text) {
    Pattern p;
    qsizetype first = 0;
    while (first < text.size() && !isPlace(text[first]))
        ++first;
    qsizetype last = text.size() - 1;
    while (last >= first && !isPlace(text[last]))
        --last;
    // A point or comma directly before the first place belongs to the number (".00").
    while (first > 0 && (text[first - 1] == u'.' || text[first - 1] == u','))
        --first;

    p.prefix = text.left(first);
    p.suffix = text.mid(last + 1);
    bool afterPoint = false;
    for (qsizetype i = first; i <= last; ++i) {
        const QChar c = text[i];
        if (c == u'.') {
            afterPoint = true;
        } else if (!afterPoint) {
            if (c == u'0') ++p.minWholeDigits;
            if (c == u',') p.grouping = true;
        } else if (isPlace(c)) {
            ++p.decimals;
            if (c == u'0') p.minDecimals = p.decimals;
        }
    }
    return p;
}

// Adds one to the last digit of `digits`, carrying; returns true when a new leading digit
// ("999" -> "1000") appeared.
bool incrementDigits(std::string& digits) {
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (*it != '9') {
            ++*it;
            return false;
        }
        *it = '0';
    }
    digits.insert(digits.begin(), '1');
    return true;
}

}  // namespace

QString singleToText(float value, const QLocale& locale) {
    return generalText(value, 7, locale);
}

QString doubleToText(double value, const QLocale& locale) {
    return generalText(value, 15, locale);
}

QString formatNumber(double value, const QString& pattern, const QLocale& locale) {
    if (pattern.isEmpty()) return doubleToText(value, locale);
    if (!std::isfinite(value)) return locale.toString(value);
    if (std::none_of(pattern.begin(), pattern.end(), isPlace)) return pattern;
    const Pattern p = parsePattern(pattern);

    // Rounding works on the 15 significant digits the value stands for, not on its binary
    // expansion, so 2.675 (stored as 2.67499999...) rounds up like the decimal it shows.
    DecimalDigits decimal = toDecimalDigits(std::fabs(value), 15);
    std::string& digits = decimal.digits;
    const long long keep = decimal.exponent + 1LL + p.decimals;  // digits left of the cut
    if (keep < 0) {
        digits.clear();
    } else if (keep < static_cast<long long>(digits.size())) {
        const bool roundUp = digits[size_t(keep)] >= '5';  // half away from zero
        digits.resize(size_t(keep));
        if (roundUp && incrementDigits(digits)) ++decimal.exponent;
    }

    // Split into whole and fraction digits around the point.
    const long long pointPos = decimal.exponent + 1LL;
    std::string whole;
    std::string fraction;
    if (pointPos <= 0) {
        fraction = std::string(size_t(-pointPos), '0') + digits;
    } else if (size_t(pointPos) >= digits.size()) {
        whole = digits + std::string(size_t(pointPos) - digits.size(), '0');
    } else {
        whole = digits.substr(0, size_t(pointPos));
        fraction = digits.substr(size_t(pointPos));
    }
    fraction.resize(size_t(p.decimals), '0');
    while (fraction.size() > size_t(p.minDecimals) && fraction.back() == '0')
        fraction.pop_back();

    const size_t leading = whole.find_first_not_of('0');
    whole = leading == std::string::npos ? std::string() : whole.substr(leading);
    const bool isZero = whole.empty() && fraction.find_first_not_of('0') == std::string::npos;
    if (whole.size() < size_t(p.minWholeDigits))
        whole.insert(0, size_t(p.minWholeDigits) - whole.size(), '0');

    QString text = (value < 0 && !isZero) ? QStringLiteral("-") : QString();
    text += p.prefix;
    const QString group = locale.groupSeparator();
    for (size_t i = 0; i < whole.size(); ++i) {
        if (p.grouping && i > 0 && (whole.size() - i) % 3 == 0) text += group;
        text += QLatin1Char(whole[i]);
    }
    if (!fraction.empty()) text += locale.decimalPoint() + latin(fraction);
    text += p.suffix;
    return text;
}

QString asCaption(const QString& text) {
    constexpr qsizetype kLongestCaption = 1024;
    return leftWhole(text, kLongestCaption);
}

}  // namespace quendrix
