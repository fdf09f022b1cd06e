// The axis configuration switches: limit switches, direction of rotation, micro-stepping and
// the micro-step division with the step pause that keeps a full step's speed.
#include "link/link.h"
#include "motion/motion.h"
#include "motion/speed.h"
#include "settings/numbers.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>

namespace quendrix {

namespace {
QString switchCommand(char letter, int axis, const QCheckBox* box) {
    return axisLetter(letter, axis) + QString::number(value(box)) + QLatin1Char('#');
}
}  // namespace

// Start-up sets these boxes itself and sends their commands; only once the rig is ready does
// a change of a box go to the board.
void Motion::cbEndschalter_Click(int axis) {
    if (link_.bBereit) control_.Output(switchCommand('e', axis, panel_.cbEndschalter[axis]));
}

void Motion::cbDrehrichtungArduino_Click(int axis) {
    if (link_.bBereit)
        control_.Output(switchCommand('c', axis, panel_.cbDrehrichtungArduino[axis]));
}

void Motion::cbMikroschritt_Click(int axis) {
    const qint16 offered = qint16(value(panel_.cbMikroschritt[axis]));
    if (axis == 0)
        control_.setMikroschritt0(offered);
    else
        control_.setMikroschritt1(offered);
    QGroupBox* frame = axis == 0 ? panel_.Frame7 : panel_.Frame8;
    frame->setEnabled(offered == 1);
    for (QRadioButton* option : axis == 0 ? panel_.micro0 : panel_.micro1)
        option->setEnabled(frame->isEnabled());
}

// Division 2^exponent: the pause per micro-step is the stored full-step pause divided by the
// division, so the axis keeps its speed.
void Motion::micro_Click(int axis, int exponent) {
    control_.setini(control_.MotorName() + QString::number(axis), QStringLiteral("micro"),
                    QString::number(exponent));
    control_.Output(axisLetter('g', axis) + QString::number(exponent) + QLatin1Char('#'));
    QLineEdit* pause = panel_.Taktpause[axis];
    pause->setText(microStepPause(Val(tag(pause)), exponent, control_.locale()));
    setTag(axis == 0 ? panel_.micro0[0] : panel_.micro1[0], QString::number(exponent));
    control_.Output(axisLetter('w', axis) + pause->text() + QLatin1Char('#'));
}

}  // namespace quendrix
