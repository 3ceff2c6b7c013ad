// Changes a project's file where it says something else, so that comments, the order of the keys
// and the sections of commands stay as a person wrote them.
#pragma once

#include <QString>
#include <QStringList>

namespace kmr {

// The text of the file at `from` as it is to stand at `to`, with these tags. A comment at the end
// of a tag's line goes with the tag; all others stay. Throws Error (Usage) as parseProject() does.
QString editProject(const QString &text, const QString &from, const QStringList &tags,
                    const QString &to);

} // namespace kmr
