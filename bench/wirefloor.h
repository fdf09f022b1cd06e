#pragma once

// The wire floor of an exchange: how long a host that costs nothing would need for it over the
// simulated wire. The commands are replayed through a board engine with the same options as the
// simulator process, on the engine's own clock; each is written the moment the one before is
// done, so the time is the bytes that cross in both directions at the baud rate plus the
// firmware's and the adapter's latencies, exactly as the simulator applies them (a write waits
// the adapter's latency, a command the firmware's time after its last byte, a move the motor's
// start, a reply line the wire behind the lines before it and then the adapter).
#include "sim/board.h"

#include <QByteArray>
#include <QChar>
#include <QList>
#include <algorithm>
#include <functional>

// Over the serial port a command is answered by a line without "q" or "Q", or by one that
// carries its acknowledgement marker (its letter in upper case and "|").
inline bool answered(const QByteArray& received, char letter) {
    const QByteArray marker = QByteArray(1, char(QChar::toUpper(char16_t(letter)))) + '|';
    for (const QByteArray& line : received.split('\n')) {
        if (!line.endsWith('\r')) continue;
        if ((!line.contains('q') && !line.contains('Q')) || line.contains(marker)) return true;
    }
    return false;
}

// A move's end: a status line with "|F".
inline bool moveFinished(const QByteArray& received) {
    return received.contains("|F");
}

struct WireExchange {
    double seconds = 0;
    qsizetype bytesOut = 0;  // host to board
    qsizetype bytesIn = 0;   // board to host, up to the moment each command was done
    bool complete = true;    // every command was done (else the board never answered one)
};

class WireReplay {
public:
    explicit WireReplay(const quendrix::sim::Options& options) : board_(options) {}

    // Writes `bytes` now and runs the board until `done` holds for what came back since.
    WireExchange send(const QByteArray& bytes, const std::function<bool(const QByteArray&)>& done) {
        WireExchange exchange;
        const double start = now_;
        board_.receive(bytes, now_);
        exchange.bytesOut = bytes.size();
        QByteArray received;
        for (int step = 0; step < 100000; ++step) {
            received += board_.output(now_);
            if (done(received)) {
                exchange.bytesIn = received.size();
                exchange.seconds = now_ - start;
                return exchange;
            }
            const std::optional<double> due = board_.nextDue();
            if (!due) break;
            now_ = std::max(now_, *due);
        }
        exchange.complete = false;
        return exchange;
    }
    // A command of the component: done with its acknowledgement, and a move (whose start the
    // board reports with "|B") with its end as well.
    WireExchange command(const QByteArray& bytes) {
        return send(bytes, [letter = bytes.at(0)](const QByteArray& received) {
            return answered(received, letter) &&
                   (!received.contains("|B") || moveFinished(received));
        });
    }

private:
    quendrix::sim::Board board_;
    double now_ = 0;
};

// The commands one after the other, each done as WireReplay::command says.
inline WireExchange wireFloor(const quendrix::sim::Options& options,
                              const QList<QByteArray>& writes) {
    WireReplay replay(options);
    WireExchange total;
    for (const QByteArray& bytes : writes) {
        const WireExchange one = replay.command(bytes);
        total.seconds += one.seconds;
        total.bytesOut += one.bytesOut;
        total.bytesIn += one.bytesIn;
        total.complete = total.complete && one.complete;
    }
    return total;
}
