#include "fusion/preview.h"

#include "fusion/fusion.h"

#include <unistd.h>
#include <QDir>
#include <QFutureWatcher>
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtConcurrent>
#include <exception>

namespace {

constexpr int kTailLines = 5;

using Copies = QHash<QString, QString>;  // picture -> its scaled copy

// Reads each picture and writes it at preview size as plain 8-bit RGB. Unreadable pictures
// are left out with a warning; the next preview tries them again.
Copies scalePictures(const Copies& wanted) {
    Copies done;
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        QImageReader reader(it.key());
        QImage image = reader.read();
        if (image.isNull()) {
            qWarning("Preview: %s cannot be read: %s", qPrintable(it.key()),
                     qPrintable(reader.errorString()));
            continue;
        }
        if (image.width() > FusionPreview::kWidth)
            image = image.scaledToWidth(FusionPreview::kWidth, Qt::SmoothTransformation);
        if (!image.convertToFormat(QImage::Format_RGB888).save(it.value())) {
            qWarning("Preview: %s cannot be written", qPrintable(it.value()));
            continue;
        }
        done.insert(it.key(), it.value());
    }
    return done;
}

QImage loadPreview(const QString& file) {
    QImage image(file);
    if (image.width() > FusionPreview::kWidth)
        image = image.scaledToWidth(FusionPreview::kWidth, Qt::SmoothTransformation);
    return image;
}

// A handler the event loop calls: a failure only costs this preview.
template <typename Handler>
bool quietly(Handler&& handler) {
    try {
        handler();
        return true;
    } catch (const std::exception& error) {
        qWarning("Preview: %s", error.what());
        return false;
    }
}

}  // namespace

FusionPreview::FusionPreview(QObject* parent) : QObject(parent) {
}

FusionPreview::~FusionPreview() {
    stopFusing();
}

void FusionPreview::setEvery(int pictures) {
    every_ = std::max(1, pictures);
}

void FusionPreview::reset() {
    stopFusing();
    ++generation_;
    busy_ = false;
    previewed_ = 0;
    scaled_.clear();
    scratch_.reset();  // a worker still writing into it keeps it until it is done
}

void FusionPreview::offer(const QStringList& picturesSoFar) {
    if (busy_) return;
    if (picturesSoFar.size() < previewed_) previewed_ = 0;  // a new run nobody announced
    if (picturesSoFar.size() - previewed_ < every_) return;
    if (!scratch_) {
        scratch_ = std::make_shared<QTemporaryDir>(QDir::tempPath() +
                                                   QStringLiteral("/quendrix-preview-XXXXXX"));
        if (!scratch_->isValid()) {
            qWarning("Preview: no temporary folder: %s", qPrintable(scratch_->errorString()));
            scratch_.reset();
            return;
        }
    }
    Copies wanted;
    for (const QString& picture : picturesSoFar)
        if (!scaled_.contains(picture) && !wanted.contains(picture))
            wanted.insert(picture,
                          scratch_->filePath(
                              QStringLiteral("scaled-%1.tif").arg(scaled_.size() + wanted.size())));
    previewed_ = picturesSoFar.size();
    busy_ = true;

    const quint64 generation = generation_;
    auto* watcher = new QFutureWatcher<Copies>(this);
    connect(watcher, &QFutureWatcher<Copies>::finished, this,
            [this, watcher, generation, picturesSoFar] {
                watcher->deleteLater();
                if (generation != generation_) return;
                if (!quietly([&] { onScaled(generation, picturesSoFar, watcher->result()); }))
                    busy_ = false;
            });
    // The lambda holds the folder, so a reset() meanwhile cannot pull it away from the worker.
    watcher->setFuture(
        QtConcurrent::run([scratch = scratch_, wanted] { return scalePictures(wanted); }));
}

void FusionPreview::onScaled(quint64 generation, const QStringList& pictures,
                             const QHash<QString, QString>& scaled) {
    scaled_.insert(scaled);
    QStringList inputs;
    for (const QString& picture : pictures)
        if (scaled_.contains(picture)) inputs << scaled_.value(picture);
    if (inputs.isEmpty()) {
        busy_ = false;
    } else if (inputs.size() == 1) {
        load(generation, inputs.first());
    } else {
        fuse(generation, inputs);
    }
}

void FusionPreview::fuse(quint64 generation, const QStringList& inputs) {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("enfuse"));
    if (program.isEmpty()) {
        qWarning("Preview: %s", qPrintable(Fusion::missingTools()));
        busy_ = false;
        return;
    }
    const QString result = scratch_->filePath(QStringLiteral("preview.tif"));
    process_ = new QProcess(this);
    process_->setProcessChannelMode(QProcess::MergedChannels);
    process_->setWorkingDirectory(scratch_->path());
    // The capture has the machine first: the preview's enfuse yields the processor to it.
    process_->setChildProcessModifier([] { [[maybe_unused]] const int niceness = ::nice(10); });
    connect(
        process_, &QProcess::finished, this,
        [this, generation, result](int exitCode, QProcess::ExitStatus status) {
            QProcess* process = process_;
            process_ = nullptr;
            process->deleteLater();
            // Whatever goes wrong ends this preview only; the next offer starts a new one.
            const bool handled = quietly([&] {
                if (status == QProcess::NormalExit && exitCode == 0) {
                    load(generation, result);
                    return;
                }
                QStringList said =
                    QString::fromLocal8Bit(process->readAll()).trimmed().split(QLatin1Char('\n'));
                said = said.mid(std::max<qsizetype>(0, said.size() - kTailLines));
                qWarning("Preview: enfuse failed (exit %d): %s", exitCode,
                         qPrintable(said.join(QLatin1Char('\n'))));
                busy_ = false;
            });
            if (!handled) busy_ = false;
        });
    connect(process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        qWarning("Preview: enfuse cannot be started: %s", qPrintable(process_->errorString()));
        process_->deleteLater();
        process_ = nullptr;
        busy_ = false;
    });
    process_->start(program, Fusion::fuseArguments(inputs, result));
}

void FusionPreview::load(quint64 generation, const QString& file) {
    auto* watcher = new QFutureWatcher<QImage>(this);
    connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, generation, file] {
        watcher->deleteLater();
        if (generation != generation_) return;
        busy_ = false;
        quietly([&] {
            const QImage preview = watcher->result();
            if (preview.isNull())
                qWarning("Preview: %s cannot be read", qPrintable(file));
            else
                emit ready(preview);
        });
    });
    watcher->setFuture(QtConcurrent::run([scratch = scratch_, file] { return loadPreview(file); }));
}

void FusionPreview::stopFusing() {
    if (!process_) return;
    process_->disconnect(this);
    process_->kill();
    process_->waitForFinished(5000);  // a killed enfuse is reaped within milliseconds
    process_->deleteLater();
    process_ = nullptr;
}
