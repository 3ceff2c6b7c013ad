// Requests to write, from their topic to their answer.
#include "kmr/publish/plain_topics.h"
#include "kmr/publish/set_inbox.h"
#include "kmr/publish/write_desk.h"

#include "host/error.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

const char *const NAMES = "name,tag,unit,scale,texts,writable\n"
                          "oven,D100/int16,°C,0.1,,yes\n"
                          "valve,M5,,,0=closed;1=open,yes\n"
                          "doors,M8x3,,,,yes\n"
                          "label,D200x4/text,,,,yes\n"
                          "speed,D0,,,,no\n"
                          "input,X0,,,,yes\n";

// A desk whose writes are confirmed, and counted.
class WriteDeskTest : public testing::Test {
protected:
    static Incoming incoming(const QByteArray &name, const QByteArray &payload)
    {
        Incoming request;
        request.topic = "line/" + name + "/set";
        request.payload = payload;
        request.time = std::chrono::steady_clock::now();
        return request;
    }

    // "confirmed 21.5", or "refused" and why.
    std::string outcome(const Incoming &request)
    {
        m_answer = m_desk.handle(request);
        return m_answer.payload.toStdString();
    }

    std::string outcome(const QByteArray &name, const QByteArray &payload)
    {
        return outcome(incoming(name, payload));
    }

    // Whether the answer has this text, and nothing was written.
    bool isRefused(const Incoming &request, const std::string &reason)
    {
        const int before = m_writes;
        const std::string text = outcome(request);
        const bool has =
            text.find("\"outcome\":\"refused\",\"reason\":\"" + reason) != std::string::npos;
        EXPECT_TRUE(has) << text << "\ninstead of " << reason;
        return has && m_writes == before;
    }

    const NamedTagReader m_reader{TagReader(library(), 1), NameTable::parse(NAMES, "names.csv")};
    const Topics m_topics{"line", {"oven", "speed"}};
    int m_writes = 0;
    Values m_written;
    WriteDesk m_desk{m_reader, m_topics, [this](const Tag &, const Values &values) {
                         ++m_writes;
                         m_written = values;
                         return WriteOutcome{"confirmed", {}, {}};
                     }};
    Message m_answer;
};

} // namespace

TEST_F(WriteDeskTest, TakesValuesAsTheyAreTypedAndInJson)
{
    struct Row {
        const char *name;
        const char *payload;
        Values values;
    };
    const Row rows[] = {
        {"oven", "21.5", {215}},
        {"oven", " 21.5 °C\n", {215}},
        {"oven", "{\"value\": 21.5}", {215}},
        {"oven", "{\"value\": 2e1}", {200}},
        {"oven", "{\"value\": \"0x10\"}", {16}},
        {"valve", "open", {1}},
        {"valve", "{\"value\": \"open\"}", {1}},
        {"valve", "{\"value\": true}", {1}},
        {"doors", "1 0 1", {1, 0, 1}},
        {"doors", "[1, 0, 1]", {1, 0, 1}},
        {"doors", "{\"value\": [true, 0, 1]}", {1, 0, 1}},
        {"label", "AB", {0x4241, 0, 0, 0}},
        {"label", "{\"value\": \"12\"}", {0x3231, 0, 0, 0}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.payload);
        EXPECT_NE(outcome(row.name, row.payload).find("\"confirmed\""), std::string::npos);
        EXPECT_EQ(m_written, row.values);
        EXPECT_FALSE(m_answer.isRetained);
    }
}

TEST_F(WriteDeskTest, RefusesInWordsWhatMustNotBeWritten)
{
    struct Row {
        const char *name;
        QByteArray payload;
        const char *reason;
    };
    const Row rows[] = {
        {"speed", "1", "speed is not marked writable in names.csv"},
        {"drum", "1", "names.csv has no name \\\"drum\\\""},
        {"D100", "1", "names.csv has no name \\\"D100\\\""},
        {"input", "1", "input can't be written: X are inputs"},
        {"oven", "", "no value"},
        {"oven", "warm", "bad value \\\"warm\\\" for oven"},
        {"oven", "1 2", "oven: expected 1 value, got 2"},
        {"oven", "3276.8", "bad value \\\"3276.8\\\" for oven"},
        {"oven", "{\"value\": 1e300}", "bad value "},
        {"oven", "{\"value\": \"21\"}", "oven is a number, not a text such as \\\"21\\\""},
        {"oven", "{\"value\": true}", "oven is not a bit, which true and false are for"},
        {"oven", "{\"value\": null}", "a value is a number, a text, true or false, not null"},
        {"oven", "{\"value\": {}}", "a value is a number, a text, true or false, not {}"},
        {"label", "{\"value\": 5}", "label is a text, not a number such as 5"},
        {"label", "[\"a\", \"b\"]", "label is one text, not a list"},
        {"oven", "{\"valu\": 1}", "unknown key \\\"valu\\\", did you mean \\\"value\\\"?"},
        {"oven", "{\"value\": 1", "not valid JSON, although it begins with { or ["},
        {"oven", "{}", "no value"},
        {"oven", "{\"value\": 1, \"id\": []}", "an id is a text or a whole number"},
        {"oven", "{\"value\": 1, \"expires\": \"soon\"}", "expires is a time with its offset"},
        {"oven", "{\"value\": 1, \"expires\": \"2026-01-01T00:00:00\"}", "expires is a time with"},
        {"oven", "{\"value\": 1, \"expires\": \"2020-01-01T00:00:00Z\"}", "expired at 2020-01-01"},
        {"oven", "\xFF", "not in UTF-8"},
        {"oven", QByteArray(4097, '1'), "longer than 4096 bytes"},
    };
    for (const Row &row : rows)
        EXPECT_TRUE(isRefused(incoming(row.name, row.payload), row.reason));
}

TEST_F(WriteDeskTest, RefusesWhatIsRetainedExpiredOrHasWaited)
{
    Incoming request = incoming("oven", "21");
    request.isRetained = true;
    EXPECT_TRUE(isRefused(request, "retained: a request counts only while it is new"));
    request = incoming("oven", "21");
    request.expiry = std::chrono::seconds(5);
    EXPECT_NE(outcome(request).find("confirmed"), std::string::npos);
    request.time -= std::chrono::seconds(6);
    EXPECT_TRUE(isRefused(request, "expired before its turn came"));
    request = incoming("oven", "21");
    request.time -= std::chrono::seconds(11);
    EXPECT_TRUE(isRefused(request, "waited for the line for 10 s, and is too old now"));
}

TEST_F(WriteDeskTest, AnswersBesideTheRequestOrWhereItAsksFor)
{
    outcome("a/b+", "1");
    EXPECT_EQ(m_answer.topic, "line/a/b+/outcome");
    Incoming request = incoming("oven", "21");
    request.responseTopic = "panel/answers";
    request.correlation = "c7";
    outcome(request);
    EXPECT_EQ(m_answer.topic, "panel/answers");
    EXPECT_EQ(m_answer.correlation, "c7");
    for (const char *const topic : {"$SYS/x", "other/valve/set", "line/oven", "line", "a/#"}) {
        request.responseTopic = topic;
        EXPECT_TRUE(isRefused(request, "no answer may go to the response topic")) << topic;
        EXPECT_EQ(m_answer.topic, "line/oven/outcome");
    }
}

TEST_F(WriteDeskTest, TheSameRequestIsWrittenOnceAndAnsweredEachTime)
{
    const std::string first = outcome("oven", "{\"value\": 21, \"id\": \"a7\"}");
    const std::string again = outcome("oven", "{\"value\": 21, \"id\": \"a7\"}");
    EXPECT_EQ(first.substr(0, first.find("time")), again.substr(0, again.find("time")));
    EXPECT_NE(first.find("\"id\":\"a7\""), std::string::npos);
    EXPECT_EQ(m_writes, 1);
    outcome("oven", "{\"value\": 21, \"id\": 8}");
    outcome("valve", "{\"value\": 1, \"id\": \"a7\"}"); // of another name
    EXPECT_EQ(m_writes, 3);
    Incoming request = incoming("oven", "21");
    request.correlation = "c7";
    outcome(request);
    outcome(request);
    EXPECT_EQ(m_writes, 4);
    outcome("oven", "21"); // nobody can know these again
    outcome("oven", "21");
    EXPECT_EQ(m_writes, 6);
}

TEST(WriteOutcome, HasTheWordsOfTheResult)
{
    using Outcome = RequestResult::Outcome;
    const Failure refusal{ReplyFault::None, 4, {}};
    const Failure silence{ReplyFault::Silence, 0, {}};
    EXPECT_EQ(outcomeOf({Outcome::Done, {}}, {}).word, "confirmed");
    EXPECT_EQ(outcomeOf({Outcome::Refused, refusal}, "1#D8").word, "refused");
    EXPECT_EQ(outcomeOf({Outcome::Refused, refusal}, "1#D8").reason,
              "stopped at 1#D8: refused: server device failure (exception 04)");
    EXPECT_EQ(outcomeOf({Outcome::NoAnswer, silence}, {}).word, "no answer");
    EXPECT_EQ(outcomeOf({Outcome::Unknown, {}}, {}).word, "unknown");
    EXPECT_EQ(outcomeOf({Outcome::NotSent, {}}, {}).word, "not sent");
}

TEST(SetInbox, AFloodIsLimitedAndCounted)
{
    SetInbox inbox;
    for (int i = 0; i < 100; ++i)
        inbox.add({{"t", QByteArray::number(i), false, {}, {}, {}, {}}});
    EXPECT_EQ(inbox.refused(), 100 - SetInbox::MOST_WAITING);
    const std::vector<Incoming> refused = inbox.takeRefused();
    EXPECT_EQ(refused.size(), std::size_t{SetInbox::MOST_REFUSED});
    EXPECT_EQ(refused.front().payload, QByteArray::number(int{SetInbox::MOST_WAITING}));
    EXPECT_TRUE(inbox.takeRefused().empty());
    EXPECT_EQ(inbox.take()->payload, "0");
    std::size_t waiting = 0;
    while (inbox.take())
        ++waiting;
    EXPECT_EQ(waiting, SetInbox::MOST_WAITING - 1);
}

TEST(SetInbox, WhatOneMessageAsksForIsTakenAsAWholeOrNotAtAll)
{
    SetInbox inbox;
    inbox.add(std::vector<Incoming>(20));
    inbox.add(std::vector<Incoming>(13));
    EXPECT_EQ(inbox.refused(), 13U);
    inbox.add(std::vector<Incoming>(12));
    EXPECT_EQ(inbox.refused(), 13U);
}

TEST(Topics, NamesMakeLevelsAndWhatATopicCannotHaveIsEscaped)
{
    const Topics topics("plant/line1", {"hall/oven", "2#D100", "50%+"});
    EXPECT_EQ(topics.value("hall/oven"), "plant/line1/hall/oven");
    EXPECT_EQ(topics.value("2#D100"), "plant/line1/2%23D100");
    EXPECT_EQ(topics.value("50%+"), "plant/line1/50%25%2B");
    EXPECT_EQ(topics.nameOfSet("plant/line1/2%23D100/set"), QString("2#D100"));
    EXPECT_EQ(topics.nameOfSet("plant/line1/other/set"), QString("other"));
    EXPECT_FALSE(topics.nameOfSet("plant/line1/oven"));
    EXPECT_FALSE(topics.nameOfSet("plant/line10/oven/set"));
    EXPECT_EQ(topics.setFilters(), (QStringList{"plant/line1/+/set", "plant/line1/hall/oven/set"}));
}

TEST(PlainTopics, TakeNoRequestsWithoutPermissionEvenIfTheBrokerSendsThem)
{
    for (const bool takesRequests : {true, false}) {
        PlainTopics topics(Topics("line", {"oven"}), PayloadForm::Json, takesRequests);
        EXPECT_EQ(topics.commands({"line/oven/set", "1", false, {}, {}, {}, {}}).requests.size(),
                  takesRequests ? 1U : 0U);
    }
}

TEST(Topics, WhatWouldShareATopicIsRefused)
{
    EXPECT_THROW(Topics("line", {"oven", "oven/set"}), Error);
    EXPECT_THROW(Topics("line", {"oven", "oven/outcome"}), Error);
    EXPECT_NO_THROW(Topics("line", {"oven", "oven", "oven/other"}));
    for (const char *const prefix : {"", "/line", "line/", "a/+/b", "#", "$SYS"})
        EXPECT_THROW(Topics(prefix, {}), Error) << prefix;
}
