#include "settings/filereplace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

#if defined(Q_OS_WIN)
#include <io.h>
#include <windows.h>
#else
#include <signal.h>
#include <unistd.h>
#include <cerrno>
#endif

namespace quendrix {

namespace {

const QString kTempInfix = QStringLiteral(".quendrix-tmp-");

// The file a path stands for: a symbolic link's final target, else the path itself.
QString fileMeant(const QString& path) {
    const QFileInfo info(path);
    if (info.exists()) return info.canonicalFilePath();
    return info.isSymLink() ? info.symLinkTarget() : info.absoluteFilePath();
}

bool processRunning(qint64 pid) {
#if defined(Q_OS_WIN)
    HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, DWORD(pid));
    if (!process) return GetLastError() == ERROR_ACCESS_DENIED;
    DWORD code = 0;
    const bool running = GetExitCodeProcess(process, &code) && code == STILL_ACTIVE;
    CloseHandle(process);
    return running;
#else
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
#endif
}

// Temporary files of writers that ended before they could finish (or of an earlier write of
// this process that failed half-way).
void removeLeftovers(const QDir& folder, const QString& name) {
    const QString prefix = name + kTempInfix;
    const qint64 self = QCoreApplication::applicationPid();
    for (const QString& entry : folder.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        if (!entry.startsWith(prefix)) continue;
        bool isNumber = false;
        const qint64 pid = QStringView(entry).mid(prefix.size()).toLongLong(&isNumber);
        if (isNumber && pid > 0 && (pid == self || !processRunning(pid)))
            QFile::remove(folder.filePath(entry));
    }
}

bool syncToDisk(QFile& file) {
    if (!file.flush()) return false;
#if defined(Q_OS_WIN)
    return _commit(file.handle()) == 0;
#else
    return ::fsync(file.handle()) == 0;
#endif
}

}  // namespace

bool replaceFile(const QString& path, const QByteArray& contents, QString* error) {
    const auto fail = [&](const QString& reason) {
        if (error)
            *error =
                QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), reason);
        return false;
    };
    const QString target = fileMeant(path);
    const QFileInfo targetInfo(target);
    const QDir folder = targetInfo.absoluteDir();
    removeLeftovers(folder, targetInfo.fileName());

    QFile temp(folder.filePath(targetInfo.fileName() + kTempInfix +
                               QString::number(QCoreApplication::applicationPid())));
    if (!temp.open(QIODevice::WriteOnly | QIODevice::NewOnly)) return fail(temp.errorString());
    if (targetInfo.exists()) temp.setPermissions(QFile::permissions(target));
    const bool written = temp.write(contents) == contents.size() && syncToDisk(temp);
    const QString writeError = temp.errorString();
    temp.close();
    if (!written) {
        temp.remove();
        return fail(writeError);
    }

    std::error_code renamed;
    std::filesystem::rename(std::filesystem::path(temp.fileName().toStdU16String()),
                            std::filesystem::path(target.toStdU16String()), renamed);
    if (renamed) {
        temp.remove();
        return fail(QString::fromStdString(renamed.message()));
    }
    if (error) error->clear();
    return true;
}

}  // namespace quendrix
