// The lights of the rig. The two channels on the motion controller take commands ending in
// "#"; a light module (a single light or a ring light with eight segments and colour
// channels) takes commands ending in "!". The panel's check boxes say which light is on, its
// scroll bars set the brightness, and the segment buttons show by their colour which ring
// segment is lit.
#include "lighting/lighting.h"

#include <quendrix/Panel.h>
#include <quendrix/RuntimeError.h>
#include "settings/rig.h"

#include "link/link.h"
#include "settings/guard.h"
#include "settings/numbers.h"

#include <QApplication>
#include <QCheckBox>
#include <QColor>
#include <QPalette>
#include <QPushButton>
#include <QScrollBar>
#include <array>

namespace quendrix {

namespace {

// A lit ring segment's button.
const QColor kSegmentOn(255, 200, 40);

// The colour a button has when nothing marks it.
QColor buttonFace() {
    return QApplication::palette().color(QPalette::Button);
}

void paintButton(QPushButton* button, const QColor& colour) {
    QPalette palette = button->palette();
    palette.setColor(QPalette::Button, colour);
    button->setPalette(palette);
    button->setAutoFillBackground(true);
    button->update();
}

struct ColourChannel {
    const char* prompt;
    QLatin1Char letter;
};

// The colour channels of the ring light. Green is "f": "g" sets the micro-steps.
const std::array<ColourChannel, 4> kColourChannels = {{
    {QT_TRANSLATE_NOOP("quendrix::Lighting",
                       "Intensität für weiß wählen (0...255; 0 = Mittelwert)"),
     QLatin1Char('w')},
    {QT_TRANSLATE_NOOP("quendrix::Lighting", "Intensität für rot wählen (0...255)"),
     QLatin1Char('r')},
    {QT_TRANSLATE_NOOP("quendrix::Lighting", "Intensität für grün wählen (0...255)"),
     QLatin1Char('f')},
    {QT_TRANSLATE_NOOP("quendrix::Lighting", "Intensität für blau wählen (0...255)"),
     QLatin1Char('b')},
}};

}  // namespace

Lighting::Lighting(Rig& rig, Panel& panel, Link& link) : rig_(rig), panel_(panel), link_(link) {
    // Only the operator's clicks switch: boxes set while the panel starts send nothing.
    for (QCheckBox* box : panel_.Licht)
        connect(box, &QCheckBox::clicked, this, guardedSlot(rig_, [this] { Beleuchtung(1); }));
    // A drag sends one brightness when it is let go, not one per pixel.
    for (int channel = 0; channel < int(panel_.HScroll1.size()); ++channel) {
        panel_.HScroll1[channel]->setTracking(false);
        connect(panel_.HScroll1[channel], &QScrollBar::valueChanged, this, [this, channel] {
            runGuarded(rig_.platform(), [this, channel] { brightnessChanged(channel); });
        });
    }
    for (int index = 0; index < int(panel_.Seg.size()); ++index)
        connect(panel_.Seg[index], &QPushButton::clicked, this, [this, index] {
            runGuarded(rig_.platform(), [this, index] { segmentClicked(index); });
        });
}

void Lighting::Beleuchtung(qint16 EinAus) {
    if (EinAus != 0) {
        if (DLicht_ < 1) {
            link_.Output(QStringLiteral("l%1#").arg(value(panel_.Licht[0])));
            if (rig_.Controltyp() == 1) return;  // the lens changer has one channel
            link_.Output(QStringLiteral("L%1#").arg(value(panel_.Licht[1])));
        } else {
            // The module's box sits behind the controller's two.
            const int box = int(DLicht_) + 1;
            if (box >= int(panel_.Licht.size()))
                throw RuntimeError(RuntimeError::SubscriptOutOfRange);
            link_.Output(QStringLiteral("l%1!").arg(value(panel_.Licht[box])));
        }
        return;
    }
    if (DLicht_ < 1) {
        // Both channels, whichever rig: a channel the rig lacks is simply acknowledged.
        link_.Output(QStringLiteral("l0#"));
        rig_.platform().idle(0);
        link_.Output(QStringLiteral("L0#"));
    } else {
        link_.Output(QStringLiteral("l0!"));
    }
}

void Lighting::Ring(qint16 mode) {
    const QLatin1Char letter(DLicht_ == 1 ? 't' : 'T');
    link_.Output(letter + QString::number(mode) + QLatin1Char('!'));
}

void Lighting::Segment(qint16 segment) {
    link_.Output(QStringLiteral("s%1!").arg(segment));
}

void Lighting::Farbe(qint16 index) {
    if (index < 0 || index >= qint16(kColourChannels.size())) return;
    const ColourChannel& channel = kColourChannels[index];
    const QString answer =
        rig_.platform().inputBox(tr(channel.prompt), tr("Farbe einstellen"), QString());
    // A cancelled box answers "", which is no number either.
    const qint16 intensity = textToInteger(answer, rig_.locale());
    link_.Output(channel.letter + QString::number(intensity) + QLatin1Char('!'));
}

void Lighting::brightnessChanged(int channel) {
    const int brightness = panel_.HScroll1[channel]->value();
    if (channel >= 2) {
        link_.Output(QStringLiteral("d%1!").arg(brightness));
        return;
    }
    // "d" for channel 0, "D" for channel 1.
    const QChar letter(100 - 32 * channel);
    link_.Output(letter + QString::number(brightness) + QLatin1Char('#'));
    // The switching state goes out again after every brightness.
    Beleuchtung(1);
    rig_.setini(rig_.MotorName(), QStringLiteral("Helligkeit%1").arg(channel),
                QString::number(brightness));
}

void Lighting::segmentClicked(int index) {
    QPushButton* button = panel_.Seg[index];
    const QString segment = button->text();
    if (button->palette().color(QPalette::Button) == buttonFace()) {
        paintButton(button, kSegmentOn);
        link_.Output(QStringLiteral("s") + segment + QLatin1Char('!'));
    } else {
        paintButton(button, buttonFace());
        link_.Output(QStringLiteral("s-") + segment + QLatin1Char('!'));
    }
}

}  // namespace quendrix
