// What a stack adds to each plane beyond the pause the operator set: the time from the end of
// a plane's move (the board's "|F") to the next picture request (Schicht), minus wartezeit,
// against the board simulator over a pseudo-terminal, with a host that releases at once.
// Target: median under 5 ms.
// Usage: bench_stack [planes, default 40]
#include "control/internals.h"
#include "link/link.h"
#include "motion/motion.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSerialPort>
#include <algorithm>
#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int planes = argc > 1 ? QByteArray(argv[1]).toInt() : 40;
    constexpr int kPauseMs = 10;

    QProcess sim;
    sim.start(QCoreApplication::applicationDirPath() + QStringLiteral("/../sim/quendrix-sim"),
              {QStringLiteral("--serial")});
    QString device;
    while (device.isEmpty() && sim.waitForReadyRead(5000)) {
        const auto match = QRegularExpression(QStringLiteral("serial: (\\S+)"))
                               .match(QString::fromLocal8Bit(sim.readAllStandardOutput()));
        if (match.hasMatch()) device = match.captured(1);
    }
    if (device.isEmpty()) {
        std::printf("the simulator did not start\n");
        return 1;
    }

    ctlQuendrix control;
    quendrix::Panel& p = *control.panel();
    control.MSComm1()->setPortName(device);
    control.MSComm1()->setBaudRate(115200);
    if (!control.MSComm1()->open(QIODevice::ReadWrite)) return 1;
    quendrix::internals(control).link()->setQuittiert(true);
    quendrix::internals(control).motion()->setMaxPosition(0, 10000000);
    p.Steigung[0]->setText(QStringLiteral("1"));
    p.Schritte[0]->setText(QStringLiteral("400"));
    p.Taktpause[0]->setText(QStringLiteral("100"));
    control.Output(QStringLiteral("w100#"));
    p.wartezeit->setText(QString::number(kPauseMs));
    p.BBeginn[0]->setText(QString::number(200 * planes + 1000));
    p.BEnde[0]->setText(QStringLiteral("1000"));
    p.Ebenen->setText(QString::number(planes));

    QElapsedTimer clock;
    clock.start();
    double lastEnd = -1;
    QList<double> overheads;
    bool combined = false;
    QObject::connect(quendrix::internals(control).link(), &quendrix::Link::moveFinished,
                     [&](int axis) {
                         if (axis == 0) lastEnd = clock.nsecsElapsed() / 1e6;
                     });
    QObject::connect(&control, &ctlQuendrix::Schicht, [&](const QString& nr) {
        const double now = clock.nsecsElapsed() / 1e6;
        if (nr.toInt() > 1 && lastEnd >= 0) overheads.append(now - lastEnd - kPauseMs);
        control.SetOK(true);
    });
    QObject::connect(&control, &ctlQuendrix::Kombinieren, [&] { combined = true; });
    p.AutoKomb->click();
    while (!combined && clock.elapsed() < 120000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    sim.terminate();
    sim.waitForFinished(3000);

    if (overheads.isEmpty()) {
        std::printf("no planes measured\n");
        return 1;
    }
    std::sort(overheads.begin(), overheads.end());
    std::printf(
        "%lld planes: overhead per plane beyond wartezeit: median %.2f ms, max %.2f ms "
        "(target: median < 5 ms)\n",
        static_cast<long long>(overheads.size()), overheads[overheads.size() / 2],
        overheads.last());
    return 0;
}
