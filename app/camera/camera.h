#pragma once

#include <QObject>
#include <QString>

// One picture the run asks for: where it must be written, which plane of the run it is
// (1-based) and where axis 0 stood, in motor steps, when it was asked for.
struct Shot {
    QString file;
    int plane = 1;
    qint64 position = 0;
};

// A camera the host takes its pictures with. capture() starts one picture and returns at once;
// the camera answers later, from the event loop, with captured() once the picture is on disk
// or failed() with a message a photographer can act on. One capture at a time.
class Camera : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // The name the photographer chose it by ("sim", "command", "gphoto2").
    virtual QString kind() const = 0;
    virtual void capture(const Shot& shot) = 0;
    // Ends the capture under way, if any; no signal follows for it.
    virtual void cancel() {}
    // The run is over: a camera that keeps a connection open across a run lets it go.
    virtual void release() {}

signals:
    void captured(const QString& file);
    void failed(const QString& message);
};
