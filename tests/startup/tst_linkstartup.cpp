// Opening the link and identifying the board, over a real pseudo-terminal and a real loopback
// socket, against the board simulator on the scripted clock.
#include "control/internals.h"
#include "motion/motion.h"
#include "startup/startup.h"
#include "support/simrig.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace sim = quendrix::sim;
using quendrix::Startup;

class TestLinkStartup : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    QTemporaryDir folder_;
    ctlQuendrix* control_ = nullptr;

    // A board waiting on its transport, and a control whose settings point at it.
    bool start(const sim::Options& options, bool socket) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start(options, socket, false)) return false;
        control_ = rig_->control.get();
        control_->setMotorName(QStringLiteral("Platz0"));
        control_->setControltyp(7);  // configures nothing: these tests are about the link
        control_->setinifile(folder_.filePath(QStringLiteral("link_L.ini")));
        QFile::remove(control_->inifile());
        if (socket)
            control_->setini(QStringLiteral("Platz0"), QStringLiteral("IP"),
                             QStringLiteral("127.0.0.1:%1").arg(rig_->tcpPort));
        else
            control_->setini(QStringLiteral("Platz0"), QStringLiteral("port"), rig_->devicePath);
        return true;
    }
    QString status() const { return control_->panel()->Text1[0]->text(); }
    int identifyQueries() const {
        int count = 0;
        for (const sim::Received& r : rig_->board->received())
            count += r.command == "?#";
        return count;
    }

private slots:
    void cleanup() { rig_.reset(); }

    void portNamesAndAddresses() {
        QCOMPARE(Startup::serialDeviceFor(QStringLiteral("/dev/pts/7")),
                 QStringLiteral("/dev/pts/7"));
        QCOMPARE(Startup::serialDeviceFor(QStringLiteral(" COM6 ")), QStringLiteral("COM6"));
        QVERIFY(
            Startup::serialDeviceFor(QStringLiteral("3")).startsWith(QStringLiteral("/dev/tty")));
        QVERIFY(Startup::serialDeviceFor(QStringLiteral("3")).endsWith(QLatin1Char('3')));
        QCOMPARE(Startup::wifiAddressFor(QStringLiteral("192.168.4.1")),
                 std::make_pair(QStringLiteral("192.168.4.1"), quint16(23)));
        QCOMPARE(Startup::wifiAddressFor(QStringLiteral("127.0.0.1:2323")),
                 std::make_pair(QStringLiteral("127.0.0.1"), quint16(2323)));
    }

    void aSerialBoardIsIdentifiedAndStarted() {
        QVERIFY(start({}, false));
        QSignalSpy ready(control_, &ctlQuendrix::Bereitschaft);
        control_->Comm_Starten();
        QCOMPARE(status(), QStringLiteral("Arduino Photostand"));
        QCOMPARE(control_->panel()->ComPort->text(), rig_->devicePath);
        QCOMPARE(control_->panel()->ComBaud->text(), QStringLiteral("115200"));
        QVERIFY(control_->panel()->Check2->isChecked());
        QVERIFY(control_->MSComm1()->isOpen());
        QCOMPARE(ready.size(), 1);       // the device start-up ran and reported
        QCOMPARE(identifyQueries(), 2);  // the link's own question and the start-up's
    }

    void aBoothingBoardIsAskedFiveTimes() {
        sim::Options late;
        late.faults.bootDelay = 7;  // answers the fifth question, asked after 8 s
        QVERIFY(start(late, false));
        control_->Comm_Starten();
        QCOMPARE(status(), QStringLiteral("Arduino Photostand"));

        sim::Options tooLate;
        tooLate.faults.bootDelay = 9;
        QVERIFY(start(tooLate, false));
        const double begin = rig_->platform.now();
        control_->Comm_Starten();
        QCOMPARE(status(), QStringLiteral("Nicht verbunden"));
        QVERIFY(!control_->MSComm1()->isOpen());
        QVERIFY(rig_->platform.now() - begin >= 10);
    }

    void anUnknownBoardOrNoPort() {
        sim::Options unknown;
        unknown.rig = sim::Rig::UnknownArduino;
        QVERIFY(start(unknown, false));
        QSignalSpy ready(control_, &ctlQuendrix::Bereitschaft);
        control_->Comm_Starten();
        QCOMPARE(status(), QStringLiteral("Falsch verbunden"));
        QVERIFY(!control_->MSComm1()->isOpen());
        QCOMPARE(ready.size(), 0);

        control_->panel()->Text1[0]->setText(QStringLiteral("vorher"));
        control_->setini(QStringLiteral("Platz0"), QStringLiteral("port"),
                         QStringLiteral("/dev/keines"));
        control_->Comm_Starten();
        QCOMPARE(status(), QStringLiteral("vorher"));  // the port could not be opened
        QVERIFY(rig_->platform.messages.isEmpty());
    }

    // A working session is resumed by the next start from the settings the shutdown wrote.
    void aSessionResumesWhereItEnded() {
        QVERIFY(start({}, false));
        control_->setControltyp(0);
        control_->setKameratyp(QStringLiteral("EOS"));
        control_->setBrennweite(50);
        control_->setini(QStringLiteral("EOS"), QStringLiteral("Objektiv0_0"),
                         QStringLiteral("Makro 60"));
        control_->setini(QStringLiteral("EOS"), QStringLiteral("Objektiv0_1"),
                         QStringLiteral("Makro 100"));
        control_->Comm_Starten();
        QVERIFY(quendrix::internals(control_).link()->bBereit());
        quendrix::Panel& p = *control_->panel();
        control_->setMikroschritt0(1);  // micro-stepping offered,
        p.micro0[3]->setChecked(true);  // with division 8
        quendrix::internals(control_).motion()->Position_anfahren(1234, 0, -1);
        p.HScroll1[0]->setValue(100);
        p.cbOptik->setCurrentIndex(2);
        const QString pause = p.Taktpause[0]->text();
        control_->Motor_Abschalten();
        QVERIFY(!control_->MSComm1()->isOpen());

        const QString settings = control_->inifile();
        rig_ = std::make_unique<SimRig>();
        QVERIFY(rig_->start({}, false, false));
        control_ = rig_->control.get();
        control_->setMotorName(QStringLiteral("Platz0"));
        control_->setKameratyp(QStringLiteral("EOS"));
        control_->setBrennweite(50);
        control_->setinifile(settings);
        control_->setini(QStringLiteral("Platz0"), QStringLiteral("port"), rig_->devicePath);
        control_->Comm_Starten();
        quendrix::Panel& again = *control_->panel();
        QVERIFY(quendrix::internals(control_).link()->bBereit());
        QCOMPARE(quendrix::internals(control_).link()->AchsPosition()[0], 1234);
        QCOMPARE(rig_->board->axis(0).position, 1234);  // the board was told where it stands
        QCOMPARE(quendrix::tag(again.micro0[0]), QStringLiteral("3"));
        QVERIFY(again.micro0[3]->isChecked());
        QCOMPARE(again.Taktpause[0]->text(), pause);
        QCOMPARE(again.HScroll1[0]->value(), 100);
        QCOMPARE(again.cbOptik->currentText(), QStringLiteral("Makro 100"));
    }

    void theMotorPanelButtonsHandTheSettingsOver() {
        rig_ = std::make_unique<SimRig>();
        QVERIFY(rig_->start());
        quendrix::Panel& p = rig_->panel();
        p.Setzen->click();
        p.obMotor[1]->setChecked(true);
        p.Setzen->click();
        p.typ->click();
        rig_->settle(0.1);
        QCOMPARE(rig_->takeCommands(), QStringList({"t1#", "T1#", "m1!", "s0!"}));
    }

    void wifiNeedsAnAddress() {
        QVERIFY(start({}, true));
        control_->setini(QStringLiteral("Platz0"), QStringLiteral("IP"), QString());
        control_->WiFi_Starten();
        QCOMPARE(rig_->platform.messages.size(), 1);
        QCOMPARE(rig_->platform.messages[0].prompt,
                 QStringLiteral("Keine IP vergeben für diese Steuerung"));
        QCOMPARE(rig_->platform.messages[0].title, QStringLiteral("WiFi_Starten"));
        QCOMPARE(control_->Telnet1()->state(), QAbstractSocket::UnconnectedState);
    }

    void aWifiBoardThatAnswersLate() {
        sim::Options slow;
        slow.faults.replyDelay = 4;  // misses the 3-s wake-up, answers within the 21 s
        QVERIFY(start(slow, true));
        QSignalSpy ready(control_, &ctlQuendrix::Bereitschaft);
        control_->WiFi_Starten();
        QCOMPARE(status(), QStringLiteral("Arduino Photostand"));
        QVERIFY(control_->wifi);
        QCOMPARE(ready.size(), 1);
        QVERIFY(rig_->platform.messages.isEmpty());
    }

    void wifiReportsTheMotorSupplyAndUnknownBoards() {
        sim::Options unpowered;
        unpowered.motorPowerOff = true;
        QVERIFY(start(unpowered, true));
        control_->WiFi_Starten();
        QCOMPARE(status(), QStringLiteral("Arduino Photostand Motorspannung aus"));
        QCOMPARE(rig_->platform.messages.last().prompt,
                 QStringLiteral("Versorgungsspannung am Steuergerät einschalten"));
        QCOMPARE(rig_->platform.messages.last().title, QStringLiteral("Kommunikation starten"));

        sim::Options unknown;
        unknown.rig = sim::Rig::UnknownArduino;
        QVERIFY(start(unknown, true));
        control_->WiFi_Starten();
        QCOMPARE(status(), QStringLiteral("WiFi Falsch verbunden"));
        QCOMPARE(control_->Telnet1()->state(), QAbstractSocket::ConnectedState);  // left open

        sim::Options silent;
        silent.rig = sim::Rig::Silent;
        QVERIFY(start(silent, true));
        const double begin = rig_->platform.now();
        control_->WiFi_Starten();
        QCOMPARE(status(), QStringLiteral("WiFi Nicht verbunden"));
        QVERIFY(rig_->platform.now() - begin >= 3 + 21 + 6);
    }
};

QTEST_MAIN(TestLinkStartup)
#include "tst_linkstartup.moc"
