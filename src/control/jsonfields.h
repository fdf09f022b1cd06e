#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QMetaEnum>
#include <QString>
#include <QStringList>

#include <array>
#include <cstddef>
#include <initializer_list>

// The fields of JSON documents that may come from anywhere. Every reader checks what it reads
// (kind, range, form) and on a fault returns false with a short reason that shows the value.
// Writers keep what JSON numbers cannot carry exactly in a text form the readers take back:
// whole numbers beyond 2^53 as decimal texts, "nan", "inf", "-inf" and "-0".
namespace quendrix::jsonfields {

// Sets the reason and returns false.
bool fail(QString& why, const QString& reason);
// A short rendering of a JSON value for a reason.
QString shown(const QJsonValue& json);

// Whole numbers: JSON numbers within 2^53, decimal texts beyond.
QJsonValue wholeToJson(qint64 value);
QJsonValue unsignedToJson(quint64 value);
// Reads a whole number in [min, max] as 64 two's-complement bits.
bool readWholeIn(const QJsonValue& json, qint64 min, quint64 max, quint64* bits, QString& why);
// Reads a whole number in [min, max]; max is not negative.
bool readSigned(const QJsonValue& json, qint64 min, qint64 max, qint64* out, QString& why);
bool readUnsigned(const QJsonValue& json, quint64 max, quint64* out, QString& why);
bool readInt(const QJsonValue& json, int min, int max, int* out, QString& why);
bool readQint64(const QJsonValue& json, qint64* out, QString& why);
bool readBool(const QJsonValue& json, bool* out, QString& why);

// Floating point numbers.
QJsonValue doubleToJson(double value);
// The shortest decimal that reads back as the float: 23.6, not 23.600000381469727.
QJsonValue floatToJson(float value);
bool readDouble(const QJsonValue& json, double* out, QString& why);
bool readFloat(const QJsonValue& json, float* out, QString& why);
bool readFinite(const QJsonValue& json, double* out, QString& why);

// An array of exactly `size` elements.
bool readArray(const QJsonValue& json, qsizetype size, QJsonArray* out, QString& why);

// Texts as strings, a null text as null.
QJsonValue stringToJson(const QString& text);
bool readString(const QJsonValue& json, QString* out, QString& why);
QJsonArray stringListToJson(const QStringList& list);
bool readStringList(const QJsonValue& json, QStringList* out, QString& why);
// Bytes in base64, a null byte array as null.
QJsonValue bytesToJson(const QByteArray& bytes);
bool readBase64(const QJsonValue& json, QByteArray* out, QString& why);

// An enum's value by its key, or as a number where it has none.
QJsonValue keyToJson(const QMetaEnum& meta, int value);
// Reads a key of the enum, or a number, in [min, max].
bool readKey(const QMetaEnum& meta, const QJsonValue& json, int min, int max, int* out,
             QString& why);

// The members of a JSON object, read one by one: a failure names its member and ends the
// reading, and members the object may not have are refused at once.
class Members {
public:
    Members(const QJsonValue& json, const char* what, std::initializer_list<const char*> names,
            QString& why);
    bool has(const char* name) const { return object_.contains(QLatin1String(name)); }
    bool ok() const { return ok_; }

    // read(json, out, why) reads the member's value into *out.
    template <typename T, typename Read>
    Members& optional(const char* name, T* out, Read read) {
        if (ok_ && has(name)) {
            ok_ = read(object_.value(QLatin1String(name)), out, why_);
            if (!ok_) blame(name);
        }
        return *this;
    }
    template <typename T, typename Read>
    Members& required(const char* name, T* out, Read read) {
        if (ok_ && !has(name)) missing(name);
        return optional(name, out, read);
    }

private:
    void blame(const char* name);
    void missing(const char* name);

    QJsonObject object_;
    QString& why_;
    bool ok_ = false;
};

// Readers for Members with a range.
inline auto intIn(int min, int max) {
    return [min, max](const QJsonValue& json, int* out, QString& why) {
        return readInt(json, min, max, out, why);
    };
}

inline auto qint64In(qint64 min, qint64 max) {
    return [min, max](const QJsonValue& json, qint64* out, QString& why) {
        return readSigned(json, min, max, out, why);
    };
}

template <std::size_t N>
auto intsIn(int min, int max) {
    return [min, max](const QJsonValue& json, std::array<int, N>* out, QString& why) {
        QJsonArray array;
        if (!readArray(json, N, &array, why)) return false;
        for (std::size_t i = 0; i < N; ++i)
            if (!readInt(array.at(i), min, max, &(*out)[i], why)) return false;
        return true;
    };
}

template <typename Enum>
auto keyIn(int min, int max) {
    return [min, max](const QJsonValue& json, int* out, QString& why) {
        return readKey(QMetaEnum::fromType<Enum>(), json, min, max, out, why);
    };
}

// The index of a text among names, or -1.
template <std::size_t N>
int indexOf(const char* const (&names)[N], const QJsonValue& json) {
    for (std::size_t i = 0; i < N; ++i)
        if (json.toString() == QLatin1String(names[i])) return int(i);
    return -1;
}

}  // namespace quendrix::jsonfields
