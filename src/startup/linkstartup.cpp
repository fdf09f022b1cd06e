// Opening the link to the board and identifying it, over the serial port or WiFi.
#include "link/link.h"
#include "settings/guard.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/settingnumbers.h"
#include "settings/wait.h"
#include "startup/startup.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPort>
#include <QTcpSocket>

namespace quendrix {

namespace {
const QByteArray kIdentify = "?#\r\n";
constexpr int kSerialAttempts = 5;
constexpr double kSerialAttemptSeconds = 2;
constexpr double kConnectSeconds = 61;
constexpr double kWakeSeconds = 3;  // the first answer over WiFi only wakes the link
constexpr double kAnswerSeconds = 21;
constexpr double kRetrySeconds = 6;
constexpr quint16 kWifiPort = 23;
}  // namespace

Startup::Startup(Rig& rig, QWidget& control, Panel& panel, Link& link, Waiter& waiter,
                 const RigParts& parts, bool& wifi)
    : rig_(rig),
      control_(control),
      panel_(panel),
      link_(link),
      waiter_(waiter),
      parts_(parts),
      wifi_(wifi) {
    connect(panel_.Setzen, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { Setzen_Click(); }));
    connect(panel_.typ, &QPushButton::clicked, this, guardedSlot(rig_, [this] { typ_Click(); }));
}

QString Startup::serialDeviceFor(const QString& port) {
    bool isNumber = false;
    const int number = Trim(port).toInt(&isNumber);
    if (!isNumber) return Trim(port);
#ifdef Q_OS_WIN
    return QStringLiteral("COM%1").arg(number);
#else
    // Arduinos appear as ttyACM, USB adapters as ttyUSB, built-in ports as ttyS.
    for (const char* kind : {"/dev/ttyACM", "/dev/ttyUSB", "/dev/ttyS"}) {
        const QString device = QLatin1String(kind) + QString::number(number);
        if (QFileInfo::exists(device)) return device;
    }
    return QStringLiteral("/dev/ttyACM%1").arg(number);
#endif
}

std::pair<QString, quint16> Startup::wifiAddressFor(const QString& address) {
    const QString trimmed = Trim(address);
    const qsizetype colon = trimmed.lastIndexOf(QLatin1Char(':'));
    bool isPort = false;
    const uint port = colon > 0 ? trimmed.mid(colon + 1).toUInt(&isPort) : 0;
    if (isPort && port > 0 && port <= 65535) return {trimmed.left(colon), quint16(port)};
    return {trimmed, kWifiPort};
}

// A known rig controller says "Arduino" and what it is.
bool Startup::identifiedBoard(const QString& line) const {
    auto anyText = [this](const QString& word) {
        return std::any_of(link_.sKennText().begin(), link_.sKennText().end(),
                           [&](const QString& text) { return text.contains(word); });
    };
    return line.contains(u"Motorspannung") || line.contains(u"Photostand") ||
           anyText(QStringLiteral("Photostepper")) || anyText(QStringLiteral("Binokular")) ||
           anyText(QStringLiteral("Mikroskop"));
}

void Startup::Comm_Starten() {
    Panel& p = panel_;
    const QString section = rig_.MotorName();
    const qint32 baud = rig_.settingNumbers().wholeNumber(section, QStringLiteral("baud"),
                                                          QStringLiteral("115200"), 1);
    p.ComPort->setText(rig_.ini(section, QStringLiteral("port"), QStringLiteral("6")));
    p.ComBaud->setText(QString::number(baud));
    setValue(p.Check2, 1);
    wifi_ = false;

    QSerialPort* port = p.MSComm1;
    if (port->isOpen()) port->close();
    port->setPortName(serialDeviceFor(p.ComPort->text()));
    port->setBaudRate(baud);
    port->setParity(QSerialPort::NoParity);
    port->setDataBits(QSerialPort::Data8);
    port->setStopBits(QSerialPort::OneStop);
    if (!port->open(QIODevice::ReadWrite)) return;  // the status box keeps what it said

    // An Arduino resets when its port opens and is deaf for a moment: ask up to five times.
    link_.setQuittiert(false);
    for (int attempt = 0; attempt < kSerialAttempts && !link_.bQuittiert(); ++attempt) {
        port->write(kIdentify);
        port->flush();
        waiter_.waitFor([this] { return link_.bQuittiert(); }, kSerialAttemptSeconds);
    }
    if (!link_.sLetzteZeile().contains(u"Arduino")) {
        p.Text1[0]->setText(QStringLiteral("Nicht verbunden"));
        port->close();
        return;
    }
    if (!identifiedBoard(link_.sLetzteZeile())) {
        p.Text1[0]->setText(QStringLiteral("Falsch verbunden"));
        port->close();
        return;
    }
    p.Text1[0]->setText(link_.sLetzteZeile());
    Motor_Starten();
}

void Startup::WiFi_Starten() {
    Panel& p = panel_;
    link_.setQuittiert(false);
    const QString address = rig_.ini(rig_.MotorName(), QStringLiteral("IP"), QString());
    if (address.isEmpty()) {
        rig_.platform().messageBox(tr("Keine IP vergeben für diese Steuerung"), MsgBox::OKOnly,
                                   QStringLiteral("WiFi_Starten"));
        return;
    }
    wifi_ = true;
    QTcpSocket* socket = p.Telnet1;
    const auto [host, port] = wifiAddressFor(address);
    socket->connectToHost(host, port);
    waiter_.doEvents();
    waiter_.waitFor(
        [socket] {
            return socket->state() != QAbstractSocket::HostLookupState &&
                   socket->state() != QAbstractSocket::ConnectingState;
        },
        kConnectSeconds);

    auto ask = [&](double seconds) {
        socket->write(kIdentify);
        socket->flush();
        waiter_.doEvents();
        waiter_.waitFor([this] { return link_.bQuittiert(); }, seconds);
    };
    if (socket->state() == QAbstractSocket::ConnectedState) {
        ask(kWakeSeconds);  // this answer only wakes the link
        link_.setQuittiert(false);
        ask(kAnswerSeconds);
        if (!link_.bQuittiert()) ask(kRetrySeconds);
    }

    if (!link_.sLetzteZeile().contains(u"Arduino")) {
        p.Text1[0]->setText(QStringLiteral("WiFi Nicht verbunden"));
    } else if (!identifiedBoard(link_.sLetzteZeile())) {
        p.Text1[0]->setText(QStringLiteral("WiFi Falsch verbunden"));
    } else {
        p.Text1[0]->setText(link_.sLetzteZeile());
        Motor_Starten();
    }
    // The board reports its motor supply switched off.
    if (link_.sLetzteZeile().contains(u"Motorspannung") ||
        link_.sKennText()[1].contains(u"Motorspannung"))
        rig_.platform().messageBox(tr("Versorgungsspannung am Steuergerät einschalten"),
                                   MsgBox::OKOnly, tr("Kommunikation starten"));
}

}  // namespace quendrix
