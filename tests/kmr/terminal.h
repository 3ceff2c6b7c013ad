// kmr on a terminal that tmux emulates: no real one is needed.
//
// Tests wait for the content of the screen, never for a fixed time.
#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>

class Terminal {
public:
    // Runs a line of shell, in which "$KMR" is kmr, on a screen of this size. When it has ended,
    // "exit code 0" stands below what it left there.
    Terminal(const QString &line, int columns, int rows);
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // The screen without trailing blanks; with colours as escape sequences.
    QString screen();
    QString colouredScreen();

    // Waits until the screen meets the condition, and returns it. Fails the test after a long time.
    QString waitFor(const std::function<bool(const QString &screen)> &isThere);

    // The same for a pattern that is to be found on it.
    QString waitFor(const char *pattern);

    void type(const QString &text);

    // A key as tmux names it: "C-c", "Tab".
    void press(const QString &key);

    void resize(int columns, int rows);

    // Lines that have left the screen at its top.
    int scrolledLines();

    // Whether the cursor is visible, and its row, 0 for the topmost.
    bool isCursorVisible();
    int cursorRow();

private:
    QString tmux(const QStringList &arguments);
    QString ask(const QString &format);

    QTemporaryDir m_directory;
};
