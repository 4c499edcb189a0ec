// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "common/Log.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace VelqorPassPort {

void Passport::copyOpenWebFile(QString source, QString destination)
{
    qCDebug(log_lp) << "copy files..." << source << destination;
    const QDir target(destination);
    if (!target.exists() && !target.mkdir(target.absolutePath()))
        return;
    const QFileInfoList entries = QDir(source).entryInfoList();
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (name == QLatin1String(".") || name == QLatin1String(".."))
            continue;
        if (entry.isDir()) {
            qCDebug(log_lp) << "copy dir..." << entry.filePath() << name;
            copyOpenWebFile(entry.filePath(), target.filePath(name));
        } else if (!target.exists(name)) {
            // What is there stays: a host may have put its own tool in place.
            qCDebug(log_lp) << "copy file..." << entry.filePath() << name;
            QFile::copy(entry.filePath(), target.filePath(name));
        }
    }
}

} // namespace VelqorPassPort
