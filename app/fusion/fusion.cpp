#include "fusion/fusion.h"

#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTimer>
#include <QtConcurrent>
#include <array>
#include <exception>
#include <filesystem>
#include <span>
#include <system_error>

namespace {

const QString kAlign = QStringLiteral("align_image_stack");
const QString kEnfuse = QStringLiteral("enfuse");
constexpr int kTailLines = 8;  // lines of a failed tool's output quoted in its failure
// The largest width control points are searched at (see alignArguments).
constexpr int kSearchWidth = 1000;

// One phase of a tool's verbose output: the line that starts each of its steps, the share of
// the whole run it spans and what the photographer reads meanwhile ("%1/%2": step of steps).
struct Phase {
    const char* marker;
    int from;
    int to;
    enum Steps { Pairs, Pictures, Once } steps;
    const char* stage;
};

// Shares of the whole measured on 20 pictures of 24 megapixels (9 minutes in all): control
// points 3 %, remapping 46 %, enfuse reading the pictures and weighing their contrast 41 %,
// the pyramids 8 %.
constexpr std::array kAlignPhases{
    Phase{"Creating control points between", 0, 4, Phase::Pairs,
          QT_TRANSLATE_NOOP("Fusion", "Ausrichten %1/%2")},
    Phase{"Optimizing Variables", 4, 5, Phase::Once,
          QT_TRANSLATE_NOOP("Fusion", "Ausrichten: Optimieren")},
    Phase{"remapping ", 5, 50, Phase::Pictures, QT_TRANSLATE_NOOP("Fusion", "Umrechnen %1/%2")},
};
constexpr std::array kEnfusePhases{
    Phase{"loading next image", 50, 91, Phase::Pictures,
          QT_TRANSLATE_NOOP("Fusion", "Verschmelzen: Laden %1/%2")},
    Phase{"creating hard blend mask", 91, 92, Phase::Once,
          QT_TRANSLATE_NOOP("Fusion", "Verschmelzen: Maske")},
    Phase{"generating Laplacian pyramid", 92, 98, Phase::Pictures,
          QT_TRANSLATE_NOOP("Fusion", "Verschmelzen %1/%2")},
    Phase{"collapsing Laplacian pyramid", 98, 99, Phase::Once,
          QT_TRANSLATE_NOOP("Fusion", "Verschmelzen: Zusammensetzen")},
};

QString sizeText(QSize size) {
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

// The header sizes of image files, read off the GUI thread; an invalid size for a file Qt
// cannot read (the tools may still, or will say why not).
QList<QSize> imageSizes(const QStringList& files) {
    QList<QSize> sizes;
    for (const QString& file : files)
        sizes.append(QImageReader(file).size());
    return sizes;
}

// Where the aligned pictures go: the system's temporary folder, unless that is the very folder
// the pictures or the result are in, which must hold nothing else.
QString scratchTemplate(const QStringList& foldersToKeepClean) {
    QString base = QDir::tempPath();
    for (const QString& folder : foldersToKeepClean) {
        if (QDir(base) != QDir(folder)) continue;
        base = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
        if (base.isEmpty()) base = QDir::homePath();
    }
    QDir().mkpath(base);
    return base + QStringLiteral("/quendrix-fusion-XXXXXX");
}

QString checkRequest(const QStringList& pictures, const QString& output) {
    if (pictures.size() < 2)
        return Fusion::tr("Zum Verschmelzen braucht es mindestens 2 Bilder, nicht %1.")
            .arg(pictures.size());
    for (const QString& picture : pictures)
        if (!QFileInfo(picture).isFile()) return Fusion::tr("Bild nicht gefunden: %1").arg(picture);
    const QFileInfo result(output);
    static const QStringList formats{QStringLiteral("tif"), QStringLiteral("tiff"),
                                     QStringLiteral("png"), QStringLiteral("jpg"),
                                     QStringLiteral("jpeg")};
    if (!formats.contains(result.suffix().toLower()))
        return Fusion::tr("Das Ergebnis %1 braucht die Endung tif, tiff, png, jpg oder jpeg.")
            .arg(output);
    if (!result.absoluteDir().exists())
        return Fusion::tr("Der Ordner für das Ergebnis fehlt: %1").arg(result.absolutePath());
    for (const QString& picture : pictures)
        if (QFileInfo(picture) == result)
            return Fusion::tr("Das Ergebnis %1 würde ein Bild des Stapels überschreiben.")
                .arg(output);
    return {};
}

}  // namespace

Fusion::Fusion(QObject* parent) : QObject(parent) {
}

Fusion::~Fusion() {
    cleanUp();
}

QString Fusion::missingTools() {
    QStringList missing;
    QStringList packages;
    if (QStandardPaths::findExecutable(kAlign).isEmpty()) {
        missing << tr("align_image_stack (Paket hugin-tools)");
        packages << QStringLiteral("hugin-tools");
    }
    if (QStandardPaths::findExecutable(kEnfuse).isEmpty()) {
        missing << tr("enfuse (Paket enfuse)");
        packages << QStringLiteral("enfuse");
    }
    if (missing.isEmpty()) return {};
    return tr("Für die Fokusverschmelzung fehlt auf dem Suchpfad (PATH): %1. Installieren mit: "
              "sudo apt-get install %2")
        .arg(missing.join(QStringLiteral(", ")), packages.join(QLatin1Char(' ')));
}

QStringList Fusion::alignArguments(const QStringList& pictures, const QString& prefix,
                                   QSize pictureSize) {
    // -m: the magnification changes across a focus stack. --use-given-order: neighbouring
    // planes look most alike, so each picture is matched to the one before it (the default
    // would sort by exposure, which is the same for all). No -C: the result keeps the
    // pictures' size. -v: one line per pair and per picture, read as progress.
    QStringList arguments{QStringLiteral("-v"), QStringLiteral("-m"),
                          QStringLiteral("--use-given-order")};
    // -s: control points are searched on a copy shrunk by 2^s, at most kSearchWidth pixels
    // wide; the pictures themselves are remapped at full size. The default (half size) is too
    // fine for large pictures: sensor noise and defocus blur grow with the pixel count while
    // the correlation window stays the same. On the simulated camera's stack of 20 pictures
    // of 6000x4000, half size found so few points that it gave up or went far astray, a
    // quarter let the chain of pairs drift by 30 to 40 pixels, an eighth kept every picture
    // within about 3 pixels of where it belongs, and took less time than either.
    int scale = 1;
    while ((pictureSize.width() >> scale) > kSearchWidth)
        ++scale;
    arguments << QStringLiteral("-s") << QString::number(scale);
    arguments << QStringLiteral("-a") << prefix << pictures;
    return arguments;
}

QStringList Fusion::fuseArguments(const QStringList& inputs, const QString& output) {
    // Focus stacking weighs local contrast only; a hard mask takes each pixel from the one
    // sharpest picture instead of averaging it with blurred ones. Contrast is measured on
    // perceived lightness (l-star), so that noise in one colour channel does not outvote
    // real detail, in a 5-pixel window: wider ones are less sensitive to noise but spread
    // halos along the edges where the sharp plane changes.
    QStringList arguments{QStringLiteral("-v"),
                          QStringLiteral("--exposure-weight=0"),
                          QStringLiteral("--saturation-weight=0"),
                          QStringLiteral("--contrast-weight=1"),
                          QStringLiteral("--hard-mask"),
                          QStringLiteral("--contrast-window-size=5"),
                          QStringLiteral("--gray-projector=l-star"),
                          QStringLiteral("--output=") + output};
    return arguments + inputs;
}

void Fusion::start(const QStringList& pictures, const QString& output) {
    if (running()) {
        qWarning("Fusion: a fusion is still running; %s is not started", qPrintable(output));
        return;
    }
    QString problem = missingTools();
    if (problem.isEmpty()) problem = checkRequest(pictures, output);
    if (!problem.isEmpty()) {
        QTimer::singleShot(0, this, [this, problem] { emit failed(problem); });
        return;
    }
    pictures_.clear();
    for (const QString& picture : pictures)
        pictures_ << QFileInfo(picture).absoluteFilePath();
    output_ = QFileInfo(output).absoluteFilePath();
    alignProgram_ = QStandardPaths::findExecutable(kAlign);
    enfuseProgram_ = QStandardPaths::findExecutable(kEnfuse);
    lastPercent_ = -1;
    lastStage_.clear();
    stage_ = Stage::Inspecting;
    inspect(pictures_);
}

bool Fusion::running() const {
    return stage_ != Stage::Idle;
}

void Fusion::cancel() {
    if (!running()) return;
    cleanUp();
    emit failed(tr("Fokusverschmelzung abgebrochen."));
}

template <typename Handler>
void Fusion::guarded(Handler&& handler) {
    try {
        handler();
    } catch (const std::exception& error) {
        fail(tr("Fokusverschmelzung: interner Fehler (%1)")
                 .arg(QString::fromLocal8Bit(error.what())));
    }
}

void Fusion::inspect(const QStringList& files) {
    inspection_ = new QFutureWatcher<QList<QSize>>(this);
    connect(inspection_, &QFutureWatcher<QList<QSize>>::finished, this, [this] {
        guarded([this] {
            const QList<QSize> sizes = inspection_->result();
            inspection_->deleteLater();
            inspection_ = nullptr;
            if (stage_ == Stage::Inspecting)
                onInspected(sizes);
            else if (stage_ == Stage::Checking)
                onChecked(sizes.value(0));
        });
    });
    inspection_->setFuture(QtConcurrent::run(imageSizes, files));
}

void Fusion::onInspected(const QList<QSize>& sizes) {
    // Pictures Qt cannot read are left to align_image_stack, which names what is wrong.
    qsizetype reference = -1;
    for (qsizetype i = 0; i < sizes.size(); ++i) {
        if (!sizes[i].isValid()) continue;
        if (reference < 0) {
            reference = i;
        } else if (sizes[i] != sizes[reference]) {
            fail(tr("%1 hat %2 Pixel, %3 aber %4: alle Bilder eines Stapels müssen "
                    "gleich groß sein.")
                     .arg(pictures_[i], sizeText(sizes[i]), pictures_[reference],
                          sizeText(sizes[reference])));
            return;
        }
    }
    pictureSize_ = reference < 0 ? QSize() : sizes[reference];
    startAligning();
}

void Fusion::startAligning() {
    QStringList keepClean{QFileInfo(output_).absolutePath()};
    for (const QString& picture : pictures_)
        keepClean << QFileInfo(picture).absolutePath();
    keepClean.removeDuplicates();
    scratch_ = std::make_unique<QTemporaryDir>(scratchTemplate(keepClean));
    if (!scratch_->isValid()) {
        fail(tr("Kein temporärer Ordner für die ausgerichteten Bilder: %1")
                 .arg(scratch_->errorString()));
        return;
    }
    stage_ = Stage::Aligning;
    startTool(
        alignProgram_,
        alignArguments(pictures_, scratch_->filePath(QStringLiteral("aligned_")), pictureSize_));
}

void Fusion::startFusing() {
    aligned_ = QDir(scratch_->path())
                   .entryList({QStringLiteral("aligned_*.tif")}, QDir::Files, QDir::Name);
    if (aligned_.size() != pictures_.size()) {
        fail(tr("align_image_stack hat %1 statt %2 ausgerichtete Bilder geliefert.")
                 .arg(aligned_.size())
                 .arg(pictures_.size()));
        return;
    }
    for (QString& file : aligned_)
        file = scratch_->filePath(file);
    if (!pictureSize_.isValid()) pictureSize_ = imageSizes({aligned_.first()}).value(0);

    // enfuse writes beside the result under a hidden name that only becomes the result once it
    // is complete and checked; the name keeps the suffix, which picks enfuse's format.
    const QFileInfo result(output_);
    partial_ = std::make_unique<QTemporaryFile>(result.absoluteDir().filePath(
        QStringLiteral(".%1-XXXXXX.%2").arg(result.completeBaseName(), result.suffix())));
    if (!partial_->open()) {
        fail(tr("Im Ordner %1 kann nicht geschrieben werden: %2")
                 .arg(result.absolutePath(), partial_->errorString()));
        return;
    }
    partial_->close();
    // The name stays reserved; enfuse creates the file anew, with the permissions any new file
    // of the photographer's gets, not the private ones of a temporary file.
    QFile::remove(partial_->fileName());
    stage_ = Stage::Fusing;
    startTool(enfuseProgram_, fuseArguments(aligned_, partial_->fileName()));
}

void Fusion::onChecked(QSize resultSize) {
    if (resultSize != pictureSize_) {
        fail(tr("enfuse hat ein Bild von %1 Pixeln geliefert, die Bilder haben %2.")
                 .arg(sizeText(resultSize), sizeText(pictureSize_)));
        return;
    }
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(partial_->fileName()).toStdString(),
                            QFile::encodeName(output_).toStdString(), error);
    if (error) {
        fail(tr("Das Ergebnis konnte nicht als %1 gespeichert werden: %2")
                 .arg(output_, QString::fromLocal8Bit(error.message())));
        return;
    }
    partial_->setAutoRemove(false);
    cleanUp();
    report(100, tr("Fertig"));
    emit finished(output_);
}

void Fusion::startTool(const QString& program, const QStringList& arguments) {
    tool_ = QFileInfo(program).fileName();
    toolTail_.clear();
    phase_ = -1;
    steps_ = 0;
    process_ = new QProcess(this);
    process_->setProcessChannelMode(QProcess::MergedChannels);
    // Whatever else a tool writes lands in the scratch folder and goes with it.
    process_->setWorkingDirectory(scratch_->path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), scratch_->path());
    process_->setProcessEnvironment(environment);
    connect(process_, &QProcess::readyReadStandardOutput, this,
            [this] { guarded([this] { onToolOutput(); }); });
    connect(process_, &QProcess::finished, this, [this](int exitCode, QProcess::ExitStatus status) {
        guarded([&] { onToolFinished(exitCode, status == QProcess::CrashExit); });
    });
    connect(process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        guarded([this] {
            fail(tr("%1 konnte nicht gestartet werden: %2").arg(tool_, process_->errorString()));
        });
    });
    // align_image_stack writes its progress to standard output, which into a pipe goes out in
    // blocks of 4 KiB: the lines of a whole remapping phase would come only at its end.
    // stdbuf makes it go out line by line, and execs the tool, so the process is the tool.
    const QString stdbuf = QStandardPaths::findExecutable(QStringLiteral("stdbuf"));
    if (stdbuf.isEmpty())
        process_->start(program, arguments);
    else
        process_->start(stdbuf, QStringList{QStringLiteral("-oL"), program} + arguments);
}

void Fusion::onToolOutput() {
    const QProcess* process = process_;
    // A listener of progress() may cancel, which ends the process under this loop.
    while (process && process == process_ && process_->canReadLine()) {
        const QString line = QString::fromLocal8Bit(process_->readLine()).trimmed();
        if (line.isEmpty()) continue;
        toolTail_.append(line);
        if (toolTail_.size() > kTailLines) toolTail_.removeFirst();
        readProgress(line);
    }
}

void Fusion::onToolFinished(int exitCode, bool crashed) {
    onToolOutput();
    if (!process_) return;
    const QString rest = QString::fromLocal8Bit(process_->readAll()).trimmed();
    if (!rest.isEmpty()) toolTail_.append(rest);
    process_->deleteLater();
    process_ = nullptr;
    if (crashed || exitCode != 0) {
        const QString how =
            crashed ? tr("%1 ist abgestürzt").arg(tool_)
                    : tr("%1 ist mit Exit-Code %2 fehlgeschlagen").arg(tool_).arg(exitCode);
        const QString said =
            toolTail_.isEmpty() ? tr("(keine Ausgabe)") : toolTail_.join(QLatin1Char('\n'));
        fail(tr("%1. Letzte Ausgabe:\n%2").arg(how, said));
        return;
    }
    if (stage_ == Stage::Aligning) {
        startFusing();
    } else if (stage_ == Stage::Fusing) {
        stage_ = Stage::Checking;
        inspect({partial_->fileName()});
    }
}

void Fusion::readProgress(const QString& line) {
    const std::span<const Phase> phases = stage_ == Stage::Aligning
                                              ? std::span<const Phase>(kAlignPhases)
                                              : std::span<const Phase>(kEnfusePhases);
    for (int p = 0; p < int(phases.size()); ++p) {
        const Phase& phase = phases[p];
        if (!line.contains(QLatin1String(phase.marker))) continue;
        if (p != phase_) {
            phase_ = p;
            steps_ = 0;
        }
        const int pictures = int(pictures_.size());
        const int count = phase.steps == Phase::Pairs      ? pictures - 1
                          : phase.steps == Phase::Pictures ? pictures
                                                           : 1;
        steps_ = std::min(steps_ + 1, count);
        // Pair k brings picture k + 1 in line with picture k.
        const int picture = phase.steps == Phase::Pairs ? steps_ + 1 : steps_;
        const int percent = phase.from + (phase.to - phase.from) * (steps_ - 1) / count;
        QString stage = tr(phase.stage);
        if (phase.steps != Phase::Once) stage = stage.arg(picture).arg(pictures);
        report(percent, stage);
        return;
    }
}

void Fusion::report(int percent, const QString& stage) {
    // Never backwards: a phase's marker may come again (the optimiser runs twice).
    percent = std::max(percent, lastPercent_);
    if (percent == lastPercent_ && stage == lastStage_) return;
    lastPercent_ = percent;
    lastStage_ = stage;
    emit progress(percent, stage);
}

void Fusion::fail(const QString& message) {
    cleanUp();
    emit failed(message);
}

void Fusion::cleanUp() {
    stage_ = Stage::Idle;
    if (process_) {
        process_->disconnect(this);
        process_->kill();
        process_->waitForFinished(5000);  // a killed tool is reaped within milliseconds
        process_->deleteLater();
        process_ = nullptr;
    }
    if (inspection_) {
        // Only headers are read; the result is dropped when it comes.
        inspection_->disconnect(this);
        inspection_->deleteLater();
        inspection_ = nullptr;
    }
    partial_.reset();
    scratch_.reset();
    aligned_.clear();
}
