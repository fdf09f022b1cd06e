#pragma once

#include "options.h"

#include <QCoreApplication>
#include <QString>

class QSerialPort;
class ctlQuendrix;

// The device a serial port opens, as the system names it (/dev/ttyUSB0, not ttyUSB0).
QString serialDevice(const QSerialPort& port);

// Brings the rig into service through the panel's own start-up (Comm_Starten or
// WiFi_Starten) and, when it does not come into service, tells where the board was looked
// for, what happened and what to check, instead of leaving the photographer waiting.
class RigStartup {
    Q_DECLARE_TR_FUNCTIONS(RigStartup)

public:
    RigStartup(ctlQuendrix& panel, Options::Board board);

    // Runs the start-up. With deadlineSeconds > 0 the panel's waits are ended (as its
    // Terminate does) once the start-up has taken that long, so that a run nobody watches
    // ends in time even on a WiFi start-up, whose waits add up to a minute and a half; such a
    // run also ends as soon as the board stops acknowledging its commands. Returns whether
    // the rig came into service: a board that hears its commands but acknowledges none is
    // not, though the panel's own start-up goes through all its waits and calls it ready.
    bool run(double deadlineSeconds = 0);

    // Why the rig is not in service: where the board was looked for and what happened (empty
    // once it is in service), and what to check; in the window's language forWindow, else in
    // English for the standard error.
    QString summary(bool forWindow) const;
    QString advice(bool forWindow) const;

private:
    // The plan read from the settings as the panel shows it after its start-up.
    void recalculatePlan();
    // Tells the board the direction each axis's direction box shows.
    void alignDirections();
    // Where the board was looked for: the device or address, the key that names it and the
    // settings file.
    QString where(bool forWindow) const;
    QString why(bool forWindow) const;

    ctlQuendrix& panel_;
    Options::Board board_;
    bool ready_ = false;
    bool timedOut_ = false;
    bool silent_ = false;  // the board stopped acknowledging its commands
    quint64 sentBefore_ = 0;
    quint64 unansweredBefore_ = 0;
    QString failure_;  // what the start-up threw, if it did
    double deadline_ = 0;
};
