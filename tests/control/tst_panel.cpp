#include <quendrix/Panel.h>
#include <quendrix/RuntimeError.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSerialPort>
#include <QSet>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTcpSocket>
#include <QTimer>
#include <QtTest>

#include <array>
#include <memory>

using quendrix::Panel;

namespace {

constexpr int kOwner = -1;  // a direct child of the owner, on no tab

// The controls of the form by tab and class. "Name*n" is a control array of n elements,
// named "Name(0)" .. "Name(n-1)".
struct Controls {
    int tab;
    const char* className;
    const char* names;
};

const Controls kControls[] = {
    {kOwner, "QTabWidget", "SSTab1"},
    {kOwner, "QSerialPort", "MSComm1"},
    {kOwner, "QTcpSocket", "Telnet1"},
    {kOwner, "QTimer", "Timer3"},
    {0, "QLabel",
     "lblCaption Image1*5 Label4*5 Label9 lblPosition*2 lblPosition1*2 lblPosition2*2 "
     "lblEncoder*2 Label13*2 Label41 lbAuszug Label6 Label26 Label15 "
     "Label12 Label18 lblSehfeld lblSehfeld2 lbObjektiv*5 lblOptik Fortschritt Vorschlag"},
    {0, "quendrix::GlyphLabel", "Label7*2 Label8*2"},
    {0, "QFrame", "Shape1*5"},
    {0, "QRadioButton", "obMotor*2"},
    {0, "QCheckBox", "Check0*8 Check1"},
    {0, "QGroupBox", "FrameT*2 Takt*2 Frame4 Frame4a Balgenauszug Frame5 Frame1 Frame6 Frame12"},
    {0, "QLineEdit",
     "Taktpause*2 Anheben Sf_min Sf_max Bildbreite BBeginn*1 BEnde*1 Ebenen Schrittzahl "
     "Weglaenge Aufloesung wartezeit Text1*2 Blende Zerstreuungskreis"},
    {0, "QPushButton",
     "Taktsetzen*2 Auf*5 Ab*5 cmdHeben cmdSenken Drehen B_AUF*2 B_ZU*2 cmdAufnehmen cmdFertig "
     "Kopie2 Beginn Ende AutoKomb Mittelw Schicht Combine Kopie VorschlagUebernehmen"},
    {0, "QSlider", "Slider1 Slider2"},
    {1, "QComboBox", "cbOptik"},
    {1, "QListWidget", "OptikFaktor"},
    {1, "QPushButton", "NeuObjektiv NeuName Speichern Synchron Loeschen"},
    {1, "QCheckBox", "Autofokus Direktanzeige"},
    {1, "QGroupBox", "Frame9"},
    {1, "QLineEdit",
     "Sensor_breite SensorBreiteA SensorBreiteP Zwischenringe txBrennweite txOffset Zelle"},
    {1, "QRadioButton", "Option1"},
    {1, "QTableWidget", "Grid1"},
    {1, "quendrix::CalibrationPlot", "Kalibrierkurve"},
    {2, "QGroupBox", "Frame*2 FrameM*2 FrameP*2 Frame7 Frame8"},
    {2, "QCheckBox",
     "cbEndschalter*2 cbDrehrichtungArduino*2 cbMikroschritt*2 ENC*2 E_Typ*2 Check2"},
    {2, "QLineEdit", "Encoderart*2 Steigung*2 Schritte*2 tSpiel*2 ComPort ComBaud"},
    {2, "QRadioButton", "micro0*5 micro1*5"},
    {2, "QPushButton", "cSpiel*2 Setzen typ"},
    {3, "QCheckBox", "Licht*4"},
    {3, "QScrollBar", "HScroll1*4"},
    {3, "QGroupBox", "Frame13*2"},
    {3, "QPushButton", "Seg*8"},
};

struct Named {
    QString name;
    QString className;
    int tab;
};

// Every control name, arrays expanded.
QList<Named> allControls() {
    QList<Named> all;
    for (const Controls& group : kControls) {
        const QString className = QString::fromLatin1(group.className);
        for (const QString& entry : QString::fromLatin1(group.names).split(QLatin1Char(' '))) {
            const QStringList parts = entry.split(QLatin1Char('*'));
            if (parts.size() == 1) {
                all.append({entry, className, group.tab});
                continue;
            }
            for (int i = 0; i < parts[1].toInt(); ++i)
                all.append({QStringLiteral("%1(%2)").arg(parts[0]).arg(i), className, group.tab});
        }
    }
    return all;
}

// Hidden at design time; the rig layout or start-up shows them.
const QStringList kHidden = {
    "Frame1",    "Slider2",    "Frame5",     "Label4(4)",   "Image1(4)", "Shape1(4)",
    "Frame6",    "Check0(2)",  "Check0(3)",  "OptikFaktor", "Zelle",     "cmdAufnehmen",
    "cmdFertig", "Frame13(0)", "Frame13(1)", "Fortschritt",
};

using Single = QPair<QObject*, QString>;
using Array = QPair<QList<QObject*>, QString>;

template <class T, std::size_t N>
QList<QObject*> objects(const std::array<T*, N>& members) {
    return QList<QObject*>(members.begin(), members.end());
}

}  // namespace

class PanelTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        owner_ = std::make_unique<QWidget>();
        panel_ = std::make_unique<Panel>(owner_.get());
    }
    void cleanup() {
        panel_.reset();
        owner_.reset();
    }

    void everyControlOnceWithItsClassAndTab_data() {
        QTest::addColumn<QString>("className");
        QTest::addColumn<int>("tab");
        for (const Named& control : allControls())
            QTest::newRow(qPrintable(control.name)) << control.className << control.tab;
    }
    void everyControlOnceWithItsClassAndTab() {
        QFETCH(QString, className);
        QFETCH(int, tab);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        const QList<QObject*> found = owner_->findChildren<QObject*>(name);
        QCOMPARE(found.size(), 1);
        QCOMPARE(QString::fromLatin1(found[0]->metaObject()->className()), className);
        if (tab == kOwner) {
            QCOMPARE(found[0]->parent(), owner_.get());
        } else {
            QVERIFY(panel_->SSTab1->widget(tab)->isAncestorOf(static_cast<QWidget*>(found[0])));
        }
    }

    // Hosts find controls by name: a stray or doubled name would hand them the wrong one.
    void namedChildrenAreExactlyTheControls() {
        QSet<QString> expected;
        for (const Named& control : allControls())
            expected.insert(control.name);
        QHash<QString, int> seen;
        QTabBar* tabBar = panel_->SSTab1->tabBar();  // its scroll buttons carry names of Qt's
        for (QObject* child : owner_->findChildren<QObject*>()) {
            const QString name = child->objectName();
            if (name.isEmpty() || name.startsWith(QLatin1String("qt_"))) continue;
            if (child->isWidgetType() && tabBar->isAncestorOf(static_cast<QWidget*>(child)))
                continue;
            QVERIFY2(expected.contains(name), qPrintable(name));
            QVERIFY2(++seen[name] == 1, qPrintable(name));
        }
        QCOMPARE(seen.size(), expected.size());
    }

    // Each member of the panel is the control of its own name.
    void membersAreTheirControls() {
        const Panel& p = *panel_;
#define SINGLE(member) \
    { p.member, QStringLiteral(#member) }
#define ARRAY(member) \
    { objects(p.member), QStringLiteral(#member) }
        const QList<Single> singles = {SINGLE(SSTab1),
                                       SINGLE(lblCaption),
                                       SINGLE(Label9),
                                       SINGLE(cmdHeben),
                                       SINGLE(cmdSenken),
                                       SINGLE(Anheben),
                                       SINGLE(Label41),
                                       SINGLE(Drehen),
                                       SINGLE(Slider2),
                                       SINGLE(Frame4),
                                       SINGLE(Frame4a),
                                       SINGLE(Balgenauszug),
                                       SINGLE(lbAuszug),
                                       SINGLE(Label6),
                                       SINGLE(Label26),
                                       SINGLE(Label15),
                                       SINGLE(Label12),
                                       SINGLE(Label18),
                                       SINGLE(lblSehfeld),
                                       SINGLE(lblSehfeld2),
                                       SINGLE(Slider1),
                                       SINGLE(Sf_min),
                                       SINGLE(Sf_max),
                                       SINGLE(Bildbreite),
                                       SINGLE(Check1),
                                       SINGLE(cmdAufnehmen),
                                       SINGLE(cmdFertig),
                                       SINGLE(Kopie2),
                                       SINGLE(Frame5),
                                       SINGLE(Beginn),
                                       SINGLE(Ende),
                                       SINGLE(Ebenen),
                                       SINGLE(Schrittzahl),
                                       SINGLE(Weglaenge),
                                       SINGLE(Aufloesung),
                                       SINGLE(wartezeit),
                                       SINGLE(AutoKomb),
                                       SINGLE(Mittelw),
                                       SINGLE(Schicht),
                                       SINGLE(Combine),
                                       SINGLE(Kopie),
                                       SINGLE(Frame1),
                                       SINGLE(Frame6),
                                       SINGLE(Frame12),
                                       SINGLE(lblOptik),
                                       SINGLE(cbOptik),
                                       SINGLE(OptikFaktor),
                                       SINGLE(NeuObjektiv),
                                       SINGLE(NeuName),
                                       SINGLE(Speichern),
                                       SINGLE(Autofokus),
                                       SINGLE(Frame9),
                                       SINGLE(Sensor_breite),
                                       SINGLE(SensorBreiteA),
                                       SINGLE(SensorBreiteP),
                                       SINGLE(Zwischenringe),
                                       SINGLE(Direktanzeige),
                                       SINGLE(txBrennweite),
                                       SINGLE(txOffset),
                                       SINGLE(Option1),
                                       SINGLE(Synchron),
                                       SINGLE(Grid1),
                                       SINGLE(Zelle),
                                       SINGLE(Loeschen),
                                       SINGLE(Frame7),
                                       SINGLE(Frame8),
                                       SINGLE(Setzen),
                                       SINGLE(typ),
                                       SINGLE(ComPort),
                                       SINGLE(ComBaud),
                                       SINGLE(Check2),
                                       SINGLE(MSComm1),
                                       SINGLE(Telnet1),
                                       SINGLE(Timer3),
                                       SINGLE(Fortschritt),
                                       SINGLE(Blende),
                                       SINGLE(Zerstreuungskreis),
                                       SINGLE(Vorschlag),
                                       SINGLE(VorschlagUebernehmen),
                                       SINGLE(Kalibrierkurve)};
        // clang-format off
        const QList<Array> arrays = {
            ARRAY(obMotor), ARRAY(Image1), ARRAY(Shape1), ARRAY(Label4), ARRAY(lblPosition),
            ARRAY(lblPosition1), ARRAY(lblPosition2), ARRAY(lblEncoder), ARRAY(Label13),
            ARRAY(FrameT), ARRAY(Check0), ARRAY(Label7), ARRAY(Label8), ARRAY(Takt),
            ARRAY(Taktpause), ARRAY(Taktsetzen), ARRAY(Auf), ARRAY(Ab), ARRAY(B_AUF), ARRAY(B_ZU),
            ARRAY(BBeginn), ARRAY(BEnde), ARRAY(lbObjektiv), ARRAY(Text1), ARRAY(FrameM),
            ARRAY(Frame), ARRAY(FrameP), ARRAY(cbEndschalter), ARRAY(cbDrehrichtungArduino),
            ARRAY(cbMikroschritt), ARRAY(ENC), ARRAY(Encoderart), ARRAY(E_Typ), ARRAY(micro0),
            ARRAY(micro1), ARRAY(Steigung), ARRAY(Schritte), ARRAY(tSpiel), ARRAY(cSpiel),
            ARRAY(Licht), ARRAY(HScroll1), ARRAY(Frame13), ARRAY(Seg)};
        // clang-format on
#undef SINGLE
#undef ARRAY
        for (const auto& [member, name] : singles) {
            QVERIFY2(member && member->objectName() == name, qPrintable(name));
        }
        for (const auto& [members, name] : arrays) {
            for (int i = 0; i < members.size(); ++i) {
                const QString element = QStringLiteral("%1(%2)").arg(name).arg(i);
                QVERIFY2(members[i] && members[i]->objectName() == element, qPrintable(element));
            }
        }
    }

    void tabsAndDesignTimeVisibility() {
        QTabWidget* tabs = panel_->SSTab1;
        QCOMPARE(tabs->count(), 4);
        QCOMPARE(tabs->currentIndex(), 0);
        // Every other control shows with its tab page, whatever sits in a hidden frame excepted.
        for (int tab = 0; tab < tabs->count(); ++tab) {
            QWidget* page = tabs->widget(tab);
            for (QWidget* widget : page->findChildren<QWidget*>()) {
                const QString name = widget->objectName();
                if (name.isEmpty() || name.startsWith(QLatin1String("qt_"))) continue;
                bool hidden = false;
                for (QWidget* w = widget; w != page; w = w->parentWidget())
                    hidden = hidden || kHidden.contains(w->objectName());
                QVERIFY2(widget->isVisibleTo(page) == !hidden, qPrintable(name));
            }
        }
    }

    void threeStateValues() {
        for (int i : {6, 7}) {
            QCheckBox* speed = panel_->Check0[i];
            QVERIFY(speed->isTristate());
            QCOMPARE(quendrix::value(speed), 1);
            for (int v : {2, 0, 1, 2}) {
                quendrix::setValue(speed, v);
                QCOMPARE(quendrix::value(speed), v);
            }
        }
        QCheckBox* run = panel_->Check0[0];
        QVERIFY(!run->isTristate());
        QCOMPARE(quendrix::value(run), 0);
        quendrix::setValue(run, 1);
        QCOMPARE(run->checkState(), Qt::Checked);
        // Graying a two-state box makes it three-state.
        quendrix::setValue(run, 2);
        QVERIFY(run->isTristate());
        QCOMPARE(run->checkState(), Qt::PartiallyChecked);
        // Anything but 0, 1, 2 is refused and changes nothing.
        for (int bad : {-1, 3}) {
            try {
                quendrix::setValue(run, bad);
                QFAIL("no error for an invalid value");
            } catch (const quendrix::RuntimeError& error) {
                QCOMPARE(error.number(), int(quendrix::RuntimeError::InvalidPropertyValue));
            }
            QCOMPARE(quendrix::value(run), 2);
        }
    }

    void tags() {
        for (QObject* control :
             {static_cast<QObject*>(panel_->Auf[0]), static_cast<QObject*>(panel_->Timer3)}) {
            QCOMPARE(quendrix::tag(control), QString());
            quendrix::setTag(control, QStringLiteral(" 12 Ä "));
            QCOMPARE(quendrix::tag(control), QStringLiteral(" 12 Ä "));
            quendrix::setTag(control, QString());
            QCOMPARE(quendrix::tag(control), QString());
        }
        quendrix::setTag(panel_->Auf[1], QStringLiteral("x"));
        QCOMPARE(quendrix::tag(panel_->Auf[0]), QString());
    }

    void calibrationGrid() {
        QTableWidget* grid = panel_->Grid1;
        const QStringList titles = {QStringLiteral("Breite"), QStringLiteral(" Auszug"),
                                    QStringLiteral(" B/G "), QStringLiteral(" Fokus "),
                                    QStringLiteral("      s0")};
        QCOMPARE(grid->columnCount(), titles.size());
        QCOMPARE(grid->rowCount(), 1);
        QVERIFY(grid->verticalHeader()->isHidden());
        for (int col = 0; col < titles.size(); ++col) {
            QCOMPARE(grid->horizontalHeaderItem(col)->text(), titles[col]);
            const bool centred =
                grid->horizontalHeaderItem(col)->textAlignment() & Qt::AlignHCenter;
            QCOMPARE(centred, col > 0);
        }
        QCOMPARE(panel_->Zelle->parentWidget(), grid->viewport());
        // The factor list stays index-aligned with the lens names.
        QCOMPARE(panel_->OptikFaktor->count(), panel_->cbOptik->count());
        QVERIFY(panel_->cbOptik->isEditable());
    }

    void optionGroups() {
        QVERIFY(panel_->obMotor[0]->isChecked());
        QVERIFY(panel_->micro0[0]->isChecked());
        QVERIFY(panel_->micro1[0]->isChecked());
        panel_->micro0[2]->click();
        QVERIFY(!panel_->micro0[0]->isChecked());
        QVERIFY(panel_->micro1[0]->isChecked());
        panel_->micro1[4]->click();
        QVERIFY(!panel_->micro1[0]->isChecked());
        QVERIFY(panel_->micro0[2]->isChecked());
        for (int k = 0; k < 5; ++k) {
            QCOMPARE(panel_->micro0[k]->parentWidget(), panel_->Frame7);
            QCOMPARE(panel_->micro1[k]->parentWidget(), panel_->Frame8);
        }
        // The axis choice is a group of its own, apart from every other option.
        panel_->obMotor[1]->click();
        QVERIFY(!panel_->obMotor[0]->isChecked());
        QVERIFY(panel_->micro0[2]->isChecked());
        QVERIFY(panel_->micro1[4]->isChecked());
    }

    // A brightness bar has no scale: its tool tip tells the value set.
    void brightnessBarsTellTheirValue() {
        for (QScrollBar* bar : panel_->HScroll1) {
            QVERIFY2(bar->toolTip().contains(QString::number(bar->value())),
                     qPrintable(bar->objectName()));
            bar->setValue(128);
            QVERIFY2(bar->toolTip().contains(QStringLiteral("128")), qPrintable(bar->toolTip()));
        }
    }

private:
    std::unique_ptr<QWidget> owner_;
    std::unique_ptr<Panel> panel_;
};

QTEST_MAIN(PanelTest)
#include "tst_panel.moc"
