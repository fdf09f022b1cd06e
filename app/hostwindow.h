#pragma once

#include "camerachoice.h"
#include "options.h"

#include <QImage>
#include <QMainWindow>
#include <functional>

class BoardFinder;
class CaptureSession;
class ConnectionWatcher;
class Fusion;
class FusionPreview;
class LinkBar;
class Shortcuts;
class StackBox;
class StackControl;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QSpinBox;
class ctlQuendrix;
namespace quendrix {
class Platform;
}

// The application's window: the panel at the left, in its own size; beside it, taking whatever
// room the window has, the stack's controls (presets, pause, stop, the time left), what was
// taken, a preview of the stack so far and of its fusion, and the camera the pictures are taken
// with. It plays the host's part through a CaptureSession: each picture the panel asks for is
// taken into the run's folder before the run is released, and a finished stack is fused. The
// StackControl keeps the panel's runs safe (see there).
class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    HostWindow();
    ~HostWindow() override;
    ctlQuendrix& panel() const { return *panel_; }
    CaptureSession& session() const { return *session_; }
    Fusion& fusion() const { return *fusion_; }
    StackControl& stackControl() const { return *stack_; }
    ConnectionWatcher& connection() const { return *connection_; }
    LinkBar& linkBar() const { return *linkBar_; }
    // The panel's surroundings (dialogs, clock, keys): Qt's unless set.
    void setPlatform(quendrix::Platform& platform);
    // The camera to start with; focus tells the simulated camera where the rail stands, and
    // picturesRoot (empty: the default) is where each run gets its folder.
    void setCamera(const CameraChoice& choice, std::function<double()> focus,
                   const QString& picturesRoot);
    // How the rig is started again after its link broke: serial (also the simulated rig) or
    // WiFi; only a serial board is searched for.
    void setBoard(Options::Board board);
    // The rig is not in service: the bar across the window says why and offers to try again.
    void offerReconnect(const QString& why, const QString& advice);
    // True once the rig was brought into service; only then does closing save its state.
    bool rigReady() const { return ready_; }
    // What the application made of the start-up: a rig it does not call ready (its board
    // does not acknowledge) is not shut down through the panel on closing either.
    void setRigReady(bool ready) { ready_ = ready; }
    // Shows a problem the photographer should know of (a setting that could not be used, a
    // picture that could not be taken) in the list beside the panel and in the status bar.
    void report(const QString& problem);

protected:
    // The preview follows the size of its place.
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Stops the rig and writes its state to the settings file before the window goes.
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* buildSide();
    QWidget* buildCameraBox();
    void note(const QString& text);
    void applyCamera();
    void combine(const QStringList& pictures, const QString& output);
    void showPicture(const QImage& picture);
    void linkLost(const QString& what);
    void reconnect();
    void searchBoard();
    void boardFound(const QString& device, const QString& identification);

    ctlQuendrix* panel_;
    CaptureSession* session_;
    Fusion* fusion_;
    FusionPreview* preview_;
    StackControl* stack_;
    StackBox* stackBox_;
    Shortcuts* shortcuts_;
    ConnectionWatcher* connection_;
    BoardFinder* finder_;
    LinkBar* linkBar_;
    QListWidget* pictures_;
    QLabel* picture_;
    QProgressBar* fusionProgress_;
    QPushButton* cancelFusion_;
    QComboBox* cameraKind_;
    QLineEdit* captureCommand_;
    QSpinBox* captureTimeout_;
    QLineEdit* picturesRoot_;
    QImage shown_;
    std::function<double()> focus_;
    bool ready_ = false;
    bool shutDown_ = false;
};
