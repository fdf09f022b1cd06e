// Wiring the stack controls of the panel, and the spacing advisor beside them.
#include "stacking/stacking.h"

#include "link/link.h"
#include "settings/guard.h"
#include "settings/mousebuttons.h"
#include "settings/rig.h"

#include <quendrix/Panel.h>

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTimer>
#include <algorithm>

namespace quendrix {

Stacking::Stacking(Rig& rig, Panel& panel, Link& link, Motion& motion, OpticalSetup& optical,
                   Waiter& waiter)
    : rig_(rig), panel_(panel), link_(link), motion_(motion), optical_(optical), waiter_(waiter) {
    connectAdvisor();
    connectPanel();
}

void Stacking::connectPanel() {
    Panel& p = panel_;
    connect(p.AutoKomb, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { AutoKomb_Click(); }));
    connect(p.Mittelw, &QPushButton::clicked, this, guardedSlot(rig_, [this] { Mittelw_Click(); }));
    connect(p.Schicht, &QPushButton::clicked, this, guardedSlot(rig_, [this] { Schicht_Click(); }));
    connect(p.Combine, &QPushButton::clicked, this, guardedSlot(rig_, [this] { Combine_Click(); }));
    connect(p.Kopie, &QPushButton::clicked, this, guardedSlot(rig_, [this] { Kopie_Click(); }));
    connect(p.Kopie2, &QPushButton::clicked, this, guardedSlot(rig_, [this] { Kopie_Click(); }));
    connect(p.Timer3, &QTimer::timeout, this, guardedSlot(rig_, [this] { Timer3_Timer(); }));
    // While the number of planes is being typed it is often no number yet; the plan follows
    // once it is one.
    connect(p.Ebenen, &QLineEdit::textChanged, this, quietSlot([this] { Ebenen_Change(); }));
    connect(p.Schrittzahl, &QLineEdit::textChanged, this,
            guardedSlot(rig_, [this] { Schrittzahl_Change(); }));
    for (QWidget* watched : {static_cast<QWidget*>(p.AutoKomb), static_cast<QWidget*>(p.Beginn),
                             static_cast<QWidget*>(p.Ende)})
        watched->installEventFilter(this);
    for (QLabel* picture : p.Image1)
        picture->installEventFilter(this);
    p.Timer3->setSingleShot(false);
}

// The stack's buttons act on the mouse button let go: the start and end buttons take the
// position with the left and drive there with the right; the right aborts a run. So do the
// pictures of the axes and reference points.
bool Stacking::eventFilter(QObject* watched, QEvent* event) {
    if (watched == panel_.Zerstreuungskreis && event->type() == QEvent::LocaleChange) {
        // The circle follows the panel's language, so that it still reads as a number.
        bool isNumber = false;
        const double circle =
            confusionLocale_.toDouble(panel_.Zerstreuungskreis->text(), &isNumber);
        confusionLocale_ = panel_.Zerstreuungskreis->locale();
        if (isNumber) panel_.Zerstreuungskreis->setText(confusionLocale_.toString(circle));
        return false;
    }
    if (event->type() == QEvent::MouseButtonRelease) {
        const int code = mouseButtonCode(event);
        runGuarded(rig_.platform(), [&] {
            if (watched == panel_.AutoKomb)
                AutoKomb_MouseUp(code);
            else if (watched == panel_.Beginn)
                Beginn_MouseUp(code);
            else if (watched == panel_.Ende)
                Ende_MouseUp(code);
            else if (const auto picture =
                         std::find(panel_.Image1.begin(), panel_.Image1.end(), watched);
                     picture != panel_.Image1.end())
                Image1_MouseUp(int(picture - panel_.Image1.begin()), code);
        });
    }
    return QObject::eventFilter(watched, event);
}

// Below the stack's fields: progress while a run goes on, and the spacing the optics suggest.
void Stacking::connectAdvisor() {
    confusionLocale_ = rig_.locale();
    panel_.Zerstreuungskreis->installEventFilter(this);
    for (QLineEdit* input : {panel_.Blende, panel_.Zerstreuungskreis})
        connect(input, &QLineEdit::textChanged, this, quietSlot([this] { suggestSpacing(); }));
    connect(panel_.VorschlagUebernehmen, &QPushButton::clicked, this,
            guardedSlot(rig_, [this] { takeSuggestion(); }));
    suggestSpacing();
}

}  // namespace quendrix
