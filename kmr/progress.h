// A line on the terminal with the progress of a transfer.
#pragma once

#include <QString>

#include <chrono>

namespace kmr {

// "[#####...............] 12 of 50 entries, 24 a second, 2 s left". `width`: characters of the bar.
QString progressText(int done, int total, std::chrono::milliseconds elapsed, int width);

// Shows the line on stderr if that is a terminal, redrawn in place below the lines of printError().
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

    // Removes the line.
    void clear();

private:
    void draw() const;

    const int m_total;
    bool m_isShown;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    int m_done = 0;
};

} // namespace kmr
