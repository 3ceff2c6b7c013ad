// Looks at a window as a person does, and finds what they would complain about.
#pragma once

#include <QStringList>
#include <QWidget>

namespace kmr {

// Panes without anything in them, widgets that overlap or leave their parent, text that is cut, and
// widgets that a screen reader can't name.
QStringList faultsOfLook(QWidget &window);

} // namespace kmr
