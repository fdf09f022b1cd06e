// How long a bellows rig's start-up takes against a board that answers at once, compared
// with what its commands alone cost: the number of commands the board received times the raw
// round trip of the same pseudo-terminal, measured just before each start-up. The first
// start-up (with Qt's one-time work: fonts, styles) is shown apart; the target applies to the
// median of the following ones. Target: at most 1.5 times.
// Usage: bench_startup [start-ups, default 15]
#include "link/link.h"
#include "simprocess.h"

#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>

namespace {

struct StartUp {
    double seconds = 0;
    qsizetype commands = 0;
    double roundTrip = 0;
    double ratio() const { return seconds / (double(commands) * roundTrip); }
};

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int count = std::max(2, argc > 1 ? QByteArray(argv[1]).toInt() : 15);
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--log")})) {
        std::printf("the simulator did not start\n");
        return 1;
    }

    QTemporaryDir folder;
    ctlQuendrix control;
    control.setMotorName(QStringLiteral("Platz0"));
    control.setKameratyp(QStringLiteral("Kamera"));
    control.setinifile(folder.filePath(QStringLiteral("rig_L.ini")));
    // A host shows its panel before it starts the rig.
    if (!qEnvironmentVariableIsSet("NOSHOW")) control.show();
    QCoreApplication::processEvents();

    QList<StartUp> runs;
    for (int run = 0; run < count; ++run) {
        StartUp measured;
        QSerialPort raw;
        if (!openSerial(raw, sim.serial)) return 1;
        measured.roundTrip = rawRoundTrips(raw, "w800#", 200);
        raw.close();

        if (!openSerial(*control.MSComm1(), sim.serial)) return 1;
        control.link()->bQuittiert = true;
        sim.takePrinted();
        QElapsedTimer timer;
        timer.start();
        control.Motor_Starten();
        measured.seconds = timer.nsecsElapsed() / 1e9;
        const QStringList received = sim.takePrinted();
        measured.commands = received.size();
        if (run == 0 && qEnvironmentVariableIsSet("QUENDRIX_BENCH_VERBOSE"))
            for (const QString& line : received)
                std::printf("  %s\n", qPrintable(line));
        control.MSComm1()->close();
        // Whatever the start-up left for the event loop (the panel's one layout and paint)
        // belongs to neither measurement.
        QCoreApplication::processEvents();
        runs.append(measured);
    }

    const StartUp first = runs.takeFirst();
    std::sort(runs.begin(), runs.end(),
              [](const StartUp& a, const StartUp& b) { return a.ratio() < b.ratio(); });
    const StartUp& median = runs.at(runs.size() / 2);
    std::printf("first start-up: %.2f ms for %lld commands, raw round trip %.3f ms: ratio %.2f\n",
                first.seconds * 1e3, static_cast<long long>(first.commands), first.roundTrip * 1e3,
                first.ratio());
    std::printf(
        "median of %lld more: %.2f ms for %lld commands, raw round trip %.3f ms: ratio %.2f "
        "(best %.2f, worst %.2f; target <= 1.5)\n",
        static_cast<long long>(runs.size()), median.seconds * 1e3,
        static_cast<long long>(median.commands), median.roundTrip * 1e3, median.ratio(),
        runs.first().ratio(), runs.last().ratio());
    return 0;
}
