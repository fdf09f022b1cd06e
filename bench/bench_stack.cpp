// What a stack adds to each plane, measured two ways against the board simulator over a
// pseudo-terminal.
//
// Against a board that answers at once, with a host that releases at once: the time from the
// end of a plane's move (the board's "|F") to the next picture request (Schicht), minus
// wartezeit. Target: median under 5 ms.
//
// At wire timing (the simulator's --wire), with a camera that takes its time: each plane's
// time from one picture request to the next, minus the camera's time (the request to the
// release), wartezeit, and the wire floor of the plane's move: its command and replies at the
// baud rate, the firmware's and the adapter's latencies and the simulated move itself
// (wirefloor.h). Target: median at most 2 ms.
// Usage: bench_stack [planes, default 40]
#include "control/internals.h"
#include "link/link.h"
#include "motion/motion.h"
#include "simprocess.h"
#include "wirefloor.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPort>
#include <QTimer>
#include <algorithm>
#include <cstdio>

namespace {

constexpr int kPauseMs = 10;
constexpr int kPlaneSteps = 200;
constexpr int kPauseMicroseconds = 100;  // Taktpause; the stack sets its moves' pace from it
constexpr int kStackEnd = 1000;

// What happened in one stack, in milliseconds from its start.
struct StackRun {
    QList<double> requested;   // Schicht
    QList<double> released;    // SetOK, after the camera's time
    QList<double> moveEndsBy;  // per request: the last "|F" of axis 0 before it (-1: none)
    bool combined = false;
};

// Runs a stack of `planes` planes of kPlaneSteps steps down to kStackEnd; the host's camera
// takes `cameraMs` for each picture.
StackRun runStack(const QString& device, int planes, int cameraMs) {
    StackRun run;
    ctlQuendrix control;
    quendrix::Panel& p = *control.panel();
    if (!openSerial(*control.MSComm1(), device)) return run;
    quendrix::internals(control).link()->setQuittiert(true);
    quendrix::internals(control).motion()->setMaxPosition(0, 10000000);
    p.Steigung[0]->setText(QStringLiteral("1"));
    p.Schritte[0]->setText(QStringLiteral("400"));
    p.Taktpause[0]->setText(QString::number(kPauseMicroseconds));
    control.Output(QStringLiteral("w%1#").arg(kPauseMicroseconds));
    p.wartezeit->setText(QString::number(kPauseMs));
    p.BBeginn[0]->setText(QString::number(kPlaneSteps * planes + kStackEnd));
    p.BEnde[0]->setText(QString::number(kStackEnd));
    p.Ebenen->setText(QString::number(planes));

    QElapsedTimer clock;
    clock.start();
    auto now = [&clock] { return clock.nsecsElapsed() / 1e6; };
    double lastEnd = -1;
    QObject::connect(quendrix::internals(control).link(), &quendrix::Link::moveFinished,
                     [&](int axis) {
                         if (axis == 0) lastEnd = now();
                     });
    QTimer camera;
    camera.setSingleShot(true);
    camera.setTimerType(Qt::PreciseTimer);
    QObject::connect(&camera, &QTimer::timeout, [&] {
        run.released.append(now());
        control.SetOK(true);
    });
    QObject::connect(&control, &ctlQuendrix::Schicht, [&](const QString&) {
        run.requested.append(now());
        run.moveEndsBy.append(lastEnd);
        if (cameraMs > 0) {
            control.SetOK(false);  // as a host does until its picture is taken
            camera.start(cameraMs);
        } else {
            run.released.append(now());
            control.SetOK(true);
        }
    });
    QObject::connect(&control, &ctlQuendrix::Kombinieren, [&] { run.combined = true; });
    p.AutoKomb->click();
    while (!run.combined && clock.elapsed() < 300000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return run;
}

double median(QList<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

bool measureAgainstInstantBoard(int planes) {
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial")})) {
        std::printf("the simulator did not start\n");
        return false;
    }
    const StackRun run = runStack(sim.serial, planes, 0);
    QList<double> overheads;
    for (qsizetype i = 1; i < run.requested.size(); ++i)
        if (run.moveEndsBy[i] >= 0)
            overheads.append(run.requested[i] - run.moveEndsBy[i] - kPauseMs);
    if (overheads.isEmpty()) {
        std::printf("no planes measured\n");
        return false;
    }
    std::sort(overheads.begin(), overheads.end());
    std::printf(
        "%lld planes: overhead per plane beyond wartezeit: median %.2f ms, max %.2f ms "
        "(target: median < 5 ms)\n",
        static_cast<long long>(overheads.size()), median(overheads), overheads.last());
    return true;
}

// The wire floor of one plane's move, on a board that has taken what the stack sent before its
// first plane (the pause per step, the direction, the start position).
WireExchange planeFloor(const QList<QByteArray>& before, const QByteArray& planeMove) {
    quendrix::sim::Options options;
    options.wire = quendrix::sim::WireTiming::realistic();
    WireReplay replay(options);
    for (const QByteArray& command : before)
        replay.command(command);
    return replay.command(planeMove);
}

bool measureAtWire(int planes) {
    constexpr int kCameraMs = 30;
    SimulatorProcess sim;
    if (!sim.start(
            {QStringLiteral("--serial"), QStringLiteral("--wire"), QStringLiteral("--log")})) {
        std::printf("the simulator did not start\n");
        return false;
    }
    const StackRun run = runStack(sim.serial, planes, kCameraMs);
    // Every plane after the first is reached by the same move, and the stack sends nothing
    // else between its pictures.
    const QByteArray planeMove = "t" + QByteArray::number(kPlaneSteps) + '#';
    QList<QByteArray> commands;
    for (const QString& line : sim.takePrinted())
        commands.append(line.section(QLatin1Char(' '), 1).toLatin1());
    const qsizetype first = commands.indexOf(planeMove);
    const qsizetype moves = commands.count(planeMove);
    if (!run.combined || moves != planes || first < 0 ||
        commands.lastIndexOf(planeMove) != first + moves - 1) {
        std::printf("the stack at wire timing did not run as planned (%lld plane moves of %d)\n",
                    static_cast<long long>(moves), planes);
        for (const QByteArray& command : commands)
            std::printf("  %s\n", command.constData());
        return false;
    }
    const WireExchange floor = planeFloor(commands.mid(0, first), planeMove);
    if (!floor.complete) {
        std::printf("the plane's move could not be replayed\n");
        return false;
    }
    QList<double> overheads;
    QList<double> cameraMs;
    for (qsizetype i = 1; i + 1 < run.requested.size(); ++i) {
        const double camera = run.released[i] - run.requested[i];
        cameraMs.append(camera);
        overheads.append(run.requested[i + 1] - run.requested[i] - camera - kPauseMs -
                         floor.seconds * 1e3);
    }
    std::sort(overheads.begin(), overheads.end());
    std::printf(
        "at wire timing, %lld planes: camera %.2f ms, wartezeit %d ms, the plane's move with its "
        "%lld bytes out and %lld in %.2f ms on the wire; beyond these a plane takes median "
        "%.2f ms, max %.2f ms (target: median <= 2 ms)\n",
        static_cast<long long>(overheads.size()), median(cameraMs), kPauseMs,
        static_cast<long long>(floor.bytesOut), static_cast<long long>(floor.bytesIn),
        floor.seconds * 1e3, median(overheads), overheads.last());
    std::printf("RATIO plane-overhead-ms-at-wire %.2f <= 2\n", median(overheads));
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int planes = std::max(3, argc > 1 ? QByteArray(argv[1]).toInt() : 40);
    if (!measureAgainstInstantBoard(planes)) return 1;
    if (!measureAtWire(planes)) return 1;
    return 0;
}
