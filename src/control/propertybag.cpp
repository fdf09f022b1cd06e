#include <quendrix/PropertyBag.h>

#include "control/variantjson.h"
#include "settings/filereplace.h"
#include "settings/variantcompare.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace quendrix {

namespace {

using Entries = QList<QPair<QString, QVariant>>;

const QString kFormat = QStringLiteral("quendrix-propertybag");
// Version 2 writes each type in its own form (variantjson); version 1 wrote
// QJsonValue::fromVariant and is still read.
constexpr int kVersion = 2;

QString entryError(const QString& name, const QString& why) {
    return QStringLiteral("entry \"%1\": %2").arg(name, why);
}

// The document for the entries. An entry the bag cannot store is left out, or, when `failure`
// is given, ends the writing with the reason.
bool writeDocument(const Entries& entries, QByteArray* json, QString* failure) {
    QJsonArray items;
    for (const auto& [name, value] : entries) {
        QJsonValue encoded;
        QString why;
        if (!variantjson::encode(value, &encoded, &why)) {
            if (!failure) continue;
            *failure = entryError(name, why);
            return false;
        }
        items.append(QJsonObject{{QStringLiteral("name"), name},
                                 {QStringLiteral("type"), variantjson::typeName(value)},
                                 {QStringLiteral("value"), encoded}});
    }
    const QJsonObject root{{QStringLiteral("format"), kFormat},
                           {QStringLiteral("version"), kVersion},
                           {QStringLiteral("entries"), items}};
    *json = QJsonDocument(root).toJson(QJsonDocument::Indented);
    return true;
}

// Whether a value equals the default given on write, so that it need not be stored: texts
// compare as texts, numbers as numbers, and a number equals a text that spells the same
// number ("0" and 0).
bool sameAsDefault(const QVariant& value, const QVariant& defaultValue) {
    if (!value.isValid() || !defaultValue.isValid())
        return !value.isValid() && !defaultValue.isValid();
    if (!isNumeric(value) && !isNumeric(defaultValue))
        return value.toString() == defaultValue.toString();
    if (isNumeric(value) && isNumeric(defaultValue))
        return variantCompare(value, defaultValue) == 0;
    bool ok1 = false, ok2 = false;
    const double a = value.toDouble(&ok1), b = defaultValue.toDouble(&ok2);
    return ok1 && ok2 && a == b;
}

}  // namespace

QVariant PropertyBag::ReadProperty(const QString& name, const QVariant& defaultValue) const {
    for (const auto& [key, value] : entries_)
        if (key == name) return value;
    return defaultValue;
}

void PropertyBag::WriteProperty(const QString& name, const QVariant& value,
                                const QVariant& defaultValue) {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const auto& entry) { return entry.first == name; });
    if (sameAsDefault(value, defaultValue)) {
        if (found != entries_.end()) entries_.erase(found);
        return;
    }
    if (found != entries_.end())
        found->second = value;
    else
        entries_.append({name, value});
}

bool PropertyBag::contains(const QString& name) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const auto& entry) { return entry.first == name; });
}

QStringList PropertyBag::names() const {
    QStringList result;
    for (const auto& entry : entries_)
        result.append(entry.first);
    return result;
}

QByteArray PropertyBag::toJson() const {
    QByteArray json;
    writeDocument(entries_, &json, nullptr);
    return json;
}

bool PropertyBag::fromJson(const QByteArray& json, QString* error) {
    auto fail = [error](const QString& why) {
        if (error) *error = why;
        return false;
    };
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (document.isNull()) return fail(parseError.errorString());
    const QJsonObject root = document.object();
    if (root.value(QStringLiteral("format")).toString() != kFormat)
        return fail(QStringLiteral("not a property bag"));
    const QJsonValue versionValue = root.value(QStringLiteral("version"));
    const int version = versionValue.isUndefined() ? 1 : versionValue.toInt(0);
    if (version != 1 && version != kVersion)
        return fail(QStringLiteral("property bag version %1 is not supported")
                        .arg(versionValue.toVariant().toString().left(20)));
    if (!root.value(QStringLiteral("entries")).isArray())
        return fail(QStringLiteral("the property bag has no list of entries"));

    const QJsonArray items = root.value(QStringLiteral("entries")).toArray();
    Entries entries;
    QSet<QString> seen;
    for (qsizetype i = 0; i < items.size(); ++i) {
        const QJsonObject entry = items.at(i).toObject();
        const QString name = entry.value(QStringLiteral("name")).toString();
        if (name.isEmpty()) return fail(QStringLiteral("entry %1 has no name").arg(i + 1));
        if (seen.contains(name)) return fail(entryError(name, QStringLiteral("appears twice")));
        const QJsonValue type = entry.value(QStringLiteral("type"));
        if (!type.isString() && !(version == 1 && type.isUndefined()))
            return fail(entryError(name, QStringLiteral("has no type")));
        if (version != 1 && !entry.contains(QStringLiteral("value")))
            return fail(entryError(name, QStringLiteral("has no value")));
        QVariant value;
        QString why;
        const QJsonValue written = entry.value(QStringLiteral("value"));
        const bool read = version == 1
                              ? variantjson::decodeVersion1(type.toString(), written, &value, &why)
                              : variantjson::decode(type.toString(), written, &value, &why);
        // What loads must save again: a value the bag could not write back (a version 1 list,
        // ...) is refused here rather than lost on saving.
        QJsonValue rewritten;
        if (!read || !variantjson::encode(value, &rewritten, &why))
            return fail(entryError(name, why));
        seen.insert(name);
        entries.append({name, value});
    }
    entries_ = entries;
    return true;
}

bool PropertyBag::save(const QString& path, QString* error) const {
    QByteArray json;
    QString failure;
    if (!writeDocument(entries_, &json, &failure)) {
        if (error) *error = failure;
        return false;
    }
    return replaceFile(path, json, error);
}

bool PropertyBag::load(const QString& path, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = file.errorString();
        return false;
    }
    return fromJson(file.readAll(), error);
}

}  // namespace quendrix
