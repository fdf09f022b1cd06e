#pragma once

#include <QObject>
#include <QtGlobal>

namespace quendrix {

class Link;
class Panel;
class Rig;

// The rig's lights: two channels on the motion controller, or a separate light module with a
// ring light of segments and colour channels. Every action ends in one or two commands.
class Lighting : public QObject {
    Q_OBJECT

public:
    Lighting(Rig& rig, Panel& panel, Link& link);

    // The light module fitted (from the settings at start-up): 0 or less, the lights hang on
    // the motion controller and their commands end in "#"; 1 or more, a light module whose
    // commands end in "!" (its check box and slider sit at index DLicht + 1).
    qint16 DLicht() const { return DLicht_; }
    void setDLicht(qint16 module) { DLicht_ = module; }

    // Switches the lights on (EinAus not 0: each channel as its check box says) or off.
    void Beleuchtung(qint16 EinAus);
    // Ring-light mode n.
    void Ring(qint16 mode);
    // Switches ring segment n on.
    void Segment(qint16 segment);
    // Asks the operator for a colour channel's intensity and sends it; a non-numeric or empty
    // answer is a type mismatch (RuntimeError 13) and sends nothing.
    void Farbe(qint16 index);

private:
    void brightnessChanged(int channel);
    void segmentClicked(int index);

    Rig& rig_;
    qint16 DLicht_ = 0;
    Panel& panel_;
    Link& link_;
};

}  // namespace quendrix
