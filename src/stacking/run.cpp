// Running a stack or an averaging series under Timer3: each tick asks the host for a picture,
// waits for its release and, in a stack, moves axis 0 one plane.
#include "link/link.h"
#include "motion/motion.h"
#include "optics/opticalsetup.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/settingnumbers.h"
#include "settings/textformat.h"
#include "settings/wait.h"
#include "stacking/stacking.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <cmath>

namespace quendrix {

namespace {
const QString kActive = QStringLiteral("aktiv");
constexpr double kPlaneMoveSeconds = 6;  // a plane move that takes longer is not waited for
}  // namespace

void Stacking::raiseFieldOfView() {
    const QLocale locale = rig_.locale();
    emit SehfeldNeu(
        formatNumber(textToDouble(optical_.Sehfeld(), locale), QStringLiteral("###0.000"), locale));
}

// The layer counter as the caption shows it: what follows ": ".
QString Stacking::layerCount() const {
    const QString caption = panel_.Schicht->text();
    return caption.mid(caption.indexOf(QStringLiteral(": ")) + 2);
}

void Stacking::AutoKomb_Click() {
    Panel& p = panel_;
    if (Val(p.Schrittzahl->text()) <= 0) {
        rig_.platform().messageBox(tr("Bereich ist kleiner als die Anzahl der Ebenen !"),
                                   MsgBox::OKOnly, {});
        return;
    }
    setTag(p.AutoKomb, QString());
    Zuruecksetzen();
    raiseFieldOfView();
    // Approach the start from one millimetre beyond it (a hundredth on the microscope), so
    // every plane is reached from the same side.
    const AxisDrive drive = motion_.drive(0);
    double beyond = divide(drive.stepsPerRevolution, drive.lead);
    if (rig_.Controltyp() == 2) beyond /= 100;
    const double start = Val(p.BBeginn[0]->text());
    motion_.Position_anfahren(toLong(start + beyond), 0, 1);
    waiter_.doEvents();
    if (rig_.Controltyp() != 1) link_.Output(QStringLiteral("y1#"));
    motion_.Position_anfahren(toLong(start), 0, -1);
    waiter_.doEvents();

    setTag(p.AutoKomb, kActive);
    Ebenenzaehler_ = checkedAdd<qint32>(toLong(Val(p.Ebenen->text())), 1);
    planesTotal_ = Ebenenzaehler_;
    runStart_ = rig_.platform().now();
    p.Timer3->setInterval(toLong(2 * Val(p.wartezeit->text())));  // the first pause is doubled
    Kamera_bereit_ = true;
    p.Timer3->start();
    showProgress();
}

// Letting go of the right button on the stack button aborts the run where it is.
void Stacking::AutoKomb_MouseUp(int button) {
    if (button != 2) return;
    panel_.Timer3->stop();
    setTag(panel_.AutoKomb, QString());
    Zuruecksetzen();
    showProgress();
}

// The timer is off for the whole tick, so ticks never overlap.
void Stacking::Timer3_Timer() {
    Panel& p = panel_;
    p.Timer3->stop();
    Schicht_Click();
    waiter_.doEvents();
    Ebenenzaehler_ = checkedSub<qint32>(Ebenenzaehler_, 1);
    p.Timer3->setInterval(toLong(Val(p.wartezeit->text())));
    showProgress();
    if (tag(p.AutoKomb) == kActive || tag(p.Mittelw) == kActive) Fortsetzung();
}

void Stacking::Schicht_Click() {
    const qint16 layer = checkedAdd<qint16>(toInteger(Val(layerCount())), 1);
    if (layer == 1) panel_.Combine->setEnabled(true);
    panel_.Schicht->setText(Panel::tr("Schicht: %1").arg(layer));
    Kamera_bereit_ = false;
    emit Schicht(QString::number(layer));
}

// After each picture: the host's release, then the next plane (or the end).
void Stacking::Fortsetzung() {
    Panel& p = panel_;
    link_.waitForRelease(QStringLiteral("Sub Fortsetzung"));
    if (Ebenenzaehler_ > 0) {
        if (tag(p.AutoKomb) != kActive) {  // an averaging series takes its pictures in place
            p.Timer3->start();
            return;
        }
        const double steps = Val(p.Schrittzahl->text());
        const qint32 motor = rig_.MotorArt0();
        QCheckBox* speed = p.Check0[6];
        const int mode = motor == 1 ? 2 : (steps > 1000 ? 1 : (steps > 100 ? 0 : 2));
        if ((motor == 0 || motor == 1) && value(speed) != mode) setValue(speed, mode);
        const QString count = doubleToText(steps, QLocale::c());
        const quint64 finishedBefore = link_.finishedMoves(0);
        if (motor == 0)
            link_.Output(QStringLiteral("t") + count + QLatin1Char('#'));
        else if (motor == 1)
            link_.Output(QStringLiteral("t-") + count + QLatin1Char('#'));
        // The board reports a move's start before it acknowledges it: the "|F" seen now is
        // this plane's end. A move that takes longer than 6 s is not waited for.
        waiter_.waitFor([this, finishedBefore] { return link_.moveEnded(0, finishedBefore); },
                        kPlaneMoveSeconds, Waiter::Escape::Ends);
        p.Timer3->start();
        return;
    }
    if (tag(p.AutoKomb) != kActive) {
        setTag(p.Mittelw, QString());
        emit Mittelwert(layerCount());
        Ebenenzaehler_ = seriesLength() - 1;
        Zuruecksetzen();
        showProgress();
        return;
    }
    setTag(p.AutoKomb, QString());
    if (value(p.Check0[6]) != 1) setValue(p.Check0[6], 1);
    if (rig_.Controltyp() != 1) link_.Output(QStringLiteral("y0#"));
    if (Ebenenzaehler_ == 0) Combine_Click();
    Ebenenzaehler_ = toLong(Val(p.Ebenen->text()));
    showProgress();
}

qint32 Stacking::seriesLength() {
    return rig_.settingNumbers().wholeNumber(QStringLiteral("Verzeichnis"), QStringLiteral("Serie"),
                                             QStringLiteral("10"));
}

void Stacking::Mittelw_Click() {
    Panel& p = panel_;
    Kamera_bereit_ = false;
    raiseFieldOfView();
    Ebenenzaehler_ = seriesLength();
    planesTotal_ = Ebenenzaehler_;
    runStart_ = rig_.platform().now();
    p.Timer3->setInterval(toLong(Val(p.wartezeit->text())));
    setTag(p.Mittelw, kActive);
    Timer3_Timer();  // the first picture without delay
}

void Stacking::Combine_Click() {
    link_.waitForRelease(QStringLiteral("Sub Combine_click"));
    emit Kombinieren(layerCount());
    Zuruecksetzen();
}

void Stacking::Kopie_Click() {
    raiseFieldOfView();
    emit Kopie();
}

void Stacking::Zuruecksetzen() {
    panel_.Combine->setEnabled(false);
    panel_.Schicht->setText(Panel::tr("Schicht: %1").arg(0));
}

void Stacking::Reset(qint16 axis) {
    link_.Output(QString(QChar('x' - 32 * (axis % 2))) + QLatin1Char('#'));
}

// The left button on a picture: those of the two axes and the first reference point reset
// their axis (the third resets axis 0, as its index says), the other two reference points send
// their own commands.
void Stacking::Image1_MouseUp(int index, int button) {
    if (button != 1) return;
    if (index <= 2)
        Reset(qint16(index));
    else
        link_.Output(index == 3 ? QStringLiteral("G#") : QStringLiteral("H#"));
}

void Stacking::Kamera_aktiv(bool enabled) {
    for (QPushButton* capture : {panel_.Schicht, panel_.Mittelw, panel_.Kopie})
        capture->setEnabled(enabled);
}

// Plane n of N and the time left at the pace so far, while a run goes on.
void Stacking::showProgress() {
    const bool running = tag(panel_.AutoKomb) == kActive || tag(panel_.Mittelw) == kActive;
    panel_.Fortschritt->setVisible(running);
    if (!running) return;
    const int taken = planesTotal_ - Ebenenzaehler_;
    QString text = tr("Bild %1 von %2").arg(taken).arg(planesTotal_);
    if (taken > 0) {
        const double perPicture = (rig_.platform().now() - runStart_) / taken;
        text += tr(", noch etwa %1 s").arg(std::lround(perPicture * Ebenenzaehler_));
    }
    panel_.Fortschritt->setText(text);
}

}  // namespace quendrix
