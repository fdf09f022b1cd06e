// quendrix: the program a photographer starts. It hosts the Quendrix panel in a window, brings
// the rig into service and takes the pictures the panel asks for: by default on a simulated
// rig with a simulated camera, built in, so that everything can be tried without hardware;
// with --board serial or wifi the real rig named in the settings. With --stack it runs one
// stack without a window and quits.
#include "connectionwatcher.h"
#include "desktop/appicon.h"
#include "hostwindow.h"
#include "language/language.h"
#include "options.h"
#include "propertyrestore.h"
#include "rigsettings.h"
#include "rigstartup.h"
#include "session/capturesession.h"
#include "session/picturefolder.h"
#include "simulatedrig.h"
#include "unattended.h"
#include "unattendedstack.h"

#include <quendrix/Panel.h>
#include <quendrix/PropertyBag.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>
#include <QTimer>
#include <cstdio>

namespace {

// How long a run nobody watches gives the rig to come into service: the serial start-up's
// five identification attempts take 10 s at most, the WiFi start-up's waits over a minute.
constexpr double kUnattendedStartSeconds = 20;

int fail(const QString& text) {
    std::fprintf(stderr, "quendrix: %s\n", qPrintable(text));
    return 2;
}

void say(FILE* stream, const QString& text) {
    std::fprintf(stream, "quendrix: %s\n", qPrintable(text));
    std::fflush(stream);
}

QStringList arguments(int argc, char* argv[]) {
    QStringList list;
    for (int i = 0; i < argc; ++i)
        list << QString::fromLocal8Bit(argv[i]);
    return list;
}

bool displayNamed() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

// The stack plan as the panel shows it, so that a snapshot tells whether a plan resumed.
QString planShown(const quendrix::Panel& p) {
    return QStringLiteral("stack plan: Beginn %1, Ende %2, Ebenen %3, Schritte %4")
        .arg(p.BBeginn[0]->text().trimmed(), p.BEnde[0]->text().trimmed(),
             p.Ebenen->text().trimmed(), p.Schrittzahl->text().trimmed());
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication::setApplicationName(QStringLiteral("quendrix"));
    QApplication::setApplicationVersion(QStringLiteral(QUENDRIX_VERSION));
    const CommandLine line = CommandLine::parse(arguments(argc, argv));
    if (line.outcome == CommandLine::Outcome::Help ||
        line.outcome == CommandLine::Outcome::Version) {
        std::fputs(qPrintable(line.text), stdout);
        return 0;
    }
    if (line.outcome == CommandLine::Outcome::Error)
        return fail(line.text + QStringLiteral(" (quendrix --help lists the options)"));
    const Options& options = line.options;
    const bool unattended = options.stack.has_value();
    // A run nobody watches needs no display: it is decided before Qt picks one.
    if (unattended || (options.unattended() && !displayNamed()))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    // The language is settled before the first widget takes its texts.
    QString problem;
    if (!language::install(app, language::choose(options.language, QLocale::system().uiLanguages()),
                           &problem))
        say(stderr, problem + QStringLiteral("; the window stays German"));
    desktop::useApplicationIcon();

    SimulatedRig rig;  // outlives the panel, which holds its port
    std::unique_ptr<HostWindow> window;
    std::unique_ptr<ctlQuendrix> bare;  // the panel of an unattended run, never shown
    if (unattended)
        bare = std::make_unique<ctlQuendrix>();
    else
        window = std::make_unique<HostWindow>();
    ctlQuendrix& panel = unattended ? *bare : window->panel();
    const auto report = [&](const QString& english, const QString& german) {
        say(stderr, english);
        if (window) window->report(german);
    };
    // A board that stops acknowledging still gets every command, each after its full waits:
    // the photographer hears of it at once, not only from a rig grown slow.
    QObject::connect(&panel, &ctlQuendrix::acknowledgingChanged, [&](bool acknowledging) {
        if (acknowledging)
            report(QStringLiteral("the board acknowledges its commands again"),
                   QCoreApplication::translate("main",
                                               "Die Steuerung bestätigt ihre Befehle wieder."));
        else
            report(QStringLiteral("the board does not acknowledge its commands; each one waits "
                                  "for its acknowledgement in vain"),
                   QCoreApplication::translate("main",
                                               "Die Steuerung bestätigt ihre Befehle nicht; "
                                               "jeder Befehl wartet vergeblich auf Antwort."));
    });
    UnattendedPlatform quiet;
    if (options.unattended()) panel.setPlatform(&quiet);

    if (!options.bag.isEmpty()) {
        quendrix::PropertyBag bag;
        QString error;
        if (!bag.load(options.bag, &error))
            return fail(QStringLiteral("--bag %1: %2").arg(options.bag, error));
        for (const QString& problem : restoreProperties(panel, bag)) {
            const QString text = QStringLiteral("property bag %1: %2")
                                     .arg(QDir::toNativeSeparators(options.bag), problem);
            report(text, text);
        }
    } else {
        panel.InitProperties();
        panel.setMotorName(QStringLiteral("Stativ"));
        panel.setKameratyp(QStringLiteral("Kamera"));
    }
    // The panel speaks German and its settings write decimal commas; a system without a
    // language of its own ("C") gets the panel's.
    if (QLocale::system().name() == u"C")
        panel.setLocale(QLocale(QLocale::German, QLocale::Germany));
    if (options.rig) panel.setControltyp(*options.rig);
    QString error;
    const RigSettings settings = RigSettings::choose(options, panel.Controltyp(), &error);
    if (settings.file.isEmpty()) return fail(QStringLiteral("--ini: ") + error);
    panel.setinifile(settings.file);
    // The calibration lists go where the user may write, never into the program's folder.
    panel.App_Path = RigSettings::dataFolder();
    if (unattended)
        QObject::connect(&panel, &ctlQuendrix::settingProblem,
                         [](const QString& text) { say(stderr, text); });
    if (!settings.named.isEmpty()) {
        const QString named = QDir::toNativeSeparators(settings.named);
        const QString copy = QDir::toNativeSeparators(settings.file);
        report(QStringLiteral("the simulated rig works on a copy of %1 (%2); %1 itself is never "
                              "written")
                   .arg(named, copy),
               QCoreApplication::translate(
                   "main",
                   "Simulierte Steuerung: sie arbeitet mit einer Kopie von %1 (%2); die Datei "
                   "selbst bleibt unverändert.")
                   .arg(named, copy));
        if (window)
            window->setWindowTitle(
                QCoreApplication::translate(
                    "main", "Quendrix – simulierte Steuerung mit einer Kopie von %1")
                    .arg(QFileInfo(settings.named).fileName()));
    }

    // The simulated camera focuses where the simulated rail really stands; with a real rig,
    // where the panel says axis 0 is.
    std::function<double()> focus = [&panel] {
        return panel.panel()->lblPosition1[0]->text().trimmed().toDouble();
    };
    if (options.simulated()) {
        if (settings.fresh) seedSimulatedRig(panel);
        if (!rig.start(panel.Controltyp(), panel.MotorArt0(), options.wireTiming, &error))
            return fail(QStringLiteral("the simulated rig did not start: %1").arg(error));
        panel.setini(panel.MotorName(), QStringLiteral("port"), rig.devicePath());
        focus = [&rig] { return rig.axisPosition(0); };
    }

    std::unique_ptr<CaptureSession> unattendedSession;
    CaptureSession* session = nullptr;
    if (unattended) {
        unattendedSession = std::make_unique<CaptureSession>(panel);
        session = unattendedSession.get();
        QString picturesFolder = options.pictures;
        if (picturesFolder.isEmpty())
            picturesFolder = picturefolder::makeRunFolder(picturefolder::defaultRoot(),
                                                          QDateTime::currentDateTime(), &error);
        if (picturesFolder.isEmpty() || !picturefolder::prepareEmpty(picturesFolder, &error))
            return fail(QStringLiteral("--pictures: ") + error);
        session->setFixedFolder(picturesFolder);
        std::unique_ptr<Camera> chosen = options.camera.make(focus, &error);
        if (!chosen) return fail(error);
        session->setCamera(std::move(chosen));
    } else {
        window->setCamera(options.camera, focus, options.pictures);
    }

    // Where the rig's state went when it was shut down (the program's last word).
    const auto sayShutDown = [&] {
        say(stdout, settings.named.isEmpty()
                        ? QStringLiteral("the rig is shut down; its state is saved in %1")
                              .arg(QDir::toNativeSeparators(settings.file))
                        : QStringLiteral("the rig is shut down; its state is saved in %1 (the "
                                         "copy; %2 stays as it was)")
                              .arg(QDir::toNativeSeparators(settings.file),
                                   QDir::toNativeSeparators(settings.named)));
    };
    if (window) {
        window->resize(1100, 860);
        window->show();
    }
    if (window) window->setBoard(options.board);
    if (window) window->setBoard(options.board);
    RigStartup startup(panel, options.board);
    bool ready = false;
    std::unique_ptr<UnattendedStack> run;
    std::unique_ptr<ConnectionWatcher> watcher;
    if (unattended) {
        run = std::make_unique<UnattendedStack>(panel, *session, *options.stack, options.combine);
        if (options.simulated()) run->watch(rig);
        // A board unplugged or a WiFi link dropped ends the run at once: the panel's waits are
        // ended, so that neither the stack nor the shutdown waits for a board that is gone.
        watcher = std::make_unique<ConnectionWatcher>(panel);
        watcher->setBoard(options.board);
        QObject::connect(watcher.get(), &ConnectionWatcher::lost, run.get(), [&] {
            panel.Terminate();
            run->linkLost(watcher->where());
        });
        QObject::connect(run.get(), &UnattendedStack::finished, &app, [&](int exitCode) {
            session->setCamera(nullptr);
            if (ready) {
                try {
                    panel.Motor_Abschalten();
                    sayShutDown();
                } catch (const std::exception& failure) {
                    say(stderr, QStringLiteral("the shutdown failed: %1").arg(failure.what()));
                }
            }
            app.exit(exitCode);
        });
    }
    QTimer::singleShot(0, &app, [&] {
        ready = startup.run(options.unattended() ? kUnattendedStartSeconds : 0);
        if (window) window->setRigReady(ready);
        if (!ready) {
            report(QStringLiteral("the %1 rig is not ready: %2 %3")
                       .arg(options.boardName(), startup.summary(false), startup.advice(false)),
                   startup.summary(true));
            if (window) window->offerReconnect(startup.summary(true), startup.advice(true));
            if (window) window->offerReconnect(startup.summary(true), startup.advice(true));
            if (!options.unattended())
                panel.platform().messageBox(
                    startup.summary(true) + QStringLiteral("\n\n") + startup.advice(true),
                    quendrix::MsgBox::Exclamation,
                    QCoreApplication::translate("main", "Steuerung nicht gefunden"));
        }
        if (run) {
            run->start(ready);
            return;
        }
        if (options.snapshot.isEmpty()) return;
        QCoreApplication::processEvents();  // the panel's layout and paint after the start-up
        const bool saved = window->grab().save(options.snapshot);
        say(stdout,
            QStringLiteral("%1 the window (%2) to %3; the %4 rig is %5.")
                .arg(saved ? QStringLiteral("rendered") : QStringLiteral("could not render"),
                     QGuiApplication::platformName(), options.snapshot, options.boardName(),
                     ready ? QStringLiteral("ready") : QStringLiteral("not ready")));
        if (ready) say(stdout, planShown(*panel.panel()));
        window->close();
        app.exit(saved && ready ? 0 : 1);
    });
    const int exitCode = app.exec();
    if (window && window->rigReady()) sayShutDown();
    return exitCode;
}
