#pragma once

#include <quendrix/Array2D.h>
#include <quendrix/Panel.h>
#include <quendrix/Platform.h>
#include <quendrix/PropertyBag.h>
#include <quendrix/quendrix_export.h>

#include <QString>
#include <QVariant>
#include <QWidget>
#include <memory>

class QSerialPort;
class QTcpSocket;
class QTimer;

namespace quendrix {
class ControlParts;
}  // namespace quendrix

// The Quendrix panel: drives the motor axes, lenses, lights and focus stacks of a
// macro/micro photography rig. A host places it on a window, restores its design-time
// properties (InitProperties on first placement, ReadProperties on every later load),
// opens the link to the rig and answers its events by taking pictures.
//
// Conversions that fail (a non-numeric text where a number is needed, an overflow, a
// division by zero) throw quendrix::RuntimeError to the calling host. Numbers are shown and
// read in the control's locale (QWidget::locale(), the system's unless the host sets one).
class QUENDRIX_EXPORT ctlQuendrix : public QWidget {
    Q_OBJECT
    // True while the panel runs inside a designer (read-only).
    Q_PROPERTY(bool IDE READ IDE)
    // The rig's name: the section of the settings file that holds its link ("Platz0").
    Q_PROPERTY(QString MotorName READ MotorName WRITE setMotorName)
    // Drive of axis 0: 0 stepper motor, 1 CAN bus drive, 2 DC motor.
    Q_PROPERTY(qint32 MotorArt0 READ MotorArt0 WRITE setMotorArt0)
    // Drive of axis 1: 0 stepper motor, 1 CAN bus drive, 2 DC motor.
    Q_PROPERTY(qint32 MotorArt1 READ MotorArt1 WRITE setMotorArt1)
    // Rig type: 0 distance rail and bellows, 1 distance rail and lens changer, 2
    // microscope. Setting it lays the panel out for that rig.
    Q_PROPERTY(qint16 Controltyp READ Controltyp WRITE setControltyp)
    // The characters the board announces its kind with ("qQ").
    Q_PROPERTY(QString Kennung READ Kennung WRITE setKennung)
    // The settings file (ReadProperties derives it from the host's own, see there).
    Q_PROPERTY(QString inifile READ inifile WRITE setinifile)
    // Micro-stepping of axis 0 (its check box's value).
    Q_PROPERTY(qint16 Mikroschritt0 READ Mikroschritt0 WRITE setMikroschritt0)
    // Micro-stepping of axis 1 (its check box's value).
    Q_PROPERTY(qint16 Mikroschritt1 READ Mikroschritt1 WRITE setMikroschritt1)
    // The panel's caption.
    Q_PROPERTY(QString Caption READ Caption WRITE setCaption)
    // The field of view in mm, as text.
    Q_PROPERTY(QString Sehfeld READ Sehfeld WRITE setSehfeld)
    // The camera's name; its lenses are kept in the settings section of that name.
    Q_PROPERTY(QString Kameratyp READ Kameratyp WRITE setKameratyp)
    // The focal length in mm.
    Q_PROPERTY(float Brennweite READ Brennweite WRITE setBrennweite)
    // The sensor's width in mm.
    Q_PROPERTY(float Sensorbreite READ Sensorbreite WRITE setSensorbreite)
    // The lens offset in mm that the calibration list gives.
    Q_PROPERTY(double AzOffset READ AzOffset WRITE setAzOffset)

signals:
    // The events, in the order hosts bind to them.
    // One plane of a stack is ready for its picture; Nr is the plane number.
    void Schicht(QString Nr);
    // The operator asks for a copy picture.
    void Kopie();
    // An averaging series of Anzahl pictures is due.
    void Mittelwert(QString Anzahl);
    // A finished stack of Anzahl layers is to be combined.
    void Kombinieren(QString Anzahl);
    // The field of view changed; Bildbreite is its width in mm, formatted "###0.000".
    void SehfeldNeu(QString Bildbreite);
    // Start-up has finished; bereit tells whether the rig is ready.
    void Bereitschaft(bool bereit);
    // A design-time property was set; the host marks its stored properties dirty.
    void PropertyChanged(QString PropertyName);
    // A value in the settings file could not be used (the panel went on with the key's
    // default), or a value could not be stored as given (the file was left as it was). The
    // message names the file, the section and the key; it also goes to Qt's warning output.
    void settingProblem(QString message);
    // The board stopped acknowledging its commands (several in a row went unanswered within
    // their waits: it hears but does not answer), or answers again. The panel goes on as
    // documented, each command costing its full waits; the host decides what to tell.
    void acknowledgingChanged(bool acknowledging);

public:
    // Builds the panel with every control; the link stays closed until the host starts it.
    explicit ctlQuendrix(QWidget* parent = nullptr);
    ~ctlQuendrix() override;

    // Public variables.
    qint16 Quittierung = 0;        // 0 = keine Kommunikation, 1 = Kommunikation möglich
    bool wifi = false;             // true: the link runs over Telnet1 instead of MSComm1
    QVariant Aktiv;                // kept for the host; the panel does not use it
    QVariant Basis;                // kept for the host; the panel does not use it
    QString App_Path;              // the host's folder, set by ReadProperties
    QString Objektiv;              // index of the selected lens, as text
    double Gesamtauszug = 0;       // the bellows' total extension in mm, with extension rings
    QVariant Intervall;            // kept for the host; the panel does not use it
    quendrix::DoubleTable Matrix;  // the loaded calibration table (column, row)

    // Read and set the design-time property of the same name; each set raises PropertyChanged
    // with the property's name.
    //@{
    bool IDE() const;
    QString MotorName() const { return motorName_; }
    void setMotorName(const QString& value);
    qint32 MotorArt0() const { return motorArt_[0]; }
    void setMotorArt0(qint32 value);
    qint32 MotorArt1() const { return motorArt_[1]; }
    void setMotorArt1(qint32 value);
    qint16 Controltyp() const { return controltyp_; }
    void setControltyp(qint16 value);
    QString Kennung() const { return kennung_; }
    void setKennung(const QString& value);
    QString inifile() const { return inifile_; }
    void setinifile(const QString& value);
    qint16 Mikroschritt0() const;
    void setMikroschritt0(qint16 value);
    qint16 Mikroschritt1() const;
    void setMikroschritt1(qint16 value);
    QString Caption() const;
    void setCaption(const QString& value);
    QString Sehfeld() const;
    void setSehfeld(const QString& value);
    QString Kameratyp() const;
    void setKameratyp(const QString& value);
    float Brennweite() const;
    void setBrennweite(float value);
    float Sensorbreite() const;
    void setSensorbreite(float value);
    double AzOffset() const;
    void setAzOffset(double value);
    //@}

    // Container hooks. Initialize runs in the constructor and Terminate in the destructor.
    // InitProperties gives the properties their defaults on a first placement (the caption
    // is the object name).
    void InitProperties();
    // Restores the properties on every later load, finds the host's folder (App_Path) and the
    // settings file (host.ini with Anlage=L in [Arduino] gives host_L.ini beside it) and lays
    // the panel out for Controltyp. An entry the panel cannot take throws RuntimeError.
    void ReadProperties(quendrix::PropertyBag& PropBag);
    // Stores the properties; a value equal to its default is left out of the bag.
    void WriteProperties(quendrix::PropertyBag& PropBag) const;
    // Ends every wait still running (for an acknowledgement, a release, a move) at once, and
    // makes later ones return at once. A host that closes its window while the control may be
    // waiting calls it first and destroys the control with deleteLater().
    void Terminate();

    // The transports, the run timer and the panel form.
    //@{
    QSerialPort* MSComm1() const;
    QTcpSocket* Telnet1() const;
    QTimer* Timer3() const;
    quendrix::Panel* panel() const { return panel_.get(); }
    //@}
    // The surroundings the control asks for dialogs, time and keys; qtPlatform() unless set.
    quendrix::Platform& platform() const { return *platform_; }
    // Puts `platform` in place of qtPlatform() (nullptr: qtPlatform() again). The control does
    // not own it; it must outlive the control.
    void setPlatform(quendrix::Platform* platform);

    // Settings store and utilities.
    // Reads a value of the INI file named by inifile; szDefault when inifile is empty or the
    // section or key is missing.
    Q_INVOKABLE QString ini(const QString& szGruppe, const QString& szitem,
                            const QString& szDefault);
    // Writes a value to the INI file named by inifile; nothing when inifile is empty.
    Q_INVOKABLE void setini(const QString& KpAppName, const QString& KeyName,
                            const QString& keydefault);
    // True while the key with this virtual-key code (27 = Escape) is held down.
    Q_INVOKABLE bool WasKeyPressed(qint32 plVirtualKey);
    // (out_max - out_min) * (x - in_min) / ((in_max - in_min) + out_min), in 32-bit
    // arithmetic; note that out_min is added to the divisor.
    Q_INVOKABLE float map(qint32 x, qint32 in_min, qint32 in_max, qint32 out_min, qint32 out_max);
    // Sorts the records (second index) of AvSort ascending by the field Spalte; without
    // lngStart and lngEnd the whole table.
    //@{
    Q_INVOKABLE void QuickSortReihe(quendrix::VariantTable& AvSort, qint16 Spalte);
    Q_INVOKABLE void QuickSortReihe(quendrix::VariantTable& AvSort, qint16 Spalte, qint32 lngStart,
                                    qint32 lngEnd);
    void QuickSortReihe(quendrix::DoubleTable& AvSort, qint16 Spalte);
    void QuickSortReihe(quendrix::DoubleTable& AvSort, qint16 Spalte, qint32 lngStart,
                        qint32 lngEnd);
    //@}

    // Bringing the rig into service and out of it.
    // Opens the serial port named by the settings ("port", "baud" in the section MotorName),
    // identifies the board and, when it is a known rig, runs Motor_Starten.
    Q_INVOKABLE void Comm_Starten();
    // The same over WiFi: connects to the settings' "IP" (host, or host:port; port 23).
    Q_INVOKABLE void WiFi_Starten();
    // Configures the board from the settings file and fills the panel; ends by raising
    // Bereitschaft with whether the rig is ready.
    Q_INVOKABLE void Motor_Starten();
    // Stops the axes and lights, writes the state back to the settings file and closes the
    // serial port.
    Q_INVOKABLE void Motor_Abschalten();

    // Command channel.
    // Sends one command to the board ("t16#", "l0!"): waits up to 2 s for the previous
    // command's acknowledgement, sends, then waits up to 2 s for this one's. A missing
    // acknowledgement is not an error. Over the socket a CR LF is added unless present.
    Q_INVOKABLE void Output(const QString& Befehl);
    // Evaluates text that arrived from the board (wifi: it came over the socket).
    Q_INVOKABLE void Auswerten(const QString& ComInNeu, bool wifi);
    // The host's release: a run that waits for the host (a stack waiting for its picture to be
    // taken) goes on once the host calls SetOK(true); the host resets it with SetOK(false).
    Q_INVOKABLE void SetOK(bool Wert);
    // Whether the board acknowledges its commands (see acknowledgingChanged).
    bool acknowledging() const;
    // How many commands went out through Output since the panel was made.
    quint64 commandsSent() const;
    // How many of them the board left unanswered within their waits.
    quint64 commandsUnanswered() const;

    // Axis motion.
    // Raises axis 0 by the amount in the raise box, unless it is raised already.
    Q_INVOKABLE void pAnheben();
    // Lowers axis 0 again after pAnheben.
    Q_INVOKABLE void pAbsenken();

    // Lighting.
    // EinAus 0 switches every light off; any other value switches each light as its check
    // box on the panel says.
    Q_INVOKABLE void Beleuchtung(qint16 EinAus);
    // Sets the ring light's mode.
    Q_INVOKABLE void Ring(qint16 Modus);
    // Switches a segment of the ring light on.
    Q_INVOKABLE void Segment(qint16 Nummer);
    // Asks for a colour intensity (0 white, 1 red, 2 green, 3 blue) and sends it. A text that
    // is no number throws quendrix::RuntimeError (type mismatch) and sends nothing.
    Q_INVOKABLE void Farbe(qint16 Index);

    // Optics.
    // Rebuilds the lens list from the settings file and selects the lens stored as current.
    Q_INVOKABLE void Optik_laden();
    // Selects the first lens whose name contains Focus (e.g. "100").
    Q_INVOKABLE void Optik_waehlen(const QString& Focus);
    // A lens-changer position got a new caption: it is stored and the changer told.
    Q_INVOKABLE void lbObjektiv_Change(qint16 Index);
    // Computes the field of view for the lens and rig now set, shows it and raises SehfeldNeu.
    Q_INVOKABLE void BildGroesse();
    // Sets the field-of-view slider's range to what the bellows can reach.
    Q_INVOKABLE void Balgen_einstellen();

    // Stacks and averaging series.
    //
    // How a host answers the events of a run: on Schicht, take the picture of plane Nr; the
    // run then waits (up to 31 s, after which it tells the operator) until the host releases
    // it with SetOK(true). The release stays given until the host takes it back: a host that
    // takes its picture inside its Schicht handler simply calls SetOK(true) before returning;
    // a host that takes pictures in the background calls SetOK(false) in the handler and
    // SetOK(true) once the picture is saved. On Kombinieren(Anzahl), combine the stack's
    // pictures; on Mittelwert(Anzahl), average the series; on Kopie, take a copy picture.
    //
    // Starts an averaging series of "Serie" pictures (settings section "Verzeichnis").
    Q_INVOKABLE void Mittelw_Click();
    // Asks the host for one picture (raises Schicht with the next layer number).
    Q_INVOKABLE void Schicht_Click();
    // The same as Mittelw_Click.
    Q_INVOKABLE void Mittelwertbild();
    // The same as Schicht_Click.
    Q_INVOKABLE void Schichtbild();
    // Clears the layer counter ("Schicht: 0") and disables Combine.
    Q_INVOKABLE void Zuruecksetzen();
    // Sends the reset command of an axis ("x#", "X#").
    Q_INVOKABLE void Reset(qint16 Achse);
    // Enables or disables the capture buttons (not 0: enabled).
    Q_INVOKABLE void Kamera_aktiv(qint16 Aktiv);

private:
    void Initialize();
    // Adapts the panel to the rig chosen by Controltyp, then shows axis 0 on tab 0.
    void layoutForRigType();
    // The motion frame shown is the one of the selected axis.
    void showSelectedAxis();
    // Completes the panel for the tab now shown; previousTab is the one shown before. Back on
    // tab 0 from a settings tab, the ready board takes over the settings edited there.
    void tabChanged(int previousTab);
    // The panel's own return to tab 0 (a new rig layout, the shutdown): handled as coming from
    // tab 0, so it sends nothing.
    void showOperatingTab();

    void reportSettingProblem(const QString& message);

    std::unique_ptr<quendrix::Panel> panel_;
    // The link, the subsystems and start-up behind the façade.
    std::unique_ptr<quendrix::ControlParts> parts_;
    friend class quendrix::ControlParts;
    quendrix::Platform* platform_;
    bool initialised_ = false;
    int shownTab_ = 0;

    QString motorName_;
    qint32 motorArt_[2] = {0, 0};
    qint16 controltyp_ = 0;
    QString kennung_;
    QString inifile_;
};
