// Jogging: the jog buttons of both axes, the run, direction and speed boxes (Check0), and
// the direction switch that keeps the panel and the board in step.
#include "core/speed.h"
#include "link/link.h"
#include "motion/motion.h"
#include "settings/textformat.h"
#include "settings/wait.h"

#include <quendrix/Panel.h>
#include "settings/rig.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quendrix {

// Axis 0: the button index chooses the speed (0 normal, 1 slow, 2 slowest, 4 as it is) and
// the axis runs until the button is released. Index 3 is the nudge, made on its click.
void Motion::jogPressed(bool /*up*/, int index) {
    static constexpr int kModeOfIndex[] = {1, 0, 2};
    if (index == 3) return;
    if (index < 3) setSpeedMode(0, kModeOfIndex[index]);
    link_.Output(QStringLiteral("r#"));
}

void Motion::jogReleased() {
    link_.Output(QStringLiteral("s#"));
}

// The click follows the release, so the board has seen "s#" before the 16-step nudge.
void Motion::jogClicked(int index) {
    if (index != 3) return;
    setSpeedMode(0, 2);
    link_.Output(QStringLiteral("t16#"));
}

void Motion::jogHovered(bool up) {
    const int direction = up ? 1 : 0;
    if (value(panel_.Check0[4]) != direction) hoverDirection(direction, 0);
}

// Axis 1 (the bellows): the press keeps the extension it starts from, turns the direction
// and runs; only the left button's release stops it.
void Motion::bellowsPressed(bool open, int index) {
    if (index == 0) setTag(panel_.lbAuszug, singleToText(Schritte_in_mm(1, -1).mm, rig_.locale()));
    Richtung_setzen(open ? 1 : 0, 1);
    waiter_.doEvents();
    link_.Output(QStringLiteral("R#"));
}

void Motion::bellowsReleased(int button) {
    if (button == 1) link_.Output(QStringLiteral("S#"));
}

void Motion::bellowsHovered(bool open) {
    const int direction = open ? 1 : 0;
    if (value(panel_.Check0[5]) != direction) hoverDirection(direction, 1);
}

// The direction command always travels with the normal pause in force; the speed the
// operator chose is restored afterwards (and its pause sent again).
void Motion::hoverDirection(int direction, int axis) {
    QCheckBox* speed = panel_.Check0[6 + axis];
    const int chosen = value(speed);
    if (chosen != 1) setValue(speed, 1);
    Richtung_setzen(direction, axis);
    if (value(speed) != chosen) setValue(speed, chosen);
}

void Motion::setSpeedMode(int axis, int mode) {
    if (value(panel_.Check0[6 + axis]) != mode) setValue(panel_.Check0[6 + axis], mode);
}

void Motion::Richtung_setzen(int direction, int axis) {
    if (value(panel_.Check0[4 + axis]) == direction) return;
    setDirectionLocked(axis, true);
    setValue(panel_.Check0[4 + axis], direction);  // its handler sends the direction
    setDirectionLocked(axis, false);
}

// While the direction changes, nothing can start the axis or change its timing.
void Motion::setDirectionLocked(int axis, bool locked) {
    Panel& p = panel_;
    const std::initializer_list<QWidget*> settings = {p.Label7[axis], p.Takt[axis], p.Check0[axis],
                                                      p.Check0[4 + axis]};
    std::vector<QWidget*> jog;
    if (axis == 1) {
        jog = {p.B_AUF[0], p.B_ZU[0], p.B_AUF[1], p.B_ZU[1]};
    } else {
        jog.assign(p.Ab.begin(), p.Ab.end());
        jog.insert(jog.end(), p.Auf.begin(), p.Auf.end());
        jog.insert(jog.end(), {p.cmdHeben, p.cmdSenken});
    }
    if (locked) {
        for (QWidget* w : jog)
            w->setEnabled(false);
        for (QWidget* w : settings)
            w->setEnabled(false);
    } else {
        for (QWidget* w : settings)
            w->setEnabled(true);
        for (QWidget* w : jog)
            w->setEnabled(true);
    }
}

void Motion::Check0_Click(int index) {
    const bool on = value(panel_.Check0[index]) == 1;
    switch (index) {
        case 0:
            link_.Output(on ? QStringLiteral("r#") : QStringLiteral("s#"));
            break;
        case 1:
            link_.Output(on ? QStringLiteral("R#") : QStringLiteral("S#"));
            break;
        case 4:
            link_.Output(on ? QStringLiteral("v#") : QStringLiteral("z#"));
            break;
        case 5:
            link_.Output(on ? QStringLiteral("V#") : QStringLiteral("Z#"));
            break;
        case 6:
        case 7:
            sendSpeed(index - 6);
            break;
        default:
            break;
    }
    showGlyphs(index % 2);
}

void Motion::sendSpeed(int axis) {
    const auto pause =
        pauseForSpeedMode(axis, value(panel_.Check0[6 + axis]), panel_.Taktpause[axis]->text(),
                          rig_.Controltyp(), rig_.MotorArt0());
    if (pause) link_.Output(axisLetter('w', axis) + *pause + QLatin1Char('#'));
}

void Motion::showGlyphs(int axis) {
    panel_.Label7[axis]->setText(directionGlyph(axis, value(panel_.Check0[4 + axis])));
    panel_.Label8[axis]->setText(speedGlyph(value(panel_.Check0[6 + axis])));
}

}  // namespace quendrix
