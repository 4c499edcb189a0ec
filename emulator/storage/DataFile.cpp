// SPDX-License-Identifier: MIT
#include "storage/DataFile.h"

#include "storage/Database.h"

#include <QtCore/QFileInfo>
#include <QtCore/QtEndian>

#include <filesystem>

namespace {

bool isThere(const QFileInfo &info)
{
    return info.exists() || info.isSymLink(); // a link to nothing does not "exist"
}

QByteArray firstBytes(const QString &path, int count)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw StoreError(QStringLiteral("cannot be read: ") + file.errorString());
    return file.read(count);
}

// "Database File Format", sqlite.org/fileformat2.html, has the offsets and the magic numbers.
bool isOurs(const QString &path)
{
    constexpr int headerBytes = 100;
    constexpr int applicationIdOffset = 68;
    const QByteArray header = firstBytes(path, headerBytes);
    return header.size() == headerBytes &&
           header.startsWith(QByteArrayLiteral("SQLite format 3\0")) &&
           qFromBigEndian<quint32>(header.constData() + applicationIdOffset) ==
               Database::applicationId;
}

// Zeros are the start of a journal that SQLite has not finished.
bool isLog(const QString &path)
{
    static const QList<QByteArray> starts = {
        QByteArrayLiteral(""), QByteArrayLiteral("\0\0\0\0"), QByteArrayLiteral("\x37\x7f\x06\x82"),
        QByteArrayLiteral("\x37\x7f\x06\x83"), QByteArrayLiteral("\xd9\xd5\x05\xf9")};
    return starts.contains(firstBytes(path, 4));
}

// The logs that a killed process has left.
QStringList logsOf(const QString &path)
{
    QStringList logs;
    for (const char *suffix : {"-wal", "-journal"}) {
        const QString log = path + QLatin1String(suffix);
        const QFileInfo info(log);
        if (!isThere(info))
            continue;
        if (info.isSymLink() || !info.isFile() || !isLog(log))
            throw StoreError(
                QStringLiteral("cannot have its log at %1, where something else is").arg(log));
        logs.append(log);
    }
    return logs;
}

} // namespace

DataFile DataFile::examine(const QString &path)
{
    const QFileInfo info(path);
    if (!isThere(info)) {
        logsOf(path);
        return {path, true};
    }
    if (!info.exists())
        throw StoreError(QStringLiteral("is a link that leads nowhere"));
    if (!info.isFile())
        throw StoreError(QStringLiteral("is not a regular file"));
    const QFileInfo target(info.canonicalFilePath());
    if (!isOurs(target.filePath()))
        throw StoreError(QStringLiteral("is not a data file of passport-emulator"));
    logsOf(target.filePath());
    // SQLite also makes files beside it.
    if (!target.isWritable() || !QFileInfo(target.path()).isWritable())
        throw StoreError(QStringLiteral("is read-only, or in a directory that is"));
    return {target.filePath(), false};
}

void DataFile::create(const QString &draft) const
{
    // SQLite would take the log of a file that somebody deleted for the new one's.
    const QStringList logs = logsOf(path);
    for (const QString &log : logs)
        QFile::remove(log);
    // Unlike a renamed file, a link does not replace what somebody else has put there meanwhile.
    std::error_code error;
    std::filesystem::create_hard_link(QFile::encodeName(draft).toStdString(),
                                      QFile::encodeName(path).toStdString(), error);
    if (error)
        throw StoreError(QStringLiteral("cannot be created: ") +
                         QString::fromStdString(error.message()));
}
