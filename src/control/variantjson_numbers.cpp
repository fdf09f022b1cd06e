#include "control/variantjson_numbers.h"

#include <QJsonArray>
#include <QLine>
#include <QMargins>
#include <QMetaEnum>
#include <QRect>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>

namespace quendrix::variantjson {

namespace {

// ---- whole numbers and enums

template <typename T>
constexpr std::pair<QMetaType, bool> whole() {
    return {QMetaType::fromType<T>(), std::is_unsigned_v<T>};
}

// The whole-number types, and whether each is unsigned.
constexpr std::pair<QMetaType, bool> kWholeTypes[] = {
    whole<char>(),   whole<signed char>(), whole<uchar>(),     whole<short>(),
    whole<ushort>(), whole<int>(),         whole<uint>(),      whole<long>(),
    whole<ulong>(),  whole<qlonglong>(),   whole<qulonglong>()};

std::optional<bool> wholeUnsigned(QMetaType type) {
    if (type.flags().testFlag(QMetaType::IsEnumeration))
        return type.flags().testFlag(QMetaType::IsUnsignedEnumeration);
    for (const auto& [wholeType, isUnsigned] : kWholeTypes)
        if (wholeType == type) return isUnsigned;
    return std::nullopt;
}

// Reads a whole number in the range of a type `size` bytes wide, as 64 bits: a JSON number that
// is whole (2^60 stays exact: the parser keeps whole numbers as such), or its decimal text.
bool readWhole(const QJsonValue& json, qsizetype size, bool isUnsigned, quint64* bits) {
    QString text = json.toString();
    if (json.isDouble()) {
        const qint64 number = json.toInteger();
        if (double(number) != json.toDouble()) return false;
        text = QString::number(number);
    }
    bool ok = false;
    const bool negative = text.startsWith(u'-');
    const quint64 parsed = negative ? quint64(text.toLongLong(&ok)) : text.toULongLong(&ok);
    if (!ok || text != (negative ? QString::number(qint64(parsed)) : QString::number(parsed)))
        return false;  // only the plain decimal form: no "+1", " 1", "01" or "-0"
    const quint64 max = (isUnsigned ? ~quint64(0) : ~quint64(0) >> 1) >> (64 - 8 * size);
    *bits = parsed;
    return negative ? !isUnsigned && 0 - parsed <= max + 1 : parsed <= max;
}

QMetaEnum metaEnumOf(QMetaType type) {
    const QMetaObject* scope = type.metaObject();
    if (!scope || type.sizeOf() > 4) return {};  // QMetaEnum's values are ints
    QByteArray name = type.name();
    const bool flags = name.startsWith("QFlags<") && name.endsWith('>');
    if (flags) name = name.mid(7, name.size() - 8);
    name = name.mid(name.lastIndexOf(':') + 1);
    for (int i = 0; i < scope->enumeratorCount(); ++i) {
        const QMetaEnum meta = scope->enumerator(i);
        if (meta.isFlag() == flags && name == (flags ? meta.enumName() : meta.name())) return meta;
    }
    return {};
}

std::optional<int> valueOfKeys(const QMetaEnum& meta, const QByteArray& keys) {
    bool ok = false;
    const int value = meta.isFlag() ? meta.keysToValue(keys.constData(), &ok)
                                    : meta.keyToValue(keys.constData(), &ok);
    return ok ? std::optional(value) : std::nullopt;
}

// A value of a whole type from a number in its range.
QVariant converted(QVariant number, QMetaType type) {
    return number.convert(type) ? number : QVariant();
}

// ---- geometry

// The numbers a geometry value is written as. A rectangle's width and height are taken in 64
// bits, so that none overflows.
auto numbersOf(const QPoint& p) {
    return std::array{p.x(), p.y()};
}
auto numbersOf(const QSize& s) {
    return std::array{s.width(), s.height()};
}
auto numbersOf(const QLine& l) {
    return std::array{l.x1(), l.y1(), l.x2(), l.y2()};
}
auto numbersOf(const QMargins& m) {
    return std::array{m.left(), m.top(), m.right(), m.bottom()};
}
auto numbersOf(const QRect& r) {
    return std::array{qint64(r.x()), qint64(r.y()), qint64(r.right()) - r.left() + 1,
                      qint64(r.bottom()) - r.top() + 1};
}
auto numbersOf(const QPointF& p) {
    return std::array{p.x(), p.y()};
}
auto numbersOf(const QSizeF& s) {
    return std::array{s.width(), s.height()};
}
auto numbersOf(const QLineF& l) {
    return std::array{l.x1(), l.y1(), l.x2(), l.y2()};
}
auto numbersOf(const QMarginsF& m) {
    return std::array{m.left(), m.top(), m.right(), m.bottom()};
}
auto numbersOf(const QRectF& r) {
    return std::array{r.x(), r.y(), r.width(), r.height()};
}

template <typename T>
QJsonValue shapeToJson(const QVariant& value) {
    QJsonArray array;
    for (const auto number : numbersOf(value.value<T>())) {
        if constexpr (std::is_floating_point_v<decltype(number)>)
            array.append(doubleToJson(number));
        else
            array.append(qint64(number));
    }
    return array;
}

template <typename T>
QVariant shapeFromJson(const QJsonValue& json) {
    auto numbers = numbersOf(T());
    const QJsonArray array = json.toArray();
    if (array.size() != qsizetype(numbers.size())) return {};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const QJsonValue item = array[qsizetype(i)];
        if constexpr (std::is_floating_point_v<typename decltype(numbers)::value_type>) {
            const auto number = doubleFromJson(item);
            if (!number) return {};
            numbers[i] = *number;
        } else {
            quint64 bits = 0;  // every coordinate is an int
            if (!readWhole(item, sizeof(int), false, &bits)) return {};
            numbers[i] = int(bits);
        }
    }
    if constexpr (std::is_same_v<T, QRect>) {
        const auto [x, y, width, height] = numbers;
        const qint64 right = x + width - 1, bottom = y + height - 1;
        const auto isInt = [](qint64 v) { return v == int(v); };
        if (!isInt(right) || !isInt(bottom)) return {};
        return QRect(QPoint(int(x), int(y)), QPoint(int(right), int(bottom)));
    } else {
        return QVariant::fromValue(std::make_from_tuple<T>(numbers));
    }
}

struct Shape {
    QMetaType type;
    QJsonValue (*write)(const QVariant& value);
    QVariant (*read)(const QJsonValue& json);
};

template <typename T>
constexpr Shape shape() {
    return {QMetaType::fromType<T>(), shapeToJson<T>, shapeFromJson<T>};
}

constexpr Shape kShapes[] = {
    shape<QPoint>(),  shape<QSize>(),  shape<QLine>(),  shape<QMargins>(),  shape<QRect>(),
    shape<QPointF>(), shape<QSizeF>(), shape<QLineF>(), shape<QMarginsF>(), shape<QRectF>()};

const Shape* shapeOf(QMetaType type) {
    for (const Shape& shape : kShapes)
        if (shape.type == type) return &shape;
    return nullptr;
}

}  // namespace

bool isWhole(QMetaType type) {
    return wholeUnsigned(type).has_value();
}

QJsonValue wholeToJson(const QVariant& value) {
    if (const QMetaEnum meta = metaEnumOf(value.metaType()); meta.isValid()) {
        const int number = value.toInt();
        const QByteArray keys =
            meta.isFlag() ? meta.valueToKeys(number) : QByteArray(meta.valueToKey(number));
        if (!keys.isEmpty() && valueOfKeys(meta, keys) == number) return QString::fromLatin1(keys);
    }
    // Beyond 2^53 as texts: many JSON readers keep numbers as doubles.
    constexpr qint64 exact = qint64(1) << 53;
    if (*wholeUnsigned(value.metaType())) {
        const quint64 number = value.toULongLong();
        return number <= quint64(exact) ? QJsonValue(qint64(number)) : QString::number(number);
    }
    const qint64 number = value.toLongLong();
    return number >= -exact && number <= exact ? QJsonValue(number) : QString::number(number);
}

QVariant wholeFromJson(QMetaType type, const QJsonValue& json) {
    if (const QMetaEnum meta = metaEnumOf(type); meta.isValid() && json.isString()) {
        if (const auto value = valueOfKeys(meta, json.toString().toLatin1()))
            return converted(*value, type);
    }
    const bool isUnsigned = *wholeUnsigned(type);
    quint64 bits = 0;
    if (!readWhole(json, type.sizeOf(), isUnsigned, &bits)) return {};
    return converted(isUnsigned ? QVariant(bits) : QVariant(qint64(bits)), type);
}

QJsonValue doubleToJson(double value) {
    if (std::isnan(value)) return QStringLiteral("nan");
    if (std::isinf(value)) return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    if (value == 0 && std::signbit(value)) return QStringLiteral("-0");
    return value;
}

std::optional<double> doubleFromJson(const QJsonValue& json) {
    const QString text = json.toString();
    if (json.isDouble()) return json.toDouble();
    if (text == u"nan") return std::numeric_limits<double>::quiet_NaN();
    if (text == u"inf") return std::numeric_limits<double>::infinity();
    if (text == u"-inf") return -std::numeric_limits<double>::infinity();
    if (text == u"-0") return -0.0;
    return std::nullopt;
}

QJsonValue floatToJson(float value) {
    char text[32];
    const char* end = std::to_chars(text, text + sizeof text, value).ptr;
    double shortest = 0;
    std::from_chars(text, end, shortest);
    return doubleToJson(float(shortest) == value ? shortest : double(value));
}

QVariant floatFromJson(const QJsonValue& json) {
    const auto value = doubleFromJson(json);
    if (!value || (std::isfinite(*value) && std::abs(*value) > std::numeric_limits<float>::max()))
        return {};
    return float(*value);
}

bool isGeometry(QMetaType type) {
    return shapeOf(type) != nullptr;
}

QJsonValue geometryToJson(const QVariant& value) {
    return shapeOf(value.metaType())->write(value);
}

QVariant geometryFromJson(QMetaType type, const QJsonValue& json) {
    return shapeOf(type)->read(json);
}

}  // namespace quendrix::variantjson
