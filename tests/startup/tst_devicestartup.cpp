// Device start-up against the board simulator: what the board is told and in which order, what
// the panel shows afterwards, boards that are not known, and settings files that are empty,
// complete or damaged.
#include "control/internals.h"
#include "lighting/lighting.h"
#include "link/link.h"
#include "motion/motion.h"
#include "stacking/stacking.h"
#include "support/simrig.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>

using Commands = QStringList;
using quendrix::sim::Rig;

class TestDeviceStartup : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    QTemporaryDir dir_;
    int files_ = 0;

    // A board of this kind, the control set for the rig type with `ini` as its settings file
    // (motor name "Stativ", camera "EOS").
    bool start(Rig kind, qint16 controltyp, const QByteArray& ini, bool motorPowerOff = false,
               bool microSteps = true) {
        rig_ = std::make_unique<SimRig>();
        quendrix::sim::Options options;
        options.rig = kind;
        options.motorPowerOff = motorPowerOff;
        options.microSteps = microSteps;
        if (!rig_->start(options)) return false;
        ctlQuendrix& c = control();
        c.setLocale(QLocale(QLocale::German, QLocale::Germany));
        c.setControltyp(controltyp);
        c.setMotorName(QStringLiteral("Stativ"));
        c.setKameratyp(QStringLiteral("EOS"));
        c.setBrennweite(50);  // as the host's stored properties give it
        QFile file(dir_.filePath(QStringLiteral("rig%1.ini").arg(++files_)));
        if (!file.open(QIODevice::WriteOnly) || file.write(ini) != ini.size()) return false;
        c.setinifile(file.fileName());
        rig_->takeCommands();
        return true;
    }
    Commands startUp() {
        control().Motor_Starten();
        return rig_->takeCommands();
    }
    ctlQuendrix& control() { return *rig_->control; }
    quendrix::Panel& panel() { return rig_->panel(); }
    QStringList messages() {
        QStringList shown;
        for (const auto& m : rig_->platform.messages)
            shown << QStringLiteral("%1|%2|%3").arg(m.style).arg(m.title, m.prompt);
        return shown;
    }

private slots:
    void init() { QVERIFY(dir_.isValid()); }
    void cleanup() { rig_.reset(); }

    void bellowsFromDefaults() {
        QVERIFY(start(Rig::Bellows, 0, {}));
        QSignalSpy ready(&control(), &ctlQuendrix::Bereitschaft);
        QCOMPARE(startUp(), Commands({"?#",      "?0#",  "w800#",   "m560000#", "p0#", "c0#",
                                      "t1#",     "a0#",  "w-1500#", "g-5#",     "?1#", "W8000#",
                                      "W-1500#", "G-5#", "M4050#",  "P0#",      "C0#", "T1#",
                                      "A0#",     "l1#",  "L0#",     "d255#",    "l1#", "L0#"}));
        QCOMPARE(ready.size(), 1);
        QCOMPARE(ready[0][0].toBool(), true);
        QCOMPARE(messages(), QStringList());

        quendrix::Panel& p = panel();
        QCOMPARE(p.wartezeit->text() + p.Ebenen->text() + p.Anheben->text(), "1502030");
        QCOMPARE(p.Steigung[1]->text() + "|" + p.Schritte[0]->text() + "|" + p.Schritte[1]->text(),
                 "1,25|1600|48");
        QCOMPARE(p.Sensor_breite->text() + "|" + p.SensorBreiteA->text(), "22,5|1024");
        QCOMPARE(p.Label13[0]->text() + "|" + p.Label13[1]->text(), "560000|4050");
        QCOMPARE(quendrix::internals(control()).motion()->maxPosition()[1], 4050);
        QCOMPARE(quendrix::internals(control()).stacking()->Serie(), 10);
        QVERIFY(p.Licht[0]->isChecked() && p.obMotor[0]->isChecked());
        QVERIFY(p.cbMikroschritt[0]->isEnabled() && p.cbMikroschritt[1]->isEnabled());
        QVERIFY(p.Frame4->isEnabled() && p.B_AUF[0]->isEnabled());  // the bellows can be used

        // The panel, held still while it was filled, paints and lays itself out again.
        QVERIFY(control().updatesEnabled());
        for (const QLayout* layout : control().findChildren<QLayout*>())
            QVERIFY(layout->isEnabled());
    }

    void bellowsFromCompleteSettings() {
        QVERIFY(
            start(Rig::Bellows, 0,
                  "[Stativ]\nDLicht=2\n"
                  "[Stativ0]\nWartezeit=300\nSerie=35\nanheben=12\nSteigung=2\nSchritte=400\n"
                  "Mikroschritte=1\nmicro=3\nTaktpause=800\nenc_wert=Digital\nenc_typ=1\n"
                  "minEncoder=-20\nmaxEncoder=9000\nMaxPosition=120000\n"
                  "Position=1200\nRichtungIntern=1\nEndschalter=1\na_Richtung=1\nspiel=4\n"
                  "startzeit=-900\nstufe=3\nhelligkeit0=90\nBeginn=1000\nEnde=5000\n"
                  "[Stativ1]\nSteigung=1,5\nSchritte=200\nMikroschritte=1\nmicro=2\n"
                  "Taktpause=6000\nstartzeit=-2000\nstufe=-7\nminEncoder=5\nmaxEncoder=50\nenc=1\n"
                  "MaxPosition=3000\nPosition=250\nEndschalter=1\nspiel=2\n"
                  "[EOS]\nBildbreite=23,6\nbasisaufloesungx=6000\nzwischenringev=12\n"
                  "[Verzeichnis]\nSerie=77\n"));
        QCOMPARE(quendrix::tag(panel().Slider1), QString());
        // Boxes set from the settings send nothing of their own (no "e", no "r", no micro-step
        // command for the bellows rig): only the sequence itself goes out.
        QCOMPARE(startUp(), Commands({"?#",      "?0#",  "w100#",  "m120000#", "p1200#", "c1#",
                                      "t1#",     "a4#",  "w-900#", "g-1#",     "?1#",    "W1500#",
                                      "W-2000#", "G-7#", "M3000#", "P250#",    "C0#",    "T1#",
                                      "A2#",     "m1!",  "m1!",    "s0!",      "l1!",    "d90!"}));
        QCOMPARE(messages(), QStringList());

        quendrix::Panel& p = panel();
        quendrix::Link& link = rig_->link();
        QCOMPARE(p.Taktpause[0]->text() + "|" + quendrix::tag(p.Taktpause[0]), "100|800");
        QVERIFY(p.micro0[3]->isChecked() && p.micro1[2]->isChecked());
        QCOMPARE(quendrix::tag(p.micro0[0]), "3");
        QCOMPARE(p.lblPosition1[0]->text() + "|" + p.lblPosition2[0]->text(), "1200|6,00");
        QCOMPARE(link.AchsPosition(), (std::array<qint32, 2>{1200, 250}));
        QCOMPARE(link.backlash(), (std::array<qint32, 2>{4, 2}));
        QCOMPARE(quendrix::internals(control()).motion()->minEncoder()[0] +
                     quendrix::internals(control()).motion()->maxEncoder()[1],
                 -20 + 50);
        QVERIFY(!p.ENC[0]->isChecked() && p.ENC[1]->isChecked() && p.E_Typ[0]->isChecked());
        QCOMPARE(p.Encoderart[0]->text(), "Digital");
        QVERIFY(p.cbDrehrichtungArduino[0]->isChecked() && p.cbEndschalter[1]->isChecked());
        QVERIFY(p.Check0[0]->isChecked() && !p.Check0[1]->isChecked());
        QCOMPARE(p.BBeginn[0]->text() + "|" + p.BEnde[0]->text() + "|" + p.Ebenen->text(),
                 "1000|5000|35");
        // The stack is planned from them: 4000 steps in 35 planes of 114 steps, 0.57 mm each.
        QCOMPARE(p.Schrittzahl->text() + "|" + p.Weglaenge->text(), "114|19,95");
        QCOMPARE(quendrix::tag(p.Slider1), "OK");
        QCOMPARE(p.Sensor_breite->text() + "|" + p.Zwischenringe->text(), "23,6|12");
        QCOMPARE(quendrix::internals(control()).stacking()->Serie(), 77);
        QVERIFY(!p.Frame13[1]->isHidden() && p.Frame13[0]->isHidden() && p.Licht[3]->isChecked());
    }

    // The one light channel takes its brightness; the second channel's is not read.
    void lensChangerTakesItsCaptions() {
        QVERIFY(start(Rig::LensChanger, 1,
                      "[Stativ0]\nTaktpause=300\nObjektiv0=Makro 60\nObjektiv2=Lupe 5x\n"
                      "helligkeit0=40\n[Stativ1]\nhelligkeit1=70\n"));
        const QString third = panel().lbObjektiv[3]->text();
        QCOMPARE(startUp(), Commands({"?#", "w300#", "m1#", "p0#", "c0#", "t1#", "l0#", "a0#"}));
        QCOMPARE(panel().lbObjektiv[0]->text(), "Makro 60");
        QCOMPARE(panel().lbObjektiv[2]->text(), "Lupe 5x");
        QCOMPARE(panel().lbObjektiv[3]->text(), third);
        QCOMPARE(panel().HScroll1[0]->value() + panel().HScroll1[1]->value() * 1000, 40 + 255000);
        QVERIFY(rig_->link().bBereit());
    }

    // The division goes to the board at once; a second start-up sends the same sequence again.
    void singleAxisStand() {
        QVERIFY(start(Rig::Microscope, 2,
                      "[Stativ0]\nMikroschritte=1\nmicro=2\nTaktpause=400\nstufe=-3\n"
                      "helligkeit0=40\n[Stativ1]\nhelligkeit1=70\n"));
        const Commands rest = {"w-1500#", "g-3#", "m1#", "p0#", "c0#",
                               "t1#",     "b#",   "l0#", "L0#", "a0#"};
        QCOMPARE(startUp(), Commands({"?#", "?0#", "g2#", "h0#", "w100#"}) + rest);
        QCOMPARE(rig_->board->axis(0).microExponent, 2);
        QCOMPARE(panel().Anheben->text(), "0");
        QCOMPARE(panel().HScroll1[0]->value() + panel().HScroll1[1]->value() * 1000, 40 + 70000);

        // The rig is ready now, yet the limit-switch box set from the settings still sends
        // nothing of its own.
        control().setini("Stativ0", "Mikroschritte", "0");
        control().setini("Stativ0", "Endschalter", "1");
        QCOMPARE(startUp(), Commands({"?#", "?0#", "g0#", "h0#", "w400#"}) + rest);
        QCOMPARE(quendrix::tag(panel().micro0[0]), "0");
        QVERIFY(panel().cbEndschalter[0]->isChecked());
        QCOMPARE(messages(), QStringList());
    }

    // A board that cannot switch micro-steps has its boxes closed, whatever an earlier board
    // offered. The first light module is chosen and told its type before the lights go on.
    void bellowsWithoutDivisionsAndTheFirstLightModule() {
        QVERIFY(start(Rig::Bellows, 0, "[Stativ]\nDLicht=1\n[Stativ0]\nhelligkeit0=90\n", false,
                      false));
        panel().cbMikroschritt[0]->setEnabled(true);
        panel().cbMikroschritt[1]->setEnabled(true);
        const Commands sent = startUp();
        QCOMPARE(sent.mid(sent.indexOf("A0#")), Commands({"A0#", "m0!", "t5!", "l1!", "d90!"}));
        quendrix::Panel& p = panel();
        QVERIFY(!p.cbMikroschritt[0]->isEnabled() && !p.cbMikroschritt[1]->isEnabled());
        QVERIFY(p.Licht[2]->isChecked() && !p.Licht[0]->isChecked());
        QCOMPARE(p.HScroll1[2]->value() + p.HScroll1[0]->value() * 1000, 90 + 255000);
        QVERIFY(!p.Frame13[0]->isHidden() && p.Frame13[1]->isHidden());
    }

    void identification_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("powerOff");
        QTest::addColumn<QString>("earlierLine");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<bool>("ready");
        const QString notFound = "48||'Arduino' nicht gefunden";
        const QString search =
            "0|Interface suchen|Arduino Interface nicht angeschlossen oder von anderem Programm "
            "verwendet\r\n";
        QTest::newRow("unknown board")
            << int(Rig::UnknownArduino) << false << QString()
            << QStringList{"48||Unbekanntes Gerät mit Arduino an diesem Anschluß",
                           search + "unbekannt"}
            << false;
        QTest::newRow("no board") << int(Rig::Silent) << false << QString()
                                  << QStringList{notFound, search + "Arduino nicht gefunden. "}
                                  << false;
        QTest::newRow("stale error line")
            << int(Rig::Silent) << false << "unbekannt: x#"
            << QStringList{notFound, "0|Interface suchen|Arduino Interface kennt den Motor 0 nicht"}
            << false;
        QTest::newRow("motor power off") << int(Rig::Bellows) << true << QString()
                                         << QStringList{"48||Motorstrom einschalten"} << true;
    }

    // Whatever the board said, the light channels the rig lacks are hidden.
    void identification() {
        QFETCH(int, kind);
        QFETCH(bool, powerOff);
        QFETCH(QString, earlierLine);
        QFETCH(QStringList, shown);
        QFETCH(bool, ready);
        QVERIFY(start(Rig(kind), 0, "[Stativ]\nLichtregler1=0\n", powerOff));
        rig_->link().setKennText(1, earlierLine);
        QSignalSpy readiness(&control(), &ctlQuendrix::Bereitschaft);
        const Commands sent = startUp();
        QCOMPARE(messages(), shown);
        QCOMPARE(readiness.size(), 1);
        QCOMPARE(readiness[0][0].toBool(), ready);
        QCOMPARE(rig_->link().bBereit(), ready);
        if (!ready) QCOMPARE(sent, Commands({"?#"}));
        QVERIFY(panel().HScroll1[1]->isHidden() && !panel().HScroll1[0]->isHidden());
    }

    void unknownRigTypeIsReadyUnconfigured() {
        QVERIFY(start(Rig::Bellows, 5, "[Stativ0]\nTaktpause=100\n"));
        QCOMPARE(startUp(), Commands({"?#"}));
        QVERIFY(rig_->link().bBereit());
        QCOMPARE(messages(), QStringList());
    }

    // Values that are no numbers count as 0, as they always have. A number beyond any range, or
    // a value the panel has nothing for, counts as the key's default and is reported once,
    // naming the file, the section and the key.
    void damagedSettings() {
        QVERIFY(start(Rig::Bellows, 0,
                      "[Stativ]\nDLicht=9\nLichtregler0=aus\n"
                      "[Stativ0]\nSchritte=null\nMikroschritte=5\nmicro=7\nTaktpause=schnell\n"
                      "MaxPosition=1e30\nPosition=--5\nRichtungIntern=ja\nspiel=viel\n"
                      "startzeit=bald\nstufe=%\nhelligkeit0=hell\nSerie=x\nno value here\n"
                      "[Stativ1]\nTaktpause=7e400\n"
                      "[EOS]\nBildbreite=breit\n[Verzeichnis]\nSerie=1e99\n"));
        QSignalSpy problems(&control(), &ctlQuendrix::settingProblem);
        QCOMPARE(startUp(),
                 Commands({"?#",  "?0#",  "w0#", "m560000#", "p0#",     "c0#",  "t1#",    "a0#",
                           "w0#", "g-1#", "?1#", "W8000#",   "W-1500#", "G-5#", "M4050#", "P0#",
                           "C0#", "T1#",  "A0#", "l1#",      "L0#",     "d0#",  "l1#",    "L0#"}));
        QCOMPARE(messages(), QStringList());
        QVERIFY(rig_->link().bBereit());
        QCOMPARE(control().Mikroschritt0(), qint16(0));
        QCOMPARE(quendrix::internals(control()).lighting()->DLicht(), qint16(0));
        QCOMPARE(panel().Sensor_breite->text(), "0");
        QCOMPARE(quendrix::internals(control()).stacking()->Serie(), 10);
        QCOMPARE(quendrix::tag(panel().Taktpause[1]), "8000");
        QVERIFY(!panel().HScroll1[0]->isHidden());

        QStringList reported;
        for (const QList<QVariant>& problem : problems)
            reported << problem[0].toString();
        const QStringList expected = {"[Stativ], key \"DLicht\": the value \"9\"",
                                      "[Stativ0], key \"Mikroschritte\": the value \"5\"",
                                      "[Stativ0], key \"MaxPosition\": the value \"1e30\"",
                                      "[Verzeichnis], key \"Serie\": the value \"1e99\"",
                                      "[Stativ1], key \"Taktpause\": the value \"7e400\""};
        QCOMPARE(reported.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            QVERIFY2(reported[i].contains(expected[i]) && reported[i].contains(control().inifile()),
                     qPrintable(reported[i]));
        }
    }
};

QTEST_MAIN(TestDeviceStartup)
#include "tst_devicestartup.moc"
