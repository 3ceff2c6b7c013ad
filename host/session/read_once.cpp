#include "host/session/read_once.h"

#include "host/session/request_ranges.h"

#include <map>

namespace kmr {

namespace {

using Outcome = RequestResult::Outcome;

constexpr int MOST_PASSES = 3;

class Reader {
public:
    Reader(Session &session, const std::vector<Tag> &tags) : m_session(session)
    {
        for (const ElementRange &run : session.ranges(tags)) {
            (isBitArea(run.area) ? m_bits : m_words).push_back(run);
            session.forget(run);
        }
        m_bitRequests = session.poll(m_bits);
    }

    // Again when answers turned out to be out of step.
    void run()
    {
        for (int pass = 0; pass < MOST_PASSES; ++pass) {
            if (!readWords() || !readBits() || m_session.confirm() != PollLoop::Step::Exchanged)
                return;
        }
        for (const ElementRange &run : m_words)
            giveUpIfUndecided(run);
        for (const ElementRange &run : m_bits)
            giveUpIfUndecided(run);
    }

    Reading readingOf(const Tag &tag) const
    {
        const ElementState state = m_session.state(tag);
        if (state.quality == Quality::Good)
            return {{Outcome::Done, {}}, m_session.values(tag)};
        if (state.quality == Quality::Stale)
            return {{outcomeOf(state.failure), state.failure}, {}};
        const auto silent = m_silentStations.find(tag.elements.station);
        if (silent != m_silentStations.end())
            return {{Outcome::NoAnswer, silent->second}, {}};
        return {{Outcome::NoAnswer, {}}, {}}; // the line was lost, or the user stopped
    }

private:
    static Outcome outcomeOf(const Failure &failure)
    {
        return failure.exceptionCode != 0 ? Outcome::Refused : Outcome::NoAnswer;
    }

    bool isSilent(const ElementRange &run) const
    {
        return m_silentStations.count(run.station) > 0;
    }

    void noteFailure(const ElementRange &run, const Failure &failure)
    {
        if (failure.exceptionCode == 0)
            m_silentStations[run.station] = failure;
    }

    // False when the line is lost or the user stopped.
    bool readWords()
    {
        for (const ElementRange &run : m_words) {
            if (!isUndecided(run))
                continue;
            const RequestResult result = m_session.ask(run);
            if (result.outcome == Outcome::NotSent || result.outcome == Outcome::Unknown)
                return false;
            if (!result.isDone())
                noteFailure(run, result.failure);
        }
        return true;
    }

    void giveUpIfUndecided(const ElementRange &run)
    {
        if (isUndecided(run))
            noteFailure(run, {ReplyFault::NotConfirmed, 0});
    }

    bool isUndecided(const ElementRange &run) const
    {
        return !isSilent(run) && m_session.state(run).quality == Quality::Unread;
    }

    // One round of polling. Looks at all runs only when something failed: there may be thousands.
    // False as readWords().
    bool readBits()
    {
        auto first = m_bits.begin(); // those before it are decided
        for (int asked = 0; first != m_bits.end() && asked < m_bitRequests;) {
            if (!isUndecided(*first)) {
                ++first;
                continue;
            }
            const std::uint64_t retries = m_session.statistics().retries();
            const std::uint64_t giveUps = m_session.statistics().giveUps();
            if (m_session.step() != PollLoop::Step::Exchanged)
                return false;
            if (m_session.statistics().giveUps() != giveUps)
                noteFailures();
            asked += m_session.statistics().retries() == retries ? 1 : 0;
        }
        return true;
    }

    void noteFailures()
    {
        for (const ElementRange &run : m_bits) {
            const ElementState state = m_session.state(run);
            if (state.quality == Quality::Stale)
                noteFailure(run, state.failure);
        }
    }

    Session &m_session;
    std::vector<ElementRange> m_bits;
    int m_bitRequests = 0; // of one round
    std::vector<ElementRange> m_words;
    std::map<int, Failure> m_silentStations;
};

} // namespace

std::vector<Reading> readNow(Session &session, const std::vector<Tag> &tags)
{
    Reader reader(session, tags);
    reader.run();
    std::vector<Reading> readings;
    readings.reserve(tags.size());
    for (const Tag &tag : tags)
        readings.push_back(reader.readingOf(tag));
    return readings;
}

} // namespace kmr
