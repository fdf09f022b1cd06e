// Focus stacks and averaging series against the board simulator over a real pseudo-terminal,
// with a host that answers the events as a real one would.
#include "control/internals.h"
#include "core/stepadvisor.h"
#include "motion/motion.h"
#include "stacking/stacking.h"
#include "support/simrig.h"

#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace sim = quendrix::sim;
using Commands = QStringList;

class TestStacking : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    QTemporaryDir folder_;
    ctlQuendrix* control_ = nullptr;
    quendrix::Panel* p_ = nullptr;
    QStringList layers_;        // Schicht numbers, in order
    QList<double> layerTimes_;  // when each came, on the scripted clock
    bool hostReleases_ = true;

    bool start(const sim::Options& options = {}) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start(options)) return false;
        control_ = rig_->control.get();
        p_ = &rig_->panel();
        layers_.clear();
        layerTimes_.clear();
        hostReleases_ = true;
        control_->setLocale(QLocale(QLocale::German));
        control_->setinifile(folder_.filePath(QStringLiteral("stack_L.ini")));
        QFile::remove(control_->inifile());
        quendrix::internals(control_).motion()->setMaxPosition(0, 1000000);
        p_->Steigung[0]->setText(QStringLiteral("1"));
        p_->Schritte[0]->setText(QStringLiteral("400"));
        p_->Taktpause[0]->setText(QStringLiteral("100"));
        p_->wartezeit->setText(QStringLiteral("20"));
        control_->Output(QStringLiteral("w100#"));
        // The host: it takes its picture at once and releases the run.
        connect(control_, &ctlQuendrix::Schicht, this, [this](const QString& nr) {
            layers_.append(nr);
            layerTimes_.append(rig_->platform.now());
            if (hostReleases_) control_->SetOK(true);
        });
        rig_->takeCommands();
        return true;
    }

    void plan(int begin, int end, int planes) {
        p_->BBeginn[0]->setText(QString::number(begin));
        p_->BEnde[0]->setText(QString::number(end));
        p_->Ebenen->clear();  // so that the plan is made again even with the same planes
        p_->Ebenen->setText(QString::number(planes));
    }

    // Starts the stack and lets it run until the host is asked to combine it.
    QSignalSpy* runStack(double limit = 60) {
        auto* combine = new QSignalSpy(control_, &ctlQuendrix::Kombinieren);
        p_->AutoKomb->click();
        rig_->waitFor([&] { return !combine->isEmpty(); }, limit);
        rig_->settle(0.05);
        return combine;
    }

private slots:
    void cleanup() { rig_.reset(); }

    void planningNumbers() {
        QVERIFY(start());
        plan(1000, 5000, 8);
        QCOMPARE(p_->Schrittzahl->text(), QStringLiteral("500"));
        QCOMPARE(p_->Aufloesung->text(), QStringLiteral("1.250 µ"));
        QCOMPARE(p_->Weglaenge->text(), QStringLiteral("10,00"));
        QCOMPARE(quendrix::internals(control_).stacking()->Bereich(), 4000);
        QCOMPARE(quendrix::internals(control_).stacking()->AufloesungText(),
                 QStringLiteral("1.250 µ"));
        control_->setLocale(QLocale(QLocale::English));
        plan(5000, 1000, 8);  // swapped: the same range
        QCOMPARE(p_->Aufloesung->text(), QStringLiteral("1,250 µ"));
        QCOMPARE(p_->Weglaenge->text(), QStringLiteral("10.00"));
        plan(1000, 1000 + 5 * 400 / 100, 8);  // 20 steps, 8 planes: 2.5 -> 3 steps, 7.5 µm
        QCOMPARE(p_->Schrittzahl->text(), QStringLiteral("3"));
        QCOMPARE(p_->Aufloesung->text(), QStringLiteral("7.50 µ"));
        plan(1000, 1005, 8);  // more planes than steps
        QCOMPARE(p_->Schrittzahl->text(), QStringLiteral("0"));
        QCOMPARE(p_->Schrittzahl->palette().color(QPalette::Text), QColor(255, 0, 0));
        QCOMPARE(p_->Ebenen->palette().color(QPalette::Text), QColor(255, 0, 0));
        plan(1000, 5000, 8);
        QVERIFY(p_->Ebenen->palette().color(QPalette::Text) != QColor(255, 0, 0));
        // A step count of -1 is a backlash entry.
        p_->Schrittzahl->setText(QStringLiteral("-1"));
        QCOMPARE(p_->tSpiel[0]->text(), QStringLiteral("-1"));
    }

    void aWholeStack() {
        QVERIFY(start());
        plan(5000, 1000, 4);  // 1000 steps between planes, downwards from the start
        p_->lblSehfeld->setToolTip(QStringLiteral("12,3456"));
        QObject host;
        QStringList fieldOfView;  // the first width told, and how many commands went before it
        connect(control_, &ctlQuendrix::SehfeldNeu, &host, [&](const QString& width) {
            if (fieldOfView.isEmpty())
                fieldOfView << width << QString::number(rig_->board->received().size());
        });
        QList<int> pauses;  // the pause that ended with each picture
        connect(control_, &ctlQuendrix::Schicht, &host, [&] { pauses << p_->Timer3->interval(); });
        QScopedPointer<QSignalSpy> combine(runStack());
        QCOMPARE(fieldOfView, QStringList({"12,346", "0"}));
        // The first picture waits twice the pause; each later one the pause after its plane
        // (1000 steps at 800 us) has arrived.
        QCOMPARE(pauses, QList<int>({40, 20, 20, 20, 20}));
        for (int i = 1; i < layerTimes_.size(); ++i)
            QVERIFY2(layerTimes_[i] - layerTimes_[i - 1] >= 0.8,
                     qPrintable(QString::number(layerTimes_[i] - layerTimes_[i - 1])));
        QCOMPARE(combine->size(), 1);
        QCOMPARE(combine->first().first().toString(), QStringLiteral("5"));
        QCOMPARE(layers_, QStringList({"1", "2", "3", "4", "5"}));
        QCOMPARE(rig_->takeCommands(),
                 Commands({"v#", "t5400#", "y1#", "z#", "w800#", "t400#", "t1000#", "t1000#",
                           "t1000#", "t1000#", "w100#", "y0#"}));
        QCOMPARE(rig_->link().AchsPosition()[0], 1000);
        QCOMPARE(p_->Schicht->text(), QStringLiteral("Schicht: 0"));
        QCOMPARE(quendrix::tag(p_->AutoKomb), QString());
        QCOMPARE(quendrix::value(p_->Check0[6]), 1);

        // Planes of 100 steps or fewer go at the slowest speed, whatever the approach took.
        plan(1400, 1000, 4);
        combine.reset(runStack());
        QCOMPARE(rig_->takeCommands(),
                 Commands({"v#", "t800#", "y1#", "z#", "w800#", "t400#", "w1600#", "t100#", "t100#",
                           "t100#", "t100#", "w100#", "y0#"}));
    }

    void aLensChangerRigSendsNoCombineCommands() {
        QVERIFY(start());
        control_->setControltyp(1);
        plan(5000, 1000, 2);  // 2000 steps: normal speed
        QScopedPointer<QSignalSpy> combine(runStack());
        QCOMPARE(rig_->takeCommands(),
                 Commands({"v#", "t5400#", "z#", "w200#", "t400#", "w100#", "t2000#", "t2000#"}));
    }

    void aCanBusDriveStepsBackwards() {
        sim::Options changer;
        changer.rig = sim::Rig::LensChanger;
        QVERIFY(start(changer));
        control_->setKennung(QStringLiteral("@"));
        control_->setControltyp(1);
        control_->setMotorArt0(1);
        plan(5000, 1000, 2);
        QScopedPointer<QSignalSpy> combine(runStack());
        QCOMPARE(combine->size(), 1);
        QCOMPARE(rig_->takeCommands(),
                 Commands({"w12#", "t5400#", "t5000#", "t-2000#", "t-2000#", "w100#"}));
    }

    void aStackWithNoStepIsRefused() {
        QVERIFY(start());
        plan(1000, 1005, 8);
        p_->AutoKomb->click();
        rig_->settle(0.5);
        QCOMPARE(rig_->platform.messages.size(), 1);
        QCOMPARE(rig_->platform.messages.first().prompt,
                 QStringLiteral("Bereich ist kleiner als die Anzahl der Ebenen !"));
        QCOMPARE(rig_->takeCommands(), Commands());
        QVERIFY(layers_.isEmpty());
    }

    void theRightButtonAbortsTheRun() {
        QVERIFY(start());
        plan(5000, 1000, 4);
        connect(control_, &ctlQuendrix::Schicht, this, [this](const QString& nr) {
            if (nr == u"2") QTest::mouseRelease(p_->AutoKomb, Qt::RightButton);
        });
        p_->AutoKomb->click();
        rig_->waitFor([&] { return layers_.size() >= 2; });
        rig_->settle(2);
        QCOMPARE(layers_, QStringList({"1", "2"}));
        const Commands sent = rig_->takeCommands();
        QCOMPARE(sent.mid(sent.size() - 2), Commands({"t400#", "t1000#"}));  // one plane, no "y0#"
        QVERIFY(!p_->Timer3->isActive());
        QCOMPARE(p_->Schicht->text(), QStringLiteral("Schicht: 0"));
    }

    void aPlaneThatNeverArrivesIsWaitedForSixSeconds() {
        QVERIFY(start());
        p_->Taktpause[0]->setText(QStringLiteral("2000"));  // 2 ms a step
        control_->Output(QStringLiteral("w2000#"));
        plan(5000, 1000, 1);  // one plane of 4000 steps: 8 s
        QScopedPointer<QSignalSpy> combine(runStack(120));
        QCOMPARE(layers_, QStringList({"1", "2"}));
        const double between = layerTimes_[1] - layerTimes_[0];
        QVERIFY2(between >= 6 && between < 7, qPrintable(QString::number(between)));
        QCOMPARE(combine->size(), 1);
        QVERIFY(rig_->link().AchsPosition()[0] > 1000);  // the picture was taken on the way
    }

    void averagingSeries() {
        QVERIFY(start());
        QSignalSpy averaged(control_, &ctlQuendrix::Mittelwert);
        p_->lblSehfeld->setToolTip(QStringLiteral("7,5"));
        QObject host;
        QStringList events;
        connect(control_, &ctlQuendrix::SehfeldNeu, &host,
                [&](const QString& width) { events << QStringLiteral("SehfeldNeu ") + width; });
        connect(control_, &ctlQuendrix::Schicht, &host, [&](const QString& nr) { events << nr; });
        control_->Mittelw_Click();
        // The field of view first, then the first picture at once, before any pause.
        QCOMPARE(events, QStringList({"SehfeldNeu 7,500", "1"}));
        QVERIFY(rig_->waitFor([&] { return !averaged.isEmpty(); }));
        QCOMPARE(layers_.size(), 10);  // no "Serie" in the settings: ten pictures
        QCOMPARE(averaged.first().first().toString(), QStringLiteral("10"));
        QCOMPARE(rig_->takeCommands(), Commands());  // nothing moves

        control_->setini(QStringLiteral("Verzeichnis"), QStringLiteral("Serie"),
                         QStringLiteral("3"));
        layers_.clear();
        control_->Mittelwertbild();
        QVERIFY(rig_->waitFor([&] { return averaged.size() == 2; }));
        QCOMPARE(layers_, QStringList({"1", "2", "3"}));
        QCOMPARE(averaged.last().first().toString(), QStringLiteral("3"));
    }

    // Single pictures on request, and the capture buttons the host can lock.
    void singlePicturesAndTheCaptureButtons() {
        QVERIFY(start());
        QSignalSpy combined(control_, &ctlQuendrix::Kombinieren);
        QVERIFY(!p_->Combine->isEnabled());
        control_->Schichtbild();
        QCOMPARE(layers_, QStringList({"1"}));
        QCOMPARE(p_->Schicht->text(), QStringLiteral("Schicht: 1"));
        QVERIFY(p_->Combine->isEnabled());  // from the first picture on
        QVERIFY(!quendrix::internals(control_).stacking()->Kamera_bereit());
        p_->Schicht->click();
        QCOMPARE(layers_, QStringList({"1", "2"}));
        p_->Combine->click();
        QCOMPARE(combined.size(), 1);
        QCOMPARE(combined.first().first().toString(), QStringLiteral("2"));
        QCOMPARE(p_->Schicht->text(), QStringLiteral("Schicht: 0"));
        QVERIFY(!p_->Combine->isEnabled());
        QCOMPARE(rig_->takeCommands(), Commands());

        control_->Kamera_aktiv(0);
        QVERIFY(!p_->Schicht->isEnabled() && !p_->Mittelw->isEnabled() && !p_->Kopie->isEnabled());
        QVERIFY(p_->AutoKomb->isEnabled());
        control_->Kamera_aktiv(1);
        QVERIFY(p_->Schicht->isEnabled() && p_->Mittelw->isEnabled() && p_->Kopie->isEnabled());
    }

    // Letting go of the left button on the start or end button takes axis 0's position and
    // plans again; the right drives axis 0 there at normal speed; the middle does nothing.
    void theStartAndEndButtonsTakeAndApproachThePosition() {
        QVERIFY(start());
        plan(0, 5234, 4);
        quendrix::internals(control_).motion()->Position_anfahren(1234, 0, 1);
        QTest::mouseRelease(p_->Beginn, Qt::LeftButton);
        QCOMPARE(p_->BBeginn[0]->text(), QStringLiteral("1234"));
        QCOMPARE(p_->Schrittzahl->text(), QStringLiteral("1000"));
        quendrix::internals(control_).motion()->Position_anfahren(1734, 0, 1);
        QTest::mouseRelease(p_->Ende, Qt::LeftButton);
        QCOMPARE(p_->BEnde[0]->text(), QStringLiteral("1734"));
        QCOMPARE(p_->Schrittzahl->text(), QStringLiteral("125"));
        rig_->takeCommands();

        QTest::mouseRelease(p_->Beginn, Qt::MiddleButton);
        QTest::mouseRelease(p_->Ende, Qt::MiddleButton);
        rig_->settle(0.05);
        QCOMPARE(rig_->takeCommands(), Commands());
        QCOMPARE(p_->BBeginn[0]->text(), QStringLiteral("1234"));

        quendrix::setValue(p_->Check0[6], 0);
        rig_->takeCommands();
        QTest::mouseRelease(p_->Beginn, Qt::RightButton);
        QCOMPARE(rig_->link().AchsPosition()[0], 1234);
        quendrix::setValue(p_->Check0[6], 2);
        QTest::mouseRelease(p_->Ende, Qt::RightButton);
        QCOMPARE(rig_->link().AchsPosition()[0], 1734);
        // 500 steps would be slow speed if the distance chose it.
        QCOMPARE(rig_->takeCommands(),
                 Commands({"z#", "w100#", "t500#", "w1600#", "v#", "w100#", "t500#"}));
    }

    void aHostThatNeverReleasesIsWaitedFor() {
        QVERIFY(start());
        hostReleases_ = false;
        plan(5000, 1000, 1);
        QScopedPointer<QSignalSpy> combine(runStack(200));
        QCOMPARE(combine->size(), 1);
        QStringList waits;
        for (const auto& m : rig_->platform.messages)
            waits.append(m.prompt);
        QCOMPARE(waits, QStringList({"Quendrix wartet auf Freigabe: Sub Fortsetzung",
                                     "Quendrix wartet auf Freigabe: Sub Fortsetzung",
                                     "Quendrix wartet auf Freigabe: Sub Combine_click"}));
        QVERIFY(layerTimes_[1] - layerTimes_[0] >= 31);
    }

    // The copy buttons tell the host the field of view first, then ask for the copy.
    void aCopyComesAfterItsFieldOfView() {
        QVERIFY(start());
        p_->lblSehfeld->setToolTip(QStringLiteral("1234,56789"));  // the optics' working value
        QObject host;
        QStringList events;
        connect(control_, &ctlQuendrix::SehfeldNeu, &host,
                [&](const QString& width) { events << QStringLiteral("SehfeldNeu ") + width; });
        connect(control_, &ctlQuendrix::Kopie, &host, [&] { events << QStringLiteral("Kopie"); });
        p_->Kopie->click();
        control_->setLocale(QLocale(QLocale::English));
        p_->lblSehfeld->setToolTip(QStringLiteral("7.25"));
        p_->Kopie->click();
        QCOMPARE(events,
                 QStringList({"SehfeldNeu 1234,568", "Kopie", "SehfeldNeu 7.250", "Kopie"}));
        QCOMPARE(rig_->takeCommands(), Commands());
    }

    // The left button let go on a picture of the axes or of the reference points: the axes'
    // pictures and the first reference point reset their axis (the third resets axis 0), the
    // other two send their commands. Each rig shows its own pictures; other buttons do nothing.
    void thePicturesOfTheAxesAndReferencePoints() {
        const struct {
            sim::Rig rig;
            QList<int> shown;
            Commands leftClicks;
        } rigs[] = {{sim::Rig::Bellows, {0, 1}, {"x#", "X#"}},
                    {sim::Rig::LensChanger, {0, 2, 3, 4}, {"x#", "x#", "G#", "H#"}},
                    {sim::Rig::Microscope, {0}, {"x#"}}};
        for (const auto& [rig, shown, leftClicks] : rigs) {
            sim::Options options;
            options.rig = rig;
            QVERIFY(start(options));
            control_->setControltyp(qint16(rig));
            control_->show();
            QList<int> visible;
            for (int i = 0; i < 5; ++i)
                if (p_->Image1[i]->isVisible()) visible << i;
            QCOMPARE(visible, shown);
            for (int i : shown) {
                QTest::mouseClick(p_->Image1[i], Qt::RightButton);
                QTest::mouseClick(p_->Image1[i], Qt::MiddleButton);
            }
            rig_->settle(0.05);
            QCOMPARE(rig_->takeCommands(), Commands());
            for (int i : shown)
                QTest::mouseClick(p_->Image1[i], Qt::LeftButton);
            rig_->settle(0.05);
            QCOMPARE(rig_->takeCommands(), leftClicks);
        }
    }

    void theOpticsSuggestAPlaneSpacing() {
        const auto advice = quendrix::suggestSpacing(23.6, 23.6, 8, 0.03, 10);
        QVERIFY(advice);
        QCOMPARE(advice->depthOfFieldMm, 0.96);  // 2 c N (m + 1) / m^2 at magnification 1
        QCOMPARE(advice->spacingMm, 0.768);
        QCOMPARE(advice->intervals, 14);  // 10 mm / 0.768 mm, rounded up
        QVERIFY(!quendrix::suggestSpacing(23.6, 0, 8, 0.03, 10));
        // At 5:1 the depth shrinks to 2 c N 6 / 25.
        QCOMPARE(quendrix::suggestSpacing(23.6, 4.72, 2.8, 0.02, 1)->depthOfFieldMm,
                 2 * 0.02 * 2.8 * 6 / 25);

        QVERIFY(start());
        control_->setSensorbreite(23.6f);
        p_->lblSehfeld->setToolTip(QStringLiteral("23,6"));
        auto* aperture = control_->findChild<QLineEdit*>(QStringLiteral("Blende"));
        auto* circle = control_->findChild<QLineEdit*>(QStringLiteral("Zerstreuungskreis"));
        auto* take = control_->findChild<QPushButton*>(QStringLiteral("VorschlagUebernehmen"));
        QVERIFY(aperture && circle && take);
        aperture->setText(QStringLiteral("8"));
        QCOMPARE(circle->text(), QStringLiteral("0,03"));  // the default follows the language
        plan(1000, 5000, 8);                               // 10 mm
        QVERIFY(take->isEnabled());
        take->click();
        QCOMPARE(p_->Ebenen->text(), QStringLiteral("14"));
        QCOMPARE(p_->Schrittzahl->text(), QStringLiteral("286"));
    }

    void progressIsShownWhileRunning() {
        QVERIFY(start());
        plan(5000, 1000, 4);
        auto* progress = control_->findChild<QLabel*>(QStringLiteral("Fortschritt"));
        QVERIFY(progress);
        QStringList seen;
        connect(control_, &ctlQuendrix::Schicht, this, [&] { seen.append(progress->text()); });
        QScopedPointer<QSignalSpy> combine(runStack());
        QVERIFY(seen.size() == 5 && seen.first().startsWith(QStringLiteral("Bild 0 von 5")));
        QVERIFY(seen.last().startsWith(QStringLiteral("Bild 4 von 5, noch etwa")));
        QVERIFY(progress->isHidden());
    }
};

QTEST_MAIN(TestStacking)
#include "tst_stacking.moc"
