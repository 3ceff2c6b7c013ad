// A line on the terminal that shows how far a transfer has come.
#pragma once

#include <QString>

#include <chrono>

namespace kmr {

// "[#####...............] 12 of 50 entries, 24 a second, 2 s left". `width`: characters of the bar.
QString progressText(int done, int total, std::chrono::milliseconds elapsed, int width);

// Shows the line on stderr, redrawn in place below what printError() writes, where that is a
// terminal; else nothing at all.
class ProgressBar {
public:
    explicit ProgressBar(int total);
    ~ProgressBar()
    {
        clear();
    }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    // One more entry is done.
    void advance();

    // Takes the line away for good.
    void clear();

private:
    void draw() const;

    const int m_total;
    bool m_isShown;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    int m_done = 0;
};

} // namespace kmr
