// One session on an open link, for the thread of the line: polls the tags and collects what is news
// to the window.
#pragma once

#include "host/session/session.h"
#include "view/line_news.h"
#include "view/tag_index.h"

#include <QIODevice>

#include <atomic>
#include <functional>
#include <vector>

namespace kmr {

class LineRun {
public:
    using Tap = std::function<void(bool isSent, const QByteArray &characters)>;

    // What is handed in by reference must outlive it. `news` is added to; `breathe` is called every
    // 50 ms while an answer is waited for, `tap` with all characters.
    LineRun(const DriverFunctions &driver, QIODevice &device, SessionSettings settings,
            const std::atomic<bool> &stop, LineNews &news, std::function<void()> breathe, Tap tap);

    // Replaces what is polled. Throws Error (Usage) as Session::ranges() does; then the old tags
    // stay.
    void poll(std::vector<PolledTag> tags);

    PollLoop::Step step()
    {
        return m_session.step();
    }

    WriteResult write(const Tag &tag, const Values &values)
    {
        return writeTag(m_session, tag, values);
    }

    // `news`: what is to be transferred; becomes what came of it.
    void transfer(RecipeNews &news);

    // Nothing is fresh any more; `cause` says why.
    void noteLoss(const QString &cause);

    // It is open again.
    void restart();

private:
    SessionSettings tapped(SessionSettings settings);
    void noteTraffic(bool isSent, const QByteArray &characters);
    void note(const Exchange &exchange);
    void noteConfirmed(const ElementRange &run);
    void noteStation(int station);
    void noteState(std::size_t place, double time);

    struct Known { // what the window knows of a tag
        Quality quality = Quality::Unread;
        Values values;
    };

    LineNews &m_news;
    const Tap m_tap;
    Session m_session;
    std::vector<PolledTag> m_tags;
    std::vector<Known> m_known; // by tag
    TagIndex m_index;
};

} // namespace kmr
