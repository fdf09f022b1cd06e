// Writes one key of a settings file over and over, counting up, until it is killed. The
// profile test kills it at random moments, many of them in the middle of a write.
#include "settings/profile.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: profilewriter FILE FIRST-NUMBER\n");
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    QString error;
    for (qint64 n = QByteArray(argv[2]).toLongLong();; ++n) {
        if (!quendrix::profile::writeString(path, QStringLiteral("Zähler"), QStringLiteral("n"),
                                            QString::number(n), &error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
    }
}
