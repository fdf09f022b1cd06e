// quendrix: the program a photographer starts. It hosts the Quendrix panel in a window and
// brings the rig into service: by default a simulated rig, built in, so that everything can
// be tried without hardware; with --board serial or wifi the real one named in the settings.
#include "hostwindow.h"
#include "propertyrestore.h"
#include "simulatedrig.h"
#include "unattended.h"

#include <quendrix/Panel.h>
#include <quendrix/PropertyBag.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTimer>
#include <cstdio>

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

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quendrix"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));

    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Drives a motorised macro/micro photography rig."));
    options.addHelpOption();
    options.addVersionOption();
    const QCommandLineOption boardOption(
        QStringLiteral("board"),
        QStringLiteral("The rig's board: sim (built in, the default), serial (the port in the "
                       "settings) or wifi (the address in the settings)."),
        QStringLiteral("kind"), QStringLiteral("sim"));
    const QCommandLineOption iniOption(
        QStringLiteral("ini"), QStringLiteral("The rig's settings file."), QStringLiteral("file"));
    const QCommandLineOption rigOption(
        QStringLiteral("rig"), QStringLiteral("Rig type: 0 bellows, 1 lens changer, 2 microscope."),
        QStringLiteral("type"));
    const QCommandLineOption bagOption(
        QStringLiteral("bag"), QStringLiteral("Restore the panel's properties from <file>."),
        QStringLiteral("file"));
    const QCommandLineOption snapshotOption(
        QStringLiteral("snapshot"),
        QStringLiteral("Bring the rig into service, render the window to <png>, shut the rig "
                       "down and quit."),
        QStringLiteral("png"));
    options.addOptions({boardOption, iniOption, rigOption, bagOption, snapshotOption});
    options.process(app);

    const QString board = options.value(boardOption);
    if (board != u"sim" && board != u"serial" && board != u"wifi")
        return fail(QStringLiteral("--board: sim, serial or wifi, not %1").arg(board));
    const bool simulated = board == u"sim";
    const QString rigType = options.value(rigOption);
    if (options.isSet(rigOption) && rigType != u"0" && rigType != u"1" && rigType != u"2")
        return fail(QStringLiteral("--rig: 0, 1 or 2, not %1").arg(rigType));

    SimulatedRig rig;  // outlives the window, whose panel holds its port
    HostWindow window;
    ctlQuendrix& panel = window.panel();
    UnattendedPlatform unattended;
    const bool snapshot = options.isSet(snapshotOption);
    if (snapshot) panel.setPlatform(&unattended);

    if (options.isSet(bagOption)) {
        quendrix::PropertyBag bag;
        QString error;
        if (!bag.load(options.value(bagOption), &error))
            return fail(QStringLiteral("cannot read %1: %2").arg(options.value(bagOption), error));
        for (const QString& problem : restoreProperties(panel, bag)) {
            const QString text =
                QStringLiteral("property bag %1: %2")
                    .arg(QDir::toNativeSeparators(options.value(bagOption)), problem);
            std::fprintf(stderr, "quendrix: %s\n", qPrintable(text));
            window.report(text);
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
    if (options.isSet(rigOption)) panel.setControltyp(qint16(rigType.toShort()));
    panel.setinifile(options.isSet(iniOption)
                         ? QFileInfo(options.value(iniOption)).absoluteFilePath()
                         : defaultSettingsFile(simulated));

    if (simulated) {
        QString error;
        if (!rig.start(panel.Controltyp(), &error))
            return fail(QStringLiteral("the simulated rig did not start: %1").arg(error));
        panel.setini(panel.MotorName(), QStringLiteral("port"), rig.devicePath());
    }

    window.resize(760, 860);
    window.show();
    QTimer::singleShot(0, &window, [&] {
        try {
            if (board == u"wifi")
                panel.WiFi_Starten();
            else
                panel.Comm_Starten();
        } catch (const std::exception& error) {
            // The panel's start-up does not fail this way; should it ever, the rig is not ready.
            std::fprintf(stderr, "quendrix: the start-up failed: %s\n", error.what());
        }
        if (!snapshot) return;
        QCoreApplication::processEvents();  // the panel's layout and paint after the start-up
        const QString file = options.value(snapshotOption);
        const bool saved = window.grab().save(file);
        const bool ready = window.rigReady();
        std::printf(
            "quendrix: %s the window (%s) to %s; the %s rig is %s.\n",
            saved ? "rendered" : "could not render", qPrintable(QGuiApplication::platformName()),
            qPrintable(file), simulated ? "simulated" : qPrintable(board),
            ready ? "ready"
                  : qPrintable(
                        QStringLiteral("not ready (%1)").arg(panel.panel()->Text1[0]->text())));
        std::fflush(stdout);
        window.close();
        app.exit(saved && ready ? 0 : 1);
    });
    return app.exec();
}
