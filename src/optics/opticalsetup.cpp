#include "optics/opticalsetup.h"

#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/textformat.h"

#include <quendrix/Panel.h>
#include <quendrix/RuntimeError.h>

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>

namespace quendrix {

OpticalSetup::OpticalSetup(Rig& rig, Panel& panel) : rig_(rig), panel_(panel) {
}

float OpticalSetup::Sensorbreite() const {
    return textToSingle(panel_.Sensor_breite->text(), rig_.locale());
}

void OpticalSetup::setSensorbreite(float value) {
    // While the operator is typing a decimal comma, the half-typed number stays as it is.
    if (!panel_.Sensor_breite->text().endsWith(QLatin1Char(',')))
        panel_.Sensor_breite->setText(singleToText(value, rig_.locale()));
    emit propertyChanged(QStringLiteral("Sensorbreite"));
}

float OpticalSetup::Brennweite() const {
    return textToSingle(panel_.txBrennweite->text(), rig_.locale());
}

void OpticalSetup::setBrennweite(float value) {
    panel_.txBrennweite->setText(singleToText(value, rig_.locale()));
    emit propertyChanged(QStringLiteral("Brennweite"));
}

double OpticalSetup::AzOffset() const {
    return textToDouble(panel_.txOffset->text(), rig_.locale());
}

void OpticalSetup::setAzOffset(double value) {
    panel_.txOffset->setText(doubleToText(value, rig_.locale()));
    emit propertyChanged(QStringLiteral("AzOffset"));
}

QString OpticalSetup::Kameratyp() const {
    return panel_.Frame9->title();
}

void OpticalSetup::setKameratyp(const QString& value) {
    panel_.Frame9->setTitle(asCaption(value));
    emit propertyChanged(QStringLiteral("Kameratyp"));
}

QString OpticalSetup::Sehfeld() const {
    return panel_.lblSehfeld->toolTip();
}

void OpticalSetup::setSehfeld(const QString& value) {
    // The label is not written here: it follows the optics, and the slider follows the value.
    if (rig_.Controltyp() == 0)
        panel_.Slider1->setValue(toLong(textToDouble(value, rig_.locale()) * 1000));
    emit propertyChanged(QStringLiteral("Sehfeld"));
}

}  // namespace quendrix
