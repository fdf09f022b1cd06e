#pragma once

#include <QObject>
#include <QString>

namespace quendrix {

class Calibration;
class Link;
class Motion;
class OpticalSetup;
class Panel;
class Rig;

// The lenses and the field of view: the lens list kept in the settings file, the bellows
// extension and the field of view it gives, and the boxes and sliders that feed them.
class Optics : public QObject {
    Q_OBJECT

public:
    // objektiv and gesamtauszug are the control's public variables Objektiv (the selected
    // lens's index as text) and Gesamtauszug (rings plus bellows extension, mm).
    Optics(Rig& rig, Panel& panel, Link& link, Motion& motion, Calibration& calibration,
           OpticalSetup& optical, QString& objektiv, double& gesamtauszug);

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

signals:
    // The field of view changed; Bildbreite is its width in mm, formatted "###0.000".
    void SehfeldNeu(const QString& Bildbreite);

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

    Rig& rig_;
    Panel& panel_;
    Link& link_;
    Motion& motion_;
    Calibration& calibration_;
    OpticalSetup& optical_;
    QString& objektiv_;
    double& gesamtauszug_;
    double distanceMm_ = 0;
};

}  // namespace quendrix
