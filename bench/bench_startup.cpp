// How long the panel's start-up takes, measured two ways.
//
// At wire timing, per rig type (0 bellows, 1 lens changer, 2 microscope): the start-up against
// the simulator timing its link like a real rig's (115200 baud, the firmware's and a USB
// adapter's latencies), divided by the wire floor of the same exchange, the time a host that
// costs nothing would need for the same commands and replies (wirefloor.h). Target: at most
// 1.05 times.
//
// Against a board that answers at once (bellows rig): the start-up against the same commands
// sent by a bare client over a freshly opened port of the same pseudo-terminal just before each
// start-up, each one waiting for its acknowledgement as the component does. Target: at most 1.5
// times (the host's own time weighs most here, as the wire costs nothing). A further line shows
// how much of that the command channel takes: the same commands sent through Output alone.
//
// Each start-up is the device's (Motor_Starten) on a link that has found the board, as the
// link's start-up leaves it. The first start-up (with Qt's one-time work: fonts, styles) is
// shown apart; the ratios are the medians of the following ones.
// Usage: bench_startup [start-ups per measurement, default 15]
#include "control/internals.h"
#include "link/link.h"
#include "simprocess.h"
#include "wirefloor.h"

#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

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

// The bytes the component writes for a logged command: queries go with a line end.
QByteArray written(const QByteArray& command) {
    return command.startsWith('?') ? command + "\r\n" : command;
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

// A control for the rig type, with an empty settings file (every setting at its default), shown
// as a host shows its panel before it starts the rig.
std::unique_ptr<ctlQuendrix> makeControl(const QTemporaryDir& folder, qint16 rigType) {
    auto control = std::make_unique<ctlQuendrix>();
    control->setControltyp(rigType);
    control->setMotorName(QStringLiteral("Platz0"));
    control->setKameratyp(QStringLiteral("Kamera"));
    control->setinifile(folder.filePath(QStringLiteral("rig%1.ini").arg(rigType)));
    control->show();
    QCoreApplication::processEvents();
    return control;
}

// The port opened and the board found, as after the link's start-up.
bool openLink(ctlQuendrix& control, const QString& device) {
    if (!openSerial(*control.MSComm1(), device)) return false;
    quendrix::internals(control).link()->setQuittiert(true);
    control.Output(QString::fromLatin1(kIdentification));
    return true;
}

// Calls `arrived` whenever a watched read notifier fires.
class ArrivalWatch : public QObject {
public:
    explicit ArrivalWatch(std::function<void()> arrived) : arrived_(std::move(arrived)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::SockAct) arrived_();
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> arrived_;
};

// One device start-up: its seconds, the commands the board received, and where its time went.
struct DeviceStartUp {
    double seconds = 0;
    QList<QByteArray> commands;
    // The time from each command's write to the last reply bytes before the next write (the
    // wire, the simulator and the pseudo-terminal), and the rest (the panel's own).
    double roundTripSeconds = 0;
    double panelSeconds = 0;
};

DeviceStartUp startUp(ctlQuendrix& control, SimulatorProcess& sim) {
    DeviceStartUp measured;
    if (!openLink(control, sim.serial)) return measured;
    sim.takePrinted();
    QElapsedTimer timer;
    QList<double> writes;
    QList<double> lastReads;
    QSerialPort& port = *control.MSComm1();
    const QMetaObject::Connection written =
        QObject::connect(&port, &QSerialPort::bytesWritten, [&] {
            writes.append(timer.nsecsElapsed() / 1e9);
            lastReads.append(writes.last());
        });
    // The port's read notifier fires before the link evaluates what came: the moment the
    // bytes were there.
    ArrivalWatch arrivals([&] {
        if (!lastReads.isEmpty()) lastReads.last() = timer.nsecsElapsed() / 1e9;
    });
    for (QSocketNotifier* notifier : port.findChildren<QSocketNotifier*>())
        if (notifier->type() == QSocketNotifier::Read) notifier->installEventFilter(&arrivals);
    timer.start();
    control.Motor_Starten();
    measured.seconds = timer.nsecsElapsed() / 1e9;
    QObject::disconnect(written);
    for (qsizetype i = 0; i < writes.size(); ++i)
        measured.roundTripSeconds += lastReads[i] - writes[i];
    measured.panelSeconds = measured.seconds - measured.roundTripSeconds;
    port.close();
    // Whatever the start-up left for the event loop (the panel's one layout and paint)
    // belongs to no measurement.
    QCoreApplication::processEvents();
    measured.commands = commandsOf(sim.takePrinted());
    return measured;
}

double median(QList<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// The start-up of each rig type at wire timing against its wire floor.
bool compareWithWire(const QTemporaryDir& folder, int count) {
    const struct {
        qint16 type;
        const char* simulated;
        quendrix::sim::Rig rig;
    } rigs[] = {{0, "bellows", quendrix::sim::Rig::Bellows},
                {1, "changer", quendrix::sim::Rig::LensChanger},
                {2, "microscope", quendrix::sim::Rig::Microscope}};
    for (const auto& rig : rigs) {
        SimulatorProcess sim;
        if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--wire"),
                        QStringLiteral("--rig"), QLatin1String(rig.simulated),
                        QStringLiteral("--log")})) {
            std::printf("the simulator did not start\n");
            return false;
        }
        const std::unique_ptr<ctlQuendrix> control = makeControl(folder, rig.type);
        QList<QByteArray> commands;
        QList<DeviceStartUp> runs;
        QList<double> bare;
        for (int run = 0; run < count; ++run) {
            if (run > 0) bare.append(replay(sim.serial, commands));
            DeviceStartUp measured = startUp(*control, sim);
            if (run == 0) {
                commands = measured.commands;
                continue;
            }
            if (measured.commands != commands) {
                std::printf("rig %d: start-up %d sent other commands than the first\n", rig.type,
                            run + 1);
                return false;
            }
            runs.append(measured);
        }
        quendrix::sim::Options options;
        options.rig = rig.rig;
        options.wire = quendrix::sim::WireTiming::realistic();
        QList<QByteArray> writes;
        for (const QByteArray& command : commands)
            writes.append(written(command));
        const WireExchange floor = wireFloor(options, writes);
        if (commands.isEmpty() || !floor.complete) {
            std::printf("rig %d: the start-up's exchange could not be replayed\n", rig.type);
            return false;
        }
        std::sort(runs.begin(), runs.end(), [](const DeviceStartUp& a, const DeviceStartUp& b) {
            return a.seconds < b.seconds;
        });
        const DeviceStartUp& middle = runs.at(runs.size() / 2);
        const double ratio = middle.seconds / floor.seconds;
        std::printf(
            "rig %d at wire timing: start-up %.2f ms (median of %lld), %lld commands, "
            "%lld bytes out and %lld in, wire floor %.2f ms: ratio %.3f (target <= 1.05)\n",
            rig.type, middle.seconds * 1e3, static_cast<long long>(runs.size()),
            static_cast<long long>(commands.size()), static_cast<long long>(floor.bytesOut),
            static_cast<long long>(floor.bytesIn), floor.seconds * 1e3, ratio);
        std::printf(
            "  beyond the floor: %.2f ms from the commands' writes to their replies (the "
            "simulator and the pseudo-terminal), %.2f ms in the panel; a bare client takes "
            "%.2f ms for the same commands (ratio %.3f)\n",
            (middle.roundTripSeconds - floor.seconds) * 1e3, middle.panelSeconds * 1e3,
            median(bare) * 1e3, median(bare) / floor.seconds);
        std::printf("RATIO startup-vs-wire-rig%d %.3f <= 1.05\n", rig.type, ratio);
    }
    return true;
}

// The bellows rig's start-up against a bare client's round trips, with a board that answers
// at once.
bool compareWithBareClient(const QTemporaryDir& folder, int count) {
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--log")})) {
        std::printf("the simulator did not start\n");
        return false;
    }
    const std::unique_ptr<ctlQuendrix> control = makeControl(folder, 0);

    QList<StartUp> runs;
    QList<QByteArray> commands;
    for (int run = 0; run < count; ++run) {
        StartUp measured;
        if (run > 0) measured.rawSeconds = replay(sim.serial, commands);
        const DeviceStartUp device = startUp(*control, sim);
        const QList<QByteArray>& received = device.commands;
        measured.seconds = device.seconds;
        measured.commands = received.size();
        if (run == 0) {
            commands = received;
            if (qEnvironmentVariableIsSet("QUENDRIX_BENCH_VERBOSE"))
                for (const QByteArray& command : commands)
                    std::printf("  %s\n", command.constData());
        } else if (received != commands) {
            std::printf("start-up %d sent other commands than the first\n", run + 1);
            return false;
        }
        runs.append(measured);
    }

    QList<double> channelOnly;
    for (int run = 1; run < count; ++run) {
        const double rawSeconds = replay(sim.serial, commands);
        if (!openLink(*control, sim.serial)) return false;
        control->setUpdatesEnabled(false);  // as during the start-up
        QElapsedTimer timer;
        timer.start();
        for (const QByteArray& command : commands)
            control->Output(QString::fromLatin1(written(command)));
        channelOnly.append(timer.nsecsElapsed() / 1e9 / rawSeconds);
        control->setUpdatesEnabled(true);
        control->MSComm1()->close();
        QCoreApplication::processEvents();
    }

    const StartUp first = runs.takeFirst();
    std::sort(runs.begin(), runs.end(),
              [](const StartUp& a, const StartUp& b) { return a.ratio() < b.ratio(); });
    const StartUp& middle = runs.at(runs.size() / 2);
    std::printf("first start-up: %.2f ms for %lld commands\n", first.seconds * 1e3,
                static_cast<long long>(first.commands));
    std::printf(
        "median of %lld more: %.2f ms, the same %lld round trips by a bare client %.2f ms: "
        "ratio %.2f (best %.2f, worst %.2f; target <= 1.5)\n",
        static_cast<long long>(runs.size()), middle.seconds * 1e3,
        static_cast<long long>(middle.commands), middle.rawSeconds * 1e3, middle.ratio(),
        runs.first().ratio(), runs.last().ratio());
    std::printf("the same commands through Output alone: median ratio %.2f\n", median(channelOnly));
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int count = std::max(2, argc > 1 ? QByteArray(argv[1]).toInt() : 15);
    QTemporaryDir folder;
    if (!compareWithBareClient(folder, count)) return 1;
    if (!compareWithWire(folder, count)) return 1;
    return 0;
}
