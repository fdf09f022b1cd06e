#pragma once

#include "camerachoice.h"
#include "session/stackrequest.h"

#include <QString>
#include <QStringList>
#include <optional>

// What the photographer asked for on the command line, every value checked.
struct Options {
    enum class Board { Simulated, Serial, Wifi };

    Board board = Board::Simulated;
    QString ini;                // absolute; empty: the rig's own settings file
    std::optional<qint16> rig;  // 0 bellows, 1 lens changer, 2 microscope
    bool wireTiming = true;     // the simulated rig's link is timed like a real wire
    QString bag;                // absolute; empty: the panel's first-placement defaults
    QString snapshot;           // absolute; empty: no snapshot
    std::optional<StackRequest> stack;
    QString pictures;  // absolute; empty: the default
    bool combine = false;
    CameraChoice camera;
    QString language;  // "de" or "en"; empty: as the system's user-interface language

    bool simulated() const { return board == Board::Simulated; }
    // Nobody watches: the run must end by itself.
    bool unattended() const { return stack.has_value() || !snapshot.isEmpty(); }
    QString boardName() const;
};

// The command line read before any application object exists, so that --help and --version
// work without a display. Anything that cannot be used (an unknown option, a missing or
// malformed value, an option given twice, a folder that is a file) is an error naming the
// option and the value.
struct CommandLine {
    enum class Outcome { Run, Help, Version, Error };
    Outcome outcome = Outcome::Run;
    Options options;
    QString text;  // the help or version text, or what is wrong

    // arguments: the program's name first, as in argv.
    static CommandLine parse(const QStringList& arguments);
};
