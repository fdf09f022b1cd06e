// The pure functions of the core, without a panel: the commands and marks of axis motion,
// millimetres and steps with the position readouts, cutting the board's text into lines and
// what each transport does with a line, captions and mouse buttons.
#include "core/readout.h"
#include "core/replyline.h"
#include "core/speed.h"
#include "core/units.h"
#include "settings/mousebuttons.h"
#include "settings/textformat.h"
#include "support/errors.h"

#include <QtTest>

using namespace quendrix;

class TestCore : public QObject {
    Q_OBJECT

private slots:
    void speedCommandsAndMarks() {
        QCOMPARE(axisLetter('t', 0), QChar(u't'));
        QCOMPARE(axisLetter('t', 1), QChar(u'T'));

        // Normal sends the text as typed; the slower modes scale by axis and rig.
        QCOMPARE(pauseForSpeedMode(0, 1, QStringLiteral(" 800 "), 0, 0), QStringLiteral("800"));
        QCOMPARE(pauseForSpeedMode(1, 0, QStringLiteral("100"), 0, 0), QStringLiteral("200"));
        QCOMPARE(pauseForSpeedMode(1, 2, QStringLiteral("100"), 1, 1), QStringLiteral("400"));
        QCOMPARE(pauseForSpeedMode(0, 0, QStringLiteral("100"), 2, 0), QStringLiteral("800"));
        QCOMPARE(pauseForSpeedMode(0, 2, QStringLiteral("100"), 0, 0), QStringLiteral("1600"));
        // A lens changer: a stepper takes the whole part of 2 or 2.5 times, a CAN-bus drive a
        // quarter or an eighth, any other drive nothing.
        QCOMPARE(pauseForSpeedMode(0, 2, QStringLiteral("101"), 1, 0), QStringLiteral("252"));
        QCOMPARE(pauseForSpeedMode(0, 0, QStringLiteral("103"), 1, 1), QStringLiteral("25"));
        QCOMPARE(pauseForSpeedMode(0, 2, QStringLiteral("103"), 1, 1), QStringLiteral("12"));
        QCOMPARE(pauseForSpeedMode(0, 0, QStringLiteral("100"), 1, 2), std::nullopt);

        QCOMPARE(microStepPause(800, 3, QLocale(QLocale::German)), QStringLiteral("100"));
        QCOMPARE(microStepPause(100, 3, QLocale(QLocale::German)), QStringLiteral("12,5"));

        // Over 1000 steps normal (1), over 100 slow (0), else slowest (2), either direction.
        QCOMPARE(speedModeForDistance(1001), 1);
        QCOMPARE(speedModeForDistance(-1000), 0);
        QCOMPARE(speedModeForDistance(101), 0);
        QCOMPARE(speedModeForDistance(100), 2);

        QCOMPARE(directionGlyph(0, 1) + directionGlyph(0, 0), QStringLiteral("éê"));
        QCOMPARE(directionGlyph(1, 1) + directionGlyph(1, 0), QStringLiteral("×ØØ×"));
        QCOMPARE(speedGlyph(1) + speedGlyph(2) + speedGlyph(0), QStringLiteral("/L."));
    }

    void millimetresStepsAndTheReadout() {
        QCOMPARE(stepsToMm(400, 200, 1.5), 3.0f);
        QCOMPARE(mmToSteps(3, 1.5, 200), 400);
        QCOMPARE(mmToSteps(2.5, 1, 1), 2);  // half to even
        QCOMPARE(mmToSteps(3.5, 1, 1), 4);
        QCOMPARE(errorOf([] { stepsToMm(400, 0, 1.5); }), int(RuntimeError::DivisionByZero));
        QCOMPARE(errorOf([] { mmToSteps(3, 0, 200); }), int(RuntimeError::DivisionByZero));
        // The drive as the boxes give it: their leading numbers, read with a decimal point.
        const AxisDrive drive = axisDrive(QStringLiteral("200 Schritte"), QStringLiteral("1.5"));
        QCOMPARE(drive.mm(400), 3.0f);
        QCOMPARE(drive.steps(3), 400);
        QCOMPARE(errorOf([] { axisDrive(QStringLiteral("200"), QString()).steps(3); }),
                 int(RuntimeError::DivisionByZero));

        // The readout shows millimetres exactly when Label9's caption holds "mm", in the
        // caption's either language.
        QVERIFY(readoutInMillimetres(QStringLiteral("Position [mm]")));
        QVERIFY(!readoutInMillimetres(QStringLiteral("Position [Schritte]")));
        QVERIFY(!readoutInMillimetres(QStringLiteral("Position [steps]")));
        const QLocale german(QLocale::German);
        QCOMPARE(millimetresText(1234.5, german), QStringLiteral("1.234,50"));
        QCOMPARE(positionReadout(-1200, 6.0f, false, german), QStringLiteral("-1200"));
        QCOMPARE(positionReadout(1200, 6.0f, true, german), QStringLiteral("6,00"));
        QCOMPARE(positionReadout(1200, std::nullopt, false, german), QStringLiteral("1200"));
        QCOMPARE(positionReadout(1200, std::nullopt, true, german), std::nullopt);
    }

    void linesAndWhatEachTransportDoesWithThem() {
        QString received = QStringLiteral("\u00C2T|16#\r\nq #1200 ~1180 |B\r\nq #13");
        QCOMPARE(cutLine(received), QStringLiteral("T|16#\r\n"));  // the stray lead byte goes
        QCOMPARE(cutLine(received), QStringLiteral("q #1200 ~1180 |B\r\n"));
        QCOMPARE(cutLine(received), std::nullopt);  // a partial line waits for its end
        QCOMPARE(received, QStringLiteral("q #13"));
        QCOMPARE(withoutLineEnd(QStringLiteral("T|16#\r\n")), QStringLiteral("T|16#"));

        using H = LineHandling;
        const H evaluated{true, false, false};
        const H statusLine{true, true, false};
        const H acknowledging{true, true, true};
        // Serial: any line without "q" or "Q" acknowledges.
        QCOMPARE(handlingOf(QStringLiteral("T|16#\r\n"), false), acknowledging);
        QCOMPARE(handlingOf(QStringLiteral("Arduino Photostand\r\n"), false), acknowledging);
        QCOMPARE(handlingOf(QStringLiteral("@ q #5\r\n"), false), evaluated);
        QCOMPARE(handlingOf(QStringLiteral("Q #5 |F\r\n"), false), evaluated);
        // Socket: the first character decides; an empty line is dropped.
        QCOMPARE(handlingOf(QStringLiteral("@ ?| |?2 #1700\r\n"), true), statusLine);
        QCOMPARE(handlingOf(QStringLiteral("&x\r\n"), true), statusLine);
        QCOMPARE(handlingOf(QStringLiteral("T|16#\r\n"), true), acknowledging);
        QCOMPARE(handlingOf(QStringLiteral("Arduino q\r\n"), true), acknowledging);
        QCOMPARE(handlingOf(QStringLiteral("\r\n"), true), H{});

        QCOMPARE(numberAfter(QStringLiteral("q #1200 ~1180"), QStringLiteral("~")), 1180.0);
        QCOMPARE(numberAfter(QStringLiteral("q #1200"), QStringLiteral("~")), 0.0);
        QCOMPARE(numberAfter(QStringLiteral("q #12e456"), QStringLiteral("#")), std::nullopt);
        QCOMPARE(microStepExponent(16), 4);
        QCOMPARE(microStepExponent(1), 0);
        QCOMPARE(microStepExponent(3), std::nullopt);
        QVERIFY(isAcknowledgementLine(QStringLiteral("Q|"), QStringLiteral("qQ")));
        QVERIFY(!isAcknowledgementLine(QStringLiteral("T|16#"), QStringLiteral("qQ")));
        QVERIFY(!isAcknowledgementLine(QStringLiteral("Q"), QStringLiteral("qQ")));
    }

    void captionsAndMouseButtons() {
        QCOMPARE(asCaption(QString(5000, u'x')).size(), 1024);
        QCOMPARE(asCaption(QStringLiteral("Canon")), QStringLiteral("Canon"));
        QCOMPARE(mouseButtonCode(Qt::LeftButton), 1);
        QCOMPARE(mouseButtonCode(Qt::RightButton), 2);
        QCOMPARE(mouseButtonCode(Qt::MiddleButton), 4);
        QCOMPARE(mouseButtonCode(Qt::BackButton), 0);
    }
};

QTEST_GUILESS_MAIN(TestCore)
#include "tst_core.moc"
