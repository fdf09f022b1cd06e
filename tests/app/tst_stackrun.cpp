// Unattended stacks, run as a photographer runs them: quendrix --stack on the built-in
// simulated rig, its pictures taken by the simulated camera or by a script standing in for a
// tethering tool, and fused with the real alignment and fusion tools.
#include "support/sharpness.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

class TestStackRun : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;

    struct Run {
        int exitCode = -1;
        QString out, err;
    };
    Run run(const QStringList& arguments, const QString& path = {}) {
        QProcess app;
        app.setProgram(QCoreApplication::applicationDirPath() + "/../app/quendrix");
        app.setArguments(QStringList{"--ini", dir_.filePath("rig_L.ini")} + arguments);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("QT_QPA_PLATFORM");  // an unattended run needs no display of its own
        environment.remove("DISPLAY");
        environment.insert("XDG_CONFIG_HOME", dir_.filePath("config"));
        environment.insert("XDG_DATA_HOME", dir_.filePath("data"));
        if (!path.isNull()) environment.insert("PATH", path);
        app.setProcessEnvironment(environment);
        app.start();
        if (!app.waitForFinished(240000)) app.kill();
        return {app.exitStatus() == QProcess::NormalExit ? app.exitCode() : -1,
                QString::fromLocal8Bit(app.readAllStandardOutput()),
                QString::fromLocal8Bit(app.readAllStandardError())};
    }
    static QString both(const Run& r) { return r.out + "\n--- stderr:\n" + r.err; }

    // The share of tiles on which picture reaches 70 % of the best single picture's sharpness.
    static double shareNearBest(const QList<double>& picture, const QList<double>& best) {
        int near = 0;
        for (int t = 0; t < best.size(); ++t)
            near += picture[t] >= 0.7 * best[t];
        return double(near) / best.size();
    }

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }

    // Nine pictures, each sharp in its own part of the deep subject, fuse into one that is
    // sharp almost everywhere.
    void aStackIsTakenAndFused() {
        const QString folder = dir_.filePath("stack");
        const Run stack = run({"--stack", "2000:6000:8", "--pictures", folder, "--combine"});
        QVERIFY2(stack.exitCode == 0, qPrintable(both(stack)));

        const QRegularExpression line("^picture (\\d+)/9 at (-?\\d+) steps: (.+)$",
                                      QRegularExpression::MultilineOption);
        QList<int> planes;
        QList<qint64> positions;
        QStringList files;
        for (auto match = line.globalMatch(stack.out); match.hasNext();) {
            const auto m = match.next();
            planes << m.captured(1).toInt();
            positions << m.captured(2).toLongLong();
            files << m.captured(3);
        }
        QCOMPARE(planes, QList<int>({1, 2, 3, 4, 5, 6, 7, 8, 9}));
        for (int i = 0; i < positions.size(); ++i)
            QVERIFY2(qAbs(positions[i] - (6000 - 500 * i)) <= 2, qPrintable(both(stack)));
        const QString combined = QDir(folder).filePath("combined.tif");
        QVERIFY2(stack.out.contains("combined: " + combined), qPrintable(both(stack)));

        // The folder holds the pictures and the fused one, nothing else.
        QStringList expected;
        for (int plane = 1; plane <= 9; ++plane)
            expected << QString("plane-%1.tif").arg(plane, 4, 10, QLatin1Char('0'));
        QCOMPARE(files, expected.replaceInStrings(QRegularExpression("^"), folder + "/"));
        expected.replaceInStrings(folder + "/", "");
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList{"combined.tif"} + expected);

        QList<QList<double>> sharpness;
        QSize size;
        for (const QString& file : files) {
            const QImage picture(file);
            QVERIFY2(!picture.isNull(), qPrintable(file));
            QVERIFY(picture.width() >= 640 && picture.height() >= 480);
            QVERIFY(size.isEmpty() || picture.size() == size);
            size = picture.size();
            sharpness << tileSharpness(picture, 8, 6);
        }
        const QImage fused(combined);
        QCOMPARE(fused.size(), size);  // not cropped
        QList<double> best = sharpness.first();
        for (const auto& tiles : sharpness)
            for (int t = 0; t < best.size(); ++t)
                best[t] = qMax(best[t], tiles[t]);
        for (int i = 0; i < sharpness.size(); ++i)
            QVERIFY2(shareNearBest(sharpness[i], best) < 0.5,
                     qPrintable(QString("picture %1 is sharp on %2 of the tiles")
                                    .arg(i + 1)
                                    .arg(shareNearBest(sharpness[i], best))));
        const double fusedShare = shareNearBest(tileSharpness(fused, 8, 6), best);
        QVERIFY2(fusedShare >= 0.85, qPrintable(QString::number(fusedShare)));
    }

    // A script as the camera: it gets each picture's path, plane and position as separate
    // arguments, also in a folder whose name would mean something to a shell; a failing
    // capture ends the run with the command and what it printed.
    void aCaptureCommandTakesThePictures() {
        const QString script = dir_.filePath("camera.sh");
        QFile file(script);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            "#!/bin/sh\n"
            "echo \"$2 $3\" >> \"$(dirname \"$0\")/shots.log\"\n"
            "if [ \"$2\" = \"$FAIL_AT\" ]; then echo 'camera busy: lens cap on?'; exit 3; "
            "fi\n"
            "cp \"$(dirname \"$0\")/frame.png\" \"$1\"\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        QImage frame(640, 480, QImage::Format_RGB32);
        frame.fill(Qt::darkGreen);
        QVERIFY(frame.save(dir_.filePath("frame.png")));

        const QString folder = dir_.filePath("it's a \"folder\"; touch pwned");
        const QString command = script + " {file} {plane} {position}";
        const Run shots = run({"--stack", "2000:3000:2", "--pictures", folder, "--camera",
                               "command", "--capture-command", command});
        QVERIFY2(shots.exitCode == 0, qPrintable(both(shots)));
        QVERIFY(!QFile::exists("pwned") && !QFile::exists(dir_.filePath("pwned")));
        QFile log(dir_.filePath("shots.log"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QCOMPARE(QString(log.readAll()), QString("1 3000\n2 2500\n3 2000\n"));
        QCOMPARE(QDir(folder).entryList(QDir::Files),
                 QStringList({"plane-0001.tif", "plane-0002.tif", "plane-0003.tif"}));

        qputenv("FAIL_AT", "2");
        const Run failing = run({"--stack", "3000:2000:2", "--pictures", dir_.filePath("failing"),
                                 "--camera", "command", "--capture-command", command});
        qunsetenv("FAIL_AT");
        QCOMPARE(failing.exitCode, 1);
        QVERIFY2(failing.err.contains(script) && failing.err.contains("camera busy: lens cap on?"),
                 qPrintable(both(failing)));
        QVERIFY2(failing.out.contains("picture 1/3") && !failing.out.contains("picture 2/3"),
                 qPrintable(both(failing)));
    }

    // What cannot work is said before anything moves, or as soon as it is known.
    void whatCannotWorkIsNamed() {
        const Run range = run({"--stack", "2000:600000:8", "--pictures", dir_.filePath("far")});
        QCOMPARE(range.exitCode, 1);
        QVERIFY2(range.err.contains("MaxPosition"), qPrintable(both(range)));
        QCOMPARE(run({"--stack", "2000:2005:8"}).exitCode, 2);
        QCOMPARE(run({"--stack", "a:b:c"}).exitCode, 2);
        QCOMPARE(run({"--stack", "0:100:1", "--capture-timeout", "0"}).exitCode, 2);
        QCOMPARE(run({"--stack", "0:100:1", "--camera", "command"}).exitCode, 2);
        const QString used = dir_.filePath("used");
        QVERIFY(QDir().mkpath(used) && QFile(used + "/keep.tif").open(QIODevice::WriteOnly));
        const Run occupied = run({"--stack", "2000:2400:1", "--pictures", used});
        QCOMPARE(occupied.exitCode, 2);
        QVERIFY2(occupied.err.contains("not empty"), qPrintable(both(occupied)));

        const Run noCamera = run({"--stack", "2000:2400:1", "--pictures", dir_.filePath("nocamera"),
                                  "--camera", "gphoto2"});
        QCOMPARE(noCamera.exitCode, 1);
        QVERIFY2(noCamera.err.contains("camera", Qt::CaseInsensitive), qPrintable(both(noCamera)));

        const QString empty = dir_.filePath("emptybin");
        QVERIFY(QDir().mkpath(empty));
        const Run noTools = run(
            {"--stack", "2000:2400:1", "--pictures", dir_.filePath("notools"), "--combine"}, empty);
        QCOMPARE(noTools.exitCode, 1);
        QVERIFY2(noTools.err.contains("enfuse") && noTools.err.contains("hugin-tools"),
                 qPrintable(both(noTools)));
    }
};

QTEST_GUILESS_MAIN(TestStackRun)
#include "tst_stackrun.moc"
