// Which rows of the values are shown, and in which order.
#pragma once

#include "view/values_model.h"

#include <QSortFilterProxyModel>

namespace kmr {

// Each group stays together after its heading, whatever the rows are sorted by.
class ValuesFilter : public QSortFilterProxyModel {
public:
    enum Kind { ALL, NOT_GOOD, MOVING, STILL };

    // `model` must outlive it.
    explicit ValuesFilter(ValuesModel &model, QObject *parent = nullptr);

    // `text` is looked for in tags, addresses and units.
    void set(const QString &text, Kind kind);

    // By a column below 0: as the tags were added.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    bool isWanted(int row) const;

    const ValuesModel &m_model;
    QString m_text;
    Kind m_kind = ALL;
    bool m_isAsAdded = true;
};

} // namespace kmr
