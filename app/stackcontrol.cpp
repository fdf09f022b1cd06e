#include "stackcontrol.h"

#include "session/capturesession.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QCheckBox>
#include <QDynamicPropertyChangeEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QSettings>
#include <QTimer>

namespace {
const QString kActive = QStringLiteral("aktiv");
const QString kCameraSecondsKey = QStringLiteral("capture/secondsPerPicture/");

template <typename Box>
double field(const Box* box) {
    return stackplan::leadingNumber(box->text());
}
}  // namespace

StackControl::StackControl(ctlQuendrix& panel, CaptureSession& session, QObject* parent)
    : QObject(parent),
      panel_(panel),
      panelAlive_(&panel),
      session_(session),
      platform_(panel.platform()) {
    clock_.start();
    platform_.escapeHeld = [this] { return escapeHeld_; };
    platform_.releaseHeldOn = [this] { return session_.holding(); };
    panel_.setPlatform(&platform_);

    quendrix::Panel& p = *panel_.panel();
    p.AutoKomb->installEventFilter(this);
    p.Mittelw->installEventFilter(this);
    // Connected after the panel's own handler, so this runs once the panel's start returned.
    connect(p.AutoKomb, &QPushButton::clicked, this, &StackControl::approachReturned);
    connect(&panel_, &ctlQuendrix::Schicht, this, &StackControl::pictureRequested);
    connect(&session_, &CaptureSession::pictureTaken, this,
            [this](int plane) { pictureTaken(plane); });
    connect(&session_, &CaptureSession::runFailed, this,
            [this](const QString& message) { stopFor(Ending::Failure, message); });
    connect(&session_, &CaptureSession::holdingAfter, this, [this] {
        heldSince_ = now();
        emit changed();
    });
    connect(&session_, &CaptureSession::tickFinished, this, [this] {
        if (phase_ == Phase::Stopping && !stoppedInApproach_) finish();
    });
    connect(p.Text1[1], &QLineEdit::textChanged, this, &StackControl::lineReceived);
}

StackControl::~StackControl() {
    if (panelAlive_ && &panelAlive_->platform() == &platform_)
        panelAlive_->setPlatform(&platform_.base());
}

void StackControl::setPlatform(quendrix::Platform& base) {
    platform_.setBase(base);
    panel_.setPlatform(&platform_);
}

bool StackControl::pauseRequested() const {
    return session_.releaseHeld();
}

bool StackControl::pausedNow() const {
    return session_.holding();
}

double StackControl::remainingSeconds() const {
    return estimate_.remaining(heldSince_ >= 0 ? heldSince_ : now());
}

void StackControl::pause() {
    if (phase_ != Phase::Approach && phase_ != Phase::Running) return;
    session_.holdRelease(true);
    emit changed();
}

void StackControl::resume() {
    if (heldSince_ >= 0) estimate_.leaveOut(now() - heldSince_);
    heldSince_ = -1;
    session_.holdRelease(false);
    emit changed();
}

bool StackControl::eventFilter(QObject* watched, QEvent* event) {
    const quendrix::Panel& p = *panel_.panel();
    if (event->type() == QEvent::DynamicPropertyChange) {
        if (static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName() == "Tag")
            tagChanged(watched);
        return false;
    }
    if (watched == p.AutoKomb && event->type() == QEvent::MouseButtonRelease &&
        event->spontaneous() && static_cast<QMouseEvent*>(event)->button() == Qt::RightButton &&
        active()) {
        // The panel heeds its own abort only once the approach is over; the window's stop holds
        // in every phase.
        stop();
        return true;
    }
    if (!startGesture(watched, event)) return false;
    auto* button = static_cast<QPushButton*>(watched);
    if (active()) {
        button->setDown(false);
        emit notice(
            tr("Es läuft schon ein Stapel oder eine Serie: anhalten mit »Stopp« oder Esc."));
        return true;
    }
    if (linkLost_) {
        button->setDown(false);
        emit notice(tr("Keine Verbindung zur Steuerung: erst neu verbinden."));
        return true;
    }
    if (watched != p.AutoKomb) return false;
    // The window clicks the button itself: after a question the button may have lost its
    // pressed state, and the release would then click nothing.
    button->setDown(false);
    if (confirmDirection() && withinTravel()) {
        beginStack();
        button->click();  // the panel's start; approachReturned follows it
        if (phase_ == Phase::Approach) phase_ = Phase::Idle;
    }
    emit changed();
    return true;
}

// A left click or the space bar that makes the button start its run.
bool StackControl::startGesture(QObject* watched, QEvent* event) const {
    const quendrix::Panel& p = *panel_.panel();
    if (watched != p.AutoKomb && watched != p.Mittelw) return false;
    const auto* button = static_cast<const QPushButton*>(watched);
    if (!button->isEnabled() || !button->isDown()) return false;
    if (event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<const QMouseEvent*>(event);
        return mouse->button() == Qt::LeftButton &&
               button->rect().contains(mouse->position().toPoint());
    }
    if (event->type() == QEvent::KeyRelease) {
        const auto* key = static_cast<const QKeyEvent*>(event);
        return (key->key() == Qt::Key_Space || key->key() == Qt::Key_Select) &&
               !key->isAutoRepeat();
    }
    return false;
}

bool StackControl::confirmDirection() {
    quendrix::Panel& p = *panel_.panel();
    const double begin = field(p.BBeginn[0]), end = field(p.BEnde[0]);
    const auto direction =
        stackplan::runDirection(panel_.MotorArt0(), quendrix::value(p.Check0[4]));
    if (stackplan::reachesEnd(begin, end, direction)) return true;
    const QString way = direction == stackplan::Direction::Down ? tr("abwärts") : tr("aufwärts");
    const int answer = panel_.platform().messageBox(
        tr("Der Stapel läuft von Beginn (%1) %2 und käme so nie zum Ende (%3): er liefe "
           "darüber hinaus bis ans Ende der Schiene.\n\n"
           "Beginn und Ende tauschen und den Stapel starten?")
            .arg(p.BBeginn[0]->text().trimmed(), way, p.BEnde[0]->text().trimmed()),
        quendrix::MsgBox::YesNo | quendrix::MsgBox::Exclamation, tr("Stapel"));
    if (answer != quendrix::MsgBox::Yes) {
        emit reported(tr("Stapel nicht gestartet: er liefe %1 vom Ende weg.").arg(way));
        return false;
    }
    const QString text = p.BBeginn[0]->text();
    p.BBeginn[0]->setText(p.BEnde[0]->text());
    p.BEnde[0]->setText(text);
    emit reported(tr("Beginn und Ende getauscht: der Stapel läuft von %1 %2 bis %3.")
                      .arg(p.BBeginn[0]->text().trimmed(), way, p.BEnde[0]->text().trimmed()));
    return true;
}

bool StackControl::withinTravel() {
    const quendrix::Panel& p = *panel_.panel();
    const double travel = field(p.Label13[0]);  // MaxPosition of axis 0
    const double point = stackplan::approachPoint(field(p.BBeginn[0]), axis());
    if (travel <= 0 || point <= travel) return true;
    panel_.platform().messageBox(
        tr("Der Stapel beginnt bei %1 Schritten und wird von %2 Schritten aus angefahren; "
           "Achse 0 reicht aber nur bis %3 Schritte (MaxPosition). Die Steuerung liefe ihn von "
           "der jetzigen Stelle aus.\n\n"
           "Der Stapel wird nicht gestartet.")
            .arg(p.BBeginn[0]->text().trimmed())
            .arg(point)
            .arg(p.Label13[0]->text().trimmed()),
        quendrix::MsgBox::OKOnly | quendrix::MsgBox::Exclamation, tr("Stapel"));
    emit reported(tr("Stapel nicht gestartet: sein Beginn liegt jenseits des Wegs von Achse 0 "
                     "(%1 Schritte).")
                      .arg(p.Label13[0]->text().trimmed()));
    return false;
}

stackplan::Axis StackControl::axis() const {
    const quendrix::Panel& p = *panel_.panel();
    stackplan::Axis axis;
    axis.stepPause = field(p.Taktpause[0]);
    const double lead = field(p.Steigung[0]);
    axis.stepsPerMm = lead != 0 ? field(p.Schritte[0]) / lead : 0;
    axis.controltyp = panel_.Controltyp();
    axis.motorArt0 = int(panel_.MotorArt0());
    return axis;
}

void StackControl::beginStack() {
    const quendrix::Panel& p = *panel_.panel();
    const stackplan::Axis axis = this->axis();
    stack_ = true;
    RunEstimate::Plan plan;
    plan.pictures = int(field(p.Ebenen)) + 1;
    plan.approachSeconds =
        stackplan::approachSeconds(field(p.lblPosition1[0]), field(p.BBeginn[0]), axis);
    plan.moveSeconds = stackplan::planeMoveSeconds(field(p.Schrittzahl), axis);
    beginRun(plan, Phase::Approach);
}

// A new run, stack or series, of `plan`'s pictures: nothing taken, nothing held, no ending yet.
void StackControl::beginRun(RunEstimate::Plan plan, Phase phase) {
    taken_ = 0;
    pictures_ = plan.pictures;
    plan.pauseSeconds = field(panel_.panel()->wartezeit) / 1000;
    plan.cameraSeconds = cameraSeconds();
    estimate_.start(plan, now());
    if (phase == Phase::Running) estimate_.approached(now());
    ending_ = Ending::Complete;
    detail_.clear();
    stoppedInApproach_ = false;
    heldSince_ = -1;
    phase_ = phase;
    emit changed();
}

void StackControl::approachReturned() {
    const bool started = quendrix::tag(panel_.panel()->AutoKomb) == kActive;
    if (phase_ == Phase::Stopping && stoppedInApproach_) {
        if (started) session_.stop();  // the panel began its run at the end of the approach
        finish();
    } else if (phase_ == Phase::Approach) {
        phase_ = started ? Phase::Running : Phase::Idle;  // the panel may refuse the plan
        if (started) estimate_.approached(now());
        emit changed();
    } else if (phase_ == Phase::Idle && started) {
        trackRun();
    }
}

// A run the window did not start itself: an averaging series, or a stack started by a call.
void StackControl::trackRun() {
    const quendrix::Panel& p = *panel_.panel();
    stack_ = quendrix::tag(p.AutoKomb) == kActive;
    if (!stack_ && quendrix::tag(p.Mittelw) != kActive) return;
    RunEstimate::Plan plan;
    plan.pictures =
        stack_
            ? int(field(p.Ebenen)) + 1
            : int(stackplan::leadingNumber(panel_.ini(
                  QStringLiteral("Verzeichnis"), QStringLiteral("Serie"), QStringLiteral("10"))));
    beginRun(plan, Phase::Running);
}

// The panel ends its runs by clearing their tags: a run that ends so, unasked, is complete.
void StackControl::tagChanged(QObject* button) {
    const quendrix::Panel& p = *panel_.panel();
    if (phase_ != Phase::Running || quendrix::tag(button) == kActive) return;
    if (quendrix::tag(p.AutoKomb) == kActive || quendrix::tag(p.Mittelw) == kActive) return;
    ending_ = Ending::Complete;
    keepCameraSeconds();
    if (!session_.holding()) session_.holdRelease(false);
    phase_ = Phase::Idle;
    emit reported(endingLine());
    emit changed();
}

void StackControl::pictureRequested(const QString& number) {
    if (phase_ == Phase::Idle) trackRun();
    if (phase_ == Phase::Running) estimate_.pictureRequested(number.trimmed().toInt(), now());
    emit changed();
}

void StackControl::pictureTaken(int plane) {
    if (phase_ != Phase::Running) return;
    taken_ = plane;
    estimate_.pictureTaken(plane, now());
    emit changed();
}

// The board's notice of a limit switch on axis 0 ("q |! Endschalter unten"), as the panel's log
// box shows the last line received.
void StackControl::lineReceived(const QString& line) {
    if (phase_ != Phase::Approach && phase_ != Phase::Running) return;
    const QString text = line.mid(3);  // after "_> " or "=> "
    const qsizetype mark = text.indexOf(QStringLiteral("|!"));
    if (!text.startsWith(QLatin1Char('q')) || mark < 0) return;
    QString what = text.mid(mark + 2).trimmed();
    if (what.isEmpty()) what = tr("Endschalter");
    // Not from inside the panel's evaluation of the line: the stop talks to the board.
    QTimer::singleShot(0, this, [this, what] { stopFor(Ending::LimitSwitch, what); });
}

void StackControl::stopFor(Ending why, const QString& detail) {
    if (phase_ == Phase::Idle || phase_ == Phase::Stopping) return;
    ending_ = why;
    detail_ = detail;
    stoppedInApproach_ = phase_ == Phase::Approach;
    phase_ = Phase::Stopping;
    escapeHeld_ = true;  // every wait of the panel ends now
    emit changed();
    if (stoppedInApproach_) {
        // The approach stops where it is; the panel's start then runs through without waiting,
        // and once it returned its run is ended (approachReturned).
        if (tellsBoard()) send(QStringLiteral("s#"));
        return;
    }
    session_.stop();
    if (stack_ && tellsBoard()) send(QStringLiteral("s#"));
    if (!session_.insideTick()) finish();
}

void StackControl::finish() {
    if (phase_ != Phase::Stopping) return;
    escapeHeld_ = false;
    if (stack_ && tellsBoard()) {
        // As after a finished stack: axis 0 at rest, at normal speed, the board told.
        quendrix::Panel& p = *panel_.panel();
        if (stoppedInApproach_) send(QStringLiteral("s#"));
        if (panel_.Controltyp() != 1) send(QStringLiteral("y0#"));
        if (quendrix::value(p.Check0[6]) != 1) quendrix::setValue(p.Check0[6], 1);
    }
    panel_.Timer3()->stop();  // the run's tail may have started it again
    keepCameraSeconds();
    heldSince_ = -1;
    phase_ = Phase::Idle;
    emit reported(endingLine());
    emit changed();
}

// How long a picture takes with the camera now chosen: as measured in the last run with it,
// here or in an earlier session.
double StackControl::cameraSeconds() const {
    const Camera* camera = session_.camera();
    if (!camera) return 0;
    return QSettings().value(kCameraSecondsKey + camera->kind(), 0.0).toDouble();
}

void StackControl::keepCameraSeconds() {
    const Camera* camera = session_.camera();
    if (taken_ == 0 || !camera) return;
    QSettings().setValue(kCameraSecondsKey + camera->kind(), estimate_.cameraSeconds());
}

QString StackControl::endingLine() const {
    const QString count = tr("%1 von %2 Bildern").arg(taken_).arg(pictures_);
    QString why;
    switch (ending_) {
        case Ending::Complete:
            return (stack_ ? tr("Stapel vollständig: %1") : tr("Mittelwert-Serie vollständig: %1"))
                .arg(count);
        case Ending::Photographer:
            why = tr("Stopp");
            break;
        case Ending::Failure:
            why = tr("Fehler");
            break;
        case Ending::LimitSwitch:
            why = detail_;
            break;
        case Ending::Closed:
            why = tr("Fenster geschlossen");
            break;
        case Ending::LinkLost:
            why = tr("Verbindung verloren");
            break;
    }
    return (stack_ ? tr("Stapel abgebrochen (%1): %2")
                   : tr("Mittelwert-Serie abgebrochen (%1): %2"))
        .arg(why, count);
}

void StackControl::send(const QString& command) {
    try {
        panel_.Output(command);
    } catch (const std::exception& error) {
        emit notice(tr("%1 nicht gesendet: %2").arg(command, error.what()));
    }
}
