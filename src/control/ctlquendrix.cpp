// The control shell: design-time properties, container hooks and the settings utilities.
#include <quendrix/ctlQuendrix.h>

#include "control/changerclicks.h"
#include "control/hostfolder.h"
#include "control/riglayout.h"
#include "control/typednumbermarks.h"
#include "lighting/lighting.h"
#include "link/link.h"
#include "link/startup.h"
#include "motion/motion.h"
#include "optics/calibration.h"
#include "optics/optics.h"
#include "settings/guard.h"
#include "settings/mapping.h"
#include "settings/numbers.h"
#include "settings/profile.h"
#include "settings/quicksort.h"
#include "settings/settingnumbers.h"
#include "settings/textformat.h"
#include "settings/wait.h"
#include "stacking/stacking.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSerialPort>
#include <QSlider>
#include <QTabWidget>
#include <QTcpSocket>
#include <QTimer>
#include <QVBoxLayout>

using namespace quendrix;

namespace {

// A stored entry as the text a box or caption shows: texts as they are, numbers as the
// control writes numbers.
QString entryText(const QVariant& entry, const QLocale& locale) {
    switch (entry.metaType().id()) {
        case QMetaType::Double:
            return doubleToText(entry.toDouble(), locale);
        case QMetaType::Float:
            return singleToText(entry.toFloat(), locale);
        default:
            return entry.toString();
    }
}

// A caption holds at most 1024 characters; a longer text is cut. The panel lays itself out
// around its captions, and one of a million characters would make it millions of pixels wide.
QString asCaption(const QString& text) {
    constexpr qsizetype kLongestCaption = 1024;
    return leftWhole(text, kLongestCaption);
}

// A stored entry as a whole number; an entry that holds no number counts as `fallback`, so a
// damaged bag never stops a host from loading its form.
qint32 entryNumber(const QVariant& entry, qint32 fallback) {
    bool ok = false;
    const double number = entry.toDouble(&ok);
    if (!ok) return fallback;
    try {
        return toLong(number);
    } catch (const RuntimeError&) {
        return fallback;
    }
}

}  // namespace

ctlQuendrix::ctlQuendrix(QWidget* parent)
    : QWidget(parent),
      panel_(std::make_unique<Panel>(this)),
      settingNumbers_(std::make_unique<SettingNumbers>(
          [this](const QString& section, const QString& key, const QString& byDefault) {
              return ini(section, key, byDefault);
          },
          [this](const QString& section, const QString& key, const QString& value,
                 const QString& used) {
              reportSettingProblem(
                  QStringLiteral("settings file %1, section [%2], key \"%3\": "
                                 "the value \"%4\" cannot be used; \"%5\" "
                                 "is used instead")
                      .arg(QDir::toNativeSeparators(inifile_), section, key, value.left(80), used));
          })),
      waiter_(std::make_unique<Waiter>(qtPlatform())),
      link_(std::make_unique<Link>(*this, *panel_, *waiter_)),
      motion_(std::make_unique<Motion>(*this, *panel_, *link_, *waiter_)),
      lighting_(std::make_unique<Lighting>(*this, *panel_, *link_)),
      calibration_(std::make_unique<Calibration>(*this, *panel_)),
      optics_(std::make_unique<Optics>(*this, *panel_, *link_, *motion_, *calibration_)),
      stacking_(std::make_unique<Stacking>(*this, *panel_, *link_, *motion_, *waiter_)),
      startup_(std::make_unique<Startup>(*this, *panel_, *link_, *waiter_)),
      platform_(&qtPlatform()) {
    setObjectName(QStringLiteral("ctlQuendrix1"));
    if (!layout()) {
        // The control is exactly as large as its tab control.
        auto* box = new QVBoxLayout(this);
        box->setContentsMargins(0, 0, 0, 0);
        box->setSizeConstraint(QLayout::SetFixedSize);
        box->addWidget(panel_->SSTab1);
    }
    for (QRadioButton* axis : panel_->obMotor)
        connect(axis, &QRadioButton::toggled, this,
                guardedSlot(*this, [this] { showSelectedAxis(); }));
    startup_->showOperatingTab = [this] { showOperatingTab(); };
    connect(panel_->SSTab1, &QTabWidget::currentChanged, this, [this](int tab) {
        const int previous = shownTab_;
        shownTab_ = tab;
        runGuarded(platform(), [&] { tabChanged(previous); });
    });
    Initialize();
    new ChangerClicks(*this, *panel_);
    new TypedNumberMarks(*this, *panel_);
}

ctlQuendrix::~ctlQuendrix() {
    Terminate();
}

// ---- Container hooks -----------------------------------------------------------------------

void ctlQuendrix::Initialize() {
    if (initialised_) return;
    // The panel is laid out in one column from the start; what remains of the one-time set-up
    // is the starting state: micro-stepping is offered only once the board says it has it,
    // and the bellows frame starts disabled with every control inside it.
    Panel& p = *panel_;
    p.cbMikroschritt[0]->setEnabled(false);
    p.cbMikroschritt[1]->setEnabled(false);
    p.Frame4->setEnabled(false);
    for (QWidget* child : p.Frame4->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        child->setEnabled(p.Frame4->isEnabled());
    p.FrameT[0]->setVisible(true);
    showSelectedAxis();
    initialised_ = true;
}

void ctlQuendrix::InitProperties() {
    setCaption(objectName());
}

void ctlQuendrix::ReadProperties(PropertyBag& PropBag) {
    Panel& p = *panel_;
    const QLocale locale = this->locale();

    App_Path = IDE() ? designerHostFolder(
                           [](const QString& folder) {
                               return !QDir(folder)
                                           .entryList(QDir::AllEntries | QDir::NoDotAndDotDot)
                                           .isEmpty();
                           },
                           platform().componentFolder())
                     : platform().componentFolder();

    setCaption(entryText(PropBag.ReadProperty(QStringLiteral("Caption"), objectName()), locale));
    setValue(p.cbMikroschritt[0],
             entryNumber(PropBag.ReadProperty(QStringLiteral("Mikroschritt0"), 0), 0));
    setValue(p.cbMikroschritt[1],
             entryNumber(PropBag.ReadProperty(QStringLiteral("Mikroschritt1"), 0), 0));
    motorArt_[0] = entryNumber(PropBag.ReadProperty(QStringLiteral("MotorArt0"), 0), 0);
    motorArt_[1] = entryNumber(PropBag.ReadProperty(QStringLiteral("MotorArt1"), 0), 0);
    kennung_ =
        entryText(PropBag.ReadProperty(QStringLiteral("Kennung"), QStringLiteral("qQ")), locale);

    settingNumbers_->forgetReports();
    inifile_ = deriveIniFile(
        App_Path, entryText(PropBag.ReadProperty(QStringLiteral("inifile"), QString()), locale),
        [](const QString& file) {
            return profile::readString(file, QStringLiteral("Arduino"), QStringLiteral("Anlage"),
                                       QStringLiteral("L"));
        });

    motorName_ = entryText(
        PropBag.ReadProperty(QStringLiteral("MotorName"), QStringLiteral("Platz0")), locale);
    p.txOffset->setText(entryText(PropBag.ReadProperty(QStringLiteral("AzOffset"), 0), locale));
    p.Sensor_breite->setText(
        entryText(PropBag.ReadProperty(QStringLiteral("Sensorbreite"), 0), locale));
    p.txBrennweite->setText(
        entryText(PropBag.ReadProperty(QStringLiteral("Brennweite"), 0), locale));

    p.lblCaption->setText(Caption());
    p.Frame9->setTitle(
        asCaption(entryText(PropBag.ReadProperty(QStringLiteral("Kameratyp"), 0), locale)));
    p.lblSehfeld->setText(
        asCaption(entryText(PropBag.ReadProperty(QStringLiteral("Sehfeld"), 0), locale)));
    p.lblSehfeld->setToolTip(p.lblSehfeld->text());

    controltyp_ = qint16(std::clamp(
        entryNumber(PropBag.ReadProperty(QStringLiteral("Controltyp"), 0), 0), -32768, 32767));
    p.obMotor[0]->setChecked(true);
    try {
        p.Slider1->setValue(toLong(textToDouble(p.lblSehfeld->text(), locale) * 1000));
    } catch (const RuntimeError&) {
        // A field of view that is no number leaves the slider where it is.
    }
    layoutForRigType();
}

void ctlQuendrix::WriteProperties(PropertyBag& PropBag) const {
    const Panel& p = *panel_;
    PropBag.WriteProperty(QStringLiteral("Caption"), Caption(), objectName());
    PropBag.WriteProperty(QStringLiteral("Mikroschritt0"), value(p.cbMikroschritt[0]), 0);
    PropBag.WriteProperty(QStringLiteral("Mikroschritt1"), value(p.cbMikroschritt[1]), 0);
    PropBag.WriteProperty(QStringLiteral("MotorArt0"), motorArt_[0], QStringLiteral("0"));
    PropBag.WriteProperty(QStringLiteral("MotorArt1"), motorArt_[1], QStringLiteral("0"));
    PropBag.WriteProperty(QStringLiteral("Kennung"), kennung_, QStringLiteral("qQ"));
    PropBag.WriteProperty(QStringLiteral("inifile"), inifile_, QString());
    PropBag.WriteProperty(QStringLiteral("MotorName"), motorName_, QString());
    PropBag.WriteProperty(QStringLiteral("AzOffset"), p.txOffset->text(), QStringLiteral("0"));
    PropBag.WriteProperty(QStringLiteral("Sensorbreite"), p.Sensor_breite->text(),
                          QStringLiteral("0"));
    PropBag.WriteProperty(QStringLiteral("Brennweite"), p.txBrennweite->text(),
                          QStringLiteral("40.5"));
    PropBag.WriteProperty(QStringLiteral("Kameratyp"), p.Frame9->title(), QStringLiteral(" "));
    PropBag.WriteProperty(QStringLiteral("Sehfeld"), p.lblSehfeld->text(), QStringLiteral("0"));
    PropBag.WriteProperty(QStringLiteral("Controltyp"), controltyp_, 0);
}

void ctlQuendrix::Terminate() {
    // Any wait still running ends at once, and none starts any more.
    link_->terminate();
    waiter_->cancelAll();
    // A connected socket sends what it still holds before it closes; one still looking up or
    // connecting would only be marked for closing, and connect later: that attempt is ended.
    QTcpSocket* socket = panel_->Telnet1;
    const QAbstractSocket::SocketState state = socket->state();
    if (state == QAbstractSocket::HostLookupState || state == QAbstractSocket::ConnectingState)
        socket->abort();
    else if (state != QAbstractSocket::UnconnectedState)
        socket->close();
}

// ---- Rig layout ----------------------------------------------------------------------------

void ctlQuendrix::layoutForRigType() {
    applyRigLayout(*panel_, controltyp_);
    panel_->obMotor[0]->setChecked(true);
    Zuruecksetzen();
    showOperatingTab();
}

void ctlQuendrix::showOperatingTab() {
    {
        const QSignalBlocker quiet(panel_->SSTab1);
        panel_->SSTab1->setCurrentIndex(0);
    }
    shownTab_ = 0;
    tabChanged(0);
}

void ctlQuendrix::showSelectedAxis() {
    for (int axis = 0; axis < 2; ++axis)
        panel_->FrameT[axis]->setVisible(panel_->obMotor[axis]->isChecked());
}

void ctlQuendrix::tabChanged(int previousTab) {
    Panel& p = *panel_;
    const int tab = p.SSTab1->currentIndex();
    if (tab == 0) {
        p.obMotor[0]->setChecked(true);
        p.FrameT[0]->setVisible(p.obMotor[0]->isChecked());
        // The limit-switch and direction settings edited on the settings tabs go to the board.
        if (previousTab >= 1 && link_->bBereit) {
            if (controltyp_ == 0 || controltyp_ == 2) {
                Output(QStringLiteral("t1#"));
                waiter_->doEvents();
            }
            Output(QStringLiteral("T1#"));
            waiter_->doEvents();
        }
    }
    p.cbOptik->setToolTip(tab >= 2 ? Panel::tr("Objektiv auswählen oder neues Objektiv eingeben")
                                   : Panel::tr("Objektiv auswählen"));
}

// ---- Design-time properties ----------------------------------------------------------------

bool ctlQuendrix::IDE() const {
    return platform_->inDesigner();
}

void ctlQuendrix::setMotorName(const QString& value) {
    motorName_ = value;
    emit PropertyChanged(QStringLiteral("MotorName"));
}

void ctlQuendrix::setMotorArt0(qint32 value) {
    motorArt_[0] = value;
    emit PropertyChanged(QStringLiteral("MotorArt0"));
}

void ctlQuendrix::setMotorArt1(qint32 value) {
    motorArt_[1] = value;
    emit PropertyChanged(QStringLiteral("MotorArt1"));
}

void ctlQuendrix::setControltyp(qint16 value) {
    controltyp_ = value;
    emit PropertyChanged(QStringLiteral("Controltyp"));
    layoutForRigType();
}

void ctlQuendrix::setKennung(const QString& value) {
    kennung_ = value;
    emit PropertyChanged(QStringLiteral("Kennung"));
}

void ctlQuendrix::setinifile(const QString& value) {
    inifile_ = value;
    settingNumbers_->forgetReports();
    emit PropertyChanged(QStringLiteral("inifile"));
}

qint16 ctlQuendrix::Mikroschritt0() const {
    return qint16(value(panel_->cbMikroschritt[0]));
}

void ctlQuendrix::setMikroschritt0(qint16 value) {
    setMicroStepsOffered(0, value);
}

qint16 ctlQuendrix::Mikroschritt1() const {
    return qint16(value(panel_->cbMikroschritt[1]));
}

void ctlQuendrix::setMikroschritt1(qint16 value) {
    setMicroStepsOffered(1, value);
}

// The property lives in the axis's check box. A new value goes through the box, whose own
// handler stores it back here (and so reports it) and opens or closes the divisions.
void ctlQuendrix::setMicroStepsOffered(int axis, qint16 value) {
    if (value < 0 || value > 2) throw RuntimeError(RuntimeError::InvalidPropertyValue);
    QCheckBox* box = panel_->cbMikroschritt[axis];
    if (quendrix::value(box) != value) return setValue(box, value);
    emit PropertyChanged(axis == 0 ? QStringLiteral("Mikroschritt0")
                                   : QStringLiteral("Mikroschritt1"));
}

QString ctlQuendrix::Caption() const {
    return panel_->lblCaption->text();
}

void ctlQuendrix::setCaption(const QString& value) {
    panel_->lblCaption->setText(asCaption(value));
    emit PropertyChanged(QStringLiteral("Caption"));
}

QString ctlQuendrix::Sehfeld() const {
    return panel_->lblSehfeld->toolTip();
}

void ctlQuendrix::setSehfeld(const QString& value) {
    // The label is not written here: it follows the optics, and the slider follows the value.
    if (controltyp_ == 0) panel_->Slider1->setValue(toLong(textToDouble(value, locale()) * 1000));
    emit PropertyChanged(QStringLiteral("Sehfeld"));
}

QString ctlQuendrix::Kameratyp() const {
    return panel_->Frame9->title();
}

void ctlQuendrix::setKameratyp(const QString& value) {
    panel_->Frame9->setTitle(asCaption(value));
    emit PropertyChanged(QStringLiteral("Kameratyp"));
}

float ctlQuendrix::Brennweite() const {
    return textToSingle(panel_->txBrennweite->text(), locale());
}

void ctlQuendrix::setBrennweite(float value) {
    panel_->txBrennweite->setText(singleToText(value, locale()));
    emit PropertyChanged(QStringLiteral("Brennweite"));
}

float ctlQuendrix::Sensorbreite() const {
    return textToSingle(panel_->Sensor_breite->text(), locale());
}

void ctlQuendrix::setSensorbreite(float value) {
    // While the operator is typing a decimal comma, the half-typed number stays as it is.
    if (!panel_->Sensor_breite->text().endsWith(QLatin1Char(',')))
        panel_->Sensor_breite->setText(singleToText(value, locale()));
    emit PropertyChanged(QStringLiteral("Sensorbreite"));
}

double ctlQuendrix::AzOffset() const {
    return textToDouble(panel_->txOffset->text(), locale());
}

void ctlQuendrix::setAzOffset(double value) {
    panel_->txOffset->setText(doubleToText(value, locale()));
    emit PropertyChanged(QStringLiteral("AzOffset"));
}

// ---- Accessors -----------------------------------------------------------------------------

QSerialPort* ctlQuendrix::MSComm1() const {
    return panel_->MSComm1;
}
QTcpSocket* ctlQuendrix::Telnet1() const {
    return panel_->Telnet1;
}
QTimer* ctlQuendrix::Timer3() const {
    return panel_->Timer3;
}

void ctlQuendrix::setPlatform(Platform* platform) {
    platform_ = platform ? platform : &qtPlatform();
    waiter_->setPlatform(*platform_);
}

// ---- Start-up and shutdown -----------------------------------------------------------------

void ctlQuendrix::Comm_Starten() {
    startup_->Comm_Starten();
}
void ctlQuendrix::WiFi_Starten() {
    startup_->WiFi_Starten();
}
void ctlQuendrix::Motor_Starten() {
    startup_->Motor_Starten();
}
void ctlQuendrix::Motor_Abschalten() {
    startup_->Motor_Abschalten();
}

// ---- Command channel ----------------------------------------------------------------------

void ctlQuendrix::Output(const QString& Befehl) {
    link_->Output(Befehl);
}

void ctlQuendrix::Auswerten(const QString& ComInNeu, bool wifi) {
    link_->Auswerten(ComInNeu, wifi);
}

void ctlQuendrix::SetOK(bool Wert) {
    link_->SetOK(Wert);
}

// ---- Axis motion and lighting --------------------------------------------------------------

void ctlQuendrix::pAnheben() {
    motion_->pAnheben();
}
void ctlQuendrix::pAbsenken() {
    motion_->pAbsenken();
}

void ctlQuendrix::Beleuchtung(qint16 EinAus) {
    lighting_->Beleuchtung(EinAus);
}
void ctlQuendrix::Ring(qint16 Modus) {
    lighting_->Ring(Modus);
}
void ctlQuendrix::Segment(qint16 Nummer) {
    lighting_->Segment(Nummer);
}
void ctlQuendrix::Farbe(qint16 Index) {
    lighting_->Farbe(Index);
}

// ---- Optics ---------------------------------------------------------------------------------

void ctlQuendrix::Optik_laden() {
    optics_->Optik_laden();
}
void ctlQuendrix::Optik_waehlen(const QString& Focus) {
    optics_->Optik_waehlen(Focus);
}
void ctlQuendrix::lbObjektiv_Change(qint16 Index) {
    optics_->lbObjektiv_Change(Index);
}
void ctlQuendrix::BildGroesse() {
    optics_->BildGroesse();
}
void ctlQuendrix::Balgen_einstellen() {
    optics_->Balgen_einstellen();
}

// ---- Stacks and averaging series ------------------------------------------------------------

void ctlQuendrix::Mittelw_Click() {
    stacking_->Mittelw_Click();
}
void ctlQuendrix::Schicht_Click() {
    stacking_->Schicht_Click();
}
void ctlQuendrix::Mittelwertbild() {
    stacking_->Mittelw_Click();
}
void ctlQuendrix::Schichtbild() {
    stacking_->Schicht_Click();
}
void ctlQuendrix::Zuruecksetzen() {
    stacking_->Zuruecksetzen();
}
void ctlQuendrix::Reset(qint16 Achse) {
    stacking_->Reset(Achse);
}
void ctlQuendrix::Kamera_aktiv(qint16 Aktiv) {
    stacking_->Kamera_aktiv(Aktiv != 0);
}

// ---- Settings store and utilities ----------------------------------------------------------

QString ctlQuendrix::ini(const QString& szGruppe, const QString& szitem, const QString& szDefault) {
    if (inifile_.isEmpty()) return szDefault;
    return profile::readString(inifile_, szGruppe, szitem, szDefault);
}

void ctlQuendrix::setini(const QString& KpAppName, const QString& KeyName,
                         const QString& keydefault) {
    if (inifile_.isEmpty()) return;
    QString error;
    if (!profile::writeString(inifile_, KpAppName, KeyName, keydefault, &error))
        reportSettingProblem(QStringLiteral("%1 (section [%2])").arg(error, KpAppName));
}

void ctlQuendrix::reportSettingProblem(const QString& message) {
    qWarning("Quendrix: %s", qPrintable(message));
    emit settingProblem(message);
}

bool ctlQuendrix::WasKeyPressed(qint32 plVirtualKey) {
    return platform_->isKeyDown(plVirtualKey);
}

float ctlQuendrix::map(qint32 x, qint32 in_min, qint32 in_max, qint32 out_min, qint32 out_max) {
    return mapRange(x, in_min, in_max, out_min, out_max);
}

void ctlQuendrix::QuickSortReihe(VariantTable& AvSort, qint16 Spalte) {
    quickSortRows(AvSort, Spalte);
}

void ctlQuendrix::QuickSortReihe(VariantTable& AvSort, qint16 Spalte, qint32 lngStart,
                                 qint32 lngEnd) {
    quickSortRows(AvSort, Spalte, lngStart, lngEnd);
}

void ctlQuendrix::QuickSortReihe(DoubleTable& AvSort, qint16 Spalte) {
    quickSortRows(AvSort, Spalte);
}

void ctlQuendrix::QuickSortReihe(DoubleTable& AvSort, qint16 Spalte, qint32 lngStart,
                                 qint32 lngEnd) {
    quickSortRows(AvSort, Spalte, lngStart, lngEnd);
}
