#pragma once

#include <QByteArray>
#include <QList>

namespace quendrix::sim {

// Cuts the byte stream from the component into commands. A command is one non-blank
// character (its letter) followed by value characters up to and including the first "#" or
// "!". CR, LF and NUL never belong to a command; blanks are skipped between commands but kept
// inside a value. A run of more than maxRun bytes without a terminator is line noise and is
// dropped.
class CommandFramer {
public:
    static constexpr int maxRun = 32;

    QList<QByteArray> feed(const QByteArray& bytes);
    void clear() { pending_.clear(); }
    int droppedRuns() const { return droppedRuns_; }

private:
    QByteArray pending_;
    int droppedRuns_ = 0;
};

}  // namespace quendrix::sim
