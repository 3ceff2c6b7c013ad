#include "kmr/watch/terminal_state.h"

#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

#define NCURSES_NOMACROS
#include <curses.h>
#include <term.h> // makes macros of many words, so this file has few

namespace kmr {

namespace {

int g_keys = -1;
termios g_settings = {};
char g_text[256] = {}; // what the terminal is sent
std::size_t g_length = 0;

extern "C" int keepCharacter(int character)
{
    if (g_length < sizeof g_text)
        g_text[g_length++] = static_cast<char>(character);
    return character;
}

// Null if the terminal can't do it.
const char *capability(const char *name)
{
    const char *text = tigetstr(name);
    return reinterpret_cast<std::intptr_t>(text) == -1 ? nullptr : text;
}

} // namespace

QString whyNoScreen()
{
    const QString name = qEnvironmentVariable("TERM");
    if (isatty(STDOUT_FILENO) != 1)
        return "stdout is not a terminal";
    int result = 0;
    if (setupterm(nullptr, STDOUT_FILENO, &result) != OK)
        return name.isEmpty() ? QString("TERM is not set")
                              : QString("this machine knows no terminal TERM=%1").arg(name);
    const bool canMove = capability("cup") != nullptr;
    del_curterm(cur_term);
    return canMove ? QString() : QString("TERM=%1 can't move its cursor").arg(name);
}

void rememberTerminal(int keys, const termios &settings)
{
    g_keys = keys;
    g_settings = settings;
    g_length = 0;
    for (const char *name : {"sgr0", "cnorm", "rmkx", "rmcup"}) {
        if (const char *text = capability(name))
            tputs(text, 1, keepCharacter);
    }
}

// A terminal that takes no characters keeps nobody from ending.
void restoreTerminal()
{
    tcsetattr(g_keys, TCSANOW, &g_settings);
    const int flags = fcntl(STDOUT_FILENO, F_GETFL);
    fcntl(STDOUT_FILENO, F_SETFL, flags | O_NONBLOCK);
    const ssize_t written = write(STDOUT_FILENO, g_text, g_length);
    static_cast<void>(written); // there is nothing left to do
    fcntl(STDOUT_FILENO, F_SETFL, flags);
}

} // namespace kmr
