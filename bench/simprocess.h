#pragma once

// The board simulator as a process of its own, for benchmarks: its timing does not share the
// measured program's event loop.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QIODevice>
#include <QProcess>
#include <QRegularExpression>
#include <QSerialPort>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>

struct SimulatorProcess {
    QProcess process;
    QString serial;
    quint16 port = 0;

    // What the simulator prints goes to a file, not a pipe: a pipe would wake the measured
    // program's event loop once per logged command.
    bool start(const QStringList& arguments) {
        if (!folder_.isValid()) return false;
        output_.setFileName(folder_.filePath(QStringLiteral("simulator.out")));
        process.setStandardOutputFile(output_.fileName());
        process.start(
            QCoreApplication::applicationDirPath() + QStringLiteral("/../sim/quendrix-sim"),
            arguments);
        if (!process.waitForStarted(5000)) return false;
        const bool wantsTcp = arguments.contains(QStringLiteral("--tcp"));
        QElapsedTimer waited;
        waited.start();
        QString printed;
        while ((serial.isEmpty() || (wantsTcp && port == 0)) && waited.elapsed() < 5000) {
            QThread::msleep(10);
            printed += readNew();
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
        QThread::msleep(100);
        return readNew().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    ~SimulatorProcess() {
        process.terminate();
        process.waitForFinished(3000);
    }

private:
    QString readNew() {
        if (!output_.isOpen() && !output_.open(QIODevice::ReadOnly)) return {};
        return QString::fromLocal8Bit(output_.readAll());
    }

    QTemporaryDir folder_;
    QFile output_;
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
