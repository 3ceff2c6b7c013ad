// Reads and writes whole text files, and reports a full disk.
#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

#include <functional>

namespace kmr {

// Is called again and again while a large file is read, with the share of it that was read, in
// percent; -1: not known. When it returns false, reading stops, and the rest is left out.
using ReadProgress = std::function<bool(int percent)>;

// Whether to go on after `done` of `all` parts. Without a `progress` always.
inline bool goesOn(const ReadProgress &progress, qint64 done, qint64 all)
{
    return !progress || progress(static_cast<int>(all > 0 ? 100 * done / all : 0));
}

enum class TextEncoding { Utf8, Latin1, Utf16 };

// The file's text without a byte-order mark. Throws Error (Usage) if the file can't be read, and
// for the first line that is not in UTF-8.
QString readTextFile(const QString &path, TextEncoding encoding = TextEncoding::Utf8);

// Writes the file in UTF-8, completely or not at all: an existing file stays in place until the new
// text is complete, and its byte-order mark, if it has one, begins the new text. Throws Error
// (Output).
void writeTextFile(const QString &path, const QString &text);

// Throws Error (Usage) if writeTextFile() could not write: an early check for a late write.
void requireWritable(const QString &path);

// Writes all bytes to `file`, which must be open and unbuffered. Returns false if some of them
// could not be written; file.errorString() then says why, which it does not after a single write()
// that writes only a part.
bool writeAll(QFileDevice &file, const QByteArray &bytes);

} // namespace kmr
