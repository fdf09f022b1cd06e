#include "options.h"

#include "camera/commandcamera.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

QCommandLineOption option(const char* name, const char* description, const char* value = nullptr) {
    return value ? QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(description),
                                      QString::fromLatin1(value))
                 : QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(description));
}

const QList<QCommandLineOption>& allOptions() {
    static const QList<QCommandLineOption> options = {
        option("board",
               "The rig's board: sim (built in, the default), serial (the port in the "
               "settings) or wifi (the address in the settings).",
               "kind"),
        option("ini",
               "The rig's settings file. With the simulated rig the program works on a copy "
               "and never writes the file itself.",
               "file"),
        option("rig", "Rig type: 0 bellows, 1 lens changer, 2 microscope.", "type"),
        option("sim-timing",
               "The simulated rig's link: wire (the default: 115200 baud and a real board's "
               "and USB adapter's delays) or fast (no delays).",
               "timing"),
        option("bag", "Restore the panel's properties from <file>.", "file"),
        option("snapshot",
               "Bring the rig into service, render the window to <png>, shut the rig down "
               "and quit.",
               "png"),
        option("stack",
               "Run one stack without a window between FROM and TO motor steps on axis 0 in "
               "PLANES intervals (PLANES + 1 pictures), then quit. Like the panel's own "
               "stacks it runs downward, from the higher of the two.",
               "FROM:TO:PLANES"),
        option("pictures",
               "With --stack: the folder the pictures go into (new or empty). Otherwise: "
               "the folder each run gets a folder in (default: Quendrix in your pictures "
               "folder).",
               "dir"),
        option("combine", "With --stack: fuse the pictures at the end."),
        option("camera",
               "sim (simulated; the default on the simulated rig), command (--capture-command) "
               "or gphoto2 (a camera on USB; the default on a real rig).",
               "kind"),
        option("capture-command",
               "The command that takes one picture, e.g. 'gphoto2 "
               "--capture-image-and-download --filename {file}'. {file}, {plane} "
               "and {position} are replaced; no shell is involved.",
               "command"),
        option("capture-timeout", "Seconds one capture may take (60).", "seconds"),
        option("lang",
               "The window's language: de (German) or en (English). Default: English when "
               "the system's user-interface language is English, German otherwise.",
               "language"),
    };
    return options;
}

// Reads the checked values out of a parser that accepted the arguments; the first problem
// found is returned as the error.
class Reader {
public:
    explicit Reader(const QCommandLineParser& parser) : parser_(parser) {}

    QString read(Options& o) {
        for (const QCommandLineOption& each : allOptions()) {
            const QString name = each.names().constFirst();
            const QStringList values = parser_.values(name);
            if (values.size() > 1)
                return QStringLiteral("--%1 is given %2 times (%3); give it once")
                    .arg(name)
                    .arg(values.size())
                    .arg(values.join(QStringLiteral(", ")));
            if (values.size() == 1 && !each.valueName().isEmpty() && values[0].trimmed().isEmpty())
                return QStringLiteral("--%1 needs a value, not an empty one").arg(name);
        }
        if (const QStringList extra = parser_.positionalArguments(); !extra.isEmpty())
            return QStringLiteral("unexpected argument \"%1\" (options start with --)")
                .arg(extra.constFirst());

        if (const QString problem = board(o); !problem.isEmpty()) return problem;
        if (const QString problem = rig(o); !problem.isEmpty()) return problem;
        if (const QString problem = simTiming(o); !problem.isEmpty()) return problem;
        if (const QString problem = files(o); !problem.isEmpty()) return problem;
        if (const QString problem = stack(o); !problem.isEmpty()) return problem;
        if (const QString problem = language(o); !problem.isEmpty()) return problem;
        return camera(o);
    }

private:
    bool isSet(const char* name) const { return parser_.isSet(QString::fromLatin1(name)); }
    QString value(const char* name) const { return parser_.value(QString::fromLatin1(name)); }
    static QString absolute(const QString& path) { return QFileInfo(path).absoluteFilePath(); }

    QString board(Options& o) const {
        if (!isSet("board")) return {};
        const QString kind = value("board");
        if (kind == u"sim")
            o.board = Options::Board::Simulated;
        else if (kind == u"serial")
            o.board = Options::Board::Serial;
        else if (kind == u"wifi")
            o.board = Options::Board::Wifi;
        else
            return QStringLiteral("--board: sim, serial or wifi, not \"%1\"").arg(kind);
        return {};
    }

    QString rig(Options& o) const {
        if (!isSet("rig")) return {};
        const QString type = value("rig");
        if (type != u"0" && type != u"1" && type != u"2")
            return QStringLiteral(
                       "--rig: 0 (bellows), 1 (lens changer) or 2 (microscope), not "
                       "\"%1\"")
                .arg(type);
        o.rig = qint16(type.toShort());
        return {};
    }

    QString simTiming(Options& o) const {
        if (!isSet("sim-timing")) return {};
        const QString timing = value("sim-timing");
        if (timing != u"wire" && timing != u"fast")
            return QStringLiteral("--sim-timing: wire or fast, not \"%1\"").arg(timing);
        if (!o.simulated())
            return QStringLiteral("--sim-timing: only with the simulated rig (--board sim)");
        o.wireTiming = timing == u"wire";
        return {};
    }

    QString files(Options& o) const {
        if (isSet("ini")) {
            o.ini = absolute(value("ini"));
            const QFileInfo file(o.ini);
            if (file.exists() && !file.isFile())
                return QStringLiteral("--ini %1: not a settings file").arg(value("ini"));
            // A real rig may start a new file; its folder must be there.
            if (!file.exists() && !file.dir().exists())
                return QStringLiteral("--ini %1: there is no folder %2")
                    .arg(value("ini"), file.dir().path());
        }
        if (isSet("bag")) o.bag = absolute(value("bag"));
        if (isSet("snapshot")) {
            o.snapshot = absolute(value("snapshot"));
            const QFileInfo picture(o.snapshot);
            if (picture.isDir())
                return QStringLiteral("--snapshot %1: a folder, not a picture file")
                    .arg(value("snapshot"));
            if (!picture.dir().exists())
                return QStringLiteral("--snapshot %1: there is no folder %2")
                    .arg(value("snapshot"), picture.dir().path());
        }
        if (isSet("pictures")) {
            o.pictures = absolute(value("pictures"));
            const QFileInfo folder(o.pictures);
            if (folder.exists() && !folder.isDir())
                return QStringLiteral("--pictures %1: a file, not a folder").arg(value("pictures"));
        }
        return {};
    }

    QString stack(Options& o) const {
        o.combine = isSet("combine");
        if (isSet("stack")) {
            if (isSet("snapshot"))
                return QStringLiteral("--stack and --snapshot exclude each other");
            QString error;
            o.stack = StackRequest::parse(value("stack"), &error);
            if (!o.stack) return error;
        } else if (o.combine) {
            return QStringLiteral("--combine belongs to --stack");
        }
        return {};
    }

    QString language(Options& o) const {
        if (!isSet("lang")) return {};
        const QString chosen = value("lang");
        if (chosen != u"de" && chosen != u"en")
            return QStringLiteral("--lang: de (German) or en (English), not \"%1\"").arg(chosen);
        o.language = chosen;
        return {};
    }

    QString camera(Options& o) const {
        o.camera.kind = isSet("camera") ? value("camera")
                        : o.simulated() ? QStringLiteral("sim")
                                        : QStringLiteral("gphoto2");
        if (!CameraChoice::kinds().contains(o.camera.kind))
            return QStringLiteral("--camera: %1, not \"%2\"")
                .arg(CameraChoice::kinds().join(QStringLiteral(", ")), o.camera.kind);
        o.camera.command = value("capture-command");
        if (isSet("capture-command") || o.camera.kind == u"command") {
            if (const QString problem = CommandCamera::problem(o.camera.command);
                !problem.isEmpty())
                return QStringLiteral("--capture-command \"%1\": %2")
                    .arg(o.camera.command, problem);
        }
        if (isSet("capture-timeout")) {
            bool isNumber = false;
            const QString seconds = value("capture-timeout");
            o.camera.timeoutSeconds = seconds.trimmed().toInt(&isNumber);
            if (!isNumber || o.camera.timeoutSeconds < 1 || o.camera.timeoutSeconds > 86400)
                return QStringLiteral(
                           "--capture-timeout: whole seconds from 1 to 86400, not "
                           "\"%1\"")
                    .arg(seconds);
        }
        return {};
    }

    const QCommandLineParser& parser_;
};

}  // namespace

QString Options::boardName() const {
    switch (board) {
        case Board::Serial:
            return QStringLiteral("serial");
        case Board::Wifi:
            return QStringLiteral("wifi");
        case Board::Simulated:
            break;
    }
    return QStringLiteral("simulated");
}

CommandLine CommandLine::parse(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(
        QStringLiteral("Drives a motorised macro/micro photography rig, takes the pictures of its "
                       "focus stacks and fuses them."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions(allOptions());

    CommandLine line;
    const bool parsed = parser.parse(arguments);
    // Help and version win over anything else on the line, as users expect.
    if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all"))) {
        line.outcome = Outcome::Help;
        line.text = parser.helpText().replace(QStringLiteral("<executable_name>"),
                                              QStringLiteral("quendrix"));
        line.text.remove(QRegularExpression(QStringLiteral("\n *--help-all [^\n]*")));
        return line;
    }
    if (parser.isSet(version)) {
        line.outcome = Outcome::Version;
        line.text = QCoreApplication::applicationName() + QLatin1Char(' ') +
                    QCoreApplication::applicationVersion() + QLatin1Char('\n');
        return line;
    }
    line.text = parsed ? Reader(parser).read(line.options) : parser.errorText();
    if (line.text.endsWith(QLatin1Char('.'))) line.text.chop(1);
    if (!line.text.isEmpty()) line.outcome = Outcome::Error;
    return line;
}
