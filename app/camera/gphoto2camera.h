#pragma once

#include "camera/camera.h"

#include <QThread>

#include <atomic>
#include <memory>

class Gphoto2Session;

// A real camera on USB through libgphoto2. Every library call blocks, so they all run on one
// worker thread that owns the connection; the answers come back on this object's thread. The
// camera is detected on the first capture and kept open across the stack until release().
class Gphoto2Camera final : public Camera {
    Q_OBJECT
public:
    explicit Gphoto2Camera(QObject* parent = nullptr);
    ~Gphoto2Camera() override;  // releases the camera; no thread left running

    QString kind() const override { return QStringLiteral("gphoto2"); }
    void capture(const Shot& shot) override;
    void cancel() override;
    void release() override;

    // A photographer's message for a libgphoto2 result code.
    static QString explain(int gphotoResult);

private:
    void onSessionDone(quint64 generation, bool ok, const QString& fileOrMessage);

    QThread m_thread;
    Gphoto2Session* m_session = nullptr;  // lives on m_thread
    // The capture the camera still wants; the session abandons a job whose number differs.
    std::shared_ptr<std::atomic<quint64>> m_wanted;
    quint64 m_generation = 0;
    bool m_busy = false;
};
