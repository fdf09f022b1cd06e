#pragma once

#include "options.h"

#include <QString>

class ctlQuendrix;

// The settings file a run works with. A simulated rig never writes a file the photographer
// named: it works on a copy, so trying the program leaves a real rig's settings as they are.
struct RigSettings {
    QString file;        // what the panel reads and writes
    QString named;       // the file --ini named, when `file` is a copy of it
    bool fresh = false;  // the file is new: a simulated rig seeds it

    // Picks the file for the run: --ini's (a copy of it on the simulated rig), else the
    // simulated rig type's own file or the real rig's. Empty file, with *error, when the copy
    // cannot be made.
    static RigSettings choose(const Options& options, int controltyp, QString* error);
    // The program's folder in the user's data directory, created: the simulated rigs'
    // settings, the copies of named files and the calibration lists live there.
    static QString dataFolder();
};

// Gives a new simulated rig of the panel's type sensible settings: a brisk rail and a stack
// plan over the simulated subject, a usable travel on the lens changer and the microscope,
// and a lens list matching the changer's positions.
void seedSimulatedRig(ctlQuendrix& panel);
