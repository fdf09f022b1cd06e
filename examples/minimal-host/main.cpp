// The smallest host of the Quendrix panel: it places the panel on a window, restores the
// panel's properties, brings the rig into service and takes a picture whenever the panel asks
// for one. A real host takes the pictures with its camera; this one writes a small stand-in
// picture per plane, named by the plane (plane-0001.png, plane-0002.png, ...).
//
//   minimal-host [--ini SETTINGS] [--bag PROPERTIES] [--pictures FOLDER] [--stack PLANES]
#include <quendrix/Panel.h>
#include <quendrix/PropertyBag.h>
#include <quendrix/RuntimeError.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPort>
#include <QTimer>
#include <QVBoxLayout>
#include <cstdio>

namespace {

void say(const QString& text) {
    std::printf("%s\n", qPrintable(text));
    std::fflush(stdout);
}

// Restores the panel as it was placed last time, or as a panel placed for the first time.
void restoreProperties(ctlQuendrix& panel, const QString& bagFile) {
    quendrix::PropertyBag bag;
    QString error;
    if (!QFile::exists(bagFile)) {
        // A first placement, and what a form's designer would set on it: the settings
        // section of this rig and the characters its board announces itself with.
        panel.InitProperties();
        panel.setMotorName(QStringLiteral("Platz0"));
        panel.setKennung(QStringLiteral("qQ"));
    } else if (!bag.load(bagFile, &error)) {
        say(QStringLiteral("%1: %2; the panel starts with its defaults").arg(bagFile, error));
        panel.InitProperties();
    } else {
        try {
            panel.ReadProperties(bag);
        } catch (const quendrix::RuntimeError& refused) {
            say(QStringLiteral("%1: %2; the panel starts with its defaults")
                    .arg(bagFile, refused.text()));
            panel.InitProperties();
        }
    }
}

// The stand-in for a camera: a small grey picture, a shade per plane.
bool takePicture(const QString& file, int plane) {
    QImage picture(160, 120, QImage::Format_Grayscale8);
    picture.fill(QColor::fromHsv(0, 0, 40 + plane * 23 % 200));
    return picture.save(file);
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(QStringLiteral("The smallest host of the Quendrix panel."));
    options.addHelpOption();
    options.addOptions({
        {QStringLiteral("ini"), QStringLiteral("The rig's settings file (kept in the bag)."),
         QStringLiteral("file")},
        {QStringLiteral("bag"), QStringLiteral("Where the panel's properties are kept."),
         QStringLiteral("file"), QStringLiteral("minimal-host.bag")},
        {QStringLiteral("pictures"), QStringLiteral("The folder the pictures go to."),
         QStringLiteral("folder"), QStringLiteral("pictures")},
        {QStringLiteral("stack"),
         QStringLiteral("Take a stack of this many planes once the rig is ready, then quit."),
         QStringLiteral("planes")},
    });
    options.process(app);
    const QString bagFile = options.value(QStringLiteral("bag"));
    const QDir pictures(options.value(QStringLiteral("pictures")));
    const int stackPlanes = options.value(QStringLiteral("stack")).toInt();
    if (options.isSet(QStringLiteral("stack")) && stackPlanes <= 0) {
        say(QStringLiteral("--stack: \"%1\" is no number of planes")
                .arg(options.value(QStringLiteral("stack"))));
        return 2;
    }
    if (!QDir().mkpath(pictures.path())) {
        say(QStringLiteral("cannot make the folder %1").arg(pictures.path()));
        return 1;
    }

    // Place the panel and restore it. The bag names the settings file once --ini has set it.
    QWidget window;
    auto* panel = new ctlQuendrix(&window);
    panel->setObjectName(QStringLiteral("Quendrix1"));
    (new QVBoxLayout(&window))->addWidget(panel);
    restoreProperties(*panel, bagFile);
    if (options.isSet(QStringLiteral("ini")))
        panel->setinifile(QFileInfo(options.value(QStringLiteral("ini"))).absoluteFilePath());

    // Schicht: one plane is ready. Take its picture, then release the run with SetOK(true);
    // the panel waits for the release before it moves on to the next plane.
    QObject::connect(panel, &ctlQuendrix::Schicht, panel, [&](const QString& plane) {
        const int number = plane.toInt();
        const QString file =
            pictures.filePath(QStringLiteral("plane-%1.png").arg(number, 4, 10, QChar(u'0')));
        say(takePicture(file, number) ? QStringLiteral("picture %1: %2").arg(plane, file)
                                      : QStringLiteral("cannot write %1").arg(file));
        panel->SetOK(true);
    });
    // Kombinieren: the stack is complete. A real host fuses its pictures now.
    QObject::connect(panel, &ctlQuendrix::Kombinieren, panel, [&](const QString& count) {
        say(QStringLiteral("combine %1 pictures in %2").arg(count, pictures.path()));
        if (stackPlanes > 0) app.quit();
    });

    // Bereitschaft: start-up has finished. Queued, so that a stack starts once Comm_Starten
    // has returned.
    bool ready = false;
    QObject::connect(
        panel, &ctlQuendrix::Bereitschaft, panel,
        [&](bool isReady) {
            ready = isReady;
            say(QStringLiteral("rig ready: %1 (%2)")
                    .arg(isReady ? "yes" : "no", panel->panel()->Text1[0]->text()));
            if (stackPlanes <= 0) return;
            if (!isReady) {
                app.exit(1);
                return;
            }
            // The stack's range and pause come from the settings file; the planes from here.
            // Cleared first, so that the panel plans the stack anew even for the same number.
            quendrix::Panel& form = *panel->panel();
            form.Ebenen->clear();
            form.Ebenen->setText(QString::number(stackPlanes));
            form.AutoKomb->click();
        },
        Qt::QueuedConnection);

    QTimer::singleShot(0, panel, [&] {
        // Opens the port the settings name and runs the start-up. Settings the panel cannot
        // use reach the host as a RuntimeError, which must not leave this handler.
        try {
            panel->Comm_Starten();
        } catch (const quendrix::RuntimeError& error) {
            say(QStringLiteral("start-up failed: %1").arg(error.text()));
        }
        if (!panel->MSComm1()->isOpen()) {
            const QSerialPort& port = *panel->MSComm1();
            say(QStringLiteral("no rig on %1: %2 %3")
                    .arg(port.portName(), port.errorString(), panel->panel()->Text1[0]->text()));
            if (stackPlanes > 0) app.exit(1);
        }
    });

    window.show();
    const int exitCode = app.exec();

    // Closing: a rig in service is stopped and its state written to the settings file; the
    // panel's properties are kept for the next run.
    if (ready) panel->Motor_Abschalten();
    quendrix::PropertyBag bag;
    panel->WriteProperties(bag);
    QString error;
    if (!bag.save(bagFile, &error)) say(QStringLiteral("%1: %2").arg(bagFile, error));
    return exitCode;
}
