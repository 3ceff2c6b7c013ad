// Whole text files in UTF-8.
#pragma once

#include <QString>

namespace kmr {

// Throws Error (Usage) when the file can't be read.
QString readTextFile(const QString &path);

// Writes the file whole or not at all: what was there before stays in place until the new text is
// complete. Throws Error (Output).
void writeTextFile(const QString &path, const QString &text);

// Throws Error (Usage) where writeTextFile() could not write, for those who write late.
void requireWritable(const QString &path);

} // namespace kmr
