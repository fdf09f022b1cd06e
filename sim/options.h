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
};

// One command as the board framed it, with its arrival time on the simulation clock.
struct Received {
    QByteArray command;
    double time = 0;
};

}  // namespace quendrix::sim
