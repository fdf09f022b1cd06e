#include "support/rawpeers.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

RawPty::RawPty() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (master_ < 0) return;
    if (grantpt(master_) != 0 || unlockpt(master_) != 0) {
        ::close(master_);
        master_ = -1;
        return;
    }
    termios settings{};
    if (tcgetattr(master_, &settings) == 0) {
        cfmakeraw(&settings);
        tcsetattr(master_, TCSANOW, &settings);
    }
    path_ = QString::fromLocal8Bit(ptsname(master_));
}

RawPty::~RawPty() {
    if (master_ >= 0) ::close(master_);
}

void RawPty::write(const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(master_, bytes.constData() + done, size_t(bytes.size() - done));
        if (n <= 0) break;
        done += n;
    }
}

QByteArray RawPty::readAll() {
    QByteArray result;
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n <= 0) break;
        result.append(buffer, qsizetype(n));
    }
    return result;
}
