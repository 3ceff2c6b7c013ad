#include "kmr/progress.h"

#include "kmr/output.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kmr {

namespace {

constexpr int BAR_WIDTH = 20;

void erase()
{
    const int written = std::fputs("\r\x1b[K", stderr);
    static_cast<void>(written); // it is only a drawing
}

// Characters of a line of the terminal minus one, for the cursor.
int roomOnLine()
{
    winsize size = {};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return (isKnown ? size.ws_col : 80) - 1;
}

} // namespace

QString progressText(int done, int total, std::chrono::milliseconds elapsed, int width)
{
    const int filled = total > 0 ? std::min(width, width * done / total) : width;
    QString text = QString("[%1%2] %3 of %4 entries")
                       .arg(QString(filled, '#'), QString(width - filled, '.'))
                       .arg(done)
                       .arg(total);
    const double seconds = static_cast<double>(elapsed.count()) / 1000;
    if (done > 0 && seconds > 0)
        text += QString(", %1 a second, %2 s left")
                    .arg(done / seconds, 0, 'f', 0)
                    .arg((total - done) * seconds / done, 0, 'f', 0);
    return text;
}

ProgressBar::ProgressBar(int total) : m_total(total), m_isShown(isatty(STDERR_FILENO) == 1)
{
    if (!m_isShown)
        return;
    setErrorSink([this](const QString &line) {
        erase();
        writeError(line);
        draw();
    });
}

void ProgressBar::advance()
{
    ++m_done;
    if (m_isShown)
        draw();
}

void ProgressBar::clear()
{
    if (!m_isShown)
        return;
    setErrorSink({});
    erase();
    m_isShown = false;
}

void ProgressBar::draw() const
{
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - m_begin);
    const QString text = progressText(m_done, m_total, elapsed, BAR_WIDTH);
    erase();
    const int written = std::fputs(qPrintable(text.left(roomOnLine())), stderr);
    static_cast<void>(written); // it is only a drawing
}

} // namespace kmr
