#include "settings/cp1252.h"

#include <array>

namespace quendrix {

namespace {

// Bytes 0x80..0x9F; everything else is Latin-1. The five bytes the code page leaves unassigned
// keep their own code point, so every byte survives a round trip unchanged.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80..87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88..8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90..97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98..9F
};

char encode(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(c);
    for (std::size_t i = 0; i < kHigh.size(); ++i) {
        if (kHigh[i] == c) return static_cast<char>(0x80 + i);
    }
    return '?';
}

}  // namespace

QString fromCp1252(const QByteArray& bytes) {
    QString text(bytes.size(), Qt::Uninitialized);
    QChar* out = text.data();
    for (const char b : bytes) {
        const auto u = static_cast<unsigned char>(b);
        *out++ = QChar(u >= 0x80 && u < 0xA0 ? kHigh[u - 0x80] : char16_t(u));
    }
    return text;
}

QByteArray toCp1252(const QString& text) {
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char* out = bytes.data();
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        // A character outside the BMP is one character, so it becomes one "?", not two.
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) ++i;
        *out++ = encode(c.unicode());
    }
    bytes.truncate(out - bytes.constData());
    return bytes;
}

}  // namespace quendrix
