// Lenses and the field of view, through the panel and against the board simulator.
#include "control/internals.h"
#include "motion/motion.h"
#include "optics/optics.h"
#include "support/errors.h"
#include "support/simrig.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>

using quendrix::RuntimeError;

class TestOptics : public QObject {
    Q_OBJECT

    std::unique_ptr<SimRig> rig_;
    QTemporaryDir folder_;
    ctlQuendrix* control_ = nullptr;
    quendrix::Panel* p_ = nullptr;

    bool start(const quendrix::sim::Options& options = {}) {
        rig_ = std::make_unique<SimRig>();
        if (!rig_->start(options)) return false;
        control_ = rig_->control.get();
        p_ = &rig_->panel();
        control_->setLocale(QLocale(QLocale::German));
        control_->setMotorName(QStringLiteral("Platz0"));
        control_->setKameratyp(QStringLiteral("EOS"));
        control_->setinifile(folder_.filePath(QStringLiteral("rig_L.ini")));
        QFile::remove(control_->inifile());
        return true;
    }

    // A bellows rig with a 50-mm lens on a 23.6-mm sensor, computed by the bellows formula.
    void setUpBellows(double offset) {
        control_->setSensorbreite(23.6f);
        control_->setBrennweite(50);
        control_->setAzOffset(offset);
        p_->Zwischenringe->setText(QStringLiteral("0"));
        p_->Option1->setEnabled(true);
        p_->Option1->setChecked(true);
    }

    void writeIni(const QByteArray& text) {
        QFile file(control_->inifile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

private slots:
    void cleanup() { rig_.reset(); }

    void fieldOfViewByFormulaAndByLensFactor() {
        QVERIFY(start());
        setUpBellows(50);
        p_->Slider1->setRange(0, 100000);  // as if the bellows had been measured out
        QSignalSpy reported(control_, &ctlQuendrix::SehfeldNeu);
        p_->lbAuszug->setToolTip(QStringLiteral("50"));  // image distance 100: magnification 1
        control_->BildGroesse();
        QCOMPARE(control_->Sehfeld(), QStringLiteral("23,6"));
        QCOMPARE(p_->lblSehfeld->text(), QStringLiteral("23,600"));
        QCOMPARE(p_->lblSehfeld2->text(), QStringLiteral("23,600"));
        QCOMPARE(p_->Slider1->value(), 23600);
        QCOMPARE(reported.size(), 1);
        QCOMPARE(reported.first().first().toString(), QStringLiteral("23,600"));

        // Focus at infinity divides by zero, and nothing changes.
        p_->lbAuszug->setToolTip(QStringLiteral("0"));
        QCOMPARE(errorOf([&] { control_->BildGroesse(); }), int(RuntimeError::DivisionByZero));
        QCOMPARE(control_->Sehfeld(), QStringLiteral("23,6"));
        QCOMPARE(p_->Slider1->value(), 23600);
        QCOMPARE(reported.size(), 1);

        // A lens changer multiplies the lens's factor by the image's pixels.
        p_->Option1->setChecked(false);
        control_->setControltyp(1);
        p_->OptikFaktor->clear();
        p_->OptikFaktor->addItems({QStringLiteral("0"), QStringLiteral("0,001")});
        p_->cbOptik->addItem(QStringLiteral("Plan 10"));
        p_->SensorBreiteA->setText(QStringLiteral("6000"));
        p_->cbOptik->setCurrentIndex(1);  // the selection computes the field of view
        QCOMPARE(control_->Sehfeld(), QStringLiteral("6"));
        QCOMPARE(reported.last().first().toString(), QStringLiteral("6,000"));
        QCOMPARE(p_->Bildbreite->text(), QStringLiteral("6,000"));
        QCOMPARE(p_->lblOptik->text(), QStringLiteral("Plan 10"));
        // A microscope shows "ohne" as no field at all.
        control_->setControltyp(2);
        p_->lblOptik->setText(QStringLiteral("ohne"));
        control_->BildGroesse();
        QCOMPARE(p_->Slider1->value(), 0);
    }

    void lensListFromTheSettingsFile() {
        QVERIFY(start());
        writeIni(
            "[EOS]\r\nObjektiv0_0=Makro 100mm\r\nFaktor0_0=0,002\r\nObjektiv0_1=100 Nah\r\n"
            "Faktor0_1=0,001\r\nObjektiv0_5=verloren\r\naktuell0=7\r\n");
        control_->setControltyp(1);
        control_->Optik_laden();
        QCOMPARE(p_->cbOptik->count(), 3);  // "ohne" and the two before the gap
        QCOMPARE(p_->cbOptik->itemText(2), QStringLiteral("100 Nah"));
        QCOMPARE(p_->OptikFaktor->item(1)->text(), QStringLiteral("0,002"));
        QCOMPARE(p_->cbOptik->currentIndex(), -1);  // 7 is no entry: the selection stays
        control_->Optik_waehlen(QStringLiteral("100"));
        QCOMPARE(p_->cbOptik->currentIndex(), 1);  // the first that contains it
        QCOMPARE(control_->Objektiv, QStringLiteral("1"));
        control_->Optik_waehlen(QStringLiteral("500"));
        QCOMPARE(rig_->platform.messages.last().prompt,
                 QStringLiteral("Kein Objektiv mit dieser Brennweite in der Liste"));

        // A new lens overwrites slot 0 until it is stored with its factor.
        control_->setControltyp(0);
        rig_->platform.inputAnswers = {QStringLiteral("Neu 50")};
        p_->NeuObjektiv->click();
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("Objektiv0_0"), {}),
                 QStringLiteral("Neu 50"));
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("aktuell0"), {}),
                 QStringLiteral("0"));
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("autofokus0_3"), {}),
                 QStringLiteral("0"));
        control_->Optik_laden();
        QCOMPARE(p_->cbOptik->itemText(1), QStringLiteral("Neu 50"));
        QCOMPARE(p_->cbOptik->currentIndex(), 0);

        // Storing writes name and factor under the list index itself.
        p_->cbOptik->setCurrentIndex(2);
        quendrix::setTag(p_->Bildbreite, QStringLiteral("12"));
        p_->SensorBreiteA->setText(QStringLiteral("6000"));
        p_->Speichern->click();
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("Objektiv0_2"), {}),
                 QStringLiteral("100 Nah"));
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("Faktor0_2"), {}),
                 QStringLiteral("0,002"));
        // No resolution: the factor cannot be formed, and nothing is stored.
        p_->SensorBreiteA->setText(QStringLiteral("0"));
        p_->Speichern->click();
        QVERIFY(
            rig_->platform.messages.last().prompt.contains(QStringLiteral("Division durch Null")));
        QCOMPARE(p_->OptikFaktor->item(2)->text(), QStringLiteral("0,002"));
    }

    void lensChangerPositionsAreStoredAndSent() {
        QVERIFY(start());
        control_->setControltyp(1);
        const QStringList captions = {" 2x", "5x ", " 10x ", "20x", "50 x"};
        for (int i = 0; i < 5; ++i) {
            p_->lbObjektiv[i]->setText(captions[i]);
            control_->lbObjektiv_Change(qint16(i));
        }
        control_->lbObjektiv_Change(5);
        rig_->settle(0.05);
        QCOMPARE(rig_->takeCommands(), QStringList({"h2x#", "i5x#", "j10x#", "k20x#", "g50 x#"}));
        for (int i = 0; i < 5; ++i)
            QCOMPARE(
                control_->ini(QStringLiteral("Platz00"), QStringLiteral("Objektiv%1").arg(i), {}),
                captions[i].trimmed());
        // A bellows rig has no changer.
        control_->setControltyp(0);
        control_->lbObjektiv_Change(0);
        rig_->settle(0.05);
        QCOMPARE(rig_->takeCommands(), QStringList());
    }

    // Renaming the lens shown, and finding the lens a label names.
    void renamingAndFindingLenses() {
        QVERIFY(start());
        writeIni(
            "[EOS]\r\nObjektiv0_0=Makro 100mm\r\nFaktor0_0=0,002\r\nObjektiv0_1=Plan 10 Apo\r\n"
            "Faktor0_1=0,001\r\nObjektiv0_2=Plan 10 Nah\r\nFaktor0_2=0,001\r\naktuell0=7\r\n");
        control_->setControltyp(1);
        control_->Optik_laden();
        QCOMPARE(p_->cbOptik->currentIndex(), -1);
        rig_->platform.inputAnswers = {QStringLiteral("Lupe 5")};
        p_->NeuName->click();  // nothing selected: asked first, refused after
        QCOMPARE(rig_->platform.inputs.size(), 1);
        QCOMPARE(rig_->platform.inputs.first().title,
                 QStringLiteral("Neue Bezeichnung für das angezeigte Objektiv"));
        QCOMPARE(rig_->platform.inputs.first().prompt,
                 QStringLiteral("Eindeutige Bezeichnung eingeben"));
        QCOMPARE(rig_->platform.messages.size(), 1);
        QCOMPARE(rig_->platform.messages.first().prompt,
                 QStringLiteral("Erst ein Objektiv auswählen"));
        QCOMPARE(p_->cbOptik->itemText(1), QStringLiteral("Makro 100mm"));

        p_->cbOptik->setCurrentIndex(2);
        rig_->platform.inputAnswers = {QStringLiteral("Lupe 5")};
        p_->NeuName->click();
        QCOMPARE(p_->cbOptik->itemText(2), QStringLiteral("Lupe 5"));
        QCOMPARE(p_->cbOptik->count(), 4);
        // Written under the list index, one slot above the one it was read from.
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("Objektiv0_2"), {}),
                 QStringLiteral("Lupe 5"));
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("Objektiv0_1"), {}),
                 QStringLiteral("Plan 10 Apo"));
        QCOMPARE(rig_->platform.messages.size(), 1);

        // The first entry that contains the label's text, else "ohne".
        const auto shown = [&](const QString& text) {
            p_->lblOptik->setText(text);
            quendrix::internals(control_).optics()->lblOptik_Change();
            return p_->cbOptik->currentIndex();
        };
        QCOMPARE(shown(QStringLiteral("Nah")), 3);
        QCOMPARE(shown(QStringLiteral("10")), 1);  // "Makro 100mm" comes first
        QCOMPARE(shown(QStringLiteral("Zoom")), 0);
    }

    void imageWidthIsScaledToTheCurrentResolution() {
        QVERIFY(start());
        p_->SensorBreiteA->setText(QStringLiteral("3000"));
        p_->SensorBreiteP->setText(QStringLiteral("6000"));
        p_->Bildbreite->setText(QStringLiteral("12"));
        QCOMPARE(quendrix::tag(p_->Bildbreite), QString());  // direct display off
        p_->Direktanzeige->setChecked(true);
        p_->Bildbreite->setText(QStringLiteral("12"));
        p_->Bildbreite->setText(QStringLiteral("12,"));  // half typed: still 12
        QCOMPARE(quendrix::tag(p_->Bildbreite), QStringLiteral("6"));
        p_->Bildbreite->setText(QStringLiteral("zwölf"));
        QCOMPARE(quendrix::tag(p_->Bildbreite), QStringLiteral("6"));
    }

    void boxesTakeEffectOnEnter() {
        QVERIFY(start());
        p_->Zwischenringe->setText(QStringLiteral("12,5"));
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("zwischenringe0"),
                               QStringLiteral("-")),
                 QStringLiteral("-"));
        QTest::keyClick(p_->Zwischenringe, Qt::Key_Return);
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("zwischenringe0"), {}),
                 QStringLiteral("12,5"));
        p_->Sensor_breite->setText(QStringLiteral("35,9"));
        QTest::keyClick(p_->Sensor_breite, Qt::Key_Enter);
        QCOMPARE(control_->ini(QStringLiteral("EOS"), QStringLiteral("Bildbreite"), {}),
                 QStringLiteral("35,9"));
        QCOMPARE(control_->Sensorbreite(), 35.9f);
    }

    void aBellowsMoveUpdatesTheFieldOfViewOncePerReport() {
        QVERIFY(start());
        setUpBellows(60);
        p_->Schritte[1]->setText(QStringLiteral("48"));
        p_->Steigung[1]->setText(QStringLiteral("1"));
        QSignalSpy reported(control_, &ctlQuendrix::SehfeldNeu);
        QSignalSpy moved(quendrix::internals(control_).link(), &quendrix::Link::positionReported);
        control_->Output(QStringLiteral("W1000#"));
        control_->Output(QStringLiteral("V#"));
        control_->Output(QStringLiteral("T2400#"));  // 50 mm of extension
        QVERIFY(rig_->waitFor([&] { return rig_->link().sKennText()[1].contains(u"|F"); }));
        QCOMPARE(rig_->link().AchsPosition()[1], 2400);
        QCOMPARE(p_->lbAuszug->text(), QStringLiteral("50,000"));
        QCOMPARE(control_->Gesamtauszug, 50.0);
        QCOMPARE(p_->lblSehfeld->text(), QStringLiteral("19,667"));  // 1180 / (50 + 60 - 50)
        QVERIFY(moved.size() > 2);
        QCOMPARE(reported.size(), moved.size());
    }

    void theSliderSpansTheBellowsAndDrivesThem() {
        QVERIFY(start());
        setUpBellows(60);
        p_->Schritte[1]->setText(QStringLiteral("48"));
        p_->Steigung[1]->setText(QStringLiteral("1"));
        quendrix::internals(rig_->control).motion()->setMaxPosition(1, 4800);  // 100 mm of bellows
        control_->Balgen_einstellen();
        QCOMPARE(p_->Slider1->minimum(), 10727);   // 1180 / 110 mm
        QCOMPARE(p_->Slider1->maximum(), 118000);  // 1180 / 10 mm
        QCOMPARE(p_->Sf_min->text(), QStringLiteral("10,727"));
        QCOMPARE(p_->Sf_max->text(), QStringLiteral("118,000"));

        // Dragging shows the width; letting go drives the bellows to it.
        p_->Slider1->setSliderDown(true);
        p_->Slider1->setSliderPosition(23600);
        QCOMPARE(p_->lblSehfeld->text(), QStringLiteral("23,600"));
        QCOMPARE(control_->Sehfeld(), QStringLiteral("23,6"));
        rig_->control->Output(QStringLiteral("W100#"));
        rig_->takeCommands();
        p_->Slider1->setSliderDown(false);  // 1180 / 23.6 - 60 + 50 = 40 mm = 1920 steps
        QCOMPARE(rig_->link().AchsPosition()[1], 1920);
        QCOMPARE(rig_->takeCommands().last(), QStringLiteral("T1920#"));
    }

    void microscopeFocusSliderSendsOnRelease() {
        QVERIFY(start());
        control_->setControltyp(2);
        control_->show();
        p_->Slider2->setValue(300);
        QTest::mouseRelease(p_->Slider2, Qt::RightButton);
        QTest::mouseRelease(p_->Slider2, Qt::LeftButton);
        rig_->settle(0.1);
        QCOMPARE(rig_->takeCommands(), QStringList({"b#", "t300#"}));
    }
};

QTEST_MAIN(TestOptics)
#include "tst_optics.moc"
