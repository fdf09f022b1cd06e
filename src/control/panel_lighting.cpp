// Tab "Licht": the two light channels of the controller, and the light module fitted to the
// rig, either a single light or a ring light with eight segments.

#include <quendrix/Panel.h>

#include "control/panelkit.h"

#include <QCursor>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QToolTip>

namespace quendrix {

using namespace kit;

namespace {

QString brightnessText(int value) {
    return Panel::tr("Helligkeit: %1").arg(value);
}

// A brightness bar, 0..255. Its tool tip tells the value, and while the bar is dragged the
// value is shown beside the pointer.
QScrollBar* brightness(QWidget* parent, int index) {
    auto* bar = make<QScrollBar>(parent, element("HScroll1", index));
    bar->setOrientation(Qt::Horizontal);
    bar->setRange(0, 255);
    bar->setMinimumWidth(200);
    bar->setToolTip(brightnessText(bar->value()));
    QObject::connect(bar, &QScrollBar::valueChanged, bar,
                     [bar](int value) { bar->setToolTip(brightnessText(value)); });
    QObject::connect(bar, &QScrollBar::sliderMoved, bar, [bar](int value) {
        QToolTip::showText(QCursor::pos(), brightnessText(value), bar);
    });
    return bar;
}

}  // namespace

void Panel::buildLightingTab(QWidget* page) {
    auto* channels = new QGridLayout;
    for (int i : {0, 1}) {
        Licht[i] = check(page, element("Licht", i), tr("Licht %1").arg(i + 1));
        HScroll1[i] = brightness(page, i);
        HScroll1[i]->setValue(255);
        channels->addWidget(Licht[i], i, 0);
        channels->addWidget(HScroll1[i], i, 1);
    }
    channels->setColumnStretch(1, 1);
    column(page)->addLayout(channels);

    // The module frames; start-up shows the one that is fitted.
    Frame13[0] = frame(page, element("Frame13", 0), tr("Lichtmodul"));
    auto* single = layoutIn<QHBoxLayout>(Frame13[0]);
    Licht[2] = check(Frame13[0], element("Licht", 2), tr("Licht"));
    HScroll1[2] = brightness(Frame13[0], 2);
    single->addWidget(Licht[2]);
    single->addWidget(HScroll1[2], 1);

    Frame13[1] = frame(page, element("Frame13", 1), tr("Ringlicht"));
    auto* ring = layoutIn<QVBoxLayout>(Frame13[1]);
    auto* ringLight = new QHBoxLayout;
    Licht[3] = check(Frame13[1], element("Licht", 3), tr("Ringlicht"));
    HScroll1[3] = brightness(Frame13[1], 3);
    ringLight->addWidget(Licht[3]);
    ringLight->addWidget(HScroll1[3], 1);
    ring->addLayout(ringLight);
    auto* segments = new QHBoxLayout;
    segments->setSpacing(2);
    for (int i = 0; i < 8; ++i) {
        Seg[i] = button(Frame13[1], element("Seg", i), QString::number(i + 1),
                        QStringLiteral("Segment %1").arg(i + 1));
        squeeze(Seg[i], 32);
        segments->addWidget(Seg[i]);
    }
    ring->addLayout(segments);

    for (QGroupBox* module : Frame13) {
        module->hide();
        column(page)->addWidget(module);
    }
    column(page)->addStretch();
}

}  // namespace quendrix
