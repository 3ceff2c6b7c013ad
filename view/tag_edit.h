// A field for one tag: completes names and areas, and says while one types what the driver makes of
// it.
#pragma once

#include "host/project/named_tag_reader.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

#include <functional>
#include <optional>

namespace kmr {

class TagEdit : public QWidget {
    Q_OBJECT

public:
    explicit TagEdit(QWidget *parent = nullptr);

    // Who reads tags from now on; a copy is kept. Its driver must outlive this.
    void setReader(const NamedTagReader &reader);

signals:
    // The button or the Return key, with a tag that can be read.
    void tagGiven(const kmr::Tag &tag);

private:
    void judge();
    void give();

    std::optional<NamedTagReader> m_reader;
    std::optional<Tag> m_tag; // what is typed, if it is one
    QLineEdit *m_edit;
    QPushButton *m_button;
    QLabel *m_verdict;
};

// "station 1, D100: word, can be written".
QString describe(const Tag &tag);

} // namespace kmr
