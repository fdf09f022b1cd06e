#pragma once

#include <quendrix/Platform.h>

#include <QElapsedTimer>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>

// A scripted stand-in for the component's surroundings. Message and input boxes are recorded
// and answered from queues, never shown. The clock is scripted by default: every sleep the
// component asks for advances it at once (after letting pending events run), so limits of 2,
// 31 or 61 seconds pass in milliseconds. With Clock::Real it follows real time and really
// sleeps, for tests that wait on a real board simulator.
class TestPlatform : public quendrix::Platform {
public:
    enum class Clock { Scripted, Real };

    struct Message {
        QString prompt;
        int style;
        QString title;
    };
    struct Input {
        QString prompt;
        QString title;
        QString defaultText;
    };

    explicit TestPlatform(Clock clock = Clock::Scripted);

    // Answers to the next message boxes, in order; when the queue is empty a box is answered
    // with its default button.
    QList<int> messageAnswers;
    QList<Message> messages;
    // Answers to the next input boxes, in order; when empty the input box is cancelled ("").
    QStringList inputAnswers;
    QList<Input> inputs;

    QSet<int> keysDown;
    QString folder = QStringLiteral("/opt/host");
    bool designer = false;

    // Called after every sleep with the platform, so a test can make things happen at a time.
    std::function<void(TestPlatform&)> onIdle;
    // While it holds, sleeps let events run but the scripted clock stands still.
    std::function<bool()> clockHeld;
    // Real time each scripted sleep also waits for events, so that bytes written to a real
    // pseudo-terminal or socket have crossed it before the scripted clock moves on.
    double realSecondsPerIdle = 0;
    int idleCount = 0;

    void advance(double seconds) { scriptedNow_ += seconds; }

    int messageBox(const QString& prompt, int style, const QString& title) override;
    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override;
    double now() override;
    void idle(double seconds) override;
    bool isKeyDown(int virtualKey) override { return keysDown.contains(virtualKey); }
    QString componentFolder() override { return folder; }
    bool inDesigner() override { return designer; }

private:
    Clock clock_;
    double scriptedNow_ = 1000.0;
    QElapsedTimer real_;
};
