// The simulator's front ends over real transports: a pseudo-terminal opened the way the
// component opens it (QSerialPort) and with plain open(2), loopback TCP, and the program.
#include "sim/board.h"
#include "sim/ptyfrontend.h"
#include "sim/tcpfrontend.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <QProcess>
#include <QSerialPort>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace quendrix::sim;

namespace {

Options withBootDelay(double seconds) {
    Options options;
    options.faults.bootDelay = seconds;
    return options;
}

// Reads from a plain descriptor until `expected` has arrived or a second has passed.
QByteArray readFd(int fd, const QByteArray& expected) {
    QByteArray in;
    pollfd ready{fd, POLLIN, 0};
    while (!in.contains(expected) && ::poll(&ready, 1, 1000) > 0) {
        char buffer[256];
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0) break;
        in.append(buffer, n);
    }
    return in;
}

QByteArray readPort(QIODevice& port, const QByteArray& expected, int ms = 1000) {
    QByteArray in;
    QElapsedTimer timer;
    timer.start();
    while (!in.contains(expected) && timer.elapsed() < ms) {
        port.waitForReadyRead(50);
        in += port.readAll();
    }
    return in;
}

}  // namespace

class TestSimFrontEnds : public QObject {
    Q_OBJECT

private slots:
    void pseudoTerminalServesEachOpenOfTheDevice() {
        double now = 0;
        Board board(withBootDelay(1));
        PtyFrontEnd pty(board, [&now] { return now; });
        QVERIFY(pty.open());
        QTemporaryDir dir;
        const QString link = dir.filePath("board");
        QVERIFY(pty.linkTo(link));
        QSignalSpy opened(&pty, &FrontEnd::linkOpened);
        pty.pump();
        QVERIFY(!pty.linkUp());

        // The component's way: QSerialPort on the link, 115200 8N1.
        QSerialPort port(link);
        port.setBaudRate(115200);
        QVERIFY2(port.open(QIODevice::ReadWrite), qPrintable(port.errorString()));
        QVERIFY(port.setDataBits(QSerialPort::Data8) && port.setParity(QSerialPort::NoParity) &&
                port.setStopBits(QSerialPort::OneStop));
        pty.pump();
        QVERIFY(pty.linkUp());
        port.write("?#\r\n");
        QVERIFY(port.waitForBytesWritten(1000));
        QTRY_COMPARE((pty.pump(), board.received().size()), 0);  // still booting: deaf
        now = 1;
        port.write("?#\r\nt100#");
        QVERIFY(port.waitForBytesWritten(1000));
        QTRY_COMPARE((pty.pump(), board.received().size()), 2);
        QCOMPARE(readPort(port, "T|"),
                 QByteArray("Arduino Photostand\r\nq #0 ~0 *1 |B\r\nT|100#\r\n"));
        port.close();
        QTRY_VERIFY((pty.pump(), !pty.linkUp()));

        // Plain open(2), again and again: each open resets the board and boots it anew.
        for (int round = 0; round < 3; ++round) {
            const int fd = ::open(qPrintable(pty.devicePath()), O_RDWR | O_NOCTTY);
            QVERIFY(fd >= 0);
            pty.pump();
            QVERIFY(pty.linkUp());
            QCOMPARE(::write(fd, "?#\r\n", 4), 4);
            pty.pump();
            now += 1;
            QCOMPARE(::write(fd, "?0#\r\n", 5), 5);
            QTRY_VERIFY((pty.pump(), board.received().size() == 3 + round));
            QCOMPARE(readFd(fd, "\n"), QByteArray("q?|*1 #0 ~0\r\n"));
            ::close(fd);
            QTRY_VERIFY((pty.pump(), !pty.linkUp()));
        }
        QCOMPARE(opened.size(), 4);

        // Closed and opened again before the front end looks: still a new link, and the board
        // boots again (deaf for a second), where it would otherwise go on as if nothing
        // happened.
        const int first = ::open(qPrintable(pty.devicePath()), O_RDWR | O_NOCTTY);
        pty.pump();
        ::close(first);
        const int second = ::open(qPrintable(pty.devicePath()), O_RDWR | O_NOCTTY);
        QSignalSpy closed(&pty, &FrontEnd::linkClosed);
        pty.pump();
        QCOMPARE(closed.size(), 1);
        QCOMPARE(opened.size(), 6);
        QVERIFY(pty.linkUp());
        QCOMPARE(::write(second, "?#\r\n", 4), 4);
        pty.pump();
        QCOMPARE(board.received().size(), 5);  // booting: deaf
        now += 1;
        QCOMPARE(::write(second, "?#\r\n", 4), 4);
        QTRY_VERIFY((pty.pump(), board.received().size() == 6));
        QCOMPARE(readFd(second, "\n"), QByteArray("Arduino Photostand\r\n"));
        ::close(second);
        pty.close();
        QVERIFY(!QFileInfo::exists(link) && !QFileInfo(link).isSymLink());
    }

    void pseudoTerminalDisconnectHangsUpAndReplacesTheDevice() {
        Options options;
        options.faults.disconnectAfter = 2;
        Board board(options);
        PtyFrontEnd pty(board, [] { return 0.0; });
        QVERIFY(pty.open());
        QTemporaryDir dir;
        const QString link = dir.filePath("board");
        QVERIFY(pty.linkTo(link));
        const QString first = pty.devicePath();
        QSignalSpy replaced(&pty, &PtyFrontEnd::devicePathChanged);

        const int fd = ::open(qPrintable(first), O_RDWR | O_NOCTTY | O_NONBLOCK);
        pty.pump();
        QCOMPARE(::write(fd, "w1#w2#", 6), 6);
        QTRY_COMPARE((pty.pump(), replaced.size()), 1);
        pollfd state{fd, POLLIN, 0};
        QCOMPARE(::poll(&state, 1, 1000), 1);
        QVERIFY(state.revents & POLLHUP);  // the client sees the cable pulled
        ::close(fd);

        QVERIFY(pty.devicePath() != first);
        QCOMPARE(QFileInfo(link).symLinkTarget(), pty.devicePath());
        const int again = ::open(qPrintable(link), O_RDWR | O_NOCTTY);
        pty.pump();
        QCOMPARE(::write(again, "?#\r\n", 4), 4);
        QTRY_VERIFY((pty.pump(), board.received().size() == 3));
        QCOMPARE(readFd(again, "\n"), QByteArray("Arduino Photostand\r\n"));
        ::close(again);
    }

    void tcpServesOneClientAtATime() {
        double now = 0;
        Options options = withBootDelay(0.5);
        options.faults.disconnectAfter = 3;
        Board board(options);
        TcpFrontEnd tcp(board, [&now] { return now; });
        QVERIFY(tcp.listen());
        QCOMPARE(tcp.address(), QHostAddress(QHostAddress::LocalHost));

        QTcpSocket client;
        client.connectToHost(QHostAddress::LocalHost, tcp.port());
        QVERIFY(client.waitForConnected(1000));
        QTRY_VERIFY((tcp.pump(), tcp.linkUp()));
        QTcpSocket second;
        second.connectToHost(QHostAddress::LocalHost, tcp.port());
        QTRY_VERIFY((tcp.pump(), second.state() == QAbstractSocket::UnconnectedState));

        now = 0.5;
        client.write("?#\r\nv#\r\n");
        QVERIFY(client.waitForBytesWritten(1000));
        QTRY_COMPARE((tcp.pump(), board.received().size()), 2);
        QCOMPARE(readPort(client, "V|"), QByteArray("Arduino Photostand\r\nV|#\r\n"));
        // The third command is the last: the board answers it and hangs up.
        client.write("z#\r\n");
        QTRY_VERIFY((tcp.pump(), !tcp.linkUp()));
        QCOMPARE(readPort(client, "Z|"), QByteArray("Z|#\r\n"));
        QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);

        // The server goes on listening; a new client finds a freshly booted board.
        QTcpSocket third;
        third.connectToHost(QHostAddress::LocalHost, tcp.port());
        QVERIFY(third.waitForConnected(1000));
        QTRY_VERIFY((tcp.pump(), tcp.linkUp()));
        QCOMPARE(board.axis(0).direction, 1);
    }

    void programServesBothTransportsInRealTime() {
        QTemporaryDir dir;
        const QString link = dir.filePath("board");
        QProcess sim;
        sim.setProgram(QCoreApplication::applicationDirPath() + "/../sim/quendrix-sim");
        sim.setArguments({"--rig", "microscope", "--link", link, "--tcp", "0", "--reply-delay",
                          "0.05", "--rail", "200"});
        sim.start();
        QVERIFY2(sim.waitForStarted(2000), qPrintable(sim.program() + ": " + sim.errorString()));
        QByteArray banner;
        while (banner.count('\n') < 3 && sim.waitForReadyRead(2000))
            banner += sim.readAll();
        const QList<QByteArray> lines = banner.split('\n');
        QVERIFY2(lines.size() >= 3 && lines[0].startsWith("serial: /dev/pts/"), banner);
        QCOMPARE(lines[1], "link: " + link.toUtf8());
        QVERIFY2(lines[2].startsWith("tcp: 127.0.0.1:"), banner);

        QSerialPort port(QString::fromUtf8(lines[0].mid(8)));
        port.setBaudRate(115200);
        QVERIFY2(port.open(QIODevice::ReadWrite), qPrintable(port.errorString()));
        // 250 steps at 800 µs would take 0.2 s; the rail's end stops the carriage at 200.
        port.write("?#\r\nt250#");
        const QByteArray moved = readPort(port, "|F :0", 2000);
        QVERIFY2(moved.startsWith("Arduino Mikroskop\r\nq #0 ~0 *1 |B"), moved);
        QVERIFY2(moved.endsWith("q |! Endschalter oben\r\nq #200 ~200 *1 |B\r\n"
                                "q #200 ~200 *1 |F :0\r\n"),
                 moved);

        QTcpSocket client;
        client.connectToHost(QHostAddress::LocalHost, lines[2].mid(15).toUShort());
        QVERIFY(client.waitForConnected(1000));
        client.write("?1#\r\n");
        QCOMPARE(readPort(client, "\n", 2000), QByteArray("Q?| keine Achse\r\n"));

        sim.terminate();
        QVERIFY(sim.waitForFinished(2000));
        QCOMPARE(sim.exitStatus(), QProcess::NormalExit);
        QCOMPARE(sim.exitCode(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());

        for (const char* rail : {"0", "200,300,400", "long"}) {
            QProcess refused;
            refused.start(sim.program(), {"--rail", rail});
            QVERIFY(refused.waitForFinished(2000));
            QCOMPARE(refused.exitCode(), 2);
            QVERIFY2(refused.readAllStandardError().startsWith("quendrix-sim: --rail"), rail);
        }
    }
};

QTEST_MAIN(TestSimFrontEnds)
#include "tst_simfrontends.moc"
