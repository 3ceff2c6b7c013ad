#include "view/value_groups.h"

#include "host/tags/tag_syntax.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <map>
#include <utility>

namespace kmr {

namespace {

struct Groups {
    Q_DECLARE_TR_FUNCTIONS(Groups)
};

QString namePart(QString text)
{
    static const QRegularExpression separator("[./]");
    const int slash = static_cast<int>(text.lastIndexOf('/'));
    if (slash > 0 && valueTypeOf(text.mid(slash + 1))) // a format
        text.truncate(slash);
    const int end = static_cast<int>(text.indexOf(separator));
    return end > 0 ? text.left(end) : Groups::tr("others");
}

} // namespace

QString groupOf(const Tag &tag, Grouping grouping)
{
    switch (grouping) {
    case Grouping::Area:
        return tag.elements.area;
    case Grouping::Station:
        return Groups::tr("Station %1").arg(tag.elements.station);
    case Grouping::Name:
        return namePart(tag.text);
    case Grouping::None:
        break;
    }
    return {};
}

std::vector<Heading> headingsOf(std::vector<ValueRow> &rows, Grouping grouping)
{
    const auto key = [grouping](const ValueRow &row) {
        const int station = row.polled.tag.elements.station;
        return std::make_pair(grouping == Grouping::Station ? station : 0,
                              groupOf(row.polled.tag, grouping));
    };
    std::map<std::pair<int, QString>, int> numbers;
    for (ValueRow &row : rows) {
        row.group = -1;
        if (grouping != Grouping::None)
            numbers[key(row)] = 0;
    }
    std::vector<Heading> headings;
    for (auto &[place, number] : numbers) {
        number = static_cast<int>(headings.size());
        headings.push_back({place.second, 0, 0});
    }
    if (grouping == Grouping::None)
        return headings;
    for (ValueRow &row : rows) {
        row.group = numbers[key(row)];
        Heading &heading = headings[static_cast<std::size_t>(row.group)];
        ++heading.count;
        heading.bad += row.quality == Quality::Good ? 0 : 1;
    }
    return headings;
}

} // namespace kmr
