// Tab "Achsen": limit switches, direction, encoder, microstepping and drive of each axis,
// and the connection to the controller.

#include <quendrix/Panel.h>

#include "control/panelkit.h"

#include <QGridLayout>

namespace quendrix {

using namespace kit;

void Panel::buildAxisSettingsTab(QWidget* page) {
    buildAxisSettings(page, 0);
    buildAxisSettings(page, 1);
    buildConnection(page);
    column(page)->addStretch();
}

// One frame per axis holding its switches and encoder, then microstepping and drive.
void Panel::buildAxisSettings(QWidget* page, int axis) {
    QGroupBox* box = Frame[axis] = frame(
        page, element("Frame", axis), axis == 0 ? tr("Achse 0 (Abstand)") : tr("Achse 1 (Balgen)"));
    auto* layout = layoutIn<QVBoxLayout>(box);

    auto* grid = new QGridLayout;
    cbEndschalter[axis] = check(box, element("cbEndschalter", axis), tr("Endschalter"));
    cbDrehrichtungArduino[axis] =
        check(box, element("cbDrehrichtungArduino", axis), tr("Drehrichtung umkehren"));
    ENC[axis] = check(box, element("ENC", axis), QStringLiteral("Encoder"));
    E_Typ[axis] = check(box, element("E_Typ", axis), tr("Encodertyp"));
    Encoderart[axis] = edit(box, element("Encoderart", axis), QStringLiteral("Analog"));
    Encoderart[axis]->setMaximumWidth(80);
    grid->addWidget(cbEndschalter[axis], 0, 0);
    grid->addWidget(cbDrehrichtungArduino[axis], 0, 1, 1, 3);
    grid->addWidget(ENC[axis], 1, 0);
    grid->addWidget(E_Typ[axis], 1, 1);
    grid->addWidget(caption(box, tr("Encoderart")), 1, 2, Qt::AlignRight);
    grid->addWidget(Encoderart[axis], 1, 3);
    layout->addLayout(grid);

    buildMicrostep(box, axis);
    buildDrive(box, axis);
    column(page)->addWidget(box);
}

// Microstepping: the division of a full step is 2^k for option k of the axis' frame.
void Panel::buildMicrostep(QGroupBox* axisFrame, int axis) {
    static const char* const divisions[5] = {"1", "1/2", "1/4", "1/8", "1/16"};
    FrameM[axis] = frame(axisFrame, element("FrameM", axis), tr("Mikroschritt"));
    auto* layout = layoutIn<QHBoxLayout>(FrameM[axis]);
    cbMikroschritt[axis] = check(FrameM[axis], element("cbMikroschritt", axis), tr("Mikroschritt"));
    layout->addWidget(cbMikroschritt[axis]);

    // The options of each axis share their own frame, which makes them one exclusive group.
    QGroupBox* division =
        frame(FrameM[axis], axis == 0 ? QStringLiteral("Frame7") : QStringLiteral("Frame8"),
              tr("Teilung"));
    std::array<QRadioButton*, 5>& options = axis == 0 ? micro0 : micro1;
    const char* name = axis == 0 ? "micro0" : "micro1";
    auto* row = layoutIn<QHBoxLayout>(division);
    for (int k = 0; k < 5; ++k) {
        options[k] = option(division, element(name, k), QLatin1String(divisions[k]));
        row->addWidget(options[k]);
    }
    row->addStretch();
    options[0]->setChecked(true);
    (axis == 0 ? Frame7 : Frame8) = division;
    layout->addWidget(division, 1);
    static_cast<QVBoxLayout*>(axisFrame->layout())->addWidget(FrameM[axis]);
}

// Drive: lead of the spindle, steps per turn and backlash.
void Panel::buildDrive(QGroupBox* axisFrame, int axis) {
    QGroupBox* box = FrameP[axis] = frame(axisFrame, element("FrameP", axis), tr("Antrieb"));
    auto* grid = layoutIn<QGridLayout>(box);
    Steigung[axis] = number(box, element("Steigung", axis),
                            axis == 0 ? QStringLiteral("1") : QStringLiteral("1,25"));
    Schritte[axis] = number(box, element("Schritte", axis),
                            axis == 0 ? QStringLiteral("1600") : QStringLiteral("48"));
    tSpiel[axis] = number(box, element("tSpiel", axis), QStringLiteral("0"));
    cSpiel[axis] = button(box, element("cSpiel", axis), tr("Spiel setzen"));
    grid->addWidget(caption(box, tr("Steigung [mm/U]")), 0, 0);
    grid->addWidget(Steigung[axis], 0, 1);
    grid->addWidget(caption(box, tr("Schritte/U")), 0, 2, Qt::AlignRight);
    grid->addWidget(Schritte[axis], 0, 3);
    grid->addWidget(caption(box, tr("Spiel [Schritte]")), 1, 0);
    grid->addWidget(tSpiel[axis], 1, 1);
    grid->addWidget(cSpiel[axis], 1, 2, 1, 2, Qt::AlignRight);
    static_cast<QVBoxLayout*>(axisFrame->layout())->addWidget(box);
}

// The serial connection to the controller, and the buttons that send the axis settings.
void Panel::buildConnection(QWidget* page) {
    auto* box = new QGroupBox(tr("Verbindung"), page);
    auto* grid = layoutIn<QGridLayout>(box);
    ComPort = edit(box, QStringLiteral("ComPort"));
    ComPort->setMaximumWidth(80);
    ComBaud = number(box, QStringLiteral("ComBaud"), {});
    Check2 = check(box, QStringLiteral("Check2"), tr("Seriell"));
    Setzen = button(box, QStringLiteral("Setzen"), tr("Setzen"),
                    tr("Endschalter und Richtung übernehmen"));
    typ = button(box, QStringLiteral("typ"), tr("Typ"));
    grid->addWidget(caption(box, QStringLiteral("Port")), 0, 0);
    grid->addWidget(ComPort, 0, 1);
    grid->addWidget(caption(box, QStringLiteral("Baud")), 0, 2, Qt::AlignRight);
    grid->addWidget(ComBaud, 0, 3);
    grid->addWidget(Check2, 0, 4);
    grid->setColumnStretch(5, 1);
    auto* actions = new QHBoxLayout;
    actions->addWidget(Setzen);
    actions->addWidget(typ);
    actions->addStretch();
    grid->addLayout(actions, 1, 0, 1, 6);
    column(page)->addWidget(box);
}

}  // namespace quendrix
