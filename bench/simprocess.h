#pragma once

// The board simulator as a process of its own, for benchmarks: its timing does not share the
// measured program's event loop.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QIODevice>
#include <QProcess>
#include <QRegularExpression>
#include <QSerialPort>
#include <QStringList>

struct SimulatorProcess {
    QProcess process;
    QString serial;
    quint16 port = 0;
    QString printed;

    bool start(const QStringList& arguments) {
        process.start(
            QCoreApplication::applicationDirPath() + QStringLiteral("/../sim/quendrix-sim"),
            arguments);
        if (!process.waitForStarted(5000)) return false;
        const bool wantsTcp = arguments.contains(QStringLiteral("--tcp"));
        while ((serial.isEmpty() || (wantsTcp && port == 0)) && process.waitForReadyRead(5000)) {
            printed += QString::fromLocal8Bit(process.readAllStandardOutput());
            const auto serialMatch =
                QRegularExpression(QStringLiteral("serial: (\\S+)")).match(printed);
            const auto tcpMatch =
                QRegularExpression(QStringLiteral("tcp: [^:\\s]+:(\\d+)")).match(printed);
            if (serialMatch.hasMatch()) serial = serialMatch.captured(1);
            if (tcpMatch.hasMatch()) port = quint16(tcpMatch.captured(1).toUInt());
        }
        return !serial.isEmpty();
    }
    // Lines the program printed since the last call (with --log: one per command received).
    QStringList takePrinted() {
        process.waitForReadyRead(100);
        printed += QString::fromLocal8Bit(process.readAllStandardOutput());
        const QStringList lines = printed.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        printed.clear();
        return lines;
    }
    ~SimulatorProcess() {
        process.terminate();
        process.waitForFinished(3000);
    }
};

// Seconds per round trip: a command written, its acknowledgement line read back.
inline double rawRoundTrips(QIODevice& device, const QByteArray& command, int count) {
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i) {
        device.write(command);
        QByteArray reply;
        while (!reply.contains("\r\n") && device.waitForReadyRead(2000))
            reply += device.readAll();
    }
    return timer.nsecsElapsed() / 1e9 / count;
}

inline bool openSerial(QSerialPort& port, const QString& path) {
    port.setPortName(path);
    port.setBaudRate(115200);
    return port.open(QIODevice::ReadWrite);
}
