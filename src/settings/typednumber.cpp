#include "settings/typednumber.h"

#include "settings/numbers.h"
#include "settings/textformat.h"

#include <QCoreApplication>
#include <QStringList>
#include <cmath>
#include <vector>

namespace quendrix {

namespace {

// The whole part of a number (after its sign, before the decimal separator or the exponent)
// holds group separators only between groups of three digits: "1.000.000", not "23.6".
bool groupedInPlace(const QString& body, const QLocale& locale) {
    const QString group = locale.groupSeparator();
    if (group.isEmpty() || !body.contains(group)) return true;
    qsizetype start = 0;
    if (body.startsWith(u'+') || body.startsWith(u'-')) start = 1;
    qsizetype end = body.indexOf(locale.decimalPoint(), start);
    if (end < 0) end = body.size();
    for (QChar exponent : {u'e', u'E'}) {
        const qsizetype at = body.indexOf(exponent, start);
        if (at >= 0 && at < end) end = at;
    }
    const QStringList groups = body.mid(start, end - start).split(group);
    // A leading group is one to three digits and, with groups after it, no zero: "0.023" is
    // no thousands.
    if (groups.first().isEmpty() || groups.first().size() > 3 || groups.first().startsWith(u'0'))
        return false;
    for (qsizetype i = 1; i < groups.size(); ++i)
        if (groups[i].size() != 3) return false;
    return true;
}

// One way the panel reads the text: the number it takes, or the run-time error it raises.
struct Reading {
    std::optional<double> value;
    int error = 0;
};

template <typename Convert>
Reading readWith(Convert convert) {
    try {
        return {convert(), 0};
    } catch (const RuntimeError& refused) {
        return {std::nullopt, refused.number()};
    }
}

std::vector<Reading> readingsOf(const QString& text, const NumberBoxRule& rule,
                                const QLocale& locale) {
    std::vector<Reading> readings;
    if (rule.readByVal) readings.push_back(readWith([&] { return Val(text); }));
    if (rule.readInLocale) readings.push_back(readWith([&] { return textToDouble(text, locale); }));
    return readings;
}

bool allRead(const std::vector<Reading>& readings, double number) {
    for (const Reading& reading : readings)
        if (!reading.value || *reading.value != number) return false;
    return true;
}

bool fits(double number, const NumberBoxRule& rule) {
    if (rule.wholeNumber && number != std::floor(number)) return false;
    return number >= rule.lowest && number <= rule.highest;
}

// The notes' texts, in the language of the installed translator.
struct Note {
    Q_DECLARE_TR_FUNCTIONS(quendrix::TypedNumber)
};

// "Erwartet: eine ganze Zahl von 1 bis 32766." for a box that expects anything in particular.
QString expectation(const NumberBoxRule& rule, const QLocale& locale) {
    const bool low = std::isfinite(rule.lowest), high = std::isfinite(rule.highest);
    const QString lowest = low ? doubleToText(rule.lowest, locale) : QString();
    const QString highest = high ? doubleToText(rule.highest, locale) : QString();
    if (rule.wholeNumber) {
        if (low && high)
            return Note::tr("Erwartet: eine ganze Zahl von %1 bis %2.").arg(lowest, highest);
        if (low) return Note::tr("Erwartet: eine ganze Zahl ab %1.").arg(lowest);
        if (high) return Note::tr("Erwartet: eine ganze Zahl bis %1.").arg(highest);
        return Note::tr("Erwartet: eine ganze Zahl.");
    }
    if (low && high) return Note::tr("Erwartet: eine Zahl von %1 bis %2.").arg(lowest, highest);
    if (low) return Note::tr("Erwartet: eine Zahl ab %1.").arg(lowest);
    if (high) return Note::tr("Erwartet: eine Zahl bis %1.").arg(highest);
    return {};
}

// The numbers the panel took, each once: "Gelesen als 23 und als 23,6."
QString understood(const std::vector<Reading>& readings, const QLocale& locale) {
    QStringList numbers;
    bool refused = false;
    for (const Reading& reading : readings) {
        if (!reading.value) {
            refused = true;
            continue;
        }
        const QString number = doubleToText(*reading.value, locale);
        if (!numbers.contains(number)) numbers.append(number);
    }
    QStringList lines;
    if (!numbers.isEmpty())
        //: The numbers a box's text was read as, joined by " und als ": "Gelesen als 23 und als
        //: 23,6."
        lines.append(Note::tr("Gelesen als %1.").arg(numbers.join(Note::tr(" und als "))));
    if (refused) lines.append(Note::tr("Wird so nicht angenommen."));
    return lines.join(u'\n');
}

}  // namespace

std::optional<double> meantNumber(const QString& text, const QLocale& locale) {
    const QString body = text.trimmed();
    if (body.isEmpty()) return std::nullopt;
    try {
        if (groupedInPlace(body, locale)) return textToDouble(body, locale);
    } catch (const RuntimeError&) {
    }
    // A lone separator that is no group separator in its place is the decimal point.
    qsizetype separators = 0, at = -1;
    for (qsizetype i = 0; i < body.size(); ++i) {
        if (body[i] == u'.' || body[i] == u',') {
            ++separators;
            at = i;
        }
    }
    if (separators != 1) return std::nullopt;
    QString plain = body;
    plain[at] = u'.';
    try {
        return textToDouble(plain, QLocale::c());
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
}

namespace {

// A text that every reading of the box takes as `number` and that means `number` to a reader,
// in the locale's way if it can be: "123.456" is no way to type 123,456 in German.
std::optional<QString> howToType(double number, const NumberBoxRule& rule, const QLocale& locale) {
    for (const QString& text : {doubleToText(number, locale), doubleToText(number, QLocale::c())})
        if (meantNumber(text, locale) == number && allRead(readingsOf(text, rule, locale), number))
            return text;
    return std::nullopt;
}

}  // namespace

TypedNumber judgeTypedNumber(const QString& text, const NumberBoxRule& rule,
                             const QLocale& locale) {
    const std::vector<Reading> readings = readingsOf(text, rule, locale);
    const std::optional<double> meant = meantNumber(text, locale);
    QStringList note;
    if (meant && allRead(readings, *meant)) {
        if (fits(*meant, rule)) return {};
        note.append(rule.wholeNumber && *meant != std::floor(*meant)
                        ? Note::tr("Keine ganze Zahl.")
                        : Note::tr("Außerhalb des sinnvollen Bereichs."));
    } else {
        bool overflow = false;
        for (const Reading& reading : readings)
            overflow = overflow || reading.error == RuntimeError::Overflow;
        if (overflow)
            note.append(Note::tr("Zu groß für eine Zahl."));
        else if (!meant)
            note.append(text.trimmed().isEmpty() ? Note::tr("Leer.") : Note::tr("Keine Zahl."));
        note.append(understood(readings, locale));
        if (meant && fits(*meant, rule)) {
            if (const std::optional<QString> typed = howToType(*meant, rule, locale))
                note.append(Note::tr("Für %1 bitte „%2“ eingeben.")
                                .arg(doubleToText(*meant, locale), *typed));
        }
    }
    const QString expected = expectation(rule, locale);
    if (!expected.isEmpty()) note.append(expected);
    return {false, note.join(u'\n')};
}

}  // namespace quendrix
