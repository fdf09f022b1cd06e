// quendrix-sim: plays the rig's interface board on a pseudo-terminal and/or a TCP port until
// it is interrupted. See sim/README.md.

#include "sim/board.h"
#include "sim/ptyfrontend.h"
#include "sim/tcpfrontend.h"

#include <sys/signalfd.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QStringList>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>

using namespace quendrix::sim;

namespace {

const char usage[] = R"(usage: quendrix-sim [options]
Plays the rig's interface board until SIGINT or SIGTERM.

  --serial              serve a pseudo-terminal (the default); prints "serial: PATH"
  --link PATH           also make PATH a symbolic link to the pseudo-terminal
  --tcp [PORT]          serve TCP (port 0 or none: any free port); prints "tcp: ADDR:PORT"
  --bind ADDR           the TCP address (default 127.0.0.1)
  --rig KIND            bellows, changer, microscope, binocular, unknown or silent
  --drive KIND          the lens changer's drive: can, dc or stepper
  --motor-power-off     the bellows rig reports its motor supply off
  --no-microstep        the board reports no micro-step divisor
  --encoder-offset N    encoder value = position + N
  --rail STEPS[,STEPS]  the rails' length in steps (axis 0, axis 1; one length serves
                        both), with a limit switch at 0 and at the end (default: no ends)
  --wire                time the link like a real rig's: 115200 baud, 0.5 ms per
                        command, 2 ms before a motor starts, a USB adapter's 2 ms
  --baud N              bytes cross the link at N baud, 10 bits each (0: at once)
  --command-latency S   seconds the firmware takes for each command
  --move-latency S      further seconds before a motor starts moving
  --adapter-latency S   seconds a USB-serial adapter holds bytes, each direction
  --boot-delay S        seconds of silence after the link opens
  --reply-delay S       every line leaves S seconds later
  --drop-acks P         lose an acknowledgement with probability P
  --drop-every N        lose every N-th acknowledgement
  --split               write replies in random pieces
  --stray-byte P        put 0xC2 before a line with probability P
  --noise RATE          garbage lines per second (on average)
  --garbage RATE        hostile garbage lines per second (on average)
  --garbage-every N     a hostile garbage line after every N-th line of the board
  --disconnect-after N  close the link after N commands
  --seed N              seed of all random faults
  --log                 print every command received, with its time
)";

struct Settings {
    Options options;
    bool serial = false;
    QString link;
    std::optional<quint16> tcpPort;
    QString bind = QStringLiteral("127.0.0.1");
    bool log = false;
};

[[noreturn]] void fail(const QString& message) {
    std::fprintf(stderr, "quendrix-sim: %s\n%s", qPrintable(message), usage);
    std::exit(2);
}

template <typename Table>
auto choose(const QString& option, const QString& value, const Table& table) {
    for (const auto& [name, choice] : table)
        if (value == QLatin1String(name)) return choice;
    fail(QStringLiteral("%1: unknown value %2").arg(option, value));
}

// "--rail 600000" or "--rail 600000,4800": whole steps from 1 to 2,000,000,000 per axis.
std::array<std::optional<qint32>, 2> rails(const QString& option, const QString& text) {
    const QStringList lengths = text.split(QLatin1Char(','));
    if (lengths.size() > 2) fail(option + QStringLiteral(": one length, or one per axis: ") + text);
    std::array<std::optional<qint32>, 2> rails;
    for (int a = 0; a < 2; ++a) {
        const QString length = lengths.value(a, lengths.front()).trimmed();
        bool ok = false;
        const qint64 steps = length.toLongLong(&ok);
        if (!ok || steps < 1 || steps > Move::runLimit)
            fail(QStringLiteral("%1: a length of 1 to %2 steps, not %3")
                     .arg(option)
                     .arg(Move::runLimit)
                     .arg(length));
        rails[a] = qint32(steps);
    }
    return rails;
}

Settings parse(QStringList args) {
    Settings s;
    Faults& f = s.options.faults;
    auto value = [&args](const QString& option) {
        if (args.isEmpty()) fail(option + QStringLiteral(" needs a value"));
        return args.takeFirst();
    };
    auto number = [&value](const QString& option) {
        bool ok = false;
        const double n = value(option).toDouble(&ok);
        if (!ok || !std::isfinite(n) || n < 0)
            fail(option + QStringLiteral(" needs a number of 0 or more"));
        return n;
    };
    const std::pair<const char*, Rig> rigs[] = {
        {"bellows", Rig::Bellows},        {"changer", Rig::LensChanger},
        {"microscope", Rig::Microscope},  {"binocular", Rig::Binocular},
        {"unknown", Rig::UnknownArduino}, {"silent", Rig::Silent}};
    const std::pair<const char*, Drive> drives[] = {
        {"can", Drive::Can}, {"dc", Drive::Dc}, {"stepper", Drive::Stepper}};

    while (!args.isEmpty()) {
        const QString option = args.takeFirst();
        if (option == "--serial") {
            s.serial = true;
        } else if (option == "--link") {
            s.link = value(option);
            s.serial = true;
        } else if (option == "--tcp") {
            bool ok = false;  // the port is optional
            const uint port = args.isEmpty() ? 0 : args.front().toUInt(&ok);
            if (ok && port > 65535) fail(QStringLiteral("--tcp: no port number: ") + args.front());
            if (ok) args.removeFirst();
            s.tcpPort = quint16(port);
        } else if (option == "--bind") {
            s.bind = value(option);
        } else if (option == "--rig") {
            s.options.rig = choose(option, value(option), rigs);
        } else if (option == "--drive") {
            s.options.drive = choose(option, value(option), drives);
        } else if (option == "--motor-power-off") {
            s.options.motorPowerOff = true;
        } else if (option == "--no-microstep") {
            s.options.microSteps = false;
        } else if (option == "--encoder-offset") {
            s.options.encoderOffset = value(option).toInt();
        } else if (option == "--rail") {
            s.options.rails = rails(option, value(option));
        } else if (option == "--wire") {
            s.options.wire = WireTiming::realistic();
        } else if (option == "--baud") {
            const double baud = number(option);
            if (baud > 10000000) fail(QStringLiteral("--baud: at most 10000000"));
            s.options.wire.baud = int(baud);
        } else if (option == "--command-latency") {
            s.options.wire.commandSeconds = number(option);
        } else if (option == "--move-latency") {
            s.options.wire.moveSeconds = number(option);
        } else if (option == "--adapter-latency") {
            s.options.wire.adapterSeconds = number(option);
        } else if (option == "--boot-delay") {
            f.bootDelay = number(option);
        } else if (option == "--reply-delay") {
            f.replyDelay = number(option);
        } else if (option == "--drop-acks") {
            f.dropAckProbability = number(option);
        } else if (option == "--drop-every") {
            f.dropAckEvery = int(number(option));
        } else if (option == "--split") {
            f.splitReplies = true;
        } else if (option == "--stray-byte") {
            f.strayLeadByteProbability = number(option);
        } else if (option == "--noise") {
            f.noisePerSecond = number(option);
        } else if (option == "--garbage") {
            f.garbagePerSecond = number(option);
        } else if (option == "--garbage-every") {
            f.garbageEvery = int(number(option));
        } else if (option == "--disconnect-after") {
            f.disconnectAfter = int(number(option));
        } else if (option == "--seed") {
            f.seed = quint32(number(option));
        } else if (option == "--log") {
            s.log = true;
        } else if (option == "--help" || option == "-h") {
            std::fputs(usage, stdout);
            std::exit(0);
        } else {
            fail(QStringLiteral("unknown option ") + option);
        }
    }
    if (!s.serial && !s.tcpPort) s.serial = true;
    return s;
}

void say(const QString& line) {
    std::fprintf(stdout, "%s\n", qPrintable(line));
    std::fflush(stdout);  // scripts wait for the device path
}

// SIGINT and SIGTERM arrive as readable data on a descriptor, so the event loop ends cleanly
// and the front ends remove their links.
int signalDescriptor() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC);
}

}  // namespace

int main(int argc, char* argv[]) {
    const int signalFd = signalDescriptor();
    QCoreApplication app(argc, argv);
    const Settings settings = parse(app.arguments().mid(1));

    QElapsedTimer started;
    started.start();
    const FrontEnd::Clock clock = [&started] { return started.nsecsElapsed() / 1e9; };

    // Each transport plays a board of its own, so that two clients never share one.
    auto makeBoard = [&settings] {
        auto board = std::make_unique<Board>(settings.options);
        Board* self = board.get();
        board->setReceivedObserver([&settings, self](const Received& command) {
            if (settings.log)
                say(QStringLiteral("%1 %2")
                        .arg(command.time, 0, 'f', 3)
                        .arg(QString::fromLatin1(command.command)));
            self->clearReceived();  // a program that runs for days keeps no record
        });
        return board;
    };

    std::unique_ptr<Board> serialBoard;
    std::unique_ptr<PtyFrontEnd> pty;
    if (settings.serial) {
        serialBoard = makeBoard();
        pty = std::make_unique<PtyFrontEnd>(*serialBoard, clock);
        QString error;
        if (!pty->open(&error)) fail(error);
        if (!settings.link.isEmpty() && !pty->linkTo(settings.link, &error)) fail(error);
        QObject::connect(pty.get(), &PtyFrontEnd::devicePathChanged,
                         [](const QString& path) { say(QStringLiteral("serial: ") + path); });
        say(QStringLiteral("serial: ") + pty->devicePath());
        if (!settings.link.isEmpty()) say(QStringLiteral("link: ") + settings.link);
        pty->setAutoPump(true);
    }
    std::unique_ptr<Board> tcpBoard;
    std::unique_ptr<TcpFrontEnd> tcp;
    if (settings.tcpPort) {
        const QHostAddress address(settings.bind);
        if (address.isNull()) fail(QStringLiteral("--bind: not an address: ") + settings.bind);
        tcpBoard = makeBoard();
        tcp = std::make_unique<TcpFrontEnd>(*tcpBoard, clock);
        QString error;
        if (!tcp->listen(address, *settings.tcpPort, &error)) fail(error);
        say(QStringLiteral("tcp: %1:%2").arg(tcp->address().toString()).arg(tcp->port()));
        tcp->setAutoPump(true);
    }

    QSocketNotifier stop(signalFd, QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    const int result = app.exec();
    if (pty) pty->close();
    if (tcp) tcp->close();
    ::close(signalFd);
    return result;
}
