#pragma once

#include <QJsonValue>
#include <QString>
#include <QVariant>

// The values of a property bag as JSON, and back. Each type has one form:
//   bool                          true, false
//   whole numbers, char to 64 bit JSON numbers; beyond 2^53 decimal texts ("9007199254740993")
//   enums and flags               their keys ("StrongFocus", "ImhDigitsOnly|ImhNoPredictiveText"),
//                                 a number where the value has none
//   float, double                 JSON numbers; "nan", "inf", "-inf", "-0"
//   QChar, QString, QStringList   texts: one character, a string, an array of strings
//   QByteArray                    base64
//   QPoint, QSize, QLine, QMargins, QRect and their F variants
//                                 [x, y], [width, height], [x1, y1, x2, y2],
//                                 [left, top, right, bottom], [x, y, width, height]
//   QDate, QTime, QDateTime, QUrl, QUuid, QColor, QKeySequence
//                                 their text ("2024-02-29", "#0a141e", "Ctrl+S", ...), only
//                                 for a value that its text gives back exactly
//   QPalette, QFont, QIcon, QCursor, QSizePolicy, QLocale, QBrush
//                                 base64 of their QDataStream form (stream version Qt 6.4)
//   an empty (invalid) value      null, under the type name ""
//
// Reading takes outside input and survives any document. Values of the last group are only
// read in a program with a QGuiApplication: their streams are Qt's own binary forms, which are
// not made for hostile input.
namespace quendrix::variantjson {

// The name a value's type is written under; empty for an empty value.
QString typeName(const QVariant& value);

// Encodes a value. Returns false, with the reason, when its type has no form or when this value
// would not read back as it is (a date beyond year 9999, an HSV colour, ...).
bool encode(const QVariant& value, QJsonValue* json, QString* why = nullptr);

// Decodes a value that encode() wrote under the given type name.
bool decode(const QString& typeName, const QJsonValue& json, QVariant* value,
            QString* why = nullptr);

// Decodes a value of a version 1 bag, which wrote QJsonValue::fromVariant and converted the
// value back to its type. Values of a type the program does not know keep the form they have.
bool decodeVersion1(const QString& typeName, const QJsonValue& json, QVariant* value,
                    QString* why = nullptr);

}  // namespace quendrix::variantjson
