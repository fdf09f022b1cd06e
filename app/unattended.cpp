#include "unattended.h"

#include <cstdio>

namespace {

// The answer of a box's default button: its first, second or third button.
int defaultAnswer(int style) {
    using namespace quendrix::MsgBox;
    static const int kButtons[][3] = {{OK, OK, OK},           {OK, Cancel, Cancel},
                                      {Abort, Retry, Ignore}, {Yes, No, Cancel},
                                      {Yes, No, No},          {Retry, Cancel, Cancel}};
    const int set = style & 7;
    const int button = (style & 768) / 256;
    return set < 6 ? kButtons[set][button < 3 ? button : 0] : OK;
}

}  // namespace

int UnattendedPlatform::messageBox(const QString& prompt, int style, const QString& title) {
    std::fprintf(stderr, "quendrix: message %s%s\n",
                 title.isEmpty() ? "" : qPrintable(title + QStringLiteral(": ")),
                 qPrintable(QString(prompt).replace(QStringLiteral("\r\n"), QStringLiteral(" "))));
    return defaultAnswer(style);
}

QString UnattendedPlatform::inputBox(const QString&, const QString&, const QString& defaultText) {
    return defaultText;
}
