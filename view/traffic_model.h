// The exchanges on the line as a table, the newest last.
#pragma once

#include "host/line/frame_text.h"
#include "host/project/capture.h"
#include "view/line_news.h"

#include <QAbstractTableModel>

#include <deque>

namespace kmr {

struct TrafficRow {
    enum class Outcome { Waiting, Good, Refused, Silent, Faulty };

    TrafficNews traffic;
    Outcome outcome = Outcome::Waiting;
    FrameText request;
    QString elements; // what is asked for
    QString answer;   // in words, or what is wrong with it
};

class TrafficModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { TIME, STATION, FUNCTION, ELEMENTS, ROUND_TRIP, ANSWER, COLUMNS };

    static constexpr int OUTCOME_ROLE = Qt::UserRole;      // TrafficRow::Outcome
    static constexpr int FUNCTION_ROLE = Qt::UserRole + 1; // "03"

    // Exchanges that are kept; the oldest tenth goes.
    static constexpr std::size_t MOST_ROWS = 50000;

    explicit TrafficModel(QObject *parent = nullptr);

    void add(const std::vector<TrafficNews> &traffic);
    void clear();

    // Replaces all; more than MOST_ROWS may stay.
    void show(std::deque<TrafficRow> rows);

    const TrafficRow &row(int index) const
    {
        return m_rows[static_cast<std::size_t>(index)];
    }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void dropOldest(std::size_t room);
    QVariant text(const TrafficRow &row, int column) const;

    std::deque<TrafficRow> m_rows;
    Echo m_echo; // what is known of it
};

// The traffic of a capture.
std::vector<TrafficNews> trafficOf(const Capture &capture);

// The same as rows.
std::deque<TrafficRow> rowsOf(const std::vector<TrafficNews> &traffic,
                              const ReadProgress &progress = {});

} // namespace kmr
