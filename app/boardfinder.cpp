#include "boardfinder.h"

#include <QSerialPortInfo>

namespace {
const QByteArray kIdentify = "?#\r\n";
// The words of an identification that name a rig the panel drives (a board whose motor supply
// is off names that instead of its rig).
const char* const kKnownBoards[] = {"Motorspannung", "Photostand", "Photostepper", "Binokular",
                                    "Mikroskop"};
}  // namespace

BoardFinder::BoardFinder(QObject* parent) : QObject(parent) {
    round_.setInterval(kQueryMilliseconds);
    connect(&round_, &QTimer::timeout, this, [this] {
        if (asked_ < kQueries)
            ask();
        else
            finish(nullptr, {});
    });
}

BoardFinder::~BoardFinder() {
    cancel();
}

QStringList BoardFinder::candidates(const QStringList& named, bool systemPorts,
                                    const QString& skip) {
    QStringList devices;
    const auto add = [&](const QString& device) {
        const QString trimmed = device.trimmed();
        if (!trimmed.isEmpty() && trimmed != skip && !devices.contains(trimmed))
            devices.append(trimmed);
    };
    if (systemPorts) {
        for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
            if (!info.systemLocation().startsWith(QStringLiteral("/dev/pts/")))
                add(info.systemLocation());
    }
    for (const QString& device : named)
        add(device);
    return devices;
}

bool BoardFinder::identifies(const QString& line) {
    if (!line.contains(u"Arduino")) return false;
    for (const char* word : kKnownBoards)
        if (line.contains(QLatin1String(word))) return true;
    return false;
}

void BoardFinder::start(const QStringList& devices, qint32 baud) {
    cancel();
    ++search_;
    for (const QString& device : devices) {
        auto probe = std::make_unique<Probe>();
        probe->device = device;
        probe->port = std::make_unique<QSerialPort>();
        QSerialPort& port = *probe->port;
        port.setPortName(device);
        port.setBaudRate(baud);
        port.setParity(QSerialPort::NoParity);
        port.setDataBits(QSerialPort::Data8);
        port.setStopBits(QSerialPort::OneStop);
        port.setFlowControl(QSerialPort::NoFlowControl);
        if (!port.open(QIODevice::ReadWrite)) {
            probe->outcome = tr("lässt sich nicht öffnen (%1)").arg(port.errorString());
            probe->port.reset();
        } else {
            Probe* taken = probe.get();
            connect(&port, &QSerialPort::readyRead, this, [this, taken] { take(*taken); });
        }
        probes_.push_back(std::move(probe));
    }
    asked_ = 0;
    if (probes_.empty()) {
        QTimer::singleShot(0, this, [this] { emit notFound({}); });
        return;
    }
    ask();
    round_.start();
}

void BoardFinder::ask() {
    ++asked_;
    for (const auto& probe : probes_) {
        if (!probe->port || !probe->outcome.isEmpty()) continue;
        probe->port->write(kIdentify);
    }
}

// The answer comes line by line; a stray lead byte or noise before it does not matter, as
// only whole lines are looked at.
std::optional<QString> BoardFinder::readAnswer(QByteArray& received, QString* other) {
    qsizetype end;
    while ((end = received.indexOf("\r\n")) >= 0) {
        const QString line = QString::fromLatin1(received.left(end)).trimmed();
        received.remove(0, end + 2);
        if (identifies(line)) return line;
        if (other && line.contains(u"Arduino")) *other = line;
    }
    // A port that chatters without line ends must not fill the memory.
    if (received.size() > kLongestLine) received.clear();
    return std::nullopt;
}

void BoardFinder::take(Probe& probe) {
    probe.received += probe.port->readAll();
    QString other;
    const std::optional<QString> line = readAnswer(probe.received, &other);
    if (!other.isEmpty()) probe.outcome = tr("antwortet „%1“").arg(other);
    if (!line) return;
    probe.outcome = *line;
    // Not from inside the port's own notification: finishing closes it.
    Probe* match = &probe;
    QTimer::singleShot(0, this, [this, match, found = *line, search = search_] {
        if (search == search_) finish(match, found);
    });
}

void BoardFinder::finish(const Probe* match, const QString& identification) {
    if (probes_.empty()) return;
    round_.stop();
    QString device;
    QStringList tried;
    for (const auto& probe : probes_) {
        if (probe.get() == match) device = probe->device;
        tried << probe->device + QStringLiteral(": ") +
                     (probe->outcome.isEmpty() ? tr("keine Antwort") : probe->outcome);
    }
    cancel();
    if (match)
        emit found(device, identification);
    else
        emit notFound(tried);
}

void BoardFinder::cancel() {
    round_.stop();
    for (auto& probe : probes_) {
        if (!probe->port) continue;
        // What a deaf port has not taken is dropped, so closing it never waits for it.
        probe->port->disconnect(this);
        probe->port->clear();
        probe->port->close();
        probe->port.release()->deleteLater();
    }
    probes_.clear();
}
