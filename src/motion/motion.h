#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>

#include "core/units.h"

class QCheckBox;
class QLineEdit;

namespace quendrix {

class Link;
class Panel;
class Rig;
class Waiter;

// Moving the axes by hand and to positions: the jog buttons, the run, direction and speed
// boxes of each axis (Check0), raising and lowering axis 0, the rotate button, the position
// readout, the axis configuration switches, and driving an axis to an absolute position.
// Every change of a box sends its command, so panel and board always agree.
class Motion : public QObject {
    Q_OBJECT

public:
    Motion(Rig& rig, Panel& panel, Link& link, Waiter& waiter);

    // Rotate commands given with other buttons.
    qint16 Drehzaehler() const { return Drehzaehler_; }
    void setDrehzaehler(qint16 count) { Drehzaehler_ = count; }
    // The travel of each axis in steps, and its encoder calibration (from the settings).
    const std::array<qint32, 2>& maxPosition() const { return maxPosition_; }
    void setMaxPosition(int axis, qint32 steps) { maxPosition_[axis] = steps; }
    const std::array<qint32, 2>& minEncoder() const { return minEncoder_; }
    void setMinEncoder(int axis, qint32 value) { minEncoder_[axis] = value; }
    const std::array<qint32, 2>& maxEncoder() const { return maxEncoder_; }
    void setMaxEncoder(int axis, qint32 value) { maxEncoder_[axis] = value; }

    void pAnheben();
    void pAbsenken();

    // Sets the direction box of an axis while its motion controls are locked, so that the
    // box's own handler sends the direction exactly once.
    void Richtung_setzen(int value, int axis);
    // Drives an axis to an absolute step position and waits until the board reports the end
    // of the move (or Escape is held). speedMode 0, 1 or 2 is that speed; negative chooses it
    // by the distance.
    void Position_anfahren(qint32 target, int axis, int speedMode);

    struct Distance {
        qint32 steps;  // the steps converted (the current position when asked with < 0)
        float mm;
    };
    // Steps of an axis in millimetres; negative steps mean the axis's current position. With
    // the axis's encoder switched on, the millimetres come from the encoder calibration.
    Distance Schritte_in_mm(int axis, qint32 steps);
    // The drive of an axis as its boxes on the axes tab give it.
    AxisDrive drive(int axis) const;

    // Drive axis 0 over the stack's range, forward and back (entry points for the stack).
    void Bereich_abfahren();
    void Bereich_zurueckfahren();

    // Panel handlers, also for the control's other subsystems.
    void Check0_Click(int index);
    void cmdHeben_Click();
    void cmdSenken_Click();
    void Label9_Click();
    void Drehen_MouseUp(int button);
    void cbEndschalter_Click(int axis);
    void cbDrehrichtungArduino_Click(int axis);
    void cbMikroschritt_Click(int axis);
    // Whether an axis offers micro-steps (the properties Mikroschritt0/1): the value of its
    // check box, 0 to 2. A new value goes through the box, whose handler reports it and opens
    // or closes the divisions; another value is an invalid property value (RuntimeError 380).
    qint16 Mikroschritt(int axis) const;
    void setMikroschritt(int axis, qint16 value);
    void micro_Click(int axis, int exponent);
    void Taktsetzen_Click(int axis);
    // The micro-step exponent in force on the axis, as its first division button keeps it (the
    // board may have told it, see ?0#); 0 when it keeps none the panel offers.
    int exponentInForce(int axis) const;
    void cSpiel_Click(int axis);

signals:
    // A property whose value lives in this subsystem's controls changed (Mikroschritt0/1).
    void propertyChanged(const QString& name);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectPanel();
    std::optional<qint32> wholeSetting(QLineEdit* box, const QString& name, qint32 lowest);
    void jogPressed(bool up, int index);
    void jogReleased();
    void jogClicked(int index);
    void jogHovered(bool up);
    void bellowsPressed(bool open, int index);
    void bellowsReleased(int button);
    void bellowsHovered(bool open);
    // Switches an axis's direction with the normal speed in force, then restores the speed.
    void hoverDirection(int value, int axis);
    void raiseOrLower(int direction);
    void setSpeedMode(int axis, int mode);
    void showGlyphs(int axis);
    void sendSpeed(int axis);
    void setDirectionLocked(int axis, bool locked);
    void rangeWarning(const QString& text);

    Rig& rig_;
    qint16 Drehzaehler_ = 0;
    std::array<qint32, 2> maxPosition_ = {0, 0};
    std::array<qint32, 2> minEncoder_ = {0, 0};
    std::array<qint32, 2> maxEncoder_ = {0, 0};
    Panel& panel_;
    Link& link_;
    Waiter& waiter_;
};

}  // namespace quendrix
