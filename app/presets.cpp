#include "presets.h"

#include <QSettings>

namespace {

struct Range {
    const char* field;
    qint32 low;
    qint32 high;
};
// The fields as the panel names them.
constexpr Range kBegin{QT_TRANSLATE_NOOP("StackPreset", "Beginn"), 0, 2000000000};
constexpr Range kEnd{QT_TRANSLATE_NOOP("StackPreset", "Ende"), 0, 2000000000};
constexpr Range kPlanes{QT_TRANSLATE_NOOP("StackPreset", "Ebenen"), 1, 9999};
constexpr Range kPause{QT_TRANSLATE_NOOP("StackPreset", "Pause"), 0, 3600000};

// A whole number within the range, or nothing with *error naming the field.
std::optional<qint32> wholeNumber(const QString& text, const Range& range, QString* error) {
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok);
    if (ok && value >= range.low && value <= range.high) return qint32(value);
    *error = StackPreset::tr("%1: \"%2\" ist keine ganze Zahl von %3 bis %4")
                 .arg(StackPreset::tr(range.field), text)
                 .arg(range.low)
                 .arg(range.high);
    return std::nullopt;
}

QString groupOf(int rigType) {
    return QStringLiteral("stackPresets/rig%1").arg(rigType);
}

}  // namespace

std::optional<StackPreset> StackPreset::fromFields(const QString& name, const QString& begin,
                                                   const QString& end, const QString& planes,
                                                   const QString& pause, QString* error) {
    const auto from = wholeNumber(begin, kBegin, error);
    if (!from) return std::nullopt;
    const auto to = wholeNumber(end, kEnd, error);
    if (!to) return std::nullopt;
    const auto intervals = wholeNumber(planes, kPlanes, error);
    if (!intervals) return std::nullopt;
    const auto pauseMs = wholeNumber(pause, kPause, error);
    if (!pauseMs) return std::nullopt;
    if (name.trimmed().isEmpty()) {
        *error = tr("Die Vorlage braucht einen Namen");
        return std::nullopt;
    }
    return StackPreset{name.trimmed(), *from, *to, *intervals, *pauseMs};
}

namespace presets {

QList<StackPreset> load(QSettings& settings, int rigType, QStringList* problems) {
    QList<StackPreset> list;
    const int count = settings.beginReadArray(groupOf(rigType));
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        QString error;
        const auto preset =
            StackPreset::fromFields(settings.value(QStringLiteral("name")).toString(),
                                    settings.value(QStringLiteral("begin")).toString(),
                                    settings.value(QStringLiteral("end")).toString(),
                                    settings.value(QStringLiteral("planes")).toString(),
                                    settings.value(QStringLiteral("pause")).toString(), &error);
        if (preset)
            list.append(*preset);
        else
            problems->append(StackPreset::tr("%1, [%2] Eintrag %3: %4")
                                 .arg(settings.fileName(), groupOf(rigType))
                                 .arg(i + 1)
                                 .arg(error));
    }
    settings.endArray();
    return list;
}

void store(QSettings& settings, int rigType, const QList<StackPreset>& list) {
    settings.remove(groupOf(rigType));
    settings.beginWriteArray(groupOf(rigType), int(list.size()));
    for (int i = 0; i < list.size(); ++i) {
        settings.setArrayIndex(i);
        settings.setValue(QStringLiteral("name"), list[i].name);
        settings.setValue(QStringLiteral("begin"), list[i].begin);
        settings.setValue(QStringLiteral("end"), list[i].end);
        settings.setValue(QStringLiteral("planes"), list[i].planes);
        settings.setValue(QStringLiteral("pause"), list[i].pauseMs);
    }
    settings.endArray();
}

}  // namespace presets
