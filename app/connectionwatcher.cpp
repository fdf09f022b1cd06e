#include "connectionwatcher.h"

#include "rigstartup.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QSerialPort>
#include <QTcpSocket>
#include <QTimer>

ConnectionWatcher::ConnectionWatcher(ctlQuendrix& panel, QObject* parent)
    : QObject(parent), panel_(panel) {
    connect(&panel_, &ctlQuendrix::Bereitschaft, this, [this](bool ready) {
        inService_ = ready;
        served_ = served_ || ready;
        if (ready) lost_ = false;
    });
    connect(panel_.MSComm1(), &QSerialPort::errorOccurred, this,
            [this](QSerialPort::SerialPortError error) { serialFailed(error); });
    connect(panel_.Telnet1(), &QTcpSocket::disconnected, this, &ConnectionWatcher::socketDropped);
}

// A port whose device is gone reports a resource error; one that can no longer be read or
// written is as dead. Closing it is left to the event loop: the port is still inside its own
// notification.
void ConnectionWatcher::serialFailed(int error) {
    if (!watching_ || starting_ || !inService_ || panel_.wifi) return;
    if (error != QSerialPort::ResourceError && error != QSerialPort::ReadError &&
        error != QSerialPort::WriteError)
        return;
    // A device that vanished reads as whatever system call failed first ("permission
    // denied", "I/O error"), which would send the photographer looking in the wrong place.
    const QString reason =
        QFileInfo::exists(serialDevice(*panel_.MSComm1()))
            ? panel_.MSComm1()->errorString()
            : tr("das Gerät ist nicht mehr da (Kabel gezogen oder Steuerung ausgeschaltet?)");
    inService_ = false;
    QTimer::singleShot(0, this, [this, reason] {
        panel_.MSComm1()->close();
        markLost(tr("Keine Verbindung zur Steuerung an %1: %2").arg(where(), reason));
    });
}

void ConnectionWatcher::socketDropped() {
    if (!watching_ || starting_ || !inService_ || !panel_.wifi) return;
    inService_ = false;
    markLost(tr("Keine WiFi Verbindung zur Steuerung unter %1: die Verbindung wurde getrennt")
                 .arg(where()));
}

void ConnectionWatcher::markLost(const QString& what) {
    if (!watching_) return;
    lost_ = true;
    emit lost(what);
}

bool ConnectionWatcher::reconnect() {
    if (starting_) return false;
    starting_ = true;
    if (served_ && !inService_) saveState();
    // A socket half-closed by the drop would refuse the new connection.
    if (wifi()) panel_.Telnet1()->abort();
    RigStartup startup(panel_, board_);
    const bool ready = startup.run();
    starting_ = false;
    if (ready) {
        inService_ = true;
        lost_ = false;
        emit restored();
    } else {
        emit failed(startup.summary(true), startup.advice(true));
    }
    return ready;
}

// The panel's own shutdown writes the positions, the plan and the switches to the settings
// file, which the start-up then reads back. On the dead link its stop commands find the port
// closed, or the socket unconnected, and the panel reports that as it always does.
void ConnectionWatcher::saveState() {
    try {
        panel_.Motor_Abschalten();
    } catch (const std::exception& error) {
        qWarning("quendrix: saving the rig's state failed: %s", error.what());
    }
}

QString ConnectionWatcher::where() const {
    const QString section = panel_.MotorName();
    if (wifi()) return panel_.ini(section, QStringLiteral("IP"), QString()).trimmed();
    if (panel_.MSComm1()->portName().isEmpty())
        return panel_.ini(section, QStringLiteral("port"), QStringLiteral("6")).trimmed();
    return serialDevice(*panel_.MSComm1());
}
