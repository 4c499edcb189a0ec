#pragma once

#include <QtCore/QIODevice>
#include <QtCore/QString>

/// How rewriteFile() ended.
enum class Rewrite {
    NotOpened,  ///< the file could not be opened for writing and is untouched
    NotWritten, ///< writing failed, as on a full disk; the old content is back as far as it fits
    Written,
};

/// Truncates the file and writes the bytes, in place: its owner, its permissions and whoever
/// watches it keep seeing the same file. Only the old content of a regular file is kept aside.
Rewrite rewriteFile(const QString &path, QIODevice::OpenMode mode, const QByteArray &bytes);
