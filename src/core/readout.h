#pragma once

#include <QLocale>
#include <QString>
#include <QtGlobal>
#include <optional>

// The position readouts of the axes.
namespace quendrix {

// Label9's caption tells what the position readout of axis 0 (lblPosition(0)) shows:
// millimetres exactly when the caption holds "mm", steps otherwise.
bool readoutInMillimetres(const QString& label9Caption);

// Millimetres as the position readouts show them ("##,##0.00").
QString millimetresText(double mm, const QLocale& locale);

// The text of a position readout for a position of `steps` whose millimetres are `mm` (none
// when they cannot be computed): the steps, or in millimetres the millimetres. None when it
// shows millimetres and there are none: the readout keeps what it shows.
std::optional<QString> positionReadout(qint32 steps, std::optional<float> mm, bool inMillimetres,
                                       const QLocale& locale);

}  // namespace quendrix
