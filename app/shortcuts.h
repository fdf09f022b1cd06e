#pragma once

#include <QObject>
#include <QPointer>

class QPushButton;
class QWidget;
class StackControl;
class ctlQuendrix;

// The window's keys, wherever the focus is in it:
// - Escape stops a running stack or series. The key still reaches the panel, for which a held
//   Escape ends the wait it is in, as the panel documents.
// - Page Up / Page Down move axis 0 up / down while held (with Shift slowly), through the
//   panel's own jog buttons: the button is hovered (which sets the direction), pressed ("r#")
//   and let go ("s#") as with the mouse. A jog ends when the window loses the keyboard too.
class Shortcuts : public QObject {
    Q_OBJECT
public:
    Shortcuts(QWidget& window, ctlQuendrix& panel, StackControl& stack);

signals:
    void notice(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool inWindow(QObject* watched) const;
    void startJog(int key, bool slow);
    void endJog();

    QWidget& window_;
    ctlQuendrix& panel_;
    StackControl& stack_;
    QPointer<QPushButton> jogging_;
    int jogKey_ = 0;
    bool escapeDown_ = false;
};
