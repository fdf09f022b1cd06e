// The rig's settings, read from the settings file onto the panel and handed to the board, one
// sequence per rig type. The board expects its settings in exactly these orders.
//
// A setting needed as a number counts by its leading number, and a text without one as 0; a
// number beyond any range, or a value the panel has nothing for (a sixth micro-step division, a
// third light module), counts as the setting's default and is reported. A display computed from
// the settings (millimetres, extension, field of view) that they give nothing to compute with
// (no steps per revolution, a lens focused at infinity) is left as it was (runQuietly); the
// board is configured all the same. Boxes whose own
// handlers would talk to the board are set quietly: the sequences send what the board needs
// themselves.
#include "core/readout.h"
#include "core/speed.h"
#include "lighting/lighting.h"
#include "link/link.h"
#include "motion/motion.h"
#include "optics/calibration.h"
#include "optics/opticalsetup.h"
#include "optics/optics.h"
#include "settings/guard.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/settingnumbers.h"
#include "settings/textformat.h"
#include "settings/wait.h"
#include "stacking/stacking.h"
#include "startup/startup.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSlider>
#include <optional>

namespace quendrix {

namespace {

constexpr int kDivisions = 5;  // micro-step exponents 0 to 4

// A number as the board reads it: no blanks, a decimal point.
QString commandNumber(double value) {
    return doubleToText(value, QLocale::c());
}

// The steps of the sequences, each reading its keys and sending its commands.
class RigSetup {
public:
    RigSetup(Rig& rig, Panel& panel, Link& link, Waiter& waiter, Startup& startup,
             const RigParts& parts)
        : rig_(rig),
          p_(panel),
          link_(link),
          waiter_(waiter),
          startup_(startup),
          parts_(parts),
          motion_(parts.motion),
          numbers_(rig.settingNumbers()) {}

    // The stack's pause and number of planes, and how far axis 0 is raised.
    void stackTiming() {
        p_.wartezeit->setText(numberText(0, "Wartezeit", QStringLiteral("150")));
        const QString planes = numberText(0, "Serie", QStringLiteral("20"));
        p_.Ebenen->setText(planes);
        setTag(p_.Ebenen, planes);
    }
    void raiseAmount(const QString& byDefault) {
        p_.Anheben->setText(numberText(0, "anheben", byDefault));
    }

    void camera() {
        const QString section = parts_.optical.Kameratyp();
        const QString width = numbers_.numberText(section, QStringLiteral("Bildbreite"), "22,5");
        parts_.optical.setSensorbreite(singleIn(width));
        p_.SensorBreiteP->setText(
            numbers_.numberText(section, QStringLiteral("basisaufloesungx"), "1024"));
        p_.SensorBreiteA->setText(
            numbers_.numberText(section, QStringLiteral("aufloesungx"), "1024"));
        p_.Zwischenringe->setText(numbers_.numberText(
            section, QStringLiteral("zwischenringe") + rig_.MotorName().right(1), "0"));
    }

    // The board's status of the axis; a status without a division ("*") means the board cannot
    // switch micro-steps on this axis.
    void queryAxis(int axis) {
        link_.Output(QStringLiteral("?%1#\r\n").arg(axis));
        waiter_.doEvents();
        if (!link_.sKennText()[axis].contains(u'*')) p_.cbMikroschritt[axis]->setEnabled(false);
    }

    // Lead per revolution and full steps per revolution.
    void drive(int axis, const QString& lead, const QString& steps) {
        p_.Steigung[axis]->setText(numberText(axis, "Steigung", lead));
        p_.Schritte[axis]->setText(numberText(axis, "Schritte", steps));
    }

    // Whether micro-steps are offered; its box opens the divisions.
    void microStepsOffered(int axis) {
        const qint16 current =
            axis == 0 ? parts_.motion.Mikroschritt(0) : parts_.motion.Mikroschritt(1);
        const auto offered =
            qint16(wholeNumber(axis, "Mikroschritte", QString::number(current), 0, 2));
        if (axis == 0)
            parts_.motion.setMikroschritt(0, offered);
        else
            parts_.motion.setMikroschritt(1, offered);
    }

    // The division kept in the settings; it is selected without the button's handler, which
    // would store it back and send it.
    int storedDivision(int axis) {
        return wholeNumber(axis, "micro", QStringLiteral("0"), 0, kDivisions - 1);
    }
    void chooseDivision(int axis, int exponent) {
        const auto& options = axis == 0 ? p_.micro0 : p_.micro1;
        {
            const QSignalBlocker quiet(options[exponent]);
            options[exponent]->setChecked(true);
        }
        setTag(options[0], QString::number(exponent));
    }
    void fullSteps(int axis) { setTag(axis == 0 ? p_.micro0[0] : p_.micro1[0], "0"); }

    // The stored full-step pause, shown per micro-step of the division in force.
    void pause(int axis, const QString& byDefault) {
        QLineEdit* box = p_.Taktpause[axis];
        setTag(box, numberText(axis, "Taktpause", byDefault));
        box->setText(microStepPause(Val(tag(box)), motion_.exponentInForce(axis), rig_.locale()));
        send('w', axis, Trim(box->text()));
    }

    void startTime(int axis) { send('w', axis, commandNumber(number(axis, "startzeit", "-1500"))); }
    // The step stage is negative: the board reads 0 and more as micro-step divisions.
    void stage(int axis) {
        const double stage = number(axis, "stufe", QStringLiteral("-5"));
        send('g', axis, stage >= 0 ? QStringLiteral("-1") : commandNumber(stage));
    }

    void encoderKind(int axis) {
        p_.Encoderart[axis]->setText(setting(axis, "enc_wert", QStringLiteral("Analog")));
        setValue(p_.E_Typ[axis], checkState(axis, "enc_typ"));
    }
    void encoderRange(int axis) {
        motion_.setMinEncoder(axis, wholeNumber(axis, "minEncoder", QStringLiteral("0")));
        motion_.setMaxEncoder(axis, wholeNumber(axis, "maxEncoder", QStringLiteral("0")));
        setValue(p_.ENC[axis], checkState(axis, "enc"));
    }

    void travel(int axis, const QString& byDefault) {
        const qint32 steps = wholeNumber(axis, "MaxPosition", byDefault);
        motion_.setMaxPosition(axis, steps);
        p_.Label13[axis]->setText(QString::number(steps));
        send('m', axis, p_.Label13[axis]->text());
    }

    // The last known position: the board's counter starts from it.
    void position(int axis) {
        const qint32 steps = wholeNumber(axis, "Position", QStringLiteral("0"));
        link_.setAchsPosition(axis, steps);
        p_.lblPosition1[axis]->setText(QString::number(steps));
        std::optional<float> mm;
        runQuietly([&] { mm = motion_.Schritte_in_mm(axis, steps).mm; });
        if (mm) p_.lblPosition2[axis]->setText(millimetresText(*mm, rig_.locale()));
        if (axis == 0) {
            const bool inMillimetres = readoutInMillimetres(p_.Label9->text());
            if (const auto readout = positionReadout(steps, mm, inMillimetres, rig_.locale()))
                p_.lblPosition[0]->setText(*readout);
        }
        send('p', axis, p_.lblPosition1[axis]->text());
    }

    void internalDirection(int axis) {
        QCheckBox* box = p_.cbDrehrichtungArduino[axis];
        {
            const QSignalBlocker quiet(box);
            setValue(box, checkState(axis, "RichtungIntern"));
        }
        send('c', axis, QString::number(value(box)));
    }

    // Limit switch and direction; the board takes them over when Setzen is pressed.
    void switches(int axis) {
        QCheckBox* limit = p_.cbEndschalter[axis];
        QCheckBox* direction = p_.Check0[axis];
        const QSignalBlocker quietLimit(limit);
        const QSignalBlocker quietDirection(direction);
        setValue(limit, checkState(axis, "Endschalter"));
        setValue(direction, checkState(axis, "a_Richtung"));
    }
    // Setzen acts on the axis chosen with obMotor; the operator's choice comes back afterwards.
    // The one-axis rigs' common run: encoder limits, travel, position, direction, the switches
    // and the micro-step offer, handed over with Setzen.
    void limitsAndSwitches(int axis, const QString& travelByDefault) {
        encoderRange(axis);
        travel(axis, travelByDefault);
        position(axis);
        internalDirection(axis);
        switches(axis);
        microStepsOffered(axis);
        pressSetzen(axis);
    }

    void pressSetzen(int axis) {
        QRadioButton* chosen = p_.obMotor[1]->isChecked() ? p_.obMotor[1] : p_.obMotor[0];
        p_.obMotor[axis]->setChecked(true);
        startup_.Setzen_Click();
        chosen->setChecked(true);
    }

    // Backlash in steps; the link chooses its acknowledgements by it.
    void backlash(int axis) {
        const qint32 steps = wholeNumber(axis, "spiel", QStringLiteral("0"));
        p_.tSpiel[axis]->setText(QString::number(steps));
        link_.setBacklash(axis, steps);
        send('a', axis, Trim(p_.tSpiel[axis]->text()));
    }

    void stackRange() {
        p_.BBeginn[0]->setText(numberText(0, "Beginn", p_.BBeginn[0]->text()));
        p_.BEnde[0]->setText(numberText(0, "Ende", p_.BEnde[0]->text()));
    }
    void seriesCounter() { parts_.stacking.setSerie(parts_.stacking.seriesLength()); }

    // The brightness bars are set without sending: the lights follow once they are switched.
    void brightness(int channel, int axis, const char* key) {
        QScrollBar* bar = p_.HScroll1[channel];
        const QSignalBlocker quiet(bar);
        bar->setValue(wholeNumber(axis, key, QStringLiteral("255")));
    }

    // Which light the rig has: 0 the controller's two channels, 1 or more a light module, shown
    // in its frame. A module the panel has no frame for counts as none.
    void lightingMode() {
        const qint32 mode = numbers_.wholeNumber(rig_.MotorName(), "DLicht", "0", -32768,
                                                 qint32(p_.Frame13.size()));
        parts_.lighting.setDLicht(qint16(mode));
        if (mode >= 1) p_.Frame13[mode - 1]->setVisible(true);
    }
    // The light module is chosen and told its type; without one, both channels are set.
    void bellowsLights() {
        const qint16 mode = parts_.lighting.DLicht();
        if (mode < 1) {
            brightness(0, 0, "helligkeit0");
            brightness(1, 1, "helligkeit1");
            p_.Licht[0]->setChecked(true);
            return;
        }
        link_.Output(QStringLiteral("m%1!").arg(mode - 1));
        brightness(mode + 1, 0, "helligkeit0");
        p_.Licht[mode + 1]->setChecked(true);
        if (mode == 1)
            link_.Output(QStringLiteral("t5!"));
        else
            startup_.typ_Click();
    }

    // The lights go on, the optics follow the positions, and the light set above gets its
    // brightness through the bar's own handler.
    void bellowsFinish() {
        parts_.lighting.Beleuchtung(1);
        runQuietly([&] { parts_.optics.updateExtension(); });
        if (readoutInMillimetres(p_.Label9->text()))
            runQuietly([&] {
                p_.lblPosition[0]->setText(formatNumber(
                    motion_.Schritte_in_mm(0, -1).mm, QStringLiteral("##,##0.000"), rig_.locale()));
            });
        runQuietly([&] { parts_.optics.BildGroesse(); });
        const qint16 mode = parts_.lighting.DLicht();
        QScrollBar* bar = p_.HScroll1[mode < 1 ? 0 : mode + 1];
        emit bar->valueChanged(bar->value());
    }

    void changerCaptions() {
        for (int i = 0; i < int(p_.lbObjektiv.size()); ++i) {
            QLabel* caption = p_.lbObjektiv[i];
            caption->setText(setting(0, QStringLiteral("Objektiv%1").arg(i), caption->text()));
        }
    }

    void send(char letter, int axis, const QString& value) {
        link_.Output(axisLetter(letter, axis) + value + QLatin1Char('#'));
    }

private:
    QString setting(int axis, const QString& key, const QString& byDefault) {
        return rig_.ini(rig_.MotorName() + QString::number(axis), key, byDefault);
    }
    QString setting(int axis, const char* key, const QString& byDefault) {
        return setting(axis, QString::fromLatin1(key), byDefault);
    }
    QString section(int axis) const { return rig_.MotorName() + QString::number(axis); }
    QString numberText(int axis, const char* key, const QString& byDefault) {
        return numbers_.numberText(section(axis), QString::fromLatin1(key), byDefault);
    }
    double number(int axis, const char* key, const QString& byDefault) {
        return numbers_.number(section(axis), QString::fromLatin1(key), byDefault);
    }
    qint32 wholeNumber(int axis, const char* key, const QString& byDefault,
                       qint32 lowest = std::numeric_limits<qint32>::min(),
                       qint32 highest = std::numeric_limits<qint32>::max()) {
        return numbers_.wholeNumber(section(axis), QString::fromLatin1(key), byDefault, lowest,
                                    highest);
    }
    // A check box's state: 1 ticks it, anything else leaves it clear.
    int checkState(int axis, const char* key) {
        return number(axis, key, QStringLiteral("0")) == 1 ? 1 : 0;
    }

    // A width in mm as the control's locale writes it ("22,5"), else its leading number.
    float singleIn(const QString& text) const {
        try {
            return textToSingle(text, rig_.locale());
        } catch (const RuntimeError&) {
        }
        try {
            return toSingle(Val(text));
        } catch (const RuntimeError&) {
            return 0;
        }
    }

    Rig& rig_;
    Panel& p_;
    Link& link_;
    Waiter& waiter_;
    Startup& startup_;
    const RigParts& parts_;
    Motion& motion_;
    SettingNumbers& numbers_;
};

}  // namespace

// Distance axis 0 and bellows axis 1. The two axes take their settings in different orders.
void Startup::configureBellowsRig() {
    RigSetup rig(rig_, panel_, link_, waiter_, *this, parts_);
    rig.stackTiming();
    rig.raiseAmount(QStringLiteral("30"));
    rig.lightingMode();
    rig.camera();
    runQuietly([&] { parts_.calibration.load(); });

    rig.queryAxis(0);
    rig.drive(0, QStringLiteral("1"), QStringLiteral("1600"));
    rig.microStepsOffered(0);
    if (parts_.motion.Mikroschritt(0) < 1)
        rig.fullSteps(0);
    else
        rig.chooseDivision(0, rig.storedDivision(0));
    rig.pause(0, QStringLiteral("800"));
    rig.encoderKind(0);
    rig.encoderRange(0);
    rig.travel(0, QStringLiteral("560000"));
    rig.position(0);
    rig.internalDirection(0);
    rig.switches(0);
    rig.pressSetzen(0);
    rig.backlash(0);
    rig.startTime(0);
    rig.stage(0);
    rig.stackRange();
    runQuietly([&] { parts_.stacking.Ebenen_Change(); });
    rig.seriesCounter();

    rig.queryAxis(1);
    rig.drive(1, QStringLiteral("1,25"), QStringLiteral("48"));
    rig.microStepsOffered(1);
    rig.chooseDivision(1, rig.storedDivision(1));
    rig.pause(1, QStringLiteral("8000"));
    rig.startTime(1);
    rig.stage(1);
    rig.encoderKind(1);
    rig.encoderRange(1);
    rig.travel(1, QStringLiteral("4050"));
    setTag(panel_.Slider1, QStringLiteral("OK"));
    runQuietly([&] { parts_.optics.Balgen_einstellen(); });
    rig.position(1);
    rig.internalDirection(1);
    rig.switches(1);
    rig.pressSetzen(1);
    rig.backlash(1);

    rig.bellowsLights();
    rig.bellowsFinish();
    // The bellows controls, disabled until now, can be used once the bellows is configured.
    panel_.Frame4->setEnabled(true);
    for (QWidget* control : panel_.Frame4->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        control->setEnabled(true);
    link_.setBereit(true);
}

// One axis under a microscope or binocular stand; the division goes to the board at once.
void Startup::configureSingleAxisRig() {
    RigSetup rig(rig_, panel_, link_, waiter_, *this, parts_);
    rig.queryAxis(0);
    rig.stackTiming();
    rig.camera();
    rig.raiseAmount(QStringLiteral("0"));
    rig.drive(0, QStringLiteral("1"), QStringLiteral("400"));
    rig.microStepsOffered(0);
    if (parts_.motion.Mikroschritt(0) < 1) {
        rig.fullSteps(0);
        rig.send('g', 0, QStringLiteral("0"));
    } else {
        const int exponent = rig.storedDivision(0);
        rig.chooseDivision(0, exponent);
        rig.send('g', 0, QString::number(exponent));
    }
    waiter_.doEvents();
    link_.Output(QStringLiteral("h0#"));
    rig.pause(0, QStringLiteral("500"));
    rig.startTime(0);
    rig.stage(0);
    rig.limitsAndSwitches(0, QStringLiteral("1"));
    link_.Output(QStringLiteral("b#"));
    rig.brightness(0, 0, "helligkeit0");
    rig.brightness(1, 1, "helligkeit1");
    parts_.lighting.Beleuchtung(1);
    rig.backlash(0);
    rig.stackRange();
    rig.seriesCounter();
    link_.setBereit(true);
}

// Distance axis 0 and the five-position lens changer, whose captions are kept here too.
void Startup::configureLensChangerRig() {
    RigSetup rig(rig_, panel_, link_, waiter_, *this, parts_);
    rig.raiseAmount(QStringLiteral("30"));
    rig.stackTiming();
    rig.camera();
    rig.drive(0, QStringLiteral("1"), QStringLiteral("400"));
    rig.pause(0, QStringLiteral("500"));
    rig.limitsAndSwitches(0, QStringLiteral("1"));
    rig.brightness(0, 0, "helligkeit0");
    parts_.lighting.Beleuchtung(1);
    rig.backlash(0);
    rig.stackRange();
    rig.seriesCounter();
    rig.changerCaptions();
    link_.setBereit(true);
}

}  // namespace quendrix
