#include "control/riglayout.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QTabWidget>
#include <initializer_list>

namespace quendrix {

namespace {

constexpr int kWidenedLightWidth = 162;  // pixels; the single light channel gets the whole row

void show(std::initializer_list<QWidget*> widgets, bool visible) {
    for (QWidget* widget : widgets)
        widget->setVisible(visible);
}

// The settings and displays that exist only for a second motor axis.
void showSecondAxis(Panel& p, bool visible) {
    show({p.FrameM[1], p.Frame[1], p.FrameP[1], p.cbDrehrichtungArduino[1], p.cbEndschalter[1],
          p.cbMikroschritt[1], p.ENC[1], p.lblEncoder[1], p.Takt[1], p.Label7[1], p.Label8[1]},
         visible);
}

void showSecondMotor(Panel& p, const QString& caption, bool visible) {
    p.obMotor[1]->setText(caption);
    show({p.obMotor[1], p.Shape1[1], p.Image1[1]}, visible);
}

// The lens list without the bellows: the factor list is shown beside the names.
void showLensesWithoutBellows(Panel& p) {
    show({p.Synchron, p.NeuObjektiv, p.Balgenauszug}, false);
    show({p.cbOptik, p.OptikFaktor}, true);
    show({p.Frame4a, p.Frame4}, false);
    showSecondAxis(p, false);
}

void layOutBellowsRig(Panel& p) {
    show({p.Balgenauszug, p.cbOptik}, true);
    show({p.OptikFaktor, p.Frame1, p.Frame5}, false);
    show({p.Frame4a, p.Frame4}, true);
    showSecondAxis(p, true);
    showSecondMotor(p, Panel::tr("Balgen"), true);
    p.SSTab1->setTabText(1, Panel::tr("Objektive"));
}

void layOutLensChangerRig(Panel& p) {
    show({p.Frame1, p.Frame5}, true);
    p.Label4[2]->setText(QStringLiteral("Reset"));
    p.Label4[3]->setText(Panel::tr("Präp."));
    show({p.Label4[4], p.Image1[4]}, true);
    p.Slider2->setVisible(false);
    p.Label41->setText(Panel::tr("Anheben [Schritte]"));
    show({p.Licht[1], p.HScroll1[1]}, false);
    p.Licht[0]->setMinimumWidth(kWidenedLightWidth);
    p.HScroll1[0]->setMinimumWidth(kWidenedLightWidth);
    p.Frame6->setVisible(true);
    showLensesWithoutBellows(p);
    showSecondMotor(p, Panel::tr("Optik"), false);
    show({p.cbEndschalter[0], p.cbMikroschritt[0]}, false);
    for (int k = 0; k <= 3; ++k)
        p.micro0[k]->setVisible(false);
}

void layOutMicroscopeRig(Panel& p) {
    p.Frame1->setVisible(true);
    p.Frame5->setVisible(true);
    p.Label4[2]->setText(Panel::tr("Oben"));
    p.Label4[3]->setText(Panel::tr("Unten"));
    p.Label4[4]->setText(Panel::tr("Mitte"));
    for (int i = 2; i <= 4; ++i)
        show({p.Image1[i], p.Shape1[i]}, false);
    p.Slider2->setVisible(true);
    p.Frame6->setVisible(false);
    QFont font = p.lblOptik->font();
    font.setPointSize(14);
    p.lblOptik->setFont(font);
    showLensesWithoutBellows(p);
    showSecondMotor(p, Panel::tr("Optik"), false);
    p.Licht[1]->setText(Panel::tr("Auflicht"));
    p.Licht[0]->setText(Panel::tr("Durchlicht"));
}

}  // namespace

void applyRigLayout(Panel& panel, qint16 controltyp) {
    switch (controltyp) {
        case 0:
            layOutBellowsRig(panel);
            break;
        case 1:
            layOutLensChangerRig(panel);
            break;
        case 2:
            layOutMicroscopeRig(panel);
            break;
        default:
            break;
    }
}

}  // namespace quendrix
