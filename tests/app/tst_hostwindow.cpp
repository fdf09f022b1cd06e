// The application's window as the host of runs on the board simulator: each picture the panel
// asks for is taken into the run's folder before the run is released, a finished stack is
// fused, and an averaging series is really averaged.
#include "camera/subject.h"
#include "fusion/fusion.h"
#include "hostwindow.h"
#include "link/link.h"
#include "motion/motion.h"
#include "session/capturesession.h"
#include "sim/board.h"
#include "sim/ptyfrontend.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QElapsedTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSerialPort>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

class TestHostWindow : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;
    QElapsedTimer clock_;
    std::unique_ptr<quendrix::sim::Board> board_;
    std::unique_ptr<quendrix::sim::PtyFrontEnd> pty_;
    std::unique_ptr<HostWindow> window_;

    // A window whose panel drives the simulator on a pseudo-terminal, taking its pictures into
    // the test's folder with the camera chosen.
    HostWindow& open(const CameraChoice& camera) {
        clock_.start();
        board_ = std::make_unique<quendrix::sim::Board>(quendrix::sim::Options{});
        pty_ = std::make_unique<quendrix::sim::PtyFrontEnd>(
            *board_, [this] { return clock_.nsecsElapsed() / 1e9; });
        if (!pty_->open()) qFatal("no pseudo-terminal");
        pty_->setAutoPump(true);
        window_ = std::make_unique<HostWindow>();
        ctlQuendrix& panel = window_->panel();
        quendrix::Panel& p = *panel.panel();
        panel.setLocale(QLocale(QLocale::German));
        panel.setinifile(dir_.filePath("rig_L.ini"));
        panel.MSComm1()->setPortName(pty_->devicePath());
        if (!panel.MSComm1()->open(QIODevice::ReadWrite)) qFatal("the port did not open");
        panel.link()->bQuittiert = true;
        panel.motion()->maxPosition[0] = 100000;
        p.Steigung[0]->setText("1");
        p.Schritte[0]->setText("400");
        p.wartezeit->setText("10");
        window_->setCamera(
            camera, [this] { return double(board_->axis(0).position); }, dir_.filePath("runs"));
        return *window_;
    }

    QStringList listed() const {
        auto* list = window_->findChild<QListWidget*>("Aufnahmenliste");
        QStringList items;
        for (int row = 0; list && row < list->count(); ++row)
            items << list->item(row)->text().mid(10);  // after the time of day
        return items;
    }

private slots:
    void cleanup() {
        window_.reset();
        pty_.reset();
        board_.reset();
    }

    // The camera takes 0.3 s; the panel asks for the next picture only once the last one is on
    // disk, and the finished stack is fused beside its pictures.
    void aStackWaitsForEachPictureAndIsFused() {
        const QString script = dir_.filePath("slowcamera.sh");
        QFile file(script);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nsleep 0.3\ncp \"$(dirname \"$0\")/frame-$2.tif\" \"$1\"\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        // The camera hands out pictures of the simulated subject, one focus per plane.
        const Subject subject({640, 480});
        for (int plane = 1; plane <= 4; ++plane)
            QVERIFY(subject.render(1000 + 1000 * plane)
                        .save(dir_.filePath(QString("frame-%1.tif").arg(plane))));

        HostWindow& window = open({"command", script + " {file} {plane}", 10});
        quendrix::Panel& p = *window.panel().panel();
        p.BBeginn[0]->setText("0");  // the lower end first: the window keeps the stack in it
        p.BEnde[0]->setText("60");
        p.Ebenen->setText("3");
        QList<qint64> asked;
        connect(&window.panel(), &ctlQuendrix::Schicht, this,
                [&] { asked.append(clock_.elapsed()); });
        QSignalSpy fused(&window.fusion(), &Fusion::finished);
        QSignalSpy failed(&window.session(), &CaptureSession::failed);
        QSignalSpy notFused(&window.fusion(), &Fusion::failed);
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!fused.isEmpty() || !failed.isEmpty() || !notFused.isEmpty(),
                                 60000);
        QVERIFY2(notFused.isEmpty(), qPrintable(notFused.value(0).value(0).toString()));
        QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));

        QCOMPARE(asked.size(), 4);
        QCOMPARE(board_->axis(0).position, 0);  // from 60 down to 0, not past it
        for (int i = 1; i < asked.size(); ++i)
            QVERIFY2(asked[i] - asked[i - 1] >= 300,
                     qPrintable(QStringLiteral("%1 ms").arg(asked[i] - asked[i - 1])));
        const QString folder = window.session().runFolder();
        QCOMPARE(QDir(folder).entryList(QDir::Files),
                 QStringList({"combined.tif", "plane-0001.tif", "plane-0002.tif", "plane-0003.tif",
                              "plane-0004.tif"}));
        QCOMPARE(QImage(QDir(folder).filePath("combined.tif")).size(), subject.size());
        const QStringList items = listed();
        QVERIFY2(items.first().startsWith("Der Stapel läuft abwärts") &&
                     items.filter("Bild ").size() == 4 &&
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
    // for, the counter is back at 0, and what the camera said reaches the photographer.
    void aFailedPictureStopsTheRun() {
        const QString script = dir_.filePath("failingcamera.sh");
        QFile file(script);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            "#!/bin/sh\nif [ \"$2\" = 2 ]; then echo 'memory card full'; exit 1; fi\n"
            "printf x > \"$1\"\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        HostWindow& window = open({"command", script + " {file} {plane}", 10});
        quendrix::Panel& p = *window.panel().panel();
        p.BBeginn[0]->setText("80");
        p.BEnde[0]->setText("0");
        p.Ebenen->setText("4");
        QStringList asked;
        connect(&window.panel(), &ctlQuendrix::Schicht, this,
                [&](const QString& nr) { asked << nr; });
        QSignalSpy failed(&window.session(), &CaptureSession::failed);
        QSignalSpy ended(&window.panel(), &ctlQuendrix::Kombinieren);
        QSignalSpy averaged(&window.panel(), &ctlQuendrix::Mittelwert);
        p.AutoKomb->click();
        QTRY_VERIFY_WITH_TIMEOUT(!failed.isEmpty(), 20000);
        QVERIFY(failed.first().value(0).toString().contains("memory card full"));
        QTest::qWait(500);  // longer than the pause: the panel would have asked again by now
        QCOMPARE(asked.mid(0, 2), QStringList({"1", "2"}));
        QCOMPARE(window.session().runPictures().size(), 1);
        QCOMPARE(quendrix::tag(p.AutoKomb), QString());
        QVERIFY(!window.panel().Timer3()->isActive());
        QCOMPARE(p.Schicht->text(), QStringLiteral("Schicht: 0"));
        QVERIFY(ended.isEmpty() && averaged.isEmpty() && failed.size() == 1);

        // The next stack runs as usual.
        file.remove();
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nprintf x > \"$1\"\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        p.Ebenen->setText("2");
        asked.clear();
        p.AutoKomb->click();
        QTRY_VERIFY_WITH_TIMEOUT(!ended.isEmpty(), 20000);
        QCOMPARE(asked, QStringList({"1", "2", "3"}));
    }
};

QTEST_MAIN(TestHostWindow)
#include "tst_hostwindow.moc"
