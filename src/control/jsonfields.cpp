#include "control/jsonfields.h"

#include <QJsonDocument>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace quendrix::jsonfields {

namespace {

// Whole numbers beyond this are written as decimal texts: many JSON readers keep numbers as
// doubles.
constexpr qint64 kExactLimit = qint64(1) << 53;

}  // namespace

bool fail(QString& why, const QString& reason) {
    why = reason;
    return false;
}

QString shown(const QJsonValue& json) {
    QString text =
        QString::fromUtf8(QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Compact));
    text = text.mid(1, text.size() - 2);
    if (text.size() > 40) text = text.left(37) + QStringLiteral("...");
    return text;
}

// ---- whole numbers

QJsonValue wholeToJson(qint64 value) {
    if (value >= -kExactLimit && value <= kExactLimit) return QJsonValue(value);
    return QString::number(value);
}

QJsonValue unsignedToJson(quint64 value) {
    if (value <= quint64(kExactLimit)) return QJsonValue(qint64(value));
    return QString::number(value);
}

bool readWholeIn(const QJsonValue& json, qint64 min, quint64 max, quint64* bits, QString& why) {
    bool negative = false, ok = false;
    quint64 magnitude = 0;
    if (json.isDouble()) {
        const QVariant number = json.toVariant();
        if (number.typeId() == QMetaType::LongLong) {  // the parser kept it exact
            const qint64 value = number.toLongLong();
            negative = value < 0;
            magnitude = negative ? 0 - quint64(value) : quint64(value);
            ok = true;
        } else {
            const double value = json.toDouble();
            ok = std::abs(value) <= double(kExactLimit) && value == std::trunc(value);
            negative = value < 0;
            magnitude = ok ? quint64(std::abs(value)) : 0;
        }
    } else if (json.isString()) {
        const QString text = json.toString();
        negative = text.startsWith(u'-');
        const QStringView digits = QStringView(text).mid(negative ? 1 : 0);
        ok = !digits.isEmpty() && digits.size() <= 20 &&
             std::all_of(digits.begin(), digits.end(),
                         [](QChar c) { return c >= u'0' && c <= u'9'; });
        if (ok) magnitude = digits.toULongLong(&ok);
    }
    if (!ok) return fail(why, QStringLiteral("%1 is not a whole number").arg(shown(json)));
    negative = negative && magnitude != 0;
    const bool inRange = negative ? min < 0 && magnitude <= 0 - quint64(min)
                                  : magnitude <= max && (min <= 0 || magnitude >= quint64(min));
    if (!inRange)
        return fail(why, QStringLiteral("%1 is out of range (%2 to %3)")
                             .arg(shown(json), QString::number(min), QString::number(max)));
    *bits = negative ? 0 - magnitude : magnitude;
    return true;
}

bool readSigned(const QJsonValue& json, qint64 min, qint64 max, qint64* out, QString& why) {
    quint64 bits = 0;
    if (!readWholeIn(json, min, quint64(max), &bits, why)) return false;
    *out = qint64(bits);
    return true;
}

bool readUnsigned(const QJsonValue& json, quint64 max, quint64* out, QString& why) {
    return readWholeIn(json, 0, max, out, why);
}

bool readInt(const QJsonValue& json, int min, int max, int* out, QString& why) {
    qint64 value = 0;
    if (!readSigned(json, min, max, &value, why)) return false;
    *out = int(value);
    return true;
}

bool readQint64(const QJsonValue& json, qint64* out, QString& why) {
    return readSigned(json, std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(),
                      out, why);
}

bool readBool(const QJsonValue& json, bool* out, QString& why) {
    if (!json.isBool())
        return fail(why, QStringLiteral("%1 is not true or false").arg(shown(json)));
    *out = json.toBool();
    return true;
}

// ---- floating point

QJsonValue doubleToJson(double value) {
    if (std::isnan(value)) return QStringLiteral("nan");
    if (std::isinf(value)) return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    if (value == 0 && std::signbit(value)) return QStringLiteral("-0");
    return value;
}

QJsonValue floatToJson(float value) {
    if (!std::isfinite(value) || value == 0) return doubleToJson(value);
    // The shortest decimal that reads back as this float: 23.6, not 23.600000381469727.
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, value);
    double shortest = 0;
    std::from_chars(text, written.ptr, shortest);
    return float(shortest) == value ? shortest : double(value);
}

bool readDouble(const QJsonValue& json, double* out, QString& why) {
    if (json.isDouble()) {
        *out = json.toDouble();
        return true;
    }
    const QString text = json.toString();
    if (text == u"nan")
        *out = std::numeric_limits<double>::quiet_NaN();
    else if (text == u"inf")
        *out = std::numeric_limits<double>::infinity();
    else if (text == u"-inf")
        *out = -std::numeric_limits<double>::infinity();
    else if (text == u"-0")
        *out = -0.0;
    else
        return fail(why, QStringLiteral("%1 is not a number").arg(shown(json)));
    return true;
}

bool readFloat(const QJsonValue& json, float* out, QString& why) {
    double value = 0;
    if (!readDouble(json, &value, why)) return false;
    if (std::isfinite(value) && std::isinf(float(value)))
        return fail(why, QStringLiteral("%1 is out of range for a float").arg(shown(json)));
    *out = float(value);
    return true;
}

bool readFinite(const QJsonValue& json, double* out, QString& why) {
    return readDouble(json, out, why) &&
           (std::isfinite(*out) || fail(why, QStringLiteral("%1 is not finite").arg(shown(json))));
}

bool readArray(const QJsonValue& json, qsizetype size, QJsonArray* out, QString& why) {
    if (!json.isArray() || json.toArray().size() != size)
        return fail(why, QStringLiteral("%1 is not an array of %2 numbers")
                             .arg(shown(json), QString::number(size)));
    *out = json.toArray();
    return true;
}

// ---- texts

QJsonValue stringToJson(const QString& text) {
    // A null text stays apart from an empty one. QJsonDocument writes a lone surrogate as a
    // \uXXXX escape and reads it back, so every text passes as it is.
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

bool readString(const QJsonValue& json, QString* out, QString& why) {
    if (!json.isString() && !json.isNull())
        return fail(why, QStringLiteral("%1 is not a text").arg(shown(json)));
    *out = json.isNull() ? QString() : json.toString();
    return true;
}

QJsonArray stringListToJson(const QStringList& list) {
    QJsonArray array;
    for (const QString& text : list)
        array.append(stringToJson(text));
    return array;
}

bool readStringList(const QJsonValue& json, QStringList* out, QString& why) {
    if (!json.isArray())
        return fail(why, QStringLiteral("%1 is not a list of texts").arg(shown(json)));
    QStringList list;
    for (const QJsonValue& item : json.toArray()) {
        QString text;
        if (!readString(item, &text, why)) return false;
        list.append(text);
    }
    *out = list;
    return true;
}

QJsonValue bytesToJson(const QByteArray& bytes) {
    if (bytes.isNull()) return QJsonValue::Null;
    return QString::fromLatin1(bytes.toBase64());
}

bool readBase64(const QJsonValue& json, QByteArray* out, QString& why) {
    if (json.isNull()) {
        *out = QByteArray();
        return true;
    }
    auto decoded = QByteArray::fromBase64Encoding(json.toString().toLatin1(),
                                                  QByteArray::AbortOnBase64DecodingErrors);
    if (!json.isString() || !decoded)
        return fail(why, QStringLiteral("%1 is not base64").arg(shown(json)));
    *out = *decoded;
    return true;
}

// ---- enum keys

QJsonValue keyToJson(const QMetaEnum& meta, int value) {
    if (const char* key = meta.valueToKey(value)) return QString::fromLatin1(key);
    return value;
}

bool readKey(const QMetaEnum& meta, const QJsonValue& json, int min, int max, int* out,
             QString& why) {
    if (json.isString()) {
        bool ok = false;
        const int value = meta.keyToValue(json.toString().toLatin1().constData(), &ok);
        if (ok && value >= min && value <= max) {
            *out = value;
            return true;
        }
        return fail(why,
                    QStringLiteral("%1 is not a %2").arg(shown(json), QLatin1String(meta.name())));
    }
    return readInt(json, min, max, out, why);
}

// ---- objects

Members::Members(const QJsonValue& json, const char* what, std::initializer_list<const char*> names,
                 QString& why)
    : object_(json.toObject()), why_(why) {
    ok_ = json.isObject() ||
          fail(why, QStringLiteral("%1 is not %2").arg(shown(json), QLatin1String(what)));
    for (auto it = object_.begin(); ok_ && it != object_.end(); ++it) {
        if (std::none_of(names.begin(), names.end(),
                         [&](const char* name) { return it.key() == QLatin1String(name); }))
            ok_ = fail(
                why,
                QStringLiteral("%1 has no member %2").arg(QLatin1String(what), shown(it.key())));
    }
}

void Members::blame(const char* name) {
    why_ = QStringLiteral("%1: %2").arg(QLatin1String(name), why_);
}

void Members::missing(const char* name) {
    ok_ = fail(why_, QStringLiteral("%1 is missing").arg(QLatin1String(name)));
}

}  // namespace quendrix::jsonfields
