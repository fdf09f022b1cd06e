#include "optics/calibrationfile.h"

#include "core/calibrationmath.h"
#include "settings/cp1252.h"
#include "settings/filereplace.h"
#include "settings/numbers.h"
#include "settings/textformat.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>

namespace quendrix::calibration {

namespace {

constexpr int kPathFileAccessError = 75;

// Reads the file's items one by one, as the sequential reads that wrote it expect them: blanks
// before an item are skipped; a quoted item runs to its closing quote, anything after it up to
// the delimiter is ignored; an unquoted item runs up to a comma or the line end. An empty
// line is an empty item.
class ItemReader {
public:
    explicit ItemReader(QString text) : text_(std::move(text)) {}

    QString next() {
        if (pos_ >= text_.size()) throw RuntimeError(RuntimeError::InputPastEndOfFile);
        while (pos_ < text_.size() && isBlank(text_[pos_]))
            ++pos_;
        QString item;
        if (pos_ < text_.size() && text_[pos_] == u'"') {
            const qsizetype close = text_.indexOf(u'"', pos_ + 1);
            const qsizetype end = close < 0 ? text_.size() : close;
            item = text_.mid(pos_ + 1, end - pos_ - 1);
            pos_ = end + 1;
            while (pos_ < text_.size() && !isDelimiter(text_[pos_]))
                ++pos_;
        } else {
            const qsizetype start = pos_;
            while (pos_ < text_.size() && !isDelimiter(text_[pos_]))
                ++pos_;
            qsizetype end = pos_;
            while (end > start && isBlank(text_[end - 1]))
                --end;
            item = text_.mid(start, end - start);
        }
        skipDelimiter();
        return item;
    }

    double nextNumber() {
        const QString item = next();
        // An empty item reads as 0, as it always has.
        return item.isEmpty() ? 0.0 : textToDouble(item, QLocale::c());
    }

    // At most this many items can still follow: each but the last ends with a delimiter.
    qint64 itemsLeftAtMost() const { return qint64(text_.size() - pos_) + 1; }

private:
    static bool isBlank(QChar c) { return c == u' ' || c == u'\t'; }
    static bool isDelimiter(QChar c) { return c == u',' || c == u'\r' || c == u'\n'; }

    void skipDelimiter() {
        if (pos_ >= text_.size()) return;
        if (text_[pos_] == u'\r' && pos_ + 1 < text_.size() && text_[pos_ + 1] == u'\n') ++pos_;
        ++pos_;
    }

    QString text_;
    qsizetype pos_ = 0;
};

int readIndex(ItemReader& reader) {
    const qint32 index = toLong(reader.nextNumber());
    if (index < 0) throw RuntimeError(RuntimeError::SubscriptOutOfRange);
    return index;
}

}  // namespace

QStringList columnTitles() {
    return {QStringLiteral("Sehfeld"), QStringLiteral("Auszug"), QStringLiteral("Maßstab"),
            QStringLiteral("Brennweite"), QStringLiteral("s0")};
}

CalibrationFile parseCalibrationFile(const QByteArray& bytes) {
    ItemReader reader(fromCp1252(bytes));
    CalibrationFile file;
    file.sensorWidth = toSingle(reader.nextNumber());
    const int highestColumn = readIndex(reader);
    const int highestRow = readIndex(reader);
    for (int i = 0; i <= highestColumn; ++i)
        reader.next();

    const qint64 columns = qint64(highestColumn) + 1;
    if (columns * (qint64(highestRow) + 1) > reader.itemsLeftAtMost())
        throw RuntimeError(RuntimeError::InputPastEndOfFile);
    file.table.redim(0, kHighestColumn, 0, highestRow);
    for (int j = 0; j <= highestRow; ++j) {
        for (int i = 0; i <= highestColumn; ++i) {
            const double value = reader.nextNumber();
            if (i <= kHighestColumn) file.table(i, j) = value;
        }
    }
    return file;
}

QByteArray formatCalibrationFile(float sensorWidth, const DoubleTable& table) {
    const QLocale c = QLocale::c();
    QStringList lines;
    lines << singleToText(sensorWidth, c) << QString::number(table.ubound(1))
          << QString::number(table.ubound(2));
    QStringList titles = columnTitles();
    for (QString& title : titles)
        title = QLatin1Char('"') + title + QLatin1Char('"');
    lines << titles.join(QLatin1Char(','));
    for (int j = table.lbound(2); j <= table.ubound(2); ++j)
        for (int i = table.lbound(1); i <= table.ubound(1); ++i)
            lines << doubleToText(table(i, j), c);
    return toCp1252(lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
}

CalibrationFile readCalibrationFile(const QString& path) {
    QFile file(path);
    if (!QFileInfo::exists(path)) throw RuntimeError(RuntimeError::FileNotFound, path);
    if (!file.open(QIODevice::ReadOnly)) throw RuntimeError(kPathFileAccessError, path);
    return parseCalibrationFile(file.readAll());
}

void writeCalibrationFile(const QString& path, float sensorWidth, const DoubleTable& table) {
    if (!replaceFile(path, formatCalibrationFile(sensorWidth, table)))
        throw RuntimeError(kPathFileAccessError, path);
}

}  // namespace quendrix::calibration
