// What the host adds to each plane of a stack beyond the camera's own time: from the panel's
// picture request (Schicht) to the camera being asked, plus from the picture being on disk to
// the run's release (SetOK), with the simulated camera writing 24-megapixel TIFFs. The panel
// drives the board simulator over a pseudo-terminal; the capture session is the application's.
// Target: under 5 ms per plane, printed beside the time one such TIFF takes to write.
// Usage: bench_capture [planes, default 6] [WIDTHxHEIGHT, default 6000x4000]
#include "camera/simcamera.h"
#include "camera/subject.h"
#include "control/internals.h"
#include "link/link.h"
#include "motion/motion.h"
#include "session/capturesession.h"
#include "sim/board.h"
#include "sim/ptyfrontend.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPort>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>

namespace {

QElapsedTimer benchClock;
double nowMs() {
    return benchClock.nsecsElapsed() / 1e6;
}

// The simulated camera with the moments it was asked and answered noted.
class TimedCamera final : public Camera {
public:
    TimedCamera(std::function<double()> focus, QSize size) : inner_(std::move(focus), size) {
        connect(&inner_, &Camera::captured, this, [this](const QString& file) {
            answered = nowMs();
            emit captured(file);
        });
        connect(&inner_, &Camera::failed, this, &Camera::failed);
    }
    QString kind() const override { return inner_.kind(); }
    void capture(const Shot& shot) override {
        asked = nowMs();
        inner_.capture(shot);
    }
    double asked = 0, answered = 0;

private:
    SimCamera inner_;
};

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    benchClock.start();
    const int planes = argc > 1 ? QByteArray(argv[1]).toInt() : 6;
    const QList<QByteArray> dims = (argc > 2 ? QByteArray(argv[2]) : "6000x4000").split('x');
    const QSize size(dims.value(0).toInt(), dims.value(1).toInt());
    if (planes < 1 || size.isEmpty()) {
        std::printf("usage: bench_capture [planes] [WIDTHxHEIGHT]\n");
        return 2;
    }
    QTemporaryDir folder;

    QElapsedTimer simClock;
    simClock.start();
    quendrix::sim::Board board;
    quendrix::sim::PtyFrontEnd pty(board, [&] { return simClock.nsecsElapsed() / 1e9; });
    if (!pty.open()) return 1;
    pty.setAutoPump(true);

    ctlQuendrix control;
    quendrix::Panel& p = *control.panel();
    control.MSComm1()->setPortName(pty.devicePath());
    if (!control.MSComm1()->open(QIODevice::ReadWrite)) return 1;
    quendrix::internals(control).link()->setQuittiert(true);
    quendrix::internals(control).motion()->setMaxPosition(0, 100000);
    p.Steigung[0]->setText(QStringLiteral("1"));
    p.Schritte[0]->setText(QStringLiteral("400"));
    p.wartezeit->setText(QStringLiteral("10"));
    p.BBeginn[0]->setText(QString::number(6000));
    p.BEnde[0]->setText(QString::number(2000));
    p.Ebenen->setText(QString::number(planes));

    double requested = 0;  // connected before the session, so it is noted first
    QObject::connect(&control, &ctlQuendrix::Schicht, [&] { requested = nowMs(); });
    CaptureSession session(control);
    session.setFixedFolder(folder.path());
    auto camera =
        std::make_unique<TimedCamera>([&] { return double(board.axis(0).position); }, size);
    TimedCamera& timed = *camera;
    session.setCamera(std::move(camera));
    QList<double> overheads, cameraTimes;
    QObject::connect(&session, &CaptureSession::pictureTaken, [&] {
        const double released = nowMs();
        overheads << (timed.asked - requested) + (released - timed.answered);
        cameraTimes << timed.answered - timed.asked;
    });
    bool over = false;
    QObject::connect(&session, &CaptureSession::combineRequested, [&] { over = true; });
    QObject::connect(&session, &CaptureSession::failed, [&](const QString& message) {
        std::printf("failed: %s\n", qPrintable(message));
        over = true;
    });
    p.AutoKomb->click();
    while (!over)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (overheads.size() != planes + 1) return 1;

    // The camera's own share that a host cannot avoid: writing the picture.
    const QImage picture = Subject(size).render(4000, 3);
    QElapsedTimer write;
    write.start();
    QImageWriter writer(folder.filePath(QStringLiteral("write.tif")), "tif");
    if (!writer.write(picture)) return 1;
    const double writeMs = write.nsecsElapsed() / 1e6;

    std::sort(overheads.begin(), overheads.end());
    std::sort(cameraTimes.begin(), cameraTimes.end());
    const double median = overheads[overheads.size() / 2];
    std::printf(
        "%d pictures of %dx%d (TIFF): the camera took %.0f ms (median), writing one TIFF "
        "takes %.0f ms\n",
        int(overheads.size()), size.width(), size.height(), cameraTimes[cameraTimes.size() / 2],
        writeMs);
    std::printf("host overhead per plane: median %.3f ms, worst %.3f ms (%.4f of the write)\n",
                median, overheads.last(), median / writeMs);
    std::printf("RATIO host-overhead-ms-per-plane %.3f <= 5\n", median);
    return 0;
}
