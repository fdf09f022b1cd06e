#include "settings/profile.h"

#include "settings/cp1252.h"
#include "settings/filereplace.h"
#include "settings/numbers.h"

#include <QByteArrayView>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <optional>
#include <vector>

namespace quendrix::profile {

namespace {

const QByteArray kNewLine = "\r\n";
const QByteArray kUtf8Mark = "\xEF\xBB\xBF";

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

QByteArrayView trimBlanks(QByteArrayView text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text[begin]))
        ++begin;
    while (end > begin && isBlank(text[end - 1]))
        --end;
    return text.sliced(begin, end - begin);
}

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

bool sameName(QByteArrayView a, QByteArrayView b) {
    if (a.size() != b.size()) return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i])) return false;
    }
    return true;
}

bool breaksLine(const QString& text) {
    return text.contains(u'\r') || text.contains(u'\n');
}

// A value as a message shows it: quoted, line breaks spelled out, a long one shortened.
QString quoted(const QString& text) {
    constexpr qsizetype kShown = 60;
    QString shown = text.left(kShown);
    shown.replace(u'\r', QStringLiteral("\\r")).replace(u'\n', QStringLiteral("\\n"));
    return u'"' + shown + (text.size() > kShown ? QStringLiteral("...\"") : QStringLiteral("\""));
}

// The text encoding of a file: Windows-1252, or UTF-8 after a byte-order mark.
struct Encoding {
    qsizetype textBegin = 0;  // the first byte after the mark
    bool utf8 = false;

    static Encoding of(QByteArrayView contents) {
        if (contents.startsWith(kUtf8Mark)) return {kUtf8Mark.size(), true};
        return {};
    }
    QString decode(QByteArrayView bytes) const {
        return utf8 ? QString::fromUtf8(bytes) : fromCp1252(bytes.toByteArray());
    }
    QByteArray encode(const QString& text) const { return utf8 ? text.toUtf8() : toCp1252(text); }
    // The text's bytes, unless the encoding cannot hold every character of it.
    std::optional<QByteArray> encodeExactly(const QString& text) const {
        QByteArray bytes = encode(text);
        if (decode(bytes) != text) return std::nullopt;
        return bytes;
    }
    // Requested names are compared in the file's encoding, so a name with characters the code
    // page cannot hold finds the line written of it before such writes were refused.
    QByteArray name(const QString& text) const { return trimBlanks(encode(text)).toByteArray(); }
};

struct Line {
    enum Kind { Other, Header, Key };
    qsizetype begin = 0;  // first byte
    qsizetype end = 0;    // end of the text, before the line end
    qsizetype next = 0;   // start of the next line
    Kind kind = Other;
    QByteArrayView name;   // section or key name, trimmed
    QByteArrayView value;  // key value, trimmed
    bool blank = true;     // only blanks and TABs
};

Line classify(QByteArrayView text) {
    Line line;
    text = trimBlanks(text);
    line.blank = text.isEmpty();
    if (text.startsWith('[')) {
        const qsizetype close = text.indexOf(']');
        if (close > 0) {
            line.kind = Line::Header;
            line.name = trimBlanks(text.sliced(1, close - 1));
            return line;
        }
    }
    const qsizetype equals = text.indexOf('=');
    if (equals >= 0) {
        line.kind = Line::Key;
        line.name = trimBlanks(text.first(equals));
        line.value = trimBlanks(text.sliced(equals + 1));
    }
    return line;
}

std::vector<Line> splitLines(QByteArrayView contents, qsizetype begin) {
    std::vector<Line> lines;
    const qsizetype size = contents.size();
    while (begin < size) {
        qsizetype end = begin;
        while (end < size && contents[end] != '\r' && contents[end] != '\n')
            ++end;
        qsizetype next = end;
        if (next < size && contents[next] == '\r') ++next;
        if (next < size && contents[next] == '\n') ++next;  // LF alone or the LF of CR LF
        Line line = classify(contents.sliced(begin, end - begin));
        line.begin = begin;
        line.end = end;
        line.next = next;
        lines.push_back(line);
        begin = next;
    }
    return lines;
}

// A file taken apart into lines; the lines are views into `contents`.
struct Document {
    QByteArray contents;
    Encoding encoding;
    std::vector<Line> lines;

    explicit Document(const QByteArray& bytes = {}) { load(bytes); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    void load(const QByteArray& bytes) {
        contents = bytes;
        encoding = Encoding::of(contents);
        lines = splitLines(contents, encoding.textBegin);
    }
};

// Where a section and a key stand in a file: the lines [blockBegin, blockEnd) of the section's
// first block (its header included, if it has one).
struct Location {
    bool sectionFound = false;
    qsizetype blockBegin = 0;
    qsizetype blockEnd = 0;
    qsizetype keyLine = -1;  // the first line with the key, or -1
};

qsizetype nextHeader(const std::vector<Line>& lines, qsizetype from) {
    while (from < qsizetype(lines.size()) && lines[from].kind != Line::Header)
        ++from;
    return from;
}

qsizetype findKey(const std::vector<Line>& lines, qsizetype begin, qsizetype end,
                  QByteArrayView key) {
    for (qsizetype i = begin; i < end; ++i) {
        if (lines[i].kind == Line::Key && sameName(lines[i].name, key)) return i;
    }
    return -1;
}

Location locate(const std::vector<Line>& lines, QByteArrayView section, QByteArrayView key) {
    const auto count = qsizetype(lines.size());
    const auto blockAt = [&](qsizetype begin, qsizetype end) {
        return Location{true, begin, end, findKey(lines, begin, end, key)};
    };
    const qsizetype firstHeader = nextHeader(lines, 0);
    const bool leadingHasKeys = std::any_of(lines.begin(), lines.begin() + firstHeader,
                                            [](const Line& l) { return l.kind == Line::Key; });
    if (section.isEmpty() && leadingHasKeys) return blockAt(0, firstHeader);

    qsizetype header = firstHeader;
    while (header < count && !sameName(lines[header].name, section))
        header = nextHeader(lines, header + 1);
    if (header < count) return blockAt(header, nextHeader(lines, header + 1));
    if (section.isEmpty()) return blockAt(0, firstHeader);
    return {};
}

QString cut(const QString& text) {
    return leftWhole(text, kBufferSize - 1);
}

QByteArrayView unquote(QByteArrayView value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
        value = value.sliced(1, value.size() - 2);
    }
    return value;
}

QString valueIn(const Document& file, const QString& section, const QString& key,
                const QString& defaultValue) {
    const Encoding& encoding = file.encoding;
    const Location at = locate(file.lines, encoding.name(section), encoding.name(key));
    if (at.keyLine >= 0) return cut(encoding.decode(unquote(file.lines[at.keyLine].value)));

    QString fallback = cut(defaultValue);
    qsizetype end = fallback.size();
    while (end > 0 && fallback.at(end - 1) == ' ')
        --end;
    fallback.truncate(end);
    return fallback;
}

// A line `text` that reads back as the key `name`.
bool readsAsKey(QByteArrayView text, QByteArrayView name) {
    const Line line = classify(text);
    return line.kind == Line::Key && sameName(line.name, name);
}

bool readsAsHeader(QByteArrayView text, QByteArrayView name) {
    const Line line = classify(text);
    return line.kind == Line::Header && sameName(line.name, name);
}

// The file read last: start-up and shutdown read dozens of keys from one file in a row. Every
// read reads the file; only when its bytes are the same as last time are its lines reused.
Document& lastRead() {
    thread_local Document file;
    return file;
}

const Document& documentAt(const QString& path) {
    Document& last = lastRead();
    QFile reading(path);
    QByteArray bytes;
    if (reading.open(QIODevice::ReadOnly)) bytes = reading.readAll();  // else counts as missing
    if (bytes != last.contents) last.load(bytes);
    return last;
}

}  // namespace

QString readValue(const QByteArray& contents, const QString& section, const QString& key,
                  const QString& defaultValue) {
    return valueIn(Document(contents), section, key, defaultValue);
}

QByteArray writeValue(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& value, QString* refusal) {
    const auto refuse = [&](const QString& reason) {
        if (refusal) *refusal = reason;
        return contents;
    };
    if (refusal) refusal->clear();
    const Document file(contents);
    const Encoding& encoding = file.encoding;

    const std::optional<QByteArray> sectionName = encoding.encodeExactly(section);
    if (!sectionName || breaksLine(section) ||
        !readsAsHeader('[' + *sectionName + ']', encoding.name(section)))
        return refuse(QStringLiteral("the section name \"%1\" cannot be stored").arg(section));
    const std::optional<QByteArray> keyName = encoding.encodeExactly(key);
    if (!keyName || breaksLine(key))
        return refuse(QStringLiteral("the key name \"%1\" cannot be stored").arg(key));
    const std::optional<QByteArray> encoded = encoding.encodeExactly(value);
    if (!encoded || breaksLine(value))
        return refuse(
            QStringLiteral("the value %1 of key \"%2\" cannot be stored").arg(quoted(value), key));

    const QByteArray trimmedKey = trimBlanks(*keyName).toByteArray();
    const Location at = locate(file.lines, trimBlanks(*sectionName), trimmedKey);
    const QByteArray spelling =
        at.keyLine >= 0 ? file.lines[at.keyLine].name.toByteArray() : trimmedKey;
    const QByteArray keyText = spelling + '=' + *encoded;
    if (!readsAsKey(keyText, trimmedKey))
        return refuse(QStringLiteral("the line \"%1\" would not read back as key \"%2\"")
                          .arg(encoding.decode(keyText), key));

    QByteArray result = contents;
    if (at.keyLine >= 0) {
        const Line& line = file.lines[at.keyLine];
        return result.replace(line.begin, line.end - line.begin, keyText);
    }

    const QByteArray keyLine = keyText + kNewLine;
    if (at.sectionFound) {
        // After the section's last non-blank line, so blank separators stay before the next one.
        qsizetype last = at.blockEnd - 1;
        while (last >= at.blockBegin && file.lines[last].blank)
            --last;
        if (last < at.blockBegin) return result.insert(encoding.textBegin, keyLine);
        const Line& line = file.lines[last];
        const bool ended = line.next > line.end;
        return result.insert(line.next, ended ? keyLine : kNewLine + keyLine);
    }

    // A new section follows the last line directly, as the Windows functions write it.
    if (!file.lines.empty() && file.lines.back().next == file.lines.back().end)
        result += kNewLine;  // the file does not end in a line end
    return result + '[' + trimBlanks(*sectionName).toByteArray() + ']' + kNewLine + keyLine;
}

QString readString(const QString& path, const QString& section, const QString& key,
                   const QString& defaultValue) {
    return valueIn(documentAt(path), section, key, defaultValue);
}

bool writeString(const QString& path, const QString& section, const QString& key,
                 const QString& value, QString* error) {
    const auto fail = [&](const QString& reason) {
        if (error)
            *error =
                QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), reason);
        return false;
    };

    // An existing file we cannot read must not be replaced by one holding a single key.
    QByteArray contents;
    QFile current(path);
    const bool exists = current.exists();
    if (exists) {
        if (!current.open(QIODevice::ReadOnly)) return fail(current.errorString());
        contents = current.readAll();
        current.close();
    }

    QString refusal;
    const QByteArray updated = writeValue(contents, section, key, value, &refusal);
    if (!refusal.isEmpty()) return fail(refusal);
    if (error) error->clear();
    if (exists && updated == contents) return true;
    return replaceFile(path, updated, error);
}

}  // namespace quendrix::profile
