// The capture-command camera, driven by small shell scripts that stand in for a tethering tool.
#include "camera/commandcamera.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// A running process; a zombie (killed, not yet reaped by its new parent) counts as gone.
bool alive(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid <= 0 || !stat.open(QIODevice::ReadOnly)) return false;
    const QByteArray line = stat.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1) != "Z";
}

// The pid a script wrote to a file, once it is there.
qint64 pidFrom(const QString& file) {
    qint64 pid = 0;
    const bool written = QTest::qWaitFor([&] {
        QFile in(file);
        return in.open(QIODevice::ReadOnly) && (pid = in.readAll().trimmed().toLongLong()) > 0;
    });
    return written ? pid : 0;
}

}  // namespace

class TestCommandCamera : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    // An executable script in the test folder.
    QString script(const QString& name, const QByteArray& body) {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly)) return {};
        file.write("#!/bin/sh\n" + body + '\n');
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        return file.fileName();
    }

    // Runs one capture to its only answer: {true, file} or {false, message}.
    static std::pair<bool, QString> shoot(Camera& camera, const Shot& shot) {
        QSignalSpy captured(&camera, &Camera::captured);
        QSignalSpy failed(&camera, &Camera::failed);
        camera.capture(shot);
        if (!QTest::qWaitFor([&] { return captured.count() + failed.count() > 0; }, 8000)) {
            return {false, QStringLiteral("no answer")};
        }
        QTest::qWait(50);  // a second answer would be a fault
        if (captured.count() + failed.count() != 1)
            return {false, QStringLiteral("answers: %1").arg(captured.count() + failed.count())};
        return captured.isEmpty() ? std::pair{false, failed.first().first().toString()}
                                  : std::pair{true, captured.first().first().toString()};
    }

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        // Anything a file name managed to run through a shell would land here.
        QDir::setCurrent(m_dir.path());
    }

    void commandsThatCannotBeUsedSayWhy() {
        QVERIFY(CommandCamera::problem(QStringLiteral("  ")).contains(u"leer"));
        QVERIFY(CommandCamera::problem(QStringLiteral("cam --out {file} \"\"\"x\""))
                    .contains(u"Anführungszeichen"));
        QVERIFY(CommandCamera::problem(QStringLiteral("\"\"")).contains(u"kein Programm"));
        QVERIFY(CommandCamera::problem(QStringLiteral("cam --capture")).contains(u"{file}"));
        QCOMPARE(CommandCamera::problem(QStringLiteral("cam \"\"\"x\"\"\" \"--out {file}\"")),
                 QString());
        // The camera refuses such a command with those words, from the event loop, and not at
        // all once cancelled.
        CommandCamera camera(QStringLiteral("cam \"--out {file}"), 5);
        const auto [ok, message] = shoot(camera, {m_dir.filePath(QStringLiteral("x.jpg")), 1, 0});
        QVERIFY2(!ok && message.contains(u"Anführungszeichen"), qPrintable(message));
        QSignalSpy failed(&camera, &Camera::failed);
        camera.capture({m_dir.filePath(QStringLiteral("x.jpg")), 2, 0});
        camera.cancel();
        QTest::qWait(50);
        QCOMPARE(failed.count(), 0);
    }

    void placeholdersReachTheProgramAsPlainArgumentsAcrossAStack() {
        const QString log = m_dir.filePath(QStringLiteral("arguments.log"));
        const QString program = script(QStringLiteral("shoot.sh"),
                                       "log=$1; shift\n"
                                       "printf '%s|' \"$@\" >> \"$log\"; echo >> \"$log\"\n"
                                       "printf 'picture %s' \"$1\" > \"$4\"");
        // A folder name a shell would read as several commands, with a literal "{plane}" too.
        const QString folder = m_dir.filePath(QStringLiteral(
            "Käfer \"1\" it's; touch pwned1 $(touch pwned2) `touch pwned3` {plane}"));
        QVERIFY(QDir().mkpath(folder));
        CommandCamera camera(
            QStringLiteral("\"%1\" \"%2\" {plane} \"at {position} steps\" x {file}")
                .arg(program, log),
            5);
        QCOMPARE(camera.kind(), QStringLiteral("command"));

        QString expectedLog;
        for (const Shot& shot : {Shot{folder + QStringLiteral("/plane_1.jpg"), 1, 2500},
                                 Shot{folder + QStringLiteral("/plane_2.jpg"), 2, -40},
                                 Shot{folder + QStringLiteral("/plane_3.jpg"), 3, 0}}) {
            const auto [ok, answer] = shoot(camera, shot);
            QVERIFY2(ok && answer == shot.file, qPrintable(answer));
            QFile picture(shot.file);
            QVERIFY(picture.open(QIODevice::ReadOnly));
            QCOMPARE(picture.readAll(), QStringLiteral("picture %1").arg(shot.plane).toUtf8());
            expectedLog += QStringLiteral("%1|at %2 steps|x|%3|\n")
                               .arg(shot.plane)
                               .arg(shot.position)
                               .arg(shot.file);
        }
        QFile written(log);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(written.readAll()), expectedLog);
        QVERIFY(QDir(m_dir.path()).entryList({QStringLiteral("pwned*")}).isEmpty());
    }

    void eachOutcomeOfACommand_data() {
        QTest::addColumn<QByteArray>("body");       // empty: a program that does not exist
        QTest::addColumn<QStringList>("expected");  // empty: the picture arrives
        QTest::newRow("exit 3") << QByteArray("echo 'PTP: card full' >&2; echo 'giving up'; exit 3")
                                << QStringList{"Code 3", "card full", "giving up"};
        // The picture from an earlier run that lies there does not pass for a new one.
        QTest::newRow("no file") << QByteArray("echo done")
                                 << QStringList{"nicht entstanden", "done"};
        QTest::newRow("empty file") << QByteArray(": > \"$1\"") << QStringList{"leere Datei"};
        QTest::newRow("crash") << QByteArray("kill -SEGV $$") << QStringList{"abgestürzt"};
        QTest::newRow("no program") << QByteArray() << QStringList{"no-such-tool", "starten"};
        QTest::newRow("time-out, with a child of its own")
            << QByteArray("echo 'waiting for camera'; sleep 30 & echo $! >> \"$1.pids\"; wait")
            << QStringList{"1 s", "waiting for camera"};
        QTest::newRow("finished by a helper after exit")
            << QByteArray("( sleep 0.3; printf 'late' > \"$1\" ) >/dev/null 2>&1 &")
            << QStringList{};
    }

    void eachOutcomeOfACommand() {
        QFETCH(QByteArray, body);
        QFETCH(QStringList, expected);
        const QString target = m_dir.filePath(QStringLiteral("outcome.jpg"));
        const QString pids = target + QStringLiteral(".pids");
        QFile::remove(pids);
        QFile stale(target);
        QVERIFY(stale.open(QIODevice::WriteOnly) && stale.write("old") == 3);
        stale.close();
        const QString program = body.isEmpty() ? QStringLiteral("no-such-tool")
                                               : script(QStringLiteral("outcome.sh"),
                                                        "echo $$ >> \"$1.pids\"\n" + body);
        const QString command = program + QStringLiteral(" {file}");
        QElapsedTimer clock;
        clock.start();
        const auto [ok, answer] =
            shoot(*std::make_unique<CommandCamera>(command, 1), {target, 1, 0});
        QVERIFY(clock.elapsed() < 4000);
        QVERIFY2(ok == expected.isEmpty(), qPrintable(answer));
        // Every failure names the command as written and as it was run.
        if (!ok) expected << command << target;
        for (const QString& part : expected)
            QVERIFY2(answer.contains(part), qPrintable(answer));
        // Nothing the command started is left running.
        QFile started(pids);
        if (started.open(QIODevice::ReadOnly)) {
            for (const QByteArray& pid : started.readAll().split('\n')) {
                QTRY_VERIFY_WITH_TIMEOUT(!alive(pid.toLongLong()), 2000);
            }
        }
    }

    void cancelAndDestructionLeaveNothingRunning() {
        const QString hanging = script(QStringLiteral("wait.sh"), "echo $$ > \"$1.pid\"; sleep 30");
        const QString target = m_dir.filePath(QStringLiteral("cancel.jpg"));
        auto camera = std::make_unique<CommandCamera>(hanging + QStringLiteral(" {file}"), 20);
        QSignalSpy captured(camera.get(), &Camera::captured);
        QSignalSpy failed(camera.get(), &Camera::failed);

        camera->capture({target, 1, 0});
        qint64 pid = pidFrom(target + QStringLiteral(".pid"));
        // One capture at a time: a second one is refused, the first goes on.
        camera->capture({target, 2, 0});
        QTRY_COMPARE(failed.count(), 1);
        QVERIFY(failed.first().first().toString().contains(u"läuft noch") && alive(pid));

        camera->cancel();
        QTRY_VERIFY_WITH_TIMEOUT(!alive(pid), 2000);
        QTest::qWait(200);
        QCOMPARE(captured.count() + failed.count(), 1);

        // Free again after a cancel; going away ends the next capture's command.
        QFile::remove(target + QStringLiteral(".pid"));
        camera->capture({target, 3, 0});
        pid = pidFrom(target + QStringLiteral(".pid"));
        QVERIFY(alive(pid));
        camera.reset();
        QVERIFY(!alive(pid));
    }
};

QTEST_GUILESS_MAIN(TestCommandCamera)
#include "tst_commandcamera.moc"
