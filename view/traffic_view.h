// The page of traffic: a filtered table, and what each byte of the marked exchange says.
#pragma once

#include "view/traffic_model.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QTableWidget>
#include <QWidget>

namespace kmr {

class TrafficFilter : public QSortFilterProxyModel {
public:
    enum Kind { ALL, GOOD, REFUSED, FAILED, SILENT, FAULTY };

    using QSortFilterProxyModel::QSortFilterProxyModel;

    // Empty texts leave all stations and functions.
    void set(const QString &station, const QString &function, Kind kind);

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    QString m_station;
    QString m_function;
    Kind m_kind = ALL;
};

class TrafficView : public QWidget {
    Q_OBJECT

public:
    // `canCapture`: whether there is a line, and not a file.
    explicit TrafficView(bool canCapture, QWidget *parent = nullptr);

    void add(const std::vector<TrafficNews> &traffic);

    // The rows of a capture, and nothing else.
    void show(std::deque<TrafficRow> rows)
    {
        m_model.show(std::move(rows));
    }

    // The capture has begun, or is over.
    void showCapturing(bool isCapturing);

signals:
    // A capture to that file is wanted; to an empty name: it is to end.
    void captureWanted(const QString &path);

private:
    void makeBar(bool canCapture);
    void filter();
    void explain();
    void chooseCapture();

    TrafficModel m_model;
    TrafficFilter *m_filter;
    QLineEdit *m_station;
    QComboBox *m_function;
    QComboBox *m_kind;
    QTableView *m_table;
    QTableWidget *m_bytes;
    QWidget *m_bar;
    QAction *m_capture = nullptr;
};

} // namespace kmr
