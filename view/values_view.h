// The table of values with its filter and the field for further tags.
#pragma once

#include "view/tag_edit.h"
#include "view/values_filter.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QTableView>
#include <QWidget>

class QHBoxLayout;

namespace kmr {

class ValuesView : public QWidget {
    Q_OBJECT

public:
    explicit ValuesView(ValuesModel &model, QWidget *parent = nullptr);

    void setReader(const NamedTagReader &reader);

    QTableView *table() const
    {
        return m_table;
    }

    // In which groups the tags are shown.
    void setGrouping(Grouping grouping);

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

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QHBoxLayout *makeBar();
    void makeTable();
    void makeMenu();
    void fillFormats();
    void filter();
    bool toggleGroup(const QModelIndex &index);

    ValuesModel &m_model;
    std::optional<NamedTagReader> m_reader;
    ValuesFilter *m_filter;
    QLineEdit *m_text;
    QComboBox *m_kind;
    QComboBox *m_grouping;
    QTableView *m_table;
    TagEdit *m_tagEdit;
    QMenu *m_menu;
    QMenu *m_formats = nullptr;
    QAction *m_write = nullptr;
};

} // namespace kmr
