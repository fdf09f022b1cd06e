// The field of view: the object-side width the sensor covers, from the lens factor (lens
// changer, microscope) or from focal length and bellows extension, refined by the lens's
// calibration table; and the bellows extension it depends on.
#include "core/units.h"
#include "link/link.h"
#include "motion/motion.h"
#include "optics/calibration.h"
#include "optics/opticalsetup.h"
#include "optics/optics.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/textformat.h"

#include <quendrix/Panel.h>

#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSlider>
#include <cmath>

namespace quendrix {

namespace {
constexpr double kMicrometresPerMm = 1000;
}

// sensor width x focal length / (rings + extension + offset - focal length): the sensor width
// divided by the magnification, the image distance beyond the focal length being rings,
// bellows extension and the offset from the bellows' zero to the lens's infinity position.
// The numerator is formed in single precision, the sum in double.
double Optics::bellowsFieldWidth(double extension) const {
    const float focal = optical_.Brennweite();
    const float numerator = optical_.Sensorbreite() * focal;
    const double rings = textToDouble(panel_.Zwischenringe->text(), rig_.locale());
    return divide(numerator, rings + extension + optical_.AzOffset() - focal);
}

double Optics::currentExtension() const {
    return textToDouble(panel_.Zwischenringe->text(), rig_.locale()) +
           textToDouble(panel_.lbAuszug->toolTip(), rig_.locale());
}

void Optics::BildGroesse() {
    const QLocale locale = rig_.locale();
    const qint16 rig = rig_.Controltyp();
    QString working = panel_.lblSehfeld->toolTip();
    if (rig == 1 || (rig != 0 && panel_.lblOptik->text() != u"ohne"))
        working = doubleToText(selectedFactor() * Val(panel_.SensorBreiteA->text()), locale);
    else if (rig != 0)
        working = QStringLiteral("0");
    if (rig != 0) panel_.lblSehfeld->setToolTip(working);

    double width = textToDouble(working.isEmpty() ? QStringLiteral("0") : working, locale);
    if (panel_.Option1->isChecked()) {
        width = bellowsFieldWidth(textToDouble(panel_.lbAuszug->toolTip(), locale));
        if (const auto measured = calibration_.fieldWidthAt(currentExtension())) width = *measured;
        working = doubleToText(width, locale);
    }

    const QString caption = formatNumber(width, QStringLiteral("##,##0.000"), locale);
    optical_.setSehfeld(working);
    panel_.lblSehfeld->setToolTip(working);
    panel_.lblSehfeld->setText(caption);
    panel_.lblSehfeld2->setText(caption);
    panel_.Slider1->setValue(toLong(textToDouble(caption, locale) * kMicrometresPerMm));
    emit SehfeldNeu(formatNumber(width, QStringLiteral("###0.000"), locale));
}

// The field-of-view slider spans what the bellows can reach: the widths at the two ends of its
// travel, in micrometres.
void Optics::Balgen_einstellen() {
    const double atStart = bellowsFieldWidth(motion_.Schritte_in_mm(1, 0).mm);
    const double atEnd = bellowsFieldWidth(motion_.Schritte_in_mm(1, motion_.maxPosition()[1]).mm);
    const auto [narrow, wide] = std::minmax(atStart, atEnd);
    panel_.Slider1->setRange(clampedInt(narrow * kMicrometresPerMm),
                             clampedInt(wide * kMicrometresPerMm));
    panel_.Sf_min->setText(formatNumber(narrow, QStringLiteral("##,##0.000"), rig_.locale()));
    panel_.Sf_max->setText(formatNumber(wide, QStringLiteral("##,##0.000"), rig_.locale()));
}

// The bellows axis's position as extension, and the distance axis's in millimetres.
void Optics::updateExtension() {
    if (rig_.Controltyp() != 0) return;
    const float extension = motion_.Schritte_in_mm(1, -1).mm;
    distanceMm_ = motion_.Schritte_in_mm(0, -1).mm;
    panel_.lbAuszug->setToolTip(singleToText(extension, rig_.locale()));
    panel_.lbAuszug->setText(formatNumber(extension, QStringLiteral("##,##0.000"), rig_.locale()));
    gesamtauszug_ = extension + Val(panel_.Zwischenringe->text());
}

// Every reported move updates the extension and the field of view. A position at which the
// field of view cannot be computed (at infinity focus, or before the optics are set up)
// leaves the display as it was: a moving board must not flood the operator with messages.
void Optics::axisMoved() {
    updateExtension();
    BildGroesse();
}

void Optics::setFieldWidthFromSlider(int micrometres) {
    const double width = micrometres / kMicrometresPerMm;
    const QString working = doubleToText(width, rig_.locale());
    panel_.lblSehfeld->setToolTip(working);
    optical_.setSehfeld(working);
    panel_.lblSehfeld->setText(formatNumber(width, QStringLiteral("##,##0.000"), rig_.locale()));
}

// The bellows go to the extension at which the bellows formula gives the width chosen.
void Optics::driveBellowsToSlider() {
    if (rig_.Controltyp() != 0) return;
    const double width = panel_.Slider1->value() / kMicrometresPerMm;
    if (width <= 0) return;
    const float focal = optical_.Brennweite();
    const double rings = textToDouble(panel_.Zwischenringe->text(), rig_.locale());
    const double extension =
        divide(optical_.Sensorbreite() * focal, width) - rings - optical_.AzOffset() + focal;
    const qint32 steps =
        axisDrive(panel_.Schritte[1]->text(), panel_.Steigung[1]->text()).steps(extension);
    motion_.Position_anfahren(steps, 1, -1);
}

}  // namespace quendrix
