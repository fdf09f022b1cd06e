// Planning a stack: start and end on axis 0, the number of plane intervals, and from these
// the steps between planes, the spacing in micrometres and the whole travel.
#include "core/stepadvisor.h"
#include "link/link.h"
#include "motion/motion.h"
#include "optics/opticalsetup.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/textformat.h"
#include "stacking/stacking.h"

#include <quendrix/Panel.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>

namespace quendrix {

namespace {
const QColor kWarning(255, 0, 0);

void paintText(QLineEdit* box, const QColor& colour) {
    QPalette palette = box->palette();
    palette.setColor(QPalette::Text, colour);
    box->setPalette(palette);
}
}  // namespace

void Stacking::Ebenen_Change() {
    Panel& p = panel_;
    const QLocale locale = rig_.locale();
    Bereich_ = toLong(std::fabs(Val(p.BEnde[0]->text()) - Val(p.BBeginn[0]->text())));
    const double planes = Val(p.Ebenen->text());
    if (planes > Bereich_) {
        // More planes than steps: no step between them. The run refuses to start.
        p.Schrittzahl->setText(QStringLiteral("0"));
        paintText(p.Schrittzahl, kWarning);
        paintText(p.Ebenen, kWarning);
        return;
    }
    p.Schrittzahl->setText(doubleToText(std::floor(divide(Bereich_, planes) + 0.5), QLocale::c()));
    const AxisDrive drive = motion_.drive(0);
    const float spacing =
        toSingle(divide(Val(p.Schrittzahl->text()) * drive.lead, drive.stepsPerRevolution) * 1000);
    p.Weglaenge->setText(formatNumber(spacing * planes / 1000, QStringLiteral("##0.00"), locale));
    const QString pattern = spacing >= 100  ? QStringLiteral("#,##0 µ")
                            : spacing >= 10 ? QStringLiteral("#0.0 µ")
                                            : QStringLiteral("#0.00 µ");
    p.Aufloesung->setText(formatNumber(spacing, pattern, locale));
    AufloesungText_ = p.Aufloesung->text();
    // The warning goes once the plan works again.
    paintText(p.Schrittzahl, p.Weglaenge->palette().color(QPalette::Text));
    paintText(p.Ebenen, p.Weglaenge->palette().color(QPalette::Text));
    suggestSpacing();
}

// A step count of exactly -1 is how the backlash of axis 0 is entered here.
void Stacking::Schrittzahl_Change() {
    if (Val(panel_.Schrittzahl->text()) == -1)
        panel_.tSpiel[0]->setText(panel_.Schrittzahl->text());
}

void Stacking::Beginn_MouseUp(int button) {
    takePosition(panel_.BBeginn[0], button);
}

void Stacking::Ende_MouseUp(int button) {
    takePosition(panel_.BEnde[0], button);
}

// The left button takes the axis's position into the field; the right drives the axis there.
void Stacking::takePosition(QLineEdit* field, int button) {
    if (button == 1) {
        field->setText(QString::number(link_.AchsPosition()[0]));
        Ebenen_Change();
    } else if (button == 2) {
        motion_.Position_anfahren(textToLong(field->text(), rig_.locale()), 0, 1);
    }
}

void Stacking::suggestSpacing() {
    suggestedPlanes_ = 0;
    std::optional<SpacingSuggestion> advice;
    try {
        const QLocale locale = rig_.locale();
        advice = quendrix::suggestSpacing(optical_.Sensorbreite(),
                                          textToDouble(optical_.Sehfeld(), locale),
                                          textToDouble(panel_.Blende->text(), locale),
                                          textToDouble(panel_.Zerstreuungskreis->text(), locale),
                                          motion_.Schritte_in_mm(0, Bereich_).mm);
    } catch (const RuntimeError&) {
        // A figure is missing: there is nothing to suggest yet.
    }
    panel_.VorschlagUebernehmen->setEnabled(advice.has_value());
    if (!advice) {
        panel_.Vorschlag->setText(tr("Vorschlag: Blende, Zerstreuungskreis und Sehfeld angeben"));
        return;
    }
    suggestedPlanes_ = advice->intervals;
    panel_.Vorschlag->setText(
        tr("Vorschlag: %1 Ebenen im Abstand von %2 (Schärfentiefe %3)")
            .arg(advice->intervals)
            .arg(formatNumber(advice->spacingMm * 1000, QStringLiteral("#,##0.0 µ"), rig_.locale()),
                 formatNumber(advice->depthOfFieldMm * 1000, QStringLiteral("#,##0.0 µ"),
                              rig_.locale())));
}

void Stacking::takeSuggestion() {
    if (suggestedPlanes_ > 0) panel_.Ebenen->setText(QString::number(suggestedPlanes_));
}

}  // namespace quendrix
