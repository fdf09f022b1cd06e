#pragma once

#include <QJsonValue>
#include <QString>
#include <QVariant>

// The values of a property bag as JSON, and back. Each type has one readable form: numbers as
// JSON numbers, texts as strings, geometry as small arrays, colours as "#rrggbb", enums by
// their keys, fonts and palettes as objects of named attributes. Where a JSON number cannot
// carry a value exactly the form says so in text: whole numbers beyond 2^53 as decimal texts,
// non-finite numbers as "nan", "inf", "-inf", negative zero as "-0".
//
// Reading takes outside input and must survive any document: every size is bounded by the
// document itself, nothing is decoded from a QDataStream the document chose, nesting is
// limited, and the types that need the GUI (colours, brushes, palettes, fonts, cursors, icons,
// key sequences) are only created while a QGuiApplication exists.
namespace quendrix::variantjson {

// The name a value's type is written under; empty for an empty (invalid) value.
QString typeName(const QVariant& value);

// Encodes a value. Returns false, with the reason, when its type cannot be stored or when
// this value would not read back as it is (a gradient brush, a bitmap cursor, ...).
bool encode(const QVariant& value, QJsonValue* json, QString* why = nullptr);

// Decodes a value that encode() wrote under the given type name.
bool decode(const QString& typeName, const QJsonValue& json, QVariant* value,
            QString* why = nullptr);

// Decodes a value of a version 1 bag, which wrote QJsonValue::fromVariant and converted the
// value back by its type name. Types outside those that form could carry are refused.
bool decodeVersion1(const QString& typeName, const QJsonValue& json, QVariant* value,
                    QString* why = nullptr);

}  // namespace quendrix::variantjson
