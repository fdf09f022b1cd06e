#include <quendrix/PropertyBag.h>

#include "settings/variantcompare.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace quendrix {

namespace {

const QString kFormat = QStringLiteral("quendrix-propertybag");

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
    QJsonArray entries;
    for (const auto& [name, value] : entries_) {
        entries.append(QJsonObject{{QStringLiteral("name"), name},
                                   {QStringLiteral("type"), QString::fromLatin1(value.typeName())},
                                   {QStringLiteral("value"), QJsonValue::fromVariant(value)}});
    }
    const QJsonObject root{{QStringLiteral("format"), kFormat},
                           {QStringLiteral("version"), 1},
                           {QStringLiteral("entries"), entries}};
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
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

    QList<QPair<QString, QVariant>> entries;
    for (const QJsonValue& item : root.value(QStringLiteral("entries")).toArray()) {
        const QJsonObject entry = item.toObject();
        const QString name = entry.value(QStringLiteral("name")).toString();
        if (name.isEmpty()) return fail(QStringLiteral("an entry without a name"));
        QVariant value = entry.value(QStringLiteral("value")).toVariant();
        const QMetaType type =
            QMetaType::fromName(entry.value(QStringLiteral("type")).toString().toLatin1());
        if (type.isValid() && !value.convert(type))
            return fail(QStringLiteral("entry %1 does not hold a %2").arg(name, type.name()));
        entries.append({name, value});
    }
    entries_ = entries;
    return true;
}

bool PropertyBag::save(const QString& path, QString* error) const {
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(toJson()) >= 0 && file.commit()) return true;
    if (error) *error = file.errorString();
    return false;
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
