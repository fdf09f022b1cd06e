// Shutdown against the board simulator: what the board hears, what the settings file holds
// afterwards (key by key, in the order the keys were written), and what happens to the link.
#include "control/internals.h"
#include "motion/motion.h"
#include "support/simrig.h"

#include <quendrix/ctlQuendrix.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QSerialPort>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <optional>

namespace sim = quendrix::sim;
using quendrix::setTag;
using quendrix::setValue;

namespace {

// The "key=value" lines of one section, in file order. New keys are appended to their
// section, so for a fresh file this is the order of the writes.
QStringList section(const QString& file, const QString& name) {
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly)) return {};
    QStringList lines;
    bool inside = false;
    for (const QString& line : QString::fromLatin1(f.readAll()).split(u'\n')) {
        const QString text = line.trimmed();
        if (text.startsWith(u'['))
            inside = text == u'[' + name + u']';
        else if (inside && !text.isEmpty())
            lines.append(text);
    }
    return lines;
}

QStringList keysOf(const QStringList& lines) {
    QStringList keys;
    for (const QString& line : lines)
        keys.append(line.section(u'=', 0, 0));
    return keys;
}

const QStringList kFirstAxisKeys = {"Position",    "Beginn",         "Ende",        "Wartezeit",
                                    "Taktpause",   "Serie",          "micro",       "enc",
                                    "MaxPosition", "RichtungIntern", "Endschalter", "Mikroschritte",
                                    "a_Richtung",  "anheben",        "Helligkeit0"};

}  // namespace

class TestShutdown : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    std::unique_ptr<QTemporaryDir> dir_;
    ctlQuendrix* control_ = nullptr;
    QString ini_;

    bool start(qint16 rigType, const sim::Options& options = {}, bool socket = false) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start(options, socket)) return false;
        control_ = rig_->control.get();
        control_->setMotorName(QStringLiteral("Platz0"));
        control_->setKameratyp(QStringLiteral("EOS"));
        control_->setControltyp(rigType);
        dir_ = std::make_unique<QTemporaryDir>();
        ini_ = dir_->filePath(QStringLiteral("quendrix.ini"));
        return true;
    }

    // Distinctive values everywhere shutdown reads; the settings file is named last, so that
    // nothing the panel's own handlers store lands in it before shutdown.
    void fillPanel() {
        quendrix::Panel& p = rig_->panel();
        rig_->link().setAchsPosition(0, -1234);
        rig_->link().setAchsPosition(1, 567);
        quendrix::internals(control_).motion()->setMaxPosition(0, 560123);
        quendrix::internals(control_).motion()->setMaxPosition(1, 4051);
        p.BBeginn[0]->setText(QStringLiteral("1200"));
        p.BEnde[0]->setText(QStringLiteral("3400"));
        p.wartezeit->setText(QStringLiteral("175"));
        p.Ebenen->setText(QStringLiteral("25"));
        p.Anheben->setText(QStringLiteral("45"));
        p.Taktpause[0]->setText(QStringLiteral(" 80"));  // the per-micro-step text
        setTag(p.Taktpause[0], QStringLiteral("640"));
        setTag(p.Taktpause[1], QStringLiteral("7000"));
        setTag(p.micro0[0], QStringLiteral("3"));
        setTag(p.micro1[0], QStringLiteral("1"));
        const int first[] = {1, 0};
        for (int axis = 0; axis < 2; ++axis) {
            setValue(p.ENC[axis], first[axis]);
            setValue(p.E_Typ[axis], 1 - first[axis]);
            setValue(p.cbDrehrichtungArduino[axis], first[axis]);
            setValue(p.cbEndschalter[axis], 1 - first[axis]);
            const QSignalBlocker noRun(p.Check0[axis]);  // the box also starts a run
            setValue(p.Check0[axis], first[axis]);
        }
        p.Encoderart[0]->setText(QStringLiteral("Digital"));
        p.Encoderart[1]->setText(QStringLiteral("Analog2"));
        control_->setMikroschritt0(1);
        control_->setMikroschritt1(0);
        p.HScroll1[0]->setValue(200);
        p.HScroll1[1]->setValue(77);
        p.cbOptik->addItems({"ohne", "Makro 60", "Lupe 5x"});
        p.cbOptik->setCurrentIndex(2);
        p.Sensor_breite->setText(QStringLiteral("23,6"));
        p.SensorBreiteP->setText(QStringLiteral("6000"));
        p.txOffset->setText(QStringLiteral("12,5"));
        p.txBrennweite->setText(QStringLiteral("41,5"));
        p.SSTab1->setCurrentIndex(2);
        control_->Timer3()->start(60000);
        rig_->link().setBereit(true);
        rig_->settle(0.2);
        rig_->takeCommands();
        control_->setinifile(ini_);
    }

    QStringList shutDown() {
        control_->Motor_Abschalten();
        rig_->settle(0.2);
        return rig_->takeCommands();
    }

    void verifyClosedDown() {
        QCOMPARE(rig_->panel().SSTab1->currentIndex(), 0);
        QVERIFY(!control_->Timer3()->isActive());
        QVERIFY(!rig_->link().bBereit());
    }

private slots:
    void cleanup() {
        rig_.reset();
        dir_.reset();
    }

    void twoAxisRigStopsEverythingAndSavesBothAxesAndTheCamera() {
        QVERIFY(start(0));
        fillPanel();
        QCOMPARE(shutDown(), QStringList({"l0#", "L0#", "l0!", "s#", "S#", "Q#"}));
        verifyClosedDown();
        QVERIFY(!control_->MSComm1()->isOpen());

        QCOMPARE(
            section(ini_, "Platz00"),
            QStringList({"Position=-1234", "Beginn=1200", "Ende=3400", "Wartezeit=175",
                         "Taktpause=640", "Serie=25", "micro=3", "enc=1", "enc_wert=Digital",
                         "enc_typ=0", "MaxPosition=560123", "RichtungIntern=1", "Endschalter=0",
                         "Mikroschritte=1", "a_Richtung=1", "anheben=45", "Helligkeit0=200"}));
        QCOMPARE(
            section(ini_, "Platz01"),
            QStringList({"Position=567", "Taktpause=7000", "micro=1", "enc=0", "enc_wert=Analog2",
                         "enc_typ=1", "MaxPosition=4051", "RichtungIntern=0", "Endschalter=1",
                         "Mikroschritte=0", "a_Richtung=0", "Helligkeit1=77"}));
        QCOMPARE(section(ini_, "EOS"),
                 QStringList({"Aktuell0=2", "Bildbreite=23,6", "basisaufloesungx=6000",
                              "offset=12,5", "Brennweite=41,5"}));
    }

    // With the camera section being the second axis's own, the file shows where the camera
    // keys are written among the axis keys.
    void cameraKeysComeBetweenTheSecondAxisTravelAndItsSwitches() {
        QVERIFY(start(0));
        control_->setKameratyp(QStringLiteral("Platz01"));
        fillPanel();
        shutDown();
        QCOMPARE(keysOf(section(ini_, "Platz01")),
                 QStringList({"Aktuell0", "Position", "Taktpause", "micro", "enc", "enc_wert",
                              "enc_typ", "MaxPosition", "Bildbreite", "basisaufloesungx", "offset",
                              "Brennweite", "RichtungIntern", "Endschalter", "Mikroschritte",
                              "a_Richtung", "Helligkeit1"}));
    }

    void otherRigTypes_data() {
        QTest::addColumn<qint16>("rigType");
        QTest::addColumn<int>("rig");
        QTest::addColumn<QStringList>("commands");
        QTest::addColumn<QStringList>("firstAxis");
        QTest::addColumn<QStringList>("secondAxis");
        QTest::newRow("lens changer")
            << qint16(1) << int(sim::Rig::LensChanger)
            << QStringList({"s#", "w80#", "d-200#", "Q#"}) << kFirstAxisKeys << QStringList();
        QTest::newRow("one axis") << qint16(2) << int(sim::Rig::Microscope)
                                  << QStringList({"s#", "w80#", "Q#"}) << kFirstAxisKeys
                                  << QStringList({"Helligkeit1=77"});
        QTest::newRow("unknown") << qint16(3) << int(sim::Rig::UnknownArduino)
                                 << QStringList({"s#", "w80#", "Q#"}) << QStringList()
                                 << QStringList();
    }
    void otherRigTypes() {
        QFETCH(qint16, rigType);
        QFETCH(int, rig);
        QFETCH(QStringList, commands);
        QFETCH(QStringList, firstAxis);
        QFETCH(QStringList, secondAxis);
        sim::Options options;
        options.rig = sim::Rig(rig);
        QVERIFY(start(rigType, options));
        fillPanel();

        // The brightness goes to the changer once its key is in the file.
        std::optional<QStringList> whenBrightnessSent;
        rig_->platform.onIdle = [this, &whenBrightnessSent](TestPlatform&) {
            rig_->front->pump();
            const auto& received = rig_->board->received();
            if (!whenBrightnessSent && !received.empty() &&
                received.back().command.startsWith("d-"))
                whenBrightnessSent = section(ini_, "Platz00");
        };
        QCOMPARE(shutDown(), commands);
        if (rigType == 1)
            QVERIFY(whenBrightnessSent &&
                    whenBrightnessSent->contains(QStringLiteral("Helligkeit0=200")));

        verifyClosedDown();
        QVERIFY(!control_->MSComm1()->isOpen());
        QCOMPARE(keysOf(section(ini_, "Platz00")), firstAxis);
        QCOMPARE(section(ini_, "Platz01"), secondAxis);
        QCOMPARE(section(ini_, "EOS"), QStringList({"Aktuell0=2"}));
        if (!firstAxis.isEmpty())
            QCOMPARE(control_->ini("Platz00", "Position", {}), QStringLiteral("-1234"));
    }

    void overWifiTheSerialPortIsLeftAlone() {
        QVERIFY(start(0, {}, true));
        // A second board on a pseudo-terminal, opened on the serial port meanwhile.
        sim::Board other{sim::Options{}};
        sim::PtyFrontEnd otherFront(other, [this] { return rig_->platform.now(); });
        QVERIFY(otherFront.open());
        control_->MSComm1()->setPortName(otherFront.devicePath());
        QVERIFY(control_->MSComm1()->open(QIODevice::ReadWrite));
        rig_->platform.onIdle = [this, &otherFront](TestPlatform&) {
            rig_->front->pump();
            otherFront.pump();
        };
        fillPanel();

        QCOMPARE(shutDown(), QStringList({"l0#", "L0#", "l0!", "s#", "S#"}));
        verifyClosedDown();
        QVERIFY(control_->MSComm1()->isOpen());
        QVERIFY(other.received().empty());
        QCOMPARE(control_->Telnet1()->state(), QAbstractSocket::ConnectedState);
        QCOMPARE(section(ini_, "Platz01").size(), 12);
        rig_->platform.onIdle = nullptr;
        control_->MSComm1()->close();
    }

    void aDeadLinkStillSavesEverything_data() {
        QTest::addColumn<int>("rig");
        QTest::addColumn<int>("disconnectAfter");
        QTest::addColumn<bool>("closedBefore");
        QTest::newRow("port closed") << int(sim::Rig::Bellows) << 0 << true;
        QTest::newRow("silent board") << int(sim::Rig::Silent) << 0 << false;
        QTest::newRow("unplugged") << int(sim::Rig::Bellows) << 2 << false;
    }
    void aDeadLinkStillSavesEverything() {
        QFETCH(int, rig);
        QFETCH(int, disconnectAfter);
        QFETCH(bool, closedBefore);
        sim::Options options;
        options.rig = sim::Rig(rig);
        options.faults.disconnectAfter = disconnectAfter;
        QVERIFY(start(0, options));
        fillPanel();
        if (closedBefore) control_->MSComm1()->close();

        const double start = rig_->platform.now();
        QVERIFY_THROWS_NO_EXCEPTION(control_->Motor_Abschalten());
        // Each stop command gives up after 2 s for the previous acknowledgement and 2 s for its
        // own; the quit, written straight to the port, waits for none.
        QVERIFY(rig_->platform.now() - start < 5 * 4 + 1);
        verifyClosedDown();
        QVERIFY(!control_->MSComm1()->isOpen());
        QCOMPARE(section(ini_, "Platz00").size(), 17);
        QCOMPARE(section(ini_, "Platz01").size(), 12);
        QCOMPARE(section(ini_, "EOS").size(), 5);
    }
};

QTEST_MAIN(TestShutdown)
#include "tst_shutdown.moc"
