#include "simulatedrig.h"

bool SimulatedRig::start(int controltyp, QString* error) {
    using quendrix::sim::Rig;
    quendrix::sim::Options options;
    options.rig = controltyp == 1   ? Rig::LensChanger
                  : controltyp == 2 ? Rig::Microscope
                                    : Rig::Bellows;
    clock_.start();
    board_ = std::make_unique<quendrix::sim::Board>(options);
    pty_ = std::make_unique<quendrix::sim::PtyFrontEnd>(
        *board_, [this] { return clock_.nsecsElapsed() / 1e9; });
    if (!pty_->open(error)) return false;
    pty_->setAutoPump(true);
    return true;
}
