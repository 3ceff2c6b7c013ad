#include "view/traffic_model.h"

#include "modbus/ascii.h"
#include "modbus/protocol.h"
#include "view/quality_icon.h"

#include <QDateTime>

#include <cmath>

namespace kmr {

namespace {

// All that was received is there now.
void judge(TrafficRow &row, Echo &echo)
{
    const TrafficNews &traffic = row.traffic;
    ReplyFilter filter(traffic.sent, echo);
    ReplyFilter::Verdict verdict = ReplyFilter::Verdict::MoreWanted;
    if (!traffic.received.isEmpty())
        verdict = filter.take(traffic.received);
    if (verdict == ReplyFilter::Verdict::MoreWanted)
        verdict = filter.end();
    if (verdict == ReplyFilter::Verdict::Good) {
        row.outcome =
            filter.exceptionCode() == 0 ? TrafficRow::Outcome::Good : TrafficRow::Outcome::Refused;
        const FrameText answer = explainLine(filter.reply(), traffic.sent);
        row.answer = row.outcome == TrafficRow::Outcome::Refused ? answer.exception
                     : answer.values.isEmpty()                   ? TrafficModel::tr("done")
                                                                 : answer.values;
        return;
    }
    row.outcome = filter.fault() == ReplyFault::Silence ? TrafficRow::Outcome::Silent
                                                        : TrafficRow::Outcome::Faulty;
    row.answer = toText(filter.fault(), filter.length());
}

TrafficRow rowOf(const TrafficNews &traffic)
{
    TrafficRow row;
    row.traffic = traffic;
    row.request = explainLine(traffic.sent);
    row.elements = row.request.elements.isEmpty() ? row.request.addressRange : row.request.elements;
    if (!row.request.values.isEmpty())
        row.elements += ": " + row.request.values;
    return row;
}

QColor colourOf(TrafficRow::Outcome outcome)
{
    switch (outcome) {
    case TrafficRow::Outcome::Refused:
        return doubtfulColour();
    case TrafficRow::Outcome::Silent:
    case TrafficRow::Outcome::Faulty:
        return badColour();
    default:
        return {};
    }
}

// Seen without colours too.
QString signOf(TrafficRow::Outcome outcome)
{
    switch (outcome) {
    case TrafficRow::Outcome::Good:
        return QString::fromUtf8("✓ ");
    case TrafficRow::Outcome::Refused:
        return QString::fromUtf8("⊘ ");
    case TrafficRow::Outcome::Silent:
        return QString::fromUtf8("… ");
    case TrafficRow::Outcome::Faulty:
        return QString::fromUtf8("✗ ");
    case TrafficRow::Outcome::Waiting:
        break;
    }
    return {};
}

} // namespace

std::vector<TrafficNews> trafficOf(const Capture &capture)
{
    std::vector<TrafficNews> traffic;
    const double begin = static_cast<double>(capture.begin.toMSecsSinceEpoch()) / 1000;
    for (const CapturedPiece &piece : capture.pieces) {
        const double time = begin + static_cast<double>(piece.microseconds) / 1e6;
        if (piece.isSent || traffic.empty())
            traffic.push_back({time, piece.isSent ? piece.characters : QByteArray(), {}, 0});
        if (piece.isSent)
            continue;
        traffic.back().received += piece.characters;
        traffic.back().lastReceived = time;
    }
    return traffic;
}

std::deque<TrafficRow> rowsOf(const std::vector<TrafficNews> &traffic, const ReadProgress &progress)
{
    std::deque<TrafficRow> rows;
    Echo echo;
    const auto count = static_cast<qint64>(traffic.size());
    for (const TrafficNews &exchange : traffic) {
        const auto done = static_cast<qint64>(rows.size());
        if (!goesOn(progress, done, count))
            break;
        rows.push_back(rowOf(exchange));
        if (done + 1 < count || !exchange.received.isEmpty()) // else the capture ends before
            judge(rows.back(), echo);
    }
    return rows;
}

TrafficModel::TrafficModel(QObject *parent) : QAbstractTableModel(parent) {}

void TrafficModel::clear()
{
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

void TrafficModel::show(std::deque<TrafficRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void TrafficModel::add(const std::vector<TrafficNews> &traffic)
{
    if (traffic.empty())
        return;
    auto next = traffic.begin();
    if (next->sent.isEmpty() && !m_rows.empty()) { // what came of the last one
        m_rows.back().traffic.received += next->received;
        m_rows.back().traffic.lastReceived = next->lastReceived;
        ++next;
    }
    if (next == traffic.end())
        return;
    const int last = static_cast<int>(m_rows.size()) - 1;
    if (last >= 0) {
        judge(m_rows.back(), m_echo);
        emit dataChanged(index(last, 0), index(last, COLUMNS - 1));
    }
    dropOldest(static_cast<std::size_t>(traffic.end() - next));
    const int first = static_cast<int>(m_rows.size());
    beginInsertRows({}, first, first + static_cast<int>(traffic.end() - next) - 1);
    for (; next != traffic.end(); ++next) {
        m_rows.push_back(rowOf(*next));
        if (next + 1 != traffic.end())
            judge(m_rows.back(), m_echo);
    }
    endInsertRows();
}

void TrafficModel::dropOldest(std::size_t room)
{
    if (m_rows.size() + room <= MOST_ROWS)
        return;
    const std::size_t count = std::min(m_rows.size(), std::max(room, MOST_ROWS / 10));
    beginRemoveRows({}, 0, static_cast<int>(count) - 1);
    m_rows.erase(m_rows.begin(), m_rows.begin() + static_cast<std::ptrdiff_t>(count));
    endRemoveRows();
}

int TrafficModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int TrafficModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : COLUMNS;
}

QVariant TrafficModel::data(const QModelIndex &index, int role) const
{
    const TrafficRow &found = row(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return text(found, index.column());
    case Qt::ForegroundRole: {
        const QColor colour = colourOf(found.outcome);
        return colour.isValid() ? QVariant(colour) : QVariant();
    }
    case OUTCOME_ROLE:
        return static_cast<int>(found.outcome);
    case FUNCTION_ROLE:
        return found.request.function.left(2);
    default:
        return {};
    }
}

QVariant TrafficModel::text(const TrafficRow &row, int column) const
{
    switch (column) {
    case TIME:
        return QDateTime::fromMSecsSinceEpoch(std::llround(row.traffic.time * 1000))
            .toString("HH:mm:ss.zzz");
    case STATION:
        return row.request.station;
    case FUNCTION:
        return row.request.function;
    case ELEMENTS:
        return row.elements;
    case ANSWER:
        return signOf(row.outcome) + row.answer;
    case ROUND_TRIP:
        return row.traffic.lastReceived > 0
                   ? tr("%1 ms").arg((row.traffic.lastReceived - row.traffic.time) * 1000, 0, 'f',
                                     1)
                   : QString();
    default:
        return {};
    }
}

QVariant TrafficModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const QStringList names = {tr("Time"),     tr("Station"),    tr("Function"),
                               tr("Elements"), tr("Round trip"), tr("Answer")};
    return names.value(section);
}

} // namespace kmr
