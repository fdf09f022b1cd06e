#include "shortcuts.h"

#include "stackcontrol.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPushButton>

namespace {

void sendMouse(QPushButton* button, QEvent::Type type, Qt::MouseButton which) {
    const QPointF centre = QRectF(button->rect()).center();
    const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? which : Qt::NoButton;
    QMouseEvent event(type, centre, button->mapToGlobal(centre), which, held, Qt::NoModifier);
    QCoreApplication::sendEvent(button, &event);
}

}  // namespace

Shortcuts::Shortcuts(QWidget& window, ctlQuendrix& panel, StackControl& stack)
    : QObject(&window), window_(window), panel_(panel), stack_(stack) {
    qApp->installEventFilter(this);
}

bool Shortcuts::inWindow(QObject* watched) const {
    const auto* widget = qobject_cast<QWidget*>(watched);
    return widget && widget->window() == &window_;
}

bool Shortcuts::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::ApplicationDeactivate ||
        (type == QEvent::WindowDeactivate && watched == &window_)) {
        endJog();  // its key release would never come
        return false;
    }
    if ((type != QEvent::KeyPress && type != QEvent::KeyRelease) || !inWindow(watched))
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool press = type == QEvent::KeyPress;
    if (key->key() == Qt::Key_Escape) {
        // Not taken from the panel: it sees the key as held. The event passes up the parents,
        // so the key counts once per press.
        if (key->isAutoRepeat() || press == escapeDown_) return false;
        escapeDown_ = press;
        if (press) {
            endJog();
            stack_.stop();
        }
        return false;
    }
    if (key->key() != Qt::Key_PageUp && key->key() != Qt::Key_PageDown) return false;
    if (!key->isAutoRepeat()) {
        if (press && jogKey_ == 0)
            startJog(key->key(), key->modifiers() & Qt::ShiftModifier);
        else if (!press && key->key() == jogKey_)
            endJog();
    }
    return true;
}

void Shortcuts::startJog(int key, bool slow) {
    if (stack_.active()) {
        emit notice(tr("Während eines Stapels oder einer Serie wird nicht verfahren."));
        return;
    }
    const quendrix::Panel& p = *panel_.panel();
    const int speed = slow ? 1 : 0;  // the panel's jog buttons: 0 normal, 1 slow
    QPushButton* button = key == Qt::Key_PageUp ? p.Auf[speed] : p.Ab[speed];
    if (!button->isVisible() || !button->isEnabled()) {
        emit notice(tr("Achse 0 lässt sich gerade nicht verfahren."));
        return;
    }
    jogKey_ = key;
    jogging_ = button;
    sendMouse(button, QEvent::MouseMove, Qt::NoButton);  // hovering sets the direction
    sendMouse(button, QEvent::MouseButtonPress, Qt::LeftButton);
}

void Shortcuts::endJog() {
    jogKey_ = 0;
    if (QPushButton* button = jogging_) {
        jogging_ = nullptr;
        sendMouse(button, QEvent::MouseButtonRelease, Qt::LeftButton);
    }
}
