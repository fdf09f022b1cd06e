#include "unattendedstack.h"

#include "fusion/fusion.h"
#include "session/capturesession.h"
#include "simulatedrig.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QCheckBox>
#include <QDir>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

void say(FILE* stream, const QString& text) {
    std::fprintf(stream, "%s\n", qPrintable(text));
    std::fflush(stream);
}

std::optional<qint32> wholeSteps(const QString& text) {
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    return ok ? std::optional<qint32>(value) : std::nullopt;
}

}  // namespace

UnattendedStack::UnattendedStack(ctlQuendrix& panel, CaptureSession& session, StackRequest request,
                                 bool combine, QObject* parent)
    : QObject(parent), panel_(panel), session_(session), request_(request), combine_(combine) {
    connect(&session_, &CaptureSession::pictureTaken, this, &UnattendedStack::onPicture);
    connect(&session_, &CaptureSession::combineRequested, this, &UnattendedStack::onCombine);
    connect(&session_, &CaptureSession::failed, this, &UnattendedStack::fail);
}

UnattendedStack::~UnattendedStack() = default;

void UnattendedStack::watch(const SimulatedRig& rig) {
    rig_ = &rig;
}

QString UnattendedStack::stackText() const {
    return QStringLiteral("--stack %1:%2:%3")
        .arg(request_.from)
        .arg(request_.to)
        .arg(request_.planes);
}

// Whether the panel's plane steps move axis 0 as the board takes them. A lens-changer board
// names its drive in its identification: a CAN drive ("@") takes "t n#" as a target position,
// the others as a number of steps; the panel sends targets only with MotorArt0 1.
QString UnattendedStack::cannotStep() const {
    const qint32 motor = panel_.MotorArt0();
    if (motor != 0 && motor != 1)
        return QStringLiteral(
                   "%1: MotorArt0 is %2, and the panel steps axis 0 between planes only with a "
                   "stepper motor (0) or a CAN drive (1)")
            .arg(stackText())
            .arg(motor);
    const QString identification = panel_.panel()->Text1[0]->text().trimmed();
    if (!identification.contains(u"Photostepper")) return {};
    const bool boardTakesTargets = identification.endsWith(QLatin1Char('@'));
    if (boardTakesTargets == (motor == 1)) return {};
    return QStringLiteral(
               "%1: the board (\"%2\") takes \"t n#\" as %3, but MotorArt0 is %4, so the "
               "panel sends %5; set MotorArt0 to %6 (--bag)")
        .arg(stackText(), identification,
             boardTakesTargets ? QStringLiteral("a target position")
                               : QStringLiteral("a number of steps"))
        .arg(motor)
        .arg(motor == 1 ? QStringLiteral("target positions") : QStringLiteral("numbers of steps"))
        .arg(boardTakesTargets ? 1 : 0);
}

QString UnattendedStack::outOfRange() const {
    const quendrix::Panel& p = *panel_.panel();
    // The panel approaches the start from a millimetre beyond it (a hundredth on the
    // microscope), so that every plane is reached from the same side.
    const double pitch = p.Steigung[0]->text().trimmed().toDouble();
    double beyond = pitch > 0 ? p.Schritte[0]->text().trimmed().toDouble() / pitch : 0;
    if (panel_.Controltyp() == 2) beyond /= 100;
    const qint64 farthest = qint64(std::ceil(request_.upper() + beyond));
    const auto travel = wholeSteps(p.Label13[0]->text());
    qint64 railEnd = std::numeric_limits<qint64>::max();
    if (rig_) railEnd = rig_->railLength(0).value_or(railEnd);
    QString limit;
    if (!travel)
        limit = QStringLiteral("axis 0's travel (MaxPosition) is not known");
    else if (farthest > *travel)
        limit = QStringLiteral("axis 0 travels only %1 steps (MaxPosition)").arg(*travel);
    else if (farthest > railEnd)
        limit = QStringLiteral("the simulated rail of axis 0 ends at %1 steps").arg(railEnd);
    if (limit.isEmpty()) return {};
    return QStringLiteral(
               "%1 reaches %2 steps (the stack runs downward from its upper end, approached "
               "from %3 steps above it), but %4")
        .arg(stackText())
        .arg(farthest)
        .arg(qint64(std::ceil(beyond)))
        .arg(limit);
}

void UnattendedStack::start(bool ready) {
    quendrix::Panel& p = *panel_.panel();
    if (!ready) {
        fail(QStringLiteral("the rig did not come into service (%1)").arg(p.Text1[0]->text()));
        return;
    }
    for (const QString& problem : {cannotStep(), outOfRange()}) {
        if (!problem.isEmpty()) {
            fail(problem);
            return;
        }
    }
    // The panel runs a stack downward from its start (the start is approached from above, so
    // the planes follow in that direction). Given the lower end as its start, it would run past
    // the other end: it gets the higher one.
    p.BBeginn[0]->setText(QString::number(request_.upper()));
    p.BEnde[0]->setText(QString::number(request_.lower()));
    p.Ebenen->clear();  // the plan is made again even when the planes stay the same
    p.Ebenen->setText(QString::number(request_.planes));
    const qint32 planned = p.Schrittzahl->text().trimmed().toInt();
    if (planned <= 0) {
        fail(QStringLiteral("the panel cannot make %1 intervals between %2 and %3 steps")
                 .arg(request_.planes)
                 .arg(request_.from)
                 .arg(request_.to));
        return;
    }
    // The panel rounds the step to the nearest; rounded up, the last plane would fall below
    // the lower end.
    const qint32 step = request_.planeStep();
    QString rounding;
    if (planned != step) {
        p.Schrittzahl->setText(QString::number(step));
        rounding = QStringLiteral(" (%1 apart, the last would be at %2, below %3)")
                       .arg(planned)
                       .arg(request_.upper() - qint64(planned) * request_.planes)
                       .arg(request_.lower());
    }
    say(stdout, QStringLiteral("stack: %1 pictures from %2 down to %3 steps, %4 steps apart%5")
                    .arg(request_.planes + 1)
                    .arg(request_.upper())
                    .arg(request_.upper() - qint64(step) * request_.planes)
                    .arg(step)
                    .arg(rounding));
    // A CAN drive keeps its direction while it drives to targets, and the plane steps follow
    // it: it must point down (start-up made the board agree with the box).
    if (p.Check0[4]->isChecked()) p.Check0[4]->setChecked(false);  // its handler sends "z#"
    p.AutoKomb->click();
    if (!done_ && quendrix::tag(p.AutoKomb) != QStringLiteral("aktiv") &&
        session_.runPictures().isEmpty())
        fail(QStringLiteral("the panel did not start the stack"));
}

void UnattendedStack::linkLost(const QString& where) {
    fail(QStringLiteral("the link to the rig on %1 was lost after %2 of %3 pictures; they stay "
                        "in %4")
             .arg(where)
             .arg(taken_)
             .arg(request_.planes + 1)
             .arg(QDir::toNativeSeparators(session_.runFolder())));
}

void UnattendedStack::onPicture(int plane, const QString& file, qint64 position) {
    ++taken_;
    say(stdout, QStringLiteral("picture %1/%2 at %3 steps: %4")
                    .arg(plane)
                    .arg(request_.planes + 1)
                    .arg(position)
                    .arg(QDir::toNativeSeparators(file)));
}

void UnattendedStack::onCombine(const QStringList& pictures, const QString& output) {
    if (done_) return;
    if (pictures.size() != request_.planes + 1) {
        fail(QStringLiteral("the stack ended with %1 of %2 pictures")
                 .arg(pictures.size())
                 .arg(request_.planes + 1));
        return;
    }
    if (!combine_) {
        finish(0);
        return;
    }
    fusion_ = new Fusion(this);
    connect(fusion_, &Fusion::progress, this, [this](int percent, const QString& stage) {
        const QString step = stage.section(QLatin1Char(' '), 0, 0);
        if (step == lastStage_) return;
        lastStage_ = step;
        say(stdout, QStringLiteral("fusion %1%: %2").arg(percent).arg(stage));
    });
    connect(fusion_, &Fusion::failed, this, &UnattendedStack::fail);
    connect(fusion_, &Fusion::finished, this, [this](const QString& file) {
        say(stdout, QStringLiteral("combined: %1").arg(QDir::toNativeSeparators(file)));
        finish(0);
    });
    fusion_->start(pictures, output);
}

void UnattendedStack::fail(const QString& message) {
    if (done_) return;
    say(stderr, QStringLiteral("quendrix: ") + message);
    if (fusion_ && fusion_->running()) fusion_->cancel();
    finish(1);
}

void UnattendedStack::finish(int exitCode) {
    if (done_) return;
    done_ = true;
    if (rig_) {
        const auto [lowest, highest] = rig_->span(0);
        say(stdout, QStringLiteral("simulated rail: axis 0 was between %1 and %2 steps since "
                                   "start-up (its ends: 0 and %3)")
                        .arg(lowest)
                        .arg(highest)
                        .arg(rig_->railLength(0).value_or(0)));
    }
    emit finished(exitCode);
}
