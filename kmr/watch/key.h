// A key of the terminal.
#pragma once

#include <QString>

namespace kmr {

struct Key {
    enum class Kind {
        Character, // with its text
        Up,
        Down,
        Left,
        Right,
        PageUp,
        PageDown,
        Home,
        End,
        Enter,
        Escape,
        Backspace,
        Delete,
        ClearLine // Ctrl-U
    };

    Kind kind = Kind::Character;
    QString text = {};

    bool is(const char *character) const
    {
        return kind == Kind::Character && text == QLatin1String(character);
    }
};

} // namespace kmr
