#include "host/session/read_once.h"

#include "host/session/request_ranges.h"

#include <algorithm>
#include <map>

namespace kmr {

namespace {

using Outcome = RequestResult::Outcome;

constexpr int MOST_PASSES = 3;
constexpr int SILENT_REQUESTS = 2; // in a row, after which a station is not asked any more

// One request and its state.
struct Request {
    ElementRange run;
    bool wasAsked = false;
    bool isToBeAsked = true; // in this pass
    bool wasGood = false;    // confirmed
    bool hasFailed = false;  // given up, or a confirmed refusal
    Failure failure = {};    // with hasFailed
};

// Requests in a row without any answer of a station.
struct Silence {
    int requests = 0;
    ElementRange last;
};

class Reader {
public:
    Reader(Session &session, const std::vector<Tag> &tags) : m_session(session)
    {
        for (const ElementRange &run : session.ranges(tags)) {
            (isBitArea(run.area) ? m_bits : m_words).push_back({run});
            session.forget(run);
        }
        m_observer = session.setObserver([this](const Exchange &exchange) {
            note(exchange);
            if (m_observer)
                m_observer(exchange);
        });
        m_confirmObserver = session.setConfirmObserver([this](const ElementRange &run) {
            noteConfirmed(run);
            if (m_confirmObserver)
                m_confirmObserver(run);
        });
        poll(bitsToAsk());
    }
    ~Reader()
    {
        m_session.setObserver(m_observer);
        m_session.setConfirmObserver(m_confirmObserver);
    }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    // Repeats them if answers were out of step.
    void run()
    {
        for (int pass = 0; pass < MOST_PASSES; ++pass) {
            beginPass();
            if (!readWords() || !readBits() || m_session.confirm() != PollLoop::Step::Exchanged)
                return;
        }
        eachRequest([this](Request &request) {
            if (!isDecided(request) && request.wasAsked)
                fail(request, {ReplyFault::NotConfirmed, 0});
        });
    }

    Reading readingOf(const Tag &tag, const std::vector<Tag> &tags) const
    {
        for (const auto *requests : {&m_words, &m_bits}) {
            for (const Request &request : *requests) {
                if (overlap(request.run, tag.elements) && !isGood(request))
                    return notRead(request, tags);
            }
        }
        return {{Outcome::Done, {}}, m_session.values(tag), {}};
    }

private:
    bool isGood(const Request &request) const
    {
        return request.wasGood && m_session.state(request.run).quality != Quality::Unread;
    }

    bool isDecided(const Request &request) const
    {
        return request.hasFailed || isGood(request);
    }

    bool isSilent(int station) const
    {
        const auto silence = m_silent.find(station);
        return silence != m_silent.end() && silence->second.requests >= SILENT_REQUESTS;
    }

    Reading notRead(const Request &request, const std::vector<Tag> &tags) const
    {
        if (request.hasFailed)
            return {{request.failure.exceptionCode != 0 ? Outcome::Refused : Outcome::NoAnswer,
                     request.failure},
                    {},
                    {}};
        if (request.wasAsked) // the line was lost, or the user stopped
            return {{Outcome::NoAnswer, {}}, {}, {}};
        if (!isSilent(request.run.station))
            return {{Outcome::NotSent, {}}, {}, {}};
        const ElementRange &unanswered = m_silent.at(request.run.station).last;
        const auto tag = std::find_if(tags.begin(), tags.end(), [&unanswered](const Tag &other) {
            return overlap(other.elements, unanswered);
        });
        return {{Outcome::NotSent, {ReplyFault::Silence, 0}},
                {},
                tag != tags.end() ? tag->text : runName(unanswered)};
    }

    template <typename Action> void eachRequest(const Action &action)
    {
        for (auto *requests : {&m_words, &m_bits}) {
            for (Request &request : *requests)
                action(request);
        }
    }

    static void fail(Request &request, const Failure &failure)
    {
        request.hasFailed = true;
        request.failure = failure;
    }

    void note(const Exchange &exchange)
    {
        const bool isOver = exchange.outcome != Exchange::Outcome::SentAgain;
        m_finished += isOver ? 1 : 0;
        if (exchange.outcome == Exchange::Outcome::PassedOver || !isRead(exchange.request))
            return;
        const ElementRange run = refreshedBy(exchange.request);
        const bool isRefused = exchange.exceptionCode != 0;
        const bool isGivenUp = exchange.outcome == Exchange::Outcome::GivenUp && !isRefused;
        eachRequest([&](Request &request) {
            if (!overlap(request.run, run))
                return;
            request.wasAsked = true;
            request.isToBeAsked = request.isToBeAsked && !isOver;
            if (isGivenUp)
                fail(request, {exchange.fault, 0, exchange.length});
        });
        if (exchange.fault != ReplyFault::Silence)
            m_silent.erase(run.station); // a damaged answer or a refusal is an answer
        else if (isGivenUp)
            m_silent[run.station] = {m_silent[run.station].requests + 1, run};
    }

    void noteConfirmed(const ElementRange &run)
    {
        eachRequest([&](Request &request) {
            if (!overlap(request.run, run))
                return;
            const ElementState state = m_session.state(request.run);
            request.wasGood = request.wasGood || state.quality == Quality::Good;
            if (state.quality == Quality::Stale)
                fail(request, state.failure);
        });
    }

    void beginPass()
    {
        eachRequest([this](Request &request) { request.isToBeAsked = !isDecided(request); });
    }

    // False if the line was lost or the user stopped.
    bool readWords()
    {
        for (const Request &request : m_words) {
            if (!request.isToBeAsked || isSilent(request.run.station))
                continue;
            const RequestResult result = m_session.ask(request.run);
            if (result.outcome == Outcome::NotSent || result.outcome == Outcome::Unknown)
                return false;
        }
        return true;
    }

    // Rounds of polling, until no request is left that was passed over because its station gave no
    // answer before. Returns the same as readWords().
    bool readBits()
    {
        for (std::vector<ElementRange> runs; !(runs = bitsToAsk()).empty();) {
            poll(runs);
            const std::size_t silent = silentStations();
            m_finished = 0;
            while (m_finished < m_bitRequests && silentStations() == silent) {
                if (m_session.step() != PollLoop::Step::Exchanged)
                    return false;
            }
        }
        return true;
    }

    std::vector<ElementRange> bitsToAsk() const
    {
        std::vector<ElementRange> runs;
        for (const Request &request : m_bits) {
            if (request.isToBeAsked && !isSilent(request.run.station))
                runs.push_back(request.run);
        }
        return runs;
    }

    void poll(const std::vector<ElementRange> &runs)
    {
        if (m_bitRequests == 0 || runs != m_polled)
            m_bitRequests = m_session.poll(runs);
        m_polled = runs;
    }

    std::size_t silentStations() const
    {
        return static_cast<std::size_t>(
            std::count_if(m_silent.begin(), m_silent.end(),
                          [this](const auto &silence) { return isSilent(silence.first); }));
    }

    Session &m_session;
    PollLoop::Observer m_observer; // the caller's observer
    Session::ConfirmObserver m_confirmObserver;
    std::vector<Request> m_words;
    std::vector<Request> m_bits;
    std::vector<ElementRange> m_polled;
    int m_bitRequests = 0;           // of one round
    int m_finished = 0;              // requests of this round
    std::map<int, Silence> m_silent; // by station
};

} // namespace

std::vector<Reading> readNow(Session &session, const std::vector<Tag> &tags)
{
    Reader reader(session, tags);
    reader.run();
    std::vector<Reading> readings;
    readings.reserve(tags.size());
    for (const Tag &tag : tags)
        readings.push_back(reader.readingOf(tag, tags));
    return readings;
}

} // namespace kmr
