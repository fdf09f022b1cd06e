#pragma once

#include <QCoreApplication>
#include <QList>
#include <QObject>
#include <QSerialPort>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <memory>
#include <optional>
#include <vector>

// Looks for the board on the serial ports present, as the panel identifies it when it starts
// its serial link: it asks "?#" and takes a port whose answer says "Arduino" and names a rig
// the panel drives. A USB-serial adapter plugged in again often comes back under another name
// (/dev/ttyUSB0 becomes /dev/ttyUSB1); this finds it there.
//
// Every port is asked at once, each on a port object of its own (never the panel's), so a
// search takes the same bounded time however many ports there are and whether they answer or
// not. Pseudo-terminals are never among the system's ports: they belong to other programs, and
// are asked only when named.
class BoardFinder : public QObject {
    Q_OBJECT
public:
    // How often a port is asked, and how long each answer is waited for: a board resets when
    // its port opens and is deaf for a moment.
    static constexpr int kQueries = 4;
    static constexpr int kQueryMilliseconds = 1500;

    explicit BoardFinder(QObject* parent = nullptr);
    ~BoardFinder() override;

    // The ports to ask: the system's serial ports (unless systemPorts is false), then the named
    // ones, each once; `skip` (the port the panel holds) is left out.
    static QStringList candidates(const QStringList& named, bool systemPorts,
                                  const QString& skip = {});
    // Whether an answer is a known rig's identification.
    static bool identifies(const QString& line);
    // Takes the whole lines out of what a port brought: the first that identifies a known rig
    // is returned; an Arduino that is no rig goes to `other`. What never ends its line is not
    // kept beyond kLongestLine bytes.
    static std::optional<QString> readAnswer(QByteArray& received, QString* other);
    static constexpr qsizetype kLongestLine = 4096;

    // Starts a search on `devices` at `baud`; found() or notFound() follows.
    void start(const QStringList& devices, qint32 baud);
    void cancel();
    bool running() const { return !probes_.empty(); }

signals:
    void found(const QString& device, const QString& identification);
    // No port answered as a rig; `tried` names each port and what it did.
    void notFound(const QStringList& tried);

private:
    struct Probe {
        QString device;
        std::unique_ptr<QSerialPort> port;
        QByteArray received;
        QString outcome;  // why it is not the board, once known
    };

    void ask();
    void take(Probe& probe);
    void finish(const Probe* match, const QString& identification);

    std::vector<std::unique_ptr<Probe>> probes_;
    QTimer round_;
    int asked_ = 0;
    int search_ = 0;  // a match found by an earlier search is not this one's
};
