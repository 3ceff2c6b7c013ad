// The tags of a trend with their figures: at the cursor, at the markers and between them. Axis,
// factor and offset can be changed here; they change what is shown, never what was measured.
#pragma once

#include "view/trend_plot.h"

#include <QTableWidget>

#include <vector>

namespace kmr {

class TrendTable : public QTableWidget {
    Q_OBJECT

public:
    enum Column {
        TAG,
        CURSOR,
        AT_A,
        AT_B,
        DIFFERENCE,
        LEAST,
        MOST,
        MEAN,
        AXIS,
        FACTOR,
        OFFSET,
        COLUMNS
    };

    explicit TrendTable(QWidget *parent = nullptr);

    void setStyles(const std::vector<TrendStyle> &styles);

    // Figures of the span between the markers, or else of what the plot shows.
    void showFigures(const History &history, const TrendPlot &plot);

    // The rows that are marked.
    std::vector<int> markedRows() const;

signals:
    // A row's axis, factor or offset was changed; the rows are those of setStyles().
    void styleChanged(int row, const kmr::TrendStyle &style);

private:
    void take(const QTableWidgetItem &item);
    void toggleAxis(int row);
    void put(int row, int column, const QString &text);

    std::vector<TrendStyle> m_styles;
    bool m_isFilling = false;
};

// With so many digits as a person reads.
QString figureText(std::optional<double> value);

} // namespace kmr
