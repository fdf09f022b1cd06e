#include "rigstartup.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QDir>
#include <QLineEdit>
#include <QSerialPort>
#include <QSignalBlocker>
#include <QTcpSocket>
#include <QTimer>

namespace {

// Why a serial port did not open, in the words a photographer can act on.
QString openFailure(const QSerialPort& port, bool forWindow) {
    switch (port.error()) {
        case QSerialPort::DeviceNotFoundError:
            return forWindow ? RigStartup::tr("dieses Gerät gibt es nicht")
                             : QStringLiteral("there is no such device");
        case QSerialPort::PermissionError:
            return forWindow
                       ? RigStartup::tr("keine Berechtigung, oder ein anderes Programm benutzt ihn")
                       : QStringLiteral("permission denied, or another program uses it");
        default:
            return port.errorString();
    }
}

// Why a connection to the board failed.
QString connectFailure(const QTcpSocket& socket, bool forWindow) {
    switch (socket.error()) {
        case QAbstractSocket::ConnectionRefusedError:
            return forWindow ? RigStartup::tr("die Verbindung wurde abgelehnt")
                             : QStringLiteral("the connection was refused");
        case QAbstractSocket::HostNotFoundError:
            return forWindow ? RigStartup::tr("diese Adresse ist unbekannt")
                             : QStringLiteral("the address is unknown");
        case QAbstractSocket::NetworkError:
            return forWindow ? RigStartup::tr("das Netz ist nicht erreichbar")
                             : QStringLiteral("the network cannot be reached");
        default:
            return socket.errorString();
    }
}

}  // namespace

QString serialDevice(const QSerialPort& port) {
    const QString name = port.portName();
#ifdef Q_OS_UNIX
    if (!name.isEmpty() && !name.startsWith(QLatin1Char('/')))
        return QStringLiteral("/dev/") + name;
#endif
    return name;
}

RigStartup::RigStartup(ctlQuendrix& panel, Options::Board board) : panel_(panel), board_(board) {
}

bool RigStartup::run(double deadlineSeconds) {
    deadline_ = deadlineSeconds;
    const QMetaObject::Connection readiness = QObject::connect(
        &panel_, &ctlQuendrix::Bereitschaft, [this](bool ready) { ready_ = ready_ || ready; });
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, [this] {
        timedOut_ = true;
        panel_.Terminate();
    });
    if (deadlineSeconds > 0) deadline.start(int(deadlineSeconds * 1000));
    sentBefore_ = panel_.commandsSent();
    unansweredBefore_ = panel_.commandsUnanswered();
    const QMetaObject::Connection silence = QObject::connect(
        &panel_, &ctlQuendrix::acknowledgingChanged, [this, deadlineSeconds](bool acknowledging) {
            if (acknowledging || deadlineSeconds <= 0) return;
            silent_ = true;
            panel_.Terminate();
        });
    try {
        if (board_ == Options::Board::Wifi)
            panel_.WiFi_Starten();
        else
            panel_.Comm_Starten();
    } catch (const std::exception& error) {
        failure_ = QString::fromLocal8Bit(error.what());
    }
    deadline.stop();
    QObject::disconnect(readiness);
    QObject::disconnect(silence);
    silent_ = silent_ || !panel_.acknowledging();
    // A start-up cut short configured the board only in part.
    ready_ = ready_ && !timedOut_ && !silent_ && failure_.isEmpty();
    if (ready_) {
        recalculatePlan();
        alignDirections();
    }
    return ready_;
}

// The panel sends a direction only when its direction box changes, and a board may power on
// running the other way than the box shows: the first move down after start-up would run
// up. The board is told the direction the panel shows, so the two agree from the start.
void RigStartup::alignDirections() {
    const int axes = panel_.Controltyp() == 0 ? 2 : 1;
    for (int axis = 0; axis < axes; ++axis) {
        const bool forward = quendrix::value(panel_.panel()->Check0[4 + axis]) == 1;
        QString command = forward ? QStringLiteral("v#") : QStringLiteral("z#");
        if (axis == 1) command = command.toUpper();
        try {
            panel_.Output(command);
        } catch (const std::exception& error) {
            failure_ = QString::fromLocal8Bit(error.what());
            ready_ = false;
            return;
        }
    }
}

// The lens changer and the microscope read the number of planes before the plan's start and
// end, and only the bellows rig recalculates the plan after both: the planes are checked
// against an empty range, turn red and give 0 steps, and a resumed plan would be refused.
// The host recalculates it as an edit of the planes would.
void RigStartup::recalculatePlan() {
    QLineEdit* planes = panel_.panel()->Ebenen;
    const QString text = planes->text();
    {
        const QSignalBlocker quiet(planes);
        planes->clear();
    }
    planes->setText(text);
}

QString RigStartup::where(bool forWindow) const {
    const QString file = QDir::toNativeSeparators(panel_.inifile());
    const QString section = panel_.MotorName();
    if (board_ == Options::Board::Wifi) {
        const QString address = panel_.ini(section, QStringLiteral("IP"), QString()).trimmed();
        if (address.isEmpty())
            return forWindow ? tr("Für die WiFi-Steuerung ist keine Adresse eingetragen "
                                  "(„IP“ in [%1] von %2)")
                                   .arg(section, file)
                             : QStringLiteral("no WiFi address is set (\"IP\" in [%1] of %2)")
                                   .arg(section, file);
        if (silent_)
            return forWindow ? tr("Die Steuerung unter %1 („IP“ in [%2] von %3)")
                                   .arg(address, section, file)
                             : QStringLiteral("the board at %1 (\"IP\" in [%2] of %3)")
                                   .arg(address, section, file);
        return forWindow ? tr("Keine Steuerung unter %1 gefunden („IP“ in [%2] von %3)")
                               .arg(address, section, file)
                         : QStringLiteral("no rig found at %1 (\"IP\" in [%2] of %3)")
                               .arg(address, section, file);
    }
    const QString port = panel_.panel()->ComPort->text();
    const QString device = serialDevice(*panel_.MSComm1());
    if (silent_)
        return forWindow ? tr("Die Steuerung an %1 (Anschluss „%2“ in [%3] von %4)")
                               .arg(device, port, section, file)
                         : QStringLiteral("the board on %1 (port \"%2\" in [%3] of %4)")
                               .arg(device, port, section, file);
    return forWindow ? tr("Keine Steuerung an %1 gefunden (Anschluss „%2“ in [%3] von %4)")
                           .arg(device, port, section, file)
                     : QStringLiteral("no rig found on %1 (port \"%2\" in [%3] of %4)")
                           .arg(device, port, section, file);
}

QString RigStartup::why(bool forWindow) const {
    if (silent_) {
        const quint64 sent = panel_.commandsSent() - sentBefore_;
        const quint64 unanswered = panel_.commandsUnanswered() - unansweredBefore_;
        return forWindow ? tr("die Steuerung antwortet auf die Kennung, bestätigt aber ihre "
                              "Befehle nicht (%1 von %2 ohne Antwort)")
                               .arg(unanswered)
                               .arg(sent)
                         : QStringLiteral(
                               "the board answers its identification but does not "
                               "acknowledge its commands (%1 of %2 unanswered)")
                               .arg(unanswered)
                               .arg(sent);
    }
    if (timedOut_)
        return forWindow ? tr("keine Antwort innerhalb von %1 s").arg(deadline_)
                         : QStringLiteral("no answer within %1 s").arg(deadline_);
    if (!failure_.isEmpty())
        return forWindow ? tr("der Start schlug fehl: %1").arg(failure_)
                         : QStringLiteral("the start-up failed: %1").arg(failure_);
    if (board_ == Options::Board::Wifi) {
        const QTcpSocket& socket = *panel_.Telnet1();
        if (socket.error() != QAbstractSocket::UnknownSocketError)
            return forWindow ? tr("die Verbindung scheiterte: %1").arg(connectFailure(socket, true))
                             : QStringLiteral("the connection failed: %1")
                                   .arg(connectFailure(socket, false));
    } else if (const QSerialPort& port = *panel_.MSComm1(); port.error() != QSerialPort::NoError) {
        return forWindow
                   ? tr("der Anschluss lässt sich nicht öffnen: %1").arg(openFailure(port, true))
                   : QStringLiteral("the port cannot be opened: %1").arg(openFailure(port, false));
    }
    const QString said = panel_.panel()->Text1[0]->text().trimmed();
    if (said.isEmpty()) return forWindow ? tr("keine Antwort") : QStringLiteral("no answer");
    return forWindow ? tr("die Steuerung meldet „%1“").arg(said)
                     : QStringLiteral("the panel says \"%1\"").arg(said);
}

QString RigStartup::summary(bool forWindow) const {
    if (ready_) return {};
    return where(forWindow) + QStringLiteral(": ") + why(forWindow) + QLatin1Char('.');
}

QString RigStartup::advice(bool forWindow) const {
    if (silent_)
        return forWindow ? tr("Bitte prüfen: die Baudrate („baud“ in der Einstellungsdatei), "
                              "die Firmware der Steuerung und das Kabel.")
                         : QStringLiteral(
                               "Check the baud rate (\"baud\" in the settings file), "
                               "the board's firmware and the cable.");
    if (board_ == Options::Board::Wifi)
        return forWindow ? tr("Bitte prüfen: Stromversorgung und WiFi der Steuerung, "
                              "die Adresse in der Einstellungsdatei, --board und --ini.")
                         : QStringLiteral(
                               "Check the board's power and WiFi, the address in the "
                               "settings file, --board and --ini.");
    return forWindow ? tr("Bitte prüfen: Kabel und Stromversorgung der Steuerung, den "
                          "Anschluss in der Einstellungsdatei (z. B. /dev/ttyACM0), "
                          "--board und --ini, und ob Sie den Anschluss benutzen dürfen "
                          "(Gruppe dialout).")
                     : QStringLiteral(
                           "Check the board's cable and power, the port in the settings "
                           "file (e.g. /dev/ttyACM0), --board and --ini, and that you may "
                           "use the port (the group dialout).");
}
