// Writing to a file so that a full disk is noticed and told.
#pragma once

#include <QByteArray>
#include <QFileDevice>

namespace kmr {

// Writes all bytes to `file`, which must be open and unbuffered. False when the last of them could
// not be written; file.errorString() then tells why, which after a single write() that falls short
// it does not.
bool writeAll(QFileDevice &file, const QByteArray &bytes);

} // namespace kmr
