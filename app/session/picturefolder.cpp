#include "session/picturefolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace picturefolder {

namespace {
// The window's texts, in the language of the installed translator.
struct Message {
    Q_DECLARE_TR_FUNCTIONS(PictureFolder)
};
}  // namespace

QString defaultRoot() {
    QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (pictures.isEmpty()) pictures = QDir::homePath() + QStringLiteral("/Pictures");
    return pictures + QStringLiteral("/Quendrix");
}

QString makeRunFolder(const QString& root, const QDateTime& start, QString* error) {
    const QString name = start.toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss"));
    QDir base(root);
    if (!base.mkpath(QStringLiteral("."))) {
        *error =
            Message::tr("Ordner %1 kann nicht angelegt werden").arg(QDir::toNativeSeparators(root));
        return {};
    }
    for (int attempt = 1; attempt < 1000; ++attempt) {
        const QString candidate =
            attempt == 1 ? name : QStringLiteral("%1-%2").arg(name).arg(attempt);
        if (base.exists(candidate)) continue;
        if (base.mkdir(candidate)) return base.filePath(candidate);
    }
    *error = Message::tr("in %1 kann kein Ordner für die Aufnahmen angelegt werden")
                 .arg(QDir::toNativeSeparators(root));
    return {};
}

bool prepareEmpty(const QString& dir, QString* error) {
    const QFileInfo info(dir);
    if (info.exists() && !info.isDir()) {
        *error = QStringLiteral("%1 is a file, not a folder").arg(QDir::toNativeSeparators(dir));
        return false;
    }
    if (!QDir().mkpath(dir)) {
        *error = QStringLiteral("cannot create the folder %1").arg(QDir::toNativeSeparators(dir));
        return false;
    }
    if (!QDir(dir).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)) {
        *error = QStringLiteral(
                     "%1 is not empty; choose a new or empty folder, so that no "
                     "earlier picture is overwritten")
                     .arg(QDir::toNativeSeparators(dir));
        return false;
    }
    return true;
}

QString pictureName(const QString& stem, int number, const QString& suffix) {
    return QStringLiteral("%1-%2.%3").arg(stem).arg(number, 4, 10, QLatin1Char('0')).arg(suffix);
}

}  // namespace picturefolder
