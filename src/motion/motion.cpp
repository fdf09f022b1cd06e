// Wiring the motion controls of the panel to their handlers.
#include "motion/motion.h"

#include "settings/guard.h"
#include "settings/mousebuttons.h"

#include <quendrix/Panel.h>
#include "settings/rig.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace quendrix {

namespace {

template <size_t N>
int indexIn(const std::array<QPushButton*, N>& buttons, const QObject* watched) {
    for (size_t i = 0; i < N; ++i)
        if (buttons[i] == watched) return int(i);
    return -1;
}

}  // namespace

Motion::Motion(Rig& rig, Panel& panel, Link& link, Waiter& waiter)
    : rig_(rig), panel_(panel), link_(link), waiter_(waiter) {
    connectPanel();
}

void Motion::connectPanel() {
    Panel& p = panel_;
    for (int i = 0; i < int(p.Check0.size()); ++i)
        connect(p.Check0[i], &QCheckBox::stateChanged, this,
                guardedSlot(rig_, [this, i] { Check0_Click(i); }));
    for (int i = 0; i < 5; ++i) {
        connect(p.Auf[i], &QPushButton::clicked, this,
                guardedSlot(rig_, [this, i] { jogClicked(i); }));
        connect(p.Ab[i], &QPushButton::clicked, this,
                guardedSlot(rig_, [this, i] { jogClicked(i); }));
    }
    // Jog buttons watch press, release and hovering (mouse moves without a button held).
    std::vector<QPushButton*> jog(p.Auf.begin(), p.Auf.end());
    jog.insert(jog.end(), p.Ab.begin(), p.Ab.end());
    jog.insert(jog.end(), {p.B_AUF[0], p.B_AUF[1], p.B_ZU[0], p.B_ZU[1]});
    for (QPushButton* button : jog) {
        button->installEventFilter(this);
        button->setMouseTracking(true);
    }
    p.Drehen->installEventFilter(this);
    p.Label9->installEventFilter(this);

    connect(p.cmdHeben, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { cmdHeben_Click(); }));
    connect(p.cmdSenken, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { cmdSenken_Click(); }));
    // Enter in the raise box keeps the amount for the next start.
    connect(p.Anheben, &QLineEdit::returnPressed, this, guardedSlot(rig_, [this] {
                rig_.setini(rig_.MotorName() + QLatin1Char('0'), QStringLiteral("anheben"),
                            panel_.Anheben->text());
            }));

    for (int axis = 0; axis < 2; ++axis) {
        connect(p.cbEndschalter[axis], &QCheckBox::stateChanged, this,
                guardedSlot(rig_, [this, axis] { cbEndschalter_Click(axis); }));
        connect(p.cbDrehrichtungArduino[axis], &QCheckBox::stateChanged, this,
                guardedSlot(rig_, [this, axis] { cbDrehrichtungArduino_Click(axis); }));
        connect(p.cbMikroschritt[axis], &QCheckBox::stateChanged, this,
                guardedSlot(rig_, [this, axis] { cbMikroschritt_Click(axis); }));
        connect(p.Taktsetzen[axis], &QPushButton::clicked, this,
                guardedSlot(rig_, [this, axis] { Taktsetzen_Click(axis); }));
        connect(p.cSpiel[axis], &QPushButton::clicked, this,
                guardedSlot(rig_, [this, axis] { cSpiel_Click(axis); }));
        const auto& options = axis == 0 ? p.micro0 : p.micro1;
        for (int k = 0; k < int(options.size()); ++k) {
            connect(options[k], &QRadioButton::toggled, this, [this, axis, k](bool selected) {
                if (selected) runGuarded(rig_.platform(), [&] { micro_Click(axis, k); });
            });
        }
    }
}

// The jog buttons, the rotate button and the position caption react to the mouse itself:
// which button was pressed or released, and hovering.
bool Motion::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonRelease &&
        type != QEvent::MouseMove)
        return QObject::eventFilter(watched, event);
    const int button = mouseButtonCode(event);
    Panel& p = panel_;
    runGuarded(rig_.platform(), [&] {
        if (const int up = indexIn(p.Auf, watched), down = indexIn(p.Ab, watched);
            up >= 0 || down >= 0) {
            if (type == QEvent::MouseMove)
                jogHovered(up >= 0);
            else if (type == QEvent::MouseButtonPress)
                jogPressed(up >= 0, std::max(up, down));
            else
                jogReleased();
        } else if (const int open = indexIn(p.B_AUF, watched), close = indexIn(p.B_ZU, watched);
                   open >= 0 || close >= 0) {
            if (type == QEvent::MouseMove)
                bellowsHovered(open >= 0);
            else if (type == QEvent::MouseButtonPress)
                bellowsPressed(open >= 0, std::max(open, close));
            else
                bellowsReleased(button);
        } else if (watched == p.Drehen && type == QEvent::MouseButtonRelease) {
            Drehen_MouseUp(button);
        } else if (watched == p.Label9 && type == QEvent::MouseButtonRelease && button == 1) {
            Label9_Click();
        }
    });
    return QObject::eventFilter(watched, event);
}

}  // namespace quendrix
