#pragma once

#include <QSet>
#include <QString>
#include <functional>
#include <limits>

namespace quendrix {

// Numbers kept in the settings file, read as the panel reads numbers (Val: the leading number;
// a text without one is 0). A value that cannot be used (a number beyond any range, or beyond
// what the setting can hold) is reported, once for each key and value, and the key's default
// is used in its place: a settings file edited by hand never stops the rig.
class SettingNumbers {
public:
    using Read = std::function<QString(const QString& section, const QString& key,
                                       const QString& byDefault)>;
    // What the settings file held, and the default used instead.
    using Reject = std::function<void(const QString& section, const QString& key,
                                      const QString& value, const QString& used)>;

    SettingNumbers(Read read, Reject reject) : read_(std::move(read)), reject_(std::move(reject)) {}

    // The value as it stands in the file when it reads as a number, else the default. For
    // settings that the panel shows in a box and reads back from there.
    QString numberText(const QString& section, const QString& key, const QString& byDefault);
    double number(const QString& section, const QString& key, const QString& byDefault);
    // Rounded half to even; it must lie within [lowest, highest].
    qint32 wholeNumber(const QString& section, const QString& key, const QString& byDefault,
                       qint32 lowest = std::numeric_limits<qint32>::min(),
                       qint32 highest = std::numeric_limits<qint32>::max());

    // Another settings file: its values are reported afresh.
    void forgetReports() { reported_.clear(); }

private:
    QString usable(const QString& section, const QString& key, const QString& byDefault,
                   const std::function<bool(const QString&)>& accepts);

    Read read_;
    Reject reject_;
    QSet<QString> reported_;
};

}  // namespace quendrix
