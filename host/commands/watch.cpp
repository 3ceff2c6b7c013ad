#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/commands/stop.h"
#include "host/poll_plan.h"

#include <map>

namespace kmr {

namespace {

bool overlap(const Run &left, const Run &right)
{
    return left.station == right.station && left.area == right.area && left.first < right.end() &&
           right.first < left.end();
}

// Prints changes, and a line when an outage begins and when it ends.
class Watcher {
public:
    // Ends with line number `maxLines`.
    Watcher(Session &session, std::vector<Tag> tags, std::optional<std::uint64_t> maxLines)
        : m_session(session), m_tags(std::move(tags)), m_maxLines(maxLines), m_shown(m_tags.size())
    {
    }

    void note(const Exchange &exchange)
    {
        const Run run = refreshedBy(exchange.request);
        if (exchange.outcome == Exchange::Outcome::GivenUp)
            beginOutage(run, {exchange.fault, exchange.exceptionCode});
        if (exchange.outcome != Exchange::Outcome::Good)
            return;
        endOutage(run);
        for (std::size_t i = 0; i < m_tags.size(); ++i) {
            if (overlap(m_tags[i].elements, run))
                showChange(i);
        }
    }

    bool isOver() const
    {
        return m_maxLines && m_lines >= *m_maxLines;
    }

    // What keeps tags from being up to date.
    ExitCode outcome() const
    {
        ExitCodes codes;
        for (const Tag &tag : m_tags) {
            const ElementState state = m_session.state(tag);
            if (state.quality == Quality::Stale)
                codes.add(state.failure.exceptionCode != 0 ? ExitCode::Refused
                                                           : ExitCode::NoAnswer);
        }
        return codes.total();
    }

private:
    void showChange(std::size_t index)
    {
        const Tag &tag = m_tags[index];
        if (isOver() || m_session.state(tag).quality != Quality::Good)
            return;
        Values values = m_session.values(tag);
        if (values == m_shown[index])
            return;
        print(QString("%1 %2 %3").arg(now(), tag.text, formatValues(tag, values)));
        m_shown[index] = std::move(values);
        ++m_lines;
    }

    // A refusal concerns the elements asked for, everything else the whole station.
    static QString subject(const Run &run, bool isRefusal)
    {
        const QString station = QString("station %1").arg(run.station);
        return isRefusal ? station + ' ' + elementName(run.area, run.first) : station;
    }

    void beginOutage(const Run &run, const Failure &failure)
    {
        const QString name = subject(run, failure.exceptionCode != 0);
        const QString text = toText(failure);
        if (m_outages[name] == text)
            return;
        m_outages[name] = text;
        printError(QString("%1 %2: %3").arg(now(), name, text));
    }

    void endOutage(const Run &run)
    {
        for (const bool isRefusal : {false, true}) {
            const QString name = subject(run, isRefusal);
            if (m_outages.erase(name) > 0)
                printError(QString("%1 %2 answers again").arg(now(), name));
        }
    }

    Session &m_session;
    const std::vector<Tag> m_tags;
    const std::optional<std::uint64_t> m_maxLines;
    std::vector<Values> m_shown; // by tag; empty before the first
    std::map<QString, QString> m_outages;
    std::uint64_t m_lines = 0;
};

} // namespace

ExitCode runWatch(const Options &options, const WatchOptions &watch)
{
    using std::chrono::steady_clock;
    Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(watch.tags);
    Session &session = connection.open();
    Watcher watcher(session, tags, watch.count);
    session.setObserver([&watcher](const Exchange &exchange) { watcher.note(exchange); });
    session.poll(readRuns(tags, session.groupLimit()));

    const steady_clock::time_point begin = steady_clock::now();
    const auto isOver = [&] {
        return watcher.isOver() ||
               (watch.duration && steady_clock::now() - begin >= *watch.duration);
    };
    PollLoop::Step last = PollLoop::Step::Exchanged;
    while (!isOver() && (last == PollLoop::Step::Exchanged || last == PollLoop::Step::Idle))
        last = session.step();

    printError(summary(session.statistics()));
    if (last == PollLoop::Step::LineLost) {
        printError("the line was lost: check the cable or the network, then start again");
        return ExitCode::NoAnswer;
    }
    return watcher.outcome();
}

} // namespace kmr
