#pragma once

#include "presets.h"

#include <QGroupBox>
#include <QTimer>

class QComboBox;
class QLabel;
class QPushButton;
class StackControl;
class ctlQuendrix;

// The stack's controls beside the panel: the presets of the rig type ("Vorlagen": range, planes
// and pause under a name, saved and deleted here), pause and stop for the run under way, and
// how far it is with the time it has left.
class StackBox : public QGroupBox {
    Q_OBJECT
public:
    StackBox(ctlQuendrix& panel, StackControl& stack, QWidget* parent = nullptr);

    // Reads the presets of the rig type the panel is laid out for (again when the rig type
    // changes); a preset that cannot be used is named through problem().
    void reloadPresets();

signals:
    void note(const QString& text);
    void problem(const QString& text);

private:
    void showState();
    QString progressText() const;
    void applyPreset(int index);
    void savePreset();
    void deletePreset();
    void storePresets();

    ctlQuendrix& panel_;
    StackControl& stack_;
    QComboBox* presets_;
    QPushButton* save_;
    QPushButton* delete_;
    QPushButton* pause_;
    QPushButton* stop_;
    QLabel* progress_;
    QTimer ticker_;  // the time left counts down while a run goes on
    QList<StackPreset> list_;
    int rigType_ = 0;
};
