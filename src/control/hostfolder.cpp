#include "control/hostfolder.h"

#include <QDir>

namespace quendrix {

QString designerHostFolder(const std::function<bool(const QString& folder)>& holdsEntries,
                           const QString& componentFolder) {
#ifdef Q_OS_WIN
    for (char drive = 'C'; drive <= 'Z'; ++drive) {
        if (holdsEntries(QStringLiteral("%1:\\Pelucido\\").arg(QChar(drive))))
            return QStringLiteral("%1:\\\\Pelucido\\").arg(QChar(drive));
    }
    return QStringLiteral("%1:\\\\Pelucido\\").arg(componentFolder.left(1));
#else
    // No drives here: the host's folder sits in the user's home when it is installed there.
    const QString candidate = QDir::home().filePath(QStringLiteral("Pelucido"));
    return holdsEntries(candidate) ? candidate : componentFolder;
#endif
}

QString deriveIniFile(const QString& appPath, const QString& stored,
                      const std::function<QString(const QString& file)>& readAnlage) {
    if (stored.isEmpty()) return {};
    QString name = stored;
    if (QDir::isRelativePath(stored)) {
        // A value stored as "\name.ini" (the host's own convention) is relative all the same.
        QString relative = stored;
        while (relative.startsWith(QLatin1Char('\\')) || relative.startsWith(QLatin1Char('/')))
            relative.remove(0, 1);
        name = appPath.isEmpty() ? relative : QDir(appPath).filePath(relative);
    }
    const int separator =
        int(std::max(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\'))));
    const QString folder = name.left(separator + 1);
    const QString fileName = name.mid(separator + 1);
    if (fileName.contains(QLatin1Char('_'))) return name;

    const int dot = int(fileName.indexOf(QLatin1Char('.')));
    const QString stem = dot < 0 ? QString() : fileName.left(dot);
    return folder + stem + QLatin1Char('_') + readAnlage(name) + QStringLiteral(".ini");
}

}  // namespace quendrix
