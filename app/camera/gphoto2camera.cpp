#include "camera/gphoto2camera.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

// libgphoto2 calls its camera type "Camera", like ours; inside this file it is GPCamera.
#define Camera GPCamera
#include <gphoto2/gphoto2.h>
#undef Camera

namespace {

struct Outcome {
    bool ok = false;
    QString fileOrMessage;
};

}  // namespace

// The connection to the camera. It lives on the worker thread and is only touched there (and
// by its destructor once that thread has ended).
class Gphoto2Session : public QObject {
public:
    explicit Gphoto2Session(std::shared_ptr<std::atomic<quint64>> wanted)
        : m_wanted(std::move(wanted)), m_context(gp_context_new()) {
        gp_context_set_error_func(m_context, &Gphoto2Session::onLibraryError, this);
        gp_context_set_cancel_func(m_context, &Gphoto2Session::onCancelQuestion, this);
    }
    ~Gphoto2Session() override {
        close();
        gp_context_unref(m_context);
    }

    Outcome capture(const Shot& shot, quint64 job);

    void close() {
        if (!m_camera) return;
        gp_camera_exit(m_camera, m_context);
        gp_camera_unref(m_camera);
        m_camera = nullptr;
    }

private:
    bool cancelled() const { return m_wanted->load() != m_job; }
    Outcome failure(const QString& doing, int result);
    int open();
    QString save(const Shot& shot, const char* data, unsigned long size);

    static void onLibraryError(GPContext*, const char* text, void* self) {
        static_cast<Gphoto2Session*>(self)->m_libraryText = QString::fromUtf8(text).trimmed();
    }
    // The library asks during long transfers whether to go on.
    static GPContextFeedback onCancelQuestion(GPContext*, void* self) {
        return static_cast<Gphoto2Session*>(self)->cancelled() ? GP_CONTEXT_FEEDBACK_CANCEL
                                                               : GP_CONTEXT_FEEDBACK_OK;
    }

    std::shared_ptr<std::atomic<quint64>> m_wanted;
    GPContext* m_context;
    GPCamera* m_camera = nullptr;
    quint64 m_job = 0;
    QString m_libraryText;  // the last error the library described through the context
};

int Gphoto2Session::open() {
    int result = gp_camera_new(&m_camera);
    if (result < GP_OK) {
        m_camera = nullptr;
        return result;
    }
    result = gp_camera_init(m_camera, m_context);  // detects the first camera attached
    if (result < GP_OK) {
        gp_camera_unref(m_camera);
        m_camera = nullptr;
    }
    return result;
}

Outcome Gphoto2Session::capture(const Shot& shot, quint64 job) {
    m_job = job;
    m_libraryText.clear();
    if (cancelled()) return {};
    if (!m_camera) {
        if (const int result = open(); result < GP_OK) {
            return failure(Gphoto2Camera::tr("Suchen und Verbinden"), result);
        }
    }
    CameraFilePath path{};
    if (const int result = gp_camera_capture(m_camera, GP_CAPTURE_IMAGE, &path, m_context);
        result < GP_OK) {
        return failure(Gphoto2Camera::tr("Auslösen"), result);
    }
    CameraFile* file = nullptr;
    if (const int result = gp_file_new(&file); result < GP_OK) {
        return failure(Gphoto2Camera::tr("Anlegen des Bildpuffers"), result);
    }
    const std::unique_ptr<CameraFile, decltype(&gp_file_unref)> fileOwner(file, &gp_file_unref);
    if (const int result = gp_camera_file_get(m_camera, path.folder, path.name, GP_FILE_TYPE_NORMAL,
                                              file, m_context);
        result < GP_OK) {
        return failure(Gphoto2Camera::tr("Laden von Bild %1/%2").arg(path.folder, path.name),
                       result);
    }
    const char* data = nullptr;
    unsigned long size = 0;
    if (const int result = gp_file_get_data_and_size(file, &data, &size); result < GP_OK) {
        return failure(Gphoto2Camera::tr("Lesen der Bilddaten"), result);
    }
    if (cancelled()) return {};
    if (const QString problem = save(shot, data, size); !problem.isEmpty()) return {false, problem};
    // The picture is safe on disk; freeing the card (or the camera's memory) keeps a long stack
    // from filling it. A camera that refuses keeps its copy, which does no harm.
    gp_camera_file_delete(m_camera, path.folder, path.name, m_context);
    return {true, shot.file};
}

// Written under a temporary name and renamed, so a reader never sees half a picture.
QString Gphoto2Session::save(const Shot& shot, const char* data, unsigned long size) {
    QDir().mkpath(QFileInfo(shot.file).absolutePath());
    QSaveFile out(shot.file);
    if (!out.open(QIODevice::WriteOnly) ||
        out.write(data, static_cast<qint64>(size)) != static_cast<qint64>(size) || !out.commit()) {
        return Gphoto2Camera::tr("Das Bild von der Kamera lässt sich nicht nach »%1« schreiben: %2")
            .arg(shot.file, out.errorString());
    }
    return {};
}

Outcome Gphoto2Session::failure(const QString& doing, int result) {
    // After a failed call the connection is in doubt: the next capture detects the camera anew.
    close();
    QString message =
        Gphoto2Camera::tr("Kamera: Fehler beim %1. %2").arg(doing, Gphoto2Camera::explain(result));
    if (!m_libraryText.isEmpty()) message += QStringLiteral(" (libgphoto2: %1)").arg(m_libraryText);
    return {false, message};
}

Gphoto2Camera::Gphoto2Camera(QObject* parent)
    : Camera(parent), m_wanted(std::make_shared<std::atomic<quint64>>(0)) {
    m_session = new Gphoto2Session(m_wanted);
    m_session->moveToThread(&m_thread);
    m_thread.setObjectName(QStringLiteral("gphoto2"));
    m_thread.start();
}

Gphoto2Camera::~Gphoto2Camera() {
    // A transfer under way is asked to stop; once the worker thread has ended, deleting the
    // session closes the camera.
    m_wanted->store(++m_generation);
    m_thread.quit();
    m_thread.wait();
    delete m_session;
}

void Gphoto2Camera::capture(const Shot& shot) {
    QString refusal;
    if (m_busy) refusal = tr("Die Kamera nimmt noch das vorige Bild auf.");
    if (shot.file.isEmpty()) refusal = tr("Für das Bild ist keine Datei angegeben.");
    if (!refusal.isEmpty()) {
        // Answered from the event loop like every other outcome, never from inside capture().
        const quint64 generation = m_generation;
        QMetaObject::invokeMethod(
            this,
            [this, generation, refusal] {
                if (generation == m_generation) emit failed(refusal);
            },
            Qt::QueuedConnection);
        return;
    }
    m_busy = true;
    const quint64 job = ++m_generation;
    m_wanted->store(job);
    Gphoto2Session* session = m_session;
    QMetaObject::invokeMethod(
        m_session,
        [this, session, shot, job] {
            const Outcome outcome = session->capture(shot, job);
            // The camera waits for this thread before it goes, so it is still here to answer.
            QMetaObject::invokeMethod(
                this,
                [this, job, outcome] { onSessionDone(job, outcome.ok, outcome.fileOrMessage); },
                Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void Gphoto2Camera::cancel() {
    m_wanted->store(++m_generation);
    m_busy = false;
}

void Gphoto2Camera::release() {
    Gphoto2Session* session = m_session;
    QMetaObject::invokeMethod(
        m_session, [session] { session->close(); }, Qt::QueuedConnection);
}

void Gphoto2Camera::onSessionDone(quint64 generation, bool ok, const QString& fileOrMessage) {
    if (generation != m_generation) return;  // cancelled meanwhile
    m_busy = false;
    if (ok) {
        emit captured(fileOrMessage);
    } else {
        emit failed(fileOrMessage);
    }
}

QString Gphoto2Camera::explain(int gphotoResult) {
    switch (gphotoResult) {
        case GP_ERROR_MODEL_NOT_FOUND:
        case GP_ERROR_IO_USB_FIND:
        case GP_ERROR_UNKNOWN_PORT:
            return tr(
                "Es wurde keine Kamera gefunden. Bitte Kabel und Stromversorgung prüfen, die "
                "Kamera einschalten und an ihr den USB-Modus PTP (PC-Verbindung) wählen.");
        case GP_ERROR_IO_USB_CLAIM:
            return tr(
                "Die Kamera ist von einem anderen Programm belegt, meist vom "
                "Laufwerks-Monitor der Arbeitsoberfläche (gvfs-gphoto2-volume-monitor), "
                "der sie beim Anstecken eingebunden hat. Zum Freigeben die Kamera im "
                "Dateimanager aushängen oder »pkill -f gvfs-gphoto2-volume-monitor« "
                "ausführen, dann erneut aufnehmen.");
        default:
            return QStringLiteral("libgphoto2 meldet: %1 (Code %2).")
                .arg(QString::fromUtf8(gp_result_as_string(gphotoResult)))
                .arg(gphotoResult);
    }
}
