#include "stackbox.h"

#include "stackcontrol.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <algorithm>
#include <cmath>

namespace {

QString duration(double seconds) {
    const long whole = std::lround(seconds);
    if (whole < 60) return QStringLiteral("%1 s").arg(whole);
    return QStringLiteral("%1:%2 min").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QPushButton* button(const QString& text, const QString& name, const QString& tip) {
    auto* made = new QPushButton(text);
    made->setObjectName(name);
    made->setToolTip(tip);
    return made;
}

}  // namespace

StackBox::StackBox(ctlQuendrix& panel, StackControl& stack, QWidget* parent)
    : QGroupBox(tr("Stapel"), parent),
      panel_(panel),
      stack_(stack),
      presets_(new QComboBox),
      save_(button(tr("Speichern"), QStringLiteral("VorlageSpeichern"),
                   tr("Beginn, Ende, Ebenen und Pause als Vorlage speichern"))),
      delete_(button(tr("Löschen"), QStringLiteral("VorlageLoeschen"),
                     tr("Die gewählte Vorlage löschen"))),
      pause_(button(tr("Pause"), QStringLiteral("Pause"),
                    tr("Nach dem Bild dieser Ebene anhalten; »Weiter« setzt fort"))),
      stop_(button(tr("Stopp"), QStringLiteral("Stopp"), tr("Den Stapel sofort anhalten (Esc)"))),
      progress_(new QLabel) {
    setObjectName(QStringLiteral("Stapelsteuerung"));
    presets_->setObjectName(QStringLiteral("Vorlagen"));
    presets_->setToolTip(tr("Gespeicherte Stapel dieses Aufbaus"));
    presets_->setMinimumContentsLength(12);
    progress_->setObjectName(QStringLiteral("Stapelstand"));
    progress_->setWordWrap(true);
    QFont strong = stop_->font();
    strong.setBold(true);
    stop_->setFont(strong);

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Vorlagen")), 0, 0);
    grid->addWidget(presets_, 0, 1);
    grid->addWidget(save_, 0, 2);
    grid->addWidget(delete_, 0, 3);
    grid->addWidget(progress_, 1, 0, 1, 2);
    grid->addWidget(pause_, 1, 2);
    grid->addWidget(stop_, 1, 3);
    grid->setColumnStretch(1, 1);

    connect(presets_, &QComboBox::activated, this, &StackBox::applyPreset);
    connect(save_, &QPushButton::clicked, this, &StackBox::savePreset);
    connect(delete_, &QPushButton::clicked, this, &StackBox::deletePreset);
    connect(stop_, &QPushButton::clicked, &stack_, &StackControl::stop);
    connect(pause_, &QPushButton::clicked, this, [this] {
        if (stack_.pauseRequested())
            stack_.resume();
        else
            stack_.pause();
    });
    connect(&stack_, &StackControl::changed, this, &StackBox::showState);
    connect(&panel_, &ctlQuendrix::PropertyChanged, this, [this](const QString& name) {
        if (name == u"Controltyp") reloadPresets();
    });
    ticker_.setInterval(1000);
    connect(&ticker_, &QTimer::timeout, this, &StackBox::showState);
    showState();
}

void StackBox::showState() {
    const StackControl::Phase phase = stack_.phase();
    const bool going =
        phase == StackControl::Phase::Approach || phase == StackControl::Phase::Running;
    pause_->setEnabled(going);
    pause_->setText(stack_.pauseRequested() ? tr("Weiter") : tr("Pause"));
    stop_->setEnabled(going);
    for (QWidget* preset : {static_cast<QWidget*>(presets_), static_cast<QWidget*>(save_),
                            static_cast<QWidget*>(delete_)})
        preset->setEnabled(!stack_.active());
    delete_->setEnabled(!stack_.active() && presets_->currentIndex() > 0);
    progress_->setText(progressText());
    if (stack_.active() && !ticker_.isActive()) ticker_.start();
    if (!stack_.active()) ticker_.stop();
}

QString StackBox::progressText() const {
    const QString left = tr("noch etwa %1").arg(duration(stack_.remainingSeconds()));
    const QString count = tr("%1 von %2 Bildern").arg(stack_.taken()).arg(stack_.pictures());
    switch (stack_.phase()) {
        case StackControl::Phase::Idle:
            return tr("Esc hält an, Bild ↑ / Bild ↓ verfährt Achse 0 (mit Umschalt langsam).");
        case StackControl::Phase::Stopping:
            return tr("Wird angehalten …");
        case StackControl::Phase::Approach:
            return tr("Anfahrt zum Beginn, %1").arg(left);
        case StackControl::Phase::Running:
            break;
    }
    if (stack_.pausedNow()) return tr("Angehalten nach %1; »Weiter« setzt fort.").arg(count);
    QString text = stack_.isStack() ? QStringLiteral("%1, %2").arg(count, left) : count;
    if (stack_.pauseRequested()) text += tr("; hält nach diesem Bild an");
    return text;
}

void StackBox::reloadPresets() {
    rigType_ = panel_.Controltyp();
    QSettings settings;
    QStringList problems;
    list_ = presets::load(settings, rigType_, &problems);
    for (const QString& problem : problems)
        emit this->problem(tr("Vorlage übergangen: ") + problem);
    const QString current = presets_->currentIndex() > 0 ? presets_->currentText() : QString();
    presets_->clear();
    presets_->addItem(QStringLiteral("–"));
    for (const StackPreset& preset : list_)
        presets_->addItem(preset.name);
    presets_->setCurrentIndex(qMax(0, presets_->findText(current)));
    showState();
}

void StackBox::applyPreset(int index) {
    if (index <= 0 || index > list_.size() || stack_.active()) {
        showState();
        return;
    }
    const StackPreset& preset = list_[index - 1];
    quendrix::Panel& p = *panel_.panel();
    p.BBeginn[0]->setText(QString::number(preset.begin));
    p.BEnde[0]->setText(QString::number(preset.end));
    p.wartezeit->setText(QString::number(preset.pauseMs));
    // The panel works the plan out when the number of planes changes; the same number again
    // must still be worked out for the new range.
    const QString planes = QString::number(preset.planes);
    if (p.Ebenen->text() == planes) p.Ebenen->clear();
    p.Ebenen->setText(planes);
    emit note(tr("Vorlage »%1«: %2 bis %3 Schritte, %4 Ebenen, Pause %5 ms")
                  .arg(preset.name)
                  .arg(preset.begin)
                  .arg(preset.end)
                  .arg(preset.planes)
                  .arg(preset.pauseMs));
    showState();
}

void StackBox::savePreset() {
    const QString name =
        panel_.platform()
            .inputBox(tr("Name der Vorlage:"), tr("Vorlage speichern"),
                      presets_->currentIndex() > 0 ? presets_->currentText() : QString())
            .trimmed();
    if (name.isEmpty()) return;
    const quendrix::Panel& p = *panel_.panel();
    QString error;
    const auto preset = StackPreset::fromFields(name, p.BBeginn[0]->text(), p.BEnde[0]->text(),
                                                p.Ebenen->text(), p.wartezeit->text(), &error);
    if (!preset) {
        emit problem(tr("Vorlage »%1« nicht gespeichert: %2").arg(name, error));
        return;
    }
    const auto same = std::find_if(list_.begin(), list_.end(),
                                   [&](const StackPreset& kept) { return kept.name == name; });
    if (same != list_.end())
        *same = *preset;
    else
        list_.append(*preset);
    storePresets();
    presets_->setCurrentIndex(presets_->findText(name));
    emit note(tr("Vorlage »%1« gespeichert").arg(name));
    showState();
}

void StackBox::deletePreset() {
    const int index = presets_->currentIndex();
    if (index <= 0 || index > list_.size()) return;
    const QString name = list_.takeAt(index - 1).name;
    storePresets();
    emit note(tr("Vorlage »%1« gelöscht").arg(name));
    showState();
}

void StackBox::storePresets() {
    {
        QSettings settings;
        presets::store(settings, rigType_, list_);
    }
    reloadPresets();
}
