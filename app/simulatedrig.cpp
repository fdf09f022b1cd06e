#include "simulatedrig.h"

bool SimulatedRig::start(int controltyp, int motorArt0, bool wireTiming, QString* error) {
    using quendrix::sim::Drive;
    using quendrix::sim::Rig;
    quendrix::sim::Options options;
    options.rig = controltyp == 1   ? Rig::LensChanger
                  : controltyp == 2 ? Rig::Microscope
                                    : Rig::Bellows;
    // The changer rig's drive is the one the panel is set for: a stepper's moves are relative,
    // a CAN drive's absolute.
    options.drive = motorArt0 == 1 ? Drive::Can : motorArt0 == 2 ? Drive::Dc : Drive::Stepper;
    // Rails of real lengths, longer than the travel the settings allow (MaxPosition): 375 mm at
    // 1600 steps/mm and a 125-mm bellows; a 400-mm rail and a 100-mm focus drive at 400 steps/mm.
    using Rails = decltype(options.rails);
    options.rails = controltyp == 1   ? Rails{160000, {}}
                    : controltyp == 2 ? Rails{40000, {}}
                                      : Rails{600000, 4800};
    if (wireTiming) options.wire = quendrix::sim::WireTiming::realistic();
    clock_.start();
    board_ = std::make_unique<quendrix::sim::Board>(options);
    pty_ = std::make_unique<quendrix::sim::PtyFrontEnd>(
        *board_, [this] { return clock_.nsecsElapsed() / 1e9; });
    if (!pty_->open(error)) return false;
    pty_->setAutoPump(true);
    return true;
}
