#include "unattendedstack.h"

#include "fusion/fusion.h"
#include "session/capturesession.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QDir>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <cstdio>

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

QString UnattendedStack::outOfRange() const {
    const quendrix::Panel& p = *panel_.panel();
    const auto travel = wholeSteps(p.Label13[0]->text());
    if (!travel || *travel <= 0) return {};
    // The panel approaches the start from a millimetre beyond it (a hundredth on the
    // microscope), so that every plane is reached from the same side.
    const double pitch = p.Steigung[0]->text().trimmed().toDouble();
    double beyond = pitch > 0 ? p.Schritte[0]->text().trimmed().toDouble() / pitch : 0;
    if (panel_.Controltyp() == 2) beyond /= 100;
    const qint64 farthest = qint64(qMax(request_.from, request_.to) + beyond + 0.5);
    if (farthest <= *travel) return {};
    return QStringLiteral(
               "--stack %1:%2:%3 reaches %4 steps (the stack runs downward from its "
               "upper end, approached from %5 steps above it), but axis 0 travels only %6 steps "
               "(MaxPosition)")
        .arg(request_.from)
        .arg(request_.to)
        .arg(request_.planes)
        .arg(farthest)
        .arg(qint64(beyond + 0.5))
        .arg(*travel);
}

void UnattendedStack::start(bool ready) {
    quendrix::Panel& p = *panel_.panel();
    if (!ready) {
        fail(QStringLiteral("the rig did not come into service (%1)").arg(p.Text1[0]->text()));
        return;
    }
    if (const QString problem = outOfRange(); !problem.isEmpty()) {
        fail(problem);
        return;
    }
    // The panel runs a stack downward from its start (the start is approached from above, so
    // the planes follow in that direction). Given the lower end as its start, it would run past
    // the other end: it gets the higher one.
    p.BBeginn[0]->setText(QString::number(qMax(request_.from, request_.to)));
    p.BEnde[0]->setText(QString::number(qMin(request_.from, request_.to)));
    p.Ebenen->clear();  // the plan is made again even when the planes stay the same
    p.Ebenen->setText(QString::number(request_.planes));
    if (p.Schrittzahl->text().trimmed().toInt() <= 0) {
        fail(QStringLiteral("the panel cannot make %1 intervals between %2 and %3 steps")
                 .arg(request_.planes)
                 .arg(request_.from)
                 .arg(request_.to));
        return;
    }
    p.AutoKomb->click();
    if (!done_ && quendrix::tag(p.AutoKomb) != QStringLiteral("aktiv") &&
        session_.runPictures().isEmpty())
        fail(QStringLiteral("the panel did not start the stack"));
}

void UnattendedStack::onPicture(int plane, const QString& file, qint64 position) {
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
    emit finished(exitCode);
}
