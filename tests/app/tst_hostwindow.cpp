// The application's window as the host of a stack run on the board simulator: each picture the
// panel asks for is taken (simulated), listed and only then released, so the run moves on
// plane by plane and ends with the combination.
#include "hostwindow.h"
#include "link/link.h"
#include "motion/motion.h"
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
#include <QtTest>

class TestHostWindow : public QObject {
    Q_OBJECT

private slots:
    void aStackRunWaitsForEachPicture() {
        QElapsedTimer clock;
        clock.start();
        quendrix::sim::Board board(quendrix::sim::Options{});
        quendrix::sim::PtyFrontEnd pty(board, [&] { return clock.nsecsElapsed() / 1e9; });
        QVERIFY(pty.open());
        pty.setAutoPump(true);

        HostWindow window;
        ctlQuendrix& panel = window.panel();
        quendrix::Panel& p = *panel.panel();
        panel.setLocale(QLocale(QLocale::German));
        panel.MSComm1()->setPortName(pty.devicePath());
        QVERIFY(panel.MSComm1()->open(QIODevice::ReadWrite));
        panel.link()->bQuittiert = true;
        panel.motion()->maxPosition[0] = 100000;
        p.Steigung[0]->setText("1");
        p.Schritte[0]->setText("400");
        p.wartezeit->setText("10");
        p.BBeginn[0]->setText("60");
        p.BEnde[0]->setText("0");
        p.Ebenen->setText("3");

        QList<qint64> asked;
        connect(&panel, &ctlQuendrix::Schicht, this, [&] { asked.append(clock.elapsed()); });
        QSignalSpy combined(&panel, &ctlQuendrix::Kombinieren);
        p.AutoKomb->click();
        QTRY_VERIFY_WITH_TIMEOUT(!combined.isEmpty(), 20000);

        auto* pictures = window.findChild<QListWidget*>("Aufnahmenliste");
        QVERIFY(pictures);
        QStringList listed;
        for (int row = 0; row < pictures->count(); ++row)
            listed << pictures->item(row)->text().mid(10);  // after the time of day
        QCOMPARE(listed.size(), asked.size() + 1);
        for (int i = 0; i < asked.size(); ++i)
            QCOMPARE(listed[i], QStringLiteral("Bild %1 aufgenommen").arg(i + 1));
        QCOMPARE(listed.last(),
                 QStringLiteral("%1 Bilder zum Stapel kombiniert").arg(asked.size()));
        // The next picture is asked for only after the last one's exposure.
        QVERIFY(asked.size() >= 3);
        for (int i = 1; i < asked.size(); ++i)
            QVERIFY2(asked[i] - asked[i - 1] >= HostWindow::kExposureMs,
                     qPrintable(QStringLiteral("%1 ms").arg(asked[i] - asked[i - 1])));
    }
};

QTEST_MAIN(TestHostWindow)
#include "tst_hostwindow.moc"
