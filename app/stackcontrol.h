#pragma once

#include "hostplatform.h"
#include "runestimate.h"
#include "stackplan.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>

class CaptureSession;
class ctlQuendrix;

// The window's hold on the panel's runs. The panel keeps running its stacks and series as it
// documents; around it the window
// - asks before a stack whose plane steps would run away from its end, and offers to swap
//   start and end;
// - starts no second run while one goes on (a second click on the stack button would start
//   the stack anew);
// - stops a run reliably in every phase (the approach to the start, the pause before a picture,
//   the capture, the plane step, the wait for the release): with the stop button, Escape, the
//   right button on the stack button (which the panel itself heeds only once the approach is
//   over), when the rig reports a limit switch, and when the link to the board breaks (a run
//   without a board would take its pictures all in one place);
// - pauses a run by holding the release after the current plane, for as long as wanted;
// - says how each run ended and estimates the time a stack has left.
class StackControl : public QObject {
    Q_OBJECT
public:
    enum class Phase { Idle, Approach, Running, Stopping };
    enum class Ending { Complete, Photographer, Failure, LimitSwitch, Closed, LinkLost };

    StackControl(ctlQuendrix& panel, CaptureSession& session, QObject* parent = nullptr);
    ~StackControl() override;

    // The panel's surroundings in the window are `base` (Qt's by default) plus what stopping and
    // pausing need (see HostPlatform).
    void setPlatform(quendrix::Platform& base);

    Phase phase() const { return phase_; }
    bool active() const { return phase_ != Phase::Idle; }
    bool isStack() const { return stack_; }
    bool pauseRequested() const;
    bool pausedNow() const;
    int taken() const { return taken_; }
    int pictures() const { return pictures_; }
    // Seconds the run has left, as far as can be told now.
    double remainingSeconds() const;

    // The photographer's stop; does nothing when no run goes on.
    void stop() { stopFor(Ending::Photographer); }
    // The window closes: the run ends where it is.
    void stopForClosing() { stopFor(Ending::Closed); }
    // The link to the board broke: the run ends where it is, with nothing more sent, and no run
    // starts until the link is back (setLinkLost(false)).
    void stopForLostLink() {
        linkLost_ = true;
        stopFor(Ending::LinkLost);
    }
    void setLinkLost(bool lost) { linkLost_ = lost; }
    // Holds the release after the current plane; resume lets it go.
    void pause();
    void resume();

signals:
    void changed();
    // A line for the pictures list: how a run ended, or why a stack was not started as planned.
    void reported(const QString& line);
    // Something the photographer should read now (the status bar).
    void notice(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool startGesture(QObject* watched, QEvent* event) const;
    // The stack's direction against its end; false when the photographer keeps it unstarted.
    bool confirmDirection();
    // The panel skips an approach beyond axis 0's travel and would run the stack from wherever
    // the axis stands: such a stack is not started.
    bool withinTravel();
    stackplan::Axis axis() const;
    void beginStack();
    void beginRun(RunEstimate::Plan plan, Phase phase);
    void approachReturned();
    void trackRun();
    void tagChanged(QObject* button);
    void pictureRequested(const QString& number);
    void pictureTaken(int plane);
    void lineReceived(const QString& line);
    void stopFor(Ending why, const QString& detail = {});
    // The panel's run code has returned: the board is left as after a finished stack.
    void finish();
    double cameraSeconds() const;
    void keepCameraSeconds();
    QString endingLine() const;
    double now() const { return clock_.nsecsElapsed() / 1e9; }
    // Whether the end of the run is told to the board: not when the window closes (the
    // shutdown stops the rig) nor when there is no board to tell.
    bool tellsBoard() const { return ending_ != Ending::Closed && ending_ != Ending::LinkLost; }
    void send(const QString& command);

    ctlQuendrix& panel_;
    QPointer<ctlQuendrix> panelAlive_;  // the panel may outlive this, its surroundings must not
    CaptureSession& session_;
    HostPlatform platform_;
    Phase phase_ = Phase::Idle;
    bool stack_ = true;
    bool escapeHeld_ = false;
    bool stoppedInApproach_ = false;
    bool linkLost_ = false;
    Ending ending_ = Ending::Complete;
    QString detail_;
    int taken_ = 0;
    int pictures_ = 0;
    QElapsedTimer clock_;
    RunEstimate estimate_;
    double heldSince_ = -1;
};
