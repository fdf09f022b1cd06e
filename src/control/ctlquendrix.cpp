// The control shell: design-time properties, container hooks and the settings utilities.
#include <quendrix/ctlQuendrix.h>

#include "control/calibrationplot.h"
#include "control/changerclicks.h"
#include "control/hostfolder.h"
#include "control/internals.h"
#include "control/riglayout.h"
#include "control/typednumbermarks.h"
#include "lighting/lighting.h"
#include "link/link.h"
#include "motion/motion.h"
#include "optics/calibration.h"
#include "optics/opticalsetup.h"
#include "optics/optics.h"
#include "settings/guard.h"
#include "settings/mapping.h"
#include "settings/numbers.h"
#include "settings/profile.h"
#include "settings/quicksort.h"
#include "settings/rig.h"
#include "settings/settingnumbers.h"
#include "settings/textformat.h"
#include "settings/wait.h"
#include "stacking/stacking.h"
#include "startup/startup.h"

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

// The rig as the control's parts see it: everything they ask goes to the control, so a host's
// later change of a property or the platform is seen at once.
class ControlRig final : public Rig {
public:
    ControlRig(ctlQuendrix& control, SettingNumbers& numbers)
        : control_(control), numbers_(numbers) {}

    Platform& platform() const override { return control_.platform(); }
    QLocale locale() const override { return control_.locale(); }
    qint16 Controltyp() const override { return control_.Controltyp(); }
    qint32 MotorArt0() const override { return control_.MotorArt0(); }
    qint32 MotorArt1() const override { return control_.MotorArt1(); }
    QString MotorName() const override { return control_.MotorName(); }
    QString Kennung() const override { return control_.Kennung(); }
    bool wifi() const override { return control_.wifi; }
    QString ini(const QString& szGruppe, const QString& szitem, const QString& szDefault) override {
        return control_.ini(szGruppe, szitem, szDefault);
    }
    void setini(const QString& KpAppName, const QString& KeyName,
                const QString& keydefault) override {
        control_.setini(KpAppName, KeyName, keydefault);
    }
    SettingNumbers& settingNumbers() const override { return numbers_; }
    void takeFocus() override { control_.setFocus(); }

private:
    ctlQuendrix& control_;
    SettingNumbers& numbers_;
};

}  // namespace

ControlParts::ControlParts(ctlQuendrix& control)
    : settingNumbers_(std::make_unique<SettingNumbers>(
          [&control](const QString& section, const QString& key, const QString& byDefault) {
              return control.ini(section, key, byDefault);
          },
          [&control](const QString& section, const QString& key, const QString& value,
                     const QString& used) {
              control.reportSettingProblem(
                  QStringLiteral("settings file %1, section [%2], key \"%3\": "
                                 "the value \"%4\" cannot be used; \"%5\" "
                                 "is used instead")
                      .arg(QDir::toNativeSeparators(control.inifile_), section, key, value.left(80),
                           used));
          })),
      waiter_(std::make_unique<Waiter>(qtPlatform())),
      rig_(std::make_unique<ControlRig>(control, *settingNumbers_)),
      link_(std::make_unique<Link>(*rig_, *control.panel_, *waiter_)),
      motion_(std::make_unique<Motion>(*rig_, *control.panel_, *link_, *waiter_)),
      lighting_(std::make_unique<Lighting>(*rig_, *control.panel_, *link_)),
      opticalSetup_(std::make_unique<OpticalSetup>(*rig_, *control.panel_)),
      calibration_(std::make_unique<Calibration>(*rig_, *control.panel_, *opticalSetup_,
                                                 control.Matrix, control.App_Path)),
      optics_(std::make_unique<Optics>(*rig_, *control.panel_, *link_, *motion_, *calibration_,
                                       *opticalSetup_, control.Objektiv, control.Gesamtauszug)),
      stacking_(std::make_unique<Stacking>(*rig_, *control.panel_, *link_, *motion_, *opticalSetup_,
                                           *waiter_)),
      startup_(std::make_unique<Startup>(
          *rig_, control, *control.panel_, *link_, *waiter_,
          RigParts{*motion_, *lighting_, *optics_, *calibration_, *stacking_, *opticalSetup_},
          control.wifi)) {
}

ControlParts::~ControlParts() = default;

ctlQuendrix::ctlQuendrix(QWidget* parent)
    : QWidget(parent),
      panel_(std::make_unique<Panel>(this)),
      parts_(std::make_unique<ControlParts>(*this)),
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
    parts_->startup_->showOperatingTab = [this] { showOperatingTab(); };
    // The subsystems' own announcements are the control's events and property reports.
    connect(parts_->motion_.get(), &Motion::propertyChanged, this, &ctlQuendrix::PropertyChanged);
    connect(parts_->opticalSetup_.get(), &OpticalSetup::propertyChanged, this,
            &ctlQuendrix::PropertyChanged);
    connect(this, &ctlQuendrix::SehfeldNeu, parts_->stacking_.get(),
            quietSlot([this] { parts_->stacking_->suggestSpacing(); }));
    connect(parts_->optics_.get(), &Optics::SehfeldNeu, this, &ctlQuendrix::SehfeldNeu);
    connect(parts_->stacking_.get(), &Stacking::SehfeldNeu, this, &ctlQuendrix::SehfeldNeu);
    connect(parts_->stacking_.get(), &Stacking::Schicht, this, &ctlQuendrix::Schicht);
    connect(parts_->stacking_.get(), &Stacking::Kopie, this, &ctlQuendrix::Kopie);
    connect(parts_->stacking_.get(), &Stacking::Mittelwert, this, &ctlQuendrix::Mittelwert);
    connect(parts_->stacking_.get(), &Stacking::Kombinieren, this, &ctlQuendrix::Kombinieren);
    connect(parts_->startup_.get(), &Startup::Bereitschaft, this, &ctlQuendrix::Bereitschaft);
    connect(parts_->link_.get(), &Link::acknowledgingChanged, this,
            &ctlQuendrix::acknowledgingChanged);
    auto* plot = static_cast<CalibrationPlot*>(panel_->Kalibrierkurve);
    connect(parts_->calibration_.get(), &Calibration::tableChanged, plot,
            quietSlot([this, plot] { plot->setTable(Matrix); }));
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

    parts_->settingNumbers_->forgetReports();
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
    parts_->link_->terminate();
    parts_->waiter_->cancelAll();
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
        if (previousTab >= 1 && parts_->link_->bBereit()) {
            if (controltyp_ == 0 || controltyp_ == 2) {
                Output(QStringLiteral("t1#"));
                parts_->waiter_->doEvents();
            }
            Output(QStringLiteral("T1#"));
            parts_->waiter_->doEvents();
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
    parts_->settingNumbers_->forgetReports();
    emit PropertyChanged(QStringLiteral("inifile"));
}

qint16 ctlQuendrix::Mikroschritt0() const {
    return parts_->motion_->Mikroschritt(0);
}
void ctlQuendrix::setMikroschritt0(qint16 value) {
    parts_->motion_->setMikroschritt(0, value);
}
qint16 ctlQuendrix::Mikroschritt1() const {
    return parts_->motion_->Mikroschritt(1);
}
void ctlQuendrix::setMikroschritt1(qint16 value) {
    parts_->motion_->setMikroschritt(1, value);
}

QString ctlQuendrix::Caption() const {
    return panel_->lblCaption->text();
}

void ctlQuendrix::setCaption(const QString& value) {
    panel_->lblCaption->setText(asCaption(value));
    emit PropertyChanged(QStringLiteral("Caption"));
}

QString ctlQuendrix::Sehfeld() const {
    return parts_->opticalSetup_->Sehfeld();
}
void ctlQuendrix::setSehfeld(const QString& value) {
    parts_->opticalSetup_->setSehfeld(value);
}
QString ctlQuendrix::Kameratyp() const {
    return parts_->opticalSetup_->Kameratyp();
}
void ctlQuendrix::setKameratyp(const QString& value) {
    parts_->opticalSetup_->setKameratyp(value);
}
float ctlQuendrix::Brennweite() const {
    return parts_->opticalSetup_->Brennweite();
}
void ctlQuendrix::setBrennweite(float value) {
    parts_->opticalSetup_->setBrennweite(value);
}
float ctlQuendrix::Sensorbreite() const {
    return parts_->opticalSetup_->Sensorbreite();
}
void ctlQuendrix::setSensorbreite(float value) {
    parts_->opticalSetup_->setSensorbreite(value);
}
double ctlQuendrix::AzOffset() const {
    return parts_->opticalSetup_->AzOffset();
}
void ctlQuendrix::setAzOffset(double value) {
    parts_->opticalSetup_->setAzOffset(value);
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
    parts_->waiter_->setPlatform(*platform_);
}

// ---- Start-up and shutdown -----------------------------------------------------------------

void ctlQuendrix::Comm_Starten() {
    parts_->startup_->Comm_Starten();
}
void ctlQuendrix::WiFi_Starten() {
    parts_->startup_->WiFi_Starten();
}
void ctlQuendrix::Motor_Starten() {
    parts_->startup_->Motor_Starten();
}
void ctlQuendrix::Motor_Abschalten() {
    parts_->startup_->Motor_Abschalten();
}

// ---- Command channel ----------------------------------------------------------------------

void ctlQuendrix::Output(const QString& Befehl) {
    parts_->link_->Output(Befehl);
}

void ctlQuendrix::Auswerten(const QString& ComInNeu, bool wifi) {
    parts_->link_->Auswerten(ComInNeu, wifi);
}

void ctlQuendrix::SetOK(bool Wert) {
    parts_->link_->SetOK(Wert);
}

bool ctlQuendrix::acknowledging() const {
    return parts_->link_->acknowledging();
}

quint64 ctlQuendrix::commandsSent() const {
    return parts_->link_->commandsSent();
}

quint64 ctlQuendrix::commandsUnanswered() const {
    return parts_->link_->commandsUnanswered();
}

// ---- Axis motion and lighting --------------------------------------------------------------

void ctlQuendrix::pAnheben() {
    parts_->motion_->pAnheben();
}
void ctlQuendrix::pAbsenken() {
    parts_->motion_->pAbsenken();
}

void ctlQuendrix::Beleuchtung(qint16 EinAus) {
    parts_->lighting_->Beleuchtung(EinAus);
}
void ctlQuendrix::Ring(qint16 Modus) {
    parts_->lighting_->Ring(Modus);
}
void ctlQuendrix::Segment(qint16 Nummer) {
    parts_->lighting_->Segment(Nummer);
}
void ctlQuendrix::Farbe(qint16 Index) {
    parts_->lighting_->Farbe(Index);
}

// ---- Optics ---------------------------------------------------------------------------------

void ctlQuendrix::Optik_laden() {
    parts_->optics_->Optik_laden();
}
void ctlQuendrix::Optik_waehlen(const QString& Focus) {
    parts_->optics_->Optik_waehlen(Focus);
}
void ctlQuendrix::lbObjektiv_Change(qint16 Index) {
    parts_->optics_->lbObjektiv_Change(Index);
}
void ctlQuendrix::BildGroesse() {
    parts_->optics_->BildGroesse();
}
void ctlQuendrix::Balgen_einstellen() {
    parts_->optics_->Balgen_einstellen();
}

// ---- Stacks and averaging series ------------------------------------------------------------

void ctlQuendrix::Mittelw_Click() {
    parts_->stacking_->Mittelw_Click();
}
void ctlQuendrix::Schicht_Click() {
    parts_->stacking_->Schicht_Click();
}
void ctlQuendrix::Mittelwertbild() {
    parts_->stacking_->Mittelw_Click();
}
void ctlQuendrix::Schichtbild() {
    parts_->stacking_->Schicht_Click();
}
void ctlQuendrix::Zuruecksetzen() {
    parts_->stacking_->Zuruecksetzen();
}
void ctlQuendrix::Reset(qint16 Achse) {
    parts_->stacking_->Reset(Achse);
}
void ctlQuendrix::Kamera_aktiv(qint16 Aktiv) {
    parts_->stacking_->Kamera_aktiv(Aktiv != 0);
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
