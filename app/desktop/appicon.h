#pragma once

namespace desktop {

// Gives every window of the application its icon, and tells the desktop which entry
// (quendrix.desktop) the program belongs to, so that task bars show the same icon.
void useApplicationIcon();

}  // namespace desktop
