// Reply evaluation and the handshake rules, fed directly with text (no transport).
#include "control/internals.h"
#include "core/replyline.h"
#include "link/link.h"
#include "support/testplatform.h"

#include <quendrix/ctlQuendrix.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

using quendrix::Link;
using quendrix::Panel;

namespace {

// Everything evaluation leaves behind that another part of the control reads.
struct Observed {
    std::array<qint32, 2> positions, encoders;
    std::array<QString, 3> kennText;
    QStringList labels;
    bool acknowledged;

    bool operator==(const Observed&) const = default;
};

Observed observe(ctlQuendrix& control) {
    const Link& link = *quendrix::internals(control).link();
    const Panel& p = *control.panel();
    return {link.AchsPosition(),
            link.encoder(),
            link.sKennText(),
            {p.Text1[0]->text(), p.Text1[1]->text(), p.lblPosition[0]->text(),
             p.lblPosition1[1]->text(), p.lblPosition2[0]->text(), p.lblEncoder[1]->text(),
             p.lblOptik->text(), quendrix::tag(p.micro0[0]), quendrix::tag(p.micro1[0])},
            link.bQuittiert()};
}

// Evaluates what is left in the remainder, as the next arrivals or Output's drain would.
void drain(ctlQuendrix& control) {
    while (quendrix::internals(control).link()->sRest().contains(QStringLiteral("\r\n")))
        control.Auswerten({}, false);
}

}  // namespace

class TestReplies : public QObject {
    Q_OBJECT

    TestPlatform platform_;
    std::unique_ptr<ctlQuendrix> control_;
    Link* link_ = nullptr;
    Panel* p_ = nullptr;

private slots:
    void init() {
        platform_ = TestPlatform();
        control_ = std::make_unique<ctlQuendrix>();
        control_->setPlatform(&platform_);
        control_->setLocale(QLocale(QLocale::German));
        control_->setKennung(QStringLiteral("qQ"));
        link_ = quendrix::internals(control_).link();
        p_ = control_->panel();
        p_->Schritte[0]->setText(QStringLiteral("400"));
        p_->Steigung[0]->setText(QStringLiteral("1"));
    }
    void cleanup() { control_.reset(); }

    void acknowledgeMarkers() {
        using quendrix::acknowledgeMarker;
        QCOMPARE(acknowledgeMarker("t16#", 0, 0), QStringLiteral("T|"));
        QCOMPARE(acknowledgeMarker("?#\r\n", 5, 5), QStringLiteral("?|"));
        QCOMPARE(acknowledgeMarker("v#", 0, 3), QStringLiteral("V|"));
        QCOMPARE(acknowledgeMarker("z#", 3, 0), QStringLiteral("|F"));
        QCOMPARE(acknowledgeMarker("V#", 3, 0), QStringLiteral("V|"));
        QCOMPARE(acknowledgeMarker("Z#", 0, 1), QStringLiteral("|F"));
        QCOMPARE(acknowledgeMarker("", 0, 0), QStringLiteral("|"));
    }

    void anAcknowledgementEndsTheArrivalAndKeepsTheRest() {
        QSignalSpy moved(link_, &Link::positionReported);
        control_->Auswerten(QStringLiteral("Q|1!\r\nq #1200 ~1180 |B\r\n"), false);
        QVERIFY(link_->bQuittiert());
        QCOMPARE(link_->AchsPosition()[0], 0);
        QCOMPARE(link_->sRest(), QStringLiteral("q #1200 ~1180 |B\r\n"));
        QCOMPARE(p_->Text1[1]->text(), QStringLiteral("_> Q|1!"));
        control_->Auswerten({}, true);
        QCOMPARE(link_->AchsPosition()[0], 1200);
        QCOMPARE(link_->encoder()[0], 1180);
        QCOMPARE(p_->Text1[1]->text(), QStringLiteral("=> q #1200 ~1180 |B"));
        QCOMPARE(moved.size(), 1);
        // With another set of identification characters the same line is no acknowledgement.
        link_->setQuittiert(false);
        link_->setErwartet(QStringLiteral("T|"));
        control_->setKennung(QStringLiteral("@"));
        control_->Auswerten(QStringLiteral("Q|1!\r\n"), false);
        QVERIFY(!link_->bQuittiert());
    }

    void statusLinesMoveTheAxesAndTheirDisplays() {
        QSignalSpy moved(link_, &Link::positionReported);
        control_->Auswerten(QStringLiteral("q #1200 ~1180 *16 |B\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], 1200);
        QCOMPARE(p_->lblPosition1[0]->text(), QStringLiteral("1200"));
        QCOMPARE(p_->lblPosition[0]->text(), QStringLiteral("1200"));
        QCOMPARE(p_->lblPosition2[0]->text(), QStringLiteral("3,00"));  // 1200 / 400 * 1 mm
        QCOMPARE(p_->lblEncoder[0]->text(), QStringLiteral("1180"));
        QCOMPARE(p_->Slider2->value(), p_->Slider2->maximum());
        // The division in force is noted on the first option button, which is not clicked.
        QVERIFY(p_->cbMikroschritt[0]->isEnabled());
        QCOMPARE(quendrix::tag(p_->micro0[0]), QStringLiteral("4"));
        QVERIFY(!p_->micro0[4]->isChecked());

        p_->Label9->setText(QStringLiteral("Position [mm]"));
        control_->Auswerten(QStringLiteral("q #-12000 ~-11990 *2 |B\r\n"), false);
        QCOMPARE(p_->lblPosition[0]->text(), QStringLiteral("-30,00"));
        QCOMPARE(quendrix::tag(p_->micro0[0]), QStringLiteral("1"));

        control_->Auswerten(QStringLiteral("Q #4050 ~4049 *8 |B\r\n"), false);
        QCOMPARE(link_->AchsPosition()[1], 4050);
        QCOMPARE(p_->lblPosition1[1]->text(), QStringLiteral("4050"));
        QCOMPARE(quendrix::tag(p_->micro1[0]), QStringLiteral("3"));
        QCOMPARE(moved.size(), 3);
        QCOMPARE(moved.last().at(0).toInt(), 1);

        // A query answer and a line without "|B" change no position; an odd divisor no tag.
        control_->Auswerten(QStringLiteral("q?|*3 #999 ~999\r\nq #777 ~777\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], -12000);
        QCOMPARE(link_->sKennText()[0], QStringLiteral("q #777 ~777"));
        QCOMPARE(quendrix::tag(p_->micro0[0]), QStringLiteral("1"));
        // A position beyond 32 bits is noise, not a crash.
        control_->Auswerten(QStringLiteral("q #99999999999 ~1 |B\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], -12000);
        QCOMPARE(moved.size(), 4);
    }

    void finishedMoveShowsTheRunStateWithoutSending() {
        {
            const QSignalBlocker quiet(p_->Check0[0]);  // the axis runs; nothing to send here
            p_->Check0[0]->setChecked(true);
        }
        QSignalSpy clicked(p_->Check0[0], &QCheckBox::stateChanged);
        control_->Auswerten(QStringLiteral("q #1200 ~1180 *16 |B\r\n"), false);
        link_->setErwartet(QStringLiteral("|F"));
        link_->setQuittiert(false);
        control_->Auswerten(QStringLiteral("q #5 ~5 *16 |F :0\r\n"), false);
        QVERIFY(link_->bQuittiert());
        QCOMPARE(link_->AchsPosition()[0], 1200);  // the finishing line carries no new position
        QCOMPARE(quendrix::value(p_->Check0[0]), 0);
        QCOMPARE(clicked.size(), 0);
        QVERIFY(link_->sKennText()[0].contains(QStringLiteral("|F")));
        // A status line acknowledges only when it carries the expected marker.
        link_->setQuittiert(false);
        link_->setErwartet(QStringLiteral("T|"));
        control_->Auswerten(QStringLiteral("q #5 ~5 |B\r\n"), false);
        QVERIFY(!link_->bQuittiert());
    }

    // Line noise with numbers beyond any range: each line is logged as it came, every field
    // keeps its value, and the next good line is evaluated as usual.
    void numbersBeyondAnyRangeChangeNothing() {
        p_->lbObjektiv[2]->setText(QStringLiteral("10x Plan"));
        control_->Auswerten(QStringLiteral("q #1200 ~1180 *16 |B\r\nQ #40 ~41 *8 |B\r\n"), false);
        control_->Auswerten(QStringLiteral("@ |Q2\r\n"), false);
        const QStringList noise = {"q #12e456 ~1e400 *1e999 |B",
                                   "Q #-99999999999 ~1e309 |B",
                                   "q|B#12e456",
                                   "@|Q1e400",
                                   "@ |F-1e309 #1e400",
                                   "@ #1e300 |B",
                                   "@ |Q2e308",
                                   "q #5 ~5 |F :7e400"};
        for (const QString& kennung : {QStringLiteral("qQ"), QStringLiteral("@")}) {
            control_->setKennung(kennung);
            for (const QString& line : noise) {
                const Observed before = observe(*control_);
                control_->Auswerten(line + QStringLiteral("\r\n"), false);
                QCOMPARE(p_->Text1[1]->text(), "_> " + line);
                const Observed after = observe(*control_);
                QCOMPARE(after.positions, before.positions);
                QCOMPARE(after.labels.mid(2), before.labels.mid(2));
                // A field whose mark is missing reads as 0, as it always has.
                if (line.startsWith(u"q|B") && kennung == u"@")
                    QCOMPARE(after.encoders, (std::array<qint32, 2>{0, before.encoders[1]}));
                else
                    QCOMPARE(after.encoders, before.encoders);
            }
        }
        control_->Auswerten(QStringLiteral("q #1300 ~1290 *4 |B\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], 1300);
        QCOMPARE(quendrix::tag(p_->micro0[0]), QStringLiteral("2"));
    }

    void lensChangerLines() {
        p_->lbObjektiv[2]->setText(QStringLiteral("10x Plan"));
        p_->lbObjektiv[3]->setText(QString());
        control_->Auswerten(QStringLiteral("@ |Q2\r\n"), false);
        QCOMPARE(p_->lblOptik->text(), QStringLiteral("10x Plan"));
        control_->Auswerten(QStringLiteral("@ #1500 |B\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], 1500);
        QCOMPARE(link_->encoder()[0], 1500);
        QCOMPARE(p_->lblEncoder[0]->text(), QStringLiteral("1500"));
        control_->Auswerten(QStringLiteral("@ |F3 #1600\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], 1600);
        QCOMPARE(p_->lblOptik->text(), QStringLiteral("ohne"));  // nothing mounted at 3
        control_->Auswerten(QStringLiteral("@ ?| |?2 #1700\r\n"), false);
        QCOMPARE(link_->AchsPosition()[0], 1700);
        QCOMPARE(p_->lblOptik->text(), QStringLiteral("ohne"));
        QCOMPARE(link_->sKennText()[0], QStringLiteral("@ ?| |?2 #1700"));
    }

    void identificationAndErrorLines() {
        control_->Auswerten(QStringLiteral("Arduino Photostand\r\n"), true);
        QVERIFY(link_->bQuittiert());
        QCOMPARE(link_->sKennText()[1], QStringLiteral("Arduino Photostand"));
        QCOMPARE(p_->Text1[0]->text(), QStringLiteral("=> Arduino Photostand"));
        link_->setQuittiert(false);
        control_->Auswerten(QStringLiteral("unbekannt: k#\r\n"), false);
        QVERIFY(link_->bQuittiert());
        QCOMPARE(p_->Text1[0]->text(), QStringLiteral("_> unbekannt: k#"));
        // Other lines are only logged.
        link_->setQuittiert(false);
        control_->Auswerten(QStringLiteral("T|16#\r\n"), false);
        QVERIFY(!link_->bQuittiert());
        QCOMPARE(p_->Text1[1]->text(), QStringLiteral("_> T|16#"));
        QCOMPARE(p_->Text1[0]->text(), QStringLiteral("_> unbekannt: k#"));
    }

    void partialLinesWaitForTheirLineEnd() {
        control_->Auswerten(QStringLiteral("q #12"), false);
        QCOMPARE(link_->AchsPosition()[0], 0);
        control_->Auswerten(QStringLiteral("00 ~1 |B\r"), false);
        QCOMPARE(link_->AchsPosition()[0], 0);
        control_->Auswerten(QStringLiteral("\n"), false);
        QCOMPARE(link_->AchsPosition()[0], 1200);
        // The local failure text of a dead serial link counts as an answer on its own.
        link_->setQuittiert(false);
        control_->Auswerten(QStringLiteral("Keine Verbindung"), false);
        QVERIFY(link_->bQuittiert());
        link_->setRest(QString());
        link_->setQuittiert(false);
        control_->Auswerten(QStringLiteral("Keine WiFi Verbindung"), false);
        QVERIFY(!link_->bQuittiert());
    }

    // The same bytes give the same state, however the transport cuts them into arrivals.
    void cuttingTheStreamChangesNothing() {
        const QStringList lines = {"q #%1 ~%2 *16 |B",
                                   "Q #%1 ~%2 *4 |B",
                                   "q #%1 ~%2 *16 |F :0",
                                   "Q|#",
                                   "T|%1#",
                                   "@ |Q%3",
                                   "@ #%1 |B",
                                   "Arduino Photostand %1",
                                   "q?|*2 #%1 ~%2",
                                   "noise %2 ~ * #"};
        for (int run = 0; run < 40; ++run) {
            QRandomGenerator random(quint32(run + 1));
            QString stream;
            for (int i = 0; i < 30; ++i) {
                stream +=
                    QString(lines.at(random.bounded(int(lines.size()))))
                        .replace(QStringLiteral("%1"),
                                 QString::number(random.bounded(-50000, 50000)))
                        .replace(QStringLiteral("%2"),
                                 QString::number(random.bounded(-50000, 50000)))
                        .replace(QStringLiteral("%3"), QString::number(random.bounded(0, 6))) +
                    QStringLiteral("\r\n");
            }
            init();
            control_->Auswerten(stream, false);
            drain(*control_);
            const Observed whole = observe(*control_);

            init();
            for (qsizetype at = 0; at < stream.size();) {
                const qsizetype piece = random.bounded(1, 12);
                control_->Auswerten(stream.mid(at, piece), false);
                at += piece;
            }
            drain(*control_);
            QVERIFY2(observe(*control_) == whole, qPrintable(QStringLiteral("run %1").arg(run)));
        }
    }

    void outputWithoutATransportReportsAndDoesNotHang() {
        // Serial port closed: the failure text answers at once, so only the first command
        // waits for an earlier acknowledgement that never comes.
        const double start = platform_.now();
        control_->Output(QStringLiteral("r#"));
        QVERIFY(platform_.now() - start >= 2 && platform_.now() - start < 2.1);
        QCOMPARE(p_->Text1[1]->text(), QStringLiteral("Keine Verbindung"));
        const double second = platform_.now();
        control_->Output(QStringLiteral("s#"));
        control_->Output(QStringLiteral("t16#"));
        QVERIFY(platform_.now() - second < 0.1);
        QCOMPARE(link_->sErwartet(), QStringLiteral("T|"));
        // Socket down: the command is dropped and waits out its acknowledgement.
        control_->wifi = true;
        const double third = platform_.now();
        control_->Output(QStringLiteral("l0!"));
        QCOMPARE(p_->Text1[1]->text(), QStringLiteral("Keine WiFi Verbindung"));
        QVERIFY(platform_.now() - third >= 2 && platform_.now() - third < 2.1);
    }

    void terminateEndsAPendingOutputAtOnce() {
        control_->wifi = true;
        link_->setQuittiert(true);
        const double start = platform_.now();
        platform_.onIdle = [this, start](TestPlatform& p) {
            if (p.now() - start >= 0.5) control_->Terminate();
        };
        control_->Output(QStringLiteral("r#"));
        QVERIFY(platform_.now() - start < 0.6);
        // Later waits do not start at all.
        control_->Output(QStringLiteral("s#"));
        QVERIFY(platform_.now() - start < 0.6);
    }

    void releaseWaitsForTheHost() {
        // Released while waiting: no message.
        const double start = platform_.now();
        platform_.onIdle = [this, start](TestPlatform& p) {
            if (p.now() - start >= 3) control_->SetOK(true);
        };
        link_->waitForRelease(QStringLiteral("Sub Fortsetzung"));
        QVERIFY(platform_.now() - start < 3.1);
        QVERIFY(platform_.messages.isEmpty());
        // The release stays until the host takes it back.
        link_->waitForRelease(QStringLiteral("Sub Fortsetzung"));
        QVERIFY(platform_.messages.isEmpty());

        // Never released: after 31 s the operator learns who waits.
        platform_.onIdle = nullptr;
        control_->SetOK(false);
        const double late = platform_.now();
        link_->waitForRelease(QStringLiteral("Sub Combine_click"));
        QVERIFY(platform_.now() - late >= 31);
        QCOMPARE(platform_.messages.size(), 1);
        QCOMPARE(platform_.messages.first().prompt,
                 QStringLiteral("Quendrix wartet auf Freigabe: Sub Combine_click"));

        // Escape ends the wait silently.
        platform_.keysDown.insert(quendrix::VirtualKey::Escape);
        const double escaped = platform_.now();
        link_->waitForRelease(QStringLiteral("Sub Fortsetzung"));
        QVERIFY(platform_.now() - escaped < 0.1);
        QCOMPARE(platform_.messages.size(), 1);
    }
};

QTEST_MAIN(TestReplies)
#include "tst_replies.moc"
