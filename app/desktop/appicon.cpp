#include "desktop/appicon.h"

#include <QDir>
#include <QGuiApplication>
#include <QIcon>

namespace desktop {

void useApplicationIcon() {
    // The resource holds one folder per rendered size, named by its edge in pixels.
    const QDir icons(QStringLiteral(":/quendrix/icons"));
    QIcon icon;
    for (const QString& size : icons.entryList(QDir::Dirs))
        icon.addFile(icons.filePath(size + QStringLiteral("/quendrix.png")),
                     QSize(size.toInt(), size.toInt()));
    QGuiApplication::setWindowIcon(icon);
    QGuiApplication::setDesktopFileName(QStringLiteral("quendrix"));
}

}  // namespace desktop
