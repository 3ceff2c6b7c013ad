// The live table without a terminal: keys and what is shown.
#include "kmr/watch/live_table.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

const Key ENTER{Key::Kind::Enter};
const Key ESCAPE{Key::Kind::Escape};

WatchRow rowOf(const QString &text, const ElementRange &elements, const Values &values)
{
    WatchRow row;
    row.tag.text = text;
    row.tag.elements = elements;
    row.tag.count = elements.count;
    noteValues(row, values);
    row.state = WatchRow::State::Good;
    return row;
}

class LiveTableTest : public testing::Test {
protected:
    LiveTableTest()
    {
        m_rows[0].tag.scaling.emplace("0.1");
        m_rows[0].tag.unit = "bar";
        m_rows[2].tag.kind = ElementKind::Bit;
        m_rows[2].tag.isWritable = false;
    }

    void type(const QString &text)
    {
        for (const QChar character : text)
            m_table.take({Key::Kind::Character, character});
    }

    // The lines of an 80 x 24 terminal that are not empty, or of another.
    QStringList shown(const FrameSize &size = {80, 24})
    {
        m_frame = m_table.frame(size, "status");
        EXPECT_LE(static_cast<int>(m_frame.lines.size()), size.lines);
        QStringList lines;
        for (const FrameLine &line : m_frame.lines) {
            EXPECT_LE(line.text.size(), size.columns);
            if (!line.text.isEmpty())
                lines.append(line.text);
        }
        return lines;
    }

    std::vector<WatchRow> m_rows = {rowOf("press", {1, "D", 100, 1}, {1825}),
                                    rowOf("D0x3", {2, "D", 0, 3}, {1, 2, 3}),
                                    rowOf("X5", {1, "X", 5, 1}, {1})};
    LiveTable m_table{m_rows, 2};
    Frame m_frame;
};

} // namespace

TEST_F(LiveTableTest, ShowsRowsDetailsFactsAndStatus)
{
    m_rows[1].state = WatchRow::State::Stale;
    m_rows[1].cause = "no answer";
    m_rows[1].staleSince = "12:00:05";
    m_table.take({Key::Kind::Down});
    const QStringList lines = shown();
    ASSERT_EQ(lines.size(), 7);
    EXPECT_TRUE(lines[0].startsWith("TAG    VALUE"));
    EXPECT_TRUE(lines[2].startsWith("D0x3   1 2 3  "));
    EXPECT_EQ(lines.mid(4),
              (QStringList{"D0x3  2#D0..2  no answer", "3 tags  ? for the keys", "status"}));
    EXPECT_EQ(m_frame.lines.size(), 24U);
    EXPECT_EQ(m_frame.lines[1].look, Look::Plain);
    EXPECT_EQ(m_frame.lines[2].look, Look::SelectedStale);
}

TEST_F(LiveTableTest, LowWindowKeepsARowAndAFootnoteWhateverElse)
{
    m_table.addMessage("station 1: no answer");
    const std::pair<int, QStringList> windows[] = {
        {3, {"TAG", "press", "3 tags"}},
        {4, {"TAG", "press", "station", "3 tags"}},
        {5, {"TAG", "press", "station", "3 tags", "status"}},
        {6, {"TAG", "press", "station", "press", "3 tags", "status"}}};
    for (const auto &[height, beginnings] : windows) {
        const QStringList lines = shown({40, height});
        ASSERT_EQ(lines.size(), beginnings.size()) << height;
        for (int i = 0; i < lines.size(); ++i)
            EXPECT_TRUE(lines[i].startsWith(beginnings[i])) << qPrintable(lines[i]);
    }
    for (int height = 1; height < 3; ++height)
        EXPECT_FALSE(shown({1, height}).isEmpty());
}

TEST_F(LiveTableTest, FilterIsTypedWithTheCursorAndEscapeTakesItBack)
{
    type("/d0");
    EXPECT_EQ(shown()[2], "filter: d0 ");
    EXPECT_EQ(m_frame.cursor->line, 22);
    EXPECT_EQ(m_frame.cursor->column, 10);
    m_table.take(ENTER);
    EXPECT_TRUE(shown().contains("1 of 3 tags  filter d0  ? for the keys"));
    EXPECT_FALSE(m_frame.cursor);
    type("/x");
    m_table.take({Key::Kind::Backspace});
    type("o");
    EXPECT_EQ(shown()[1], "filter: d0o ");
    m_table.take(ESCAPE);
    EXPECT_TRUE(shown().contains("1 of 3 tags  filter d0  ? for the keys"));
    m_table.take(ESCAPE);
    EXPECT_TRUE(shown().contains("3 tags  ? for the keys"));
}

TEST_F(LiveTableTest, WriteShowsWhatIsSentAndWaitsForY)
{
    type("w200");
    EXPECT_EQ(shown()[4], "new value of press: 200 ");
    m_table.take(ENTER);
    EXPECT_EQ(shown()[4], "Write press=200 bar, that is 1#D100 = 2000 (0x07D0)? y/n");
    type("aw ");
    EXPECT_FALSE(m_table.takeWrite());
    type("y");
    const auto write = m_table.takeWrite();
    ASSERT_TRUE(write);
    EXPECT_EQ(write->tag.text, "press");
    EXPECT_EQ(write->values, Values{2000});
    EXPECT_FALSE(m_table.takeWrite());
    EXPECT_TRUE(shown().contains("writing press"));
    m_table.setNotice("write press=200: confirmed");
    EXPECT_TRUE(shown().contains("write press=200: confirmed"));
}

TEST_F(LiveTableTest, WriteThatIsNotConfirmedIsNotSent)
{
    for (const Key &key :
         {Key{Key::Kind::Character, "n"}, Key{Key::Kind::Character, "q"}, ESCAPE}) {
        type("w200");
        m_table.take(ENTER);
        shown();
        m_table.take(key);
        EXPECT_TRUE(shown().contains("nothing is written"));
        EXPECT_FALSE(m_table.takeWrite());
        EXPECT_FALSE(m_table.isLeft());
    }
    type("w200");
    m_table.take(ESCAPE);
    EXPECT_TRUE(shown().contains("nothing is written"));
}

TEST_F(LiveTableTest, BadValueIsExplainedAndCanBeCorrected)
{
    type("w9999");
    m_table.take(ENTER);
    EXPECT_EQ(shown().mid(4, 2),
              (QStringList{"new value of press: 9999 ",
                           "bad value \"9999\" for press: expected -3276.8 to 6553.5"}));
    m_table.take({Key::Kind::Backspace});
    m_table.take(ENTER);
    EXPECT_TRUE(shown()[4].contains("1#D100 = 9990 (0x2706)?"));
}

TEST_F(LiveTableTest, TagThatCannotBeWrittenSaysWhy)
{
    m_table.take({Key::Kind::End});
    type("w");
    EXPECT_TRUE(shown().contains("X5 can't be written: X are inputs"));
    EXPECT_FALSE(m_frame.cursor);
}

TEST_F(LiveTableTest, SeveralValuesAreOfferedToBeChangedUnlessTheyAreOld)
{
    m_table.take({Key::Kind::Down});
    type("w");
    EXPECT_EQ(shown()[4], "new value of D0x3: 1 2 3 ");
    m_table.take({Key::Kind::Backspace});
    type("7");
    m_table.take(ENTER);
    EXPECT_EQ(shown()[4],
              "Write D0x3=1 2 7, that is 2#D0..1 = 1 (0x0001) 2 (0x0002), then 2#D2 = 7");
    m_table.take(ESCAPE);
    type(" w");
    EXPECT_EQ(shown()[4], "new value of D0x3:  ");
    m_table.take(ESCAPE);
    type(" ");
    m_rows[1].state = WatchRow::State::Stale;
    type("w");
    EXPECT_EQ(shown()[4], "new value of D0x3:  ");
}

TEST_F(LiveTableTest, WriteThatTheWindowCannotShowWholeIsNotSent)
{
    type("w200");
    m_table.take(ENTER);
    EXPECT_TRUE(shown({24, 4}).contains("Too long to be shown ..."));
    type("y");
    EXPECT_FALSE(m_table.takeWrite());
    shown({24, 8});
    type("y");
    EXPECT_TRUE(m_table.takeWrite());
}

TEST_F(LiveTableTest, PagesScrollAndCloseWithoutEndingTheTable)
{
    for (int i = 0; i < 30; ++i)
        m_table.addMessage(QString("message %1").arg(i));
    type("m");
    EXPECT_EQ(shown().last(), "message 29"); // the newest first of all
    m_table.take({Key::Kind::PageUp});
    EXPECT_EQ(shown().first(), "message 0");
    m_table.take({Key::Kind::Down});
    EXPECT_EQ(shown().first(), "message 1");
    type("q");
    EXPECT_TRUE(shown()[0].startsWith("TAG"));
    EXPECT_FALSE(m_table.isLeft());
    type("?");
    EXPECT_EQ(shown()[0], "Keys of the live table");
    type("qq");
    EXPECT_TRUE(m_table.isLeft());
}

TEST_F(LiveTableTest, OldMessagesAreCounted)
{
    for (int i = 0; i < 1002; ++i)
        m_table.addMessage(QString("message %1").arg(i));
    const QStringList messages = m_table.messages();
    EXPECT_EQ(messages.size(), 1001);
    EXPECT_EQ(messages[0], "2 lines before these are left out");
    EXPECT_EQ(messages[1], "message 2");
}

TEST(LineEdit, CursorMovesAndDeletes)
{
    LineEdit edit("12");
    for (const Key::Kind kind : {Key::Kind::Left, Key::Kind::Backspace, Key::Kind::Backspace})
        edit.take({kind});
    EXPECT_EQ(edit.text(), "2");
    edit.take({Key::Kind::Character, "7"});
    edit.take({Key::Kind::Delete});
    edit.take({Key::Kind::Right});
    EXPECT_EQ(edit.text(), "7");
    EXPECT_EQ(edit.cursor(), 1);
    edit.take({Key::Kind::Home});
    edit.take({Key::Kind::Left});
    EXPECT_EQ(edit.cursor(), 0);
    edit.take({Key::Kind::End});
    EXPECT_EQ(edit.cursor(), 1);
    edit.take({Key::Kind::ClearLine});
    EXPECT_EQ(edit.text(), "");
}
