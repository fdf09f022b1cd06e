// A long run against a board on a faulty wire: 2000-plane stacks, one after the other, against
// the simulator at wire timing with faults injected (lost acknowledgements, noise lines, replies
// in random pieces, stray bytes), until the time is up; a stack still running then is aborted
// as an operator would (the right button let go on the stack button).
// It prints the memory in use (resident set) at the start, after the first tenth of the run and
// at the end, the pictures requested against those taken, and the time per plane in each tenth
// of the run. Target: the memory grows by at most 2 MB from the first tenth to the end.
// Not part of the test run.
// Usage: bench_soak [minutes, default 60]
#include "stackhost.h"

#include <QApplication>
#include <QFile>
#include <QMouseEvent>
#include <QPushButton>
#include <algorithm>
#include <cstdio>

namespace {

constexpr int kPlanes = 2000;
constexpr int kPlaneSteps = 20;
constexpr int kCameraMs = 20;
constexpr double kRssTargetMb = 2;

// The resident set of a process in megabytes (0: unknown).
double residentMb(qint64 pid) {
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    return 0;
}

// The operator aborts the run: the right mouse button let go on the stack button.
void abortRun(ctlQuendrix& control) {
    QPushButton* button = control.panel()->AutoKomb;
    const QPointF inside(button->width() / 2.0, button->height() / 2.0);
    QMouseEvent release(QEvent::MouseButtonRelease, inside, button->mapToGlobal(inside),
                        Qt::RightButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(button, &release);
}

void runEventsFor(int ms) {
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const double minutes = argc > 1 ? std::max(0.1, QByteArray(argv[1]).toDouble()) : 60;
    const QStringList faults = {
        QStringLiteral("--drop-acks"), QStringLiteral("0.001"),   QStringLiteral("--noise"),
        QStringLiteral("0.2"),         QStringLiteral("--split"), QStringLiteral("--stray-byte"),
        QStringLiteral("0.01"),        QStringLiteral("--seed"),  QStringLiteral("17")};
    SimulatorProcess sim;
    if (!sim.start(QStringList{QStringLiteral("--serial"), QStringLiteral("--wire")} + faults)) {
        std::printf("the simulator did not start\n");
        return 1;
    }
    std::printf("soak: %.1f minutes of %d-plane stacks at wire timing with %s\n", minutes, kPlanes,
                qPrintable(faults.join(QLatin1Char(' '))));

    QElapsedTimer clock;
    ctlQuendrix control;
    clock.start();
    StackHost host(control, clock, kCameraMs);
    if (!prepareStack(control, sim.serial, kPlanes, kPlaneSteps)) return 1;
    // Each plane's time: from its picture request to the next one in the same stack.
    struct Plane {
        double at;
        double ms;
    };
    QList<Plane> planes;
    // The bench's own records take their memory up front (written once, so it is resident),
    // so that what grows during the run is the panel's and not the records' (about 40 bytes a
    // picture, 2 MB in an hour).
    const qsizetype expected = qsizetype(minutes * 1500);  // well above the planes a minute
    for (QList<double>* record :
         {&host.record.requested, &host.record.released, &host.record.moveEndsBy}) {
        record->resize(expected);
        record->clear();  // keeps its capacity
    }
    planes.resize(expected);
    planes.clear();
    const qint64 self = QCoreApplication::applicationPid();
    const double startMb = residentMb(self);
    const double simStartMb = residentMb(sim.process.processId());
    const double endMs = minutes * 60000;

    double warmMb = 0;
    int stacks = 0, completed = 0;
    qsizetype requestedBefore = 0;
    bool aborted = false;
    while (!aborted && clock.elapsed() < endMs) {
        host.record.combined = false;
        ++stacks;
        control.panel()->AutoKomb->click();
        while (!host.record.combined) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
            if (warmMb == 0 && clock.elapsed() >= endMs / 10) warmMb = residentMb(self);
            if (clock.elapsed() >= endMs) {
                abortRun(control);
                aborted = true;
                break;
            }
        }
        if (host.record.combined) ++completed;
        const QList<double>& requested = host.record.requested;
        for (qsizetype i = requestedBefore + 1; i < requested.size(); ++i)
            planes.append({requested[i], requested[i] - requested[i - 1]});
        requestedBefore = requested.size();
    }
    const double runMs = clock.elapsed();
    // A run aborted while its plane moved asks for one more picture; the camera finishes it.
    runEventsFor(3000);
    while (host.busy())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    const double endMb = residentMb(self);
    const double simEndMb = residentMb(sim.process.processId());
    if (warmMb == 0) warmMb = endMb;

    std::printf("stacks: %d begun, %d completed\n", stacks, completed);
    std::printf("pictures: %lld requested, %lld taken\n",
                static_cast<long long>(host.record.requested.size()),
                static_cast<long long>(host.record.released.size()));
    std::printf("time per plane (camera %d ms, wartezeit %d ms, %d steps) by tenth of the run:\n",
                kCameraMs, kStackPauseMs, kPlaneSteps);
    for (int tenth = 0; tenth < 10; ++tenth) {
        QList<double> times;
        for (const Plane& plane : planes)
            if (plane.at >= runMs * tenth / 10 && plane.at < runMs * (tenth + 1) / 10)
                times.append(plane.ms);
        if (times.isEmpty()) {
            std::printf("  %3d%%: no planes\n", (tenth + 1) * 10);
            continue;
        }
        std::sort(times.begin(), times.end());
        double sum = 0;
        for (double t : times)
            sum += t;
        std::printf("  %3d%%: %5lld planes, median %.2f ms, mean %.2f ms, max %.0f ms\n",
                    (tenth + 1) * 10, static_cast<long long>(times.size()), times[times.size() / 2],
                    sum / times.size(), times.last());
    }
    std::printf(
        "memory (resident): %.1f MB at the start, %.1f MB after the first tenth, %.1f MB "
        "at the end; the simulator %.1f MB, then %.1f MB\n",
        startMb, warmMb, endMb, simStartMb, simEndMb);
    std::printf("RATIO soak-memory-growth-mb %.2f <= %.0f\n", endMb - warmMb, kRssTargetMb);
    return 0;
}
