#pragma once

#include <quendrix/Platform.h>

#include <QLocale>
#include <QString>
#include <QtGlobal>

namespace quendrix {

class SettingNumbers;

// What the parts of the control know of the rig they serve: the surroundings (dialogs, time,
// keys), the locale numbers are shown in, the rig type and motor kinds, the settings section
// named by MotorName with its file, and the transport in use. The control provides it; the
// link and the subsystems take it instead of the control itself.
class Rig {
public:
    virtual ~Rig() = default;

    virtual Platform& platform() const = 0;
    virtual QLocale locale() const = 0;
    virtual qint16 Controltyp() const = 0;
    virtual qint32 MotorArt0() const = 0;
    virtual qint32 MotorArt1() const = 0;
    virtual QString MotorName() const = 0;
    // The board's acknowledgement mark ("qQ").
    virtual QString Kennung() const = 0;
    // True while the link runs over the socket instead of the serial port.
    virtual bool wifi() const = 0;

    // The settings file: a value (szDefault when missing), storing one, and numbers read from
    // it with unusable values reported.
    virtual QString ini(const QString& szGruppe, const QString& szitem,
                        const QString& szDefault) = 0;
    virtual void setini(const QString& KpAppName, const QString& KeyName,
                        const QString& keydefault) = 0;
    virtual SettingNumbers& settingNumbers() const = 0;

    // The control takes the keyboard focus back (after a message the operator closed).
    virtual void takeFocus() = 0;
};

}  // namespace quendrix
