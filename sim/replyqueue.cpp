#include "sim/replyqueue.h"

#include <utility>

namespace quendrix::sim {

void ReplyQueue::add(const QByteArray& bytes, double due) {
    // Keep the queue in time order; lines due at the same time keep their order.
    auto at = entries_.end();
    while (at != entries_.begin() && (at - 1)->due > due)
        --at;
    entries_.insert(at, Entry{bytes, due});
}

QByteArray ReplyQueue::take(double now) {
    while (!entries_.isEmpty() && entries_.front().due <= now) {
        if (ready_.isEmpty()) readySince_ = entries_.front().due;
        ready_.append(entries_.takeFirst().bytes);
    }
    if (!split_ || ready_.size() <= 1) return std::exchange(ready_, {});
    const int length = 1 + random_.below(int(ready_.size()));
    QByteArray piece = ready_.left(length);
    ready_.remove(0, length);
    return piece;
}

std::optional<double> ReplyQueue::nextDue() const {
    if (!ready_.isEmpty()) return readySince_;
    if (!entries_.isEmpty()) return entries_.front().due;
    return std::nullopt;
}

void ReplyQueue::clear() {
    entries_.clear();
    ready_.clear();
}

}  // namespace quendrix::sim
