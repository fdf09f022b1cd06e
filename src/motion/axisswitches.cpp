// The axis configuration switches: limit switches, direction of rotation, micro-stepping and
// the micro-step division with the step pause that keeps a full step's speed.
#include "core/speed.h"
#include "link/link.h"
#include "motion/motion.h"
#include "settings/numbers.h"

#include <quendrix/Panel.h>
#include "settings/rig.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <cmath>

namespace quendrix {

namespace {
QString switchCommand(char letter, int axis, const QCheckBox* box) {
    return axisLetter(letter, axis) + QString::number(value(box)) + QLatin1Char('#');
}
}  // namespace

// Start-up sets these boxes itself and sends their commands; only once the rig is ready does
// a change of a box go to the board.
void Motion::cbEndschalter_Click(int axis) {
    if (link_.bBereit()) link_.Output(switchCommand('e', axis, panel_.cbEndschalter[axis]));
}

void Motion::cbDrehrichtungArduino_Click(int axis) {
    if (link_.bBereit()) link_.Output(switchCommand('c', axis, panel_.cbDrehrichtungArduino[axis]));
}

qint16 Motion::Mikroschritt(int axis) const {
    return qint16(value(panel_.cbMikroschritt[axis]));
}

void Motion::setMikroschritt(int axis, qint16 offered) {
    if (offered < 0 || offered > 2) throw RuntimeError(RuntimeError::InvalidPropertyValue);
    QCheckBox* box = panel_.cbMikroschritt[axis];
    if (value(box) != offered) return setValue(box, offered);
    emit propertyChanged(axis == 0 ? QStringLiteral("Mikroschritt0")
                                   : QStringLiteral("Mikroschritt1"));
}

void Motion::cbMikroschritt_Click(int axis) {
    const qint16 offered = qint16(value(panel_.cbMikroschritt[axis]));
    emit propertyChanged(axis == 0 ? QStringLiteral("Mikroschritt0")
                                   : QStringLiteral("Mikroschritt1"));
    QGroupBox* frame = axis == 0 ? panel_.Frame7 : panel_.Frame8;
    frame->setEnabled(offered == 1);
    for (QRadioButton* option : axis == 0 ? panel_.micro0 : panel_.micro1)
        option->setEnabled(frame->isEnabled());
}

// Division 2^exponent: the pause per micro-step is the stored full-step pause divided by the
// division, so the axis keeps its speed.
void Motion::micro_Click(int axis, int exponent) {
    rig_.setini(rig_.MotorName() + QString::number(axis), QStringLiteral("micro"),
                QString::number(exponent));
    link_.Output(axisLetter('g', axis) + QString::number(exponent) + QLatin1Char('#'));
    QLineEdit* pause = panel_.Taktpause[axis];
    pause->setText(microStepPause(Val(tag(pause)), exponent, rig_.locale()));
    setTag(axis == 0 ? panel_.micro0[0] : panel_.micro1[0], QString::number(exponent));
    link_.Output(axisLetter('w', axis) + pause->text() + QLatin1Char('#'));
}

int Motion::exponentInForce(int axis) const {
    const auto& options = axis == 0 ? panel_.micro0 : panel_.micro1;
    return wholeValIn(tag(options[0]), 0, int(options.size()) - 1).value_or(0);
}

// "Takt setzen": the pause typed is the pause per step of the division in force, and the board
// takes it at once. The full-step pause behind it is kept (the box's tag, and the settings
// file), so that a later division keeps this speed.
void Motion::Taktsetzen_Click(int axis) {
    QLineEdit* pause = panel_.Taktpause[axis];
    const std::optional<qint32> typed = wholeSetting(pause, tr("Taktpause"), 1);
    if (!typed) return;
    const double fullStep = double(*typed) * std::pow(2.0, exponentInForce(axis));
    setTag(pause, QString::number(toLong(fullStep)));
    rig_.setini(rig_.MotorName() + QString::number(axis), QStringLiteral("Taktpause"), tag(pause));
    link_.Output(axisLetter('w', axis) + pause->text() + QLatin1Char('#'));
}

// "Spiel setzen": the backlash in steps goes to the board, and the link chooses the
// acknowledgements of the run commands by it from now on.
void Motion::cSpiel_Click(int axis) {
    QLineEdit* backlash = panel_.tSpiel[axis];
    const std::optional<qint32> steps = wholeSetting(backlash, tr("Spiel"), 0);
    if (!steps) return;
    link_.setBacklash(axis, *steps);
    rig_.setini(rig_.MotorName() + QString::number(axis), QStringLiteral("spiel"),
                backlash->text());
    link_.Output(axisLetter('a', axis) + backlash->text() + QLatin1Char('#'));
}

// A whole number typed into a box, shown back as the board will get it. Anything else is
// named in a message and sends nothing.
std::optional<qint32> Motion::wholeSetting(QLineEdit* box, const QString& name, qint32 lowest) {
    constexpr qint32 highest = 1000000;
    const std::optional<qint32> number = wholeValIn(box->text(), lowest, highest);
    if (!number) {
        rig_.platform().messageBox(tr("%1: bitte eine ganze Zahl von %2 bis %3 eingeben")
                                       .arg(name)
                                       .arg(lowest)
                                       .arg(highest),
                                   MsgBox::Exclamation, QString());
        return std::nullopt;
    }
    box->setText(QString::number(*number));
    return number;
}

}  // namespace quendrix
