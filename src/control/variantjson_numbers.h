#pragma once

#include <QJsonValue>
#include <QMetaType>
#include <QVariant>

#include <optional>

// The forms of the property bag's numeric values (see variantjson.h): whole numbers and enums,
// floating point numbers, and geometry as small arrays of numbers. The readers return an empty
// QVariant for anything but the form.
namespace quendrix::variantjson {

// Whole numbers beyond 2^53 are decimal texts; enums and flags are written by their keys.
bool isWhole(QMetaType type);
QJsonValue wholeToJson(const QVariant& value);
QVariant wholeFromJson(QMetaType type, const QJsonValue& json);

// Numbers a JSON number cannot carry are the texts "nan", "inf", "-inf" and "-0".
QJsonValue doubleToJson(double value);
std::optional<double> doubleFromJson(const QJsonValue& json);
// The shortest decimal that reads back as the float: 23.6, not 23.600000381469727.
QJsonValue floatToJson(float value);
QVariant floatFromJson(const QJsonValue& json);

// Points, sizes, lines, margins and rectangles, with int or double coordinates.
bool isGeometry(QMetaType type);
QJsonValue geometryToJson(const QVariant& value);
QVariant geometryFromJson(QMetaType type, const QJsonValue& json);

}  // namespace quendrix::variantjson
