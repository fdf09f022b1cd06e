// The application a photographer starts, run as a program: on its built-in simulated rig it
// comes into service and, when it quits, leaves the rig's state in its settings file for the
// next start to resume from; a rig that never came into service leaves its settings alone.
#include "settings/profile.h"

#include <QImage>
#include <QProcess>
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
    // Runs quendrix offscreen until it quits, with the user's folders inside the test's own.
    Run run(const QStringList& arguments) {
        QProcess app;
        app.setProgram(QCoreApplication::applicationDirPath() + "/../app/quendrix");
        app.setArguments(arguments);
        app.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_CONFIG_HOME", dir_.filePath("config"));
        environment.insert("XDG_DATA_HOME", dir_.filePath("data"));
        app.setProcessEnvironment(environment);
        app.start();
        if (!app.waitForFinished(60000)) app.kill();
        return {app.exitStatus() == QProcess::NormalExit ? app.exitCode() : -1,
                QString::fromLocal8Bit(app.readAll())};
    }
    QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }

    void simulatedRigComesIntoServiceAndResumes() {
        const QString ini = dir_.filePath("rig_L.ini");
        const QString picture = dir_.filePath("window.png");
        const Run first = run({"--ini", ini, "--snapshot", picture});
        QVERIFY2(first.exitCode == 0, qPrintable(first.output));
        QVERIFY2(first.output.contains("the simulated rig is ready"), qPrintable(first.output));
        QVERIFY(!QImage(picture).isNull());
        QCOMPARE(profile::readString(ini, "Stativ0", "MaxPosition", ""), "560000");
        QCOMPARE(profile::readString(ini, "Kamera", "Bildbreite", ""), "22,5");

        // What the photographer changed in the file meanwhile is where the rig starts from,
        // and what the rig leaves behind again.
        QVERIFY(profile::writeString(ini, "Stativ0", "Position", "1234"));
        QVERIFY(profile::writeString(ini, "Stativ1", "Taktpause", "6000"));
        const Run second = run({"--ini", ini, "--snapshot", picture});
        QVERIFY2(second.exitCode == 0, qPrintable(second.output));
        QCOMPARE(profile::readString(ini, "Stativ0", "Position", ""), "1234");
        QCOMPARE(profile::readString(ini, "Stativ1", "Taktpause", ""), "6000");

        // The lens changer is simulated as well.
        const Run changer =
            run({"--rig", "1", "--ini", dir_.filePath("changer_L.ini"), "--snapshot", picture});
        QVERIFY2(changer.output.contains("the simulated rig is ready"), qPrintable(changer.output));
    }

    void aRigThatNeverStartsLeavesItsSettingsAlone() {
        const QString ini = dir_.filePath("studio_L.ini");
        QFile file(ini);
        const QByteArray tuned =
            "[Stativ]\r\nport=/dev/quendrix-no-such-port\r\n"
            "[Stativ0]\r\nPosition=777\r\nTaktpause=350\r\n";
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(tuned) == tuned.size());
        file.close();
        const Run missing =
            run({"--board", "serial", "--ini", ini, "--snapshot", dir_.filePath("w.png")});
        QCOMPARE(missing.exitCode, 1);
        QVERIFY2(missing.output.contains("the serial rig is not ready"),
                 qPrintable(missing.output));
        QCOMPARE(contents(ini), tuned);

        QCOMPARE(run({"--board", "usb"}).exitCode, 2);
        QCOMPARE(run({"--rig", "7"}).exitCode, 2);
    }

    // A value the rig cannot use is named once, with its file, section and key; the rig runs
    // with the key's default, and every key the rig does not keep itself stays as it was.
    void unusableSettingsAreNamedAndTheRestIsKept() {
        const QString ini = dir_.filePath("handmade_L.ini");
        QFile file(ini);
        const QByteArray handMade =
            "[Kamera]\r\nAktuellv=1e400\r\nObjektivv_0=Makro 100\r\nFaktorv_0=0,0125\r\n"
            "[Stativ0]\r\nMaxPosition=99e999\r\nPosition=1500\r\n"
            "[Notizen]\r\nStativ=links am Fenster\r\n";
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(handMade) == handMade.size());
        file.close();
        const Run started = run({"--ini", ini, "--snapshot", dir_.filePath("w.png")});
        QVERIFY2(started.exitCode == 0, qPrintable(started.output));
        QVERIFY2(started.output.contains("the simulated rig is ready"), qPrintable(started.output));
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
        QFile file(bag);
        const QByteArray entries =
            R"({"format": "quendrix-propertybag", "version": 1, "entries": [
                {"name": "Caption", "type": "QString", "value": "Balgen links"},
                {"name": "Mikroschritt0", "type": "int", "value": 2147483647}]})";
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(entries) == entries.size());
        file.close();
        const QString picture = dir_.filePath("bag.png");
        const Run started =
            run({"--bag", bag, "--ini", dir_.filePath("bag_L.ini"), "--snapshot", picture});
        QVERIFY2(started.exitCode == 0, qPrintable(started.output));
        QVERIFY2(started.output.contains("entry \"Mikroschritt0\" = \"2147483647\" cannot be used"),
                 qPrintable(started.output));
        QVERIFY(!QImage(picture).isNull());
    }
};

QTEST_GUILESS_MAIN(TestApp)
#include "tst_app.moc"
