#pragma once

#include <QObject>
#include <QString>
#include <functional>

class QWidget;

namespace quendrix {

class Calibration;
class Lighting;
class Link;
class Motion;
class OpticalSetup;
class Optics;
class Panel;
class Rig;
class Stacking;
class Waiter;

// The parts of the control that start-up configures and shutdown reads back.
struct RigParts {
    Motion& motion;
    Lighting& lighting;
    Optics& optics;
    Calibration& calibration;
    Stacking& stacking;
    OpticalSetup& optical;
};

// Bringing the rig into service and out of it: opening the serial or WiFi link and
// identifying the board (Comm_Starten, WiFi_Starten), configuring it from the settings file
// (Motor_Starten, which ends by raising Bereitschaft), and stopping it with its state written
// back (Motor_Abschalten).
class Startup : public QObject {
    Q_OBJECT

public:
    // control is the widget the panel is shown in (held while start-up fills the panel); wifi
    // the control's public variable that tells which transport the link runs over.
    Startup(Rig& rig, QWidget& control, Panel& panel, Link& link, Waiter& waiter,
            const RigParts& parts, bool& wifi);

    void Comm_Starten();
    void WiFi_Starten();
    void Motor_Starten();
    void Motor_Abschalten();

    // The motor-selection panel's buttons that start-up presses: Setzen hands the limit-switch
    // and direction settings of the selected axis to the board ("t1#" / "T1#"); typ sends the
    // light module's type ("m1!" then "s0!").
    void Setzen_Click();
    void typ_Click();

    // The serial device for the settings' port value: a number n is the first existing of
    // /dev/ttyACMn, /dev/ttyUSBn, /dev/ttySn (COMn on Windows); anything else is a device name.
    static QString serialDeviceFor(const QString& port);
    // Host and port of the settings' address: "host" or "host:port" (default port 23).
    static std::pair<QString, quint16> wifiAddressFor(const QString& address);

    // Shows tab 0 without a return from a settings tab (the control sets it).
    std::function<void()> showOperatingTab;

signals:
    // Start-up has finished; bereit tells whether the rig is ready.
    void Bereitschaft(bool bereit);

private:
    bool identifiedBoard(const QString& line) const;
    // The settings of each rig type onto the panel and to the board (Controltyp 0, 1, 2);
    // each ends with the rig ready.
    void configureBellowsRig();
    void configureLensChangerRig();
    void configureSingleAxisRig();

    Rig& rig_;
    QWidget& control_;
    Panel& panel_;
    Link& link_;
    Waiter& waiter_;
    RigParts parts_;
    bool& wifi_;
};

}  // namespace quendrix
