#pragma once

#include <QList>
#include <QPointer>

class QLayout;
class QWidget;

namespace quendrix {

// While a long sequence fills the panel in many small steps between the board's answers, the
// panel is neither painted nor laid out after each step: every layout in it is switched off
// (so showing, hiding and relabelling a control costs no geometry work), and painting is held.
// Released, the panel is laid out and painted once.
class PanelHold {
public:
    explicit PanelHold(QWidget& panel);
    ~PanelHold();
    PanelHold(const PanelHold&) = delete;
    PanelHold& operator=(const PanelHold&) = delete;

private:
    QWidget& panel_;
    bool wasPainting_;
    QList<QPointer<QLayout>> held_;
};

}  // namespace quendrix
