#pragma once

#include <QByteArray>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

namespace quendrix::sim {

class Alarm;
class Board;

// What the pseudo-terminal and TCP front ends share: the board, the clock that drives it, and
// the pump that moves bytes between the link and the board. Tests call pump() themselves with
// a scripted clock; a program turns on the automatic pump, which runs every few milliseconds,
// whenever input arrives and, with wire timing, when the board has something due.
class FrontEnd : public QObject {
    Q_OBJECT
public:
    using Clock = std::function<double()>;

    FrontEnd(Board& board, Clock clock, QObject* parent = nullptr);
    ~FrontEnd() override;

    Board& board() const { return board_; }
    // True while a client holds the link (the device is open, a socket is connected).
    bool linkUp() const { return linkUp_; }
    // True while bytes the board sent still wait for room in the transport.
    virtual bool writesPending() const = 0;

    // Notices the link opening or closing, hands what arrived to the board, writes what the
    // board has due and closes the link when the board asks for it.
    virtual void pump() = 0;

    void setAutoPump(bool on);
    bool autoPump() const { return timer_.isActive(); }

signals:
    void linkOpened();
    void linkClosed();

protected:
    virtual void write(const QByteArray& bytes) = 0;
    virtual void dropLink() = 0;  // the board asked for a disconnect
    virtual void autoPumpChanged() {}

    void setLinkUp(bool up);
    // Receives `in`, writes the bytes due and carries out a requested disconnect.
    void exchange(const QByteArray& in);
    double now() const { return clock_(); }

    // Guards pump() against re-entry from signals it causes itself.
    class Pumping {
    public:
        explicit Pumping(bool& flag) : flag_(flag), entered_(!flag) { flag_ = true; }
        ~Pumping() {
            if (entered_) flag_ = false;
        }
        bool entered() const { return entered_; }

    private:
        bool& flag_;
        bool entered_;
    };
    bool pumping_ = false;

private:
    Board& board_;
    Clock clock_;
    QTimer timer_;
    // With wire timing the pump also wakes when the board's next byte is due, not only on the
    // timer's next round.
    std::unique_ptr<Alarm> alarm_;
    bool linkUp_ = false;
};

}  // namespace quendrix::sim
