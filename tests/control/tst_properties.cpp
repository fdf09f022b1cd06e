// The control shell: design-time properties, the container hooks with their property bag,
// the INI file the control finds for itself, and the settings utilities it offers hosts.
#include "control/hostfolder.h"
#include "control/internals.h"
#include "link/link.h"
#include "settings/guard.h"
#include "support/errors.h"
#include "support/testplatform.h"

#include <quendrix/ctlQuendrix.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

using quendrix::PropertyBag;
using quendrix::RuntimeError;

namespace {

void writeFile(const QString& path, const QByteArray& contents) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

// The first of `widgets` that is not shown (or not hidden) as asked, by name; empty when all are.
QString firstNotShownAs(const QList<QWidget*>& widgets, bool shown) {
    for (QWidget* widget : widgets)
        if (widget->isHidden() == shown) return widget->objectName();
    return {};
}

QStringList changedNames(const QSignalSpy& spy) {
    QStringList names;
    for (const QList<QVariant>& call : spy)
        names.append(call.at(0).toString());
    return names;
}

}  // namespace

class TestProperties : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    TestPlatform platform_;

    // A control as a host creates it, with the scripted platform and the test folder as the
    // host's folder.
    std::unique_ptr<ctlQuendrix> newControl(const QLocale& locale = QLocale(QLocale::German)) {
        auto control = std::make_unique<ctlQuendrix>();
        control->setPlatform(&platform_);
        control->setLocale(locale);
        return control;
    }

private slots:
    void init() {
        platform_ = TestPlatform();
        platform_.folder = folder_.path();
    }

    void everyLetReportsItsPropertyByName() {
        auto control = newControl();
        QSignalSpy changed(control.get(), &ctlQuendrix::PropertyChanged);
        control->setMotorName(QStringLiteral("Platz3"));
        control->setMotorArt0(1);
        control->setMotorArt1(2);
        control->setControltyp(1);
        control->setKennung(QStringLiteral("@"));
        control->setinifile(QStringLiteral("/tmp/x_L.ini"));
        control->setMikroschritt0(1);
        control->setMikroschritt1(1);
        control->setCaption(QStringLiteral("Stativ"));
        control->setSehfeld(QStringLiteral("12"));
        control->setKameratyp(QStringLiteral("Kamera A"));
        control->setBrennweite(50);
        control->setSensorbreite(23.6f);
        control->setAzOffset(1.5);
        QCOMPARE(changedNames(changed),
                 QStringList({"MotorName", "MotorArt0", "MotorArt1", "Controltyp", "Kennung",
                              "inifile", "Mikroschritt0", "Mikroschritt1", "Caption", "Sehfeld",
                              "Kameratyp", "Brennweite", "Sensorbreite", "AzOffset"}));
        // The same names are the meta-object's properties, so scripts reach them too.
        for (const QString& name : changedNames(changed))
            QVERIFY2(control->metaObject()->indexOfProperty(name.toLatin1()) >= 0,
                     qPrintable(name));
        QCOMPARE(control->property("Controltyp").toInt(), 1);
    }

    void propertiesLiveInTheirPanelControls() {
        auto control = newControl();
        quendrix::Panel& p = *control->panel();
        control->setCaption(QStringLiteral("Balgen links"));
        QCOMPARE(p.lblCaption->text(), QStringLiteral("Balgen links"));
        control->setKameratyp(QStringLiteral("EOS"));
        QCOMPARE(p.Frame9->title(), QStringLiteral("EOS"));
        control->setMikroschritt1(1);
        QCOMPARE(quendrix::value(p.cbMikroschritt[1]), 1);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, control->setMikroschritt0(3));

        // Numbers are written and read in the control's locale.
        control->setBrennweite(40.5f);
        QCOMPARE(p.txBrennweite->text(), QStringLiteral("40,5"));
        control->setAzOffset(-2.25);
        QCOMPARE(p.txOffset->text(), QStringLiteral("-2,25"));
        p.txBrennweite->setText(QStringLiteral("22,5"));
        QCOMPARE(control->Brennweite(), 22.5f);
        control->setLocale(QLocale(QLocale::English));
        QCOMPARE(control->Brennweite(), 225.0f);  // "," groups thousands in English
        p.txBrennweite->setText(QStringLiteral("zwei"));
        QCOMPARE(errorOf([&] { control->Brennweite(); }), int(RuntimeError::TypeMismatch));
        p.txOffset->setText(QString());
        QVERIFY_THROWS_EXCEPTION(RuntimeError, control->AzOffset());
    }

    // Captions are cut to 1024 characters, so that a host's runaway text cannot blow the panel
    // up to millions of pixels; the caption of the control itself never widens it.
    void hugeCaptionsAreCut() {
        auto control = newControl();
        const int width = control->sizeHint().width();
        const QString huge(1000000, u'x');
        control->setCaption(huge);
        QCOMPARE(control->Caption(), huge.left(1024));
        QCOMPARE(control->sizeHint().width(), width);
        PropertyBag bag;
        for (const char* name : {"Caption", "Kameratyp", "Sehfeld"})
            bag.WriteProperty(name, huge);
        control->ReadProperties(bag);
        QCOMPARE(control->Caption().size(), 1024);
        QCOMPARE(control->Kameratyp().size(), 1024);
        QCOMPARE(control->Sehfeld().size(), 1024);
        control->show();
        QVERIFY(!control->grab().isNull());
    }

    void sensorWidthLeavesAHalfTypedNumberAlone() {
        auto control = newControl();
        QLineEdit* box = control->panel()->Sensor_breite;
        QSignalSpy changed(control.get(), &ctlQuendrix::PropertyChanged);
        box->setText(QStringLiteral("23,"));
        control->setSensorbreite(36);
        QCOMPARE(box->text(), QStringLiteral("23,"));
        box->setText(QStringLiteral("23"));
        control->setSensorbreite(36);
        QCOMPARE(box->text(), QStringLiteral("36"));
        QCOMPARE(changedNames(changed), QStringList({"Sensorbreite", "Sensorbreite"}));
    }

    void fieldOfViewMovesTheSliderOnlyOnTheBellowsRig() {
        auto control = newControl();
        quendrix::Panel& p = *control->panel();
        p.lblSehfeld->setToolTip(QStringLiteral("7,5"));
        control->setSehfeld(QStringLiteral("12,3456"));
        QCOMPARE(p.Slider1->value(), 12346);
        control->setSehfeld(QStringLiteral("0,0025"));  // 2.5 micrometres: half to even
        QCOMPARE(p.Slider1->value(), 2);
        // The let changes neither the label nor what the getter reports.
        QCOMPARE(control->Sehfeld(), QStringLiteral("7,5"));
        control->setControltyp(1);
        control->setSehfeld(QStringLiteral("30"));
        QCOMPARE(p.Slider1->value(), 2);
        QVERIFY_THROWS_EXCEPTION(RuntimeError,
                                 (control->setControltyp(0), control->setSehfeld("x")));
    }

    void rigTypeRearrangesThePanel() {
        auto control = newControl();
        quendrix::Panel& p = *control->panel();
        QCOMPARE(p.SSTab1->tabText(1), QStringLiteral("Optik"));
        // What only the bellows rig shows: the second axis, its settings and its frames.
        const QList<QWidget*> bellows = {
            p.FrameM[1],        p.Frame[1],          p.FrameP[1], p.cbDrehrichtungArduino[1],
            p.cbEndschalter[1], p.cbMikroschritt[1], p.ENC[1],    p.lblEncoder[1],
            p.Takt[1],          p.Label7[1],         p.Label8[1], p.obMotor[1],
            p.Shape1[1],        p.Image1[1],         p.Frame4a,   p.Frame4};
        const QList<QWidget*> lensesOnly = {p.Synchron, p.NeuObjektiv, p.Balgenauszug};
        // Each step starts from the layout before it; 2 then 0 then 1 shows that type 1 hides
        // the optics slider that type 2 showed and type 0 left alone.
        for (const qint16 type : {0, 1, 2, 0, 1}) {
            // A tab, an axis and a counted plane the layout has to take back.
            p.SSTab1->setCurrentIndex(3);
            QCOMPARE(p.cbOptik->toolTip(),
                     QStringLiteral("Objektiv auswählen oder neues Objektiv eingeben"));
            p.SSTab1->setCurrentIndex(1);
            QCOMPARE(p.cbOptik->toolTip(), QStringLiteral("Objektiv auswählen"));
            p.SSTab1->setCurrentIndex(2);
            QVERIFY(p.cbOptik->toolTip().endsWith(u"neues Objektiv eingeben"));
            p.obMotor[1]->setChecked(true);
            control->Schicht_Click();
            QVERIFY(p.Combine->isEnabled());

            control->setControltyp(type);
            QCOMPARE(p.SSTab1->currentIndex(), 0);
            QCOMPARE(p.cbOptik->toolTip(), QStringLiteral("Objektiv auswählen"));
            QVERIFY(p.obMotor[0]->isChecked() && !p.FrameT[0]->isHidden());
            QCOMPARE(p.Schicht->text(), QStringLiteral("Schicht: 0"));
            QVERIFY(!p.Combine->isEnabled());
            if (type == 0) {
                QCOMPARE(
                    firstNotShownAs(bellows + QList<QWidget*>{p.Balgenauszug, p.cbOptik}, true),
                    QString());
                QCOMPARE(firstNotShownAs({p.OptikFaktor, p.Frame1, p.Frame5}, false), QString());
                QCOMPARE(p.obMotor[1]->text(), QStringLiteral("Balgen"));
                QCOMPARE(p.SSTab1->tabText(1), QStringLiteral("Objektive"));
            } else if (type == 1) {
                QCOMPARE(firstNotShownAs({p.Frame1, p.Frame5, p.Frame6, p.Label4[4], p.Image1[4],
                                          p.cbOptik, p.OptikFaktor},
                                         true),
                         QString());
                QCOMPARE(firstNotShownAs(bellows + lensesOnly +
                                             QList<QWidget*>{p.Slider2, p.Licht[1], p.HScroll1[1],
                                                             p.cbEndschalter[0],
                                                             p.cbMikroschritt[0], p.micro0[0],
                                                             p.micro0[1], p.micro0[2], p.micro0[3]},
                                         false),
                         QString());
                QCOMPARE(p.Label4[2]->text() + "|" + p.Label4[3]->text(),
                         QStringLiteral("Reset|Präp."));
                QCOMPARE(p.Label41->text(), QStringLiteral("Anheben [Schritte]"));
                QCOMPARE(p.obMotor[1]->text(), QStringLiteral("Optik"));
            } else {
                QCOMPARE(firstNotShownAs({p.Frame1, p.Frame5, p.Slider2, p.cbOptik, p.OptikFaktor},
                                         true),
                         QString());
                QCOMPARE(firstNotShownAs(
                             bellows + lensesOnly +
                                 QList<QWidget*>{p.Frame6, p.Image1[2], p.Image1[3], p.Image1[4],
                                                 p.Shape1[2], p.Shape1[3], p.Shape1[4]},
                             false),
                         QString());
                QCOMPARE(
                    p.Label4[2]->text() + "|" + p.Label4[3]->text() + "|" + p.Label4[4]->text(),
                    QStringLiteral("Oben|Unten|Mitte"));
                QCOMPARE(p.lblOptik->font().pointSize(), 14);
                QCOMPARE(p.Licht[0]->text() + "|" + p.Licht[1]->text(),
                         QStringLiteral("Durchlicht|Auflicht"));
                QCOMPARE(p.obMotor[1]->text(), QStringLiteral("Optik"));
            }
        }
        // An unknown rig type keeps the panel as it is.
        control->setControltyp(7);
        QVERIFY(p.Slider2->isHidden() && !p.Frame6->isHidden());
        QCOMPARE(p.obMotor[1]->text() + "|" + p.Label4[2]->text(), QStringLiteral("Optik|Reset"));
    }

    void startsWithMicroSteppingAndTheBellowsFrameDisabled() {
        auto control = newControl();
        quendrix::Panel& p = *control->panel();
        QVERIFY(!p.cbMikroschritt[0]->isEnabled() && !p.cbMikroschritt[1]->isEnabled());
        QVERIFY(!p.Frame4->isEnabled());
        // Each control inside keeps its own disabled state when the frame is enabled later.
        p.Frame4->setEnabled(true);
        QVERIFY(!p.B_AUF[0]->isEnabled());
        QVERIFY(!p.cmdAufnehmen->isEnabled());
        control->InitProperties();
        QCOMPARE(control->Caption(), control->objectName());
    }

    void propertyBagRoundTripKeepsTheDefaultAsymmetry() {
        auto control = newControl(QLocale(QLocale::English));
        control->setObjectName(QStringLiteral("Quendrix1"));
        control->InitProperties();
        control->setMotorName(QString());  // equal to its write default: not stored
        control->setBrennweite(40.5f);     // "40.5": not stored, comes back as 0
        control->setKameratyp(QStringLiteral(" "));
        control->setKennung(QStringLiteral("@"));
        control->setMotorArt0(1);
        control->setMikroschritt0(1);
        control->setSensorbreite(23.6f);
        control->setControltyp(2);
        control->setinifile(QStringLiteral("/nowhere/host_L.ini"));
        PropertyBag bag;
        control->WriteProperties(bag);
        QCOMPARE(bag.names(), QStringList({"Mikroschritt0", "MotorArt0", "Kennung", "inifile",
                                           "Sensorbreite", "Controltyp"}));

        QTemporaryDir store;
        const QString file = store.filePath(QStringLiteral("form.bag"));
        QVERIFY(bag.save(file));
        PropertyBag loaded;
        QVERIFY(loaded.load(file));

        auto restored = newControl(QLocale(QLocale::English));
        restored->setObjectName(QStringLiteral("Quendrix1"));
        restored->ReadProperties(loaded);
        QCOMPARE(restored->Caption(), QStringLiteral("Quendrix1"));
        QCOMPARE(restored->MotorName(), QStringLiteral("Platz0"));
        QCOMPARE(restored->panel()->txBrennweite->text(), QStringLiteral("0"));
        QCOMPARE(restored->Kameratyp(), QStringLiteral("0"));
        QCOMPARE(restored->Kennung(), QStringLiteral("@"));
        QCOMPARE(restored->MotorArt0(), 1);
        QCOMPARE(restored->Mikroschritt0(), qint16(1));
        QCOMPARE(restored->Sensorbreite(), 23.6f);
        QCOMPARE(restored->Controltyp(), qint16(2));
        QCOMPARE(restored->inifile(), QStringLiteral("/nowhere/host_L.ini"));
        QCOMPARE(restored->App_Path, folder_.path());
        QCOMPARE(restored->Sehfeld(), QStringLiteral("0"));

        // The rig type restored from the bag lays the panel out without a change report.
        QCOMPARE(restored->panel()->obMotor[1]->text(), QStringLiteral("Optik"));

        // Away from its default, every entry is written, in the order hosts have always seen.
        control->setCaption(QStringLiteral("Stativ links"));
        control->setMikroschritt1(2);
        control->setMotorArt1(2);
        control->setMotorName(QStringLiteral("Platz2"));
        control->setAzOffset(-1.5);
        control->setBrennweite(60);
        control->setKameratyp(QStringLiteral("EOS R"));
        control->panel()->lblSehfeld->setText(QStringLiteral("12.5"));
        PropertyBag full;
        control->WriteProperties(full);
        QStringList entries;
        for (const QString& name : full.names())
            entries << name + "=" + full.ReadProperty(name).toString();
        QCOMPARE(entries, QStringList({"Caption=Stativ links", "Mikroschritt0=1", "Mikroschritt1=2",
                                       "MotorArt0=1", "MotorArt1=2", "Kennung=@",
                                       "inifile=/nowhere/host_L.ini", "MotorName=Platz2",
                                       "AzOffset=-1.5", "Sensorbreite=23.6", "Brennweite=60",
                                       "Kameratyp=EOS R", "Sehfeld=12.5", "Controltyp=2"}));
    }

    // Going away ends any wait at once and leaves no socket open.
    void terminateEndsWaitsAndClosesTheSocket() {
        QTcpServer board;
        QVERIFY(board.listen(QHostAddress::LocalHost));
        auto control = newControl();
        QTcpSocket* socket = control->Telnet1();
        socket->connectToHost(QHostAddress::LocalHost, board.serverPort());
        QVERIFY(socket->waitForConnected(5000) && board.waitForNewConnection(5000));
        QTcpSocket* peer = board.nextPendingConnection();
        quendrix::internals(control).link()->setQuittiert(false);
        control->Terminate();
        QVERIFY(quendrix::internals(control).link()->bQuittiert());
        QCOMPARE(socket->state(), QAbstractSocket::UnconnectedState);
        QVERIFY(peer->state() == QAbstractSocket::UnconnectedState ||
                peer->waitForDisconnected(5000));

        // A connection still being made is given up, not left to complete later.
        auto connecting = newControl();
        connecting->Telnet1()->connectToHost(QHostAddress::LocalHost, board.serverPort());
        QCOMPARE(connecting->Telnet1()->state(), QAbstractSocket::ConnectingState);
        connecting->Terminate();
        QCOMPARE(connecting->Telnet1()->state(), QAbstractSocket::UnconnectedState);
    }

    void fieldOfViewIsRestoredIntoLabelToolTipAndSlider() {
        PropertyBag bag;
        bag.WriteProperty(QStringLiteral("Sehfeld"), QStringLiteral("23,6"), QStringLiteral("0"));
        auto control = newControl();
        control->ReadProperties(bag);
        QCOMPARE(control->panel()->lblSehfeld->text(), QStringLiteral("23,6"));
        QCOMPARE(control->Sehfeld(), QStringLiteral("23,6"));
        QCOMPARE(control->panel()->Slider1->value(), 23600);

        // A damaged bag still loads: unreadable entries fall back to their defaults.
        PropertyBag damaged;
        damaged.WriteProperty(QStringLiteral("Sehfeld"), QStringLiteral("weit"));
        damaged.WriteProperty(QStringLiteral("Controltyp"), QStringLiteral("zwei"));
        damaged.WriteProperty(QStringLiteral("Mikroschritt0"), QStringLiteral("?"));
        auto second = newControl();
        second->ReadProperties(damaged);
        QCOMPARE(second->Controltyp(), qint16(0));
        QCOMPARE(second->Mikroschritt0(), qint16(0));
        QCOMPARE(second->panel()->lblSehfeld->text(), QStringLiteral("weit"));
        // A number the check box cannot hold is an invalid property value to the host.
        damaged.WriteProperty(QStringLiteral("Mikroschritt0"), 2147483647);
        QCOMPARE(errorOf([&] { second->ReadProperties(damaged); }),
                 int(RuntimeError::InvalidPropertyValue));
    }

    void bagFileThatIsNotABagLeavesTheBagAsItWas() {
        PropertyBag bag;
        bag.WriteProperty(QStringLiteral("Kennung"), QStringLiteral("@"), QStringLiteral("qQ"));
        const QString file = folder_.filePath(QStringLiteral("broken.bag"));
        writeFile(file, "{\"format\": \"quendrix-propertybag\", \"entries\": [ {\"name\": ");
        QString error;
        QVERIFY(!bag.load(file, &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!bag.load(folder_.filePath(QStringLiteral("missing.bag"))));
        QCOMPARE(bag.ReadProperty(QStringLiteral("Kennung")).toString(), QStringLiteral("@"));
        // Rewriting an entry with its default removes it.
        bag.WriteProperty(QStringLiteral("Kennung"), QStringLiteral("qQ"), QStringLiteral("qQ"));
        QVERIFY(!bag.contains(QStringLiteral("Kennung")));
        QCOMPARE(bag.ReadProperty(QStringLiteral("Kennung"), 0).toInt(), 0);
    }

    void iniFileIsDerivedFromTheHostsFileAndItsRigType() {
        writeFile(folder_.filePath(QStringLiteral("host.ini")), "[Arduino]\r\nAnlage=M\r\n");
        auto derive = [&](const QString& stored) {
            PropertyBag bag;
            bag.WriteProperty(QStringLiteral("inifile"), stored, QString());
            auto control = newControl();
            control->ReadProperties(bag);
            return control->inifile();
        };
        const QDir dir(folder_.path());
        QCOMPARE(derive(QStringLiteral("host.ini")), dir.filePath(QStringLiteral("host_M.ini")));
        QCOMPARE(derive(QStringLiteral("\\host.ini")), dir.filePath(QStringLiteral("host_M.ini")));
        QCOMPARE(derive(QStringLiteral("other.cfg.ini")),
                 dir.filePath(QStringLiteral("other_L.ini")));
        QCOMPARE(derive(QStringLiteral("host_X.ini")), dir.filePath(QStringLiteral("host_X.ini")));
        QCOMPARE(derive(QStringLiteral("settings")), dir.filePath(QStringLiteral("_L.ini")));
        QCOMPARE(derive(dir.filePath(QStringLiteral("host.ini"))),
                 dir.filePath(QStringLiteral("host_M.ini")));
        QCOMPARE(derive(QString()), QString());
    }

    void designerLooksForTheHostsFolderFirst() {
        const QString component = QStringLiteral("/opt/designer/plugins");
        QCOMPARE(quendrix::designerHostFolder([](const QString&) { return false; }, component),
                 component);
        const QString found =
            quendrix::designerHostFolder([](const QString&) { return true; }, component);
        QVERIFY(found.endsWith(QStringLiteral("Pelucido")) ||
                found.endsWith(QStringLiteral("Pelucido\\")));
        platform_.designer = true;
        auto control = newControl();
        QVERIFY(control->IDE());
        platform_.designer = false;
        QVERIFY(!control->IDE());
    }

    void iniReadsAndWritesTheControlsOwnFile() {
        auto control = newControl();
        const QString file = folder_.filePath(QStringLiteral("rig_L.ini"));
        QCOMPARE(
            control->ini(QStringLiteral("Platz00"), QStringLiteral("port"), QStringLiteral("6 ")),
            QStringLiteral("6 "));  // no file named: the default exactly as given
        control->setini(QStringLiteral("Platz00"), QStringLiteral("port"), QStringLiteral("3"));
        QVERIFY(!QFile::exists(file));

        control->setinifile(file);
        QCOMPARE(
            control->ini(QStringLiteral("Platz00"), QStringLiteral("port"), QStringLiteral("6 ")),
            QStringLiteral("6"));  // missing key: trailing blanks go
        control->setini(QStringLiteral("Platz00"), QStringLiteral("port"),
                        QStringLiteral("/dev/ttyACM0"));
        control->setini(QStringLiteral("Kamera A"), QStringLiteral("Bildbreite"),
                        QStringLiteral("22,5"));
        control->setini(QStringLiteral("platz00"), QStringLiteral("PORT"),
                        QStringLiteral("/dev/pts/7"));
        QCOMPARE(control->ini(QStringLiteral("Platz00"), QStringLiteral("port"), QString()),
                 QStringLiteral("/dev/pts/7"));
        QCOMPARE(control->ini(QStringLiteral("Kamera A"), QStringLiteral("bildbreite"), QString()),
                 QStringLiteral("22,5"));
        const QString longValue(3000, QLatin1Char('x'));
        control->setini(QStringLiteral("Platz00"), QStringLiteral("lang"), longValue);
        QCOMPARE(control->ini(QStringLiteral("Platz00"), QStringLiteral("lang"), QString()).size(),
                 2047);
        // A value that cannot be stored as given leaves the file alone and is reported, naming
        // the file, the section and the key.
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QByteArray before = written.readAll();
        written.close();
        QSignalSpy problems(control.get(), &ctlQuendrix::settingProblem);
        control->setini(QStringLiteral("Platz00"), QStringLiteral("[Notiz"), QStringLiteral("a]"));
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), before);
        QCOMPARE(problems.size(), 1);
        const QString problem = problems[0][0].toString();
        QVERIFY2(
            problem.contains(file) && problem.contains(u"[Platz00]") && problem.contains(u"[Notiz"),
            qPrintable(problem));

        // An empty name means no file at all, even when one of that section exists.
        control->setinifile(QString());
        QCOMPARE(
            control->ini(QStringLiteral("Platz00"), QStringLiteral("port"), QStringLiteral("6")),
            QStringLiteral("6"));
    }

    void keysAndMappingReachTheHost() {
        auto control = newControl();
        QVERIFY(!control->WasKeyPressed(27));
        platform_.keysDown.insert(27);
        QVERIFY(control->WasKeyPressed(27));
        QCOMPARE(control->map(5, 0, 10, 10, 20), 2.5f);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, control->map(5, 0, 10, -10, 20));
        quendrix::VariantTable table(0, 1, 0, 2);
        table(0, 0) = 3;
        table(1, 0) = QStringLiteral("drei");
        table(0, 1) = QStringLiteral("a");
        table(0, 2) = 1;
        table(1, 2) = QStringLiteral("eins");
        control->QuickSortReihe(table, 0);
        QCOMPARE(table(0, 0).toInt(), 1);
        QCOMPARE(table(1, 0).toString(), QStringLiteral("eins"));
        QCOMPARE(table(0, 2).toString(), QStringLiteral("a"));
    }

    void failureInAPanelHandlerBecomesAMessage() {
        QPushButton button;
        bool after = false;
        QObject::connect(&button, &QPushButton::clicked, [&] {
            quendrix::runGuarded(platform_,
                                 [] { throw RuntimeError(RuntimeError::DivisionByZero); });
            after = true;
        });
        button.click();
        QVERIFY(after);
        QCOMPARE(platform_.messages.size(), 1);
        QVERIFY(platform_.messages.first().prompt.contains(QStringLiteral("Division durch Null")));
        QCOMPARE(platform_.messages.first().style, int(quendrix::MsgBox::Critical));
    }
};

QTEST_MAIN(TestProperties)
#include "tst_properties.moc"
