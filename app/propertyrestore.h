#pragma once

#include <quendrix/PropertyBag.h>

#include <QStringList>

class ctlQuendrix;

// Restores the panel's design-time properties from a bag a host kept. The panel refuses an
// entry it cannot take (a micro-step setting of 2147483647) with a run-time error, which would
// leave the whole panel unrestored: such entries are found one by one, left out, so the panel
// takes their defaults, and named in the list returned. The other entries are restored.
QStringList restoreProperties(ctlQuendrix& panel, quendrix::PropertyBag bag);
