#pragma once

#include <QJsonValue>
#include <QString>

class QBrush;
class QColor;
class QCursor;
class QFont;
class QIcon;
class QKeySequence;
class QPalette;

// The JSON forms of the GUI types in a property bag: colours as "#rrggbb" (or their raw
// components), brushes as their colour or pattern, palettes and fonts as objects of named
// attributes, cursors by their shape, icons as their theme name or PNG pictures, key sequences
// in portable text. Values of these types may only be created while a QGuiApplication exists:
// callers check guiAvailable() before reading one.
namespace quendrix::variantjson {

bool guiAvailable();
// Whether a type id is one of the GUI types.
bool needsGui(int typeId);

QJsonValue colorToJson(const QColor& color);
bool readColor(const QJsonValue& json, QColor* out, QString& why);
bool brushToJson(const QBrush& brush, QJsonValue* json, QString& why);
bool readBrush(const QJsonValue& json, QBrush* out, QString& why);
bool paletteToJson(const QPalette& palette, QJsonValue* json, QString& why);
bool readPalette(const QJsonValue& json, QPalette* out, QString& why);
QJsonValue fontToJson(const QFont& font);
bool readFont(const QJsonValue& json, QFont* out, QString& why);
bool cursorToJson(const QCursor& cursor, QJsonValue* json, QString& why);
bool readCursor(const QJsonValue& json, QCursor* out, QString& why);
bool iconToJson(const QIcon& icon, QJsonValue* json, QString& why);
bool readIcon(const QJsonValue& json, QIcon* out, QString& why);
QJsonValue keySequenceToJson(const QKeySequence& keys);
bool readKeySequence(const QJsonValue& json, QKeySequence* out, QString& why);

}  // namespace quendrix::variantjson
