// A rig on a noisy cable: the board simulator puts hostile garbage (binary junk, status lines
// cut short or carrying numbers beyond any range, lines of a quarter megabyte) between its
// replies, over a real pseudo-terminal and a real loopback socket. A whole session (start-up
// from the settings file, a focus stack, shutdown) must end exactly as it does on a clean
// cable: every picture asked for, the same settings file left behind.
#include "settings/profile.h"
#include "support/simrig.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace sim = quendrix::sim;
namespace profile = quendrix::profile;

namespace {

// A photographer's settings, tuned over the years, with keys the rig never writes itself.
const QByteArray kTuned =
    "[Stativ0]\r\nPosition=1500\r\nTaktpause=400\r\nWartezeit=20\r\nMaxPosition=200000\r\n"
    "Steigung=1\r\nSchritte=400\r\n"
    "[Stativ1]\r\nPosition=120\r\nTaktpause=4000\r\n"
    "[EOS]\r\nBildbreite=22,3\r\nObjektivs_0=Makro 100\r\nFaktors_0=0,0125\r\n"
    "[Notizen]\r\nStativ=links am Fenster\r\nKalibriert=2019\r\n";

struct Session {
    bool ready = false;
    QStringList pictures;  // the planes the host was asked to take, in order
    QStringList combined;  // what Kombinieren reported
    QByteArray settings;   // the settings file afterwards, without the link's own line
    int oddLines = 0;      // huge lines or lines with control characters the log box showed
};

Session runSession(bool garbage, bool socket, const QString& file) {
    Session session;
    SimRig rig;
    sim::Options options;
    options.faults.garbageEvery = garbage ? 3 : 0;
    options.faults.seed = 7;
    if (!rig.start(options, socket, false)) return session;
    rig.keepTimeWithTheBytes();
    ctlQuendrix& control = *rig.control;
    control.setLocale(QLocale(QLocale::German, QLocale::Germany));
    control.setMotorName(QStringLiteral("Stativ"));
    control.setKameratyp(QStringLiteral("EOS"));
    control.setControltyp(0);

    const QByteArray link = socket ? "IP=127.0.0.1:" + QByteArray::number(rig.tcpPort)
                                   : "port=" + rig.devicePath.toUtf8();
    QFile settings(file);
    if (!settings.open(QIODevice::WriteOnly)) return session;
    settings.write(kTuned + "[Stativ]\r\n" + link + "\r\n");
    settings.close();
    control.setinifile(file);

    QObject host;
    QObject::connect(&control, &ctlQuendrix::Schicht, &host, [&](const QString& plane) {
        session.pictures << plane.trimmed();
        control.SetOK(true);
    });
    QObject::connect(&control, &ctlQuendrix::Kombinieren, &host,
                     [&](const QString& count) { session.combined << count.trimmed(); });
    QObject::connect(rig.panel().Text1[1], &QLineEdit::textChanged, &host,
                     [&](const QString& line) {
                         static const QRegularExpression control(QStringLiteral("[\\x00-\\x1f]"));
                         if (line.size() > 1000 || line.contains(control)) ++session.oddLines;
                     });
    QSignalSpy readiness(&control, &ctlQuendrix::Bereitschaft);
    if (socket)
        control.WiFi_Starten();
    else
        control.Comm_Starten();
    session.ready = readiness.size() == 1 && readiness[0][0].toBool();
    if (!session.ready) return session;

    quendrix::Panel& p = rig.panel();
    p.BBeginn[0]->setText(QStringLiteral("6000"));  // the stack steps down from its start
    p.BEnde[0]->setText(QStringLiteral("2000"));
    p.Ebenen->clear();
    p.Ebenen->setText(QStringLiteral("5"));
    p.AutoKomb->click();
    rig.waitFor([&] { return !session.combined.isEmpty(); }, 300);
    rig.settle(0.5);

    control.Motor_Abschalten();
    settings.open(QIODevice::ReadOnly);
    session.settings = settings.readAll().replace(link, "");
    return session;
}

}  // namespace

class TestNoisyRig : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;

private slots:
    void aSessionOnANoisyCableEndsAsOnACleanOne_data() {
        QTest::addColumn<bool>("socket");
        QTest::newRow("serial") << false;
        QTest::newRow("wifi") << true;
    }

    void aSessionOnANoisyCableEndsAsOnACleanOne() {
        QFETCH(bool, socket);
        const Session clean = runSession(false, socket, dir_.filePath("clean.ini"));
        QVERIFY(clean.ready);
        QCOMPARE(clean.pictures, QStringList({"1", "2", "3", "4", "5", "6"}));
        QCOMPARE(clean.combined, QStringList({"6"}));
        QCOMPARE(clean.oddLines, 0);

        const QString noisyFile = dir_.filePath("noisy.ini");
        const Session noisy = runSession(true, socket, noisyFile);
        QVERIFY(noisy.ready);
        QVERIFY(noisy.oddLines > 10);
        QCOMPARE(noisy.pictures, clean.pictures);
        QCOMPARE(noisy.combined, clean.combined);
        QCOMPARE(noisy.settings, clean.settings);

        // The keys the rig does not keep itself are as the photographer left them; those it
        // keeps hold what the rig did (the stack ended at its end).
        for (const auto& [section, key] : {std::pair{"Notizen", "Stativ"},
                                           {"Notizen", "Kalibriert"},
                                           {"EOS", "Objektivs_0"},
                                           {"EOS", "Faktors_0"},
                                           {"Stativ0", "Steigung"},
                                           {"Stativ1", "Position"}}) {
            QCOMPARE(profile::readString(noisyFile, section, key, "gone"),
                     profile::readValue(kTuned, section, key, "none"));
        }
        QCOMPARE(profile::readString(noisyFile, "Stativ0", "Position", ""), "2000");
    }
};

QTEST_MAIN(TestNoisyRig)
#include "tst_noisyrig.moc"
