#pragma once

#include <quendrix/quendrix_export.h>

#include <QCoreApplication>
#include <QString>
#include <array>

class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QObject;
class QPushButton;
class QRadioButton;
class QScrollBar;
class QSerialPort;
class QSlider;
class QTabWidget;
class QTableWidget;
class QTcpSocket;
class QTimer;
class QWidget;

namespace quendrix {

// The panel form: every named control of the component, built once, like a generated form.
// Each control's objectName is its name; an element of a control array is named "Name(i)".
// Caption is the text, Value the check state (see value()), ToolTipText the tool tip and
// Tag the dynamic property "Tag" (see tag()).
class QUENDRIX_EXPORT Panel {
    Q_DECLARE_TR_FUNCTIONS(quendrix::Panel)  // captions in the installed translator's language

public:
    // Builds the controls as children of `owner`, laid out on the tab control SSTab1.
    explicit Panel(QWidget* owner);
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    // The tab control that holds every page, and the panel's caption.
    //@{
    QTabWidget* SSTab1;
    QLabel* lblCaption;
    //@}

    // Tab "Steuerung": axis selection, position readout and the motion check boxes.
    //@{
    std::array<QRadioButton*, 2> obMotor;
    std::array<QLabel*, 5> Image1;  // 0, 1: pictures of obMotor; 2..4: of Label4(2..4)
    std::array<QFrame*, 5> Shape1;  // the shapes beside the pictures
    std::array<QLabel*, 5> Label4;  // reference-point labels
    QLabel* Label9;                 // "Position [Schritte]" or "Position [mm]"
    std::array<QLabel*, 2> lblPosition;
    std::array<QLabel*, 2> lblPosition1;  // position in steps, per axis
    std::array<QLabel*, 2> lblPosition2;  // position in mm, per axis
    std::array<QLabel*, 2> lblEncoder;
    std::array<QLabel*, 2> Label13;    // travel length in steps, per axis
    std::array<QGroupBox*, 2> FrameT;  // the motion frame of each axis
    std::array<QCheckBox*, 8> Check0;  // run 0/1, direction 4/5, speed mode 6/7 (three-state)
    std::array<QLabel*, 2> Label7;     // direction glyph
    std::array<QLabel*, 2> Label8;     // speed glyph
    std::array<QGroupBox*, 2> Takt;    // timing of each axis
    std::array<QLineEdit*, 2> Taktpause;
    std::array<QPushButton*, 2> Taktsetzen;
    std::array<QPushButton*, 5> Auf;
    std::array<QPushButton*, 5> Ab;
    QPushButton* cmdHeben;
    QPushButton* cmdSenken;
    QLineEdit* Anheben;
    QLabel* Label41;
    QPushButton* Drehen;
    QSlider* Slider2;
    //@}

    // Bellows: jog, extension, field of view and its slider, calibration capture.
    //@{
    QGroupBox* Frame4;
    QGroupBox* Frame4a;
    QGroupBox* Balgenauszug;
    std::array<QPushButton*, 2> B_AUF;
    std::array<QPushButton*, 2> B_ZU;
    QLabel* lbAuszug;
    QLabel* Label6;
    QLabel* Label26;
    QLabel* Label15;
    QLabel* Label12;
    QLabel* Label18;
    QLabel* lblSehfeld;
    QLabel* lblSehfeld2;
    QSlider* Slider1;
    QLineEdit* Sf_min;
    QLineEdit* Sf_max;
    QLineEdit* Bildbreite;
    QCheckBox* Check1;
    QPushButton* cmdAufnehmen;
    QPushButton* cmdFertig;
    QPushButton* Kopie2;
    //@}

    // Focus stack and averaging series.
    //@{
    QGroupBox* Frame5;
    std::array<QLineEdit*, 1> BBeginn;
    std::array<QLineEdit*, 1> BEnde;
    QPushButton* Beginn;
    QPushButton* Ende;
    QLineEdit* Ebenen;
    QLineEdit* Schrittzahl;
    QLineEdit* Weglaenge;
    QLineEdit* Aufloesung;
    QLineEdit* wartezeit;
    QPushButton* AutoKomb;
    QPushButton* Mittelw;
    QPushButton* Schicht;
    QPushButton* Combine;
    QPushButton* Kopie;
    // A running stack's progress, and the spacing advisor (aperture and circle of confusion in,
    // the suggested number of planes out, and the button that takes it).
    QLabel* Fortschritt;
    QLineEdit* Blende;
    QLineEdit* Zerstreuungskreis;
    QLabel* Vorschlag;
    QPushButton* VorschlagUebernehmen;
    //@}

    // Lens changer and optics shown on the operating tab.
    //@{
    QGroupBox* Frame1;
    QGroupBox* Frame6;
    QGroupBox* Frame12;
    std::array<QLabel*, 5> lbObjektiv;
    QLabel* lblOptik;
    //@}

    // Log boxes: identification line (0) and last line received (1).
    std::array<QLineEdit*, 2> Text1;

    // Tab "Objektive": lens list, camera, calibration list.
    //@{
    QComboBox* cbOptik;
    QListWidget* OptikFaktor;  // hidden, index-aligned with cbOptik
    QPushButton* NeuObjektiv;
    QPushButton* NeuName;
    QPushButton* Speichern;
    QCheckBox* Autofokus;
    QGroupBox* Frame9;  // its caption is the camera type
    QLineEdit* Sensor_breite;
    QLineEdit* SensorBreiteA;
    QLineEdit* SensorBreiteP;
    QLineEdit* Zwischenringe;
    QCheckBox* Direktanzeige;
    QLineEdit* txBrennweite;
    QLineEdit* txOffset;
    QRadioButton* Option1;
    QPushButton* Synchron;
    QTableWidget* Grid1;
    QLineEdit* Zelle;         // the cell editor floated over Grid1
    QWidget* Kalibrierkurve;  // the calibration list's points and the line they give
    QPushButton* Loeschen;
    //@}

    // Tab "Achsen": per-axis configuration, connection.
    //@{
    std::array<QGroupBox*, 2> FrameM;
    std::array<QGroupBox*, 2> Frame;
    std::array<QGroupBox*, 2> FrameP;
    std::array<QCheckBox*, 2> cbEndschalter;
    std::array<QCheckBox*, 2> cbDrehrichtungArduino;
    std::array<QCheckBox*, 2> cbMikroschritt;
    std::array<QCheckBox*, 2> ENC;
    std::array<QLineEdit*, 2> Encoderart;
    std::array<QCheckBox*, 2> E_Typ;
    QGroupBox* Frame7;
    QGroupBox* Frame8;
    std::array<QRadioButton*, 5> micro0;
    std::array<QRadioButton*, 5> micro1;
    std::array<QLineEdit*, 2> Steigung;
    std::array<QLineEdit*, 2> Schritte;
    std::array<QLineEdit*, 2> tSpiel;
    std::array<QPushButton*, 2> cSpiel;
    QPushButton* Setzen;
    QPushButton* typ;
    QLineEdit* ComPort;
    QLineEdit* ComBaud;
    QCheckBox* Check2;
    //@}

    // Tab "Licht": two channels on the controller (0, 1) and the light module (2, 3).
    //@{
    std::array<QCheckBox*, 4> Licht;
    std::array<QScrollBar*, 4> HScroll1;
    std::array<QGroupBox*, 2> Frame13;  // light module frames, one per module type
    std::array<QPushButton*, 8> Seg;    // ring-light segments; caption = segment number
    //@}

    // Non-visual controls.
    //@{
    QSerialPort* MSComm1;
    QTcpSocket* Telnet1;
    QTimer* Timer3;
    //@}

private:
    void buildTabs(QWidget* owner);
    void buildOperatingTab(QWidget* page);
    void buildAxisSelection(QWidget* page);
    void buildPositionReadout(QWidget* page);
    void buildAxisMotion(QWidget* page);
    void buildMotionFrame(QWidget* page, int axis);
    void buildJogButtons(QGroupBox* frame);
    void buildBellows(QWidget* page);
    void buildStack(QWidget* page);
    void buildLensChanger(QWidget* page);
    void buildReferencePoints(QWidget* page);
    void buildLogBoxes(QWidget* page);
    void buildOpticsTab(QWidget* page);
    void buildCamera(QWidget* page);
    void buildLensList(QWidget* page);
    void buildCalibration(QWidget* page);
    void buildAxisSettingsTab(QWidget* page);
    void buildAxisSettings(QWidget* page, int axis);
    void buildMicrostep(QGroupBox* axisFrame, int axis);
    void buildDrive(QGroupBox* axisFrame, int axis);
    void buildConnection(QWidget* page);
    void buildLightingTab(QWidget* page);
    void buildNonVisual(QWidget* owner);
};

// VB-style access to panel controls.
// A check box's value: 0 unchecked, 1 checked, 2 grayed (the third state).
QUENDRIX_EXPORT int value(const QCheckBox* box);
QUENDRIX_EXPORT void setValue(QCheckBox* box, int value);
// The free text every control carries (the dynamic property "Tag").
QUENDRIX_EXPORT QString tag(const QObject* control);
QUENDRIX_EXPORT void setTag(QObject* control, const QString& text);

}  // namespace quendrix
