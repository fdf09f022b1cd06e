#pragma once

#include <quendrix/Platform.h>

#include <functional>

// The panel's surroundings in the window: the base platform's (Qt's dialogs, clock and keys),
// with two things the window's stack control adds.
// - While the window stops a run, Escape counts as held: every wait of the panel (for a move's
//   end, for an acknowledgement's turn, for the release) ends at once, as it does for the
//   photographer's own Escape, and the panel's run code returns to the window.
// - While the photographer pauses a run, the window holds the release on purpose. The panel
//   waits 31 s for it and then says that it still waits ("Quendrix wartet auf Freigabe: …")
//   and goes on without it. In a pause that notice is not shown: the run stays where it is
//   until the photographer resumes or stops, however long that takes.
class HostPlatform final : public quendrix::Platform {
public:
    explicit HostPlatform(quendrix::Platform& base) : base_(&base) {}

    void setBase(quendrix::Platform& base) { base_ = &base; }
    quendrix::Platform& base() const { return *base_; }

    std::function<bool()> escapeHeld;     // Escape counts as held while this holds
    std::function<bool()> releaseHeldOn;  // the release is held on purpose while this holds

    int messageBox(const QString& prompt, int style, const QString& title) override;
    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override {
        return base_->inputBox(prompt, title, defaultText);
    }
    double now() override { return base_->now(); }
    void idle(double seconds) override { base_->idle(seconds); }
    bool isKeyDown(int virtualKey) override;
    QString componentFolder() override { return base_->componentFolder(); }
    bool inDesigner() override { return base_->inDesigner(); }

private:
    quendrix::Platform* base_;
};
