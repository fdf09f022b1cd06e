#pragma once

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

class QSettings;

// A stack the photographer keeps under a name: its range on axis 0 in motor steps, its number
// of planes (intervals) and the pause between pictures in milliseconds.
struct StackPreset {
    Q_DECLARE_TR_FUNCTIONS(StackPreset)

public:
    QString name;
    qint32 begin = 0;
    qint32 end = 0;
    qint32 planes = 1;
    qint32 pauseMs = 0;

    // A preset from the panel's fields, or nothing with *error naming the field that holds no
    // usable value.
    static std::optional<StackPreset> fromFields(const QString& name, const QString& begin,
                                                 const QString& end, const QString& planes,
                                                 const QString& pause, QString* error);
};

// The presets of each rig type, kept in the application's settings (group "stackPresets").
// An entry that cannot be used (edited by hand) is left out and named in *problems.
namespace presets {
QList<StackPreset> load(QSettings& settings, int rigType, QStringList* problems);
void store(QSettings& settings, int rigType, const QList<StackPreset>& list);
}  // namespace presets
