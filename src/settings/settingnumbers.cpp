#include "settings/settingnumbers.h"

#include "settings/numbers.h"

#include <optional>

namespace quendrix {

namespace {

std::optional<double> numberIn(const QString& text) {
    try {
        return Val(text);
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
}

std::optional<qint32> wholeNumberIn(const QString& text, qint32 lowest, qint32 highest) {
    try {
        const qint32 value = toLong(Val(text));
        if (value >= lowest && value <= highest) return value;
    } catch (const RuntimeError&) {
    }
    return std::nullopt;
}

}  // namespace

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
                  [](const QString& text) { return numberIn(text).has_value(); });
}

double SettingNumbers::number(const QString& section, const QString& key,
                              const QString& byDefault) {
    return numberIn(numberText(section, key, byDefault)).value_or(0);
}

qint32 SettingNumbers::wholeNumber(const QString& section, const QString& key,
                                   const QString& byDefault, qint32 lowest, qint32 highest) {
    const QString text = usable(section, key, byDefault, [=](const QString& value) {
        return wholeNumberIn(value, lowest, highest).has_value();
    });
    return wholeNumberIn(text, lowest, highest).value_or(0);
}

}  // namespace quendrix
