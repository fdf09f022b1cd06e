#include "hostplatform.h"

namespace {
const QString kReleaseNotice = QStringLiteral("Quendrix wartet auf Freigabe: ");
constexpr double kPollSeconds = 0.05;  // how promptly a resume or a stop is noticed
}  // namespace

int HostPlatform::messageBox(const QString& prompt, int style, const QString& title) {
    if (prompt.startsWith(kReleaseNotice) && releaseHeldOn && releaseHeldOn()) {
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
