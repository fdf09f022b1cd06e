#include "control/panelhold.h"

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
    // Invalidated layouts ask their widgets for a new layout; Qt merges the requests into one
    // pass per window part when the event loop next runs.
    for (const QPointer<QLayout>& layout : std::as_const(held_)) {
        if (!layout) continue;
        layout->setEnabled(true);
        layout->invalidate();
    }
    panel_.setUpdatesEnabled(wasPainting_);
}

}  // namespace quendrix
