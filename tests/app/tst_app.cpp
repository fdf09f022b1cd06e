// The application a photographer starts, run as a program: its command line, the settings
// files of the simulated rigs (one per rig type, never a file the photographer named), the
// plan and the calibration it resumes, and what it says when no board answers.
#include "settings/profile.h"
#include "support/rawpeers.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

namespace profile = quendrix::profile;

class TestApp : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;

    struct Run {
        int exitCode = -1;
        QString output;
    };
    // Runs quendrix until it quits, with the user's folders inside the test's own; offscreen
    // unless `environment` says otherwise.
    Run run(const QStringList& arguments, const QProcessEnvironment& changes = {}) {
        QProcess app;
        app.setProgram(QCoreApplication::applicationDirPath() + "/../app/quendrix");
        app.setArguments(arguments);
        app.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_CONFIG_HOME", dir_.filePath("config"));
        environment.insert("XDG_DATA_HOME", dir_.filePath("data"));
        for (const QString& name : changes.keys()) {
            if (changes.value(name).isEmpty())
                environment.remove(name);
            else
                environment.insert(name, changes.value(name));
        }
        app.setProcessEnvironment(environment);
        app.start();
        if (!app.waitForFinished(90000)) app.kill();
        return {app.exitStatus() == QProcess::NormalExit ? app.exitCode() : -1,
                QString::fromLocal8Bit(app.readAll())};
    }
    QString dataFile(const QString& name) const { return dir_.filePath("data/quendrix/" + name); }
    static QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void write(const QString& path, const QByteArray& bytes) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    Run snapshot(const QStringList& arguments) {
        return run(arguments + QStringList{"--snapshot", dir_.filePath("window.png")});
    }

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }

    void helpVersionAndMalformedOptions() {
        // No display at all: a window system that cannot be reached.
        QProcessEnvironment headless;
        headless.insert("QT_QPA_PLATFORM", "xcb");
        headless.insert("DISPLAY", "");
        headless.insert("WAYLAND_DISPLAY", "");
        const Run help = run({"--help"}, headless);
        QCOMPARE(help.exitCode, 0);
        QVERIFY2(help.output.contains("--stack <FROM:TO:PLANES>"), qPrintable(help.output));
        const Run version = run({"--version"}, headless);
        QCOMPARE(version.exitCode, 0);
        QVERIFY2(version.output.startsWith("quendrix 0."), qPrintable(version.output));

        // Every value that cannot be used is refused, naming the option and what was given.
        const QString aFile = dir_.filePath("not-a-folder");
        write(aFile, "x");
        const QList<std::pair<QStringList, QStringList>> refused = {
            {{"--rig", "7"}, {"--rig", "7"}},
            {{"--capture-timeout", "abc"}, {"--capture-timeout", "abc"}},
            {{"--board", "xyz"}, {"--board", "xyz"}},
            {{"--stack", "1:2"}, {"--stack", "1:2"}},
            {{"--camera", "foo"}, {"--camera", "foo"}},
            {{"--lang", "xx"}, {"--lang", "xx"}},
            {{"--sim-timing", "slow"}, {"--sim-timing", "slow"}},
            {{"--board", "serial", "--sim-timing", "fast"}, {"--sim-timing", "--board sim"}},
            {{"--no-such-option"}, {"no-such-option"}},
            {{"--rig"}, {"--rig"}},
            {{"--pictures", aFile}, {"--pictures", aFile}},
            {{"--ini", dir_.path()}, {"--ini", dir_.path()}},
            {{"--rig", "1", "--rig", "2"}, {"--rig", "1, 2"}},
            {{"--camera", "command", "--capture-command", "true"}, {"--capture-command", "true"}},
            {{"stray"}, {"stray"}},
        };
        for (const auto& [arguments, named] : refused) {
            const Run refusal = run(arguments, headless);
            const QString what = arguments.join(' ') + ": " + refusal.output;
            QVERIFY2(refusal.exitCode == 2, qPrintable(what));
            for (const QString& word : named)
                QVERIFY2(refusal.output.contains(word), qPrintable(what));
        }
    }

    // The simulated rig never writes the file --ini names: it works on a fresh copy of it each
    // time, says so, and leaves its state in the copy.
    void aNamedSettingsFileIsNeverWrittenBySimulation() {
        const QString ini = dir_.filePath("studio_L.ini");
        const QByteArray real = "[Stativ]\r\nport=/dev/ttyACM0\r\n[Stativ0]\r\nPosition=777\r\n";
        write(ini, real);
        const Run first = snapshot({"--ini", ini});
        QVERIFY2(first.exitCode == 0, qPrintable(first.output));
        QVERIFY2(first.output.contains("the simulated rig is ready"), qPrintable(first.output));
        QVERIFY(!QImage(dir_.filePath("window.png")).isNull());
        QCOMPARE(contents(ini), real);
        const QString copy = dataFile("copies/studio_L.ini");
        QVERIFY2(first.output.contains("works on a copy of " + ini + " (" + copy + ")"),
                 qPrintable(first.output));
        QVERIFY2(first.output.contains("the rig is shut down; its state is saved in " + copy),
                 qPrintable(first.output));
        QCOMPARE(profile::readString(copy, "Stativ0", "Position", ""), "777");
        QCOMPARE(profile::readString(copy, "Stativ0", "MaxPosition", ""), "560000");

        // What the photographer changed in the file meanwhile is where the next trial starts.
        write(ini, "[Stativ0]\r\nPosition=1234\r\n");
        QVERIFY(snapshot({"--ini", ini}).exitCode == 0);
        QCOMPARE(contents(ini), QByteArray("[Stativ0]\r\nPosition=1234\r\n"));
        QCOMPARE(profile::readString(copy, "Stativ0", "Position", ""), "1234");

        // A file that is not there is not made either.
        const QString missing = dir_.filePath("typo_L.ini");
        QVERIFY(snapshot({"--ini", missing}).exitCode == 0);
        QVERIFY(!QFileInfo::exists(missing));
    }

    // Each rig type keeps its own settings file, seeded with a plan over the simulated subject
    // and, on the lens changer, a lens list; the plan resumes on every type.
    void eachSimulatedRigTypeResumesItsOwnPlan() {
        const QString bellows = dataFile("simulated-bellows_L.ini");
        QVERIFY(snapshot({}).exitCode == 0);
        QCOMPARE(profile::readString(bellows, "Stativ0", "Taktpause", ""), "200");
        // A lens added on the bellows rig, as the panel leaves it (named, no factor yet).
        QVERIFY(profile::writeString(bellows, "Kamera", "Objektivv_0", "Neu 3x"));
        QVERIFY(profile::writeString(bellows, "Kamera", "Aktuellv", "1"));

        for (const QString type : {"1", "2"}) {
            const Run seeded = snapshot({"--rig", type});
            QVERIFY2(seeded.exitCode == 0, qPrintable(seeded.output));
            QVERIFY2(!seeded.output.contains("Laufzeitfehler"), qPrintable(seeded.output));
            QVERIFY2(seeded.output.contains(
                         "stack plan: Beginn 6000, Ende 2000, Ebenen 8, Schritte 500"),
                     qPrintable(seeded.output));
        }
        const QString changer = dataFile("simulated-changer_L.ini");
        QCOMPARE(profile::readString(changer, "Stativ0", "MaxPosition", ""), "20000");
        for (int k = 0; k < 5; ++k) {
            const QString caption =
                profile::readString(changer, "Stativ0", QString("Objektiv%1").arg(k), "");
            QVERIFY(!caption.isEmpty());
            QVERIFY(profile::readString(changer, "Kamera", QString("Objektivv_%1").arg(k), "")
                        .contains(caption));
            QVERIFY(!profile::readString(changer, "Kamera", QString("Faktorv_%1").arg(k), "")
                         .isEmpty());
        }

        // A plan the photographer left on the microscope is where it starts again.
        const QString microscope = dataFile("simulated-microscope_L.ini");
        QVERIFY(profile::writeString(microscope, "Stativ0", "Beginn", "5000"));
        QVERIFY(profile::writeString(microscope, "Stativ0", "Ende", "3000"));
        QVERIFY(profile::writeString(microscope, "Stativ0", "Serie", "4"));
        const Run resumed = snapshot({"--rig", "2"});
        QVERIFY2(
            resumed.output.contains("stack plan: Beginn 5000, Ende 3000, Ebenen 4, Schritte 500"),
            qPrintable(resumed.output));
        // The demo lens selected at the start is still selected at the end: the lens the
        // microscope shows is one of its list.
        QCOMPARE(profile::readString(microscope, "Kamera", "Aktuellv", ""), "1");
        QCOMPARE(profile::readString(changer, "Kamera", "Aktuellv", ""), "1");
    }

    // The lens changer's distance axis goes where the panel sends it: the panel's steps are
    // relative, and the simulated drive takes them so.
    void theLensChangerRigRunsAStack() {
        const Run stack = run(
            {"--rig", "1", "--stack", "2000:6000:4", "--pictures", dir_.filePath("changer-stack")});
        QVERIFY2(stack.exitCode == 0, qPrintable(stack.output));
        QList<qint64> positions;
        const QRegularExpression line("^picture \\d+/5 at (-?\\d+) steps",
                                      QRegularExpression::MultilineOption);
        for (auto match = line.globalMatch(stack.output); match.hasNext();)
            positions << match.next().captured(1).toLongLong();
        QCOMPARE(positions, QList<qint64>({6000, 5000, 4000, 3000, 2000}));
    }

    // The calibration lists live in the user's data folder: a list there is the one the
    // bellows rig loads (its focal length and offset are what the rig then saves).
    void theCalibrationListIsKeptInTheDataFolder() {
        write(dataFile("Kameraohne_Stativ_Synchronliste.txt"),
              "22.5\r\n4\r\n1\r\n\"Sehfeld\",\"Auszug\",\"Massstab\",\"Brennweite\",\"s0\"\r\n"
              "45\r\n40\r\n0\r\n0\r\n0\r\n32.142857142857\r\n60\r\n0\r\n0\r\n0\r\n");
        const QString bellows = dataFile("simulated-bellows_L.ini");
        QVERIFY(profile::writeString(bellows, "Kamera", "Aktuellv", "0"));
        const Run started = snapshot({});
        QVERIFY2(started.exitCode == 0, qPrintable(started.output));
        QCOMPARE(profile::readString(bellows, "Kamera", "Brennweite", ""), "100");
        QCOMPARE(profile::readString(bellows, "Kamera", "offset", ""), "110,00");
    }

    // Without a board the program says where it looked and what to check, and a run nobody
    // watches ends with an error, also when a WiFi board never answers; the settings of a rig
    // that never came into service stay as they were.
    void aMissingBoardIsNamedWithWhatToCheck() {
        RawPty silent;  // a port nobody answers on
        QVERIFY(silent.isOpen());
        const QString ini = dir_.filePath("rig_L.ini");
        const QByteArray tuned = "[Stativ]\r\nport=" + silent.devicePath().toUtf8() +
                                 "\r\nIP=127.0.0.1:1\r\n[Stativ0]\r\nPosition=777\r\n";
        write(ini, tuned);
        const Run serial = snapshot({"--board", "serial", "--ini", ini});
        QCOMPARE(serial.exitCode, 1);
        for (const QString& said :
             {"the serial rig is not ready: no rig found on " + silent.devicePath(),
              QString("Nicht verbunden"), QString("dialout")})
            QVERIFY2(serial.output.contains(said), qPrintable(serial.output));
        QCOMPARE(contents(ini), tuned);

        // A board that identifies itself and then acknowledges nothing: the panel's start-up
        // would wait out every command and call it ready; the application says why it is not.
        QProcess deaf;
        deaf.setProgram(QCoreApplication::applicationDirPath() + "/../sim/quendrix-sim");
        deaf.setArguments({"--drop-acks", "1"});
        deaf.start();
        QVERIFY(deaf.waitForReadyRead(10000));
        const QString banner = QString::fromLatin1(deaf.readLine()).trimmed();
        QVERIFY2(banner.startsWith("serial: "), qPrintable(banner));
        QVERIFY(profile::writeString(ini, "Stativ", "port", banner.mid(8)));
        const QByteArray named = contents(ini);
        const Run unacknowledged = snapshot({"--board", "serial", "--ini", ini});
        deaf.terminate();
        deaf.waitForFinished(5000);
        QCOMPARE(unacknowledged.exitCode, 1);
        for (const QString& said : {QString("the board does not acknowledge its commands"),
                                    QString("answers its identification but does not "
                                            "acknowledge its commands (3 of "),
                                    QString("the serial rig is not ready")})
            QVERIFY2(unacknowledged.output.contains(said), qPrintable(unacknowledged.output));
        QVERIFY2(!unacknowledged.output.contains("shut down"), qPrintable(unacknowledged.output));
        const QByteArray after = contents(ini);  // the start-up may add defaults, never change
        for (const QByteArray& line : named.split('\n'))
            QVERIFY2(after.contains(line), after.constData());

        QTcpServer quiet;  // accepts the connection, never answers
        QVERIFY(quiet.listen(QHostAddress::LocalHost));
        const QString address = QString("127.0.0.1:%1").arg(quiet.serverPort());
        QVERIFY(profile::writeString(ini, "Stativ", "IP", address));
        const Run wifi = run({"--board", "wifi", "--ini", ini, "--stack", "2000:6000:4",
                              "--pictures", dir_.filePath("never")});
        QVERIFY2(wifi.exitCode != 0, qPrintable(wifi.output));
        QVERIFY2(wifi.output.contains("no rig found at " + address) &&
                     wifi.output.contains("no answer within 20 s"),
                 qPrintable(wifi.output));
    }

    // The window speaks English when --lang en asks for it, or without --lang when the system's
    // first user-interface language is English; German otherwise, also under "C". Seen in a
    // message of the panel, which a run nobody watches prints: a WiFi rig without an address.
    void theLanguageFollowsLangThenTheSystem() {
        const QString ini = dir_.filePath("no-address_L.ini");
        write(ini, "[Stativ]\r\nport=6\r\n");
        const QString german = "Keine IP vergeben", english = "No IP address set";
        struct Case {
            QStringList lang;
            QString LANG, LANGUAGE;
            QString expected;
        };
        const QList<Case> cases = {
            {{"--lang", "en"}, "C.UTF-8", "", english},
            {{"--lang", "de"}, "en_US.UTF-8", "en_US", german},
            {{}, "en_GB.UTF-8", "", english},
            {{}, "de_DE.UTF-8", "en_US:de", english},
            {{}, "en_US.UTF-8", "de:en", german},
            {{}, "C", "", german},
        };
        for (const Case& c : cases) {
            QProcessEnvironment locale;
            locale.insert("LC_ALL", "");
            locale.insert("LC_MESSAGES", "");
            locale.insert("LANG", c.LANG);
            locale.insert("LANGUAGE", c.LANGUAGE);
            const Run shown = run(c.lang + QStringList{"--board", "wifi", "--ini", ini,
                                                       "--snapshot", dir_.filePath("window.png")},
                                  locale);
            const QString what = QString("%1 LANG=%2 LANGUAGE=%3: %4")
                                     .arg(c.lang.join(' '), c.LANG, c.LANGUAGE, shown.output);
            QVERIFY2(shown.output.contains("message WiFi_Starten: " + c.expected) &&
                         !shown.output.contains(c.expected == german ? english : german) &&
                         !shown.output.contains("translation"),
                     qPrintable(what));
        }
    }

    // A value the rig cannot use is named once, with its file, section and key; the rig runs
    // with the key's default, and every key the rig does not keep itself stays as it was.
    void unusableSettingsAreNamedAndTheRestIsKept() {
        const QString ini = dataFile("simulated-bellows_L.ini");
        QFile::remove(ini);
        write(ini,
              "[Kamera]\r\nAktuellv=1e400\r\nObjektivv_0=Makro 100\r\nFaktorv_0=0,0125\r\n"
              "[Stativ0]\r\nMaxPosition=99e999\r\nPosition=1500\r\n"
              "[Notizen]\r\nStativ=links am Fenster\r\n");
        const Run started = snapshot({});
        QVERIFY2(started.exitCode == 0, qPrintable(started.output));
        const QStringList named = {
            "settings file " + ini + ", section [Kamera], key \"aktuellv\": the value \"1e400\"",
            "section [Stativ0], key \"MaxPosition\": the value \"99e999\""};
        for (const QString& report : named)
            QVERIFY2(started.output.count(report) == 1, qPrintable(started.output));
        QCOMPARE(profile::readString(ini, "Kamera", "Objektivv_0", ""), "Makro 100");
        QCOMPARE(profile::readString(ini, "Kamera", "Faktorv_0", ""), "0,0125");
        QCOMPARE(profile::readString(ini, "Notizen", "Stativ", ""), "links am Fenster");
        QCOMPARE(profile::readString(ini, "Stativ0", "Position", ""), "1500");
        // What the rig keeps itself it writes back as it ran: with the defaults.
        QCOMPARE(profile::readString(ini, "Stativ0", "MaxPosition", ""), "560000");
        QCOMPARE(profile::readString(ini, "Kamera", "Aktuellv", ""), "0");
    }

    void aBagEntryThePanelRefusesIsNamed() {
        const QString bag = dir_.filePath("host.bag");
        write(bag, R"({"format": "quendrix-propertybag", "version": 1, "entries": [
                {"name": "Caption", "type": "QString", "value": "Balgen links"},
                {"name": "Mikroschritt0", "type": "int", "value": 2147483647}]})");
        const Run started = snapshot({"--bag", bag, "--ini", dir_.filePath("bag_L.ini")});
        QVERIFY2(started.exitCode == 0, qPrintable(started.output));
        QVERIFY2(started.output.contains("entry \"Mikroschritt0\" = \"2147483647\" cannot be used"),
                 qPrintable(started.output));
    }
};

QTEST_GUILESS_MAIN(TestApp)
#include "tst_app.moc"
