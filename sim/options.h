#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <array>
#include <optional>

namespace quendrix::sim {

// The kind of rig the simulated board drives; it decides the identification line, the axes
// and the shape of the status lines.
enum class Rig { Bellows, LensChanger, Microscope, Binocular, UnknownArduino, Silent };

// The drive of a lens-changer rig; it decides the last character of the identification line
// ("@", "%" or the euro byte 0x80), and a CAN drive takes "t n#" as an absolute target.
enum class Drive { Can, Dc, Stepper };

// Faults the board injects on request. Every random choice comes from `seed`, so a run with
// the same options and the same traffic gives the same bytes.
struct Faults {
    double bootDelay = 0;                 // seconds of silence after the link opens (the reset)
    double replyDelay = 0;                // every line leaves this much later
    double dropAckProbability = 0;        // chance that an acknowledgement line is lost
    int dropAckEvery = 0;                 // lose every n-th acknowledgement line (0: never)
    bool splitReplies = false;            // hand out the due bytes in random-length pieces
    double strayLeadByteProbability = 0;  // chance of a 0xC2 before a line
    double noisePerSecond = 0;            // mean rate of garbage lines
    double garbagePerSecond = 0;          // mean rate of hostile garbage lines
    int garbageEvery = 0;                 // hostile garbage after every n-th line (0: never)
    int disconnectAfter = 0;              // close the link after n commands (0: never)
    quint32 seed = 1;
};

// The serial wire's timing. Off (no baud rate, no latencies), a command is taken the moment it
// is written and a reply leaves the moment it is due. On, bytes cross the wire one after the
// other, 10 bits each (start, 8 data, stop); the firmware needs time for every command and
// more before a motor starts; a USB-serial adapter holds what it carries for its latency, in
// either direction.
struct WireTiming {
    int baud = 0;               // bits per second (0: bytes take no time)
    double commandSeconds = 0;  // the firmware's time for one command, before it answers
    double moveSeconds = 0;     // further time before a motor starts moving
    double adapterSeconds = 0;  // a USB-serial adapter's latency, each direction

    bool on() const {
        return baud > 0 || commandSeconds > 0 || moveSeconds > 0 || adapterSeconds > 0;
    }
    double secondsPerByte() const { return baud > 0 ? 10.0 / baud : 0; }
    // What a real rig at 115200 baud behind a USB-serial adapter takes.
    static WireTiming realistic() { return {115200, 0.0005, 0.002, 0.002}; }
};

struct Options {
    Rig rig = Rig::Bellows;
    Drive drive = Drive::Can;
    bool motorPowerOff = false;  // the bellows rig reports that its motor supply is off
    bool microSteps = true;      // the board reports the micro-step divisor ("*" field)
    qint32 encoderOffset = 0;    // encoder value = position + offset
    // Each axis's rail, in steps: the carriage travels between 0 and this length, with a
    // limit switch at either end. Empty: a rail without ends.
    std::array<std::optional<qint32>, 2> rails{};
    Faults faults;
    WireTiming wire;
};

// One command as the board framed it, with its arrival time on the simulation clock.
struct Received {
    QByteArray command;
    double time = 0;
};

}  // namespace quendrix::sim
