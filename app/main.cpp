// quendrix: the program a photographer starts. It hosts the Quendrix panel in a window.
#include <quendrix/PropertyBag.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QMainWindow>
#include <QTimer>
#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quendrix"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));

    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Drives a motorised macro/micro photography rig."));
    options.addHelpOption();
    options.addVersionOption();
    const QCommandLineOption bagOption(
        QStringLiteral("bag"), QStringLiteral("Restore the panel's properties from <file>."),
        QStringLiteral("file"));
    const QCommandLineOption rigOption(
        QStringLiteral("rig"), QStringLiteral("Rig type: 0 bellows, 1 lens changer, 2 microscope."),
        QStringLiteral("type"));
    const QCommandLineOption snapshotOption(QStringLiteral("snapshot"),
                                            QStringLiteral("Render the window to <png> and quit."),
                                            QStringLiteral("png"));
    options.addOptions({bagOption, rigOption, snapshotOption});
    options.process(app);

    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Quendrix"));
    auto* panel = new ctlQuendrix(&window);
    panel->setObjectName(QStringLiteral("Quendrix"));
    quendrix::PropertyBag bag;
    QString error;
    if (options.isSet(bagOption) && !bag.load(options.value(bagOption), &error)) {
        std::fprintf(stderr, "quendrix: cannot read %s: %s\n", qPrintable(options.value(bagOption)),
                     qPrintable(error));
        return 2;
    }
    if (options.isSet(bagOption))
        panel->ReadProperties(bag);
    else
        panel->InitProperties();
    if (options.isSet(rigOption)) panel->setControltyp(qint16(options.value(rigOption).toShort()));
    window.setCentralWidget(panel);
    window.show();

    if (options.isSet(snapshotOption)) {
        const QString file = options.value(snapshotOption);
        QTimer::singleShot(0, &window, [&] {
            const bool saved = window.grab().save(file);
            std::printf("quendrix: %s the panel (%s) to %s and quit.\n",
                        saved ? "rendered" : "could not render",
                        qPrintable(QGuiApplication::platformName()), qPrintable(file));
            app.exit(saved ? 0 : 1);
        });
    }
    return app.exec();
}
