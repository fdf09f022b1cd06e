#pragma once

#include "core/calibrationmath.h"

#include <QPointF>
#include <QWidget>
#include <optional>
#include <vector>

namespace quendrix {

// The calibration curve: each measured row as a point, extension (upwards) against
// magnification (to the right), and the straight line a = f * m - s0 the list yields.
class CalibrationPlot : public QWidget {
    Q_OBJECT

public:
    explicit CalibrationPlot(QWidget* parent = nullptr);

    // Shows the rows of `table` that have a magnification, and its fitted line.
    void setTable(const DoubleTable& table);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<QPointF> points_;  // (magnification, extension)
    std::optional<calibration::FittedLine> line_;
};

}  // namespace quendrix
