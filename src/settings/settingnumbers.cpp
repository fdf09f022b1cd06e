#include "settings/settingnumbers.h"

#include "settings/numbers.h"

namespace quendrix {

QString SettingNumbers::usable(const QString& section, const QString& key, const QString& byDefault,
                               const std::function<bool(const QString&)>& accepts) {
    const QString text = read_(section, key, byDefault);
    if (accepts(text)) return text;
    const QString seen = section.toLower() + u'\n' + key.toLower() + u'\n' + text;
    if (!reported_.contains(seen)) {
        reported_.insert(seen);
        reject_(section, key, text, byDefault);
    }
    return byDefault;
}

QString SettingNumbers::numberText(const QString& section, const QString& key,
                                   const QString& byDefault) {
    return usable(section, key, byDefault,
                  [](const QString& text) { return ValInRange(text).has_value(); });
}

double SettingNumbers::number(const QString& section, const QString& key,
                              const QString& byDefault) {
    return ValInRange(numberText(section, key, byDefault)).value_or(0);
}

qint32 SettingNumbers::wholeNumber(const QString& section, const QString& key,
                                   const QString& byDefault, qint32 lowest, qint32 highest) {
    const QString text = usable(section, key, byDefault, [=](const QString& value) {
        return wholeValIn(value, lowest, highest).has_value();
    });
    return wholeValIn(text, lowest, highest).value_or(0);
}

}  // namespace quendrix
