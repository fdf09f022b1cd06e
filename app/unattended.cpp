#include "unattended.h"

#include <cstdio>
int UnattendedPlatform::messageBox(const QString& prompt, int style, const QString& title) {
    std::fprintf(stderr, "quendrix: message %s%s\n",
                 title.isEmpty() ? "" : qPrintable(title + QStringLiteral(": ")),
                 qPrintable(QString(prompt).replace(QStringLiteral("\r\n"), QStringLiteral(" "))));
    return quendrix::MsgBox::defaultAnswer(style);
}

QString UnattendedPlatform::inputBox(const QString&, const QString&, const QString& defaultText) {
    return defaultText;
}
