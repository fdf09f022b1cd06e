#pragma once

#include "camerachoice.h"

#include <QMainWindow>
#include <functional>

class CaptureSession;
class Fusion;
class FusionPreview;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QSpinBox;
class ctlQuendrix;

// The application's window: the panel in the middle; at the side what was taken, a preview
// of the stack so far and of its fusion, and the camera the pictures are taken with. It plays
// the host's part through a CaptureSession: each picture the panel asks for is taken into the
// run's folder before the run is released, and a finished stack is fused.
class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    HostWindow();
    ~HostWindow() override;
    ctlQuendrix& panel() const { return *panel_; }
    CaptureSession& session() const { return *session_; }
    Fusion& fusion() const { return *fusion_; }
    // The camera to start with; focus tells the simulated camera where the rail stands, and
    // picturesRoot (empty: the default) is where each run gets its folder.
    void setCamera(const CameraChoice& choice, std::function<double()> focus,
                   const QString& picturesRoot);
    // True once the rig was brought into service; only then does closing save its state.
    bool rigReady() const { return ready_; }
    // Shows a problem the photographer should know of (a setting that could not be used, a
    // picture that could not be taken) in the list beside the panel and in the status bar.
    void report(const QString& problem);

protected:
    // Keeps a stack started from the panel within its plan (see keepStackWithinPlan).
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Stops the rig and writes its state to the settings file before the window goes.
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* buildCameraBox();
    void note(const QString& text);
    void applyCamera();
    void combine(const QStringList& pictures, const QString& output);
    void showPicture(const QImage& picture);
    // The panel runs a stack downward from its start: started at the lower end, it would run
    // past the other one. The photographer's range is kept, with the higher end as the start.
    void keepStackWithinPlan();

    ctlQuendrix* panel_;
    CaptureSession* session_;
    Fusion* fusion_;
    FusionPreview* preview_;
    QListWidget* pictures_;
    QLabel* picture_;
    QProgressBar* fusionProgress_;
    QPushButton* cancelFusion_;
    QComboBox* cameraKind_;
    QLineEdit* captureCommand_;
    QSpinBox* captureTimeout_;
    QLineEdit* picturesRoot_;
    std::function<double()> focus_;
    bool ready_ = false;
    bool shutDown_ = false;
};
