#include "hostplatform.h"

#include <QCoreApplication>

namespace {
constexpr double kPollSeconds = 0.05;  // how promptly a resume or a stop is noticed

// The start of the panel's notice that it still waits for the release, in the panel's language.
QString releaseNotice() {
    return QCoreApplication::translate("quendrix::Link", "Quendrix wartet auf Freigabe: ");
}
}  // namespace

int HostPlatform::messageBox(const QString& prompt, int style, const QString& title) {
    if (prompt.startsWith(releaseNotice()) && releaseHeldOn && releaseHeldOn()) {
        while (releaseHeldOn())
            base_->idle(kPollSeconds);
        return quendrix::MsgBox::OK;
    }
    return base_->messageBox(prompt, style, title);
}

bool HostPlatform::isKeyDown(int virtualKey) {
    if (virtualKey == quendrix::VirtualKey::Escape && escapeHeld && escapeHeld()) return true;
    return base_->isKeyDown(virtualKey);
}
