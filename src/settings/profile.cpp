#include "settings/profile.h"

#include "settings/cp1252.h"

#include <QByteArrayView>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <filesystem>
#include <optional>
#include <vector>

namespace quendrix::profile {

namespace {

const QByteArray kNewLine = "\r\n";

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

// Requested names are compared in the file's encoding, so a name with characters the code
// page cannot hold finds the line a write made of it ("?" in place of those characters).
QByteArray requestName(const QString& name) {
    return trimBlanks(toCp1252(name)).toByteArray();
}

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

Line classify(QByteArrayView contents, qsizetype begin, qsizetype end, qsizetype next) {
    Line line;
    line.begin = begin;
    line.end = end;
    line.next = next;
    const QByteArrayView text = trimBlanks(contents.sliced(begin, end - begin));
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

std::vector<Line> splitLines(QByteArrayView contents) {
    std::vector<Line> lines;
    const qsizetype size = contents.size();
    qsizetype begin = 0;
    while (begin < size) {
        qsizetype end = begin;
        while (end < size && contents[end] != '\r' && contents[end] != '\n')
            ++end;
        qsizetype next = end;
        if (next < size && contents[next] == '\r') ++next;
        if (next < size && contents[next] == '\n') ++next;  // LF alone or the LF of CR LF
        lines.push_back(classify(contents, begin, end, next));
        begin = next;
    }
    return lines;
}

// Where a section and a key stand in a file. The nameless section is the part before the
// first header; it always exists, possibly empty.
struct Location {
    bool sectionFound = false;
    qsizetype blockBegin = 0;  // first line of the section (its header, if it has one)
    qsizetype blockEnd = 0;    // the line after the section
    qsizetype keyLine = -1;    // the first line with the key, or -1
};

Location locate(const std::vector<Line>& lines, QByteArrayView section, QByteArrayView key) {
    Location at;
    const auto count = qsizetype(lines.size());
    if (section.isEmpty()) {
        at.sectionFound = true;
    } else {
        while (at.blockBegin < count && !(lines[at.blockBegin].kind == Line::Header &&
                                          sameName(lines[at.blockBegin].name, section))) {
            ++at.blockBegin;
        }
        if (at.blockBegin == count) return at;
        at.sectionFound = true;
    }
    at.blockEnd = section.isEmpty() ? 0 : at.blockBegin + 1;
    while (at.blockEnd < count && lines[at.blockEnd].kind != Line::Header)
        ++at.blockEnd;
    for (qsizetype i = at.blockBegin; i < at.blockEnd; ++i) {
        if (lines[i].kind == Line::Key && sameName(lines[i].name, key)) {
            at.keyLine = i;
            break;
        }
    }
    return at;
}

QString cut(QString text) {
    if (text.size() >= kBufferSize) {
        text.truncate(kBufferSize - 1);
        if (text.back().isHighSurrogate()) text.chop(1);
    }
    return text;
}

QString unquote(QByteArrayView value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
        value = value.sliced(1, value.size() - 2);
    }
    return fromCp1252(value.toByteArray());
}

// A name that would read back as something else cannot be written.
QString unstorableReason(const QString& section, const QString& key) {
    const auto breaksLine = [](const QString& s) { return s.contains('\r') || s.contains('\n'); };
    if (breaksLine(section) || section.contains(']'))
        return QStringLiteral("the section name \"%1\" cannot be stored").arg(section);
    const QByteArray name = requestName(key);
    if (breaksLine(key) || name.contains('=') || (name.startsWith('[') && name.contains(']')))
        return QStringLiteral("the key name \"%1\" cannot be stored").arg(key);
    return {};
}

QString valueIn(const std::vector<Line>& lines, const QString& section, const QString& key,
                const QString& defaultValue) {
    const Location at = locate(lines, requestName(section), requestName(key));
    if (at.keyLine >= 0) return cut(unquote(lines[at.keyLine].value));

    QString fallback = cut(defaultValue);
    qsizetype end = fallback.size();
    while (end > 0 && fallback.at(end - 1) == ' ')
        --end;
    fallback.truncate(end);
    return fallback;
}

// The file read last, with its lines: start-up and shutdown read dozens of keys from one file
// in a row. It serves again only while the file's size and modification time are those it
// was read with; a write through this module drops it.
struct Stamp {
    std::uintmax_t size = 0;
    std::filesystem::file_time_type modified;
    bool operator==(const Stamp&) const = default;
};

// Size and modification time of a regular file, or nothing (no file, a folder, no access).
std::optional<Stamp> stampOf(const QString& path) {
    const std::filesystem::path file(path.toStdU16String());
    std::error_code failed;
    Stamp stamp;
    stamp.size = std::filesystem::file_size(file, failed);
    if (failed) return std::nullopt;
    stamp.modified = std::filesystem::last_write_time(file, failed);
    if (failed) return std::nullopt;
    return stamp;
}

struct ParsedFile {
    QString path;
    Stamp stamp;
    QByteArray contents;
    std::vector<Line> lines;  // views into contents
};

ParsedFile& lastRead() {
    thread_local ParsedFile file;
    return file;
}

const std::vector<Line>& linesOf(const QString& path) {
    ParsedFile& file = lastRead();
    const std::optional<Stamp> stamp = stampOf(path);
    if (stamp && file.path == path && file.stamp == *stamp) return file.lines;
    file = ParsedFile();
    QFile reading(path);
    if (!stamp || !reading.open(QIODevice::ReadOnly)) return file.lines;  // counts as missing
    file.contents = reading.readAll();
    file.lines = splitLines(file.contents);
    file.path = path;
    file.stamp = *stamp;
    return file.lines;
}

}  // namespace

QString readValue(const QByteArray& contents, const QString& section, const QString& key,
                  const QString& defaultValue) {
    return valueIn(splitLines(contents), section, key, defaultValue);
}

QByteArray writeValue(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& value) {
    if (!unstorableReason(section, key).isEmpty()) return contents;

    QString flat = value;
    flat.replace('\r', ' ').replace('\n', ' ');
    const QByteArray sectionName = requestName(section);
    const QByteArray keyName = requestName(key);
    const QByteArray encoded = toCp1252(flat);

    const std::vector<Line> lines = splitLines(contents);
    const Location at = locate(lines, sectionName, keyName);
    QByteArray result = contents;

    if (at.keyLine >= 0) {
        const Line& line = lines[at.keyLine];
        const QByteArray text = line.name.toByteArray() + '=' + encoded;
        return result.replace(line.begin, line.end - line.begin, text);
    }

    const QByteArray keyLine = keyName + '=' + encoded + kNewLine;
    if (at.sectionFound) {
        // After the section's last non-blank line, so blank separators stay before the next one.
        qsizetype last = at.blockEnd - 1;
        while (last >= at.blockBegin && lines[last].blank)
            --last;
        if (last < at.blockBegin) return result.insert(0, keyLine);  // empty nameless section
        const Line& line = lines[last];
        const bool ended = line.next > line.end;
        return result.insert(line.next, ended ? keyLine : kNewLine + keyLine);
    }

    if (!lines.empty()) {
        const Line& tail = lines.back();
        if (tail.next == tail.end) result += kNewLine;  // the file does not end in a line end
        if (!tail.blank) result += kNewLine;            // one blank line before the new section
    }
    return result + '[' + sectionName + ']' + kNewLine + keyLine;
}

QString readString(const QString& path, const QString& section, const QString& key,
                   const QString& defaultValue) {
    return valueIn(linesOf(path), section, key, defaultValue);
}

bool writeString(const QString& path, const QString& section, const QString& key,
                 const QString& value, QString* error) {
    const auto fail = [&](const QString& reason) {
        if (error)
            *error =
                QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), reason);
        return false;
    };
    if (const QString reason = unstorableReason(section, key); !reason.isEmpty())
        return fail(reason);

    // An existing file we cannot read must not be replaced by one holding a single key.
    QByteArray contents;
    QFile current(path);
    const bool exists = current.exists();
    if (exists) {
        if (!current.open(QIODevice::ReadOnly)) return fail(current.errorString());
        contents = current.readAll();
        current.close();
    }

    const QByteArray updated = writeValue(contents, section, key, value);
    if (error) error->clear();
    if (exists && updated == contents) return true;

    lastRead() = ParsedFile();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return fail(file.errorString());
    if (file.write(updated) != updated.size() || !file.commit()) return fail(file.errorString());
    return true;
}

}  // namespace quendrix::profile
