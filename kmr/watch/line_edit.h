// A line of text that is being typed.
#pragma once

#include "kmr/watch/key.h"

#include <QString>

namespace kmr {

class LineEdit {
public:
    // Begins with this text, and the cursor after it.
    explicit LineEdit(QString text = {});

    // Keys that edit nothing are ignored.
    void take(const Key &key);

    const QString &text() const
    {
        return m_text;
    }

    // Characters before the cursor.
    int cursor() const
    {
        return m_cursor;
    }

private:
    QString m_text;
    int m_cursor = 0;
};

} // namespace kmr
