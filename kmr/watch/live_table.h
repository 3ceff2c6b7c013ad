// The live table of 'kmr watch' without its terminal: what each key does, and what is shown.
#pragma once

#include "kmr/assignment.h"
#include "kmr/watch/frame.h"
#include "kmr/watch/key.h"
#include "kmr/watch/line_edit.h"
#include "kmr/watch/table_view.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

namespace kmr {

class LiveTable {
public:
    // Messages that are kept; older ones are only counted.
    static constexpr std::size_t MOST_MESSAGES = 1000;

    // `rows`: see TableView. `groupLimit`: words that a request may carry.
    LiveTable(const std::vector<WatchRow> &rows, int groupLimit)
        : m_view(rows), m_groupLimit(groupLimit)
    {
    }

    // Does what a key asks for.
    void take(const Key &key);

    // What is to be shown now. `status`: the line at the bottom.
    Frame frame(const FrameSize &size, const QString &status);

    // The table as it was last shown, to be left on the terminal.
    const QStringList &lastPicture() const
    {
        return m_picture;
    }

    // The user wants to end it.
    bool isLeft() const
    {
        return m_isLeft;
    }

    // A write that the user has confirmed, once.
    std::optional<Assignment> takeWrite();

    // What the user is to see until the next key.
    void setNotice(const QString &text)
    {
        m_notice = text;
    }

    // A line for the user.
    void addMessage(const QString &line);

    // All of them, oldest first. "12 lines before these are left out".
    QStringList messages() const;

private:
    enum class Mode {
        Table,
        Filter,  // a filter is typed
        Value,   // a value to write is typed
        Confirm, // the write is shown and waits for y
        Page     // help or messages
    };

    // What stands below the rows.
    struct Footer {
        std::vector<FrameLine> lines;
        int prompt = 0; // its first line
    };

    bool takeMove(const Key &key);
    void takeCommand(const Key &key);
    void takeFilterKey(const Key &key);
    void takeValueKey(const Key &key);
    void takeConfirmKey(const Key &key);
    void takePageKey(const Key &key);
    void beginFilter();
    void beginWrite();
    void readValue();
    void showPage(const QStringList &lines, int top);

    Frame pageFrame(const FrameSize &size);
    QStringList prompt(const FrameSize &size);
    QString promptText() const;
    Footer footer(const FrameSize &size, const QString &status);
    void addTable(const FrameSize &size, int height, Frame &frame);
    QString details() const;

    TableView m_view;
    const int m_groupLimit;
    Mode m_mode = Mode::Table;
    TableColumns m_columns;
    FrameSize m_size;
    QStringList m_picture;
    LineEdit m_edit;                   // with Filter and Value
    QString m_oldFilter;               // with Filter
    std::optional<Assignment> m_asked; // with Value and Confirm
    bool m_isAllShown = false;         // of what Confirm is about
    std::optional<Assignment> m_write; // confirmed
    QString m_notice;                  // until the next key
    QStringList m_page;                // with Page
    int m_pageTop = 0;                 // its first line that is shown
    std::deque<QString> m_messages;
    std::size_t m_forgotten = 0; // messages before these
    bool m_isLeft = false;
};

// "1#D100 = 1825 (0x0721)" for each request in their order: what a write sends. Throws Error
// (Usage) if no request can.
QStringList requestTexts(const Assignment &assignment, int groupLimit);

} // namespace kmr
