// Why something could not be done: a kind for programs, and a text for people.
#pragma once

#include <QString>

#include <stdexcept>

namespace kmr {

enum class ErrorKind {
    Usage,  // a text, a setting or an input file that can't be used
    Output, // a file could not be written
    Link,   // the link could not be opened
    Library // the driver library is missing or does not fit
};

// Ends the operation. The text says what is wrong, where, and what to do about it.
class Error : public std::runtime_error {
public:
    Error(ErrorKind kind, const QString &text)
        : std::runtime_error(text.toStdString()), m_kind(kind), m_text(text)
    {
    }

    ErrorKind kind() const
    {
        return m_kind;
    }
    const QString &text() const
    {
        return m_text;
    }

private:
    ErrorKind m_kind;
    QString m_text;
};

} // namespace kmr
