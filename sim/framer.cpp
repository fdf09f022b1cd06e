#include "sim/framer.h"

namespace quendrix::sim {

QList<QByteArray> CommandFramer::feed(const QByteArray& bytes) {
    QList<QByteArray> commands;
    for (const char c : bytes) {
        if (c == '\r' || c == '\n' || c == '\0') continue;
        if (pending_.isEmpty() && c == ' ') continue;
        pending_.append(c);
        if (pending_.size() > 1 && (c == '#' || c == '!')) {
            commands.append(pending_);
            pending_.clear();
        } else if (pending_.size() > maxRun) {
            pending_.clear();
            ++droppedRuns_;
        }
    }
    return commands;
}

}  // namespace quendrix::sim
