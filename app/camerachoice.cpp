#include "camerachoice.h"

#include "camera/commandcamera.h"
#include "camera/gphoto2camera.h"
#include "camera/simcamera.h"

QStringList CameraChoice::kinds() {
    return {QStringLiteral("sim"), QStringLiteral("command"), QStringLiteral("gphoto2")};
}

std::unique_ptr<Camera> CameraChoice::make(std::function<double()> simFocus, QString* error) const {
    if (kind == u"sim") return std::make_unique<SimCamera>(std::move(simFocus));
    if (kind == u"gphoto2") return std::make_unique<Gphoto2Camera>();
    if (kind == u"command") {
        if (const QString problem = CommandCamera::problem(command); !problem.isEmpty()) {
            *error = QStringLiteral("capture command: ") + problem;
            return nullptr;
        }
        if (timeoutSeconds < 1 || timeoutSeconds > 86400) {
            *error =
                QStringLiteral("capture time-out: 1 to 86400 seconds, not %1").arg(timeoutSeconds);
            return nullptr;
        }
        return std::make_unique<CommandCamera>(command, timeoutSeconds);
    }
    *error = QStringLiteral("camera: %1, not %2").arg(kinds().join(QStringLiteral(", ")), kind);
    return nullptr;
}
