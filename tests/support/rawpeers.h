#pragma once

#include <QByteArray>
#include <QString>

// The far end of a real pseudo-terminal, written and read byte for byte by a test that plays
// the board itself (the control opens devicePath() with its serial port).
class RawPty {
public:
    RawPty();
    ~RawPty();
    RawPty(const RawPty&) = delete;
    RawPty& operator=(const RawPty&) = delete;

    bool isOpen() const { return master_ >= 0; }
    QString devicePath() const { return path_; }
    void write(const QByteArray& bytes);
    // Everything that has arrived so far (does not wait).
    QByteArray readAll();

private:
    int master_ = -1;
    QString path_;
};
