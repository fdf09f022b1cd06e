#include "control/calibrationplot.h"

#include "settings/textformat.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace quendrix {

namespace {

// A round step (1, 2 or 5 times a power of ten) that cuts `span` into about four parts.
double tickStep(double span) {
    const double raw = span / 4;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (double factor : {1.0, 2.0, 5.0})
        if (raw <= factor * power) return factor * power;
    return 10 * power;
}

// Lower and upper end of an axis showing every value in [low, high], with a little room.
std::pair<double, double> axisRange(double low, double high) {
    const double pad = high > low ? (high - low) * 0.08 : std::max(std::fabs(low) * 0.1, 1e-3);
    return {low - pad, high + pad};
}

int decimalsFor(double step) {
    return std::clamp(int(-std::floor(std::log10(step) + 1e-9)), 0, 6);
}

}  // namespace

CalibrationPlot::CalibrationPlot(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("Kalibrierkurve"));
    setMinimumHeight(150);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize CalibrationPlot::sizeHint() const {
    return {260, 150};
}

void CalibrationPlot::setTable(const DoubleTable& table) {
    points_.clear();
    if (!table.isEmpty()) {
        for (int j = table.lbound(2); j <= table.ubound(2); ++j) {
            const double m = table(calibration::Magnification, j);
            if (m > 0) points_.emplace_back(m, table(calibration::Extension, j));
        }
    }
    line_ = calibration::fittedLine(table);
    update();
}

void CalibrationPlot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colours = palette();
    painter.fillRect(rect(), colours.base());
    painter.setPen(colours.color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (points_.empty()) {
        painter.setPen(colours.color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter, tr("Noch keine Messreihe"));
        return;
    }

    QLocale numbers = locale();
    numbers.setNumberOptions(QLocale::OmitGroupSeparator);
    const QFontMetrics metrics = painter.fontMetrics();
    const int lineHeight = metrics.height();
    const QRectF area =
        QRectF(rect()).adjusted(metrics.horizontalAdvance(QStringLiteral("0000.0")) + 8,
                                lineHeight * 3 / 2 + 6, -10, -2 * lineHeight - 4);

    auto [mLow, mHigh] = std::minmax_element(points_.begin(), points_.end(),
                                             [](auto& a, auto& b) { return a.x() < b.x(); });
    const auto [x0, x1] = axisRange(mLow->x(), mHigh->x());
    double aLow = points_.front().y(), aHigh = aLow;
    for (const QPointF& p : points_)
        aLow = std::min(aLow, p.y()), aHigh = std::max(aHigh, p.y());
    if (line_) {
        for (double m : {x0, x1}) {
            aLow = std::min(aLow, line_->extensionAt(m));
            aHigh = std::max(aHigh, line_->extensionAt(m));
        }
    }
    const auto [y0, y1] = axisRange(aLow, aHigh);
    // Named copies: structured bindings cannot be captured by every compiler this builds with.
    auto toScreen = [&, x0 = x0, x1 = x1, y0 = y0, y1 = y1](double m, double a) {
        return QPointF(area.left() + (m - x0) / (x1 - x0) * area.width(),
                       area.bottom() - (a - y0) / (y1 - y0) * area.height());
    };

    // Axes, ticks and their labels.
    const QColor text = colours.color(QPalette::Text);
    painter.setPen(QPen(colours.color(QPalette::Mid), 1));
    painter.drawLine(area.bottomLeft(), area.bottomRight());
    painter.drawLine(area.bottomLeft(), area.topLeft());
    const double xStep = tickStep(x1 - x0), yStep = tickStep(y1 - y0);
    painter.setPen(text);
    for (double m = std::ceil(x0 / xStep) * xStep; m <= x1; m += xStep) {
        const QPointF at = toScreen(m, y0);
        painter.drawLine(at, at + QPointF(0, 3));
        const QString label = numbers.toString(m, 'f', decimalsFor(xStep));
        const int labelWidth = metrics.horizontalAdvance(label);
        const double left = std::min(at.x() - labelWidth / 2.0, width() - 3.0 - labelWidth);
        painter.drawText(QRectF(left, at.y() + 3, labelWidth + 1, lineHeight), label);
    }
    for (double a = std::ceil(y0 / yStep) * yStep; a <= y1; a += yStep) {
        const QPointF at = toScreen(x0, a);
        painter.drawLine(at, at - QPointF(3, 0));
        painter.drawText(QRectF(0, at.y() - lineHeight / 2.0, at.x() - 5, lineHeight),
                         Qt::AlignRight | Qt::AlignVCenter,
                         numbers.toString(a, 'f', decimalsFor(yStep)));
    }
    painter.drawText(QRectF(area.left(), area.bottom() + lineHeight + 2, area.width(), lineHeight),
                     Qt::AlignRight, tr("Maßstab"));
    painter.drawText(QRectF(4, 3, width() - 8, lineHeight), Qt::AlignLeft, tr("Auszug [mm]"));

    // The fitted line and what it gives, then the measurements on top.
    painter.setClipRect(area);
    if (line_) {
        painter.setPen(QPen(colours.color(QPalette::Highlight), 1.5));
        painter.drawLine(toScreen(x0, line_->extensionAt(x0)),
                         toScreen(x1, line_->extensionAt(x1)));
        painter.setClipping(false);
        painter.setPen(text);
        painter.drawText(
            QRectF(4, 3, width() - 8, lineHeight), Qt::AlignRight,
            QStringLiteral("f = %1 mm, s0 = %2 mm")
                .arg(formatNumber(line_->focalLength, QStringLiteral("##0.00"), locale()),
                     formatNumber(line_->offset, QStringLiteral("##0.00"), locale())));
        painter.setClipRect(area);
    }
    painter.setPen(QPen(text, 1));
    painter.setBrush(colours.color(QPalette::Highlight).darker(130));
    for (const QPointF& p : points_)
        painter.drawEllipse(toScreen(p.x(), p.y()), 3.0, 3.0);
}

}  // namespace quendrix
