#include "session/average.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QSaveFile>
#include <vector>

namespace {
// The window's texts, in the language of the installed translator.
struct Message {
    Q_DECLARE_TR_FUNCTIONS(Average)
};
}  // namespace

QString averagePictures(const QStringList& pictures, const QString& output) {
    if (pictures.isEmpty()) return Message::tr("keine Bilder zum Mitteln");
    std::vector<quint32> sum;
    QSize size;
    for (const QString& file : pictures) {
        QImage picture(file);
        if (picture.isNull())
            return Message::tr("%1 ist kein lesbares Bild").arg(QDir::toNativeSeparators(file));
        if (size.isEmpty()) {
            size = picture.size();
            sum.assign(size_t(size.width()) * size.height() * 3, 0);
        } else if (picture.size() != size) {
            return Message::tr("%1 hat %2x%3 Pixel, die anderen Bilder %4x%5")
                .arg(QDir::toNativeSeparators(file))
                .arg(picture.width())
                .arg(picture.height())
                .arg(size.width())
                .arg(size.height());
        }
        picture.convertTo(QImage::Format_RGB888);
        quint32* total = sum.data();
        for (int y = 0; y < size.height(); ++y) {
            const uchar* line = picture.constScanLine(y);
            for (int x = 0; x < size.width() * 3; ++x)
                *total++ += line[x];
        }
    }
    QImage mean(size, QImage::Format_RGB888);
    const quint32 count = quint32(pictures.size());
    const quint32* total = sum.data();
    for (int y = 0; y < size.height(); ++y) {
        uchar* line = mean.scanLine(y);
        for (int x = 0; x < size.width() * 3; ++x)
            line[x] = uchar((*total++ + count / 2) / count);
    }
    QSaveFile file(output);  // never a half-written mean under its name
    QImageWriter writer(&file, QFileInfo(output).suffix().toLatin1());
    if (!file.open(QIODevice::WriteOnly) || !writer.write(mean) || !file.commit())
        return Message::tr("%1 kann nicht geschrieben werden: %2")
            .arg(QDir::toNativeSeparators(output), writer.error() != QImageWriter::UnknownError
                                                       ? writer.errorString()
                                                       : file.errorString());
    return {};
}
