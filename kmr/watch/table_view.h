// Which rows of the table are shown, in which order and number format, and which one is selected.
#pragma once

#include "kmr/watch/watch_table.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <optional>
#include <vector>

namespace kmr {

class TableView {
public:
    enum class Order { Given, Name, Value, Quality, Age, Changes };

    // `rows` must outlive the view. It may change, but not its size and its tags.
    explicit TableView(const std::vector<WatchRow> &rows);

    // Arranges the rows as they are now. What follows goes by that.
    void refresh();

    // The rows that can be seen at a time, 1 or more.
    void setHeight(int lines);

    // Those seen: positions from begin to end, 0 for the first that the filter lets through.
    std::size_t begin() const
    {
        return m_top;
    }
    std::size_t end() const;
    const WatchRow &row(std::size_t position) const;
    NumberFormat format(std::size_t position) const
    {
        return m_formats[m_shown[position]];
    }
    bool isSelected(std::size_t position) const
    {
        return m_shown[position] == m_selected;
    }

    // The selected row, or null when none is shown. The selection stays with its tag, also when
    // rows change places.
    const WatchRow *selected() const;
    NumberFormat selectedFormat() const
    {
        return m_shown.empty() ? NumberFormat::AsTag : m_formats[m_selected];
    }

    // Selects the row so many places further down, or up, and brings it into view.
    void move(int places);
    void moveByPage(int pages)
    {
        move(pages * m_height);
    }
    void moveToFirst();
    void moveToLast();

    // Shows only rows whose tag, elements or unit contain this text, in capitals or not.
    void setFilter(const QString &text);
    const QString &filter() const
    {
        return m_filter;
    }

    // The next order, and after the last the first; the other way round.
    void sortByNext();
    void reverse();

    // Keeps the picture, until it is called again. `now`: time of day.
    void freeze(const QString &now);
    bool isFrozen() const
    {
        return m_frozen.has_value();
    }

    // The next number format, of the selected tag or of all.
    void changeFormat();
    void changeAllFormats();

    // Takes the selected row away; brings all of these back.
    void hide();
    void unhideAll();

    // "3 of 5000 tags", "filter oven", "by value, reversed", "2 hidden", "frozen since 12:00:05".
    QStringList facts() const;

private:
    const std::vector<WatchRow> &rows() const
    {
        return m_frozen ? *m_frozen : m_rows;
    }
    bool isShown(std::size_t index) const;
    bool isBefore(std::size_t left, std::size_t right) const;
    std::size_t position() const;
    void bringIntoView();

    const std::vector<WatchRow> &m_rows;
    std::optional<std::vector<WatchRow>> m_frozen;
    QString m_frozenAt;
    std::vector<QString> m_searched; // what the filter looks at, by row, as these
    std::vector<NumberFormat> m_formats;
    std::vector<bool> m_isHidden;
    std::vector<std::size_t> m_shown; // indices of rows
    std::size_t m_selected = 0;       // likewise
    std::size_t m_lastPosition = 0;   // of the selected row
    std::size_t m_top = 0;            // position
    int m_height = 1;
    QString m_filter;
    Order m_order = Order::Given;
    bool m_isReversed = false;
};

// Whether a name comes before another: numbers in it by their size, so that D9 comes before D10.
bool isNameBefore(const QString &left, const QString &right);

} // namespace kmr
