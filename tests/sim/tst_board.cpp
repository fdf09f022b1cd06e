// The board simulator's engine on a scripted clock: framing, the lines the component relies
// on, motion in simulated time, the lens changer, and every fault.
#include "sim/board.h"

#include <QRegularExpression>
#include <QtTest>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>

using namespace quendrix::sim;

namespace {

QList<QByteArray> linesOf(const QByteArray& bytes) {
    QList<QByteArray> lines = bytes.split('\n');
    if (lines.back().isEmpty()) lines.removeLast();
    for (QByteArray& line : lines) {
        if (!line.endsWith('\r')) qFatal("line without CR LF: %s", line.constData());
        line.chop(1);
    }
    return lines;
}

// A board and its clock, advanced by hand.
struct Script {
    Board board;
    double now = 0;

    explicit Script(Options options = {}) : board(options) {}
    static Options of(Rig rig) {
        Options options;
        options.rig = rig;
        return options;
    }
    QList<QByteArray> send(const QByteArray& bytes) {
        board.receive(bytes, now);
        return linesOf(board.output(now));
    }
    QList<QByteArray> runTo(double time) {
        now = time;
        return linesOf(board.output(now));
    }
};

// A number no reader with overflow checks can take: beyond a 32-bit integer and a double.
bool outOfRange(const QByteArray& text) {
    errno = 0;
    const double value = std::strtod(text.constData(), nullptr);
    return errno == ERANGE && std::isinf(value);
}

// Whether a garbage line is harmless to a correct reader: it cannot pass for an
// acknowledgement, a finished move or an identification, and a status-shaped line carries only
// numbers beyond any range, a moving one its position and encoder fields among them.
bool harmless(const QByteArray& line) {
    const bool acknowledgementShape =
        line.size() >= 2 && line[1] == '|' &&
        (std::isupper(uchar(line[0])) || line[0] == 'q' || line[0] == '@');
    if (acknowledgementShape || line.contains("|F") || line.contains("Arduino") ||
        line.contains("unbekannt") || line.contains('\r') || line.contains('\n'))
        return false;
    if (line.contains("|B") && !(line.contains('#') && line.contains('~'))) return false;
    if (!line.startsWith("q ") && !line.startsWith("Q ") && !line.startsWith("@ ")) {
        // Junk never starts like a status line, where a reader looks for numbers; only the
        // status lines cut short to their letter do.
        const bool statusLetter = !line.isEmpty() && QByteArray("qQ@").contains(line[0]);
        return !statusLetter || line.size() == 1;
    }
    static const QRegularExpression number(QStringLiteral("-?[0-9][0-9e]*"));
    for (const QRegularExpressionMatch& found : number.globalMatch(QString::fromLatin1(line)))
        if (!outOfRange(found.captured().toLatin1())) return false;
    return true;
}

QList<QByteArray> lastThree(const QList<QByteArray>& lines) {
    return lines.mid(lines.size() - 3);
}

// What an axis's status lines say when a switch ended its move at `at` steps.
QList<QByteArray> stoppedBySwitch(const QByteArray& letter, const QByteArray& end, int at) {
    const QByteArray fields = " #" + QByteArray::number(at) + " ~" + QByteArray::number(at) + " *1";
    return {letter + " |! Endschalter " + end, letter + fields + " |B", letter + fields + " |F :0"};
}

}  // namespace

class TestBoard : public QObject {
    Q_OBJECT

private slots:
    void framesBothWireFormsAndDropsNoise() {
        Script s;
        s.now = 1.5;
        // Serial: back to back, no line ends; a command may arrive in pieces.
        QCOMPARE(s.send("t1#w100#l"), (QList<QByteArray>{"T|1#", "W|100#"}));
        QCOMPARE(s.send("0!"), QList<QByteArray>{"L|0!"});
        // Socket: CR LF after each; blanks and NUL between commands are skipped.
        QCOMPARE(s.send(QByteArray("?0#\r\n \0e1#\r\n", 12)),
                 (QList<QByteArray>{"q?|*1 #0 ~0", "E|1#"}));
        // More than 32 bytes without a terminator are noise; the next command counts.
        QCOMPARE(s.send(QByteArray(33, 'x') + "\r\nb#"), QList<QByteArray>{"B|#"});
        QCOMPARE(s.board.received().size(), 6);
        QCOMPARE(s.board.received()[2].command, QByteArray("l0!"));
        QCOMPARE(s.board.received()[5].command, QByteArray("b#"));
        QCOMPARE(s.board.received()[5].time, 1.5);
        s.board.clearReceived();
        QVERIFY(s.board.received().isEmpty());
    }

    void answersEachCommandAsTheComponentExpects_data() {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("setting, axis 1") << QByteArray("W100#") << QByteArray("W|100#");
        QTest::newRow("settings over") << QByteArray("T1#") << QByteArray("T|1#");
        QTest::newRow("light module") << QByteArray("l0!") << QByteArray("L|0!");
        QTest::newRow("ring segment off") << QByteArray("s-3!") << QByteArray("S|-3!");
        QTest::newRow("rotate") << QByteArray("q-2!") << QByteArray("Q|-2!");
        QTest::newRow("quit") << QByteArray("Q#") << QByteArray("Q|#");
        QTest::newRow("reset position") << QByteArray("x#") << QByteArray("X|#");
        QTest::newRow("no changer here") << QByteArray("h0#") << QByteArray("H|0#");
        QTest::newRow("micro-step, no value") << QByteArray("G#") << QByteArray("G|#");
        QTest::newRow("unknown letter") << QByteArray("k5#") << QByteArray("unbekannt: k5#");
        QTest::newRow("unknown setting") << QByteArray("Z7!") << QByteArray("unbekannt: Z7!");
        QTest::newRow("query axis 1") << QByteArray("?1#") << QByteArray("Q?|*1 #0 ~0");
    }
    void answersEachCommandAsTheComponentExpects() {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, reply);
        Script s;
        QCOMPARE(s.send(command), QList<QByteArray>{reply});
        // The serial side takes any line without q/Q as the acknowledgement.
        if (!command.startsWith('q') && !command.startsWith('Q') && command != "?1#")
            QVERIFY(!reply.contains('q') && !reply.contains('Q'));
    }

    void identifiesEachRig() {
        const QList<QPair<Options, QByteArray>> cases = [] {
            Options power = Script::of(Rig::Bellows), dc = Script::of(Rig::LensChanger),
                    stepper = dc;
            power.motorPowerOff = true;
            dc.drive = Drive::Dc;
            stepper.drive = Drive::Stepper;
            return QList<QPair<Options, QByteArray>>{
                {Script::of(Rig::Bellows), "Arduino Photostand"},
                {power, "Arduino Photostand Motorspannung aus"},
                {Script::of(Rig::LensChanger), "Arduino Photostepper @"},
                {dc, "Arduino Photostepper %"},
                {stepper, "Arduino Photostepper \x80"},
                {Script::of(Rig::Microscope), "Arduino Mikroskop"},
                {Script::of(Rig::Binocular), "Arduino Binokular"},
                {Script::of(Rig::UnknownArduino), "Arduino Nano bereit"}};
        }();
        for (const auto& [options, line] : cases) {
            Script s(options);
            QCOMPARE(s.send("?#\r\n"), QList<QByteArray>{line});
        }
        Script microscope(Script::of(Rig::Microscope));
        QCOMPARE(microscope.send("?1#\r\n"), QList<QByteArray>{"Q?| keine Achse"});
        QCOMPARE(microscope.send("T100#"), QList<QByteArray>{"T|100#"});
        QVERIFY(!microscope.board.nextDue());  // nothing moves
        // The silent board hears (and records) but never answers.
        Script silent(Script::of(Rig::Silent));
        QVERIFY(silent.send("?#\r\nt100#r#").isEmpty());
        QVERIFY(silent.runTo(10).isEmpty());
        QCOMPARE(silent.board.received().size(), 3);
    }

    void moveReportsItsStartBeforeTheAckAndFollowsThePause() {
        Options options;
        options.encoderOffset = 5;
        Script s(options);
        QCOMPARE(s.send("g3#p200#"), (QList<QByteArray>{"G|3#", "P|200#"}));
        QCOMPARE(s.send("t1000#"), (QList<QByteArray>{"q #200 ~205 *8 |B", "T|1000#"}));
        QCOMPARE(s.runTo(0.1), QList<QByteArray>{"q #325 ~330 *8 |B"});  // 1250 steps/s
        QCOMPARE(s.runTo(0.75).size(), 6);
        QCOMPARE(s.board.axis(0).position, 1137);
        QVERIFY(s.board.axis(0).moving);
        QCOMPARE(s.runTo(0.8),
                 (QList<QByteArray>{"q #1200 ~1205 *8 |B", "q #1200 ~1205 *8 |F :0"}));
        QVERIFY(!s.board.axis(0).moving);
        // Twice the speed at half the pause, backwards, on axis 1.
        s.send("W400#Z#");
        const QList<QByteArray> start = s.send("T1000#");
        QCOMPARE(start.first(), QByteArray("Q #0 ~5 *1 |B"));
        QVERIFY(s.runTo(1.19).back().endsWith("|B"));
        QCOMPARE(s.runTo(1.2).back(), QByteArray("Q #-1000 ~-995 *1 |F :0"));
        // Without micro-step switching there is no divisor field.
        options.microSteps = false;
        Script plain(options);
        QCOMPARE(plain.send("?0#t0#"), (QList<QByteArray>{"q?| #0 ~5", "q #0 ~5 |B", "T|0#",
                                                          "q #0 ~5 |B", "q #0 ~5 |F :0"}));
    }

    void limitSwitchesEndMovesAndRuns() {
        Script s;
        s.send("e1#m500#t1000#");
        QCOMPARE(s.runTo(0.4).mid(3),
                 (QList<QByteArray>{"q |! Endschalter oben", "q #500 ~500 *1 |B",
                                    "q #500 ~500 *1 |F :0"}));
        s.send("z#r#");
        QCOMPARE(s.runTo(1.0).back(), QByteArray("q #0 ~0 *1 |F :0"));
        // At the limit already: the move ends where it starts.
        QCOMPARE(s.send("t10#").mid(2), (QList<QByteArray>{"q |! Endschalter unten",
                                                           "q #0 ~0 *1 |B", "q #0 ~0 *1 |F :0"}));
        // Without limit switches the axis goes below 0.
        s.send("e0#t10#");
        s.runTo(2);
        QCOMPARE(s.board.axis(0).position, -10);
    }

    // A rail's ends stop the carriage whatever the limit-switch setting and whatever the
    // command; the switch is reported before the last "|B" and the "|F" line.
    void railEndsStopEveryCommand() {
        Options options;
        options.rails = {1000, 300};
        Script s(options);
        s.board.linkOpened(0);  // the rails belong to the rig: a reset keeps them
        s.send("e0#r#");
        QCOMPARE(lastThree(s.runTo(1)), stoppedBySwitch("q", "oben", 1000));
        s.send("z#r#");
        QCOMPARE(lastThree(s.runTo(2)), stoppedBySwitch("q", "unten", 0));
        // Against the switch already: nothing moves, and a wait for "|F" still ends.
        QCOMPARE(lastThree(s.send("t5#")), stoppedBySwitch("q", "unten", 0));
        // A counter set beyond an end leaves the carriage at that end, and says so.
        QCOMPARE(s.send("p-40#"), QList<QByteArray>{"P|-40#"} + stoppedBySwitch("q", "unten", 0));
        QCOMPARE(s.send("P900#"), QList<QByteArray>{"P|900#"} + stoppedBySwitch("Q", "oben", 300));
        // With the limit switches on, MaxPosition stops first when it lies within the rail.
        s.send("v#e1#m600#t2000#");
        QCOMPARE(lastThree(s.runTo(3)), stoppedBySwitch("q", "oben", 600));
        s.send("m5000#t2000#");
        QCOMPARE(lastThree(s.runTo(4)), stoppedBySwitch("q", "oben", 1000));
        // The counter set while moving: the move goes on from there and stops at the end.
        s.send("z#t800#");
        s.runTo(4.08);
        QCOMPARE(s.board.axis(0).position, 900);
        QCOMPARE(s.send("p100#"), QList<QByteArray>{"P|100#"});
        QCOMPARE(lastThree(s.runTo(5)), stoppedBySwitch("q", "unten", 0));
        // The span covered since the counter was last set.
        QCOMPARE(s.board.axis(0).lowest, 0);
        QCOMPARE(s.board.axis(0).highest, 100);

        // A CAN drive's absolute target beyond the rail, and its relative steps below it.
        options.rig = Rig::LensChanger;
        options.rails = {5000, {}};
        Script changer(options);
        changer.send("t7000#");
        QCOMPARE(lastThree(changer.runTo(5)),
                 (QList<QByteArray>{"@ |! Endschalter oben", "@ #5000 |B", "@ |F0 #5000"}));
        changer.send("z#t-9000#");
        QCOMPARE(lastThree(changer.runTo(10)),
                 (QList<QByteArray>{"@ |! Endschalter unten", "@ #0 |B", "@ |F0 #0"}));
    }

    void continuousRunGoesOnUntilStopped() {
        Script s;
        s.send("Z#R#");
        s.runTo(1.0);
        QCOMPARE(s.board.axis(1).position, -1250);
        s.now = 1.05;
        QCOMPARE(s.send("S#"),
                 (QList<QByteArray>{"S|#", "Q #-1312 ~-1312 *1 |B", "Q #-1312 ~-1312 *1 |F :0"}));
        QCOMPARE(s.send("S#"), QList<QByteArray>{"S|#"});  // nothing left to finish
        QVERIFY(!s.board.nextDue());
    }

    void backlashIsTakenUpWithoutAnAcknowledgement() {
        Script s;
        QCOMPARE(s.send("z#"), QList<QByteArray>{"Z|#"});  // no backlash: a plain ack
        s.send("p100#a10#");
        // The direction changes: the take-up reports its start and, 10 pauses later, "|F".
        QCOMPARE(s.send("v#"), QList<QByteArray>{"q #100 ~100 *1 |B"});
        QVERIFY(s.runTo(0.0079).isEmpty());
        QCOMPARE(s.runTo(0.008), QList<QByteArray>{"q #100 ~100 *1 |F :0"});
        // No change of direction: "|F" at once.
        QCOMPARE(s.send("v#"), QList<QByteArray>{"q #100 ~100 *1 |F :0"});
        QCOMPARE(s.board.axis(0).position, 100);
    }

    void lensChangerTurnsAndReportsItsPosition() {
        Script s(Script::of(Rig::LensChanger));
        QCOMPARE(s.send("k Macro 50#"), QList<QByteArray>{"K| Macro 50#"});
        QCOMPARE(s.runTo(0.5), (QList<QByteArray>{"@ |Q0", "@ |Q0", "@ |Q0", "@ |Q0", "@ |Q1"}));
        QCOMPARE(s.runTo(1.5).back(), QByteArray("@ |F3 #0"));
        QCOMPARE(s.send("?0#"), QList<QByteArray>{"@ ?| |?3 #0"});
        QCOMPARE(s.send("k#"), (QList<QByteArray>{"K|#", "@ |F3 #0"}));  // already there
        // Axis 0 of a CAN drive: "t n#" is absolute, "t-n#" relative in the set direction.
        s.send("p100#");
        QCOMPARE(s.send("t50#"), (QList<QByteArray>{"@ #100 |B", "T|50#"}));
        QCOMPARE(s.runTo(3), (QList<QByteArray>{"@ #50 |B", "@ |F3 #50"}));
        s.send("t-100#");
        QCOMPARE(s.runTo(5).back(), QByteArray("@ |F3 #150"));
        QCOMPARE(s.board.axis(0).direction, 1);
        Options dc = Script::of(Rig::LensChanger);
        dc.drive = Drive::Dc;
        Script relative(dc);
        relative.send("t50#");
        relative.runTo(1);
        QCOMPARE(relative.board.axis(0).position, 50);
    }

    void keepsLightStateAndQuitEndsEverything() {
        Script s;
        s.send("l1#L1#d40#D-5#l1!d99!m1!T2!s3!s4!s-3!r10!f20!b30!w40!q1!q-2!r#");
        const Lights& lights = s.board.lights();
        QVERIFY(lights.channel[0] && lights.channel[1] && lights.module);
        QCOMPARE(lights.brightness, (std::array<int, 2>{40, -5}));
        QCOMPARE(lights.moduleBrightness, 99);
        QCOMPARE(lights.moduleSelect, 1);
        QCOMPARE(lights.ringMode, 2);
        QCOMPARE(lights.segments, QSet<int>{4});
        QCOMPARE((QList<int>{lights.red, lights.green, lights.blue, lights.white}),
                 (QList<int>{10, 20, 30, 40}));
        QCOMPARE(s.board.rotateCount(), 2);
        QCOMPARE(s.board.lastRotate(), -2);
        s.runTo(0.2);
        QCOMPARE(s.send("Q#"),
                 (QList<QByteArray>{"Q|#", "q #250 ~250 *1 |B", "q #250 ~250 *1 |F :0"}));
        QVERIFY(!lights.channel[0] && !lights.channel[1] && !lights.module);
    }

    void bootDelayResetsAndSilencesTheBoard() {
        Options options;
        options.faults.bootDelay = 2;
        Script s(options);
        s.send("p500#");
        s.board.linkOpened(0);
        QCOMPARE(s.board.axis(0).position, 0);  // power-on state
        s.now = 1.9;
        QVERIFY(s.send("?#\r\n").isEmpty());
        QVERIFY(s.board.received().size() == 1);  // only what came before the reset
        s.now = 2.0;
        QCOMPARE(s.send("?#\r\n"), QList<QByteArray>{"Arduino Photostand"});
    }

    void replyDelayAndDroppedAcknowledgements() {
        Options options;
        options.faults.replyDelay = 0.3;
        options.faults.dropAckEvery = 3;
        Script s(options);
        QVERIFY(s.send("w1#w2#w3#w4#?#").isEmpty());
        QCOMPARE(s.board.nextDue().value_or(-1), 0.3);
        QCOMPARE(s.runTo(0.3), (QList<QByteArray>{"W|1#", "W|2#", "W|4#", "Arduino Photostand"}));
        options.faults = {};
        options.faults.dropAckProbability = 1;
        Script lossy(options);
        QCOMPARE(lossy.send("w1#?#"), QList<QByteArray>{"Arduino Photostand"});
    }

    // On a timed wire a command is taken once its last byte has crossed and the firmware has
    // had its time; replies queue for the wire behind each other and then wait in the adapter,
    // and a motor starts only after its own delay.
    void wireTimingPacesBytesAndAddsTheFirmwaresTime() {
        Options options;
        options.wire = {10000, 0.010, 0.050, 0.002};  // a byte takes 1 ms
        Script s(options);
        QVERIFY(s.send("w800#w800#").isEmpty());
        QVERIFY(qAbs(s.board.nextDue().value_or(-1) - 0.017) < 1e-9);  // 2 + 5 + 10 ms
        QVERIFY(s.runTo(0.0269).isEmpty());
        QCOMPARE(s.runTo(0.0271), QList<QByteArray>{"W|800#"});  // 17 + 8 + 2 ms
        // The second command is taken at 22 ms, but its reply waits for the first to cross.
        QVERIFY(s.runTo(0.0349).isEmpty());
        QCOMPARE(s.runTo(0.0351), QList<QByteArray>{"W|800#"});
        QCOMPARE(s.board.received().size(), 2);
        QVERIFY(qAbs(s.board.received().back().time - 0.022) < 1e-9);

        s.runTo(1);
        s.send("t1000#");  // taken at 1.018 s; the motor starts at 1.068 s, 1250 steps/s
        QCOMPARE(s.runTo(1.06).size(), 2);  // "|B" and the acknowledgement
        QCOMPARE(s.board.axis(0).position, 0);
        s.runTo(1.5);
        QCOMPARE(s.board.axis(0).position, 540);
        // It ends at 1.868 s; its last two lines take 21 and 24 ms on this slow wire.
        QVERIFY(s.runTo(1.9).back().endsWith("|B"));
        QVERIFY(s.runTo(1.916).back().endsWith("|F :0"));
        QCOMPARE(s.board.axis(0).position, 1000);
    }

    void splitRepliesReassembleToTheSameBytes() {
        Options options;
        options.faults.splitReplies = true;
        options.faults.seed = 7;
        Board split(options), whole;
        const QByteArray traffic = "?#\r\n?0#\r\nt300#W100#l0!";
        split.receive(traffic, 0);
        whole.receive(traffic, 0);
        QByteArray joined;
        int pieces = 0;
        for (double t = 0; t < 1; t += 0.01) {
            const QByteArray piece = split.output(t);
            pieces += !piece.isEmpty();
            joined += piece;
            if (!piece.isEmpty() && !piece.endsWith('\n'))  // the rest of the line is due now
                QVERIFY(split.nextDue().value_or(t + 1) <= t + 1e-6);
        }
        QCOMPARE(joined, whole.output(1));
        QVERIFY(pieces > 12);  // more pieces than lines
    }

    void strayBytesAndNoiseLines() {
        Options options;
        options.faults.strayLeadByteProbability = 1;
        Script stray(options);
        QCOMPARE(stray.send("w1#?#"), (QList<QByteArray>{"\xC2W|1#",
                                                         "\xC2"
                                                         "Arduino Photostand"}));

        options.faults = {};
        options.faults.noisePerSecond = 20;
        Script noisy(options);
        const QList<QByteArray> noise = noisy.runTo(10);
        QVERIFY2(noise.size() > 140 && noise.size() < 260, QByteArray::number(noise.size()));
        for (const QByteArray& line : noise) {
            QVERIFY(!line.trimmed().isEmpty());
            for (const char* bad : {"q", "Q", "|", "@", "Arduino", "unbekannt"})
                QVERIFY2(!line.contains(bad), line);
        }
        Script again(options);
        QCOMPARE(again.runTo(10), noise);  // the seed makes it repeatable
    }

    void hostileGarbageComesOnlyBetweenTheGoodLines() {
        Options clean;
        clean.faults.seed = 5;
        // Drawn alike with and without garbage: the good lines must stay byte for byte.
        clean.faults.strayLeadByteProbability = 0.3;
        clean.faults.dropAckProbability = 0.2;
        Options timed = clean, every = clean;
        timed.faults.garbagePerSecond = 100;
        every.faults.garbageEvery = 1;
        Script reference(clean), atRandom(timed), afterEach(every);
        // By 50-ms step: start-up queries, settings, a move, lights, a run stopped, a move
        // ended by quit, an unknown command.
        const QMap<int, QByteArray> traffic{{0, "?#\r\n"},      {2, "?0#\r\n?1#\r\n"},
                                            {4, "g2#w400#e1#"}, {6, "t1000#"},
                                            {20, "l1#L0!d40#"}, {24, "Z#R#"},
                                            {40, "S#"},         {50, "T300#"},
                                            {52, "Q#"},         {60, "k5#"}};
        int garbage = 0, huge = 0, statusShaped = 0;
        int goodLines = 0;
        for (int step = 0; step <= 100; ++step) {
            for (Script* s : {&reference, &atRandom, &afterEach})
                s->now = step * 0.05;
            const QByteArray in = traffic.value(step);
            const QList<QByteArray> good = reference.send(in);
            goodLines += int(good.size());
            qsizetype next = 0;
            for (const QByteArray& line : atRandom.send(in)) {
                if (next < good.size() && line == good[next]) {
                    ++next;
                    continue;
                }
                QVERIFY2(harmless(line), line.left(60).toPercentEncoding().constData());
                ++garbage;
                huge += line.size() >= 64 * 1024;
                statusShaped += line.startsWith("q ") || line.startsWith("@ ");
            }
            QCOMPARE(next, good.size());
            // One garbage line after every line of the board's own.
            const QList<QByteArray> interleaved = afterEach.send(in);
            QCOMPARE(interleaved.size(), 2 * good.size());
            for (qsizetype i = 0; i < good.size(); ++i) {
                QCOMPARE(interleaved[2 * i], good[i]);
                QVERIFY(harmless(interleaved[2 * i + 1]));
            }
        }
        QVERIFY2(goodLines > 30, QByteArray::number(goodLines));
        // About 500 lines in 5 s, among them huge and status-shaped ones.
        QVERIFY2(garbage > 400 && garbage < 600, QByteArray::number(garbage));
        QVERIFY(huge > garbage / 8 && statusShaped > garbage / 8);

        // None while the link is closed, none from the silent rig.
        atRandom.board.linkClosed(5);
        QVERIFY(!atRandom.board.nextDue());
        QVERIFY(atRandom.runTo(10).isEmpty());
        timed.rig = Rig::Silent;
        Script silent(timed);
        QVERIFY(silent.runTo(10).isEmpty());
    }

    void disconnectIsRequestedAfterNCommands() {
        Options options;
        options.faults.disconnectAfter = 2;
        Script s(options);
        QCOMPARE(s.send("w1#w2#w3#"), (QList<QByteArray>{"W|1#", "W|2#"}));
        QVERIFY(s.board.disconnectRequested());
        QVERIFY(s.send("w4#").isEmpty());
        s.board.linkClosed(0);
        s.board.linkOpened(0);
        QVERIFY(!s.board.disconnectRequested());
        QCOMPARE(s.send("w5#"), QList<QByteArray>{"W|5#"});
    }
};

QTEST_MAIN(TestBoard)
#include "tst_board.moc"
