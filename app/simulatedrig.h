#pragma once

#include "sim/board.h"
#include "sim/ptyfrontend.h"

#include <QElapsedTimer>
#include <QString>
#include <memory>

// The rig the application drives when no real one is named: the board simulator, in this
// process, on a pseudo-terminal that the panel opens like any serial port.
class SimulatedRig {
public:
    // Plays the board of rig type `controltyp` (0 bellows, 1 lens changer, 2 microscope); the
    // lens changer's drive is the panel's motorArt0 (0 stepper, 1 CAN bus, 2 DC motor).
    bool start(int controltyp, int motorArt0, QString* error);
    QString devicePath() const { return pty_ ? pty_->devicePath() : QString(); }
    // Where an axis really stands, in steps (what the simulated camera focuses at).
    double axisPosition(int axis) const { return board_ ? board_->axis(axis).position : 0; }

private:
    QElapsedTimer clock_;
    std::unique_ptr<quendrix::sim::Board> board_;
    std::unique_ptr<quendrix::sim::PtyFrontEnd> pty_;
};
