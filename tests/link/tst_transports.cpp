// The command channel over real transports: a pseudo-terminal and a loopback socket whose far
// ends the test plays byte for byte, on the scripted clock.
#include "control/internals.h"
#include "link/link.h"
#include "support/rawpeers.h"
#include "support/testplatform.h"

#include <quendrix/ctlQuendrix.h>

#include <QLineEdit>
#include <QSerialPort>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

using quendrix::Link;

namespace {

// A far end that answers every command it receives with `answer`, `delay` scripted seconds
// after it arrived (never, when delay is negative), and keeps what it received.
struct ScriptedBoard {
    std::function<void(const QByteArray&)> write;
    std::function<QByteArray()> read;
    QByteArray answer = "A|\r\n";
    double delay = 0;
    QByteArray received;
    QList<double> arrivals;
    QList<double> due;

    void step(double now) {
        const QByteArray bytes = read();
        if (!bytes.isEmpty()) {
            received += bytes;
            arrivals.append(now);
            if (delay >= 0) due.append(now + delay);
        }
        while (!due.isEmpty() && due.first() <= now) {
            due.removeFirst();
            write(answer);
        }
    }
};

}  // namespace

class TestTransports : public QObject {
    Q_OBJECT

    TestPlatform platform_;
    std::unique_ptr<ctlQuendrix> control_;
    Link* link_ = nullptr;
    std::unique_ptr<RawPty> pty_;
    std::unique_ptr<QTcpServer> server_;
    QTcpSocket* peer_ = nullptr;
    ScriptedBoard board_;

    void openSerial() {
        pty_ = std::make_unique<RawPty>();
        QVERIFY(pty_->isOpen());
        QSerialPort* port = control_->MSComm1();
        port->setPortName(pty_->devicePath());
        port->setBaudRate(115200);
        QVERIFY2(port->open(QIODevice::ReadWrite), qPrintable(port->errorString()));
        control_->wifi = false;
        board_.write = [this](const QByteArray& b) { pty_->write(b); };
        board_.read = [this] { return pty_->readAll(); };
    }

    void openSocket() {
        server_ = std::make_unique<QTcpServer>();
        QVERIFY(server_->listen(QHostAddress::LocalHost));
        control_->Telnet1()->connectToHost(QHostAddress::LocalHost, server_->serverPort());
        QVERIFY(control_->Telnet1()->waitForConnected(5000));
        QTRY_VERIFY(server_->hasPendingConnections());
        peer_ = server_->nextPendingConnection();
        control_->wifi = true;
        board_.write = [this](const QByteArray& b) {
            peer_->write(b);
            peer_->flush();
        };
        board_.read = [this] { return peer_->readAll(); };
    }

    // Lets the far end's bytes cross the transport and be evaluated.
    void settle() {
        for (int i = 0; i < 20; ++i)
            platform_.idle(0.001);
    }

private slots:
    void init() {
        platform_ = TestPlatform();
        platform_.realSecondsPerIdle = 0.001;
        control_ = std::make_unique<ctlQuendrix>();
        control_->setPlatform(&platform_);
        control_->setKennung(QStringLiteral("qQ"));
        link_ = quendrix::internals(control_).link();
        board_ = ScriptedBoard();
        platform_.onIdle = [this](TestPlatform& p) {
            if (board_.read) board_.step(p.now());
        };
    }
    void cleanup() {
        platform_.onIdle = nullptr;
        control_.reset();
        peer_ = nullptr;
        server_.reset();
        pty_.reset();
    }

    void commandsLeaveExactlyAsFramed_data() {
        QTest::addColumn<bool>("socket");
        QTest::newRow("serial") << false;
        QTest::newRow("socket") << true;
    }
    void commandsLeaveExactlyAsFramed() {
        QFETCH(bool, socket);
        socket ? openSocket() : openSerial();
        link_->setQuittiert(true);
        const double start = platform_.now();
        control_->Output(QStringLiteral("t16#"));
        control_->Output(QStringLiteral("?#\r\n"));
        control_->Output(QStringLiteral("w100#"));
        QVERIFY(platform_.now() - start < 0.5);  // each answered at once
        QCOMPARE(board_.received,
                 socket ? QByteArray("t16#\r\n?#\r\nw100#\r\n") : QByteArray("t16#?#\r\nw100#"));
        QCOMPARE(link_->sErwartet(), QStringLiteral("W|"));
        if (!socket) QCOMPARE(quendrix::tag(control_->MSComm1()), QStringLiteral("A1"));
    }

    // Lines an acknowledgement left waiting are evaluated by the next command, even when the
    // board says nothing more.
    void aCommandEvaluatesTheLinesLeftWaiting() {
        openSerial();
        board_.delay = -1;
        link_->setQuittiert(true);
        link_->setRest(QStringLiteral("q #77 ~70 |B\r\n"));
        control_->Output(QStringLiteral("r#"));
        QCOMPARE(link_->AchsPosition()[0], 77);
        QCOMPARE(link_->sRest(), QString());
    }

    void acknowledgementTiming() {
        openSerial();
        link_->setQuittiert(true);
        // An answer within the limit ends the wait when it comes.
        board_.delay = 0.3;
        double start = platform_.now();
        control_->Output(QStringLiteral("r#"));
        QVERIFY(platform_.now() - start >= 0.3 && platform_.now() - start < 0.45);

        // No answer: the command gives up after 2 s, and the next one waits 2 s more first.
        board_.delay = -1;
        start = platform_.now();
        control_->Output(QStringLiteral("s#"));
        QVERIFY(platform_.now() - start >= 2 && platform_.now() - start < 2.1);
        control_->Output(QStringLiteral("s#"));
        QCOMPARE(board_.arrivals.size(), 3);
        QVERIFY(board_.arrivals[2] - start >= 4 && board_.arrivals[2] - start < 4.2);

        // A late answer releases the next command as soon as it arrives.
        board_.delay = 2.5;
        link_->setQuittiert(true);
        start = platform_.now();
        control_->Output(QStringLiteral("t5#"));
        QVERIFY(platform_.now() - start >= 2 && platform_.now() - start < 2.1);
        control_->Output(QStringLiteral("t6#"));
        QCOMPARE(board_.arrivals.size(), 5);
        QVERIFY(board_.arrivals[4] - start >= 2.5 && board_.arrivals[4] - start < 2.7);
    }

    void serialAndSocketJudgeLinesDifferently() {
        openSerial();
        link_->setQuittiert(false);
        board_.write("Xq|1\r\n");  // a "q" anywhere: evaluated, but no acknowledgement
        settle();
        QCOMPARE(control_->panel()->Text1[1]->text(), QStringLiteral("_> Xq|1"));
        QVERIFY(!link_->bQuittiert());
        board_.write("\r\n");  // over the serial port even an empty line acknowledges
        settle();
        QVERIFY(link_->bQuittiert());
        QCOMPARE(link_->sLetzteZeile(), QString());
        cleanup();

        init();
        openSocket();
        link_->setQuittiert(false);
        link_->setErwartet(QStringLiteral("T|"));
        for (const char* status : {"qX\r\n", "QX\r\n", "&X\r\n", "@X\r\n"}) {
            board_.write(status);  // first character decides on the socket
            settle();
            QVERIFY2(!link_->bQuittiert(), status);
        }
        QCOMPARE(link_->sLetzteZeile(), QStringLiteral("@X"));
        board_.write("\r\n");  // a block that is exactly a line end is ignored
        settle();
        QVERIFY(!link_->bQuittiert());
        board_.write("\r\nXq|1\r\n");  // an empty line inside a block is dropped unseen
        settle();
        QVERIFY(link_->bQuittiert());
        QCOMPARE(control_->panel()->Text1[1]->text(), QStringLiteral("=> Xq|1"));
    }

    void splitLinesAndStrayLeadBytes_data() { commandsLeaveExactlyAsFramed_data(); }
    void splitLinesAndStrayLeadBytes() {
        QFETCH(bool, socket);
        socket ? openSocket() : openSerial();
        link_->setQuittiert(false);
        board_.write("\xC2T|1");
        settle();
        QVERIFY(!link_->bQuittiert());
        QCOMPARE(control_->panel()->Text1[1]->text(), QString());
        board_.write("6#\r\n");
        settle();
        QVERIFY(link_->bQuittiert());
        QCOMPARE(link_->sLetzteZeile(), QStringLiteral("T|16#"));
        QCOMPARE(control_->panel()->Text1[1]->text(),
                 socket ? QStringLiteral("=> T|16#") : QStringLiteral("_> T|16#"));
        QCOMPARE(link_->sEmpfang(), QString());
    }

    void acknowledgementAndStatusInOneArrival_data() { commandsLeaveExactlyAsFramed_data(); }
    void acknowledgementAndStatusInOneArrival() {
        QFETCH(bool, socket);
        socket ? openSocket() : openSerial();
        board_.write("S|#\r\nq #1200 ~1180 *8 |B\r\n");
        settle();
        QVERIFY(link_->bQuittiert());
        QCOMPARE(link_->AchsPosition()[0], 1200);
        QCOMPARE(link_->encoder()[0], 1180);
        QCOMPARE(link_->sRest(), QString());
        QCOMPARE(link_->sKennText()[0], QStringLiteral("q #1200 ~1180 *8 |B"));
    }

    // Evaluating a line lets events run, and the transport reads what arrives meanwhile without
    // a second readyRead. A board that falls silent then (a move's last line) is still heard.
    void aLineThatArrivesDuringEvaluationIsNotLeftWaiting_data() {
        commandsLeaveExactlyAsFramed_data();
    }
    void aLineThatArrivesDuringEvaluationIsNotLeftWaiting() {
        QFETCH(bool, socket);
        socket ? openSocket() : openSerial();
        QIODevice* transport = socket ? static_cast<QIODevice*>(control_->Telnet1())
                                      : static_cast<QIODevice*>(control_->MSComm1());
        bool sent = false;
        platform_.onIdle = [&](TestPlatform&) {
            if (sent || !link_->sKennText()[0].contains(u"|B")) return;
            sent = true;
            board_.write("q #200 ~200 |F :0\r\n");
            QElapsedTimer patience;
            patience.start();
            while (transport->bytesAvailable() == 0 && patience.elapsed() < 5000)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        };
        board_.write("q #200 ~200 |B\r\n");
        settle();
        QVERIFY(sent);
        QCOMPARE(link_->finishedMoves(0), quint64(1));
        QCOMPARE(link_->sKennText()[0], QStringLiteral("q #200 ~200 |F :0"));
    }

    void serialInputIsDroppedWhileTheLinkIsTheSocket() {
        openSerial();
        control_->wifi = true;
        board_.write("q #1200 ~1180 |B\r\n");
        settle();
        QCOMPARE(link_->AchsPosition()[0], 0);
        QCOMPARE(link_->sEmpfang(), QString());
    }

    void failureTextsWhenTheLinkIsGone() {
        openSocket();
        board_.read = nullptr;
        peer_->close();
        QTRY_COMPARE(control_->Telnet1()->state(), QAbstractSocket::UnconnectedState);
        link_->setQuittiert(true);
        control_->Output(QStringLiteral("r#"));
        QCOMPARE(control_->panel()->Text1[1]->text(), QStringLiteral("Keine WiFi Verbindung"));

        openSerial();
        control_->MSComm1()->close();
        link_->setQuittiert(true);
        const double start = platform_.now();
        control_->Output(QStringLiteral("r#"));
        QCOMPARE(control_->panel()->Text1[1]->text(), QStringLiteral("Keine Verbindung"));
        QVERIFY(platform_.now() - start < 0.1);
    }
};

QTEST_MAIN(TestTransports)
#include "tst_transports.moc"
