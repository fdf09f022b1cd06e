#include "control/glyphlabel.h"

#include <QPainter>
#include <QPainterPath>

namespace quendrix {

namespace {

// A filled triangle pointing in the direction (dx, dy) with its tip at `tip`.
QPainterPath arrowHead(QPointF tip, QPointF direction, double size) {
    const QPointF back = tip - direction * size;
    const QPointF across(-direction.y() * size * 0.6, direction.x() * size * 0.6);
    QPainterPath path;
    path.moveTo(tip);
    path.lineTo(back + across);
    path.lineTo(back - across);
    path.closeSubpath();
    return path;
}

// An open chevron ">" with its tip at `tip`.
QPainterPath chevron(QPointF tip, double size) {
    QPainterPath path;
    path.moveTo(tip + QPointF(-size * 0.6, -size));
    path.lineTo(tip);
    path.lineTo(tip + QPointF(-size * 0.6, size));
    return path;
}

}  // namespace

void GlyphLabel::paintEvent(QPaintEvent* event) {
    const QString mark = text();
    const QRectF box = QRectF(contentsRect()).adjusted(2, 2, -2, -2);
    const QPointF centre = box.center();
    const double size = std::min(box.width(), box.height()) / 2;
    QPainterPath filled, stroked;
    if (mark == u"é") {
        filled = arrowHead(centre - QPointF(0, size), {0, -1}, 2 * size);
    } else if (mark == u"ê") {
        filled = arrowHead(centre + QPointF(0, size), {0, 1}, 2 * size);
    } else if (mark == u"×Ø") {  // open: arrows pointing apart
        filled = arrowHead({box.left(), centre.y()}, {-1, 0}, size);
        filled.addPath(arrowHead({box.right(), centre.y()}, {1, 0}, size));
    } else if (mark == u"Ø×") {  // close: arrows pointing together
        filled = arrowHead({centre.x() - 1, centre.y()}, {1, 0}, size);
        filled.addPath(arrowHead({centre.x() + 1, centre.y()}, {-1, 0}, size));
    } else if (mark == u"/") {
        stroked = chevron(centre + QPointF(size * 0.2, 0), size * 0.8);
        stroked.addPath(chevron(centre + QPointF(size * 0.9, 0), size * 0.8));
    } else if (mark == u".") {
        stroked = chevron(centre + QPointF(size * 0.4, 0), size * 0.8);
    } else if (mark == u"L") {
        filled.addRect(QRectF(centre.x() - size * 0.5, centre.y() - 1.5, size, 3));
    } else {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink =
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText);
    painter.fillPath(filled, ink);
    painter.strokePath(stroked, QPen(ink, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

}  // namespace quendrix
