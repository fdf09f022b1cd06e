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
#include "stackhost.h"
#include "wirefloor.h"

#include <QApplication>
#include <QPushButton>
#include <algorithm>
#include <cstdio>

namespace {

constexpr int kPlaneSteps = 200;

// Runs a stack of `planes` planes; the host's camera takes `cameraMs` for each picture.
StackRecord runStack(const QString& device, int planes, int cameraMs) {
    QElapsedTimer clock;
    ctlQuendrix control;
    clock.start();
    StackHost host(control, clock, cameraMs);
    if (!prepareStack(control, device, planes, kPlaneSteps)) return {};
    control.panel()->AutoKomb->click();
    while (!host.record.combined && clock.elapsed() < 300000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return host.record;
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
    const StackRecord run = runStack(sim.serial, planes, 0);
    QList<double> overheads;
    for (qsizetype i = 1; i < run.requested.size(); ++i)
        if (run.moveEndsBy[i] >= 0)
            overheads.append(run.requested[i] - run.moveEndsBy[i] - kStackPauseMs);
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
    const StackRecord run = runStack(sim.serial, planes, kCameraMs);
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
        overheads.append(run.requested[i + 1] - run.requested[i] - camera - kStackPauseMs -
                         floor.seconds * 1e3);
    }
    std::sort(overheads.begin(), overheads.end());
    std::printf(
        "at wire timing, %lld planes: camera %.2f ms, wartezeit %d ms, the plane's move with its "
        "%lld bytes out and %lld in %.2f ms on the wire; beyond these a plane takes median "
        "%.2f ms, max %.2f ms (target: median <= 2 ms)\n",
        static_cast<long long>(overheads.size()), median(cameraMs), kStackPauseMs,
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
