// quendrix: the program a photographer starts. It hosts the Quendrix panel in a window, brings
// the rig into service and takes the pictures the panel asks for: by default on a simulated
// rig with a simulated camera, built in, so that everything can be tried without hardware;
// with --board serial or wifi the real rig named in the settings. With --stack it runs one
// stack without a window and quits.
#include "camerachoice.h"
#include "desktop/appicon.h"
#include "hostwindow.h"
#include "propertyrestore.h"
#include "session/capturesession.h"
#include "session/picturefolder.h"
#include "simulatedrig.h"
#include "unattended.h"
#include "unattendedstack.h"

#include <quendrix/Panel.h>
#include <quendrix/PropertyBag.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTimer>
#include <cstdio>
#include <cstring>

namespace {

// Where the settings live unless --ini names a file. The simulated rig keeps its own, so that
// trying the program never touches a real rig's settings.
QString defaultSettingsFile(bool simulated) {
    const QString folder = QStandardPaths::writableLocation(
        simulated ? QStandardPaths::AppLocalDataLocation : QStandardPaths::AppConfigLocation);
    QDir().mkpath(folder);
    return folder +
           (simulated ? QStringLiteral("/simulated_L.ini") : QStringLiteral("/quendrix_L.ini"));
}

int fail(const QString& text) {
    std::fprintf(stderr, "quendrix: %s\n", qPrintable(text));
    return 2;
}

// An unattended run needs no display: it is decided before Qt picks one.
bool unattendedRequested(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--stack") == 0 || std::strncmp(argv[i], "--stack=", 8) == 0)
            return true;
    return false;
}

QCommandLineOption option(const char* name, const char* description, const char* value = nullptr,
                          const QString& byDefault = {}) {
    return value ? QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(description),
                                      QString::fromLatin1(value), byDefault)
                 : QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(description));
}

}  // namespace

int main(int argc, char* argv[]) {
    const bool unattended = unattendedRequested(argc, argv);
    if (unattended) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quendrix"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));
    desktop::useApplicationIcon();

    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Drives a motorised macro/micro photography rig, takes the pictures of its "
                       "focus stacks and fuses them."));
    options.addHelpOption();
    options.addVersionOption();
    const auto boardOption = option("board",
                                    "The rig's board: sim (built in, the default), serial (the "
                                    "port in the settings) or wifi (the address in the settings).",
                                    "kind", QStringLiteral("sim"));
    const auto iniOption = option("ini", "The rig's settings file.", "file");
    const auto rigOption =
        option("rig", "Rig type: 0 bellows, 1 lens changer, 2 microscope.", "type");
    const auto bagOption = option("bag", "Restore the panel's properties from <file>.", "file");
    const auto snapshotOption =
        option("snapshot",
               "Bring the rig into service, render the window to <png>, shut the rig down "
               "and quit.",
               "png");
    const auto stackOption =
        option("stack",
               "Run one stack without a window between FROM and TO motor steps on axis 0 in "
               "PLANES intervals (PLANES + 1 pictures), then quit. Like the panel's own "
               "stacks it runs downward, from the higher of the two.",
               "FROM:TO:PLANES");
    const auto picturesOption =
        option("pictures",
               "With --stack: the folder the pictures go into (new or empty). Otherwise: "
               "the folder each run gets a folder in (default: Quendrix in your pictures "
               "folder).",
               "dir");
    const auto combineOption = option("combine", "With --stack: fuse the pictures at the end.");
    const auto cameraOption =
        option("camera",
               "sim (simulated; the default on the simulated rig), command (--capture-command) "
               "or gphoto2 (a camera on USB; the default on a real rig).",
               "kind");
    const auto commandOption =
        option("capture-command",
               "The command that takes one picture, e.g. 'gphoto2 "
               "--capture-image-and-download --filename {file}'. {file}, {plane} "
               "and {position} are replaced; no shell is involved.",
               "command");
    const auto timeoutOption = option("capture-timeout", "Seconds one capture may take (60).",
                                      "seconds", QStringLiteral("60"));
    options.addOptions({boardOption, iniOption, rigOption, bagOption, snapshotOption, stackOption,
                        picturesOption, combineOption, cameraOption, commandOption, timeoutOption});
    options.process(app);

    const QString board = options.value(boardOption);
    if (board != u"sim" && board != u"serial" && board != u"wifi")
        return fail(QStringLiteral("--board: sim, serial or wifi, not %1").arg(board));
    const bool simulated = board == u"sim";
    const QString rigType = options.value(rigOption);
    if (options.isSet(rigOption) && rigType != u"0" && rigType != u"1" && rigType != u"2")
        return fail(QStringLiteral("--rig: 0, 1 or 2, not %1").arg(rigType));
    CameraChoice camera;
    camera.kind = options.isSet(cameraOption) ? options.value(cameraOption)
                  : simulated                 ? QStringLiteral("sim")
                                              : QStringLiteral("gphoto2");
    camera.command = options.value(commandOption);
    bool timeoutIsNumber = false;
    camera.timeoutSeconds = options.value(timeoutOption).trimmed().toInt(&timeoutIsNumber);
    if (!timeoutIsNumber || camera.timeoutSeconds < 1 || camera.timeoutSeconds > 86400)
        return fail(QStringLiteral("--capture-timeout: whole seconds from 1 to 86400, not %1")
                        .arg(options.value(timeoutOption)));
    std::optional<StackRequest> stack;
    if (unattended) {
        QString error;
        stack = StackRequest::parse(options.value(stackOption), &error);
        if (!stack) return fail(error);
    } else if (options.isSet(combineOption)) {
        return fail(QStringLiteral("--combine belongs to --stack"));
    }
    QString picturesFolder;
    if (options.isSet(picturesOption)) {
        picturesFolder = QFileInfo(options.value(picturesOption)).absoluteFilePath();
        QString error;
        if (unattended && !picturefolder::prepareEmpty(picturesFolder, &error))
            return fail(QStringLiteral("--pictures: ") + error);
    }

    SimulatedRig rig;  // outlives the panel, which holds its port
    std::unique_ptr<HostWindow> window;
    std::unique_ptr<ctlQuendrix> bare;  // the panel of an unattended run, never shown
    if (unattended)
        bare = std::make_unique<ctlQuendrix>();
    else
        window = std::make_unique<HostWindow>();
    ctlQuendrix& panel = unattended ? *bare : window->panel();
    const auto report = [&](const QString& text) {
        std::fprintf(stderr, "quendrix: %s\n", qPrintable(text));
        if (window) window->report(text);
    };
    UnattendedPlatform quiet;
    const bool snapshot = options.isSet(snapshotOption);
    if (snapshot || unattended) panel.setPlatform(&quiet);

    if (options.isSet(bagOption)) {
        quendrix::PropertyBag bag;
        QString error;
        if (!bag.load(options.value(bagOption), &error))
            return fail(QStringLiteral("cannot read %1: %2").arg(options.value(bagOption), error));
        for (const QString& problem : restoreProperties(panel, bag))
            report(QStringLiteral("property bag %1: %2")
                       .arg(QDir::toNativeSeparators(options.value(bagOption)), problem));
    } else {
        panel.InitProperties();
        panel.setMotorName(QStringLiteral("Stativ"));
        panel.setKameratyp(QStringLiteral("Kamera"));
    }
    // The panel speaks German and its settings write decimal commas; a system without a
    // language of its own ("C") gets the panel's.
    if (QLocale::system().name() == u"C")
        panel.setLocale(QLocale(QLocale::German, QLocale::Germany));
    if (options.isSet(rigOption)) panel.setControltyp(qint16(rigType.toShort()));
    panel.setinifile(options.isSet(iniOption)
                         ? QFileInfo(options.value(iniOption)).absoluteFilePath()
                         : defaultSettingsFile(simulated));
    if (unattended) QObject::connect(&panel, &ctlQuendrix::settingProblem, report);

    // The simulated camera focuses where the simulated rail really stands; with a real rig,
    // where the panel says axis 0 is.
    std::function<double()> focus = [&panel] {
        return panel.panel()->lblPosition1[0]->text().trimmed().toDouble();
    };
    if (simulated) {
        // A new simulated rig gets a brisk rail (200 us a step instead of the panel's 800), so
        // that a stack over the simulated subject takes seconds, not minutes.
        if (!QFileInfo::exists(panel.inifile()))
            panel.setini(panel.MotorName() + QLatin1Char('0'), QStringLiteral("Taktpause"),
                         QStringLiteral("200"));
        QString error;
        if (!rig.start(panel.Controltyp(), &error))
            return fail(QStringLiteral("the simulated rig did not start: %1").arg(error));
        panel.setini(panel.MotorName(), QStringLiteral("port"), rig.devicePath());
        focus = [&rig] { return rig.axisPosition(0); };
    }

    std::unique_ptr<CaptureSession> unattendedSession;
    CaptureSession* session = nullptr;
    if (unattended) {
        unattendedSession = std::make_unique<CaptureSession>(panel);
        session = unattendedSession.get();
        if (picturesFolder.isEmpty()) {
            QString error;
            picturesFolder = picturefolder::makeRunFolder(picturefolder::defaultRoot(),
                                                          QDateTime::currentDateTime(), &error);
            if (picturesFolder.isEmpty()) return fail(error);
        }
        session->setFixedFolder(picturesFolder);
        QString error;
        std::unique_ptr<Camera> chosen = camera.make(focus, &error);
        if (!chosen) return fail(error);
        session->setCamera(std::move(chosen));
    } else {
        window->setCamera(camera, focus, picturesFolder);
    }

    bool ready = false;
    QObject::connect(&panel, &ctlQuendrix::Bereitschaft, [&ready](bool r) { ready = ready || r; });
    if (window) {
        window->resize(1100, 860);
        window->show();
    }
    std::unique_ptr<UnattendedStack> run;
    if (unattended) {
        run = std::make_unique<UnattendedStack>(panel, *session, *stack,
                                                options.isSet(combineOption));
        QObject::connect(run.get(), &UnattendedStack::finished, &app, [&](int exitCode) {
            session->setCamera(nullptr);
            if (ready) {
                try {
                    panel.Motor_Abschalten();
                } catch (const std::exception& error) {
                    std::fprintf(stderr, "quendrix: the shutdown failed: %s\n", error.what());
                }
            }
            app.exit(exitCode);
        });
    }
    QTimer::singleShot(0, &app, [&] {
        try {
            if (board == u"wifi")
                panel.WiFi_Starten();
            else
                panel.Comm_Starten();
        } catch (const std::exception& error) {
            // The panel's start-up does not fail this way; should it ever, the rig is not ready.
            std::fprintf(stderr, "quendrix: the start-up failed: %s\n", error.what());
        }
        if (run) {
            run->start(ready);
            return;
        }
        if (!snapshot) return;
        QCoreApplication::processEvents();  // the panel's layout and paint after the start-up
        const QString file = options.value(snapshotOption);
        const bool saved = window->grab().save(file);
        std::printf(
            "quendrix: %s the window (%s) to %s; the %s rig is %s.\n",
            saved ? "rendered" : "could not render", qPrintable(QGuiApplication::platformName()),
            qPrintable(file), simulated ? "simulated" : qPrintable(board),
            ready ? "ready"
                  : qPrintable(
                        QStringLiteral("not ready (%1)").arg(panel.panel()->Text1[0]->text())));
        std::fflush(stdout);
        window->close();
        app.exit(saved && ready ? 0 : 1);
    });
    return app.exec();
}
