// What the host adds to fusing a stack: wall time and peak memory of Fusion (align_image_stack
// and enfuse as it runs them, reading their progress) against the same two commands run by
// hand, one after the other, on the same pictures. The pictures are the simulated camera's
// subject, focused at steps spread over its depth, written as TIFF into a temporary folder.
// Target: Fusion's wall time at most 1.1 times the tools' own.
// Rounds alternate which of the two goes first, so that a machine busy with other work, or
// the page cache, favours neither; the ratio is of the summed wall times.
// Usage: bench_fusion [WIDTHxHEIGHT, default 6000x4000] [pictures, default 20] [rounds, default 2]
#include "camera/subject.h"
#include "fusion/fusion.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImageReader>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>
#include <exception>
#include <vector>

extern char** environ;

namespace {

struct Options {
    QSize size{6000, 4000};
    int pictures = 20;
    int rounds = 2;
};

// Reads [WIDTHxHEIGHT] [pictures] [rounds]; says what is wrong with them, or nothing.
QString parse(const QStringList& arguments, Options& options) {
    if (arguments.size() > 3) return QStringLiteral("too many arguments");
    if (!arguments.isEmpty()) {
        const auto match =
            QRegularExpression(QStringLiteral("^(\\d{2,5})x(\\d{2,5})$")).match(arguments[0]);
        options.size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
        if (!match.hasMatch() || options.size.width() < 64 || options.size.height() < 64)
            return QStringLiteral("picture size \"%1\" is not WIDTHxHEIGHT of at least 64x64")
                .arg(arguments[0]);
    }
    bool ok = true;
    if (arguments.size() >= 2) options.pictures = arguments[1].toInt(&ok);
    if (!ok || options.pictures < 2)
        return QStringLiteral("picture count \"%1\" is not a number of at least 2")
            .arg(arguments[1]);
    if (arguments.size() == 3) options.rounds = arguments[2].toInt(&ok);
    if (!ok || options.rounds < 1)
        return QStringLiteral("rounds \"%1\" is not a number of at least 1").arg(arguments[2]);
    return {};
}

// The bench process's own peak resident memory since the last reset, in MiB (Linux: VmHWM,
// reset through clear_refs).
void resetOwnPeak() {
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly)) clear.write("5");
}
double ownPeakMiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly))
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("VmHWM:"))
                return line.mid(6).trimmed().split(' ')[0].toDouble() / 1024;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024.0;
}

struct Run {
    bool ok = false;
    double seconds = 0;
    double cpuSeconds = 0;  // of the children, user and system
    double childrenPeakMiB = 0;
    double ownPeakMiB = 0;
    QString problem;
};

double cpuSeconds(const rusage& usage) {
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// One command, its output dropped, waited for with wait4 for its own resource usage.
bool runByHand(const QString& program, const QStringList& arguments, Run& run) {
    std::vector<QByteArray> storage{QFile::encodeName(program)};
    for (const QString& argument : arguments)
        storage.push_back(QFile::encodeName(argument));
    std::vector<char*> argv;
    for (QByteArray& argument : storage)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t pid = 0;
    const int error = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        run.problem =
            QStringLiteral("%1 cannot be started: %2").arg(program, qt_error_string(error));
        return false;
    }
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid) {
        run.problem = QStringLiteral("wait4 for %1 failed").arg(program);
        return false;
    }
    run.childrenPeakMiB = std::max(run.childrenPeakMiB, usage.ru_maxrss / 1024.0);
    run.cpuSeconds += cpuSeconds(usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        run.problem = QStringLiteral("%1 failed (status %2)").arg(program).arg(status);
        return false;
    }
    return true;
}

// Fusion as the host runs it. Its children's peak memory counts only while it is the first
// to run anything: RUSAGE_CHILDREN keeps the largest child reaped so far, and the children
// QProcess reaps can be measured no other way.
Run fuseWithQuendrix(const QStringList& pictures, const QString& output) {
    Run run;
    resetOwnPeak();
    rusage before{};
    getrusage(RUSAGE_CHILDREN, &before);
    Fusion fusion;
    QObject::connect(&fusion, &Fusion::finished, qApp, [&] {
        run.ok = true;
        QCoreApplication::quit();
    });
    QObject::connect(&fusion, &Fusion::failed, qApp, [&](const QString& message) {
        run.problem = message;
        QCoreApplication::quit();
    });
    QElapsedTimer clock;
    clock.start();
    fusion.start(pictures, output);
    QCoreApplication::exec();
    run.seconds = clock.nsecsElapsed() / 1e9;
    rusage children{};
    getrusage(RUSAGE_CHILDREN, &children);
    run.childrenPeakMiB = children.ru_maxrss / 1024.0;
    run.cpuSeconds = cpuSeconds(children) - cpuSeconds(before);
    run.ownPeakMiB = ownPeakMiB();
    return run;
}

Run fuseByHand(const QStringList& pictures, QSize size, const QString& scratch,
               const QString& output) {
    Run run;
    resetOwnPeak();
    QElapsedTimer clock;
    clock.start();
    const QString prefix = scratch + QStringLiteral("/aligned_");
    run.ok = runByHand(QStandardPaths::findExecutable(QStringLiteral("align_image_stack")),
                       Fusion::alignArguments(pictures, prefix, size), run);
    if (run.ok) {
        QStringList aligned;
        for (const QString& file :
             QDir(scratch).entryList({QStringLiteral("aligned_*.tif")}, QDir::Files, QDir::Name))
            aligned << scratch + QLatin1Char('/') + file;
        run.ok = runByHand(QStandardPaths::findExecutable(QStringLiteral("enfuse")),
                           Fusion::fuseArguments(aligned, output), run);
    }
    run.seconds = clock.nsecsElapsed() / 1e9;
    for (const QString& file : QDir(scratch).entryList(QDir::Files))
        QFile::remove(scratch + QLatin1Char('/') + file);  // as Fusion removes its own
    run.ownPeakMiB = ownPeakMiB();
    return run;
}

int bench(const Options& options) {
    const QString missing = Fusion::missingTools();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "bench_fusion: %s\n", qPrintable(missing));
        return 1;
    }
    QTemporaryDir work;
    const QString folder = work.filePath(QStringLiteral("pictures"));
    const QString scratch = work.filePath(QStringLiteral("by-hand"));
    if (!work.isValid() || !QDir().mkpath(folder) || !QDir().mkpath(scratch)) {
        std::fprintf(stderr, "bench_fusion: no temporary folder: %s\n",
                     qPrintable(work.errorString()));
        return 1;
    }

    QElapsedTimer clock;
    clock.start();
    QStringList pictures;
    {
        const Subject subject(options.size);
        for (int i = 0; i < options.pictures; ++i) {
            const double focus = Subject::kNearSteps + (Subject::kFarSteps - Subject::kNearSteps) *
                                                           i / (options.pictures - 1);
            pictures << folder +
                            QStringLiteral("/plane-%1.tif").arg(i + 1, 4, 10, QLatin1Char('0'));
            if (!subject.render(focus, 2, quint32(i)).save(pictures.last())) {
                std::fprintf(stderr, "bench_fusion: cannot write %s\n",
                             qPrintable(pictures.last()));
                return 1;
            }
        }
    }
    std::printf("pictures %d x %dx%d TIFF, rendered in %.1f s\n", options.pictures,
                options.size.width(), options.size.height(), clock.nsecsElapsed() / 1e9);
    std::fflush(stdout);

    ::sync();  // the pictures' write-back is not to slow down whichever run comes first

    const QString quendrixOutput = work.filePath(QStringLiteral("quendrix.tif"));
    const QString byHandOutput = work.filePath(QStringLiteral("by-hand.tif"));
    double quendrixSeconds = 0, byHandSeconds = 0;
    for (int round = 0; round < options.rounds; ++round) {
        for (const bool quendrixNow : {round % 2 == 0, round % 2 != 0}) {
            const Run run = quendrixNow ? fuseWithQuendrix(pictures, quendrixOutput)
                                        : fuseByHand(pictures, options.size, scratch, byHandOutput);
            const char* name = quendrixNow ? "quendrix" : "by hand";
            if (!run.ok) {
                std::fprintf(stderr, "bench_fusion: %s failed: %s\n", name,
                             qPrintable(run.problem));
                return 1;
            }
            // After the first round RUSAGE_CHILDREN also holds the runs by hand.
            const bool peakKnown = !quendrixNow || round == 0;
            std::printf(
                "round %d %-8s: wall %.2f s, children CPU %.1f s, children peak RSS %s, "
                "own peak RSS %.0f MiB\n",
                round + 1, name, run.seconds, run.cpuSeconds,
                peakKnown ? qPrintable(QStringLiteral("%1 MiB").arg(run.childrenPeakMiB, 0, 'f', 0))
                          : "(see round 1)",
                run.ownPeakMiB);
            std::fflush(stdout);
            (quendrixNow ? quendrixSeconds : byHandSeconds) += run.seconds;
        }
    }
    if (QImageReader(quendrixOutput).size() != options.size ||
        QImageReader(byHandOutput).size() != options.size) {
        std::fprintf(stderr, "bench_fusion: the results are not %dx%d\n", options.size.width(),
                     options.size.height());
        return 1;
    }
    std::printf("wall quendrix %.2f s, by hand %.2f s (%d round%s)\n", quendrixSeconds,
                byHandSeconds, options.rounds, options.rounds == 1 ? "" : "s");
    std::printf("RATIO fusion-vs-enfuse %.3f <= 1.1\n", quendrixSeconds / byHandSeconds);
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    Options options;
    const QString problem = parse(app.arguments().mid(1), options);
    if (!problem.isEmpty()) {
        std::fprintf(stderr,
                     "bench_fusion: %s\nusage: bench_fusion [WIDTHxHEIGHT, default 6000x4000] "
                     "[pictures, default 20] [rounds, default 2]\n",
                     qPrintable(problem));
        return 2;
    }
    try {
        return bench(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_fusion: %s\n", error.what());
        return 1;
    }
}
