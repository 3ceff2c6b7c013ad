// Lines of comma-separated values (RFC 4180), or separated by another character, without line
// breaks inside a field.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace kmr {

// The fields of one line, trimmed unless they are quoted. Throws Error (Usage) for a field that
// begins with a quote and has text after the closing quote, or no closing quote.
QStringList splitCsv(const QString &line, QChar separator = ',');

// The text as a field, in quotes if it needs them.
QString csvField(const QString &text);

// Passes each line of a file's text to `read`, trimmed, with its number from 1 on. Empty lines,
// those that begin with '#' and those that begin with `heading` are skipped. A line is bad if
// `read` throws an Error: returns "FILE:NUMBER: what is wrong" for each bad line.
QStringList readLines(const QString &text, const QString &file, const QString &heading,
                      const std::function<void(const QString &line, int number)> &read);

} // namespace kmr
