#pragma once

// The control's parts behind its façade: the link, the subsystems, start-up and the settings
// numbers. The control builds them; benchmarks and tests that look inside the control reach
// them through internals(control). Hosts use the public header alone.
#include <quendrix/ctlQuendrix.h>

#include <memory>

namespace quendrix {

class Calibration;
class Lighting;
class Link;
class Motion;
class OpticalSetup;
class Optics;
class Rig;
class SettingNumbers;
class Stacking;
class Startup;
class Waiter;

class ControlParts {
public:
    explicit ControlParts(ctlQuendrix& control);
    ~ControlParts();
    ControlParts(const ControlParts&) = delete;
    ControlParts& operator=(const ControlParts&) = delete;

    static ControlParts& of(const ctlQuendrix& control) { return *control.parts_; }

    Link* link() const { return link_.get(); }
    Motion* motion() const { return motion_.get(); }
    Lighting* lighting() const { return lighting_.get(); }
    OpticalSetup* opticalSetup() const { return opticalSetup_.get(); }
    Calibration* calibration() const { return calibration_.get(); }
    Optics* optics() const { return optics_.get(); }
    Stacking* stacking() const { return stacking_.get(); }
    Startup* startup() const { return startup_.get(); }
    // Numbers read from the settings file, with unusable values reported (settingProblem).
    SettingNumbers& settingNumbers() const { return *settingNumbers_; }

    std::unique_ptr<SettingNumbers> settingNumbers_;
    // Every wait of the control (acknowledgements, releases, moves) goes through this.
    std::unique_ptr<Waiter> waiter_;
    std::unique_ptr<Rig> rig_;
    std::unique_ptr<Link> link_;
    std::unique_ptr<Motion> motion_;
    std::unique_ptr<Lighting> lighting_;
    std::unique_ptr<OpticalSetup> opticalSetup_;
    std::unique_ptr<Calibration> calibration_;
    std::unique_ptr<Optics> optics_;
    std::unique_ptr<Stacking> stacking_;
    std::unique_ptr<Startup> startup_;
};

inline ControlParts& internals(const ctlQuendrix& control) {
    return ControlParts::of(control);
}
inline ControlParts& internals(const ctlQuendrix* control) {
    return ControlParts::of(*control);
}
inline ControlParts& internals(const std::unique_ptr<ctlQuendrix>& control) {
    return ControlParts::of(*control);
}

}  // namespace quendrix
