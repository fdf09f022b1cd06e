// The settings file's reader and writer on any file and any section, key and value: nothing
// crashes, a read comes back within the buffer, and a write is either refused (the file stays
// byte for byte as it was) or reads back as written while every other key reads as before.
#include "fuzzinput.h"
#include "settings/cp1252.h"
#include "settings/profile.h"

#include <QList>
#include <QPair>
#include <cstdio>
#include <cstdlib>

namespace profile = quendrix::profile;

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_profile: %s\n", what);
        std::abort();
    }
}

QByteArray blanksTrimmed(QByteArray text) {
    while (!text.isEmpty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove(0, 1);
    while (!text.isEmpty() && (text.back() == ' ' || text.back() == '\t'))
        text.chop(1);
    return text;
}

// Every section and key name the file might hold; the reader decides which of them count.
QList<QPair<QString, QString>> namesIn(QByteArray contents) {
    const bool utf8 = contents.startsWith("\xEF\xBB\xBF");
    if (utf8) contents.remove(0, 3);
    const auto decode = [utf8](const QByteArray& name) {
        return utf8 ? QString::fromUtf8(name) : quendrix::fromCp1252(name);
    };
    QList<QPair<QString, QString>> names;
    QString section;
    for (const QByteArray& raw : contents.split('\n')) {
        for (const QByteArray& line : raw.split('\r')) {
            const QByteArray text = blanksTrimmed(line);
            const qsizetype close = text.indexOf(']');
            if (text.startsWith('[') && close > 0) {
                section = decode(blanksTrimmed(text.mid(1, close - 1)));
            } else if (const qsizetype equals = text.indexOf('='); equals >= 0) {
                names.append({section, decode(blanksTrimmed(text.left(equals)))});
            }
        }
    }
    return names;
}

// What a value reads back as: blanks and TABs around it dropped, one pair of enclosing quotes
// removed, cut to the read buffer.
QString readsBackAs(const QString& value) {
    qsizetype begin = 0, end = value.size();
    while (begin < end && (value[begin] == u' ' || value[begin] == u'\t'))
        ++begin;
    while (end > begin && (value[end - 1] == u' ' || value[end - 1] == u'\t'))
        --end;
    QString text = value.mid(begin, end - begin);
    if (text.size() >= 2 && (text.front() == u'"' || text.front() == u'\'') &&
        text.back() == text.front())
        text = text.mid(1, text.size() - 2);
    if (text.size() >= profile::kBufferSize) {
        text.truncate(profile::kBufferSize - 1);
        if (text.back().isHighSurrogate()) text.chop(1);
    }
    return text;
}

bool sameName(const QString& a, const QString& b) {
    return QString(a).trimmed().compare(QString(b).trimmed(), Qt::CaseInsensitive) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const QString section = QString::fromUtf8(input.piece());
    const QString key = QString::fromUtf8(input.piece());
    const QString value = QString::fromUtf8(input.piece());
    const QByteArray contents = input.rest();

    check(profile::readValue(contents, section, key, value).size() < profile::kBufferSize,
          "a read longer than the buffer");
    QString refusal;
    const QByteArray written = profile::writeValue(contents, section, key, value, &refusal);
    if (!refusal.isEmpty()) {
        check(written == contents, "a refused write changed the file");
        return 0;
    }
    check(written.startsWith(contents.left(3)) || !contents.startsWith("\xEF\xBB\xBF"),
          "the byte-order mark was lost");
    check(profile::readValue(written, section, key, QStringLiteral("\x01")) == readsBackAs(value),
          "the value written does not read back");
    for (const auto& [otherSection, otherKey] : namesIn(contents)) {
        if (sameName(otherSection, section) && sameName(otherKey, key)) continue;
        check(profile::readValue(written, otherSection, otherKey, QStringLiteral("\x01")) ==
                  profile::readValue(contents, otherSection, otherKey, QStringLiteral("\x01")),
              "a write changed another key");
    }
    return 0;
}
