#include "camera/commandcamera.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <algorithm>
#include <utility>

#ifdef Q_OS_UNIX
#include <signal.h>
#include <unistd.h>
#endif

namespace {

constexpr qsizetype kKeptOutputBytes = 4096;
// Some tethering tools hand the download to a helper and exit before the file is complete.
// A file that is there, non-empty, when the command exits is taken at once: the command wrote
// it and ended. Otherwise we look again every kLookIntervalMs for up to kLateFileMs (never past
// the capture's time-out) and take the file once it is non-empty and its size held still
// between two looks, so a file still being written is not handed on half done.
constexpr int kLateFileMs = 3000;
constexpr int kLookIntervalMs = 100;

// Whether the command leaves a double quote open, read the way QProcess::splitCommand reads
// it: a run of three quotes is one literal quote, a single one opens or closes a group, two
// are an empty group.
bool leavesQuoteOpen(const QString& command) {
    bool inQuote = false;
    int run = 0;
    for (qsizetype i = 0; i <= command.size(); ++i) {
        if (i < command.size() && command.at(i) == u'"') {
            run = (run + 1) % 3;
            continue;
        }
        if (run == 1) inQuote = !inQuote;
        run = 0;
    }
    return inQuote;
}

// Fills the placeholders in one pass, so a path that itself holds "{plane}" stays as it is.
QString fillIn(const QString& argument, const Shot& shot) {
    const std::pair<QLatin1StringView, QString> values[] = {
        {QLatin1StringView("{file}"), shot.file},
        {QLatin1StringView("{plane}"), QString::number(shot.plane)},
        {QLatin1StringView("{position}"), QString::number(shot.position)},
    };
    QString filled;
    qsizetype i = 0;
    while (i < argument.size()) {
        const QStringView rest = QStringView(argument).sliced(i);
        const auto match =
            std::find_if(std::begin(values), std::end(values),
                         [&](const auto& value) { return rest.startsWith(value.first); });
        if (match != std::end(values)) {
            filled += match->second;
            i += match->first.size();
        } else {
            filled += argument.at(i++);
        }
    }
    return filled;
}

// The argument list as a photographer would type it back, each argument recognisable.
QString shown(const QStringList& arguments) {
    QStringList parts;
    for (const QString& argument : arguments) {
        const bool plain =
            !argument.isEmpty() && std::none_of(argument.begin(), argument.end(), [](QChar c) {
                return c.isSpace() || c == u'"' || c == u'\'';
            });
        parts +=
            plain ? argument
                  : u'"' + QString(argument).replace(QStringLiteral("\""), QStringLiteral("\\\"")) +
                        u'"';
    }
    return parts.join(u' ');
}

}  // namespace

CommandCamera::CommandCamera(QString command, int timeoutSeconds, QObject* parent)
    : Camera(parent), m_command(std::move(command)), m_timeoutSeconds(timeoutSeconds) {
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &CommandCamera::onDeadline);
    m_fileLook.setInterval(kLookIntervalMs);
    connect(&m_fileLook, &QTimer::timeout, this, &CommandCamera::lookForFile);
}

CommandCamera::~CommandCamera() {
    ++m_generation;
    endCapture();
    // Reap the killed commands now; they went at once with SIGKILL.
    for (QProcess* process : findChildren<QProcess*>(Qt::FindDirectChildrenOnly)) {
        process->waitForFinished(2000);
    }
}

QString CommandCamera::problem(const QString& command) {
    if (command.trimmed().isEmpty()) return tr("Der Aufnahmebefehl ist leer.");
    if (leavesQuoteOpen(command)) {
        return tr("Im Aufnahmebefehl »%1« ist ein Anführungszeichen nicht geschlossen.")
            .arg(command);
    }
    const QStringList parts = QProcess::splitCommand(command);
    if (parts.isEmpty()) return tr("Der Aufnahmebefehl »%1« nennt kein Programm.").arg(command);
    if (std::none_of(parts.begin(), parts.end(),
                     [](const QString& part) { return part.contains(u"{file}"); })) {
        return tr("Der Aufnahmebefehl »%1« enthält kein {file}: so erfährt er nicht, wohin er "
                  "das Bild schreiben soll.")
            .arg(command);
    }
    return {};
}

QStringList CommandCamera::arguments(const QString& command, const Shot& shot) {
    QStringList filled;
    for (const QString& part : QProcess::splitCommand(command))
        filled += fillIn(part, shot);
    return filled;
}

void CommandCamera::capture(const Shot& shot) {
    if (m_busy) {
        answer(false, tr("Der Aufnahmebefehl läuft noch für das vorige Bild."));
        return;
    }
    if (const QString why = problem(m_command); !why.isEmpty()) return answer(false, why);
    if (m_timeoutSeconds <= 0) {
        return answer(false, tr("Die Zeitgrenze für den Aufnahmebefehl muss mindestens 1 s "
                                "betragen, nicht %1 s.")
                                 .arg(m_timeoutSeconds));
    }
    if (shot.file.isEmpty()) return answer(false, tr("Für das Bild ist keine Datei angegeben."));
    // A picture left at this path from before would pass for the new one.
    if (QFileInfo::exists(shot.file) && !QFile::remove(shot.file)) {
        return answer(false,
                      tr("Die alte Bilddatei »%1« lässt sich nicht entfernen.").arg(shot.file));
    }
    QDir().mkpath(QFileInfo(shot.file).absolutePath());

    m_busy = true;
    m_shot = shot;
    m_arguments = arguments(m_command, shot);
    m_output.clear();
    m_process = new QProcess(this);
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    // A tool that asks a question must not wait for an answer that never comes.
    m_process->setStandardInputFile(QProcess::nullDevice());
#ifdef Q_OS_UNIX
    // Its own process group, so a time-out ends the helpers it started too.
    m_process->setChildProcessModifier([] { ::setpgid(0, 0); });
#endif
    connect(m_process, &QProcess::readyReadStandardOutput, this, &CommandCamera::onOutput);
    connect(m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
        onFinished(code, status == QProcess::CrashExit);
    });
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) onStartFailed();
    });
    m_deadline.start(m_timeoutSeconds * 1000);
    m_process->start(m_arguments.first(), m_arguments.mid(1));
}

void CommandCamera::cancel() {
    ++m_generation;
    endCapture();
}

void CommandCamera::onOutput() {
    if (!m_process) return;
    m_output += m_process->readAllStandardOutput();
    if (m_output.size() > kKeptOutputBytes) {
        m_output = "…" + m_output.right(kKeptOutputBytes);
    }
}

void CommandCamera::onFinished(int exitCode, bool crashed) {
    onOutput();
    // What is left of the time-out also bounds the wait for a late file.
    m_lateFileLimitMs = std::min<qint64>(kLateFileMs, std::max(0, m_deadline.remainingTime()));
    m_deadline.stop();
    if (crashed) return fail(tr("Der Aufnahmebefehl ist abgestürzt."));
    if (exitCode != 0) return fail(tr("Der Aufnahmebefehl endete mit Code %1.").arg(exitCode));

    const QFileInfo info(m_shot.file);
    if (info.exists() && info.size() > 0) return succeed();
    m_lastSize = info.exists() ? info.size() : -1;
    m_sinceExit.start();
    m_fileLook.start();
}

void CommandCamera::onStartFailed() {
    fail(tr("Das Programm »%1« lässt sich nicht starten (%2). Ist es installiert und im "
            "Suchpfad (PATH)?")
             .arg(m_arguments.first(), m_process->errorString()),
         false);
}

void CommandCamera::onDeadline() {
    onOutput();
    fail(tr("Der Aufnahmebefehl kam nicht innerhalb von %1 s zurück und wurde beendet.")
             .arg(m_timeoutSeconds));
}

void CommandCamera::lookForFile() {
    const QFileInfo info(m_shot.file);
    const qint64 size = info.exists() ? info.size() : -1;
    if (size > 0 && size == m_lastSize) return succeed();
    m_lastSize = size;
    if (m_sinceExit.elapsed() < m_lateFileLimitMs) return;
    if (size == 0)
        return fail(tr("Der Aufnahmebefehl hinterließ eine leere Datei »%1«.").arg(m_shot.file));
    fail(tr("Der Aufnahmebefehl endete ohne Fehler, aber die Bilddatei »%1« ist nicht "
            "entstanden.")
             .arg(m_shot.file));
}

void CommandCamera::succeed() {
    const QString file = m_shot.file;
    endCapture();
    answer(true, file);
}

void CommandCamera::fail(const QString& what, bool withOutput) {
    QString message =
        what + tr("\nBefehl: %1\nAufgerufen als: %2").arg(m_command, shown(m_arguments));
    if (withOutput) {
        const QString output = QString::fromLocal8Bit(m_output).trimmed();
        message += output.isEmpty() ? tr("\nAusgabe: (keine)") : tr("\nAusgabe:\n%1").arg(output);
    }
    endCapture();
    answer(false, message);
}

// Answers always arrive from the event loop, never from inside capture(), and an answer for
// a capture that was cancelled in the meantime is dropped.
void CommandCamera::answer(bool ok, const QString& fileOrMessage) {
    const quint64 generation = m_generation;
    QMetaObject::invokeMethod(
        this,
        [this, generation, ok, fileOrMessage] {
            if (generation != m_generation) return;
            if (ok) {
                emit captured(fileOrMessage);
            } else {
                emit failed(fileOrMessage);
            }
        },
        Qt::QueuedConnection);
}

void CommandCamera::endCapture() {
    m_deadline.stop();
    m_fileLook.stop();
    abandonProcess();
    m_busy = false;
}

void CommandCamera::abandonProcess() {
    if (!m_process) return;
    QProcess* process = std::exchange(m_process, nullptr);
    disconnect(process, nullptr, this, nullptr);
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
#ifdef Q_OS_UNIX
    if (const qint64 pid = process->processId(); pid > 0) ::kill(-static_cast<pid_t>(pid), SIGKILL);
#endif
    process->kill();
    // Deleted once reaped; if the camera goes first, its destructor waits for the child.
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
}
