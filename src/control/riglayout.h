#pragma once

#include <QtGlobal>

namespace quendrix {

class Panel;

// Shows, hides and renames the panel's controls for a rig type: 0 distance rail and bellows,
// 1 distance rail and lens changer, 2 a single axis on a microscope stand. Any other value
// changes nothing. Only what a rig type names is touched: switching types does not undo what
// an earlier type hid or renamed.
void applyRigLayout(Panel& panel, qint16 controltyp);

}  // namespace quendrix
