// What terminfo and the kernel know of the terminal: whether it can show the live table, and how it
// is put back as it was.
#pragma once

#include <QString>

#include <termios.h>

namespace kmr {

// Why stdout can't show a live table. Empty if it can.
QString whyNoScreen();

// Remembers how to put the terminal back. `settings`: those that `keys`, where its keys come from,
// had before. Once ncurses knows the terminal.
void rememberTerminal(int keys, const termios &settings);

// Puts it back without ncurses, as a handler of signals may.
void restoreTerminal();

} // namespace kmr
