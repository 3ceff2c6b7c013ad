#include "kmr/watch/screen.h"

#include "host/error.h"
#include "kmr/stop_signal.h"
#include "kmr/watch/terminal_state.h"

#include <algorithm>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <langinfo.h>
#include <string>
#include <termios.h>
#include <unistd.h>
#include <utility>

#define NCURSES_NOMACROS
#define NCURSES_WIDECHAR 1
#include <curses.h>

namespace kmr {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds LOOK_FOR_KEYS(20);
constexpr milliseconds DRAW_INTERVAL(50); // between two frames, at least
constexpr int ESCAPE_WAIT = 25;           // ms until an Escape does not begin another key
constexpr short STALE_COLOURS = 1;

volatile std::sig_atomic_t g_isToSuspend = 0;

extern "C" void noteSuspend(int)
{
    g_isToSuspend = 1;
}

const std::pair<int, Key::Kind> KEYS[] = {
    {KEY_UP, Key::Kind::Up},        {KEY_DOWN, Key::Kind::Down},
    {KEY_LEFT, Key::Kind::Left},    {KEY_RIGHT, Key::Kind::Right},
    {KEY_PPAGE, Key::Kind::PageUp}, {KEY_NPAGE, Key::Kind::PageDown},
    {KEY_HOME, Key::Kind::Home},    {KEY_END, Key::Kind::End},
    {KEY_ENTER, Key::Kind::Enter},  {KEY_BACKSPACE, Key::Kind::Backspace},
    {KEY_DC, Key::Kind::Delete},
};
const std::pair<wint_t, Key::Kind> CONTROLS[] = {
    {L'\r', Key::Kind::Enter},     {L'\n', Key::Kind::Enter},       {L'\x1b', Key::Kind::Escape},
    {L'\b', Key::Kind::Backspace}, {L'\x7f', Key::Kind::Backspace}, {L'\x15', Key::Kind::ClearLine},
};

// `result`: of wget_wch(). Nothing for a key that means nothing here.
std::optional<Key> keyOf(int result, wint_t code)
{
    if (result == KEY_CODE_YES) {
        for (const auto &[known, kind] : KEYS) {
            if (static_cast<wint_t>(known) == code)
                return Key{kind};
        }
        return std::nullopt;
    }
    for (const auto &[known, kind] : CONTROLS) {
        if (known == code)
            return Key{kind};
    }
    if (code < 0x20)
        return std::nullopt;
    const char32_t character = static_cast<char32_t>(code);
    return Key{Key::Kind::Character, QString::fromUcs4(&character, 1)};
}

attr_t attributesOf(Look look)
{
    const attr_t stale = has_colors() ? static_cast<attr_t>(COLOR_PAIR(STALE_COLOURS)) : A_NORMAL;
    switch (look) {
    case Look::Heading:
    case Look::Strong:
        return A_BOLD;
    case Look::Selected:
        return A_REVERSE;
    case Look::Stale:
        return stale;
    case Look::SelectedStale:
        return A_REVERSE | stale;
    case Look::Plain:
        break;
    }
    return A_NORMAL;
}

void draw(const Frame &frame)
{
    werase(stdscr);
    const int columns = getmaxx(stdscr);
    for (int i = 0; i < static_cast<int>(frame.lines.size()) && i < getmaxy(stdscr); ++i) {
        const FrameLine &line = frame.lines[static_cast<std::size_t>(i)];
        const bool isBar = line.look == Look::Selected || line.look == Look::SelectedStale;
        const std::wstring text =
            (isBar ? line.text.leftJustified(columns) : line.text).left(columns).toStdWString();
        wattrset(stdscr, static_cast<int>(attributesOf(line.look)));
        wmove(stdscr, i, 0);
        wclrtoeol(stdscr);
        waddnwstr(stdscr, text.c_str(), static_cast<int>(text.size()));
    }
    wattrset(stdscr, A_NORMAL);
    curs_set(frame.cursor ? 1 : 0);
    if (frame.cursor)
        wmove(stdscr, frame.cursor->line, frame.cursor->column);
    wrefresh(stdscr);
}

void prepareScreen()
{
    cbreak();
    noecho();
    nonl();
    keypad(stdscr, true);
    nodelay(stdscr, true);
    set_escdelay(ESCAPE_WAIT);
    if (qEnvironmentVariableIsEmpty("NO_COLOR") && start_color() == OK) {
        use_default_colors();
        init_pair(STALE_COLOURS, COLOR_RED, -1);
    }
    curs_set(0);
}

FrameSize currentSize()
{
    return {std::max(1, getmaxx(stdscr)), std::max(1, getmaxy(stdscr))};
}

} // namespace

Screen::Screen()
{
    // If stdin is something else, keys come from the terminal all the same.
    FILE *const keys = isatty(STDIN_FILENO) == 1 ? stdin : std::fopen("/dev/tty", "re");
    termios settings = {};
    if (keys == nullptr || tcgetattr(fileno(keys), &settings) != 0)
        throw Error(ErrorKind::Usage,
                    "there is no terminal to read keys of; --format plain shows a "
                    "line for each change instead");
    if (nl_langinfo(CODESET) == QByteArray("ANSI_X3.4-1968")) // of the locale C
        std::setlocale(LC_CTYPE, "C.UTF-8");                  // as kmr prints
    std::signal(SIGTSTP, noteSuspend);                        // ncurses then leaves it to us
    qunsetenv("LINES"); // else the window could not change its size
    qunsetenv("COLUMNS");
    if (newterm(nullptr, stdout, keys) == nullptr)
        throw Error(ErrorKind::Usage, "the terminal can't show a table; --format plain shows a "
                                      "line for each change instead");
    prepareScreen();
    rememberTerminal(fileno(keys), settings);
    setLastAct(restoreTerminal);
    m_size = currentSize();
    m_thread = std::thread([this] { run(); });
}

Screen::~Screen()
{
    m_isOver = true;
    m_thread.join();
    werase(stdscr); // what some terminals keep would mix with what follows
    wrefresh(stdscr);
    endwin();
    setLastAct(nullptr);
    std::signal(SIGTSTP, SIG_DFL);
}

FrameSize Screen::size() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_size;
}

void Screen::show(Frame frame)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_next = std::move(frame);
}

std::vector<Key> Screen::takeKeys()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_keys, {});
}

void Screen::run()
{
    steady_clock::time_point next = steady_clock::now();
    while (!m_isOver) {
        readKeys();
        suspendIfAsked();
        std::optional<Frame> frame;
        if (steady_clock::now() >= next) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            frame = std::exchange(m_next, std::nullopt);
        }
        if (frame) {
            draw(*frame);
            next = steady_clock::now() + DRAW_INTERVAL;
        }
        std::this_thread::sleep_for(LOOK_FOR_KEYS);
    }
}

void Screen::readKeys()
{
    wint_t code = 0;
    int result = 0;
    while (!m_isOver && (result = wget_wch(stdscr, &code)) != ERR) {
        if (result == KEY_CODE_YES && code == KEY_RESIZE)
            clearok(stdscr, true); // what the terminal made of the old picture is unknown
        const std::optional<Key> key = keyOf(result, code);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_size = currentSize();
        if (key)
            m_keys.push_back(*key);
    }
}

// Ctrl-Z: the shell gets its terminal back until it lets us go on.
void Screen::suspendIfAsked()
{
    if (g_isToSuspend == 0)
        return;
    g_isToSuspend = 0;
    endwin();
    std::raise(SIGSTOP); // to this thread, which else would go on for a while
    redrawwin(stdscr);
    wrefresh(stdscr);
}

} // namespace kmr
