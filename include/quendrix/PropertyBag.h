#pragma once

#include <quendrix/quendrix_export.h>

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace quendrix {

// The container's store for design-time properties. A value equal to the default given on
// write is not stored; reading an entry that is not stored gives the default given on read.
// The two defaults may differ, and the control relies on that difference as it stands.
class QUENDRIX_EXPORT PropertyBag {
public:
    // The value stored under `name`, or `defaultValue` when none is.
    QVariant ReadProperty(const QString& name, const QVariant& defaultValue = {}) const;
    // Stores `value` under `name`; a value equal to `defaultValue` removes the entry instead.
    void WriteProperty(const QString& name, const QVariant& value,
                       const QVariant& defaultValue = {});
    // Whether a value is stored under `name`.
    bool contains(const QString& name) const;
    // Names of the stored entries, in the order they were first written.
    QStringList names() const;
    // Removes every entry.
    void clear() { entries_.clear(); }

    // A host keeps a bag between sessions with these: a small JSON document,
    //   {"format": "quendrix-propertybag", "version": 2,
    //    "entries": [{"name": ..., "type": the Qt type name, "value": ...}, ...]}
    // in which every value reads back with its type and compares equal. Values keep a readable
    // form: numbers as numbers (whole numbers beyond 2^53 as decimal texts; "nan", "inf",
    // "-inf", "-0"), texts as strings, byte arrays in base64, geometry as small arrays of numbers
    // (a rectangle as [x, y, w, h]), enums and flags by their keys, dates, times, URLs, UUIDs,
    // colours and key sequences as their text. Palettes, fonts, icons, cursors, size policies,
    // locales and brushes are kept as the base64 of their QDataStream form.
    //
    // The bag stores the types of the widget properties and these: the integer and floating
    // types, QChar, QString, QByteArray, QStringList, the F geometry types, QLine, QMargins,
    // QDate, QTime, QDateTime, QUrl, QUuid, QColor, QKeySequence and QBrush. It cannot store
    // other types (QRegion, lists and maps of values, ...), nor a value its form would not give
    // back exactly: a date beyond the year 9999, a time in a named zone, a colour that is not
    // 8-bit RGB, a locale with number options of its own, a rectangle wider than an int.
    //
    // toJson() leaves out any entry it cannot store, so that what it gives always loads;
    // save() refuses such a bag instead, with an error naming the entry, and writes nothing.
    QByteArray toJson() const;
    // Replaces the contents; on malformed input returns false, with an error naming the entry
    // at fault, and leaves the bag unchanged. Reads documents of version 1 too, whose values
    // were QJsonValue::fromVariant's. The input may come from anywhere: any bytes give true or
    // false. Values kept as QDataStream forms are only read in a program with a
    // QGuiApplication; without one their entries are refused.
    bool fromJson(const QByteArray& json, QString* error = nullptr);
    // Replaces the file in one step (replaceFile): a reader or a crash finds the old bag or the
    // new one, never a mix.
    bool save(const QString& path, QString* error = nullptr) const;
    // Replaces the contents with the bag in the file, as fromJson does; on failure returns false,
    // with an error naming the file or the entry, and leaves the bag unchanged.
    bool load(const QString& path, QString* error = nullptr);

private:
    QList<QPair<QString, QVariant>> entries_;
};

}  // namespace quendrix
