#include "control/typednumbermarks.h"

#include "control/internals.h"
#include "motion/motion.h"
#include "settings/guard.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QEvent>
#include <QLineEdit>
#include <QVariant>
#include <limits>

namespace quendrix {

namespace {

// What a marked box keeps of itself, to be itself again once its text is fixed.
const char* const kUnmarkedToolTip = "unmarkedToolTip";
const char* const kUnmarkedBase = "unmarkedBase";

constexpr double kLargestLong = std::numeric_limits<qint32>::max();

NumberBoxRule byVal(double lowest, double highest, bool whole = false) {
    return {true, false, whole, lowest, highest};
}
NumberBoxRule inLocale(double lowest, double highest) {
    return {false, true, false, lowest, highest};
}
// Boxes that some handlers read with Val and others in the locale.
NumberBoxRule bothWays(double lowest, double highest, bool whole = false) {
    return {true, true, whole, lowest, highest};
}

// Red, mixed into the box's own background so that its text stays readable in any scheme.
QColor markColour(const QColor& base) {
    const QColor red(255, 0, 0);
    constexpr double share = 0.3;
    return QColor::fromRgbF(float(base.redF() * (1 - share) + red.redF() * share),
                            float(base.greenF() * (1 - share) + red.greenF() * share),
                            float(base.blueF() * (1 - share) + red.blueF() * share));
}

void setBase(QLineEdit* edit, const QColor& colour) {
    QPalette palette = edit->palette();
    palette.setColor(QPalette::Base, colour);
    edit->setPalette(palette);
}

void showMark(QLineEdit* edit, const QString& note) {
    if (!edit->property(kUnmarkedBase).isValid()) {
        const QColor base = edit->palette().color(QPalette::Base);
        edit->setProperty(kUnmarkedBase, base);
        edit->setProperty(kUnmarkedToolTip, edit->toolTip());
        setBase(edit, markColour(base));
    }
    edit->setToolTip(note);
}

void clearMark(QLineEdit* edit) {
    const QVariant base = edit->property(kUnmarkedBase);
    if (!base.isValid()) return;
    setBase(edit, base.value<QColor>());
    edit->setToolTip(edit->property(kUnmarkedToolTip).toString());
    edit->setProperty(kUnmarkedBase, QVariant());
    edit->setProperty(kUnmarkedToolTip, QVariant());
}

}  // namespace

TypedNumberMarks::TypedNumberMarks(ctlQuendrix& control, Panel& p)
    : QObject(&control), control_(control) {
    // Operating tab: timing and raising, the stack, the image width.
    for (QLineEdit* pause : p.Taktpause)
        watch(pause, byVal(1, 1000000, true));
    watch(p.Anheben, [this] {
        // Millimetres, or steps on the lens changer.
        return byVal(0, control_.Controltyp() == 1 ? 1000000 : 1000);
    });
    watch(p.Bildbreite, inLocale(0, 10000));
    for (QLineEdit* end : {p.BBeginn[0], p.BEnde[0]}) {
        watch(end, [this] {
            const qint32 travel = internals(control_).motion()->maxPosition()[0];
            return bothWays(0, travel > 0 ? travel : kLargestLong, true);
        });
    }
    watch(p.Ebenen, byVal(1, 32766, true));               // the layer counter stops at 32767
    watch(p.Schrittzahl, byVal(-1, kLargestLong, true));  // -1 enters the backlash
    watch(p.wartezeit, byVal(1, 3600000));
    if (auto* aperture = control.findChild<QLineEdit*>(QStringLiteral("Blende")))
        watch(aperture, inLocale(0.5, 1000));
    if (auto* circle = control.findChild<QLineEdit*>(QStringLiteral("Zerstreuungskreis")))
        watch(circle, inLocale(0.0001, 1));

    // Optics tab: camera, rings, calibration.
    watch(p.Sensor_breite, inLocale(0, 1000));
    watch(p.SensorBreiteA, byVal(1, 1000000, true));
    watch(p.SensorBreiteP, byVal(1, 1000000, true));
    watch(p.Zwischenringe, bothWays(0, 10000));
    watch(p.txBrennweite, inLocale(0, 10000));
    watch(p.txOffset, inLocale(-10000, 10000));
    watch(p.Zelle, inLocale(0, 1000000));

    // Axes tab: drive and backlash.
    for (int axis : {0, 1}) {
        watch(p.Steigung[axis], byVal(0.01, 1000));
        watch(p.Schritte[axis], byVal(1, 10000000, true));
        watch(p.tSpiel[axis], byVal(0, 1000000, true));
    }

    control.installEventFilter(this);
    connect(&control, &ctlQuendrix::Bereitschaft, this, [this] { markAll(); });
    connect(&control, &ctlQuendrix::PropertyChanged, this, [this](const QString& name) {
        if (name == u"Controltyp") markAll();
    });
    markAll();
}

void TypedNumberMarks::watch(QLineEdit* edit, std::function<NumberBoxRule()> rule) {
    boxes_.push_back({edit, std::move(rule)});
    const Box box = boxes_.back();
    connect(edit, &QLineEdit::textChanged, this, quietSlot([this, box] { mark(box); }));
}

void TypedNumberMarks::watch(QLineEdit* edit, const NumberBoxRule& rule) {
    watch(edit, [rule] { return rule; });
}

void TypedNumberMarks::markAll() {
    for (const Box& box : boxes_)
        runQuietly([&] { mark(box); });
}

void TypedNumberMarks::mark(const Box& box) {
    const TypedNumber verdict = judgeTypedNumber(box.edit->text(), box.rule(), control_.locale());
    if (verdict.asTyped)
        clearMark(box.edit);
    else
        showMark(box.edit, verdict.note);
}

bool TypedNumberMarks::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &control_ && event->type() == QEvent::LocaleChange) markAll();
    return QObject::eventFilter(watched, event);
}

}  // namespace quendrix
