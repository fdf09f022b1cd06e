#include "camera/simcamera.h"

#include "camera/subject.h"

#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QImageWriter>
#include <QMutex>
#include <QSaveFile>
#include <QtConcurrent>
#include <cmath>
#include <exception>
#include <new>

struct SimCamera::Studio {
    QSize size;
    QMutex mutex;
    std::unique_ptr<Subject> subject;

    // Building the subject takes a moment for a large picture: only the first capture pays.
    const Subject& subjectBuiltOnce() {
        const QMutexLocker lock(&mutex);
        if (!subject) subject = std::make_unique<Subject>(size);
        return *subject;
    }
};

namespace {

QByteArray formatFor(const QString& file) {
    const QString suffix = QFileInfo(file).suffix().toLower();
    if (suffix == u"tif" || suffix == u"tiff") return "tiff";
    if (suffix == u"png") return "png";
    return {};
}

QString cannotSave(const QString& file, const QString& reason) {
    return SimCamera::tr("Bild %1 konnte nicht gespeichert werden: %2")
        .arg(QDir::toNativeSeparators(file), reason);
}

// QSaveFile writes beside the file under another name and renames it only once it is complete.
QString save(const QImage& picture, const QString& file, const QByteArray& format) {
    const QDir folder = QFileInfo(file).absoluteDir();
    if (!folder.exists())
        return cannotSave(file, SimCamera::tr("der Ordner %1 existiert nicht")
                                    .arg(QDir::toNativeSeparators(folder.path())));
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly)) return cannotSave(file, out.errorString());
    QImageWriter writer(&out, format);
    if (format == "png") writer.setQuality(85);  // zlib's fastest level: 24 MP in a second or two
    if (!writer.write(picture)) {
        const QString reason =
            out.error() != QFileDevice::NoError ? out.errorString() : writer.errorString();
        out.cancelWriting();
        return cannotSave(file, reason);
    }
    if (!out.commit()) return cannotSave(file, out.errorString());
    return {};
}

}  // namespace

SimCamera::SimCamera(std::function<double()> focusSteps, QSize size, QObject* parent)
    : Camera(parent), focusSteps_(std::move(focusSteps)), studio_(std::make_shared<Studio>()) {
    studio_->size = size;
}

SimCamera::~SimCamera() {
    cancel();
}

void SimCamera::setNoise(double sigma) {
    noise_ = std::isfinite(sigma) ? std::max(0.0, sigma) : 0;
}

void SimCamera::capture(const Shot& shot) {
    const QString file = QDir::toNativeSeparators(shot.file);
    if (pending_) {
        failLater(tr("Simulierte Kamera: Bild %1 nicht aufgenommen, das "
                     "vorige Bild entsteht noch")
                      .arg(file));
        return;
    }
    const QByteArray format = formatFor(shot.file);
    if (format.isEmpty()) {
        failLater(tr("Bild %1: unbekanntes Dateiformat; die simulierte "
                     "Kamera schreibt .tif, .tiff und .png")
                      .arg(file));
        return;
    }
    double focus = NAN;
    try {
        if (focusSteps_) focus = focusSteps_();
    } catch (...) {
    }
    if (!std::isfinite(focus)) {
        failLater(tr("Simulierte Kamera: die Stellung der Fokusschiene ist "
                     "unbekannt, Bild %1 nicht aufgenommen")
                      .arg(file));
        return;
    }

    ++generation_;
    abandoned_ = std::make_shared<std::atomic_bool>(false);
    auto work = [studio = studio_, abandoned = abandoned_, file = shot.file, format, focus,
                 noise = noise_, seed = ++seed_]() -> QString {
        try {
            const QImage picture = studio->subjectBuiltOnce().render(focus, noise, seed);
            return *abandoned ? QString() : save(picture, file, format);
        } catch (const std::bad_alloc&) {
            return tr("Simulierte Kamera: zu wenig Arbeitsspeicher für Bild %1 "
                      "(%2 x %3 Pixel)")
                .arg(QDir::toNativeSeparators(file))
                .arg(studio->size.width())
                .arg(studio->size.height());
        } catch (const std::exception& e) {
            return tr("Simulierte Kamera: Bild %1 nicht aufgenommen, %2")
                .arg(QDir::toNativeSeparators(file), QString::fromUtf8(e.what()));
        } catch (...) {
            return tr("Simulierte Kamera: Bild %1 nicht aufgenommen, unerwarteter "
                      "Fehler")
                .arg(QDir::toNativeSeparators(file));
        }
    };
    auto* watcher = new QFutureWatcher<QString>(this);
    pending_ = watcher;
    connect(watcher, &QFutureWatcherBase::finished, this,
            [this, watcher, generation = generation_, file = shot.file] {
                watcher->deleteLater();
                if (pending_ == watcher) pending_ = nullptr;
                if (generation != generation_) return;
                const QString error = watcher->result();
                if (error.isEmpty())
                    emit captured(file);
                else
                    emit failed(error);
            });
    watcher->setFuture(QtConcurrent::run(std::move(work)));
}

void SimCamera::cancel() {
    ++generation_;
    if (abandoned_) *abandoned_ = true;
    pending_ = nullptr;
}

// A failure found at once still comes from the event loop, as the camera's contract says.
void SimCamera::failLater(const QString& message) {
    QMetaObject::invokeMethod(
        this,
        [this, generation = generation_, message] {
            if (generation == generation_) emit failed(message);
        },
        Qt::QueuedConnection);
}
