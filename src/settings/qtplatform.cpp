// The default surroundings of the component: Qt's dialogs, a monotonic clock, the
// application's event loop, and a key state kept from the key events the application sees.
#include <quendrix/Platform.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHash>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSet>
#include <QThread>
#include <QTimer>
#include <cmath>
#include <utility>

namespace quendrix {

Platform::~Platform() = default;

QList<int> MsgBox::answers(int style) {
    switch (style & 7) {
        case OKCancel:
            return {OK, Cancel};
        case AbortRetryIgnore:
            return {Abort, Retry, Ignore};
        case YesNoCancel:
            return {Yes, No, Cancel};
        case YesNo:
            return {Yes, No};
        case RetryCancel:
            return {Retry, Cancel};
        default:
            return {OK};
    }
}

int MsgBox::defaultAnswer(int style) {
    const QList<int> offered = answers(style);
    return offered.value((style & 768) / 256, offered.first());
}

namespace {

// Windows virtual-key codes of the keys Qt reports.
int virtualKeyOf(int qtKey) {
    if (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z) return 'A' + (qtKey - Qt::Key_A);
    if (qtKey >= Qt::Key_0 && qtKey <= Qt::Key_9) return '0' + (qtKey - Qt::Key_0);
    if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F12) return 112 + (qtKey - Qt::Key_F1);
    switch (qtKey) {
        case Qt::Key_Backspace:
            return 8;
        case Qt::Key_Tab:
            return 9;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return VirtualKey::Return;
        case Qt::Key_Shift:
            return 16;
        case Qt::Key_Control:
            return 17;
        case Qt::Key_Alt:
            return 18;
        case Qt::Key_Escape:
            return VirtualKey::Escape;
        case Qt::Key_Space:
            return 32;
        case Qt::Key_Left:
            return 37;
        case Qt::Key_Up:
            return 38;
        case Qt::Key_Right:
            return 39;
        case Qt::Key_Down:
            return 40;
        case Qt::Key_Delete:
            return 46;
        default:
            return 0;
    }
}

// Keeps which keys are held, from every key event the application delivers. Waits let the
// event loop run, so a key pressed during a wait is seen here before the wait looks.
class KeyState : public QObject {
public:
    bool isDown(int virtualKey) const { return down_.contains(virtualKey); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
            case QEvent::KeyPress:
            case QEvent::KeyRelease: {
                auto* key = static_cast<QKeyEvent*>(event);
                const int code = virtualKeyOf(key->key());
                if (code != 0 && !key->isAutoRepeat()) {
                    if (event->type() == QEvent::KeyPress)
                        down_.insert(code);
                    else
                        down_.remove(code);
                }
                break;
            }
            case QEvent::ApplicationDeactivate:
                // A key released while another application has the focus is never reported.
                down_.clear();
                break;
            default:
                break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QSet<int> down_;
};

class QtPlatform final : public Platform {
public:
    QtPlatform() { clock_.start(); }

    int messageBox(const QString& prompt, int style, const QString& title) override {
        QMessageBox box(iconOf(style), title.isEmpty() ? QStringLiteral("Quendrix") : title, prompt,
                        QMessageBox::NoButton, QApplication::activeWindow());
        const QList<int> answers = MsgBox::answers(style);
        QList<QPushButton*> buttons;
        for (int answer : answers)
            buttons.append(box.addButton(buttonOf(answer)));
        box.setDefaultButton(buttons.value(answers.indexOf(MsgBox::defaultAnswer(style))));
        box.exec();
        const int clicked = int(buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton())));
        // Closing the box counts as Cancel where there is one, else as the only button.
        if (clicked < 0) return answers.contains(MsgBox::Cancel) ? MsgBox::Cancel : answers.first();
        return answers.at(clicked);
    }

    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override {
        bool ok = false;
        const QString text = QInputDialog::getText(
            QApplication::activeWindow(), title.isEmpty() ? QStringLiteral("Quendrix") : title,
            prompt, QLineEdit::Normal, defaultText, &ok);
        return ok ? text : QString();
    }

    double now() override { return clock_.nsecsElapsed() / 1e9; }

    void idle(double seconds) override {
        if (!QCoreApplication::instance()) {
            if (seconds > 0) QThread::usleep(static_cast<unsigned long>(seconds * 1e6));
            return;
        }
        if (seconds <= 0) {
            QCoreApplication::processEvents(QEventLoop::AllEvents);
            return;
        }
        // The timer bounds the sleep: WaitForMoreEvents returns as soon as anything (a reply,
        // a click, this timer) has been handled.
        QTimer wake;
        wake.setSingleShot(true);
        wake.start(std::max(1, static_cast<int>(std::lround(seconds * 1000))));
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }

    bool isKeyDown(int virtualKey) override {
        watchKeys();
        switch (virtualKey) {  // mouse buttons have virtual-key codes too
            case 1:
                return QGuiApplication::mouseButtons() & Qt::LeftButton;
            case 2:
                return QGuiApplication::mouseButtons() & Qt::RightButton;
            case 4:
                return QGuiApplication::mouseButtons() & Qt::MiddleButton;
            default:
                return keys_ && keys_->isDown(virtualKey);
        }
    }

    QString componentFolder() override {
        return QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString();
    }

    bool inDesigner() override {
        return qEnvironmentVariableIntValue("QUENDRIX_DESIGNER") != 0 ||
               (QCoreApplication::instance() &&
                QCoreApplication::applicationName().compare(QStringLiteral("designer"),
                                                            Qt::CaseInsensitive) == 0);
    }

    // Starts following key events once an application exists.
    void watchKeys() {
        if (keys_ || !QCoreApplication::instance()) return;
        keys_ = new KeyState;
        keys_->setParent(QCoreApplication::instance());
        QCoreApplication::instance()->installEventFilter(keys_);
    }

private:
    // The message box's icon for the icon bits (16 to 64) of a style.
    static QMessageBox::Icon iconOf(int style) {
        static constexpr std::pair<int, QMessageBox::Icon> kIcons[] = {
            {MsgBox::Critical, QMessageBox::Critical},
            {MsgBox::Question, QMessageBox::Question},
            {MsgBox::Exclamation, QMessageBox::Warning},
            {MsgBox::Information, QMessageBox::Information}};
        for (const auto& [bits, icon] : kIcons)
            if ((style & 112) == bits) return icon;
        return QMessageBox::NoIcon;
    }
    // The button that gives an answer code; OK for any other code.
    static QMessageBox::StandardButton buttonOf(int answer) {
        static constexpr std::pair<int, QMessageBox::StandardButton> kButtons[] = {
            {MsgBox::Cancel, QMessageBox::Cancel}, {MsgBox::Abort, QMessageBox::Abort},
            {MsgBox::Retry, QMessageBox::Retry},   {MsgBox::Ignore, QMessageBox::Ignore},
            {MsgBox::Yes, QMessageBox::Yes},       {MsgBox::No, QMessageBox::No}};
        for (const auto& [code, button] : kButtons)
            if (answer == code) return button;
        return QMessageBox::Ok;
    }

    QElapsedTimer clock_;
    QPointer<KeyState> keys_;
};

}  // namespace

Platform& qtPlatform() {
    static QtPlatform platform;
    platform.watchKeys();
    return platform;
}

}  // namespace quendrix
