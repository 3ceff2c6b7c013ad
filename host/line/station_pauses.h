// Keeps a silent station from blocking the others on its line: each request to it takes a whole
// timeout and the quiet time after it, and several with retries, while the others wait.
//
//  - A station whose request was given up is asked without retries until it answers, and its polled
//    blocks are passed over for a pause of three timeouts: a late answer may still come.
//  - Each further give-up doubles the pause, up to ten timeouts: a station that is switched on
//  again
//    is found soon, and a silent one takes at most a fifth of the line.
//  - An answer, also a refusal, ends the pauses.
//
// No station is passed over if no other station can use the time: a lone station, and stations that
// are all silent, are asked in turn, without retries. This applies only to polling, not to single
// requests and recipes.
#pragma once

#include <chrono>
#include <map>
#include <set>

namespace kmr {

// What is done with a request when it is its turn.
enum class Turn {
    Ask,
    AskOnce, // without retries
    PassOver // not sent: for the driver it has failed
};

class StationPauses {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr int FIRST_PAUSE = 3; // timeouts
    static constexpr int LONGEST_PAUSE = 10;

    explicit StationPauses(std::chrono::milliseconds timeout) : m_timeout(timeout) {}

    // Sets the stations that are polled; what is known about them is kept.
    void setStations(const std::set<int> &stations)
    {
        m_stations = stations;
    }

    void noteAnswer(int station)
    {
        m_silent.erase(station);
    }
    void noteGiveUp(int station, TimePoint now);

    // True if two requests to the station in a row were given up.
    bool isSilent(int station) const;

    void forgetAll()
    {
        m_silent.clear();
    }

    // What to do with the next polled block of a station.
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
