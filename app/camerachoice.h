#pragma once

#include "camera/camera.h"

#include <QString>
#include <functional>
#include <memory>

// The camera a photographer chose, on the command line or in the window.
struct CameraChoice {
    QString kind = QStringLiteral("sim");  // "sim", "command" or "gphoto2"
    QString command;                       // the capture command, for "command"
    int timeoutSeconds = 60;               // bounds each capture of "command"

    static QStringList kinds();
    // The camera, or null with *error saying what is wrong with the choice. simFocus tells the
    // simulated camera where the rail stands.
    std::unique_ptr<Camera> make(std::function<double()> simFocus, QString* error) const;
};
