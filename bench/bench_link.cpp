// The link's costs, each against what the wire itself gives in the same run:
//   1. Output's round trip against the raw round trip of the same pseudo-terminal and the same
//      loopback socket, both talking to the board simulator (a separate process);
//      target: at most 1.5 times the raw round trip.
//   2. Processor time while Output waits 2 s for an acknowledgement that never comes;
//      target: under 2 % of one core.
//   3. Status lines evaluated per second by Auswerten against the line rate of a 115200-baud
//      wire; target: at least 100 times the wire rate.
//   4. The same exchange with replies cut into random pieces over the socket against the
//      serial port; target: at most 2 times.
// Usage: bench_link [round trips per transport, default 300]
#include "control/internals.h"
#include "link/link.h"
#include "simprocess.h"

#include <quendrix/ctlQuendrix.h>

#include <sys/resource.h>
#include <QApplication>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QTcpSocket>
#include <cstdio>

namespace {

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double outputRoundTrips(ctlQuendrix& control, const QString& command, int count) {
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i)
        control.Output(command);
    return timer.nsecsElapsed() / 1e9 / count;
}

// Connects the control's socket to the simulator, which serves one client at a time: once it
// has seen the one before go.
bool connectSocket(ctlQuendrix& control, quint16 port) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        QElapsedTimer settle;
        settle.start();
        while (settle.elapsed() < 100)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        control.Telnet1()->connectToHost(QHostAddress::LocalHost, port);
        if (!control.Telnet1()->waitForConnected(3000)) return false;
        settle.restart();
        while (settle.elapsed() < 100)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        if (control.Telnet1()->state() == QAbstractSocket::ConnectedState) return true;
        control.Telnet1()->abort();
    }
    return false;
}

void compareRoundTrips(int count) {
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--tcp"), QStringLiteral("0")})) {
        std::printf("round trip: the simulator did not start\n");
        return;
    }
    ctlQuendrix control;
    quendrix::internals(control).link()->setQuittiert(true);

    QSerialPort raw;
    if (!openSerial(raw, sim.serial)) return;
    const double rawSerial = rawRoundTrips(raw, "w800#", count);
    raw.close();
    if (!openSerial(*control.MSComm1(), sim.serial)) return;
    const double viaOutput = outputRoundTrips(control, QStringLiteral("w800#"), count);
    control.MSComm1()->close();
    std::printf("serial round trip: raw %.3f ms, Output %.3f ms, ratio %.2f (target <= 1.5)\n",
                rawSerial * 1e3, viaOutput * 1e3, viaOutput / rawSerial);

    QTcpSocket rawSocket;
    rawSocket.connectToHost(QHostAddress::LocalHost, sim.port);
    if (!rawSocket.waitForConnected(3000)) return;
    const double rawTcp = rawRoundTrips(rawSocket, "w800#\r\n", count);
    rawSocket.disconnectFromHost();
    if (rawSocket.state() != QAbstractSocket::UnconnectedState) rawSocket.waitForDisconnected(1000);
    if (!connectSocket(control, sim.port)) return;
    control.wifi = true;
    const double tcpOutput = outputRoundTrips(control, QStringLiteral("w800#"), count);
    std::printf("socket round trip: raw %.3f ms, Output %.3f ms, ratio %.2f (target <= 1.5)\n",
                rawTcp * 1e3, tcpOutput * 1e3, tcpOutput / rawTcp);
}

// The same exchange with every reply cut into random pieces, over the socket and over the
// serial port: a line whose end comes apart from it must cost the socket no more than the port.
void compareSplitReplies(int count) {
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--tcp"), QStringLiteral("0"),
                    QStringLiteral("--split")})) {
        std::printf("split replies: the simulator did not start\n");
        return;
    }
    ctlQuendrix control;
    quendrix::internals(control).link()->setQuittiert(true);
    if (!openSerial(*control.MSComm1(), sim.serial)) return;
    const double serial = outputRoundTrips(control, QStringLiteral("w800#"), count);
    control.MSComm1()->close();
    if (!connectSocket(control, sim.port)) return;
    control.wifi = true;
    const double socket = outputRoundTrips(control, QStringLiteral("w800#"), count);
    std::printf("split replies: serial %.3f ms, socket %.3f ms per round trip\n", serial * 1e3,
                socket * 1e3);
    std::printf("RATIO split-tcp-vs-serial %.2f <= 2\n", socket / serial);
}

void measureUnansweredWait() {
    SimulatorProcess sim;
    if (!sim.start({QStringLiteral("--serial"), QStringLiteral("--rig"), QStringLiteral("silent")}))
        return;
    ctlQuendrix control;
    if (!openSerial(*control.MSComm1(), sim.serial)) return;
    quendrix::internals(control).link()->setQuittiert(true);
    QElapsedTimer wall;
    const double before = processorSeconds();
    wall.start();
    control.Output(QStringLiteral("r#"));
    const double seconds = wall.nsecsElapsed() / 1e9;
    const double share = (processorSeconds() - before) / seconds;
    std::printf(
        "unanswered Output: %.2f s waited, processor share %.3f %% of one core (target < 2 %%)\n",
        seconds, 100 * share);
}

void measureEvaluation() {
    ctlQuendrix control;
    quendrix::internals(control).link()->setErwartet(QStringLiteral("T|"));
    const QString line = QStringLiteral("q #123456 ~123450 *16 |B\r\n");
    const int count = 100000;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i)
        control.Auswerten(line, false);
    const double perSecond = count / (timer.nsecsElapsed() / 1e9);
    const double wirePerSecond = 115200.0 / 10 / line.size();  // 8N1: ten bits a byte
    std::printf(
        "evaluation: %.0f status lines/s, a 115200-baud wire carries %.0f lines/s, "
        "ratio %.0f (target >= 100)\n",
        perSecond, wirePerSecond, perSecond / wirePerSecond);
    std::printf("RATIO evaluation-vs-wire %.0f >= 100\n", perSecond / wirePerSecond);
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int count = argc > 1 ? QByteArray(argv[1]).toInt() : 300;
    compareRoundTrips(count);
    compareSplitReplies(count / 3);
    measureUnansweredWait();
    measureEvaluation();
    return 0;
}
