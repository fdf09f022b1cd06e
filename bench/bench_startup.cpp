// How long a bellows rig's start-up takes against a board that answers at once, compared
// with what its round trips alone cost: the same commands, sent by a bare client over a freshly
// opened port of the same pseudo-terminal just before each start-up, each one waiting for its
// acknowledgement as the component does. The first start-up (with Qt's one-time work: fonts,
// styles) is shown apart; the target applies to the median of the following ones.
// Target: at most 1.5 times. A second line shows how much of that the command channel takes: the
// same commands sent through Output alone, against the same bare client.
// Usage: bench_startup [start-ups, default 15]
#include "control/internals.h"
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
    double rawSeconds = 0;
    qsizetype commands = 0;
    double ratio() const { return seconds / rawSeconds; }
};

// The commands as the simulator logged them ("<time> <command>").
QList<QByteArray> commandsOf(const QStringList& logged) {
    QList<QByteArray> commands;
    for (const QString& line : logged)
        commands.append(line.section(QLatin1Char(' '), 1).toLatin1());
    return commands;
}

// Over the serial port a command is answered by a line without "q" or "Q", or by one that
// carries its acknowledgement marker (its letter in upper case and "|").
bool answered(const QByteArray& received, char letter) {
    const QByteArray marker = QByteArray(1, char(QChar::toUpper(char16_t(letter)))) + '|';
    for (const QByteArray& line : received.split('\n')) {
        if (!line.endsWith('\r')) continue;
        if ((!line.contains('q') && !line.contains('Q')) || line.contains(marker)) return true;
    }
    return false;
}

void roundTrip(QSerialPort& port, const QByteArray& command) {
    port.write(command);
    QByteArray received;
    while (!answered(received, command.at(0)) && port.waitForReadyRead(2000))
        received += port.readAll();
}

const QByteArray kIdentification = "?#\r\n";

// Seconds for the commands' round trips by a bare client. Like the component, it has found the
// board on the freshly opened port (untimed) before it starts.
double replay(const QString& device, const QList<QByteArray>& commands) {
    QSerialPort port;
    if (!openSerial(port, device)) return 0;
    roundTrip(port, kIdentification);
    QElapsedTimer timer;
    timer.start();
    for (const QByteArray& command : commands)
        roundTrip(port, command);
    return timer.nsecsElapsed() / 1e9;
}

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
    control.show();
    QCoreApplication::processEvents();

    QList<StartUp> runs;
    QList<QByteArray> commands;
    for (int run = 0; run < count; ++run) {
        StartUp measured;
        if (run > 0) measured.rawSeconds = replay(sim.serial, commands);
        if (!openSerial(*control.MSComm1(), sim.serial)) return 1;
        // As after the link's start-up, which has found the board before the device starts.
        quendrix::internals(control).link()->setQuittiert(true);
        control.Output(QString::fromLatin1(kIdentification));
        sim.takePrinted();
        QElapsedTimer timer;
        timer.start();
        control.Motor_Starten();
        measured.seconds = timer.nsecsElapsed() / 1e9;
        control.MSComm1()->close();
        const QList<QByteArray> received = commandsOf(sim.takePrinted());
        measured.commands = received.size();
        if (run == 0) {
            commands = received;
            if (qEnvironmentVariableIsSet("QUENDRIX_BENCH_VERBOSE"))
                for (const QByteArray& command : commands)
                    std::printf("  %s\n", command.constData());
        } else if (received != commands) {
            std::printf("start-up %d sent other commands than the first\n", run + 1);
            return 1;
        }
        // Whatever the start-up left for the event loop (the panel's one layout and paint)
        // belongs to neither measurement.
        QCoreApplication::processEvents();
        runs.append(measured);
    }

    QList<double> channelOnly;
    for (int run = 1; run < count; ++run) {
        const double rawSeconds = replay(sim.serial, commands);
        if (!openSerial(*control.MSComm1(), sim.serial)) return 1;
        quendrix::internals(control).link()->setQuittiert(true);
        control.Output(QString::fromLatin1(kIdentification));
        control.setUpdatesEnabled(false);  // as during the start-up
        QElapsedTimer timer;
        timer.start();
        for (const QByteArray& command : commands)
            control.Output(
                QString::fromLatin1(command.startsWith('?') ? command + "\r\n" : command));
        channelOnly.append(timer.nsecsElapsed() / 1e9 / rawSeconds);
        control.setUpdatesEnabled(true);
        control.MSComm1()->close();
        QCoreApplication::processEvents();
    }
    std::sort(channelOnly.begin(), channelOnly.end());

    const StartUp first = runs.takeFirst();
    std::sort(runs.begin(), runs.end(),
              [](const StartUp& a, const StartUp& b) { return a.ratio() < b.ratio(); });
    const StartUp& median = runs.at(runs.size() / 2);
    std::printf("first start-up: %.2f ms for %lld commands\n", first.seconds * 1e3,
                static_cast<long long>(first.commands));
    std::printf(
        "median of %lld more: %.2f ms, the same %lld round trips by a bare client %.2f ms: "
        "ratio %.2f (best %.2f, worst %.2f; target <= 1.5)\n",
        static_cast<long long>(runs.size()), median.seconds * 1e3,
        static_cast<long long>(median.commands), median.rawSeconds * 1e3, median.ratio(),
        runs.first().ratio(), runs.last().ratio());
    std::printf("the same commands through Output alone: median ratio %.2f\n",
                channelOnly.at(channelOnly.size() / 2));
    return 0;
}
