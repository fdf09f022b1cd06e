#include "control/changerclicks.h"

#include "settings/guard.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QLabel>
#include <QMouseEvent>
#include <algorithm>

namespace quendrix {

ChangerClicks::ChangerClicks(ctlQuendrix& control, Panel& panel)
    : QObject(&control), control_(control), panel_(panel) {
    for (QLabel* position : panel_.lbObjektiv) {
        position->setCursor(Qt::PointingHandCursor);
        position->installEventFilter(this);
    }
}

// A left click counts when the button is let go over the position it was pressed on.
bool ChangerClicks::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::MouseButtonRelease || control_.Controltyp() != 1)
        return QObject::eventFilter(watched, event);
    const auto* release = static_cast<QMouseEvent*>(event);
    const auto position = std::find(panel_.lbObjektiv.begin(), panel_.lbObjektiv.end(), watched);
    if (position != panel_.lbObjektiv.end() && release->button() == Qt::LeftButton &&
        (*position)->rect().contains(release->position().toPoint())) {
        const auto index = qint16(position - panel_.lbObjektiv.begin());
        runGuarded(control_.platform(), [&] { control_.lbObjektiv_Change(index); });
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quendrix
