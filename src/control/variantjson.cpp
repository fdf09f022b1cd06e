#include "control/variantjson.h"

#include "control/jsonfields.h"
#include "control/variantjson_gui.h"

#include <QBrush>
#include <QColor>
#include <QCursor>
#include <QDateTime>
#include <QFont>
#include <QIcon>
#include <QJsonArray>
#include <QJsonObject>
#include <QKeySequence>
#include <QLine>
#include <QLocale>
#include <QMargins>
#include <QMetaEnum>
#include <QPalette>
#include <QRect>
#include <QRegion>
#include <QSet>
#include <QSizePolicy>
#include <QTimeZone>
#include <QUrl>
#include <QUuid>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <tuple>

namespace quendrix::variantjson {

namespace {

using namespace jsonfields;

// Lists and maps inside a value may nest this deep.
constexpr int kNestingLimit = 16;

bool isEnum(QMetaType type) {
    return type.flags().testFlag(QMetaType::IsEnumeration);
}

// The type a document names: only plain type names are looked up.
QMetaType typeNamed(const QString& name) {
    if (name.isEmpty() || name.size() > 200) return {};
    for (const QChar c : name)
        if (c.unicode() >= 128 || !(c.isLetterOrNumber() || QStringView(u"_:<>, *&").contains(c)))
            return {};
    const QByteArray latin = name.toLatin1();
    QMetaType type = QMetaType::fromName(latin);
    if (!type.isValid()) {
        // An enum type is known by name only once something has asked for it; the types of the
        // widget properties are the ones a host is most likely to keep in a bag.
        static const bool widgetTypesKnown = [] {
            for (int i = 0; i < QWidget::staticMetaObject.propertyCount(); ++i)
                QWidget::staticMetaObject.property(i).metaType().id();
            return true;
        }();
        Q_UNUSED(widgetTypesKnown);
        type = QMetaType::fromName(latin);
    }
    return type;
}

// ---- whole numbers and enums

// The whole-number types and enums: the range a value is read in, and whether the type's
// storage (1, 2, 4 or 8 bytes) holds an unsigned number.
struct WholeType {
    qint64 min;
    quint64 max;
    bool isUnsigned;
};

template <typename T>
constexpr WholeType whole() {
    return {qint64(std::numeric_limits<T>::min()), quint64(std::numeric_limits<T>::max()),
            std::is_unsigned_v<T>};
}

std::optional<WholeType> wholeTypeOf(QMetaType type) {
    if (isEnum(type)) {
        const bool isUnsigned = type.flags().testFlag(QMetaType::IsUnsignedEnumeration);
        switch (type.sizeOf()) {
            case 1:
                return isUnsigned ? whole<quint8>() : whole<qint8>();
            case 2:
                return isUnsigned ? whole<quint16>() : whole<qint16>();
            case 4:
                return isUnsigned ? whole<quint32>() : whole<qint32>();
            case 8:
                return isUnsigned ? whole<quint64>() : whole<qint64>();
            default:
                return std::nullopt;
        }
    }
    switch (type.id()) {
        case QMetaType::Char:  // read in the range of either kind of char
            return WholeType{-128, 255, std::is_unsigned_v<char>};
        case QMetaType::SChar:
            return whole<signed char>();
        case QMetaType::UChar:
            return whole<uchar>();
        case QMetaType::Short:
            return whole<short>();
        case QMetaType::UShort:
            return whole<ushort>();
        case QMetaType::Int:
            return whole<int>();
        case QMetaType::UInt:
            return whole<uint>();
        case QMetaType::Long:
            return whole<long>();
        case QMetaType::ULong:
            return whole<ulong>();
        case QMetaType::LongLong:
            return whole<qlonglong>();
        case QMetaType::ULongLong:
            return whole<qulonglong>();
        case QMetaType::Char16:
            return whole<char16_t>();
        case QMetaType::Char32:
            return whole<char32_t>();
        default:
            return std::nullopt;
    }
}

// The number in a value's storage as 64 bits, sign-extended for a signed type.
quint64 storedBits(const QVariant& value, bool isUnsigned) {
    const void* data = value.constData();
    switch (value.metaType().sizeOf()) {
        case 1: {
            quint8 v = 0;
            std::memcpy(&v, data, 1);
            return isUnsigned ? v : quint64(qint64(qint8(v)));
        }
        case 2: {
            quint16 v = 0;
            std::memcpy(&v, data, 2);
            return isUnsigned ? v : quint64(qint64(qint16(v)));
        }
        case 4: {
            quint32 v = 0;
            std::memcpy(&v, data, 4);
            return isUnsigned ? v : quint64(qint64(qint32(v)));
        }
        default: {
            quint64 v = 0;
            std::memcpy(&v, data, 8);
            return v;
        }
    }
}

QJsonValue storedToJson(quint64 bits, bool isUnsigned) {
    return isUnsigned ? unsignedToJson(bits) : wholeToJson(qint64(bits));
}

// A value of the type holding the low bytes of `bits`.
QVariant storedVariant(QMetaType type, quint64 bits) {
    alignas(8) unsigned char storage[8] = {};
    const quint8 v8 = quint8(bits);
    const quint16 v16 = quint16(bits);
    const quint32 v32 = quint32(bits);
    switch (type.sizeOf()) {
        case 1:
            std::memcpy(storage, &v8, 1);
            break;
        case 2:
            std::memcpy(storage, &v16, 2);
            break;
        case 4:
            std::memcpy(storage, &v32, 4);
            break;
        default:
            std::memcpy(storage, &bits, 8);
    }
    return QVariant(type, storage);
}

bool readStored(QMetaType type, const WholeType& range, const QJsonValue& json, QVariant* out,
                QString& why) {
    quint64 bits = 0;
    if (!readWholeIn(json, range.min, range.max, &bits, why)) return false;
    *out = storedVariant(type, bits);
    return true;
}

QMetaEnum metaEnumOf(QMetaType type) {
    const QMetaObject* scope = type.metaObject();
    if (!scope) return {};
    QByteArray name = type.name();
    const bool flags = name.startsWith("QFlags<") && name.endsWith('>');
    if (flags) name = name.mid(7, name.size() - 8);
    name = name.mid(name.lastIndexOf(':') + 1);
    for (int i = 0; i < scope->enumeratorCount(); ++i) {
        const QMetaEnum candidate = scope->enumerator(i);
        if (candidate.isFlag() == flags &&
            name == (flags ? candidate.enumName() : candidate.name()))
            return candidate;
    }
    return {};
}

QJsonValue enumToJson(const QVariant& value, const WholeType& range) {
    const quint64 bits = storedBits(value, range.isUnsigned);
    const QMetaEnum meta = metaEnumOf(value.metaType());
    if (meta.isValid() && value.metaType().sizeOf() <= 4) {  // QMetaEnum's values are ints
        if (meta.isFlag()) {
            const QByteArray keys = meta.valueToKeys(int(bits));
            bool ok = false;
            if (!keys.isEmpty() && meta.keysToValue(keys.constData(), &ok) == int(bits) && ok)
                return QString::fromLatin1(keys);
        } else if (const char* key = meta.valueToKey(int(bits))) {
            return QString::fromLatin1(key);
        }
    }
    return storedToJson(bits, range.isUnsigned);
}

bool readEnum(QMetaType type, const WholeType& range, const QJsonValue& json, QVariant* out,
              QString& why) {
    const QMetaEnum meta = metaEnumOf(type);
    if (json.isString() && meta.isValid() && type.sizeOf() <= 4) {
        const QByteArray keys = json.toString().toLatin1();
        bool ok = false;
        const int value = meta.isFlag() ? meta.keysToValue(keys.constData(), &ok)
                                        : meta.keyToValue(keys.constData(), &ok);
        if (ok) {
            *out = storedVariant(type, quint64(qint64(value)));
            return true;
        }
    }
    return readStored(type, range, json, out, why) ||
           fail(why, QStringLiteral("%1 is not a %2").arg(shown(json), QLatin1String(type.name())));
}

// ---- characters, URLs and UUIDs

bool readChar(const QJsonValue& json, QChar* out, QString& why) {
    if (!json.isString() || json.toString().size() != 1)
        return fail(why, QStringLiteral("%1 is not one UTF-16 character").arg(shown(json)));
    *out = json.toString().at(0);
    return true;
}

bool readUrl(const QJsonValue& json, QUrl* out, QString& why) {
    *out = QUrl(json.toString(), QUrl::StrictMode);
    if (!json.isString() || (!out->isValid() && !json.toString().isEmpty()))
        return fail(why, QStringLiteral("%1 is not a URL").arg(shown(json)));
    return true;
}

bool readUuid(const QJsonValue& json, QUuid* out, QString& why) {
    const QString text = json.toString();
    *out = QUuid::fromString(text);
    const bool nil = text == QUuid().toString(QUuid::WithoutBraces) || text == QUuid().toString();
    if (!json.isString() || (out->isNull() && !nil))
        return fail(why, QStringLiteral("%1 is not a UUID").arg(shown(json)));
    return true;
}

// ---- geometry

// The numbers a geometry value is written as, in order: [x, y], [width, height],
// [x1, y1, x2, y2], [left, top, right, bottom], [x, y, width, height].
std::array<int, 2> fields(const QPoint& p) {
    return {p.x(), p.y()};
}
std::array<int, 2> fields(const QSize& s) {
    return {s.width(), s.height()};
}
std::array<int, 4> fields(const QLine& l) {
    return {l.x1(), l.y1(), l.x2(), l.y2()};
}
std::array<int, 4> fields(const QMargins& m) {
    return {m.left(), m.top(), m.right(), m.bottom()};
}
std::array<double, 2> fields(const QPointF& p) {
    return {p.x(), p.y()};
}
std::array<double, 2> fields(const QSizeF& s) {
    return {s.width(), s.height()};
}
std::array<double, 4> fields(const QLineF& l) {
    return {l.x1(), l.y1(), l.x2(), l.y2()};
}
std::array<double, 4> fields(const QMarginsF& m) {
    return {m.left(), m.top(), m.right(), m.bottom()};
}
std::array<double, 4> fields(const QRectF& r) {
    return {r.x(), r.y(), r.width(), r.height()};
}

template <typename T>
QJsonArray numbersToJson(const T& value) {
    QJsonArray array;
    for (const auto number : fields(value)) {
        if constexpr (std::is_same_v<decltype(number), const double>)
            array.append(doubleToJson(number));
        else
            array.append(number);
    }
    return array;
}

template <typename T>
bool readNumbers(const QJsonValue& json, T* out, QString& why) {
    auto numbers = fields(T());
    QJsonArray array;
    if (!readArray(json, qsizetype(numbers.size()), &array, why)) return false;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if constexpr (std::is_same_v<typename decltype(numbers)::value_type, double>) {
            if (!readDouble(array.at(i), &numbers[i], why)) return false;
        } else if (!readInt(array.at(i), std::numeric_limits<int>::min(),
                            std::numeric_limits<int>::max(), &numbers[i], why)) {
            return false;
        }
    }
    *out = std::make_from_tuple<T>(numbers);
    return true;
}

QJsonArray rectToJson(const QRect& rect) {
    // Width and height as 64-bit differences, so that no rectangle overflows them.
    return {rect.x(), rect.y(), qint64(rect.right()) - rect.left() + 1,
            qint64(rect.bottom()) - rect.top() + 1};
}

bool readRect(const QJsonValue& json, QRect* out, QString& why) {
    QJsonArray array;
    if (!readArray(json, 4, &array, why)) return false;
    constexpr qint64 intMin = std::numeric_limits<int>::min(),
                     intMax = std::numeric_limits<int>::max();
    constexpr qint64 span = qint64(1) << 32;
    qint64 x = 0, y = 0, width = 0, height = 0;
    if (!readSigned(array.at(0), intMin, intMax, &x, why) ||
        !readSigned(array.at(1), intMin, intMax, &y, why) ||
        !readSigned(array.at(2), -span, span, &width, why) ||
        !readSigned(array.at(3), -span, span, &height, why))
        return false;
    const qint64 right = x + width - 1, bottom = y + height - 1;
    if (right < intMin || right > intMax || bottom < intMin || bottom > intMax)
        return fail(
            why, QStringLiteral("the rectangle %1 leaves the coordinate range").arg(shown(json)));
    *out = QRect(QPoint(int(x), int(y)), QPoint(int(right), int(bottom)));
    return true;
}

QJsonArray regionToJson(const QRegion& region) {
    QJsonArray rects;
    for (const QRect& rect : region)
        rects.append(rectToJson(rect));
    return rects;
}

// A region as the rectangles QRegion keeps: in bands from top to bottom, left to right within
// a band, none overlapping or touching its neighbour in the band. Anything else is refused, so
// that a region is built in one pass whatever its size.
bool readRegion(const QJsonValue& json, QRegion* out, QString& why) {
    if (!json.isArray())
        return fail(why, QStringLiteral("%1 is not a list of rectangles").arg(shown(json)));
    QList<QRect> rects;
    for (const QJsonValue& item : json.toArray()) {
        QRect rect;
        if (!readRect(item, &rect, why)) return false;
        if (rect.isEmpty())
            return fail(why, QStringLiteral("a region's rectangle %1 is empty").arg(shown(item)));
        if (!rects.isEmpty()) {
            const QRect& last = rects.last();
            const bool sameBand = rect.top() == last.top() && rect.bottom() == last.bottom() &&
                                  qint64(rect.left()) > qint64(last.right()) + 1;
            if (!sameBand && rect.top() <= last.bottom())
                return fail(
                    why,
                    QStringLiteral("a region's rectangle %1 is out of order").arg(shown(item)));
        }
        rects.append(rect);
    }
    if (rects.size() > std::numeric_limits<int>::max())
        return fail(why, QStringLiteral("too many rectangles"));
    QRegion region;
    if (!rects.isEmpty()) region.setRects(rects.constData(), int(rects.size()));
    *out = region;
    return true;
}

// ---- dates and times

QJsonValue dateToJson(const QDate& date) {
    if (!date.isValid()) return QJsonValue::Null;
    const QString iso = date.toString(Qt::ISODate);
    if (!iso.isEmpty() && QDate::fromString(iso, Qt::ISODate) == date) return iso;
    return wholeToJson(date.toJulianDay());  // years an ISO date cannot spell
}

bool readDate(const QJsonValue& json, QDate* out, QString& why) {
    QDate date;
    if (json.isString()) {
        date = QDate::fromString(json.toString(), Qt::ISODate);
    } else if (json.isDouble()) {
        qint64 day = 0;
        if (!readSigned(json, std::numeric_limits<qint64>::min(),
                        std::numeric_limits<qint64>::max(), &day, why))
            return false;
        date = QDate::fromJulianDay(day);
    } else if (json.isNull()) {
        *out = QDate();
        return true;
    }
    if (!date.isValid()) return fail(why, QStringLiteral("%1 is not a date").arg(shown(json)));
    *out = date;
    return true;
}

QJsonValue timeToJson(const QTime& time) {
    return time.isValid() ? QJsonValue(time.toString(Qt::ISODateWithMs)) : QJsonValue();
}

bool readTime(const QJsonValue& json, QTime* out, QString& why) {
    if (json.isNull()) {
        *out = QTime();
        return true;
    }
    const QTime time = QTime::fromString(json.toString(), Qt::ISODateWithMs);
    if (!time.isValid())
        return fail(why, QStringLiteral("%1 is not a time of day").arg(shown(json)));
    *out = time;
    return true;
}

bool sameDateTime(const QDateTime& a, const QDateTime& b) {
    if (!a.isValid() || !b.isValid()) return a.isValid() == b.isValid();
    return a == b && a.timeSpec() == b.timeSpec() && a.offsetFromUtc() == b.offsetFromUtc() &&
           (a.timeSpec() != Qt::TimeZone || a.timeZone() == b.timeZone());
}

QJsonValue dateTimeToJson(const QDateTime& dateTime) {
    if (!dateTime.isValid()) return QJsonValue::Null;
    if (dateTime.timeSpec() != Qt::TimeZone) {
        const QString iso = dateTime.toString(Qt::ISODateWithMs);
        if (sameDateTime(QDateTime::fromString(iso, Qt::ISODateWithMs), dateTime)) return iso;
    }
    // A time zone, or a moment an ISO text does not pin down (a year beyond 9999, a local time
    // that occurs twice): the milliseconds since the epoch and how the time is kept.
    QJsonObject object{
        {QStringLiteral("msecsSinceEpoch"), wholeToJson(dateTime.toMSecsSinceEpoch())},
        {QStringLiteral("kind"),
         keyToJson(QMetaEnum::fromType<Qt::TimeSpec>(), dateTime.timeSpec())}};
    if (dateTime.timeSpec() == Qt::OffsetFromUTC)
        object.insert(QStringLiteral("offsetFromUtc"), dateTime.offsetFromUtc());
    if (dateTime.timeSpec() == Qt::TimeZone)
        object.insert(QStringLiteral("timeZone"), QString::fromLatin1(dateTime.timeZone().id()));
    return object;
}

bool readTimeZone(const QJsonValue& json, QTimeZone* out, QString& why) {
    // Only the zones the system knows: an identifier names a file of its zone database.
    static const QSet<QByteArray> known = [] {
        const QList<QByteArray> ids = QTimeZone::availableTimeZoneIds();
        return QSet<QByteArray>(ids.begin(), ids.end());
    }();
    const QString id = json.toString();
    const bool ascii = std::all_of(id.begin(), id.end(), [](QChar c) { return c.unicode() < 128; });
    if (!ascii || !known.contains(id.toLatin1()))
        return fail(why, QStringLiteral("%1 is not a known time zone").arg(shown(json)));
    *out = QTimeZone(id.toLatin1());
    return out->isValid() ||
           fail(why, QStringLiteral("%1 is not a known time zone").arg(shown(json)));
}

bool readDateTime(const QJsonValue& json, QDateTime* out, QString& why) {
    QDateTime dateTime;
    if (json.isNull()) {
        *out = QDateTime();
        return true;
    } else if (json.isString()) {
        dateTime = QDateTime::fromString(json.toString(), Qt::ISODateWithMs);
    } else if (json.isObject()) {
        qint64 msecs = 0;
        int kind = 0, offset = 0;
        QTimeZone zone;
        Members members(json, "a date and time",
                        {"msecsSinceEpoch", "kind", "offsetFromUtc", "timeZone"}, why);
        members.required("msecsSinceEpoch", &msecs, readQint64)
            .required("kind", &kind, keyIn<Qt::TimeSpec>(Qt::LocalTime, Qt::TimeZone));
        if (kind == Qt::OffsetFromUTC)
            members.required("offsetFromUtc", &offset, intIn(-86400, 86400));
        if (kind == Qt::TimeZone) members.required("timeZone", &zone, readTimeZone);
        if (!members.ok()) return false;
        dateTime = kind == Qt::TimeZone
                       ? QDateTime::fromMSecsSinceEpoch(msecs, zone)
                       : QDateTime::fromMSecsSinceEpoch(msecs, Qt::TimeSpec(kind), offset);
    }
    if (!dateTime.isValid())
        return fail(why, QStringLiteral("%1 is not a date and time").arg(shown(json)));
    *out = dateTime;
    return true;
}

// ---- locale and size policy

QJsonValue localeToJson(const QLocale& locale) {
    for (const QString& name : {locale.name(), locale.bcp47Name()})
        if (QLocale(name) == locale) return name;
    // Number options a name does not carry: language, script and territory by their keys.
    return QJsonObject{{QStringLiteral("language"),
                        keyToJson(QMetaEnum::fromType<QLocale::Language>(), locale.language())},
                       {QStringLiteral("script"),
                        keyToJson(QMetaEnum::fromType<QLocale::Script>(), locale.script())},
                       {QStringLiteral("territory"),
                        keyToJson(QMetaEnum::fromType<QLocale::Country>(), locale.territory())},
                       {QStringLiteral("numberOptions"), int(locale.numberOptions())}};
}

bool readLocale(const QJsonValue& json, QLocale* out, QString& why) {
    if (json.isString()) {
        *out = QLocale(json.toString());
        return true;
    }
    int language = 0, script = 0, territory = 0, options = 0;
    if (!Members(json, "a locale", {"language", "script", "territory", "numberOptions"}, why)
             .required("language", &language, keyIn<QLocale::Language>(0, QLocale::LastLanguage))
             .required("script", &script, keyIn<QLocale::Script>(0, QLocale::LastScript))
             .required("territory", &territory, keyIn<QLocale::Country>(0, QLocale::LastTerritory))
             .required("numberOptions", &options, intIn(0, 0x3F))
             .ok())
        return false;
    QLocale locale{QLocale::Language(language), QLocale::Script(script),
                   QLocale::Country(territory)};
    locale.setNumberOptions(QLocale::NumberOptions(options));
    *out = locale;
    return true;
}

QMetaEnum controlTypes() {
    const QMetaObject& meta = QSizePolicy::staticMetaObject;
    return meta.enumerator(meta.indexOfEnumerator("ControlTypes"));
}

QJsonObject sizePolicyToJson(const QSizePolicy& policy) {
    const QMetaEnum policies = QMetaEnum::fromType<QSizePolicy::Policy>();
    return {{QStringLiteral("horizontal"), keyToJson(policies, policy.horizontalPolicy())},
            {QStringLiteral("vertical"), keyToJson(policies, policy.verticalPolicy())},
            {QStringLiteral("horizontalStretch"), policy.horizontalStretch()},
            {QStringLiteral("verticalStretch"), policy.verticalStretch()},
            {QStringLiteral("controlType"), keyToJson(controlTypes(), policy.controlType())},
            {QStringLiteral("heightForWidth"), policy.hasHeightForWidth()},
            {QStringLiteral("widthForHeight"), policy.hasWidthForHeight()},
            {QStringLiteral("retainSizeWhenHidden"), policy.retainSizeWhenHidden()}};
}

bool readSizePolicy(const QJsonValue& json, QSizePolicy* out, QString& why) {
    int horizontal = 0, vertical = 0, hStretch = 0, vStretch = 0, type = QSizePolicy::DefaultType;
    bool heightForWidth = false, widthForHeight = false, retain = false;
    const auto policy = keyIn<QSizePolicy::Policy>(0, 15);
    const auto controlType = [](const QJsonValue& json, int* out, QString& why) {
        return readKey(controlTypes(), json, 1, 1 << 14, out, why) &&
               ((*out & (*out - 1)) == 0 || fail(why, QStringLiteral("not one control type")));
    };
    if (!Members(json, "a size policy",
                 {"horizontal", "vertical", "horizontalStretch", "verticalStretch", "controlType",
                  "heightForWidth", "widthForHeight", "retainSizeWhenHidden"},
                 why)
             .required("horizontal", &horizontal, policy)
             .required("vertical", &vertical, policy)
             .optional("horizontalStretch", &hStretch, intIn(0, 255))
             .optional("verticalStretch", &vStretch, intIn(0, 255))
             .optional("controlType", &type, controlType)
             .optional("heightForWidth", &heightForWidth, readBool)
             .optional("widthForHeight", &widthForHeight, readBool)
             .optional("retainSizeWhenHidden", &retain, readBool)
             .ok())
        return false;
    QSizePolicy sizePolicy{QSizePolicy::Policy(horizontal), QSizePolicy::Policy(vertical),
                           QSizePolicy::ControlType(type)};
    sizePolicy.setHorizontalStretch(hStretch);
    sizePolicy.setVerticalStretch(vStretch);
    sizePolicy.setHeightForWidth(heightForWidth);
    sizePolicy.setWidthForHeight(widthForHeight);
    sizePolicy.setRetainSizeWhenHidden(retain);
    *out = sizePolicy;
    return true;
}

// ---- dispatch

using Json = std::optional<QJsonValue>;

Json encodeValue(const QVariant& value, QString& why, int depth);
bool decodeNamed(const QString& name, const QJsonValue& json, QVariant* out, QString& why,
                 int depth);

// What write(value, &json, why) writes, or nothing where it refuses the value.
template <typename T>
Json written(bool (*write)(const T&, QJsonValue*, QString&), const T& value, QString& why) {
    QJsonValue json;
    if (!write(value, &json, why)) return std::nullopt;
    return json;
}

// What read(json, &value, why) reads, as a variant.
template <typename T>
bool readAs(bool (*read)(const QJsonValue&, T*, QString&), const QJsonValue& json, QVariant* out,
            QString& why) {
    T value{};
    if (!read(json, &value, why)) return false;
    *out = QVariant::fromValue(value);
    return true;
}

// Values inside lists and maps carry their type: {"type": ..., "value": ...}.
QJsonObject typedToJson(const QVariant& value, const QJsonValue& json) {
    return {{QStringLiteral("type"), typeName(value)}, {QStringLiteral("value"), json}};
}

bool readTyped(const QJsonValue& item, QVariant* out, QString& why, int depth) {
    const QJsonObject object = item.toObject();
    if (!item.isObject() || !object.value(QStringLiteral("type")).isString() ||
        !object.contains(QStringLiteral("value")))
        return fail(why, QStringLiteral("%1 is not a typed value").arg(shown(item)));
    return decodeNamed(object.value(QStringLiteral("type")).toString(),
                       object.value(QStringLiteral("value")), out, why, depth);
}

Json listToJson(const QVariantList& list, QString& why, int depth) {
    QJsonArray items;
    for (const QVariant& item : list) {
        const Json encoded = encodeValue(item, why, depth + 1);
        if (!encoded) return std::nullopt;
        items.append(typedToJson(item, *encoded));
    }
    return items;
}

bool readList(const QJsonValue& json, QVariant* out, QString& why, int depth) {
    if (!json.isArray()) return fail(why, QStringLiteral("%1 is not a list").arg(shown(json)));
    QVariantList list;
    for (const QJsonValue& item : json.toArray()) {
        QVariant value;
        if (!readTyped(item, &value, why, depth + 1)) return false;
        list.append(value);
    }
    *out = list;
    return true;
}

template <typename Map>
Json mapToJson(const Map& map, QString& why, int depth) {
    QJsonObject object;
    for (auto it = map.begin(); it != map.end(); ++it) {
        const Json encoded = encodeValue(it.value(), why, depth + 1);
        if (!encoded) return std::nullopt;
        object.insert(it.key(), typedToJson(it.value(), *encoded));
    }
    return object;
}

template <typename Map>
bool readMap(const QJsonValue& json, QVariant* out, QString& why, int depth) {
    if (!json.isObject()) return fail(why, QStringLiteral("%1 is not a map").arg(shown(json)));
    const QJsonObject object = json.toObject();
    Map map;
    for (auto it = object.begin(); it != object.end(); ++it) {
        QVariant item;
        if (!readTyped(it.value(), &item, why, depth + 1)) return false;
        map.insert(it.key(), item);
    }
    *out = map;
    return true;
}

Json encodeValue(const QVariant& value, QString& why, int depth) {
    const QMetaType type = value.metaType();
    if (!type.isValid()) return QJsonValue(QJsonValue::Null);
    if (depth > kNestingLimit) {
        why = QStringLiteral("lists and maps nest too deep");
        return std::nullopt;
    }
    if (const auto whole = wholeTypeOf(type)) {
        if (isEnum(type)) return enumToJson(value, *whole);
        return storedToJson(storedBits(value, whole->isUnsigned), whole->isUnsigned);
    }
    if (type == QMetaType::fromType<QMargins>()) return numbersToJson(value.value<QMargins>());
    if (type == QMetaType::fromType<QMarginsF>()) return numbersToJson(value.value<QMarginsF>());
    switch (type.id()) {
        case QMetaType::Nullptr:
            return QJsonValue(QJsonValue::Null);
        case QMetaType::Bool:
            return QJsonValue(value.toBool());
        case QMetaType::Float:
            return floatToJson(value.value<float>());
        case QMetaType::Double:
            return doubleToJson(value.toDouble());
        case QMetaType::QChar:
            return QString(value.toChar());
        case QMetaType::QString:
            return stringToJson(value.toString());
        case QMetaType::QByteArray:
            return bytesToJson(value.toByteArray());
        case QMetaType::QStringList:
            return stringListToJson(value.toStringList());
        case QMetaType::QUrl:
            return value.toUrl().toString(QUrl::FullyEncoded);
        case QMetaType::QUuid:
            return value.toUuid().toString(QUuid::WithoutBraces);
        case QMetaType::QDate:
            return dateToJson(value.toDate());
        case QMetaType::QTime:
            return timeToJson(value.toTime());
        case QMetaType::QDateTime:
            return dateTimeToJson(value.toDateTime());
        case QMetaType::QPoint:
            return numbersToJson(value.toPoint());
        case QMetaType::QSize:
            return numbersToJson(value.toSize());
        case QMetaType::QLine:
            return numbersToJson(value.toLine());
        case QMetaType::QRect:
            return rectToJson(value.toRect());
        case QMetaType::QPointF:
            return numbersToJson(value.toPointF());
        case QMetaType::QSizeF:
            return numbersToJson(value.toSizeF());
        case QMetaType::QLineF:
            return numbersToJson(value.toLineF());
        case QMetaType::QRectF:
            return numbersToJson(value.toRectF());
        case QMetaType::QRegion:
            return regionToJson(value.value<QRegion>());
        case QMetaType::QLocale:
            return localeToJson(value.toLocale());
        case QMetaType::QSizePolicy:
            return sizePolicyToJson(value.value<QSizePolicy>());
        case QMetaType::QColor:
            return colorToJson(value.value<QColor>());
        case QMetaType::QBrush:
            return written(brushToJson, value.value<QBrush>(), why);
        case QMetaType::QPalette:
            return written(paletteToJson, value.value<QPalette>(), why);
        case QMetaType::QFont:
            return fontToJson(value.value<QFont>());
        case QMetaType::QCursor:
            return written(cursorToJson, value.value<QCursor>(), why);
        case QMetaType::QIcon:
            return written(iconToJson, value.value<QIcon>(), why);
        case QMetaType::QKeySequence:
            return keySequenceToJson(value.value<QKeySequence>());
        case QMetaType::QVariantList:
            return listToJson(value.toList(), why, depth);
        case QMetaType::QVariantMap:
            return mapToJson(value.toMap(), why, depth);
        case QMetaType::QVariantHash:
            return mapToJson(value.toHash(), why, depth);
        default:
            why = QStringLiteral("a %1 cannot be stored").arg(QLatin1String(type.name()));
            return std::nullopt;
    }
}

bool decodeValue(QMetaType type, const QJsonValue& json, QVariant* out, QString& why, int depth) {
    if (depth > kNestingLimit) return fail(why, QStringLiteral("lists and maps nest too deep"));
    // Nothing of a GUI type, not even an empty one, is made without a GUI application.
    if (needsGui(type.id()) && !guiAvailable())
        return fail(why, QStringLiteral("a %1 can only be read by a program with a GUI")
                             .arg(QLatin1String(type.name())));
    if (const auto whole = wholeTypeOf(type))
        return isEnum(type) ? readEnum(type, *whole, json, out, why)
                            : readStored(type, *whole, json, out, why);
    if (type == QMetaType::fromType<QMargins>())
        return readAs(readNumbers<QMargins>, json, out, why);
    if (type == QMetaType::fromType<QMarginsF>())
        return readAs(readNumbers<QMarginsF>, json, out, why);
    switch (type.id()) {
        case QMetaType::Nullptr:
            if (!json.isNull()) return fail(why, QStringLiteral("%1 is not null").arg(shown(json)));
            *out = QVariant::fromValue(nullptr);
            return true;
        case QMetaType::Bool:
            return readAs(readBool, json, out, why);
        case QMetaType::Float:
            return readAs(readFloat, json, out, why);
        case QMetaType::Double:
            return readAs(readDouble, json, out, why);
        case QMetaType::QChar:
            return readAs(readChar, json, out, why);
        case QMetaType::QString:
            return readAs(readString, json, out, why);
        case QMetaType::QByteArray:
            return readAs(readBase64, json, out, why);
        case QMetaType::QStringList:
            return readAs(readStringList, json, out, why);
        case QMetaType::QUrl:
            return readAs(readUrl, json, out, why);
        case QMetaType::QUuid:
            return readAs(readUuid, json, out, why);
        case QMetaType::QDate:
            return readAs(readDate, json, out, why);
        case QMetaType::QTime:
            return readAs(readTime, json, out, why);
        case QMetaType::QDateTime:
            return readAs(readDateTime, json, out, why);
        case QMetaType::QPoint:
            return readAs(readNumbers<QPoint>, json, out, why);
        case QMetaType::QSize:
            return readAs(readNumbers<QSize>, json, out, why);
        case QMetaType::QLine:
            return readAs(readNumbers<QLine>, json, out, why);
        case QMetaType::QRect:
            return readAs(readRect, json, out, why);
        case QMetaType::QPointF:
            return readAs(readNumbers<QPointF>, json, out, why);
        case QMetaType::QSizeF:
            return readAs(readNumbers<QSizeF>, json, out, why);
        case QMetaType::QLineF:
            return readAs(readNumbers<QLineF>, json, out, why);
        case QMetaType::QRectF:
            return readAs(readNumbers<QRectF>, json, out, why);
        case QMetaType::QRegion:
            return readAs(readRegion, json, out, why);
        case QMetaType::QLocale:
            return readAs(readLocale, json, out, why);
        case QMetaType::QSizePolicy:
            return readAs(readSizePolicy, json, out, why);
        case QMetaType::QColor:
            return readAs(readColor, json, out, why);
        case QMetaType::QBrush:
            return readAs(readBrush, json, out, why);
        case QMetaType::QPalette:
            return readAs(readPalette, json, out, why);
        case QMetaType::QFont:
            return readAs(readFont, json, out, why);
        case QMetaType::QCursor:
            return readAs(readCursor, json, out, why);
        case QMetaType::QIcon:
            return readAs(readIcon, json, out, why);
        case QMetaType::QKeySequence:
            return readAs(readKeySequence, json, out, why);
        case QMetaType::QVariantList:
            return readList(json, out, why, depth);
        case QMetaType::QVariantMap:
            return readMap<QVariantMap>(json, out, why, depth);
        case QMetaType::QVariantHash:
            return readMap<QVariantHash>(json, out, why, depth);
        default:
            return fail(why, QStringLiteral("a %1 cannot be read").arg(QLatin1String(type.name())));
    }
}

bool decodeNamed(const QString& name, const QJsonValue& json, QVariant* out, QString& why,
                 int depth) {
    if (name.isEmpty()) {
        if (!json.isNull()) return fail(why, QStringLiteral("an empty value must be null"));
        *out = QVariant();
        return true;
    }
    const QMetaType type = typeNamed(name);
    if (!type.isValid())
        return fail(why, QStringLiteral("%1 is not a known type").arg(shown(name)));
    return decodeValue(type, json, out, why, depth);
}

// ---- round trip check

bool sameDouble(double a, double b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

template <typename T>
bool sameNumbers(const QVariant& a, const QVariant& b) {
    const auto x = fields(a.value<T>()), y = fields(b.value<T>());
    return std::equal(x.begin(), x.end(), y.begin(), sameDouble);
}

bool sameValue(const QVariant& a, const QVariant& b);

template <typename Map>
bool sameMap(const Map& a, const Map& b) {
    if (a.size() != b.size()) return false;
    for (auto it = a.begin(); it != a.end(); ++it)
        if (!b.contains(it.key()) || !sameValue(it.value(), b.value(it.key()))) return false;
    return true;
}

// Whether a value read back is the value written: exact where Qt's own comparison is fuzzy
// (QPointF and the other F types) or blind (NaN, negative zero, resolve masks, time zones).
bool sameValue(const QVariant& a, const QVariant& b) {
    if (a.metaType() != b.metaType()) return false;
    if (a.metaType() == QMetaType::fromType<QMarginsF>()) return sameNumbers<QMarginsF>(a, b);
    switch (a.typeId()) {
        case QMetaType::Float:
            return sameDouble(a.value<float>(), b.value<float>());
        case QMetaType::Double:
            return sameDouble(a.toDouble(), b.toDouble());
        case QMetaType::QPointF:
            return sameNumbers<QPointF>(a, b);
        case QMetaType::QSizeF:
            return sameNumbers<QSizeF>(a, b);
        case QMetaType::QLineF:
            return sameNumbers<QLineF>(a, b);
        case QMetaType::QRectF:
            return sameNumbers<QRectF>(a, b);
        case QMetaType::QDateTime:
            return sameDateTime(a.toDateTime(), b.toDateTime());
        case QMetaType::QFont:
            return a == b && a.value<QFont>().resolveMask() == b.value<QFont>().resolveMask();
        case QMetaType::QPalette:
            return a == b && a.value<QPalette>().resolveMask() == b.value<QPalette>().resolveMask();
        case QMetaType::QIcon: {  // no comparison of its own: compare what is written
            QString why;
            const Json x = encodeValue(a, why, 0), y = encodeValue(b, why, 0);
            return x && y && *x == *y;
        }
        case QMetaType::QVariantList: {
            const QVariantList x = a.toList(), y = b.toList();
            return x.size() == y.size() && std::equal(x.begin(), x.end(), y.begin(), sameValue);
        }
        case QMetaType::QVariantMap:
            return sameMap(a.toMap(), b.toMap());
        case QMetaType::QVariantHash:
            return sameMap(a.toHash(), b.toHash());
        default:
            return a == b;
    }
}

bool holdsGuiType(const QVariant& value) {
    if (needsGui(value.typeId())) return true;
    switch (value.typeId()) {
        case QMetaType::QVariantList: {
            const QVariantList list = value.toList();
            return std::any_of(list.begin(), list.end(), holdsGuiType);
        }
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            return std::any_of(map.begin(), map.end(), holdsGuiType);
        }
        case QMetaType::QVariantHash: {
            const QVariantHash hash = value.toHash();
            return std::any_of(hash.begin(), hash.end(), holdsGuiType);
        }
        default:
            return false;
    }
}

// The types a version 1 bag could carry: what QJsonValue::fromVariant writes readably.
bool version1Type(QMetaType type) {
    if (isEnum(type)) return true;
    switch (type.id()) {
        case QMetaType::Bool:
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::UChar:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Float:
        case QMetaType::Double:
        case QMetaType::QChar:
        case QMetaType::QString:
        case QMetaType::QStringList:
        case QMetaType::QByteArray:
        case QMetaType::QDate:
        case QMetaType::QTime:
        case QMetaType::QDateTime:
        case QMetaType::QUrl:
        case QMetaType::QUuid:
        case QMetaType::QVariantList:
        case QMetaType::QVariantMap:
        case QMetaType::QVariantHash:
        case QMetaType::Nullptr:
        case QMetaType::QColor:
        case QMetaType::QFont:
        case QMetaType::QKeySequence:
            return true;
        default:
            return false;
    }
}

}  // namespace

QString typeName(const QVariant& value) {
    return value.isValid() ? QString::fromLatin1(value.metaType().name()) : QString();
}

bool encode(const QVariant& value, QJsonValue* json, QString* why) {
    QString reason;
    const Json written = encodeValue(value, reason, 0);
    bool ok = written.has_value();
    // What is written must read back as it was. Without a GUI application GUI values cannot be
    // read back here; their forms are exact by construction.
    if (ok && !(holdsGuiType(value) && !guiAvailable())) {
        QVariant back;
        ok = decodeNamed(typeName(value), *written, &back, reason, 0) && sameValue(value, back);
        if (!ok)
            reason = QStringLiteral("this %1 would not read back as it is").arg(typeName(value));
    }
    if (!ok) {
        if (why) *why = reason;
        return false;
    }
    *json = *written;
    return true;
}

bool decode(const QString& typeName, const QJsonValue& json, QVariant* value, QString* why) {
    QString reason;
    QVariant result;
    if (!decodeNamed(typeName, json, &result, reason, 0)) {
        if (why) *why = reason;
        return false;
    }
    *value = result;
    return true;
}

bool decodeVersion1(const QString& typeName, const QJsonValue& json, QVariant* value,
                    QString* why) {
    const auto refuse = [&](const QString& text) {
        if (why) *why = text;
        return false;
    };
    if (typeName.isEmpty()) {
        *value = json.isNull() ? QVariant() : json.toVariant();
        return true;
    }
    const QMetaType type = typeNamed(typeName);
    if (!type.isValid()) {  // a type this program does not know keeps the value as read
        *value = json.toVariant();
        return true;
    }
    if (!version1Type(type))
        return refuse(QStringLiteral("a %1 cannot be read from a version 1 bag")
                          .arg(QLatin1String(type.name())));
    if (needsGui(type.id()) && !guiAvailable())
        return refuse(QStringLiteral("a %1 can only be read by a program with a GUI")
                          .arg(QLatin1String(type.name())));
    // Characters were written as one-character texts.
    const QString text = json.toString();
    if (json.isString() && text.size() == 1) {
        const char16_t code = text.at(0).unicode();
        switch (type.id()) {
            case QMetaType::QChar:
                *value = QVariant::fromValue(text.at(0));
                return true;
            case QMetaType::Char:
                if (code <= 0xFF) {
                    *value = QVariant::fromValue(char(code));
                    return true;
                }
                break;
            case QMetaType::SChar:
                if (code <= 0xFF) {
                    *value = QVariant::fromValue((signed char)(code));
                    return true;
                }
                break;
            case QMetaType::UChar:
                if (code <= 0xFF) {
                    *value = QVariant::fromValue(uchar(code));
                    return true;
                }
                break;
            default:
                break;
        }
    }
    QVariant result = json.toVariant();
    if (!result.convert(type))
        return refuse(
            QStringLiteral("%1 is not a %2").arg(shown(json), QLatin1String(type.name())));
    *value = result;
    return true;
}

}  // namespace quendrix::variantjson
