#pragma once

#include <quendrix/quendrix_export.h>

#include <QList>
#include <QString>

namespace quendrix {

// Message-box buttons, icons and answers, numbered as hosts of the component know them.
namespace MsgBox {
// The parts of a message box's style, combined by adding one of each.
enum Style : int {
    OKOnly = 0,
    OKCancel = 1,
    AbortRetryIgnore = 2,
    YesNoCancel = 3,
    YesNo = 4,
    RetryCancel = 5,
    Critical = 16,
    Question = 32,
    Exclamation = 48,
    Information = 64,
    DefaultButton2 = 256,
    DefaultButton3 = 512,
};
// The buttons' answers, as messageBox returns them.
enum Answer : int { OK = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7 };
// The answers of a style's buttons, in their order on the box.
QUENDRIX_EXPORT QList<int> answers(int style);
// The answer of the style's default button (the first when the style names no such button).
QUENDRIX_EXPORT int defaultAnswer(int style);
}  // namespace MsgBox

// Virtual-key codes the component asks about.
namespace VirtualKey {
enum : int { Return = 13, Escape = 27 };
}

// Everything the component asks of its surroundings. The default (qtPlatform()) uses Qt's
// dialogs, a monotonic clock and the application's event loop; tests put a scripted double
// in its place so that long limits pass at once and no modal window ever opens.
class QUENDRIX_EXPORT Platform {
public:
    virtual ~Platform();

    // Shows a modal message; `style` combines one button set, one icon and a default button.
    // Returns the answer (MsgBox::Answer). An empty title means the component's name.
    virtual int messageBox(const QString& prompt, int style, const QString& title) = 0;
    // Asks for a line of text; returns "" when the user cancels.
    virtual QString inputBox(const QString& prompt, const QString& title,
                             const QString& defaultText) = 0;
    // Seconds on a monotonic clock.
    virtual double now() = 0;
    // Lets pending events run, sleeping up to `seconds` while none arrives.
    virtual void idle(double seconds) = 0;
    // True while the key with this virtual-key code is held down.
    virtual bool isKeyDown(int virtualKey) = 0;
    // The folder the component runs from, without a trailing separator.
    virtual QString componentFolder() = 0;
    // True while the component runs inside a designer rather than a finished host.
    virtual bool inDesigner() = 0;
};

// The Qt-based default, shared by all controls of the process.
QUENDRIX_EXPORT Platform& qtPlatform();

}  // namespace quendrix
