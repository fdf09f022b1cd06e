// Wiring the optics controls: the lens buttons, and the boxes and sliders that feed the field
// of view. A box takes effect when Enter is pressed in it.
#include "optics/optics.h"

#include "link/link.h"
#include "optics/calibration.h"
#include "optics/opticalsetup.h"
#include "settings/guard.h"
#include "settings/mousebuttons.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/textformat.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>

namespace quendrix {

namespace {
constexpr int kSlider2Threshold = 350;

// Reacts to the left or other button let go on a slider.
class ReleaseWatcher : public QObject {
public:
    ReleaseWatcher(QObject* parent, std::function<void(int)> released)
        : QObject(parent), released_(std::move(released)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonRelease) released_(mouseButtonCode(event));
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void(int)> released_;
};
}  // namespace

Optics::Optics(Rig& rig, Panel& panel, Link& link, Motion& motion, Calibration& calibration,
               OpticalSetup& optical, QString& objektiv, double& gesamtauszug)
    : rig_(rig),
      panel_(panel),
      link_(link),
      motion_(motion),
      calibration_(calibration),
      optical_(optical),
      objektiv_(objektiv),
      gesamtauszug_(gesamtauszug) {
    // The working values start as numbers, so the first computation has something to read.
    if (panel_.lbAuszug->toolTip().isEmpty()) panel_.lbAuszug->setToolTip(QStringLiteral("0"));
    if (panel_.lblSehfeld->toolTip().isEmpty()) panel_.lblSehfeld->setToolTip(QStringLiteral("0"));
    calibration_.currentExtension = [this] { return currentExtension(); };
    connectPanel();
}

void Optics::connectPanel() {
    Panel& p = panel_;
    connect(&link_, &Link::positionReported, this, quietSlot([this] { axisMoved(); }));
    connect(&link_, &Link::lensShown, this, guardedSlot(rig_, [this] { lblOptik_Change(); }));
    connect(p.cbOptik, &QComboBox::currentIndexChanged, this,
            guardedSlot(rig_, [this] { cbOptik_Click(); }));
    connect(p.NeuObjektiv, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { NeuObjektiv_Click(); }));
    connect(p.NeuName, &QPushButton::clicked, this, guardedSlot(rig_, [this] { NeuName_Click(); }));
    connect(p.Speichern, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { Speichern_Click(); }));
    connect(p.Option1, &QRadioButton::clicked, this, guardedSlot(rig_, [this] { BildGroesse(); }));
    connect(p.Synchron, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { calibration_.Synchron_Click(); }));
    connect(p.cmdAufnehmen, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { calibration_.cmdAufnehmen_Click(); }));
    connect(p.cmdFertig, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { calibration_.cmdFertig_Click(); }));
    connect(p.Loeschen, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { calibration_.Loeschen_Click(); }));

    // Enter in a box stores it.
    connect(p.Sensor_breite, &QLineEdit::returnPressed, this, guardedSlot(rig_, [this] {
                storeOnEnter(cameraSection(), QStringLiteral("Bildbreite"),
                             panel_.Sensor_breite->text());
                optical_.setSensorbreite(textToSingle(panel_.Sensor_breite->text(), rig_.locale()));
            }));
    connect(p.SensorBreiteA, &QLineEdit::returnPressed, this, guardedSlot(rig_, [this] {
                storeOnEnter(cameraSection(), QStringLiteral("aufloesungx"),
                             panel_.SensorBreiteA->text());
                if (rig_.Controltyp() == 0) Balgen_einstellen();
            }));
    connect(p.SensorBreiteP, &QLineEdit::returnPressed, this, guardedSlot(rig_, [this] {
                storeOnEnter(cameraSection(), QStringLiteral("basisaufloesungx"),
                             panel_.SensorBreiteP->text());
                if (rig_.Controltyp() == 0) Balgen_einstellen();
            }));
    connect(p.Zwischenringe, &QLineEdit::returnPressed, this, guardedSlot(rig_, [this] {
                storeOnEnter(cameraSection(),
                             QStringLiteral("zwischenringe") + rig_.MotorName().right(1),
                             panel_.Zwischenringe->text());
            }));
    for (QLineEdit* lead : p.Steigung) {
        connect(lead, &QLineEdit::returnPressed, this, guardedSlot(rig_, [this, lead] {
                    storeOnEnter(rig_.MotorName(), QStringLiteral("Steigung"), lead->text());
                    Balgen_einstellen();
                }));
    }

    // A focal length or offset being typed is often no number yet: the slider's range follows
    // once it is one.
    for (QLineEdit* box : {p.txBrennweite, p.txOffset})
        connect(box, &QLineEdit::textChanged, this, quietSlot([this] { Balgen_einstellen(); }));
    connect(p.Bildbreite, &QLineEdit::textChanged, this,
            guardedSlot(rig_, [this] { scaleImageWidth(); }));

    connect(p.Slider1, &QSlider::sliderMoved, this, [this](int micrometres) {
        runGuarded(rig_.platform(), [&] { setFieldWidthFromSlider(micrometres); });
    });
    connect(p.Slider1, &QSlider::sliderReleased, this,
            guardedSlot(rig_, [this] { driveBellowsToSlider(); }));
    connect(p.Slider2, &QSlider::valueChanged, this, [this](int value) {
        for (QLabel* label : panel_.Label4) {
            QPalette palette = label->palette();
            palette.setColor(QPalette::WindowText, value < kSlider2Threshold
                                                       ? QColor(0xb0, 0x30, 0x00)
                                                       : QColor(0x00, 0x60, 0x20));
            label->setPalette(palette);
        }
    });
    p.Slider2->installEventFilter(new ReleaseWatcher(this, [this](int button) {
        runGuarded(rig_.platform(), [&] {
            if (rig_.Controltyp() != 2) return;
            link_.Output(button == 1 ? QStringLiteral("t%1#").arg(qAbs(panel_.Slider2->value()))
                                     : QStringLiteral("b#"));
        });
    }));
}

void Optics::storeOnEnter(const QString& section, const QString& key, const QString& text) {
    rig_.setini(section, key, text);
}

// With the direct display on, the image width typed is also kept scaled from the base to the
// current resolution: the width a lens factor is made from.
void Optics::scaleImageWidth() {
    if (!panel_.Direktanzeige->isChecked()) return;
    double width;
    try {
        width = textToDouble(panel_.Bildbreite->text(), rig_.locale());
    } catch (const RuntimeError&) {
        return;  // not a number (yet): the tag stays
    }
    const double scaled =
        divide(width * Val(panel_.SensorBreiteA->text()), Val(panel_.SensorBreiteP->text()));
    setTag(panel_.Bildbreite, doubleToText(scaled, rig_.locale()));
}

}  // namespace quendrix
