// A session on the built driver and a line to a simulated controller.
#pragma once

#include "host/session/request_ranges.h"
#include "host/session/session.h"
#include "simulator/controller.h"
#include "tests/host/library.h"
#include "tests/host/scripted_device.h"

#include <gtest/gtest.h>

#include <memory>

namespace kmr {

// An answer that never comes.
inline QByteArray silence(const QByteArray &, const QByteArray &)
{
    return {};
}

inline bool isWrite(const QByteArray &request)
{
    return request.mid(3, 2) == "10" || request.mid(3, 2) == "05";
}

// `m_spoil`, if it is set, changes the controller's answers.
class SessionTest : public testing::Test {
protected:
    // Makes the session; to be called once.
    Session &session(EchoMode echo = EchoMode::Auto, int groupLimit = 8)
    {
        SessionSettings settings;
        settings.poll.timeout = std::chrono::milliseconds(100);
        settings.poll.echo = echo;
        settings.poll.inStep = m_inStep;
        settings.groupLimit = groupLimit;
        m_session =
            std::make_unique<Session>(library(), m_device, settings, m_stop, m_device.clock());
        return *m_session;
    }

    static Tag tag(const QString &text)
    {
        return tagOf(text);
    }

    static std::vector<Tag> tags(const QStringList &texts)
    {
        std::vector<Tag> list;
        for (const QString &text : texts)
            list.push_back(tag(text));
        return list;
    }

    void setElement(const QString &area, int number, std::uint32_t value)
    {
        ASSERT_TRUE(simulator::setElement(m_controller.memory(), area, number, value));
    }

    std::uint32_t element(const QString &area, int number)
    {
        return *simulator::element(m_controller.memory(), area, number);
    }

    void poll(const QStringList &texts)
    {
        m_session->poll(readRanges(tags(texts), m_session->groupLimit()));
    }

    // Writes all of a tag, as the command does.
    RequestResult write(const QString &text, const Values &values)
    {
        RequestResult result;
        auto next = values.begin();
        for (const kmr::ElementRange &run : writeRanges({tag(text)}, m_session->groupLimit())) {
            result = m_session->write(run, Values(next, next + run.count));
            if (!result.isDone())
                break;
            next += run.count;
        }
        return result;
    }

    bool m_inStep = false; // for confirmation_test.cpp; the other rules hold with it or without
    simulator::Controller m_controller{"01"};
    std::function<QByteArray(const QByteArray &request, const QByteArray &answer)> m_spoil;
    ScriptedDevice m_device{[this](const QByteArray &request) {
        const QByteArray answer = m_controller.answer(request);
        return std::vector<Piece>{{1, m_spoil ? m_spoil(request, answer) : answer}};
    }};
    std::atomic<bool> m_stop{false};
    std::unique_ptr<Session> m_session;
};

} // namespace kmr
