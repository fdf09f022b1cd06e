#pragma once

#include "sim/framer.h"
#include "sim/motion.h"
#include "sim/options.h"
#include "sim/replyqueue.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <array>
#include <functional>
#include <optional>
#include <utility>

namespace quendrix::sim {

// What the light commands set; the board only keeps it.
struct Lights {
    std::array<bool, 2> channel{};                // "l n#" / "L n#"
    std::array<int, 2> brightness{};              // "d n#" / "D n#"
    bool module = false;                          // "l n!"
    int moduleBrightness = 0;                     // "d n!"
    int moduleSelect = 0;                         // "m n!"
    int ringMode = 0;                             // "T n!" / "t n!"
    QSet<int> segments;                           // "s n!" on, "s-n!" off
    int white = 0, red = 0, green = 0, blue = 0;  // "w", "r", "f", "b" + n + "!"
};

// The interface board: bytes in, bytes out, driven by the caller's clock (seconds). It frames
// commands, answers them, moves the axes and the lens changer in simulated time and injects
// the faults of its options. Times passed in must not go backwards.
class Board {
public:
    static constexpr double changerSecondsPerPosition = 0.5;

    explicit Board(Options options = {});
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;

    const Options& options() const { return options_; }
    int axisCount() const;
    QByteArray identification() const;

    // The link was opened (port opened, client connected): the board resets to its power-on
    // state and stays deaf and silent for the boot delay.
    void linkOpened(double now);
    // The link was closed: nothing is sent until it opens again; motion goes on.
    void linkClosed(double now);
    bool linkOpen() const { return linkOpen_; }
    bool booting(double now) const { return now < bootEnd_; }

    void receive(const QByteArray& bytes, double now);
    // Runs the board up to `now` and returns the bytes due to leave by then.
    QByteArray output(double now);
    // Runs the board up to `now`; its output waits for the next output() call.
    void advance(double now);
    // The next time at which something happens or leaves; empty when nothing is pending.
    std::optional<double> nextDue() const;
    bool disconnectRequested() const { return disconnectRequested_; }

    const QList<Received>& received() const { return received_; }
    void clearReceived() { received_.clear(); }
    // Called for every command as it is framed (the program logs with it).
    void setReceivedObserver(std::function<void(const Received&)> observer);

    AxisState axis(int index) const;
    // Sets the position counter, as "p n#" does (within the rail, if the axis has one).
    void setPosition(int axis, qint32 steps);
    int changerPosition() const { return changer_; }
    bool changerTurning() const { return turn_.has_value(); }
    const Lights& lights() const { return lights_; }
    int rotateCount() const { return rotateCount_; }
    int lastRotate() const { return lastRotate_; }

private:
    struct Command {
        QByteArray text;  // as framed
        char letter;
        char terminator;
        QByteArray value;  // between letter and terminator
        std::optional<qint64> number;
    };
    struct Turn {
        int from, to;
        double start, end;
        int ticksSent = 0;
        int passedAt(double t) const;
    };
    // What a command handler leaves to the caller: an acknowledgement line, the error line
    // of an unknown command, or nothing (it has answered itself).
    enum class Reply { Acknowledge, Unknown, Done };
    enum class Source { None, Command, Axis0, Axis1, Changer, Noise, Garbage };
    // A command framed from bytes still on the wire, and when the firmware takes it.
    struct Arriving {
        QByteArray text;
        double time;
    };

    void powerOn();
    void moveTo(int axis, qint32 steps);  // the axis has got to `steps`
    // Takes a framed command at `now`; false when the board then drops the link.
    bool take(const QByteArray& text, double now);
    void execute(const Command& command, double now);
    Reply motionCommand(const Command& command, double now);
    Reply axisCommand(const Command& command, int axis, double now);
    Reply lightCommand(const Command& command);
    Reply query(const Command& command, double now);

    void startMove(int axis, const Move& move, const Command& command, double now);
    void placeCarriage(int axis, const Command& command, double now);
    void setDirection(int axis, int direction, const Command& command, double now);
    void finishMove(int axis, double now, bool stopped);
    void turnChanger(int to, double now);
    void runUntil(double now);
    std::pair<double, Source> earliestEvent() const;
    std::optional<double> nextEvent() const;
    void processEvent(Source source, double t);

    QByteArray statusPrefix(int axis) const;
    QByteArray axisFields(int axis) const;
    QByteArray movingLine(int axis) const;
    QByteArray finishedLine(int axis) const;
    QByteArray changerFinishedLine() const;
    QByteArray queryLine(int axis) const;
    void send(const QByteArray& line, double now);
    void enqueue(const QByteArray& line, double now);
    void acknowledge(const Command& command, double now);
    std::optional<double> nextOccurrence(double after, double rate, Random& random) const;
    void sendNoise(double now);
    void scheduleNoise(double after);
    void sendGarbage(double now);
    void scheduleGarbage(double after);

    Options options_;
    Random random_;
    Random garbageRandom_;  // garbage draws apart, so that the other faults stay as they are
    CommandFramer framer_;
    ReplyQueue replies_;
    std::function<void(const Received&)> observer_;
    QList<Received> received_;

    bool linkOpen_ = true;
    double clock_ = 0;
    double bootEnd_ = 0;
    int commandsThisLink_ = 0;
    int acksSent_ = 0;
    int linesSent_ = 0;  // the board's own lines, for garbageEvery
    bool disconnectRequested_ = false;
    std::optional<double> nextNoise_;
    std::optional<double> nextGarbage_;
    QList<Arriving> arriving_;  // with wire timing: commands the firmware has not taken yet
    double wireInFree_ = 0;     // when the last byte written to the board has crossed the wire
    double wireOutFree_ = 0;    // when the board's last line has crossed it

    std::array<AxisState, 2> axes_;
    std::array<std::optional<Move>, 2> moves_;
    int changer_ = 0;
    std::optional<Turn> turn_;
    Lights lights_;
    int rotateCount_ = 0;
    int lastRotate_ = 0;
};

}  // namespace quendrix::sim
