#pragma once

#include <QObject>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace quendrix::sim {

// A one-shot wake-up to the microsecond (Linux timerfd): a Qt timer counts whole milliseconds,
// and a byte at 115200 baud takes less than a tenth of one.
class Alarm : public QObject {
    Q_OBJECT
public:
    explicit Alarm(std::function<void()> ring, QObject* parent = nullptr);
    ~Alarm() override;

    // Rings once, `seconds` from now (at once when that has passed); replaces a pending ring.
    void ringIn(double seconds);
    void cancel();

private:
    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::function<void()> ring_;
};

}  // namespace quendrix::sim
