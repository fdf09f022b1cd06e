#include "settings/variantcompare.h"

#include <QString>
#include <QStringView>
#include <algorithm>
#include <utility>

namespace quendrix {

namespace {

// What a value counts as when compared. Whole numbers are kept apart from floating ones so
// that large 64-bit values compare exactly.
struct Operand {
    enum Kind { Empty, Whole, Unsigned, Floating, Text } kind = Empty;
    qint64 whole = 0;
    quint64 unsignedWhole = 0;
    double floating = 0.0;
    QString text;
};

Operand classify(const QVariant& v) {
    Operand op;
    if (!v.isValid()) return op;
    switch (v.metaType().id()) {
        case QMetaType::Bool:
            op.kind = Operand::Whole;
            op.whole = v.toBool() ? -1 : 0;
            break;
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::UChar:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::LongLong:
            op.kind = Operand::Whole;
            op.whole = v.toLongLong();
            break;
        case QMetaType::ULong:
        case QMetaType::ULongLong:
            op.kind = Operand::Unsigned;
            op.unsignedWhole = v.toULongLong();
            break;
        case QMetaType::Float:
        case QMetaType::Double:
            op.kind = Operand::Floating;
            op.floating = v.toDouble();
            break;
        default:
            // Texts, and anything else by its text form.
            op.kind = Operand::Text;
            op.text = v.toString();
            break;
    }
    return op;
}

bool isNumber(const Operand& op) {
    return op.kind != Operand::Text && op.kind != Operand::Empty;
}

double asDouble(const Operand& op) {
    switch (op.kind) {
        case Operand::Whole:
            return double(op.whole);
        case Operand::Unsigned:
            return double(op.unsignedWhole);
        case Operand::Floating:
            return op.floating;
        default:
            return 0.0;
    }
}

template <typename A, typename B>
int sign(A a, B b) {
    if constexpr (std::is_integral_v<A> && std::is_integral_v<B>) {
        return std::cmp_less(a, b) ? -1 : (std::cmp_greater(a, b) ? 1 : 0);
    } else {
        return a < b ? -1 : (a > b ? 1 : 0);
    }
}

int compareNumbers(const Operand& a, const Operand& b) {
    if (a.kind == Operand::Floating || b.kind == Operand::Floating)
        return sign(asDouble(a), asDouble(b));
    const bool au = a.kind == Operand::Unsigned;
    const bool bu = b.kind == Operand::Unsigned;
    if (au && bu) return sign(a.unsignedWhole, b.unsignedWhole);
    if (au) return sign(a.unsignedWhole, b.whole);
    if (bu) return sign(a.whole, b.unsignedWhole);
    return sign(a.whole, b.whole);
}

// Binary order of the UTF-16 code units, independent of locale and case.
int compareTexts(const QString& a, const QString& b) {
    const QStringView va(a);
    const QStringView vb(b);
    const auto [ia, ib] = std::mismatch(va.begin(), va.end(), vb.begin(), vb.end());
    if (ia != va.end() && ib != vb.end()) return ia->unicode() < ib->unicode() ? -1 : 1;
    return sign(a.size(), b.size());
}

}  // namespace

bool isNumeric(const QVariant& value) {
    return isNumber(classify(value));
}

int variantCompare(const QVariant& a, const QVariant& b) {
    Operand x = classify(a);
    Operand y = classify(b);
    // An empty value takes the part of 0 or "" to suit the other side.
    if (x.kind == Operand::Empty && y.kind == Operand::Empty) return 0;
    if (x.kind == Operand::Empty) x.kind = y.kind == Operand::Text ? Operand::Text : Operand::Whole;
    if (y.kind == Operand::Empty) y.kind = x.kind == Operand::Text ? Operand::Text : Operand::Whole;

    if (isNumber(x) && isNumber(y)) return compareNumbers(x, y);
    if (isNumber(x)) return -1;  // a number before a text
    if (isNumber(y)) return 1;
    return compareTexts(x.text, y.text);
}

}  // namespace quendrix
