#pragma once

#include <QObject>
#include <QString>

class ctlQuendrix;

namespace quendrix {

class Calibration;
class Link;
class Motion;
class Panel;

// The lenses and the field of view: the lens list kept in the settings file, the bellows
// extension and the field of view it gives, and the boxes and sliders that feed them.
class Optics : public QObject {
    Q_OBJECT

public:
    Optics(ctlQuendrix& control, Panel& panel, Link& link, Motion& motion,
           Calibration& calibration);

    // Lens list.
    void Optik_laden();
    void Optik_waehlen(const QString& Focus);
    void lbObjektiv_Change(qint16 Index);
    void NeuObjektiv_Click();
    void NeuName_Click();
    void Speichern_Click();
    void cbOptik_Click();
    void lblOptik_Change();

    // Field of view.
    void BildGroesse();
    void Balgen_einstellen();
    // The bellows extension and the distance in millimetres from the axes' positions, shown in
    // lbAuszug (its tool tip keeps the working value).
    void updateExtension();
    double distanceMm() const { return distanceMm_; }
    // Rings plus bellows extension, mm.
    double currentExtension() const;

private:
    void connectPanel();
    // An axis reported a new position: the extension and the field of view follow it. Settings
    // nothing can be computed from leave them as they are (the caller drops the error).
    void axisMoved();
    QString lensKey(const QString& name, int index) const;
    QString cameraSection() const;
    // Field width of the bellows formula at a bellows extension (mm).
    double bellowsFieldWidth(double extension) const;
    double selectedFactor() const;
    void showLensName(int index);
    void setFieldWidthFromSlider(int micrometres);
    void driveBellowsToSlider();
    void storeOnEnter(const QString& section, const QString& key, const QString& text);
    void scaleImageWidth();

    ctlQuendrix& control_;
    Panel& panel_;
    Link& link_;
    Motion& motion_;
    Calibration& calibration_;
    double distanceMm_ = 0;
};

}  // namespace quendrix
