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
    QVariant ReadProperty(const QString& name, const QVariant& defaultValue = {}) const;
    void WriteProperty(const QString& name, const QVariant& value,
                       const QVariant& defaultValue = {});
    bool contains(const QString& name) const;
    // Names of the stored entries, in the order they were first written.
    QStringList names() const;
    void clear() { entries_.clear(); }

    // A host keeps a bag between sessions with these: a small JSON document,
    //   {"format": "quendrix-propertybag", "version": 2,
    //    "entries": [{"name": ..., "type": <Qt type name>, "value": ...}, ...]}
    // in which every value reads back with its type and compares equal. Values keep a readable
    // form: numbers as numbers (whole numbers beyond 2^53 as decimal texts; "nan", "inf",
    // "-inf", "-0"), texts as strings, byte arrays in base64, rectangles as [x, y, w, h], enums
    // by their keys, colours as "#rrggbb", fonts, palettes and size policies as objects of named
    // attributes. The bag stores the widget property types (QRect, QSizePolicy, QPalette, QFont,
    // QCursor, QIcon, QLocale, enums and flags, ...), the integer and floating types, QChar,
    // QString, QByteArray, QStringList, QDate, QTime, QDateTime, QUrl, QUuid, QColor, QBrush,
    // QKeySequence, the F geometry types, QMargins, QRegion, and lists and maps of these. It
    // cannot store other types, nor gradient or texture brushes, bitmap cursors or icons that
    // are not made of pictures or a theme name.
    //
    // toJson() leaves out any entry it cannot store, so that what it gives always loads;
    // save() refuses such a bag instead, with an error naming the entry, and writes nothing.
    QByteArray toJson() const;
    // Replaces the contents; on malformed input returns false, with an error naming the entry
    // at fault, and leaves the bag unchanged. Reads documents of version 1 too, whose values
    // were QJsonValue::fromVariant's. The input may come from anywhere: any bytes give true or
    // false. Colours, fonts, palettes, cursors, icons and key sequences are only read in a
    // program with a QGuiApplication; without one their entries are refused.
    bool fromJson(const QByteArray& json, QString* error = nullptr);
    // Writes atomically (temporary file, then rename).
    bool save(const QString& path, QString* error = nullptr) const;
    bool load(const QString& path, QString* error = nullptr);

private:
    QList<QPair<QString, QVariant>> entries_;
};

}  // namespace quendrix
