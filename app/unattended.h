#pragma once

#include <quendrix/Platform.h>

// The surroundings of a run nobody watches (a picture of the window taken offscreen): messages
// go to the error output and take their default answer, questions their default text; all
// else is Qt's.
class UnattendedPlatform final : public quendrix::Platform {
public:
    int messageBox(const QString& prompt, int style, const QString& title) override;
    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override;
    double now() override { return quendrix::qtPlatform().now(); }
    void idle(double seconds) override { quendrix::qtPlatform().idle(seconds); }
    bool isKeyDown(int virtualKey) override { return quendrix::qtPlatform().isKeyDown(virtualKey); }
    QString componentFolder() override { return quendrix::qtPlatform().componentFolder(); }
    bool inDesigner() override { return false; }
};
