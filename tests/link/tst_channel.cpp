// The command channel against the board simulator over a real pseudo-terminal and a real
// loopback socket, on the scripted clock (the simulator runs on the same clock).
#include "control/internals.h"
#include "support/simrig.h"

#include <quendrix/ctlQuendrix.h>

#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSerialPort>
#include <QTcpSocket>
#include <QtTest>

namespace sim = quendrix::sim;
using quendrix::Link;

namespace {

// What the rest of the control reads after a conversation with the board.
struct State {
    std::array<qint32, 2> positions, encoders;
    std::array<QString, 3> kennText;
    QString microTag;
    bool operator==(const State&) const = default;
};

}  // namespace

class TestChannel : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    ctlQuendrix* control_ = nullptr;
    Link* link_ = nullptr;

    // Starts a board of the given kind on one transport and opens the control's side of it.
    bool connect(bool socket, const sim::Options& options = {}) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start(options, socket)) return false;
        control_ = rig_->control.get();
        control_->setKennung(QStringLiteral("qQ"));
        link_ = quendrix::internals(control_).link();
        return true;
    }
    void settle(double seconds) { rig_->settle(seconds); }
    // Waits (on the scripted clock) until an axis reports the end of its move.
    bool waitForEnd(int axis) {
        return rig_->waitFor([this, axis] { return link_->sKennText()[axis].contains(u"|F"); });
    }
    QStringList commandsReceived() const {
        QStringList commands;
        for (const sim::Received& r : rig_->board->received())
            commands.append(QString::fromLatin1(r.command));
        return commands;
    }

    State state() const {
        return {link_->AchsPosition(), link_->encoder(), link_->sKennText(),
                quendrix::tag(control_->panel()->micro0[0])};
    }

    // A short working session: pause, micro-steps, two moves, a query.
    void session() {
        control_->Output(QStringLiteral("w100#"));
        control_->Output(QStringLiteral("g3#"));
        control_->Output(QStringLiteral("v#"));
        control_->Output(QStringLiteral("t500#"));
        QVERIFY(waitForEnd(0));
        control_->Output(QStringLiteral("z#"));
        control_->Output(QStringLiteral("t200#"));
        QVERIFY(waitForEnd(0));
        control_->Output(QStringLiteral("?0#\r\n"));
        settle(0.2);
    }

private slots:
    void cleanup() { rig_.reset(); }

    void aMoveIsFollowedToItsEnd_data() {
        QTest::addColumn<bool>("socket");
        QTest::newRow("serial") << false;
        QTest::newRow("socket") << true;
    }
    void aMoveIsFollowedToItsEnd() {
        QFETCH(bool, socket);
        QVERIFY(connect(socket));
        control_->Output(QStringLiteral("w100#"));
        control_->Output(QStringLiteral("v#"));
        control_->Output(QStringLiteral("t500#"));
        // The board reported the start before it acknowledged: no stale end is left over.
        QVERIFY(!link_->sKennText()[0].contains(QStringLiteral("|F")));
        QVERIFY(waitForEnd(0));
        QCOMPARE(link_->AchsPosition()[0], 500);
        QCOMPARE(link_->encoder()[0], 500);
        QCOMPARE(control_->panel()->lblPosition1[0]->text(), QStringLiteral("500"));

        control_->Output(QStringLiteral("t300#"));
        QVERIFY(!link_->sKennText()[0].contains(QStringLiteral("|F")));
        QVERIFY(waitForEnd(0));
        QCOMPARE(link_->AchsPosition()[0], 800);
        QCOMPARE(commandsReceived(), QStringList({"w100#", "v#", "t500#", "t300#"}));

        // Axis 1 and its query answer with the micro-step division.
        control_->Output(QStringLiteral("G2#"));
        control_->Output(QStringLiteral("?1#\r\n"));
        settle(0.2);
        QVERIFY(link_->sKennText()[1].contains(QStringLiteral("?|")));
        QCOMPARE(quendrix::tag(control_->panel()->micro1[0]), QStringLiteral("2"));
    }

    void backlashIsAcknowledgedByTheEndOfTheTakeUp() {
        QVERIFY(connect(false));
        control_->Output(QStringLiteral("a40#"));
        link_->setBacklash(0, 40);
        control_->Output(QStringLiteral("w1000#"));  // 40 steps take 40 ms
        const double start = rig_->platform.now();
        control_->Output(QStringLiteral("z#"));
        QCOMPARE(link_->sErwartet(), QStringLiteral("|F"));
        QVERIFY(link_->sKennText()[0].contains(QStringLiteral("|F")));
        QVERIFY(rig_->platform.now() - start >= 0.04 && rig_->platform.now() - start < 0.5);
    }

    void droppedAcknowledgementsCostTheirWaits() {
        sim::Options options;
        options.faults.dropAckEvery = 2;
        QVERIFY(connect(false, options));
        control_->Output(QStringLiteral("w800#"));
        control_->Output(QStringLiteral("w801#"));  // its acknowledgement is dropped
        control_->Output(QStringLiteral("w802#"));  // so this one waits before it goes
        const QList<sim::Received>& received = rig_->board->received();
        QCOMPARE(received.size(), 3);
        QVERIFY(received[1].time - received[0].time < 0.2);
        QVERIFY(received[2].time - received[1].time >= 4 &&
                received[2].time - received[1].time < 4.3);
        QVERIFY(control_->acknowledging());  // one lost acknowledgement is no silent board
        QCOMPARE(control_->commandsUnanswered(), 1u);
    }

    // A board that hears and answers queries but acknowledges no command: told after three
    // commands in a row, and told again when it answers.
    void aBoardThatStopsAcknowledgingIsReported() {
        sim::Options options;
        options.faults.dropAckProbability = 1;
        QVERIFY(connect(false, options));
        QSignalSpy changes(control_, &ctlQuendrix::acknowledgingChanged);
        for (const char* command : {"w800#", "w801#", "w802#"})
            control_->Output(QString::fromLatin1(command));
        QCOMPARE(rig_->board->received().size(), 3);  // each one was heard
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes[0][0].toBool(), false);
        QVERIFY(!control_->acknowledging());
        control_->Output(QStringLiteral("?0#\r\n"));  // a query's answer is no acknowledgement line
        QCOMPARE(changes.size(), 2);
        QCOMPARE(changes[1][0].toBool(), true);
        QCOMPARE(control_->commandsSent(), 4u);
        QCOMPARE(control_->commandsUnanswered(), 3u);
    }

    void aCutStreamWithStrayBytesGivesTheSameState_data() { aMoveIsFollowedToItsEnd_data(); }
    void aCutStreamWithStrayBytesGivesTheSameState() {
        QFETCH(bool, socket);
        QVERIFY(connect(socket));
        session();
        const State clean = state();
        QCOMPARE(clean.positions[0], 300);
        QCOMPARE(clean.microTag, QStringLiteral("3"));
        cleanup();

        // Cut at random places, a line's CR LF now and then in a piece of its own; each seed
        // cuts the stream differently.
        for (quint32 seed = 1; seed <= 6; ++seed) {
            sim::Options faulty;
            faulty.faults.splitReplies = true;
            faulty.faults.strayLeadByteProbability = 1;
            faulty.faults.seed = seed;
            QVERIFY(connect(socket, faulty));
            session();
            QCOMPARE(state(), clean);
            // Each acknowledgement counted: no command waited out the acknowledgement's time.
            const QList<sim::Received>& received = rig_->board->received();
            for (qsizetype i = 1; i < received.size(); ++i)
                QVERIFY2(received[i].time - received[i - 1].time < 1,
                         qPrintable(QStringLiteral("seed %1: %2 waited %3 s after %4")
                                        .arg(seed)
                                        .arg(QString::fromLatin1(received[i].command))
                                        .arg(received[i].time - received[i - 1].time)
                                        .arg(QString::fromLatin1(received[i - 1].command))));
            cleanup();
        }
    }

    void aBoardThatBootsIsDeafUntilItHasBooted() {
        sim::Options options;
        options.faults.bootDelay = 1.5;
        QVERIFY(connect(false, options));  // the port was opened just now
        control_->Output(QStringLiteral("?#\r\n"));
        QCOMPARE(link_->sKennText()[1], QString());
        settle(1.5);
        link_->setQuittiert(true);
        control_->Output(QStringLiteral("?#\r\n"));
        QCOMPARE(link_->sKennText()[1], QStringLiteral("Arduino Photostand"));
        QCOMPARE(link_->sLetzteZeile(), QStringLiteral("Arduino Photostand"));
        QCOMPARE(control_->panel()->Text1[0]->text(), QStringLiteral("_> Arduino Photostand"));
    }

    void aBoardThatHangsUpLeavesTheSocketDown() {
        sim::Options options;
        options.faults.disconnectAfter = 2;
        QVERIFY(connect(true, options));
        control_->Output(QStringLiteral("w800#"));
        control_->Output(QStringLiteral("w800#"));
        settle(0.2);
        QCOMPARE(control_->Telnet1()->state(), QAbstractSocket::UnconnectedState);
        control_->Output(QStringLiteral("s#"));
        QCOMPARE(control_->panel()->Text1[1]->text(), QStringLiteral("Keine WiFi Verbindung"));
        QCOMPARE(rig_->board->received().size(), 2);
    }
};

QTEST_MAIN(TestChannel)
#include "tst_channel.moc"
