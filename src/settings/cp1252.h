#pragma once

#include <QByteArray>
#include <QString>

namespace quendrix {

// Bytes on the wire and in the profile and calibration files are Windows-1252.
QString fromCp1252(const QByteArray& bytes);
// Characters the code page cannot hold become "?".
QByteArray toCp1252(const QString& text);

}  // namespace quendrix
