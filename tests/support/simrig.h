#pragma once

// A control wired to the board simulator over a real pseudo-terminal (or a loopback socket),
// on the scripted clock: the simulator runs on the same clock and is pumped whenever the
// control lets the event loop run.
#include "control/internals.h"
#include "link/link.h"
#include "sim/board.h"
#include "sim/ptyfrontend.h"
#include "sim/tcpfrontend.h"
#include "support/testplatform.h"

#include <quendrix/ctlQuendrix.h>

#include <sys/ioctl.h>
#include <QSerialPort>
#include <QStringList>
#include <QTcpSocket>
#include <QtTest>
#include <memory>

class SimRig {
public:
    TestPlatform platform;
    std::unique_ptr<quendrix::sim::Board> board;
    std::unique_ptr<quendrix::sim::FrontEnd> front;
    std::unique_ptr<ctlQuendrix> control;

    QString devicePath;   // the board's pseudo-terminal
    quint16 tcpPort = 0;  // or its TCP port

    // Starts a board and (unless openLink is false, for tests of opening the link) opens the
    // control's side of the transport. Returns false (after reporting the failure to QtTest)
    // when the transport could not be opened.
    bool start(const quendrix::sim::Options& options = {}, bool socket = false,
               bool openLink = true) {
        platform.realSecondsPerIdle = 0.001;
        board = std::make_unique<quendrix::sim::Board>(options);
        control = std::make_unique<ctlQuendrix>();
        control->setPlatform(&platform);
        const auto clock = [this] { return platform.now(); };
        if (socket) {
            auto tcp = std::make_unique<quendrix::sim::TcpFrontEnd>(*board, clock);
            if (!tcp->listen()) return fail("listen");
            tcpPort = tcp->port();
            front = std::move(tcp);
            if (!openLink) return started();
            control->Telnet1()->connectToHost(QHostAddress::LocalHost, tcpPort);
            if (!control->Telnet1()->waitForConnected(5000)) return fail("connect");
            control->wifi = true;
        } else {
            auto pty = std::make_unique<quendrix::sim::PtyFrontEnd>(*board, clock);
            if (!pty->open()) return fail("pseudo-terminal");
            devicePath = pty->devicePath();
            front = std::move(pty);
            if (!openLink) return started();
            control->MSComm1()->setPortName(devicePath);
            control->MSComm1()->setBaudRate(115200);
            if (!control->MSComm1()->open(QIODevice::ReadWrite)) return fail("serial port");
            control->wifi = false;
        }
        started();
        quendrix::internals(control).link()->setQuittiert(true);
        return true;
    }

    ~SimRig() {
        platform.onIdle = nullptr;
        control.reset();
        front.reset();
    }

    // Lines of a quarter megabyte take many sleeps to cross a real transport, and the rig's
    // time would run on meanwhile, as a wire of unlimited speed would not let it. From now on
    // the clock stands still while the board's bytes travel: waiting to be written, or written
    // and not yet taken by the control.
    void keepTimeWithTheBytes() {
        platform.clockHeld = [this] {
            return front->linkUp() && (front->writesPending() || bytesArrivedUntaken() > 0);
        };
    }

    quendrix::Link& link() const { return *quendrix::internals(control).link(); }
    quendrix::Panel& panel() const { return *control->panel(); }

    // Lets `seconds` of scripted time pass with the event loop (and the board) running.
    void settle(double seconds) {
        const double end = platform.now() + seconds;
        while (platform.now() < end)
            platform.idle(0.01);
    }

    // Waits on the scripted clock until `condition` holds; false after `limit` seconds.
    template <typename Condition>
    bool waitFor(Condition condition, double limit = 10) {
        const double end = platform.now() + limit;
        while (!condition() && platform.now() < end)
            platform.idle(0.01);
        return condition();
    }

    // The commands the board received since the last call, as framed.
    QStringList takeCommands() {
        QStringList commands;
        for (const quendrix::sim::Received& r : board->received())
            commands.append(QString::fromLatin1(r.command));
        board->clearReceived();
        return commands;
    }

private:
    int bytesArrivedUntaken() const {
        const qintptr fd = control->wifi ? control->Telnet1()->socketDescriptor()
                                         : qintptr(control->MSComm1()->handle());
        int bytes = 0;
        if (fd < 0 || ::ioctl(int(fd), FIONREAD, &bytes) != 0) return 0;
        return bytes;
    }

    bool started() {
        platform.onIdle = [this](TestPlatform&) { front->pump(); };
        settle(0.1);
        return true;
    }
    static bool fail(const char* what) {
        QTest::qFail(what, __FILE__, __LINE__);
        return false;
    }
};
