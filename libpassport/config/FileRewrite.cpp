// SPDX-License-Identifier: MIT
#include "config/FileRewrite_p.h"

#include <QtCore/QFileInfo>

#include <filesystem>
#include <string>

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(QFile &file, const QByteArray &bytes)
{
    return file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

bool openUnlessPipe(QFile &file, QIODevice::OpenMode mode)
{
    std::error_code ignored;
    const std::string path = QFile::encodeName(file.fileName()).toStdString();
    return !std::filesystem::is_fifo(path, ignored) && file.open(mode);
}

Rewrite rewriteFile(const QString &path, QIODevice::OpenMode mode, const QByteArray &bytes)
{
    // Reading a device may never end.
    const bool isRegular = QFileInfo(path).isFile();
    const QByteArray old = isRegular ? contentOf(path) : QByteArray();
    QFile file(path);
    if (!openUnlessPipe(file, mode))
        return Rewrite::NotOpened;
    if (writeAll(file, bytes))
        return Rewrite::Written;

    // Truncating has freed the room that the old content needs, so it nearly always fits again.
    file.close();
    if (isRegular && file.open(QIODevice::WriteOnly))
        writeAll(file, old);
    return Rewrite::NotWritten;
}
