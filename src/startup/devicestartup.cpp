// Bringing the board into service once its link is open: the board says who it is, the rig's
// settings go onto the panel and to the board (deviceconfig.cpp, one sequence per rig type),
// and the host learns through Bereitschaft whether the rig is ready.
#include "core/speed.h"
#include "link/link.h"
#include "optics/optics.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/wait.h"
#include "startup/panelhold.h"
#include "startup/startup.h"

#include <quendrix/Panel.h>

#include <QLineEdit>
#include <QRadioButton>
#include <QScrollBar>

namespace quendrix {

namespace {

constexpr double kIdentificationSeconds = 5;

// The words of an identification line that name a rig this panel drives (a board whose motor
// supply is off names that instead of its rig).
const char* const kKnownBoards[] = {"Photostand", "Motorspannung", "Photostepper", "Binokular",
                                    "Mikroskop"};

bool namesKnownBoard(const QString& identification) {
    for (const char* word : kKnownBoards)
        if (identification.contains(QLatin1String(word))) return true;
    return false;
}

}  // namespace

void Startup::Motor_Starten() {
    Panel& p = panel_;
    Platform& platform = rig_.platform();
    const PanelHold held(control_);

    // Output clears the acknowledgement before it sends, so the wait below ends on the
    // board's answer to this query, not on an earlier one.
    link_.Output(QStringLiteral("?#\r\n"));
    waiter_.waitFor([this] { return link_.bQuittiert(); }, kIdentificationSeconds);

    // No answer leaves the identification empty (or as it was), which is reported like a
    // board that is no Arduino.
    const QString identification = link_.sKennText()[1];
    bool recognised = false;
    if (!identification.contains(u"Arduino")) {
        p.Text1[0]->setText(QStringLiteral("Arduino nicht gefunden. "));
        platform.messageBox(tr("'Arduino' nicht gefunden"), MsgBox::Exclamation, QString());
    } else if (!namesKnownBoard(identification)) {
        p.Text1[0]->setText(QStringLiteral("unbekannt"));
        platform.messageBox(tr("Unbekanntes Gerät mit Arduino an diesem Anschluß"),
                            MsgBox::Exclamation, QString());
    } else {
        p.Text1[0]->setText(identification);
        waiter_.doEvents();
        recognised = true;
    }
    if (identification.contains(u"Motorspannung"))
        platform.messageBox(tr("Motorstrom einschalten"), MsgBox::Exclamation, QString());

    if (!recognised) {
        link_.setBereit(false);
        const QString report =
            identification.contains(u"unbekannt")
                ? tr("Arduino Interface kennt den Motor %1 nicht").arg(rig_.Controltyp())
                : tr("Arduino Interface nicht angeschlossen oder von "
                     "anderem Programm verwendet") +
                      QStringLiteral("\r\n") + p.Text1[0]->text();
        platform.messageBox(report, MsgBox::OKOnly, tr("Interface suchen"));
    } else {
        parts_.optics.Optik_laden();
        switch (rig_.Controltyp()) {
            case 0:
                configureBellowsRig();
                break;
            case 1:
                configureLensChangerRig();
                break;
            case 2:
                configureSingleAxisRig();
                break;
            default:
                // A rig type this panel has no settings for is taken as it is.
                link_.setBereit(true);
                break;
        }
    }

    // Whether the rig has its light channels is known even when the board is not.
    const QString section = rig_.MotorName();
    for (int channel : {0, 1}) {
        const QString fitted =
            rig_.ini(section, QStringLiteral("Lichtregler%1").arg(channel), QStringLiteral("1"));
        if (Trim(fitted) == u"0") p.HScroll1[channel]->setVisible(false);
    }
    emit Bereitschaft(link_.bBereit());
}

// The limit-switch and direction settings of the axis chosen with obMotor take effect.
void Startup::Setzen_Click() {
    const int axis = panel_.obMotor[1]->isChecked() ? 1 : 0;
    link_.Output(axisLetter('t', axis) + QStringLiteral("1#"));
}

// The light module is told which module it is ("m1!"), then its segment setting ("s0!").
void Startup::typ_Click() {
    link_.Output(QStringLiteral("m1!"));
    link_.Output(QStringLiteral("s0!"));
}

}  // namespace quendrix
