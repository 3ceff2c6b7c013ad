// Asks for the new values of a tag and for a confirmation, and says what became of the write.
#pragma once

#include "view/line_news.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>

#include <optional>

namespace kmr {

class WriteDialog : public QDialog {
    Q_OBJECT

public:
    // `current`: what the tag was last confirmed to hold, as shown; empty: nothing yet.
    WriteDialog(Tag tag, const QString &current, QWidget *parent = nullptr);

    const Tag &tag() const
    {
        return m_tag;
    }

    // What the tag holds by now, in the same form.
    void showCurrent(const QString &current);

    // The write that was confirmed last has come to its end.
    void showOutcome(const WriteResult &result);

signals:
    // The person has confirmed; not again until showOutcome() has reported that write.
    void confirmed(const kmr::Values &values);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeForm();
    void judge();
    void write();

    const Tag m_tag;
    QString m_current;
    std::optional<Values> m_values; // what is typed, if it fits
    bool m_isWriting = false;
    QLabel *m_holds;
    QComboBox *m_edit;
    QLabel *m_sentence;
    QLabel *m_outcome;
    QPushButton *m_write;
};

} // namespace kmr
