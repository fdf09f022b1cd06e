// Taking the rig out of service: the motors and lights are stopped, the run timer ends, the
// configuration and positions go back to the settings file under the keys Motor_Starten reads,
// and on the serial link the board is told to quit and the port is closed.
#include "link/link.h"
#include "motion/motion.h"
#include "optics/opticalsetup.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/wait.h"
#include "startup/startup.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QSerialPort>
#include <QTabWidget>
#include <QTimer>

namespace quendrix {

namespace {

QString number(qint64 value) {
    return QString::number(value);
}

// Writes the rig's state key by key. The order of the writes is the order in which new keys
// appear in the file, so it is kept as the next start-up reads them.
class StateWriter {
public:
    StateWriter(Rig& rig, const Panel& panel, const Link& link, const RigParts& parts)
        : rig_(rig), panel_(panel), link_(link), parts_(parts), motion_(parts.motion) {}

    // Position, the stack settings (axis 0 only), pause, micro-steps, encoder and travel.
    // withEncoderKind adds the encoder's kind and type, which only the two-axis rig keeps.
    void motion(int axis, bool withEncoderKind) const {
        put(axis, QStringLiteral("Position"), number(link_.AchsPosition()[axis]));
        if (axis == 0) {
            put(axis, QStringLiteral("Beginn"), panel_.BBeginn[0]->text());
            put(axis, QStringLiteral("Ende"), panel_.BEnde[0]->text());
            put(axis, QStringLiteral("Wartezeit"), panel_.wartezeit->text());
        }
        // The stored full-step pause, not the per-micro-step text shown.
        put(axis, QStringLiteral("Taktpause"), tag(panel_.Taktpause[axis]));
        if (axis == 0) put(axis, QStringLiteral("Serie"), panel_.Ebenen->text());
        // The first option button carries the exponent in force.
        put(axis, QStringLiteral("micro"), tag(axis == 0 ? panel_.micro0[0] : panel_.micro1[0]));
        put(axis, QStringLiteral("enc"), number(value(panel_.ENC[axis])));
        if (withEncoderKind) {
            put(axis, QStringLiteral("enc_wert"), panel_.Encoderart[axis]->text());
            put(axis, QStringLiteral("enc_typ"), number(value(panel_.E_Typ[axis])));
        }
        put(axis, QStringLiteral("MaxPosition"), number(motion_.maxPosition()[axis]));
    }

    // The direction, limit-switch and micro-step switches of an axis.
    void switches(int axis) const {
        put(axis, QStringLiteral("RichtungIntern"),
            number(value(panel_.cbDrehrichtungArduino[axis])));
        put(axis, QStringLiteral("Endschalter"), number(value(panel_.cbEndschalter[axis])));
        put(axis, QStringLiteral("Mikroschritte"),
            number(axis == 0 ? parts_.motion.Mikroschritt(0) : parts_.motion.Mikroschritt(1)));
        put(axis, QStringLiteral("a_Richtung"), number(value(panel_.Check0[axis])));
    }

    // The raise amount and the first light's brightness, both kept with axis 0.
    void raiseAndFirstLight() const {
        put(0, QStringLiteral("anheben"), panel_.Anheben->text());
        put(0, QStringLiteral("Helligkeit0"), brightness(0));
    }

    void secondLight() const { put(1, QStringLiteral("Helligkeit1"), brightness(1)); }

    // The camera: sensor width and pixels, lens offset and focal length.
    void camera() const {
        const QString section = parts_.optical.Kameratyp();
        rig_.setini(section, QStringLiteral("Bildbreite"), panel_.Sensor_breite->text());
        rig_.setini(section, QStringLiteral("basisaufloesungx"), panel_.SensorBreiteP->text());
        rig_.setini(section, QStringLiteral("offset"), panel_.txOffset->text());
        rig_.setini(section, QStringLiteral("Brennweite"), panel_.txBrennweite->text());
    }

    QString brightness(int channel) const { return number(panel_.HScroll1[channel]->value()); }

private:
    void put(int axis, const QString& key, const QString& text) const {
        rig_.setini(rig_.MotorName() + number(axis), key, text);
    }

    Rig& rig_;
    const Panel& panel_;
    const Link& link_;
    const RigParts& parts_;
    const Motion& motion_;
};

}  // namespace

void Startup::Motor_Abschalten() {
    // Shutting down from a settings tab does not hand its settings over: that moves the axes.
    showOperatingTab();
    waiter_.doEvents();

    // Motors and lights stop. The stop commands wait for their acknowledgements as every
    // command does; on a dead link they fail or time out and the state is saved regardless.
    const qint16 rigType = rig_.Controltyp();
    if (rigType != 0) {
        link_.Output(QStringLiteral("s#"));
        link_.Output(QLatin1Char('w') + Trim(panel_.Taktpause[0]->text()) + QLatin1Char('#'));
    } else {
        for (const char* command : {"l0#", "L0#", "l0!", "s#", "S#"})
            link_.Output(QString::fromLatin1(command));
    }
    panel_.Timer3->stop();  // no run goes on

    // The selected lens, per motor in the camera's section.
    rig_.setini(parts_.optical.Kameratyp(), QStringLiteral("Aktuell") + rig_.MotorName().right(1),
                number(panel_.cbOptik->currentIndex()));

    const StateWriter state(rig_, panel_, link_, parts_);
    switch (rigType) {
        case 0:  // two axes; the camera keys go between the second axis's travel and switches
            state.motion(0, true);
            state.switches(0);
            state.raiseAndFirstLight();
            state.motion(1, true);
            state.camera();
            state.switches(1);
            state.secondLight();
            break;
        case 1:  // distance axis and lens changer: the changer is told the light's brightness
            state.motion(0, false);
            state.switches(0);
            state.raiseAndFirstLight();
            link_.Output(QStringLiteral("d-") + state.brightness(0) + QLatin1Char('#'));
            break;
        case 2:  // one axis, with the second light channel kept in the second axis's section
            state.motion(0, false);
            state.switches(0);
            state.raiseAndFirstLight();
            state.secondLight();
            break;
        default:  // an unknown rig has no axis state of its own
            break;
    }

    waiter_.doEvents();
    link_.setBereit(false);

    // From here nothing may fail the shutdown: a port already gone or unplugged is no error.
    // The quit goes straight to the port; no acknowledgement is awaited.
    try {
        QSerialPort* port = panel_.MSComm1;
        if (!rig_.wifi() && port->isOpen()) {
            port->write(QByteArrayLiteral("Q#"));
            port->flush();
            port->close();
        }
        waiter_.doEvents();
    } catch (...) {  // NOLINT(bugprone-empty-catch): errors are ignored on the way out
    }
}

}  // namespace quendrix
