// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QFile>
#include <QtCore/QString>

/// How rewriteFile() ended.
enum class Rewrite {
    NotOpened,  ///< the file could not be opened for writing and is untouched
    NotWritten, ///< writing failed, as on a full disk; the old content is back where it fits and
                ///< could be read
    Written,
};

/// Truncates the file and writes the bytes, in place: its owner, its permissions and whoever
/// watches it keep seeing the same file. Only the old content of a regular file is kept aside.
Rewrite rewriteFile(const QString &path, QIODevice::OpenMode mode, const QByteArray &bytes);

/// Opens the file unless it is a pipe, where opening would wait for whoever is at its other end.
bool openUnlessPipe(QFile &file, QIODevice::OpenMode mode);
