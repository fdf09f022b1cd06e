#pragma once

#include <QByteArray>
#include <QList>
#include <optional>
#include <random>

namespace quendrix::sim {

// The board's source of chance: a Mersenne twister, whose sequence is fixed by the C++
// standard, so a seed gives the same faults with every compiler.
class Random {
public:
    explicit Random(quint32 seed) : engine_(seed) {}
    double uniform() { return engine_() / 4294967296.0; }  // in [0, 1)
    int below(int n) { return int(uniform() * n); }        // in [0, n)
    bool chance(double p) { return p > 0 && uniform() < p; }

private:
    std::mt19937 engine_;
};

// Lines on their way out: each waits until its time has come (the reply delay is added by
// the caller), then joins the bytes that are due. With splitting on, each call hands out only
// a random-length front part of them; the rest waits for the next call.
class ReplyQueue {
public:
    ReplyQueue(Random& random, bool split) : random_(random), split_(split) {}

    void add(const QByteArray& bytes, double due);
    QByteArray take(double now);
    std::optional<double> nextDue() const;
    void clear();

private:
    struct Entry {
        QByteArray bytes;
        double due;
    };
    Random& random_;
    bool split_;
    QList<Entry> entries_;
    QByteArray ready_;  // due bytes that a split left behind
    double readySince_ = 0;
};

}  // namespace quendrix::sim
