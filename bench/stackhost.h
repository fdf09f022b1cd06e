#pragma once

// A stack as the benchmarks run it: the panel set up for a run of planes down to a fixed end,
// on a link that has found the board, and a host whose camera takes its time for each picture.
#include "control/internals.h"
#include "link/link.h"
#include "motion/motion.h"
#include "simprocess.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>

constexpr int kStackPauseMs = 10;  // wartezeit
constexpr int kStackEnd = 1000;
constexpr int kStepPauseMicroseconds = 100;  // Taktpause; the stack sets its moves' pace from it

// Opens the port and fills in the stack: `planes` planes of `steps` steps each.
inline bool prepareStack(ctlQuendrix& control, const QString& device, int planes, int steps) {
    quendrix::Panel& p = *control.panel();
    if (!openSerial(*control.MSComm1(), device)) return false;
    quendrix::internals(control).link()->setQuittiert(true);
    quendrix::internals(control).motion()->setMaxPosition(0, 10000000);
    p.Steigung[0]->setText(QStringLiteral("1"));
    p.Schritte[0]->setText(QStringLiteral("400"));
    p.Taktpause[0]->setText(QString::number(kStepPauseMicroseconds));
    control.Output(QStringLiteral("w%1#").arg(kStepPauseMicroseconds));
    p.wartezeit->setText(QString::number(kStackPauseMs));
    p.BBeginn[0]->setText(QString::number(qint64(steps) * planes + kStackEnd));
    p.BEnde[0]->setText(QString::number(kStackEnd));
    p.Ebenen->setText(QString::number(planes));
    return true;
}

// What happened in a stack, in milliseconds.
struct StackRecord {
    QList<double> requested;   // each picture request
    QList<double> released;    // each picture taken and the run released
    QList<double> moveEndsBy;  // per request: the last "|F" of axis 0 before it (-1: none)
    bool combined = false;     // the run's end (Kombinieren)
};

// The host: on each picture request (Schicht) it holds the run (SetOK(false)), takes the
// picture in `cameraMs` (0: at once) and releases the run. Times in milliseconds on `clock`.
class StackHost {
public:
    StackHost(ctlQuendrix& control, const QElapsedTimer& clock, int cameraMs)
        : control_(control), clock_(clock), cameraMs_(cameraMs) {
        camera_.setSingleShot(true);
        camera_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&camera_, &QTimer::timeout, [this] { release(); });
        QObject::connect(&control, &ctlQuendrix::Schicht, [this](const QString&) {
            record.requested.append(now());
            record.moveEndsBy.append(lastMoveEnd_);
            if (cameraMs_ <= 0) {
                release();
                return;
            }
            control_.SetOK(false);
            camera_.start(cameraMs_);
        });
        QObject::connect(quendrix::internals(control).link(), &quendrix::Link::moveFinished,
                         [this](int axis) {
                             if (axis == 0) lastMoveEnd_ = now();
                         });
        QObject::connect(&control, &ctlQuendrix::Kombinieren, [this] { record.combined = true; });
    }

    double now() const { return clock_.nsecsElapsed() / 1e6; }
    bool busy() const { return camera_.isActive(); }

    StackRecord record;

private:
    void release() {
        record.released.append(now());
        control_.SetOK(true);
    }

    ctlQuendrix& control_;
    const QElapsedTimer& clock_;
    int cameraMs_;
    QTimer camera_;
    double lastMoveEnd_ = -1;
};
