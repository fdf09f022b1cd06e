#pragma once

#include <QObject>

class ctlQuendrix;

namespace quendrix {

class Panel;

// On the lens-changer rig, a click on one of the changer's positions (lbObjektiv) turns the
// changer there, exactly as a new caption on that position does: the caption is stored and
// the position's changer command sent.
class ChangerClicks : public QObject {
    Q_OBJECT

public:
    ChangerClicks(ctlQuendrix& control, Panel& panel);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ctlQuendrix& control_;
    Panel& panel_;
};

}  // namespace quendrix
