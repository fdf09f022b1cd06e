#pragma once

#include "camera/camera.h"

#include <QSize>
#include <atomic>
#include <functional>
#include <memory>

template <typename T>
class QFutureWatcher;

// The camera of the simulated rig: each picture is the synthetic subject (subject.h) rendered
// with the focus where the rail stands when the picture is asked for, with sensor noise from a
// new seed each time, written as TIFF (".tif", ".tiff") or PNG (".png") by its file's suffix.
// The picture is rendered and written on a worker thread; the answer comes on this object's
// thread. A picture appears under its name only when complete.
class SimCamera final : public Camera {
    Q_OBJECT
public:
    // focusSteps tells where the simulated rail stands now (the rig's truth).
    explicit SimCamera(std::function<double()> focusSteps, QSize size = {1024, 768},
                       QObject* parent = nullptr);
    ~SimCamera() override;

    // The sensor noise, standard deviation in 8-bit levels.
    void setNoise(double sigma);
    double noise() const { return noise_; }

    QString kind() const override { return QStringLiteral("sim"); }
    void capture(const Shot& shot) override;
    void cancel() override;

private:
    // Shared with the workers, which may outlive the camera: the subject, built on first use.
    struct Studio;

    void failLater(const QString& message);

    std::function<double()> focusSteps_;
    std::shared_ptr<Studio> studio_;
    double noise_ = 3;
    quint32 seed_ = 0;
    quint64 generation_ = 0;  // answers of an earlier generation are dropped
    QFutureWatcher<QString>* pending_ = nullptr;
    std::shared_ptr<std::atomic_bool> abandoned_;  // tells the pending worker not to write
};
