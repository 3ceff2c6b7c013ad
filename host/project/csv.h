// Lines of comma-separated values (RFC 4180), or separated by another character, without line
// breaks inside a field.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace kmr {

// The fields of one line, trimmed unless they are quoted. Throws Error (Usage) for a field that
// begins with a quote and goes on after the closing one, or has none.
QStringList splitCsv(const QString &line, QChar separator = ',');

// The field, in quotes where it needs them.
QString csvField(const QString &text);

// Hands each line of a file's text to `read`, trimmed, with its number from 1 on. Empty lines,
// those that begin with '#' and those that begin with `heading` are skipped. An Error that `read`
// throws makes the line a bad one: returns "FILE:NUMBER: what is wrong" for each.
QStringList readLines(const QString &text, const QString &file, const QString &heading,
                      const std::function<void(const QString &line, int number)> &read);

} // namespace kmr
