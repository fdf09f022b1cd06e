// Moving by amounts and to positions: raise and lower, the rotate button, the position
// readout in steps or millimetres, absolute positioning and the stack's range travel.
#include "core/readout.h"
#include "core/speed.h"
#include "core/units.h"
#include "link/link.h"
#include "motion/motion.h"
#include "settings/numbers.h"
#include "settings/textformat.h"
#include "settings/wait.h"

#include <quendrix/Panel.h>
#include "settings/rig.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quendrix {

namespace {
const QString kRaised = QStringLiteral("oben");
}

void Motion::cmdHeben_Click() {
    raiseOrLower(1);
}

void Motion::cmdSenken_Click() {
    raiseOrLower(0);
    setTag(panel_.cmdHeben, QString());  // so that the next pAnheben raises again
}

// Moves axis 0 up (1) or down (0) by the raise amount at normal speed. On a lens-changer rig
// the amount is in steps and goes out signed; otherwise it is in millimetres.
void Motion::raiseOrLower(int direction) {
    const double amount = Val(panel_.Anheben->text());
    if (amount == 0) return;
    const bool inSteps = rig_.Controltyp() == 1;
    const qint64 steps = inSteps ? toLong(amount) : drive(0).steps(amount);
    Richtung_setzen(direction, 0);
    waiter_.doEvents();
    setSpeedMode(0, 1);
    waiter_.doEvents();
    link_.Output(QStringLiteral("t%1#").arg(inSteps ? steps : qAbs(steps)));
}

void Motion::pAnheben() {
    if (rig_.Controltyp() == 2) return;
    if (tag(panel_.cmdHeben) == kRaised) return;
    cmdHeben_Click();
    setTag(panel_.cmdHeben, kRaised);
}

void Motion::pAbsenken() {
    if (rig_.Controltyp() == 2) return;
    if (tag(panel_.cmdHeben) == kRaised) cmdSenken_Click();
}

// Left and right send the switch's two states; any other button counts, and the count goes
// out one higher than it is kept.
void Motion::Drehen_MouseUp(int button) {
    if (button == 1) {
        link_.Output(QStringLiteral("q1!"));
    } else if (button == 2) {
        link_.Output(QStringLiteral("q0!"));
        Drehzaehler_ = 0;
    } else {
        Drehzaehler_ = checkedAdd<qint16>(Drehzaehler_, 1);
        link_.Output(QStringLiteral("q-%1!").arg(checkedAdd<qint16>(Drehzaehler_, 1)));
    }
}

void Motion::Label9_Click() {
    Panel& p = panel_;
    if (readoutInMillimetres(p.Label9->text())) {
        p.Label9->setText(Panel::tr("Position [Schritte]"));
        p.lblPosition[0]->setText(QString::number(link_.AchsPosition()[0]));
    } else {
        //: Must hold "mm": the readout shows millimetres exactly when its caption does.
        p.Label9->setText(Panel::tr("Position [mm]"));
        p.lblPosition[0]->setText(millimetresText(Schritte_in_mm(0, -1).mm, rig_.locale()));
    }
    p.lblPosition[1]->setText(p.lblPosition[0]->text());
}

AxisDrive Motion::drive(int axis) const {
    return axisDrive(panel_.Schritte[axis]->text(), panel_.Steigung[axis]->text());
}

Motion::Distance Motion::Schritte_in_mm(int axis, qint32 steps) {
    if (axis < 0 || axis > 1) throw RuntimeError(RuntimeError::SubscriptOutOfRange);
    if (steps < 0) steps = link_.AchsPosition()[axis];
    const AxisDrive axisDrive = drive(axis);
    // With the encoder on, the travel is read from it: its calibrated lower and upper values
    // stand for the two ends of the axis.
    if (panel_.ENC[axis]->isChecked() && maxEncoder_[axis] != minEncoder_[axis]) {
        const double share = double(link_.encoder()[axis] - minEncoder_[axis]) /
                             double(maxEncoder_[axis] - minEncoder_[axis]);
        return {steps, toSingle(share * axisDrive.mm(maxPosition_[axis]))};
    }
    return {steps, axisDrive.mm(steps)};
}

void Motion::Position_anfahren(qint32 target, int axis, int speedMode) {
    if (axis < 0 || axis > 1) throw RuntimeError(RuntimeError::SubscriptOutOfRange);
    if (target > maxPosition_[axis] || target < 0) return;
    const qint64 distance = qint64(target) - link_.AchsPosition()[axis];
    if (distance == 0) return;

    const quint64 finishedBefore = link_.finishedMoves(axis);
    const bool canBusDrive = rig_.MotorArt0() == 1;
    if (canBusDrive) {
        // The drive takes absolute targets, at the slowest speed.
        setSpeedMode(0, 2);
        link_.Output(axisLetter('t', axis) + QString::number(target) + QLatin1Char('#'));
    } else {
        Richtung_setzen(target <= link_.AchsPosition()[axis] ? 0 : 1, axis);
        setSpeedMode(axis, speedMode >= 0 ? speedMode : speedModeForDistance(distance));
        // A move of exactly one step is "t1#" / "T1#", the same bytes as the settings take-over
        // on the return to tab 0 and at start-up. That is how the protocol has it: kept as is.
        link_.Output(axisLetter('t', axis) + QString::number(qAbs(distance)) + QLatin1Char('#'));
    }
    // The board reports the start of a move before it acknowledges it, so the status line
    // seen now belongs to this move: its "|F" is this move's end. Only Escape ends it sooner.
    waiter_.waitFor([this, axis, finishedBefore] { return link_.moveEnded(axis, finishedBefore); },
                    Waiter::kNoLimit, Waiter::Escape::Ends);
}

void Motion::rangeWarning(const QString& text) {
    rig_.platform().messageBox(text, MsgBox::Exclamation, tr("Objektbereich abfahren"));
    rig_.takeFocus();
}

// Forward over the stack's range: the direction follows the start and end fields compared as
// texts (not as numbers), and a warning says when the axis already stands beyond the start.
void Motion::Bereich_abfahren() {
    const QString start = panel_.BBeginn[0]->text(), end = panel_.BEnde[0]->text();
    const int direction = start.compare(end) <= 0 ? 1 : 0;
    const qint32 position = link_.AchsPosition()[0];
    if (direction == 0 && Val(start) <= position) rangeWarning(tr("Obere Position erreicht"));
    if (direction == 1 && Val(start) >= position) rangeWarning(tr("Untere Position erreicht"));
    Richtung_setzen(direction, 0);
    link_.Output(
        QStringLiteral("t%1#").arg(doubleToText(Val(panel_.Schrittzahl->text()), QLocale::c())));
}

// Back over the range. Its checks against the end field are made before the direction is
// chosen, while it is still 0, so only the lower end can be reported.
void Motion::Bereich_zurueckfahren() {
    const QString start = panel_.BBeginn[0]->text(), end = panel_.BEnde[0]->text();
    if (Val(end) <= link_.AchsPosition()[0]) rangeWarning(tr("Untere Position erreicht"));
    Richtung_setzen(start.compare(end) <= 0 ? 0 : 1, 0);
    link_.Output(
        QStringLiteral("t%1#").arg(doubleToText(Val(panel_.Schrittzahl->text()), QLocale::c())));
}

}  // namespace quendrix
