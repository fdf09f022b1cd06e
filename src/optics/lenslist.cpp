// The lens list: names in cbOptik and, index-aligned, their field-width factors (mm per pixel)
// in OptikFaktor, kept in the settings file per camera type and motor.
#include "link/link.h"
#include "optics/calibration.h"
#include "optics/opticalsetup.h"
#include "optics/optics.h"
#include "settings/numbers.h"
#include "settings/rig.h"
#include "settings/settingnumbers.h"
#include "settings/textformat.h"

#include <quendrix/Panel.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalBlocker>

namespace quendrix {

namespace {
constexpr int kMostLenses = 10000;  // a safety net for a settings file that never ends its list
const QString kNoLens = QStringLiteral("ohne");

QString lastCharacter(const QString& text) {
    return text.right(1);
}
}  // namespace

QString Optics::cameraSection() const {
    return optical_.Kameratyp();
}

// "Objektiv" + D + "_" + K, D being the motor's last character: each motor has its own list.
QString Optics::lensKey(const QString& name, int index) const {
    return name + lastCharacter(rig_.MotorName()) + QLatin1Char('_') + QString::number(index);
}

void Optics::Optik_laden() {
    QComboBox* names = panel_.cbOptik;
    QListWidget* factors = panel_.OptikFaktor;
    {
        const QSignalBlocker quiet(names);
        names->clear();
        factors->clear();
        names->addItem(kNoLens);
        factors->addItem(QStringLiteral("0"));
        // Stored lens k lands at list index k + 1; the first empty name ends the list.
        for (int k = 0; k < kMostLenses; ++k) {
            const QString name =
                rig_.ini(cameraSection(), lensKey(QStringLiteral("Objektiv"), k), {});
            if (name.isEmpty()) break;
            names->addItem(name);
            factors->addItem(rig_.ini(cameraSection(), lensKey(QStringLiteral("Faktor"), k), {}));
        }
        names->setCurrentIndex(-1);
    }
    const double current = rig_.settingNumbers().number(
        cameraSection(), QStringLiteral("aktuell") + lastCharacter(rig_.MotorName()),
        QStringLiteral("0"));
    if (current < names->count()) {
        // Any negative entry selects nothing, as -1 does.
        const int index = current > -1 ? int(current) : -1;
        factors->setCurrentRow(index);
        names->setCurrentIndex(index);  // raises the selection handler
    }
}

void Optics::NeuObjektiv_Click() {
    const QString name =
        rig_.platform().inputBox(tr("Eindeutige Bezeichnung incl. Nah-/Fern-Einstellung eingeben"),
                                 tr("Objektiv zur Liste hinzufügen"), QString());
    if (name.isEmpty()) return;
    // The factor follows when the lens is stored with Speichern.
    QComboBox* names = panel_.cbOptik;
    names->addItem(name);
    const int index = names->count() - 1;
    names->setCurrentIndex(index);
    setTag(names, QString::number(index));
    objektiv_ = QString::number(index);
    // A new lens is written to slot 0 and the stored current entry reset to it: its lasting
    // record is made by Speichern.
    const QString motor = lastCharacter(rig_.MotorName());
    rig_.setini(cameraSection(), QStringLiteral("Aktuell") + motor, QStringLiteral("0"));
    rig_.setini(cameraSection(), lensKey(QStringLiteral("Objektiv"), 0), name);
    rig_.setini(cameraSection(), lensKey(QStringLiteral("autofokus"), index),
                QString::number(value(panel_.Autofokus)));
}

void Optics::NeuName_Click() {
    const QString name =
        rig_.platform().inputBox(tr("Eindeutige Bezeichnung eingeben"),
                                 tr("Neue Bezeichnung für das angezeigte Objektiv"), QString());
    const int index = panel_.cbOptik->currentIndex();
    if (index < 0) {
        rig_.platform().messageBox(tr("Erst ein Objektiv auswählen"), MsgBox::OKOnly, {});
        return;
    }
    panel_.cbOptik->setItemText(index, name);
    rig_.setini(cameraSection(), lensKey(QStringLiteral("Objektiv"), index), name);
}

void Optics::Speichern_Click() {
    QComboBox* names = panel_.cbOptik;
    QListWidget* factors = panel_.OptikFaktor;
    // The factor first: a resolution of 0 fails here, before anything is changed or stored.
    const float factor = toSingle(divide(textToSingle(tag(panel_.Bildbreite), rig_.locale()),
                                         Val(panel_.SensorBreiteA->text())));
    const QString factorText = singleToText(factor, rig_.locale());
    const QString shown = names->currentText();
    int index = names->findText(shown, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0) {
        names->addItem(shown);
        index = names->count() - 1;
    }
    // A lens added with Neu has no factor yet: the factor list catches up with the names.
    while (factors->count() <= index)
        factors->addItem(QStringLiteral("0"));
    factors->item(index)->setText(factorText);
    factors->setCurrentRow(index);
    names->setCurrentIndex(index);
    // Saved under the list index itself, while loading puts slot k at index k + 1: the
    // one-place shift between the two is how the list has always been kept.
    rig_.setini(cameraSection(), lensKey(QStringLiteral("Objektiv"), index),
                names->itemText(index));
    rig_.setini(cameraSection(), lensKey(QStringLiteral("Faktor"), index), factorText);
    BildGroesse();
}

double Optics::selectedFactor() const {
    const int index = panel_.cbOptik->currentIndex();
    if (index < 0 || index >= panel_.OptikFaktor->count()) return 0;
    return textToDouble(panel_.OptikFaktor->item(index)->text(), rig_.locale());
}

void Optics::cbOptik_Click() {
    const int index = panel_.cbOptik->currentIndex();
    if (index < 0) return;
    setTag(panel_.cbOptik, QString::number(index));
    objektiv_ = QString::number(index);
    if (rig_.Controltyp() != 0) {
        if (index < panel_.OptikFaktor->count()) panel_.OptikFaktor->setCurrentRow(index);
        BildGroesse();
        showLensName(index);
        panel_.Bildbreite->setText(
            formatNumber(selectedFactor() * Val(panel_.SensorBreiteA->text()),
                         QStringLiteral("##,##0.000"), rig_.locale()));
        return;
    }
    calibration_.load();
    BildGroesse();
    updateExtension();
    panel_.txBrennweite->setText(singleToText(optical_.Brennweite(), rig_.locale()));
    panel_.txOffset->setText(doubleToText(optical_.AzOffset(), rig_.locale()));
    setValue(panel_.Autofokus, rig_.settingNumbers().wholeNumber(
                                   cameraSection(), lensKey(QStringLiteral("autofokus"), index),
                                   QStringLiteral("0"), 0, 2));
    // A lens whose focal length is not known yet has no image width to show.
    try {
        panel_.Bildbreite->setText(formatNumber(bellowsFieldWidth(Val(panel_.lbAuszug->toolTip())),
                                                QStringLiteral("##,##0.000"), rig_.locale()));
    } catch (const RuntimeError&) {
    }
}

// The lens changer shows the whole name; the microscope the magnification, which by
// convention is the name's second word ("Plan 10 Apo" shows "10x").
void Optics::showLensName(int index) {
    const QString name = panel_.cbOptik->itemText(index);
    QString shown = name;
    if (rig_.Controltyp() != 1) {
        const qsizetype blank = name.indexOf(QLatin1Char(' '));
        const QString rest = name.mid(blank + 1);
        const qsizetype next = rest.indexOf(QLatin1Char(' '));
        shown = next < 0 ? rest : rest.left(next) + QLatin1Char('x');
    }
    panel_.lblOptik->setText(shown);
    lblOptik_Change();
}

void Optics::Optik_waehlen(const QString& Focus) {
    for (int i = 0; i < panel_.cbOptik->count(); ++i) {
        if (panel_.cbOptik->itemText(i).contains(Focus)) {
            if (i < panel_.OptikFaktor->count()) panel_.OptikFaktor->setCurrentRow(i);
            panel_.cbOptik->setCurrentIndex(i);
            return;
        }
    }
    rig_.platform().messageBox(tr("Kein Objektiv mit dieser Brennweite in der Liste"),
                               MsgBox::OKOnly, {});
}

// The lens the label names (the changer reports it) becomes the selected one.
void Optics::lblOptik_Change() {
    const QString shown = panel_.lblOptik->text();
    QComboBox* names = panel_.cbOptik;
    for (int i = 0; i < names->count(); ++i) {
        if (names->itemText(i).contains(shown)) {
            names->setCurrentIndex(i);
            names->setEditText(names->itemText(i));
            return;
        }
    }
    names->setCurrentIndex(0);
}

void Optics::lbObjektiv_Change(qint16 Index) {
    static const char kLetters[] = {'h', 'i', 'j', 'k', 'g'};
    if (rig_.Controltyp() == 2) {
        panel_.lblOptik->setText(objektiv_);
        lblOptik_Change();
    } else if (rig_.Controltyp() == 1 && Index >= 0 && Index < 5) {
        const QString caption = panel_.lbObjektiv[Index]->text();
        rig_.setini(rig_.MotorName() + QLatin1Char('0'), QStringLiteral("Objektiv%1").arg(Index),
                    caption);
        link_.Output(QLatin1Char(kLetters[Index]) + Trim(caption) + QLatin1Char('#'));
    }
}

}  // namespace quendrix
