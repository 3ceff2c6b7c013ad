// Keeps a silent station from starving the others on its line: each request to it costs a whole
// timeout and the quiet time after it, and with retries a multiple, while everyone else waits.
//
//  - A station whose request was given up is asked without retries until it answers, and its polled
//    blocks are passed over for a pause of three timeouts: a late answer may still come.
//  - Each further give-up doubles the pause, up to ten timeouts: one that is switched on again is
//    found soon, and silent it takes no more than a fifth of the line.
//  - An answer ends all that, a refusal as well.
//
// Nobody is passed over while no other station can use the time: a lone station, and stations that
// are all silent, are asked in turn, without retries. Only polling is concerned, not single
// requests and recipes.
#pragma once

#include <chrono>
#include <map>
#include <set>

namespace kmr {

// How a request is treated when its turn has come.
enum class Turn {
    Ask,
    AskOnce, // without retries
    PassOver // not at all: to the driver it has failed
};

class StationPauses {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr int FIRST_PAUSE = 3; // timeouts
    static constexpr int LONGEST_PAUSE = 10;

    explicit StationPauses(std::chrono::milliseconds timeout) : m_timeout(timeout) {}

    // The stations that are polled; what is known of them is kept.
    void setStations(const std::set<int> &stations)
    {
        m_stations = stations;
    }

    void noteAnswer(int station)
    {
        m_silent.erase(station);
    }
    void noteGiveUp(int station, TimePoint now);

    // Whether two requests to it in a row were given up.
    bool isSilent(int station) const;

    void forgetAll()
    {
        m_silent.clear();
    }

    // For the next polled block of a station.
    Turn turnOf(int station, TimePoint now) const;

private:
    struct Silence {
        int pause = 0;   // timeouts
        TimePoint until; // its end
    };

    bool isPausing(int station, TimePoint now) const;
    bool canAnotherBeAsked(int station, TimePoint now) const;

    std::chrono::milliseconds m_timeout;
    std::set<int> m_stations;
    std::map<int, Silence> m_silent; // by station
};

} // namespace kmr
