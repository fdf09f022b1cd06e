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

    // A host keeps a bag between sessions with these (a small JSON document).
    QByteArray toJson() const;
    // Replaces the contents; on malformed input returns false and leaves the bag unchanged.
    bool fromJson(const QByteArray& json, QString* error = nullptr);
    // Writes atomically (temporary file, then rename).
    bool save(const QString& path, QString* error = nullptr) const;
    bool load(const QString& path, QString* error = nullptr);

private:
    QList<QPair<QString, QVariant>> entries_;
};

}  // namespace quendrix
