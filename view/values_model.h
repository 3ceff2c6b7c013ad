// The tags as a table: what each was last confirmed to hold, how far that can be trusted, and how
// it has moved.
#pragma once

#include "view/line_news.h"
#include "view/value_groups.h"

#include <QAbstractTableModel>
#include <QMimeData>
#include <QSet>

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace kmr {

// "good", "stale" or "pending".
QString qualityName(Quality quality);

// The values as numbers, for trends; not a number for a text that stands for none.
std::vector<double> numbersOf(const Tag &tag, const Values &values);

struct NewTag {
    PolledTag polled;
    QString comment; // of a name
};

class ValuesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { TAG, VALUE, UNIT, QUALITY, COURSE, AGE, CHANGES, ADDRESS, COLUMNS };

    // Whatever stands in a column, as what it is sorted by.
    static constexpr int SORT_ROLE = Qt::UserRole;
    // The tag's number (PolledTag::id; 0 of a heading), its Quality, its course (QVariantList), and
    // seconds since it changed.
    static constexpr int ID_ROLE = Qt::UserRole + 1;
    static constexpr int QUALITY_ROLE = Qt::UserRole + 2;
    static constexpr int COURSE_ROLE = Qt::UserRole + 3;
    static constexpr int STILL_ROLE = Qt::UserRole + 4;

    // What a drag of rows carries: numbers of tags as text, separated by blanks.
    static const char *const MIME_TYPE;

    explicit ValuesModel(QObject *parent = nullptr);

    void clear();
    void add(const std::vector<NewTag> &tags);
    void remove(const std::vector<int> &ids);

    // Another format of the same tag: what was measured is shown anew, if it fits.
    void replace(const PolledTag &tag);

    // After the tags' rows there is one for each group, its heading.
    void setGrouping(Grouping grouping);
    Grouping grouping() const
    {
        return m_grouping;
    }

    // The number of the heading in a row, or -1 for a tag's row.
    int headingAt(int row) const
    {
        return std::max(-1, row - static_cast<int>(m_rows.size()));
    }
    // The number of the heading that a row belongs to, or is.
    int groupAt(int row) const
    {
        const int heading = headingAt(row);
        return heading >= 0 ? heading : m_rows[static_cast<std::size_t>(row)].group;
    }
    bool isCollapsed(int heading) const
    {
        const auto number = static_cast<std::size_t>(heading);
        return number < m_headings.size() && m_collapsed.contains(m_headings[number].name);
    }
    // Collapses a group, or shows its tags again.
    void toggle(int heading);

    // Null if there is none.
    const ValueRow *find(int id) const;
    const std::vector<ValueRow> &rows() const
    {
        return m_rows;
    }
    std::vector<PolledTag> polled() const;

    // Notes what is new of a tag. What changed is redrawn with refresh().
    void take(const TagNews &news);

    // Redraws what has changed since it was called before, and all ages. To be called some times a
    // second.
    void refresh(double now);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;

private:
    QVariant text(const ValueRow &row, int column) const;
    QVariant sortKey(const ValueRow &row, int column) const;
    QString toolTip(const ValueRow &row) const;
    QVariant headingData(const Heading &heading, int column, int role) const;
    int headingRow(int heading) const
    {
        return static_cast<int>(m_rows.size()) + heading;
    }
    void regroup();
    void reindex();

    std::vector<ValueRow> m_rows;
    Grouping m_grouping = Grouping::None;
    std::vector<Heading> m_headings;
    QSet<QString> m_collapsed;                    // names of headings
    std::unordered_map<int, std::size_t> m_index; // by the tag's number
    double m_now = 0;
};

} // namespace kmr
