#include "control/variantjson.h"

#include "control/variantjson_numbers.h"

#include <quendrix/ctlQuendrix.h>

#include <QBrush>
#include <QColor>
#include <QCursor>
#include <QDataStream>
#include <QDateTime>
#include <QFont>
#include <QGuiApplication>
#include <QIODevice>
#include <QIcon>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeySequence>
#include <QLocale>
#include <QMetaProperty>
#include <QPalette>
#include <QSizePolicy>
#include <QUrl>
#include <QUuid>

#include <algorithm>
#include <optional>

namespace quendrix::variantjson {

namespace {

bool refuse(QString* why, const QString& reason) {
    if (why) *why = reason;
    return false;
}

// A short rendering of a JSON value for an error.
QString shown(const QJsonValue& json) {
    const QByteArray array = QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Compact);
    const QString text = QString::fromUtf8(array.mid(1, array.size() - 2));
    return text.size() > 40 ? text.left(37) + QStringLiteral("...") : text;
}

bool guiAvailable() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

// A null text stays apart from an empty one: it is written as null.
QJsonValue textToJson(const QString& text) {
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

std::optional<QString> textOf(const QJsonValue& json) {
    if (json.isNull()) return QString();
    return json.isString() ? std::optional(json.toString()) : std::nullopt;
}

std::optional<QByteArray> base64Of(const QJsonValue& json) {
    auto bytes = QByteArray::fromBase64Encoding(json.toString().toLatin1(),
                                                QByteArray::AbortOnBase64DecodingErrors);
    if (!json.isString() || !bytes) return std::nullopt;
    return *bytes;
}

// GUI values without a readable form of their own are their QDataStream bytes.
QJsonValue streamToJson(const QVariant& value) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    if (!value.metaType().save(stream, value.constData())) return QJsonValue::Undefined;
    return QString::fromLatin1(bytes.toBase64());
}

QVariant streamFromJson(QMetaType type, const QJsonValue& json) {
    const auto bytes = base64Of(json);
    if (!bytes) return {};
    QDataStream stream(*bytes);
    stream.setVersion(QDataStream::Qt_6_4);
    QVariant value(type);
    if (!type.load(stream, value.data())) return {};
    return stream.status() == QDataStream::Ok && stream.atEnd() ? value : QVariant();
}

// How a type is written: as JSON of its own (write, and read, which gives an empty QVariant
// for anything but that form), or as a text that gives the value back (toText, fromText).
struct Form {
    QMetaType type;
    QJsonValue (*write)(const QVariant& value) = nullptr;
    QVariant (*read)(QMetaType type, const QJsonValue& json) = nullptr;
    QString (*toText)(const QVariant& value) = nullptr;
    QVariant (*fromText)(const QString& text) = nullptr;
    bool needsGui = false;  // read only in a program with a GUI
};

constexpr Form streamed(QMetaType type) {
    return {type, streamToJson, streamFromJson, nullptr, nullptr, true};
}

const Form kWhole{QMetaType(), wholeToJson, wholeFromJson};
const Form kGeometry{QMetaType(), geometryToJson, geometryFromJson};

const Form kForms[] = {
    {QMetaType::fromType<bool>(), [](const QVariant& v) { return QJsonValue(v.toBool()); },
     [](QMetaType, const QJsonValue& j) { return j.isBool() ? QVariant(j.toBool()) : QVariant(); }},
    {QMetaType::fromType<float>(), [](const QVariant& v) { return floatToJson(v.toFloat()); },
     [](QMetaType, const QJsonValue& j) { return floatFromJson(j); }},
    {QMetaType::fromType<double>(), [](const QVariant& v) { return doubleToJson(v.toDouble()); },
     [](QMetaType, const QJsonValue& j) {
         const auto value = doubleFromJson(j);
         return value ? QVariant(*value) : QVariant();
     }},
    {QMetaType::fromType<QChar>(),
     [](const QVariant& v) { return QJsonValue(QString(v.toChar())); },
     [](QMetaType, const QJsonValue& j) {
         return j.toString().size() == 1 ? QVariant(j.toString().at(0)) : QVariant();
     }},
    {QMetaType::fromType<QString>(), [](const QVariant& v) { return textToJson(v.toString()); },
     [](QMetaType, const QJsonValue& j) {
         const auto text = textOf(j);
         return text ? QVariant(*text) : QVariant();
     }},
    {QMetaType::fromType<QByteArray>(),
     [](const QVariant& v) {
         const QByteArray bytes = v.toByteArray();
         return bytes.isNull() ? QJsonValue() : QJsonValue(QString::fromLatin1(bytes.toBase64()));
     },
     [](QMetaType, const QJsonValue& j) {
         const auto bytes = j.isNull() ? QByteArray() : base64Of(j);
         return bytes ? QVariant(*bytes) : QVariant();
     }},
    {QMetaType::fromType<QStringList>(),
     [](const QVariant& v) {
         QJsonArray array;
         for (const QString& text : v.toStringList())
             array.append(textToJson(text));
         return QJsonValue(array);
     },
     [](QMetaType, const QJsonValue& j) {
         QStringList list;
         for (const QJsonValue& item : j.toArray()) {
             const auto text = textOf(item);
             if (!text) return QVariant();
             list.append(*text);
         }
         return j.isArray() ? QVariant(list) : QVariant();
     }},
    {.type = QMetaType::fromType<QDate>(),
     .toText = [](const QVariant& v) { return v.toDate().toString(Qt::ISODate); },
     .fromText = [](const QString& t) { return QVariant(QDate::fromString(t, Qt::ISODate)); }},
    {.type = QMetaType::fromType<QTime>(),
     .toText = [](const QVariant& v) { return v.toTime().toString(Qt::ISODateWithMs); },
     .fromText =
         [](const QString& t) { return QVariant(QTime::fromString(t, Qt::ISODateWithMs)); }},
    {.type = QMetaType::fromType<QDateTime>(),
     .toText =
         [](const QVariant& v) {
             // A time in a named zone has no text of its own: it would come back as an offset.
             const QDateTime time = v.toDateTime();
             return time.timeSpec() == Qt::TimeZone ? QString() : time.toString(Qt::ISODateWithMs);
         },
     .fromText =
         [](const QString& t) { return QVariant(QDateTime::fromString(t, Qt::ISODateWithMs)); }},
    {.type = QMetaType::fromType<QUrl>(),
     .toText = [](const QVariant& v) { return v.toUrl().toString(QUrl::FullyEncoded); },
     .fromText = [](const QString& t) { return QVariant(QUrl(t, QUrl::StrictMode)); }},
    {.type = QMetaType::fromType<QUuid>(),
     .toText = [](const QVariant& v) { return v.toUuid().toString(QUuid::WithoutBraces); },
     .fromText = [](const QString& t) { return QVariant(QUuid::fromString(t)); }},
    {.type = QMetaType::fromType<QColor>(),
     .toText =
         [](const QVariant& v) {
             const QColor c = v.value<QColor>();
             return c.isValid() ? c.name(c.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb)
                                : QString();
         },
     .fromText = [](const QString& t) { return QVariant(QColor::fromString(t)); }},
    {.type = QMetaType::fromType<QKeySequence>(),
     .toText =
         [](const QVariant& v) {
             return v.value<QKeySequence>().toString(QKeySequence::PortableText);
         },
     .fromText = [](const QString& t) { return QVariant(QKeySequence::fromString(t)); }},
    streamed(QMetaType::fromType<QPalette>()),
    streamed(QMetaType::fromType<QFont>()),
    streamed(QMetaType::fromType<QIcon>()),
    streamed(QMetaType::fromType<QCursor>()),
    streamed(QMetaType::fromType<QSizePolicy>()),
    streamed(QMetaType::fromType<QLocale>()),
    streamed(QMetaType::fromType<QBrush>()),
};

const Form* formOf(QMetaType type) {
    if (isWhole(type)) return &kWhole;
    if (isGeometry(type)) return &kGeometry;
    for (const Form& form : kForms)
        if (form.type == type) return &form;
    return nullptr;
}

QJsonValue write(const Form& form, const QVariant& value) {
    return form.toText ? QJsonValue(form.toText(value)) : form.write(value);
}

QVariant read(const Form& form, QMetaType type, const QJsonValue& json) {
    if (!form.toText) return form.read(type, json);
    // Only the very text a value is written as: another would read as another value, or none.
    const QVariant value = form.fromText(json.toString());
    return json.isString() && form.toText(value) == json.toString() ? value : QVariant();
}

// The type a document names. Enum types are known by name only once something has asked for
// them: the control's property types are the ones a host most likely keeps in a bag.
QMetaType typeNamed(const QString& name) {
    static const bool controlTypesKnown = [] {
        for (int i = 0; i < ctlQuendrix::staticMetaObject.propertyCount(); ++i)
            ctlQuendrix::staticMetaObject.property(i).metaType().id();
        return true;
    }();
    Q_UNUSED(controlTypesKnown);
    const bool plain = name.size() <= 200 && std::all_of(name.begin(), name.end(), [](QChar c) {
                           return c.unicode() < 128 &&
                                  (c.isLetterOrNumber() || QStringView(u"_:<>, *&").contains(c));
                       });
    return plain && !name.isEmpty() ? QMetaType::fromName(name.toLatin1()) : QMetaType();
}

// The form in which a document's type is read, or nothing, with the reason.
const Form* readableForm(const QString& name, QMetaType type, QString* why) {
    const Form* form = formOf(type);
    if (!type.isValid())
        refuse(why, QStringLiteral("%1 is not a known type").arg(shown(name)));
    else if (!form)
        refuse(why, QStringLiteral("type %1 cannot be read").arg(name));
    else if (form->needsGui && !guiAvailable())
        refuse(why, QStringLiteral("type %1 can only be read by a program with a GUI").arg(name));
    else
        return form;
    return nullptr;
}

}  // namespace

QString typeName(const QVariant& value) {
    return value.isValid() ? QString::fromLatin1(value.metaType().name()) : QString();
}

bool encode(const QVariant& value, QJsonValue* json, QString* why) {
    if (!value.isValid()) {
        *json = QJsonValue::Null;
        return true;
    }
    const Form* form = formOf(value.metaType());
    const QJsonValue written = form ? write(*form, value) : QJsonValue(QJsonValue::Undefined);
    if (written.isUndefined())
        return refuse(why, QStringLiteral("type %1 cannot be stored").arg(typeName(value)));
    // What is written must read back as the value, where the type compares values (an icon
    // does not, NaN is not itself), and write the same again. Without a GUI, GUI values cannot
    // be read back to check: their streams are taken as Qt writes them.
    if (!form->needsGui || guiAvailable()) {
        const QVariant back = read(*form, value.metaType(), written);
        if (!back.isValid() || write(*form, back) != written || (value == value && back != value))
            return refuse(
                why, QStringLiteral("this %1 would not read back as it is").arg(typeName(value)));
    }
    *json = written;
    return true;
}

bool decode(const QString& typeName, const QJsonValue& json, QVariant* value, QString* why) {
    if (typeName.isEmpty()) {
        if (!json.isNull()) return refuse(why, QStringLiteral("an empty value must be null"));
        *value = QVariant();
        return true;
    }
    const QMetaType type = typeNamed(typeName);
    const Form* form = readableForm(typeName, type, why);
    if (!form) return false;
    const QVariant result = read(*form, type, json);
    if (!result.isValid())
        return refuse(why, QStringLiteral("%1 is not of type %2").arg(shown(json), typeName));
    *value = result;
    return true;
}

bool decodeVersion1(const QString& typeName, const QJsonValue& json, QVariant* value,
                    QString* why) {
    QVariant result = json.isNull() ? QVariant() : json.toVariant();
    const QMetaType type = typeNamed(typeName);
    if (type.isValid()) {  // else the value keeps the form it has
        if (!readableForm(typeName, type, why)) return false;
        // Characters were written as one-character texts.
        const QString text = json.toString();
        const int id = type.id();
        const bool character = id == QMetaType::QChar || id == QMetaType::Char ||
                               id == QMetaType::SChar || id == QMetaType::UChar;
        if (character && text.size() == 1 && (id == QMetaType::QChar || text[0] <= u'\xff'))
            result = int(text[0].unicode());
        if (!result.convert(type))
            return refuse(why, QStringLiteral("%1 is not of type %2").arg(shown(json), typeName));
    }
    *value = result;
    return true;
}

}  // namespace quendrix::variantjson
