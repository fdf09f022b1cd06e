#pragma once

#include "sim/board.h"
#include "sim/ptyfrontend.h"

#include <QElapsedTimer>
#include <QString>
#include <memory>
#include <optional>
#include <utility>

// The rig the application drives when no real one is named: the board simulator, in this
// process, on a pseudo-terminal that the panel opens like any serial port.
class SimulatedRig {
public:
    // Plays the board of rig type `controltyp` (0 bellows, 1 lens changer, 2 microscope); the
    // lens changer's drive is the panel's motorArt0 (0 stepper, 1 CAN bus, 2 DC motor). With
    // `wireTiming` the link takes a real rig's time: 115200 baud, the firmware's and a USB
    // adapter's delays.
    bool start(int controltyp, int motorArt0, bool wireTiming, QString* error);
    QString devicePath() const { return pty_ ? pty_->devicePath() : QString(); }
    // Where an axis really stands, in steps (what the simulated camera focuses at).
    double axisPosition(int axis) const { return board_ ? board_->axis(axis).position : 0; }
    // The length of an axis's rail in steps; the switches at 0 and at its end stop the carriage.
    std::optional<qint32> railLength(int axis) const {
        return board_ ? board_->axis(axis).rail : std::nullopt;
    }
    // The lowest and highest position an axis has been at since its position was last set (at
    // start-up, from the settings).
    std::pair<qint32, qint32> span(int axis) const {
        const auto state = board_ ? board_->axis(axis) : quendrix::sim::AxisState{};
        return {state.lowest, state.highest};
    }

private:
    QElapsedTimer clock_;
    std::unique_ptr<quendrix::sim::Board> board_;
    std::unique_ptr<quendrix::sim::PtyFrontEnd> pty_;
};
