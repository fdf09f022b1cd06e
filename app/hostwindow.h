#pragma once

#include <QMainWindow>

class ctlQuendrix;
class QListWidget;

// The application's window: the panel in the middle, the pictures it asked for in a list at
// the side. It plays the host's part: it "takes" each picture the panel asks for (the camera
// is simulated: a picture takes kExposureMs) and releases the run when it is saved.
class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    static constexpr int kExposureMs = 250;

    HostWindow();
    ctlQuendrix& panel() const { return *panel_; }
    // True once the rig was brought into service; only then does closing save its state.
    bool rigReady() const { return ready_; }
    // Shows a problem the photographer should know of (a setting that could not be used) in the
    // list beside the panel and in the status bar.
    void report(const QString& problem);

protected:
    // Stops the rig and writes its state to the settings file before the window goes.
    void closeEvent(QCloseEvent* event) override;

private:
    void note(const QString& text);
    void takePicture(const QString& number);

    ctlQuendrix* panel_;
    QListWidget* pictures_;
    bool ready_ = false;
    bool shutDown_ = false;
};
