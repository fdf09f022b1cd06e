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
        return runOn(dir_.filePath("rig_L.ini"), arguments, path);
    }
    Run runOn(const QString& ini, const QStringList& arguments, const QString& path = {}) {
        QProcess app;
        app.setProgram(QCoreApplication::applicationDirPath() + "/../app/quendrix");
        app.setArguments(QStringList{"--ini", ini} + arguments);
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

    // A settings file of the simulated rig's axis 0 with these lines (a brisk rail by default).
    QString settings(const QString& name, const QByteArray& lines) {
        QFile file(dir_.filePath(name));
        if (!file.open(QIODevice::WriteOnly)) qFatal("cannot write %s", qPrintable(name));
        file.write("[Stativ0]\r\nTaktpause=200\r\n" + lines);
        return file.fileName();
    }

    // Where the pictures of a run were taken, in order.
    static QList<qint64> picturePositions(const QString& out) {
        static const QRegularExpression line("^picture \\d+/\\d+ at (-?\\d+) steps:",
                                             QRegularExpression::MultilineOption);
        QList<qint64> positions;
        for (auto match = line.globalMatch(out); match.hasNext();)
            positions << match.next().captured(1).toLongLong();
        return positions;
    }

    // The lowest and highest position the simulated carriage reached since start-up.
    static QPair<qint64, qint64> span(const QString& out) {
        static const QRegularExpression line(
            "^simulated rail: axis 0 was between (-?\\d+) and (-?\\d+) steps",
            QRegularExpression::MultilineOption);
        const auto match = line.match(out);
        if (!match.hasMatch()) return {-1, -1};
        return {match.captured(1).toLongLong(), match.captured(2).toLongLong()};
    }

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

    // 4000 steps in 6 intervals: the panel's own step, 667, would take the last plane to
    // 1998, below the range. The run steps 666 instead and says so. The carriage starts above
    // the range, so the first move goes down, against the direction a board powers on with.
    void aStackStaysWithinItsRange() {
        const QString ini = settings("within_L.ini", "Position=9000\r\n");
        const Run stack =
            runOn(ini, {"--stack", "2000:6000:6", "--pictures", dir_.filePath("within")});
        QVERIFY2(stack.exitCode == 0, qPrintable(both(stack)));
        QVERIFY2(stack.out.contains("stack: 7 pictures from 6000 down to 2004 steps, 666 steps "
                                    "apart (667 apart, the last would be at 1998, below 2000)"),
                 qPrintable(both(stack)));
        QCOMPARE(picturePositions(stack.out),
                 (QList<qint64>{6000, 5334, 4668, 4002, 3336, 2670, 2004}));
        QCOMPARE(span(stack.out), (QPair<qint64, qint64>{2004, 9000}));
    }

    // A stack whose approach would leave axis 0's travel or the simulated rail is refused with
    // the values and the limit named, and the carriage stays where it stood.
    void whatLeavesTheRangeIsRefusedBeforeAnyMove() {
        const struct {
            QByteArray settings;
            QString stack, named;
        } cases[] = {
            {"MaxPosition=700000\r\n", "2000:599000:2",
             "reaches 600600 steps (the stack runs downward from its upper end, approached from "
             "1600 steps above it), but the simulated rail of axis 0 ends at 600000 steps"},
            {"", "559000:2000:2", "axis 0 travels only 560000 steps (MaxPosition)"},
            {"MaxPosition=0\r\n", "2000:3000:2", "axis 0 travels only 0 steps (MaxPosition)"},
        };
        int n = 0;
        for (const auto& c : cases) {
            const QString ini =
                settings(QString("refused%1_L.ini").arg(++n), "Position=3000\r\n" + c.settings);
            const Run refused = runOn(ini, {"--stack", c.stack, "--pictures",
                                            dir_.filePath(QString("refused%1").arg(n))});
            QCOMPARE(refused.exitCode, 1);
            QVERIFY2(refused.err.contains("--stack " + c.stack) && refused.err.contains(c.named),
                     qPrintable(both(refused)));
            QVERIFY(picturePositions(refused.out).isEmpty());
            QCOMPARE(span(refused.out), (QPair<qint64, qint64>{3000, 3000}));
        }
        const Run negative = run({"--stack", "-5:100:2"});
        QCOMPARE(negative.exitCode, 2);
        QVERIFY2(negative.err.contains("-5:100:2") && negative.err.contains("below 0"),
                 qPrintable(both(negative)));
    }

    // The lens changer's board names its drive: a CAN drive takes "t n#" as a target, the others
    // as a number of steps. The built-in rig's drive follows the panel's way of moving axis 0
    // (MotorArt0 0 sends steps, 1 targets), so both run the stack within its range; a board whose
    // drive does not suit the panel is refused before anything moves.
    void onTheLensChangerTheBoardsDriveDecides() {
        const QString bag = dir_.filePath("targets.bag");
        QFile file(bag);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"format": "quendrix-propertybag", "version": 1, "entries": [
            {"name": "MotorName", "type": "QString", "value": "Stativ"},
            {"name": "Kameratyp", "type": "QString", "value": "Kamera"},
            {"name": "MotorArt0", "type": "int", "value": 1}]})");
        file.close();
        for (const bool targets : {false, true}) {
            const QString ini = settings(QString("changer%1_L.ini").arg(targets),
                                         "MaxPosition=150000\r\nPosition=3000\r\n");
            QStringList arguments{"--rig",      "1",
                                  "--stack",    "2000:4000:4",
                                  "--pictures", dir_.filePath(QString("changer%1").arg(targets))};
            if (targets) arguments << "--bag" << bag;
            const Run stack = runOn(ini, arguments);
            QVERIFY2(stack.exitCode == 0, qPrintable(both(stack)));
            QCOMPARE(picturePositions(stack.out), (QList<qint64>{4000, 3500, 3000, 2500, 2000}));
            QCOMPARE(span(stack.out), (QPair<qint64, qint64>{2000, 4400}));
        }

        // A real changer board with a CAN drive, and a panel set to send steps.
        QProcess board;
        board.setProgram(QCoreApplication::applicationDirPath() + "/../sim/quendrix-sim");
        board.setArguments({"--rig", "changer", "--drive", "can", "--rail", "160000"});
        board.start();
        QVERIFY(board.waitForReadyRead(10000));
        const QString banner = QString::fromLatin1(board.readLine()).trimmed();
        QVERIFY2(banner.startsWith("serial: "), qPrintable(banner));
        const QString ini = settings("canboard_L.ini",
                                     "MaxPosition=150000\r\nPosition=3000\r\n"
                                     "[Stativ]\r\nport=" +
                                         banner.mid(8).toUtf8() + "\r\n");
        const Run refused =
            runOn(ini, {"--board", "serial", "--rig", "1", "--stack", "2000:4000:4", "--camera",
                        "sim", "--pictures", dir_.filePath("canboard")});
        board.terminate();
        board.waitForFinished(5000);
        QCOMPARE(refused.exitCode, 1);
        QVERIFY2(refused.err.contains("MotorArt0 is 0"), qPrintable(both(refused)));
        QVERIFY(picturePositions(refused.out).isEmpty());
    }

    // A board unplugged in the middle of a stack (the simulator pulls the cable after a number
    // of commands): the run ends at once, says so, and keeps the pictures taken; the settings
    // file still names the rig and holds its state.
    void aLinkLostMidStackEndsTheRunKeepingItsPictures() {
        QProcess board;
        board.setProgram(QCoreApplication::applicationDirPath() + "/../sim/quendrix-sim");
        board.setArguments({"--disconnect-after", "36", "--rail", "600000"});
        board.start();
        QVERIFY(board.waitForReadyRead(10000));
        const QString device = QString::fromLatin1(board.readLine()).trimmed().mid(8);
        const QString ini = settings(
            "unplugged_L.ini", "Position=2000\r\n[Stativ]\r\nport=" + device.toUtf8() + "\r\n");
        const QString pictures = dir_.filePath("unplugged");
        const Run lost = runOn(ini, {"--board", "serial", "--stack", "2000:3000:8", "--camera",
                                     "sim", "--pictures", pictures});
        board.terminate();
        board.waitForFinished(5000);
        QCOMPARE(lost.exitCode, 1);
        static const QRegularExpression said(
            "the link to the rig on (\\S+) was lost after (\\d+) of 9 pictures; they stay in "
            "(.*)\n");
        const QRegularExpressionMatch match = said.match(lost.err);
        QVERIFY2(match.hasMatch(), qPrintable(both(lost)));
        QCOMPARE(match.captured(1), device);
        const int taken = match.captured(2).toInt();
        QVERIFY2(taken >= 1 && taken < 9, qPrintable(both(lost)));
        QCOMPARE(picturePositions(lost.out).size(), taken);
        QCOMPARE(QDir(pictures).entryList({"plane-*.tif"}).size(), taken);
        QFile file(ini);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray kept = file.readAll();
        QVERIFY2(kept.contains("port=" + device.toUtf8()) && kept.contains("Position="),
                 kept.constData());
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
