#pragma once

#include "camera/camera.h"

#include <QFutureWatcher>
#include <QObject>
#include <QStringList>
#include <memory>
#include <optional>

class ctlQuendrix;

// The host's side of the panel's runs. Each picture the panel asks for (Schicht) is taken
// with the camera into the run's folder, and the run is released (SetOK) only once the
// picture is on disk. An averaging series (Mittelwert) is averaged into one picture, a copy
// (Kopie) taken beside the run's pictures, and a finished stack (Kombinieren) handed on for
// fusion. A capture that fails stops the panel's run where it is, with the operator's own
// abort, and says why. The host can stop a run itself, and pause it by holding the release.
class CaptureSession : public QObject {
    Q_OBJECT
public:
    explicit CaptureSession(ctlQuendrix& panel, QObject* parent = nullptr);
    ~CaptureSession() override;

    void setCamera(std::unique_ptr<Camera> camera);
    Camera* camera() const { return camera_.get(); }
    // Each run gets a new folder under root (the window's way).
    void setPicturesRoot(const QString& root);
    // Every picture goes straight into dir (an unattended run's way).
    void setFixedFolder(const QString& dir);
    // The pictures' format: "tif" or "png".
    void setSuffix(const QString& suffix) { suffix_ = suffix; }

    QString runFolder() const { return folder_; }
    // The run's pictures so far, in plane order.
    QStringList runPictures() const { return pictures_; }
    bool capturing() const { return pending_.has_value(); }

    // Ends the panel's run (a stack or an averaging series) wherever it stands: a capture under
    // way is cancelled, the panel's own abort clears the run, and a run waiting for its release
    // is let go, so that the wait ends. What the panel still does after that (one more tick, or
    // the end of a series it then believes in) is dropped.
    void stop();
    // While held, a picture on disk does not release the run: its plane is done and the run
    // waits there. Letting go releases it.
    void holdRelease(bool hold);
    bool releaseHeld() const { return hold_; }
    // A picture is on disk and its release is held: the run waits.
    bool holding() const { return holding_; }
    // True while the panel works through a tick of its run timer: a picture asked for and
    // waited for, a plane step.
    bool insideTick() const { return tickDepth_ > 0; }

signals:
    void pictureTaken(int plane, const QString& file, qint64 position);
    void copyTaken(const QString& file);
    void averaged(const QString& file, int pictures);
    // A stack is complete: its pictures are to be fused into output.
    void combineRequested(const QStringList& pictures, const QString& output);
    void failed(const QString& message);
    // A picture could not be taken, so the run was stopped (failed() follows with the message).
    void runFailed(const QString& message);
    // The run waits after this plane, its release held.
    void holdingAfter(int plane);
    // A tick of the panel's run timer has returned.
    void tickFinished();

protected:
    // Runs the panel's ticks, and drops those that come after a run was stopped.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class RunKind { None, Stack, Series };
    struct Pending {
        Shot shot;
        bool copy = false;
    };

    void onSchicht(const QString& number);
    void onKopie();
    void onMittelwert(const QString& count);
    void onKombinieren(const QString& count);
    void onCaptured(const QString& file);
    void onCameraFailed(const QString& message);
    bool beginRun(RunKind kind);
    bool ensureFolder();
    void capture(const Shot& shot, bool copy);
    qint64 axisPosition() const;
    // Ends the panel's run after a failed picture and says why.
    void stopRun(const QString& message);

    ctlQuendrix& panel_;
    std::unique_ptr<Camera> camera_;
    QString root_;
    QString fixedFolder_;
    QString suffix_ = QStringLiteral("tif");
    QString folder_;
    RunKind kind_ = RunKind::None;
    QStringList pictures_;
    int copies_ = 0;
    std::optional<Pending> pending_;
    bool hold_ = false;
    bool holding_ = false;
    bool stopped_ = false;  // the run was stopped; a series' end it then reports is not one
    int tickDepth_ = 0;
    QFutureWatcher<QString> averaging_;
    QString averageFile_;
    int averageCount_ = 0;
};
