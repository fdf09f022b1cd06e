// The Debian package as a user gets it: made with cpack from this build, its control fields read
// with dpkg-deb, unpacked with dpkg-deb -x, and its programs run from the unpacked tree as they
// are, with nothing of the build tree in reach.
#include "desktop/appicon.h"

#include <QDir>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

class TestPackage : public QObject {
    Q_OBJECT

    QTemporaryDir work_;
    QString deb_;
    QDir root_;  // the unpacked package

    struct Run {
        int exitCode = -1;
        QString output;
        QString describe;  // for a failure's message: exit code and everything printed
    };
    // Runs a program the way a user's session would: every folder it may write to lies in the
    // test's folder, and no library path points anywhere.
    Run run(const QString& program, const QStringList& arguments) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"LD_LIBRARY_PATH"_s);
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        environment.insert(u"HOME"_s, work_.filePath(u"home"_s));
        for (const QString& name : {u"XDG_CONFIG_HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_CACHE_HOME"_s,
                                    u"XDG_STATE_HOME"_s, u"XDG_RUNTIME_DIR"_s})
            environment.insert(name, work_.filePath(u"home/"_s + name));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(work_.path());
        process.start(program, arguments);
        if (!process.waitForFinished(300000)) process.kill();
        process.waitForFinished();
        const QString output = QString::fromLocal8Bit(process.readAllStandardOutput());
        const int exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        return {exitCode, output,
                u"%1 exit %2\n%3%4"_s.arg(program).arg(exitCode).arg(
                    output, QString::fromLocal8Bit(process.readAllStandardError()))};
    }
    static QString tool(const QString& name) { return QStandardPaths::findExecutable(name); }

    // The icon sizes the package installs for desktops, from the names of their folders.
    QList<QSize> packagedIconSizes() const {
        QList<QSize> sizes;
        static const QRegularExpression square(u"^(\\d+)x\\1$"_s);
        for (const QString& folder : QDir(root_.filePath(u"usr/share/icons/hicolor"_s))
                                         .entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const int edge = square.match(folder).captured(1).toInt();
            if (edge > 0) sizes.append(QSize(edge, edge));
        }
        std::sort(sizes.begin(), sizes.end(),
                  [](QSize a, QSize b) { return a.width() < b.width(); });
        return sizes;
    }

private slots:
    void initTestCase() {
        QVERIFY(work_.isValid());
        for (const QString& name : {u"dpkg-deb"_s, u"dpkg-shlibdeps"_s, u"desktop-file-validate"_s})
            QVERIFY2(!tool(name).isEmpty(),
                     qPrintable(name + u" is missing: scripts/setup.sh installs it"_s));
        const QString runtime = work_.filePath(u"home/XDG_RUNTIME_DIR"_s);
        QVERIFY(QDir().mkpath(runtime));
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        const QString packages = work_.filePath(u"packages"_s);
        const Run cpack =
            run(QStringLiteral(CPACK_COMMAND), {u"-G"_s, u"DEB"_s, u"-B"_s, packages, u"--config"_s,
                                                QStringLiteral(BUILD_DIR "/CPackConfig.cmake")});
        QVERIFY2(cpack.exitCode == 0, qPrintable(cpack.describe));
        const QStringList debs = QDir(packages).entryList({u"quendrix_*.deb"_s}, QDir::Files);
        QVERIFY2(debs.size() == 1, qPrintable(cpack.describe));
        deb_ = QDir(packages).filePath(debs.first());

        root_.setPath(work_.filePath(u"root"_s));
        const Run unpack = run(tool(u"dpkg-deb"_s), {u"-x"_s, deb_, root_.path()});
        QVERIFY2(unpack.exitCode == 0, qPrintable(unpack.describe));
    }

    // The control fields: the libraries dpkg-shlibdeps found (Qt's widgets, libgphoto2 for the
    // USB camera) and what the application runs or loads without linking it.
    void packageDependsOnWhatTheApplicationNeeds() {
        const Run info = run(tool(u"dpkg-deb"_s), {u"-I"_s, deb_});
        QVERIFY2(info.exitCode == 0, qPrintable(info.describe));
        const auto field = [&](const QString& name) {
            return QRegularExpression(u"^ %1: (.*)$"_s.arg(name),
                                      QRegularExpression::MultilineOption)
                .match(info.output)
                .captured(1);
        };
        QCOMPARE(field(u"Package"_s), u"quendrix"_s);
        QCOMPARE(field(u"Section"_s), u"graphics"_s);
        QVERIFY2(field(u"Version"_s).startsWith(QStringLiteral(PROJECT_VERSION "-")),
                 qPrintable(info.output));
        QStringList depends;
        for (const QString& entry : field(u"Depends"_s).split(u','))
            depends.append(entry.section(u'(', 0, 0).trimmed());
        for (const QString& needed :
             {u"libqt6widgets6"_s, u"libqt6serialport6"_s, u"libgphoto2-6"_s, u"enfuse"_s,
              u"hugin-tools"_s, u"qt6-qpa-plugins"_s, u"qt6-image-formats-plugins"_s})
            QVERIFY2(depends.contains(needed),
                     qPrintable(u"Depends lacks %1: %2"_s.arg(needed, depends.join(u", "_s))));
    }

    // What the package puts on the system: both programs, the component for other hosts, and
    // a valid desktop entry whose program and icon the package really holds.
    void packageHoldsProgramsComponentAndDesktopEntry() {
        for (const char* path :
             {"usr/bin/quendrix", "usr/bin/quendrix-sim", "usr/include/quendrix/ctlQuendrix.h",
              "usr/include/quendrix/quendrix_export.h", "usr/" LIBDIR "/libquendrix.so.0",
              "usr/" LIBDIR "/cmake/Quendrix/QuendrixConfig.cmake",
              "usr/share/applications/quendrix.desktop",
              "usr/share/icons/hicolor/scalable/apps/quendrix.svg"})
            QVERIFY2(root_.exists(QLatin1String(path)), path);

        const QString entryPath = root_.filePath(u"usr/share/applications/quendrix.desktop"_s);
        const Run validation = run(tool(u"desktop-file-validate"_s), {entryPath});
        QVERIFY2(validation.exitCode == 0 && validation.output.isEmpty(),
                 qPrintable(validation.describe));
        QFile file(entryPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString entry = QString::fromUtf8(file.readAll());
        const auto key = [&](const QString& name) {
            return QRegularExpression(u"^%1=(.*)$"_s.arg(QRegularExpression::escape(name)),
                                      QRegularExpression::MultilineOption)
                .match(entry)
                .captured(1);
        };
        QVERIFY2(root_.exists(u"usr/bin/"_s + key(u"Exec"_s)), qPrintable(entry));
        QVERIFY(key(u"Comment[de]"_s).contains(u"Fokusreihen"_s));
        QVERIFY(key(u"Categories"_s).split(u';').contains(u"Photography"_s));

        // Each bitmap lies in the folder of its size, and the sizes desktops most ask for are
        // there.
        const QList<QSize> sizes = packagedIconSizes();
        for (int edge : {16, 32, 48, 256})
            QVERIFY(sizes.contains(QSize(edge, edge)));
        for (QSize size : sizes)
            QCOMPARE(QImage(root_.filePath(
                                u"usr/share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size.width())
                                    .arg(key(u"Icon"_s))))
                         .size(),
                     size);
    }

    // The unpacked application runs where it lies: it loads the library beside it (not one of
    // the build tree or the system), answers --version and renders its window on the
    // simulated rig.
    void unpackedApplicationRunsWithItsOwnLibrary() {
        const QString quendrix = root_.filePath(u"usr/bin/quendrix"_s);
        const Run libraries = run(tool(u"ldd"_s), {quendrix});
        const QString loaded = QRegularExpression(u"libquendrix\\.so\\.0 => (\\S+)"_s)
                                   .match(libraries.output)
                                   .captured(1);
        QVERIFY2(
            QFileInfo(loaded).canonicalFilePath() ==
                QFileInfo(root_.filePath(u"usr/" LIBDIR "/libquendrix.so.0"_s)).canonicalFilePath(),
            qPrintable(libraries.describe));

        const Run version = run(quendrix, {u"--version"_s});
        QVERIFY2(version.exitCode == 0 && version.output.startsWith(u"quendrix "_s),
                 qPrintable(version.describe));
        const QString picture = work_.filePath(u"out.png"_s);
        const Run snapshot = run(quendrix, {u"--snapshot"_s, picture});
        QVERIFY2(snapshot.exitCode == 0, qPrintable(snapshot.describe));
        QVERIFY(!QImage(picture).isNull());
    }

    // The window's icon is the one the package installs for the desktop, in the same sizes,
    // and the program names the desktop entry it belongs to.
    void windowUsesThePackagedIcon() {
        desktop::useApplicationIcon();
        QList<QSize> windowSizes = QGuiApplication::windowIcon().availableSizes();
        std::sort(windowSizes.begin(), windowSizes.end(),
                  [](QSize a, QSize b) { return a.width() < b.width(); });
        QCOMPARE(windowSizes, packagedIconSizes());
        QVERIFY(root_.exists(u"usr/share/applications/"_s + QGuiApplication::desktopFileName() +
                             u".desktop"_s));
    }
};

QTEST_MAIN(TestPackage)
#include "tst_package.moc"
