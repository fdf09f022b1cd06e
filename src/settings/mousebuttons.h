#pragma once

#include <QMouseEvent>

namespace quendrix {

// Mouse buttons as every handler of the panel numbers them: 1 left, 2 right, 4 middle, 0 any
// other.
constexpr int mouseButtonCode(Qt::MouseButton button) {
    switch (button) {
        case Qt::LeftButton:
            return 1;
        case Qt::RightButton:
            return 2;
        case Qt::MiddleButton:
            return 4;
        default:
            return 0;
    }
}

// The code of the button a mouse press or release event is about.
inline int mouseButtonCode(const QEvent* event) {
    return mouseButtonCode(static_cast<const QMouseEvent*>(event)->button());
}

}  // namespace quendrix
