// The application's window as the host of runs on the board simulator: each picture the panel
// asks for is taken into the run's folder before the run is released, a finished stack is
// fused, an averaging series is really averaged; a stack is stopped reliably in every phase,
// paused for as long as wanted, stopped at a limit switch, and kept as a preset per rig type.
#include "camera/subject.h"
#include "control/internals.h"
#include "fusion/fusion.h"
#include "hostwindow.h"
#include "language/language.h"
#include "link/link.h"
#include "motion/motion.h"
#include "runestimate.h"
#include "session/capturesession.h"
#include "sim/board.h"
#include "sim/ptyfrontend.h"
#include "stackcontrol.h"
#include "support/testplatform.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <sys/ioctl.h>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSerialPort>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QTranslator>
#include <QtTest>
#include <cmath>

using quendrix::MsgBox::No;
using quendrix::MsgBox::Yes;
using Phase = StackControl::Phase;

class TestHostWindow : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;
    QElapsedTimer clock_;
    std::unique_ptr<TestPlatform> platform_;
    std::unique_ptr<quendrix::sim::Board> board_;
    std::unique_ptr<quendrix::sim::PtyFrontEnd> pty_;
    std::unique_ptr<HostWindow> window_;
    QStringList asked_;  // the planes the panel asked pictures of

    // Something the test does from inside the panel's waits, once `when` holds.
    struct Trigger {
        std::function<bool()> when;
        std::function<void()> act;
    };
    QList<Trigger> triggers_;

    void whenever(std::function<bool()> when, std::function<void()> act) {
        triggers_.append({std::move(when), std::move(act)});
    }

    // A window whose panel drives the simulator on a pseudo-terminal, taking its pictures into
    // the test's folder with the camera chosen. The panel's clock is scripted and runs only while
    // the panel waits (not while a picture is being taken), the board keeps the same time, so
    // that the panel's 31-s wait for the release passes in a moment.
    HostWindow& open(const CameraChoice& camera, int rigType = 0) {
        window_.reset();
        pty_.reset();
        clock_.start();
        triggers_.clear();
        asked_.clear();
        platform_ = std::make_unique<TestPlatform>();
        platform_->realSecondsPerIdle = 0.001;
        board_ = std::make_unique<quendrix::sim::Board>(quendrix::sim::Options{});
        pty_ = std::make_unique<quendrix::sim::PtyFrontEnd>(*board_,
                                                            [this] { return platform_->now(); });
        if (!pty_->open()) qFatal("no pseudo-terminal");
        pty_->setAutoPump(true);
        window_ = std::make_unique<HostWindow>();
        window_->setPlatform(*platform_);
        // The clock also stands while the board's bytes travel, so that a wire of any speed
        // costs the rig no time.
        platform_->clockHeld = [this] {
            if (!window_) return false;
            int arrived = 0;
            const auto port = int(window_->panel().MSComm1()->handle());
            if (port >= 0) ::ioctl(port, FIONREAD, &arrived);
            return window_->session().capturing() || pty_->writesPending() || arrived > 0;
        };
        platform_->onIdle = [this](TestPlatform&) {
            pty_->pump();
            if (!triggers_.isEmpty() && triggers_.first().when()) {
                const Trigger due = triggers_.takeFirst();
                due.act();
            }
        };
        ctlQuendrix& panel = window_->panel();
        quendrix::Panel& p = *panel.panel();
        panel.setLocale(QLocale(QLocale::German));
        if (rigType != 0) panel.setControltyp(qint16(rigType));
        panel.setinifile(dir_.filePath("rig_L.ini"));
        panel.MSComm1()->setPortName(pty_->devicePath());
        if (!panel.MSComm1()->open(QIODevice::ReadWrite)) qFatal("the port did not open");
        quendrix::internals(panel).link()->setQuittiert(true);
        quendrix::internals(panel).motion()->setMaxPosition(0, 100000);
        p.Steigung[0]->setText("1");
        p.Schritte[0]->setText("400");
        p.Taktpause[0]->setText("200");
        p.wartezeit->setText("10");
        connect(&panel, &ctlQuendrix::Schicht, this, [this](const QString& nr) { asked_ << nr; });
        window_->setCamera(
            camera, [this] { return double(board_->axis(0).position); }, dir_.filePath("runs"));
        return *window_;
    }

    // A capture command: a shell script with this body, given the file and the plane.
    QString camera(const QByteArray& body) {
        static int made = 0;
        const QString script = dir_.filePath(QString("camera-%1.sh").arg(++made));
        QFile file(script);
        if (!file.open(QIODevice::WriteOnly)) qFatal("cannot write the camera");
        file.write("#!/bin/sh\n" + body);
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        return script + " {file} {plane}";
    }

    QStringList listed() const {
        auto* list = window_->findChild<QListWidget*>("Aufnahmenliste");
        QStringList items;
        for (int row = 0; list && row < list->count(); ++row)
            items << list->item(row)->text().mid(10);  // after the time of day
        return items;
    }

    QStringList commands() {
        QStringList sent;
        for (const quendrix::sim::Received& r : board_->received())
            sent << QString::fromLatin1(r.command);
        board_->clearReceived();
        return sent;
    }

    template <typename T>
    T* child(const char* name) const {
        T* found = window_->findChild<T*>(name);
        if (!found) qFatal("no %s", name);
        return found;
    }

    void plan(const QString& begin, const QString& end, const QString& planes) {
        quendrix::Panel& p = *window_->panel().panel();
        p.BBeginn[0]->setText(begin);
        p.BEnde[0]->setText(end);
        p.Ebenen->setText(planes);
    }

private slots:
    void initTestCase() {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir_.filePath("config"));
    }

    void cleanup() {
        window_.reset();
        pty_.reset();
        board_.reset();
        platform_.reset();
    }

    // A stack that would run away from its end is not started unless the photographer swaps
    // start and end. The camera then takes 0.3 s; the panel asks for the next picture only once
    // the last one is on disk, the stack stays within its range and is fused beside its pictures.
    void aStackIsWarnedOfThenWaitsForEachPictureAndIsFused() {
        const Subject subject({640, 480});
        for (int plane = 1; plane <= 4; ++plane)
            QVERIFY(subject.render(1000 + 1000 * plane)
                        .save(dir_.filePath(QString("frame-%1.tif").arg(plane))));
        HostWindow& window = open(
            {"command", camera("sleep 0.3\ncp \"$(dirname \"$0\")/frame-$2.tif\" \"$1\"\n"), 10});
        quendrix::Panel& p = *window.panel().panel();
        plan("0", "60", "3");  // from the lower end: the panel would step down from 0

        platform_->messageAnswers = {No};
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QCOMPARE(platform_->messages.size(), 1);
        QVERIFY(platform_->messages[0].prompt.contains("abwärts"));
        QCOMPARE(p.BBeginn[0]->text(), QString("0"));
        QCOMPARE(p.BEnde[0]->text(), QString("60"));
        QVERIFY(commands().filter(QRegularExpression("^t")).isEmpty());
        QVERIFY(asked_.isEmpty() && window.stackControl().phase() == Phase::Idle);
        QVERIFY(listed().last().startsWith("Stapel nicht gestartet"));
        // Nor is a stack whose start lies beyond axis 0's travel: the panel would skip the
        // approach and run it from where the axis stands.
        p.Label13[0]->setText("400");
        plan("60", "0", "3");  // approached from 460
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QCOMPARE(platform_->messages.size(), 2);
        QVERIFY(platform_->messages[1].prompt.contains("MaxPosition"));
        QVERIFY(commands().filter(QRegularExpression("^t")).isEmpty() && asked_.isEmpty());
        p.Label13[0]->setText("100000");
        plan("0", "60", "3");

        QStringList progress;
        connect(&window.panel(), &ctlQuendrix::Schicht, this,
                [&] { progress << child<QLabel>("Stapelstand")->text(); });
        QList<qint64> times;
        connect(&window.panel(), &ctlQuendrix::Schicht, this,
                [&] { times.append(clock_.elapsed()); });
        QSignalSpy fused(&window.fusion(), &Fusion::finished);
        QSignalSpy failed(&window.session(), &CaptureSession::failed);
        QSignalSpy notFused(&window.fusion(), &Fusion::failed);
        platform_->messageAnswers = {Yes};
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QCOMPARE(p.BBeginn[0]->text(), QString("60"));
        QTRY_VERIFY_WITH_TIMEOUT(!fused.isEmpty() || !failed.isEmpty() || !notFused.isEmpty(),
                                 60000);
        QVERIFY2(notFused.isEmpty(), qPrintable(notFused.value(0).value(0).toString()));
        QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));

        QCOMPARE(asked_, QStringList({"1", "2", "3", "4"}));
        QCOMPARE(board_->axis(0).position, 0);  // from 60 down to 0, not past it
        for (int i = 1; i < times.size(); ++i)
            QVERIFY2(times[i] - times[i - 1] >= 300,
                     qPrintable(QStringLiteral("%1 ms").arg(times[i] - times[i - 1])));
        // The time left is known from the first picture on.
        QVERIFY2(progress.first().contains("noch etwa"), qPrintable(progress.first()));
        const QString folder = window.session().runFolder();
        QCOMPARE(QDir(folder).entryList(QDir::Files),
                 QStringList({"combined.tif", "plane-0001.tif", "plane-0002.tif", "plane-0003.tif",
                              "plane-0004.tif"}));
        QCOMPARE(QImage(QDir(folder).filePath("combined.tif")).size(), subject.size());
        const QStringList items = listed();
        QVERIFY2(items.contains("Stapel vollständig: 4 von 4 Bildern") &&
                     items.filter("Beginn und Ende getauscht").size() == 1 &&
                     items.filter("aufgenommen").size() == 4 &&
                     items.last().startsWith("Stapel kombiniert"),
                 qPrintable(items.join('\n')));
    }

    // The mean of a series is closer to the noise-free subject than any single picture.
    void anAveragingSeriesIsAveraged() {
        HostWindow& window = open({"sim", {}, 60});
        window.panel().setini("Verzeichnis", "Serie", "4");
        QSignalSpy averaged(&window.session(), &CaptureSession::averaged);
        QSignalSpy failed(&window.session(), &CaptureSession::failed);
        window.panel().Mittelw_Click();
        QTRY_VERIFY_WITH_TIMEOUT(!averaged.isEmpty() || !failed.isEmpty(), 60000);
        QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));
        QCOMPARE(averaged.first().value(1).toInt(), 4);
        QVERIFY(listed().contains("Mittelwert-Serie vollständig: 4 von 4 Bildern"));

        const QImage mean =
            QImage(averaged.first().value(0).toString()).convertToFormat(QImage::Format_RGB888);
        const QImage single = QImage(QDir(window.session().runFolder()).filePath("series-0001.tif"))
                                  .convertToFormat(QImage::Format_RGB888);
        QCOMPARE(mean.size(), single.size());
        const QImage truth = Subject(single.size())
                                 .render(board_->axis(0).position)
                                 .convertToFormat(QImage::Format_RGB888);
        const auto rms = [&](const QImage& picture) {
            double sum = 0;
            for (int y = 0; y < truth.height(); ++y)
                for (int x = 0; x < truth.width() * 3; ++x) {
                    const double d = picture.constScanLine(y)[x] - truth.constScanLine(y)[x];
                    sum += d * d;
                }
            return std::sqrt(sum / (truth.width() * truth.height() * 3.0));
        };
        const double noiseOfOne = rms(single), noiseOfMean = rms(mean);
        QVERIFY2(noiseOfOne > 1 && noiseOfMean < 0.7 * noiseOfOne,
                 qPrintable(QString("one %1, mean %2").arg(noiseOfOne).arg(noiseOfMean)));
    }

    // A picture that cannot be taken stops the run where it is: no further picture is asked
    // for, the counter is back at 0, what the camera said reaches the photographer and the list
    // says how the run ended.
    void aFailedPictureStopsTheRun() {
        HostWindow& window = open({"command",
                                   camera("if [ \"$2\" = 2 ]; then echo 'memory card full'; exit "
                                          "1; fi\nprintf x > \"$1\"\n"),
                                   10});
        quendrix::Panel& p = *window.panel().panel();
        plan("80", "0", "4");
        QSignalSpy failed(&window.session(), &CaptureSession::failed);
        QSignalSpy ended(&window.panel(), &ctlQuendrix::Kombinieren);
        QSignalSpy averaged(&window.panel(), &ctlQuendrix::Mittelwert);
        p.AutoKomb->click();
        QTRY_VERIFY_WITH_TIMEOUT(!failed.isEmpty(), 20000);
        QVERIFY(failed.first().value(0).toString().contains("memory card full"));
        QTRY_COMPARE_WITH_TIMEOUT(window.stackControl().phase(), Phase::Idle, 20000);
        QTest::qWait(500);  // longer than the pause: the panel would have asked again by now
        QCOMPARE(asked_, QStringList({"1", "2"}));
        QCOMPARE(window.session().runPictures().size(), 1);
        QCOMPARE(quendrix::tag(p.AutoKomb), QString());
        QVERIFY(!window.panel().Timer3()->isActive());
        QCOMPARE(p.Schicht->text(), QStringLiteral("Schicht: 0"));
        QVERIFY(ended.isEmpty() && averaged.isEmpty() && failed.size() == 1);
        QVERIFY2(listed().contains("Stapel abgebrochen (Fehler): 1 von 5 Bildern"),
                 qPrintable(listed().join('\n')));

        // The next stack runs as usual.
        window.setCamera(
            {"command", camera("printf x > \"$1\"\n"), 10}, [] { return 0.0; },
            dir_.filePath("runs"));
        p.Ebenen->setText("2");
        asked_.clear();
        p.AutoKomb->click();
        QTRY_VERIFY_WITH_TIMEOUT(!ended.isEmpty(), 20000);
        QCOMPARE(asked_, QStringList({"1", "2", "3"}));
    }

    // Whatever the stack is doing, the stop ends it at once: the axis stands, no further
    // picture is asked for, the board is told the stack is over, the list says how far it got,
    // and the next stack runs as usual. A second click on the stack button starts nothing.
    void theStopHoldsInEveryPhase() {
        const QString slow = dir_.filePath("slow");
        HostWindow& window = open(
            {"command",
             camera(("if [ -e '" + slow + "' ]; then sleep 30; fi\nprintf x > \"$1\"\n").toUtf8()),
             60});
        quendrix::Panel& p = *window.panel().panel();
        StackControl& control = window.stackControl();
        auto* stop = child<QPushButton>("Stopp");
        auto* pause = child<QPushButton>("Pause");
        const auto moving = [this] { return board_->axis(0).moving; };
        const auto taken = [&window] { return window.session().runPictures().size(); };

        const auto checkStopped = [&](int asked, int taken) {
            QTRY_COMPARE_WITH_TIMEOUT(control.phase(), Phase::Idle, 20000);
            QCOMPARE(asked_.size(), asked);
            QCOMPARE(quendrix::tag(p.AutoKomb), QString());
            QVERIFY(!window.panel().Timer3()->isActive());
            QVERIFY(!window.session().capturing());
            QVERIFY(!moving());
            const QStringList sent = commands();
            const QStringList afterStop = sent.mid(sent.lastIndexOf("s#"));
            QVERIFY2(sent.contains("y0#") && sent.contains("s#") &&
                         afterStop.filter(QRegularExpression("^t")).isEmpty(),
                     qPrintable(sent.join(' ')));
            QCOMPARE(listed().last(),
                     QString("Stapel abgebrochen (Stopp): %1 von 5 Bildern").arg(taken));
        };

        // The approach to the start (from 0 up to 4400, then down to 4000).
        plan("4000", "3600", "4");
        commands();
        whenever([&] { return control.phase() == Phase::Approach && moving(); },
                 [&] { QTest::mouseClick(stop, Qt::LeftButton); });
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QVERIFY(triggers_.isEmpty());
        checkStopped(0, 0);
        if (QTest::currentTestFailed()) return;
        // It stopped on the way up and did not go on to the start either.
        QVERIFY2(board_->axis(0).position < 2000,
                 qPrintable(QString::number(board_->axis(0).position)));
        plan("400", "0", "4");  // 100 steps a plane

        // The pause before the first picture, stopped with Escape.
        p.wartezeit->setText("5000");
        asked_.clear();
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QCOMPARE(control.phase(), Phase::Running);
        QVERIFY(window.panel().Timer3()->isActive());
        QTest::keyClick(&window, Qt::Key_Escape);
        checkStopped(0, 0);
        if (QTest::currentTestFailed()) return;
        p.wartezeit->setText("10");

        // The capture, stopped with the right button on the stack button; a left click there
        // meanwhile starts nothing.
        QFile marker(slow);
        QVERIFY(marker.open(QIODevice::WriteOnly));
        marker.close();
        asked_.clear();
        whenever([&] { return window.session().capturing(); },
                 [&] {
                     QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
                     QTest::mouseClick(p.AutoKomb, Qt::RightButton);
                 });
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(triggers_.isEmpty(), 20000);
        QFile::remove(slow);
        checkStopped(1, 0);  // the first was asked for, none taken
        if (QTest::currentTestFailed()) return;

        // A plane step.
        asked_.clear();
        whenever([&] { return taken() == 1 && moving(); },
                 [&] { QTest::mouseClick(stop, Qt::LeftButton); });
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(triggers_.isEmpty(), 20000);
        checkStopped(1, 1);
        if (QTest::currentTestFailed()) return;
        const qint32 stoppedAt = board_->axis(0).position;
        QVERIFY2(stoppedAt < 400 && stoppedAt > 300, qPrintable(QString::number(stoppedAt)));

        // The wait for the release of a paused run.
        asked_.clear();
        whenever([&] { return control.phase() == Phase::Approach; },
                 [&] { QTest::mouseClick(pause, Qt::LeftButton); });
        whenever([&] { return window.session().holding(); },
                 [&] { QTest::mouseClick(stop, Qt::LeftButton); });
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(triggers_.isEmpty(), 20000);
        checkStopped(1, 1);
        if (QTest::currentTestFailed()) return;
        QCOMPARE(board_->axis(0).position, 400);  // it stood at the first plane

        // And then a whole stack.
        asked_.clear();
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(control.phase(), Phase::Idle, 20000);
        QCOMPARE(asked_, QStringList({"1", "2", "3", "4", "5"}));
        QCOMPARE(board_->axis(0).position, 0);
        QVERIFY(listed().contains("Stapel vollständig: 5 von 5 Bildern"));
    }

    // A pause holds the release after the current plane: the rig stays where it is and no
    // picture is asked for, long after the panel's own 31 s, until the photographer resumes.
    void aPauseHoldsTheRunForAnyLengthAndResumes() {
        HostWindow& window = open({"command", camera("printf x > \"$1\"\n"), 60});
        quendrix::Panel& p = *window.panel().panel();
        StackControl& control = window.stackControl();
        auto* pause = child<QPushButton>("Pause");
        plan("400", "0", "4");
        double heldFrom = 0;
        qint32 heldAt = 0;
        whenever([&] { return asked_.size() == 2; },
                 [&] { QTest::mouseClick(pause, Qt::LeftButton); });
        whenever([&] { return window.session().holding(); },
                 [&] {
                     heldFrom = platform_->now();
                     heldAt = board_->axis(0).position;
                     QVERIFY(child<QLabel>("Stapelstand")->text().startsWith("Angehalten nach 2"));
                 });
        whenever([&] { return platform_->now() > heldFrom + 100; },
                 [&] {
                     QCOMPARE(asked_.size(), 2);
                     QCOMPARE(board_->axis(0).position, heldAt);
                     QCOMPARE(pause->text(), QString("Weiter"));
                     QTest::mouseClick(pause, Qt::LeftButton);
                 });
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(control.phase(), Phase::Idle, 30000);
        QVERIFY(triggers_.isEmpty());
        QCOMPARE(heldAt, 300);
        QCOMPARE(asked_, QStringList({"1", "2", "3", "4", "5"}));
        QCOMPARE(board_->axis(0).position, 0);
        QVERIFY(platform_->messages.isEmpty());  // no "Quendrix wartet auf Freigabe"
        QVERIFY(listed().contains("Stapel vollständig: 5 von 5 Bildern"));
    }

    // A stack whose planes, rounded, reach past the rail's lower end runs into the limit switch;
    // the window stops it there and says so.
    void aLimitSwitchStopsTheStack() {
        HostWindow& window = open({"command", camera("printf x > \"$1\"\n"), 60});
        window.panel().Output("e1#");  // the board heeds its limit switches
        quendrix::Panel& p = *window.panel().panel();
        plan("50", "0", "4");  // 13 steps a plane: the fourth step would end at -2
        QCOMPARE(p.Schrittzahl->text(), QString("13"));
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(window.stackControl().phase(), Phase::Idle, 20000);
        QTest::qWait(100);
        QCOMPARE(asked_, QStringList({"1", "2", "3", "4"}));
        QCOMPARE(board_->axis(0).position, 0);
        QVERIFY(!window.panel().Timer3()->isActive());
        QVERIFY2(listed().contains("Stapel abgebrochen (Endschalter unten): 4 von 5 Bildern"),
                 qPrintable(listed().join('\n')));
    }

    // Presets keep range, planes and pause per rig type, across windows; a value that cannot be
    // kept is named, and so is a hand-edited entry that cannot be used.
    void presetsAreKeptPerRigType() {
        QSettings().remove("stackPresets");
        HostWindow* window = &open({"command", camera("printf x > \"$1\"\n"), 60});
        quendrix::Panel* p = window->panel().panel();
        const auto save = [&](const QString& name) {
            platform_->inputAnswers = {name};
            QTest::mouseClick(child<QPushButton>("VorlageSpeichern"), Qt::LeftButton);
        };
        plan("3000", "1000", "8");
        p->wartezeit->setText("250");
        save("Käfer");
        plan("900", "100", "16");
        p->wartezeit->setText("50");
        save("Flügel");
        plan("900", "100", "abc");
        save("kaputt");
        QVERIFY2(listed().last().contains("Ebenen"), qPrintable(listed().last()));

        window = &open({"command", camera("printf x > \"$1\"\n"), 60}, 1);
        auto* presets = child<QComboBox>("Vorlagen");
        QCOMPARE(presets->count(), 1);  // the lens changer has none yet
        plan("500", "0", "5");
        save("Objektiv");

        window = &open({"command", camera("printf x > \"$1\"\n"), 60});
        p = window->panel().panel();
        presets = child<QComboBox>("Vorlagen");
        QCOMPARE(presets->count(), 3);
        QCOMPARE(presets->itemText(1), QString("Käfer"));
        QCOMPARE(presets->itemText(2), QString("Flügel"));
        const auto choose = [&](int index) {
            presets->setCurrentIndex(index);
            emit presets->activated(index);
        };
        choose(1);
        QCOMPARE(p->BBeginn[0]->text(), QString("3000"));
        QCOMPARE(p->BEnde[0]->text(), QString("1000"));
        QCOMPARE(p->Ebenen->text(), QString("8"));
        QCOMPARE(p->wartezeit->text(), QString("250"));
        QCOMPARE(p->Schrittzahl->text(), QString("250"));
        p->BBeginn[0]->setText("5000");  // the plan is not worked out again for this
        choose(1);                       // the same number of planes: still worked out anew
        QCOMPARE(p->Schrittzahl->text(), QString("250"));
        choose(2);
        QCOMPARE(p->Schrittzahl->text(), QString("50"));
        QTest::mouseClick(child<QPushButton>("VorlageLoeschen"), Qt::LeftButton);
        QCOMPARE(presets->count(), 2);

        {
            QSettings settings;
            settings.setValue("stackPresets/rig0/2/name", "von Hand");
            settings.setValue("stackPresets/rig0/2/begin", "10");
            settings.setValue("stackPresets/rig0/2/end", "0");
            settings.setValue("stackPresets/rig0/2/planes", "viele");
            settings.setValue("stackPresets/rig0/2/pause", "10");
            settings.setValue("stackPresets/rig0/size", 2);
        }
        window = &open({"command", camera("printf x > \"$1\"\n"), 60});
        presets = child<QComboBox>("Vorlagen");
        QCOMPARE(presets->count(), 2);
        QCOMPARE(presets->itemText(1), QString("Käfer"));
        QVERIFY2(listed().filter("Eintrag 2: Ebenen").size() == 1, qPrintable(listed().join('\n')));
    }

    // The time left counts the approach, the doubled first pause, every picture and every plane
    // step: a stack that goes as planned ends when the estimate said, at every point of it. The
    // camera's time, unknown before, is known from the first picture on.
    void theEstimateCountsEveryPartOfTheRun() {
        RunEstimate::Plan plan;
        plan.pictures = 5;
        plan.pauseSeconds = 0.5;
        plan.approachSeconds = 3;
        plan.moveSeconds = 0.2;
        const double camera = 0.7;
        RunEstimate estimate;
        estimate.start(plan, 100);
        const double end = 100 + 3 + 2 * 0.5 + 5 * camera + 4 * (0.2 + 0.5);
        QCOMPARE(estimate.remaining(100), end - 100 - 5 * camera);  // the camera is not known
        double now = 103;
        estimate.approached(now);
        QCOMPARE(estimate.remaining(now + 0.4), end - now - 0.4 - 5 * camera);
        now += 1;
        for (int plane = 1; plane <= 5; ++plane) {
            estimate.pictureRequested(plane, now);
            if (plane > 1) QVERIFY(std::abs(estimate.remaining(now) - (end - now)) < 1e-9);
            now += camera;
            estimate.pictureTaken(plane, now);
            QVERIFY2(std::abs(estimate.remaining(now) - (end - now)) < 1e-9,
                     qPrintable(QString("plane %1: %2 s left, estimated %3")
                                    .arg(plane)
                                    .arg(end - now)
                                    .arg(estimate.remaining(now))));
            if (plane < 5)
                QVERIFY(std::abs(estimate.remaining(now + 0.1) - (end - now - 0.1)) < 1e-9);
            now += 0.2 + 0.5;
        }
        QCOMPARE(estimate.remaining(end), 0.0);
    }

    // Page Up and Page Down move axis 0 while held, through the panel's own jog buttons (their
    // hovering sets the direction); not while a stack runs.
    void keysJogAxisZeroWhileHeld() {
        HostWindow& window = open({"command", camera("printf x > \"$1\"\n"), 60});
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        commands();
        QTest::keyPress(&window, Qt::Key_PageUp);
        QStringList sent = commands();
        QVERIFY2(sent.contains("v#") && sent.last() == "r#", qPrintable(sent.join(' ')));
        QTest::keyRelease(&window, Qt::Key_PageUp);
        QCOMPARE(commands(), QStringList({"s#"}));
        QTest::keyPress(&window, Qt::Key_PageDown);
        sent = commands();
        QVERIFY2(sent.contains("z#") && sent.last() == "r#", qPrintable(sent.join(' ')));
        QTest::keyRelease(&window, Qt::Key_PageDown);
        QCOMPARE(commands(), QStringList({"s#"}));

        quendrix::Panel& p = *window.panel().panel();
        plan("400", "0", "4");
        p.wartezeit->setText("5000");
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QCOMPARE(window.stackControl().phase(), Phase::Running);
        commands();
        QTest::keyPress(&window, Qt::Key_PageUp);
        QTest::keyRelease(&window, Qt::Key_PageUp);
        QVERIFY(commands().isEmpty());
        QTest::keyClick(&window, Qt::Key_Escape);
        QTRY_COMPARE(window.stackControl().phase(), Phase::Idle);
    }

    // With the English translation installed before the window is made, the panel and the window
    // speak English on every rig type, and what the panel reads back from its captions still
    // works: a stack counts its layers ("Layer: n") to the end and asks for them combined, the
    // position readout switched to millimetres shows millimetres, and the lens list keeps its
    // German "ohne", which it compares.
    void inEnglishThePanelSpeaksEnglishAndStillReadsItsCaptions() {
        QString problem;
        QVERIFY2(language::install(*qApp, language::Language::English, &problem),
                 qPrintable(problem));
        const auto backToGerman = qScopeGuard([] {
            for (QTranslator* translator : qApp->findChildren<QTranslator*>()) {
                QCoreApplication::removeTranslator(translator);
                delete translator;
            }
        });
        {
            quendrix::Panel& p = *open({"sim", {}, 60}, 1).panel().panel();
            QCOMPARE(p.Frame6->title(), QString("Lens changer"));
            QCOMPARE(p.Label41->text(), QString("Raise by [steps]"));
            QCOMPARE(p.Label4[3]->text(), QString("Specimen"));
            QCOMPARE(p.lblOptik->text(), QString("ohne"));
            QCOMPARE(p.cbOptik->itemText(0), QString("ohne"));
        }
        {
            quendrix::Panel& p = *open({"sim", {}, 60}, 2).panel().panel();
            QCOMPARE(p.Licht[0]->text(), QString("Transmitted light"));
            QCOMPARE(p.Licht[1]->text(), QString("Incident light"));
            QCOMPARE(p.Label4[4]->text(), QString("Middle"));
        }
        HostWindow& window = open({"sim", {}, 60});
        quendrix::Panel& p = *window.panel().panel();
        QStringList tabs;
        for (int i = 0; i < p.SSTab1->count(); ++i)
            tabs << p.SSTab1->tabText(i);
        QCOMPARE(tabs, QStringList({"Control", "Optics", "Axes", "Light"}));
        QCOMPARE(p.obMotor[1]->text(), QString("Bellows"));
        QCOMPARE(p.Frame12->title(), QString("Focus stack"));
        QCOMPARE(p.AutoKomb->text(), QString("Stack"));
        QCOMPARE(p.Schicht->text(), QString("Layer: 0"));
        QCOMPARE(p.Label9->text(), QString("Position [steps]"));
        QCOMPARE(child<QGroupBox>("Stapelsteuerung")->title(), QString("Stack"));
        QCOMPARE(child<QPushButton>("Stopp")->text(), QString("Stop"));
        QCOMPARE(child<QComboBox>("Kamera")->itemText(0), QString("Simulated"));
        p.Ebenen->setText("abc");
        QVERIFY2(p.Ebenen->toolTip().startsWith("Not a number."), qPrintable(p.Ebenen->toolTip()));

        QTest::mouseClick(p.Label9, Qt::LeftButton);
        QCOMPARE(p.Label9->text(), QString("Position [mm]"));
        plan("60", "0", "3");
        QStringList layers;
        connect(&window.panel(), &ctlQuendrix::Schicht, this, [&] { layers << p.Schicht->text(); });
        QSignalSpy combine(&window.panel(), &ctlQuendrix::Kombinieren);
        QSignalSpy failed(&window.session(), &CaptureSession::failed);
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(
            listed().contains("Stack complete: 4 of 4 pictures") || !failed.isEmpty(), 60000);
        QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));
        QCOMPARE(asked_, QStringList({"1", "2", "3", "4"}));
        QCOMPARE(layers, QStringList({"Layer: 1", "Layer: 2", "Layer: 3", "Layer: 4"}));
        QCOMPARE(combine.size(), 1);
        QCOMPARE(combine.first().first().toString(), QString("4"));
        QCOMPARE(p.Schicht->text(), QString("Layer: 0"));
        QCOMPARE(board_->axis(0).position, 0);
        QCOMPARE(p.lblPosition[0]->text(), QString("0,00"));  // millimetres, as the caption says
    }

    // A larger window gives its room to the pictures list and the preview; the panel keeps its
    // size.
    void aLargerWindowGivesItsRoomToThePictures() {
        HostWindow& window = open({"command", camera("printf x > \"$1\"\n"), 60});
        window.resize(1100, 860);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* list = child<QListWidget>("Aufnahmenliste");
        auto* preview = child<QLabel>("Vorschau");
        const QSize panel = window.panel().size(), listed = list->size(), shown = preview->size();
        window.resize(1900, 1300);
        QTRY_VERIFY(list->width() > listed.width() + 600);
        QCOMPARE(window.panel().size(), panel);
        QVERIFY(list->height() > listed.height() && preview->height() > shown.height() + 200 &&
                preview->width() > shown.width() + 600);
    }
};

QTEST_MAIN(TestHostWindow)
#include "tst_hostwindow.moc"
