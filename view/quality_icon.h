// Qualities and outcomes by colour and by shape: who sees no colours sees the shapes.
#pragma once

#include "host/session/quality.h"

#include <QColor>
#include <QIcon>

namespace kmr {

// Good a full green circle, stale a red triangle, pending an empty grey circle.
QIcon qualityIcon(Quality quality);

// Green, red and amber that can be read on the window's background, dark or light.
QColor goodColour();
QColor badColour();
QColor doubtfulColour();

} // namespace kmr
