#pragma once

#include "session/stackrequest.h"

#include <QObject>
#include <QString>

class CaptureSession;
class Fusion;
class SimulatedRig;
class ctlQuendrix;

// A stack nobody watches: once the rig is in service it plans the stack on the panel and
// starts it with the panel's own stack button, so the panel's timer and release handshake run
// it; the session takes the pictures. One line per picture goes to the standard output, and
// with fusion "combined: PATH" at the end. finished() carries the exit code.
class UnattendedStack : public QObject {
    Q_OBJECT
public:
    UnattendedStack(ctlQuendrix& panel, CaptureSession& session, StackRequest request, bool combine,
                    QObject* parent = nullptr);
    ~UnattendedStack() override;

    // On the simulated rig: its rail bounds the stack too, and the run ends with the span
    // axis 0 covered.
    void watch(const SimulatedRig& rig);
    // Starts the stack on the rig now in service (ready: whether it came into service). A
    // stack that cannot run within its range on this rig is refused before anything moves.
    void start(bool ready);
    // The link to the board broke (`where`: the device or address): the run ends at once, with
    // the pictures taken so far kept in its folder, and says so.
    void linkLost(const QString& where);

signals:
    void finished(int exitCode);

private:
    QString stackText() const;
    // Why the panel's plane steps would not move axis 0 as meant, or empty.
    QString cannotStep() const;
    // Why the stack or its approach would leave axis 0's travel, or empty.
    QString outOfRange() const;
    void onPicture(int plane, const QString& file, qint64 position);
    void onCombine(const QStringList& pictures, const QString& output);
    void fail(const QString& message);
    void finish(int exitCode);

    ctlQuendrix& panel_;
    CaptureSession& session_;
    StackRequest request_;
    bool combine_;
    const SimulatedRig* rig_ = nullptr;
    Fusion* fusion_ = nullptr;
    QString lastStage_;
    bool done_ = false;
    int taken_ = 0;
};
