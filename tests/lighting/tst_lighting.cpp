// The lights driven through the panel and the public methods, against the board simulator:
// the exact commands the board receives, and what it keeps.
#include "control/internals.h"
#include "lighting/lighting.h"
#include "support/errors.h"
#include "support/simrig.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTemporaryDir>

using quendrix::RuntimeError;
using Commands = QStringList;

class TestLighting : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;

    // A fresh rig of the given type, its lighting tab shown with both module frames.
    bool start(qint16 controltyp, qint16 dlicht = 0) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start()) return false;
        rig_->control->setControltyp(controltyp);
        quendrix::internals(rig_->control).lighting()->setDLicht(dlicht);
        rig_->control->show();
        rig_->panel().SSTab1->setCurrentIndex(3);
        for (QGroupBox* module : rig_->panel().Frame13)
            module->show();
        rig_->takeCommands();
        return true;
    }
    quendrix::Panel& panel() { return rig_->panel(); }
    ctlQuendrix& control() { return *rig_->control; }
    const quendrix::sim::Lights& lights() { return rig_->board->lights(); }
    void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

private slots:
    void cleanup() { rig_.reset(); }

    void controllerChannelsFollowTheirBoxes() {
        QVERIFY(start(0));
        panel().Licht[0]->setChecked(true);  // as start-up restores it: nothing goes out
        QCOMPARE(rig_->takeCommands(), Commands());
        click(panel().Licht[1]);
        QCOMPARE(rig_->takeCommands(), Commands({"l1#", "L1#"}));
        QVERIFY(lights().channel[0] && lights().channel[1]);
        click(panel().Licht[1]);  // cleared: switching on still sends its state, 0
        QCOMPARE(rig_->takeCommands(), Commands({"l1#", "L0#"}));
        control().Beleuchtung(0);
        QCOMPARE(rig_->takeCommands(), Commands({"l0#", "L0#"}));
        QVERIFY(!lights().channel[0] && !lights().channel[1]);

        // The lens changer has one channel; switching off still clears both.
        control().setControltyp(1);
        control().Beleuchtung(1);
        QCOMPARE(rig_->takeCommands(), Commands({"l1#"}));
        control().Beleuchtung(0);
        QCOMPARE(rig_->takeCommands(), Commands({"l0#", "L0#"}));
    }

    void theModuleUsesItsOwnBox() {
        QVERIFY(start(0, 2));
        panel().Licht[0]->setChecked(true);
        click(panel().Licht[3]);
        QCOMPARE(rig_->takeCommands(), Commands({"l1!"}));
        QVERIFY(lights().module && !lights().channel[0]);
        control().Beleuchtung(0);
        QCOMPARE(rig_->takeCommands(), Commands({"l0!"}));
        QVERIFY(!lights().module);

        // A module number beyond the panel's boxes: the caller gets the error, a click its box.
        quendrix::internals(control()).lighting()->setDLicht(3);
        QCOMPARE(errorOf([&] { control().Beleuchtung(1); }),
                 int(RuntimeError::SubscriptOutOfRange));
        click(panel().Licht[3]);
        QCOMPARE(rig_->platform.messages.size(), 1);
        QVERIFY(rig_->platform.messages[0].prompt.contains(QLatin1String("9")));
        QCOMPARE(rig_->takeCommands(), Commands());
    }

    void brightnessIsSentAndKept() {
        QVERIFY(start(0));
        QTemporaryDir dir;
        control().setinifile(dir.filePath(QStringLiteral("rig.ini")));
        control().setMotorName(QStringLiteral("Platz0"));
        panel().Licht[0]->setChecked(true);

        panel().HScroll1[1]->setValue(40);
        QCOMPARE(rig_->takeCommands(), Commands({"D40#", "l1#", "L0#"}));
        QCOMPARE(control().ini("Platz0", "Helligkeit1", "-"), QStringLiteral("40"));
        QCOMPARE(lights().brightness[1], 40);

        panel().HScroll1[0]->triggerAction(QAbstractSlider::SliderSingleStepSub);
        QCOMPARE(rig_->takeCommands(), Commands({"d254#", "l1#", "L0#"}));
        QCOMPARE(control().ini("Platz0", "Helligkeit0", "-"), QStringLiteral("254"));

        // A drag goes out once, when it is let go.
        QScrollBar* bar = panel().HScroll1[0];
        bar->setSliderDown(true);
        for (int position : {200, 150, 100})
            bar->setSliderPosition(position);
        QCOMPARE(rig_->takeCommands(), Commands());
        bar->setSliderDown(false);
        QCOMPARE(rig_->takeCommands(), Commands({"d100#", "l1#", "L0#"}));

        // The module's slider: its own command, nothing stored.
        panel().HScroll1[3]->setValue(77);
        QCOMPARE(rig_->takeCommands(), Commands({"d77!"}));
        QCOMPARE(lights().moduleBrightness, 77);
        QCOMPARE(control().ini("Platz0", "Helligkeit3", "-"), QStringLiteral("-"));
    }

    void segmentButtonsToggle() {
        QVERIFY(start(0, 2));
        QPushButton* seg = panel().Seg[2];
        const QColor face = QApplication::palette().color(QPalette::Button);
        click(seg);
        QCOMPARE(rig_->takeCommands(), Commands({"s3!"}));
        QVERIFY(seg->palette().color(QPalette::Button) != face);
        QCOMPARE(lights().segments, QSet<int>({3}));
        click(seg);
        QCOMPARE(rig_->takeCommands(), Commands({"s-3!"}));
        QCOMPARE(seg->palette().color(QPalette::Button), face);
        QVERIFY(lights().segments.isEmpty());

        control().Segment(5);
        QCOMPARE(rig_->takeCommands(), Commands({"s5!"}));
    }

    void ringModeLetterDependsOnTheModule() {
        QVERIFY(start(0));
        for (qint16 dlicht : {0, 1, 2}) {
            quendrix::internals(control()).lighting()->setDLicht(dlicht);
            control().Ring(2);
        }
        QCOMPARE(rig_->takeCommands(), Commands({"T2!", "t2!", "T2!"}));
        QCOMPARE(lights().ringMode, 2);
    }

    void colourIntensityIsAskedFor() {
        QVERIFY(start(0, 2));
        control().setLocale(QLocale(QLocale::German, QLocale::Germany));
        TestPlatform& platform = rig_->platform;
        platform.inputAnswers = {"200", "42", "17", " 1.000 "};
        control().Farbe(0);
        control().Farbe(1);
        control().Farbe(2);  // green is "f": "g" would set the micro-steps
        control().Farbe(3);  // the range is only advised
        QCOMPARE(rig_->takeCommands(), Commands({"w200!", "r42!", "f17!", "b1000!"}));
        QCOMPARE(lights().white, 200);
        QCOMPARE(lights().red, 42);
        QCOMPARE(lights().green, 17);
        QCOMPARE(platform.inputs[0].prompt,
                 QStringLiteral("Intensität für weiß wählen (0...255; 0 = Mittelwert)"));
        QCOMPARE(platform.inputs[1].prompt, QStringLiteral("Intensität für rot wählen (0...255)"));
        QCOMPARE(platform.inputs[3].title, QStringLiteral("Farbe einstellen"));

        // Cancelled (no answer queued) and non-numeric entries send nothing.
        QCOMPARE(errorOf([&] { control().Farbe(1); }), int(RuntimeError::TypeMismatch));
        platform.inputAnswers = {"hell"};
        QCOMPARE(errorOf([&] { control().Farbe(1); }), int(RuntimeError::TypeMismatch));
        QCOMPARE(platform.inputs[5].prompt, QStringLiteral("Intensität für rot wählen (0...255)"));
        control().Farbe(4);
        QCOMPARE(platform.inputs.size(), 6);
        QCOMPARE(rig_->takeCommands(), Commands());
    }
};

QTEST_MAIN(TestLighting)
#include "tst_lighting.moc"
