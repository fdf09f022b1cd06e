#pragma once

#include <QObject>
#include <QString>

namespace quendrix {

class Panel;
class Rig;

// The camera and lens values the field of view is computed from, kept in the panel's boxes:
// the sensor width (Sensor_breite), the focal length (txBrennweite), the extension offset
// (txOffset), the camera type (Frame9's title) and the field of view (lblSehfeld's tool tip,
// which Slider1 follows on a bellows rig). They are the control's properties of the same
// names; every change is reported by propertyChanged.
class OpticalSetup : public QObject {
    Q_OBJECT

public:
    OpticalSetup(Rig& rig, Panel& panel);

    float Sensorbreite() const;
    void setSensorbreite(float value);
    float Brennweite() const;
    void setBrennweite(float value);
    double AzOffset() const;
    void setAzOffset(double value);
    QString Kameratyp() const;
    void setKameratyp(const QString& value);
    QString Sehfeld() const;
    void setSehfeld(const QString& value);

signals:
    void propertyChanged(const QString& name);

private:
    Rig& rig_;
    Panel& panel_;
};

}  // namespace quendrix
