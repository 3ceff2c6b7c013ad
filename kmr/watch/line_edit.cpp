#include "kmr/watch/line_edit.h"

#include <algorithm>
#include <utility>

namespace kmr {

LineEdit::LineEdit(QString text)
    : m_text(std::move(text)), m_cursor(static_cast<int>(m_text.size()))
{
}

void LineEdit::take(const Key &key)
{
    const int end = static_cast<int>(m_text.size());
    switch (key.kind) {
    case Key::Kind::Character:
        m_text.insert(m_cursor, key.text);
        m_cursor += static_cast<int>(key.text.size());
        break;
    case Key::Kind::Backspace:
        if (m_cursor > 0)
            m_text.remove(--m_cursor, 1);
        break;
    case Key::Kind::Delete:
        m_text.remove(m_cursor, 1);
        break;
    case Key::Kind::Left:
        m_cursor = std::max(0, m_cursor - 1);
        break;
    case Key::Kind::Right:
        m_cursor = std::min(end, m_cursor + 1);
        break;
    case Key::Kind::Home:
        m_cursor = 0;
        break;
    case Key::Kind::End:
        m_cursor = end;
        break;
    case Key::Kind::ClearLine:
        *this = LineEdit();
        break;
    default:
        break;
    }
}

} // namespace kmr
