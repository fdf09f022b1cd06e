// Axis motion through the panel, with real mouse and key events, against the board simulator
// over a real pseudo-terminal: every assertion is on what the board received, in order.
#include "control/internals.h"
#include "motion/motion.h"
#include "support/simrig.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>

using quendrix::Motion;
using quendrix::value;

namespace {
using Commands = QStringList;
}

class TestMotion : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    QTemporaryDir folder_;
    quendrix::Panel* p_ = nullptr;
    Motion* motion_ = nullptr;

    bool start(const quendrix::sim::Options& options = {}) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start(options)) return false;
        p_ = &rig_->panel();
        motion_ = quendrix::internals(rig_->control).motion();
        rig_->control->setinifile(folder_.filePath(QStringLiteral("rig_L.ini")));
        rig_->control->setMotorName(QStringLiteral("Platz0"));
        p_->Taktpause[0]->setText(QStringLiteral("12"));
        p_->Taktpause[1]->setText(QStringLiteral("12"));
        // The bellows frame opens with the rig; here the rig is taken as open.
        p_->Frame4->setEnabled(true);
        for (QWidget* w : p_->Frame4->findChildren<QWidget*>())
            w->setEnabled(true);
        rig_->control->show();
        return true;
    }
    Commands sent() {
        rig_->settle(0.05);
        return rig_->takeCommands();
    }
    void press(QWidget* w, Qt::MouseButton b = Qt::LeftButton) { QTest::mousePress(w, b); }
    void release(QWidget* w, Qt::MouseButton b = Qt::LeftButton) { QTest::mouseRelease(w, b); }
    void hover(QWidget* w) { QTest::mouseMove(w); }
    // Check boxes and option buttons are clicked on their indicator, buttons in the middle.
    void click(QWidget* w, Qt::MouseButton b = Qt::LeftButton) {
        const bool indicator = qobject_cast<QCheckBox*>(w) || qobject_cast<QRadioButton*>(w);
        QTest::mouseClick(w, b, {}, indicator ? QPoint(8, w->height() / 2) : QPoint());
    }

private slots:
    void cleanup() { rig_.reset(); }

    void jogButtonsOfTheDistanceAxis() {
        QVERIFY(start());
        hover(p_->Auf[0]);  // direction up, with the normal speed already in force
        QCOMPARE(sent(), Commands({"v#"}));
        press(p_->Auf[1]);
        release(p_->Auf[1]);
        QCOMPARE(sent(), Commands({"w96#", "r#", "s#"}));  // slow: 8 times the pause
        press(p_->Auf[0]);
        release(p_->Auf[0]);
        press(p_->Auf[2]);
        release(p_->Auf[2]);
        QCOMPARE(sent(), Commands({"w12#", "r#", "s#", "w192#", "r#", "s#"}));
        click(p_->Auf[3]);  // press sends nothing, release stops, click nudges
        QCOMPARE(sent(), Commands({"s#", "t16#"}));
        press(p_->Auf[4]);  // keeps the slowest speed
        release(p_->Auf[4], Qt::LeftButton);
        press(p_->Ab[0], Qt::RightButton);  // any button runs and stops axis 0
        release(p_->Ab[0], Qt::RightButton);
        QCOMPARE(sent(), Commands({"r#", "s#", "w12#", "r#", "s#"}));
        click(p_->Ab[3]);  // from normal speed: one pause command, then the nudge
        QCOMPARE(sent(), Commands({"s#", "w192#", "t16#"}));
        QCOMPARE(p_->Label8[0]->text(), QStringLiteral("L"));
        click(p_->Check0[0]);  // the run box alone, with no pause around it
        click(p_->Check0[0]);
        QCOMPARE(sent(), Commands({"r#", "s#"}));
    }

    void hoveringTurnsTheDirectionWithTheNormalPause() {
        QVERIFY(start());
        click(p_->Check0[6]);  // normal -> slow
        click(p_->Check0[6]);  // slow -> slowest
        QCOMPARE(sent(), Commands({"w96#", "w192#"}));
        hover(p_->Auf[2]);
        QCOMPARE(sent(), Commands({"w12#", "v#", "w192#"}));
        QCOMPARE(p_->Label7[0]->text(), QStringLiteral("é"));
        hover(p_->Auf[0]);  // the direction holds: nothing
        QCOMPARE(sent(), Commands());
        hover(p_->Ab[1]);
        QCOMPARE(sent(), Commands({"w12#", "z#", "w192#"}));
        QCOMPARE(p_->Label7[0]->text(), QStringLiteral("ê"));
        QCOMPARE(value(p_->Check0[6]), 2);

        // The bellows axis makes the same round trip on its own speed box.
        p_->obMotor[1]->setChecked(true);
        click(p_->Check0[7]);  // normal -> slow
        hover(p_->B_AUF[1]);
        hover(p_->B_AUF[0]);  // already open: nothing
        hover(p_->B_ZU[0]);
        QCOMPARE(sent(), Commands({"W24#", "W12#", "V#", "W24#", "W12#", "Z#", "W24#"}));
        QCOMPARE(p_->Label7[1]->text(), QStringLiteral("Ø×"));
        QCOMPARE(value(p_->Check0[7]), 0);
    }

    // While a direction goes out, nothing of the axis can start it or change its timing; all
    // of it is free again afterwards, even what was disabled before.
    void turningTheDirectionLocksTheAxis() {
        QVERIFY(start());
        for (int axis : {0, 1}) {
            QList<QWidget*> controls = {p_->Label7[axis], p_->Takt[axis], p_->Check0[axis],
                                        p_->Check0[4 + axis]};
            if (axis == 1)
                controls << p_->B_AUF[0] << p_->B_ZU[0] << p_->B_AUF[1] << p_->B_ZU[1];
            else
                controls << p_->Auf[4] << p_->Ab[0] << p_->Ab[4] << p_->cmdHeben << p_->cmdSenken;
            QList<bool> enabledMeanwhile;
            QObject probe;
            connect(p_->Check0[4 + axis], &QCheckBox::stateChanged, &probe, [&] {
                for (QWidget* w : controls)
                    enabledMeanwhile << w->isEnabled();
            });
            p_->Check0[axis]->setEnabled(false);
            controls.last()->setEnabled(false);
            hover(axis == 0 ? p_->Auf[1] : p_->B_AUF[1]);
            QCOMPARE(sent(), Commands({axis == 0 ? "v#" : "V#"}));
            QCOMPARE(enabledMeanwhile, QList<bool>(controls.size(), false));
            for (QWidget* w : controls)
                QVERIFY2(w->isEnabled(), qPrintable(w->objectName()));
        }
    }

    void bellowsJogStopsOnlyOnTheLeftButton() {
        QVERIFY(start());
        p_->Schritte[1]->setText(QStringLiteral("48"));
        p_->Steigung[1]->setText(QStringLiteral("1.5"));
        rig_->link().setAchsPosition(1, 96);
        hover(p_->B_AUF[0]);
        QCOMPARE(sent(), Commands({"V#"}));
        press(p_->B_AUF[0]);
        QCOMPARE(quendrix::tag(p_->lbAuszug), QStringLiteral("3"));  // 96 / 48 * 1.5 mm
        release(p_->B_AUF[0], Qt::RightButton);
        release(p_->B_AUF[0]);
        press(p_->B_ZU[1], Qt::RightButton);
        release(p_->B_ZU[1], Qt::RightButton);  // the bellows keep running
        QCOMPARE(sent(), Commands({"R#", "S#", "Z#", "R#"}));
        QVERIFY(rig_->board->axis(1).moving);
        QCOMPARE(p_->Label7[1]->text(), QStringLiteral("Ø×"));
        p_->obMotor[1]->setChecked(true);
        click(p_->Check0[1]);
        click(p_->Check0[1]);
        QCOMPARE(sent(), Commands({"R#", "S#"}));
        QVERIFY(!rig_->board->axis(1).moving);
    }

    void speedModesFollowTheRigAndTheMotor_data() {
        QTest::addColumn<int>("rig");
        QTest::addColumn<int>("motor");
        QTest::addColumn<Commands>("commands");  // clicking normal -> slow -> slowest -> normal
        QTest::newRow("bellows") << 0 << 0 << Commands({"w96#", "w192#", "w12#"});
        QTest::newRow("microscope") << 2 << 1 << Commands({"w96#", "w192#", "w12#"});
        QTest::newRow("changer, stepper") << 1 << 0 << Commands({"w24#", "w30#", "w12#"});
        QTest::newRow("changer, CAN bus") << 1 << 1 << Commands({"w3#", "w1#", "w12#"});
        QTest::newRow("changer, DC motor") << 1 << 2 << Commands({"w12#"});
    }
    void speedModesFollowTheRigAndTheMotor() {
        QFETCH(int, rig);
        QFETCH(int, motor);
        QFETCH(Commands, commands);
        QVERIFY(start());
        rig_->control->setControltyp(qint16(rig));
        rig_->control->setMotorArt0(motor);
        for (int i = 0; i < 3; ++i)
            click(p_->Check0[6]);
        QCOMPARE(sent(), commands);
        // Axis 1 knows no rig types: 2 and 4 times its pause.
        p_->obMotor[1]->setChecked(true);
        for (int i = 0; i < 3; ++i)
            click(p_->Check0[7]);
        QCOMPARE(sent(), Commands({"W24#", "W48#", "W12#"}));
    }

    void raisingAndLowering() {
        QVERIFY(start());
        p_->Anheben->setText(QStringLiteral("2.5"));
        p_->Steigung[0]->setText(QStringLiteral("1.25"));
        p_->Schritte[0]->setText(QStringLiteral("400"));
        click(p_->Check0[6]);  // slow, so the raise must set normal speed
        sent();
        rig_->control->pAnheben();
        QCOMPARE(sent(), Commands({"v#", "w12#", "t800#"}));
        rig_->control->pAnheben();  // raised already
        rig_->control->pAbsenken();
        rig_->control->pAbsenken();  // lowered already
        QCOMPARE(sent(), Commands({"z#", "t800#"}));
        click(p_->cmdHeben);  // a click raises but leaves no mark
        rig_->control->pAbsenken();
        QCOMPARE(sent(), Commands({"v#", "t800#"}));

        // Enter keeps the amount for the next start.
        p_->Anheben->setText(QStringLiteral("35"));
        QTest::keyClick(p_->Anheben, Qt::Key_Return);
        QCOMPARE(rig_->control->ini(QStringLiteral("Platz00"), QStringLiteral("anheben"), {}),
                 QStringLiteral("35"));

        // The lens changer counts in steps; the microscope does not raise at all.
        rig_->control->setControltyp(1);
        p_->Anheben->setText(QStringLiteral("30"));
        rig_->control->pAnheben();
        QCOMPARE(sent(), Commands({"t30#"}));
        // A negative amount goes out signed in steps, as its size in millimetres.
        p_->Anheben->setText(QStringLiteral("-30"));
        click(p_->cmdSenken);
        QCOMPARE(sent(), Commands({"z#", "t-30#"}));
        rig_->control->setControltyp(0);
        p_->Anheben->setText(QStringLiteral("-2.5"));
        click(p_->cmdHeben);
        QCOMPARE(sent(), Commands({"v#", "t800#"}));
        rig_->control->setControltyp(2);
        rig_->control->pAbsenken();
        rig_->control->pAnheben();
        QCOMPARE(sent(), Commands());
        // No raise amount: nothing moves.
        rig_->control->setControltyp(0);
        p_->Anheben->setText(QStringLiteral("0"));
        click(p_->cmdSenken);
        QCOMPARE(sent(), Commands());
    }

    void microStepDivisionKeepsTheSpeed() {
        QVERIFY(start());
        quendrix::setTag(p_->Taktpause[0], QStringLiteral("800"));
        quendrix::setTag(p_->Taktpause[1], QStringLiteral("8000"));
        p_->SSTab1->setCurrentIndex(2);
        click(p_->micro0[3]);
        QCOMPARE(sent(), Commands({"g3#", "w100#"}));
        QCOMPARE(p_->Taktpause[0]->text(), QStringLiteral("100"));
        QCOMPARE(quendrix::tag(p_->micro0[0]), QStringLiteral("3"));
        QCOMPARE(rig_->control->ini(QStringLiteral("Platz00"), QStringLiteral("micro"), {}),
                 QStringLiteral("3"));
        click(p_->micro1[2]);
        QCOMPARE(sent(), Commands({"G2#", "W2000#"}));
        QCOMPARE(rig_->board->axis(0).microExponent, 3);
        QCOMPARE(rig_->board->axis(1).microExponent, 2);
        QCOMPARE(p_->Taktpause[1]->text(), QStringLiteral("2000"));
        QCOMPARE(quendrix::tag(p_->micro1[0]), QStringLiteral("2"));
        QCOMPARE(quendrix::tag(p_->micro0[0]), QStringLiteral("3"));
        QCOMPARE(rig_->control->ini(QStringLiteral("Platz01"), QStringLiteral("micro"), {}),
                 QStringLiteral("2"));

        // Micro-stepping offered or not: the divisions are there to choose or not.
        // Each axis has its own.
        p_->cbMikroschritt[0]->setEnabled(true);
        p_->cbMikroschritt[1]->setEnabled(true);
        click(p_->cbMikroschritt[0]);
        click(p_->cbMikroschritt[1]);
        QVERIFY(p_->Frame7->isEnabled() && p_->micro0[4]->isEnabled());
        QVERIFY(p_->Frame8->isEnabled() && p_->micro1[0]->isEnabled());
        QCOMPARE(rig_->control->Mikroschritt0(), qint16(1));
        QCOMPARE(rig_->control->Mikroschritt1(), qint16(1));
        click(p_->cbMikroschritt[0]);
        QVERIFY(!p_->Frame7->isEnabled() && !p_->micro0[4]->isEnabled());
        QVERIFY(p_->Frame8->isEnabled() && p_->micro1[4]->isEnabled());
        click(p_->cbMikroschritt[1]);
        QCOMPARE(rig_->control->Mikroschritt1(), qint16(0));
        for (QRadioButton* option : p_->micro1)
            QVERIFY(!option->isEnabled());
        QVERIFY(!p_->Frame8->isEnabled());
        QCOMPARE(sent(), Commands());
    }

    // "Takt setzen" and "Spiel setzen": the number typed goes to the board and into the
    // settings; the full-step pause behind a pause is kept for the divisions. A text that is no
    // usable number is named and sends nothing.
    void timingAndBacklashAreSetFromTheirBoxes() {
        QVERIFY(start());
        quendrix::setTag(p_->micro0[0], QStringLiteral("3"));  // division 8 in force
        p_->Taktpause[0]->setText(QStringLiteral(" 150 "));
        p_->Taktsetzen[0]->click();
        QCOMPARE(sent(), Commands({"w150#"}));
        QCOMPARE(p_->Taktpause[0]->text(), QStringLiteral("150"));
        QCOMPARE(quendrix::tag(p_->Taktpause[0]), QStringLiteral("1200"));
        QCOMPARE(rig_->control->ini(QStringLiteral("Platz00"), QStringLiteral("Taktpause"), {}),
                 QStringLiteral("1200"));
        p_->SSTab1->setCurrentIndex(2);
        click(p_->micro0[1]);  // division 2: the same speed
        QCOMPARE(sent(), Commands({"g1#", "w600#"}));

        p_->tSpiel[1]->setText(QStringLiteral("25"));
        p_->cSpiel[1]->click();
        QCOMPARE(sent(), Commands({"A25#"}));
        QCOMPARE(rig_->link().backlash()[1], 25);
        QCOMPARE(rig_->control->ini(QStringLiteral("Platz01"), QStringLiteral("spiel"), {}),
                 QStringLiteral("25"));

        p_->Taktpause[1]->setText(QStringLiteral("schnell"));
        p_->Taktsetzen[1]->click();
        p_->tSpiel[0]->setText(QStringLiteral("-3"));
        p_->cSpiel[0]->click();
        QCOMPARE(sent(), Commands());
        QCOMPARE(rig_->link().backlash()[0], 0);
        QCOMPARE(rig_->platform.messages.size(), 2);
        QCOMPARE(rig_->platform.messages[0].prompt,
                 QStringLiteral("Taktpause: bitte eine ganze Zahl von 1 bis 1000000 eingeben"));
        QCOMPARE(rig_->platform.messages[1].prompt,
                 QStringLiteral("Spiel: bitte eine ganze Zahl von 0 bis 1000000 eingeben"));
    }

    void switchesGoToTheBoardOnlyOnceReady() {
        QVERIFY(start());
        p_->SSTab1->setCurrentIndex(2);
        click(p_->cbEndschalter[1]);
        click(p_->cbDrehrichtungArduino[0]);
        click(p_->cbDrehrichtungArduino[1]);
        QCOMPARE(sent(), Commands());
        rig_->link().setBereit(true);
        click(p_->cbEndschalter[1]);
        click(p_->cbEndschalter[1]);
        click(p_->cbDrehrichtungArduino[0]);
        click(p_->cbDrehrichtungArduino[1]);
        click(p_->cbDrehrichtungArduino[1]);
        QCOMPARE(sent(), Commands({"E0#", "E1#", "c0#", "C0#", "C1#"}));
        QCOMPARE(rig_->board->axis(1).inversion, 1);
    }

    // Back on the operating tab from a settings tab, the ready board takes over what was edited
    // there: "t1#" (not on the lens changer) and "T1#". The user's tab bar is clicked.
    void returningFromASettingsTabHandsItsSettingsOver_data() {
        QTest::addColumn<int>("rigType");
        QTest::addColumn<Commands>("takeOver");
        QTest::newRow("bellows") << 0 << Commands({"t1#", "T1#"});
        QTest::newRow("lens changer") << 1 << Commands({"T1#"});
        QTest::newRow("microscope") << 2 << Commands({"t1#", "T1#"});
    }
    void returningFromASettingsTabHandsItsSettingsOver() {
        QFETCH(int, rigType);
        QFETCH(Commands, takeOver);
        quendrix::sim::Options options;
        options.rig = quendrix::sim::Rig(rigType);
        QVERIFY(start(options));
        rig_->control->setControltyp(qint16(rigType));
        QTabBar* tabs = p_->SSTab1->tabBar();
        const auto show = [&](int tab) {
            QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(tab).center());
            QCOMPARE(p_->SSTab1->currentIndex(), tab);
        };
        sent();

        show(2);  // not ready: nothing
        show(0);
        QCOMPARE(sent(), Commands());

        rig_->link().setBereit(true);
        show(0);  // from tab 0 to tab 0
        show(1);  // among the settings tabs
        show(3);
        show(2);
        QCOMPARE(sent(), Commands());
        show(0);
        QCOMPARE(sent(), takeOver);
        show(1);
        show(0);
        QCOMPARE(sent(), takeOver);
        QVERIFY(p_->obMotor[0]->isChecked());

        // The panel's own return to tab 0 is no return from a settings tab: a new layout and
        // the shutdown move nothing.
        show(2);
        rig_->control->setControltyp(qint16(rigType));
        QCOMPARE(p_->SSTab1->currentIndex(), 0);
        QCOMPARE(sent(), Commands());
        show(3);
        rig_->control->Motor_Abschalten();
        QCOMPARE(p_->SSTab1->currentIndex(), 0);
        QVERIFY(!sent().contains(takeOver.last()));
    }

    void rotateButtonCountsOtherButtons() {
        QVERIFY(start());
        click(p_->Drehen, Qt::MiddleButton);
        click(p_->Drehen, Qt::MiddleButton);
        click(p_->Drehen, Qt::RightButton);
        click(p_->Drehen, Qt::MiddleButton);
        click(p_->Drehen, Qt::LeftButton);
        QCOMPARE(sent(), Commands({"q-2!", "q-3!", "q0!", "q-2!", "q1!"}));
        motion_->setDrehzaehler(32766);
        click(p_->Drehen, Qt::MiddleButton);  // the count overflows 16 bits
        QCOMPARE(sent(), Commands());
        QCOMPARE(rig_->platform.messages.size(), 1);
        QVERIFY(rig_->platform.messages.first().prompt.contains(QStringLiteral("Überlauf")));
    }

    void positionReadoutInStepsOrMillimetres() {
        QVERIFY(start());
        p_->Schritte[0]->setText(QStringLiteral("400"));
        p_->Steigung[0]->setText(QStringLiteral("1"));
        rig_->control->setLocale(QLocale(QLocale::German));
        rig_->link().setAchsPosition(0, 1234567);
        click(p_->Label9);
        QCOMPARE(p_->Label9->text(), QStringLiteral("Position [mm]"));
        QCOMPARE(p_->lblPosition[0]->text(), QStringLiteral("3.086,42"));
        QCOMPARE(p_->lblPosition[1]->text(), QStringLiteral("3.086,42"));
        click(p_->Label9);
        QCOMPARE(p_->lblPosition[0]->text(), QStringLiteral("1234567"));
        // With the encoder on, millimetres come from its calibration over the axis's travel.
        p_->ENC[0]->setChecked(true);
        motion_->setMinEncoder(0, 100);
        motion_->setMaxEncoder(0, 1100);
        motion_->setMaxPosition(0, 40000);  // 100 mm
        rig_->link().setEncoder(0, 350);
        QCOMPARE(motion_->Schritte_in_mm(0, 5).mm, 25.0f);
        QCOMPARE(motion_->Schritte_in_mm(0, -1).steps, 1234567);
    }

    void positioningDrivesToTheTargetAndWaitsForTheEnd() {
        QVERIFY(start());
        p_->Taktpause[0]->setText(QStringLiteral("100"));
        rig_->control->Output(QStringLiteral("w100#"));
        motion_->setMaxPosition(0, 100000);
        sent();
        motion_->Position_anfahren(5000, 0, -1);
        QCOMPARE(rig_->link().AchsPosition()[0], 5000);
        QCOMPARE(sent(), Commands({"v#", "t5000#"}));
        // The last move's end is still in the status text; the next wait is not fooled by it.
        motion_->Position_anfahren(4950, 0, -1);
        QCOMPARE(rig_->link().AchsPosition()[0], 4950);
        QCOMPARE(sent(), Commands({"z#", "w1600#", "t50#"}));
        motion_->Position_anfahren(4950, 0, -1);   // already there
        motion_->Position_anfahren(-1, 0, 1);      // out of range
        motion_->Position_anfahren(100001, 0, 1);  // beyond the travel
        QCOMPARE(sent(), Commands());
        // Distance 1000 is slow, 1001 normal; a mode given is taken as it is.
        motion_->Position_anfahren(5950, 0, -1);
        motion_->Position_anfahren(4949, 0, -1);
        motion_->Position_anfahren(4960, 0, 0);
        QCOMPARE(sent(), Commands({"v#", "w800#", "t1000#", "z#", "w100#", "t1001#", "v#", "w800#",
                                   "t11#"}));
        QCOMPARE(rig_->link().AchsPosition()[0], 4960);
        // One step is "t1#", the same bytes as the settings take-over, and the board takes it
        // as that: the axis stays where it is.
        motion_->Position_anfahren(4961, 0, 0);
        QCOMPARE(sent(), Commands({"t1#"}));
        QCOMPARE(rig_->link().AchsPosition()[0], 4960);
        QVERIFY_THROWS_EXCEPTION(quendrix::RuntimeError, motion_->Position_anfahren(1, 2, 1));
    }

    void escapeEndsAWaitForALongMove() {
        QVERIFY(start());
        motion_->setMaxPosition(0, 1000000);
        rig_->control->Output(QStringLiteral("w10000#"));  // 100 steps a second
        const double begin = rig_->platform.now();
        rig_->platform.onIdle = [&](TestPlatform& p) {
            rig_->front->pump();
            if (p.now() - begin > 3) p.keysDown.insert(quendrix::VirtualKey::Escape);
        };
        motion_->Position_anfahren(100000, 0, 1);
        QVERIFY(rig_->platform.now() - begin < 3.2);
        QVERIFY(rig_->board->axis(0).moving);
    }

    void canBusDriveGoesToAbsoluteTargets() {
        quendrix::sim::Options changer;
        changer.rig = quendrix::sim::Rig::LensChanger;
        QVERIFY(start(changer));
        rig_->control->setKennung(QStringLiteral("@"));
        rig_->control->setControltyp(1);
        rig_->control->setMotorArt0(1);
        motion_->setMaxPosition(0, 100000);
        motion_->Position_anfahren(3000, 0, 1);
        QCOMPARE(sent(), Commands({"w1#", "t3000#"}));  // slowest speed, absolute target
        QCOMPARE(rig_->link().AchsPosition()[0], 3000);
        QCOMPARE(value(p_->Check0[4]), 0);  // the direction was left alone
    }

    void rangeTravelComparesTheFieldsAsText() {
        QVERIFY(start());
        p_->BBeginn[0]->setText(QStringLiteral("1000"));
        p_->BEnde[0]->setText(QStringLiteral("5000"));
        p_->Schrittzahl->setText(QStringLiteral("500"));
        rig_->link().setAchsPosition(0, 0);
        motion_->Bereich_abfahren();
        QCOMPARE(rig_->platform.messages.size(), 1);
        QCOMPARE(rig_->platform.messages[0].prompt, QStringLiteral("Untere Position erreicht"));
        QCOMPARE(rig_->platform.messages[0].title, QStringLiteral("Objektbereich abfahren"));
        QCOMPARE(sent(), Commands({"v#", "t500#"}));
        p_->BBeginn[0]->setText(QStringLiteral("900"));  // "900" sorts after "1000"
        p_->BEnde[0]->setText(QStringLiteral("1000"));
        rig_->link().setAchsPosition(0, 950);
        motion_->Bereich_abfahren();
        QCOMPARE(rig_->platform.messages.size(), 2);
        QCOMPARE(rig_->platform.messages[1].prompt, QStringLiteral("Obere Position erreicht"));
        rig_->link().setAchsPosition(0, 1200);
        motion_->Bereich_zurueckfahren();
        QCOMPARE(rig_->platform.messages[2].prompt, QStringLiteral("Untere Position erreicht"));
        QCOMPARE(sent(), Commands({"z#", "t500#", "v#", "t500#"}));
    }

    void directionMarksAreDrawnAsArrows() {
        QVERIFY(start());
        auto draw = [this](const QString& mark) {
            p_->Label7[0]->setText(mark);
            return p_->Label7[0]->grab().toImage().convertToFormat(QImage::Format_RGB32);
        };
        // An arrow up is narrow at the top and wide below; down the other way round.
        auto ink = [](const QImage& image, bool upperHalf) {
            int dark = 0;
            for (int y = upperHalf ? 0 : image.height() / 2;
                 y < (upperHalf ? image.height() / 2 : image.height()); ++y)
                for (int x = 0; x < image.width(); ++x)
                    dark += qGray(image.pixel(x, y)) < 128;
            return dark;
        };
        const QImage up = draw(QStringLiteral("é")), down = draw(QStringLiteral("ê"));
        QVERIFY(ink(up, true) > 0 && ink(up, true) < ink(up, false));
        QVERIFY(ink(down, true) > ink(down, false) && ink(down, false) > 0);
        const QImage open = draw(QStringLiteral("×Ø")), close = draw(QStringLiteral("Ø×"));
        QVERIFY(open != close && open != up);
        QVERIFY(draw(QStringLiteral("/")) != draw(QStringLiteral(".")));
    }
};

QTEST_MAIN(TestMotion)
#include "tst_motion.moc"
