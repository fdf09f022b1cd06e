#include "startup/panelhold.h"

#include <QLayout>
#include <QWidget>

namespace quendrix {

PanelHold::PanelHold(QWidget& panel) : panel_(panel), wasPainting_(panel.updatesEnabled()) {
    panel_.setUpdatesEnabled(false);
    const QList<QLayout*> layouts = panel_.findChildren<QLayout*>();
    for (QLayout* layout : layouts) {
        if (!layout->isEnabled()) continue;  // switched off by someone else: theirs to restore
        layout->setEnabled(false);
        held_.append(layout);
    }
}

PanelHold::~PanelHold() {
    // What changed meanwhile has marked its layouts as out of date, but their requests to lay
    // out again went unanswered: each outermost layout asks once more, and the event loop
    // lays the panel out when it next runs.
    for (const QPointer<QLayout>& layout : std::as_const(held_)) {
        if (layout) layout->setEnabled(true);
    }
    for (const QPointer<QLayout>& layout : std::as_const(held_)) {
        if (layout && layout->parentWidget() && layout->parentWidget()->layout() == layout)
            layout->update();
    }
    panel_.setUpdatesEnabled(wasPainting_);
}

}  // namespace quendrix
