#pragma once

#include <QByteArray>
#include <cstddef>
#include <cstdint>

// Takes a fuzzer's bytes apart: short length-prefixed pieces first, the rest last.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : bytes_(reinterpret_cast<const char*>(data), qsizetype(size)) {}

    bool atEnd() const { return at_ >= bytes_.size(); }
    std::uint8_t byte() { return atEnd() ? 0 : std::uint8_t(bytes_[at_++]); }
    // A piece of at most 255 bytes, its length given by the byte before it.
    QByteArray piece() {
        const qsizetype length = byte();
        const QByteArray taken = bytes_.mid(at_, length);
        at_ += taken.size();
        return taken;
    }
    QByteArray rest() {
        const QByteArray taken = bytes_.mid(at_);
        at_ = bytes_.size();
        return taken;
    }

private:
    QByteArray bytes_;
    qsizetype at_ = 0;
};
