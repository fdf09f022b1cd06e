#include "sim/ptyfrontend.h"

#include "sim/board.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <termios.h>
#include <unistd.h>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace quendrix::sim {

namespace {
QString systemError(const char* what) {
    return QStringLiteral("%1: %2").arg(QLatin1String(what),
                                        QString::fromLocal8Bit(strerror(errno)));
}
}  // namespace

PtyFrontEnd::PtyFrontEnd(Board& board, Clock clock, QObject* parent)
    : FrontEnd(board, std::move(clock), parent) {
}

PtyFrontEnd::~PtyFrontEnd() {
    close();
}

bool PtyFrontEnd::open(QString* error) {
    if (isOpen()) return true;
    if (!openMaster(error)) return false;
    board().linkClosed(now());  // nobody holds the device yet
    return true;
}

void PtyFrontEnd::close() {
    removeLink();
    linkPath_.clear();
    closeMaster();
    setLinkUp(false);
}

bool PtyFrontEnd::openMaster(QString* error) {
    auto fail = [&](const char* what) {
        if (error) *error = systemError(what);
        closeMaster();
        return false;
    };
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ < 0) return fail("posix_openpt");
    if (grantpt(master_) != 0) return fail("grantpt");
    if (unlockpt(master_) != 0) return fail("unlockpt");
    char name[128];
    if (ptsname_r(master_, name, sizeof name) != 0) return fail("ptsname");
    path_ = QString::fromLocal8Bit(name);

    // Raw bytes both ways: no echo, no line editing, no CR/LF translation. Settings made on
    // the master belong to the slave and outlive every open of it.
    termios settings{};
    if (tcgetattr(master_, &settings) != 0) return fail("tcgetattr");
    cfmakeraw(&settings);
    cfsetspeed(&settings, B115200);
    if (tcsetattr(master_, TCSANOW, &settings) != 0) return fail("tcsetattr");

    // Until the slave has been opened once, the master reports no hang-up; open and close it
    // here, so that from now on a hang-up means "nobody holds the device".
    const int slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave < 0) return fail("open slave");
    ::close(slave);
    holders_ = 0;
    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch_ < 0) return fail("inotify_init1");
    if (inotify_add_watch(watch_, name, IN_OPEN | IN_CLOSE) < 0) return fail("inotify_add_watch");
    watchNotifier_ = std::make_unique<QSocketNotifier>(watch_, QSocketNotifier::Read);
    watchNotifier_->setEnabled(false);
    connect(watchNotifier_.get(), &QSocketNotifier::activated, this, [this] { pump(); });

    notifier_ = std::make_unique<QSocketNotifier>(master_, QSocketNotifier::Read);
    notifier_->setEnabled(false);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { pump(); });
    return true;
}

void PtyFrontEnd::closeMaster() {
    // This may run inside a notifier's own signal.
    for (std::unique_ptr<QSocketNotifier>* notifier : {&notifier_, &watchNotifier_}) {
        if (!*notifier) continue;
        (*notifier)->setEnabled(false);
        notifier->release()->deleteLater();
    }
    if (watch_ >= 0) ::close(watch_);
    watch_ = -1;
    if (master_ >= 0) ::close(master_);
    master_ = -1;
    unwritten_.clear();
}

bool PtyFrontEnd::linkTo(const QString& symlinkPath, QString* error) {
    removeLink();
    linkPath_ = symlinkPath;
    return makeLink(error);
}

bool PtyFrontEnd::makeLink(QString* error) {
    const QFileInfo existing(linkPath_);
    if (existing.exists() || existing.isSymLink()) {
        if (!existing.isSymLink()) {
            if (error) *error = QStringLiteral("%1 exists and is no symbolic link").arg(linkPath_);
            linkPath_.clear();
            return false;
        }
        QFile::remove(linkPath_);
    }
    if (!QFile::link(path_, linkPath_)) {
        if (error) *error = QStringLiteral("cannot make the link %1").arg(linkPath_);
        linkPath_.clear();
        return false;
    }
    return true;
}

void PtyFrontEnd::removeLink() {
    if (!linkPath_.isEmpty() && QFileInfo(linkPath_).symLinkTarget() == path_)
        QFile::remove(linkPath_);
}

void PtyFrontEnd::pump() {
    const Pumping guard(pumping_);
    if (!guard.entered() || !isOpen()) return;
    followHolders();
    if (!linkUp()) {
        board().advance(now());
        return;
    }
    flushWrites();
    exchange(readMaster());
}

// The system reports every open and close of the slave, so a client that closes and reopens
// the device at once still resets the board. Two opens in a row may be reported as one; the
// master's hang-up (nobody holds the slave) corrects the count.
void PtyFrontEnd::followHolders() {
    std::vector<bool> changes;  // in order; true: opened
    alignas(inotify_event) char buffer[4096];
    for (ssize_t n; (n = ::read(watch_, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < n;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            if (event->mask & IN_OPEN) changes.push_back(true);
            if (event->mask & IN_CLOSE) changes.push_back(false);
            at += ssize_t(sizeof(inotify_event) + event->len);
        }
    }
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        if (*change) {
            if (holders_++ == 0) linkComesUp();
        } else if (holders_ > 0 && --holders_ == 0) {
            linkGoesDown(std::find(change, changes.end(), true) != changes.end());
        }
    }
    pollfd state{master_, POLLIN, 0};
    ::poll(&state, 1, 0);
    const bool hangUp = state.revents & POLLHUP;
    if (hangUp && holders_ > 0) {
        holders_ = 0;
        linkGoesDown(false);
    } else if (!hangUp && holders_ == 0) {
        holders_ = 1;
        linkComesUp();
    }
}

void PtyFrontEnd::linkComesUp() {
    // Lines the last client left unread would otherwise greet the new one. (Only this
    // selector reaches the slave's input queue from the master.)
    tcflush(master_, TCOFLUSH);
    setLinkUp(true);
    updateNotifier();
}

// What the client wrote before it closed still counts, unless another client has opened the
// device since: then what waits is more likely the new one's. Nothing more is sent.
void PtyFrontEnd::linkGoesDown(bool reopened) {
    if (!reopened) {
        const QByteArray in = readMaster();
        if (!in.isEmpty()) board().receive(in, now());
    }
    unwritten_.clear();
    setLinkUp(false);
    updateNotifier();
}

QByteArray PtyFrontEnd::readMaster() {
    QByteArray in;
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n <= 0) break;  // EAGAIN: all read; EIO: the slave is closed
        in.append(buffer, n);
    }
    return in;
}

void PtyFrontEnd::write(const QByteArray& bytes) {
    unwritten_.append(bytes);
    flushWrites();
}

void PtyFrontEnd::flushWrites() {
    while (!unwritten_.isEmpty()) {
        const ssize_t n = ::write(master_, unwritten_.constData(), unwritten_.size());
        if (n <= 0) return;  // the client reads slower than the board writes: later
        unwritten_.remove(0, n);
    }
}

void PtyFrontEnd::dropLink() {
    // Like a cable pulled: the client's device hangs up, and a new device takes its place.
    closeMaster();
    setLinkUp(false);
    QString error;
    if (!openMaster(&error)) return;
    if (!linkPath_.isEmpty()) makeLink(nullptr);
    updateNotifier();
    emit devicePathChanged(path_);
}

void PtyFrontEnd::autoPumpChanged() {
    updateNotifier();
}

void PtyFrontEnd::updateNotifier() {
    // While nobody holds the slave, the master is always readable (with an error): then the
    // timer polls instead of the notifier.
    if (notifier_) notifier_->setEnabled(autoPump() && linkUp());
    if (watchNotifier_) watchNotifier_->setEnabled(autoPump());
}

}  // namespace quendrix::sim
