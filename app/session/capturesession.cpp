#include "session/capturesession.h"

#include "session/average.h"
#include "session/picturefolder.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QtConcurrent>

namespace {
const QString kActive = QStringLiteral("aktiv");

QString native(const QString& path) {
    return QDir::toNativeSeparators(path);
}
}  // namespace

CaptureSession::CaptureSession(ctlQuendrix& panel, QObject* parent)
    : QObject(parent), panel_(panel) {
    root_ = picturefolder::defaultRoot();
    connect(&panel_, &ctlQuendrix::Schicht, this, &CaptureSession::onSchicht);
    connect(&panel_, &ctlQuendrix::Kopie, this, &CaptureSession::onKopie);
    connect(&panel_, &ctlQuendrix::Mittelwert, this, &CaptureSession::onMittelwert);
    connect(&panel_, &ctlQuendrix::Kombinieren, this, &CaptureSession::onKombinieren);
    panel_.Timer3()->installEventFilter(this);
    connect(&averaging_, &QFutureWatcher<QString>::finished, this, [this] {
        const QString problem = averaging_.result();
        if (problem.isEmpty())
            emit averaged(averageFile_, averageCount_);
        else
            emit failed(tr("Mittelwert nicht berechnet: ") + problem);
    });
}

CaptureSession::~CaptureSession() {
    if (camera_) camera_->cancel();
    averaging_.waitForFinished();
}

void CaptureSession::setCamera(std::unique_ptr<Camera> camera) {
    if (camera_) {
        camera_->cancel();
        camera_->release();
    }
    pending_.reset();
    camera_ = std::move(camera);
    if (!camera_) return;
    connect(camera_.get(), &Camera::captured, this, &CaptureSession::onCaptured);
    connect(camera_.get(), &Camera::failed, this, &CaptureSession::onCameraFailed);
}

void CaptureSession::setPicturesRoot(const QString& root) {
    root_ = root;
    fixedFolder_.clear();
    folder_.clear();
    kind_ = RunKind::None;
}

void CaptureSession::setFixedFolder(const QString& dir) {
    fixedFolder_ = dir;
    folder_ = dir;
}

// The position the panel shows for axis 0, in motor steps.
qint64 CaptureSession::axisPosition() const {
    return panel_.panel()->lblPosition1[0]->text().trimmed().toLongLong();
}

bool CaptureSession::beginRun(RunKind kind) {
    kind_ = kind;
    stopped_ = false;
    pictures_.clear();
    copies_ = 0;
    if (camera_) camera_->release();
    if (!fixedFolder_.isEmpty()) {
        folder_ = fixedFolder_;
        return true;
    }
    folder_.clear();
    return ensureFolder();
}

bool CaptureSession::ensureFolder() {
    if (!folder_.isEmpty()) return true;
    QString error;
    folder_ = picturefolder::makeRunFolder(root_, QDateTime::currentDateTime(), &error);
    if (folder_.isEmpty()) emit failed(error);
    return !folder_.isEmpty();
}

void CaptureSession::onSchicht(const QString& number) {
    panel_.SetOK(false);
    const int plane = number.trimmed().toInt();
    if (holding_) {
        // The panel stops waiting for the release after 31 s and goes on; a paused run must
        // not go on unattended.
        stopRun(
            tr("Die Steuerung hat die Pause nach Bild %1 von sich aus beendet.").arg(plane - 1));
        return;
    }
    if (pending_) {
        // The panel stops waiting for a picture after 31 s and asks for the next one.
        stopRun(tr("Die Steuerung verlangt Bild %1, während Bild %2 noch "
                   "aufgenommen wird: die Kamera braucht zu lange.")
                    .arg(plane)
                    .arg(pending_->shot.plane));
        return;
    }
    if (!camera_) {
        stopRun(tr("Keine Kamera gewählt."));
        return;
    }
    const RunKind kind =
        quendrix::tag(panel_.panel()->Mittelw) == kActive ? RunKind::Series : RunKind::Stack;
    if ((plane == 1 || kind != kind_ || folder_.isEmpty()) && !beginRun(kind)) {
        panel_.SetOK(true);
        return;
    }
    const QString stem =
        kind == RunKind::Series ? QStringLiteral("series") : QStringLiteral("plane");
    const QString file = QDir(folder_).filePath(picturefolder::pictureName(stem, plane, suffix_));
    capture(Shot{file, plane, axisPosition()}, false);
}

void CaptureSession::onKopie() {
    if (pending_) {
        emit failed(tr("Keine Kopie: Bild %1 wird noch aufgenommen.").arg(pending_->shot.plane));
        return;
    }
    if (!camera_) {
        emit failed(tr("Keine Kamera gewählt."));
        return;
    }
    if (!ensureFolder()) return;
    QString file;
    do {
        file = QDir(folder_).filePath(
            picturefolder::pictureName(QStringLiteral("copy"), ++copies_, suffix_));
    } while (QFileInfo::exists(file));
    capture(Shot{file, copies_, axisPosition()}, true);
}

void CaptureSession::capture(const Shot& shot, bool copy) {
    pending_ = Pending{shot, copy};
    camera_->capture(shot);
}

void CaptureSession::onCaptured(const QString& file) {
    if (!pending_) return;
    const Pending done = *pending_;
    pending_.reset();
    const QFileInfo info(file);
    if (!info.isFile() || info.size() == 0) {
        onCameraFailed(tr("Die Kamera meldet Bild %1 als aufgenommen, aber %2 fehlt "
                          "oder ist leer.")
                           .arg(done.shot.plane)
                           .arg(native(file)));
        return;
    }
    if (done.copy) {
        emit copyTaken(file);
        return;
    }
    pictures_ << file;
    emit pictureTaken(done.shot.plane, file, done.shot.position);
    if (hold_) {
        holding_ = true;
        emit holdingAfter(done.shot.plane);
        return;
    }
    panel_.SetOK(true);
}

void CaptureSession::holdRelease(bool hold) {
    hold_ = hold;
    if (hold || !holding_) return;
    holding_ = false;
    panel_.SetOK(true);
}

void CaptureSession::onCameraFailed(const QString& message) {
    const bool copy = pending_ && pending_->copy;
    pending_.reset();
    if (copy)
        emit failed(tr("Kopie nicht aufgenommen: ") + message);
    else
        stopRun(message);
}

void CaptureSession::stopRun(const QString& message) {
    emit runFailed(message);
    stop();
    emit failed(message);
}

void CaptureSession::stop() {
    pending_.reset();
    hold_ = holding_ = false;
    if (camera_) {
        camera_->cancel();
        camera_->release();
    }
    quendrix::Panel& p = *panel_.panel();
    const bool stack = quendrix::tag(p.AutoKomb) == kActive;
    const bool series = quendrix::tag(p.Mittelw) == kActive;
    if (stack) {
        // The operator's abort: letting go of the right button on the stack button.
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(1, 1), QPointF(1, 1),
                            Qt::RightButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(p.AutoKomb, &release);
    } else if (series) {
        quendrix::setTag(p.Mittelw, QString());
        panel_.Zuruecksetzen();
    }
    panel_.Timer3()->stop();
    stopped_ = stopped_ || stack || series;
    kind_ = RunKind::None;
    panel_.SetOK(true);  // a wait for the release ends; the tick's tail is dropped
}

// A tick with neither run active is what a stopped run leaves: the panel, released, restarts
// its timer as if a series went on. It is dropped, so no picture is asked for.
bool CaptureSession::eventFilter(QObject* watched, QEvent* event) {
    if (watched != panel_.Timer3() || event->type() != QEvent::Timer) return false;
    const quendrix::Panel& p = *panel_.panel();
    if (quendrix::tag(p.AutoKomb) != kActive && quendrix::tag(p.Mittelw) != kActive) {
        panel_.Timer3()->stop();
        return true;
    }
    const QPointer<CaptureSession> self(this);
    ++tickDepth_;
    watched->event(event);
    if (!self) return true;
    if (--tickDepth_ == 0) emit tickFinished();
    return true;
}

void CaptureSession::onMittelwert(const QString& count) {
    if (stopped_) {
        stopped_ = false;
        return;
    }
    if (kind_ != RunKind::Series || pictures_.isEmpty()) {
        emit failed(tr("Mittelwert aus %1 Bildern verlangt, aber keine Bilder der "
                       "Serie vorhanden.")
                        .arg(count.trimmed()));
        return;
    }
    if (averaging_.isRunning()) {
        emit failed(tr("Der vorige Mittelwert wird noch berechnet."));
        return;
    }
    averageFile_ = QDir(folder_).filePath(QStringLiteral("mean.") + suffix_);
    for (int n = 2; QFileInfo::exists(averageFile_); ++n)
        averageFile_ = QDir(folder_).filePath(QStringLiteral("mean-%1.%2").arg(n).arg(suffix_));
    averageCount_ = int(pictures_.size());
    averaging_.setFuture(QtConcurrent::run(averagePictures, pictures_, averageFile_));
    kind_ = RunKind::None;
}

void CaptureSession::onKombinieren(const QString& count) {
    if (kind_ != RunKind::Stack || pictures_.size() < 2) {
        emit failed(tr("Kombinieren von %1 Bildern verlangt, aber nur %2 Bilder des "
                       "Stapels vorhanden.")
                        .arg(count.trimmed())
                        .arg(pictures_.size()));
        return;
    }
    QString output = QDir(folder_).filePath(QStringLiteral("combined.") + suffix_);
    for (int n = 2; QFileInfo::exists(output); ++n)
        output = QDir(folder_).filePath(QStringLiteral("combined-%1.%2").arg(n).arg(suffix_));
    if (camera_) camera_->release();
    emit combineRequested(pictures_, output);
}
