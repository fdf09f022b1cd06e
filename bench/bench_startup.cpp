// How long a bellows rig's start-up takes against a board that answers at once, compared
// with what its commands alone cost: the number of commands the board received times the raw
// round trip of the same pseudo-terminal, measured in the same run. Target: at most 1.5 times.
#include "link/link.h"
#include "simprocess.h"

#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QTemporaryDir>
#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--log")})) {
        std::printf("the simulator did not start\n");
        return 1;
    }
    QSerialPort raw;
    if (!openSerial(raw, sim.serial)) return 1;
    const double roundTrip = rawRoundTrips(raw, "w800#", 200);
    raw.close();

    QTemporaryDir folder;
    ctlQuendrix control;
    control.setMotorName(QStringLiteral("Platz0"));
    control.setKameratyp(QStringLiteral("Kamera"));
    control.setinifile(folder.filePath(QStringLiteral("rig_L.ini")));
    if (!openSerial(*control.MSComm1(), sim.serial)) return 1;
    control.link()->bQuittiert = true;
    // A host shows its panel before it starts the rig.
    control.show();
    QCoreApplication::processEvents();
    sim.takePrinted();

    QElapsedTimer timer;
    timer.start();
    control.Motor_Starten();
    const double seconds = timer.nsecsElapsed() / 1e9;
    const QStringList received = sim.takePrinted();
    const qsizetype commands = received.size();
    if (qEnvironmentVariableIsSet("QUENDRIX_BENCH_VERBOSE"))
        for (const QString& line : received)
            std::printf("  %s\n", qPrintable(line));
    std::printf(
        "start-up: %.1f ms for %lld commands; raw round trip %.3f ms; ratio %.2f "
        "(target <= 1.5)\n",
        seconds * 1e3, static_cast<long long>(commands), roundTrip * 1e3,
        seconds / (double(commands) * roundTrip));
    return 0;
}
