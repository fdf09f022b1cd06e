// Sending commands with the acknowledge handshake, and the two receive handlers.
#include "core/replyline.h"
#include "link/link.h"
#include "settings/cp1252.h"
#include "settings/guard.h"
#include "settings/wait.h"

#include <quendrix/Panel.h>
#include "settings/rig.h"

#include <QLineEdit>
#include <QSerialPort>
#include <QTcpSocket>

namespace quendrix {

namespace {

const QString kLineEnd = QStringLiteral("\r\n");
constexpr double kAcknowledgeSeconds = 2;
constexpr double kReleaseSeconds = 31;

}  // namespace

Link::Link(Rig& rig, Panel& panel, Waiter& waiter) : rig_(rig), panel_(panel), waiter_(waiter) {
    connect(panel_.MSComm1, &QSerialPort::readyRead, this, &Link::serialReceived);
    connect(panel_.Telnet1, &QTcpSocket::readyRead, this, &Link::socketReceived);
}

void Link::forgetReceived() {
    sEmpfang_.clear();
    socketTail_.clear();
    sRest_.clear();
    sKennText_ = {};
    AchsPosition_ = {0, 0};
    encoder_ = {0, 0};
    bQuittiert_ = false;
}

void Link::Output(const QString& Befehl) {
    waiter_.waitFor([this] { return bQuittiert_; }, kAcknowledgeSeconds);
    bQuittiert_ = false;
    sErwartet_ = acknowledgeMarker(Befehl, backlash_[0], backlash_[1]);

    if (rig_.wifi()) {
        if (panel_.Telnet1->state() != QAbstractSocket::ConnectedState) {
            failed(QStringLiteral("Keine WiFi Verbindung"));
        } else {
            panel_.Telnet1->write(toCp1252(Befehl.contains(kLineEnd) ? Befehl : Befehl + kLineEnd));
            panel_.Telnet1->flush();
        }
    } else if (panel_.MSComm1->isOpen()) {
        setTag(panel_.MSComm1, QStringLiteral("A1"));
        panel_.MSComm1->write(toCp1252(Befehl));
        panel_.MSComm1->flush();
    } else {
        failed(QStringLiteral("Keine Verbindung"));
    }

    // Replies that arrived during the send and still wait in the remainder are evaluated now.
    while (sRest_.contains(kLineEnd)) {
        Auswerten(QString(), false);
        waiter_.doEvents();
    }
    const Waiter::Result waited =
        waiter_.waitFor([this] { return bQuittiert_; }, kAcknowledgeSeconds);
    if (waited != Waiter::Result::Cancelled) countAnswer(bQuittiert_);
}

void Link::countAnswer(bool answered) {
    const bool before = acknowledging();
    ++commandsSent_;
    if (answered) {
        unansweredInARow_ = 0;
    } else {
        ++commandsUnanswered_;
        unansweredInARow_ = std::min(unansweredInARow_ + 1, kSilentAfter);
    }
    if (acknowledging() != before) emit acknowledgingChanged(acknowledging());
}

// A command that could not be sent is reported as if the board had said so. The text has no
// line end: it stays in the remainder, where "Keine Verbindung" alone counts as answered, so a
// dead serial link costs each command its own waits and no more. An earlier failure text
// still waiting there gives way to the new one instead of piling up.
void Link::failed(const QString& text) {
    if (sRest_ == u"Keine Verbindung" || sRest_ == u"Keine WiFi Verbindung") sRest_.clear();
    panel_.Text1[1]->setText(text);
    Auswerten(text, false);
}

// Evaluating lets events run, and Qt raises no second readyRead while one is handled: bytes
// that arrive meanwhile are taken before the handler returns. Left in the port, they would wait
// for the board's next line, and after a finished move there is none.
void Link::serialReceived() {
    QSerialPort& port = *panel_.MSComm1;
    while (port.bytesAvailable() > 0) {
        const QByteArray bytes = port.readAll();
        if (!rig_.wifi()) received(bytes, false);  // else the serial port is not the link now
    }
}

// The socket hands on what has arrived up to its last line end; the rest waits for more. A
// board whose WiFi module sends a line's CR LF in a packet of its own thereby ends that line,
// instead of delivering a lone CR LF, which the socket's rule drops, losing the line and its
// acknowledgement.
void Link::socketReceived() {
    QTcpSocket& socket = *panel_.Telnet1;
    while (socket.bytesAvailable() > 0) {
        socketTail_ += socket.readAll();
        const qsizetype end = socketTail_.lastIndexOf("\r\n");
        if (end < 0) continue;
        const QByteArray lines = socketTail_.left(end + 2);
        socketTail_.remove(0, end + 2);
        received(lines, true);
    }
}

// Whatever the board sends is evaluated here, inside the transport's event: nothing that goes
// wrong on the way may leave it, or the host's event loop would end the program.
void Link::received(const QByteArray& bytes, bool viaSocket) {
    runQuietly([&] {
        const QString data = fromCp1252(bytes);
        if (viaSocket && data == kLineEnd) return;
        sEmpfang_ += data;
        takeLines(viaSocket);
    });
}

// The transports differ only in which lines count as an acknowledgement by themselves (see
// handlingOf).
void Link::takeLines(bool viaSocket) {
    while (const std::optional<QString> line = cutLine(sEmpfang_)) {
        const LineHandling handling = handlingOf(*line, viaSocket);
        if (handling.lastLine) sLetzteZeile_ = withoutLineEnd(*line);
        if (handling.evaluate) Auswerten(*line, viaSocket);
        if (handling.acknowledges) bQuittiert_ = true;
        waiter_.doEvents();
    }
}

void Link::waitForRelease(const QString& caller) {
    const auto result =
        waiter_.waitFor([this] { return bFreigabe_; }, kReleaseSeconds, Waiter::Escape::Ends);
    if (result == Waiter::Result::TimedOut)
        rig_.platform().messageBox(tr("Quendrix wartet auf Freigabe: ") + caller, MsgBox::OKOnly,
                                   QString());
}

}  // namespace quendrix
