#include "kmr/watch/table_view.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

WatchRow wordRow(int number, std::uint32_t value)
{
    WatchRow row;
    row.tag.text = QString("D%1").arg(number);
    row.tag.elements = {1, "D", number, 1};
    noteValues(row, {value});
    row.state = WatchRow::State::Good;
    row.age = std::chrono::milliseconds(value);
    return row;
}

class TableViewTest : public testing::Test {
protected:
    TableViewTest()
    {
        m_view.setHeight(10);
    }

    // The tags that are seen, with the selected one in brackets.
    QString seen()
    {
        m_view.refresh();
        QStringList tags;
        for (std::size_t i = m_view.begin(); i < m_view.end(); ++i)
            tags.append(m_view.isSelected(i) ? '[' + m_view.row(i).tag.text + ']'
                                             : m_view.row(i).tag.text);
        return tags.join(' ');
    }

    QString facts() const
    {
        return m_view.facts().join(", ");
    }

    std::vector<WatchRow> m_rows = {wordRow(10, 5), wordRow(9, 300), wordRow(1, 70)};
    TableView m_view{m_rows};
};

} // namespace

TEST_F(TableViewTest, SortsByEachColumnInTurnThenAsGiven)
{
    m_rows[1].state = WatchRow::State::Stale;
    m_rows[2].changes = 2;
    m_rows[0].changes = 1;
    EXPECT_EQ(seen(), "[D10] D9 D1");
    const std::pair<const char *, const char *> orders[] = {
        {"3 tags, by name", "D1 D9 [D10]"},    {"3 tags, by value", "[D10] D1 D9"},
        {"3 tags, by quality", "D9 [D10] D1"}, {"3 tags, by age", "[D10] D1 D9"},
        {"3 tags, by changes", "D9 [D10] D1"}, {"3 tags", "[D10] D9 D1"}};
    for (const auto &[name, order] : orders) {
        m_view.sortByNext();
        EXPECT_EQ(facts(), name);
        EXPECT_EQ(seen(), order);
    }
    m_view.reverse();
    EXPECT_EQ(seen(), "D1 D9 [D10]");
    EXPECT_EQ(facts(), "3 tags, reversed");
}

TEST_F(TableViewTest, ValuesGoNumbersThenTextsThenNone)
{
    m_rows[0] = WatchRow();
    m_rows[0].tag.text = "none";
    m_rows[1].number.reset();
    m_rows[1].text = "open";
    m_view.sortByNext();
    m_view.sortByNext();
    EXPECT_EQ(seen(), "D1 D9 [none]");
}

TEST_F(TableViewTest, LiveOrderFollowsTheValuesAndTheSelectionItsTag)
{
    m_view.sortByNext();
    m_view.sortByNext();
    EXPECT_EQ(seen(), "[D10] D1 D9");
    noteValues(m_rows[0], {500});
    EXPECT_EQ(seen(), "D1 D9 [D10]");
    EXPECT_EQ(m_view.selected()->tag.text, "D10");
}

TEST_F(TableViewTest, FilterLooksAtTagElementsAndUnitInCapitalsOrNot)
{
    m_rows[0].tag.text = "Oven";
    m_rows[1].tag.unit = "bar";
    TableView view(m_rows);
    view.setHeight(10);
    for (const auto &[filter, tag] : {std::pair("ov", "Oven"), {"1#d10", "Oven"}, {"BAR", "D9"}}) {
        view.setFilter(filter);
        EXPECT_EQ(view.end(), 1U) << filter;
        EXPECT_EQ(view.selected()->tag.text, tag);
        EXPECT_EQ(view.facts().join(' '), QString("1 of 3 tags filter ") + filter);
    }
    view.setFilter("nothing");
    EXPECT_EQ(view.selected(), nullptr);
    view.move(1);
    view.changeFormat();
    view.hide();
    view.setFilter("");
    EXPECT_EQ(view.end(), 3U);
}

TEST_F(TableViewTest, ScrollsAsFarAsTheSelectionNeeds)
{
    m_view.setHeight(2);
    m_view.move(1);
    EXPECT_EQ(seen(), "D10 [D9]");
    m_view.move(1);
    EXPECT_EQ(seen(), "D9 [D1]");
    m_view.move(1);
    EXPECT_EQ(seen(), "D9 [D1]");
    m_view.moveByPage(-1);
    EXPECT_EQ(seen(), "[D10] D9");
    m_view.moveToLast();
    EXPECT_EQ(seen(), "D9 [D1]");
    m_view.moveToFirst();
    EXPECT_EQ(seen(), "[D10] D9");
}

TEST_F(TableViewTest, HigherWindowLeavesNoRowOut)
{
    m_view.setHeight(1);
    m_view.moveToLast();
    EXPECT_EQ(seen(), "[D1]");
    m_view.setHeight(3);
    EXPECT_EQ(seen(), "D10 D9 [D1]");
    m_view.setHeight(1);
    EXPECT_EQ(seen(), "[D1]");
}

TEST_F(TableViewTest, HiddenTagGivesTheSelectionToTheNext)
{
    m_view.move(1);
    m_view.hide();
    EXPECT_EQ(seen(), "D10 [D1]");
    EXPECT_EQ(facts(), "2 of 3 tags, 1 hidden");
    m_view.unhideAll();
    EXPECT_EQ(seen(), "D10 D9 [D1]");
}

TEST_F(TableViewTest, FrozenPictureKeepsItsValues)
{
    m_view.freeze("12:00:05");
    noteValues(m_rows[0], {6});
    m_rows[0].state = WatchRow::State::Stale;
    seen();
    EXPECT_EQ(m_view.row(0).text, "5");
    EXPECT_EQ(m_view.row(0).state, WatchRow::State::Good);
    EXPECT_EQ(facts(), "3 tags, frozen since 12:00:05");
    m_view.freeze("12:00:06");
    EXPECT_EQ(m_view.row(0).text, "6");
    EXPECT_EQ(facts(), "3 tags");
}

TEST_F(TableViewTest, FormatIsThatOfOneTagOrOfAll)
{
    m_view.changeFormat();
    m_view.changeFormat();
    EXPECT_EQ(m_view.format(0), NumberFormat::Signed);
    EXPECT_EQ(m_view.format(1), NumberFormat::AsTag);
    m_view.changeAllFormats();
    EXPECT_EQ(m_view.format(0), NumberFormat::Hex);
    EXPECT_EQ(m_view.format(1), NumberFormat::Hex);
    m_view.changeAllFormats();
    m_view.changeAllFormats();
    EXPECT_EQ(m_view.selectedFormat(), NumberFormat::AsTag);
}

TEST(NameOrder, TakesNumbersByTheirSize)
{
    const QStringList names = {"CV2", "D1", "d2", "D09", "D10", "D10x2", "oven 2", "oven 10"};
    for (int i = 0; i < names.size(); ++i) {
        for (int k = 0; k < names.size(); ++k)
            EXPECT_EQ(isNameBefore(names[i], names[k]), i < k)
                << qPrintable(names[i]) << ' ' << qPrintable(names[k]);
    }
}
