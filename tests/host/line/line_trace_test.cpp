#include "host/line/line_trace.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace kmr {
namespace {

class Trace : public testing::Test {
protected:
    void sent(const QByteArray &characters)
    {
        m_trace.add(m_time, true, characters);
    }
    void received(const QByteArray &characters)
    {
        m_trace.add(m_time.addMSecs(8), false, characters);
    }

    QStringList m_lines;
    LineTrace m_trace{[this](const TracedLine &line) { m_lines.append(toText(line)); }};
    const QDateTime m_time{QDate(2024, 5, 1), QTime(12, 0, 0, 125), Qt::UTC};
};

} // namespace

TEST(TraceTime, TimesHaveMillisecondsAndTheOffset)
{
    const QDate date(2024, 5, 1);
    EXPECT_EQ(timeText(QDateTime(date, QTime(12, 0, 0, 7), Qt::OffsetFromUTC, 7200)),
              "2024-05-01T12:00:00.007+02:00");
    EXPECT_EQ(timeText(QDateTime(date, QTime(12, 0), Qt::UTC)), "2024-05-01T12:00:00.000Z");
}

TEST_F(Trace, AnswerIsExplainedByTheRequestBefore)
{
    sent(":01031064000187\r\n");
    received(":0103020");
    received("001F9\r\n");
    EXPECT_EQ(m_lines,
              QStringList(
                  {"2024-05-01T12:00:00.125Z > :01031064000187\\r\\n  station 01: read D100",
                   "2024-05-01T12:00:00.133Z < :0103020001F9\\r\\n  station 01 answers D100: 1"}));
}

TEST_F(Trace, EchoIsNamed)
{
    sent(":01031064000187\r\n");
    received(":01031064000187\r\n");
    EXPECT_EQ(m_lines.value(1),
              "2024-05-01T12:00:00.133Z < :01031064000187\\r\\n  station 01: read D100 (an echo)");
}

TEST_F(Trace, NoiseIsToldInFrontOfTheNextFrame)
{
    received(QByteArray("\xFF") + "A:0103020001F9\r\n");
    EXPECT_EQ(m_lines.value(0), "2024-05-01T12:00:00.133Z < \\xFFA  no ':' at the start");
    EXPECT_EQ(m_lines.value(1),
              "2024-05-01T12:00:00.133Z < :0103020001F9\\r\\n  station 01 answers 1");
}

TEST_F(Trace, LineWithoutItsEndIsToldWhenTheNextRequestIsSent)
{
    received(":0103");
    EXPECT_TRUE(m_lines.isEmpty());
    sent(":01031064000187\r\n");
    EXPECT_EQ(m_lines.value(0), "2024-05-01T12:00:00.133Z < :0103  no CR LF at the end");
}

TEST_F(Trace, FlushTellsWhatIsLeft)
{
    received(":0103");
    m_trace.flush();
    EXPECT_EQ(m_lines, QStringList{"2024-05-01T12:00:00.133Z < :0103  no CR LF at the end"});
}

} // namespace kmr
