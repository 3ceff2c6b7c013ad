// The terminal of the live table: shows frames and reads keys, in a thread of its own, so that
// nobody ever waits for a slow terminal. It is put back as it was when this object ends, and also
// when a signal ends the program.
#pragma once

#include "kmr/watch/frame.h"
#include "kmr/watch/key.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace kmr {

// Only one at a time.
class Screen {
public:
    // whyNoScreen() must say nothing. Throws Error (Usage) if there is no terminal to read keys of.
    Screen();
    ~Screen();
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    // As it is now, 1 line and column or more.
    FrameSize size() const;

    // Shows the frame soon, unless another one comes before.
    void show(Frame frame);

    // Those pressed since the last call.
    std::vector<Key> takeKeys();

private:
    void run();
    void readKeys();
    void suspendIfAsked();

    mutable std::mutex m_mutex; // of the next three
    FrameSize m_size;
    std::optional<Frame> m_next;
    std::vector<Key> m_keys;
    std::atomic<bool> m_isOver{false};
    std::thread m_thread; // all of ncurses, while it runs
};

} // namespace kmr
