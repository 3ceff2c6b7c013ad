// The table of values with its filter and the field for further tags.
#pragma once

#include "view/tag_edit.h"
#include "view/values_model.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QWidget>

namespace kmr {

// What the filter leaves.
class ValuesFilter : public QSortFilterProxyModel {
public:
    enum Kind { ALL, NOT_GOOD, MOVING, STILL };

    using QSortFilterProxyModel::QSortFilterProxyModel;

    // `text` is looked for in tags, addresses and units.
    void set(const QString &text, Kind kind);

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    QString m_text;
    Kind m_kind = ALL;
};

class ValuesView : public QWidget {
    Q_OBJECT

public:
    explicit ValuesView(ValuesModel &model, QWidget *parent = nullptr);

    void setReader(const NamedTagReader &reader);

    QTableView *table() const
    {
        return m_table;
    }

    // The tags of the rows that are marked, in the order shown.
    std::vector<int> marked() const;

    // What can be done with marked rows; the menu of the right button, and of the window.
    QMenu *menu() const
    {
        return m_menu;
    }

signals:
    void tagGiven(const kmr::Tag &tag);
    void writeWanted(int id);
    void removeWanted(const std::vector<int> &ids);
    void trendWanted(const std::vector<int> &ids);
    // Another format of a tag.
    void formatWanted(int id, const kmr::Tag &tag);

private:
    void makeMenu();
    void fillFormats();
    void filter();

    ValuesModel &m_model;
    std::optional<NamedTagReader> m_reader;
    ValuesFilter *m_filter;
    QLineEdit *m_text;
    QComboBox *m_kind;
    QTableView *m_table;
    TagEdit *m_tagEdit;
    QMenu *m_menu;
    QMenu *m_formats = nullptr;
    QAction *m_write = nullptr;
};

} // namespace kmr
