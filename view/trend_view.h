// The page of trends: its plots, the table of their figures, and what is done with them.
#pragma once

#include "view/trend_plot.h"
#include "view/trend_table.h"

#include <QAction>
#include <QLabel>
#include <QToolBar>
#include <QWidget>

#include <vector>

namespace kmr {

class TrendView : public QWidget {
    Q_OBJECT

public:
    // `history` must outlive it.
    explicit TrendView(const History &history, QWidget *parent = nullptr);

    // Shows a tag as well. One that is shown already stays as it is.
    void add(int id, const QString &name, const QString &unit, bool isBit);
    void remove(int id);

    // Another axis, factor or offset of the tag at this place in styles().
    void restyle(int place, const TrendStyle &style);
    void clear();
    const std::vector<TrendStyle> &styles() const
    {
        return m_styles;
    }

    TrendPlot &plot()
    {
        return *m_plot;
    }

    // To be called some times a second while it is visible.
    void refresh(double now);

    // Writes the visible span: as kmr log does for .csv, and as a picture for .png and .svg. Throws
    // Error (Usage, Output).
    void exportTo(const QString &path);

signals:
    // Tags were dropped here.
    void tagsDropped(const std::vector<int> &ids);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void makeActions(QToolBar &bar);
    void showStyles();
    void removeMarked();
    void chooseExport();

    const History &m_history;
    std::vector<TrendStyle> m_styles;
    int m_added = 0; // for their looks
    TrendPlot *m_plot;
    TrendTable *m_table;
    QLabel *m_hint; // while nothing is shown
    QAction *m_follow = nullptr;
};

} // namespace kmr
