// Whole text files in UTF-8, and writing so that a full disk is noticed.
#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

namespace kmr {

enum class TextEncoding { Utf8, Latin1, Utf16 };

// A byte-order mark is left out. Throws Error (Usage) when the file can't be read, and for the
// first line that is not in UTF-8.
QString readTextFile(const QString &path, TextEncoding encoding = TextEncoding::Utf8);

// Writes the file whole or not at all: what was there before stays in place until the new text is
// complete. Throws Error (Output).
void writeTextFile(const QString &path, const QString &text);

// Throws Error (Usage) where writeTextFile() could not write, for those who write late.
void requireWritable(const QString &path);

// Writes all bytes to `file`, which must be open and unbuffered. False when the last of them could
// not be written; file.errorString() then says why, which after a single write() that falls short
// it does not.
bool writeAll(QFileDevice &file, const QByteArray &bytes);

} // namespace kmr
