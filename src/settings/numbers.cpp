#include "settings/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace quendrix {

namespace {

// A number taken apart into its pieces, before the value is computed.
struct NumberParts {
    bool negative = false;
    std::string digits;      // whole and fraction digits, without the decimal point
    int wholeDigits = 0;     // how many of `digits` stand before the point
    long long exponent = 0;  // the written exponent, saturated far beyond the double range
};

bool isDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

// Adds one exponent digit; stops growing long before the long long range, since anything
// past a few hundred is out of range for a double anyway.
void addExponentDigit(long long& exponent, QChar c) {
    if (exponent < 1000000) exponent = exponent * 10 + (c.unicode() - u'0');
}

// The value of the parts. Out of the double range is an overflow; below it is 0.
double partsToDouble(const NumberParts& parts) {
    // std::from_chars ignores the process locale, which Qt sets from the environment.
    std::string text = parts.digits;
    if (text.empty()) return 0.0;
    text.insert(static_cast<size_t>(parts.wholeDigits), 1, '.');
    text += 'e';
    text += std::to_string(parts.exponent);

    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        // Tell overflow from underflow by the position of the first significant digit.
        const size_t firstSignificant = parts.digits.find_first_not_of('0');
        if (firstSignificant == std::string::npos) return 0.0;
        const long long magnitude =
            parts.wholeDigits - static_cast<long long>(firstSignificant) - 1 + parts.exponent;
        if (magnitude >= 0) throw RuntimeError(RuntimeError::Overflow);
        return 0.0;
    }
    if (error != std::errc() || end != text.data() + text.size())
        throw RuntimeError(RuntimeError::TypeMismatch);
    if (value == 0.0) return 0.0;  // no negative zero
    return parts.negative ? -value : value;
}

bool matchesAt(const QString& text, qsizetype pos, const QString& what) {
    return !what.isEmpty() && QStringView(text).mid(pos).startsWith(what);
}

// Rounds to the nearest whole number, ties to the even one, whatever the FPU mode is.
double roundHalfEven(double value) {
    const double floor = std::floor(value);
    const double fraction = value - floor;
    if (fraction > 0.5) return floor + 1.0;
    if (fraction < 0.5) return floor;
    return std::fmod(floor, 2.0) == 0.0 ? floor : floor + 1.0;
}

template <typename T>
T toWhole(double value) {
    const double rounded = roundHalfEven(value);
    // NaN fails both comparisons and is an overflow as well.
    if (!(rounded >= std::numeric_limits<T>::min() && rounded <= std::numeric_limits<T>::max()))
        throw RuntimeError(RuntimeError::Overflow);
    return static_cast<T>(rounded);
}

}  // namespace

double Val(const QString& text) {
    qsizetype pos = 0;
    const qsizetype size = text.size();
    while (pos < size && (text[pos] == u' ' || text[pos] == u'\t'))
        ++pos;

    NumberParts parts;
    if (pos < size && (text[pos] == u'+' || text[pos] == u'-')) {
        parts.negative = text[pos] == u'-';
        ++pos;
    }
    while (pos < size && isDigit(text[pos])) {
        parts.digits += char(text[pos].unicode());
        ++parts.wholeDigits;
        ++pos;
    }
    if (pos < size && text[pos] == u'.') {
        ++pos;
        while (pos < size && isDigit(text[pos]))
            parts.digits += char(text[pos++].unicode());
    }
    if (parts.digits.empty()) return 0.0;

    // The exponent counts only with at least one digit; otherwise the number ends before it.
    if (pos < size && QStringView(u"EeDd").contains(text[pos])) {
        qsizetype e = pos + 1;
        bool negativeExponent = false;
        if (e < size && (text[e] == u'+' || text[e] == u'-')) {
            negativeExponent = text[e] == u'-';
            ++e;
        }
        if (e < size && isDigit(text[e])) {
            while (e < size && isDigit(text[e]))
                addExponentDigit(parts.exponent, text[e++]);
            if (negativeExponent) parts.exponent = -parts.exponent;
        }
    }
    return partsToDouble(parts);
}

std::optional<double> ValInRange(const QString& text) {
    try {
        return Val(text);
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
}

std::optional<qint32> wholeValIn(const QString& text, qint32 lowest, qint32 highest) {
    const std::optional<double> value = ValInRange(text);
    if (!value) return std::nullopt;
    const double rounded = roundHalfEven(*value);
    if (!(rounded >= lowest && rounded <= highest)) return std::nullopt;
    return qint32(rounded);
}

QString leftWhole(const QString& text, qsizetype length) {
    if (text.size() <= length) return text;
    QString cut = text.left(length);
    if (!cut.isEmpty() && cut.back().isHighSurrogate()) cut.chop(1);
    return cut;
}

QString LTrim(const QString& text) {
    qsizetype start = 0;
    while (start < text.size() && text[start] == u' ')
        ++start;
    return text.mid(start);
}

QString RTrim(const QString& text) {
    qsizetype end = text.size();
    while (end > 0 && text[end - 1] == u' ')
        --end;
    return text.left(end);
}

QString Trim(const QString& text) {
    return LTrim(RTrim(text));
}

double textToDouble(const QString& text, const QLocale& locale) {
    const QString body = Trim(text);
    const QString decimal = locale.decimalPoint();
    const QString group = locale.groupSeparator();
    const qsizetype size = body.size();
    qsizetype pos = 0;
    NumberParts parts;

    if (pos < size && (body[pos] == u'+' || body[pos] == u'-')) {
        parts.negative = body[pos] == u'-';
        ++pos;
    } else if (matchesAt(body, pos, locale.negativeSign())) {
        parts.negative = true;
        pos += locale.negativeSign().size();
    } else if (matchesAt(body, pos, locale.positiveSign())) {
        pos += locale.positiveSign().size();
    }

    // Group separators may stand anywhere among the whole digits and are ignored. The decimal
    // separator is checked first, for locales where the two might look alike.
    bool sawPoint = false;
    while (pos < size) {
        if (isDigit(body[pos])) {
            parts.digits += char(body[pos].unicode());
            if (!sawPoint) ++parts.wholeDigits;
            ++pos;
        } else if (!sawPoint && matchesAt(body, pos, decimal)) {
            sawPoint = true;
            pos += decimal.size();
        } else if (!sawPoint && matchesAt(body, pos, group)) {
            pos += group.size();
        } else {
            break;
        }
    }
    if (parts.digits.empty()) throw RuntimeError(RuntimeError::TypeMismatch);

    if (pos < size && (body[pos] == u'E' || body[pos] == u'e')) {
        ++pos;
        bool negativeExponent = false;
        if (pos < size && (body[pos] == u'+' || body[pos] == u'-')) {
            negativeExponent = body[pos] == u'-';
            ++pos;
        }
        if (pos >= size || !isDigit(body[pos])) throw RuntimeError(RuntimeError::TypeMismatch);
        while (pos < size && isDigit(body[pos]))
            addExponentDigit(parts.exponent, body[pos++]);
        if (negativeExponent) parts.exponent = -parts.exponent;
    }
    if (pos != size) throw RuntimeError(RuntimeError::TypeMismatch);
    return partsToDouble(parts);
}

float textToSingle(const QString& text, const QLocale& locale) {
    return toSingle(textToDouble(text, locale));
}

qint16 textToInteger(const QString& text, const QLocale& locale) {
    return toInteger(textToDouble(text, locale));
}

qint32 textToLong(const QString& text, const QLocale& locale) {
    return toLong(textToDouble(text, locale));
}

qint16 toInteger(double value) {
    return toWhole<qint16>(value);
}

qint32 toLong(double value) {
    return toWhole<qint32>(value);
}

float toSingle(double value) {
    // Beyond the largest float plus half a unit in its last place the value rounds to infinity.
    constexpr double limit = 0x1.ffffffp127;
    if (std::isinf(value) || std::fabs(value) >= limit) throw RuntimeError(RuntimeError::Overflow);
    return static_cast<float>(value);
}

int clampedInt(double value) {
    if (std::isnan(value)) return 0;
    return int(std::clamp(std::trunc(value), double(std::numeric_limits<int>::min()),
                          double(std::numeric_limits<int>::max())));
}

double divide(double a, double b) {
    if (b == 0.0) throw RuntimeError(RuntimeError::DivisionByZero);
    const double result = a / b;
    if (std::isinf(result) && std::isfinite(a)) throw RuntimeError(RuntimeError::Overflow);
    return result;
}

}  // namespace quendrix
