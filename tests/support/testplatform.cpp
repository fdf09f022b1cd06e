#include "support/testplatform.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <cmath>

TestPlatform::TestPlatform(Clock clock) : clock_(clock) {
    real_.start();
}

int TestPlatform::messageBox(const QString& prompt, int style, const QString& title) {
    messages.append({prompt, style, title});
    if (!messageAnswers.isEmpty()) return messageAnswers.takeFirst();
    return quendrix::MsgBox::defaultAnswer(style);
}

QString TestPlatform::inputBox(const QString& prompt, const QString& title,
                               const QString& defaultText) {
    inputs.append({prompt, title, defaultText});
    return inputAnswers.isEmpty() ? QString() : inputAnswers.takeFirst();
}

double TestPlatform::now() {
    return clock_ == Clock::Real ? real_.nsecsElapsed() / 1e9 : scriptedNow_;
}

namespace {
void waitForEvents(double seconds) {
    QTimer wake;
    wake.setSingleShot(true);
    wake.start(std::max(1, int(std::lround(seconds * 1000))));
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}
}  // namespace

void TestPlatform::idle(double seconds) {
    ++idleCount;
    if (clock_ == Clock::Real && seconds > 0) {
        waitForEvents(seconds);
    } else {
        if (realSecondsPerIdle > 0 && seconds > 0)
            waitForEvents(realSecondsPerIdle);
        else
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (!clockHeld || !clockHeld()) scriptedNow_ += std::max(0.0, seconds);
    }
    if (onIdle) onIdle(*this);
}
