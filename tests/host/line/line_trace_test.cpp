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

// Overheard traffic: the direction follows from the content.
TEST(OverheardTrace, RequestsAndAnswersAreToldApart)
{
    const char *const READ = ":01031064000286\r\n";
    const char *const ANSWER = ":01030400FA0001FD\r\n";
    const char *const BIT_WRITE = ":01050805FF00EE\r\n";
    const char *const READ_24_BITS = ":010204000018E1\r\n";
    const char *const DAMAGED = ":01031064000185\r\n";
    const struct {
        std::vector<QByteArray> lines;
        QStringList told; // without time and characters
    } ROWS[] = {
        {{READ, ANSWER},
         {"> station 01: read D100 to D101", "< station 01 answers D100 to D101: 250 1"}},
        {{READ, READ}, {"> station 01: read D100 to D101", "> station 01: read D100 to D101"}},
        {{READ, ":0183027A\r\n"},
         {"> station 01: read D100 to D101",
          "< station 01 refuses: illegal data address (exception 02)"}},
        {{BIT_WRITE, BIT_WRITE, BIT_WRITE},
         {"> station 01: write M5: on", "< station 01: write M5: on (its answer, or an echo)",
          "> station 01: write M5: on"}},
        {{READ_24_BITS, ":010203010203F4\r\n"},
         {"> station 01: read X0 to X27", "< station 01 answers X0 to X27: on: X0, X11, X20, X21"}},
        {{READ, "\xFF\xFE", ANSWER}, // noise when the direction turns
         {"> station 01: read D100 to D101", "< no ':' at the start",
          "< station 01 answers D100 to D101: 250 1"}},
        // The elements of a damaged request or answer are not known.
        {{READ, DAMAGED, ANSWER},
         {"> station 01: read D100 to D101",
          "> station 01: read D100 [LRC 85 wrong, 87 would be right]",
          "< station 01 answers 250 1"}},
        {{READ, ANSWER, ANSWER},
         {"> station 01: read D100 to D101", "< station 01 answers D100 to D101: 250 1",
          "< station 01 answers 250 1"}},
        {{READ, ":0103020001F9\r\n"},
         {"> station 01: read D100 to D101", "< station 01 answers 1"}},
    };
    for (const auto &row : ROWS) {
        QStringList told;
        LineTrace trace(
            [&told](const TracedLine &line) {
                const QString text = toText(line);
                told.append(text.section(' ', 1, 1) + text.mid(text.indexOf("  ") + 1));
            },
            Traffic::Overheard);
        for (const QByteArray &line : row.lines)
            trace.add(QDateTime(), false, line);
        trace.flush();
        EXPECT_EQ(told, row.told) << told.join('\n').toStdString();
    }
}

TEST_F(Trace, NoiseWithoutEndIsToldInPiecesOfALine)
{
    received(QByteArray(1025, 'x'));
    EXPECT_EQ(m_lines.size(), 1);
}

} // namespace kmr
