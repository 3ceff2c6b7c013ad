// Why something could not be done, in words for a person, and the exit code that says so to a
// script.
#pragma once

#include <QString>

#include <stdexcept>

namespace kmr {

enum class ExitCode {
    Ok = 0,
    ItemFailed = 1, // some items failed, for different reasons, or output could not be written
    Usage = 2,      // wrong arguments or a bad input file
    LinkFailed = 3, // the link could not be opened
    NoAnswer = 4,   // no answer, or none that could be understood
    Refused = 5,    // the controller answered with an exception
    Unknown = 6,    // it is not known whether a write was carried out, or reading back differs
    Library = 7     // the driver library is missing or does not fit
};

// Ends what was asked for. The text says what is wrong, where, and what to do about it.
class Error : public std::runtime_error {
public:
    Error(ExitCode code, const QString &text)
        : std::runtime_error(text.toStdString()), m_code(code), m_text(text)
    {
    }

    ExitCode code() const
    {
        return m_code;
    }
    const QString &text() const
    {
        return m_text;
    }

private:
    ExitCode m_code;
    QString m_text;
};

} // namespace kmr
